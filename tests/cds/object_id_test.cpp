// Object ids: resolution against the shipped static container tree, the length limits of the id
// grammar, and writing a node's id into buffers of every interesting size. That every id the tree
// writes resolves back is shown by the tree walk.
#include <mdb.h>
#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "cds/object_id.h"

namespace {

TEST(ObjectId, ResolvesIdsOfTheTree) {
    const std::string padded255 = "0.1." + std::string(255 - 7, '0') + "257";  // 255 characters
    const std::string padded256 = "0.1." + std::string(256 - 7, '0') + "257";
    const std::string number31 = "0." + std::string(30, '0') + "1";  // a 31-character number
    const std::string number32 = "0." + std::string(31, '0') + "1";
    // node: the id written back for the node found, "" for none
    const struct { const char *what; std::string id; const char *node, *subId; } cases[] = {
        {"root", "0", "0", nullptr},
        {"root with a sub-id", "0|5", "0", "5"},
        {"category item", "0.1.257|3,17", "0.1.257", "3,17"},
        {"only the first bar splits", "0.1.264|5|6", "0.1.264", "5|6"},
        {"empty sub-id", "0.2|", "0.2", ""},
        {"numbers are taken modulo 65536", "0.65537", "0.1", nullptr},
        {"the last number has no length limit", "0." + std::string(40, '0') + "3", "0.3", nullptr},
        {"letters read as 0 after the digits", "0.1x.256abc", "0.1.256", nullptr},
        {"wrong root number", "1.1", "", nullptr},
        {"empty number reads 0; no child 0", "0..1", "", nullptr},
        {"no such child", "0.1.999", "", nullptr},
        {"too deep", "0.1.256.1", "", nullptr},
        {"empty id reads 0 = root", "", "0", nullptr},
        {"255-character static part passes", padded255 + "|3", "0.1.257", "3"},
        {"256-character static part fails before the sub-id is stored", padded256 + "|3", "", nullptr},
        {"256 characters without a bar are fine", padded256, "0.1.257", nullptr},
        {"31-character number before a dot", number31 + ".257", "0.1.257", nullptr},
        {"32-character number before a dot fails", number32 + ".257", "", nullptr},
        {"32-character last number is accepted", number32, "0.1", nullptr},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        const MdbStaticContainer *node = &g_stRootContainer;
        const char *sub = "untouched";
        const uint32_t status = MdbLocateStaticContainerById(c.id.c_str(), &node, &sub);
        char buf[256] = "";
        EXPECT_EQ(status, *c.node != '\0' ? MDB_OK : MDB_ERR_NOT_FOUND);
        EXPECT_EQ(node != nullptr ? QRV_MDB_StaticContainerGetObjId(node, buf, sizeof buf) : MDB_OK, MDB_OK);
        EXPECT_STREQ(buf, c.node);
        EXPECT_STREQ(sub, c.subId);
    }
    EXPECT_EQ(MdbLocateStaticContainerById(nullptr, nullptr, nullptr), MDB_ERR_NOT_FOUND);
    const char *rest = nullptr;
    uint32_t number = 0;
    EXPECT_EQ(MdbParseIdSegment(nullptr, &rest, &number), MDB_ERR_NOT_FOUND);
}

// A buffer too small gets a cut, terminated prefix and MDB_ERR_MEM, never an overrun.
TEST(ObjectId, WritesIdsIntoBuffersOfEverySize) {
    const MdbStaticContainer *genres = nullptr;
    ASSERT_EQ(MdbLocateStaticContainerById("0.1.257", &genres, nullptr), MDB_OK);
    const struct { const MdbStaticContainer *node; uint32_t size, status; const char *written; } cases[] = {
        {genres, 8, MDB_OK, "0.1.257"}, {genres, 7, MDB_ERR_MEM, "0.1.25"}, {genres, 1, MDB_ERR_MEM, ""},
        {&g_stRootContainer, 16, MDB_OK, "0"}, {nullptr, 16, MDB_OK, "-1"}, {nullptr, 2, MDB_ERR_MEM, "-"},
        {genres, 0, MDB_ERR_PARA, nullptr},  // nullptr: nothing written
    };
    for (const auto &c : cases) {
        char buf[32];
        memset(buf, '#', sizeof buf);
        EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(c.node, buf, c.size), c.status) << c.size;
        EXPECT_EQ(c.written != nullptr ? std::string(buf) : std::string(buf, 1), c.written ? c.written : "#") << c.size;
        EXPECT_EQ(buf[c.size], '#') << "written beyond the size " << c.size;
    }
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(genres, nullptr, 16), MDB_ERR_PARA);
}

}  // namespace
