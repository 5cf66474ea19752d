// Fixtures of the upload tests. The program defines sleep(), sysinfo() and libupnp's two server
// address functions itself (upload_fixture.cpp), and the static test link makes the library call
// these: sleep(n) returns at once, records n, runs the sleep hook and moves the fake uptime on by
// n; sysinfo() reports that uptime; the addresses are fixed texts, or NULL as libupnp answers
// before it is initialised.
#pragma once

#include "action.h"
#include "catalogue.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace mdbtest {

struct Fakes {
    long uptime = 1000;
    std::vector<unsigned> sleeps;
    std::function<void()> onSleep;
    bool addressesKnown = true;
};
extern Fakes g_fakes;  // UploadCatalogue resets them

// A catalogue laid out for uploads: a root folder row naming a real directory and, unless told
// otherwise, the folder "upload" below it with its directory; fakes reset, file server ports 8200
// and 8206, no notification counted. Going, it drops every upload note with its row.
struct UploadCatalogue {
    explicit UploadCatalogue(bool withUploadFolder = true);
    ~UploadCatalogue() { QRV_MDB_FreeUploadList(); }

    Catalogue cat;
    std::string rootDir, uploadDir;
    long long rootId = 0, uploadId = 0;  // uploadId is the root's without an upload folder

    long long rowCount() { return std::stoll(cat.rows("select count(*) from ITEM")); }
    // One column (or SQL expression) of row id as text ("" when there is no row).
    std::string column(long long id, const std::string &expr) {
        return cat.rows("select " + expr + " from ITEM where id=" + std::to_string(id));
    }
    bool hasRow(long long id) { return column(id, "1") == "1"; }
    // An MP3 upload in progress: row below the upload folder, file, and a note at the current uptime.
    long long addUpload(const std::string &name, uint32_t extraFlags = 0);
};

inline uint32_t mp3Flags() { return ProfileFlags("audio/mpeg", "MP3"); }

// The Elements text of one item: optional parts are left out while unset, required ones when set
// to std::nullopt.
struct ItemDescription {
    std::optional<std::string> parentId = "0.1.264|2", restricted = "0", title = "song",
                               upnpClass = "object.item.audioItem.musicTrack",
                               protocolInfo = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3";
    std::optional<std::string> date, size, managed, ifoFileUri;
    std::string text() const;
};
// The default description with one part changed.
std::string Described(std::optional<std::string> ItemDescription::*part, const std::optional<std::string> &value);

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
    uint32_t parse() { return keepTexts(QRV_MDB_ParseElements(&m_obj)); }
    uint32_t create() { keepTexts(0); return keepTexts(QRV_MDB_CreateObject(&m_obj)); }
    // The row id behind the '|' of the created object's id, or -1 without one.
    long long createdId() const;
    // What CreateObject appended under the DIDL-Lite root, serialised on one line.
    std::string answerXml() const;

private:
    // Collects the texts the request holds (before and after each step, so none leaks); passes status on.
    uint32_t keepTexts(uint32_t status);
    MdbNewObject m_obj{};
    std::string m_elements, m_containerId;
    IXML_Document *m_doc = nullptr;
    std::set<char *> m_owned;
};

}  // namespace mdbtest
