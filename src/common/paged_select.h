// The tail that pages a select over the DLNA view: the action's sort text, then LIMIT (the
// RequestedCount) and OFFSET (the StartingIndex). Browse and Search statements all end so.
// Internal to the library.
#pragma once

#include <mdb.h>

#include <cstddef>

// How the sort text stands in a statement: only when there is one (" ORDER BY ... LIMIT" or
// " LIMIT"), or always in its place with its blank before it, an empty text without a sort
// (" ORDER BY ... LIMIT" or "  LIMIT"), as the category statements write it.
enum class MdbSortSlot { kWhenSorted, kAlways };

/* Append the page of stAction to the statement in pcSql (ulSize bytes in all). A statement is
 * never cut: false, with pcSql as it was, when the whole of it would not fit. */
bool MdbAppendPage(char *pcSql, size_t ulSize, const MdbActionCtx &stAction, MdbSortSlot eSlot);
