// A realistic catalogue for the browse tests, built with the store operations on the shipped
// schema, and the model of what went in, from which the tests derive every expected answer:
// three shared roots, nested folders holding music, video and pictures, genres, artists and
// albums, and titles that need escaping in XML.
#pragma once

#include "browse_support.h"
#include "catalogue.h"

#include <map>
#include <string>
#include <vector>

namespace browsetest {

struct Row {
    long long id = 0;
    long long parent = 0;
    uint32_t flags = 0;
    std::string title, fileName, date;
    long long genre = 0, artist = 0, album = 0;
    uint32_t cls() const { return flags & MDB_FLAGS_CLASS_MASK; }
};

class Library {
public:
    Library();
    ~Library();

    sqlite3 *db() const { return m_catalogue.db(); }
    mdbtest::Catalogue &catalogue() { return m_catalogue; }
    const std::vector<Row> &rows() const { return m_rows; }
    const Row &row(const std::string &fileName) const;
    long long genre(const std::string &name) const { return m_genres.at(name); }
    long long artist(const std::string &name) const { return m_artists.at(name); }
    long long album(const std::string &name) const { return m_albums.at(name); }

    // What the folder view of class cls shows below row folder: sub-folders holding cls, items of cls.
    std::vector<Row> folderChildren(long long folder, uint32_t cls) const;
    // The shared roots (rows below 0), whatever they hold.
    std::vector<Row> roots() const;
    // Every item of class cls.
    std::vector<Row> itemsOfClass(uint32_t cls) const;
    // Items of class cls whose genre / artist / album is id.
    std::vector<Row> itemsWith(long long Row::*category, long long id, uint32_t cls) const;
    // Lookup entries (GENRES, ARTISTS, ALBUMS) that items of class cls use; all genres for genres.
    std::vector<long long> values(const std::string &table, uint32_t cls) const;
    std::string valueName(const std::string &table, long long id) const;

private:
    long long folder(long long parent, const std::string &name, uint32_t bits);
    long long item(long long parent, uint32_t cls, const std::string &title, const std::string &file,
                   const std::string &date, const std::string &genre = "", const std::string &artist = "",
                   const std::string &album = "");

    mdbtest::Catalogue m_catalogue;
    std::vector<Row> m_rows;
    std::map<std::string, long long> m_genres, m_artists, m_albums;
    std::map<uint32_t, uint32_t> m_profiles;  // class -> flags word of an ordinary profile
};

}  // namespace browsetest
