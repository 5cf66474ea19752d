// Copying the database file: contents byte for byte, refused arguments, and the messages for
// files that cannot be opened or written.
#include "store_test_util.h"

#include "temp_dir.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <string>

namespace {

using mdbtest::readFile;

std::string Bytes(size_t size) {
    std::string bytes(size, '\0');
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i * 131 + 7) % 256);  // every byte value, NULs included
    }
    return bytes;
}

TEST(FileCopy, CopiesEveryByteOntoATruncatedTarget) {
    mdbtest::TempDir dir;
    for (size_t size : {size_t{0}, size_t{4096}, size_t{4097}, size_t{3 * 4096 + 5}}) {
        SCOPED_TRACE(size);
        std::string source = dir.write("source", Bytes(size));
        std::string target = dir.write("target", std::string(20000, 'x'));
        EXPECT_STATUS(QRV_MDB_Copyfile(target.c_str(), source.c_str()), MDB_OK);
        EXPECT_EQ(readFile(target), Bytes(size));
    }
}

TEST(FileCopy, RefusalsAndMessages) {
    mdbtest::TempDir dir;
    std::string source = dir.write("catalogue.db", "abc");
    EXPECT_STATUS(QRV_MDB_Copyfile(nullptr, source.c_str()), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_Copyfile(source.c_str(), nullptr), MDB_ERR_PARA);
    EXPECT_STATUS(QRV_MDB_Copyfile(source.c_str(), source.c_str()), MDB_ERR_PARA);
    EXPECT_EQ(readFile(source), "abc") << "a copy onto itself must not truncate the file";

    const std::pair<std::string, std::string> unopenable[] = {  // target, source
        {dir.file("copy.db"), dir.file("missing.db")},
        {dir.file("no-dir/copy.db"), source}};
    const char *const messages[] = {"Caution: Source file can not open.\n", "Caution: Target db file can not open.\n"};
    for (int i = 0; i < 2; ++i) {
        SCOPED_TRACE(messages[i]);
        testing::internal::CaptureStdout();
        uint32_t status = QRV_MDB_Copyfile(unopenable[i].first.c_str(), unopenable[i].second.c_str());
        EXPECT_EQ(testing::internal::GetCapturedStdout(), messages[i]);
        EXPECT_STATUS(status, MDB_ERR_FAIL);
        EXPECT_FALSE(mdbtest::fileExists(unopenable[i].first));
    }

    struct stat st;
    if (stat("/dev/full", &st) != 0) {
        GTEST_SKIP() << "no /dev/full to make writes fail";
    }
    std::string large = dir.write("large.db", Bytes(4097));
    testing::internal::CaptureStderr();
    uint32_t status = QRV_MDB_Copyfile("/dev/full", large.c_str());
    std::string err = testing::internal::GetCapturedStderr();
    EXPECT_STATUS(status, MDB_ERR_FAIL);
    EXPECT_EQ(err.rfind("Caution:  Target db file write error.\n: ", 0), 0u) << err;
}

}  // namespace
