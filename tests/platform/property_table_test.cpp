// The property table against the shipped DLNA view and against what the library and the search
// translation assume of its positions, names and flags.
#include "schema_db.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

using platformtest::SchemaDb;

namespace {

std::vector<std::string> DlnaViewColumns() {
    SchemaDb db;
    return db.columns("select * from DLNA");
}

bool HasFlag(uint32_t index, uint16_t flag) { return (g_astDlnaCols[index].usFlags & flag) != 0; }

/* The entry the search criteria syntax takes for a text: the first whose name begins it. */
int FirstPrefixMatch(const std::string &text) {
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const char *name = g_astDlnaCols[i].pcPropName;
        if (std::strncmp(text.c_str(), name, std::strlen(name)) == 0) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

int IndexOfName(const std::string &name) {
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        if (name == g_astDlnaCols[i].pcPropName) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

TEST(PropertyTable, HasAtLeast33Entries) { EXPECT_GE(g_ulNumOfDlnaCols, 33u); }

TEST(PropertyTable, ViewKeepsTheFixedPositionsAndNamedColumns) {
    std::vector<std::string> cols = DlnaViewColumns();
    ASSERT_GT(cols.size(), 28u);
    EXPECT_EQ(cols[0], "id");
    EXPECT_EQ(cols[2], "flags");
    EXPECT_EQ(cols[3], "title");
    EXPECT_EQ(cols[21], "fileName");
    for (const char *named : {"parentID", "genre_id", "genre", "artist_id", "artist", "album_id", "album"}) {
        EXPECT_NE(std::find(cols.begin(), cols.end(), named), cols.end()) << named;
    }
}

TEST(PropertyTable, EveryColumnIndexIsAViewColumnAndNamesIt) {
    std::vector<std::string> cols = DlnaViewColumns();
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const MdbDlnaCol &col = g_astDlnaCols[i];
        ASSERT_LT(col.usColIdx, cols.size()) << "entry " << i << " " << col.pcPropName;
        if (!HasFlag(i, MDB_COL_CONTAINER_ONLY)) {
            // Sorting and search comparisons write pcColName; the value is read at usColIdx.
            EXPECT_EQ(cols[col.usColIdx], col.pcColName) << "entry " << i << " " << col.pcPropName;
        }
    }
}

TEST(PropertyTable, EverySortableColumnSortsWithoutError) {
    SchemaDb db;
    ASSERT_EQ(db.exec("insert into ITEM (id, parentID, flags, title, fileName) values "
                      "(1, 0, 2, 'root', '/media'), (2, 1, 11, 'song', 'song.mp3'), (3, 1, 13, 'pic', 'pic.jpg')"),
              SQLITE_OK);
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        if (HasFlag(i, MDB_COL_CONTAINER_ONLY)) {
            continue;
        }
        for (const char *dir : {"", " desc"}) {
            std::string error;
            std::string sql = std::string("select * from DLNA where parentID=1 ORDER BY ") +
                              g_astDlnaCols[i].pcColName + dir + " LIMIT 10 OFFSET 0";
            EXPECT_EQ(db.exec(sql, &error), SQLITE_OK) << sql << ": " << error;
        }
    }
}

TEST(PropertyTable, EverySearchComparisonNamesAColumn) {
    SchemaDb db;
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        if (g_astDlnaCols[i].pfnSearchValue == nullptr) {
            continue;
        }
        std::string error;
        std::string sql = std::string("select count(*) from DLNA where ") + g_astDlnaCols[i].pcColName + " = \"1\"";
        EXPECT_EQ(db.exec(sql, &error), SQLITE_OK) << sql << ": " << error;
    }
}

TEST(PropertyTable, QuotedNumbersCompareAsNumbers) {
    // Search comparisons keep the value's double quotes; the view's numeric columns must still
    // compare numerically, computed ones included.
    SchemaDb db;
    ASSERT_EQ(db.exec("insert into ITEM (id, flags, title, size) values (7, 139, 't', 2000)"), SQLITE_OK);
    struct Case {
        const char *where;
        int expected;
    } cases[] = {
        {"size >= \"1000\"", 1}, {"size < \"1000\"", 0}, {"restricted = \"1\"", 1}, {"restricted = \"0\"", 0},
        {"class = \"11\"", 1},
    };
    for (const Case &c : cases) {
        int count = -1;
        std::string sql = std::string("select count(*) from DLNA where ") + c.where;
        sqlite3_exec(
            db.db(), sql.c_str(),
            [](void *arg, int, char **values, char **) {
                *static_cast<int *>(arg) = std::atoi(values[0]);
                return 0;
            },
            &count, nullptr);
        EXPECT_EQ(count, c.expected) << c.where;
    }
}

struct FixedEntry {
    uint32_t index;
    const char *propName; // nullptr: not fixed
    const char *colName;  // nullptr: not fixed
    int searchType;       // -1: not fixed
    uint16_t flagsSet;
    uint16_t flagsClear;
    MdbSearchValueFn recognizer;
    bool recognizerFixed;
};

TEST(PropertyTable, FixedPositionsHoldWhatTheLibraryAssumes) {
    const uint16_t kElement = MDB_COL_ELEMENT, kRes = MDB_COL_RES_ATTRIBUTE, kBuilder = MDB_COL_ADAPT_BUILDER;
    const FixedEntry fixed[] = {
        // the object id: attribute "id", read from the row id column
        {0, "@id", "id", -1, 0, kElement | kRes, nullptr, false},
        {1, "@parentID", "parentID", -1, 0, kElement | kRes, nullptr, false},
        {2, "upnp:class", nullptr, 0, 0, 0, MdbCmpDerivedOp, true},
        {3, "dc:title", "title", 1, 0, 0, MdbCmpStringOp, true},
        // stored in microseconds: written by the builder as a res attribute
        {8, nullptr, "duration", 0, kRes | kBuilder, 0, nullptr, false},
        // stored as height<<32 + width: builder; exists for video and pictures
        {11, nullptr, "resolution", 24, kRes | kBuilder, 0, nullptr, false},
        // CreateObject sets 23 to "0" and 30 to "4": object attributes
        {23, "@restricted", "restricted", -1, 0, kElement | kRes, nullptr, false},
        {30, "@dlna:dlnaManaged", "dlna:dlnaManaged", -1, kBuilder | MDB_COL_CONTAINER_ONLY, kElement | kRes,
         nullptr, false},
        // the library's protocolInfo: a res attribute, never refused to the filter, not overwritten
        {28, "res@protocolInfo", "protocolInfo", -1, kRes | kBuilder, MDB_COL_NOT_FILTERED, nullptr, false},
        {32, "upnp:recordQuality", nullptr, -1, kElement, kRes | kBuilder, nullptr, false},
    };
    ASSERT_GE(g_ulNumOfDlnaCols, 33u);
    for (const FixedEntry &f : fixed) {
        const MdbDlnaCol &col = g_astDlnaCols[f.index];
        SCOPED_TRACE("entry " + std::to_string(f.index));
        if (f.propName != nullptr) {
            EXPECT_STREQ(col.pcPropName, f.propName);
        }
        if (f.colName != nullptr) {
            EXPECT_STREQ(col.pcColName, f.colName);
        }
        if (f.searchType >= 0) {
            EXPECT_EQ(col.usSearchType, f.searchType);
        }
        EXPECT_EQ(col.usFlags & f.flagsSet, f.flagsSet);
        EXPECT_EQ(col.usFlags & f.flagsClear, 0);
        if (f.recognizerFixed) {
            EXPECT_EQ(col.pfnSearchValue, f.recognizer);
        }
    }
    EXPECT_EQ(g_astDlnaCols[0].usColIdx, 0u);
}

TEST(PropertyTable, ContainerMetadataFindsItsPropertiesByExactName) {
    for (const char *name : {"searchable", "upnp:storageUsed", "upnp:writeStatus", "upnp:searchClass"}) {
        int index = IndexOfName(name);
        ASSERT_GE(index, 0) << name;
        EXPECT_TRUE(HasFlag(static_cast<uint32_t>(index), MDB_COL_CONTAINER_ONLY)) << name;
    }
}

TEST(PropertyTable, EveryPropertyIsReachableBySearchCriteria) {
    // The syntax check takes the first entry whose name begins the text: a name that is a
    // prefix of a later one would hide it.
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        std::string name = g_astDlnaCols[i].pcPropName;
        EXPECT_EQ(FirstPrefixMatch(name + " exists true"), static_cast<int>(i)) << name;
        EXPECT_EQ(IndexOfName(name), static_cast<int>(i)) << "duplicate name " << name;
    }
}

TEST(PropertyTable, FlagsRecognizersAndKindsAreWellFormed) {
    const MdbSearchValueFn known[] = {nullptr, MdbCmpRelOp, MdbCmpEqualOp, MdbCmpStringOp, MdbCmpDerivedOp};
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const MdbDlnaCol &col = g_astDlnaCols[i];
        SCOPED_TRACE(col.pcPropName);
        EXPECT_EQ(col.usFlags & ~0x3Fu, 0u);
        EXPECT_NE(std::find(std::begin(known), std::end(known), col.pfnSearchValue), std::end(known));
        // kinds: 0, 1, 2, or a non-empty set of the item class bits 4, 8, 16
        if (col.usSearchType >= 3) {
            EXPECT_EQ(col.usSearchType & ~28u, 0u);
        }
        // a res attribute named by the table is written on "res"; attributes carry no element flag
        if (HasFlag(i, MDB_COL_RES_ATTRIBUTE)) {
            EXPECT_EQ(std::string(col.pcPropName).rfind("res", 0), 0u);
        }
    }
}

} // namespace
