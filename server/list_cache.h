// What mdbd keeps of the catalogue's lists until the catalogue changes (a new version of its data):
// - the genre, artist and album lists as mdbd answers them: the library reads such a list whole for
//   every page and mdbd sorts it by title, which for 2,000 albums is tens of milliseconds a page,
//   and a client that pages through them asks forty times; kept, a page costs the copy of its
//   objects;
// - the TotalMatches of folder and all-items lists: the library counts the whole list for every
//   page (a millisecond for a folder of 10,000 tracks, several for all music), though every page
//   of one list has the same total.
#pragma once

#include "list_answers.h"

#include <didl_document.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace mdbd {

class ListCache {
public:
    // A page of the value list kept for key at version (of the catalogue's data, read under the
    // library mutex) into answer; false when none is kept.
    bool Page(const std::string &key, uint32_t version, uint32_t start, uint32_t count, ListAnswer &answer);
    // Keeps the sorted value list of document for key, read at version.
    void Keep(const std::string &key, uint32_t version, const mdbcommon::DidlDocument &sorted);

    // The total kept for the list of container at version into total; false when none is kept.
    bool Total(const std::string &container, uint32_t version, uint32_t &total);
    // Keeps the total of the list of container, counted at version.
    void KeepTotal(const std::string &container, uint32_t version, uint32_t total);

private:
    struct List {
        std::string head;                  // the DIDL-Lite start tag
        std::vector<std::string> objects;  // each object's text
    };
    // Value lists kept at once (one per container, filter and direction a client asked for), and
    // totals (one per container).
    static constexpr size_t kMaxLists = 16;
    static constexpr size_t kMaxTotals = 1024;

    // Makes version the current one (emptying what an older one kept); false when version is
    // older than the current one: what was read then may miss a change that newer entries show.
    bool MoveTo(uint32_t version);

    std::mutex m_mutex;  // guards what follows
    uint32_t m_version = 0;
    std::map<std::string, List> m_lists;
    std::map<std::string, uint32_t> m_totals;
};

}  // namespace mdbd
