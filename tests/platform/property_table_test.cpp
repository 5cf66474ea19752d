// The property table against the DLNA view of the shipped schema and against the search criteria
// syntax: every entry reads, sorts and compares a real column, and no name hides a later one.
#include "catalogue.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

TEST(PropertyTable, EntriesReadSortAndCompareRealViewColumns) {
    mdbtest::Catalogue catalogue;
    std::vector<std::string> cols;
    sqlite3_stmt *stmt = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(catalogue.db(), "select * from DLNA", -1, &stmt, nullptr), SQLITE_OK);
    for (int i = 0; i < sqlite3_column_count(stmt); ++i) cols.emplace_back(sqlite3_column_name(stmt, i));
    sqlite3_finalize(stmt);
    catalogue.exec("insert into ITEM (id, parentID, flags, title, fileName, size) values (1, 0, 2, 'root', '/', 0),"
                   "(2, 1, 11, 'song', 'a.mp3', 0), (3, 1, 13, 'pic', 'b.jpg', 0), (7, 1, 139, 't', 'c.mp3', 2000)");
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const MdbDlnaCol &col = g_astDlnaCols[i];
        SCOPED_TRACE("entry " + std::to_string(i) + " " + col.pcPropName);
        ASSERT_LT(col.usColIdx, cols.size());
        // existence kinds: 0, 1, 2, or a non-empty set of the item class bits 4, 8, 16
        EXPECT_TRUE(col.usSearchType < 3 || (col.usSearchType & ~28u) == 0) << col.usSearchType;
        if ((col.usFlags & MDB_COL_CONTAINER_ONLY) == 0) {
            // sorting and search comparisons write pcColName; the value is read at usColIdx
            EXPECT_EQ(cols[col.usColIdx], col.pcColName);
        }
    }
    // Search comparisons keep the value's double quotes: numeric columns, computed ones included,
    // must still compare as numbers.
    const std::pair<const char *, const char *> cases[] = {
        {"size >= \"1000\"", "1"}, {"size < \"1000\"", "0"}, {"restricted = \"1\"", "1"},
        {"restricted = \"0\"", "0"}, {"class = \"11\"", "1"},
    };
    for (const auto &[where, count] : cases) {
        EXPECT_EQ(catalogue.rows(std::string("select count(*) from DLNA where id=7 and ") + where), count) << where;
    }
}

// The search criteria syntax takes the first entry whose name begins the text: a name that is a
// prefix of a later one (or a duplicate) would hide it.
TEST(PropertyTable, NoNameHidesALaterOne) {
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const std::string text = std::string(g_astDlnaCols[i].pcPropName) + " exists true";
        uint32_t first = 0;
        while (text.rfind(g_astDlnaCols[first].pcPropName, 0) != 0) ++first;
        EXPECT_EQ(first, i) << text << " is taken for " << g_astDlnaCols[first].pcPropName;
    }
}

}  // namespace
