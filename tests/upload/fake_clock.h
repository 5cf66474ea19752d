// The clock of the upload test program. This program defines its own sleep() and sysinfo()
// (fake_clock.cpp); the static test link makes the library call them instead of the system's.
// sleep(n) returns at once, records n and moves the uptime on by n seconds; sysinfo() answers the
// system's values with the fake uptime. The uptime starts at the system's real uptime and moves
// only through sleep() and the functions below, so time never runs backwards.
#pragma once

#include <functional>
#include <vector>

namespace mdbtest {

namespace fakeclock {

// Back to the real uptime, no recorded sleeps, no hook, no sysinfo calls counted.
void reset();
// The uptime (seconds) that sysinfo() reports now.
long uptime();
void setUptime(long seconds);
void advance(long seconds);
// Arguments of every sleep() since the last reset, in order.
std::vector<unsigned> sleeps();
// Calls of sysinfo() since the last reset.
int sysinfoCalls();
// Runs inside every sleep(), after the uptime has moved on (e.g. to lift a fault the library is
// waiting out). Pass an empty function to remove it.
void onSleep(std::function<void(unsigned)> hook);

// Resets the clock for the lifetime of the object (a test's scope) and again when it goes.
class Scope {
public:
    Scope() { reset(); }
    ~Scope() { reset(); }
    Scope(const Scope &) = delete;
    Scope &operator=(const Scope &) = delete;
};

}  // namespace fakeclock

}  // namespace mdbtest
