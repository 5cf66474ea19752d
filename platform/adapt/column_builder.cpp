// QRV_MDB_AdaptColItemBuilder: the properties of the property table that the reference platform
// writes itself (flag MDB_COL_ADAPT_BUILDER) because their stored form is not the DIDL-Lite form,
// because they have no column, or because the library writes them already.
//
//  - res@duration: stored in microseconds, written as "H:MM:SS.mmm";
//  - res@resolution: stored as height<<32 + width, written as "WIDTHxHEIGHT";
//  - searchable, upnp:storageUsed, upnp:writeStatus, upnp:searchClass, @childCount: folder rows
//    (containers) get the same answers as the static containers, and their number of children
//    in the browsed media class;
//  - @dlna:dlnaManaged: an item the view calls unrestricted (an upload) can be destroyed
//    ("00000004");
//  - res@protocolInfo, res@importUri, res: the library has written them with the res element;
//  - the optional item elements (dc:date, dc:creator, upnp:artist, upnp:genre, upnp:album,
//    upnp:originalTrackNumber, upnp:actor, upnp:author, upnp:director, upnp:producer,
//    dc:publisher): written as stored, and not at all when the row has no value, so that an
//    answer carries no placeholder elements for what the file does not say.
// A stored value of 0 (unknown duration, resolution or track number) writes nothing.
#include <mdb_platform.h>

#include "../common/media_family_codes.h"
#include "common/text.h"
#include "adapt_ids.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

using namespace mdbadapt;

namespace {

/* Read a decimal 64-bit value; false for NULL, empty, out-of-range or non-numeric text. */
bool ParseInt64(const char *pcValue, long long *pllOut) {
    const MdbDecimal stNumber = MdbReadDecimal(pcValue);
    if (!stNumber.bDigits || !stNumber.FitsSigned() || *stNumber.pcEnd != '\0') {
        return false;
    }
    *pllOut = stNumber.Saturated();
    return true;
}

uint32_t SetAttribute(IXML_Element *pstElement, const char *pcName, const char *pcValue) {
    if (pstElement == nullptr) {
        return MDB_ERR_PARA;
    }
    return ixmlElement_setAttribute(pstElement, pcName, pcValue) == IXML_SUCCESS ? MDB_OK : MDB_ERR_MEM;
}

/* Append element pcName with text pcText under pstParent, with the library's element writer (which
 * makes the text safe for XML); *ppstNew receives it when given. */
uint32_t AppendElement(MdbActionCtx *pstAction, IXML_Element *pstParent, const char *pcName, const char *pcText,
                       IXML_Element **ppstNew = nullptr) {
    if (pstAction == nullptr) {
        return MDB_ERR_PARA;
    }
    return QRV_MDB_XmlAppendChildElement(pstAction->pstDoc, pstParent, pcName, pcText, ppstNew);
}

/* res@duration: microseconds to "H:MM:SS.mmm" (milliseconds cut, not rounded). */
uint32_t WriteDuration(IXML_Element *pstRes, const char *pcValue) {
    long long llMicro = 0;
    if (!ParseInt64(pcValue, &llMicro) || llMicro <= 0) {
        return MDB_OK;
    }
    long long llMilli = llMicro / 1000;
    char acText[64];
    std::snprintf(acText, sizeof acText, "%lld:%02lld:%02lld.%03lld", llMilli / 3600000, (llMilli / 60000) % 60,
                  (llMilli / 1000) % 60, llMilli % 1000);
    return SetAttribute(pstRes, "duration", acText);
}

/* res@resolution: height<<32 + width to "WIDTHxHEIGHT". */
uint32_t WriteResolution(IXML_Element *pstRes, const char *pcValue) {
    long long llStored = 0;
    if (!ParseInt64(pcValue, &llStored)) {
        return MDB_OK;
    }
    uint64_t ullStored = static_cast<uint64_t>(llStored);
    uint32_t ulWidth = static_cast<uint32_t>(ullStored & 0xFFFFFFFFu);
    uint32_t ulHeight = static_cast<uint32_t>(ullStored >> 32);
    if (ulWidth == 0 || ulHeight == 0) {
        return MDB_OK;
    }
    char acText[32];
    std::snprintf(acText, sizeof acText, "%" PRIu32 "x%" PRIu32, ulWidth, ulHeight);
    return SetAttribute(pstRes, "resolution", acText);
}

/* An optional element of the property table, named by its entry, with the stored value as its
 * text; nothing for NULL or empty text, nor for "0" where bZeroIsUnknown (track numbers start
 * at 1; the catalogue stores 0 for a file without one). */
uint32_t WriteOptionalElement(MdbActionCtx *pstAction, IXML_Element *pstItem, uint32_t ulColIdx,
                              const char *pcValue, bool bZeroIsUnknown) {
    if (pcValue == nullptr || *pcValue == '\0' || (bZeroIsUnknown && std::strcmp(pcValue, "0") == 0)) {
        return MDB_OK;
    }
    return AppendElement(pstAction, pstItem, g_astDlnaCols[ulColIdx].pcPropName, pcValue);
}

/* The item class a folder row stands for: the browsed container's media class, or in a Search
 * (no container) the first folder bit of the row. 0 when neither says. */
uint32_t FolderMediaClass(const MdbStaticContainer *pstContainer, uint32_t ulFlags) {
    if (pstContainer != nullptr && pstContainer->usAdaptData != 0) {
        return pstContainer->usAdaptData;
    }
    for (uint32_t ulClass : {kClassMusicTrack, kClassVideoItem, kClassPhoto}) {
        if ((ulFlags & (1u << ulClass)) != 0) {
            return ulClass;
        }
    }
    return 0;
}

/* upnp:searchClass of a folder row: folders and the items of its media class. */
uint32_t WriteFolderSearchClasses(const MdbStaticContainer *pstContainer, MdbActionCtx *pstAction,
                                  IXML_Element *pstItem, uint32_t ulFlags) {
    uint32_t ulMediaClass = FolderMediaClass(pstContainer, ulFlags);
    if (ulMediaClass == 0) {
        return MDB_OK;
    }
    for (uint32_t ulClass : {static_cast<uint32_t>(kClassStorageFolder), ulMediaClass}) {
        IXML_Element *pstClass = nullptr;
        uint32_t ulStatus =
            AppendElement(pstAction, pstItem, "upnp:searchClass", g_apcObjClassStrings[ulClass - 1], &pstClass);
        if (ulStatus != MDB_OK) {
            return ulStatus;
        }
        ixmlElement_setAttribute(pstClass, "includeDerived", "1");
    }
    return MDB_OK;
}

int StoreCount(void *pvArg, int lColNum, char **ppcValues, char **) {
    if (lColNum > 0 && ppcValues[0] != nullptr) {
        *static_cast<unsigned long *>(pvArg) = std::strtoul(ppcValues[0], nullptr, 10);
    }
    return 0;
}

/* @childCount of a folder row: its sub-folders holding the media class and its items of that
 * class, counted as the folder browse counts them. */
uint32_t WriteChildCount(const MdbStaticContainer *pstContainer, IXML_Element *pstItem, uint32_t ulFlags,
                         const char *pcRowId) {
    long long llRowId = 0;
    uint32_t ulMediaClass = FolderMediaClass(pstContainer, ulFlags);
    if (!ParseInt64(pcRowId, &llRowId) || ulMediaClass == 0 || g_pstMdbCtx == nullptr) {
        return MDB_OK;
    }
    char acSql[512];
    std::snprintf(acSql, sizeof acSql,
                  "select count(distinct id) from ITEM where parentID=%lld and (((flags & %d) =%d and "
                  "(flags & %d) >1) or (flags & %d) =%d)",
                  llRowId, MDB_FLAGS_CLASS_MASK, static_cast<int>(kClassStorageFolder), 1 << ulMediaClass, MDB_FLAGS_CLASS_MASK,
                  static_cast<int>(ulMediaClass));
    unsigned long ulCount = 0;
    int rc = SQLITE_BUSY;
    for (int attempt = 0; attempt < 10 && rc == SQLITE_BUSY; ++attempt) {
        rc = sqlite3_exec(g_pstMdbCtx, acSql, StoreCount, &ulCount, nullptr);
    }
    if (rc != SQLITE_OK) {
        return MDB_ERR_DB;
    }
    char acText[24];
    std::snprintf(acText, sizeof acText, "%lu", ulCount);
    return SetAttribute(pstItem, "childCount", acText);
}

/* @dlna:dlnaManaged: the "destroyable" bit on the items a client may destroy, which are exactly
 * those the DLNA view calls unrestricted. The @restricted attribute (an always-written property
 * before this one in the table) has been set from the view's column when this runs. */
uint32_t WriteDlnaManaged(IXML_Element *pstItem, uint32_t ulFlags) {
    static_assert(kColRestricted < kColDlnaManaged, "@restricted must be written before @dlna:dlnaManaged");
    const char *pcRestricted = ixmlElement_getAttribute(pstItem, g_astDlnaCols[kColRestricted].pcColName);
    if ((ulFlags & MDB_FLAGS_CLASS_MASK) <= 10 || pcRestricted == nullptr || std::strcmp(pcRestricted, "0") != 0) {
        return MDB_OK;
    }
    return SetAttribute(pstItem, "dlna:dlnaManaged", "00000004");
}

} // namespace

/* Write property ulColIdx of g_astDlnaCols for one row. pcValue is the row's value for the
 * property (the row id for properties without a column), may be NULL. Returns MDB_OK (also when
 * an unknown value writes nothing), MDB_ERR_PARA for an index this builder does not write or a
 * missing element, MDB_ERR_MEM or MDB_ERR_DB when writing failed. */
extern "C" uint32_t QRV_MDB_AdaptColItemBuilder(const MdbStaticContainer *pstContainer, MdbActionCtx *pstAction,
                                                IXML_Element *pstItem, IXML_Element *pstRes, uint32_t ulFlags,
                                                uint32_t ulColIdx, const char *pcValue) {
    if (pstItem == nullptr) {
        return MDB_ERR_PARA;
    }
    switch (ulColIdx) {
    case kColDate:
    case kColCreator:
    case kColArtist:
    case kColGenre:
    case kColAlbum:
    case kColActor:
    case kColAuthor:
    case kColDirector:
    case kColProducer:
    case kColPublisher:
        return WriteOptionalElement(pstAction, pstItem, ulColIdx, pcValue, false);
    case kColTrackNumber:
        return WriteOptionalElement(pstAction, pstItem, ulColIdx, pcValue, true);
    case kColDuration:
        return WriteDuration(pstRes, pcValue);
    case kColResolution:
        return WriteResolution(pstRes, pcValue);
    case kColSearchable:
        return SetAttribute(pstItem, "searchable", "1");
    case kColStorageUsed:
        return AppendElement(pstAction, pstItem, "upnp:storageUsed", "-1");
    case kColWriteStatus:
        return AppendElement(pstAction, pstItem, "upnp:writeStatus", "NOT_WRITABLE");
    case kColSearchClass:
        return WriteFolderSearchClasses(pstContainer, pstAction, pstItem, ulFlags);
    case kColChildCount:
        return WriteChildCount(pstContainer, pstItem, ulFlags, pcValue);
    case kColDlnaManaged:
        return WriteDlnaManaged(pstItem, ulFlags);
    case kColProtocolInfo:
    case kColImportUri:
    case kColRes:
        return MDB_OK;
    default:
        return MDB_ERR_PARA;
    }
}
