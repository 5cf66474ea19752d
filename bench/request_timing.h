// Timing Browse and Search requests as a media server makes them, and their floor: the bare
// sqlite3_exec of the same statements on the same connection with an empty row callback.
#pragma once

#include <mdb.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace mdbbench {

struct Timing {
    double medianUs = 0;
    double p95Us = 0;
};

// Median and 95th percentile of the calls of fn, in microseconds, after a few unmeasured calls.
Timing Measure(int calls, const std::function<void()> &fn);

struct RequestCase {
    std::string name;
    std::string objectId;        // ObjectID (Browse) or ContainerID (Search)
    uint32_t browseFlag = 1;     // Browse only
    std::string criteria;        // non-empty: a Search
    std::string sort;            // SortCriteria, empty for none
    uint32_t startingIndex = 0;
    double targetUs = 0;
    std::string filter = "*";    // Filter
};

struct RequestResult {
    Timing call;                  // the whole library call with the answer serialised
    Timing floor;                 // the same statements through bare sqlite3_exec
    uint32_t objects = 0;         // NumberReturned
    uint32_t totalMatches = 0;
    uint32_t status = MDB_OK;
    std::vector<std::string> statements;  // what the call ran
};

// One request: its Filter (normally "*"), RequestedCount 50, a fresh DIDL-Lite document, the call, the answer
// serialised to a string. Measured `calls` times; the statements are captured with SQLite's
// statement trace during one extra call and then timed bare.
RequestResult MeasureRequest(sqlite3 *db, const RequestCase &request, int calls);

}  // namespace mdbbench
