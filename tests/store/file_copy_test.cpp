// Copying the database file: contents byte for byte, refused arguments, and the messages for
// files that cannot be opened or written.
#include "store_test_util.h"

#include "temp_dir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>

namespace {

using mdbtest::readFile;
using mdbtest::TempDir;

std::string Bytes(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i * 131 + 7) % 256);  // every byte value, NULs included
    }
    return bytes;
}

TEST(FileCopy, CopiesEveryByte) {
    TempDir dir;
    // Sizes around the 4096-byte buffer: empty, one read, a full read, a full read and one byte.
    for (size_t size : {size_t{0}, size_t{1}, size_t{4095}, size_t{4096}, size_t{4097}, size_t{3 * 4096 + 5}}) {
        SCOPED_TRACE(size);
        std::string source = dir.write("source-" + std::to_string(size), Bytes(size));
        // The target exists with longer contents: it is truncated.
        std::string target = dir.write("target-" + std::to_string(size), std::string(20000, 'x'));
        EXPECT_STATUS(QRV_MDB_Copyfile(target.c_str(), source.c_str()), MDB_OK);
        EXPECT_EQ(readFile(target), Bytes(size));
        EXPECT_EQ(readFile(source), Bytes(size));
    }
}

TEST(FileCopy, RefusesMissingOrIdenticalPaths) {
    TempDir dir;
    std::string source = dir.write("catalogue.db", "abc");
    EXPECT_STATUS(QRV_MDB_Copyfile(nullptr, source.c_str()), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_Copyfile(source.c_str(), nullptr), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_Copyfile(source.c_str(), source.c_str()), MDB_ERR_PARA);
    EXPECT_EQ(readFile(source), "abc") << "a copy onto itself must not truncate the file";
    // Two texts for the same file are not recognised: the copy runs (and truncates its source).
    std::string sameFile = dir.path() + "/./catalogue.db";
    EXPECT_STATUS(QRV_MDB_Copyfile(sameFile.c_str(), source.c_str()), MDB_OK);
    EXPECT_EQ(readFile(source), "");
}

TEST(FileCopy, ReportsFilesThatCannotBeOpened) {
    TempDir dir;
    std::string source = dir.write("catalogue.db", "abc");
    struct Case {
        const char *what;
        std::string target;
        std::string source;
        std::string message;
    };
    const Case cases[] = {
        {"missing source", dir.file("copy.db"), dir.file("missing.db"), "Caution: Source file can not open.\n"},
        {"target in a missing directory", dir.file("no-dir/copy.db"), source, "Caution: Target db file can not open.\n"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        testing::internal::CaptureStdout();
        uint32_t status = QRV_MDB_Copyfile(c.target.c_str(), c.source.c_str());
        EXPECT_EQ(testing::internal::GetCapturedStdout(), c.message);
        EXPECT_STATUS(status, MDB_ERR_FAIL);
        EXPECT_FALSE(mdbtest::fileExists(c.target));
    }
}

TEST(FileCopy, ShortWriteIsReportedThroughPerror) {
    struct stat st;
    if (stat("/dev/full", &st) != 0) {
        GTEST_SKIP() << "no /dev/full to make writes fail";
    }
    TempDir dir;
    std::string source = dir.write("catalogue.db", Bytes(4097));
    testing::internal::CaptureStderr();
    uint32_t status = QRV_MDB_Copyfile("/dev/full", source.c_str());
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_STATUS(status, MDB_ERR_FAIL);
    EXPECT_EQ(err.rfind("Caution:  Target db file write error.\n: ", 0), 0u) << err;
}

}  // namespace
