// A synthetic catalogue shaped like a real music library, written through the library's store
// operations: one folder of 10,000 tracks, the other tracks in folders of about 100, albums,
// artists and genres in realistic numbers, photos and some video, then ANALYZE as the scanner does.
#pragma once

#include <mdb.h>

#include <string>

namespace mdbbench {

struct CatalogueShape {
    long long tracks = 50000;       // music items, of which bigFolder in one folder
    long long bigFolder = 10000;
    long long perFolder = 100;
    long long albums = 2000;
    long long artists = 500;
    long long genres = 30;
    long long photos = 2000;
    long long videos = 500;
    // About one title in this many contains the word "Fabcourt" (so "abc"); no other word has "abc".
    long long abcEvery = 100;
};

struct SyntheticCatalogue {
    long long rows = 0;         // ITEM rows written (folders included)
    double fillSeconds = 0;     // adding the rows, lookup entries and folder bits
    double analyzeSeconds = 0;
    long long bigFolderId = 0;  // the folder of bigFolder tracks
    long long sampleItemId = 0; // a track in the middle of the big folder
    long long uploadFolderId = 0;
};

// Builds the catalogue into db (made with QRV_MDB_DbInit). Returns MDB_OK or the first failure.
uint32_t BuildSyntheticCatalogue(sqlite3 *db, const CatalogueShape &shape, SyntheticCatalogue &out);

}  // namespace mdbbench
