// The Elements parser: the marker scanner, each field's checks and cuts, the order of the parse
// and what stays stored when it stops.
#include "upload/elements_parser.h"

#include "upload_catalogue.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using mdbtest::ItemDescription;
using mdbtest::NewObjectRequest;

struct ExtractCase {
    const char *what;
    const char *text;
    const char *start;
    const char *end;
    uint32_t capacity;
    uint32_t required;
    int32_t result;
    const char *value;  // buffer after success
};

TEST(ExtractValue, FindsTheTextBetweenTheFirstStartMarkerAndTheNextEndMarker) {
    const ExtractCase cases[] = {
        {"attribute", "<res size=\"42\">", "size=\"", "\"", 512, 1, 0, "42"},
        {"first occurrence wins", "a size=\"1\" b size=\"2\"", "size=\"", "\"", 512, 1, 0, "1"},
        {"longer name ending in the marker", "filesize=\"7\"", "size=\"", "\"", 512, 1, 0, "7"},
        {"element", "<dc:title>My Song</dc:title>", "<dc:title>", "</dc:title>", 512, 1, 0, "My Song"},
        {"nested start marker is kept", "<dc:title><dc:title>x</dc:title></dc:title>", "<dc:title>",
         "</dc:title>", 512, 1, 0, "<dc:title>x"},
        {"end marker before the start is not taken", "\" size=\"9\"", "size=\"", "\"", 512, 1, 0, "9"},
        {"entities stay", "<dc:title>a &amp; b</dc:title>", "<dc:title>", "</dc:title>", 512, 1, 0, "a &amp; b"},
        {"case matters", "SIZE=\"3\"", "size=\"", "\"", 512, 0, 0, ""},
        {"missing optional value", "<item/>", "size=\"", "\"", 512, 0, 0, ""},
        {"missing required value", "<item/>", "size=\"", "\"", 512, 1, -1, nullptr},
        {"no end marker", "size=\"12", "size=\"", "\"", 512, 0, -1, nullptr},
        {"empty optional value", "size=\"\"", "size=\"", "\"", 512, 0, -1, nullptr},
        {"value of capacity - 1", "v=\"abc\"", "v=\"", "\"", 4, 1, 0, "abc"},
        {"value of capacity", "v=\"abcd\"", "v=\"", "\"", 4, 1, -1, nullptr},
        {"no capacity", "v=\"a\"", "v=\"", "\"", 0, 0, -1, nullptr},
        {"blank before the quote", "size= \"5\"", "size=\"", "\"", 512, 0, 0, ""},
    };
    for (const ExtractCase &c : cases) {
        char buf[600];
        memset(buf, '#', sizeof buf);
        EXPECT_EQ(MdbExtractValue(c.text, c.start, c.end, buf, c.capacity, c.required), c.result) << c.what;
        if (c.result == 0) {
            EXPECT_STREQ(buf, c.value) << c.what;
        } else {
            EXPECT_EQ(buf[0], '#') << c.what << ": buffer written on failure";
        }
        EXPECT_EQ(buf[c.capacity], '#') << c.what << ": written beyond the capacity";
    }
}

TEST(ExtractValue, RefusesMissingArguments) {
    char buf[16];
    EXPECT_EQ(MdbExtractValue(nullptr, "a", "b", buf, sizeof buf, 0), -1);
    EXPECT_EQ(MdbExtractValue("ab", nullptr, "b", buf, sizeof buf, 0), -1);
    EXPECT_EQ(MdbExtractValue("ab", "a", nullptr, buf, sizeof buf, 0), -1);
    EXPECT_EQ(MdbExtractValue("ab", "a", "b", nullptr, sizeof buf, 0), -1);
}

// A request whose Elements come from a description, parsed.
struct Parsed {
    explicit Parsed(const ItemDescription &d, const std::string &containerId = "0.1.264|2")
        : request(d.text(), 2, containerId), result(request.parse()) {}
    NewObjectRequest request;
    uint32_t result;
};

std::string orNull(const char *text) { return text != nullptr ? text : "NULL"; }

TEST(ParseElements, ReadsEveryValueOfAFullDescription) {
    ItemDescription d;
    d.title = "Bolero &amp; more";
    d.date = "2010-05-06T10:00:00";
    d.size = "3145728";
    d.managed = "00000004";
    d.ifoFileUri = "song.ifo";
    d.protocolInfo = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=0170000000000000"
                     "0000000000000000";
    Parsed p(d);
    ASSERT_EQ(p.result, 0u);
    MdbNewObject *o = p.request.obj();
    EXPECT_EQ(orNull(o->pcParentId), "0.1.264|2");
    EXPECT_EQ(o->ulRestricted, 0u);
    EXPECT_EQ(orNull(o->pcTitle), "Bolero &amp; more");
    EXPECT_EQ(orNull(o->pcDate), "2010-5-6");
    EXPECT_EQ(orNull(o->pcClass), "object.item.audioItem.musicTrack");
    EXPECT_EQ(orNull(o->pcSize), "3145728");
    EXPECT_EQ(orNull(o->pcIfoFileUri), "song.ifo");
    EXPECT_EQ(orNull(o->pcProtocolInfo), "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01");
    const char *suffix = nullptr;
    EXPECT_EQ(o->ulFlags, QRV_MDB_PNtoFix("audio/mpeg", "MP3", &suffix));
    EXPECT_EQ(orNull(o->pcSuffix), orNull(suffix));
    EXPECT_EQ(o->ulFlags & MDB_FLAGS_CLASS_MASK, MDB_CLASS_MUSIC);
}

TEST(ParseElements, LeavesOptionalValuesUnsetWhenAbsent) {
    Parsed p{ItemDescription{}};
    ASSERT_EQ(p.result, 0u);
    EXPECT_EQ(p.request->pcDate, nullptr);
    EXPECT_EQ(p.request->pcSize, nullptr);
    EXPECT_EQ(p.request->pcIfoFileUri, nullptr);
}

TEST(ParseElements, WarnsButGoesOnWhenParentIdDiffersFromContainerId) {
    const struct {
        const char *containerId;
        bool warned;
    } cases[] = {{"0.1.264|2", false}, {"0.1.264|3", true}, {"0.1.264|2 ", true}};
    for (const auto &c : cases) {
        testing::internal::CaptureStdout();
        Parsed p(ItemDescription{}, c.containerId);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(p.result, 0u) << c.containerId;
        EXPECT_EQ(orNull(p.request->pcParentId), "0.1.264|2") << c.containerId;
        EXPECT_EQ(out, c.warned ? "warning: the parentID is diffrent with ContainerID!\n" : "") << c.containerId;
    }
}

struct FieldCase {
    const char *what;
    ItemDescription description;
    uint32_t result;
};

ItemDescription with(void (*change)(ItemDescription &)) {
    ItemDescription d;
    change(d);
    return d;
}

TEST(ParseElements, ChecksEachValue) {
    const FieldCase cases[] = {
        {"no parentID", with([](ItemDescription &d) { d.parentId.reset(); }), ~0u},
        {"empty parentID", with([](ItemDescription &d) { d.parentId = ""; }), ~0u},
        {"no restricted", with([](ItemDescription &d) { d.restricted.reset(); }), ~0u},
        {"restricted 1", with([](ItemDescription &d) { d.restricted = "1"; }), ~0u},
        {"restricted false", with([](ItemDescription &d) { d.restricted = "false"; }), ~0u},
        {"restricted empty", with([](ItemDescription &d) { d.restricted = ""; }), ~0u},
        {"restricted 00", with([](ItemDescription &d) { d.restricted = "00"; }), ~0u},
        {"managed 00000004", with([](ItemDescription &d) { d.managed = "00000004"; }), 0u},
        {"managed 1", with([](ItemDescription &d) { d.managed = "1"; }), 0u},
        {"managed 5", with([](ItemDescription &d) { d.managed = "5"; }), 0u},
        {"managed without digits reads 0", with([](ItemDescription &d) { d.managed = "x"; }), 0u},
        {"managed 00000010", with([](ItemDescription &d) { d.managed = "00000010"; }), ~0u},
        {"managed 2", with([](ItemDescription &d) { d.managed = "2"; }), ~0u},
        {"managed empty", with([](ItemDescription &d) { d.managed = ""; }), ~0u},
        {"managed overflowing", with([](ItemDescription &d) { d.managed = "4294967300"; }), ~0u},
        {"managed huge", with([](ItemDescription &d) { d.managed = std::string(400, '9'); }), ~0u},
        {"no title", with([](ItemDescription &d) { d.title.reset(); }), ~0u},
        {"empty title", with([](ItemDescription &d) { d.title = ""; }), ~0u},
        {"title of 511", with([](ItemDescription &d) { d.title = std::string(511, 't'); }), 0u},
        {"title of 512", with([](ItemDescription &d) { d.title = std::string(512, 't'); }), ~0u},
        {"date 2010-12-31", with([](ItemDescription &d) { d.date = "2010-12-31"; }), 0u},
        {"date 2010-13-01", with([](ItemDescription &d) { d.date = "2010-13-01"; }), ~0u},
        {"date 2010-01-32", with([](ItemDescription &d) { d.date = "2010-01-32"; }), ~0u},
        {"date May 2010", with([](ItemDescription &d) { d.date = "May 2010"; }), ~0u},
        {"date 2010-05", with([](ItemDescription &d) { d.date = "2010-05"; }), ~0u},
        {"date with negative month", with([](ItemDescription &d) { d.date = "2010--1-01"; }), ~0u},
        {"date empty", with([](ItemDescription &d) { d.date = ""; }), ~0u},
        {"no class", with([](ItemDescription &d) { d.upnpClass.reset(); }), ~0u},
        {"unknown class text", with([](ItemDescription &d) { d.upnpClass = "object.item.fancy"; }), 0u},
        {"size -1", with([](ItemDescription &d) { d.size = "-1"; }), ~0u},
        {"size 0", with([](ItemDescription &d) { d.size = "0"; }), 0u},
        {"size above 4 GiB", with([](ItemDescription &d) { d.size = "5000000000"; }), 0u},
        {"size beyond 64 bits", with([](ItemDescription &d) { d.size = std::string(300, '9'); }), 0u},
        {"size below 64 bits", with([](ItemDescription &d) { d.size = "-" + std::string(300, '9'); }), ~0u},
        {"size empty", with([](ItemDescription &d) { d.size = ""; }), ~0u},
        {"ifoFileURI empty", with([](ItemDescription &d) { d.ifoFileUri = ""; }), ~0u},
        {"no protocolInfo", with([](ItemDescription &d) { d.protocolInfo.reset(); }), ~0u},
        {"protocolInfo with two ':'", with([](ItemDescription &d) { d.protocolInfo = "http-get:*:audio/mpeg"; }), ~0u},
        {"protocolInfo of unknown MIME type",
         with([](ItemDescription &d) { d.protocolInfo = "http-get:*:application/x-unknown:*"; }), ~0u},
    };
    for (const FieldCase &c : cases) {
        testing::internal::CaptureStdout();
        Parsed p(c.description);
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(p.result, c.result) << c.what;
    }
}

TEST(ParseElements, RewritesTheDateWithoutLeadingZeros) {
    const struct {
        const char *in;
        const char *out;
    } cases[] = {{"2010-05-06", "2010-5-6"},
                 {"2010-05-06T10:00:00", "2010-5-6"},
                 {"2010-12-31", "2010-12-31"},
                 {"0099-0-0", "99-0-0"},
                 {"2010-5-6 trailing words", "2010-5-6"}};
    for (const auto &c : cases) {
        ItemDescription d;
        d.date = c.in;
        Parsed p(d);
        ASSERT_EQ(p.result, 0u) << c.in;
        EXPECT_EQ(orNull(p.request->pcDate), c.out) << c.in;
    }
}

TEST(ParseElements, CutsTransferParametersFromProtocolInfo) {
    const std::string head = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3";
    const struct {
        std::string in;
        std::string out;
    } cases[] = {
        {head + ";DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000", head + ";DLNA.ORG_OP=01"},
        {head + ";DLNA.ORG_PS=1,2;DLNA.ORG_OP=01", head},
        {head + ";DLNA.ORG_OP=01" MDB_VENDOR_TEST_PARAM "1", head + ";DLNA.ORG_OP=01"},
        {head + MDB_VENDOR_TEST_PARAM "1;DLNA.ORG_PS=2;DLNA.ORG_FLAGS=0", head},
        {head + ";DLNA.ORG_FLAGS=0;DLNA.ORG_PS=2", head},
        {head + ";DLNA.ORG_OP=11", head + ";DLNA.ORG_OP=11"},
        {head + ";dlna.org_ps=2", head + ";dlna.org_ps=2"},
    };
    for (const auto &c : cases) {
        ItemDescription d;
        d.protocolInfo = c.in;
        Parsed p(d);
        ASSERT_EQ(p.result, 0u) << c.in;
        EXPECT_EQ(orNull(p.request->pcProtocolInfo), c.out) << c.in;
    }
}

// What the profile step hands to QRV_MDB_PNtoFix shows in the flags word and suffix it stores:
// each case names the MIME type and profile name the protocolInfo must yield.
TEST(ParseElements, TakesMimeTypeAndProfileNameFromProtocolInfo) {
    const struct {
        const char *protocolInfo;
        const char *mime;
        const char *profile;
    } cases[] = {
        {"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01", "audio/mpeg", "MP3"},
        {"http-get:*:audio/mpeg:*", "audio/mpeg", ""},
        {"http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_LRG", "image/jpeg", "JPEG_LRG"},
        {"http-get:*:image/jpeg:DLNA.ORG_OP=01;DLNA.ORG_PN=JPEG_TN", "image/jpeg", "JPEG_TN"},
        {"http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_MED;DLNA.ORG_OP=01", "image/jpeg", "JPEG_MED"},
        {"http-get:*:image/jpeg;charset=x:DLNA.ORG_PN=JPEG_SM", "image/jpeg", "JPEG_SM"},
        {"http-get:*:image/png;x=1:DLNA.ORG_OP=01", "image/png", ""},
        {"http-get:*:audio/L16;rate=44100;channels=2:DLNA.ORG_PN=LPCM", "audio/L16", "LPCM"},
        {"http-get:*:video/mpeg:DLNA.ORG_PN=MPEG_PS_PAL", "video/mpeg", "MPEG_PS_PAL"},
    };
    for (const auto &c : cases) {
        ItemDescription d;
        d.protocolInfo = c.protocolInfo;
        Parsed p(d);
        const char *suffix = nullptr;
        const uint32_t flags = QRV_MDB_PNtoFix(c.mime, c.profile, &suffix);
        ASSERT_NE(suffix, nullptr) << c.protocolInfo << ": the platform knows no suffix for this case";
        ASSERT_EQ(p.result, 0u) << c.protocolInfo;
        EXPECT_EQ(p.request->ulFlags, flags) << c.protocolInfo;
        EXPECT_STREQ(p.request->pcSuffix, suffix) << c.protocolInfo;
    }
}

TEST(ParseElements, StopsAtTheFirstFailureKeepingWhatWasStoredBefore) {
    ItemDescription d;
    d.date = "2010-13-01";
    Parsed p(d);
    EXPECT_EQ(p.result, ~0u);
    EXPECT_EQ(orNull(p.request->pcParentId), "0.1.264|2");
    EXPECT_EQ(orNull(p.request->pcTitle), "song");
    EXPECT_EQ(p.request->pcDate, nullptr);
    EXPECT_EQ(p.request->pcClass, nullptr);
    EXPECT_EQ(p.request->pcProtocolInfo, nullptr);
}

TEST(ParseElements, SetsTheFlagsEvenWhenNoSuffixIsKnown) {
    ItemDescription d;
    d.protocolInfo = "http-get:*:application/x-unknown:*";
    Parsed p(d);
    const char *suffix = "unchanged";
    const uint32_t flags = QRV_MDB_PNtoFix("application/x-unknown", "", &suffix);
    ASSERT_EQ(suffix, nullptr) << "the platform knows this MIME type; pick another";
    EXPECT_EQ(p.result, ~0u);
    EXPECT_EQ(p.request->ulFlags, flags);
    EXPECT_EQ(orNull(p.request->pcProtocolInfo), "http-get:*:application/x-unknown:*");
}

TEST(ParseElements, RefusesAMissingRecordOrElements) {
    EXPECT_EQ(QRV_MDB_ParseElements(nullptr), ~0u);
    MdbNewObject o{};
    EXPECT_EQ(QRV_MDB_ParseElements(&o), ~0u);
    EXPECT_EQ(o.pcParentId, nullptr);
}

}  // namespace
