// The catalogue that the Browse and Search tests ask: three shared roots, nested folders holding
// music, video and pictures, genres (one unused), artists, albums and a creator, items of several
// profiles (LPCM and "Unknown" among them) with dates, durations and resolutions, and titles that
// need escaping in XML and in SQL. It keeps a model of what went in, from which the tests derive
// their expected answers. Also: the titles of an answer read back with libxml2.
#pragma once

#include "action.h"
#include "catalogue.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace mdbtest {

// An object of a DIDL-Lite answer as libxml2 reads it back: element name, id, title, the text of
// the first res element, and the restricted attribute.
struct DidlObject {
    std::string element, id, title, res, restricted;
};
// Parses xml with libxml2 (namespace-aware) and returns the objects below its root. The text must be
// well-formed, its prefixes declared and its root DIDL-Lite in its namespace: *error receives what is
// wrong ("" when nothing is); without error a problem fails the current test.
std::vector<DidlObject> ReadDidl(const std::string &xml, std::string *error = nullptr);
std::vector<std::string> TitlesOf(const std::vector<DidlObject> &objects);

// A row as it went into the catalogue.
struct Row : ItemValues {
    long long id = 0;
    uint32_t cls() const { return static_cast<uint32_t>(flags) & MDB_FLAGS_CLASS_MASK; }
};

class Library {
public:
    // Builds the catalogue and the root list; clears the root list again when it goes.
    Library();
    ~Library();

    sqlite3 *db() const { return m_catalogue.db(); }
    Catalogue &catalogue() { return m_catalogue; }
    // The row of a file name (fails the test for an unknown one), and its id as text.
    const Row &row(const std::string &file) const;
    std::string id(const std::string &file) const { return std::to_string(row(file).id); }
    // The entries of a lookup table ("GENRES", "ARTISTS", "ALBUMS", "CREATORS"): name to id.
    const std::map<std::string, long long> &values(const std::string &table) const { return m_values.at(table); }
    std::string value(const std::string &table, const std::string &name) const {
        return std::to_string(values(table).at(name));
    }
    std::vector<Row> where(const std::function<bool(const Row &)> &keep) const;
    std::set<std::string> titles(const std::function<bool(const Row &)> &keep) const;

private:
    Catalogue m_catalogue;
    std::vector<Row> m_rows;
    std::map<std::string, std::map<std::string, long long>> m_values;
};

}  // namespace mdbtest
