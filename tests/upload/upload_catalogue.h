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

// A catalogue with one root folder row (fileName = a real directory in the scratch folder) and,
// unless told otherwise, a folder row "upload" below it with its directory.
class UploadCatalogue {
public:
    explicit UploadCatalogue(bool withUploadFolder = true);

    Catalogue &cat() { return m_cat; }
    sqlite3 *db() const { return m_cat.db(); }
    long long rootId() const { return m_rootId; }
    // The upload folder's row id (the root's when there is none).
    long long uploadId() const { return m_uploadId; }
    const std::string &rootDir() const { return m_rootDir; }
    std::string uploadDir() const { return m_rootDir + "/upload"; }

    long long rowCount();
    bool hasRow(long long id);
    // One column of row id as text ("" when there is no row, "NULL" for SQL NULL).
    std::string column(long long id, const std::string &name);
    // Sets the row's size, as the media server does once the file is complete.
    void setSize(long long id, long long size);

private:
    Catalogue m_cat;
    std::string m_rootDir;
    long long m_rootId = 0;
    long long m_uploadId = 0;
};

// Number of notes in g_pstUploadList.
size_t noteCount();

// The Elements text of one item. Every part can be changed; the optional ones are left out
// while unset, and the required ones are left out when set to std::nullopt.
struct ItemDescription {
    std::optional<std::string> parentId = "0.1.264|2";
    std::optional<std::string> restricted = "0";
    std::optional<std::string> title = "song";
    std::optional<std::string> upnpClass = "object.item.audioItem.musicTrack";
    std::optional<std::string> protocolInfo = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3";
    std::optional<std::string> date;
    std::optional<std::string> size;
    std::optional<std::string> managed;
    std::optional<std::string> ifoFileUri;

    std::string text() const;
};

// An MdbNewObject with its ContainerID, Elements, address family and an answer document holding
// an empty DIDL-Lite root. Everything the parse and CreateObject store (also texts they replace)
// is freed with the request, and so is the document.
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
    // The answer's DIDL-Lite root as the server made it, and the objects under it.
    IXML_Element *root() const { return m_root; }
    std::vector<IXML_Element *> answerObjects() const;

private:
    void keepTexts();
    MdbNewObject m_obj{};
    std::string m_elements;
    std::string m_containerId;
    IXML_Element *m_root = nullptr;
    std::vector<char *> m_owned;
};

}  // namespace mdbtest
