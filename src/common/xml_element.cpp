// The element writer every DIDL-Lite answer is built with: one element, with its text made safe
// for XML, appended under a parent.
#include <mdb.h>

#include "common/xml_text.h"

#include <string>

namespace {

IXML_Node *AsNode(IXML_Element *pstElement) { return reinterpret_cast<IXML_Node *>(pstElement); }

}  // namespace

/* Create element pcName in pstDoc, with a text node when pcText is not NULL (an empty text counts;
 * the text made safe for XML), and append it as the last child of pstParent. *ppstNew (when
 * given) is set to NULL first and to the new element on success. MDB_ERR_PARA for a NULL document, parent or name; MDB_ERR_MEM when a
 * node can't be made. */
extern "C" MDB_API uint32_t QRV_MDB_XmlAppendChildElement(IXML_Document *pstDoc, IXML_Element *pstParent,
                                                          const char *pcName, const char *pcText,
                                                          IXML_Element **ppstNew) {
    if (ppstNew != nullptr) {
        *ppstNew = nullptr;
    }
    if (pstDoc == nullptr || pstParent == nullptr || pcName == nullptr) {
        return MDB_ERR_PARA;
    }
    IXML_Element *pstElement = ixmlDocument_createElement(pstDoc, pcName);
    if (pstElement == nullptr) {
        return MDB_ERR_MEM;
    }
    if (pcText != nullptr) {
        std::string safe;
        IXML_Node *pstText = ixmlDocument_createTextNode(pstDoc, MdbXmlSafeText(pcText, safe));
        if (pstText == nullptr) {
            ixmlElement_free(pstElement);
            return MDB_ERR_MEM;
        }
        ixmlNode_appendChild(AsNode(pstElement), pstText);
    }
    ixmlNode_appendChild(AsNode(pstParent), AsNode(pstElement));
    if (ppstNew != nullptr) {
        *ppstNew = pstElement;
    }
    return MDB_OK;
}

