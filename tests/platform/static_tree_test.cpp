// The static container tree and the class vocabulary it is written with: the ids the library and
// the search translation hard-code, the upnp:class texts behind the class numbers, and the search
// class sets that say what a Search below each container can answer with.
#include <mdb.h>
#include <mdb_platform.h>

#include "adapt/adapt_ids.h"

#include <gtest/gtest.h>

#include <map>
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

// Every node below node by its id, the parent links checked on the way.
void Collect(const MdbStaticContainer *node, std::map<std::string, const MdbStaticContainer *> &out) {
    char id[256];
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(node, id, sizeof id), MDB_OK);
    out[id] = node;
    for (uint16_t i = 0; i < node->usChildNum; ++i) {
        EXPECT_EQ(node->pstChildren[i].pstParent, node);
        Collect(&node->pstChildren[i], out);
    }
}

// Containers of static children are browsed by the library's static handler; the others carry
// their media class for the wrapper that calls a database handler. A Search below answers with
// exactly the media shown at or below it, and with a category's values.
TEST(StaticTree, HoldsExactlyTheContainersTheLibraryAddresses) {
    // objClass: upnp:class of the container; media: item class it shows, 0 for static children
    const struct { const char *id; uint32_t objClass, media; } tree[] = {
        {"0", kClassContainer, 0}, {"0.1", kClassContainer, 0}, {"0.1.256", kClassContainer, kClassMusicTrack},
        {"0.1.257", kClassMusicGenre, kClassMusicTrack}, {"0.1.258", kClassMusicArtist, kClassMusicTrack},
        {"0.1.262", kClassMusicAlbum, kClassMusicTrack}, {"0.1.264", kClassStorageFolder, kClassMusicTrack},
        {"0.2", kClassContainer, 0}, {"0.2.512", kClassContainer, kClassVideoItem},
        {"0.2.513", kClassPerson, kClassVideoItem}, {"0.2.514", kClassAlbum, kClassVideoItem},
        {"0.2.516", kClassStorageFolder, kClassVideoItem}, {"0.3", kClassContainer, 0},
        {"0.3.768", kClassContainer, kClassPhoto}, {"0.3.771", kClassStorageFolder, kClassPhoto},
    };
    std::map<std::string, const MdbStaticContainer *> nodes;
    Collect(&g_stRootContainer, nodes);
    EXPECT_EQ(nodes.size(), sizeof tree / sizeof tree[0]);
    for (const auto &e : tree) {
        SCOPED_TRACE(e.id);
        const MdbStaticContainer *node = nodes[e.id];
        ASSERT_NE(node, nullptr);
        EXPECT_TRUE(node->pcTitle != nullptr && node->pcTitle[0] != '\0' && node->pfnBrowse != nullptr);
        EXPECT_EQ(std::to_string(node->ucClass) + " " + std::to_string(node->usAdaptData) + " " +
                      std::to_string(node->pfnBrowse == QRV_MDB_BrowseStaticContainer) +
                      std::to_string(node->usChildNum > 0),
                  std::to_string(e.objClass) + " " + std::to_string(e.media) + " " + (e.media == 0 ? "11" : "00"));
        const uint32_t set = node->ucSearchClass;
        auto member = [set](uint32_t k) { return set < 128 ? k == set : QRV_MDB_AdaptIsSearchClassMatched(k, set) != 0; };
        for (uint32_t media : {kClassMusicTrack, kClassVideoItem, kClassPhoto}) {
            bool shown = false;
            for (const auto &t : tree) shown = shown || (t.media == media && StartsWith(std::string(t.id) + ".",
                                                                                         std::string(e.id) + "."));
            EXPECT_EQ(member(media), shown) << "class " << media << " in set " << set;
        }
        if (e.media != 0 && e.objClass != kClassContainer) { EXPECT_TRUE(member(e.objClass)) << set; }
    }
}

}  // namespace
