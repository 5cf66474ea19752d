// The property table against the DLNA view of the shipped schema and against what the library and
// the search translation assume of its positions, names and flags.
#include "catalogue.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

bool Has(const MdbDlnaCol &col, uint16_t flag) { return (col.usFlags & flag) != 0; }

std::vector<std::string> ViewColumns(sqlite3 *db) {
    std::vector<std::string> names;
    sqlite3_stmt *stmt = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(db, "select * from DLNA", -1, &stmt, nullptr), SQLITE_OK) << sqlite3_errmsg(db);
    for (int i = 0; i < sqlite3_column_count(stmt); ++i) names.emplace_back(sqlite3_column_name(stmt, i));
    sqlite3_finalize(stmt);
    return names;
}

TEST(PropertyTable, EntriesReadSortAndCompareRealViewColumns) {
    mdbtest::Catalogue catalogue;
    std::vector<std::string> cols = ViewColumns(catalogue.db());
    ASSERT_GT(cols.size(), 21u);
    const std::pair<size_t, const char *> fixedColumns[] = {{0, "id"}, {2, "flags"}, {3, "title"}, {21, "fileName"}};
    for (const auto &f : fixedColumns) EXPECT_EQ(cols[f.first], f.second);
    catalogue.exec("insert into ITEM (id, parentID, flags, title, fileName, size) values (1, 0, 2, 'root', '/', 0),"
                   "(2, 1, 11, 'song', 'a.mp3', 0), (3, 1, 13, 'pic', 'b.jpg', 0), (7, 1, 139, 't', 'c.mp3', 2000)");
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const MdbDlnaCol &col = g_astDlnaCols[i];
        SCOPED_TRACE("entry " + std::to_string(i) + " " + col.pcPropName);
        ASSERT_LT(col.usColIdx, cols.size());
        // existence kinds: 0, 1, 2, or a non-empty set of the item class bits 4, 8, 16
        EXPECT_TRUE(col.usSearchType < 3 || (col.usSearchType & ~28u) == 0) << col.usSearchType;
        // res attributes are the res element itself or named "res@..."
        if (Has(col, MDB_COL_RES_ATTRIBUTE)) { EXPECT_EQ(std::string(col.pcPropName).rfind("res", 0), 0u); }
        if (Has(col, MDB_COL_CONTAINER_ONLY)) continue;
        // sorting and search comparisons write pcColName; the value is read at usColIdx
        EXPECT_EQ(cols[col.usColIdx], col.pcColName);
        for (const char *dir : {"", " desc"}) {
            catalogue.exec(std::string("select * from DLNA where parentID=1 ORDER BY ") + col.pcColName + dir +
                           " LIMIT 10 OFFSET 0");
        }
    }
    // Search comparisons keep the value's double quotes: numeric columns, computed ones included,
    // must still compare as numbers.
    const struct { const char *where, *count; } cases[] = {
        {"size >= \"1000\"", "1"}, {"size < \"1000\"", "0"}, {"restricted = \"1\"", "1"},
        {"restricted = \"0\"", "0"}, {"class = \"11\"", "1"},
    };
    for (const auto &c : cases) {
        std::string sql = std::string("select count(*) from DLNA where id=7 and ") + c.where;
        EXPECT_EQ(catalogue.scalar(sql), c.count) << sql;
    }
}

TEST(PropertyTable, FixedPositionsHoldWhatTheLibraryAssumes) {
    const uint16_t kElement = MDB_COL_ELEMENT, kRes = MDB_COL_RES_ATTRIBUTE, kBuilder = MDB_COL_ADAPT_BUILDER;
    // names nullptr and searchType -1: not fixed
    const struct { uint32_t index; const char *propName, *colName; int searchType; uint16_t set, clear; } fixed[] = {
        {0, "@id", "id", -1, 0, kElement | kRes},
        {1, "@parentID", "parentID", -1, 0, kElement | kRes},
        {2, "upnp:class", nullptr, 0, 0, 0},
        {3, "dc:title", "title", 1, 0, 0},
        // stored in microseconds and as height<<32 + width: the builder writes them on res
        {8, nullptr, "duration", 0, kRes | kBuilder, 0},
        {11, nullptr, "resolution", 24, kRes | kBuilder, 0},
        // CreateObject sets 23 to "0" and 30 to "4": object attributes, 30 built from the flags word
        {23, "@restricted", "restricted", -1, 0, kElement | kRes},
        {30, "@dlna:dlnaManaged", nullptr, -1, kBuilder | MDB_COL_CONTAINER_ONLY, kElement | kRes},
        // the library's own protocolInfo: never refused to the filter, never overwritten
        {28, "res@protocolInfo", "protocolInfo", -1, kRes | kBuilder, MDB_COL_NOT_FILTERED},
        {32, "upnp:recordQuality", nullptr, -1, kElement, kRes | kBuilder},
    };
    ASSERT_GE(g_ulNumOfDlnaCols, 33u);
    for (const auto &f : fixed) {
        const MdbDlnaCol &col = g_astDlnaCols[f.index];
        SCOPED_TRACE("entry " + std::to_string(f.index));
        if (f.propName != nullptr) { EXPECT_STREQ(col.pcPropName, f.propName); }
        if (f.colName != nullptr) { EXPECT_STREQ(col.pcColName, f.colName); }
        if (f.searchType >= 0) { EXPECT_EQ(col.usSearchType, f.searchType); }
        EXPECT_EQ(col.usFlags & f.set, f.set);
        EXPECT_EQ(col.usFlags & f.clear, 0);
    }
    EXPECT_EQ(g_astDlnaCols[0].usColIdx, 0u);
    EXPECT_EQ(g_astDlnaCols[2].pfnSearchValue, MdbCmpDerivedOp);
    EXPECT_EQ(g_astDlnaCols[3].pfnSearchValue, MdbCmpStringOp);
}

TEST(PropertyTable, NoNameHidesALaterOne) {
    // The search criteria syntax takes the first entry whose name begins the text: a name that is a
    // prefix of a later one (or a duplicate) would hide it.
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        std::string text = std::string(g_astDlnaCols[i].pcPropName) + " exists true";
        uint32_t first = 0;
        while (text.rfind(g_astDlnaCols[first].pcPropName, 0) != 0) ++first;
        EXPECT_EQ(first, i) << text << " is taken for " << g_astDlnaCols[first].pcPropName;
    }
}

} // namespace
