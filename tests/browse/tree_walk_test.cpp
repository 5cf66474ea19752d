// End to end over a realistic catalogue: the whole container tree of the shipped platform browsed
// through QRV_MDB_Browse. Every list is checked against the catalogue's model, every database list
// also page by page in two sort orders, every listed object against its own BrowseMetadata, and
// every answer must parse as well-formed XML giving back the titles as they went in.
#include "library.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <tuple>

namespace {

using mdbtest::attr;
using mdbtest::Row;

// The database containers of the shipped tree and what each one lists.
enum class Kind { All, Folder, Genre, Artist, Album };
struct DbContainer { const char *id; Kind kind; uint32_t cls; };
const DbContainer kDbContainers[] = {
    {"0.1.256", Kind::All, MDB_CLASS_MUSIC},    {"0.1.257", Kind::Genre, MDB_CLASS_MUSIC},
    {"0.1.258", Kind::Artist, MDB_CLASS_MUSIC}, {"0.1.262", Kind::Album, MDB_CLASS_MUSIC},
    {"0.1.264", Kind::Folder, MDB_CLASS_MUSIC}, {"0.2.512", Kind::All, MDB_CLASS_VIDEO},
    {"0.2.513", Kind::Artist, MDB_CLASS_VIDEO}, {"0.2.514", Kind::Album, MDB_CLASS_VIDEO},
    {"0.2.516", Kind::Folder, MDB_CLASS_VIDEO}, {"0.3.768", Kind::All, MDB_CLASS_PICTURE},
    {"0.3.771", Kind::Folder, MDB_CLASS_PICTURE},
};

// Sort criteria and the order they ask for (titles are unique, so both orders are total).
struct Order { const char *criteria; bool (*before)(const Row &, const Row &); };
const Order kOrders[] = {
    {"+dc:title", [](const Row &a, const Row &b) { return a.title < b.title; }},
    {"-dc:date,+dc:title",
     [](const Row &a, const Row &b) { return std::tie(b.date, a.title) < std::tie(a.date, b.title); }},
};

// What a BrowseDirectChildren must list: ids, the rows of lists that page and sort, and the
// children's parentID (a folder row's children name the folder container).
struct Listing { std::vector<std::string> ids; std::vector<Row> rows; std::string parent; };

// Browses the children of id as action asks, in the order of the sort criteria; checks that the
// answer parses and returns its titles.
std::vector<std::string> List(mdbtest::Action &action, const std::string &id, const char *sort = nullptr) {
    action.adoptSort(QRV_MDB_BuildSortStr(sort));
    EXPECT_STREQ(QRV_MDB_StatusName(QRV_MDB_Browse(id.c_str(), 1, action.ctx())), "MDB_OK") << id;
    return mdbtest::TitlesOf(mdbtest::ReadDidl(action.xml()));
}

// Pages of two through id in each order: each page counted right, together the rows in order.
void CheckPages(const std::string &id, std::vector<Row> rows) {
    for (const Order &order : kOrders) {
        std::vector<std::string> served, expected;
        for (uint32_t start = 0; start < rows.size() + 2; start += 2) {
            mdbtest::Action action(true, 2, start);
            const std::vector<std::string> page = List(action, id, order.criteria);
            served.insert(served.end(), page.begin(), page.end());
            EXPECT_EQ(action->ulNumberReturned, start < rows.size() ? std::min<size_t>(2, rows.size() - start) : 0);
            EXPECT_EQ(action->ulTotalMatches, rows.size()) << id << " from " << start;
        }
        std::sort(rows.begin(), rows.end(), order.before);
        for (const Row &r : rows) expected.push_back(r.title);
        EXPECT_EQ(served, expected) << id << " " << order.criteria;
    }
}

class TreeWalk : public ::testing::Test {
protected:
    Listing expected(const std::string &id) {
        const size_t bar = id.find('|');
        const std::string node = id.substr(0, bar), sub = bar == std::string::npos ? "" : id.substr(bar + 1);
        Listing out{{}, {}, id};
        auto rows = [&](const std::string &base, char sep, const std::function<bool(const Row &)> &keep) {
            out.rows = lib.where(keep);
            for (const Row &r : out.rows) out.ids.push_back(base + sep + std::to_string(r.id));
            return out;
        };
        auto c = std::find_if(std::begin(kDbContainers), std::end(kDbContainers),
                              [&](const DbContainer &d) { return node == d.id; });
        if (c == std::end(kDbContainers)) {
            const MdbStaticContainer *n = nullptr;
            EXPECT_STREQ(QRV_MDB_StatusName(MdbLocateStaticContainerById(id.c_str(), &n, nullptr)), "MDB_OK") << id;
            for (uint16_t i = 0; n != nullptr && i < n->usChildNum; ++i) {
                out.ids.push_back(id + "." + std::to_string(n->pstChildren[i].usId));
            }
            return out;
        }
        const uint32_t cls = c->cls;
        if (c->kind == Kind::All) return rows(node, '|', [&](const Row &r) { return r.cls() == cls; });
        if (c->kind == Kind::Folder) {
            // The roots whatever they hold, neither paged nor sorted; below them what holds cls.
            const long long parent = sub.empty() ? 0 : std::stoll(sub);
            rows(node, '|', [&](const Row &r) {
                return r.parentId == parent && (parent == 0 || r.cls() == cls ||
                                                (r.cls() == MDB_CLASS_FOLDER && (r.flags & (1 << cls)) != 0));
            });
            out.parent = node;
            if (parent == 0) out.rows.clear();
            return out;
        }
        long long Row::*field =
            c->kind == Kind::Genre ? &Row::genre : c->kind == Kind::Artist ? &Row::artist : &Row::album;
        if (!sub.empty()) {
            return rows(id, ',', [&](const Row &r) { return r.cls() == cls && r.*field == std::stoll(sub); });
        }
        // The artists and albums that items of the class use; every genre, used or not.
        std::set<long long> values;
        for (const Row &r : lib.where([&](const Row &r) { return r.cls() == cls && r.*field != 0; })) {
            values.insert(r.*field);
        }
        for (const auto &genre : c->kind == Kind::Genre ? lib.values("GENRES") : std::map<std::string, long long>()) {
            values.insert(genre.second);
        }
        for (long long v : values) out.ids.push_back(node + "|" + std::to_string(v));
        return out;
    }

    // Lists id, checks the list and the metadata of each child, and recurses into child containers.
    void walk(const std::string &id, int depth) {
        ASSERT_LT(depth, 8) << id;
        mdbtest::Action action(true, 1000);
        List(action, id);
        Listing want = expected(id);
        std::vector<std::string> listed;
        for (IXML_Element *child : action.objects()) {
            listed.push_back(attr(child, "id"));
            EXPECT_EQ(attr(child, "parentID"), want.parent) << "listed under " << id;
        }
        EXPECT_EQ(action->ulNumberReturned, listed.size()) << id;
        EXPECT_EQ(action->ulTotalMatches, want.ids.size()) << id;
        std::sort(want.ids.begin(), want.ids.end());
        std::sort(listed.begin(), listed.end());
        EXPECT_EQ(listed, want.ids) << id;
        if (!want.rows.empty()) CheckPages(id, want.rows);
        for (IXML_Element *child : action.objects()) {
            const std::string childId = attr(child, "id");
            mdbtest::Action meta;
            ASSERT_STREQ(QRV_MDB_StatusName(QRV_MDB_Browse(childId.c_str(), 0, meta.ctx())), "MDB_OK") << childId;
            ASSERT_EQ(meta.objects().size(), 1u) << childId;
            EXPECT_EQ(std::to_string(meta->ulNumberReturned) + "/" + std::to_string(meta->ulTotalMatches), "1/1")
                << childId;
            EXPECT_EQ(attr(meta.objects()[0], "id"), childId);
            EXPECT_EQ(attr(meta.objects()[0], "parentID"), want.parent) << childId;
            EXPECT_EQ(mdbtest::childText(meta.objects()[0], "dc:title"), mdbtest::childText(child, "dc:title"));
            visited.insert(childId);
            if (std::string(ixmlNode_getNodeName(reinterpret_cast<IXML_Node *>(child))) == "container") {
                walk(childId, depth + 1);
            }
        }
    }

    mdbtest::Library lib;
    std::set<std::string> visited;
};

TEST_F(TreeWalk, EveryContainerListsWhatTheCatalogueHolds) {
    walk("0", 0);
    // The walk went everywhere: every item through its all-items container and its folder path.
    const char *views[][2] = {{"0.1.256", "0.1.264"}, {"0.2.512", "0.2.516"}, {"0.3.768", "0.3.771"}};
    for (const Row &r : lib.where([](const Row &r) { return r.cls() != MDB_CLASS_FOLDER; })) {
        for (const char *view : views[r.cls() - MDB_CLASS_MUSIC]) {
            EXPECT_EQ(visited.count(view + ("|" + std::to_string(r.id))), 1u) << r.title << " under " << view;
        }
    }
}

}  // namespace
