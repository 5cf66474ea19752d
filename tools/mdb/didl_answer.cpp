// Printing DIDL-Lite answers. The indented form is written by walking the ixml tree,
// escaping text and attribute values as XML requires, so that it parses like the compact form.
#include "didl_answer.h"

#include <algorithm>
#include <vector>

namespace mdbtool {

namespace {

IXML_Node *AsNode(IXML_Element *element) { return reinterpret_cast<IXML_Node *>(element); }

void AppendEscaped(std::string &out, const char *text, bool attribute) {
    for (const char *p = text; p != nullptr && *p != '\0'; ++p) {
        switch (*p) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += attribute ? "&quot;" : "\"";
            break;
        default:
            out += *p;
        }
    }
}

bool HasElementChild(IXML_Node *node) {
    for (IXML_Node *child = ixmlNode_getFirstChild(node); child != nullptr; child = ixmlNode_getNextSibling(child)) {
        if (ixmlNode_getNodeType(child) == eELEMENT_NODE) {
            return true;
        }
    }
    return false;
}

void AppendElement(std::string &out, IXML_Node *node, int depth) {
    const std::string indent(static_cast<size_t>(depth) * 2, ' ');
    out += indent + "<" + ixmlNode_getNodeName(node);
    if (IXML_NamedNodeMap *attributes = ixmlNode_getAttributes(node)) {
        unsigned long count = ixmlNamedNodeMap_getLength(attributes);
        for (unsigned long i = 0; i < count; ++i) {
            IXML_Node *attribute = ixmlNamedNodeMap_item(attributes, i);
            out += " ";
            out += ixmlNode_getNodeName(attribute);
            out += "=\"";
            AppendEscaped(out, ixmlNode_getNodeValue(attribute), true);
            out += "\"";
        }
        ixmlNamedNodeMap_free(attributes);
    }
    IXML_Node *first = ixmlNode_getFirstChild(node);
    if (first == nullptr) {
        out += "/>\n";
        return;
    }
    if (!HasElementChild(node)) {
        out += ">";
        for (IXML_Node *child = first; child != nullptr; child = ixmlNode_getNextSibling(child)) {
            AppendEscaped(out, ixmlNode_getNodeValue(child), false);
        }
        out += std::string("</") + ixmlNode_getNodeName(node) + ">\n";
        return;
    }
    out += ">\n";
    for (IXML_Node *child = first; child != nullptr; child = ixmlNode_getNextSibling(child)) {
        if (ixmlNode_getNodeType(child) == eELEMENT_NODE) {
            AppendElement(out, child, depth + 1);
        }
    }
    out += indent + "</" + ixmlNode_getNodeName(node) + ">\n";
}

std::string ChildText(IXML_Node *node, const char *name) {
    for (IXML_Node *child = ixmlNode_getFirstChild(node); child != nullptr; child = ixmlNode_getNextSibling(child)) {
        if (ixmlNode_getNodeType(child) == eELEMENT_NODE && std::string(ixmlNode_getNodeName(child)) == name) {
            IXML_Node *text = ixmlNode_getFirstChild(child);
            const char *value = text != nullptr ? ixmlNode_getNodeValue(text) : nullptr;
            return value != nullptr ? value : "";
        }
    }
    return std::string();
}

}  // namespace

std::string DidlAnswer::Indented() const {
    std::string out;
    if (root() != nullptr) {
        AppendElement(out, AsNode(root()), 0);
    }
    return out;
}

std::string DidlAnswer::Table() const {
    struct Row {
        std::string id, kind, title, resource;
    };
    std::vector<Row> rows;
    rows.push_back(Row{"ID", "CLASS", "TITLE", "RESOURCE"});
    for (IXML_Node *object = root() != nullptr ? ixmlNode_getFirstChild(AsNode(root())) : nullptr; object != nullptr;
         object = ixmlNode_getNextSibling(object)) {
        if (ixmlNode_getNodeType(object) != eELEMENT_NODE) {
            continue;
        }
        const char *id = ixmlElement_getAttribute(reinterpret_cast<IXML_Element *>(object), "id");
        std::string upnpClass = ChildText(object, "upnp:class");
        std::string::size_type dot = upnpClass.rfind('.');
        rows.push_back(Row{id != nullptr ? id : "", dot == std::string::npos ? upnpClass : upnpClass.substr(dot + 1),
                           ChildText(object, "dc:title"), ChildText(object, "res")});
    }
    size_t idWidth = 0;
    size_t kindWidth = 0;
    size_t titleWidth = 0;
    for (const Row &row : rows) {
        idWidth = std::max(idWidth, row.id.size());
        kindWidth = std::max(kindWidth, row.kind.size());
        titleWidth = std::min<size_t>(std::max(titleWidth, row.title.size()), 48);
    }
    std::string out;
    for (const Row &row : rows) {
        std::string line = row.id + std::string(idWidth - row.id.size() + 2, ' ') + row.kind +
                           std::string(kindWidth - row.kind.size() + 2, ' ') + row.title;
        if (!row.resource.empty()) {
            line += std::string(row.title.size() < titleWidth ? titleWidth - row.title.size() + 2 : 2, ' ') +
                    row.resource;
        }
        out += line + "\n";
    }
    return out;
}

}  // namespace mdbtool
