-- Schema of the MDB media catalogue. Run once, as one batch, when a new catalogue file is created.
--
-- ITEM holds one row per shared file or folder; its 24 columns are inserted and read by position.
-- The lookup tables hold the names that ITEM rows point at through their exID_ columns.
-- DLNA is the view that Browse and Search read: "select * from DLNA" rows are read by position,
-- and the property table of the adaptation library names its columns, so the order below is binding.

CREATE TABLE ITEM (
  id                  INTEGER PRIMARY KEY,
  parentID            INTEGER NOT NULL DEFAULT 0,
  flags               INTEGER NOT NULL DEFAULT 0,
  title               TEXT,
  fileName            TEXT,
  size                INTEGER DEFAULT 0,
  date                TEXT,
  bitsPerSample       INTEGER DEFAULT 0,
  duration            INTEGER DEFAULT 0,
  nrAudioChannels     INTEGER DEFAULT 0,
  resolution          INTEGER DEFAULT 0,
  sampleFrequency     INTEGER DEFAULT 0,
  bitrate             INTEGER DEFAULT 0,
  lastModify          TEXT,
  originalTrackNumber INTEGER DEFAULT 0,
  exID_ACTOR          INTEGER DEFAULT 0,
  exID_ALBUM          INTEGER DEFAULT 0,
  exID_ARTIST         INTEGER DEFAULT 0,
  exID_AUTHOR         INTEGER DEFAULT 0,
  exID_CREATOR        INTEGER DEFAULT 0,
  exID_DIRECTOR       INTEGER DEFAULT 0,
  exID_GENRE          INTEGER DEFAULT 0,
  exID_PRODUCER       INTEGER DEFAULT 0,
  exID_PUBLISHER      INTEGER DEFAULT 0
);

CREATE TABLE GENRES     (exID INTEGER PRIMARY KEY, name TEXT);
CREATE TABLE ARTISTS    (exID INTEGER PRIMARY KEY, name TEXT);
CREATE TABLE ALBUMS     (exID INTEGER PRIMARY KEY, name TEXT);
CREATE TABLE ACTORS     (exID INTEGER PRIMARY KEY, name TEXT);
CREATE TABLE AUTHORS    (exID INTEGER PRIMARY KEY, name TEXT);
CREATE TABLE CREATORS   (exID INTEGER PRIMARY KEY, name TEXT);
CREATE TABLE DIRECTORS  (exID INTEGER PRIMARY KEY, name TEXT);
CREATE TABLE PRODUCERS  (exID INTEGER PRIMARY KEY, name TEXT);
CREATE TABLE PUBLISHERS (exID INTEGER PRIMARY KEY, name TEXT);

CREATE INDEX GENRES_name     ON GENRES(name);
CREATE INDEX ARTISTS_name    ON ARTISTS(name);
CREATE INDEX ALBUMS_name     ON ALBUMS(name);
CREATE INDEX ACTORS_name     ON ACTORS(name);
CREATE INDEX AUTHORS_name    ON AUTHORS(name);
CREATE INDEX CREATORS_name   ON CREATORS(name);
CREATE INDEX DIRECTORS_name  ON DIRECTORS(name);
CREATE INDEX PRODUCERS_name  ON PRODUCERS(name);
CREATE INDEX PUBLISHERS_name ON PUBLISHERS(name);

-- Indexes, chosen by EXPLAIN QUERY PLAN on a generated catalogue, before and after ANALYZE. The
-- browse statements filter on the class expression "(flags & 127)" (SQLite uses an index on an
-- expression when the statement writes the same expression) and sort by title:
--  - folder children: parentID, then title, so a page of "ORDER BY title" is read in index order;
--    flags completes it, so that the children count and the rows a deep OFFSET skips are judged
--    by their class in the index, without a read of the table row;
--  - a folder's child by file name (the scanner looks every row up so before it writes it, and
--    CreateObject looks up the upload folder and an earlier upload of the same name);
--  - all items of a class: the class, then title, then flags for the same reason (search criteria
--    on the class and the title are answered from this index alone);
--  - items of a genre, artist or album: the category, the class, then title;
--  - the artist and album lists: the class, then the category id, so the list's sub-select reads
--    the distinct ids in index order; flags itself completes the index so that the sub-select
--    never touches the table, also on SQLite versions that do not take an indexed expression as
--    covering its column.
CREATE INDEX ITEM_parent_title      ON ITEM(parentID, title, flags);
CREATE INDEX ITEM_parent_name       ON ITEM(parentID, fileName);
CREATE INDEX ITEM_class_title       ON ITEM((flags & 127), title, flags);
CREATE INDEX ITEM_class_artist      ON ITEM((flags & 127), exID_ARTIST, flags);
CREATE INDEX ITEM_class_album       ON ITEM((flags & 127), exID_ALBUM, flags);
CREATE INDEX ITEM_genre_class_title ON ITEM(exID_GENRE, (flags & 127), title);
CREATE INDEX ITEM_artist_class_title ON ITEM(exID_ARTIST, (flags & 127), title);
CREATE INDEX ITEM_album_class_title ON ITEM(exID_ALBUM, (flags & 127), title);

-- The upload folder: the folder named "upload" below the first root (the root with the smallest
-- id), where CreateObject puts what clients upload.
CREATE VIEW UPLOAD_FOLDER AS SELECT id FROM ITEM
  WHERE fileName = 'upload' AND parentID = (SELECT min(id) FROM ITEM WHERE parentID = 0);

-- Audio parameters of an item.
CREATE VIEW AV_INFO AS SELECT id, sampleFrequency, nrAudioChannels FROM ITEM;

-- The names of lookup entries come through scalar sub-selects, which a deep OFFSET skips without
-- evaluating, rather than through joins. restricted is 0 only for what a client may change: the
-- upload folder and the objects CreateObject made in it (and never for a row with the restricted
-- bit); every scanned file, folder and root is 1. The upload folder's id is an uncorrelated scalar
-- sub-select, read once per statement (an IN list of it would build a table per statement, which
-- costs more than the row a BrowseMetadata reads).
CREATE VIEW DLNA AS SELECT
  ITEM.id                  AS id,                  -- 0
  ITEM.parentID            AS parentID,            -- 1
  ITEM.flags               AS flags,               -- 2
  ITEM.title               AS title,               -- 3
  ITEM.size                AS size,                -- 4
  ITEM.date                AS date,                -- 5
  ITEM.duration            AS duration,            -- 6
  ITEM.resolution          AS resolution,          -- 7
  ITEM.bitrate             AS bitrate,             -- 8
  ITEM.sampleFrequency     AS sampleFrequency,     -- 9
  ITEM.nrAudioChannels     AS nrAudioChannels,     -- 10
  ITEM.bitsPerSample       AS bitsPerSample,       -- 11
  ITEM.originalTrackNumber AS originalTrackNumber, -- 12
  ITEM.lastModify          AS lastModify,          -- 13
  ITEM.exID_GENRE          AS genre_id,            -- 14
  (SELECT name FROM GENRES WHERE exID = ITEM.exID_GENRE)         AS genre,     -- 15
  ITEM.exID_ARTIST         AS artist_id,           -- 16
  (SELECT name FROM ARTISTS WHERE exID = ITEM.exID_ARTIST)       AS artist,    -- 17
  ITEM.exID_ALBUM          AS album_id,            -- 18
  (SELECT name FROM ALBUMS WHERE exID = ITEM.exID_ALBUM)         AS album,     -- 19
  CAST((ITEM.flags & 128) != 0 OR
       coalesce((SELECT id FROM UPLOAD_FOLDER) NOT IN (ITEM.id, ITEM.parentID), 1) AS INTEGER) AS restricted, -- 20
  ITEM.fileName            AS fileName,            -- 21
  (SELECT name FROM CREATORS WHERE exID = ITEM.exID_CREATOR)     AS creator,   -- 22
  (SELECT name FROM ACTORS WHERE exID = ITEM.exID_ACTOR)         AS actor,     -- 23
  (SELECT name FROM AUTHORS WHERE exID = ITEM.exID_AUTHOR)       AS author,    -- 24
  (SELECT name FROM DIRECTORS WHERE exID = ITEM.exID_DIRECTOR)   AS director,  -- 25
  (SELECT name FROM PRODUCERS WHERE exID = ITEM.exID_PRODUCER)   AS producer,  -- 26
  (SELECT name FROM PUBLISHERS WHERE exID = ITEM.exID_PUBLISHER) AS publisher, -- 27
  ITEM.flags               AS protocolInfo,        -- 28: the profile id; sorting by it groups formats
  'STANDARD'               AS recordQuality,       -- 29: upnp:recordQuality of every item
  CAST(ITEM.flags & 127 AS INTEGER) AS class        -- 30: the class number; sorting by it groups classes
FROM ITEM;
