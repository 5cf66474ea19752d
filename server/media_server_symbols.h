// What the library imports from its media server, defined by mdbd: the process-wide connection,
// the eventing hook CreateObject calls, and the ports of the file server.
#pragma once

#include <cstdint>
#include <functional>

namespace mdbd {

// What QRV_DMS_NOTIFY_SUBSCRIPTION does with the flags word of an object CreateObject made. It is
// called with the library mutex held, so it must not take it.
void SetCreateNotification(std::function<void(uint32_t flags)> notify);

}  // namespace mdbd
