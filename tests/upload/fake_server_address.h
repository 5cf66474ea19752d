// The server addresses of the upload test program. libupnp answers NULL for them until UpnpInit2
// has run, which a unit test does not do; this program defines UpnpGetServerIpAddress and
// UpnpGetServerIp6Address itself (fake_server_address.cpp), so that import URLs carry a known
// address. The ports come from the reference server shim.
#pragma once

namespace mdbtest {
namespace fakeaddress {

constexpr const char *kIpv4 = "192.0.2.7";
constexpr const char *kIpv6 = "2001:db8::7";

// false: both functions answer NULL, as libupnp does before it is initialised. Default true.
void setAvailable(bool available);

}  // namespace fakeaddress
}  // namespace mdbtest
