// The tool stands in for the media server that normally hosts the library. The resource URLs the
// library writes need the server's address (which libupnp answers only after UpnpInit2 has
// started a real device) and its file server's port (from the platform's server shim). A command
// line has no running server, so the address comes from --address and is answered here: these
// definitions in the executable take the place of libupnp's for the library.
#include "tool_context.h"

#include <mdb_server_shim.h>

#include <arpa/inet.h>

#include <cstring>

namespace {

char g_acServerIp4[INET_ADDRSTRLEN] = "";
char g_acServerIp6[INET6_ADDRSTRLEN] = "";

}  // namespace

extern "C" {

/* The IPv4 address given with --address, or NULL when none was (the library then writes
 * relative URLs). */
char *UpnpGetServerIpAddress(void) { return g_acServerIp4[0] != '\0' ? g_acServerIp4 : nullptr; }

/* The IPv6 address given with --address, or NULL. */
char *UpnpGetServerIp6Address(void) { return g_acServerIp6[0] != '\0' ? g_acServerIp6 : nullptr; }

}  // extern "C"

namespace mdbtool {

int ConfigureServerAddress(const std::string &address, uint16_t port) {
    MdbShimSetFileServerPorts(port, port);
    g_acServerIp4[0] = '\0';
    g_acServerIp6[0] = '\0';
    if (address.empty()) {
        return 0;
    }
    unsigned char binary[sizeof(struct in6_addr)];
    if (inet_pton(AF_INET, address.c_str(), binary) == 1) {
        inet_ntop(AF_INET, binary, g_acServerIp4, sizeof g_acServerIp4);
        return AF_INET;
    }
    if (inet_pton(AF_INET6, address.c_str(), binary) == 1) {
        inet_ntop(AF_INET6, binary, g_acServerIp6, sizeof g_acServerIp6);
        return AF_INET6;
    }
    return -1;
}

}  // namespace mdbtool
