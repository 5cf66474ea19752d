// Copying a file byte for byte, used for the catalogue database file. It knows nothing of SQLite.
#include <mdb.h>

#include <cstdio>
#include <cstring>

/* Copy pcSource onto pcTarget (created or truncated) in 4096-byte steps. MDB_ERR_PARA for a NULL
 * path or the same path text twice; MDB_ERR_FAIL when a file cannot be opened (with a "Caution:"
 * line on stdout) or a write comes up short (perror; the target keeps what was written). A read
 * error ends the copy like the end of the file. */
uint32_t QRV_MDB_Copyfile(const char *pcTarget, const char *pcSource) {
    if (pcTarget == nullptr || pcSource == nullptr || std::strcmp(pcTarget, pcSource) == 0) {
        return MDB_ERR_PARA;
    }
    FILE *pstSource = fopen64(pcSource, "rb");
    if (pstSource == nullptr) {
        puts("Caution: Source file can not open.");
        return MDB_ERR_FAIL;
    }
    FILE *pstTarget = fopen64(pcTarget, "wb");
    if (pstTarget == nullptr) {
        puts("Caution: Target db file can not open.");
        std::fclose(pstSource);
        return MDB_ERR_FAIL;
    }
    char acBuf[4096];
    for (;;) {
        size_t ulRead = std::fread(acBuf, 1, sizeof acBuf, pstSource);
        if (ulRead == 0) {
            break;
        }
        if (std::fwrite(acBuf, 1, ulRead, pstTarget) < ulRead) {
            perror("Caution:  Target db file write error.\n");
            std::fclose(pstTarget);
            std::fclose(pstSource);
            return MDB_ERR_FAIL;
        }
    }
    std::fclose(pstTarget);
    std::fclose(pstSource);
    return MDB_OK;
}
