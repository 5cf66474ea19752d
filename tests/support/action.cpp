// Action records with a real ixml document, and small readers for what the library wrote.
#include "action.h"

#include <mdb_platform.h>

#include <cstdlib>
#include <cstring>

namespace mdbtest {

namespace {
IXML_Node *Node(IXML_Element *el) { return reinterpret_cast<IXML_Node *>(el); }
}  // namespace

Action::Action(bool filterAll, uint32_t requestedCount, uint32_t startingIndex)
    : m_filterAll(g_ulNumOfDlnaCols, filterAll ? 1 : 0) {
    m_ctx.pcObjectId = m_objectId;
    m_ctx.ulRequestedCount = requestedCount;
    m_ctx.ulStartingIndex = startingIndex;
    m_ctx.ulAddrFamily = 2;
    m_ctx.pcErrStr = m_errStr;
    m_ctx.pucFilter = m_filterAll.data();
    makeDocument();
}

Action::~Action() {
    ixmlDocument_free(m_ctx.pstDoc);
    free(m_adoptedFilter);
    free(m_ctx.pcSortStr);
}

void Action::makeDocument() {
    m_ctx.pstDoc = ixmlDocument_createDocument();
    IXML_Element *root = ixmlDocument_createElement(m_ctx.pstDoc, "DIDL-Lite");
    ixmlElement_setAttribute(root, "xmlns", "urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/");
    ixmlElement_setAttribute(root, "xmlns:dc", "http://purl.org/dc/elements/1.1/");
    ixmlElement_setAttribute(root, "xmlns:upnp", "urn:schemas-upnp-org:metadata-1-0/upnp/");
    ixmlElement_setAttribute(root, "xmlns:dlna", "urn:schemas-dlna-org:metadata-1-0/");
    ixmlNode_appendChild(reinterpret_cast<IXML_Node *>(m_ctx.pstDoc), Node(root));
    m_ctx.pstDidlRoot = root;
}

void Action::adoptFilter(unsigned char *bytes) {
    free(m_adoptedFilter);
    m_ctx.pucFilter = m_adoptedFilter = bytes;
}

void Action::adoptSort(char *sort) {
    free(m_ctx.pcSortStr);
    m_ctx.pcSortStr = sort;
}

void Action::setObjectId(const std::string &id) { snprintf(m_objectId, sizeof m_objectId, "%s", id.c_str()); }

std::string Action::xml() const {
    DOMString s = ixmlNodetoString(Node(m_ctx.pstDidlRoot));
    std::string out = s != nullptr ? s : "";
    ixmlFreeDOMString(s);
    return out;
}

std::vector<IXML_Element *> Action::objects() const { return children(m_ctx.pstDidlRoot); }

void Action::reset() {
    ixmlDocument_free(m_ctx.pstDoc);
    makeDocument();
    m_ctx.ulNumberReturned = m_ctx.ulTotalMatches = 0;
    m_ctx.lUpnpErrCode = 0;
    memset(m_errStr, 0, sizeof m_errStr);
}

std::string attr(IXML_Element *el, const std::string &name) {
    IXML_Attr *a = el != nullptr ? ixmlElement_getAttributeNode(el, name.c_str()) : nullptr;
    const char *v = a != nullptr ? ixmlNode_getNodeValue(reinterpret_cast<IXML_Node *>(a)) : "<none>";
    return v != nullptr ? v : "";
}

std::vector<std::string> attrNames(IXML_Element *el) {
    std::vector<std::string> out;
    IXML_NamedNodeMap *map = ixmlNode_getAttributes(Node(el));
    for (unsigned long i = 0; map != nullptr && i < ixmlNamedNodeMap_getLength(map); ++i) {
        out.emplace_back(ixmlNode_getNodeName(ixmlNamedNodeMap_item(map, i)));
    }
    ixmlNamedNodeMap_free(map);
    return out;
}

std::vector<IXML_Element *> children(IXML_Element *el, const std::string &name) {
    std::vector<IXML_Element *> out;
    for (IXML_Node *n = el != nullptr ? ixmlNode_getFirstChild(Node(el)) : nullptr; n != nullptr;
         n = ixmlNode_getNextSibling(n)) {
        if (ixmlNode_getNodeType(n) == eELEMENT_NODE && (name.empty() || name == ixmlNode_getNodeName(n))) {
            out.push_back(reinterpret_cast<IXML_Element *>(n));
        }
    }
    return out;
}

std::vector<std::string> childNames(IXML_Element *el) {
    std::vector<std::string> out;
    for (IXML_Element *child : children(el)) out.emplace_back(ixmlNode_getNodeName(Node(child)));
    return out;
}

std::string childText(IXML_Element *el, const std::string &name) {
    std::vector<IXML_Element *> found = children(el, name);
    IXML_Node *text = found.empty() ? nullptr : ixmlNode_getFirstChild(Node(found[0]));
    const char *v = found.empty() ? "<none>" : text != nullptr ? ixmlNode_getNodeValue(text) : "";
    return v != nullptr ? v : "";
}

std::vector<std::string> searchClasses(IXML_Element *container) {
    std::vector<std::string> out;
    for (IXML_Element *e : children(container, "upnp:searchClass")) {
        IXML_Node *text = ixmlNode_getFirstChild(Node(e));
        out.push_back(std::string(text != nullptr ? ixmlNode_getNodeValue(text) : "") + " " + attr(e, "includeDerived"));
    }
    return out;
}

}  // namespace mdbtest
