// Action records with a real ixml document, and small readers for what the library wrote.
#include "action.h"

#include <mdb_platform.h>

#include <cstdlib>
#include <cstring>

namespace mdbtest {

namespace {
const char *kNone = "<none>";
}

Action::Action(bool filterAll, uint32_t requestedCount, uint32_t startingIndex) {
    m_ctx.pcObjectId = m_objectId;
    m_ctx.ulRequestedCount = requestedCount;
    m_ctx.ulStartingIndex = startingIndex;
    m_ctx.ulAddrFamily = 2;
    m_ctx.pcErrStr = m_errStr;
    setFilterAll(filterAll);
    makeDocument();
}

Action::~Action() {
    if (m_ctx.pstDoc != nullptr) {
        ixmlDocument_free(m_ctx.pstDoc);
    }
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
    ixmlNode_appendChild(reinterpret_cast<IXML_Node *>(m_ctx.pstDoc), reinterpret_cast<IXML_Node *>(root));
    m_ctx.pstDidlRoot = root;
}

void Action::setFilter(const std::vector<unsigned char> &bytes) {
    m_filterCopy = bytes;
    m_ctx.pucFilter = m_filterCopy.data();
}

void Action::setFilterAll(bool on) { setFilter(std::vector<unsigned char>(g_ulNumOfDlnaCols, on ? 1 : 0)); }

void Action::adoptFilter(unsigned char *bytes) {
    free(m_adoptedFilter);
    m_adoptedFilter = bytes;
    m_ctx.pucFilter = bytes;
}

void Action::adoptSort(char *sort) {
    free(m_ctx.pcSortStr);
    m_ctx.pcSortStr = sort;
}

void Action::setObjectId(const std::string &id) {
    snprintf(m_objectId, sizeof m_objectId, "%s", id.c_str());
}

std::string Action::xml() const {
    DOMString s = ixmlNodetoString(reinterpret_cast<IXML_Node *>(m_ctx.pstDidlRoot));
    std::string out = s != nullptr ? s : "";
    ixmlFreeDOMString(s);
    return out;
}

std::vector<IXML_Element *> Action::objects() const {
    std::vector<IXML_Element *> out;
    for (IXML_Node *n = ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(m_ctx.pstDidlRoot)); n != nullptr;
         n = ixmlNode_getNextSibling(n)) {
        if (ixmlNode_getNodeType(n) == eELEMENT_NODE) {
            out.push_back(reinterpret_cast<IXML_Element *>(n));
        }
    }
    return out;
}

void Action::reset() {
    ixmlDocument_free(m_ctx.pstDoc);
    makeDocument();
    m_ctx.ulNumberReturned = 0;
    m_ctx.ulTotalMatches = 0;
    m_ctx.lUpnpErrCode = 0;
    memset(m_errStr, 0, sizeof m_errStr);
}

std::string attr(IXML_Element *el, const std::string &name) {
    if (el == nullptr) {
        return kNone;
    }
    IXML_Attr *a = ixmlElement_getAttributeNode(el, name.c_str());
    if (a == nullptr) {
        return kNone;
    }
    const char *v = ixmlNode_getNodeValue(reinterpret_cast<IXML_Node *>(a));
    return v != nullptr ? v : "";
}

std::vector<std::string> attrNames(IXML_Element *el) {
    std::vector<std::string> out;
    IXML_NamedNodeMap *map = ixmlNode_getAttributes(reinterpret_cast<IXML_Node *>(el));
    if (map == nullptr) {
        return out;
    }
    for (unsigned long i = 0; i < ixmlNamedNodeMap_getLength(map); ++i) {
        out.emplace_back(ixmlNode_getNodeName(ixmlNamedNodeMap_item(map, i)));
    }
    ixmlNamedNodeMap_free(map);
    return out;
}

std::vector<IXML_Element *> children(IXML_Element *el, const std::string &name) {
    std::vector<IXML_Element *> out;
    if (el == nullptr) {
        return out;
    }
    for (IXML_Node *n = ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(el)); n != nullptr;
         n = ixmlNode_getNextSibling(n)) {
        if (ixmlNode_getNodeType(n) == eELEMENT_NODE && name == ixmlNode_getNodeName(n)) {
            out.push_back(reinterpret_cast<IXML_Element *>(n));
        }
    }
    return out;
}

std::vector<std::string> childNames(IXML_Element *el) {
    std::vector<std::string> out;
    for (IXML_Node *n = ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(el)); n != nullptr;
         n = ixmlNode_getNextSibling(n)) {
        if (ixmlNode_getNodeType(n) == eELEMENT_NODE) {
            out.emplace_back(ixmlNode_getNodeName(n));
        }
    }
    return out;
}

std::string childText(IXML_Element *el, const std::string &name) {
    std::vector<IXML_Element *> found = children(el, name);
    if (found.empty()) {
        return kNone;
    }
    IXML_Node *text = ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(found[0]));
    if (text == nullptr) {
        return "";
    }
    const char *v = ixmlNode_getNodeValue(text);
    return v != nullptr ? v : "";
}

}  // namespace mdbtest
