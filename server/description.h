// The device description of mdbd: a MediaServer:1 root device (DLNA DMS-1.50) with its name, UDN,
// icons and its three services.
#pragma once

#include <string>

namespace mdbd {

// The description document. friendlyName is escaped for XML here.
std::string DeviceDescription(const std::string &friendlyName, const std::string &udn);

// The control and event paths of a service, as the description names them.
constexpr char kContentDirectoryScpd[] = "/content_directory.xml";
constexpr char kConnectionManagerScpd[] = "/connection_manager.xml";
constexpr char kRegistrarScpd[] = "/media_receiver_registrar.xml";

}  // namespace mdbd
