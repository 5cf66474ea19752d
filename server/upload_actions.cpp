// CreateObject and DestroyObject.
#include "upload_actions.h"

#include "changed_containers.h"
#include "eventing.h"
#include "library_lock.h"
#include "list_answers.h"
#include "log.h"
#include "service_ids.h"
#include "soap.h"
#include "upload_receiver.h"

#include <didl_document.h>
#include <mdb_platform.h>
#include <upload_folder.h>

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace mdbd {

namespace {

// The library cuts the file name "<title>.<suffix>" of a new object to this many bytes.
constexpr size_t kFileNameMax = 127;

// A CreateObject record whose texts (strdup copies of the parse and of CreateObject) go with it.
struct NewObject {
    MdbNewObject record{};
    ~NewObject() {
        for (char *text : {record.pcParentId, record.pcTitle, record.pcDate, record.pcClass, record.pcSize,
                           record.pcProtocolInfo, record.pcIfoFileUri, record.pcObjectId}) {
            std::free(text);
        }
    }
};

/* True for a ContainerID that an upload may name: any container, as the library puts every upload
 * into the upload folder, but one that exists. */
bool ContainerResolves(const std::string &container) {
    if (container == "DLNA.ORG_AnyContainer" || container == "0") {
        return true;
    }
    ListRequest request;
    request.objectId = container;
    request.metadata = true;
    request.filter = "*";
    return AnswerBrowse(request).error == 0;
}

/* True for a title that can name a file in the upload folder and nothing else: not empty, no
 * "." or ".." or hidden name, no '/', '\' or control character. (The library refuses these too,
 * with the -1 that also means a failed database; the client is told 712 for them instead.) */
bool IsFileTitle(const char *title) {
    if (title == nullptr || title[0] == '\0' || title[0] == '.') {
        return false;
    }
    for (const char *pc = title; *pc != '\0'; ++pc) {
        const unsigned char c = static_cast<unsigned char>(*pc);
        if (c == '/' || c == '\\' || c < 0x20 || c == 0x7f) {
            return false;
        }
    }
    return true;
}

/* The first bytes of text, at most bytes of them, not ending inside a UTF-8 character. */
std::string CutUtf8(const std::string &text, size_t bytes) {
    if (text.size() <= bytes) {
        return text;
    }
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80) {
        --bytes;
    }
    return text.substr(0, bytes);
}

/* True when a row below the upload folder or a file in its directory has name. */
bool NameTaken(long long folder, const std::string &directory, const std::string &name) {
    long long id = 0;
    QRV_MDB_DbGetItemIdByName(g_pstMdbCtx, folder, name.c_str(), &id);
    struct stat st;
    return id > 0 || lstat((directory + "/" + name).c_str(), &st) == 0;
}

/* Gives the object a title whose file name is free in the upload folder (id folder): its own, else
 * "<title> (2)", "<title> (3)" and on, the title cut so that the number survives the library's
 * cut of the file name. false when no name is free. Called with the library mutex held, in the
 * same hold as CreateObject, so that two uploads cannot take one name. */
bool GiveFreeName(MdbNewObject &object, long long folder) {
    char *directory = nullptr;
    if (QRV_MDB_GetFileInfoById(folder, &directory, nullptr, nullptr, nullptr, nullptr) != 0 || directory == nullptr) {
        std::free(directory);
        return false;
    }
    const std::string folderPath = directory;
    std::free(directory);
    const std::string title = object.pcTitle;
    const std::string suffix = object.pcSuffix;
    for (int n = 1; n < 1000; ++n) {
        std::string candidate = title;
        if (n > 1) {
            const std::string number = " (" + std::to_string(n) + ")";
            const size_t room = kFileNameMax - suffix.size() - 1 - number.size();
            candidate = CutUtf8(title, room) + number;
        }
        if (!NameTaken(folder, folderPath, CutUtf8(candidate + "." + suffix, kFileNameMax))) {
            if (n > 1) {
                std::free(object.pcTitle);
                object.pcTitle = strdup(candidate.c_str());
            }
            return object.pcTitle != nullptr;
        }
    }
    return false;
}

/* The row id an object id names: the number after its last '|' or ','; 0 for a container of the
 * static tree. */
long long RowIdOf(const std::string &objectId) {
    const std::string::size_type at = objectId.find_last_of("|,");
    return at == std::string::npos ? 0 : std::atoll(objectId.c_str() + at + 1);
}

}  // namespace

void UploadActions::CreateObject(UpnpActionRequest *request) {
    ActionArguments args(request);
    std::string container, elements;
    if (!args.Text("ContainerID", container) || !args.Text("Elements", elements)) {
        AnswerError(request, kInvalidArgs, "Invalid Args");
        return;
    }
    if (!ContainerResolves(container)) {
        AnswerError(request, kNoSuchContainer, "No such container");
        return;
    }
    NewObject object;
    MdbNewObject &record = object.record;
    mdbcommon::DidlDocument doc;
    record.pcContainerId = &container[0];
    record.pcElements = &elements[0];
    record.ulAddrFamily = 2;  // the importUri names the file server's IPv4 address, as resource URLs do
    record.pstDoc = doc.doc();
    record.pstDidlRoot = doc.root();
    if (doc.root() == nullptr) {
        AnswerError(request, kCannotProcess, "Cannot process the request");
        return;
    }
    const bool parsed = QRV_MDB_ParseElements(&record) == 0;
    const uint32_t itemClass = record.ulFlags & MDB_FLAGS_CLASS_MASK;
    if (!parsed || itemClass < MDB_CLASS_MUSIC || itemClass > MDB_CLASS_PICTURE || !IsFileTitle(record.pcTitle)) {
        AnswerError(request, kBadMetadata, "Bad metadata");
        return;
    }
    // CreateObject sleeps 2 s under the mutex before it retries a failed insert (and 1 s before
    // it replaces an object whose upload is pending, which the free name rules out): Browse and
    // Search wait meanwhile, the file server's streams go on, and a new stream waits for its
    // lookup. Only a failing catalogue makes that happen.
    long long folder = -1;
    uint32_t rc = MDB_ERR_FAIL;
    {
        LibraryGuard guard;
        folder = mdbscan::UploadFolderId(g_pstMdbCtx);
        if (folder > 0 && GiveFreeName(record, folder)) {
            // CreateObject writes the upload folder's id over the parse's parentID copy, which is
            // then ours to free.
            char *const parsedParent = record.pcParentId;
            rc = QRV_MDB_CreateObject(&record);
            if (record.pcParentId != parsedParent) {
                std::free(parsedParent);
            }
        }
    }
    if (folder <= 0 || rc != 0 || record.pcObjectId == nullptr) {
        LogError("an upload could not be entered in the catalogue (%s)",
                 folder <= 0 ? "there is no upload folder" : "the catalogue refused it");
        AnswerError(request, kCannotProcess, "Cannot process the request");
        return;
    }
    const long long id = RowIdOf(record.pcObjectId);
    m_receiver.Announce(id, record.pcSize != nullptr ? std::strtoull(record.pcSize, nullptr, 10) : 0);
    m_eventing.Changed(ContainersOfFolders({folder}));
    LogRequest("CreateObject %s: object %lld, \"%s\"", container.c_str(), id, record.pcTitle);
    Answer(request, kContentDirectoryType, {{"ObjectID", record.pcObjectId}, {"Result", doc.Compact()}});
}

void UploadActions::DestroyObject(UpnpActionRequest *request) {
    std::string objectId;
    if (!ActionArguments(request).Text("ObjectID", objectId)) {
        AnswerError(request, kInvalidArgs, "Invalid Args");
        return;
    }
    ListRequest metadata;
    metadata.objectId = objectId;
    metadata.metadata = true;
    metadata.filter = "*";
    if (AnswerBrowse(metadata).error != 0) {
        AnswerError(request, kNoSuchObject, "No such object");
        return;
    }
    // Only what CreateObject made below the upload folder: never the user's own media, nor a
    // container of the tree.
    const long long id = RowIdOf(objectId);
    bool uploaded = false;
    uint32_t rc = kRestrictedObject;
    {
        LibraryGuard guard;
        uploaded = id > 0 && mdbscan::IsUploadedObject(g_pstMdbCtx, id);
        if (uploaded) {
            rc = QRV_MDB_DestroyObject(id);
        }
    }
    LogRequest("DestroyObject %s -> %s", objectId.c_str(), rc == 0 ? "ok" : "711");
    if (rc != 0) {
        AnswerError(request, kRestrictedObject, "Restricted object");
        return;
    }
    m_receiver.Forget(id);
    TellUploadFolderChanged(m_eventing);
    Answer(request, kContentDirectoryType, {});
}

}  // namespace mdbd
