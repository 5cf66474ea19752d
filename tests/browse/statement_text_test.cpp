// The statements that each database browse runs, captured with sqlite3_trace_v2 and compared
// character for character: their texts (spacing, the empty sort text, LIMIT before OFFSET) are
// part of the contract with the schema's indexes and with devices that log them.
#include "library.h"

#include <mdb.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using browsetest::Library;
using Statements = std::vector<std::string>;

// Records the top-level statements run on a connection while it lives.
class StatementLog {
public:
    explicit StatementLog(sqlite3 *db) : m_db(db) { sqlite3_trace_v2(m_db, SQLITE_TRACE_STMT, &OnTrace, this); }
    ~StatementLog() { sqlite3_trace_v2(m_db, 0, nullptr, nullptr); }
    StatementLog(const StatementLog &) = delete;
    StatementLog &operator=(const StatementLog &) = delete;
    const Statements &statements() const { return m_statements; }

private:
    static int OnTrace(unsigned type, void *ctx, void *, void *x) {
        const char *sql = static_cast<const char *>(x);
        if (type == SQLITE_TRACE_STMT && sql != nullptr && std::strncmp(sql, "--", 2) != 0) {
            static_cast<StatementLog *>(ctx)->m_statements.emplace_back(sql);
        }
        return 0;
    }
    sqlite3 *m_db;
    Statements m_statements;
};

TEST(StatementTexts, EachBrowseRunsExactlyItsStatements) {
    Library lib;
    const std::string folder = std::to_string(lib.row("Jazz").id);
    const std::string track = std::to_string(lib.row("take5.mp3").id);
    const std::string genre = std::to_string(lib.genre("Jazz"));
    const std::string artist = std::to_string(lib.artist("Wilco"));
    const std::string album = std::to_string(lib.album("Kind of Blue"));
    const std::string children = "(((flags & 127) =2 and (flags & 2048) >1) or (flags & 127) =11)";
    struct Case {
        std::string id;
        uint32_t flag;
        const char *sort;
        Statements expected;
    };
    // RequestedCount 10 and StartingIndex 3 tell LIMIT from OFFSET.
    const std::vector<Case> cases = {
        {"0.1.264|" + folder, 1, "ORDER BY title",
         {"select count(distinct id) from ITEM where parentID=" + folder + " and " + children,
          "select * from DLNA where parentID=" + folder + " and " + children + " ORDER BY title LIMIT 10 OFFSET 3"}},
        {"0.1.264|" + folder, 1, nullptr,
         {"select count(distinct id) from ITEM where parentID=" + folder + " and " + children,
          "select * from DLNA where parentID=" + folder + " and " + children + " LIMIT 10 OFFSET 3"}},
        {"0.1.264|" + track, 0, "ORDER BY title",
         {"select count(*) from DLNA where id=" + track, "select * from DLNA where id=" + track + " LIMIT 10 OFFSET 3"}},
        {"0.1.256", 1, "ORDER BY title",
         {"select count(distinct id) from ITEM where ((flags & 127) = 11)",
          "select * from DLNA where ((flags & 127) = 11) ORDER BY title LIMIT 10 OFFSET 3"}},
        {"0.1.256", 1, nullptr,
         {"select count(distinct id) from ITEM where ((flags & 127) = 11)",
          "select * from DLNA where ((flags & 127) = 11) LIMIT 10 OFFSET 3"}},
        {"0.1.256|" + track, 1, "ORDER BY title", {"select * from DLNA where id=" + track + " LIMIT 10 OFFSET 3"}},
        {"0.1.257", 1, "ORDER BY title", {"select exID,name from GENRES"}},
        {"0.1.258", 1, nullptr,
         {"select exID,name from ARTISTS where exID in(select distinct ITEM.exID_ARTIST from ITEM where "
          "ITEM.flags&127=11)"}},
        {"0.2.514", 1, nullptr,
         {"select exID,name from ALBUMS where exID in(select distinct ITEM.exID_ALBUM from ITEM where "
          "ITEM.flags&127=12)"}},
        // Without a sort text the category statements keep the blank before and after its place.
        {"0.1.257|" + genre, 1, nullptr,
         {"select count(distinct ITEM.id) from ITEM where ITEM.exID_GENRE=" + genre + " and (flags & 127)=11",
          "select * from DLNA where DLNA.genre_id=" + genre + " and (DLNA.flags & 127)=11  LIMIT 10 OFFSET 3"}},
        {"0.1.258|" + artist, 1, "ORDER BY title",
         {"select count(distinct ITEM.id) from ITEM where ITEM.exID_ARTIST=" + artist + " and (flags & 127)=11",
          "select * from DLNA where DLNA.artist_id=" + artist + " and (flags & 127)=11 ORDER BY title LIMIT 10 OFFSET 3"}},
        {"0.1.262|" + album, 1, nullptr,
         {"select count(distinct ITEM.id) from ITEM where ITEM.exID_ALBUM=" + album + " and (flags & 127)=11",
          "select * from DLNA where DLNA.album_id=" + album + " and (flags & 127)=11  LIMIT 10 OFFSET 3"}},
        {"0.1.257|" + genre + "," + track, 0, nullptr,
         {"select count(id) from ITEM where id=" + track + " and (flags & 127)=11",
          "select * from DLNA where id=" + track + " and (flags & 127)=11  LIMIT 10 OFFSET 3"}},
    };
    for (const Case &c : cases) {
        // No optional property is asked for, so the item writer runs no statement of its own.
        mdbtest::Action action(false, 10, 3);
        action.adoptSort(c.sort != nullptr ? strdup(c.sort) : nullptr);
        StatementLog log(lib.db());
        EXPECT_STREQ(QRV_MDB_StatusName(QRV_MDB_Browse(c.id.c_str(), c.flag, action.ctx())), "MDB_OK") << c.id;
        EXPECT_EQ(log.statements(), c.expected) << c.id << " flag " << c.flag;
    }
}

}  // namespace
