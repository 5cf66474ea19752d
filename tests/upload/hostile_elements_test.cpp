// Hostile CreateObject requests: Elements texts that are huge, broken, nested, full of entities,
// SQL, conversions or path tricks, run through the parse and CreateObject on a real catalogue.
// None may crash or overrun (the sanitizer build watches), and none may write a row it should
// not, a row outside the upload folder, or any file at all.
#include "upload_catalogue.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

namespace {

using mdbtest::ItemDescription;
using mdbtest::NewObjectRequest;

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

std::string with(std::optional<std::string> ItemDescription::*part, const std::string &value) {
    ItemDescription d;
    d.*part = value;
    return d.text();
}

TEST(HostileElements, NeverWriteARowOrFileTheyShouldNot) {
    using D = ItemDescription;
    mdbtest::UploadCatalogue up;
    const std::string valid = ItemDescription{}.text();
    std::string reversed = valid;
    reversed.replace(reversed.find("<dc:title>song</dc:title>"), 25, "</dc:title>song<dc:title>");
    const struct {
        const char *what;
        std::string elements;
        bool created;
    } cases[] = {
        {"empty text", "", false},
        {"no markers", "just some words", false},
        {"only a start marker", "parentID=\"", false},
        {"title markers reversed", reversed, false},
        {"unterminated title", valid.substr(0, valid.find("</dc:title>")), false},
        {"huge title", with(&D::title, std::string(100000, 'A')), false},
        {"huge parentID", with(&D::parentId, std::string(200000, '9')), false},
        {"megabyte of junk before a valid item", std::string(1 << 20, 'j') + valid, true},
        {"nested title markers", with(&D::title, "<dc:title>inner</dc:title>"), true},
        {"title entity for a slash", with(&D::title, "a&#47;b"), true},
        {"title climbing out", with(&D::title, "../../../../etc/passwd"), false},
        {"title climbing out, backslashes", with(&D::title, "..\\..\\boot.ini"), false},
        {"title with a backslash", with(&D::title, "sub\\..\\..\\boot.ini"), false},
        {"title absolute path", with(&D::title, "/etc/passwd"), false},
        {"title dot dot", with(&D::title, ".."), false},
        {"title dot", with(&D::title, "."), false},
        {"title hidden file", with(&D::title, ".profile"), false},
        {"title with line feed", with(&D::title, "a\nb"), false},
        {"title with delete", with(&D::title, "a\x7f"), false},
        {"title with SQL", with(&D::title, "x'); DROP TABLE ITEM; --"), true},
        {"title with printf conversions", with(&D::title, "%s%s%n%lld%q"), true},
        {"title of 511, file name cut", with(&D::title, std::string(511, 'L')), true},
        {"UTF-8 title", with(&D::title, "Caf\xc3\xa9 \xe2\x99\xab"), true},
        {"date overflowing", with(&D::date, "2010-99999999999999999999-1"), false},
        {"date huge", with(&D::date, std::string(511, '9')), false},
        {"size huge", with(&D::size, std::string(511, '9')), true},
        {"size not a number", with(&D::size, "lots"), true},
        {"managed huge", with(&D::managed, std::string(511, '4')), false},
        {"protocolInfo of colons", with(&D::protocolInfo, ":::"), false},
        {"protocolInfo long tail", with(&D::protocolInfo, "http-get:*:audio/mpeg:" + std::string(480, 'X')), true},
        {"protocolInfo long MIME type", with(&D::protocolInfo, "http-get:*:audio/" + std::string(200, 'm') + ":*"),
         false},
        {"protocolInfo long profile name",
         with(&D::protocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=" + std::string(300, 'P')), true},
        {"protocolInfo with a path as profile", with(&D::protocolInfo, "http-get:*:audio/mpeg:DLNA.ORG_PN=../../x"),
         true},
    };

    const std::set<std::string> filesBefore = filesBelow(up.cat().dir().path());
    for (const auto &c : cases) {
        const long long rowsBefore = up.rowCount();
        NewObjectRequest request(c.elements);
        testing::internal::CaptureStdout();
        const bool created = request.parse() == 0 && request.create() == 0;
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
        EXPECT_LE(name.size(), 127u) << c.what;
        char *path = nullptr;
        ASSERT_EQ(QRV_MDB_GetFileInfoById(id, &path, nullptr, nullptr, nullptr, nullptr), 0) << c.what;
        EXPECT_EQ(std::string(path), up.uploadDir() + "/" + name) << c.what;
        free(path);
        EXPECT_EQ(QRV_MDB_DestroyObject(id), 0u) << c.what;
    }
    EXPECT_EQ(up.cat().scalar("select count(*) from sqlite_master where name='ITEM'"), "1");
}

}  // namespace
