// The Browse and Search tests' catalogue (see library.h).
#include "library.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>

namespace mdbtest {

std::vector<DidlObject> ReadDidl(const std::string &xml, std::string *error) {
    xmlResetLastError();
    xmlDocPtr doc = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "answer.xml", "UTF-8",
                                  XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    const xmlError *e = xmlGetLastError();
    xmlNodePtr root = xmlDocGetRootElement(doc);
    std::string problem = e != nullptr ? e->message : "";
    if (problem.empty() && (root == nullptr || !xmlStrEqual(root->name, BAD_CAST "DIDL-Lite") || root->ns == nullptr ||
                            !xmlStrEqual(root->ns->href, BAD_CAST "urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/"))) {
        problem = "no DIDL-Lite root in its namespace";
    }
    auto text = [](xmlNodePtr node, const char *attribute = nullptr) {
        xmlChar *value = attribute != nullptr ? xmlGetProp(node, BAD_CAST attribute) : xmlNodeGetContent(node);
        std::string out = value != nullptr ? reinterpret_cast<const char *>(value) : "";
        xmlFree(value);
        return out;
    };
    std::vector<DidlObject> objects;
    for (xmlNodePtr object = xmlFirstElementChild(root); object != nullptr; object = xmlNextElementSibling(object)) {
        DidlObject o{reinterpret_cast<const char *>(object->name), text(object, "id"), "", "", text(object, "restricted")};
        for (xmlNodePtr child = xmlFirstElementChild(object); child != nullptr; child = xmlNextElementSibling(child)) {
            if (xmlStrEqual(child->name, BAD_CAST "title")) o.title = text(child);
            if (xmlStrEqual(child->name, BAD_CAST "res") && o.res.empty()) o.res = text(child);
        }
        objects.push_back(o);
    }
    xmlFreeDoc(doc);
    if (error != nullptr) *error = problem;
    EXPECT_TRUE(error != nullptr || problem.empty()) << problem << " in\n" << xml;
    return objects;
}

std::vector<std::string> TitlesOf(const std::vector<DidlObject> &objects) {
    std::vector<std::string> titles;
    for (const DidlObject &o : objects) titles.push_back(o.title);
    return titles;
}

Library::Library() {
    const uint32_t mp3 = ProfileFlags("audio/mpeg", "MP3"), lpcm = ProfileFlags("audio/L16", "LPCM"),
                   aac = ProfileFlags("audio/mp4", "AAC_ISO_320"), mpeg = ProfileFlags("video/mpeg", "MPEG_PS_PAL"),
                   avc = ProfileFlags("video/mp4", "AVC_MP4_HP_HD_AAC"),
                   unknown = ProfileFlags("video/x-msvideo", nullptr), jpeg = ProfileFlags("image/jpeg", "JPEG_LRG"),
                   png = ProfileFlags("image/png", "PNG_TN");
    const uint32_t F = MDB_CLASS_FOLDER, M = MDB_FLAGS_FOLDER_MUSIC, V = MDB_FLAGS_FOLDER_VIDEO,
                   P = MDB_FLAGS_FOLDER_PICTURE;
    const struct {
        const char *parent;  // file name of the parent row, "" for a root
        uint32_t flags;
        const char *file, *title = nullptr, *date = "", *genre = "", *artist = "", *album = "", *creator = "";
        long long seconds = 0, width = 0, height = 0;
    } rows[] = {
        {"", F | M | V | P, "/media/usb1_1"}, {"", F | M, "/media/sd2_1"}, {"", F, "/media/empty"},
        {"/media/usb1_1", F | M | P, "Music"}, {"Music", F | M, "Jazz"}, {"Music", F | P, "Covers"},
        {"/media/usb1_1", F | V | P, "Video"}, {"/media/usb1_1", F | P, "Photos"}, {"/media/usb1_1", F | M | P, "Mixed"},
        {"Jazz", mp3, "01 So What.mp3", "So What", "1959-08-17", "Jazz", "Miles Davis", "Kind of Blue", "", 562},
        {"Jazz", aac | MDB_FLAGS_RESTRICTED, "03 Blue in Green.m4a", "Blue in Green", "1959-08-18", "Jazz",
         "Miles Davis", "Kind of Blue", "", 337},
        {"Jazz", mp3, "Dave.Brubeck-Take.Five.mp3", "Take Five", "1959-12-14", "Jazz", "Dave Brubeck", "Time Out", "",
         324},
        {"Music", mp3, "tj.mp3", "Tom & Jerry <Live>", "2001-01-02", "Drum & Bass", "Roni Size & Reprazent",
         "New Forms", "", 250},
        {"Music", mp3, "quoted.mp3", "\"Quoted\" 'Title'", "1999-05-06", "Rock", "Wilco", "Summerteeth", "", 200},
        {"Music", mp3, "cafe.mp3", "Café Ünïcødé 日本語", "2010-10-10", "Jazz", "Ælfgifu", "Ånd & Sjel", "", 180},
        {"Music", lpcm, "live.wav", "Live at the Club", "2003-03-03", "Jazz", "Dave Brubeck", "At the Club", "", 600},
        {"Mixed", mp3, "interlude.mp3", "Interlude", "2005-03-04", "It's Pop", "Wilco", "Mixed Bag", "", 60},
        {"/media/sd2_1", mp3, "VOICE001", "Voice Memo", "", "Speech", "Me", "Memos"},
        {"Video", avc, "holiday.mp4", "Holiday 2019", "2019-08-01", "", "Family", "Holidays", "", 3600, 1920, 1080},
        {"Video", mpeg, "birthday.mpg", "Birthday", "2018-04-04", "", "Family", "Parties", "Anna Lind", 120, 1280, 720},
        {"Video", mpeg, "concert.mpg", "Concert <encore>", "2017-07-07", "", "Wilco", "Live Shows", "", 5400, 640, 480},
        {"Video", unknown, "capture.dat", "Raw Capture", "2016-06-06", "", "Family", "Tapes", "", 30},
        {"Video", jpeg, "poster.jpg", "Poster", "2019-07-31", "", "", "", "", 0, 1000, 1500},
        {"Photos", jpeg, "beach.jpg", "Beach", "2019-08-02", "", "", "", "Anna Lind", 0, 4000, 3000},
        {"Photos", jpeg, "alps.jpg", "Mountains & Lakes", "2019-08-03", "", "", "", "", 0, 1024, 768},
        {"Mixed", png, "cover.png", "Cover", "2005-03-05", "", "", "", "", 0, 100, 100},
        {"Covers", jpeg, "kob.jpg", "Kind of Blue (front)", "1959-09-01", "", "", "", "", 0, 600, 600},
    };
    m_catalogue.exec("BEGIN");  // one transaction: a commit per row would wait for the disk each time
    for (const char *genre : {"Jazz", "Drum & Bass", "Rock", "Unused"}) {  // "Unused" has no item
        m_values["GENRES"][genre] = m_catalogue.lookup("GENRES", genre);
    }
    auto value = [this](const char *table, const char *name) -> long long {
        std::map<std::string, long long> &ids = m_values[table];
        if (*name != '\0' && ids.count(name) == 0) ids[name] = m_catalogue.lookup(table, name);
        return *name == '\0' ? 0 : ids[name];
    };
    for (const auto &r : rows) {
        Row row;
        row.parentId = *r.parent != '\0' ? this->row(r.parent).id : 0;
        row.flags = static_cast<int32_t>(r.flags);
        row.fileName = r.file;
        row.title = r.title != nullptr ? r.title : r.file;
        row.date = r.date;
        row.size = 1000 + static_cast<long long>(m_rows.size());
        row.duration = r.seconds * 1000000;
        row.resolution = (r.height << 32) + r.width;
        row.genre = value("GENRES", r.genre);
        row.artist = value("ARTISTS", r.artist);
        row.album = value("ALBUMS", r.album);
        row.creator = value("CREATORS", r.creator);
        row.id = m_catalogue.addItem(row);
        m_rows.push_back(row);
    }
    m_catalogue.exec("COMMIT");
    EXPECT_STREQ(QRV_MDB_StatusName(QRV_MDB_DbGetRoots(db())), "MDB_OK");
}

Library::~Library() {
    // The root list belongs to the library; an empty catalogue leaves none behind.
    m_catalogue.exec("delete from ITEM");
    QRV_MDB_DbGetRoots(db());
}

const Row &Library::row(const std::string &file) const {
    auto it = std::find_if(m_rows.begin(), m_rows.end(), [&](const Row &r) { return r.fileName == file; });
    EXPECT_NE(it, m_rows.end()) << file;
    return it != m_rows.end() ? *it : m_rows.front();
}

std::vector<Row> Library::where(const std::function<bool(const Row &)> &keep) const {
    std::vector<Row> out;
    std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(out), keep);
    return out;
}

std::set<std::string> Library::titles(const std::function<bool(const Row &)> &keep) const {
    std::set<std::string> out;
    for (const Row &r : where(keep)) out.insert(r.title);
    return out;
}

}  // namespace mdbtest
