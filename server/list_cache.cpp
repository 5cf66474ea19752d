// The lists and totals kept between requests.
#include "list_cache.h"

#include <algorithm>

namespace mdbd {

bool ListCache::MoveTo(uint32_t version) {
    if (static_cast<int32_t>(version - m_version) < 0) {
        return false;
    }
    if (version != m_version) {
        m_lists.clear();
        m_totals.clear();
        m_version = version;
    }
    return true;
}

bool ListCache::Page(const std::string &key, uint32_t version, uint32_t start, uint32_t count,
                     ListAnswer &answer) {
    std::lock_guard<std::mutex> guard(m_mutex);
    auto found = m_lists.find(key);
    if (version != m_version || found == m_lists.end()) {
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

void ListCache::Keep(const std::string &key, uint32_t version, const mdbcommon::DidlDocument &sorted) {
    List list;
    const std::string whole = sorted.Compact();
    list.head = whole.substr(0, whole.find('>') + 1);
    list.objects = sorted.ObjectTexts();
    std::lock_guard<std::mutex> guard(m_mutex);
    if (!MoveTo(version)) {
        return;
    }
    if (m_lists.size() >= kMaxLists) {
        m_lists.clear();
    }
    m_lists[key] = std::move(list);
}

bool ListCache::Total(const std::string &container, uint32_t version, uint32_t &total) {
    std::lock_guard<std::mutex> guard(m_mutex);
    auto found = m_totals.find(container);
    if (version != m_version || found == m_totals.end()) {
        return false;
    }
    total = found->second;
    return true;
}

void ListCache::KeepTotal(const std::string &container, uint32_t version, uint32_t total) {
    std::lock_guard<std::mutex> guard(m_mutex);
    if (!MoveTo(version)) {
        return;
    }
    if (m_totals.size() >= kMaxTotals) {
        m_totals.clear();
    }
    m_totals[container] = total;
}

}  // namespace mdbd
