// Filter and SortCriteria: the filter array and the ORDER BY text that the server hands to every
// Browse and Search, checked against the shipped property table and the DLNA view of the shipped
// schema.
#include "catalogue.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <set>

namespace {

using Owned = std::unique_ptr<void, decltype(&std::free)>;

TEST(FilterString, ExamplesSetTheBytesOfTheNamedProperties) {
    const uint32_t title = QRV_MDB_GetFilterIdx("dc:title"), date = QRV_MDB_GetFilterIdx("dc:date");
    ASSERT_LT(std::max(title, date), g_ulNumOfDlnaCols);
    std::set<uint32_t> all;
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        all.insert(i);
    }
    const std::pair<const char *, std::set<uint32_t>> cases[] = {
        {nullptr, {}},
        {"", {}},
        {"*", all},
        {"*,dc:title", {title}},  // a star inside a list is no star
        {"dc:date,dc:title", {title, date}},
        {"dc:title, dc:date", {title}},  // a blank hides the name it touches
        {"dc:title ,dc:date", {date}},
        {"dc:titles", {}},  // a longer name is not its prefix
        {"DC:TITLE,dc:date", {date}},
        {"x:unknown,dc:date,,", {date}},
    };
    for (const auto &[filter, expected] : cases) {
        Owned bytes(QRV_MDB_ParseFilterString(filter), &std::free);
        ASSERT_NE(bytes, nullptr) << (filter ? filter : "NULL");
        for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
            EXPECT_EQ(static_cast<unsigned char *>(bytes.get())[i] != 0, expected.count(i) == 1)
                << (filter ? filter : "NULL") << ": property " << i;
        }
    }
}

TEST(SortCriteria, ExamplesGiveTheOrderByText) {
    std::vector<std::pair<std::string, const char *>> cases = {  // nullptr: no sort text at all
        {"+dc:title,-dc:date", "ORDER BY title,date desc"},
        {"dc:title", "ORDER BY title"},
        {"-dc:title,+dc:title", "ORDER BY title desc"},  // the first occurrence decides
        {"+dc:date,-dc:title,-dc:date", "ORDER BY date,title desc"},
        {"+x:unknown,-dc:date", "ORDER BY date desc"},
        {"+dc:title, -dc:date", "ORDER BY title"},  // a blank after the comma hides the key
        {"", nullptr},
        {"x:unknown", nullptr},
        {"--dc:title", nullptr},
        {"+", nullptr},
    };
    // Properties of containers only are never sort keys.
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const char *name = g_astDlnaCols[i].pcPropName;
        if ((g_astDlnaCols[i].usFlags & MDB_COL_CONTAINER_ONLY) != 0 && QRV_MDB_GetFilterIdx(name) == i) {
            cases.push_back({std::string("-") + name, nullptr});
            cases.push_back({std::string("-") + name + ",+dc:title", "ORDER BY title"});
        }
    }
    ASSERT_GT(cases.size(), 10u) << "the shipped table has no container-only property to try";
    EXPECT_EQ(Owned(QRV_MDB_BuildSortStr(nullptr), &std::free), nullptr);
    for (const auto &[criteria, expected] : cases) {
        Owned sort(QRV_MDB_BuildSortStr(criteria.c_str()), &std::free);
        EXPECT_STREQ(static_cast<const char *>(sort.get()), expected) << criteria;
    }
}

// Every key that the conversion accepts names a real column of the DLNA view: a select with that
// ORDER BY runs on a catalogue made with the shipped schema, in both directions.
TEST(SortCriteria, EveryAcceptedKeyIsAColumnOfTheDlnaView) {
    mdbtest::Catalogue catalogue;
    uint32_t accepted = 0;
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        for (const char *sign : {"+", "-"}) {
            Owned sort(QRV_MDB_BuildSortStr((sign + std::string(g_astDlnaCols[i].pcPropName)).c_str()), &std::free);
            if (sort != nullptr) {
                ++accepted;
                const std::string sql = "select * from DLNA " + std::string(static_cast<char *>(sort.get()));
                EXPECT_EQ(MdbExecSql(catalogue.db(), sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
            }
        }
    }
    EXPECT_GT(accepted, 2u * 4u) << "too few sortable properties in the shipped table";
}

}  // namespace
