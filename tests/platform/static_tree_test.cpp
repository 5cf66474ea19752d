// The static container tree: the ids the library and the search translation hard-code, the
// classes the category containers must carry, and which handler serves each container.
#include <mdb.h>
#include <mdb_platform.h>

#include "adapt/adapt_ids.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

using namespace mdbadapt;

std::string IdOf(const MdbStaticContainer *node) {
    char buf[256];
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(node, buf, sizeof buf), MDB_OK);
    return buf;
}

void Collect(const MdbStaticContainer *node, std::map<std::string, const MdbStaticContainer *> &out) {
    out[IdOf(node)] = node;
    for (uint16_t i = 0; i < node->usChildNum; ++i) {
        const MdbStaticContainer *child = &node->pstChildren[i];
        EXPECT_EQ(child->pstParent, node) << IdOf(child);
        Collect(child, out);
    }
}

struct Expected {
    const char *id;
    uint32_t objClass;   // upnp:class number the library writes for the container and its values
    uint32_t mediaClass; // item class the container shows; 0 for purely static containers
};

const Expected kTree[] = {
    {"0", kClassContainer, 0},
    {"0.1", kClassContainer, 0},
    {"0.1.256", kClassContainer, kClassMusicTrack},
    {"0.1.257", kClassMusicGenre, kClassMusicTrack},
    {"0.1.258", kClassMusicArtist, kClassMusicTrack},
    {"0.1.262", kClassMusicAlbum, kClassMusicTrack},
    {"0.1.264", kClassStorageFolder, kClassMusicTrack},
    {"0.2", kClassContainer, 0},
    {"0.2.512", kClassContainer, kClassVideoItem},
    {"0.2.513", kClassPerson, kClassVideoItem},
    {"0.2.514", kClassAlbum, kClassVideoItem},
    {"0.2.516", kClassStorageFolder, kClassVideoItem},
    {"0.3", kClassContainer, 0},
    {"0.3.768", kClassContainer, kClassPhoto},
    {"0.3.771", kClassStorageFolder, kClassPhoto},
};

TEST(StaticTree, HoldsExactlyTheContainersTheLibraryAddresses) {
    std::map<std::string, const MdbStaticContainer *> nodes;
    Collect(&g_stRootContainer, nodes);
    EXPECT_EQ(g_stRootContainer.pstParent, nullptr);
    EXPECT_EQ(nodes.size(), sizeof kTree / sizeof kTree[0]);
    for (const Expected &e : kTree) {
        SCOPED_TRACE(e.id);
        ASSERT_EQ(nodes.count(e.id), 1u);
        const MdbStaticContainer *node = nodes[e.id];
        EXPECT_EQ(node->ucClass, e.objClass);
        EXPECT_NE(node->pcTitle, nullptr);
        EXPECT_GT(std::string(node->pcTitle).size(), 0u);
        ASSERT_NE(node->pfnBrowse, nullptr);
        // Containers with static children only are browsed by the library's static handler; the
        // others carry their media class for the wrapper that calls a database handler.
        bool isStatic = e.mediaClass == 0;
        EXPECT_EQ(node->pfnBrowse == QRV_MDB_BrowseStaticContainer, isStatic);
        EXPECT_EQ(node->usChildNum > 0, isStatic);
        EXPECT_EQ(node->usAdaptData, e.mediaClass);
        // The id resolves back to the same node.
        const MdbStaticContainer *found = nullptr;
        EXPECT_EQ(MdbLocateStaticContainerById(e.id, &found, nullptr), MDB_OK);
        EXPECT_EQ(found, node);
    }
}

TEST(StaticTree, SearchClassesNameWhatASearchBelowCanAnswer) {
    std::map<std::string, const MdbStaticContainer *> nodes;
    Collect(&g_stRootContainer, nodes);
    for (const auto &entry : nodes) {
        const MdbStaticContainer *node = entry.second;
        SCOPED_TRACE(entry.first);
        uint32_t set = node->ucSearchClass;
        ASSERT_NE(set, 0u);
        ASSERT_TRUE(set <= g_ulObjClassStringLen || (set >= kSearchAllMedia && set < kSearchSetEnd));
        auto member = [set](uint32_t k) {
            return set < 128 ? k == set : QRV_MDB_AdaptIsSearchClassMatched(k, set) != 0;
        };
        // a media container answers with its items; a category or folder view also with its values
        if (node->usAdaptData != 0) {
            EXPECT_TRUE(member(node->usAdaptData));
            if (node->ucClass != kClassContainer) {
                EXPECT_TRUE(member(node->ucClass));
            }
        }
    }
    EXPECT_TRUE(QRV_MDB_AdaptIsSearchClassMatched(kClassMusicTrack, g_stRootContainer.ucSearchClass));
    EXPECT_TRUE(QRV_MDB_AdaptIsSearchClassMatched(kClassVideoItem, g_stRootContainer.ucSearchClass));
    EXPECT_TRUE(QRV_MDB_AdaptIsSearchClassMatched(kClassPhoto, g_stRootContainer.ucSearchClass));
}

} // namespace
