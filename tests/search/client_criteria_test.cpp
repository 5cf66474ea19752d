// SearchCriteria in the forms that widely used control points send (desktop media players, TVs,
// phone apps, media centres, renderers) run against the test catalogue without SQL error and
// return exactly the rows they ask for.
#include <gtest/gtest.h>
#include <mdb.h>

#include <string>
#include <vector>

#include "search_library.h"

using searchtest::Titles;

namespace {

TEST(ClientCriteria, ReturnTheRowsTheyAskFor) {
    searchtest::SearchLibrary lib;
    const Titles music = {"Bohemian Rhapsody", "Love of My Life", "So What", "Blue in Green", "Come Together",
                          "Something"};
    const Titles video = {"Sea Trip", "Lovely Clip", "Short"}, pictures = {"Beach", "Sea Sunset", "Logo"};
    struct {
        std::string container, criteria;
        Titles expected;
    } cases[] = {
        // Desktop players list a class, excluding references.
        {"0", "upnp:class derivedfrom \"object.item.audioItem\" and @refID exists false", music},
        {"0", "upnp:class derivedfrom \"object.item.videoItem\" and @refID exists false", video},
        {"0", "upnp:class derivedfrom \"object.item.imageItem\" and @refID exists false", pictures},
        {"0", "upnp:class derivedfrom \"object.container.playlistContainer\" and @refID exists false", {}},
        // TVs and phone apps: title, artist, album and genre searches.
        {"0",
         "(upnp:class derivedfrom \"object.item.audioItem\") and (dc:title contains \"love\")",
         {"Love of My Life"}},
        {"0",
         "(upnp:class derivedfrom \"object.item.audioItem\" and (dc:title contains \"blue\" or upnp:artist contains "
         "\"blue\" or upnp:album contains \"blue\"))",
         {"So What", "Blue in Green"}},
        {"0",
         "upnp:class derivedfrom \"object.item.audioItem\" and upnp:artist contains \"BEATLES\"",
         {"Come Together", "Something"}},
        {"0",
         "upnp:class derivedfrom \"object.item.audioItem\" and upnp:genre = \"Jazz\"",
         {"So What", "Blue in Green"}},
        {"0",
         "upnp:class = \"object.item.audioItem.musicTrack\" and upnp:artist = \"Queen\"",
         {"Bohemian Rhapsody", "Love of My Life"}},
        {"0", "upnp:genre contains \"it's\"", {"Come Together", "Something"}},
        {"0", "dc:creator contains \"anna\"", {"Sea Trip", "Sea Sunset"}},
        // Photo apps: date ranges.
        {"0",
         "(upnp:class derivedfrom \"object.item.imageItem\" and dc:date >= \"2012-01-01\" and dc:date <= "
         "\"2012-12-31\")",
         {"Beach", "Sea Sunset"}},
        {"0", "dc:date >= \"1970-01-01\" and dc:date < \"1976-01-01\"", {"Bohemian Rhapsody", "Love of My Life"}},
        // Renderers: what they can play.
        {"0", "res@protocolInfo contains \"http-get:*:audio/mpeg:*\"", music},
        {"0", "res@protocolInfo contains \"http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_LRG\"", {"Beach"}},
        {"0",
         "upnp:class derivedfrom \"object.item.videoItem\" and res@duration < \"0:05:00\"",
         {"Lovely Clip", "Short"}},
        // Media centres: folders, one object, category lists.
        {"0.1.264|5",
         "dc:title contains \"o\"",
         {"Bohemian Rhapsody", "Love of My Life", "So What", "Come Together", "Something"}},
        {"0", "@id = \"0.1.256|" + std::to_string(lib.id("So What")) + "\"", {"So What"}},
        {"0.1.258",
         "upnp:class = \"object.container.person.musicArtist\" and @refID exists false",
         {"Queen", "Miles Davis", "The Beatles"}},
        {"0.1.262",
         "upnp:class = \"object.container.album.musicAlbum\"",
         {"A Night at the Opera", "Kind of Blue", "Abbey Road"}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.container + " / " + c.criteria);
        mdbtest::Action action(true, 100, 0);
        action.setObjectId(c.container);
        ASSERT_EQ(
            std::string(QRV_MDB_StatusName(QRV_MDB_Search(c.container.c_str(), c.criteria.c_str(), action.ctx()))),
            "MDB_OK");
        std::vector<std::string> written = searchtest::WrittenTitles(action);
        EXPECT_EQ(searchtest::AsSet(written), c.expected);
        EXPECT_EQ(written.size(), c.expected.size()) << "an object written twice";
        EXPECT_EQ(action->ulTotalMatches, c.expected.size());
    }
}

// Values are compared as values: a value that names a column is not that column, and the LIKE
// wildcards of a containment value match themselves. Also with SQLite's double-quoted string
// literals switched off, as a build with SQLITE_DQS=0 has them.
TEST(ClientCriteria, ValuesAreComparedAsValuesNotColumns) {
    searchtest::SearchLibrary lib;
    for (const char *title : {"100% Pure", "1000 Miles", "a_b", "axb", "back\\slash", "backXslash", "Same.bin"}) {
        mdbtest::ItemValues v;
        v.parentId = 5;  // the music folder
        v.flags = 11;                                   // an MP3 track
        v.title = title;
        v.fileName = std::string(title) == "Same.bin" ? title : std::string(title) + ".mp3";
        lib.catalogue().addItem(v);
    }
    struct {
        const char *criteria;
        Titles expected;
    } cases[] = {
        {"dc:title = \"title\"", {}},
        {"dc:title = \"fileName\"", {}},
        {"upnp:artist = \"artist\"", {}},
        {"dc:date = \"date\"", {}},
        {"dc:title = \"Same.bin\"", {"Same.bin"}},
        {"dc:title contains \"100%\"", {"100% Pure"}},
        {"dc:title contains \"a_b\"", {"a_b"}},
        {"dc:title contains \"k\\s\"", {"back\\slash"}},
        {"dc:date >= \"1975-11-01\" and dc:date < \"1976\"", {"Love of My Life"}},
    };
    for (bool bDoubleQuotedStrings : {true, false}) {
        int lOld = -1;
        sqlite3_db_config(lib.db(), SQLITE_DBCONFIG_DQS_DML, bDoubleQuotedStrings ? 1 : 0, &lOld);
        for (const auto &c : cases) {
            SCOPED_TRACE(std::string(c.criteria) + (bDoubleQuotedStrings ? "" : " (no double-quoted strings)"));
            mdbtest::Action action(false, 100, 0);
            action.setObjectId("0");
            ASSERT_STREQ(QRV_MDB_StatusName(QRV_MDB_Search("0", c.criteria, action.ctx())), "MDB_OK");
            EXPECT_EQ(searchtest::AsSet(searchtest::WrittenTitles(action)), c.expected);
            EXPECT_EQ(action->ulTotalMatches, c.expected.size());
        }
    }
}

}  // namespace
