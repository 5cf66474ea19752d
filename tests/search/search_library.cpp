// The catalogue and probes of the Search tests; see search_library.h.
#include "search_library.h"

#include <gtest/gtest.h>
#include <mdb_platform.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace {
int g_lStrdupFailAt = -1;
int g_lStrdupCalls = 0;

// Profile ids (flags words) of the reference profile library: family code + (number << 16).
constexpr int32_t kMp3 = 11, kLpcm = 11 + (2 << 16), kAacIso320 = 11 + (3 << 16);  // audio/mpeg, L16, mp4
constexpr int32_t kMpegPsPal = 268, kAvcMp4 = 268 + (7 << 16);                     // video/mpeg, video/mp4
constexpr int32_t kJpegLrg = 525, kJpegMed = 525 + (1 << 16), kPngTn = 525 + (5 << 16);
}  // namespace

// The program's own strdup, which the library's calls reach as well: it fails on request.
extern "C" char *strdup(const char *pcText) {
    if (g_lStrdupFailAt >= 0 && g_lStrdupCalls++ == g_lStrdupFailAt) {
        g_lStrdupFailAt = -1;
        return nullptr;
    }
    size_t len = std::strlen(pcText) + 1;
    char *pcCopy = static_cast<char *>(std::malloc(len));
    if (pcCopy != nullptr) {
        std::memcpy(pcCopy, pcText, len);
    }
    return pcCopy;
}

namespace searchtest {

SearchLibrary::SearchLibrary() {
    // Lookup entries get ids in insertion order; the tests name genres 1..3 and folder 5.
    EXPECT_EQ(m_cat.lookup("GENRES", "Rock"), 1);
    EXPECT_EQ(m_cat.lookup("GENRES", "Jazz"), 2);
    EXPECT_EQ(m_cat.lookup("GENRES", "It's Pop"), 3);
    const long long rock = 1, jazz = 2, pop = 3;
    const long long queen = m_cat.lookup("ARTISTS", "Queen"), davis = m_cat.lookup("ARTISTS", "Miles Davis"),
                    beatles = m_cat.lookup("ARTISTS", "The Beatles");
    const long long opera = m_cat.lookup("ALBUMS", "A Night at the Opera"),
                    blue = m_cat.lookup("ALBUMS", "Kind of Blue"), abbey = m_cat.lookup("ALBUMS", "Abbey Road"),
                    holidays = m_cat.lookup("ALBUMS", "Holidays");
    const long long anna = m_cat.lookup("CREATORS", "Anna Lind");

    auto folder = [&](long long parent, const char *name, int32_t bits) {
        mdbtest::ItemValues v;
        v.parentId = parent;
        v.flags = static_cast<int32_t>(MDB_CLASS_FOLDER) | bits;
        v.title = v.fileName = name;
        return add(v);
    };
    const long long root = folder(0, "media", 0x800 | 0x1000 | 0x2000);
    const long long video = folder(root, "video", 0x1000), photos = folder(root, "photos", 0x2000);
    folder(root, "empty", 0);
    const long long music = folder(root, "music", 0x800);
    EXPECT_EQ(music, 5);

    struct Row {
        long long parent;
        const char *title;
        int32_t profile;
        long long artist, album, genre, creator;
        const char *date;
        long long seconds, width, height;
    } rows[] = {
        {music, "Bohemian Rhapsody", kMp3, queen, opera, rock, 0, "1975-10-31", 355, 0, 0},
        {music, "Love of My Life", kMp3, queen, opera, rock, 0, "1975-11-21", 219, 0, 0},
        {music, "So What", kLpcm, davis, blue, jazz, 0, "1959-08-17", 562, 0, 0},
        {music, "Blue in Green", kAacIso320, davis, blue, jazz, 0, "1959-08-17", 337, 0, 0},
        {music, "Come Together", kMp3, beatles, abbey, pop, 0, "1969-09-26", 259, 0, 0},
        {music, "Something", kMp3, beatles, abbey, pop, 0, "1969-09-26", 182, 0, 0},
        {video, "Sea Trip", kMpegPsPal, 0, holidays, 0, anna, "2012-07-01", 3600, 1280, 720},
        {video, "Lovely Clip", kAvcMp4, queen, holidays, 0, 0, "2015-01-01", 30, 1920, 1080},
        {video, "Short", kMpegPsPal, 0, holidays, 0, 0, "2003-03-03", 120, 640, 480},
        {photos, "Beach", kJpegLrg, 0, 0, 0, 0, "2012-07-02", 0, 4000, 3000},
        {photos, "Sea Sunset", kJpegMed, 0, 0, 0, anna, "2012-07-03", 0, 1024, 768},
        {photos, "Logo", kPngTn, 0, 0, 0, 0, "2001-01-01", 0, 64, 64},
    };
    for (const Row &r : rows) {
        mdbtest::ItemValues v;
        v.parentId = r.parent;
        v.flags = r.profile;
        v.title = r.title;
        v.fileName = std::string(r.title) + ".bin";
        v.size = 1000000;
        v.date = r.date;
        v.duration = r.seconds * 1000000;
        v.resolution = (r.height << 32) + r.width;
        v.artist = r.artist;
        v.album = r.album;
        v.genre = r.genre;
        v.creator = r.creator;
        add(v);
    }
}

long long SearchLibrary::add(const mdbtest::ItemValues &v) {
    long long id = m_cat.addItem(v);
    m_ids[v.title] = id;
    return id;
}

long long SearchLibrary::id(const std::string &title) const {
    auto it = m_ids.find(title);
    EXPECT_NE(it, m_ids.end()) << "no row titled " << title;
    return it != m_ids.end() ? it->second : -1;
}

Titles SearchLibrary::titles() const {
    Titles out;
    for (const auto &entry : m_ids) {
        out.insert(entry.first);
    }
    return out;
}

Translated Translate(const std::string &container, const std::string &criteria) {
    Translated t;
    MdbSearchSyntax st;
    std::memset(&st, 0, sizeof(st));
    uint32_t status = MDBSearchCriteriaSyntax(criteria.c_str(), &st);
    if (status == MDB_OK) {
        char copy[256], where[512];
        std::snprintf(copy, sizeof(copy), "%s", container.c_str());
        std::memset(where, '#', sizeof(where));
        t.resultClass = 99;
        t.commaSep = 7;
        status = MDBSearchCriteriaCheck(container.c_str(), copy, sizeof(copy), &t.resultClass, where, sizeof(where),
                                        &t.commaSep, &st);
        EXPECT_EQ(st.lExprNum, 0) << "expression texts not released";
        t.where = status == MDB_OK ? where : "";
        t.copy = copy;
    }
    t.status = QRV_MDB_StatusName(status);
    return t;
}

std::string Prop(uint32_t index) {
    EXPECT_LT(index, g_ulNumOfDlnaCols);
    return index < g_ulNumOfDlnaCols && g_astDlnaCols[index].pcPropName ? g_astDlnaCols[index].pcPropName : "";
}

SqlTrace::SqlTrace(sqlite3 *db) : m_db(db) { sqlite3_trace_v2(m_db, SQLITE_TRACE_STMT, &SqlTrace::OnTrace, this); }

SqlTrace::~SqlTrace() { sqlite3_trace_v2(m_db, 0, nullptr, nullptr); }

int SqlTrace::OnTrace(unsigned type, void *ctx, void *, void *x) {
    const char *sql = static_cast<const char *>(x);
    // Statements of triggers are reported as "-- ..." comments; only top-level statements count.
    if (type == SQLITE_TRACE_STMT && sql != nullptr && std::strncmp(sql, "--", 2) != 0) {
        static_cast<SqlTrace *>(ctx)->m_statements.emplace_back(sql);
    }
    return 0;
}

std::string PrepareError(sqlite3 *db, const std::string &where) {
    std::string sql = "select * from DLNA where " + where;
    sqlite3_stmt *stmt = nullptr;
    const char *tail = nullptr;
    int rc = sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, &tail);
    std::string err = rc == SQLITE_OK ? "" : sqlite3_errmsg(db);
    sqlite3_finalize(stmt);
    if (err.empty() && tail != nullptr && *tail != '\0') {
        err = std::string("text after the statement: ") + tail;
    }
    return err;
}

void FailStrdupCall(int n) {
    g_lStrdupCalls = 0;
    g_lStrdupFailAt = n;
}

std::string FileBytes(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

std::vector<std::string> WrittenTitles(const mdbtest::Action &action) {
    std::vector<std::string> out;
    for (IXML_Element *el : action.objects()) {
        out.push_back(mdbtest::childText(el, "dc:title"));
    }
    return out;
}

std::vector<std::string> WrittenIds(const mdbtest::Action &action) {
    std::vector<std::string> out;
    for (IXML_Element *el : action.objects()) {
        out.push_back(mdbtest::attr(el, "id"));
    }
    return out;
}

}  // namespace searchtest
