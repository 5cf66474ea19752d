// Names for the numbers of the reference adaptation tables: upnp:class numbers, search class sets,
// property table positions and the static container ids. Shared by the adaptation sources and
// their tests; the library itself knows only the numbers its own contract fixes.
#pragma once

#include <mdb_platform.h>

#include <cstdint>

namespace mdbadapt {

// upnp:class numbers, 1-based into g_apcObjClassStrings. Up to 10 containers, from 11 items.
enum ObjClass : uint32_t {
    kClassContainer = 1,        // object.container
    kClassStorageFolder = 2,    // object.container.storageFolder: a directory on disk
    kClassPhotoAlbum = 3,       // object.container.album.photoAlbum
    kClassMusicGenre = 4,       // object.container.genre.musicGenre: values of the genre category
    kClassMusicArtist = 5,      // object.container.person.musicArtist: values of the artist category
    kClassMusicAlbum = 6,       // object.container.album.musicAlbum: values of the album category
    kClassPerson = 7,           // object.container.person: values of the video creator category
    kClassMovieGenre = 8,       // object.container.genre.movieGenre
    kClassAlbum = 9,            // object.container.album: values of the video album category
    kClassPlaylist = 10,        // object.container.playlistContainer
    kClassMusicTrack = 11,      // object.item.audioItem.musicTrack
    kClassVideoItem = 12,       // object.item.videoItem
    kClassPhoto = 13,           // object.item.imageItem.photo
    kClassCount = 13
};

// Search class sets: ucSearchClass values of 128 and above. Each names the classes that a Search
// below such a container can answer with.
enum SearchClassSet : uint32_t {
    kSearchAllMedia = 128,      // music tracks, video items, photos
    kSearchMusicGenres = 129,   // music genres and their tracks
    kSearchMusicArtists = 130,  // music artists and their tracks
    kSearchMusicAlbums = 131,   // music albums and their tracks
    kSearchVideoCreators = 132, // video creators and their items
    kSearchVideoAlbums = 133,   // video albums and their items
    kSearchMusicFolders = 134,  // folders and music tracks
    kSearchVideoFolders = 135,  // folders and video items
    kSearchPictureFolders = 136,// folders and photos
    kSearchSetEnd = 137         // first value that is no set
};

// Positions in g_astDlnaCols. Those the library relies on are named in mdb_platform.h; the others
// are this table's own order.
enum DlnaColIndex : uint32_t {
    kColId = MDB_COL_IDX_ID,
    kColParentId = MDB_COL_IDX_PARENT,
    kColClass = MDB_COL_IDX_CLASS,
    kColTitle = MDB_COL_IDX_TITLE,
    kColDate = 4,
    kColCreator = 5,
    kColArtist = 6,
    kColGenre = 7,
    kColDuration = MDB_COL_IDX_DURATION,
    kColAlbum = 9,
    kColTrackNumber = 10,
    kColResolution = MDB_COL_IDX_RESOLUTION,
    kColSize = 12,
    kColBitrate = 13,
    kColSampleFrequency = 14,
    kColAudioChannels = 15,
    kColBitsPerSample = 16,
    kColActor = 17,
    kColAuthor = 18,
    kColDirector = 19,
    kColProducer = 20,
    kColPublisher = 21,
    kColSearchable = 22,
    kColRestricted = MDB_COL_IDX_RESTRICTED,
    kColStorageUsed = 24,
    kColWriteStatus = 25,
    kColSearchClass = 26,
    kColChildCount = 27,
    kColProtocolInfo = MDB_COL_IDX_PROTOCOL_INFO,
    kColImportUri = 29,
    kColDlnaManaged = MDB_COL_IDX_MANAGED,
    kColRes = 31,
    kColRecordQuality = MDB_COL_IDX_STANDARD,
    kColRefId = 33,
    kColCount = 34
};

// usId values of the static containers.
enum ContainerId : uint16_t {
    kIdRoot = 0,
    kIdMusic = 1,
    kIdVideo = 2,
    kIdPictures = 3,
    kIdAllMusic = 256,
    kIdMusicGenres = 257,
    kIdMusicArtists = 258,
    kIdMusicAlbums = 262,
    kIdMusicFolders = 264,
    kIdAllVideo = 512,
    kIdVideoCreators = 513,
    kIdVideoAlbums = 514,
    kIdVideoFolders = 516,
    kIdAllPictures = 768,
    kIdPictureFolders = 771
};

} // namespace mdbadapt
