// The schema's indexes, chosen by measurement: on a generated catalogue every browse statement of
// the library finds its ITEM rows through an index (never a full scan of ITEM) and reads the rows of
// "ORDER BY title" in index order (no temporary B-tree), before any statistics exist and after ANALYZE.
#include "catalogue.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// A catalogue shaped like a device's: two shared roots, a folder tree, mostly music, and genre,
// artist and album entries shared unevenly by the items.
const char *const kGenerateCatalogue = R"SQL(
BEGIN;
CREATE TEMP TABLE n AS WITH RECURSIVE c(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM c WHERE i < 4000) SELECT i FROM c;
INSERT INTO GENRES SELECT i, 'Genre ' || i FROM n WHERE i <= 20;
INSERT INTO ARTISTS SELECT i, 'Artist ' || i FROM n WHERE i <= 300;
INSERT INTO ALBUMS SELECT i, 'Album ' || i FROM n WHERE i <= 500;
INSERT INTO ITEM (id, parentID, flags, title, fileName) VALUES
  (1, 0, 2 | 2048 | 4096 | 8192, 'usb1', '/media/usb1'), (2, 0, 2 | 2048 | 8192, 'usb2', '/media/usb2');
INSERT INTO ITEM (id, parentID, flags, title, fileName)
  SELECT i, CASE WHEN i < 23 THEN 1 + i % 2 ELSE 3 + (i * 37) % (i - 3) END,
         2 | (CASE i % 4 WHEN 0 THEN 2048 WHEN 1 THEN 2048 | 4096 WHEN 2 THEN 8192 ELSE 2048 | 8192 END),
         'Folder ' || i, 'dir' || i FROM n WHERE i BETWEEN 3 AND 202;
INSERT INTO ITEM (id, parentID, flags, title, fileName, size, duration, exID_GENRE, exID_ARTIST, exID_ALBUM)
  SELECT 1000 + i, 3 + i % 200, 11 | ((i % 5) << 16), printf('Track %05d', (i * 7919) % 100000), 'track' || i,
         4000000 + i, 180000000 + i * 1000, 1 + i % 20, 1 + (i * 13) % 300, 1 + (i * 17) % 500 FROM n;
INSERT INTO ITEM (id, parentID, flags, title, fileName, size, resolution, exID_ARTIST, exID_ALBUM)
  SELECT 6000 + i, 3 + (i * 3) % 200, 268 | ((i % 7) << 16), printf('Film %05d', (i * 104729) % 100000), 'film' || i,
         700000000 + i, (1080 << 32) + 1920, 1 + (i * 11) % 300, 1 + (i * 7) % 500 FROM n WHERE i <= 1000;
INSERT INTO ITEM (id, parentID, flags, title, fileName, size, resolution)
  SELECT 8000 + i, 3 + (i * 5) % 200, 525 | ((i % 4) << 16), printf('Photo %05d', (i * 15485863) % 100000),
         'img' || i, 2000000 + i, (3000 << 32) + 4000 FROM n WHERE i <= 1500;
DROP TABLE n;
COMMIT;
)SQL";

struct Statement {
    std::string sql;
    bool sortedByTitle;    // "ORDER BY title": rows must come in index order
    bool covering = false; // ITEM must be read from an index alone
};

/* The library's browse statements, as it writes them, with values of the catalogue above. */
std::vector<Statement> BrowseStatements() {
    const std::string folder = " and (((flags & 127) =2 and (flags & 2048) >1) or (flags & 127) =11)";
    std::vector<Statement> s = {{"select count(*) from DLNA where id=1500", false},
                                {"select * from DLNA where id=1500 LIMIT 10 OFFSET 0", false},
                                {"select count(id) from ITEM where id=1500 and (flags & 127)=11", false}};
    std::vector<std::string> rows;
    for (const std::string parent : {"1", "3"}) rows.push_back("parentID=" + parent + folder);
    for (const std::string cls : {"11", "12", "13"}) rows.push_back("((flags & 127) = " + cls + ")");
    // folder children and all items of a class are counted on the conditions of their rows
    for (const std::string &where : rows) s.push_back({"select count(distinct id) from ITEM where " + where, false});
    for (const std::string category : {"GENRE=3", "ARTIST=5", "ALBUM=7"}) {
        s.push_back({"select count(distinct ITEM.id) from ITEM where ITEM.exID_" + category + " and (flags & 127)=11",
                     false});
    }
    rows.insert(rows.end(), {"DLNA.genre_id=3 and (DLNA.flags & 127)=11", "DLNA.artist_id=5 and (flags & 127)=11",
                             "DLNA.album_id=7 and (flags & 127)=11"});
    for (const std::string list : {"ARTIST", "ALBUM"}) {
        for (const std::string cls : {"11", "12"}) {
            s.push_back({"select exID,name from " + list + "S where exID in(select distinct ITEM.exID_" + list +
                             " from ITEM where ITEM.flags&127=" + cls + ")", false, true});
        }
    }
    for (const std::string order : {"", " ORDER BY title"}) {
        for (const std::string &where : rows) {
            s.push_back({"select * from DLNA where " + where + order + " LIMIT 10 OFFSET 20", !order.empty()});
        }
        // a single row: its order costs nothing
        s.push_back({"select * from DLNA where id=1500 and (flags & 127)=11" + order + " LIMIT 10 OFFSET 20", false});
    }
    return s;
}

TEST(IndexPlans, BrowseStatementsUseIndexesBeforeAndAfterAnalyze) {
    mdbtest::Catalogue catalogue;
    catalogue.exec(kGenerateCatalogue);
    for (bool analyzed : {false, true}) {
        if (analyzed) catalogue.exec("ANALYZE");
        for (const Statement &st : BrowseStatements()) {
            std::vector<std::string> plan;
            sqlite3_stmt *stmt = nullptr;
            ASSERT_EQ(sqlite3_prepare_v2(catalogue.db(), ("EXPLAIN QUERY PLAN " + st.sql).c_str(), -1, &stmt, nullptr),
                      SQLITE_OK) << st.sql << ": " << sqlite3_errmsg(catalogue.db());
            while (sqlite3_step(stmt) == SQLITE_ROW) { // columns id, parent, notused, detail
                plan.emplace_back(reinterpret_cast<const char *>(sqlite3_column_text(stmt, 3)));
            }
            sqlite3_finalize(stmt);
            std::string shown;
            for (const std::string &line : plan) shown += "\n    " + line;
            SCOPED_TRACE((analyzed ? "after ANALYZE: " : "no statistics: ") + st.sql + shown);
            bool itemByIndex = false;
            for (const std::string &line : plan) {
                EXPECT_NE(line.rfind("SCAN ITEM", 0), 0u) << "full scan";
                bool search = line.rfind("SEARCH ITEM USING", 0) == 0;
                itemByIndex = itemByIndex || search;
                if (search && st.covering) { EXPECT_EQ(line.rfind("SEARCH ITEM USING COVERING INDEX", 0), 0u); }
                if (st.sortedByTitle) { EXPECT_EQ(line.find("USE TEMP B-TREE FOR ORDER BY"), std::string::npos); }
            }
            EXPECT_TRUE(itemByIndex) << "ITEM is not searched through an index";
            // the measurement means something only where the catalogue has rows for the statement
            if (st.sql.rfind("select count", 0) == 0) { EXPECT_NE(catalogue.scalar(st.sql), "0"); }
        }
    }
}

} // namespace
