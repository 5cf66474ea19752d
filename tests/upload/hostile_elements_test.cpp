// Hostile CreateObject requests: Elements texts that are huge, broken, nested, full of entities,
// SQL or path tricks, run through the parse and CreateObject on a real catalogue. None may crash
// or overrun (the sanitizer build watches), and none may write a row it should not, a row outside
// the upload folder, or any file at all.
#include "fake_clock.h"
#include "upload_catalogue.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

namespace {

using mdbtest::ItemDescription;
using mdbtest::NewObjectRequest;
using mdbtest::UploadCatalogue;
namespace fakeclock = mdbtest::fakeclock;

// Every path below the scratch folder except the catalogue's own files.
std::set<std::string> filesBelow(const std::string &dir) {
    std::set<std::string> out;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("catalogue.db", 0) != 0) {
            out.insert(entry.path().string());
        }
    }
    return out;
}

ItemDescription titled(const std::string &title) {
    ItemDescription d;
    d.title = title;
    return d;
}

template <typename Change> std::string described(Change change) {
    ItemDescription d;
    change(d);
    return d.text();
}

std::string swapped(std::string text, const std::string &from, const std::string &to) {
    const size_t at = text.find(from);
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

struct HostileCase {
    const char *what;
    std::string elements;
    bool created;  // whether a row may come of it
};

TEST(HostileElements, NeverWriteARowOrFileTheyShouldNot) {
    fakeclock::Scope clock;
    UploadCatalogue up;
    const std::string valid = ItemDescription{}.text();
    const HostileCase cases[] = {
        {"empty text", "", false},
        {"no markers", "just some words", false},
        {"title markers reversed", swapped(valid, "<dc:title>song</dc:title>", "</dc:title>song<dc:title>"), false},
        {"unterminated attribute", "<item parentID=\"0.1.264|2 restricted=\"0\">", false},
        {"unterminated title", valid.substr(0, valid.find("</dc:title>")), false},
        {"only a start marker", "parentID=\"", false},
        {"huge title", described([](ItemDescription &d) { d.title = std::string(100000, 'A'); }), false},
        {"huge parentID", described([](ItemDescription &d) { d.parentId = std::string(200000, '9'); }), false},
        {"megabyte of junk before a valid item", std::string(1 << 20, 'j') + valid, true},
        {"megabyte of junk inside the title",
         described([](ItemDescription &d) { d.title = "x" + std::string(1 << 20, '<'); }), false},
        {"nested title markers", described([](ItemDescription &d) { d.title = "<dc:title>inner</dc:title>"; }), true},
        {"title entity for a slash", titled("a&#47;b").text(), true},
        {"title with entities", titled("&lt;&amp;&gt;&quot;").text(), true},
        {"title climbing out", titled("../../../../etc/passwd").text(), false},
        {"title climbing out, backslashes", titled("..\\..\\boot.ini").text(), false},
        {"title absolute path", titled("/etc/passwd").text(), false},
        {"title dot dot", titled("..").text(), false},
        {"title dot", titled(".").text(), false},
        {"title hidden file", titled(".profile").text(), false},
        {"title with line feed", titled("a\nb").text(), false},
        {"title with carriage return", titled("a\rb").text(), false},
        {"title with delete", titled("a\x7f").text(), false},
        {"title with SQL", titled("x'); DROP TABLE ITEM; --").text(), true},
        {"title with printf conversions", titled("%s%s%n%lld%q").text(), true},
        {"title of 511", titled(std::string(511, 'L')).text(), true},
        {"title of 512", titled(std::string(512, 'L')).text(), false},
        {"UTF-8 title", titled("Caf\xc3\xa9 \xe2\x99\xab").text(), true},
        {"date overflowing", described([](ItemDescription &d) { d.date = "2010-99999999999999999999-1"; }), false},
        {"date of dashes", described([](ItemDescription &d) { d.date = "--"; }), false},
        {"date huge", described([](ItemDescription &d) { d.date = std::string(511, '9'); }), false},
        {"size negative", described([](ItemDescription &d) { d.size = "-5"; }), false},
        {"size huge", described([](ItemDescription &d) { d.size = std::string(511, '9'); }), true},
        {"size not a number", described([](ItemDescription &d) { d.size = "lots"; }), true},
        {"managed huge", described([](ItemDescription &d) { d.managed = std::string(511, '4'); }), false},
        {"protocolInfo of colons", described([](ItemDescription &d) { d.protocolInfo = ":::"; }), false},
        {"protocolInfo long tail",
         described([](ItemDescription &d) { d.protocolInfo = "http-get:*:audio/mpeg:" + std::string(480, 'X'); }), true},
        {"protocolInfo long MIME type",
         described([](ItemDescription &d) { d.protocolInfo = "http-get:*:audio/" + std::string(200, 'm') + ":*"; }),
         false},
        {"protocolInfo long profile name",
         described([](ItemDescription &d) {
             d.protocolInfo = "http-get:*:audio/mpeg:DLNA.ORG_PN=" + std::string(300, 'P');
         }),
         true},
        {"protocolInfo with a path in the profile",
         described([](ItemDescription &d) { d.protocolInfo = "http-get:*:audio/mpeg:DLNA.ORG_PN=../../x"; }), true},
        {"restricted as an entity", described([](ItemDescription &d) { d.restricted = "&#48;"; }), false},
    };

    const std::set<std::string> filesBefore = filesBelow(up.cat().dir().path());
    for (const HostileCase &c : cases) {
        const long long rowsBefore = up.rowCount();
        NewObjectRequest request(c.elements);
        testing::internal::CaptureStdout();
        const bool parsed = request.parse() == 0;
        const bool created = parsed && request.create() == 0;
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(created, c.created) << c.what;
        EXPECT_EQ(filesBelow(up.cat().dir().path()), filesBefore) << c.what << ": a file was written";
        if (!created) {
            EXPECT_EQ(up.rowCount(), rowsBefore) << c.what;
            EXPECT_EQ(g_pstUploadList, nullptr) << c.what;
            continue;
        }
        const long long id = request.createdId();
        EXPECT_EQ(up.rowCount(), rowsBefore + 1) << c.what;
        EXPECT_EQ(up.column(id, "parentID"), std::to_string(up.uploadId())) << c.what;
        const std::string name = up.column(id, "fileName");
        EXPECT_EQ(name.find('/'), std::string::npos) << c.what;
        EXPECT_NE(name.front(), '.') << c.what;
        EXPECT_LE(name.size(), 127u) << c.what;
        char *path = nullptr;
        ASSERT_EQ(QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr), 0) << c.what;
        EXPECT_EQ(std::string(path), up.uploadDir() + "/" + name) << c.what;
        free(path);
        EXPECT_EQ(QRV_MDB_DestroyObject(id), 0u) << c.what;
        EXPECT_EQ(g_pstUploadList, nullptr) << c.what;
    }
    EXPECT_EQ(up.cat().scalar("select count(*) from sqlite_master where name='ITEM'"), "1");
}

}  // namespace
