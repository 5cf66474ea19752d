// Fixtures of the upload tests: a catalogue laid out for uploads (a shared root folder whose row
// names a real directory, with an "upload" folder below it), the Elements text of one item as a
// control point sends it, and an MdbNewObject as the media server fills it.
#pragma once

#include "catalogue.h"

#include <mdb.h>

#include <optional>
#include <string>
#include <vector>

namespace mdbtest {

// One test's upload world: the catalogue with its root folder row (fileName = a real directory)
// and, unless told otherwise, the folder row "upload" below it with its directory; the fakes are
// reset and the file server ports are 8200 (IPv4) and 8206 (IPv6). Going, it drops every upload
// note with its row (QRV_MDB_FreeUploadList).
class UploadCatalogue {
public:
    explicit UploadCatalogue(bool withUploadFolder = true);
    ~UploadCatalogue();

    Catalogue &cat() { return m_cat; }
    long long rootId() const { return m_rootId; }
    // The upload folder's row id (the root's when there is none).
    long long uploadId() const { return m_uploadId; }
    const std::string &rootDir() const { return m_rootDir; }
    std::string uploadDir() const { return m_rootDir + "/upload"; }

    long long rowCount();
    bool hasRow(long long id);
    // One column of row id as text ("" when there is no row).
    std::string column(long long id, const std::string &name);
    // A row below parent named name (title and fileName) with the given flags.
    long long addRow(long long parent, const std::string &name, uint32_t flags);
    // An MP3 upload in progress: its row below the upload folder (MP3 flags | extraFlags), its file
    // in the upload directory and a waiting note made at the current uptime.
    long long addUpload(const std::string &name, uint32_t extraFlags = 0);

private:
    Catalogue m_cat;
    std::string m_rootDir;
    long long m_rootId = 0;
    long long m_uploadId = 0;
};

// The flags word the profile library gives an MP3 file.
uint32_t mp3Flags();
// Number of notes in g_pstUploadList.
size_t noteCount();

// The Elements text of one item. The optional parts are left out while unset, the required ones
// when set to std::nullopt.
struct ItemDescription {
    std::optional<std::string> parentId = "0.1.264|2";
    std::optional<std::string> restricted = "0";
    std::optional<std::string> title = "song";
    std::optional<std::string> upnpClass = "object.item.audioItem.musicTrack";
    std::optional<std::string> protocolInfo = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3";
    std::optional<std::string> date, size, managed, ifoFileUri;

    std::string text() const;
};

// An MdbNewObject with ContainerID, Elements, address family and an answer document holding an
// empty DIDL-Lite root. Every text the parse and CreateObject store (also the texts CreateObject
// replaces, and any a test puts in) is freed with the request, and so is the document.
class NewObjectRequest {
public:
    explicit NewObjectRequest(const std::string &elements, uint32_t addrFamily = 2,
                              const std::string &containerId = "0.1.264|2");
    ~NewObjectRequest();
    NewObjectRequest(const NewObjectRequest &) = delete;
    NewObjectRequest &operator=(const NewObjectRequest &) = delete;

    MdbNewObject *obj() { return &m_obj; }
    MdbNewObject *operator->() { return &m_obj; }
    uint32_t parse();
    uint32_t create();
    // The row id behind the '|' of the created object's id, or -1 before a successful create.
    long long createdId() const;
    // What CreateObject appended under the DIDL-Lite root the server made, serialised on one line.
    std::string answerXml() const;

private:
    void keepTexts();
    MdbNewObject m_obj{};
    std::string m_elements;
    std::string m_containerId;
    IXML_Element *m_root = nullptr;
    std::vector<char *> m_owned;
};

}  // namespace mdbtest
