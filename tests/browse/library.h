// The browse tests' common ground: a realistic catalogue built with the store operations on the
// shipped schema, with a model of what went in from which the tests derive every expected answer;
// the server addresses that libupnp answers; a well-formedness check of answers with libxml2.
#pragma once

#include "action.h"
#include "catalogue.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace browsetest {

// What UpnpGetServerIpAddress / UpnpGetServerIp6Address answer from now on; NULL (libupnp's answer
// before UpnpInit2) is the starting state of every test program.
void SetServerAddresses(const char *ipv4, const char *ipv6);

// Parses xml with libxml2 (namespace-aware). *error receives the parser's complaint (empty when the
// text is well-formed and its prefixes declared). Returns the texts of the dc:title elements.
std::vector<std::string> Titles(const std::string &xml, std::string *error);

// A row as it went into the catalogue.
struct Row : mdbtest::ItemValues {
    long long id = 0;
    uint32_t cls() const { return static_cast<uint32_t>(flags) & MDB_FLAGS_CLASS_MASK; }
};

// Three shared roots, nested folders holding music, video and pictures, genres (one unused), artists
// and albums, items of the LPCM and "Unknown" profiles, and titles that need escaping in XML.
class Library {
public:
    Library();
    ~Library();

    sqlite3 *db() const { return m_catalogue.db(); }
    mdbtest::Catalogue &catalogue() { return m_catalogue; }
    const Row &row(const std::string &file) const;
    std::string id(const std::string &file) const { return std::to_string(row(file).id); }
    // The entries of a lookup table ("GENRES", "ARTISTS", "ALBUMS"): name to id.
    const std::map<std::string, long long> &values(const std::string &table) const { return m_values.at(table); }
    std::string value(const std::string &table, const std::string &name) const {
        return std::to_string(values(table).at(name));
    }
    std::vector<Row> where(const std::function<bool(const Row &)> &keep) const {
        std::vector<Row> out;
        std::copy_if(m_rows.begin(), m_rows.end(), std::back_inserter(out), keep);
        return out;
    }

private:
    long long add(long long parent, uint32_t flags, const std::string &file, const std::string &title = "",
                  const std::string &date = "", const std::string &genre = "", const std::string &artist = "",
                  const std::string &album = "");

    mdbtest::Catalogue m_catalogue;
    std::vector<Row> m_rows;
    std::map<std::string, std::map<std::string, long long>> m_values;
};

}  // namespace browsetest
