// Helpers of the browse tests: the server addresses that libupnp answers, DLNA profiles of the
// shipped profile library found by name, running DLNA view rows through the item writer, and a
// well-formedness check of answers with libxml2.
#pragma once

#include "action.h"

#include <mdb.h>

#include <string>
#include <vector>

namespace browsetest {

// What UpnpGetServerIpAddress / UpnpGetServerIp6Address answer from now on; NULL is the answer of
// libupnp before UpnpInit2, the starting state of every test program.
void SetServerAddresses(const char *ipv4, const char *ipv6);

// A profile of the shipped profile library and the flags word (profile id) that names it.
struct Profile {
    uint32_t flags = 0;
    const MdbDlnaProfile *profile = nullptr;
};
// The first profile (families in table order, profiles by number) of an item class whose name
// satisfies the test, or one with profile == nullptr.
Profile FindProfile(uint32_t itemClass, bool (*test)(const std::string &name));
// The first profile of the class that is neither LPCM nor "Unknown".
Profile FindOrdinaryProfile(uint32_t itemClass);

// Runs sql (a select on the DLNA view) on the catalogue with MdbBuildItemCallback and ctx.
int WriteRows(sqlite3 *db, MdbItemBuildCtx &ctx, const std::string &sql);

// Parses xml with libxml2 (namespace-aware). *error receives every complaint of the parser (empty
// when the text is well-formed and its prefixes are declared). Returns the texts of the elements
// named qname ("dc:title"), in document order.
std::vector<std::string> XmlTexts(const std::string &xml, const std::string &qname, std::string *error);

}  // namespace browsetest
