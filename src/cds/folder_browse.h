// The shared root folders as the children of a folder container. Internal to the library.
#pragma once

#include <mdb.h>

/* Browse flag 0: pstNode's own metadata, both counters 1, the write's status. Otherwise list the
 * root folders of g_pstRootPaths as containers of pstNode ("|" and the root's row id as suffix,
 * the root's title): every root counts in ulTotalMatches, the first ulRequestedCount are written
 * (ulStartingIndex does not apply). A failed write ends the list with its status. */
uint32_t MdbBrowseRootFolders(const MdbStaticContainer *pstNode, uint32_t ulBrowseFlag, MdbActionCtx *pstAction);
