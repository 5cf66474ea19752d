// What mdbd keeps beside its catalogue across restarts: the UDN of its device (so that clients
// find the same server again) and the SystemUpdateID (so that a client's cached view is never
// taken for current after a restart). A small text file, "<catalogue>.state", replaced whole.
#pragma once

#include <cstdint>
#include <string>

namespace mdbd {

struct ServerState {
    std::string udn;                 // "uuid:..." (made once, at the first start)
    uint32_t systemUpdateId = 0;
    bool running = false;  // saved as true while the server runs, false when it stopped cleanly
};

// Reads the state at path; a missing or unreadable file gives a new UDN and SystemUpdateID 0.
ServerState LoadServerState(const std::string &path);

// Writes the state to path through a temporary file and a rename. false when it cannot.
bool SaveServerState(const std::string &path, const ServerState &state);

}  // namespace mdbd
