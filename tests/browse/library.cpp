// The browse tests' catalogue and its model (see library.h).
#include "library.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace browsetest {

Library::Library() {
    for (uint32_t cls : {MDB_CLASS_MUSIC, MDB_CLASS_VIDEO, MDB_CLASS_PICTURE}) {
        m_profiles[cls] = FindOrdinaryProfile(cls).flags;
    }
    // One transaction for the whole catalogue: a commit per row would wait for the disk each time.
    m_catalogue.exec("BEGIN");
    // "Unused" has no item: the genre list shows it all the same.
    for (const char *name : {"Jazz", "Drum & Bass", "Rock", "Unused"}) {
        m_genres[name] = m_catalogue.lookup("GENRES", name);
    }
    const long long usb = folder(0, "/media/usb1_1", 0x800 | 0x1000 | 0x2000);
    const long long sd = folder(0, "/media/sd2_1", 0x800);
    folder(0, "/media/empty", 0);
    const long long music = folder(usb, "Music", 0x800 | 0x2000);
    const long long jazz = folder(music, "Jazz", 0x800);
    const long long video = folder(usb, "Video", 0x1000);
    const long long photos = folder(usb, "Photos", 0x2000);
    const long long mixed = folder(usb, "Mixed", 0x800 | 0x2000);
    const long long covers = folder(music, "Covers", 0x2000);

    item(jazz, MDB_CLASS_MUSIC, "So What", "01 So What.mp3", "1959-08-17", "Jazz", "Miles Davis", "Kind of Blue");
    item(jazz, MDB_CLASS_MUSIC, "Blue in Green", "03 Blue in Green.mp3", "1959-08-18", "Jazz", "Miles Davis",
         "Kind of Blue");
    item(jazz, MDB_CLASS_MUSIC, "Take Five", "take5.mp3", "1959-12-14", "Jazz", "Dave Brubeck", "Time Out");
    item(music, MDB_CLASS_MUSIC, "Tom & Jerry <Live>", "tj.mp3", "2001-01-02", "Drum & Bass", "Roni Size & Reprazent",
         "New Forms");
    item(music, MDB_CLASS_MUSIC, "\"Quoted\" 'Title'", "quoted.mp3", "1999-05-06", "Rock", "Wilco",
         "Summerteeth");
    item(music, MDB_CLASS_MUSIC, "Café Ünïcødé 日本語", "cafe.mp3", "2010-10-10", "Jazz", "Ælfgifu",
         "Ånd & Sjel");
    item(mixed, MDB_CLASS_MUSIC, "Interlude", "interlude.mp3", "2005-03-04", "Rock", "Wilco", "");
    item(sd, MDB_CLASS_MUSIC, "Voice Memo", "memo.mp3", "2020-02-29");
    item(video, MDB_CLASS_VIDEO, "Holiday 2019", "holiday.mpg", "2019-08-01", "", "Family", "Holidays");
    item(video, MDB_CLASS_VIDEO, "Birthday", "birthday.mpg", "2018-04-04", "", "Family", "Parties");
    item(video, MDB_CLASS_VIDEO, "Concert <encore>", "concert.mpg", "2017-07-07", "", "Wilco", "");
    item(photos, MDB_CLASS_PICTURE, "Beach", "beach.jpg", "2019-08-02");
    item(photos, MDB_CLASS_PICTURE, "Mountains & Lakes", "alps.jpg", "2019-08-03");
    item(mixed, MDB_CLASS_PICTURE, "Cover", "cover.jpg", "2005-03-05");
    item(covers, MDB_CLASS_PICTURE, "Kind of Blue (front)", "kob.jpg", "1959-09-01");
    m_catalogue.exec("COMMIT");
    EXPECT_STREQ(QRV_MDB_StatusName(QRV_MDB_DbGetRoots(db())), "MDB_OK");
}

Library::~Library() {
    // The root list belongs to the library; an empty catalogue leaves none behind.
    m_catalogue.exec("delete from ITEM");
    QRV_MDB_DbGetRoots(db());
}

long long Library::folder(long long parent, const std::string &name, uint32_t bits) {
    Row r;
    r.parent = parent;
    r.flags = MDB_CLASS_FOLDER | bits;
    r.title = r.fileName = name;
    r.id = m_catalogue.addFolder(parent, name, static_cast<int32_t>(bits));
    m_rows.push_back(r);
    return r.id;
}

long long Library::item(long long parent, uint32_t cls, const std::string &title, const std::string &file,
                        const std::string &date, const std::string &genre, const std::string &artist,
                        const std::string &album) {
    mdbtest::ItemValues v;
    v.parentId = parent;
    v.flags = static_cast<int32_t>(m_profiles.at(cls));
    v.title = title;
    v.fileName = file;
    v.date = date;
    v.size = 1000 + static_cast<long long>(m_rows.size());
    auto entry = [this](std::map<std::string, long long> &ids, const char *table, const std::string &name) {
        if (name.empty()) {
            return 0LL;
        }
        if (ids.count(name) == 0) {
            ids[name] = m_catalogue.lookup(table, name);
        }
        return ids[name];
    };
    v.genre = entry(m_genres, "GENRES", genre);
    v.artist = entry(m_artists, "ARTISTS", artist);
    v.album = entry(m_albums, "ALBUMS", album);
    Row r;
    r.parent = parent;
    r.flags = static_cast<uint32_t>(v.flags);
    r.title = title;
    r.fileName = file;
    r.date = date;
    r.genre = v.genre;
    r.artist = v.artist;
    r.album = v.album;
    r.id = m_catalogue.addItem(v);
    m_rows.push_back(r);
    return r.id;
}

const Row &Library::row(const std::string &fileName) const {
    auto it = std::find_if(m_rows.begin(), m_rows.end(), [&](const Row &r) { return r.fileName == fileName; });
    EXPECT_NE(it, m_rows.end()) << fileName;
    return *it;
}

std::vector<Row> Library::folderChildren(long long folder, uint32_t cls) const {
    std::vector<Row> out;
    for (const Row &r : m_rows) {
        if (r.parent == folder && (r.cls() == cls || (r.cls() == MDB_CLASS_FOLDER && cls < 32 &&
                                                      (r.flags & (1u << cls)) > 1))) {
            out.push_back(r);
        }
    }
    return out;
}

std::vector<Row> Library::roots() const {
    std::vector<Row> out;
    std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(out), [](const Row &r) { return r.parent == 0; });
    return out;
}

std::vector<Row> Library::itemsOfClass(uint32_t cls) const {
    std::vector<Row> out;
    std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(out), [&](const Row &r) { return r.cls() == cls; });
    return out;
}

std::vector<Row> Library::itemsWith(long long Row::*category, long long id, uint32_t cls) const {
    std::vector<Row> out;
    std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(out),
                 [&](const Row &r) { return r.cls() == cls && r.*category == id; });
    return out;
}

std::vector<long long> Library::values(const std::string &table, uint32_t cls) const {
    std::vector<long long> out;
    if (table == "GENRES") {
        for (const auto &g : m_genres) {
            out.push_back(g.second);
        }
    } else {
        const std::map<std::string, long long> &ids = table == "ARTISTS" ? m_artists : m_albums;
        long long Row::*category = table == "ARTISTS" ? &Row::artist : &Row::album;
        for (const auto &v : ids) {
            if (!itemsWith(category, v.second, cls).empty()) {
                out.push_back(v.second);
            }
        }
    }
    std::sort(out.begin(), out.end());
    return out;
}

std::string Library::valueName(const std::string &table, long long id) const {
    const std::map<std::string, long long> &ids =
        table == "GENRES" ? m_genres : table == "ARTISTS" ? m_artists : m_albums;
    for (const auto &v : ids) {
        if (v.second == id) {
            return v.first;
        }
    }
    return "";
}

}  // namespace browsetest
