// End to end: the whole container tree of the shipped platform browsed through QRV_MDB_Browse
// over a realistic catalogue. Every list is checked against the catalogue's model, every listed
// object answers its own BrowseMetadata, and every answer is well-formed XML.
#include "library.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using browsetest::Library;
using browsetest::Row;
using mdbtest::attr;

// The database containers of the shipped tree: which rows each one lists.
enum class Kind { All, Folder, Genre, Artist, Album };
struct DbContainer {
    const char *id;
    Kind kind;
    uint32_t cls;
};
const DbContainer kDbContainers[] = {
    {"0.1.256", Kind::All, MDB_CLASS_MUSIC},    {"0.1.257", Kind::Genre, MDB_CLASS_MUSIC},
    {"0.1.258", Kind::Artist, MDB_CLASS_MUSIC}, {"0.1.262", Kind::Album, MDB_CLASS_MUSIC},
    {"0.1.264", Kind::Folder, MDB_CLASS_MUSIC}, {"0.2.512", Kind::All, MDB_CLASS_VIDEO},
    {"0.2.513", Kind::Artist, MDB_CLASS_VIDEO}, {"0.2.514", Kind::Album, MDB_CLASS_VIDEO},
    {"0.2.516", Kind::Folder, MDB_CLASS_VIDEO}, {"0.3.768", Kind::All, MDB_CLASS_PICTURE},
    {"0.3.771", Kind::Folder, MDB_CLASS_PICTURE},
};

std::string Id(const std::string &base, char sep, long long v) { return base + sep + std::to_string(v); }
std::vector<std::string> Ids(const std::string &base, char sep, const std::vector<Row> &rows) {
    std::vector<std::string> out;
    for (const Row &r : rows) {
        out.push_back(Id(base, sep, r.id));
    }
    return out;
}

class TreeWalk : public ::testing::Test {
protected:
    // The ids that a BrowseDirectChildren of id must list, from the model.
    std::vector<std::string> expectedChildren(const std::string &id) {
        const size_t bar = id.find('|');
        const std::string node = id.substr(0, bar);
        const std::string sub = bar == std::string::npos ? "" : id.substr(bar + 1);
        for (const DbContainer &c : kDbContainers) {
            if (node != c.id) {
                continue;
            }
            if (c.kind == Kind::All) {
                return Ids(node, '|', lib.itemsOfClass(c.cls));
            }
            if (c.kind == Kind::Folder) {
                if (sub.empty()) {
                    return Ids(node, '|', lib.roots());
                }
                return Ids(node, '|', lib.folderChildren(std::stoll(sub), c.cls));
            }
            const char *table = c.kind == Kind::Genre ? "GENRES" : c.kind == Kind::Artist ? "ARTISTS" : "ALBUMS";
            if (sub.empty()) {
                std::vector<std::string> out;
                for (long long v : lib.values(table, c.cls)) {
                    out.push_back(Id(node, '|', v));
                }
                return out;
            }
            long long Row::*category =
                c.kind == Kind::Genre ? &Row::genre : c.kind == Kind::Artist ? &Row::artist : &Row::album;
            return Ids(id, ',', lib.itemsWith(category, std::stoll(sub), c.cls));
        }
        const MdbStaticContainer *n = nullptr;
        EXPECT_STREQ(QRV_MDB_StatusName(MdbLocateStaticContainerById(id.c_str(), &n, nullptr)), "MDB_OK") << id;
        std::vector<std::string> out;
        for (uint16_t i = 0; n != nullptr && i < n->usChildNum; ++i) {
            out.push_back(id + "." + std::to_string(n->pstChildren[i].usId));
        }
        return out;
    }

    // Children of a folder row are listed with the folder container as parent, all others with
    // the listed object.
    static std::string expectedParent(const std::string &id) {
        const size_t bar = id.find('|');
        for (const DbContainer &c : kDbContainers) {
            if (c.kind == Kind::Folder && bar != std::string::npos && id.compare(0, bar, c.id) == 0) {
                return c.id;
            }
        }
        return id;
    }

    // Lists id, checks the list, the metadata of each child and recurses into child containers.
    void walk(const std::string &id, int depth) {
        ASSERT_LT(depth, 8) << id;
        mdbtest::Action action(true, 1000);
        ASSERT_STREQ(QRV_MDB_StatusName(QRV_MDB_Browse(id.c_str(), 1, action.ctx())), "MDB_OK") << id;
        std::string xmlError;
        browsetest::XmlTexts(action.xml(), "dc:title", &xmlError);
        EXPECT_EQ(xmlError, "") << id;
        std::vector<std::string> listed;
        for (IXML_Element *child : action.objects()) {
            listed.push_back(attr(child, "id"));
            EXPECT_EQ(attr(child, "parentID"), expectedParent(id)) << "listed under " << id;
        }
        std::vector<std::string> expected = expectedChildren(id);
        std::sort(expected.begin(), expected.end());
        std::vector<std::string> sorted = listed;
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(sorted, expected) << id;
        EXPECT_EQ(action->ulNumberReturned, listed.size()) << id;
        EXPECT_EQ(action->ulTotalMatches, expected.size()) << id;

        for (IXML_Element *child : action.objects()) {
            const std::string childId = attr(child, "id");
            const bool container = std::string(ixmlNode_getNodeName(reinterpret_cast<IXML_Node *>(child))) == "container";
            mdbtest::Action meta;
            ASSERT_STREQ(QRV_MDB_StatusName(QRV_MDB_Browse(childId.c_str(), 0, meta.ctx())), "MDB_OK") << childId;
            ASSERT_EQ(meta.objects().size(), 1u) << childId;
            EXPECT_EQ(meta->ulNumberReturned, 1u) << childId;
            EXPECT_EQ(meta->ulTotalMatches, 1u) << childId;
            EXPECT_EQ(attr(meta.objects()[0], "id"), childId);
            EXPECT_EQ(attr(meta.objects()[0], "parentID"), expectedParent(id)) << childId;
            EXPECT_EQ(mdbtest::childText(meta.objects()[0], "dc:title"), mdbtest::childText(child, "dc:title"));
            visited.insert(childId);
            if (container) {
                walk(childId, depth + 1);
            }
        }
    }

    Library lib;
    std::set<std::string> visited;
};

TEST_F(TreeWalk, EveryContainerListsWhatTheCatalogueHolds) {
    walk("0", 0);
    // Every item is reachable through its all-items container and through its folder path.
    for (const Row &r : lib.rows()) {
        if (r.cls() == MDB_CLASS_MUSIC) {
            EXPECT_EQ(visited.count(Id("0.1.256", '|', r.id)), 1u) << r.title;
            EXPECT_EQ(visited.count(Id("0.1.264", '|', r.id)), 1u) << r.title << " in the music folders";
        }
        if (r.cls() == MDB_CLASS_PICTURE) {
            EXPECT_EQ(visited.count(Id("0.3.771", '|', r.id)), 1u) << r.title << " in the picture folders";
        }
    }
    EXPECT_EQ(visited.count(Id("0.1.257", '|', lib.genre("Unused"))), 1u) << "a genre without items is listed";
    EXPECT_EQ(visited.count(Id("0.1.264", '|', lib.row("Covers").id)), 0u) << "a pictures folder under music";
    EXPECT_EQ(visited.count(Id("0.3.771", '|', lib.row("Covers").id)), 1u);
}

}  // namespace
