// The answer of a BrowseMetadata on a container: one container element, both counters 1.
// Internal to the content directory.
#pragma once

#include <mdb.h>

/* Write pstNode's container (with pcTitle and pcSuffix as QRV_MDB_BuildMetadataForStaticContainer
 * takes them), set NumberReturned and TotalMatches to 1 whatever the write answered, and return
 * the write's status. */
uint32_t MdbAnswerWithContainer(const MdbStaticContainer *pstNode, const char *pcTitle, const char *pcSuffix,
                                MdbActionCtx *pstAction);
