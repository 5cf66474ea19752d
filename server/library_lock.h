// The one lock of the catalogue library. MDB is single-threaded by contract: its request
// operations share one SQLite connection and process-wide lists (the root folders, the upload
// notes) without locks of their own, while libupnp calls mdbd from a pool of worker threads, the
// file server from threads of its own, and the scanner runs in a thread too. So every library
// call that reads or writes the catalogue or the library's lists happens under this one mutex.
// The library's pure translations, which touch neither (Filter and SortCriteria conversion, the
// search criteria check, locating a static container, a profile's protocolInfo), run outside it,
// as do reading SOAP arguments, serialising an answer and reading or writing media files, so
// that a request holds it for the time of its SQL only.
//
// Lock order: this mutex first, then SQLite's locks. Inside mdbd every SQLite statement runs under
// the mutex, so mdbd's own threads never wait for each other inside SQLite; the only wait under
// the mutex is for another process that holds the catalogue's write lock (an "mdb scan", say).
#pragma once

#include <mutex>

namespace mdbd {

std::mutex &LibraryMutex();

// Holds the library mutex for a scope.
class LibraryGuard {
public:
    LibraryGuard() : m_lock(LibraryMutex()) {}

private:
    std::lock_guard<std::mutex> m_lock;
};

}  // namespace mdbd
