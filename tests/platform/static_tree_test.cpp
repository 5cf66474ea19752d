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
bool AtOrBelow(const std::string &id, const std::string &top) { return StartsWith(id + ".", top + "."); }

TEST(ObjectClasses, NumbersMeanWhatTheLibrarySaysAndMatchByPrefixOnlyWhereMeant) {
    ASSERT_GE(g_ulObjClassStringLen, 13u);
    const struct { uint32_t number; const char *text; } fixed[] = {
        {1, "object.container"}, {2, "object.container.storageFolder"}, {4, "object.container.genre.musicGenre"},
        {5, "object.container.person.musicArtist"}, {6, "object.container.album.musicAlbum"},
        {11, "object.item.audioItem.musicTrack"}, {12, "object.item.videoItem"}, {13, "object.item.imageItem.photo"},
    };
    for (const auto &f : fixed) EXPECT_EQ(ClassText(f.number), f.text) << f.number;
    // Containers are 1-10, items from 11. Search criteria match class texts by prefix, so no container
    // class but "object.container" itself may begin a class that searches name.
    for (uint32_t n = 1; n <= g_ulObjClassStringLen; ++n) {
        const char *kind = n == 1 ? "object.container" : n <= 10 ? "object.container." : "object.item.";
        EXPECT_TRUE(StartsWith(ClassText(n), kind)) << n << " " << ClassText(n);
        for (uint32_t named : {1, 2, 4, 11, 12, 13}) {
            EXPECT_FALSE(n != 1 && n <= 10 && n != named && StartsWith(ClassText(named), ClassText(n)))
                << ClassText(n) << " is a prefix of " << ClassText(named);
        }
    }
    // class numbers that are no set, sets past the last and unknown classes match nothing
    for (uint32_t set : {11u, 127u, uint32_t{kSearchSetEnd}, 255u}) {
        EXPECT_EQ(QRV_MDB_AdaptIsSearchClassMatched(kClassMusicTrack, set), 0) << set;
    }
    for (uint32_t cls : {0u, 14u, 139u}) EXPECT_EQ(QRV_MDB_AdaptIsSearchClassMatched(cls, kSearchAllMedia), 0) << cls;
}

/* Every node of the subtree by id, checking the parent links on the way. */
void Collect(const MdbStaticContainer *node, std::map<std::string, const MdbStaticContainer *> &out) {
    char id[256];
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(node, id, sizeof id), MDB_OK);
    out[id] = node;
    for (uint16_t i = 0; i < node->usChildNum; ++i) {
        EXPECT_EQ(node->pstChildren[i].pstParent, node);
        Collect(&node->pstChildren[i], out);
    }
}

TEST(StaticTree, HoldsExactlyTheContainersTheLibraryAddresses) {
    // objClass: upnp:class written for the container and its values; media: item class it shows,
    // 0 for containers of static children
    const struct { const char *id; uint32_t objClass, media; } tree[] = {
        {"0", kClassContainer, 0},
        {"0.1", kClassContainer, 0},                          {"0.1.256", kClassContainer, kClassMusicTrack},
        {"0.1.257", kClassMusicGenre, kClassMusicTrack},      {"0.1.258", kClassMusicArtist, kClassMusicTrack},
        {"0.1.262", kClassMusicAlbum, kClassMusicTrack},      {"0.1.264", kClassStorageFolder, kClassMusicTrack},
        {"0.2", kClassContainer, 0},                          {"0.2.512", kClassContainer, kClassVideoItem},
        {"0.2.513", kClassPerson, kClassVideoItem},           {"0.2.514", kClassAlbum, kClassVideoItem},
        {"0.2.516", kClassStorageFolder, kClassVideoItem},
        {"0.3", kClassContainer, 0},                          {"0.3.768", kClassContainer, kClassPhoto},
        {"0.3.771", kClassStorageFolder, kClassPhoto},
    };
    std::map<std::string, const MdbStaticContainer *> nodes;
    Collect(&g_stRootContainer, nodes);
    EXPECT_EQ(g_stRootContainer.pstParent, nullptr);
    EXPECT_EQ(nodes.size(), sizeof tree / sizeof tree[0]);
    for (const auto &e : tree) {
        SCOPED_TRACE(e.id);
        const MdbStaticContainer *node = nullptr;
        ASSERT_EQ(MdbLocateStaticContainerById(e.id, &node, nullptr), MDB_OK);
        EXPECT_EQ(node, nodes[e.id]);
        EXPECT_EQ(node->ucClass, e.objClass);
        EXPECT_TRUE(node->pcTitle != nullptr && node->pcTitle[0] != '\0');
        // Containers of static children are browsed by the library's static handler; the others
        // carry their media class for the wrapper that calls a database handler.
        EXPECT_EQ(node->pfnBrowse == QRV_MDB_BrowseStaticContainer, e.media == 0);
        EXPECT_EQ(node->usChildNum > 0, e.media == 0);
        EXPECT_EQ(node->usAdaptData, e.media);
        EXPECT_NE(node->pfnBrowse, nullptr);
        // A Search below answers with exactly the media shown at or below it, and with a category's values.
        uint32_t set = node->ucSearchClass;
        auto member = [set](uint32_t k) {
            return set < 128 ? k == set : QRV_MDB_AdaptIsSearchClassMatched(k, set) != 0;
        };
        for (uint32_t media : {kClassMusicTrack, kClassVideoItem, kClassPhoto}) {
            bool shown = false;
            for (const auto &t : tree) shown = shown || (t.media == media && AtOrBelow(t.id, e.id));
            EXPECT_EQ(member(media), shown) << "class " << media << " in set " << set;
        }
        if (e.media != 0 && e.objClass != kClassContainer) { EXPECT_TRUE(member(e.objClass)) << set; }
    }
}

} // namespace
