// Request timing. Each measured call does what a server does per request: parse the Filter and
// SortCriteria, make the answer document with its DIDL-Lite root, call the library, serialise the
// answer with ixml, and release everything.
#include "request_timing.h"

#include <mdb_platform.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace mdbbench {

namespace {

constexpr int kWarmupCalls = 10;
constexpr uint32_t kRequestedCount = 50;

double NowUs() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<double>(ts.tv_sec) * 1e6 + static_cast<double>(ts.tv_nsec) / 1e3;
}

int CaptureStatement(unsigned type, void *context, void *, void *sql) {
    if (type == SQLITE_TRACE_STMT && sql != nullptr) {
        const char *text = static_cast<const char *>(sql);
        if (std::strncmp(text, "--", 2) != 0) {
            static_cast<std::vector<std::string> *>(context)->emplace_back(text);
        }
    }
    return 0;
}

int EmptyRow(void *, int, char **, char **) { return 0; }

struct Answer {
    uint32_t status = MDB_OK;
    uint32_t returned = 0;
    uint32_t total = 0;
    size_t length = 0;
};

Answer RunOnce(const RequestCase &request) {
    Answer answer;
    unsigned char *filter = QRV_MDB_ParseFilterString(request.filter.c_str());
    char *sort = request.sort.empty() ? nullptr : QRV_MDB_BuildSortStr(request.sort.c_str());
    IXML_Document *doc = ixmlDocument_createDocument();
    IXML_Element *root = ixmlDocument_createElement(doc, "DIDL-Lite");
    ixmlElement_setAttribute(root, "xmlns", "urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/");
    ixmlElement_setAttribute(root, "xmlns:dc", "http://purl.org/dc/elements/1.1/");
    ixmlElement_setAttribute(root, "xmlns:upnp", "urn:schemas-upnp-org:metadata-1-0/upnp/");
    ixmlElement_setAttribute(root, "xmlns:dlna", "urn:schemas-dlna-org:metadata-1-0/");
    ixmlNode_appendChild(reinterpret_cast<IXML_Node *>(doc), reinterpret_cast<IXML_Node *>(root));
    char objectId[256];
    char errorText[32] = "";
    snprintf(objectId, sizeof objectId, "%s", request.objectId.c_str());
    MdbActionCtx action;
    memset(&action, 0, sizeof action);
    action.pcObjectId = objectId;
    action.ulStartingIndex = request.startingIndex;
    action.ulRequestedCount = kRequestedCount;
    action.ulAddrFamily = 2;
    action.pucFilter = filter;
    action.pcSortStr = sort;
    action.pstDoc = doc;
    action.pstDidlRoot = root;
    action.pcErrStr = errorText;
    answer.status = request.criteria.empty() ? QRV_MDB_Browse(objectId, request.browseFlag, &action)
                                             : QRV_MDB_Search(objectId, request.criteria.c_str(), &action);
    DOMString text = ixmlNodetoString(reinterpret_cast<IXML_Node *>(root));
    answer.length = text != nullptr ? strlen(text) : 0;
    ixmlFreeDOMString(text);
    ixmlDocument_free(doc);
    free(filter);
    free(sort);
    answer.returned = action.ulNumberReturned;
    answer.total = action.ulTotalMatches;
    return answer;
}

}  // namespace

Timing Measure(int calls, const std::function<void()> &fn) {
    for (int i = 0; i < kWarmupCalls; ++i) {
        fn();
    }
    std::vector<double> samples;
    samples.reserve(static_cast<size_t>(calls));
    for (int i = 0; i < calls; ++i) {
        const double start = NowUs();
        fn();
        samples.push_back(NowUs() - start);
    }
    std::sort(samples.begin(), samples.end());
    Timing timing;
    timing.medianUs = samples[samples.size() / 2];
    timing.p95Us = samples[std::min(samples.size() - 1, samples.size() * 95 / 100)];
    return timing;
}

RequestResult MeasureRequest(sqlite3 *db, const RequestCase &request, int calls) {
    RequestResult result;
    sqlite3_trace_v2(db, SQLITE_TRACE_STMT, CaptureStatement, &result.statements);
    Answer answer = RunOnce(request);
    sqlite3_trace_v2(db, 0, nullptr, nullptr);
    result.status = answer.status;
    result.objects = answer.returned;
    result.totalMatches = answer.total;
    result.call = Measure(calls, [&] { RunOnce(request); });
    const std::vector<std::string> statements = result.statements;
    result.floor = Measure(calls, [&] {
        for (const std::string &sql : statements) {
            sqlite3_exec(db, sql.c_str(), EmptyRow, nullptr, nullptr);
        }
    });
    return result;
}

}  // namespace mdbbench
