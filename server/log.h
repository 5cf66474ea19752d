// mdbd's log: lines on standard error (the journal under systemd), each with the time. Errors and
// notes always; one line per request at verbosity 1 (-v); catalogue changes at 2 (-vv).
// Safe to call from any thread.
#pragma once

#include <cstdio>

namespace mdbd {

void SetLogVerbosity(int verbosity);
int LogVerbosity();

void LogError(const char *format, ...) __attribute__((format(printf, 1, 2)));
void LogNote(const char *format, ...) __attribute__((format(printf, 1, 2)));
void LogRequest(const char *format, ...) __attribute__((format(printf, 1, 2)));
void LogChange(const char *format, ...) __attribute__((format(printf, 1, 2)));

// A stream whose lines become notes of the log (for code that reports to a FILE, such as the
// scanner); it lives as long as the process.
FILE *LogNoteStream();

}  // namespace mdbd
