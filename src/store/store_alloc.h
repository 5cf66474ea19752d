// Allocation of the blocks the store and the upload notes hand out or keep: the id array, the root
// list and the upload notes. All of them come from malloc (callers release the id array with free);
// the allocator can be replaced so that tests can make an allocation fail.
#pragma once

#include <cstddef>
#include <cstdint>

using MdbAllocFn = void *(*)(size_t ulBytes);

/* Allocate ulBytes through the current allocator (malloc unless replaced); NULL on failure. */
void *MdbAlloc(size_t ulBytes);

/* Allocate an array of ulCount elements of ulSize bytes through MdbAlloc; NULL on failure or when
 * the byte count would not fit size_t (possible for 32-bit counts on a 32-bit device). */
void *MdbAllocArray(uint32_t ulCount, size_t ulSize);

/* Replace the allocator; NULL restores malloc. Whatever is installed must hand out blocks that
 * free() releases. Returns the allocator that was installed before. */
MdbAllocFn MdbSetAllocator(MdbAllocFn pfnAlloc);
