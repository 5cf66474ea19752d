// SearchCriteria in the forms that widely used control points send (desktop media players, TVs,
// phone apps, media centres) run against the test catalogue without SQL error and return exactly
// the rows they ask for.
#include "search_library.h"
#include "search_probe.h"

#include <gtest/gtest.h>
#include <mdb.h>

#include <set>
#include <string>
#include <vector>

using mdbtest::Action;
using searchtest::SearchLibrary;

namespace {

using Titles = std::set<std::string>;

struct ClientCase {
    const char *client;  // the kind of control point that sends this form
    std::string container;
    std::string criteria;
    Titles expected;
};

TEST(ClientCriteria, ReturnTheRowsTheyAskFor) {
    SearchLibrary lib;
    const Titles music = lib.titlesOfClass(11), video = lib.titlesOfClass(12), pictures = lib.titlesOfClass(13);
    ASSERT_EQ(music.size(), 6u);
    const std::vector<ClientCase> cases = {
        {"desktop player, all music", "0", "upnp:class derivedfrom \"object.item.audioItem\" and @refID exists false",
         music},
        {"desktop player, all video", "0", "upnp:class derivedfrom \"object.item.videoItem\" and @refID exists false",
         video},
        {"desktop player, all pictures", "0",
         "upnp:class derivedfrom \"object.item.imageItem\" and @refID exists false", pictures},
        {"desktop player, playlists", "0",
         "upnp:class derivedfrom \"object.container.playlistContainer\" and @refID exists false", {}},
        {"TV, music title search", "0",
         "(upnp:class derivedfrom \"object.item.audioItem\") and (dc:title contains \"love\")", {"Love of My Life"}},
        {"TV, video title search", "0", "upnp:class derivedfrom \"object.item.videoItem\" and dc:title contains \"sea\"",
         {"Sea Trip"}},
        {"phone app, free text over title, artist and album", "0",
         "(upnp:class derivedfrom \"object.item.audioItem\" and (dc:title contains \"blue\" or upnp:artist contains "
         "\"blue\" or upnp:album contains \"blue\"))",
         {"So What", "Blue in Green"}},
        {"phone app, artist search in capitals", "0",
         "upnp:class derivedfrom \"object.item.audioItem\" and upnp:artist contains \"BEATLES\"",
         {"Come Together", "Something"}},
        {"media centre, tracks of a genre", "0",
         "upnp:class derivedfrom \"object.item.audioItem\" and upnp:genre = \"Jazz\"", {"So What", "Blue in Green"}},
        {"media centre, tracks of an artist", "0",
         "upnp:class = \"object.item.audioItem.musicTrack\" and upnp:artist = \"Queen\"",
         {"Bohemian Rhapsody", "Love of My Life"}},
        {"media centre, tracks of an album", "0", "upnp:album = \"Abbey Road\" and @refID exists false",
         {"Come Together", "Something"}},
        {"genre containment with a quote", "0", "upnp:genre contains \"it's\"", {"Come Together", "Something"}},
        {"photo app, date range", "0",
         "(upnp:class derivedfrom \"object.item.imageItem\" and dc:date >= \"2012-01-01\" and dc:date <= "
         "\"2012-12-31\")",
         {"Beach", "Sea Sunset"}},
        {"date range over all items", "0", "dc:date >= \"1970-01-01\" and dc:date < \"1976-01-01\"",
         {"Bohemian Rhapsody", "Love of My Life"}},
        {"renderer, playable MIME type", "0", "res@protocolInfo contains \"http-get:*:audio/mpeg:*\"", music},
        {"renderer, DLNA profile", "0", "res@protocolInfo contains \"http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_LRG\"",
         {"Beach"}},
        {"renderer, video MIME type", "0", "res@protocolInfo contains \"http-get:*:video/mp4:*\"", video},
        {"short clips", "0", "upnp:class derivedfrom \"object.item.videoItem\" and res@duration < \"0:05:00\"",
         {"Lovely Clip", "Short"}},
        {"HD pictures and video", "0", "res@resolution >= \"1920x1080\"", {"Lovely Clip", "Beach"}},
        {"creator search", "0", "dc:creator contains \"anna\"", {"Sea Trip", "Sea Sunset"}},
        {"title in two cases", "0", "dc:title contains \"LOVE\" or dc:title contains \"sea\"",
         {"Love of My Life", "Lovely Clip", "Sea Trip", "Sea Sunset"}},
        {"all items of a class", "0", "upnp:class derivedfrom \"object.item.audioItem\" and dc:title exists true",
         music},
        {"folder search", "0.1.264|5", "dc:title contains \"o\"",
         {"Bohemian Rhapsody", "Love of My Life", "So What", "Come Together", "Something"}},
        {"all music below the music container", "0.1.256", "*", music},
        {"one object by id", "0", "@id = \"0.1.256|" + std::to_string(lib.id("So What")) + "\"", {"So What"}},
        {"genre list", "0.1.257", "upnp:class = \"object.container.genre.musicGenre\"", {"Rock", "Jazz", "It's Pop"}},
        {"artist list", "0.1.258", "upnp:class = \"object.container.person.musicArtist\" and @refID exists false",
         {"Queen", "Miles Davis", "The Beatles"}},
        {"album list", "0.1.262", "upnp:class = \"object.container.album.musicAlbum\"",
         {"A Night at the Opera", "Kind of Blue", "Abbey Road"}},
        {"video album list", "0.2.514", "upnp:class derivedfrom \"object.container.album\"", {"Holidays"}},
    };
    for (const ClientCase &c : cases) {
        SCOPED_TRACE(std::string(c.client) + ": " + c.container + " / " + c.criteria);
        Action action(true, 100, 0);
        action.setObjectId(c.container);
        ASSERT_EQ(std::string(QRV_MDB_StatusName(QRV_MDB_Search(c.container.c_str(), c.criteria.c_str(),
                                                                action.ctx()))),
                  "MDB_OK");
        std::vector<std::string> written = searchtest::WrittenTitles(action);
        EXPECT_EQ(Titles(written.begin(), written.end()), c.expected);
        EXPECT_EQ(written.size(), c.expected.size()) << "an object written twice";
        EXPECT_EQ(action->ulTotalMatches, c.expected.size());
    }
}

}  // namespace
