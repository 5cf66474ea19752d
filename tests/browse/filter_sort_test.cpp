// Filter and SortCriteria: the filter array and the ORDER BY text that the server hands to every
// Browse and Search, checked against the shipped property table and the DLNA view of the shipped
// schema.
#include "catalogue.h"

#include <mdb.h>
#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace {

using FilterBytes = std::unique_ptr<unsigned char, decltype(&std::free)>;
using SortText = std::unique_ptr<char, decltype(&std::free)>;

FilterBytes ParseFilter(const char *filter) { return FilterBytes(QRV_MDB_ParseFilterString(filter), &std::free); }
SortText BuildSort(const char *criteria) { return SortText(QRV_MDB_BuildSortStr(criteria), &std::free); }

uint32_t IndexOf(const char *propName) {
    const uint32_t idx = QRV_MDB_GetFilterIdx(propName);
    EXPECT_LT(idx, g_ulNumOfDlnaCols) << propName << " is not in the property table";
    return idx;
}

// Indexes whose bytes are set.
std::set<uint32_t> SetBytes(const unsigned char *bytes) {
    std::set<uint32_t> out;
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        if (bytes[i] != 0) {
            out.insert(i);
        }
    }
    return out;
}

std::set<uint32_t> AllIndexes() {
    std::set<uint32_t> out;
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        out.insert(i);
    }
    return out;
}

TEST(FilterString, ExamplesSetTheBytesOfTheNamedProperties) {
    const uint32_t title = IndexOf("dc:title");
    const uint32_t date = IndexOf("dc:date");
    struct Case {
        const char *why;
        const char *filter;
        std::set<uint32_t> expected;
    };
    const std::vector<Case> cases = {
        {"NULL asks for nothing", nullptr, {}},
        {"empty text asks for nothing", "", {}},
        {"a lone star asks for everything", "*", AllIndexes()},
        {"a star inside a list is no star", "*,dc:title", {title}},
        {"two names", "dc:title,dc:date", {title, date}},
        {"the same names in the other order", "dc:date,dc:title", {title, date}},
        {"a blank after the comma hides the second name", "dc:title, dc:date", {title}},
        {"a longer name is not its prefix", "dc:titles", {}},
        {"a blank behind a name hides it", "dc:title ,dc:date", {date}},
        {"names are case-sensitive", "DC:TITLE,dc:date", {date}},
        {"unknown names are skipped", "x:unknown,dc:date,,", {date}},
        {"a trailing comma is harmless", "dc:title,", {title}},
    };
    for (const Case &c : cases) {
        FilterBytes bytes = ParseFilter(c.filter);
        ASSERT_NE(bytes, nullptr) << c.why;
        EXPECT_EQ(SetBytes(bytes.get()), c.expected) << c.why;
    }
}

TEST(SortCriteria, ExamplesGiveTheOrderByText) {
    ASSERT_STREQ(g_astDlnaCols[IndexOf("dc:title")].pcColName, "title");
    ASSERT_STREQ(g_astDlnaCols[IndexOf("dc:date")].pcColName, "date");
    struct Case {
        const char *why;
        const char *criteria;
        const char *expected;  // nullptr: no sort text at all
    };
    const std::vector<Case> cases = {
        {"ascending and descending keys", "+dc:title,-dc:date", "ORDER BY title,date desc"},
        {"a key without sign is ascending", "dc:title", "ORDER BY title"},
        {"the first occurrence decides the direction", "-dc:title,+dc:title", "ORDER BY title desc"},
        {"a repeated key is dropped whatever its sign", "+dc:date,-dc:title,-dc:date", "ORDER BY date,title desc"},
        {"unknown keys are skipped", "+x:unknown,-dc:date", "ORDER BY date desc"},
        {"a blank after the comma hides the key", "+dc:title, -dc:date", "ORDER BY title"},
        {"NULL asks for no sort", nullptr, nullptr},
        {"empty text asks for no sort", "", nullptr},
        {"only unknown keys", "x:unknown", nullptr},
        {"only one sign is skipped", "--dc:title", nullptr},
        {"a sign alone", "+", nullptr},
    };
    for (const Case &c : cases) {
        SortText sort = BuildSort(c.criteria);
        if (c.expected == nullptr) {
            EXPECT_EQ(sort, nullptr) << c.why << ": got " << sort.get();
        } else {
            ASSERT_NE(sort, nullptr) << c.why;
            EXPECT_STREQ(sort.get(), c.expected) << c.why;
        }
    }
}

TEST(SortCriteria, ContainerOnlyPropertiesAreNeverSortKeys) {
    bool sawOne = false;
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const MdbDlnaCol &col = g_astDlnaCols[i];
        if ((col.usFlags & MDB_COL_CONTAINER_ONLY) == 0 || QRV_MDB_GetFilterIdx(col.pcPropName) != i) {
            continue;
        }
        sawOne = true;
        const std::string alone = std::string("-") + col.pcPropName;
        EXPECT_EQ(BuildSort(alone.c_str()), nullptr) << alone;
        const std::string withTitle = alone + ",+dc:title";
        SortText sort = BuildSort(withTitle.c_str());
        ASSERT_NE(sort, nullptr) << withTitle;
        EXPECT_STREQ(sort.get(), "ORDER BY title") << withTitle;
    }
    EXPECT_TRUE(sawOne) << "the shipped table has no container-only property to try";
}

// Every key that the conversion accepts names a real column of the DLNA view: a select with that
// ORDER BY runs on a catalogue made with the shipped schema, in both directions.
TEST(SortCriteria, EveryAcceptedKeyIsAColumnOfTheDlnaView) {
    mdbtest::Catalogue catalogue;
    mdbtest::ItemValues track;
    track.flags = static_cast<int32_t>(MDB_CLASS_MUSIC);
    track.title = "Track";
    track.fileName = "track.mp3";
    catalogue.addItem(track);

    uint32_t accepted = 0;
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        for (const char *sign : {"+", "-"}) {
            const std::string criteria = sign + std::string(g_astDlnaCols[i].pcPropName);
            SortText sort = BuildSort(criteria.c_str());
            if (sort == nullptr) {
                continue;
            }
            ++accepted;
            const std::string sql = std::string("select * from DLNA ") + sort.get() + " LIMIT 5 OFFSET 0";
            uint32_t rows = 0;
            const int rc = MdbExecSql(
                catalogue.db(), sql.c_str(),
                [](void *arg, int, char **, char **) {
                    ++*static_cast<uint32_t *>(arg);
                    return 0;
                },
                &rows, nullptr);
            EXPECT_EQ(rc, SQLITE_OK) << sql;
            EXPECT_EQ(rows, 1u) << sql;
        }
    }
    EXPECT_GT(accepted, 2u * 4u) << "too few sortable properties in the shipped table";
}

}  // namespace
