// Translation of object-id criteria ("@id = ..."): the value names one object below the search
// container: a database row below a static container, a category (a genre, an artist, an album)
// below a category container, or a row inside such a category. The container copy is rewritten
// to the static container of the value, so that the objects found are listed under it.
#include "common/text.h"
#include "search/expression_translation.h"
#include "search/search_categories.h"
#include "search/search_words.h"
#include "search/sql_join.h"
#include "store/sql_text.h"

#include <mdb.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

/* Read pcText as a row id: decimal digits only, within signed 64 bits. */
bool ReadRowId(const char *pcText, long long *pllId) {
    if (pcText[0] == '\0' || std::strspn(pcText, "0123456789") != std::strlen(pcText)) {
        return false;
    }
    errno = 0;
    long long llId = std::strtoll(pcText, nullptr, 10);
    if (errno == ERANGE) {
        return false;
    }
    *pllId = llId;
    return true;
}

/* A category container (record pstCat) and the sub-id "<category>" or "<category>,<row>": restrict
 * to the category's items of the container's media class, and to the row when one is named. A
 * category alone makes the category itself the result (result class); a row inside it is listed
 * under "<container>|<category>" with "," separated ids. */
uint32_t CategoryCondition(MdbTranslation &stT, const MdbSearchCategory &stCat, const char *pcSubId,
                           char (&acCond)[kMdbConditionSize]) {
    const char *pcComma = std::strchr(pcSubId, ',');
    char acCategory[kMdbConditionSize];
    size_t ulCatLen = pcComma != nullptr ? static_cast<size_t>(pcComma - pcSubId) : std::strlen(pcSubId);
    if (ulCatLen >= sizeof(acCategory)) {
        return MDB_ERR_PARA;
    }
    std::memcpy(acCategory, pcSubId, ulCatLen);
    acCategory[ulCatLen] = '\0';

    long long llRowId = 0;
    if (pcComma != nullptr) {
        if (!ReadRowId(pcComma + 1, &llRowId)) {
            return MDB_ERR_PARA;
        }
        size_t ulUsed = std::strlen(stT.pcCopy);
        if (ulUsed + 1 + ulCatLen >= stT.ulCopySize) {
            return MDB_ERR_PARA;
        }
        stT.pcCopy[ulUsed] = '|';
        std::memcpy(stT.pcCopy + ulUsed + 1, acCategory, ulCatLen + 1);
        *stT.pulCommaSep = 1;
    } else {
        *stT.pulResultClass = stCat.ulClass;
    }

    const char *pcColumn = MdbSearchContainerColumn(stT.pcCopy);
    MdbSqlText pcCat(sqlite3_mprintf("%s = '%q' and (flags & 127) = %d",
                                     pcColumn != nullptr ? pcColumn : stCat.acColumn, acCategory,
                                     static_cast<int>(MdbContainerMediaClass(stT.pcCopy))));
    if (!pcCat) {
        return MDB_ERR_MEM;
    }
    if (std::strlen(pcCat.get()) >= kMdbShortConditionSize) {
        return MDB_ERR_PARA;
    }
    std::snprintf(acCond, sizeof(acCond), "%s", pcCat.get());
    if (pcComma != nullptr) {
        char acRow[48];
        std::snprintf(acRow, sizeof(acRow), "id = %lld", llRowId);
        return MdbSqlJoin(acCond, acRow, g_apcSearchOpStrings[MDB_WORD_AND], sizeof(acCond));
    }
    return MDB_OK;
}

/* Any other container and a row id sub-id: "id = N", behind the media class of a top media
 * container. */
uint32_t RowCondition(MdbTranslation &stT, const char *pcSubId, char (&acCond)[kMdbConditionSize]) {
    long long llRowId = 0;
    if (std::strchr(pcSubId, ',') != nullptr || !ReadRowId(pcSubId, &llRowId)) {
        return MDB_ERR_PARA;
    }
    uint32_t ulClass = MdbContainerMediaClass(stT.pcCopy);
    if (MdbIsTopMediaContainer(stT.pcCopy) && ulClass != 0) {
        std::snprintf(acCond, sizeof(acCond), "(flags & 127) = %d and id = %lld", static_cast<int>(ulClass), llRowId);
    } else {
        std::snprintf(acCond, sizeof(acCond), "id = %lld", llRowId);
    }
    return MDB_OK;
}

}  // namespace

/* The value must lie below the search container and resolve to a static container, whose id
 * replaces the copy. Without a sub-id it names a container, which cannot restrict rows ("1"). */
uint32_t MdbTranslateObjectId(MdbTranslation &stT, const char *pcValue) {
    if (std::strncmp(pcValue, stT.pcContainerId, std::strlen(stT.pcContainerId)) != 0) {
        return MDB_ERR_PARA;
    }
    const MdbStaticContainer *pstNode = nullptr;
    const char *pcSubId = nullptr;
    if (MdbLocateStaticContainerById(pcValue, &pstNode, &pcSubId) != MDB_OK || pstNode == nullptr) {
        return MDB_ERR_PARA;
    }
    uint32_t ulStatus = QRV_MDB_StaticContainerGetObjId(pstNode, stT.pcCopy, std::min<uint32_t>(stT.ulCopySize, 256));
    if (ulStatus != MDB_OK) {
        return ulStatus;
    }
    if (pcSubId == nullptr) {
        return MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, "1");
    }
    char acCond[kMdbConditionSize];
    const MdbSearchCategory *pstCat = MdbFindSearchCategoryContainer(stT.pcCopy);
    ulStatus = pstCat != nullptr ? CategoryCondition(stT, *pstCat, pcSubId, acCond) : RowCondition(stT, pcSubId, acCond);
    if (ulStatus != MDB_OK) {
        return ulStatus;
    }
    return MdbAppendWhole(stT.pcWhere, stT.ulWhereSize, acCond);
}
