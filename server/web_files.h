// The files mdbd serves from its UPnP web server besides the device description: the service
// descriptions (SCPD) and the device icons, carried in the binary (generated from server/web).
#pragma once

#include <cstddef>

namespace mdbd {

struct WebFile {
    const char *name;
    const unsigned char *data;
    size_t size;
};

extern const WebFile kWebFiles[];
extern const size_t kWebFileCount;

}  // namespace mdbd
