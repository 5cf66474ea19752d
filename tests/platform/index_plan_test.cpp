// The schema's indexes, chosen by measurement: on a generated catalogue, every browse statement
// of the library finds its rows through an index (never a full scan of ITEM) and gets the rows
// of "ORDER BY title" in index order (no temporary B-tree for the sort), both before any
// statistics exist and after ANALYZE.
#include "schema_db.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <vector>

using platformtest::SchemaDb;

namespace {

// A catalogue shaped like a device's: two shared roots, a folder tree, mostly music, and genre,
// artist and album entries shared unevenly by the items.
const char *const kGenerateCatalogue = R"SQL(
BEGIN;
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20)
  INSERT INTO GENRES SELECT i, 'Genre ' || i FROM n;
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 300)
  INSERT INTO ARTISTS SELECT i, 'Artist ' || i FROM n;
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500)
  INSERT INTO ALBUMS SELECT i, 'Album ' || i FROM n;
INSERT INTO ITEM (id, parentID, flags, title, fileName) VALUES
  (1, 0, 2 | 2048 | 4096 | 8192, 'usb1', '/media/usb1'),
  (2, 0, 2 | 2048 | 8192, 'usb2', '/media/usb2');
WITH RECURSIVE n(i) AS (SELECT 3 UNION ALL SELECT i + 1 FROM n WHERE i < 202)
  INSERT INTO ITEM (id, parentID, flags, title, fileName)
  SELECT i, CASE WHEN i < 23 THEN 1 + i % 2 ELSE 3 + (i * 37) % (i - 3) END,
         2 | (CASE i % 4 WHEN 0 THEN 2048 WHEN 1 THEN 2048 | 4096 WHEN 2 THEN 8192 ELSE 2048 | 8192 END),
         'Folder ' || i, 'dir' || i
  FROM n;
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 4000)
  INSERT INTO ITEM (id, parentID, flags, title, fileName, size, duration, exID_GENRE, exID_ARTIST, exID_ALBUM)
  SELECT 1000 + i, 3 + i % 200, 11 | ((i % 5) << 16), printf('Track %05d', (i * 7919) % 100000),
         'track' || i || '.mp3', 4000000 + i, 180000000 + i * 1000, 1 + i % 20, 1 + (i * 13) % 300,
         1 + (i * 17) % 500
  FROM n;
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 1000)
  INSERT INTO ITEM (id, parentID, flags, title, fileName, size, resolution, exID_ARTIST, exID_ALBUM)
  SELECT 6000 + i, 3 + (i * 3) % 200, 268 | ((i % 7) << 16), printf('Film %05d', (i * 104729) % 100000),
         'film' || i || '.mp4', 700000000 + i, (1080 << 32) + 1920, 1 + (i * 11) % 300, 1 + (i * 7) % 500
  FROM n;
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 1500)
  INSERT INTO ITEM (id, parentID, flags, title, fileName, size, resolution)
  SELECT 8000 + i, 3 + (i * 5) % 200, 525 | ((i % 4) << 16), printf('Photo %05d', (i * 15485863) % 100000),
         'img' || i || '.jpg', 2000000 + i, (3000 << 32) + 4000
  FROM n;
COMMIT;
)SQL";

std::string Format(const char *format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char *format, ...) {
    char buf[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buf, sizeof buf, format, args);
    va_end(args);
    return buf;
}

struct Statement {
    const char *what;
    std::string sql;
    bool sortedByTitle; // "ORDER BY title": must come in index order
    bool covering = false; // ITEM must be read from an index alone
};

/* The browse statements of the library, with the values a browse of this catalogue uses. */
std::vector<Statement> BrowseStatements() {
    const long long folder = 3, root = 1, row = 1500;
    const int c = 11, b = 1 << c, genre = 3, artist = 5, album = 7, row32 = 1500;
    const unsigned count = 10, offset = 20;
    const char *sort = "ORDER BY title";
    std::vector<Statement> s;
    // Folder children: count, rows with and without a sort.
    for (long long parent : {folder, root}) {
        s.push_back({"folder children count",
                     Format("select count(distinct id) from ITEM where parentID=%lld and (((flags & %d) =%d and "
                            "(flags & %d) >1) or (flags & %d) =%d)",
                            parent, 127, 2, b, 127, c),
                     false});
        s.push_back({"folder children rows sorted",
                     Format("select * from DLNA where parentID=%lld and (((flags & %d) =%d and (flags & %d) >1) or "
                            "(flags & %d) =%d) %s LIMIT %u OFFSET %u",
                            parent, 127, 2, b, 127, c, sort, count, offset),
                     true});
        s.push_back({"folder children rows",
                     Format("select * from DLNA where parentID=%lld and (((flags & %d) =%d and (flags & %d) >1) or "
                            "(flags & %d) =%d) LIMIT %u OFFSET %u",
                            parent, 127, 2, b, 127, c, count, offset),
                     false});
    }
    // Single rows.
    s.push_back({"object count", Format("select count(*) from DLNA where id=%lld", row), false});
    s.push_back({"object row", Format("select * from DLNA where id=%lld LIMIT %u OFFSET %u", row, count, 0u), false});
    // All items of a class.
    for (int cls : {11, 12, 13}) {
        s.push_back({"all items count",
                     Format("select count(distinct id) from ITEM where ((flags & %d) = %d)", 127, cls), false});
        s.push_back({"all items rows sorted",
                     Format("select * from DLNA where ((flags & %d) = %d) %s LIMIT %u OFFSET %u", 127, cls, sort,
                            count, offset),
                     true});
        s.push_back({"all items rows",
                     Format("select * from DLNA where ((flags & %d) = %d) LIMIT %u OFFSET %u", 127, cls, count,
                            offset),
                     false});
    }
    // Category value lists.
    for (int cls : {11, 12}) {
        s.push_back({"artist list",
                     Format("select exID,name from ARTISTS where exID in(select distinct ITEM.exID_ARTIST from ITEM "
                            "where ITEM.flags&%d=%d)",
                            127, cls),
                     false, true});
        s.push_back({"album list",
                     Format("select exID,name from ALBUMS where exID in(select distinct ITEM.exID_ALBUM from ITEM "
                            "where ITEM.flags&%d=%d)",
                            127, cls),
                     false, true});
    }
    // Items of one category value: count and rows, with and without a sort.
    s.push_back({"genre items count",
                 Format("select count(distinct ITEM.id) from ITEM where ITEM.exID_GENRE=%d and (flags & %d)=%d", genre,
                        127, c),
                 false});
    s.push_back({"artist items count",
                 Format("select count(distinct ITEM.id) from ITEM where ITEM.exID_ARTIST=%d and (flags & %d)=%d",
                        artist, 127, c),
                 false});
    s.push_back({"album items count",
                 Format("select count(distinct ITEM.id) from ITEM where ITEM.exID_ALBUM=%d and (flags & %d)=%d", album,
                        127, c),
                 false});
    for (const char *order : {sort, ""}) {
        bool sorted = order[0] != '\0';
        s.push_back({sorted ? "genre items sorted" : "genre items",
                     Format("select * from DLNA where DLNA.genre_id=%d and (DLNA.flags & %d)=%d %s LIMIT %u OFFSET %u",
                            genre, 127, c, order, count, offset),
                     sorted});
        s.push_back({sorted ? "artist items sorted" : "artist items",
                     Format("select * from DLNA where DLNA.artist_id=%d and (flags & %d)=%d %s LIMIT %u OFFSET %u",
                            artist, 127, c, order, count, offset),
                     sorted});
        s.push_back({sorted ? "album items sorted" : "album items",
                     Format("select * from DLNA where DLNA.album_id=%d and (flags & %d)=%d %s LIMIT %u OFFSET %u",
                            album, 127, c, order, count, offset),
                     sorted});
        s.push_back({sorted ? "category item sorted" : "category item",
                     Format("select * from DLNA where id=%d and (flags & %d)=%d %s LIMIT %u OFFSET %u", row32, 127, c,
                            order, count, offset),
                     false});
    }
    s.push_back({"category item count",
                 Format("select count(id) from ITEM where id=%d and (flags & %d)=%d", row32, 127, c), false});
    return s;
}

std::string Joined(const std::vector<std::string> &lines) {
    std::string out;
    for (const std::string &line : lines) out += "\n    " + line;
    return out;
}

void ExpectIndexedPlans(SchemaDb &db, const char *stage) {
    for (const Statement &st : BrowseStatements()) {
        std::vector<std::string> plan = db.plan(st.sql);
        SCOPED_TRACE(std::string(stage) + ": " + st.what + "\n  " + st.sql + "\n  plan:" + Joined(plan));
        ASSERT_FALSE(plan.empty());
        bool itemByIndex = false;
        for (const std::string &line : plan) {
            EXPECT_NE(line.rfind("SCAN ITEM", 0), 0u) << "full scan: " << line;
            if (line.rfind("SEARCH ITEM USING", 0) == 0) {
                itemByIndex = true;
                if (st.covering) {
                    EXPECT_EQ(line.rfind("SEARCH ITEM USING COVERING INDEX", 0), 0u) << line;
                }
            }
            if (st.sortedByTitle) {
                EXPECT_EQ(line.find("USE TEMP B-TREE FOR ORDER BY"), std::string::npos) << line;
            }
        }
        EXPECT_TRUE(itemByIndex) << "ITEM is not searched through an index";
    }
}

TEST(IndexPlans, BrowseStatementsUseIndexesWithoutStatistics) {
    SchemaDb db;
    ASSERT_EQ(db.exec(kGenerateCatalogue), SQLITE_OK);
    ExpectIndexedPlans(db, "no statistics");
}

TEST(IndexPlans, BrowseStatementsUseIndexesAfterAnalyze) {
    SchemaDb db;
    ASSERT_EQ(db.exec(kGenerateCatalogue), SQLITE_OK);
    ASSERT_EQ(db.exec("ANALYZE"), SQLITE_OK);
    ExpectIndexedPlans(db, "after ANALYZE");
}

TEST(IndexPlans, GeneratedCatalogueHasTheShapeTheStatementsNeed) {
    // Guards the measurement itself: the statements above must select real rows.
    SchemaDb db;
    ASSERT_EQ(db.exec(kGenerateCatalogue), SQLITE_OK);
    const struct {
        const char *sql;
        int atLeast;
    } checks[] = {
        {"select count(*) from ITEM where parentID=3 and (flags & 127)=11", 10},
        {"select count(*) from ITEM where parentID=1 and (flags & 127)=2 and (flags & 2048) > 1", 5},
        {"select count(*) from ITEM where exID_GENRE=3 and (flags & 127)=11", 30},
        {"select count(*) from ITEM where exID_ARTIST=5 and (flags & 127)=11", 5},
        {"select count(*) from ITEM where exID_ALBUM=7 and (flags & 127)=11", 5},
        {"select count(*) from ITEM where id=1500 and (flags & 127)=11", 1},
        {"select count(*) from ITEM where (flags & 127)=12", 1000},
    };
    for (const auto &c : checks) {
        int n = -1;
        sqlite3_exec(
            db.db(), c.sql,
            [](void *arg, int, char **values, char **) {
                *static_cast<int *>(arg) = std::atoi(values[0]);
                return 0;
            },
            &n, nullptr);
        EXPECT_GE(n, c.atLeast) << c.sql;
    }
}

} // namespace
