// CreateObject on a real catalogue: the row, the answer, the note and the notification; object
// ids and importUri by class and address family; the date and file name rules; replacing an
// earlier object; the retry of a failed add; and the requests refused before anything is touched.
#include "action.h"
#include "fakes.h"
#include "upload_catalogue.h"

#include <mdb_platform.h>
#include "server/mdb_server_shim.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <functional>
#include <string>

namespace {

using mdbtest::attr;
using mdbtest::ItemDescription;
using mdbtest::NewObjectRequest;
using mdbtest::UploadCatalogue;
namespace fake = mdbtest::fake;

ItemDescription titled(const std::string &title) {
    ItemDescription d;
    d.title = title;
    return d;
}

// Parses (failing the test when the description does not parse) and creates.
uint32_t create(NewObjectRequest &request) {
    EXPECT_EQ(request.parse(), 0u) << "the description does not parse";
    return request.create();
}

TEST(CreateObject, AddsTheRowAnswersOpensTheNoteAndNotifies) {
    UploadCatalogue up;
    fake::setUptime(5000);
    ItemDescription d = titled("song");
    d.date = "2010-05-06";
    d.size = "3145728";
    d.ifoFileUri = "song.ifo";
    NewObjectRequest r(d.text());
    IXML_Element *root = r->pstDidlRoot;
    ASSERT_EQ(r.parse(), 0u);
    const uint32_t parsedFlags = r->ulFlags;
    r->ulFlags |= MDB_FLAGS_RESTRICTED;
    ASSERT_EQ(r.create(), 0u);
    const std::string id = std::to_string(r.createdId());
    const std::string folder = std::to_string(up.uploadId());

    EXPECT_EQ(r->ulFlags, parsedFlags) << "the restricted bit is cleared";
    EXPECT_EQ(up.column(r.createdId(), "parentID||'|'||flags||'|'||title||'|'||fileName||'|'||size||'|'||date||'|'"
                                       "||lastModify"),
              folder + "|" + std::to_string(parsedFlags) + "|song|song.mp3|0|2010-5-6|");
    EXPECT_EQ(up.column(r.createdId(), "bitsPerSample + duration + nrAudioChannels + resolution + sampleFrequency"
                                       " + bitrate + originalTrackNumber + exID_ACTOR + exID_ALBUM + exID_ARTIST"
                                       " + exID_AUTHOR + exID_CREATOR + exID_DIRECTOR + exID_GENRE + exID_PRODUCER"
                                       " + exID_PUBLISHER"),
              "0");

    EXPECT_EQ(std::string(r->pcObjectId), "0.1.264|" + id);
    EXPECT_EQ(std::string(r->pcParentId), "0.1.264|" + folder);
    auto col = [](int n) { return std::string(g_astDlnaCols[n].pcColName); };
    EXPECT_EQ(r.answerXml(), "<item " + col(0) + "=\"0.1.264|" + id + "\" " + col(1) + "=\"0.1.264|" + folder +
                                 "\" " + col(23) + "=\"0\" " + col(30) +
                                 "=\"4\"><dc:title>song</dc:title><upnp:class>object.item.audioItem.musicTrack"
                                 "</upnp:class><res protocolInfo=\"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3\" "
                                 "size=\"3145728\" dlna:ifoFileURI=\"song.ifo\" "
                                 "importUri=\"http://192.0.2.7:8200/web/upload/" +
                                 id + ".mp3\"></res></item>");
    IXML_Element *item = r->pstDidlRoot;
    EXPECT_NE(item, root) << "the DIDL-Lite root moves to the item";
    EXPECT_EQ(r->pstItem, mdbtest::children(item, "upnp:class").at(0));
    EXPECT_EQ(r->pstRes, mdbtest::children(item, "res").at(0));

    ASSERT_EQ(mdbtest::noteCount(), 1u);
    EXPECT_EQ(g_pstUploadList->llObjectId, r.createdId());
    EXPECT_EQ(g_pstUploadList->ulState, 1u);
    EXPECT_EQ(g_pstUploadList->ulStartTime, 5000u);
    ASSERT_EQ(MdbShimNotifyCount(), 1u);
    EXPECT_EQ(MdbShimNotifyFlags(0), parsedFlags);
    EXPECT_TRUE(fake::sleeps().empty());
}

TEST(CreateObject, FormsObjectIdsByClassAndTheImportUriByAddressFamily) {
    UploadCatalogue up;
    const struct {
        const char *what, *protocolInfo;
        uint32_t family;
        bool addressKnown;
        const char *prefix;
        std::string base;
    } cases[] = {
        {"music", "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3", 2, true, "0.1.264|", "http://192.0.2.7:8200"},
        {"video", "http-get:*:video/mpeg:DLNA.ORG_PN=MPEG_PS_PAL", 2, true, "0.2.512|", "http://192.0.2.7:8200"},
        {"picture", "http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_LRG", 2, true, "0.3.771|", "http://192.0.2.7:8200"},
        {"IPv6", "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3", 10, true, "0.1.264|", "http://[2001:db8::7]:8206"},
        {"other family", "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3", 0, true, "0.1.264|", ""},
        {"IPv4 without address", "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3", 2, false, "0.1.264|", ""},
        {"IPv6 without address", "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3", 10, false, "0.1.264|", ""},
    };
    for (const auto &c : cases) {
        fake::setAddressesKnown(c.addressKnown);
        ItemDescription d = titled(c.what);
        d.protocolInfo = c.protocolInfo;
        NewObjectRequest r(d.text(), c.family);
        ASSERT_EQ(create(r), 0u) << c.what;
        const long long id = r.createdId();
        EXPECT_EQ(std::string(r->pcObjectId), c.prefix + std::to_string(id)) << c.what;
        EXPECT_EQ(std::string(r->pcParentId), c.prefix + std::to_string(up.uploadId())) << c.what;
        EXPECT_EQ(mdbtest::attrNames(r->pstRes), (std::vector<std::string>{"protocolInfo", "importUri"})) << c.what;
        EXPECT_EQ(attr(r->pstRes, "importUri"), c.base + "/web/upload/" + std::to_string(id) + "." + r->pcSuffix)
            << c.what;
    }
}

TEST(CreateObject, WritesTodaysLocalDateWhenTheRequestHasNone) {
    UploadCatalogue up;
    auto today = [] {
        char buf[64];
        const time_t now = time(nullptr);
        strftime(buf, sizeof buf, "%Y-%m-%d", localtime(&now));
        return std::string(buf);
    };
    const std::string before = today();
    NewObjectRequest r(titled("song").text());
    ASSERT_EQ(create(r), 0u);
    const std::string stored = up.column(r.createdId(), "date");
    EXPECT_TRUE(stored == before || stored == today()) << stored;
}

TEST(CreateObject, CutsTheFileNameAt127Characters) {
    UploadCatalogue up;
    const struct {
        size_t titleLength;
        std::string end;
    } cases[] = {{123, "t.mp3"}, {124, "t.mp"}, {200, "tt"}};
    for (const auto &c : cases) {
        NewObjectRequest r(titled(std::string(c.titleLength, 't')).text());
        ASSERT_EQ(create(r), 0u) << c.titleLength;
        const std::string name = up.column(r.createdId(), "fileName");
        EXPECT_EQ(name.size(), 127u) << c.titleLength;
        EXPECT_EQ(name.substr(name.size() - c.end.size()), c.end) << c.titleLength;
        EXPECT_EQ(up.column(r.createdId(), "title"), std::string(c.titleLength, 't'));
    }
}

TEST(CreateObject, ReplacesAnEarlierObjectOfTheSameFileName) {
    UploadCatalogue up;
    for (const bool pending : {true, false}) {
        const std::string title = pending ? "pending" : "finished";
        fake::reset();
        NewObjectRequest first(titled(title).text());
        ASSERT_EQ(create(first), 0u);
        const long long firstId = first.createdId();
        const std::string file = up.cat().dir().write("media/upload/" + title + ".mp3", "old");
        if (!pending) {
            QRV_MDB_DelUploadNote(firstId);
        }
        up.cat().addFolder(up.uploadId(), "after " + title);  // so that SQLite cannot reuse firstId
        const long long rowsBefore = up.rowCount();

        NewObjectRequest second(titled(title).text());
        ASSERT_EQ(create(second), 0u) << title;
        EXPECT_NE(second.createdId(), firstId) << title;
        EXPECT_FALSE(up.hasRow(firstId)) << title;
        EXPECT_EQ(up.rowCount(), rowsBefore) << title;
        EXPECT_EQ(QRV_MDB_FindUploadNote(firstId), -1) << title;
        EXPECT_EQ(QRV_MDB_FindUploadNote(second.createdId()), 0) << title;
        EXPECT_EQ(fake::sleeps(), pending ? std::vector<unsigned>{1} : std::vector<unsigned>{}) << title;
        EXPECT_EQ(mdbtest::readFile(file), "old") << title << ": the file stays for the new upload";
    }
}

TEST(CreateObject, RetriesAFailedAddOnceAfterTwoSeconds) {
    UploadCatalogue up;
    for (const bool secondSucceeds : {true, false}) {
        fake::reset();
        MdbShimResetNotifications();
        up.cat().exec("CREATE TRIGGER refuse_add BEFORE INSERT ON ITEM BEGIN SELECT RAISE(ABORT, 'no'); END");
        if (secondSucceeds) {
            fake::onSleep([&up] { up.cat().exec("DROP TRIGGER refuse_add"); });
        }
        const long long rowsBefore = up.rowCount();
        const size_t notesBefore = mdbtest::noteCount();
        NewObjectRequest r(titled(secondSucceeds ? "second" : "never").text());
        EXPECT_EQ(create(r), secondSucceeds ? 0u : ~0u);
        EXPECT_EQ(fake::sleeps(), std::vector<unsigned>{2});
        if (!secondSucceeds) {
            up.cat().exec("DROP TRIGGER refuse_add");
        }
        EXPECT_EQ(up.rowCount(), rowsBefore + (secondSucceeds ? 1 : 0)) << secondSucceeds;
        EXPECT_EQ(mdbtest::noteCount(), notesBefore + (secondSucceeds ? 1 : 0)) << secondSucceeds;
        EXPECT_EQ(MdbShimNotifyCount(), secondSucceeds ? 1u : 0u);
        EXPECT_EQ(r.answerXml().empty(), !secondSucceeds);
    }
}

TEST(CreateObject, RefusesBadRequestsBeforeTouchingAnything) {
    UploadCatalogue up;
    // An earlier object of the same file name would be replaced if a request got that far.
    NewObjectRequest earlier(titled("song").text());
    ASSERT_EQ(create(earlier), 0u);
    const long long rowsBefore = up.rowCount();
    auto withClass = [](uint32_t number) {
        return [number](MdbNewObject *o) { o->ulFlags = (o->ulFlags & ~MDB_FLAGS_CLASS_MASK) | number; };
    };
    const struct {
        const char *what;
        std::function<void(MdbNewObject *)> spoil;
    } cases[] = {
        {"title with a slash", [](MdbNewObject *o) { o->pcTitle = strdup("a/b"); }},
        {"folder class", withClass(MDB_CLASS_FOLDER)},
        {"class 10", withClass(10)},
        {"class 14", withClass(14)},
        {"no document", [](MdbNewObject *o) { o->pstDoc = nullptr; }},
        {"no DIDL-Lite root", [](MdbNewObject *o) { o->pstDidlRoot = nullptr; }},
        {"no suffix", [](MdbNewObject *o) { o->pcSuffix = nullptr; }},
        {"suffix with a slash", [](MdbNewObject *o) { o->pcSuffix = "x/y"; }},
    };
    for (const auto &c : cases) {
        NewObjectRequest r(titled("song").text());
        ASSERT_EQ(r.parse(), 0u) << c.what;
        IXML_Document *doc = r->pstDoc;
        c.spoil(r.obj());
        fake::reset();
        MdbShimResetNotifications();
        EXPECT_EQ(r.create(), ~0u) << c.what;
        r->pstDoc = doc;
        EXPECT_EQ(up.rowCount(), rowsBefore) << c.what;
        EXPECT_TRUE(up.hasRow(earlier.createdId())) << c.what;
        EXPECT_EQ(QRV_MDB_FindUploadNote(earlier.createdId()), 0) << c.what;
        EXPECT_TRUE(fake::sleeps().empty()) << c.what;
        EXPECT_EQ(MdbShimNotifyCount(), 0u) << c.what;
        EXPECT_EQ(r.answerXml(), "") << c.what;
    }
    EXPECT_EQ(QRV_MDB_CreateObject(nullptr), ~0u);
}

TEST(CreateObject, PutsTheObjectBelowTheFirstRootWithoutAnUploadFolder) {
    UploadCatalogue up(false);
    up.cat().addFolder(0, up.cat().dir().mkdir("second-root"));
    NewObjectRequest r(titled("song").text());
    ASSERT_EQ(create(r), 0u);
    EXPECT_EQ(up.column(r.createdId(), "parentID"), std::to_string(up.rootId()));
}

}  // namespace
