// The scanner fixture.
#include "scan_fixture.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace mdbtest {

void ScanFixture::SetUp() {
    std::string dir = catalogue.dir().mkdir("media");
    char real[PATH_MAX];
    ASSERT_NE(realpath(dir.c_str(), real), nullptr);
    media = real;
    CopySampleTree(media);
}

uint32_t ScanFixture::Scan(const std::vector<std::string> &dirs, uint32_t batchSize) {
    FILE *sink = tmpfile();
    EXPECT_NE(sink, nullptr);
    mdbscan::ScanOptions options;
    options.batchSize = batchSize;
    options.messages = sink;
    mdbscan::MediaScanner scanner(catalogue.db(), options);
    uint32_t status = scanner.Scan(dirs.empty() ? std::vector<std::string>{media} : dirs);
    counts = scanner.counts();
    skipped = scanner.skippedFiles();
    messages.clear();
    if (sink != nullptr) {
        rewind(sink);
        char buffer[4096];
        size_t n;
        while ((n = fread(buffer, 1, sizeof buffer, sink)) > 0) {
            messages.append(buffer, n);
        }
        fclose(sink);
    }
    return status;
}

long long ScanFixture::IdOf(const std::string &rel) {
    long long id = -1;
    if (QRV_MDB_DbGetItemIdByName(catalogue.db(), 0, media.c_str(), &id) != MDB_OK || id <= 0) {
        return -1;
    }
    std::string::size_type start = 0;
    while (!rel.empty() && start <= rel.size()) {
        std::string::size_type slash = rel.find('/', start);
        std::string name = rel.substr(start, slash == std::string::npos ? std::string::npos : slash - start);
        long long child = -1;
        if (QRV_MDB_DbGetItemIdByName(catalogue.db(), id, name.c_str(), &child) != MDB_OK || child <= 0) {
            return -1;
        }
        id = child;
        if (slash == std::string::npos) {
            break;
        }
        start = slash + 1;
    }
    return id;
}

MdbItemDetail ScanFixture::Row(const std::string &rel) {
    MdbItemDetail detail;
    memset(&detail, 0, sizeof detail);
    long long id = IdOf(rel);
    EXPECT_GT(id, 0) << "no row for " << rel;
    if (id > 0) {
        EXPECT_EQ(QRV_MDB_GetItemDetailInfo(catalogue.db(), id, &detail), MDB_OK) << rel;
    }
    return detail;
}

}  // namespace mdbtest
