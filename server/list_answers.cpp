// Browse and Search around the library: paging, default order, errors.
#include "list_answers.h"

#include "library_lock.h"
#include "list_cache.h"
#include "soap.h"

#include <adapt/adapt_ids.h>
#include <adapt/handler_wrappers.h>
#include <didl_document.h>
#include <mdb_platform.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

namespace mdbd {

namespace {

using mdbadapt::HandlerKind;

struct FreeDeleter {
    void operator()(void *p) const { std::free(p); }
};
using FilterBytes = std::unique_ptr<unsigned char, FreeDeleter>;
using SortText = std::unique_ptr<char, FreeDeleter>;

ListAnswer Failure(int error, const char *text) {
    ListAnswer answer;
    answer.error = error;
    answer.errorText = text;
    return answer;
}

/* The order of a list whose client asked for none: folders and all items by title, the tracks
 * of an album by track number (then title), as people expect on a TV. Metadata and the lists the
 * library holds in memory take no sort. */
const char *DefaultSort(HandlerKind kind, const char *subId) {
    if (subId == nullptr) {
        return kind == HandlerKind::kAllItems ? "+dc:title" : nullptr;
    }
    switch (kind) {
    case HandlerKind::kAlbums:
        return "+upnp:originalTrackNumber,+dc:title";
    case HandlerKind::kFolders:
    case HandlerKind::kGenres:
    case HandlerKind::kArtists:
        return "+dc:title";
    default:
        return nullptr;
    }
}

/* The sort text for SortCriteria (or for the default order when it is empty). A non-empty
 * SortCriteria of which the library takes no key, or whose text is longer than every statement
 * can hold, is refused (709); keys the library does not know are passed over when others are
 * taken, as clients send keys of every kind. */
bool MakeSort(const std::string &criteria, const char *defaultSort, SortText &sort) {
    const char *text = !criteria.empty() ? criteria.c_str() : defaultSort;
    sort.reset(text != nullptr ? QRV_MDB_BuildSortStr(text) : nullptr);
    if (criteria.empty()) {
        return true;
    }
    return sort != nullptr && std::strlen(sort.get()) <= MDB_BROWSE_SORT_MAX;
}

/* The action record of one request, over the caller's document and buffers. */
MdbActionCtx MakeAction(char (&objectId)[256], const ListRequest &request, uint32_t start, uint32_t count,
                        unsigned char *filter, char *sort, mdbcommon::DidlDocument &doc, char (&errorText)[64]) {
    MdbActionCtx action{};
    std::snprintf(objectId, sizeof objectId, "%s", request.objectId.c_str());
    action.pcObjectId = objectId;
    action.ulStartingIndex = start;
    action.ulRequestedCount = count;
    // Resource URLs name the file server's IPv4 address, which every client of the device reaches.
    action.ulAddrFamily = 2;
    action.pucFilter = filter;
    action.pcSortStr = sort;
    action.pstDoc = doc.doc();
    action.pstDidlRoot = doc.root();
    action.pcErrStr = errorText;
    return action;
}

uint32_t PageSize(uint32_t requested) {
    return requested == 0 || requested > kMaxObjectsPerAnswer ? kMaxObjectsPerAnswer : requested;
}

// A category result of Search (genres, artists, albums): the DLNA view columns it lists and the
// property that holds the category's name.
struct Category {
    const char *columns;
    const char *property;
};

const Category *CategoryOfResult(uint32_t resultClass) {
    static const Category kGenre{"genre_id,genre", "upnp:genre"};
    static const Category kArtist{"artist_id,artist", "upnp:artist"};
    static const Category kAlbum{"album_id,album", "upnp:album"};
    switch (resultClass) {
    case mdbadapt::kClassMusicGenre:
        return &kGenre;
    case mdbadapt::kClassMusicArtist:
    case mdbadapt::kClassPerson:
        return &kArtist;
    case mdbadapt::kClassMusicAlbum:
    case mdbadapt::kClassAlbum:
        return &kAlbum;
    default:
        return nullptr;
    }
}

/* True for an object id of the forms the library writes: "0", "0.1.264", "0.1.264|3",
 * "0.1.257|3,17". The library reads ids leniently ("x" as "0", "0.1x" as "0.1"), so an id that
 * names nothing could answer for another object. */
bool IsWellFormedObjectId(std::string_view id) {
    auto digits = [&id](size_t &pos) {
        const size_t begin = pos;
        while (pos < id.size() && id[pos] >= '0' && id[pos] <= '9') {
            ++pos;
        }
        return pos > begin && pos - begin <= 18;
    };
    size_t pos = 0;
    if (!digits(pos)) {
        return false;
    }
    while (pos < id.size() && id[pos] == '.') {
        if (!digits(++pos)) {
            return false;
        }
    }
    for (const char separator : {'|', ','}) {
        if (pos < id.size() && id[pos] == separator && !digits(++pos)) {
            return false;
        }
    }
    return pos == id.size();
}

/* The id of the all-items container beside category container node (id): "0.1.256" beside
 * "0.1.257". */
std::string AllItemsBeside(const MdbStaticContainer *node, const std::string &id) {
    const MdbStaticContainer *parent = node->pstParent;
    for (uint16_t i = 0; parent != nullptr && i < parent->usChildNum; ++i) {
        const MdbStaticContainer &sibling = parent->pstChildren[i];
        if (mdbadapt::KindOfHandler(sibling.pfnBrowse) == HandlerKind::kAllItems) {
            return id.substr(0, id.rfind('.') + 1) + std::to_string(sibling.usId);
        }
    }
    return id;
}

/* The WHERE text of criteria below container and the class of its result; false when the library
 * refuses the criteria there. */
bool TranslateCriteria(const std::string &container, const std::string &criteria, std::string &where,
                       uint32_t &resultClass) {
    MdbSearchSyntax syntax{};
    char copy[256], text[512];
    uint32_t commaSep = 0;
    std::snprintf(copy, sizeof copy, "%s", container.c_str());
    if (MDBSearchCriteriaSyntax(criteria.c_str(), &syntax) != MDB_OK ||
        MDBSearchCriteriaCheck(container.c_str(), copy, sizeof copy, &resultClass, text, sizeof text, &commaSep,
                               &syntax) != MDB_OK) {
        return false;
    }
    where = text;
    return true;
}

ListCache &Lists() {
    static ListCache lists;
    return lists;
}

/* The version of the catalogue's data: SQLite's data version of the connection, which every
 * committed write moves (mdbd writes its catalogue through this connection alone, each write under
 * the library mutex). Read under the library mutex; false when SQLite cannot tell. */
bool CatalogueVersion(uint32_t &version) {
    unsigned int value = 0;
    if (g_pstMdbCtx == nullptr ||
        sqlite3_file_control(g_pstMdbCtx, "main", SQLITE_FCNTL_DATA_VERSION, &value) != SQLITE_OK) {
        return false;
    }
    version = value;
    return true;
}

/* True for the lists that BrowseRows answers: a folder row's children or metadata, and the
 * children of an all-items container. */
bool IsRowList(HandlerKind kind, const char *subId, bool metadata) {
    return (kind == HandlerKind::kFolders && subId != nullptr) ||
           (kind == HandlerKind::kAllItems && subId == nullptr && !metadata);
}

/* A folder row's children or metadata, or all items of a class, through the library's row
 * workers: the statements QRV_MDB_Browse runs for them, but the count of a list only when none
 * is kept for the catalogue's version (the library counts the whole list again for every page,
 * though every page of one list has the same total), and no existence count for metadata (a row
 * that is not there writes nothing, which AnswerBrowse answers with 701). Called under the
 * library mutex. */
uint32_t BrowseRows(const MdbStaticContainer *node, const char *subId, const ListRequest &request,
                    MdbActionCtx &action) {
    char baseId[256] = "";
    const uint32_t status = QRV_MDB_StaticContainerGetObjId(node, baseId, sizeof baseId);
    if (status != MDB_OK) {
        return status;
    }
    MdbItemBuildCtx build{};
    build.pstContainer = node;
    build.pstAction = &action;
    build.pcBaseId = baseId;
    build.llLastId = -1;
    uint32_t before = 0, after = 0, total = 0;
    const bool versioned = CatalogueVersion(before);
    const bool kept = !request.metadata && versioned && Lists().Total(request.objectId, before, total);
    uint32_t *count = request.metadata || kept ? nullptr : &total;
    const uint32_t flag = request.metadata ? 0 : 1;
    const uint32_t rows =
        subId != nullptr
            ? QRV_MDB_DbBrowseObject(g_pstMdbCtx, &action, std::atoll(subId), node->usAdaptData, flag,
                                     MdbBuildItemCallback, &build, count)
            : QRV_MDB_DbBrowseByType(g_pstMdbCtx, &action, 0, node->usAdaptData, flag, MdbBuildItemCallback, &build,
                                     count);
    // A total counted while the version moved (another process wrote the catalogue) is not kept.
    if (rows == MDB_OK && count != nullptr && versioned && CatalogueVersion(after) && after == before) {
        Lists().KeepTotal(request.objectId, before, total);
    }
    action.ulTotalMatches = request.metadata ? action.ulNumberReturned : total;
    return rows;
}

}  // namespace

ListAnswer AnswerBrowse(const ListRequest &request) {
    const MdbStaticContainer *node = nullptr;
    const char *subId = nullptr;
    if (request.objectId.size() >= 256 || !IsWellFormedObjectId(request.objectId) ||
        MdbLocateStaticContainerById(request.objectId.c_str(), &node, &subId) != MDB_OK) {
        return Failure(kNoSuchObject, "No such object");
    }
    const HandlerKind kind = mdbadapt::KindOfHandler(node->pfnBrowse);
    if (kind == HandlerKind::kNone) {
        return Failure(kNoSuchObject, "No such object");
    }
    // An item has no children: the library answers its own metadata for children of an
    // all-items id, and MDB_ERR_PARA for those of an item inside a category.
    if (!request.metadata && subId != nullptr &&
        (kind == HandlerKind::kAllItems || std::strchr(subId, ',') != nullptr)) {
        return Failure(kNoSuchContainer, "No such container");
    }
    // Lists the library holds in memory or reads whole (static children, the shared roots, the
    // genre, artist and album values) always begin with their first entry, whatever the
    // StartingIndex: for them mdbd asks for StartingIndex + RequestedCount entries and drops the
    // leading ones itself. The other lists page in SQL.
    const bool wholeList = !request.metadata && (kind == HandlerKind::kStatic || subId == nullptr) &&
                           kind != HandlerKind::kAllItems;
    SortText sort;
    if (!MakeSort(request.sort, request.metadata || wholeList ? nullptr : DefaultSort(kind, subId), sort)) {
        return Failure(kInvalidSortCriteria, "Unsupported or invalid sort criteria");
    }
    FilterBytes filter(QRV_MDB_ParseFilterString(request.filter.c_str()));
    mdbcommon::DidlDocument doc;
    if (filter == nullptr || doc.root() == nullptr) {
        return Failure(kCannotProcess, "Cannot process the request");
    }
    // The genre, artist and album values come in the order of the catalogue: mdbd reads them all
    // and sorts them by title (descending when the SortCriteria begins so).
    const bool values = wholeList && subId == nullptr &&
                        (kind == HandlerKind::kGenres || kind == HandlerKind::kArtists || kind == HandlerKind::kAlbums);
    const uint32_t count = PageSize(request.count);
    const std::string::size_type sortStart = request.sort.find_first_not_of(' ');
    const bool descending = sortStart != std::string::npos && request.sort.compare(sortStart, 9, "-dc:title") == 0;
    const std::string valuesKey = values ? request.objectId + '\n' + request.filter + (descending ? "\n-" : "\n+") : "";
    ListAnswer answer;
    uint32_t version = 0;
    bool versioned = false;
    if (values) {
        {
            LibraryGuard guard;
            versioned = CatalogueVersion(version);
        }
        if (versioned && Lists().Page(valuesKey, version, request.start, count, answer)) {
            return answer;
        }
    }
    uint32_t start = request.start, asked = count;
    if (request.metadata) {
        start = 0;  // the library would apply StartingIndex to the one row of the object
        asked = 1;
    } else if (values) {
        start = 0;
        asked = UINT32_MAX;
    } else if (wholeList) {
        start = 0;
        asked = count > UINT32_MAX - request.start ? UINT32_MAX : request.start + count;
    }
    char objectId[256], errorText[64] = "";
    MdbActionCtx action = MakeAction(objectId, request, start, asked, filter.get(), sort.get(), doc, errorText);
    uint32_t status;
    {
        LibraryGuard guard;
        if (IsRowList(kind, subId, request.metadata)) {
            status = BrowseRows(node, subId, request, action);
        } else {
            status = QRV_MDB_Browse(request.objectId.c_str(), request.metadata ? 0 : 1, &action);
            versioned = values && CatalogueVersion(version);
        }
    }
    if (status == MDB_ERR_NOT_FOUND) {
        return Failure(kNoSuchObject, "No such object");
    }
    if (status != MDB_OK) {
        return Failure(kCannotProcess, "Cannot process the request");
    }
    // A BrowseMetadata that wrote nothing (a missing row in an all-items or category container,
    // which the library answers with MDB_OK) names no object.
    if (request.metadata && doc.ObjectCount() == 0) {
        return Failure(kNoSuchObject, "No such object");
    }
    if (values) {
        doc.SortByTitle(descending);
        doc.SetParentIds(request.objectId);
        if (versioned) {
            Lists().Keep(valuesKey, version, doc);
            if (Lists().Page(valuesKey, version, request.start, count, answer)) {
                return answer;
            }
        }
    }
    if (wholeList) {
        doc.DropFirst(request.start);
        doc.KeepFirst(count);
    }
    // The library writes a row's parentID as the base of its listing ("0.1.264" for every row of a
    // folder view); clients that go up by parentID need the container they came from: the browsed
    // container for children, the row's own folder for a folder row's metadata.
    if (!request.metadata) {
        doc.SetParentIds(request.objectId);
    } else if (kind == HandlerKind::kFolders && subId != nullptr) {
        long long parent = 0;
        {
            LibraryGuard guard;
            QRV_MDB_GetItemInfo(g_pstMdbCtx, std::atoll(subId), &parent, nullptr, 0, nullptr);
        }
        if (parent > 0) {
            doc.SetParentIds(request.objectId.substr(0, request.objectId.find('|') + 1) + std::to_string(parent));
        }
    }
    answer.returned = doc.ObjectCount();
    answer.total = action.ulTotalMatches;
    answer.result = doc.Compact();
    return answer;
}

ListAnswer AnswerSearch(const ListRequest &request) {
    // The library answers MDB_ERR_PARA alike for an unknown container and refused criteria:
    // the container is looked at first, so that it gets its own error.
    const MdbStaticContainer *node = nullptr;
    const char *subId = nullptr;
    if (request.objectId.size() >= 256 || !IsWellFormedObjectId(request.objectId) ||
        MdbLocateStaticContainerById(request.objectId.c_str(), &node, &subId) != MDB_OK) {
        return Failure(kNoSuchContainer, "No such container");
    }
    // The criteria are translated here too: the WHERE text and the class of the result are what
    // a category search needs to count its matches.
    std::string criteria = request.criteria, where;
    uint32_t resultClass = 0;
    if (!TranslateCriteria(request.objectId, criteria, where, resultClass)) {
        return Failure(kInvalidSearchCriteria, "Invalid search criteria");
    }
    // A category search lists the items without a value as one more category ("<container>|0",
    // named after the container) that browses as nothing: only categories with a name are asked
    // for. Criteria that no longer fit once extended stay as they are.
    const Category *category = CategoryOfResult(resultClass);
    if (category != nullptr) {
        const std::string named = std::string(category->property) + " contains \"\" and (" + criteria + ")";
        std::string namedWhere;
        if (TranslateCriteria(request.objectId, named, namedWhere, resultClass)) {
            criteria = named;
            where = namedWhere;
        }
    }
    SortText sort;
    if (!MakeSort(request.sort, nullptr, sort)) {
        return Failure(kInvalidSortCriteria, "Unsupported or invalid sort criteria");
    }
    FilterBytes filter(QRV_MDB_ParseFilterString(request.filter.c_str()));
    mdbcommon::DidlDocument doc;
    if (filter == nullptr || doc.root() == nullptr) {
        return Failure(kCannotProcess, "Cannot process the request");
    }
    char objectId[256], errorText[64] = "";
    MdbActionCtx action = MakeAction(objectId, request, request.start, PageSize(request.count), filter.get(),
                                     sort.get(), doc, errorText);
    uint32_t status;
    uint32_t categories = 0;
    {
        LibraryGuard guard;
        status = QRV_MDB_Search(request.objectId.c_str(), criteria.c_str(), &action);
        // A category search reports the size of its page as TotalMatches: mdbd counts the
        // categories that match with its own statement.
        if (status == MDB_OK && category != nullptr) {
            const std::string count = std::string("select count(*) from (select distinct ") + category->columns +
                                      " from DLNA where " + where + ")";
            status = MdbExecSql(g_pstMdbCtx, count.c_str(), MdbGetCountCallback, &categories, nullptr) == SQLITE_OK
                         ? MDB_OK
                         : MDB_ERR_DB;
        }
    }
    if (status == MDB_ERR_PARA) {
        return Failure(kInvalidSearchCriteria, "Invalid search criteria");
    }
    if (status != MDB_OK) {
        return Failure(kCannotProcess, "Cannot process the request");
    }
    // Items found below a category container come back with ids that name no item there: below
    // one genre, artist or album "0.1.257,17", which gets the id Browse gives it ("0.1.257|3,17");
    // below all genres "0.1.257|17", a genre's id, which gets the item's id among all items of
    // its class ("0.1.256|17").
    const HandlerKind kind = mdbadapt::KindOfHandler(node->pfnBrowse);
    if (category == nullptr &&
        (kind == HandlerKind::kGenres || kind == HandlerKind::kArtists || kind == HandlerKind::kAlbums)) {
        if (subId != nullptr) {
            doc.RebaseIds(request.objectId, ',');
        } else {
            doc.RebaseIds(AllItemsBeside(node, request.objectId), '|');
        }
    }
    ListAnswer answer;
    answer.returned = doc.ObjectCount();
    answer.total = category != nullptr ? categories : action.ulTotalMatches;
    answer.result = doc.Compact();
    return answer;
}

}  // namespace mdbd
