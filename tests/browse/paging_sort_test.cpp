// Paging and sorting of database lists: pages of RequestedCount objects from StartingIndex, in
// the order that SortCriteria asks for, with TotalMatches counting the whole list; the value
// lists of categories are neither paged nor sorted.
#include "library.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace {

using browsetest::Library;
using browsetest::Row;

// Pages through id with pages of pageSize objects; checks every page's counters against total and
// returns the titles in the order served, as a real XML parser reads them from the answers.
std::vector<std::string> PageThrough(const std::string &id, const char *sort, uint32_t pageSize, size_t total) {
    std::vector<std::string> titles;
    for (uint32_t start = 0; start < total + pageSize; start += pageSize) {
        mdbtest::Action action(true, pageSize, start);
        action.adoptSort(QRV_MDB_BuildSortStr(sort));
        EXPECT_STREQ(QRV_MDB_StatusName(QRV_MDB_Browse(id.c_str(), 1, action.ctx())), "MDB_OK") << id;
        const size_t expected = start < total ? std::min<size_t>(pageSize, total - start) : 0;
        EXPECT_EQ(action->ulNumberReturned, expected) << id << " from " << start;
        EXPECT_EQ(action->ulTotalMatches, total) << id << " from " << start;
        std::string error;
        std::vector<std::string> page = browsetest::XmlTexts(action.xml(), "dc:title", &error);
        EXPECT_EQ(error, "") << id;
        EXPECT_EQ(page.size(), expected) << id;
        titles.insert(titles.end(), page.begin(), page.end());
    }
    return titles;
}

std::vector<std::string> Titles(std::vector<Row> rows, bool (*before)(const Row &, const Row &)) {
    std::sort(rows.begin(), rows.end(), before);
    std::vector<std::string> out;
    for (const Row &r : rows) {
        out.push_back(r.title);
    }
    return out;
}

bool TitleUp(const Row &a, const Row &b) { return a.title < b.title; }
bool TitleDown(const Row &a, const Row &b) { return a.title > b.title; }
bool DateUp(const Row &a, const Row &b) { return a.date < b.date; }
bool DateDown(const Row &a, const Row &b) { return a.date > b.date; }

TEST(PagingAndSorting, PagesConcatenateToTheSortedList) {
    Library lib;
    const long long jazz = lib.genre("Jazz");
    const long long music = lib.row("Music").id;
    struct Case {
        std::string id;
        const char *sort;
        std::vector<Row> rows;
        bool (*before)(const Row &, const Row &);
    };
    const std::vector<Case> cases = {
        {"0.1.256", "+dc:title", lib.itemsOfClass(MDB_CLASS_MUSIC), TitleUp},
        {"0.1.256", "-dc:date", lib.itemsOfClass(MDB_CLASS_MUSIC), DateDown},
        {"0.2.512", "-dc:title", lib.itemsOfClass(MDB_CLASS_VIDEO), TitleDown},
        {"0.3.768", "dc:date", lib.itemsOfClass(MDB_CLASS_PICTURE), DateUp},
        {"0.1.264|" + std::to_string(music), "+dc:title", lib.folderChildren(music, MDB_CLASS_MUSIC), TitleUp},
        {"0.1.257|" + std::to_string(jazz), "-dc:title,+dc:date",
         lib.itemsWith(&Row::genre, jazz, MDB_CLASS_MUSIC), TitleDown},
        {"0.1.258|" + std::to_string(lib.artist("Miles Davis")), "+dc:date",
         lib.itemsWith(&Row::artist, lib.artist("Miles Davis"), MDB_CLASS_MUSIC), DateUp},
    };
    for (const Case &c : cases) {
        ASSERT_GE(c.rows.size(), 2u) << c.id;
        const std::vector<std::string> expected = Titles(c.rows, c.before);
        for (uint32_t pageSize : {1u, 2u, 3u, 100u}) {
            EXPECT_EQ(PageThrough(c.id, c.sort, pageSize, c.rows.size()), expected)
                << c.id << " " << c.sort << " in pages of " << pageSize;
        }
    }
}

TEST(PagingAndSorting, ValueListsIgnoreStartingIndexAndSort) {
    Library lib;
    const std::vector<long long> genres = lib.values("GENRES", MDB_CLASS_MUSIC);
    auto list = [](uint32_t count, uint32_t start, const char *sort) {
        mdbtest::Action action(true, count, start);
        action.adoptSort(QRV_MDB_BuildSortStr(sort));
        EXPECT_STREQ(QRV_MDB_StatusName(QRV_MDB_Browse("0.1.257", 1, action.ctx())), "MDB_OK");
        std::vector<std::string> ids;
        for (IXML_Element *e : action.objects()) {
            ids.push_back(mdbtest::attr(e, "id"));
        }
        EXPECT_EQ(action->ulNumberReturned, ids.size());
        EXPECT_EQ(action->ulTotalMatches, 4u);
        return ids;
    };
    ASSERT_EQ(genres.size(), 4u);
    const std::vector<std::string> all = list(10, 0, nullptr);
    EXPECT_EQ(all.size(), 4u);
    EXPECT_EQ(list(10, 2, nullptr), all) << "StartingIndex does not apply to value lists";
    EXPECT_EQ(list(10, 0, "-dc:title"), all) << "nor does the sort";
    EXPECT_EQ(list(2, 2, nullptr), std::vector<std::string>(all.begin(), all.begin() + 2));
    EXPECT_TRUE(list(0, 0, nullptr).empty());
}

}  // namespace
