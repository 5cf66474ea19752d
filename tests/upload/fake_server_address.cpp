// Server addresses for the upload test program; see fake_server_address.h.
#include "fake_server_address.h"

#include <upnp.h>

#include <string>

namespace mdbtest {
namespace fakeaddress {

namespace {
bool g_available = true;

// libupnp hands out writable texts; these live as long as the program.
char *Writable(const char *text) {
    static std::string v4 = kIpv4;
    static std::string v6 = kIpv6;
    return text == kIpv4 ? v4.data() : v6.data();
}

char *Address(const char *text) { return g_available ? Writable(text) : nullptr; }
}  // namespace

void setAvailable(bool available) { g_available = available; }

}  // namespace fakeaddress
}  // namespace mdbtest

extern "C" char *UpnpGetServerIpAddress(void) { return mdbtest::fakeaddress::Address(mdbtest::fakeaddress::kIpv4); }

extern "C" char *UpnpGetServerIp6Address(void) { return mdbtest::fakeaddress::Address(mdbtest::fakeaddress::kIpv6); }
