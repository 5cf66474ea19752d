// CreateObject on a real catalogue: the row, answer, note and notification; object ids, importUri
// and date by class and address family; the file name rules; replacing an earlier
// object; the retry of a failed add; the requests refused before anything is touched; and hostile
// Elements texts.
#include "action.h"
#include "upload_fixture.h"

#include <mdb_platform.h>
#include "server/mdb_server_shim.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <filesystem>

namespace {

using namespace mdbtest;

std::string titled(const std::string &title) {
    ItemDescription d;
    d.title = title;
    return d.text();
}

// Parses (failing the test when the description does not parse) and creates.
uint32_t create(NewObjectRequest &request) {
    EXPECT_EQ(request.parse(), 0u) << "the description does not parse";
    return request.create();
}

TEST(CreateObject, AddsTheRowAnswersOpensTheNoteAndNotifies) {
    UploadCatalogue up;
    fake::setUptime(5000);
    ItemDescription d;
    d.date = "2010-05-06";
    d.size = "3145728";
    d.ifoFileUri = "song.ifo";
    NewObjectRequest r(d.text());
    IXML_Element *root = r->pstDidlRoot;
    ASSERT_EQ(r.parse(), 0u);
    const uint32_t flags = r->ulFlags;
    r->ulFlags |= MDB_FLAGS_RESTRICTED;
    ASSERT_EQ(r.create(), 0u);
    const std::string id = std::to_string(r.createdId()), folder = std::to_string(up.uploadId);

    EXPECT_EQ(r->ulFlags, flags) << "the restricted bit is cleared";
    EXPECT_EQ(up.column(r.createdId(), "parentID||'|'||flags||'|'||title||'|'||fileName||'|'||size||'|'||date||'|'"
                                       "||lastModify||'|'||(bitsPerSample + duration + nrAudioChannels + resolution"
                                       " + sampleFrequency + bitrate + originalTrackNumber + exID_ACTOR + exID_ALBUM"
                                       " + exID_ARTIST + exID_AUTHOR + exID_CREATOR + exID_DIRECTOR + exID_GENRE"
                                       " + exID_PRODUCER + exID_PUBLISHER)"),
              folder + "|" + std::to_string(flags) + "|song|song.mp3|0|2010-5-6||0");
    auto col = [](int n) { return std::string(g_astDlnaCols[n].pcColName); };
    EXPECT_EQ(r.answerXml(), "<item " + col(0) + "=\"0.1.264|" + id + "\" " + col(1) + "=\"0.1.264|" + folder +
                                 "\" " + col(23) + "=\"0\" " + col(30) +
                                 "=\"4\"><dc:title>song</dc:title><upnp:class>object.item.audioItem.musicTrack"
                                 "</upnp:class><res protocolInfo=\"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3\" "
                                 "size=\"3145728\" dlna:ifoFileURI=\"song.ifo\" "
                                 "importUri=\"http://192.0.2.7:8200/web/upload/" +
                                 id + ".mp3\"></res></item>");
    EXPECT_NE(r->pstDidlRoot, root) << "the DIDL-Lite root moves to the item";
    EXPECT_EQ(r->pstItem, children(r->pstDidlRoot, "upnp:class").at(0));
    EXPECT_EQ(r->pstRes, children(r->pstDidlRoot, "res").at(0));

    ASSERT_NE(g_pstUploadList, nullptr);
    EXPECT_EQ(g_pstUploadList->pstNext, nullptr);
    EXPECT_EQ(g_pstUploadList->llObjectId, r.createdId());
    EXPECT_EQ(g_pstUploadList->ulState, 1u);
    EXPECT_EQ(g_pstUploadList->ulStartTime, 5000u);
    ASSERT_EQ(MdbShimNotifyCount(), 1u);
    EXPECT_EQ(MdbShimNotifyFlags(0), flags);
    EXPECT_TRUE(fake::sleeps().empty());
}

// Also: without a date in the request, today's local date is written.
TEST(CreateObject, FormsObjectIdsByClassAndTheImportUriByAddressFamily) {
    UploadCatalogue up;
    auto today = [] {
        char buf[64];
        const time_t now = time(nullptr);
        strftime(buf, sizeof buf, "%Y-%m-%d", localtime(&now));
        return std::string(buf);
    };
    const std::string mp3 = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3", v4 = "http://192.0.2.7:8200";
    const struct { const char *what; std::string protocolInfo; uint32_t family; bool addressKnown;
                   const char *prefix; std::string base; } cases[] = {
        {"music", mp3, 2, true, "0.1.264|", v4},
        {"video", "http-get:*:video/mpeg:DLNA.ORG_PN=MPEG_PS_PAL", 2, true, "0.2.512|", v4},
        {"picture", "http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_LRG", 2, true, "0.3.771|", v4},
        {"IPv6", mp3, 10, true, "0.1.264|", "http://[2001:db8::7]:8206"},
        {"other family", mp3, 0, true, "0.1.264|", ""},
        {"IPv4 without address", mp3, 2, false, "0.1.264|", ""},
        {"IPv6 without address", mp3, 10, false, "0.1.264|", ""},
    };
    for (const auto &c : cases) {
        const std::string before = today();
        fake::setAddressesKnown(c.addressKnown);
        ItemDescription d;
        d.title = c.what;
        d.protocolInfo = c.protocolInfo;
        NewObjectRequest r(d.text(), c.family);
        ASSERT_EQ(create(r), 0u) << c.what;
        const std::string id = std::to_string(r.createdId());
        EXPECT_EQ(std::string(r->pcObjectId), c.prefix + id) << c.what;
        EXPECT_EQ(std::string(r->pcParentId), c.prefix + std::to_string(up.uploadId)) << c.what;
        EXPECT_EQ(attrNames(r->pstRes), (std::vector<std::string>{"protocolInfo", "importUri"})) << c.what;
        EXPECT_EQ(attr(r->pstRes, "importUri"), c.base + "/web/upload/" + id + "." + r->pcSuffix) << c.what;
        const std::string date = up.column(r.createdId(), "date");
        EXPECT_TRUE(date == before || date == today()) << c.what << ": " << date;
    }
}

TEST(CreateObject, ReplacesAnEarlierObjectOfTheSameFileName) {
    UploadCatalogue up;
    for (const bool pending : {true, false}) {
        const std::string title = pending ? "pending" : "finished";
        fake::reset();
        NewObjectRequest first(titled(title));
        ASSERT_EQ(create(first), 0u);
        const long long firstId = first.createdId();
        const std::string file = up.cat.dir().write("media/upload/" + title + ".mp3", "old");
        if (!pending) {
            QRV_MDB_DelUploadNote(firstId);
        }
        up.cat.addFolder(up.uploadId, "after " + title);  // so that SQLite cannot reuse firstId
        const long long rowsBefore = up.rowCount();

        NewObjectRequest second(titled(title));
        ASSERT_EQ(create(second), 0u) << title;
        EXPECT_NE(second.createdId(), firstId) << title;
        EXPECT_FALSE(up.hasRow(firstId)) << title;
        EXPECT_EQ(up.rowCount(), rowsBefore) << title;
        EXPECT_EQ(QRV_MDB_FindUploadNote(firstId), -1) << title;
        EXPECT_EQ(QRV_MDB_FindUploadNote(second.createdId()), 0) << title;
        EXPECT_EQ(fake::sleeps(), pending ? std::vector<unsigned>{1} : std::vector<unsigned>{}) << title;
        EXPECT_EQ(readFile(file), "old") << title << ": the file stays for the new upload";
    }
}

TEST(CreateObject, RetriesAFailedAddOnceAfterTwoSeconds) {
    UploadCatalogue up;
    for (const bool secondSucceeds : {true, false}) {
        fake::reset();
        MdbShimResetNotifications();
        QRV_MDB_FreeUploadList();
        up.cat.exec("CREATE TRIGGER refuse_add BEFORE INSERT ON ITEM BEGIN SELECT RAISE(ABORT, 'no'); END");
        if (secondSucceeds) {
            fake::onSleep([&up] { up.cat.exec("DROP TRIGGER refuse_add"); });
        }
        const long long rowsBefore = up.rowCount();
        NewObjectRequest r(titled(secondSucceeds ? "second" : "never"));
        EXPECT_EQ(create(r), secondSucceeds ? 0u : ~0u);
        EXPECT_EQ(fake::sleeps(), std::vector<unsigned>{2});
        if (!secondSucceeds) {
            up.cat.exec("DROP TRIGGER refuse_add");
        }
        EXPECT_EQ(up.rowCount(), rowsBefore + (secondSucceeds ? 1 : 0)) << secondSucceeds;
        EXPECT_EQ(g_pstUploadList != nullptr, secondSucceeds);
        EXPECT_EQ(MdbShimNotifyCount(), secondSucceeds ? 1u : 0u);
        EXPECT_EQ(r.answerXml().empty(), !secondSucceeds);
    }
}

// Refusals come before the upload folder is looked up: the earlier object of the same file name
// stays with its note, nothing pauses, nothing is written or announced.
TEST(CreateObject, RefusesBadRequestsBeforeTouchingAnything) {
    UploadCatalogue up;
    NewObjectRequest earlier(titled("song"));
    ASSERT_EQ(create(earlier), 0u);
    const long long rowsBefore = up.rowCount();
    auto withClass = [](uint32_t number) {
        return [number](MdbNewObject *o) { o->ulFlags = (o->ulFlags & ~MDB_FLAGS_CLASS_MASK) | number; };
    };
    const struct { const char *what; std::function<void(MdbNewObject *)> spoil; } cases[] = {
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
        NewObjectRequest r(titled("song"));
        ASSERT_EQ(r.parse(), 0u) << c.what;
        c.spoil(r.obj());
        fake::reset();
        MdbShimResetNotifications();
        EXPECT_EQ(r.create(), ~0u) << c.what;
        EXPECT_EQ(up.rowCount(), rowsBefore) << c.what;
        EXPECT_EQ(QRV_MDB_FindUploadNote(earlier.createdId()), 0) << c.what;
        EXPECT_TRUE(up.hasRow(earlier.createdId()) && fake::sleeps().empty()) << c.what;
        EXPECT_EQ(MdbShimNotifyCount(), 0u) << c.what;
        EXPECT_EQ(r.answerXml(), "") << c.what;
    }
    EXPECT_EQ(QRV_MDB_CreateObject(nullptr), ~0u);
}

TEST(CreateObject, PutsTheObjectBelowTheFirstRootWithoutAnUploadFolder) {
    UploadCatalogue up(false);
    up.cat.addFolder(0, up.cat.dir().mkdir("second-root"));
    NewObjectRequest r(titled("song"));
    ASSERT_EQ(create(r), 0u);
    EXPECT_EQ(up.column(r.createdId(), "parentID"), std::to_string(up.uploadId));
    EXPECT_EQ(up.uploadId, up.rootId);
}

// Every path below the scratch folder except the catalogue's own files.
std::set<std::string> filesBelow(const std::string &dir) {
    std::set<std::string> out;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(dir)) {
        if (entry.path().filename().string().rfind("catalogue.db", 0) != 0) {
            out.insert(entry.path().string());
        }
    }
    return out;
}

// Elements texts that are huge, broken, nested, full of entities, SQL, conversions or path tricks,
// through the parse and CreateObject: none may crash or overrun (the sanitizer build watches),
// write a row it should not, a row outside the upload folder, or any file at all. Accepted ones
// get the file name title.suffix cut at 127 characters.
TEST(CreateObject, TakesHostileElementsSafely) {
    using D = ItemDescription;
    UploadCatalogue up;
    auto with = [](std::optional<std::string> D::*part, const std::string &value) {
        D d;
        d.*part = value;
        return d.text();
    };
    auto named = [](const std::string &title) { return (title + ".mp3").substr(0, 127); };
    const std::string valid = D{}.text(), song = "song.mp3", refused;
    std::string reversed = valid;
    reversed.replace(reversed.find("<dc:title>song</dc:title>"), 25, "</dc:title>song<dc:title>");
    const struct { const char *what; std::string elements, fileName; } cases[] = {  // fileName "": refused
        {"empty text", "", refused},
        {"no markers", "just some words", refused},
        {"only a start marker", "parentID=\"", refused},
        {"title markers reversed", reversed, refused},
        {"unterminated title", valid.substr(0, valid.find("</dc:title>")), refused},
        {"huge title", with(&D::title, std::string(100000, 'A')), refused},
        {"huge parentID", with(&D::parentId, std::string(200000, '9')), refused},
        {"megabyte of junk before a valid item", std::string(1 << 20, 'j') + valid, song},
        {"nested title markers", with(&D::title, "<dc:title>inner</dc:title>"), named("<dc:title>inner")},
        {"title entity for a slash", with(&D::title, "a&#47;b"), named("a&#47;b")},
        {"title climbing out", with(&D::title, "../../../../etc/passwd"), refused},
        {"title with a backslash", with(&D::title, "sub\\..\\..\\boot.ini"), refused},
        {"title absolute path", with(&D::title, "/etc/passwd"), refused},
        {"title dot dot", with(&D::title, ".."), refused},
        {"title dot", with(&D::title, "."), refused},
        {"title hidden file", with(&D::title, ".profile"), refused},
        {"title with line feed", with(&D::title, "a\nb"), refused},
        {"title with delete", with(&D::title, "a\x7f"), refused},
        {"title with SQL", with(&D::title, "x'); DROP TABLE ITEM; --"), named("x'); DROP TABLE ITEM; --")},
        {"title with printf conversions", with(&D::title, "%s%s%n%lld%q"), named("%s%s%n%lld%q")},
        {"title of 123", with(&D::title, std::string(123, 't')), std::string(123, 't') + ".mp3"},
        {"title of 124", with(&D::title, std::string(124, 't')), std::string(124, 't') + ".mp"},
        {"title of 511", with(&D::title, std::string(511, 't')), std::string(127, 't')},
        {"UTF-8 title", with(&D::title, "Caf\xc3\xa9 \xe2\x99\xab"), named("Caf\xc3\xa9 \xe2\x99\xab")},
        {"date overflowing", with(&D::date, "2010-99999999999999999999-1"), refused},
        {"date huge", with(&D::date, std::string(511, '9')), refused},
        {"size huge", with(&D::size, std::string(511, '9')), song},
        {"size not a number", with(&D::size, "lots"), song},
        {"managed huge", with(&D::managed, std::string(511, '4')), refused},
        {"protocolInfo of colons", with(&D::protocolInfo, ":::"), refused},
        {"protocolInfo long tail", with(&D::protocolInfo, "http-get:*:audio/mpeg:" + std::string(480, 'X')), song},
        {"protocolInfo long MIME type", with(&D::protocolInfo, "http-get:*:audio/" + std::string(200, 'm') + ":*"),
         refused},
        {"protocolInfo long profile name",
         with(&D::protocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=" + std::string(300, 'P')), song},
        {"protocolInfo with a path as profile", with(&D::protocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=../../x"),
         song},
    };
    const std::set<std::string> filesBefore = filesBelow(up.cat.dir().path());
    for (const auto &c : cases) {
        const long long rowsBefore = up.rowCount();
        NewObjectRequest r(c.elements);
        testing::internal::CaptureStdout();
        const bool created = r.parse() == 0 && r.create() == 0;
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(created, !c.fileName.empty()) << c.what;
        EXPECT_EQ(filesBelow(up.cat.dir().path()), filesBefore) << c.what << ": a file was written";
        EXPECT_EQ(up.rowCount(), rowsBefore + (created ? 1 : 0)) << c.what;
        EXPECT_EQ(g_pstUploadList != nullptr, created) << c.what;
        if (created) {
            const long long id = r.createdId();
            EXPECT_EQ(up.column(id, "parentID||'|'||fileName"), std::to_string(up.uploadId) + "|" + c.fileName)
                << c.what;
            char *path = nullptr;
            EXPECT_EQ(QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr), 0) << c.what;
            EXPECT_EQ(std::string(path != nullptr ? path : ""), up.uploadDir + "/" + c.fileName) << c.what;
            free(path);
            EXPECT_EQ(QRV_MDB_DestroyObject(id), 0u) << c.what;
        }
    }
    EXPECT_EQ(up.cat.scalar("select count(*) from sqlite_master where name='ITEM'"), "1");
}

}  // namespace
