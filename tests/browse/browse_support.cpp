// Helpers of the browse tests (see browse_support.h).
#include "browse_support.h"

#include <mdb_platform.h>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <cstdarg>
#include <cstdio>

namespace {

const char *g_ipv4 = nullptr;
const char *g_ipv6 = nullptr;

void CollectXmlError(void *ctx, const char *fmt, ...) {
    char buf[512];
    va_list args;
    va_start(args, fmt);
    vsnprintf(buf, sizeof buf, fmt, args);
    va_end(args);
    *static_cast<std::string *>(ctx) += buf;
}

}  // namespace

// The test program's definitions win over libupnp's at link time, so that the tests choose the
// server addresses without starting libupnp (which would open sockets).
extern "C" char *UpnpGetServerIpAddress(void) { return const_cast<char *>(g_ipv4); }
extern "C" char *UpnpGetServerIp6Address(void) { return const_cast<char *>(g_ipv6); }

namespace browsetest {

void SetServerAddresses(const char *ipv4, const char *ipv6) {
    g_ipv4 = ipv4;
    g_ipv6 = ipv6;
}

Profile FindProfile(uint32_t itemClass, bool (*test)(const std::string &name)) {
    for (uint32_t f = 0; f < g_ulNumOfMediaClasses; ++f) {
        const uint32_t code = g_astMediaClasses[f].ulFlagsCode;
        if ((code & MDB_FLAGS_CLASS_MASK) != itemClass) {
            continue;
        }
        for (uint32_t j = 0; j < 60; ++j) {
            const MdbDlnaProfile *p = QRV_DLNA_GetProfileByProfileId(code + (j << 16));
            if (p == nullptr) {
                break;
            }
            if (test(p->pcProfileName)) {
                return {code + (j << 16), p};
            }
        }
    }
    return {};
}

Profile FindOrdinaryProfile(uint32_t itemClass) {
    return FindProfile(itemClass, [](const std::string &n) { return n.rfind("LPCM", 0) != 0 && n != "Unknown"; });
}

int WriteRows(sqlite3 *db, MdbItemBuildCtx &ctx, const std::string &sql) {
    return MdbExecSql(db, sql.c_str(), MdbBuildItemCallback, &ctx, nullptr);
}

std::vector<std::string> XmlTexts(const std::string &xml, const std::string &qname, std::string *error) {
    std::vector<std::string> texts;
    error->clear();
    xmlSetGenericErrorFunc(error, CollectXmlError);
    xmlDocPtr doc = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "answer.xml", "UTF-8", XML_PARSE_NONET);
    xmlSetGenericErrorFunc(nullptr, nullptr);
    if (doc == nullptr) {
        if (error->empty()) {
            *error = "not well-formed";
        }
        return texts;
    }
    std::vector<xmlNodePtr> pending{xmlDocGetRootElement(doc)};
    while (!pending.empty()) {
        xmlNodePtr node = pending.back();
        pending.pop_back();
        for (xmlNodePtr child = node->last; child != nullptr; child = child->prev) {
            if (child->type == XML_ELEMENT_NODE) {
                pending.push_back(child);
            }
        }
        std::string name = reinterpret_cast<const char *>(node->name);
        if (node->ns != nullptr && node->ns->prefix != nullptr) {
            name = reinterpret_cast<const char *>(node->ns->prefix) + (":" + name);
        }
        if (name == qname) {
            xmlChar *content = xmlNodeGetContent(node);
            texts.emplace_back(content != nullptr ? reinterpret_cast<const char *>(content) : "");
            xmlFree(content);
        }
    }
    xmlFreeDoc(doc);
    return texts;
}

}  // namespace browsetest
