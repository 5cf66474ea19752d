// Object ids: resolution against the shipped static container tree, the length limits of the id
// grammar, and writing a node's id into buffers of every interesting size.
#include <mdb.h>
#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>

#include "cds/object_id.h"

namespace {

struct Resolved {
    uint32_t status;
    std::string nodeId;  // id written back for the node found, "" when none
    const char *subId;
};

Resolved Resolve(const char *id) {
    const MdbStaticContainer *node = reinterpret_cast<const MdbStaticContainer *>(0x1);
    const char *sub = reinterpret_cast<const char *>(0x1);
    Resolved r{MdbLocateStaticContainerById(id, &node, &sub), "", sub};
    if (node != nullptr) {
        char buf[256];
        EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(node, buf, sizeof buf), MDB_OK);
        r.nodeId = buf;
    }
    return r;
}

struct ResolveCase {
    const char *what;
    std::string id;
    uint32_t status;
    std::string nodeId;
    const char *subId;  // nullptr: no sub-id
};

TEST(ObjectId, ResolvesIdsOfTheTree) {
    const std::string padded255 = "0.1." + std::string(255 - 7, '0') + "257";  // 255 characters
    const std::string padded256 = "0.1." + std::string(256 - 7, '0') + "257";
    const std::string number31 = "0." + std::string(30, '0') + "1";  // a 31-character number
    const std::string number32 = "0." + std::string(31, '0') + "1";
    const ResolveCase cases[] = {
        {"root", "0", MDB_OK, "0", nullptr},
        {"root with a sub-id", "0|5", MDB_OK, "0", "5"},
        {"category item", "0.1.257|3,17", MDB_OK, "0.1.257", "3,17"},
        {"only the first bar splits", "0.1.264|5|6", MDB_OK, "0.1.264", "5|6"},
        {"empty sub-id", "0.2|", MDB_OK, "0.2", ""},
        {"video folders", "0.2.516", MDB_OK, "0.2.516", nullptr},
        {"pictures", "0.3.768|12", MDB_OK, "0.3.768", "12"},
        {"numbers are taken modulo 65536", "0.65537", MDB_OK, "0.1", nullptr},
        {"the last number has no length limit", "0.0000000000000000000000000000000000000000003", MDB_OK, "0.3",
         nullptr},
        {"letters read as 0 after the digits", "0.1x.256abc", MDB_OK, "0.1.256", nullptr},
        {"wrong root number", "1.1", MDB_ERR_NOT_FOUND, "", nullptr},
        {"empty number reads 0; no child 0", "0..1", MDB_ERR_NOT_FOUND, "", nullptr},
        {"no such child", "0.1.999", MDB_ERR_NOT_FOUND, "", nullptr},
        {"too deep", "0.1.256.1", MDB_ERR_NOT_FOUND, "", nullptr},
        {"empty id reads 0 = root", "", MDB_OK, "0", nullptr},
        {"255-character static part passes", padded255 + "|3", MDB_OK, "0.1.257", "3"},
        {"256-character static part fails before the sub-id is stored", padded256 + "|3", MDB_ERR_NOT_FOUND, "", nullptr},
        {"256 characters without a bar are fine", padded256, MDB_OK, "0.1.257", nullptr},
        {"31-character number before a dot", number31 + ".257", MDB_OK, "0.1.257", nullptr},
        {"32-character number before a dot fails", number32 + ".257", MDB_ERR_NOT_FOUND, "", nullptr},
        {"32-character last number is accepted", number32, MDB_OK, "0.1", nullptr},
    };
    for (const ResolveCase &c : cases) {
        SCOPED_TRACE(c.what);
        Resolved r = Resolve(c.id.c_str());
        EXPECT_STREQ(QRV_MDB_StatusName(r.status), QRV_MDB_StatusName(c.status));
        EXPECT_EQ(r.nodeId, c.nodeId);
        if (c.subId == nullptr) {
            EXPECT_EQ(r.subId, nullptr);
        } else {
            ASSERT_NE(r.subId, nullptr);
            EXPECT_STREQ(r.subId, c.subId);
        }
    }
}

TEST(ObjectId, NullIdClearsBothPlaces) {
    const MdbStaticContainer *node = &g_stRootContainer;
    const char *sub = "x";
    EXPECT_EQ(MdbLocateStaticContainerById(nullptr, &node, &sub), MDB_ERR_NOT_FOUND);
    EXPECT_EQ(node, nullptr);
    EXPECT_EQ(sub, nullptr);
    // Places are optional.
    EXPECT_EQ(MdbLocateStaticContainerById("0.1", nullptr, nullptr), MDB_OK);
}

TEST(ObjectId, SubIdPointsIntoTheCallersText) {
    const char *id = "0.1.264|42";
    const char *sub = nullptr;
    ASSERT_EQ(MdbLocateStaticContainerById(id, nullptr, &sub), MDB_OK);
    EXPECT_EQ(sub, id + 8);
}

TEST(ObjectId, ParseSegmentSplitsTheFirstNumber) {
    const char *rest = nullptr;
    uint32_t number = 0;
    ASSERT_EQ(MdbParseIdSegment("12.34.5", &rest, &number), MDB_OK);
    EXPECT_EQ(number, 12u);
    EXPECT_STREQ(rest, "34.5");
    ASSERT_EQ(MdbParseIdSegment("77", &rest, &number), MDB_OK);
    EXPECT_EQ(number, 77u);
    EXPECT_EQ(rest, nullptr);
    EXPECT_EQ(MdbParseIdSegment(nullptr, &rest, &number), MDB_ERR_NOT_FOUND);
}

TEST(ObjectId, WritesIdsIntoBuffersOfEverySize) {
    const MdbStaticContainer *genres = nullptr;
    ASSERT_EQ(MdbLocateStaticContainerById("0.1.257", &genres, nullptr), MDB_OK);

    char buf[16];
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(genres, buf, 8), MDB_OK);
    EXPECT_STREQ(buf, "0.1.257");
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(genres, buf, 7), MDB_ERR_MEM);
    EXPECT_STREQ(buf, "0.1.25") << "a cut, terminated prefix";
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(genres, buf, 1), MDB_ERR_MEM);
    EXPECT_STREQ(buf, "");

    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(&g_stRootContainer, buf, sizeof buf), MDB_OK);
    EXPECT_STREQ(buf, "0");
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(nullptr, buf, sizeof buf), MDB_OK);
    EXPECT_STREQ(buf, "-1");
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(nullptr, buf, 2), MDB_ERR_MEM);

    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(genres, nullptr, 16), MDB_ERR_PARA);
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(genres, buf, 0), MDB_ERR_PARA);
}

// Every node of the tree writes an id that resolves back to the same node.
void CheckRoundTrip(const MdbStaticContainer *node, int depth) {
    ASSERT_LT(depth, 16) << "tree too deep";
    char buf[256];
    ASSERT_EQ(QRV_MDB_StaticContainerGetObjId(node, buf, sizeof buf), MDB_OK);
    const MdbStaticContainer *found = nullptr;
    ASSERT_EQ(MdbLocateStaticContainerById(buf, &found, nullptr), MDB_OK) << buf;
    EXPECT_EQ(found, node) << buf;
    for (uint16_t i = 0; i < node->usChildNum; ++i) {
        EXPECT_EQ(node->pstChildren[i].pstParent, node) << buf;
        CheckRoundTrip(&node->pstChildren[i], depth + 1);
    }
}

TEST(ObjectId, EveryNodeOfTheTreeRoundTrips) { CheckRoundTrip(&g_stRootContainer, 0); }

}  // namespace
