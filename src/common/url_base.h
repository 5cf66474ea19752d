// The base of the URLs the library writes for the server's HTTP file server (resource URLs and
// import URLs). Internal to the library.
#pragma once

#include <cstdint>

/* Write "http://addr:port" (address family 2) or "http://[addr]:port" (10) of the file server
 * into pcBuf (ulSize bytes, cut there); an empty text for any other family and while libupnp has
 * no address yet. */
void MdbFormatUrlBase(uint32_t ulAddrFamily, char *pcBuf, uint32_t ulSize);
