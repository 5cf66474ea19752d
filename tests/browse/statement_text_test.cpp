// The statements that each database browse runs, captured with sqlite3_trace_v2 and compared
// character for character: their texts (spacing, the empty sort text, LIMIT before OFFSET) are
// part of the contract with the schema's indexes and with devices that log them.
#include "library.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using Statements = std::vector<std::string>;

int Record(unsigned type, void *log, void *, void *sql) {
    const char *text = static_cast<const char *>(sql);
    if (type == SQLITE_TRACE_STMT && text != nullptr && std::strncmp(text, "--", 2) != 0) {
        static_cast<Statements *>(log)->emplace_back(text);
    }
    return 0;
}

TEST(StatementTexts, EachBrowseRunsExactlyItsStatements) {
    browsetest::Library lib;
    const std::string folder = lib.id("Jazz"), track = lib.id("Dave.Brubeck-Take.Five.mp3");
    const std::string genre = lib.value("GENRES", "Jazz"), artist = lib.value("ARTISTS", "Wilco"),
                      album = lib.value("ALBUMS", "Kind of Blue");
    const std::string inFolder =
        "parentID=" + folder + " and (((flags & 127) =2 and (flags & 2048) >1) or (flags & 127) =11)";
    const std::string page = " LIMIT 10 OFFSET 3";  // RequestedCount 10, StartingIndex 3
    const std::string countFolder = "select count(distinct id) from ITEM where " + inFolder;
    const std::string countAll = "select count(distinct id) from ITEM where ((flags & 127) = 11)";
    struct Case { std::string id; uint32_t flag; const char *sort; Statements expected; };
    const std::vector<Case> cases = {
        {"0.1.264|" + folder, 1, "ORDER BY title",
         {countFolder, "select * from DLNA where " + inFolder + " ORDER BY title" + page}},
        {"0.1.264|" + folder, 1, nullptr, {countFolder, "select * from DLNA where " + inFolder + page}},
        {"0.1.264|" + track, 0, "ORDER BY title",
         {"select count(*) from DLNA where id=" + track, "select * from DLNA where id=" + track + page}},
        {"0.1.256", 1, "ORDER BY title",
         {countAll, "select * from DLNA where ((flags & 127) = 11) ORDER BY title" + page}},
        {"0.1.256", 1, nullptr, {countAll, "select * from DLNA where ((flags & 127) = 11)" + page}},
        {"0.1.256|" + track, 1, "ORDER BY title", {"select * from DLNA where id=" + track + page}},
        {"0.1.257", 1, "ORDER BY title", {"select exID,name from GENRES"}},
        {"0.1.258", 1, nullptr,
         {"select exID,name from ARTISTS where exID in(select distinct ITEM.exID_ARTIST from ITEM where "
          "ITEM.flags&127=11)"}},
        {"0.2.514", 1, nullptr,
         {"select exID,name from ALBUMS where exID in(select distinct ITEM.exID_ALBUM from ITEM where "
          "ITEM.flags&127=12)"}},
        // Without a sort text the category statements keep the blanks before and after its place.
        {"0.1.257|" + genre, 1, nullptr,
         {"select count(distinct ITEM.id) from ITEM where ITEM.exID_GENRE=" + genre + " and (flags & 127)=11",
          "select * from DLNA where DLNA.genre_id=" + genre + " and (DLNA.flags & 127)=11 " + page}},
        {"0.1.258|" + artist, 1, "ORDER BY title",
         {"select count(distinct ITEM.id) from ITEM where ITEM.exID_ARTIST=" + artist + " and (flags & 127)=11",
          "select * from DLNA where DLNA.artist_id=" + artist + " and (flags & 127)=11 ORDER BY title" + page}},
        {"0.1.262|" + album, 1, nullptr,
         {"select count(distinct ITEM.id) from ITEM where ITEM.exID_ALBUM=" + album + " and (flags & 127)=11",
          "select * from DLNA where DLNA.album_id=" + album + " and (flags & 127)=11 " + page}},
        {"0.1.257|" + genre + "," + track, 0, nullptr,
         {"select count(id) from ITEM where id=" + track + " and (flags & 127)=11",
          "select * from DLNA where id=" + track + " and (flags & 127)=11 " + page}},
    };
    for (const Case &c : cases) {
        // No optional property is asked for, so the item writer runs no statement of its own.
        mdbtest::Action action(false, 10, 3);
        action.adoptSort(c.sort != nullptr ? strdup(c.sort) : nullptr);
        Statements log;
        sqlite3_trace_v2(lib.db(), SQLITE_TRACE_STMT, Record, &log);
        EXPECT_STREQ(QRV_MDB_StatusName(QRV_MDB_Browse(c.id.c_str(), c.flag, action.ctx())), "MDB_OK") << c.id;
        sqlite3_trace_v2(lib.db(), 0, nullptr, nullptr);
        EXPECT_EQ(log, c.expected) << c.id << " flag " << c.flag;
    }
}

}  // namespace
