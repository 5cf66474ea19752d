// CreateObject on a real catalogue: the row it adds, the answer it writes, the note and the
// notification, the replacement of an earlier object, the retry of a failed add, and the requests
// it refuses before touching anything.
#include "action.h"
#include "fake_clock.h"
#include "fake_server_address.h"
#include "upload_catalogue.h"

#include <mdb_platform.h>
#include "server/mdb_server_shim.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

namespace {

using mdbtest::attr;
using mdbtest::attrNames;
using mdbtest::childNames;
using mdbtest::childText;
using mdbtest::ItemDescription;
using mdbtest::NewObjectRequest;
using mdbtest::UploadCatalogue;
namespace fakeclock = mdbtest::fakeclock;
namespace fakeaddress = mdbtest::fakeaddress;

constexpr unsigned short kPort = 8200;
constexpr unsigned short kPort6 = 8206;

const char *kMusic = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3";
const char *kVideo = "http-get:*:video/mpeg:DLNA.ORG_PN=MPEG_PS_PAL";
const char *kPicture = "http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_LRG";

class CreateObjectTest : public testing::Test {
protected:
    void SetUp() override {
        MdbShimSetFileServerPorts(kPort, kPort6);
        MdbShimResetNotifications();
        fakeaddress::setAvailable(true);
    }
    void TearDown() override {
        QRV_MDB_FreeUploadList();
        fakeaddress::setAvailable(true);
    }

    // Parses the description (failing the test when it does not parse) and creates the object.
    uint32_t create(NewObjectRequest &request) {
        EXPECT_EQ(request.parse(), 0u) << "the description does not parse";
        return request.create();
    }
    static ItemDescription music(const std::string &title) {
        ItemDescription d;
        d.title = title;
        d.protocolInfo = kMusic;
        return d;
    }
    fakeclock::Scope clock;
    UploadCatalogue up;
};

TEST_F(CreateObjectTest, AddsTheRowBelowTheUploadFolder) {
    ItemDescription d = music("song");
    d.date = "2010-05-06";
    NewObjectRequest r(d.text());
    ASSERT_EQ(create(r), 0u);
    const long long id = r.createdId();
    ASSERT_GT(id, 0);
    EXPECT_EQ(up.column(id, "parentID"), std::to_string(up.uploadId()));
    EXPECT_EQ(up.column(id, "title"), "song");
    EXPECT_EQ(up.column(id, "fileName"), "song.mp3");
    EXPECT_EQ(up.column(id, "size"), "0");
    EXPECT_EQ(up.column(id, "date"), "2010-5-6");
    EXPECT_EQ(up.column(id, "lastModify"), "");
    EXPECT_EQ(up.column(id, "flags"), std::to_string(static_cast<int32_t>(r->ulFlags)));
    EXPECT_EQ(up.cat().scalar("select bitsPerSample + duration + nrAudioChannels + resolution + sampleFrequency"
                              " + bitrate + originalTrackNumber + exID_ACTOR + exID_ALBUM + exID_ARTIST"
                              " + exID_AUTHOR + exID_CREATOR + exID_DIRECTOR + exID_GENRE + exID_PRODUCER"
                              " + exID_PUBLISHER from ITEM where id=" +
                              std::to_string(id)),
              "0");
    EXPECT_EQ(fakeclock::sleeps().size(), 0u);
}

TEST_F(CreateObjectTest, AnswersWithTheItemAndItsImportUri) {
    ItemDescription d = music("song");
    d.size = "3145728";
    d.ifoFileUri = "song.ifo";
    NewObjectRequest r(d.text());
    IXML_Element *root = r->pstDidlRoot;
    ASSERT_EQ(create(r), 0u);
    const long long id = r.createdId();
    const std::string idText = std::to_string(id);
    EXPECT_EQ(std::string(r->pcObjectId), "0.1.264|" + idText);
    EXPECT_EQ(std::string(r->pcParentId), "0.1.264|" + std::to_string(up.uploadId()));

    const auto objects = r.answerObjects();
    ASSERT_EQ(objects.size(), 1u);
    IXML_Element *item = objects[0];
    EXPECT_EQ(r->pstDidlRoot, item) << "the DIDL-Lite root moves to the item";
    EXPECT_NE(root, item);
    EXPECT_EQ(attrNames(item), (std::vector<std::string>{g_astDlnaCols[0].pcColName, g_astDlnaCols[1].pcColName,
                                                          g_astDlnaCols[23].pcColName, g_astDlnaCols[30].pcColName}));
    EXPECT_EQ(attr(item, g_astDlnaCols[0].pcColName), "0.1.264|" + idText);
    EXPECT_EQ(attr(item, g_astDlnaCols[1].pcColName), "0.1.264|" + std::to_string(up.uploadId()));
    EXPECT_EQ(attr(item, g_astDlnaCols[23].pcColName), "0");
    EXPECT_EQ(attr(item, g_astDlnaCols[30].pcColName), "4");
    EXPECT_EQ(childNames(item), (std::vector<std::string>{"dc:title", "upnp:class", "res"}));
    EXPECT_EQ(childText(item, "dc:title"), "song");
    EXPECT_EQ(childText(item, "upnp:class"), "object.item.audioItem.musicTrack");
    EXPECT_EQ(r->pstItem, mdbtest::children(item, "upnp:class").at(0));

    IXML_Element *res = r->pstRes;
    ASSERT_EQ(res, mdbtest::children(item, "res").at(0));
    EXPECT_EQ(childText(item, "res"), "");
    EXPECT_EQ(attrNames(res), (std::vector<std::string>{"protocolInfo", "size", "dlna:ifoFileURI", "importUri"}));
    EXPECT_EQ(attr(res, "protocolInfo"), kMusic);
    EXPECT_EQ(attr(res, "size"), "3145728");
    EXPECT_EQ(attr(res, "dlna:ifoFileURI"), "song.ifo");
    EXPECT_EQ(attr(res, "importUri"), "http://192.0.2.7:8200/web/upload/" + idText + ".mp3");
}

TEST_F(CreateObjectTest, OpensAWaitingNoteAndNotifiesTheServer) {
    fakeclock::setUptime(5000);
    NewObjectRequest r(music("song").text());
    ASSERT_EQ(create(r), 0u);
    const long long id = r.createdId();
    EXPECT_EQ(QRV_MDB_FindUploadNote(id), 0);
    ASSERT_NE(g_pstUploadList, nullptr);
    EXPECT_EQ(g_pstUploadList->llObjectId, id);
    EXPECT_EQ(g_pstUploadList->ulState, 1u);
    EXPECT_EQ(g_pstUploadList->ulStartTime, 5000u);
    ASSERT_EQ(MdbShimNotifyCount(), 1u);
    EXPECT_EQ(MdbShimNotifyFlags(0), r->ulFlags);
}

TEST_F(CreateObjectTest, ChoosesTheObjectIdPrefixByClass) {
    const struct {
        const char *protocolInfo;
        const char *upnpClass;
        uint32_t classNumber;
        const char *prefix;
    } cases[] = {
        {kMusic, "object.item.audioItem.musicTrack", MDB_CLASS_MUSIC, "0.1.264|"},
        {kVideo, "object.item.videoItem", MDB_CLASS_VIDEO, "0.2.512|"},
        {kPicture, "object.item.imageItem.photo", MDB_CLASS_PICTURE, "0.3.771|"},
    };
    for (const auto &c : cases) {
        ItemDescription d;
        d.title = std::string("upload of ") + c.prefix;
        d.upnpClass = c.upnpClass;
        d.protocolInfo = c.protocolInfo;
        NewObjectRequest r(d.text());
        ASSERT_EQ(create(r), 0u) << c.prefix;
        EXPECT_EQ(r->ulFlags & MDB_FLAGS_CLASS_MASK, c.classNumber) << c.prefix;
        const long long id = r.createdId();
        EXPECT_EQ(std::string(r->pcObjectId), c.prefix + std::to_string(id));
        EXPECT_EQ(std::string(r->pcParentId), c.prefix + std::to_string(up.uploadId()));
        EXPECT_EQ(up.column(id, "fileName"), *d.title + "." + r->pcSuffix);
    }
}

TEST_F(CreateObjectTest, FormsTheImportUriByAddressFamily) {
    const struct {
        const char *what;
        uint32_t family;
        bool addressKnown;
        std::string base;
    } cases[] = {
        {"IPv4", 2, true, "http://192.0.2.7:8200"},
        {"IPv6", 10, true, "http://[2001:db8::7]:8206"},
        {"other family", 0, true, ""},
        {"IPv4 before the server has an address", 2, false, ""},
        {"IPv6 before the server has an address", 10, false, ""},
    };
    for (const auto &c : cases) {
        fakeaddress::setAvailable(c.addressKnown);
        NewObjectRequest r(music(std::string("track ") + c.what).text(), c.family);
        ASSERT_EQ(create(r), 0u) << c.what;
        EXPECT_EQ(attr(r->pstRes, "importUri"), c.base + "/web/upload/" + std::to_string(r.createdId()) + ".mp3")
            << c.what;
    }
}

TEST_F(CreateObjectTest, WritesTodaysLocalDateWhenTheRequestHasNone) {
    auto today = [] {
        char buf[64];
        const time_t now = time(nullptr);
        strftime(buf, sizeof buf, "%Y-%m-%d", localtime(&now));
        return std::string(buf);
    };
    const std::string before = today();
    NewObjectRequest r(music("song").text());
    ASSERT_EQ(create(r), 0u);
    const std::string after = today();
    const std::string stored = up.column(r.createdId(), "date");
    EXPECT_TRUE(stored == before || stored == after) << stored;
    EXPECT_EQ(stored.size(), 10u) << "zero-padded year-month-day";
}

TEST_F(CreateObjectTest, ClearsTheRestrictedBitBeforeStoringAndNotifying) {
    NewObjectRequest r(music("song").text());
    ASSERT_EQ(r.parse(), 0u);
    const uint32_t parsed = r->ulFlags;
    r->ulFlags |= MDB_FLAGS_RESTRICTED;
    ASSERT_EQ(r.create(), 0u);
    EXPECT_EQ(r->ulFlags, parsed);
    EXPECT_EQ(up.column(r.createdId(), "flags"), std::to_string(parsed));
    EXPECT_EQ(MdbShimNotifyFlags(0), parsed);
}

TEST_F(CreateObjectTest, CutsTheFileNameAt127Characters) {
    const struct {
        size_t titleLength;
        std::string fileNameEnd;
    } cases[] = {{123, ".mp3"}, {124, ".mp"}, {126, "t."}, {200, "tt"}};
    for (const auto &c : cases) {
        NewObjectRequest r(music(std::string(c.titleLength, 't')).text());
        ASSERT_EQ(create(r), 0u) << c.titleLength;
        const std::string name = up.column(r.createdId(), "fileName");
        EXPECT_EQ(name.size(), std::min<size_t>(127, c.titleLength + 4)) << c.titleLength;
        EXPECT_EQ(name.substr(name.size() - c.fileNameEnd.size()), c.fileNameEnd) << c.titleLength;
        EXPECT_EQ(up.column(r.createdId(), "title"), std::string(c.titleLength, 't'));
    }
}

TEST_F(CreateObjectTest, ReplacesAnEarlierObjectOfTheSameFileName) {
    const struct {
        const char *what;
        bool stillPending;
        std::vector<unsigned> sleeps;
    } cases[] = {{"upload pending", true, {1}}, {"upload finished", false, {}}};
    for (const auto &c : cases) {
        fakeclock::reset();
        NewObjectRequest first(music(c.what).text());
        ASSERT_EQ(create(first), 0u);
        const long long firstId = first.createdId();
        const std::string file = up.cat().dir().write(std::string("media/upload/") + c.what + ".mp3", "old");
        if (!c.stillPending) {
            QRV_MDB_DelUploadNote(firstId);
        }
        // A later row, so that SQLite cannot hand the deleted row's id out again.
        up.cat().addFolder(up.uploadId(), std::string("after ") + c.what);
        const long long rowsBefore = up.rowCount();
        const size_t notesBefore = mdbtest::noteCount();

        NewObjectRequest second(music(c.what).text());
        ASSERT_EQ(create(second), 0u) << c.what;
        const long long secondId = second.createdId();
        EXPECT_NE(secondId, firstId) << c.what;
        EXPECT_FALSE(up.hasRow(firstId)) << c.what;
        EXPECT_EQ(QRV_MDB_FindUploadNote(firstId), -1) << c.what;
        EXPECT_EQ(QRV_MDB_FindUploadNote(secondId), 0) << c.what;
        EXPECT_EQ(up.rowCount(), rowsBefore) << c.what;
        EXPECT_EQ(mdbtest::noteCount(), notesBefore + (c.stillPending ? 0 : 1)) << c.what;
        EXPECT_EQ(up.cat().scalar(std::string("select count(*) from ITEM where fileName='") + c.what + ".mp3'"), "1");
        EXPECT_EQ(fakeclock::sleeps(), c.sleeps) << c.what;
        EXPECT_EQ(mdbtest::readFile(file), "old") << c.what << ": the earlier file stays for the new upload";
    }
}

TEST_F(CreateObjectTest, RetriesAFailedAddOnceAfterTwoSeconds) {
    const struct {
        const char *what;
        bool liftedBySleep;
        uint32_t result;
    } cases[] = {{"second add succeeds", true, 0u}, {"both adds fail", false, ~0u}};
    for (const auto &c : cases) {
        fakeclock::reset();
        MdbShimResetNotifications();
        up.cat().exec("CREATE TRIGGER refuse_add BEFORE INSERT ON ITEM BEGIN SELECT RAISE(ABORT, 'refused'); END");
        if (c.liftedBySleep) {
            fakeclock::onSleep([this](unsigned) { up.cat().exec("DROP TRIGGER refuse_add"); });
        }
        const long long rowsBefore = up.rowCount();
        const size_t notesBefore = mdbtest::noteCount();
        NewObjectRequest r(music(c.what).text());
        EXPECT_EQ(create(r), c.result) << c.what;
        EXPECT_EQ(fakeclock::sleeps(), std::vector<unsigned>{2}) << c.what;
        if (c.result == 0) {
            EXPECT_EQ(up.rowCount(), rowsBefore + 1) << c.what;
            EXPECT_EQ(QRV_MDB_FindUploadNote(r.createdId()), 0) << c.what;
            EXPECT_EQ(MdbShimNotifyCount(), 1u) << c.what;
        } else {
            up.cat().exec("DROP TRIGGER refuse_add");
            EXPECT_EQ(up.rowCount(), rowsBefore) << c.what;
            EXPECT_EQ(r->pcObjectId, nullptr) << c.what;
            EXPECT_TRUE(r.answerObjects().empty()) << c.what;
            EXPECT_EQ(mdbtest::noteCount(), notesBefore) << c.what;
            EXPECT_EQ(MdbShimNotifyCount(), 0u) << c.what;
        }
        EXPECT_EQ(up.cat().scalar("select count(*) from sqlite_master where name='refuse_add'"), "0");
    }
}

TEST_F(CreateObjectTest, RefusesUnsafeTitlesAndOtherClassesBeforeTouchingAnything) {
    // An earlier object named like each refused request would be replaced if the request got as far.
    NewObjectRequest earlier(music("song").text());
    ASSERT_EQ(create(earlier), 0u);
    const long long earlierId = earlier.createdId();
    const long long rowsBefore = up.rowCount();

    const struct {
        const char *what;
        std::string title;
        int classNumber;  // -1: as parsed
    } cases[] = {
        // (hostile_elements_test.cpp runs the whole list of unsafe titles through parse and create)
        {"slash", "a/b", -1},
        {"dot dot", "..", -1},
        {"hidden file", ".song", -1},
        {"escape", "\x1b[31m", -1},
        {"class 0", "song", 0},
        {"folder class", "song", static_cast<int>(MDB_CLASS_FOLDER)},
        {"container class 10", "song", 10},
        {"class 14", "song", 14},
        {"class 127", "song", 127},
    };
    for (const auto &c : cases) {
        NewObjectRequest r(music("placeholder").text());
        ASSERT_EQ(r.parse(), 0u) << c.what;
        r->pcTitle = strdup(c.title.c_str());  // the parsed title stays the request's to free
        if (c.classNumber >= 0) {
            r->ulFlags = (r->ulFlags & ~MDB_FLAGS_CLASS_MASK) | static_cast<uint32_t>(c.classNumber);
        }
        fakeclock::reset();
        MdbShimResetNotifications();
        EXPECT_EQ(r.create(), ~0u) << c.what;
        EXPECT_EQ(up.rowCount(), rowsBefore) << c.what;
        EXPECT_TRUE(up.hasRow(earlierId)) << c.what;
        EXPECT_EQ(QRV_MDB_FindUploadNote(earlierId), 0) << c.what;
        EXPECT_TRUE(fakeclock::sleeps().empty()) << c.what;
        EXPECT_EQ(MdbShimNotifyCount(), 0u) << c.what;
        EXPECT_EQ(r->pcObjectId, nullptr) << c.what;
        EXPECT_TRUE(r.answerObjects().empty()) << c.what;
    }
}

TEST_F(CreateObjectTest, RefusesARequestWithoutItsParts) {
    EXPECT_EQ(QRV_MDB_CreateObject(nullptr), ~0u);
    const struct {
        const char *what;
        void (*spoil)(MdbNewObject *);
    } cases[] = {
        {"no document", [](MdbNewObject *o) { o->pstDoc = nullptr; }},
        {"no DIDL-Lite root", [](MdbNewObject *o) { o->pstDidlRoot = nullptr; }},
        {"no suffix", [](MdbNewObject *o) { o->pcSuffix = nullptr; }},
        {"suffix with a slash", [](MdbNewObject *o) { o->pcSuffix = "x/y"; }},
    };
    const long long rowsBefore = up.rowCount();
    for (const auto &c : cases) {
        NewObjectRequest r(music("song").text());
        ASSERT_EQ(r.parse(), 0u);
        IXML_Document *doc = r->pstDoc;
        c.spoil(r.obj());
        EXPECT_EQ(r.create(), ~0u) << c.what;
        r->pstDoc = doc;
        EXPECT_EQ(up.rowCount(), rowsBefore) << c.what;
    }
}

TEST(CreateObjectWithoutUploadFolder, PutsTheObjectDirectlyBelowTheFirstRoot) {
    fakeclock::Scope clock;
    UploadCatalogue up(false);
    up.cat().addFolder(0, up.cat().dir().mkdir("second-root"));
    ItemDescription d;
    NewObjectRequest r(d.text());
    ASSERT_EQ(r.parse(), 0u);
    ASSERT_EQ(r.create(), 0u);
    const std::string id = std::string(r->pcObjectId).substr(8);
    EXPECT_EQ(up.cat().scalar("select parentID from ITEM where id=" + id), std::to_string(up.rootId()));
    QRV_MDB_FreeUploadList();
}

}  // namespace
