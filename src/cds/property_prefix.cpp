// Property lookup by prefix: the first name of a comma-separated Filter or SortCriteria list,
// matched against the property table in table order.
#include "cds/property_prefix.h"

#include <mdb_platform.h>

#include <string_view>

/* Scan the table from index 0; an entry matches when its whole name starts the text and the text
 * ends there or goes on with ",". A name followed by a blank or any other sign does not match,
 * so "dc:title " and "dc:titles" find nothing through the "dc:title" entry. */
int32_t MdbGetFilterIdxByPrefix(const char *pcText) {
    if (pcText == nullptr) {
        return -1;
    }
    const std::string_view text(pcText);
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        const char *pcName = g_astDlnaCols[i].pcPropName;
        if (pcName == nullptr) {
            continue;
        }
        const std::string_view name(pcName);
        if (text.size() < name.size() || text.compare(0, name.size(), name) != 0) {
            continue;
        }
        if (text.size() == name.size() || text[name.size()] == ',') {
            return static_cast<int32_t>(i);
        }
    }
    return -1;
}
