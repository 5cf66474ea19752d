// The item writer: rows of the DLNA view written through MdbBuildItemCallback as DIDL-Lite objects,
// with their ids, resource URLs, protocolInfo and importUri.
#include "library.h"

#include "cds/item_writer.h"
#include "server/mdb_server_shim.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <set>

namespace {

using mdbtest::attr;
using mdbtest::childText;

const char *const kTrack = "Dave.Brubeck-Take.Five.mp3";
const std::string kLpcm = "DLNA.ORG_PN=LPCM;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000";

class ItemWriter : public ::testing::Test {
protected:
    void TearDown() override { browsetest::SetServerAddresses(nullptr, nullptr); }

    // Writes the rows that sql selects (or the row of a file) as listed under base.
    std::vector<IXML_Element *> write(mdbtest::Action &action, const std::string &sql, const char *base = "0.1.256") {
        MdbItemBuildCtx ctx = MdbMakeItemBuildCtx(nullptr, action.ctx(), base, 0);
        EXPECT_EQ(MdbExecSql(lib.db(), sql.c_str(), MdbBuildItemCallback, &ctx, nullptr), SQLITE_OK) << sql;
        return action.objects();
    }
    IXML_Element *writeRow(mdbtest::Action &action, const char *file, const char *base = "0.1.256") {
        const std::vector<IXML_Element *> objects = write(action, "select * from DLNA where id=" + lib.id(file), base);
        EXPECT_EQ(objects.size(), 1u) << file;
        return objects.empty() ? nullptr : objects[0];
    }
    static IXML_Element *res(IXML_Element *object) {
        const std::vector<IXML_Element *> r = mdbtest::children(object, "res");
        return r.empty() ? nullptr : r[0];
    }

    browsetest::Library lib;
};

// Ids of rows listed under a container are checked by the tree walk; without a base (as search
// results are written) the row's class and folder bits choose the container.
TEST_F(ItemWriter, ObjectIdsWithoutBaseFollowTheRowClass) {
    const std::pair<const char *, const char *> cases[] = {
        {kTrack, "0.1.256"},
        {"holiday.mpg", "0.2.512"},
        {"beach.jpg", "0.3.768"},
        {"/media/usb1_1", "0.1.264"},  // a folder of all three classes: music first
        {"Video", "0.2.516"},          // video and pictures: video first
        {"Photos", "0.3.771"},
        {"/media/empty", ""},  // a folder without media: no id at all
    };
    for (const auto &[file, parent] : cases) {
        for (const char *base : {"", "0"}) {  // "0" counts as no base
            mdbtest::Action action;
            IXML_Element *object = writeRow(action, file, base);
            EXPECT_EQ(attr(object, "id"), *parent != '\0' ? parent + ("|" + lib.id(file)) : "") << file << base;
            EXPECT_EQ(attr(object, "parentID"), parent) << file;
            const std::vector<std::string> attrs = mdbtest::attrNames(object), kids = mdbtest::childNames(object);
            ASSERT_TRUE(attrs.size() >= 2 && kids.size() >= 2) << file;
            EXPECT_EQ(attrs[0] + " " + attrs[1] + " " + kids[0] + " " + kids[1], "id parentID dc:title upnp:class");
            // Folders are containers with container properties only; items carry the others.
            const bool folder = lib.row(file).cls() == MDB_CLASS_FOLDER;
            EXPECT_STREQ(ixmlNode_getNodeName(reinterpret_cast<IXML_Node *>(object)), folder ? "container" : "item");
            EXPECT_EQ(mdbtest::children(object, "upnp:storageUsed").size(), folder ? 1u : 0u) << file;
            EXPECT_EQ(mdbtest::children(object, "res").size(), folder ? 0u : 1u) << file;
        }
    }
}

// The res element: its URL for each address family, its protocolInfo for an ordinary, an LPCM and
// the "Unknown" profile, and while an upload note exists no URL but an importUri (unless restricted).
TEST_F(ItemWriter, ResourceUrlProtocolInfoAndImportUri) {
    MdbShimSetFileServerPorts(8200, 8206);
    // "http-get:*:<MIME type>:", then pn, then the family's OP and FLAGS texts unless familyTexts is off.
    auto info = [&](const char *file, const std::string &pn, bool familyTexts = true) {
        const uint32_t flags = static_cast<uint32_t>(lib.row(file).flags);
        const MdbTransferParams *t = g_astMediaClasses[(flags >> 8) & 255].pstTransfer;
        return "http-get:*:" + std::string(QRV_DLNA_GetProfileByProfileId(flags)->pcMimeType) + ":" + pn +
               (familyTexts ? "DLNA.ORG_OP=" + std::string(t->pcOpValue) + ";DLNA.ORG_FLAGS=" + t->pcFlagsValue : "");
    };
    const uint32_t trackFlags = static_cast<uint32_t>(lib.row(kTrack).flags);
    const std::string ordinary =
        info(kTrack, "DLNA.ORG_PN=" + std::string(QRV_DLNA_GetProfileByProfileId(trackFlags)->pcProfileName) + ";");
    const char *v4 = "192.0.2.7", *v6 = "fe80::1", *restricted = "03 Blue in Green.mp3";
    ASSERT_NE(lib.row(restricted).flags & MDB_FLAGS_RESTRICTED, 0);
    const std::string track = lib.id(kTrack) + ".mp3", none = "<none>";  // the extension follows the last dot
    struct Case {
        uint32_t family;
        const char *ipv4, *ipv6, *file;
        bool uploading;
        std::string url, protocolInfo, importUri;
    };
    const std::vector<Case> cases = {
        {2, v4, v6, kTrack, false, "http://192.0.2.7:8200/web/mdb/" + track, ordinary, none},
        {10, v4, v6, "live.wav", false, "http://[fe80::1]:8206/web/mdb/" + lib.id("live.wav") + ".wav",
         info("live.wav", kLpcm, false), none},
        {7, v4, v6, "capture.dat", false, "/web/mdb/" + lib.id("capture.dat") + ".dat", info("capture.dat", ""), none},
        {2, nullptr, nullptr, kTrack, false, "/web/mdb/" + track, ordinary, none},  // libupnp not started
        {10, nullptr, nullptr, kTrack, false, "/web/mdb/" + track, ordinary, none},
        {2, v4, nullptr, "VOICE001", false, "http://192.0.2.7:8200/web/mdb/" + lib.id("VOICE001"), ordinary, none},
        {2, v4, nullptr, kTrack, true, "", ordinary, "http://192.0.2.7:8200/web/upload/" + track},
        {10, v4, v6, restricted, true, "", ordinary, none},
    };
    for (const Case &c : cases) {
        const std::string why = std::string(c.file) + " family " + std::to_string(c.family) + " uploading " +
                                std::to_string(c.uploading);
        browsetest::SetServerAddresses(c.ipv4, c.ipv6);
        mdbtest::Action action;
        action->ulAddrFamily = c.family;
        if (c.uploading) {
            ASSERT_EQ(QRV_MDB_AddUploadNote(lib.row(c.file).id), 0) << why;
        }
        IXML_Element *object = writeRow(action, c.file), *resource = res(object);
        QRV_MDB_DelUploadNote(lib.row(c.file).id);
        EXPECT_EQ(childText(object, "res"), c.url) << why;
        EXPECT_EQ(attr(resource, "protocolInfo"), c.protocolInfo) << why;
        EXPECT_EQ(attr(resource, "importUri"), c.importUri) << why;
        EXPECT_EQ(mdbtest::attrNames(resource).at(0), "protocolInfo") << why;
    }
    MdbShimSetFileServerPorts(9000, 9000);
}

// A family outside the media class table has no OP and FLAGS texts: the profile alone decides.
TEST(ProtocolInfo, FamilyWithoutTransferParameters) {
    ASSERT_LT(g_ulNumOfMediaClasses, 255u);
    const std::pair<MdbDlnaProfile, std::string> cases[] = {
        {{"LPCM", "audio/L16;rate=44100;channels=2", "pcm"}, "http-get:*:audio/L16;rate=44100;channels=2:" + kLpcm},
        {{"Unknown", "audio/x-flac", "flac"}, "http-get:*:audio/x-flac:*"},
        {{"MP3", "audio/mpeg", "mp3"}, "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3"},
    };
    for (const auto &[profile, expected] : cases) {
        char buf[512];
        MdbFormatProtocolInfo(&profile, (255u << 8) | MDB_CLASS_MUSIC, buf, sizeof buf);
        EXPECT_EQ(buf, expected) << profile.pcProfileName;
    }
}

// Optional element properties the row has no value for are left out; the filter decides what is
// written, the res element included (for any of its attributes).
TEST_F(ItemWriter, WhatTheFilterAndTheRowValuesGive) {
    struct Case { const char *file, *filter, *element; std::string text; };
    const Case cases[] = {
        {kTrack, "*", "upnp:album", "Time Out"},
        {"interlude.mp3", "*", "upnp:album", "<none>"},  // NULL
        {"VOICE001", "*", "dc:date", "<none>"},          // empty text
        {kTrack, "", "upnp:album", "<none>"},
        {kTrack, "", "res", "<none>"},
        {kTrack, "res@protocolInfo", "res", "/web/mdb/" + lib.id(kTrack) + ".mp3"},
        {kTrack, "res@protocolInfo", "upnp:album", "<none>"},
    };
    for (const Case &c : cases) {
        mdbtest::Action action;
        action.adoptFilter(QRV_MDB_ParseFilterString(c.filter));
        EXPECT_EQ(childText(writeRow(action, c.file), c.element), c.text) << c.file << " " << c.filter << c.element;
        EXPECT_EQ(action.xml().find("[Unknown]"), std::string::npos) << action.xml();
    }
}

TEST_F(ItemWriter, RequestedCountCountsObjectsWrittenAndSkipsRowsWithoutProfile) {
    // A profile number far behind the last one of the family names no profile.
    mdbtest::ItemValues lost = lib.row(kTrack);
    lost.flags = (lost.flags & 0xFFFF) | (59 << 16);
    ASSERT_EQ(QRV_DLNA_GetProfileByProfileId(static_cast<uint32_t>(lost.flags)), nullptr);
    const std::string skipped = std::to_string(lost.flags), id = std::to_string(lib.catalogue().addItem(lost));
    // The row without profile first, then the Jazz folder's three tracks: two of them fit.
    mdbtest::Action action(true, 2);
    testing::internal::CaptureStdout();
    const std::vector<IXML_Element *> objects =
        write(action, "select * from DLNA where parentID=" + lib.id("Jazz") + " order by id<>" + id + ", id");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "item " + skipped + "-" + skipped + " can't find profile\n");
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_EQ(action->ulNumberReturned, 2u);
    EXPECT_EQ(attr(objects[0], "id") + " " + attr(objects[1], "id"),
              "0.1.256|" + lib.id("01 So What.mp3") + " 0.1.256|" + lib.id("03 Blue in Green.mp3"));
}

TEST_F(ItemWriter, ConsecutiveRowsOfOneIdMakeOneObjectAndShortRowsNone) {
    mdbtest::Action twice, partial;
    const std::vector<IXML_Element *> objects =
        write(twice, "select DLNA.* from DLNA, (select 1 union all select 2) where id=" + lib.id(kTrack));
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_EQ(twice->ulNumberReturned, 1u);
    EXPECT_EQ(mdbtest::children(objects[0], "dc:title").size(), 2u) << "each row adds its title";
    EXPECT_EQ(mdbtest::children(objects[0], "res").size(), 1u) << "but one resource";
    EXPECT_TRUE(write(partial, "select id, parentID, flags, title from DLNA").empty());
    EXPECT_EQ(partial->ulNumberReturned, 0u);
    EXPECT_EQ(MdbBuildItemCallback(nullptr, 0, nullptr, nullptr), 0);
}

}  // namespace

namespace {

// Whatever the catalogue holds, every answer is well-formed XML in UTF-8 (read back with libxml2):
// control characters and bytes that are not UTF-8 in titles, names and file names come out as
// U+FFFD.
TEST(XmlText, AnswersAreWellFormedWhateverTheCatalogueHolds) {
    mdbtest::Catalogue cat;
    const long long root = cat.addFolder(0, "/m\x01" "edia", 0x800);
    const long long dir = cat.addFolder(root, "bad\x01" "dir", 0x800);
    const long long genre = cat.lookup("GENRES", "Ro\x02" "ck"), artist = cat.lookup("ARTISTS", "Bj\xf6rk");
    for (const char *title : {"T\x01" "itle", "Caf\xe9", "\xed\xa0\x80 surrogate", "ok \xef\xbf\xbe end"}) {
        mdbtest::ItemValues v;
        v.parentId = dir;
        v.flags = 11;  // MP3
        v.title = title;
        v.fileName = std::string(title) + ".m\x01p3";
        v.genre = genre;
        v.artist = artist;
        cat.addItem(v);
    }
    ASSERT_EQ(QRV_MDB_DbGetRoots(cat.db()), MDB_OK);
    const std::string folder = "0.1.264|" + std::to_string(dir), replaced = "\xef\xbf\xbd";
    const std::set<std::string> expected = {"T" + replaced + "itle", "Caf" + replaced,
                                            replaced + replaced + replaced + " surrogate", "ok " + replaced + " end"};
    for (const std::string &id : {std::string("0.1.264"), "0.1.264|" + std::to_string(root), folder,
                                  std::string("0.1.256"), std::string("0.1.257"), std::string("0.1.258"),
                                  std::string("search")}) {
        SCOPED_TRACE(id);
        mdbtest::Action action(true, 100, 0);
        action.setObjectId("0");
        const uint32_t status = id == "search" ? QRV_MDB_Search("0", "*", action.ctx())
                                               : QRV_MDB_Browse(id.c_str(), 1, action.ctx());
        ASSERT_EQ(status, MDB_OK);
        std::string error;
        const std::vector<std::string> titles = browsetest::Titles(action.xml(), &error);
        EXPECT_EQ(error, "") << action.xml();
        EXPECT_FALSE(titles.empty());
        if (id == folder) {
            EXPECT_EQ(std::set<std::string>(titles.begin(), titles.end()), expected);
        }
    }
}

}  // namespace
