// mdb_bench_tag_tree: the music of the server benchmark's media tree. Copies one short MP3 file
// COUNT times below DIR and gives every copy ID3v2 tags of its own:
//   DIR/Big Folder/           the first BIG tracks, in one folder
//   DIR/Folder NNN/           the rest, 100 per folder
// 2,000 albums of 25 tracks, 500 artists of 4 albums, 30 genres; titles of three words from a
// fixed vocabulary, one in a hundred holding the word "Fabco" (so that contains "abc" finds 1%).
// The same arguments always give the same tree.
#include <taglib/id3v2tag.h>
#include <taglib/mpegfile.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

constexpr const char *kWords[] = {
    "amber", "blue",  "river",  "night",  "song",  "dream",  "light", "storm", "silver", "morning", "echo",
    "winter", "heart", "shadow", "golden", "road",  "summer", "fire",  "ocean", "quiet",  "wild",    "rain",
    "moon",   "city",  "glass",  "green",  "stone", "paper",  "dance", "north", "velvet", "thunder", "smoke",
    "garden", "mirror", "lonely", "bright", "falling", "crimson", "harbor", "dust", "wire", "sugar", "iron"};
constexpr unsigned kWordCount = sizeof kWords / sizeof kWords[0];

// A small deterministic generator, so that every run makes the same titles.
unsigned Next(unsigned long long &state) {
    state = state * 6364136223846793005ull + 1442695040888963407ull;
    return static_cast<unsigned>(state >> 33);
}

std::string Capital(std::string word) {
    word[0] = static_cast<char>(word[0] - 'a' + 'A');
    return word;
}

std::string Title(unsigned track, unsigned long long &state) {
    std::string title;
    for (int w = 0; w < 3; ++w) {
        title += (w ? " " : "") + Capital(kWords[Next(state) % kWordCount]);
    }
    return track % 100 == 7 ? title + " Fabco" : title;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: %s BASE.mp3 DIR COUNT BIG\n", argv[0]);
        return 2;
    }
    namespace fs = std::filesystem;
    const fs::path base = argv[1], dir = argv[2];
    const unsigned count = static_cast<unsigned>(std::strtoul(argv[3], nullptr, 10));
    const unsigned big = static_cast<unsigned>(std::strtoul(argv[4], nullptr, 10));
    unsigned long long state = 1;
    for (unsigned i = 0; i < count; ++i) {
        char folder[32] = "Big Folder";
        if (i >= big) {
            std::snprintf(folder, sizeof folder, "Folder %03u", (i - big) / 100);
        }
        const fs::path path = dir / folder / ("Track " + std::to_string(i) + ".mp3");
        std::error_code error;
        fs::create_directories(path.parent_path(), error);
        if (!fs::copy_file(base, path, fs::copy_options::overwrite_existing, error)) {
            std::fprintf(stderr, "%s: %s\n", path.c_str(), error.message().c_str());
            return 1;
        }
        const unsigned album = i / 25 % 2000, artist = album % 500;
        TagLib::MPEG::File file(path.c_str(), false);
        TagLib::ID3v2::Tag *tag = file.ID3v2Tag(true);
        tag->setTitle(Title(i, state));
        tag->setArtist("Artist " + TagLib::String(std::to_string(artist)));
        tag->setAlbum("Album " + TagLib::String(std::to_string(album)));
        tag->setGenre("Genre " + TagLib::String(std::to_string(artist % 30)));
        tag->setTrack(i % 25 + 1);
        tag->setYear(1970 + album % 50);
        if (!file.save(TagLib::MPEG::File::ID3v2)) {
            std::fprintf(stderr, "%s: the tags cannot be written\n", path.c_str());
            return 1;
        }
    }
    return 0;
}
