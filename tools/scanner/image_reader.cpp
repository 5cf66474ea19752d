// Pictures: the size from the image header (libjpeg for JPEG, libpng for PNG, libavformat for GIF
// and BMP) and, for JPEG, the EXIF date taken, description and artist through libexif. Only the
// headers are read, never the pixels, so a picture costs a few small reads.
#include "media_info.h"

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <string>

#ifdef MDB_HAVE_LIBEXIF
#include <libexif/exif-data.h>
#endif
#ifdef MDB_HAVE_LIBJPEG
#include <jpeglib.h>
#endif
#ifdef MDB_HAVE_LIBPNG
#include <png.h>
#endif

namespace mdbscan {

// Defined with the video reader: size of a picture that FFmpeg can decode (GIF, BMP).
bool ReadPictureSizeWithAvformat(const std::string &path, MediaInfo &info, std::string &error);

namespace {

std::string ImageFormatOfName(const std::string &path) {
    std::string::size_type dot = path.rfind('.');
    std::string ext = dot == std::string::npos ? std::string() : path.substr(dot + 1);
    for (char &c : ext) {
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    }
    return ext == "jpg" ? "jpeg" : ext;
}

#ifdef MDB_HAVE_LIBJPEG
struct JpegErrorTrap {
    jpeg_error_mgr manager;
    jmp_buf jump;
    char message[JMSG_LENGTH_MAX];
};

void JpegFail(j_common_ptr cinfo) {
    JpegErrorTrap *trap = reinterpret_cast<JpegErrorTrap *>(cinfo->err);
    (*cinfo->err->format_message)(cinfo, trap->message);
    longjmp(trap->jump, 1);
}

void JpegQuiet(j_common_ptr, int) {}

/* Width and height from the JPEG frame header. No C++ object lives in this frame across the
 * setjmp, so the long jump of libjpeg's error exit skips no destructor. */
bool ReadJpegSize(const std::string &path, MediaInfo &info, std::string &error) {
    FILE *fp = fopen(path.c_str(), "rb");
    if (fp == nullptr) {
        error = strerror(errno);
        return false;
    }
    jpeg_decompress_struct cinfo;
    JpegErrorTrap trap;
    trap.message[0] = '\0';
    cinfo.err = jpeg_std_error(&trap.manager);
    trap.manager.error_exit = JpegFail;
    trap.manager.emit_message = JpegQuiet;
    if (setjmp(trap.jump) != 0) {
        jpeg_destroy_decompress(&cinfo);
        fclose(fp);
        error = std::string("not a valid JPEG file (") + trap.message + ")";
        return false;
    }
    jpeg_create_decompress(&cinfo);
    jpeg_stdio_src(&cinfo, fp);
    jpeg_read_header(&cinfo, TRUE);
    info.width = cinfo.image_width;
    info.height = cinfo.image_height;
    jpeg_destroy_decompress(&cinfo);
    fclose(fp);
    return true;
}
#endif

#ifdef MDB_HAVE_LIBPNG
struct PngErrorTrap {
    char message[128];
};

void PngFail(png_structp png, png_const_charp message) {
    PngErrorTrap *trap = static_cast<PngErrorTrap *>(png_get_error_ptr(png));
    snprintf(trap->message, sizeof trap->message, "%s", message);
    png_longjmp(png, 1);
}

void PngQuiet(png_structp, png_const_charp) {}

/* Width and height from the PNG header chunk; the same rule about the long jump holds. */
bool ReadPngSize(const std::string &path, MediaInfo &info, std::string &error) {
    FILE *fp = fopen(path.c_str(), "rb");
    if (fp == nullptr) {
        error = strerror(errno);
        return false;
    }
    PngErrorTrap trap;
    trap.message[0] = '\0';
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &trap, PngFail, PngQuiet);
    png_infop pngInfo = png != nullptr ? png_create_info_struct(png) : nullptr;
    if (png == nullptr || pngInfo == nullptr) {
        png_destroy_read_struct(&png, &pngInfo, nullptr);
        fclose(fp);
        error = "out of memory";
        return false;
    }
    if (setjmp(png_jmpbuf(png)) != 0) {
        png_destroy_read_struct(&png, &pngInfo, nullptr);
        fclose(fp);
        error = std::string("not a valid PNG file (") + trap.message + ")";
        return false;
    }
    png_init_io(png, fp);
    png_read_info(png, pngInfo);
    info.width = png_get_image_width(png, pngInfo);
    info.height = png_get_image_height(png, pngInfo);
    png_destroy_read_struct(&png, &pngInfo, nullptr);
    fclose(fp);
    return true;
}
#endif

#ifdef MDB_HAVE_LIBEXIF
std::string ExifText(ExifData *data, ExifIfd ifd, ExifTag tag) {
    ExifEntry *entry = exif_content_get_entry(data->ifd[ifd], tag);
    if (entry == nullptr) {
        return std::string();
    }
    char value[256];
    value[0] = '\0';
    exif_entry_get_value(entry, value, sizeof value);
    std::string s = value;
    std::string::size_type last = s.find_last_not_of(" \t\r\n");
    return last == std::string::npos ? std::string() : s.substr(0, last + 1);
}

// "2019:07:14 10:30:00" becomes "2019-07-14T10:30:00"; other texts give "".
std::string ExifDateToIso(const std::string &exif) {
    unsigned y, mo, d, h, mi, s;
    if (sscanf(exif.c_str(), "%4u:%2u:%2u %2u:%2u:%2u", &y, &mo, &d, &h, &mi, &s) != 6 || y == 0 || mo == 0 ||
        mo > 12 || d == 0 || d > 31 || h > 23 || mi > 59 || s > 60) {
        return std::string();
    }
    char iso[32];
    snprintf(iso, sizeof iso, "%04u-%02u-%02uT%02u:%02u:%02u", y, mo, d, h, mi, s);
    return iso;
}

void ReadExif(const std::string &path, MediaInfo &info) {
    ExifData *data = exif_data_new_from_file(path.c_str());
    if (data == nullptr) {
        return;
    }
    std::string taken = ExifDateToIso(ExifText(data, EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL));
    if (taken.empty()) {
        taken = ExifDateToIso(ExifText(data, EXIF_IFD_0, EXIF_TAG_DATE_TIME));
    }
    info.date = taken;
    info.title = ExifText(data, EXIF_IFD_0, EXIF_TAG_IMAGE_DESCRIPTION);
    info.creator = ExifText(data, EXIF_IFD_0, EXIF_TAG_ARTIST);
    exif_data_unref(data);
}
#endif

}  // namespace

/* Size for every picture format; EXIF only for JPEG. A picture whose header can't be read fails. */
bool ReadImageInfo(const std::string &path, MediaInfo &info, std::string &error) {
    info.format = ImageFormatOfName(path);
    if (info.format == "jpeg") {
#ifdef MDB_HAVE_LIBJPEG
        if (!ReadJpegSize(path, info, error)) {
            return false;
        }
#endif
#ifdef MDB_HAVE_LIBEXIF
        ReadExif(path, info);
#endif
        return true;
    }
    if (info.format == "png") {
#ifdef MDB_HAVE_LIBPNG
        return ReadPngSize(path, info, error);
#else
        return true;
#endif
    }
    return ReadPictureSizeWithAvformat(path, info, error);
}

}  // namespace mdbscan
