// The Elements parser: the marker scanner, each field's checks, rewrites and cuts and the field
// it stores into, the values handed to the profile library, and what stays when the parse stops.
#include "upload/elements_parser.h"

#include "upload_fixture.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace mdbtest;

TEST(ExtractValue, TakesTheTextBetweenTheFirstStartMarkerAndTheNextEndMarker) {
    const struct { const char *what, *text, *start, *end; uint32_t capacity, required; int32_t result;
                   const char *value; } cases[] = {
        {"attribute", "<res size=\"42\">", "size=\"", "\"", 512, 1, 0, "42"},
        {"first occurrence wins", "a size=\"1\" b size=\"2\"", "size=\"", "\"", 512, 1, 0, "1"},
        {"longer name ending in the marker", "filesize=\"7\"", "size=\"", "\"", 512, 1, 0, "7"},
        {"end marker searched behind the start", "\" size=\"9\"", "size=\"", "\"", 512, 1, 0, "9"},
        {"nested start marker kept", "<t><t>x</t></t>", "<t>", "</t>", 512, 1, 0, "<t>x"},
        {"missing required value", "<item/>", "size=\"", "\"", 512, 1, -1, nullptr},
        {"no end marker", "size=\"12", "size=\"", "\"", 512, 0, -1, nullptr},
        {"empty optional value", "size=\"\"", "size=\"", "\"", 512, 0, -1, nullptr},
        {"value of capacity - 1", "v=\"abc\"", "v=\"", "\"", 4, 1, 0, "abc"},
        {"value of capacity", "v=\"abcd\"", "v=\"", "\"", 4, 1, -1, nullptr},
        {"no text", nullptr, "a", "b", 512, 0, -1, nullptr},
    };
    for (const auto &c : cases) {
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

std::string orNull(const char *text) { return text != nullptr ? text : "NULL"; }

TEST(ParseElements, WarnsButGoesOnWhenParentIdDiffersFromContainerId) {
    for (const char *containerId : {"0.1.264|2", "0.1.264|3", "0.1.264|2 "}) {
        NewObjectRequest r(ItemDescription{}.text(), 2, containerId);
        testing::internal::CaptureStdout();
        EXPECT_EQ(r.parse(), 0u) << containerId;
        const bool warned = strcmp(containerId, "0.1.264|2") != 0;
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  warned ? "warning: the parentID is diffrent with ContainerID!\n" : "") << containerId;
        EXPECT_EQ(orNull(r->pcParentId) + "/" + std::to_string(r->ulRestricted), "0.1.264|2/0") << containerId;
    }
}

// One changed part of the default description, the parse's answer and, for a parse that
// succeeds, the value stored in the field named ("NULL" for none).
struct FieldCase {
    const char *what;
    std::optional<std::string> ItemDescription::*part;
    std::optional<std::string> value;
    bool accepted;
    char *MdbNewObject::*field = nullptr;
    const char *stored = nullptr;
};

TEST(ParseElements, ChecksRewritesAndCutsEachValue) {
    using D = ItemDescription;
    using O = MdbNewObject;
    const std::string mp3 = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3";
    const FieldCase cases[] = {
        {"no parentID", &D::parentId, std::nullopt, false},
        {"no restricted", &D::restricted, std::nullopt, false},
        {"restricted 1", &D::restricted, "1", false},
        {"restricted false", &D::restricted, "false", false},
        {"managed 00000004", &D::managed, "00000004", true},
        {"managed 5", &D::managed, "5", true},
        {"managed without digits reads 0", &D::managed, "x", true},
        {"managed 00000010", &D::managed, "00000010", false},
        {"managed empty", &D::managed, "", false},
        {"managed beyond 32 bits", &D::managed, "4294967300", false},
        {"no title", &D::title, std::nullopt, false},
        {"title kept as written", &D::title, "Bolero &amp; more", true, &O::pcTitle, nullptr},
        {"title of 511", &D::title, std::string(511, 't'), true, &O::pcTitle, nullptr},
        {"title of 512", &D::title, std::string(512, 't'), false},
        {"no date", &D::date, std::nullopt, true, &O::pcDate, "NULL"},
        {"date rewritten", &D::date, "2010-05-06", true, &O::pcDate, "2010-5-6"},
        {"date with words behind the day", &D::date, "0099-0-0 and more", true, &O::pcDate, "99-0-0"},
        {"date 2010-12-31", &D::date, "2010-12-31", true, &O::pcDate, "2010-12-31"},
        {"date 2010-13-01", &D::date, "2010-13-01", false},
        {"date 2010-01-32", &D::date, "2010-01-32", false},
        {"date May 2010", &D::date, "May 2010", false},
        {"no class", &D::upnpClass, std::nullopt, false},
        {"unknown class kept", &D::upnpClass, "object.item.fancy", true, &O::pcClass, "object.item.fancy"},
        {"size 0", &D::size, "0", true, &O::pcSize, "0"},
        {"size kept as written", &D::size, "003145728", true, &O::pcSize, nullptr},
        {"size -1", &D::size, "-1", false},
        {"size beyond 64 bits", &D::size, std::string(300, '9'), true},
        {"size below 64 bits", &D::size, "-" + std::string(300, '9'), false},
        {"ifoFileURI kept", &D::ifoFileUri, "a&amp;b.ifo", true, &O::pcIfoFileUri, nullptr},
        {"ifoFileURI empty", &D::ifoFileUri, "", false},
        {"no protocolInfo", &D::protocolInfo, std::nullopt, false},
        {"protocolInfo with two ':'", &D::protocolInfo, "http-get:*:audio/mpeg", false},
        {"protocolInfo without known suffix", &D::protocolInfo, "http-get:*:application/x-unknown:*", false},
        {"DLNA.ORG_FLAGS cut", &D::protocolInfo, mp3 + ";DLNA.ORG_OP=01;DLNA.ORG_FLAGS=0170", true,
         &O::pcProtocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01"},
        {"DLNA.ORG_PS cut", &D::protocolInfo, mp3 + ";DLNA.ORG_PS=1,2;DLNA.ORG_OP=01", true, &O::pcProtocolInfo,
         "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3"},
        {"vendor test parameter cut", &D::protocolInfo, mp3 + ";DLNA.ORG_OP=01" MDB_VENDOR_TEST_PARAM "1", true,
         &O::pcProtocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01"},
        {"earliest cut wins", &D::protocolInfo, mp3 + MDB_VENDOR_TEST_PARAM "1;DLNA.ORG_FLAGS=0;DLNA.ORG_PS=2", true,
         &O::pcProtocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3"},
    };
    for (const FieldCase &c : cases) {
        ItemDescription d;
        d.*c.part = c.value;
        NewObjectRequest r(d.text());
        EXPECT_EQ(r.parse() == 0, c.accepted) << c.what;
        if (c.accepted && c.field != nullptr) {
            const std::string expected = c.stored != nullptr ? c.stored : *c.value;
            EXPECT_EQ(orNull(r.obj()->*c.field), expected) << c.what;
        }
    }
}

// The profile step's MIME type and profile name show in the flags word and suffix it stores.
TEST(ParseElements, HandsMimeTypeAndProfileNameToTheProfileLibrary) {
    const struct { const char *protocolInfo, *mime, *profile; } cases[] = {
        {"http-get:*:audio/mpeg:DLNA.ORG_PN=MP3", "audio/mpeg", "MP3"},
        {"http-get:*:audio/mpeg:*", "audio/mpeg", ""},
        {"http-get:*:image/jpeg:DLNA.ORG_OP=01;DLNA.ORG_PN=JPEG_TN", "image/jpeg", "JPEG_TN"},
        {"http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_MED;DLNA.ORG_OP=01", "image/jpeg", "JPEG_MED"},
        {"http-get:*:image/jpeg;charset=x:DLNA.ORG_PN=JPEG_SM", "image/jpeg", "JPEG_SM"},
        {"http-get:*:image/png;x=1:DLNA.ORG_OP=01", "image/png", ""},
    };
    for (const auto &c : cases) {
        ItemDescription d;
        d.protocolInfo = c.protocolInfo;
        NewObjectRequest r(d.text());
        const char *suffix = nullptr;
        const uint32_t flags = QRV_MDB_PNtoFix(c.mime, c.profile, &suffix);
        ASSERT_NE(suffix, nullptr) << c.protocolInfo << ": the platform knows no suffix for this case";
        ASSERT_EQ(r.parse(), 0u) << c.protocolInfo;
        EXPECT_EQ(r->ulFlags, flags) << c.protocolInfo;
        EXPECT_STREQ(r->pcSuffix, suffix) << c.protocolInfo;
    }
}

TEST(ParseElements, StopsAtTheFirstFailureKeepingWhatWasStoredBefore) {
    ItemDescription d;
    d.date = "2010-13-01";
    NewObjectRequest r(d.text());
    EXPECT_EQ(r.parse(), ~0u);
    EXPECT_EQ(orNull(r->pcTitle) + orNull(r->pcDate) + orNull(r->pcClass), "songNULLNULL");

    // Without a known suffix the flags word is set all the same.
    d = ItemDescription{};
    d.protocolInfo = "http-get:*:application/x-unknown:*";
    NewObjectRequest unknown(d.text());
    const char *suffix = "unchanged";
    const uint32_t flags = QRV_MDB_PNtoFix("application/x-unknown", "", &suffix);
    ASSERT_EQ(suffix, nullptr) << "the platform knows this MIME type; pick another";
    EXPECT_EQ(unknown.parse(), ~0u);
    EXPECT_EQ(unknown->ulFlags, flags);

    EXPECT_EQ(QRV_MDB_ParseElements(nullptr), ~0u);
    MdbNewObject none{};
    EXPECT_EQ(QRV_MDB_ParseElements(&none), ~0u);
}

}  // namespace
