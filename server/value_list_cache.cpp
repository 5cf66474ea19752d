// The sorted value lists kept between requests.
#include "value_list_cache.h"

#include <algorithm>

namespace mdbd {

bool ValueListCache::Page(const std::string &key, uint32_t generation, uint32_t start, uint32_t count,
                          ListAnswer &answer) {
    std::lock_guard<std::mutex> guard(m_mutex);
    auto found = m_lists.find(key);
    if (generation != m_generation || found == m_lists.end()) {
        return false;
    }
    const List &list = found->second;
    const size_t first = std::min<size_t>(start, list.objects.size());
    const size_t end = first + std::min<size_t>(count, list.objects.size() - first);
    answer.result = list.head;
    for (size_t i = first; i < end; ++i) {
        answer.result += list.objects[i];
    }
    answer.result += "</DIDL-Lite>";
    answer.returned = static_cast<uint32_t>(end - first);
    answer.total = static_cast<uint32_t>(list.objects.size());
    return true;
}

void ValueListCache::Keep(const std::string &key, uint32_t generation, const mdbcommon::DidlDocument &sorted) {
    List list;
    const std::string whole = sorted.Compact();
    list.head = whole.substr(0, whole.find('>') + 1);
    list.objects = sorted.ObjectTexts();
    std::lock_guard<std::mutex> guard(m_mutex);
    if (static_cast<int32_t>(generation - m_generation) < 0) {
        return;  // read before a change that a newer list already shows
    }
    if (generation != m_generation || m_lists.size() >= kMaxLists) {
        m_lists.clear();
        m_generation = generation;
    }
    m_lists[key] = std::move(list);
}

}  // namespace mdbd
