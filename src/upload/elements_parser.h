// The Elements scanner and its field parsers: the internal steps of QRV_MDB_ParseElements, visible
// to the unit tests. Each field parser takes the request record, stores what it found and answers
// 0 or -1; QRV_MDB_ParseElements runs them in order and stops at the first -1.
#pragma once

#include <mdb.h>

#include <stdint.h>

// Every value is read into a work buffer of this many bytes: at most 511 characters.
#define MDB_ELEMENTS_VALUE_SIZE 512u

// The vendor-specific test parameter cut from protocolInfo, like ";DLNA.ORG_PS=" and
// ";DLNA.ORG_FLAGS=" (see QRV_MDB_ParseElements in mdb.h).
#define MDB_VENDOR_TEST_PARAM ";QRV.ORG_TEST="

/* Find the first pcStart in pcText and the first pcEnd behind it; copy what stands between them
 * into pcBuf (capacity ulSize bytes, NUL included). Answers -1 for a NULL text or marker or buffer,
 * for a missing end marker, an empty value, or a value of ulSize characters or more. A missing
 * start marker fails when ulRequired is 1; otherwise pcBuf becomes "" and the answer is 0. */
int32_t MdbExtractValue(const char *pcText, const char *pcStart, const char *pcEnd, char *pcBuf,
                        uint32_t ulSize, uint32_t ulRequired);

/* Field parsers, in the order the parse runs them. Each answers 0 or -1 and stores its value
 * (a strdup copy, or a flag) in the record as its comment in mdb.h says. */
int32_t MdbParseParentId(MdbNewObject *pstObj);     // parentID="..." (required; warns on mismatch)
int32_t MdbParseRestricted(MdbNewObject *pstObj);   // restricted="0" (required, exactly "0")
int32_t MdbParseDlnaManaged(MdbNewObject *pstObj);  // dlna:dlnaManaged="..." (0, 1, 4 or 5)
int32_t MdbParseTitle(MdbNewObject *pstObj);        // <dc:title> (required)
int32_t MdbParseDate(MdbNewObject *pstObj);         // <dc:date> (year-month-day, rewritten)
int32_t MdbParseClass(MdbNewObject *pstObj);        // <upnp:class> (required)
int32_t MdbParseSize(MdbNewObject *pstObj);         // size="..." (not negative)
int32_t MdbParseIfoFileUri(MdbNewObject *pstObj);   // dlna:ifoFileURI="..."
int32_t MdbParseProtocolInfo(MdbNewObject *pstObj); // protocolInfo="..." (required; params cut)
int32_t MdbParseProfile(MdbNewObject *pstObj);      // MIME type and DLNA.ORG_PN -> ulFlags, pcSuffix
