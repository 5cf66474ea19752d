// The browse tests' common ground (see library.h).
#include "library.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>

namespace {

const char *g_ipv4 = nullptr;
const char *g_ipv6 = nullptr;

// The flags word (profile id) of the first profile of class cls in the shipped profile library named
// name, or (name NULL) of an ordinary one, neither LPCM nor "Unknown"; 0 when there is none.
uint32_t FindProfile(uint32_t cls, const char *name) {
    for (uint32_t f = 0; f < g_ulNumOfMediaClasses; ++f) {
        const uint32_t code = g_astMediaClasses[f].ulFlagsCode;
        for (uint32_t j = 0; (code & MDB_FLAGS_CLASS_MASK) == cls && j < 60; ++j) {
            const MdbDlnaProfile *p = QRV_DLNA_GetProfileByProfileId(code + (j << 16));
            const std::string n = p != nullptr ? p->pcProfileName : "";
            if (p != nullptr && (name != nullptr ? n == name : n.rfind("LPCM", 0) != 0 && n != "Unknown")) {
                return code + (j << 16);
            }
        }
    }
    return 0;
}

}  // namespace

// The test program's definitions win over libupnp's at link time: the tests choose the server
// addresses without starting libupnp (which would open sockets).
extern "C" char *UpnpGetServerIpAddress(void) { return const_cast<char *>(g_ipv4); }
extern "C" char *UpnpGetServerIp6Address(void) { return const_cast<char *>(g_ipv6); }

namespace browsetest {

void SetServerAddresses(const char *ipv4, const char *ipv6) {
    g_ipv4 = ipv4;
    g_ipv6 = ipv6;
}

std::vector<std::string> Titles(const std::string &xml, std::string *error) {
    std::vector<std::string> titles;
    xmlResetLastError();
    xmlDocPtr doc = xmlReadMemory(xml.data(), static_cast<int>(xml.size()), "answer.xml", "UTF-8",
                                  XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    const xmlError *e = xmlGetLastError();
    *error = e != nullptr ? e->message : doc == nullptr ? "not well-formed" : "";
    // Depth-first in document order; answers are a few levels deep.
    std::function<void(xmlNodePtr)> visit = [&](xmlNodePtr node) {
        for (; node != nullptr; node = node->next) {
            if (node->type == XML_ELEMENT_NODE && node->ns != nullptr && xmlStrEqual(node->ns->prefix, BAD_CAST "dc") &&
                xmlStrEqual(node->name, BAD_CAST "title")) {
                xmlChar *content = xmlNodeGetContent(node);
                titles.emplace_back(content != nullptr ? reinterpret_cast<const char *>(content) : "");
                xmlFree(content);
            }
            visit(node->children);
        }
    };
    visit(xmlDocGetRootElement(doc));
    xmlFreeDoc(doc);
    return titles;
}

Library::Library() {
    const uint32_t music = FindProfile(MDB_CLASS_MUSIC, nullptr), video = FindProfile(MDB_CLASS_VIDEO, nullptr),
                   picture = FindProfile(MDB_CLASS_PICTURE, nullptr), lpcm = FindProfile(MDB_CLASS_MUSIC, "LPCM"),
                   unknown = FindProfile(MDB_CLASS_VIDEO, "Unknown");
    EXPECT_TRUE(music && video && picture && lpcm && unknown) << "the shipped profile library lacks a profile";
    const uint32_t F = MDB_CLASS_FOLDER, M = MDB_FLAGS_FOLDER_MUSIC, V = MDB_FLAGS_FOLDER_VIDEO,
                   P = MDB_FLAGS_FOLDER_PICTURE;
    // One transaction for the whole catalogue: a commit per row would wait for the disk each time.
    m_catalogue.exec("BEGIN");
    // "Unused" has no item: the genre list shows it all the same.
    for (const char *name : {"Jazz", "Drum & Bass", "Rock", "Unused"}) {
        m_values["GENRES"][name] = m_catalogue.lookup("GENRES", name);
    }
    const long long usb = add(0, F | M | V | P, "/media/usb1_1"), sd = add(0, F | M, "/media/sd2_1");
    add(0, F, "/media/empty");
    const long long mus = add(usb, F | M | P, "Music"), jazz = add(mus, F | M, "Jazz");
    const long long covers = add(mus, F | P, "Covers"), vid = add(usb, F | V | P, "Video");
    const long long photos = add(usb, F | P, "Photos");
    const long long mixed = add(usb, F | M | P, "Mixed");
    add(jazz, music, "01 So What.mp3", "So What", "1959-08-17", "Jazz", "Miles Davis", "Kind of Blue");
    add(jazz, music | MDB_FLAGS_RESTRICTED, "03 Blue in Green.mp3", "Blue in Green", "1959-08-18", "Jazz",
        "Miles Davis", "Kind of Blue");
    add(jazz, music, "Dave.Brubeck-Take.Five.mp3", "Take Five", "1959-12-14", "Jazz", "Dave Brubeck", "Time Out");
    add(mus, music, "tj.mp3", "Tom & Jerry <Live>", "2001-01-02", "Drum & Bass", "Roni Size & Reprazent", "New Forms");
    add(mus, music, "quoted.mp3", "\"Quoted\" 'Title'", "1999-05-06", "Rock", "Wilco", "Summerteeth");
    add(mus, music, "cafe.mp3", "Café Ünïcødé 日本語", "2010-10-10", "Jazz", "Ælfgifu", "Ånd & Sjel");
    add(mus, lpcm, "live.wav", "Live at the Club", "2003-03-03", "Jazz", "Dave Brubeck");
    add(mixed, music, "interlude.mp3", "Interlude", "2005-03-04", "Rock", "Wilco");
    add(sd, music, "VOICE001", "Voice Memo");
    add(vid, video, "holiday.mpg", "Holiday 2019", "2019-08-01", "", "Family", "Holidays");
    add(vid, video, "birthday.mpg", "Birthday", "2018-04-04", "", "Family", "Parties");
    add(vid, video, "concert.mpg", "Concert <encore>", "2017-07-07", "", "Wilco");
    add(vid, unknown, "capture.dat", "Raw Capture", "2016-06-06", "", "Family");
    add(vid, picture, "poster.jpg", "Poster", "2019-07-31");
    add(photos, picture, "beach.jpg", "Beach", "2019-08-02");
    add(photos, picture, "alps.jpg", "Mountains & Lakes", "2019-08-03");
    add(mixed, picture, "cover.jpg", "Cover", "2005-03-05");
    add(covers, picture, "kob.jpg", "Kind of Blue (front)", "1959-09-01");
    m_catalogue.exec("COMMIT");
    EXPECT_STREQ(QRV_MDB_StatusName(QRV_MDB_DbGetRoots(db())), "MDB_OK");
}

Library::~Library() {
    // The root list belongs to the library; an empty catalogue leaves none behind.
    m_catalogue.exec("delete from ITEM");
    QRV_MDB_DbGetRoots(db());
}

long long Library::add(long long parent, uint32_t flags, const std::string &file, const std::string &title,
                       const std::string &date, const std::string &genre, const std::string &artist,
                       const std::string &album) {
    auto value = [this](const char *table, const std::string &name) -> long long {
        std::map<std::string, long long> &ids = m_values[table];
        if (!name.empty() && ids.count(name) == 0) {
            ids[name] = m_catalogue.lookup(table, name);
        }
        return name.empty() ? 0 : ids[name];
    };
    Row r;
    r.parentId = parent;
    r.flags = static_cast<int32_t>(flags);
    r.fileName = file;
    r.title = title.empty() ? file : title;
    r.date = date;
    r.size = 1000 + static_cast<long long>(m_rows.size());
    r.genre = value("GENRES", genre);
    r.artist = value("ARTISTS", artist);
    r.album = value("ALBUMS", album);
    r.id = m_catalogue.addItem(r);
    m_rows.push_back(r);
    return r.id;
}

const Row &Library::row(const std::string &file) const {
    auto it = std::find_if(m_rows.begin(), m_rows.end(), [&](const Row &r) { return r.fileName == file; });
    EXPECT_NE(it, m_rows.end()) << file;
    return it != m_rows.end() ? *it : m_rows.front();
}

}  // namespace browsetest
