// mdb_bench: the library on a large synthetic catalogue, in process. For each Browse and Search
// case it times the whole library call with the DIDL-Lite answer serialised (median and p95 over
// many calls, Filter "*", RequestedCount 50) against its floor, the bare sqlite3_exec of the same
// statements; then a CreateObject+DestroyObject cycle, the catalogue fill rate, the scanner's rate
// on generated tagged files and the peak memory. Run by "make bench"; never by tests or CI.
#include "request_timing.h"
#include "scan_rate.h"
#include "synthetic_catalogue.h"

#include <mdb.h>
#include <mdb_platform.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

// The media server's address in resource URLs, so that the URL text is written as a server's.
extern "C" char *UpnpGetServerIpAddress(void) {
    static char address[] = "192.168.1.20";
    return address;
}
extern "C" char *UpnpGetServerIp6Address(void) {
    static char address[] = "fe80::1";
    return address;
}

namespace {

using namespace mdbbench;

constexpr double kMicrosecondsPerObject = 8.0;

struct Options {
    std::string workDir = "bench-work";
    long long tracks = 50000;
    int calls = 300;
    long long scanFiles = 5000;
    std::string only;  // run only the request cases whose name contains this
};

void Usage() {
    fprintf(stderr,
            "usage: mdb_bench [--work DIR] [--calls N] [--scan-files N] [--million] [--tracks N]\n"
            "  --work DIR        scratch directory for the catalogues and the scan tree (default bench-work)\n"
            "  --calls N         measured calls per case (default 300, at least 200)\n"
            "  --scan-files N    tagged files for the scanner's rate (default 5000; 0 skips it)\n"
            "  --tracks N        music tracks of the catalogue (default 50000)\n"
            "  --million         a catalogue of about 1,000,000 items (960,000 tracks)\n"
            "  --case TEXT       only the request cases whose name contains TEXT (for profiling)\n");
}

bool ParseOptions(int argc, char **argv, Options &o) {
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        auto value = [&](long long &out) {
            if (i + 1 >= argc) return false;
            out = atoll(argv[++i]);
            return out >= 0;
        };
        long long n = 0;
        if (arg == "--work" && i + 1 < argc) {
            o.workDir = argv[++i];
        } else if (arg == "--calls" && value(n) && n >= 200) {
            o.calls = static_cast<int>(n);
        } else if (arg == "--scan-files" && value(n)) {
            o.scanFiles = n;
        } else if (arg == "--tracks" && value(n) && n >= 20000) {
            o.tracks = n;
        } else if (arg == "--case" && i + 1 < argc) {
            o.only = argv[++i];
        } else if (arg == "--million") {
            o.tracks = 960000;
        } else {
            return false;
        }
    }
    return true;
}

double PeakMegabytes() {
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

const char *kElements =
    "<DIDL-Lite><item id=\"\" parentID=\"0.1.264\" restricted=\"0\"><dc:title>bench upload %d</dc:title>"
    "<upnp:class>object.item.audioItem.musicTrack</upnp:class>"
    "<res protocolInfo=\"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3\" size=\"4000000\"/></item></DIDL-Lite>";

// One CreateObject followed by the DestroyObject of the object made.
bool UploadCycle(int n) {
    char elements[512];
    snprintf(elements, sizeof elements, kElements, n);
    char container[] = "0.1.264";
    IXML_Document *doc = ixmlDocument_createDocument();
    IXML_Element *root = ixmlDocument_createElement(doc, "DIDL-Lite");
    ixmlNode_appendChild(reinterpret_cast<IXML_Node *>(doc), reinterpret_cast<IXML_Node *>(root));
    MdbNewObject object;
    memset(&object, 0, sizeof object);
    object.pcContainerId = container;
    object.pcElements = elements;
    object.ulAddrFamily = 2;
    object.pstDoc = doc;
    object.pstDidlRoot = root;
    bool ok = QRV_MDB_ParseElements(&object) == 0;
    char *parsedParent = object.pcParentId;
    ok = ok && QRV_MDB_CreateObject(&object) == 0;
    const char *bar = object.pcObjectId != nullptr ? strrchr(object.pcObjectId, '|') : nullptr;
    if (ok && bar != nullptr) {
        QRV_MDB_DestroyObject(atoll(bar + 1));
    }
    if (parsedParent != object.pcParentId) {
        free(parsedParent);
    }
    char *texts[] = {object.pcParentId, object.pcTitle,        object.pcDate,       object.pcClass,
                     object.pcSize,     object.pcProtocolInfo, object.pcIfoFileUri, object.pcObjectId};
    for (char *text : texts) {
        free(text);
    }
    ixmlDocument_free(doc);
    return ok;
}

}  // namespace

int main(int argc, char **argv) {
    Options options;
    if (!ParseOptions(argc, argv, options)) {
        Usage();
        return 2;
    }
    std::filesystem::create_directories(options.workDir);
    const std::string dbPath = options.workDir + "/catalogue.db";
    std::filesystem::remove(dbPath);

    CatalogueShape shape;
    shape.tracks = options.tracks;
    shape.albums = options.tracks / 25;
    shape.artists = options.tracks / 100;
    shape.photos = options.tracks / 25;
    shape.videos = options.tracks / 100;
    printf("catalogue: %lld tracks (one folder of %lld, the rest in folders of %lld), %lld albums, %lld artists, "
           "%lld genres, %lld photos, %lld videos\n",
           shape.tracks, shape.bigFolder, shape.perFolder, shape.albums, shape.artists, shape.genres, shape.photos,
           shape.videos);
    sqlite3 *db = QRV_MDB_DbInit(dbPath.c_str(), nullptr);
    if (db == nullptr) {
        fprintf(stderr, "mdb_bench: the catalogue %s could not be created\n", dbPath.c_str());
        return 1;
    }
    g_pstMdbCtx = db;
    SyntheticCatalogue built;
    uint32_t status = BuildSyntheticCatalogue(db, shape, built);
    if (status != MDB_OK || QRV_MDB_DbGetRoots(db) != MDB_OK) {
        fprintf(stderr, "mdb_bench: filling the catalogue failed: %s\n", QRV_MDB_StatusName(status));
        return 1;
    }
    printf("fill: %lld rows in %.2f s through the store operations = %.0f rows/s; ANALYZE %.2f s\n\n", built.rows,
           built.fillSeconds, built.rows / built.fillSeconds, built.analyzeSeconds);

    const std::string big = "0.1.264|" + std::to_string(built.bigFolderId);
    const std::vector<RequestCase> cases = {
        {"10,000-item folder, page at 0, +dc:title", big, 1, "", "+dc:title", 0, 1500},
        {"10,000-item folder, page at 9,000, +dc:title", big, 1, "", "+dc:title", 9000, 4000},
        {"BrowseMetadata of one item", "0.1.264|" + std::to_string(built.sampleItemId), 0, "", "", 0, 150},
        {"all music, page at 0, +dc:title", "0.1.256", 1, "", "+dc:title", 0, 4000},
        {"artist list", "0.1.258", 1, "", "", 0, 1000},
        {"album list", "0.1.262", 1, "", "", 0, 2000},
        {"Search dc:title contains \"abc\" in 0", "0", 1, "dc:title contains \"abc\"", "", 0, 15000},
        {"Search audioItem and dc:title contains \"abc\"", "0", 1,
         "upnp:class derivedfrom \"object.item.audioItem\" and dc:title contains \"abc\"", "", 0, 15000},
        // Not a target: the first case with an empty Filter, so that each object has only its id,
        // parentID, restricted, title and class written; the difference to the first case is the
        // cost of the other DIDL-Lite nodes.
        {"(same folder, page at 0, Filter \"\")", big, 1, "", "+dc:title", 0, 1500, ""},
    };
    printf("%-46s %8s %8s %8s %7s %5s %8s %-6s %7s %s\n", "case (microseconds)", "median", "p95", "floor",
           "objects", "ratio", "budget", "", "target", "");
    bool allMet = true;
    std::vector<RequestCase> ran;
    std::vector<RequestResult> results;
    for (const RequestCase &c : cases) {
        if (!options.only.empty() && c.name.find(options.only) == std::string::npos) {
            continue;
        }
        RequestResult r = MeasureRequest(db, c, options.calls);
        const double budget = r.floor.medianUs + kMicrosecondsPerObject * r.objects;
        const bool withinBudget = r.status == MDB_OK && r.call.medianUs <= budget;
        const bool withinTarget = r.status == MDB_OK && r.call.medianUs <= c.targetUs;
        allMet = allMet && withinBudget && withinTarget;
        printf("%-46s %8.1f %8.1f %8.1f %7u %5.2f %8.1f %-6s %7.0f %s%s\n", c.name.c_str(), r.call.medianUs,
               r.call.p95Us, r.floor.medianUs, r.objects, r.floor.medianUs > 0 ? r.call.medianUs / r.floor.medianUs : 0.0,
               budget, withinBudget ? "within" : "OVER", c.targetUs, withinTarget ? "met" : "MISSED",
               r.status == MDB_OK ? "" : " (call failed)");
        ran.push_back(c);
        results.push_back(r);
    }
    printf("\n(budget = floor + %.0f us per object written: within or OVER; target: the median to meet; "
           "total matches:",
           kMicrosecondsPerObject);
    for (const RequestResult &r : results) {
        printf(" %u", r.totalMatches);
    }
    printf(")\n\nstatements per case:\n");
    for (size_t i = 0; i < ran.size(); ++i) {
        printf("  %s\n", ran[i].name.c_str());
        for (const std::string &sql : results[i].statements) {
            printf("    %s\n", sql.c_str());
        }
    }

    int n = 0;
    bool uploadsOk = true;
    Timing cycle = Measure(options.calls, [&] { uploadsOk = UploadCycle(++n) && uploadsOk; });
    printf("\nCreateObject+DestroyObject cycle: median %.1f us, p95 %.1f us%s\n", cycle.medianUs, cycle.p95Us,
           uploadsOk ? "" : " (a cycle FAILED)");
    g_pstMdbCtx = nullptr;
    sqlite3_close(db);

    if (options.scanFiles > 0) {
        ScanRate scan = MeasureScanRate(options.workDir, options.scanFiles);
        if (scan.ran) {
            printf("scanner: %lld tagged MP3 files (made in %.1f s): first scan %.2f s = %.0f files/s (target 3,000); "
                   "unchanged rescan %.2f s = %.0f files/s\n",
                   scan.files, scan.makeSeconds, scan.firstScanSeconds, scan.files / scan.firstScanSeconds,
                   scan.rescanSeconds, scan.files / scan.rescanSeconds);
            allMet = allMet && scan.files / scan.firstScanSeconds >= 3000;
        } else {
            printf("scanner: not measured (%s)\n", scan.why.c_str());
        }
    }
    printf("peak memory: %.1f MB\n", PeakMegabytes());
    printf("%s\n", allMet ? "all targets met" : "some targets MISSED");
    return 0;
}
