// An action record as a media server prepares it: a fresh ixml document with the DIDL-Lite root
// and its namespace declarations, filter bytes for every property, and answer counters; and small
// readers for what the library wrote into it.
#pragma once

#include <mdb.h>

#include <string>
#include <vector>

namespace mdbtest {

class Action {
public:
    // Filter bytes all set ("*") when filterAll, else all clear.
    explicit Action(bool filterAll = true, uint32_t requestedCount = 100, uint32_t startingIndex = 0);
    ~Action();
    Action(const Action &) = delete;
    Action &operator=(const Action &) = delete;

    MdbActionCtx *ctx() { return &m_ctx; }
    MdbActionCtx *operator->() { return &m_ctx; }

    // Takes ownership of a malloc'ed filter array (as QRV_MDB_ParseFilterString returns).
    void adoptFilter(unsigned char *bytes);
    // Takes ownership of a malloc'ed sort text, or NULL.
    void adoptSort(char *sort);
    void setObjectId(const std::string &id);

    // The DIDL-Lite root with everything appended, serialised.
    std::string xml() const;
    // The objects appended under the root, in order.
    std::vector<IXML_Element *> objects() const;
    // Forgets all objects and counters, for a second request with the same record.
    void reset();

private:
    void makeDocument();
    MdbActionCtx m_ctx{};
    std::vector<unsigned char> m_filterAll;
    unsigned char *m_adoptedFilter = nullptr;
    char m_objectId[256] = {0};
    char m_errStr[64] = {0};
};

// Attribute value of an element, or "<none>" when it has no such attribute.
std::string attr(IXML_Element *el, const std::string &name);
// Names of the element's attributes, in the order they were set.
std::vector<std::string> attrNames(IXML_Element *el);
// The element children with that name ("": all of them), in order.
std::vector<IXML_Element *> children(IXML_Element *el, const std::string &name = "");
// Names of the element's children, in order.
std::vector<std::string> childNames(IXML_Element *el);
// Text of the first child element with that name; "<none>" without such a child, "" when empty.
std::string childText(IXML_Element *el, const std::string &name);
// The upnp:searchClass children of a container, each as "text includeDerived".
std::vector<std::string> searchClasses(IXML_Element *container);

}  // namespace mdbtest
