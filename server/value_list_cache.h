// The genre, artist and album lists as mdbd answers them, kept until the catalogue changes. The
// library reads such a list whole for every page and mdbd sorts it by title: for 2,000 albums that
// is tens of milliseconds a page, and a client that pages through them asks forty times. Kept,
// a page costs the copy of its objects.
#pragma once

#include "list_answers.h"

#include <didl_document.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace mdbd {

class ValueListCache {
public:
    // A page of the list kept for key at generation (the catalogue's SystemUpdateID when the
    // request came) into answer; false when none is kept.
    bool Page(const std::string &key, uint32_t generation, uint32_t start, uint32_t count, ListAnswer &answer);
    // Keeps the sorted list of document for key, read at generation.
    void Keep(const std::string &key, uint32_t generation, const mdbcommon::DidlDocument &sorted);

private:
    struct List {
        std::string head;                  // the DIDL-Lite start tag
        std::vector<std::string> objects;  // each object's text
    };
    // Lists kept at once (one per container, filter and direction a client asked for).
    static constexpr size_t kMaxLists = 16;

    std::mutex m_mutex;
    uint32_t m_generation = 0;
    std::map<std::string, List> m_lists;
};

}  // namespace mdbd
