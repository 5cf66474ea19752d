// The types and ids of mdbd's device and services, as its description names them.
#pragma once

namespace mdbd {

constexpr char kDeviceType[] = "urn:schemas-upnp-org:device:MediaServer:1";
constexpr char kContentDirectoryType[] = "urn:schemas-upnp-org:service:ContentDirectory:1";
constexpr char kContentDirectoryServiceId[] = "urn:upnp-org:serviceId:ContentDirectory";
constexpr char kConnectionManagerType[] = "urn:schemas-upnp-org:service:ConnectionManager:1";
constexpr char kConnectionManagerServiceId[] = "urn:upnp-org:serviceId:ConnectionManager";
constexpr char kRegistrarType[] = "urn:microsoft.com:service:X_MS_MediaReceiverRegistrar:1";
constexpr char kRegistrarServiceId[] = "urn:microsoft.com:serviceId:X_MS_MediaReceiverRegistrar";

}  // namespace mdbd
