// The library mutex (see library_lock.h).
#include "library_lock.h"

namespace mdbd {

std::mutex &LibraryMutex() {
    static std::mutex s_mutex;
    return s_mutex;
}

}  // namespace mdbd
