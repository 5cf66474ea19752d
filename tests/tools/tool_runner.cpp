// The mdb tool as the tests run it, and libxml2 reading its answers.
#include "tool_runner.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstdlib>
#include <cstring>

namespace mdbtest {

namespace {

std::string Text(xmlNode *node) {
    xmlChar *content = xmlNodeGetContent(node);
    std::string text = content != nullptr ? reinterpret_cast<const char *>(content) : "";
    xmlFree(content);
    return text;
}

std::string Attribute(xmlNode *node, const char *name) {
    xmlChar *value = xmlGetProp(node, reinterpret_cast<const xmlChar *>(name));
    std::string text = value != nullptr ? reinterpret_cast<const char *>(value) : "";
    xmlFree(value);
    return text;
}

// Name with its namespace prefix, as written ("dc:title").
std::string QualifiedName(xmlNode *node) {
    std::string name = reinterpret_cast<const char *>(node->name);
    if (node->ns != nullptr && node->ns->prefix != nullptr) {
        name = std::string(reinterpret_cast<const char *>(node->ns->prefix)) + ":" + name;
    }
    return name;
}

long long CounterLine(const std::string &out, const std::string &label) {
    std::string::size_type at = out.find("\n" + label + ": ");
    if (at == std::string::npos) {
        return -1;
    }
    return atoll(out.c_str() + at + label.size() + 3);
}

}  // namespace

ProcessResult RunTool(const std::vector<std::string> &args, const std::string &stdinText) {
    std::vector<std::string> argv = {MDB_TEST_TOOL};
    argv.insert(argv.end(), args.begin(), args.end());
    return RunProcess(argv, stdinText);
}

ToolAnswer ReadAnswer(const std::string &out) {
    ToolAnswer answer;
    answer.numberReturned = CounterLine("\n" + out, "NumberReturned");
    answer.totalMatches = CounterLine("\n" + out, "TotalMatches");
    std::string::size_type end = out.find("NumberReturned: ");
    const std::string xml = out.substr(0, end);
    xmlDoc *doc = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "answer.xml", "UTF-8", XML_PARSE_NONET);
    if (doc == nullptr) {
        answer.parseError = "not well-formed XML";
        return answer;
    }
    xmlNode *root = xmlDocGetRootElement(doc);
    if (root == nullptr || std::strcmp(reinterpret_cast<const char *>(root->name), "DIDL-Lite") != 0 ||
        root->ns == nullptr ||
        std::strcmp(reinterpret_cast<const char *>(root->ns->href), "urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/") != 0) {
        answer.parseError = "the root is not a DIDL-Lite element in its namespace";
        xmlFreeDoc(doc);
        return answer;
    }
    answer.parsed = true;
    for (xmlNode *object = root->children; object != nullptr; object = object->next) {
        if (object->type != XML_ELEMENT_NODE) {
            continue;
        }
        DidlObject o;
        o.element = reinterpret_cast<const char *>(object->name);
        o.id = Attribute(object, "id");
        o.parentId = Attribute(object, "parentID");
        for (xmlNode *child = object->children; child != nullptr; child = child->next) {
            if (child->type != XML_ELEMENT_NODE) {
                continue;
            }
            const std::string name = QualifiedName(child);
            if (name == "dc:title") {
                o.title = Text(child);
            } else if (name == "upnp:class") {
                o.upnpClass = Text(child);
            } else if (name == "res" && o.res.empty()) {
                o.res = Text(child);
                o.importUri = Attribute(child, "importUri");
            }
        }
        answer.objects.push_back(o);
    }
    xmlFreeDoc(doc);
    return answer;
}

}  // namespace mdbtest
