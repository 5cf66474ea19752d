// Fixtures of the upload tests. The program defines sleep(), sysinfo() and libupnp's two server
// address functions itself (upload_fixture.cpp), and the static test link makes the library call
// these: sleep(n) returns at once, records n, runs the sleep hook and moves the fake uptime on by
// n; sysinfo() reports that uptime; the addresses are fixed texts, or NULL as libupnp answers
// before it is initialised.
#pragma once

#include "catalogue.h"

#include <mdb.h>

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace mdbtest {
namespace fake {

constexpr long kStartUptime = 1000;
// Uptime kStartUptime, no sleeps recorded, no hook, addresses known.
void reset();
void setUptime(long seconds);
std::vector<unsigned> sleeps();
void onSleep(std::function<void()> hook);
void setAddressesKnown(bool known);

}  // namespace fake

// A catalogue laid out for uploads: a root folder row naming a real directory and, unless told
// otherwise, the folder "upload" below it with its directory; fakes reset, file server ports 8200
// and 8206. Going, it drops every upload note with its row.
struct UploadCatalogue {
    explicit UploadCatalogue(bool withUploadFolder = true);
    ~UploadCatalogue() { QRV_MDB_FreeUploadList(); }

    Catalogue cat;
    std::string rootDir, uploadDir;
    long long rootId = 0, uploadId = 0;  // uploadId is the root's without an upload folder

    long long rowCount();
    bool hasRow(long long id);
    // One column (or SQL expression) of row id as text ("" when there is no row).
    std::string column(long long id, const std::string &expr);
    // A row below parent with title = fileName = name.
    long long addRow(long long parent, const std::string &name, uint32_t flags);
    // An MP3 upload in progress: row below the upload folder, file, and a note at the current uptime.
    long long addUpload(const std::string &name, uint32_t extraFlags = 0);
};

uint32_t mp3Flags();

// The Elements text of one item: optional parts are left out while unset, required ones when set
// to std::nullopt.
struct ItemDescription {
    std::optional<std::string> parentId = "0.1.264|2", restricted = "0", title = "song",
                               upnpClass = "object.item.audioItem.musicTrack",
                               protocolInfo = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3";
    std::optional<std::string> date, size, managed, ifoFileUri;
    std::string text() const;
};

// An MdbNewObject as the media server fills it, with an answer document holding an empty
// DIDL-Lite root. Every text the parse and CreateObject store is freed with it, and so is the
// document (even when a test clears pstDoc).
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
    // The row id behind the '|' of the created object's id, or -1 without one.
    long long createdId() const;
    // What CreateObject appended under the DIDL-Lite root, serialised on one line.
    std::string answerXml() const;

private:
    void keepTexts();
    MdbNewObject m_obj{};
    std::string m_elements, m_containerId;
    IXML_Document *m_doc = nullptr;
    IXML_Element *m_root = nullptr;
    std::set<char *> m_owned;
};

}  // namespace mdbtest
