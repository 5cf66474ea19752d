// The item writer: rows of a real catalogue written through MdbBuildItemCallback as DIDL-Lite
// objects, with their ids, resource URLs, protocolInfo and importUri.
#include "browse_support.h"
#include "catalogue.h"

#include "cds/item_writer.h"
#include "server/mdb_server_shim.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using browsetest::Profile;
using mdbtest::attr;

class ItemWriter : public ::testing::Test {
protected:
    void SetUp() override {
        for (uint32_t cls : {MDB_CLASS_MUSIC, MDB_CLASS_VIDEO, MDB_CLASS_PICTURE}) {
            profiles[cls - MDB_CLASS_MUSIC] = browsetest::FindOrdinaryProfile(cls);
            ASSERT_NE(profiles[cls - MDB_CLASS_MUSIC].profile, nullptr) << "no profile for class " << cls;
        }
    }
    void TearDown() override { browsetest::SetServerAddresses(nullptr, nullptr); }

    long long add(int32_t flags, const std::string &title, const std::string &fileName) {
        mdbtest::ItemValues v;
        v.flags = flags;
        v.title = title;
        v.fileName = fileName;
        return catalogue.addItem(v);
    }
    long long addItemOfClass(uint32_t cls, const std::string &fileName) {
        return add(static_cast<int32_t>(profiles[cls - MDB_CLASS_MUSIC].flags), fileName, fileName);
    }
    // Writes row id (or every row of sql) under base; returns the objects written.
    std::vector<IXML_Element *> write(mdbtest::Action &action, const std::string &sql, const char *base = "0.1.256",
                                      uint32_t commaSep = 0) {
        MdbItemBuildCtx ctx{};
        ctx.pstAction = action.ctx();
        ctx.pcBaseId = base;
        ctx.llLastId = -1;
        ctx.ulCommaSep = commaSep;
        EXPECT_EQ(browsetest::WriteRows(catalogue.db(), ctx, sql), SQLITE_OK) << sql;
        return action.objects();
    }
    IXML_Element *writeOne(mdbtest::Action &action, long long id, const char *base = "0.1.256", uint32_t comma = 0) {
        std::vector<IXML_Element *> objects =
            write(action, "select * from DLNA where id=" + std::to_string(id), base, comma);
        EXPECT_EQ(objects.size(), 1u);
        return objects.empty() ? nullptr : objects[0];
    }
    IXML_Element *res(IXML_Element *object) {
        std::vector<IXML_Element *> r = mdbtest::children(object, "res");
        return r.empty() ? nullptr : r[0];
    }

    mdbtest::Catalogue catalogue;
    Profile profiles[3];
};

TEST_F(ItemWriter, ObjectIdsFollowTheListingBaseOrTheRowClass) {
    const long long track = addItemOfClass(MDB_CLASS_MUSIC, "a.mp3");
    const long long video = addItemOfClass(MDB_CLASS_VIDEO, "b.mpg");
    const long long photo = addItemOfClass(MDB_CLASS_PICTURE, "c.jpg");
    const long long musicAndVideo = catalogue.addFolder(0, "mv", 0x800 | 0x1000);
    const long long videoAndPhoto = catalogue.addFolder(0, "vp", 0x1000 | 0x2000);
    const long long photoOnly = catalogue.addFolder(0, "p", 0x2000);
    const long long plain = catalogue.addFolder(0, "plain");
    struct Case {
        const char *why;
        long long row;
        const char *base;
        uint32_t comma;
        std::string id, parent;
    };
    auto n = [](long long v) { return std::to_string(v); };
    const std::vector<Case> cases = {
        {"listed under a container", track, "0.1.256", 0, "0.1.256|" + n(track), "0.1.256"},
        {"inside a category value", track, "0.1.257|3", 1, "0.1.257|3," + n(track), "0.1.257|3"},
        {"a music row without base", track, "", 0, "0.1.256|" + n(track), "0.1.256"},
        {"base 0 counts as none", video, "0", 0, "0.2.512|" + n(video), "0.2.512"},
        {"a picture row without base", photo, "", 0, "0.3.768|" + n(photo), "0.3.768"},
        {"a folder of music and video", musicAndVideo, "", 0, "0.1.264|" + n(musicAndVideo), "0.1.264"},
        {"a folder of video and pictures", videoAndPhoto, "", 0, "0.2.516|" + n(videoAndPhoto), "0.2.516"},
        {"a folder of pictures", photoOnly, "0", 0, "0.3.771|" + n(photoOnly), "0.3.771"},
        {"a folder without media has no base", plain, "", 0, "", ""},
        {"a folder listed under a container", plain, "0.1.264", 0, "0.1.264|" + n(plain), "0.1.264"},
    };
    for (const Case &c : cases) {
        mdbtest::Action action;
        IXML_Element *object = writeOne(action, c.row, c.base, c.comma);
        EXPECT_EQ(attr(object, g_astDlnaCols[0].pcColName), c.id) << c.why;
        EXPECT_EQ(attr(object, g_astDlnaCols[1].pcColName), c.parent) << c.why;
        const std::vector<std::string> names = mdbtest::attrNames(object);
        ASSERT_GE(names.size(), 2u) << c.why;
        EXPECT_EQ(names[0], g_astDlnaCols[0].pcColName) << c.why << ": the id comes first";
        EXPECT_EQ(names[1], g_astDlnaCols[1].pcColName) << c.why;
        const std::vector<std::string> kids = mdbtest::childNames(object);
        ASSERT_GE(kids.size(), 2u) << c.why;
        EXPECT_EQ(kids[0], g_astDlnaCols[3].pcPropName) << c.why << ": the title comes first";
        EXPECT_EQ(kids[1], g_astDlnaCols[2].pcPropName) << c.why;
        // Folders are containers and carry container properties only; items the others.
        const bool folder = c.row != track && c.row != video && c.row != photo;
        EXPECT_STREQ(ixmlNode_getNodeName(reinterpret_cast<IXML_Node *>(object)), folder ? "container" : "item")
            << c.why;
        EXPECT_EQ(mdbtest::children(object, "upnp:storageUsed").size(), folder ? 1u : 0u) << c.why;
        EXPECT_EQ(mdbtest::childText(object, "dc:date"), folder ? "<none>" : "[Unknown]") << c.why;
    }
}

TEST_F(ItemWriter, ResourceUrlFollowsTheAddressFamily) {
    MdbShimSetFileServerPorts(8200, 8206);
    const long long dotted = addItemOfClass(MDB_CLASS_MUSIC, "Song.Live.mp3");
    const long long bare = addItemOfClass(MDB_CLASS_MUSIC, "README");
    const std::string port4 = std::to_string(UpnpGetFileServerPort());
    const std::string port6 = std::to_string(UpnpGetFileServerPort6());
    const std::string d = std::to_string(dotted), b = std::to_string(bare);
    struct Case {
        const char *why;
        uint32_t family;
        const char *ipv4, *ipv6;
        long long row;
        std::string url;
    };
    const std::vector<Case> cases = {
        {"IPv4", 2, "192.0.2.7", "fe80::1", dotted, "http://192.0.2.7:" + port4 + "/web/mdb/" + d + ".mp3"},
        {"IPv6 in brackets", 10, "192.0.2.7", "fe80::1", dotted, "http://[fe80::1]:" + port6 + "/web/mdb/" + d + ".mp3"},
        {"another family has no base", 7, "192.0.2.7", "fe80::1", dotted, "/web/mdb/" + d + ".mp3"},
        {"libupnp not started: IPv4", 2, nullptr, nullptr, dotted, "/web/mdb/" + d + ".mp3"},
        {"libupnp not started: IPv6", 10, nullptr, nullptr, dotted, "/web/mdb/" + d + ".mp3"},
        {"a file name without dot", 2, "192.0.2.7", nullptr, bare, "http://192.0.2.7:" + port4 + "/web/mdb/" + b},
    };
    for (const Case &c : cases) {
        browsetest::SetServerAddresses(c.ipv4, c.ipv6);
        mdbtest::Action action;
        action->ulAddrFamily = c.family;
        IXML_Element *object = writeOne(action, c.row);
        EXPECT_EQ(mdbtest::childText(object, "res"), c.url) << c.why;
        EXPECT_EQ(attr(res(object), "importUri"), "<none>") << c.why;
    }
    MdbShimSetFileServerPorts(9000, 9000);
}

TEST_F(ItemWriter, ProtocolInfoFromTheProfileLibraryAndTheFamily) {
    const Profile lpcm = browsetest::FindProfile(MDB_CLASS_MUSIC, [](const std::string &n) { return n == "LPCM"; });
    const Profile unknown = browsetest::FindProfile(MDB_CLASS_VIDEO, [](const std::string &n) { return n == "Unknown"; });
    const Profile ordinary = profiles[0];
    ASSERT_NE(lpcm.profile, nullptr);
    ASSERT_NE(unknown.profile, nullptr);
    auto head = [](const Profile &p) { return "http-get:*:" + std::string(p.profile->pcMimeType) + ":"; };
    auto transfer = [](const Profile &p) {
        const MdbTransferParams *t = g_astMediaClasses[(p.flags >> 8) & 255].pstTransfer;
        return "DLNA.ORG_OP=" + std::string(t->pcOpValue) + ";DLNA.ORG_FLAGS=" + t->pcFlagsValue;
    };
    const std::vector<std::pair<Profile, std::string>> cases = {
        {lpcm, head(lpcm) + "DLNA.ORG_PN=LPCM;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000"},
        {unknown, head(unknown) + transfer(unknown)},
        {ordinary, head(ordinary) + "DLNA.ORG_PN=" + ordinary.profile->pcProfileName + ";" + transfer(ordinary)},
    };
    for (const auto &[profile, expected] : cases) {
        mdbtest::Action action;
        IXML_Element *object = writeOne(action, add(static_cast<int32_t>(profile.flags), "t", "x.bin"));
        EXPECT_EQ(attr(res(object), "protocolInfo"), expected) << profile.profile->pcProfileName;
        EXPECT_EQ(mdbtest::attrNames(res(object)).at(0), "protocolInfo") << profile.profile->pcProfileName;
    }
}

// A family outside the table has no OP and FLAGS texts: the profile alone decides.
TEST(ProtocolInfo, FamilyWithoutTransferParameters) {
    ASSERT_LT(g_ulNumOfMediaClasses, 255u);
    const uint32_t outside = (255u << 8) | MDB_CLASS_MUSIC;
    struct Case {
        MdbDlnaProfile profile;
        const char *expected;
    };
    const std::vector<Case> cases = {
        {{"LPCM", "audio/L16;rate=44100;channels=2", "pcm"},
         "http-get:*:audio/L16;rate=44100;channels=2:DLNA.ORG_PN=LPCM;DLNA.ORG_OP=01;"
         "DLNA.ORG_FLAGS=01700000000000000000000000000000"},
        {{"Unknown", "audio/x-flac", "flac"}, "http-get:*:audio/x-flac:*"},
        {{"MP3", "audio/mpeg", "mp3"}, "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3"},
    };
    for (const Case &c : cases) {
        char buf[512];
        MdbFormatProtocolInfo(&c.profile, outside, buf, sizeof buf);
        EXPECT_STREQ(buf, c.expected) << c.profile.pcProfileName;
    }
}

TEST_F(ItemWriter, ImportUriWhileTheUploadNoteExists) {
    browsetest::SetServerAddresses("192.0.2.7", nullptr);
    const std::string base = "http://192.0.2.7:" + std::to_string(UpnpGetFileServerPort());
    const long long open = addItemOfClass(MDB_CLASS_MUSIC, "up.mp3");
    const long long restricted = add(static_cast<int32_t>(profiles[0].flags | MDB_FLAGS_RESTRICTED), "r", "r.mp3");
    ASSERT_EQ(QRV_MDB_AddUploadNote(open), 0);
    ASSERT_EQ(QRV_MDB_AddUploadNote(restricted), 0);
    struct Case {
        const char *why;
        long long row;
        std::string url, importUri;
    };
    const std::string o = std::to_string(open), r = std::to_string(restricted);
    const std::vector<Case> cases = {
        {"uploading", open, "", base + "/web/upload/" + o + ".mp3"},
        {"uploading but restricted", restricted, "", "<none>"},
    };
    for (const Case &c : cases) {
        mdbtest::Action action;
        IXML_Element *object = writeOne(action, c.row), *resource = res(object);
        EXPECT_EQ(mdbtest::childText(object, "res"), c.url) << c.why;
        EXPECT_EQ(attr(resource, "importUri"), c.importUri) << c.why;
        EXPECT_EQ(mdbtest::attrNames(resource).at(0), "protocolInfo") << c.why;
    }
    QRV_MDB_DelUploadNote(open);
    QRV_MDB_DelUploadNote(restricted);
    mdbtest::Action action;
    IXML_Element *object = writeOne(action, open), *resource = res(object);
    EXPECT_EQ(mdbtest::childText(object, "res"), base + "/web/mdb/" + o + ".mp3") << "upload finished";
    EXPECT_EQ(attr(resource, "importUri"), "<none>") << "upload finished";
}

TEST_F(ItemWriter, ResElementOnlyWhenTheFilterAsksForAResAttribute) {
    const long long track = addItemOfClass(MDB_CLASS_MUSIC, "t.mp3");
    const uint32_t protocolInfo = QRV_MDB_GetFilterIdx("res@protocolInfo");
    ASSERT_LT(protocolInfo, g_ulNumOfDlnaCols);
    std::vector<unsigned char> none(g_ulNumOfDlnaCols, 0), onlyRes(g_ulNumOfDlnaCols, 0);
    onlyRes[protocolInfo] = 1;
    mdbtest::Action withoutRes, withRes;
    withoutRes.setFilter(none);
    withRes.setFilter(onlyRes);
    EXPECT_EQ(res(writeOne(withoutRes, track)), nullptr);
    IXML_Element *resource = res(writeOne(withRes, track));
    ASSERT_NE(resource, nullptr);
    EXPECT_EQ(attr(resource, "protocolInfo").rfind("http-get:*:", 0), 0u) << attr(resource, "protocolInfo");
}

TEST_F(ItemWriter, RequestedCountCountsObjectsWrittenAndSkipsRowsWithoutProfile) {
    // A profile number far behind the last one of the family names no profile.
    const int32_t noProfile = static_cast<int32_t>((profiles[0].flags & 0xFFFFu) | (59u << 16));
    ASSERT_EQ(QRV_DLNA_GetProfileByProfileId(static_cast<uint32_t>(noProfile)), nullptr);
    const long long first = addItemOfClass(MDB_CLASS_MUSIC, "1.mp3");
    add(noProfile, "lost", "2.mp3");
    const long long third = addItemOfClass(MDB_CLASS_MUSIC, "3.mp3");
    addItemOfClass(MDB_CLASS_MUSIC, "4.mp3");
    mdbtest::Action action(true, 2);
    testing::internal::CaptureStdout();
    std::vector<IXML_Element *> objects = write(action, "select * from DLNA order by id");
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, "item " + std::to_string(noProfile) + "-" + std::to_string(noProfile) + " can't find profile\n");
    ASSERT_EQ(objects.size(), 2u);
    EXPECT_EQ(action->ulNumberReturned, 2u);
    EXPECT_EQ(attr(objects[0], "id"), "0.1.256|" + std::to_string(first));
    EXPECT_EQ(attr(objects[1], "id"), "0.1.256|" + std::to_string(third));
}

TEST_F(ItemWriter, ConsecutiveRowsWithOneIdMakeOneObject) {
    const long long track = addItemOfClass(MDB_CLASS_MUSIC, "t.mp3");
    mdbtest::Action action;
    std::vector<IXML_Element *> objects =
        write(action, "select DLNA.* from DLNA, (select 1 union all select 2) where id=" + std::to_string(track));
    ASSERT_EQ(objects.size(), 1u);
    EXPECT_EQ(action->ulNumberReturned, 1u);
    EXPECT_EQ(mdbtest::children(objects[0], g_astDlnaCols[3].pcPropName).size(), 2u) << "each row adds its title";
    EXPECT_EQ(mdbtest::children(objects[0], "res").size(), 1u) << "but one resource";
}

TEST_F(ItemWriter, EmptyElementPropertiesReadUnknown) {
    const uint32_t album = QRV_MDB_GetFilterIdx("upnp:album");
    ASSERT_LT(album, g_ulNumOfDlnaCols);
    ASSERT_EQ(g_astDlnaCols[album].usFlags & (MDB_COL_ELEMENT | MDB_COL_RES_ATTRIBUTE | MDB_COL_ADAPT_BUILDER),
              MDB_COL_ELEMENT);
    mdbtest::ItemValues v;
    v.flags = static_cast<int32_t>(profiles[0].flags);
    v.title = v.fileName = "no album";
    const long long without = catalogue.addItem(v);
    v.album = catalogue.lookup("ALBUMS", "");
    const long long empty = catalogue.addItem(v);
    v.album = catalogue.lookup("ALBUMS", "Blue Train");
    const long long named = catalogue.addItem(v);
    for (auto [row, text] : {std::pair{without, "[Unknown]"}, {empty, "[Unknown]"}, {named, "Blue Train"}}) {
        mdbtest::Action action;
        EXPECT_EQ(mdbtest::childText(writeOne(action, row), "upnp:album"), text) << row;
    }
}

TEST_F(ItemWriter, RowsThatAreNotDlnaRowsAreIgnored) {
    addItemOfClass(MDB_CLASS_MUSIC, "t.mp3");
    mdbtest::Action action;
    EXPECT_TRUE(write(action, "select id, parentID, flags, title from DLNA").empty());
    EXPECT_EQ(action->ulNumberReturned, 0u);
    EXPECT_EQ(MdbBuildItemCallback(nullptr, 0, nullptr, nullptr), 0);
}

}  // namespace
