// DIDL-Lite "container" elements for static containers and for the containers that stand for
// database values (root folders, genres, artists, albums), and their upnp:searchClass elements.
#include <mdb.h>
#include <mdb_platform.h>

#include "cds/container_answer.h"
#include "common/xml_text.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr size_t kIdBufferSize = 256;

/* The filter byte of the property named exactly pcPropName; false when the table has no such
 * property. */
bool FilterAsks(const MdbActionCtx *pstAction, const char *pcPropName) {
    uint32_t idx = QRV_MDB_GetFilterIdx(pcPropName);
    return idx < g_ulNumOfDlnaCols && pstAction->pucFilter[idx] != 0;
}

bool TableHas(const char *pcPropName) { return QRV_MDB_GetFilterIdx(pcPropName) < g_ulNumOfDlnaCols; }

/* One upnp:searchClass element with the text of class k, marked includeDerived when appended. */
uint32_t AppendOneSearchClass(MdbActionCtx *pstAction, IXML_Element *pstContainer, uint32_t ulClass) {
    IXML_Element *pstElement = nullptr;
    uint32_t status = QRV_MDB_XmlAppendChildElement(pstAction->pstDoc, pstContainer, "upnp:searchClass",
                                                    QRV_MDB_GetMediaClassById(ulClass), &pstElement);
    if (status == MDB_OK) {
        ixmlElement_setAttribute(pstElement, "includeDerived", "1");
    }
    return status;
}

}  // namespace

/* Write the upnp:searchClass elements of a search class value: one class for 1..L, nothing for 0
 * and for L+1..127, and for 128 and above every class k (ascending) that the adaptation library
 * puts in that set. A single class returns its append's status; a set skips failed appends.
 * A NULL action record (no document to write in) gives MDB_ERR_PARA rather than a crash. */
extern "C" MDB_API uint32_t QRV_MDB_AppendSearchClass(MdbActionCtx *pstAction, IXML_Element *pstContainer,
                                                      uint32_t ulSearchClass) {
    if (pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    const uint32_t count = g_ulObjClassStringLen;
    if (ulSearchClass >= 1 && ulSearchClass <= count) {
        return AppendOneSearchClass(pstAction, pstContainer, ulSearchClass);
    }
    if (ulSearchClass < 128) {
        return MDB_OK;
    }
    for (uint32_t k = 1; k <= count; ++k) {
        if (QRV_MDB_AdaptIsSearchClassMatched(k, ulSearchClass) != 0) {
            (void)AppendOneSearchClass(pstAction, pstContainer, k);
        }
    }
    return MDB_OK;
}

/* Write a "container" element under the action's DIDL-Lite root: for pstNode itself, or, with a
 * suffix ("|" and a database id), for the database value below it. Attributes: parentID, id (with a
 * suffix; id is left out when id plus suffix exceed 255 characters) or id, parentID (without),
 * restricted, and searchable when the filter asks; children dc:title (pcTitle, or the node's own),
 * upnp:class, upnp:storageUsed, and upnp:writeStatus and upnp:searchClass when the filter asks.
 * Returns the sum of the element appends' statuses: zero means everything was written. A NULL
 * node or action record gives MDB_ERR_PARA and writes nothing, rather than a crash. */
extern "C" MDB_API uint32_t QRV_MDB_BuildMetadataForStaticContainer(const MdbStaticContainer *pstNode,
                                                                    const char *pcTitle, const char *pcSuffix,
                                                                    MdbActionCtx *pstAction) {
    if (pstNode == nullptr || pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    char acValue[kIdBufferSize] = {0};
    uint32_t sum = 0;
    IXML_Element *pstContainer = nullptr;

    sum += QRV_MDB_XmlAppendChildElement(pstAction->pstDoc, pstAction->pstDidlRoot, "container", nullptr,
                                         &pstContainer);

    (void)QRV_MDB_StaticContainerGetObjId(pstNode, acValue, sizeof acValue);
    if (pcSuffix != nullptr) {
        MdbXmlSetAttribute(pstContainer, "parentID", acValue);
        if (std::strlen(acValue) + std::strlen(pcSuffix) <= kIdBufferSize - 1) {
            std::strcat(acValue, pcSuffix);
            MdbXmlSetAttribute(pstContainer, "id", acValue);
        }
    } else {
        MdbXmlSetAttribute(pstContainer, "id", acValue);
        (void)QRV_MDB_StaticContainerGetObjId(pstNode->pstParent, acValue, sizeof acValue);
        MdbXmlSetAttribute(pstContainer, "parentID", acValue);
    }

    snprintf(acValue, sizeof acValue, "%d", 1);
    ixmlElement_setAttribute(pstContainer, "restricted", acValue);

    sum += QRV_MDB_XmlAppendChildElement(pstAction->pstDoc, pstContainer, "dc:title",
                                         pcTitle != nullptr ? pcTitle : pstNode->pcTitle, nullptr);
    sum += QRV_MDB_XmlAppendChildElement(pstAction->pstDoc, pstContainer, "upnp:class",
                                         QRV_MDB_GetMediaClassById(pstNode->ucClass), nullptr);

    if (FilterAsks(pstAction, "searchable")) {
        ixmlElement_setAttribute(pstContainer, "searchable", "1");
    }
    if (TableHas("upnp:storageUsed")) {
        sum += QRV_MDB_XmlAppendChildElement(pstAction->pstDoc, pstContainer, "upnp:storageUsed", "-1", nullptr);
    }
    if (FilterAsks(pstAction, "upnp:writeStatus")) {
        sum += QRV_MDB_XmlAppendChildElement(pstAction->pstDoc, pstContainer, "upnp:writeStatus", "NOT_WRITABLE",
                                             nullptr);
    }
    if (FilterAsks(pstAction, "upnp:searchClass")) {
        sum += QRV_MDB_AppendSearchClass(pstAction, pstContainer, pstNode->ucSearchClass);
    }
    return sum;
}

uint32_t MdbAnswerWithContainer(const MdbStaticContainer *pstNode, const char *pcTitle, const char *pcSuffix,
                                MdbActionCtx *pstAction) {
    const uint32_t ulStatus = QRV_MDB_BuildMetadataForStaticContainer(pstNode, pcTitle, pcSuffix, pstAction);
    pstAction->ulNumberReturned = 1;
    pstAction->ulTotalMatches = 1;
    return ulStatus;
}
