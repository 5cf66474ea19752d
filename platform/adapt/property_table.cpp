// The property table of the reference platform: every DIDL-Lite property the server can write,
// the DLNA view column it is filled from, how it is written and how search criteria may test it.
//
// Layout rules the table keeps (its consistency test checks each one):
//  - the positions the library and the search translation rely on: 0 @id, 1 @parentID,
//    2 upnp:class, 3 dc:title, 8 res@duration, 11 res@resolution, 23 @restricted,
//    28 res@protocolInfo, 30 @dlna:dlnaManaged (always written, built here from the row's flags),
//    32 upnp:recordQuality (written with the constant "STANDARD");
//  - usColIdx is the position of pcColName in a "select * from DLNA" row; properties built by
//    QRV_MDB_AdaptColItemBuilder without a column of their own read the row id (position 0);
//  - every property that is not container-only (0x10) names a real DLNA view column, since a
//    SortCriteria key and a search comparison write pcColName into the SQL text;
//  - no property name is a prefix of a later one ("res" stands after every "res@..."), because
//    the search criteria syntax takes the first property whose name begins the text;
//  - duration and resolution are stored in units clients do not read (microseconds, height<<32 +
//    width) and are therefore written by the builder, as "H:MM:SS.mmm" and "WIDTHxHEIGHT";
//  - the optional item elements (dc:date, dc:creator, upnp:artist, upnp:genre, upnp:album,
//    upnp:originalTrackNumber and the people of 17-21) go through the builder, which writes them
//    only when the row has a value: an answer spends no element on a property the row lacks;
//  - res@protocolInfo, res@importUri and res are res attributes (0x8) that the builder leaves
//    alone: asking for one of them makes the library write the res element with its own
//    protocolInfo (and importUri while an upload is pending).
//
// Existence kinds (usSearchType): 0 no statement, 1 every row, 2 no row, 3 and above a set of item
// classes: 4 music (11), 8 video (12), 16 pictures (13).
#include <mdb_platform.h>

#include "adapt_ids.h"

using namespace mdbadapt;

namespace {

constexpr uint16_t kAlways = MDB_COL_ALWAYS;
constexpr uint16_t kBuilder = MDB_COL_ADAPT_BUILDER;
constexpr uint16_t kElement = MDB_COL_ELEMENT;
constexpr uint16_t kResAttr = MDB_COL_RES_ATTRIBUTE;
constexpr uint16_t kContainerOnly = MDB_COL_CONTAINER_ONLY;
constexpr uint16_t kObjectAttr = 0;

// Existence kinds.
constexpr uint16_t kNoStatement = MDB_EXISTS_UNKNOWN;
constexpr uint16_t kEveryRow = MDB_EXISTS_EVERY_ROW;
constexpr uint16_t kNoRow = MDB_EXISTS_NO_ROW;
constexpr uint16_t kMusic = MDB_EXISTS_MUSIC;
constexpr uint16_t kVideo = MDB_EXISTS_VIDEO;
constexpr uint16_t kPictures = MDB_EXISTS_PICTURE;
constexpr uint16_t kAudioVisual = kMusic | kVideo;
constexpr uint16_t kVisual = kVideo | kPictures;
constexpr uint16_t kAllItems = kMusic | kVideo | kPictures;

// Positions of the DLNA view's columns (platform/schema/create_db.sql).
enum ViewColumn : uint16_t {
    kViewId = 0,
    kViewParentId = 1,
    kViewFlags = 2,
    kViewTitle = 3,
    kViewSize = 4,
    kViewDate = 5,
    kViewDuration = 6,
    kViewResolution = 7,
    kViewBitrate = 8,
    kViewSampleFrequency = 9,
    kViewAudioChannels = 10,
    kViewBitsPerSample = 11,
    kViewTrackNumber = 12,
    kViewLastModify = 13,
    kViewGenreId = 14,
    kViewGenre = 15,
    kViewArtistId = 16,
    kViewArtist = 17,
    kViewAlbumId = 18,
    kViewAlbum = 19,
    kViewRestricted = 20,
    kViewFileName = 21,
    kViewCreator = 22,
    kViewActor = 23,
    kViewAuthor = 24,
    kViewDirector = 25,
    kViewProducer = 26,
    kViewPublisher = 27,
    kViewProtocolInfo = 28,
    kViewRecordQuality = 29,
    kViewClass = 30,
};

} // namespace

extern "C" {

const MdbDlnaCol g_astDlnaCols[] = {
    /* 0 */ {"id", "@id", kAlways | kObjectAttr, kViewId, MdbCmpEqualOp, kEveryRow},
    /* 1 */ {"parentID", "@parentID", kAlways | kObjectAttr, kViewParentId, nullptr, kEveryRow},
    /* 2 */ {"class", "upnp:class", kAlways | kElement, kViewClass, MdbCmpDerivedOp, kNoStatement},
    /* 3 */ {"title", "dc:title", kAlways | kElement, kViewTitle, MdbCmpStringOp, kEveryRow},
    /* 4 */ {"date", "dc:date", kElement | kBuilder, kViewDate, MdbCmpRelOp, kAllItems},
    /* 5 */ {"creator", "dc:creator", kElement | kBuilder, kViewCreator, MdbCmpStringOp, kAllItems},
    /* 6 */ {"artist", "upnp:artist", kElement | kBuilder, kViewArtist, MdbCmpStringOp, kAudioVisual},
    /* 7 */ {"genre", "upnp:genre", kElement | kBuilder, kViewGenre, MdbCmpStringOp, kMusic},
    /* 8 */ {"duration", "res@duration", kResAttr | kBuilder, kViewDuration, MdbCmpRelOp, kNoStatement},
    /* 9 */ {"album", "upnp:album", kElement | kBuilder, kViewAlbum, MdbCmpStringOp, kAudioVisual},
    /* 10 */ {"originalTrackNumber", "upnp:originalTrackNumber", kElement | kBuilder, kViewTrackNumber, MdbCmpRelOp,
              kMusic},
    /* 11 */ {"resolution", "res@resolution", kResAttr | kBuilder, kViewResolution, MdbCmpRelOp, kVisual},
    /* 12 */ {"size", "res@size", kResAttr, kViewSize, MdbCmpRelOp, kAllItems},
    /* 13 */ {"bitrate", "res@bitrate", kResAttr, kViewBitrate, MdbCmpRelOp, kAudioVisual},
    /* 14 */ {"sampleFrequency", "res@sampleFrequency", kResAttr, kViewSampleFrequency, MdbCmpRelOp, kAudioVisual},
    /* 15 */ {"nrAudioChannels", "res@nrAudioChannels", kResAttr, kViewAudioChannels, MdbCmpRelOp, kAudioVisual},
    /* 16 */ {"bitsPerSample", "res@bitsPerSample", kResAttr, kViewBitsPerSample, MdbCmpRelOp, kMusic},
    /* 17 */ {"actor", "upnp:actor", kElement | kBuilder, kViewActor, MdbCmpStringOp, kVideo},
    /* 18 */ {"author", "upnp:author", kElement | kBuilder, kViewAuthor, MdbCmpStringOp, kAllItems},
    /* 19 */ {"director", "upnp:director", kElement | kBuilder, kViewDirector, MdbCmpStringOp, kVideo},
    /* 20 */ {"producer", "upnp:producer", kElement | kBuilder, kViewProducer, MdbCmpStringOp, kVideo},
    /* 21 */ {"publisher", "dc:publisher", kElement | kBuilder, kViewPublisher, MdbCmpStringOp, kAllItems},
    /* 22 */ {"searchable", "searchable", kContainerOnly | kBuilder | kObjectAttr, kViewId, nullptr, kNoRow},
    /* 23 */ {"restricted", "@restricted", kAlways | kObjectAttr, kViewRestricted, MdbCmpEqualOp, kEveryRow},
    /* 24 */ {"storageUsed", "upnp:storageUsed", kContainerOnly | kBuilder | kElement, kViewId, nullptr, kNoRow},
    /* 25 */ {"writeStatus", "upnp:writeStatus", kContainerOnly | kBuilder | kElement, kViewId, nullptr, kNoRow},
    /* 26 */ {"searchClass", "upnp:searchClass", kContainerOnly | kBuilder | kElement, kViewId, nullptr, kNoRow},
    /* 27 */ {"childCount", "@childCount", kContainerOnly | kBuilder | kObjectAttr, kViewId, nullptr, kNoRow},
    /* 28 */ {"protocolInfo", "res@protocolInfo", kResAttr | kBuilder, kViewProtocolInfo, MdbCmpStringOp, kAllItems},
    /* 29 */ {"id", "res@importUri", kResAttr | kBuilder, kViewId, nullptr, kNoRow},
    /* 30 */ {"dlna:dlnaManaged", "@dlna:dlnaManaged", kContainerOnly | kBuilder | kObjectAttr, kViewId, nullptr,
              kAllItems},
    /* 31 */ {"id", "res", kResAttr | kBuilder, kViewId, nullptr, kAllItems},
    /* 32 */ {"recordQuality", "upnp:recordQuality", kElement, kViewRecordQuality, MdbCmpStringOp, kAllItems},
    // No object refers to another: clients' "@refID exists false" keeps every row. Never written.
    /* 33 */ {"id", "@refID", MDB_COL_NOT_FILTERED | kObjectAttr, kViewId, nullptr, kNoRow},
};

const uint32_t g_ulNumOfDlnaCols = sizeof(g_astDlnaCols) / sizeof(g_astDlnaCols[0]);

} // extern "C"

static_assert(sizeof(g_astDlnaCols) / sizeof(g_astDlnaCols[0]) == kColCount,
              "property positions in adapt_ids.h and the table disagree");
