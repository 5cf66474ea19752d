// mdbd's ConnectionManager:1 service: the protocols it serves (every DLNA profile of the
// platform's profile table), and the one implicit connection "0" of an HTTP server.
#pragma once

#include <upnp.h>

#include <string>

namespace mdbd {

// The SourceProtocolInfo: the protocolInfo of every profile, comma-separated.
const std::string &SourceProtocolInfo();

void HandleConnectionManager(UpnpActionRequest *request);

}  // namespace mdbd
