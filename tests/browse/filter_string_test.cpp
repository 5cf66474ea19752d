// Filter: the filter array that the server hands to every Browse and Search, checked against the
// shipped property table. SortCriteria are checked where they order lists: by the tree walk (two
// orders) and the handler edges (every key).

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
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) all.insert(i);
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

}  // namespace
