// The catalogue that the Search tests search: folders for music, video and pictures, and items of
// several profiles with genres, artists, albums, creators, dates, durations and resolutions.
// Rows go in through the store's own operations; their ids are fixed by the order of insertion.
#pragma once

#include "catalogue.h"
#include "action.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace searchtest {

class SearchLibrary {
public:
    SearchLibrary();

    mdbtest::Catalogue &catalogue() { return m_cat; }
    sqlite3 *db() const { return m_cat.db(); }
    // Row id of the row with that title (fails the test for an unknown title).
    long long id(const std::string &title) const;
    // Titles of all rows, or of the rows with that class number.
    std::set<std::string> titles() const;
    std::set<std::string> titlesOfClass(int cls) const;

    // Row ids fixed by the order of insertion.
    static constexpr long long kMusicFolder = 5;
    static constexpr long long kGenreRock = 1, kGenreJazz = 2, kGenrePop = 3;

private:
    long long add(const mdbtest::ItemValues &v);
    mdbtest::Catalogue m_cat;
    std::map<std::string, long long> m_ids;
    std::map<std::string, int> m_classes;
};

// Titles of the objects written into the action's document, in order.
std::vector<std::string> WrittenTitles(const mdbtest::Action &action);
// The same as a set.
std::set<std::string> WrittenTitleSet(const mdbtest::Action &action);
// The id attributes of the written objects, in order.
std::vector<std::string> WrittenIds(const mdbtest::Action &action);

}  // namespace searchtest
