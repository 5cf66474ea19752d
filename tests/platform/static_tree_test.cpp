// The static container tree and the class vocabulary it is written with: the upnp:class texts
// behind the class numbers, and the search class sets that say what a Search below each container
// can answer with.
#include <mdb.h>
#include <mdb_platform.h>

#include "adapt/adapt_ids.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using namespace mdbadapt;

std::string ClassText(uint32_t number) { return g_apcObjClassStrings[number - 1]; }
bool StartsWith(const std::string &text, const std::string &prefix) { return text.rfind(prefix, 0) == 0; }

// Containers are 1-10, items from 11. Search criteria match class texts by prefix, so no container
// class but "object.container" itself may begin a class that searches name.
TEST(ObjectClasses, NumbersMeanWhatTheLibrarySaysAndMatchByPrefixOnlyWhereMeant) {
    ASSERT_GE(g_ulObjClassStringLen, 13u);
    const std::pair<uint32_t, const char *> fixed[] = {
        {1, "object.container"}, {2, "object.container.storageFolder"}, {4, "object.container.genre.musicGenre"},
        {5, "object.container.person.musicArtist"}, {6, "object.container.album.musicAlbum"},
        {11, "object.item.audioItem.musicTrack"}, {12, "object.item.videoItem"}, {13, "object.item.imageItem.photo"},
    };
    for (const auto &[number, text] : fixed) EXPECT_EQ(ClassText(number), text) << number;
    for (uint32_t n = 1; n <= g_ulObjClassStringLen; ++n) {
        EXPECT_TRUE(StartsWith(ClassText(n), n == 1 ? "object.container" : n <= 10 ? "object.container." : "object.item."));
        for (uint32_t named : {1, 2, 4, 11, 12, 13}) {
            EXPECT_FALSE(n != 1 && n <= 10 && n != named && StartsWith(ClassText(named), ClassText(n))) << n << named;
        }
    }
    // class numbers that are no set, sets past the last and unknown classes match nothing
    for (uint32_t set : {11u, 127u, uint32_t{kSearchSetEnd}, 255u}) {
        EXPECT_EQ(QRV_MDB_AdaptIsSearchClassMatched(kClassMusicTrack, set), 0) << set;
    }
    for (uint32_t cls : {0u, 14u, 139u}) EXPECT_EQ(QRV_MDB_AdaptIsSearchClassMatched(cls, kSearchAllMedia), 0) << cls;
}

// Checks node and everything below it; the media classes shown at or below node. Containers of
// static children are browsed by the library's static handler; the others carry the media class
// they show for the wrapper that calls a database handler. A Search below a container answers with
// exactly the media shown at or below it, and with a category's values. (Which ids the tree holds
// is checked by browsing them: the tree walk and the server tests.)
std::set<uint32_t> CheckBelow(const MdbStaticContainer *node) {
    char id[256];
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(node, id, sizeof id), MDB_OK);
    SCOPED_TRACE(id);
    std::set<uint32_t> shown;
    if (node->usAdaptData != 0) shown.insert(node->usAdaptData);
    for (uint16_t i = 0; i < node->usChildNum; ++i) {
        EXPECT_EQ(node->pstChildren[i].pstParent, node);
        const std::set<uint32_t> below = CheckBelow(&node->pstChildren[i]);
        shown.insert(below.begin(), below.end());
    }
    EXPECT_TRUE(node->pcTitle != nullptr && node->pcTitle[0] != '\0');
    EXPECT_EQ(node->pfnBrowse == QRV_MDB_BrowseStaticContainer, node->usChildNum > 0);
    EXPECT_EQ(node->usChildNum > 0, node->usAdaptData == 0);
    const uint32_t set = node->ucSearchClass;
    auto member = [set](uint32_t k) { return set < 128 ? k == set : QRV_MDB_AdaptIsSearchClassMatched(k, set) != 0; };
    for (uint32_t media : {kClassMusicTrack, kClassVideoItem, kClassPhoto}) {
        EXPECT_EQ(member(media), shown.count(media) != 0) << "class " << media << " in set " << set;
    }
    if (node->usAdaptData != 0 && node->ucClass != kClassContainer) EXPECT_TRUE(member(node->ucClass)) << set;
    return shown;
}

TEST(StaticTree, StaticOrDatabaseContainersSearchingWhatTheyShow) {
    EXPECT_EQ(CheckBelow(&g_stRootContainer).size(), 3u);
}

}  // namespace
