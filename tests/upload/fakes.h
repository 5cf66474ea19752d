// The fakes of the upload test program. It defines sleep(), sysinfo(), UpnpGetServerIpAddress()
// and UpnpGetServerIp6Address() itself (fakes.cpp); the static test link makes the library call
// these. sleep(n) returns at once, records n and moves the uptime on by n seconds; sysinfo()
// reports the fake uptime and zero for everything else; the server addresses are fixed texts
// (libupnp answers NULL for them until it is initialised, which a unit test does not do).
#pragma once

#include <functional>
#include <vector>

namespace mdbtest {
namespace fake {

constexpr long kStartUptime = 1000;
constexpr const char *kIpv4 = "192.0.2.7";
constexpr const char *kIpv6 = "2001:db8::7";

// Uptime kStartUptime, no sleeps or sysinfo calls recorded, no sleep hook, addresses known.
void reset();
void setUptime(long seconds);
// Arguments of every sleep() since the last reset, in order.
std::vector<unsigned> sleeps();
int sysinfoCalls();
// Runs inside every sleep() (e.g. to lift a fault the library is waiting out).
void onSleep(std::function<void()> hook);
// false: both address functions answer NULL, as libupnp does before it is initialised.
void setAddressesKnown(bool known);

}  // namespace fake
}  // namespace mdbtest
