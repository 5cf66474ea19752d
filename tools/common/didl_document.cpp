// The DIDL-Lite answer document.
#include "didl_document.h"

#include <strings.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace mdbcommon {

namespace {

IXML_Node *AsNode(IXML_Element *element) { return reinterpret_cast<IXML_Node *>(element); }

/* The text of an object's dc:title, empty without one. */
std::string TitleOf(IXML_Node *object) {
    for (IXML_Node *child = ixmlNode_getFirstChild(object); child != nullptr; child = ixmlNode_getNextSibling(child)) {
        const char *name = ixmlNode_getNodeName(child);
        if (name != nullptr && std::strcmp(name, "dc:title") == 0) {
            IXML_Node *text = ixmlNode_getFirstChild(child);
            const char *value = text != nullptr ? ixmlNode_getNodeValue(text) : nullptr;
            return value != nullptr ? value : "";
        }
    }
    return std::string();
}

/* Appends text with the characters XML reserves as entities ('"' too in an attribute value). */
void AppendEscaped(std::string &out, const char *text, bool attribute) {
    for (const char *run = text; text != nullptr && *run != '\0';) {
        const size_t plain = std::strcspn(run, attribute ? "&<>\"" : "&<>");
        out.append(run, plain);
        run += plain;
        switch (*run) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        default: continue;  // the end of the text
        }
        ++run;
    }
}

/* Appends node and everything below it without whitespace between elements. ixml's own printer
 * appends byte by byte and puts a line feed after every element; a page of 50 items is tens of
 * kilobytes, written for every answer. */
void AppendCompact(std::string &out, IXML_Node *node) {
    switch (ixmlNode_getNodeType(node)) {
    case eELEMENT_NODE:
        out += '<';
        out += ixmlNode_getNodeName(node);
        for (IXML_Node *attribute = node->firstAttr; attribute != nullptr; attribute = attribute->nextSibling) {
            out += ' ';
            out += ixmlNode_getNodeName(attribute);
            out += "=\"";
            AppendEscaped(out, ixmlNode_getNodeValue(attribute), true);
            out += '"';
        }
        out += '>';
        for (IXML_Node *child = ixmlNode_getFirstChild(node); child != nullptr; child = ixmlNode_getNextSibling(child)) {
            AppendCompact(out, child);
        }
        out += "</";
        out += ixmlNode_getNodeName(node);
        out += '>';
        break;
    case eTEXT_NODE:
        AppendEscaped(out, ixmlNode_getNodeValue(node), false);
        break;
    case eCDATA_SECTION_NODE:
        out += "<![CDATA[";
        out += ixmlNode_getNodeValue(node) != nullptr ? ixmlNode_getNodeValue(node) : "";
        out += "]]>";
        break;
    default:
        break;
    }
}

}  // namespace

DidlDocument::DidlDocument() {
    m_doc = ixmlDocument_createDocument();
    if (m_doc == nullptr) {
        return;
    }
    m_root = ixmlDocument_createElement(m_doc, "DIDL-Lite");
    if (m_root == nullptr) {
        return;
    }
    ixmlElement_setAttribute(m_root, "xmlns", "urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/");
    ixmlElement_setAttribute(m_root, "xmlns:dc", "http://purl.org/dc/elements/1.1/");
    ixmlElement_setAttribute(m_root, "xmlns:upnp", "urn:schemas-upnp-org:metadata-1-0/upnp/");
    ixmlElement_setAttribute(m_root, "xmlns:dlna", "urn:schemas-dlna-org:metadata-1-0/");
    ixmlNode_appendChild(reinterpret_cast<IXML_Node *>(m_doc), AsNode(m_root));
}

DidlDocument::~DidlDocument() {
    if (m_doc != nullptr) {
        ixmlDocument_free(m_doc);
    }
}

uint32_t DidlDocument::ObjectCount() const {
    uint32_t count = 0;
    for (IXML_Node *node = m_root != nullptr ? ixmlNode_getFirstChild(AsNode(m_root)) : nullptr; node != nullptr;
         node = ixmlNode_getNextSibling(node)) {
        count += ixmlNode_getNodeType(node) == eELEMENT_NODE ? 1 : 0;
    }
    return count;
}

void DidlDocument::DropFirst(uint32_t count) {
    for (uint32_t i = 0; i < count && m_root != nullptr; ++i) {
        IXML_Node *first = ixmlNode_getFirstChild(AsNode(m_root));
        if (first == nullptr) {
            return;
        }
        IXML_Node *removed = nullptr;
        ixmlNode_removeChild(AsNode(m_root), first, &removed);
        ixmlNode_free(removed);
    }
}

void DidlDocument::KeepFirst(uint32_t count) {
    IXML_Node *node = m_root != nullptr ? ixmlNode_getFirstChild(AsNode(m_root)) : nullptr;
    for (uint32_t i = 0; i < count && node != nullptr; ++i) {
        node = ixmlNode_getNextSibling(node);
    }
    while (node != nullptr) {
        IXML_Node *next = ixmlNode_getNextSibling(node);
        IXML_Node *removed = nullptr;
        ixmlNode_removeChild(AsNode(m_root), node, &removed);
        ixmlNode_free(removed);
        node = next;
    }
}

void DidlDocument::SortByTitle(bool descending) {
    std::vector<std::pair<std::string, IXML_Node *>> objects;
    for (IXML_Node *node = m_root != nullptr ? ixmlNode_getFirstChild(AsNode(m_root)) : nullptr; node != nullptr;
         node = ixmlNode_getNextSibling(node)) {
        objects.emplace_back(TitleOf(node), node);
    }
    std::stable_sort(objects.begin(), objects.end(), [descending](const auto &a, const auto &b) {
        const int order = strcasecmp(a.first.c_str(), b.first.c_str());
        return descending ? order > 0 : order < 0;
    });
    // Taken out and appended again in order: ixml moves a node that is appended where it is.
    for (auto &object : objects) {
        IXML_Node *removed = nullptr;
        ixmlNode_removeChild(AsNode(m_root), object.second, &removed);
        ixmlNode_appendChild(AsNode(m_root), removed);
    }
}

void DidlDocument::SetParentIds(const std::string &parentId) {
    for (IXML_Node *node = m_root != nullptr ? ixmlNode_getFirstChild(AsNode(m_root)) : nullptr; node != nullptr;
         node = ixmlNode_getNextSibling(node)) {
        if (ixmlNode_getNodeType(node) == eELEMENT_NODE) {
            ixmlElement_setAttribute(reinterpret_cast<IXML_Element *>(node), "parentID", parentId.c_str());
        }
    }
}

void DidlDocument::RebaseIds(const std::string &container, char separator) {
    for (IXML_Node *node = m_root != nullptr ? ixmlNode_getFirstChild(AsNode(m_root)) : nullptr; node != nullptr;
         node = ixmlNode_getNextSibling(node)) {
        if (ixmlNode_getNodeType(node) != eELEMENT_NODE) {
            continue;
        }
        auto *element = reinterpret_cast<IXML_Element *>(node);
        const char *id = ixmlElement_getAttribute(element, "id");
        const char *tail = id != nullptr ? std::strrchr(id, separator) : nullptr;
        if (tail != nullptr) {
            const std::string rebased = container + tail;
            ixmlElement_setAttribute(element, "id", rebased.c_str());
        }
        ixmlElement_setAttribute(element, "parentID", container.c_str());
    }
}

std::string DidlDocument::Compact() const {
    std::string out;
    if (m_root != nullptr) {
        out.reserve(4096);
        AppendCompact(out, AsNode(m_root));
    }
    return out;
}

std::vector<std::string> DidlDocument::ObjectTexts() const {
    std::vector<std::string> texts;
    for (IXML_Node *node = m_root != nullptr ? ixmlNode_getFirstChild(AsNode(m_root)) : nullptr; node != nullptr;
         node = ixmlNode_getNextSibling(node)) {
        if (ixmlNode_getNodeType(node) == eELEMENT_NODE) {
            texts.emplace_back();
            AppendCompact(texts.back(), node);
        }
    }
    return texts;
}

}  // namespace mdbcommon
