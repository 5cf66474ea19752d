// Microsoft's X_MS_MediaReceiverRegistrar:1, which Xbox consoles and Windows Media Player look for
// before they browse: every device is authorized and validated.
#pragma once

#include <upnp.h>

namespace mdbd {

void HandleMediaReceiverRegistrar(UpnpActionRequest *request);

}  // namespace mdbd
