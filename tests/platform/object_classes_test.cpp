// The upnp:class texts and the search class sets against what the library and the search
// translation read from them.
#include <mdb_platform.h>

#include "adapt/adapt_ids.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

std::string ClassText(uint32_t number) { return g_apcObjClassStrings[number - 1]; }

/* The class translation's match: the value and the text agree over the shorter length. */
bool TranslationMatches(const std::string &value, uint32_t number) {
    std::string text = ClassText(number);
    size_t n = std::min(value.size(), text.size());
    return value.compare(0, n, text, 0, n) == 0;
}

TEST(ObjectClasses, NumbersTheLibraryNamesMeanWhatTheySay) {
    ASSERT_GE(g_ulObjClassStringLen, 13u);
    const struct {
        uint32_t number;
        const char *text;
    } fixed[] = {
        {1, "object.container"},
        {2, "object.container.storageFolder"},
        {4, "object.container.genre.musicGenre"},
        {5, "object.container.person.musicArtist"},
        {6, "object.container.album.musicAlbum"},
        {11, "object.item.audioItem.musicTrack"},
        {12, "object.item.videoItem"},
        {13, "object.item.imageItem.photo"},
    };
    for (const auto &f : fixed) {
        EXPECT_EQ(ClassText(f.number), f.text) << f.number;
    }
    for (uint32_t n = 1; n <= g_ulObjClassStringLen; ++n) {
        const char *prefix = n <= 10 ? "object.container" : "object.item.";
        EXPECT_EQ(ClassText(n).rfind(prefix, 0), 0u) << n << " " << ClassText(n);
        for (uint32_t m = 1; m < n; ++m) {
            EXPECT_NE(ClassText(n), ClassText(m)) << "classes " << m << " and " << n;
        }
    }
}

TEST(ObjectClasses, OtherContainerClassesAreNoPrefixOfTheNamedOnes) {
    const uint32_t named[] = {1, 2, 4, 11, 12, 13};
    for (uint32_t n = 3; n <= 10; ++n) {
        if (n == 4) continue;
        EXPECT_EQ(ClassText(n).rfind("object.container.", 0), 0u) << n;
        for (uint32_t k : named) {
            EXPECT_FALSE(ClassText(k).rfind(ClassText(n), 0) == 0 && k != n)
                << ClassText(n) << " is a prefix of " << ClassText(k);
        }
    }
}

TEST(ObjectClasses, ClassTranslationOverTheFirst13Classes) {
    // Which of the classes 1..13 a derivedfrom value matches, as the search translation scans them.
    const struct {
        const char *value;
        const char *matches; // class numbers, comma separated
    } cases[] = {
        {"object.item", "11,12,13"},
        {"object.item.audioItem", "11"},
        {"object.item.videoItem", "12"},
        {"object.item.imageItem", "13"},
        {"object.container.genre.musicGenre", "1,4"},
        {"object.container.person.musicArtist", "1,5,7"},
        {"object.container.album.musicAlbum", "1,6,9"},
        {"object.container.storageFolder", "1,2"},
        {"object.nothing", ""},
    };
    for (const auto &c : cases) {
        std::string got;
        for (uint32_t n = 1; n <= 13; ++n) {
            if (TranslationMatches(c.value, n)) got += (got.empty() ? "" : ",") + std::to_string(n);
        }
        EXPECT_EQ(got, c.matches) << c.value;
    }
}

TEST(SearchClassSets, MembershipByTable) {
    using namespace mdbadapt;
    const struct {
        uint32_t set;
        uint32_t objClass;
        bool member;
    } cases[] = {
        {kSearchAllMedia, 11, true},       {kSearchAllMedia, 12, true},       {kSearchAllMedia, 13, true},
        {kSearchAllMedia, 2, false},       {kSearchAllMedia, 4, false},       {kSearchMusicGenres, 4, true},
        {kSearchMusicGenres, 11, true},    {kSearchMusicGenres, 12, false},   {kSearchMusicArtists, 5, true},
        {kSearchMusicAlbums, 6, true},     {kSearchVideoCreators, 7, true},   {kSearchVideoCreators, 11, false},
        {kSearchVideoAlbums, 9, true},     {kSearchVideoAlbums, 12, true},    {kSearchMusicFolders, 2, true},
        {kSearchMusicFolders, 11, true},   {kSearchMusicFolders, 13, false},  {kSearchPictureFolders, 13, true},
        // single classes are no sets; unknown sets and class numbers match nothing
        {11, 11, false},                   {127, 11, false},                  {kSearchSetEnd, 11, false},
        {255, 11, false},                  {kSearchAllMedia, 0, false},       {kSearchAllMedia, 14, false},
        {kSearchAllMedia, 139, false},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(QRV_MDB_AdaptIsSearchClassMatched(c.objClass, c.set) != 0, c.member)
            << "class " << c.objClass << " in set " << c.set;
    }
}

TEST(SearchClassSets, EverySetHasMembers) {
    for (uint32_t set = mdbadapt::kSearchAllMedia; set < mdbadapt::kSearchSetEnd; ++set) {
        int members = 0;
        for (uint32_t k = 1; k <= g_ulObjClassStringLen; ++k) {
            members += QRV_MDB_AdaptIsSearchClassMatched(k, set) != 0;
        }
        EXPECT_GE(members, 1) << set;
    }
}

} // namespace
