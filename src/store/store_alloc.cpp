// The replaceable allocator behind the store's long-lived blocks (see store_alloc.h).
#include "store/store_alloc.h"

#include <cstdlib>

namespace {
MdbAllocFn g_pfnAlloc = nullptr;
}

/* Allocate through the installed allocator, or malloc when none is installed. */
void *MdbAlloc(size_t ulBytes) {
    return g_pfnAlloc != nullptr ? g_pfnAlloc(ulBytes) : std::malloc(ulBytes);
}

/* An array of ulCount elements, refused when the byte count overflows size_t. */
void *MdbAllocArray(uint32_t ulCount, size_t ulSize) {
    if (ulSize != 0 && ulCount > SIZE_MAX / ulSize) {
        return nullptr;
    }
    return MdbAlloc(static_cast<size_t>(ulCount) * ulSize);
}

/* Install pfnAlloc (NULL for malloc) and return the previous one. */
MdbAllocFn MdbSetAllocator(MdbAllocFn pfnAlloc) {
    MdbAllocFn pfnOld = g_pfnAlloc;
    g_pfnAlloc = pfnAlloc;
    return pfnOld;
}
