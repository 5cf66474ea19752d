// The catalogue of the Search tests; see search_library.h.
#include "search_library.h"

#include <gtest/gtest.h>
#include <mdb_platform.h>

namespace searchtest {

namespace {

// Profile ids (flags words) of the reference profile library: family code + (number << 16).
constexpr int32_t kMp3 = 11;                        // audio/mpeg
constexpr int32_t kLpcm = 11 + (2 << 16);           // audio/L16
constexpr int32_t kAacIso320 = 11 + (3 << 16);      // audio/mp4
constexpr int32_t kMpegPsPal = 268;                 // video/mpeg
constexpr int32_t kAvcMp4 = 268 + (7 << 16);        // video/mp4
constexpr int32_t kJpegLrg = 525;                   // image/jpeg
constexpr int32_t kJpegMed = 525 + (1 << 16);       // image/jpeg
constexpr int32_t kPngTn = 525 + (5 << 16);         // image/png

constexpr long long Resolution(long long width, long long height) { return (height << 32) + width; }
constexpr long long Seconds(long long s) { return s * 1000000; }

}  // namespace

SearchLibrary::SearchLibrary() {
    // Lookup entries: ids in insertion order.
    EXPECT_EQ(m_cat.lookup("GENRES", "Rock"), kGenreRock);
    EXPECT_EQ(m_cat.lookup("GENRES", "Jazz"), kGenreJazz);
    EXPECT_EQ(m_cat.lookup("GENRES", "It's Pop"), kGenrePop);
    long long queen = m_cat.lookup("ARTISTS", "Queen");
    long long davis = m_cat.lookup("ARTISTS", "Miles Davis");
    long long beatles = m_cat.lookup("ARTISTS", "The Beatles");
    long long opera = m_cat.lookup("ALBUMS", "A Night at the Opera");
    long long blue = m_cat.lookup("ALBUMS", "Kind of Blue");
    long long abbey = m_cat.lookup("ALBUMS", "Abbey Road");
    long long holidays = m_cat.lookup("ALBUMS", "Holidays");
    long long anna = m_cat.lookup("CREATORS", "Anna Lind");

    auto folder = [&](long long parent, const std::string &name, int32_t bits) {
        mdbtest::ItemValues v;
        v.parentId = parent;
        v.flags = static_cast<int32_t>(MDB_CLASS_FOLDER) | bits;
        v.title = v.fileName = name;
        return add(v);
    };
    long long root = folder(0, "media", 0x800 | 0x1000 | 0x2000);
    long long video = folder(root, "video", 0x1000);
    long long photos = folder(root, "photos", 0x2000);
    folder(root, "empty", 0);
    EXPECT_EQ(folder(root, "music", 0x800), kMusicFolder);

    auto music = [&](const std::string &title, int32_t profile, long long artist, long long album, long long genre,
                     const std::string &date, long long seconds) {
        mdbtest::ItemValues v;
        v.parentId = kMusicFolder;
        v.flags = profile;
        v.title = title;
        v.fileName = title + ".mp3";
        v.size = 4000000;
        v.date = date;
        v.duration = Seconds(seconds);
        v.artist = artist;
        v.album = album;
        v.genre = genre;
        add(v);
    };
    music("Bohemian Rhapsody", kMp3, queen, opera, kGenreRock, "1975-10-31", 355);
    music("Love of My Life", kMp3, queen, opera, kGenreRock, "1975-11-21", 219);
    music("So What", kLpcm, davis, blue, kGenreJazz, "1959-08-17", 562);
    music("Blue in Green", kAacIso320, davis, blue, kGenreJazz, "1959-08-17", 337);
    music("Come Together", kMp3, beatles, abbey, kGenrePop, "1969-09-26", 259);
    music("Something", kMp3, beatles, abbey, kGenrePop, "1969-09-26", 182);

    auto clip = [&](long long parent, const std::string &title, int32_t profile, long long resolution,
                    long long seconds, const std::string &date, long long artist, long long album, long long creator) {
        mdbtest::ItemValues v;
        v.parentId = parent;
        v.flags = profile;
        v.title = title;
        v.fileName = title + ".bin";
        v.size = 1000000;
        v.date = date;
        v.resolution = resolution;
        v.duration = Seconds(seconds);
        v.artist = artist;
        v.album = album;
        v.creator = creator;
        add(v);
    };
    clip(video, "Sea Trip", kMpegPsPal, Resolution(1280, 720), 3600, "2012-07-01", 0, holidays, anna);
    clip(video, "Lovely Clip", kAvcMp4, Resolution(1920, 1080), 30, "2015-01-01", queen, holidays, 0);
    clip(video, "Short", kMpegPsPal, Resolution(640, 480), 120, "2003-03-03", 0, holidays, 0);
    clip(photos, "Beach", kJpegLrg, Resolution(4000, 3000), 0, "2012-07-02", 0, 0, 0);
    clip(photos, "Sea Sunset", kJpegMed, Resolution(1024, 768), 0, "2012-07-03", 0, 0, anna);
    clip(photos, "Logo", kPngTn, Resolution(64, 64), 0, "2001-01-01", 0, 0, 0);
}

long long SearchLibrary::add(const mdbtest::ItemValues &v) {
    long long id = m_cat.addItem(v);
    m_ids[v.title] = id;
    m_classes[v.title] = v.flags & 127;
    return id;
}

long long SearchLibrary::id(const std::string &title) const {
    auto it = m_ids.find(title);
    EXPECT_NE(it, m_ids.end()) << "no row titled " << title;
    return it != m_ids.end() ? it->second : -1;
}

std::set<std::string> SearchLibrary::titles() const {
    std::set<std::string> out;
    for (const auto &entry : m_ids) {
        out.insert(entry.first);
    }
    return out;
}

std::set<std::string> SearchLibrary::titlesOfClass(int cls) const {
    std::set<std::string> out;
    for (const auto &entry : m_classes) {
        if (entry.second == cls) {
            out.insert(entry.first);
        }
    }
    return out;
}

std::vector<std::string> WrittenTitles(const mdbtest::Action &action) {
    std::vector<std::string> out;
    for (IXML_Element *el : action.objects()) {
        out.push_back(mdbtest::childText(el, "dc:title"));
    }
    return out;
}

std::set<std::string> WrittenTitleSet(const mdbtest::Action &action) {
    std::vector<std::string> v = WrittenTitles(action);
    return std::set<std::string>(v.begin(), v.end());
}

std::vector<std::string> WrittenIds(const mdbtest::Action &action) {
    std::vector<std::string> out;
    for (IXML_Element *el : action.objects()) {
        out.push_back(mdbtest::attr(el, "id"));
    }
    return out;
}

}  // namespace searchtest
