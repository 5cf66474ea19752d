// Texts made safe for XML: every element text and attribute value the library writes passes
// through here, so that an answer is always well-formed XML 1.0 in UTF-8, whatever the catalogue
// holds (titles with control characters, file names in Latin-1 from old disks). Each character
// that XML 1.0 forbids (the C0 controls but tab, line feed and carriage return; U+FFFE, U+FFFF)
// and each byte that does not belong to a valid UTF-8 sequence (overlong forms and surrogates
// included) is replaced by U+FFFD, so a reader sees that something stood there. Internal to the
// library.
#pragma once

#include <ixml.h>

#include <cstdint>
#include <string>

/* pcText itself when it is valid as it stands (the usual case: nothing is copied), else the safe
 * form built in rSafe. NULL stays NULL. */
const char *MdbXmlSafeText(const char *pcText, std::string &rSafe);

/* Set attribute pcName of pstElement to the safe form of pcValue. MDB_OK, MDB_ERR_PARA for a NULL
 * element, name or value, MDB_ERR_MEM when ixml refuses. */
uint32_t MdbXmlSetAttribute(IXML_Element *pstElement, const char *pcName, const char *pcValue);
