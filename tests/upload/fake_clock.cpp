// sleep() and sysinfo() for the upload test program: no test really waits, and tests set the
// uptime that the upload notes and the time-out read. See fake_clock.h.
#include "fake_clock.h"

#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <utility>

namespace mdbtest {
namespace fakeclock {

namespace {

struct State {
    bool started = false;
    long uptime = 0;
    std::vector<unsigned> sleeps;
    int sysinfoCalls = 0;
    std::function<void(unsigned)> hook;
};

State &state() {
    static State s;
    return s;
}

long realUptime() {
    struct sysinfo info {};
    return syscall(SYS_sysinfo, &info) == 0 ? info.uptime : 1000;
}

State &started() {
    State &s = state();
    if (!s.started) {
        s.started = true;
        s.uptime = realUptime();
    }
    return s;
}

}  // namespace

void reset() {
    State &s = state();
    s.started = false;
    s.sleeps.clear();
    s.sysinfoCalls = 0;
    s.hook = nullptr;
}

long uptime() { return started().uptime; }
void setUptime(long seconds) { started().uptime = seconds; }
void advance(long seconds) { started().uptime += seconds; }
std::vector<unsigned> sleeps() { return state().sleeps; }
int sysinfoCalls() { return state().sysinfoCalls; }
void onSleep(std::function<void(unsigned)> hook) { state().hook = std::move(hook); }

}  // namespace fakeclock
}  // namespace mdbtest

extern "C" unsigned int sleep(unsigned int seconds) {
    auto &s = mdbtest::fakeclock::started();
    s.uptime += static_cast<long>(seconds);
    s.sleeps.push_back(seconds);
    if (s.hook) {
        s.hook(seconds);
    }
    return 0;
}

extern "C" int sysinfo(struct sysinfo *info) {
    if (syscall(SYS_sysinfo, info) != 0) {
        return -1;
    }
    auto &s = mdbtest::fakeclock::started();
    ++s.sysinfoCalls;
    info->uptime = s.uptime;
    return 0;
}
