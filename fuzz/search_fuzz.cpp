// Fuzz target for Search: arbitrary ContainerIDs and SearchCriteria go through the criteria check,
// the translation to SQL and a real Search on an in-memory catalogue built with the shipped schema.
//
// Input: the ContainerID up to the first line feed, the SearchCriteria after it (without a line
// feed the whole input is the criteria, searched in "0"). Besides the sanitizers, the target stops
// on any of these faults:
//  - a statement that would do anything but read (an authorizer refuses and reports it);
//  - more than the two statements of one Search, or a statement that is not a single select;
//  - a WHERE text that SQLite cannot compile, or text behind it, or that is not one expression;
//  - a row that the WHERE text selects outside the search container's own conditions;
//  - MDB_ERR_DB from a Search whose WHERE text compiles (no search may fail inside SQLite);
//  - a status outside the contract, or expression texts left in the record.
#include <mdb.h>
#include <mdb_platform.h>

#include "fuzz_catalogue.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

sqlite3 *g_pstDb = nullptr;
int g_lStatementsRun = 0;

[[noreturn]] void Fail(const char *pcWhat, const std::string &detail) { mdbfuzz::Fail("search", pcWhat, detail); }

int OnAuthorize(void *, int action, const char *pcArg1, const char *, const char *, const char *) {
    if (action != SQLITE_SELECT && action != SQLITE_READ && action != SQLITE_FUNCTION) {
        Fail("a statement that does not only read", std::to_string(action) + " " + (pcArg1 ? pcArg1 : ""));
    }
    return SQLITE_OK;
}

int OnTrace(unsigned type, void *, void *, void *pvSql) {
    const char *pcSql = static_cast<const char *>(pvSql);
    if (type != SQLITE_TRACE_STMT || pcSql == nullptr || std::strncmp(pcSql, "--", 2) == 0) {
        return 0;
    }
    if (++g_lStatementsRun > 2) {
        Fail("more than two statements in one Search", pcSql);
    }
    if (std::strncmp(pcSql, "select ", 7) != 0) {
        Fail("a statement that is not a select", pcSql);
    }
    return 0;
}

void Exec(const char *pcSql) { mdbfuzz::Exec("search", g_pstDb, pcSql); }

/* A small catalogue: a music, a video and a picture folder with items of several profiles, genres,
 * artists and albums. */
void BuildCatalogue() {
    g_pstDb = mdbfuzz::OpenCatalogue("search");
    Exec("insert into GENRES values (1, 'Rock'), (2, 'Jazz'), (3, 'It''s Pop');"
         "insert into ARTISTS values (1, 'Queen'), (2, 'Miles Davis');"
         "insert into ALBUMS values (1, 'Opera'), (2, 'Kind of Blue'), (3, 'Holidays');");
    // id, parentID, flags, title, fileName, size, date, bitsPerSample, duration, channels, resolution,
    // sampleFrequency, bitrate, lastModify, track, actor, album, artist, author, creator, director,
    // genre, producer, publisher
    Exec("insert into ITEM values (1, 0, 14338, 'Media', '/srv/media', 0, '', 0, 0, 0, 0, 0, 0, '', 0,"
         " 0, 0, 0, 0, 0, 0, 0, 0, 0);"
         "insert into ITEM values (2, 1, 2050, 'Music', 'music', 0, '', 0, 0, 0, 0, 0, 0, '', 0,"
         " 0, 0, 0, 0, 0, 0, 0, 0, 0);"
         "insert into ITEM values (3, 2, 11, 'Bohemian Rhapsody', 'bohemian.mp3', 5000000, '1975-10-31', 16,"
         " 355000000, 2, 0, 44100, 320000, '', 1, 0, 1, 1, 0, 0, 0, 1, 0, 0);"
         "insert into ITEM values (4, 2, 131083, 'So What', 'so what.wav', 9000000, '1959-08-17', 16,"
         " 562000000, 2, 0, 44100, 1411000, '', 1, 0, 2, 2, 0, 0, 0, 2, 0, 0);"
         "insert into ITEM values (5, 2, 196619, 'Love''s Song', 'love.m4a', 3000000, '2010-02-14', 16,"
         " 200000000, 2, 0, 48000, 256000, '', 2, 0, 1, 1, 0, 0, 0, 3, 0, 0);"
         "insert into ITEM values (6, 1, 4098, 'Video', 'video', 0, '', 0, 0, 0, 0, 0, 0, '', 0,"
         " 0, 0, 0, 0, 0, 0, 0, 0, 0);"
         "insert into ITEM values (7, 6, 268, 'Sea Trip', 'sea.mpg', 700000000, '2012-07-01', 0,"
         " 3600000000, 2, 3092376454400, 0, 6000000, '', 0, 0, 3, 1, 0, 0, 0, 0, 0, 0);"
         "insert into ITEM values (8, 6, 459020, 'Clip', 'clip.mp4', 9000000, '2015-01-01', 0,"
         " 30000000, 2, 4638564681600, 0, 8000000, '', 0, 0, 0, 2, 0, 0, 0, 0, 0, 0);"
         "insert into ITEM values (9, 1, 8194, 'Pictures', 'pictures', 0, '', 0, 0, 0, 0, 0, 0, '', 0,"
         " 0, 0, 0, 0, 0, 0, 0, 0, 0);"
         "insert into ITEM values (10, 9, 525, 'Beach', 'beach.jpg', 2000000, '2012-07-02', 0, 0, 0,"
         " 12884901888 + 4000, 0, 0, '', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);"
         "insert into ITEM values (11, 9, 328205, 'Logo', 'logo.png', 10000, '2001-01-01', 0, 0, 0,"
         " 68719476800, 0, 0, '', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);");
    g_pstMdbCtx = g_pstDb;
    sqlite3_set_authorizer(g_pstDb, OnAuthorize, nullptr);
    sqlite3_trace_v2(g_pstDb, SQLITE_TRACE_STMT, OnTrace, nullptr);
}

/* The container's own conditions: the WHERE text of "*" in that container. */
std::string ContainerWhere(const std::string &container) {
    MdbSearchSyntax stSyntax;
    std::memset(&stSyntax, 0, sizeof(stSyntax));
    char acCopy[256];
    std::snprintf(acCopy, sizeof(acCopy), "%s", container.c_str());
    char acWhere[512];
    uint32_t ulResultClass = 0, ulCommaSep = 0;
    if (MDBSearchCriteriaSyntax("*", &stSyntax) != MDB_OK ||
        MDBSearchCriteriaCheck(container.c_str(), acCopy, sizeof(acCopy), &ulResultClass, acWhere, sizeof(acWhere),
                               &ulCommaSep, &stSyntax) != MDB_OK) {
        Fail("a container that translates with criteria but not with *", container);
    }
    return acWhere;
}

/* Criteria only narrow what the container selects: no row matches the WHERE text and not the
 * container's own conditions. The WHERE text goes in parentheses, so it must also be one whole
 * expression: a literal closed early, a comment or a dangling operator would show here. */
void CheckNarrowing(const std::string &container, const char *pcWhere) {
    std::string sql = std::string("select count(*) from DLNA where (") + pcWhere + ") and not coalesce((" +
                      ContainerWhere(container) + "), 0)";
    sqlite3_stmt *pstStmt = nullptr;
    const char *pcTail = nullptr;
    if (sqlite3_prepare_v2(g_pstDb, sql.c_str(), -1, &pstStmt, &pcTail) != SQLITE_OK || pstStmt == nullptr ||
        (pcTail != nullptr && *pcTail != '\0')) {
        sqlite3_finalize(pstStmt);
        Fail("a WHERE text that is not one expression", sql);
    }
    g_lStatementsRun = 0;
    int rc = sqlite3_step(pstStmt);
    long long llOutside = rc == SQLITE_ROW ? sqlite3_column_int64(pstStmt, 0) : -1;
    sqlite3_finalize(pstStmt);
    if (llOutside != 0) {
        Fail("rows beyond the search container", sql);
    }
}

/* The criteria check and the translation alone: a translated WHERE text must compile as one
 * statement. Returns the check's status. */
uint32_t CheckAndTranslate(const std::string &container, const std::string &criteria) {
    MdbSearchSyntax stSyntax;
    std::memset(&stSyntax, 0, sizeof(stSyntax));
    uint32_t ulStatus = MDBSearchCriteriaSyntax(criteria.c_str(), &stSyntax);
    if (ulStatus != MDB_OK) {
        if (ulStatus != MDB_ERR_PARA || stSyntax.lExprNum != 0) {
            Fail("rejected criteria left a bad record", criteria);
        }
        return ulStatus;
    }
    char acCopy[256];
    std::snprintf(acCopy, sizeof(acCopy), "%s", container.c_str());
    char acWhere[512];
    uint32_t ulResultClass = 0, ulCommaSep = 0;
    ulStatus = MDBSearchCriteriaCheck(container.c_str(), acCopy, sizeof(acCopy), &ulResultClass, acWhere,
                                      sizeof(acWhere), &ulCommaSep, &stSyntax);
    if (stSyntax.lExprNum != 0) {
        Fail("expression texts not released", criteria);
    }
    if (ulStatus != MDB_OK) {
        return ulStatus;
    }
    if (ulResultClass > 10) {
        Fail("a result class that is no container class", criteria);
    }
    std::string sql = std::string("select * from DLNA where ") + acWhere;
    sqlite3_stmt *pstStmt = nullptr;
    const char *pcTail = nullptr;
    g_lStatementsRun = 0;
    int rc = sqlite3_prepare_v2(g_pstDb, sql.c_str(), -1, &pstStmt, &pcTail);
    sqlite3_finalize(pstStmt);
    if (rc != SQLITE_OK) {
        Fail("a WHERE text SQLite cannot compile", sql + " : " + sqlite3_errmsg(g_pstDb));
    }
    if (pcTail != nullptr && *pcTail != '\0') {
        Fail("text behind the WHERE text", sql);
    }
    CheckNarrowing(container, acWhere);
    return ulStatus;
}

void Search(const std::string &container, const std::string &criteria, uint32_t ulTranslated) {
    // No optional property: the item writer then runs no statement of its own (a folder's child
    // count), so every statement seen belongs to the Search. The rows are fixed; the writer's
    // properties are not what this target varies.
    static unsigned char aucFilter[256];
    char acObjectId[256];
    std::snprintf(acObjectId, sizeof(acObjectId), "%s", container.c_str());
    char acErr[64] = "";
    MdbActionCtx stAction;
    std::memset(&stAction, 0, sizeof(stAction));
    stAction.pcObjectId = acObjectId;
    stAction.ulRequestedCount = 4;
    stAction.ulAddrFamily = 2;
    stAction.pucFilter = aucFilter;
    stAction.pcErrStr = acErr;
    stAction.pstDoc = ixmlDocument_createDocument();
    stAction.pstDidlRoot = ixmlDocument_createElement(stAction.pstDoc, "DIDL-Lite");
    ixmlNode_appendChild(reinterpret_cast<IXML_Node *>(stAction.pstDoc),
                         reinterpret_cast<IXML_Node *>(stAction.pstDidlRoot));

    g_lStatementsRun = 0;
    uint32_t ulStatus = QRV_MDB_Search(container.c_str(), criteria.c_str(), &stAction);
    if (ulStatus != MDB_OK && ulStatus != MDB_ERR_PARA && ulStatus != MDB_ERR_DB) {
        Fail("a status outside the contract", QRV_MDB_StatusName(ulStatus));
    }
    if (ulStatus == MDB_ERR_DB && ulTranslated == MDB_OK) {
        Fail("a translated search failed inside SQLite", container + "\n" + criteria);
    }
    if (stAction.ulNumberReturned > stAction.ulRequestedCount) {
        Fail("more objects than requested", criteria);
    }
    ixmlDocument_free(stAction.pstDoc);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (g_pstDb == nullptr) {
        BuildCatalogue();
    }
    std::string input(reinterpret_cast<const char *>(data), size);
    input = input.c_str();  // criteria and ids are C texts: they end at a NUL
    std::string container = "0", criteria = input;
    size_t newline = input.find('\n');
    if (newline != std::string::npos) {
        container = input.substr(0, newline);
        criteria = input.substr(newline + 1);
    }
    uint32_t ulTranslated = MDB_ERR_PARA;
    if (container.size() < 256) {
        ulTranslated = CheckAndTranslate(container, criteria);
    }
    Search(container, criteria, ulTranslated);
    return 0;
}
