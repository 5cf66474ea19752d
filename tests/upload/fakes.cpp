// The fakes of the upload test program; see fakes.h.
#include "fakes.h"

#include <sys/sysinfo.h>

#include <string>
#include <utility>

namespace mdbtest {
namespace fake {
namespace {

struct State {
    long uptime = kStartUptime;
    std::vector<unsigned> sleeps;
    int sysinfoCalls = 0;
    std::function<void()> hook;
    bool addressesKnown = true;
};

State &state() {
    static State s;
    return s;
}

}  // namespace

void reset() { state() = State{}; }
void setUptime(long seconds) { state().uptime = seconds; }
std::vector<unsigned> sleeps() { return state().sleeps; }
int sysinfoCalls() { return state().sysinfoCalls; }
void onSleep(std::function<void()> hook) { state().hook = std::move(hook); }
void setAddressesKnown(bool known) { state().addressesKnown = known; }

}  // namespace fake
}  // namespace mdbtest

using mdbtest::fake::state;

extern "C" unsigned int sleep(unsigned int seconds) {
    state().uptime += static_cast<long>(seconds);
    state().sleeps.push_back(seconds);
    if (state().hook) {
        state().hook();
    }
    return 0;
}

extern "C" int sysinfo(struct sysinfo *info) {
    *info = {};
    ++state().sysinfoCalls;
    info->uptime = state().uptime;
    return 0;
}

// libupnp hands out writable texts; these live as long as the program.
extern "C" char *UpnpGetServerIpAddress(void) {
    static std::string address = mdbtest::fake::kIpv4;
    return state().addressesKnown ? address.data() : nullptr;
}

extern "C" char *UpnpGetServerIp6Address(void) {
    static std::string address = mdbtest::fake::kIpv6;
    return state().addressesKnown ? address.data() : nullptr;
}
