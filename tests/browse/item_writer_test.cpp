// The item writer: rows of the DLNA view written through MdbBuildItemCallback as DIDL-Lite objects,
// with their ids, resource URLs, protocolInfo and importUri; and every answer well-formed XML in
// UTF-8 whatever the catalogue holds. The program answers libupnp's server address questions itself.
#include "library.h"

#include "cds/item_writer.h"
#include "server/mdb_server_shim.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

namespace {

const char *g_ipv4 = nullptr, *g_ipv6 = nullptr;  // NULL: libupnp's answer before UpnpInit2

}  // namespace

// The test program's definitions win over libupnp's at link time: no socket is ever opened.
extern "C" char *UpnpGetServerIpAddress(void) { return const_cast<char *>(g_ipv4); }
extern "C" char *UpnpGetServerIp6Address(void) { return const_cast<char *>(g_ipv6); }

namespace {

using mdbtest::attr;
using mdbtest::childText;

const char *const kTrack = "Dave.Brubeck-Take.Five.mp3";
const std::string kLpcm = "DLNA.ORG_PN=LPCM;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000";

class ItemWriter : public ::testing::Test {
protected:
    void TearDown() override { g_ipv4 = g_ipv6 = nullptr; }

    // Writes the rows that sql selects as listed under base.
    std::vector<IXML_Element *> write(mdbtest::Action &action, const std::string &sql, const char *base = "0.1.256") {
        MdbItemBuildCtx ctx = MdbMakeItemBuildCtx(nullptr, action.ctx(), base, 0);
        EXPECT_EQ(MdbExecSql(lib.db(), sql.c_str(), MdbBuildItemCallback, &ctx, nullptr), SQLITE_OK) << sql;
        return action.objects();
    }
    // Writes the row of a file, which must make one object.
    IXML_Element *writeRow(mdbtest::Action &action, const char *file, const char *base = "0.1.256") {
        const std::vector<IXML_Element *> objects = write(action, "select * from DLNA where id=" + lib.id(file), base);
        EXPECT_EQ(objects.size(), 1u) << file;
        return objects.empty() ? nullptr : objects[0];
    }

    mdbtest::Library lib;
};

// Ids of rows listed under a container are checked by the tree walk; without a base (as search
// results are written) the row's class and folder bits choose the container. Folders are
// containers with container properties only; items carry a resource.
TEST_F(ItemWriter, ObjectIdsWithoutBaseFollowTheRowClass) {
    const std::pair<const char *, const char *> cases[] = {
        {kTrack, "0.1.256"}, {"holiday.mp4", "0.2.512"}, {"beach.jpg", "0.3.768"},
        {"/media/usb1_1", "0.1.264"},  // a folder of all three classes: music first
        {"Video", "0.2.516"},          // video and pictures: video first
        {"Photos", "0.3.771"}, {"/media/empty", ""},  // a folder without media: no id at all
    };
    for (const auto &[file, parent] : cases) {
        for (const char *base : {"", "0"}) {  // "0" counts as no base
            mdbtest::Action action;
            IXML_Element *object = writeRow(action, file, base);
            const std::vector<std::string> attrs = mdbtest::attrNames(object), kids = mdbtest::childNames(object);
            const bool folder = lib.row(file).cls() == MDB_CLASS_FOLDER;
            EXPECT_EQ(std::string(ixmlNode_getNodeName(reinterpret_cast<IXML_Node *>(object))) + " " +
                          attr(object, "id") + " " + attr(object, "parentID") + " " + attrs.at(0) + " " + attrs.at(1) +
                          " " + kids.at(0) + " " + kids.at(1) + " " +
                          std::to_string(mdbtest::children(object, "upnp:storageUsed").size()) +
                          std::to_string(mdbtest::children(object, "res").size()),
                      std::string(folder ? "container " : "item ") + (*parent ? parent + ("|" + lib.id(file)) : "") +
                          " " + parent + " id parentID dc:title upnp:class " + (folder ? "10" : "01")) << file << base;
        }
    }
}

// The res element: its URL for each address family, its protocolInfo for an ordinary, an LPCM and
// the "Unknown" profile (the same that QRV_MDB_GetProtocolInfo gives a file server), and while an
// upload note exists no URL but an importUri (unless restricted).
TEST_F(ItemWriter, ResourceUrlProtocolInfoAndImportUri) {
    MdbShimSetFileServerPorts(8200, 8206);
    // "http-get:*:<MIME type>:", then pn, then the family's OP and FLAGS texts unless familyTexts is off.
    auto info = [&](const char *file, const std::string &pn, bool familyTexts = true) {
        const uint32_t flags = static_cast<uint32_t>(lib.row(file).flags);
        const MdbTransferParams *t = g_astMediaClasses[(flags >> 8) & 255].pstTransfer;
        return "http-get:*:" + std::string(QRV_DLNA_GetProfileByProfileId(flags)->pcMimeType) + ":" + pn +
               (familyTexts ? "DLNA.ORG_OP=" + std::string(t->pcOpValue) + ";DLNA.ORG_FLAGS=" + t->pcFlagsValue : "");
    };
    const std::string mp3 = info(kTrack, "DLNA.ORG_PN=MP3;"), track = lib.id(kTrack) + ".mp3", none = "<none>";
    const char *v4 = "192.0.2.7", *v6 = "fe80::1", *restricted = "03 Blue in Green.m4a";
    ASSERT_NE(lib.row(restricted).flags & MDB_FLAGS_RESTRICTED, 0);
    const struct {
        uint32_t family;
        const char *ipv4, *ipv6, *file;
        bool uploading;
        std::string url, protocolInfo, importUri;
    } cases[] = {
        {2, v4, v6, kTrack, false, "http://192.0.2.7:8200/web/mdb/" + track, mp3, none},
        {10, v4, v6, "live.wav", false, "http://[fe80::1]:8206/web/mdb/" + lib.id("live.wav") + ".wav",
         info("live.wav", kLpcm, false), none},
        {7, v4, v6, "capture.dat", false, "/web/mdb/" + lib.id("capture.dat") + ".dat", info("capture.dat", ""), none},
        {2, nullptr, nullptr, kTrack, false, "/web/mdb/" + track, mp3, none},  // libupnp not started
        {10, nullptr, nullptr, kTrack, false, "/web/mdb/" + track, mp3, none},
        {2, v4, nullptr, "VOICE001", false, "http://192.0.2.7:8200/web/mdb/" + lib.id("VOICE001"), mp3, none},
        {2, v4, nullptr, kTrack, true, "", mp3, "http://192.0.2.7:8200/web/upload/" + track},
        {10, v4, v6, restricted, true, "", info(restricted, "DLNA.ORG_PN=AAC_ISO_320;"), none},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(std::string(c.file) + " family " + std::to_string(c.family) + " uploading " +
                     std::to_string(c.uploading));
        g_ipv4 = c.ipv4;
        g_ipv6 = c.ipv6;
        mdbtest::Action action;
        action->ulAddrFamily = c.family;
        if (c.uploading) ASSERT_EQ(QRV_MDB_AddUploadNote(lib.row(c.file).id), 0);
        IXML_Element *object = writeRow(action, c.file), *resource = mdbtest::children(object, "res").at(0);
        QRV_MDB_DelUploadNote(lib.row(c.file).id);
        EXPECT_EQ(childText(object, "res"), c.url);
        EXPECT_EQ(attr(resource, "protocolInfo"), c.protocolInfo);
        EXPECT_EQ(attr(resource, "importUri"), c.importUri);
        EXPECT_EQ(mdbtest::attrNames(resource).at(0), "protocolInfo");
        char header[512];  // what a file server says of the same item in contentFeatures.dlna.org
        EXPECT_EQ(QRV_MDB_GetProtocolInfo(static_cast<uint32_t>(lib.row(c.file).flags), header, sizeof header), MDB_OK);
        EXPECT_EQ(header, c.protocolInfo);
    }
    char header[8] = "#";
    EXPECT_EQ(QRV_MDB_GetProtocolInfo(11u | (59u << 16), header, sizeof header), MDB_ERR_NOT_FOUND);
    EXPECT_STREQ(header, "") << "no profile: an empty text";
    EXPECT_EQ(QRV_MDB_GetProtocolInfo(11u, nullptr, 0), MDB_ERR_PARA);
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
    const struct { const char *file, *filter, *element; std::string text; } cases[] = {
        {kTrack, "*", "upnp:album", "Time Out"},
        {"beach.jpg", "*", "upnp:album", "<none>"},  // NULL
        {"VOICE001", "*", "dc:date", "<none>"},          // empty text
        {kTrack, "", "upnp:album", "<none>"},
        {kTrack, "", "res", "<none>"},
        {kTrack, "res@protocolInfo", "res", "/web/mdb/" + lib.id(kTrack) + ".mp3"},
        {kTrack, "res@protocolInfo", "upnp:album", "<none>"},
    };
    for (const auto &c : cases) {
        mdbtest::Action action;
        action.adoptFilter(QRV_MDB_ParseFilterString(c.filter));
        EXPECT_EQ(childText(writeRow(action, c.file), c.element), c.text) << c.file << " " << c.filter << c.element;
        EXPECT_EQ(action.xml().find("[Unknown]"), std::string::npos) << action.xml();
    }
}

// RequestedCount counts objects written, not rows; a row whose flags name no profile is skipped;
// consecutive rows of one id (as a join gives them) make one object; rows too short make none.
TEST_F(ItemWriter, ObjectsCountedAndRowsWithoutProfileSkipped) {
    mdbtest::ItemValues lost = lib.row(kTrack);
    lost.flags = (lost.flags & 0xFFFF) | (59 << 16);  // far behind the family's last profile
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
              "0.1.256|" + lib.id("01 So What.mp3") + " 0.1.256|" + lib.id("03 Blue in Green.m4a"));

    mdbtest::Action twice, partial;
    const std::vector<IXML_Element *> one =
        write(twice, "select DLNA.* from DLNA, (select 1 union all select 2) where id=" + lib.id(kTrack));
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(twice->ulNumberReturned, 1u);
    EXPECT_EQ(mdbtest::children(one[0], "res").size(), 1u) << "one resource";
    EXPECT_TRUE(write(partial, "select id, parentID, flags, title from DLNA").empty());
    EXPECT_EQ(partial->ulNumberReturned, 0u);
    EXPECT_EQ(MdbBuildItemCallback(nullptr, 0, nullptr, nullptr), 0);
}

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
        const std::vector<std::string> titles = mdbtest::TitlesOf(mdbtest::ReadDidl(action.xml()));
        EXPECT_FALSE(titles.empty());
        if (id == folder) EXPECT_EQ(std::set<std::string>(titles.begin(), titles.end()), expected);
    }
}

}  // namespace
