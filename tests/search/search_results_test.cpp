// Search on the test catalogue as control points use it: SearchCriteria in the forms that widely
// used control points send (desktop media players, TVs, phone apps, media centres, renderers) and
// at the edges of the translation (classes, existence, object ids, durations, resolutions,
// protocolInfo, escaping) return exactly the rows they ask for or are refused; values compare as
// values; category results, ids, paging and counters; the deepest nesting.
#include <gtest/gtest.h>
#include <mdb.h>
#include <mdb_platform.h>

#include "search_probes.h"

namespace {

using mdbtest::Row;
using searchtest::AsSet;
using searchtest::SearchOn;
using searchtest::Titles;

TEST(ClientCriteria, ReturnTheRowsTheyAskFor) {
    mdbtest::Library lib;
    auto of = [&](std::function<bool(const Row &)> keep) { return lib.titles(keep); };
    auto cls = [&](uint32_t c) { return of([c](const Row &r) { return r.cls() == c; }); };
    const Titles music = cls(MDB_CLASS_MUSIC), video = cls(MDB_CLASS_VIDEO), pictures = cls(MDB_CLASS_PICTURE),
                 folders = cls(MDB_CLASS_FOLDER), all = of([](const Row &) { return true; });
    const Titles items = of([](const Row &r) { return r.cls() != MDB_CLASS_FOLDER; });
    const Titles mp3 = of([](const Row &r) { return r.flags == 11; });
    const std::string audio = "upnp:class derivedfrom \"object.item.audioItem\"", pi = "res@protocolInfo contains ";
    const std::string folder = "0.1.264|" + lib.id("Music"), jazz = lib.value("GENRES", "Jazz");
    const Titles none, refused = {"MDB_ERR_PARA"};  // refused: the status instead of titles
    const Titles artists = {"Miles Davis", "Dave Brubeck", "Roni Size & Reprazent", "Wilco", "Ælfgifu", "Me"};
    const struct { std::string container, criteria; Titles expected; } cases[] = {
        // Desktop players list a class, excluding references.
        {"0", audio + " and @refID exists false", music},
        {"0", "upnp:class derivedfrom \"object.item.videoItem\" and @refID exists false", video},
        {"0", "upnp:class derivedfrom \"object.item.imageItem\" and @refID exists false", pictures},
        {"0", "upnp:class derivedfrom \"object.container.playlistContainer\" and @refID exists false", none},
        // TVs and phone apps: title, artist, album, genre and creator searches.
        {"0", "(" + audio + ") and (dc:title contains \"blue\")", {"Blue in Green"}},
        {"0", "(" + audio + " and (dc:title contains \"blue\" or upnp:artist contains \"blue\" or upnp:album contains"
              " \"blue\"))", {"So What", "Blue in Green"}},
        {"0", audio + " and upnp:artist contains \"BRUBECK\"", {"Take Five", "Live at the Club"}},
        {"0", audio + " and upnp:genre = \"Jazz\"",
         {"So What", "Blue in Green", "Take Five", "Café Ünïcødé 日本語", "Live at the Club"}},
        {"0", "upnp:class = \"object.item.audioItem.musicTrack\" and upnp:artist = \"Wilco\"",
         {"\"Quoted\" 'Title'", "Interlude"}},
        {"0", "upnp:genre contains \"it's\"", {"Interlude"}},
        {"0", "dc:creator contains \"anna\"", {"Birthday", "Beach"}},
        // Photo apps: date ranges.
        {"0", "(upnp:class derivedfrom \"object.item.imageItem\" and dc:date >= \"2019-01-01\" and dc:date <= "
              "\"2019-12-31\")", {"Poster", "Beach", "Mountains & Lakes"}},
        {"0", "dc:date >= \"1959-01-01\" and dc:date < \"1960\"",
         {"So What", "Blue in Green", "Take Five", "Kind of Blue (front)"}},
        // Renderers: what they can play.
        // The media family of the MIME type: every audio profile (restricted rows carry bit 7 and are left out).
        {"0", pi + "\"http-get:*:audio/mpeg:*\"", of([](const Row &r) { return (r.flags & 0xFFFF) == 11; })},
        {"0", pi + "\"http-get:*:image/jpeg:DLNA.ORG_PN=JPEG_LRG\"",
         {"Poster", "Beach", "Mountains & Lakes", "Kind of Blue (front)"}},
        {"0", pi + "\"http-get:*:image/png:DLNA.ORG_PN=PNG_TN;DLNA.ORG_OP=01\"", {"Cover"}},
        {"0", pi + "\"http-get:*:audio/mpeg:DLNA.ORG_PN=PNG_TN\"", none},
        {"0", pi + "\"DLNA.ORG_PN=Unknown\"", none},
        {"0", pi + "\"audio/mpeg\"", refused},
        {"0", "res@protocolInfo = \"DLNA.ORG_PN=MP3\"", mp3},
        {"0", "upnp:class derivedfrom \"object.item.videoItem\" and res@duration < \"0:05:00\"",
         {"Birthday", "Raw Capture"}},
        {"0", "res@duration = \"soon\"", of([](const Row &r) { return r.duration == 0; })},
        {"0", "res@resolution >= \"1920x1080\"", {"Holiday 2019", "Beach", "Poster"}},  // height first
        {"0", "res@resolution = \"big\"", none},
        {"0", "res@resolution < \"640x\"", none},
        {"0", "res@resolution != \"1x1\"", of([](const Row &r) { return r.cls() == 12 || r.cls() == 13; })},
        {"0", "res@resolution <= \"0x4294967297\"", {"Raw Capture"}},
        // Classes and existence.
        {"0", "upnp:class = \"object.nothing\"", none},
        {"0", "upnp:class derivedfrom \"object.item\"", items},
        {"0", "upnp:class derivedfrom \"\"", all},
        {"0", "upnp:class = \"object.item.videoItem.movie\"", video},
        {"0", "upnp:class = \"object.container.storageFolder\"", folders},
        {"0", "res@resolution exists false", of([](const Row &r) { return r.cls() != 12 && r.cls() != 13; })},
        {"0.2.512", "res@resolution exists true", video},
        {"0", "dc:title exists false or @refID exists true", none},
        {"0", "upnp:class exists false and (@id = \"0.1.256\")", all},
        // Media centres: folders, one object, category lists and their values.
        {folder, "dc:title contains \"o\"", {"Covers", "Tom & Jerry <Live>", "\"Quoted\" 'Title'"}},
        {"0.1.264|x", "dc:title contains \"Jazz\"", {"Jazz"}},
        {"0", "@id = \"0.1.256|" + lib.id("01 So What.mp3") + "\"", {"So What"}},
        {"0", "@id = \"0.3.768|0" + lib.id("beach.jpg") + "\"", {"Beach"}},
        {"0", "@id = \"" + folder + "\"", {"Music"}},
        {"0.1.258", "upnp:class = \"object.container.person.musicArtist\" and @refID exists false",
         artists},
        {"0.1.262", "upnp:class = \"object.container.album.musicAlbum\"",
         {"Kind of Blue", "Time Out", "New Forms", "Summerteeth", "Ånd & Sjel", "At the Club", "Mixed Bag", "Memos"}},
        {"0.1.258", "upnp:class derivedfrom \"\"", artists},
        {"0.1.257", "upnp:class = \"" + std::string(g_apcObjClassStrings[4]) + "\"", none},  // artists, not genres
        {"0.2.514", "upnp:class derivedfrom \"object.container.album\"", {"Holidays", "Parties", "Live Shows", "Tapes"}},
        {"0.2.513", "@id = \"0.2.513|" + lib.value("ARTISTS", "Family") + "\"", {"Family"}},
        {"0.1.257", "@id = \"0.1.257|" + jazz + "\"", {"Jazz"}},
        {"0.1.257", "@id = \"0.1.257|" + jazz + "," + lib.id("Dave.Brubeck-Take.Five.mp3") + "\"", {"Take Five"}},
        {"0.1.258|" + lib.value("ARTISTS", "Wilco"), "dc:title contains \"i\"", {"\"Quoted\" 'Title'", "Interlude"}},
        {"0.1.256|7", "*", music},
        // Object ids that name nothing a search can restrict to are refused.
        {"0.2", "@id = \"0.1.256|1\"", refused}, {"0", "@id = \"0.9.999|1\"", refused},
        {"0", "@id = \"0.1.256|abc\"", refused}, {"0", "@id = \"0.1.256|\"", refused},
        {"0", "@id = \"0.1.256|3,4\"", refused}, {"0", "@id = \"0.1.256|99999999999999999999\"", refused},
        // Client values with quotes and wildcards, and texts too long for the statement.
        {"0", "dc:title contains \"'Title'\"", {"\"Quoted\" 'Title'"}},
        {"0", "dc:title contains \"" + std::string(125, '\'') + "\"", refused},
        {folder + std::string(130, '\''), "*", refused},
        {"0.1.257", "@id = \"0.1.257|" + std::string(100, '\'') + "\"", refused},
        {"0", "dc:date >= \"" + std::string(120, 'd') + "\"", refused},
        {folder, "dc:title contains \"" + std::string(230, 'x') + "\" and dc:title contains \"" +
                    std::string(230, 'y') + "\"", refused},
    };
    for (const auto &c : cases) {
        const searchtest::Outcome o = SearchOn(lib.db(), c.container.c_str(), c.criteria.c_str());
        EXPECT_EQ(searchtest::Found(o), c.expected == refused ? "MDB_ERR_PARA 0/0 " : searchtest::Found(c.expected))
            << c.container << " / " << c.criteria;
        EXPECT_TRUE(c.expected != refused || o.statements.empty()) << "refused before any statement";
    }
}

// Values are compared as values: a value that names a column is not that column, and the LIKE
// wildcards of a containment value match themselves. Also with SQLite's double-quoted string
// literals switched off, as a build with SQLITE_DQS=0 has them.
TEST(ClientCriteria, ValuesAreComparedAsValuesNotColumns) {
    mdbtest::Library lib;
    for (const char *title : {"100% Pure", "1000 Miles", "a_b", "axb", "back\\slash", "backXslash", "Same.bin"}) {
        mdbtest::ItemValues v;  // MP3 tracks in the music folder
        v.parentId = lib.row("Music").id, v.flags = 11, v.title = title;
        v.fileName = std::string(title) == "Same.bin" ? title : std::string(title) + ".mp3";
        lib.catalogue().addItem(v);
    }
    const std::pair<const char *, Titles> cases[] = {
        {"dc:title = \"title\"", {}}, {"dc:title = \"fileName\"", {}}, {"upnp:artist = \"artist\"", {}},
        {"dc:date = \"date\"", {}}, {"dc:title = \"Same.bin\"", {"Same.bin"}},
        {"dc:title contains \"100%\"", {"100% Pure"}}, {"dc:title contains \"a_b\"", {"a_b"}},
        {"dc:title contains \"k\\s\"", {"back\\slash"}},
        {"dc:date >= \"1999-05-01\" and dc:date < \"2001\"", {"\"Quoted\" 'Title'"}},
    };
    for (int doubleQuotedStrings : {1, 0}) {
        sqlite3_db_config(lib.db(), SQLITE_DBCONFIG_DQS_DML, doubleQuotedStrings, nullptr);
        for (const auto &[criteria, expected] : cases) {
            EXPECT_EQ(searchtest::Found(SearchOn(lib.db(), "0", criteria)), searchtest::Found(expected))
                << criteria << (doubleQuotedStrings ? "" : " (no double-quoted strings)");
        }
    }
}

// Ids, paging, sorting and counters: items below the searched view, category values as containers
// of the category, the action's object id afterwards.
TEST(SearchRequest, IdsPagesAndCounters) {
    mdbtest::Library lib;
    const std::string music = "0.1.264|" + lib.id("Music"), genre = lib.value("GENRES", "Jazz");
    auto summary = [](const searchtest::Outcome &o) {
        std::string ids;
        for (const std::string &id : o.ids) ids += id + " ";
        return std::to_string(o.returned) + "/" + std::to_string(o.total) + " " + ids + "in " + o.objectId;
    };
    searchtest::Outcome all = SearchOn(lib.db(), "0", "*", 10);
    EXPECT_EQ(std::to_string(all.returned) + " " + std::to_string(all.titles.size()) + " " + all.objectId, "10 10 0");
    EXPECT_EQ(all.total, lib.titles([](const Row &) { return true; }).size());
    const std::string genres = "upnp:class = \"object.container.genre.musicGenre\"";
    searchtest::Outcome values = SearchOn(lib.db(), "0.1.257", genres.c_str());
    std::string expected = "5/5 ";
    for (const std::string &t : values.titles) expected += "0.1.257|" + lib.value("GENRES", t) + " ";
    EXPECT_EQ(summary(values), expected + "in 0.1.257");
    EXPECT_EQ(AsSet(values.titles), (Titles{"Jazz", "Drum & Bass", "Rock", "It's Pop", "Speech"}));
    // A category search counts its page, an item search every match.
    EXPECT_EQ(SearchOn(lib.db(), "0.1.257", genres.c_str(), 0).total, 0u);
    EXPECT_EQ(summary(SearchOn(lib.db(), "0.1.258", "upnp:class derivedfrom \"object.container\"", 2)).substr(0, 4),
              "2/2 ");
    EXPECT_EQ(SearchOn(lib.db(), "0.1.256", "*", 0).total, 9u);
    EXPECT_EQ(summary(SearchOn(lib.db(), ("0.1.257|" + genre).c_str(), "dc:title contains \"Take\"")),
              "1/1 0.1.257," + lib.id("Dave.Brubeck-Take.Five.mp3") + " in 0.1.257|" + genre);
    // A folder search, sorted and paged: ids under the folder view, the object id kept; another
    // container class takes the container copy as object id.
    EXPECT_EQ(summary(SearchOn(lib.db(), music.c_str(), "dc:title contains \"o\"", 10, 1, "ORDER BY title")),
              "2/3 0.1.264|" + lib.id("Covers") + " 0.1.264|" + lib.id("tj.mp3") + " in " + music);
    EXPECT_EQ(SearchOn(lib.db(), music.c_str(), "upnp:class = \"object.container.playlistContainer\"").objectId,
              "0.1.264");
}

TEST(SearchRequest, DeepestNestingParsesInSqliteAndBadRequestsAreRefused) {
    mdbtest::Library lib;
    // The nesting that needs most of SQLite's parser stack: per level two expressions, "or" and
    // "and" pending before the next "(", 16 levels and all 32 expressions.
    auto deepest = [](const std::string &innermost) {
        std::string c;
        for (int i = 0; i < 15; ++i) c += "@refID exists false or @refID exists false and (";
        return c + "@refID exists false and (" + innermost + std::string(16, ')');
    };
    const std::string folder = "0.1.264|" + lib.id("Music");
    searchtest::Outcome all = SearchOn(lib.db(), folder.c_str(), "*");
    searchtest::Outcome items = SearchOn(lib.db(), folder.c_str(), deepest("@refID exists false").c_str());
    ASSERT_EQ(items.status, "MDB_OK");
    EXPECT_EQ(items.statements.size(), 2u);
    EXPECT_EQ(AsSet(items.titles), AsSet(all.titles));
    const std::string genres = deepest("upnp:class = \"object.container.genre.musicGenre\"");
    EXPECT_EQ(SearchOn(lib.db(), "0.1.257", genres.c_str(), 100, 0, "ORDER BY genre").titles,
              (searchtest::Strings{"Drum & Bass", "It's Pop", "Jazz", "Rock", "Speech"}));

    std::string longCriteria;  // a WHERE text of 491 characters: the select statement exceeds 511
    for (int i = 0; i < 11; ++i) {
        longCriteria += (i ? " or " : "") + std::string("dc:title contains \"abcdefghijklmnopqrstuvwxyz\"");
    }
    const std::string longId = folder + std::string(250, '0');
    const std::string deeper = std::string(17, '(') + "@refID exists false" + std::string(17, ')');
    const std::pair<const char *, const char *> refused[] = {
        {"0", nullptr}, {"0", ""}, {"0", "dc:title contains"}, {"0.7", "*"}, {longId.c_str(), "*"},
        {"0", longCriteria.c_str()}, {folder.c_str(), deeper.c_str()},
    };
    for (const auto &[container, criteria] : refused) {
        searchtest::Outcome o = SearchOn(lib.db(), container, criteria);
        EXPECT_EQ(o.status, "MDB_ERR_PARA") << (container ? container : "(null)") << " / " << (criteria ? criteria : "");
        EXPECT_TRUE(o.statements.empty() && o.titles.empty());
    }
    EXPECT_EQ(QRV_MDB_Search("0", "*", nullptr), MDB_ERR_PARA);
    g_pstMdbCtx = nullptr;
    EXPECT_EQ(SearchOn(lib.db(), "0", "*").status, "MDB_ERR_PARA") << "no catalogue";
    g_pstMdbCtx = lib.db();
}

}  // namespace
