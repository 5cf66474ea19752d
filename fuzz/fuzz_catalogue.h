// What the fuzz targets share: stopping the run with a message, and an in-memory catalogue made
// from the shipped schema script (MDB_FUZZ_SCHEMA_SCRIPT, set by the build).
#pragma once

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace mdbfuzz {

/* Report a broken expectation of the target named pcTarget and abort, so libFuzzer keeps the input. */
[[noreturn]] inline void Fail(const char *pcTarget, const char *pcWhat, const std::string &detail) {
    std::fprintf(stderr, "%s fuzz: %s: %s\n", pcTarget, pcWhat, detail.c_str());
    std::abort();
}

/* Run set-up SQL on pstDb; any error aborts. */
inline void Exec(const char *pcTarget, sqlite3 *pstDb, const char *pcSql) {
    char *pcErr = nullptr;
    if (sqlite3_exec(pstDb, pcSql, nullptr, nullptr, &pcErr) != SQLITE_OK) {
        Fail(pcTarget, "setting up the catalogue", pcErr != nullptr ? pcErr : pcSql);
    }
}

/* A new in-memory catalogue with the shipped schema. */
inline sqlite3 *OpenCatalogue(const char *pcTarget) {
    std::string script;
    FILE *pstFile = std::fopen(MDB_FUZZ_SCHEMA_SCRIPT, "rb");
    if (pstFile == nullptr) {
        Fail(pcTarget, "no schema script", MDB_FUZZ_SCHEMA_SCRIPT);
    }
    char acBuf[4096];
    size_t n;
    while ((n = std::fread(acBuf, 1, sizeof(acBuf), pstFile)) > 0) {
        script.append(acBuf, n);
    }
    std::fclose(pstFile);
    sqlite3 *pstDb = nullptr;
    if (sqlite3_open(":memory:", &pstDb) != SQLITE_OK) {
        Fail(pcTarget, "no in-memory database", "");
    }
    Exec(pcTarget, pstDb, script.c_str());
    return pstDb;
}

}  // namespace mdbfuzz
