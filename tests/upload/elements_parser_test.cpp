// The Elements parser: each field's checks, rewrites and cuts and the field it stores into, a
// parentID that differs from the ContainerID, and what stays when the parse stops. The flags word
// and suffix of the profile an upload names are shown by the CreateObject tests.
#include "upload/elements_parser.h"

#include "upload_fixture.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace mdbtest;

std::string orNull(const char *text) { return text != nullptr ? text : "NULL"; }

// One changed part of the default description, the parse's answer and, for a parse that
// succeeds, the value stored in the field named ("NULL" for none; nullptr: the value itself).
TEST(ParseElements, ChecksRewritesAndCutsEachValue) {
    using D = ItemDescription;
    using O = MdbNewObject;
    const std::string mp3 = "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3";
    const struct { const char *what; std::optional<std::string> D::*part; std::optional<std::string> value;
                   bool accepted; char *O::*field = nullptr; const char *stored = nullptr; } cases[] = {
        {"no parentID", &D::parentId, std::nullopt, false},
        {"no restricted", &D::restricted, std::nullopt, false},
        {"restricted 1", &D::restricted, "1", false},
        {"managed 00000004", &D::managed, "00000004", true},
        {"managed 5", &D::managed, "5", true},
        {"managed without digits reads 0", &D::managed, "x", true},
        {"managed 00000010", &D::managed, "00000010", false},
        {"managed empty", &D::managed, "", false},
        {"managed beyond 32 bits", &D::managed, "4294967300", false},
        {"no title", &D::title, std::nullopt, false},
        {"title kept as written", &D::title, "Bolero &amp; more", true, &O::pcTitle},
        {"title of 511", &D::title, std::string(511, 't'), true, &O::pcTitle},
        {"title of 512", &D::title, std::string(512, 't'), false},
        {"no date", &D::date, std::nullopt, true, &O::pcDate, "NULL"},
        {"date rewritten", &D::date, "2010-05-06", true, &O::pcDate, "2010-5-6"},
        {"date with words behind the day", &D::date, "0099-0-0 and more", true, &O::pcDate, "99-0-0"},
        {"date 2010-12-31", &D::date, "2010-12-31", true, &O::pcDate},
        {"date 2010-13-01", &D::date, "2010-13-01", false},
        {"date 2010-01-32", &D::date, "2010-01-32", false},
        {"date May 2010", &D::date, "May 2010", false},
        {"no class", &D::upnpClass, std::nullopt, false},
        {"unknown class kept", &D::upnpClass, "object.item.fancy", true, &O::pcClass},
        {"size 0", &D::size, "0", true, &O::pcSize},
        {"size kept as written", &D::size, "003145728", true, &O::pcSize},
        {"size -1", &D::size, "-1", false},
        {"size beyond 64 bits", &D::size, std::string(300, '9'), true},
        {"size below 64 bits", &D::size, "-" + std::string(300, '9'), false},
        {"ifoFileURI kept", &D::ifoFileUri, "a&amp;b.ifo", true, &O::pcIfoFileUri},
        {"ifoFileURI empty", &D::ifoFileUri, "", false},
        {"no protocolInfo", &D::protocolInfo, std::nullopt, false},
        {"protocolInfo with two ':'", &D::protocolInfo, "http-get:*:audio/mpeg", false},
        {"protocolInfo without known suffix", &D::protocolInfo, "http-get:*:application/x-unknown:*", false},
        {"DLNA.ORG_FLAGS cut", &D::protocolInfo, mp3 + ";DLNA.ORG_OP=01;DLNA.ORG_FLAGS=0170", true,
         &O::pcProtocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01"},
        {"earliest cut wins", &D::protocolInfo, mp3 + MDB_VENDOR_TEST_PARAM "1;DLNA.ORG_FLAGS=0;DLNA.ORG_PS=2", true,
         &O::pcProtocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3"},
        {"DLNA.ORG_PS cut", &D::protocolInfo, mp3 + ";DLNA.ORG_PS=1,2;DLNA.ORG_OP=01", true, &O::pcProtocolInfo,
         "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3"},
    };
    for (const auto &c : cases) {
        NewObjectRequest r(Described(c.part, c.value));
        EXPECT_EQ(r.parse() == 0, c.accepted) << c.what;
        if (c.accepted && c.field != nullptr) {
            EXPECT_EQ(orNull(r.obj()->*c.field), c.stored != nullptr ? c.stored : *c.value) << c.what;
        }
    }
}

// A parentID that differs from the ContainerID is warned about, not refused.
TEST(ParseElements, WarnsButGoesOnWhenParentIdDiffersFromContainerId) {
    for (const char *containerId : {"0.1.264|2", "0.1.264|2 "}) {
        NewObjectRequest r(ItemDescription{}.text(), 2, containerId);
        testing::internal::CaptureStdout();
        EXPECT_EQ(r.parse(), 0u) << containerId;
        EXPECT_EQ(testing::internal::GetCapturedStdout(), std::strlen(containerId) == 9 ? "" :
                  "warning: the parentID is diffrent with ContainerID!\n") << containerId;
        EXPECT_EQ(orNull(r->pcParentId) + "/" + std::to_string(r->ulRestricted), "0.1.264|2/0") << containerId;
    }
}

// The parse stops at the first failing field, keeping what it stored before; without a known
// suffix the flags word is set all the same.
TEST(ParseElements, StopsAtTheFirstFailureKeepingWhatWasStoredBefore) {
    NewObjectRequest r(Described(&ItemDescription::date, "2010-13-01"));
    EXPECT_EQ(r.parse(), ~0u);
    EXPECT_EQ(orNull(r->pcTitle) + orNull(r->pcDate) + orNull(r->pcClass), "songNULLNULL");
    NewObjectRequest unknown(Described(&ItemDescription::protocolInfo, "http-get:*:application/x-unknown:*"));
    const char *suffix = "unchanged";
    const uint32_t flags = QRV_MDB_PNtoFix("application/x-unknown", "", &suffix);
    ASSERT_EQ(suffix, nullptr) << "the platform knows this MIME type; pick another";
    EXPECT_EQ(unknown.parse(), ~0u);
    EXPECT_EQ(unknown->ulFlags, flags);
    MdbNewObject none{};
    EXPECT_EQ(QRV_MDB_ParseElements(nullptr) + QRV_MDB_ParseElements(&none), ~0u + ~0u);
    char buf[4] = "#";
    EXPECT_EQ(MdbExtractValue(nullptr, "a", "b", buf, sizeof buf, 0), -1);
    EXPECT_EQ(MdbExtractValue("v=\"abcd\"", "v=\"", "\"", buf, sizeof buf, 1), -1) << "a value of the capacity";
    EXPECT_EQ(buf[0], '#');
}

}  // namespace
