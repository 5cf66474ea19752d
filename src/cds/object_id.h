// Object ids: the internal steps of resolving a dotted id against the static container tree and of
// writing a node's id. The exported entry points are declared in mdb.h.
#pragma once

#include <mdb.h>

/* Split the first number off a dotted text. The number is read as atoi reads it, modulo 2^32, so
 * that numbers of any length are defined. *ppcRest points behind the first ".", or is NULL when
 * the text has none. A number followed by "." may have at most 31 characters.
 * Returns MDB_OK, or MDB_ERR_NOT_FOUND for a NULL text or a number too long. */
uint32_t MdbParseIdSegment(const char *pcText, const char **ppcRest, uint32_t *pulNumber);

/* Descend from pstNode by the remaining dotted numbers; each level takes the first child whose usId
 * equals the number modulo 65536. Returns the node reached, or NULL. */
const MdbStaticContainer *MdbFindChildContainer(const MdbStaticContainer *pstNode, const char *pcRest);

/* Append pstNode's dotted id behind the *pulUsed bytes already in pcBuf (ulSize bytes in all).
 * Every piece must fit with its NUL, else MDB_ERR_MEM (the buffer keeps a cut, terminated prefix). */
uint32_t MdbFormatContainerId(const MdbStaticContainer *pstNode, char *pcBuf, uint32_t ulSize,
                              uint32_t *pulUsed);
