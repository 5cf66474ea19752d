// mdb-exif-stamp: gives a JPEG picture of the sample library EXIF data (date taken, date,
// description, artist), as a camera would, so that the scanner's photo reader has something to
// read. The EXIF block is built with libexif and written as an APP1 segment right behind the
// JPEG start-of-image marker.
#include <libexif/exif-data.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace {

/* Adds an ASCII entry to an IFD, its text copied into memory libexif owns. */
bool AddText(ExifData *data, ExifIfd ifd, ExifTag tag, const std::string &text) {
    ExifMem *mem = exif_mem_new_default();
    ExifEntry *entry = mem != nullptr ? exif_entry_new_mem(mem) : nullptr;
    const size_t size = text.size() + 1;
    void *bytes = entry != nullptr ? exif_mem_alloc(mem, static_cast<ExifLong>(size)) : nullptr;
    bool ok = bytes != nullptr;
    if (ok) {
        memcpy(bytes, text.c_str(), size);
        entry->data = static_cast<unsigned char *>(bytes);
        entry->size = static_cast<unsigned int>(size);
        entry->components = size;
        entry->format = EXIF_FORMAT_ASCII;
        entry->tag = tag;
        exif_content_add_entry(data->ifd[ifd], entry);
    }
    if (entry != nullptr) {
        exif_entry_unref(entry);
    }
    if (mem != nullptr) {
        exif_mem_unref(mem);
    }
    return ok;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 3 || argc > 5) {
        fprintf(stderr,
                "usage: %s FILE.jpg \"YYYY:MM:DD HH:MM:SS\" [DESCRIPTION [ARTIST]]\n"
                "Writes EXIF data (date taken, description, artist) into a JPEG file that has none.\n",
                argv[0]);
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    const std::string jpeg = content.str();
    if (!in || jpeg.size() < 4 || static_cast<unsigned char>(jpeg[0]) != 0xFF ||
        static_cast<unsigned char>(jpeg[1]) != 0xD8) {
        fprintf(stderr, "%s: %s is not a JPEG file\n", argv[0], argv[1]);
        return 1;
    }
    ExifData *data = exif_data_new();
    if (data == nullptr) {
        return 1;
    }
    exif_data_set_byte_order(data, EXIF_BYTE_ORDER_INTEL);
    bool ok = AddText(data, EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL, argv[2]) &&
              AddText(data, EXIF_IFD_0, EXIF_TAG_DATE_TIME, argv[2]);
    if (ok && argc > 3) {
        ok = AddText(data, EXIF_IFD_0, EXIF_TAG_IMAGE_DESCRIPTION, argv[3]);
    }
    if (ok && argc > 4) {
        ok = AddText(data, EXIF_IFD_0, EXIF_TAG_ARTIST, argv[4]);
    }
    unsigned char *block = nullptr;
    unsigned int blockSize = 0;
    if (ok) {
        exif_data_save_data(data, &block, &blockSize);
    }
    exif_data_unref(data);
    // An APP1 segment's length field counts itself (2 bytes) and must fit 16 bits.
    if (block == nullptr || blockSize == 0 || blockSize + 2 > 0xFFFF) {
        free(block);
        fprintf(stderr, "%s: the EXIF data could not be built\n", argv[0]);
        return 1;
    }
    std::string out = jpeg.substr(0, 2);
    out += static_cast<char>(0xFF);
    out += static_cast<char>(0xE1);
    out += static_cast<char>(((blockSize + 2) >> 8) & 0xFF);
    out += static_cast<char>((blockSize + 2) & 0xFF);
    out.append(reinterpret_cast<const char *>(block), blockSize);
    out += jpeg.substr(2);
    free(block);
    std::ofstream file(argv[1], std::ios::binary | std::ios::trunc);
    file << out;
    if (!file) {
        fprintf(stderr, "%s: %s could not be written\n", argv[0], argv[1]);
        return 1;
    }
    return 0;
}
