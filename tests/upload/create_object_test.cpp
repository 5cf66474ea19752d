// CreateObject on a real catalogue: the row, answer, note and notification; object ids, importUri
// and date by class and address family; replacing an earlier object of the same file name; the
// retry of a failed add; the requests refused before anything is touched; and hostile Elements
// texts, which may write no file and no row outside the upload folder.
#include "upload_fixture.h"

#include <mdb_platform.h>
#include "server/mdb_server_shim.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <filesystem>

namespace {

using namespace mdbtest;
using D = ItemDescription;

// Parses (failing the test when the description does not parse) and creates.
uint32_t create(NewObjectRequest &request) {
    EXPECT_EQ(request.parse(), 0u) << "the description does not parse";
    return request.create();
}

std::string Today() {
    char buf[64];
    const time_t now = time(nullptr);
    strftime(buf, sizeof buf, "%Y-%m-%d", localtime(&now));
    return buf;
}

// The restricted bit is cleared; the answer is the item with its ids and importUri, and the
// DIDL-Lite root moves to it; a note opens and subscribers are notified once.
TEST(CreateObject, AddsTheRowAnswersOpensTheNoteAndNotifies) {
    UploadCatalogue up;
    ItemDescription d;
    d.date = "2010-05-06", d.size = "3145728", d.ifoFileUri = "song.ifo";
    NewObjectRequest r(d.text());
    IXML_Element *root = r->pstDidlRoot;
    ASSERT_EQ(r.parse(), 0u);
    const uint32_t flags = r->ulFlags;
    r->ulFlags |= MDB_FLAGS_RESTRICTED;
    ASSERT_EQ(r.create(), 0u);
    const std::string id = std::to_string(r.createdId()), folder = std::to_string(up.uploadId);
    EXPECT_EQ(r->ulFlags, flags);
    EXPECT_EQ(up.column(r.createdId(), "parentID||'|'||flags||'|'||title||'|'||fileName||'|'||size||'|'||date||'|'"
                                       "||lastModify||'|'||(duration + resolution + exID_ALBUM + exID_ARTIST)"),
              folder + "|" + std::to_string(flags) + "|song|song.mp3|0|2010-5-6||0");
    EXPECT_EQ(r.answerXml(), "<item id=\"0.1.264|" + id + "\" parentID=\"0.1.264|" + folder + "\" restricted=\"0\" "
              "dlna:dlnaManaged=\"4\"><dc:title>song</dc:title><upnp:class>object.item.audioItem.musicTrack"
              "</upnp:class><res protocolInfo=\"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3\" size=\"3145728\" "
              "dlna:ifoFileURI=\"song.ifo\" importUri=\"http://192.0.2.7:8200/web/upload/" + id + ".mp3\"></res></item>");
    EXPECT_TRUE(r->pstDidlRoot != root && r->pstItem == children(r->pstDidlRoot, "upnp:class").at(0) &&
                r->pstRes == children(r->pstDidlRoot, "res").at(0));
    EXPECT_EQ(QRV_MDB_FindUploadNote(r.createdId()), 0);
    EXPECT_EQ(std::to_string(MdbShimNotifyCount()) + " " + std::to_string(MdbShimNotifyFlags(0)),
              "1 " + std::to_string(flags));
    EXPECT_TRUE(g_fakes.sleeps.empty());
}

// The class chooses the container of the ids, the address family the importUri's address (none
// when libupnp knows none); without a date today's is written; without an upload folder the object
// goes below the first root.
TEST(CreateObject, FormsObjectIdsByClassAndTheImportUriByAddressFamily) {
    const std::string mp3 = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3", v4 = "http://192.0.2.7:8200";
    const struct { std::string protocolInfo; uint32_t family; bool addressKnown, uploadFolder;
                   const char *prefix; std::string base; } cases[] = {
        {"http-get:*:video/mpeg:DLNA.ORG_PN=MPEG_PS_PAL", 2, true, true, "0.2.512|", v4},
        {"http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_LRG", 2, true, true, "0.3.771|", v4},
        {mp3, 10, true, true, "0.1.264|", "http://[2001:db8::7]:8206"}, {mp3, 0, true, true, "0.1.264|", ""},
        {mp3, 2, false, true, "0.1.264|", ""}, {mp3, 10, false, false, "0.1.264|", ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.protocolInfo + " family " + std::to_string(c.family));
        UploadCatalogue up(c.uploadFolder);
        up.cat.addFolder(0, up.cat.dir().mkdir("second-root"));
        g_fakes.addressesKnown = c.addressKnown;
        const std::string before = Today();
        NewObjectRequest r(Described(&D::protocolInfo, c.protocolInfo), c.family);
        ASSERT_EQ(create(r), 0u);
        const std::string id = std::to_string(r.createdId()), parent = std::to_string(up.uploadId);
        EXPECT_EQ(std::string(r->pcObjectId) + " " + r->pcParentId, c.prefix + id + " " + c.prefix + parent);
        EXPECT_EQ(up.column(r.createdId(), "parentID"), parent);
        EXPECT_EQ(attrNames(r->pstRes), (std::vector<std::string>{"protocolInfo", "importUri"}));
        EXPECT_EQ(attr(r->pstRes, "importUri"), c.base + "/web/upload/" + id + "." + r->pcSuffix);
        const std::string date = up.column(r.createdId(), "date");
        EXPECT_TRUE(date == before || date == Today()) << date;
    }
}

// The earlier object (pending or finished) goes with its note, after a pause for a pending upload;
// its file stays for the new upload.
TEST(CreateObject, ReplacesAnEarlierObjectOfTheSameFileName) {
    UploadCatalogue up;
    for (const bool pending : {true, false}) {
        const std::string title = pending ? "pending" : "finished";
        g_fakes.sleeps.clear();
        NewObjectRequest first(Described(&D::title, title));
        ASSERT_EQ(create(first), 0u);
        const std::string file = up.cat.dir().write("media/upload/" + title + ".mp3", "old");
        if (!pending) QRV_MDB_DelUploadNote(first.createdId());
        up.cat.addFolder(up.uploadId, "after " + title);  // so that SQLite cannot reuse the first id
        const long long rowsBefore = up.rowCount();
        NewObjectRequest second(Described(&D::title, title));
        ASSERT_EQ(create(second), 0u) << title;
        EXPECT_TRUE(second.createdId() != first.createdId() && !up.hasRow(first.createdId())) << title;
        EXPECT_EQ(up.rowCount(), rowsBefore) << title;
        EXPECT_TRUE(QRV_MDB_FindUploadNote(first.createdId()) == -1 && QRV_MDB_FindUploadNote(second.createdId()) == 0);
        EXPECT_EQ(g_fakes.sleeps, pending ? std::vector<unsigned>{1} : std::vector<unsigned>{}) << title;
        EXPECT_EQ(readFile(file), "old") << title;
    }
}

TEST(CreateObject, RetriesAFailedAddOnceAfterTwoSeconds) {
    for (const bool secondSucceeds : {true, false}) {
        UploadCatalogue up;
        up.cat.exec("CREATE TRIGGER refuse_add BEFORE INSERT ON ITEM BEGIN SELECT RAISE(ABORT, 'no'); END");
        g_fakes.onSleep = [&up, secondSucceeds] { if (secondSucceeds) up.cat.exec("DROP TRIGGER refuse_add"); };
        NewObjectRequest r(Described(&D::title, "song"));
        EXPECT_EQ(create(r), secondSucceeds ? 0u : ~0u);
        EXPECT_EQ(g_fakes.sleeps, std::vector<unsigned>{2});
        EXPECT_EQ(up.rowCount(), secondSucceeds ? 3 : 2) << secondSucceeds;
        EXPECT_EQ(g_pstUploadList != nullptr, secondSucceeds);
        EXPECT_EQ(MdbShimNotifyCount(), secondSucceeds ? 1u : 0u);
        EXPECT_EQ(r.answerXml().empty(), !secondSucceeds);
    }
}

// Refusals come before the upload folder is looked up: the earlier object of the same file name
// stays with its note, nothing pauses, nothing is written or announced.
TEST(CreateObject, RefusesBadRequestsBeforeTouchingAnything) {
    UploadCatalogue up;
    NewObjectRequest earlier(Described(&D::title, "song"));
    ASSERT_EQ(create(earlier), 0u);
    const long long rowsBefore = up.rowCount();
    MdbShimResetNotifications();
    auto withClass = [](uint32_t number) {
        return [number](MdbNewObject *o) { o->ulFlags = (o->ulFlags & ~MDB_FLAGS_CLASS_MASK) | number; };
    };
    const std::pair<const char *, std::function<void(MdbNewObject *)>> cases[] = {
        {"title with a slash", [](MdbNewObject *o) { o->pcTitle = strdup("a/b"); }},
        {"folder class", withClass(MDB_CLASS_FOLDER)}, {"class 10", withClass(10)}, {"class 14", withClass(14)},
        {"no document", [](MdbNewObject *o) { o->pstDoc = nullptr; }},
        {"no DIDL-Lite root", [](MdbNewObject *o) { o->pstDidlRoot = nullptr; }},
        {"no suffix", [](MdbNewObject *o) { o->pcSuffix = nullptr; }},
        {"suffix with a slash", [](MdbNewObject *o) { o->pcSuffix = "x/y"; }},
    };
    for (const auto &[what, spoil] : cases) {
        NewObjectRequest r(Described(&D::title, "song"));
        ASSERT_EQ(r.parse(), 0u) << what;
        spoil(r.obj());
        EXPECT_EQ(r.create(), ~0u) << what;
        EXPECT_EQ(up.rowCount(), rowsBefore) << what;
        EXPECT_TRUE(QRV_MDB_FindUploadNote(earlier.createdId()) == 0 && up.hasRow(earlier.createdId())) << what;
        EXPECT_TRUE(g_fakes.sleeps.empty() && MdbShimNotifyCount() == 0 && r.answerXml().empty()) << what;
    }
    EXPECT_EQ(QRV_MDB_CreateObject(nullptr), ~0u);
}

// Elements texts that are huge, broken, nested, full of entities, SQL, conversions or path tricks,
// through the parse and CreateObject: none may crash or overrun (the sanitizer build watches),
// write a row it should not, a row outside the upload folder, or any file at all. Accepted ones
// get the file name title.suffix cut at 127 characters, which the file lookup finds.
TEST(CreateObject, TakesHostileElementsSafely) {
    UploadCatalogue up;
    auto files = [&] {  // every path below the scratch folder except the catalogue's own files
        std::set<std::string> out;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(up.cat.dir().path())) {
            if (entry.path().filename().string().rfind("catalogue.db", 0) != 0) out.insert(entry.path().string());
        }
        return out;
    };
    auto title = [](const std::string &t) { return Described(&D::title, t); };
    auto named = [](const std::string &t) { return (t + ".mp3").substr(0, 127); };
    const std::string valid = D{}.text(), song = "song.mp3", refused;
    std::string reversed = valid;
    reversed.replace(reversed.find("<dc:title>song</dc:title>"), 25, "</dc:title>song<dc:title>");
    const std::pair<std::string, std::string> cases[] = {  // elements, file name ("": refused)
        {"", refused}, {"parentID=\"", refused}, {reversed, refused},
        {valid.substr(0, valid.find("</dc:title>")), refused},
        {Described(&D::parentId, std::string(200000, '9')), refused},
        {std::string(1 << 20, 'j') + valid, song},
        {title("<dc:title>inner</dc:title>"), named("<dc:title>inner")}, {title("a&#47;b"), named("a&#47;b")},
        {title("../../../../etc/passwd"), refused}, {title("sub\\..\\..\\boot.ini"), refused},
        {title("/etc/passwd"), refused}, {title(".."), refused}, {title(".profile"), refused},
        {title("a\nb"), refused}, {title("a\x7f"), refused},
        {title("x'); DROP TABLE ITEM; --"), named("x'); DROP TABLE ITEM; --")},
        {title("%s%s%n%lld%q"), named("%s%s%n%lld%q")},
        {title(std::string(123, 't')), std::string(123, 't') + ".mp3"},
        {title(std::string(124, 't')), std::string(124, 't') + ".mp"},
        {title(std::string(511, 't')), std::string(127, 't')},
        {title("Caf\xc3\xa9 \xe2\x99\xab"), named("Caf\xc3\xa9 \xe2\x99\xab")},
        {Described(&D::date, "2010-99999999999999999999-1"), refused},
        {Described(&D::protocolInfo, "http-get:*:audio/mpeg:" + std::string(480, 'X')), song},
        {Described(&D::protocolInfo, "http-get:*:audio/" + std::string(200, 'm') + ":*"), refused},
        {Described(&D::protocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=" + std::string(300, 'P')), song},
        {Described(&D::protocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=../../x"), song},
    };
    const std::set<std::string> filesBefore = files();
    for (const auto &[elements, fileName] : cases) {
        SCOPED_TRACE(elements.substr(0, 300));
        const long long rowsBefore = up.rowCount();
        NewObjectRequest r(elements);
        testing::internal::CaptureStdout();
        const bool created = r.parse() == 0 && r.create() == 0;
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(created, !fileName.empty());
        EXPECT_EQ(files(), filesBefore) << "a file was written";
        EXPECT_EQ(up.rowCount(), rowsBefore + (created ? 1 : 0));
        char *path = nullptr;
        if (created && QRV_MDB_GetFileInfoById(r.createdId(), &path, nullptr, nullptr, nullptr, nullptr) == 0) {
            EXPECT_EQ(up.column(r.createdId(), "parentID") + "|" + path, std::to_string(up.uploadId) + "|" +
                                                                           up.uploadDir + "/" + fileName);
            EXPECT_EQ(QRV_MDB_DestroyObject(r.createdId()), 0u);
        }
        EXPECT_TRUE(!created || path != nullptr);
        free(path);
    }
    EXPECT_EQ(up.cat.rows("select count(*) from sqlite_master where name='ITEM'"), "1");
}

}  // namespace
