// Container metadata and the browse of static containers, through QRV_MDB_Browse on the shipped
// tree and directly on small trees made here.
#include <mdb.h>
#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "action.h"

using mdbtest::Action;
using mdbtest::attr;
using mdbtest::attrNames;
using mdbtest::childNames;
using mdbtest::children;
using mdbtest::childText;

namespace {

// A parent "9" with five static children "9.1" .. "9.5", browsed by the static handler.
struct FiveChildren {
    MdbStaticContainer parent{};
    MdbStaticContainer kids[5]{};
    FiveChildren() {
        parent.pcTitle = "Parent";
        parent.usId = 9;
        parent.ucClass = 1;
        parent.usChildNum = 5;
        parent.pfnBrowse = QRV_MDB_BrowseStaticContainer;
        parent.pstChildren = kids;
        for (int i = 0; i < 5; ++i) {
            kids[i].pcTitle = "Kid";
            kids[i].usId = static_cast<uint16_t>(i + 1);
            kids[i].ucClass = 1;
            kids[i].pstParent = &parent;
        }
    }
};

std::string IdOf(const MdbStaticContainer *node) {
    char buf[256];
    EXPECT_EQ(QRV_MDB_StaticContainerGetObjId(node, buf, sizeof buf), MDB_OK);
    return buf;
}

const MdbStaticContainer *Node(const char *id) {
    const MdbStaticContainer *node = nullptr;
    EXPECT_EQ(MdbLocateStaticContainerById(id, &node, nullptr), MDB_OK) << id;
    return node;
}

TEST(StaticContainer, RootMetadataWithEverythingAsked) {
    Action a;
    ASSERT_EQ(QRV_MDB_Browse("0", 0, a.ctx()), MDB_OK);
    EXPECT_EQ(a->ulNumberReturned, 1u);
    EXPECT_EQ(a->ulTotalMatches, 1u);
    ASSERT_EQ(a.objects().size(), 1u);
    IXML_Element *c = a.objects()[0];
    EXPECT_STREQ(ixmlNode_getNodeName(reinterpret_cast<IXML_Node *>(c)), "container");
    EXPECT_EQ(attrNames(c), (std::vector<std::string>{"id", "parentID", "restricted", "searchable"}));
    EXPECT_EQ(attr(c, "id"), "0");
    EXPECT_EQ(attr(c, "parentID"), "-1");
    EXPECT_EQ(attr(c, "restricted"), "1");
    EXPECT_EQ(attr(c, "searchable"), "1");
    EXPECT_EQ(childText(c, "dc:title"), g_stRootContainer.pcTitle);
    EXPECT_EQ(childText(c, "upnp:class"), QRV_MDB_GetMediaClassById(g_stRootContainer.ucClass));
    EXPECT_EQ(childText(c, "upnp:storageUsed"), "-1");
    EXPECT_EQ(childText(c, "upnp:writeStatus"), "NOT_WRITABLE");
    std::vector<std::string> names = childNames(c);
    ASSERT_GE(names.size(), 4u);
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 4),
              (std::vector<std::string>{"dc:title", "upnp:class", "upnp:storageUsed", "upnp:writeStatus"}));
    for (size_t i = 4; i < names.size(); ++i) {
        EXPECT_EQ(names[i], "upnp:searchClass");
    }
}

TEST(StaticContainer, EmptyFilterKeepsOnlyTheFixedParts) {
    Action a(/*filterAll=*/false);
    ASSERT_EQ(QRV_MDB_Browse("0.1", 0, a.ctx()), MDB_OK);
    IXML_Element *c = a.objects().at(0);
    EXPECT_EQ(attrNames(c), (std::vector<std::string>{"id", "parentID", "restricted"}));
    EXPECT_EQ(attr(c, "parentID"), "0");
    EXPECT_EQ(childNames(c), (std::vector<std::string>{"dc:title", "upnp:class", "upnp:storageUsed"}));
}

TEST(StaticContainer, RootChildrenAreTheMediaContainers) {
    Action a;
    ASSERT_EQ(QRV_MDB_Browse("0", 1, a.ctx()), MDB_OK);
    ASSERT_EQ(a->ulTotalMatches, g_stRootContainer.usChildNum);
    EXPECT_EQ(a->ulNumberReturned, g_stRootContainer.usChildNum);
    std::vector<IXML_Element *> objs = a.objects();
    ASSERT_EQ(objs.size(), g_stRootContainer.usChildNum);
    for (size_t i = 0; i < objs.size(); ++i) {
        EXPECT_EQ(attr(objs[i], "id"), IdOf(&g_stRootContainer.pstChildren[i]));
        EXPECT_EQ(attr(objs[i], "parentID"), "0");
        EXPECT_EQ(childText(objs[i], "dc:title"), g_stRootContainer.pstChildren[i].pcTitle);
    }
}

TEST(StaticContainer, ListsCountEverythingAndWriteUpToTheRequestedCount) {
    FiveChildren tree;
    struct {
        uint32_t requested, starting, written;
    } cases[] = {{3, 0, 3}, {3, 3, 3}, {10, 0, 5}, {0, 0, 0}, {5, 4, 5}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << "requested " << c.requested << " starting " << c.starting);
        Action a(true, c.requested, c.starting);
        ASSERT_EQ(QRV_MDB_BrowseStaticContainer(&tree.parent, nullptr, 1, a.ctx()), MDB_OK);
        EXPECT_EQ(a->ulNumberReturned, c.written);
        EXPECT_EQ(a->ulTotalMatches, 5u);
        std::vector<IXML_Element *> objs = a.objects();
        ASSERT_EQ(objs.size(), c.written);
        for (size_t i = 0; i < objs.size(); ++i) {
            EXPECT_EQ(attr(objs[i], "id"), "9." + std::to_string(i + 1)) << "lists always begin with the first";
            EXPECT_EQ(attr(objs[i], "parentID"), "9");
        }
    }
}

TEST(StaticContainer, MetadataIgnoresTheRequestedCount) {
    FiveChildren tree;
    Action a(true, 0);
    ASSERT_EQ(QRV_MDB_BrowseStaticContainer(&tree.kids[2], nullptr, 0, a.ctx()), MDB_OK);
    EXPECT_EQ(a.objects().size(), 1u);
    EXPECT_EQ(a->ulNumberReturned, 1u);
    EXPECT_EQ(attr(a.objects()[0], "id"), "9.3");
}

TEST(StaticContainer, RefusesSubIdsAndBadArguments) {
    Action a;
    EXPECT_EQ(QRV_MDB_Browse("0.1|5", 1, a.ctx()), MDB_ERR_NOT_FOUND);
    EXPECT_EQ(QRV_MDB_Browse("0|", 0, a.ctx()), MDB_ERR_NOT_FOUND);
    EXPECT_TRUE(a.objects().empty());
    EXPECT_EQ(QRV_MDB_BrowseStaticContainer(nullptr, nullptr, 0, a.ctx()), MDB_ERR_PARA);
    EXPECT_EQ(QRV_MDB_BrowseStaticContainer(&g_stRootContainer, nullptr, 0, nullptr), MDB_ERR_PARA);
}

TEST(BrowseDispatch, StatusesOfTheEntry) {
    Action a;
    EXPECT_EQ(QRV_MDB_Browse("0", 0, nullptr), MDB_ERR_PARA);
    EXPECT_EQ(QRV_MDB_Browse("not-an-id", 0, nullptr), MDB_ERR_PARA) << "the action is tested first";
    EXPECT_EQ(QRV_MDB_Browse("0.7", 0, a.ctx()), MDB_ERR_NOT_FOUND);
    EXPECT_EQ(QRV_MDB_Browse(nullptr, 0, a.ctx()), MDB_ERR_NOT_FOUND);
    EXPECT_EQ(a->lUpnpErrCode, 0) << "dispatch failures set no UPnP error";
}

TEST(ContainerMetadata, DatabaseValueBelowANode) {
    Action a;
    const MdbStaticContainer *genres = Node("0.1.257");
    ASSERT_EQ(QRV_MDB_BuildMetadataForStaticContainer(genres, "Jazz & Blues", "|3", a.ctx()), MDB_OK);
    IXML_Element *c = a.objects().at(0);
    EXPECT_EQ(attrNames(c), (std::vector<std::string>{"parentID", "id", "restricted", "searchable"}));
    EXPECT_EQ(attr(c, "parentID"), "0.1.257");
    EXPECT_EQ(attr(c, "id"), "0.1.257|3");
    EXPECT_EQ(childText(c, "dc:title"), "Jazz & Blues");
    EXPECT_EQ(childText(c, "upnp:class"), QRV_MDB_GetMediaClassById(genres->ucClass));
}

TEST(ContainerMetadata, IdAndSuffixLongerThan255LeaveOutTheId) {
    const MdbStaticContainer *genres = Node("0.1.257");
    const std::string fits = "|" + std::string(255 - 7 - 1, '7');  // id + suffix = 255
    const std::string tooLong = fits + "7";
    Action a;
    ASSERT_EQ(QRV_MDB_BuildMetadataForStaticContainer(genres, nullptr, fits.c_str(), a.ctx()), MDB_OK);
    ASSERT_EQ(QRV_MDB_BuildMetadataForStaticContainer(genres, nullptr, tooLong.c_str(), a.ctx()), MDB_OK);
    ASSERT_EQ(a.objects().size(), 2u);
    EXPECT_EQ(attr(a.objects()[0], "id"), "0.1.257" + fits);
    EXPECT_EQ(attr(a.objects()[1], "id"), "<none>");
    EXPECT_EQ(attr(a.objects()[1], "parentID"), "0.1.257");
}

std::vector<std::string> SearchClassesOf(uint32_t searchClass) {
    MdbStaticContainer node{};
    node.pcTitle = "t";
    node.ucClass = 1;
    node.ucSearchClass = static_cast<uint8_t>(searchClass);
    Action a;
    EXPECT_EQ(QRV_MDB_BuildMetadataForStaticContainer(&node, nullptr, nullptr, a.ctx()), MDB_OK);
    std::vector<std::string> out;
    for (IXML_Element *e : children(a.objects().at(0), "upnp:searchClass")) {
        EXPECT_EQ(attr(e, "includeDerived"), "1");
        IXML_Node *text = ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(e));
        out.emplace_back(text != nullptr ? ixmlNode_getNodeValue(text) : "");
    }
    return out;
}

TEST(ContainerMetadata, SearchClassesOfEveryKindOfValue) {
    const uint32_t count = g_ulObjClassStringLen;
    EXPECT_TRUE(SearchClassesOf(0).empty());
    EXPECT_EQ(SearchClassesOf(11), (std::vector<std::string>{QRV_MDB_GetMediaClassById(11)}));
    EXPECT_EQ(SearchClassesOf(count), (std::vector<std::string>{QRV_MDB_GetMediaClassById(count)}));
    EXPECT_TRUE(SearchClassesOf(count + 1).empty());
    EXPECT_TRUE(SearchClassesOf(127).empty());
    for (uint32_t set = 128; set < 256; ++set) {
        std::vector<std::string> expected;
        for (uint32_t k = 1; k <= count; ++k) {
            if (QRV_MDB_AdaptIsSearchClassMatched(k, set) != 0) {
                expected.emplace_back(QRV_MDB_GetMediaClassById(k));
            }
        }
        EXPECT_EQ(SearchClassesOf(set), expected) << "set " << set;
    }
}

TEST(ContainerMetadata, SearchClassNeedsTheFilter) {
    const MdbStaticContainer *music = Node("0.1");
    std::vector<unsigned char> filter(g_ulNumOfDlnaCols, 0);
    const uint32_t idx = QRV_MDB_GetFilterIdx("upnp:searchClass");
    ASSERT_LT(idx, g_ulNumOfDlnaCols) << "the table names the property exactly so";
    filter[idx] = 1;
    Action a;
    a.setFilter(filter);
    ASSERT_EQ(QRV_MDB_BuildMetadataForStaticContainer(music, nullptr, nullptr, a.ctx()), MDB_OK);
    IXML_Element *c = a.objects().at(0);
    EXPECT_EQ(attr(c, "searchable"), "<none>");
    EXPECT_EQ(children(c, "upnp:writeStatus").size(), 0u);
    EXPECT_EQ(children(c, "upnp:searchClass").size() > 0, music->ucSearchClass != 0);
}

TEST(XmlAppend, TextsAndPlaces) {
    Action a;
    IXML_Element *made = reinterpret_cast<IXML_Element *>(0x1);
    ASSERT_EQ(QRV_MDB_XmlAppendChildElement(a->pstDoc, a->pstDidlRoot, "x:empty", "", &made), MDB_OK);
    ASSERT_NE(made, nullptr);
    IXML_Node *text = ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(made));
    ASSERT_NE(text, nullptr) << "an empty text makes an empty text node";
    EXPECT_EQ(ixmlNode_getNodeType(text), eTEXT_NODE);
    ASSERT_EQ(QRV_MDB_XmlAppendChildElement(a->pstDoc, a->pstDidlRoot, "x:none", nullptr, nullptr), MDB_OK);
    IXML_Element *last = a.objects().back();
    EXPECT_STREQ(ixmlNode_getNodeName(reinterpret_cast<IXML_Node *>(last)), "x:none");
    EXPECT_EQ(ixmlNode_getFirstChild(reinterpret_cast<IXML_Node *>(last)), nullptr);

    const struct {
        bool doc, parent, name;
    } bad[] = {{false, true, true}, {true, false, true}, {true, true, false}};
    for (const auto &b : bad) {
        made = reinterpret_cast<IXML_Element *>(0x1);
        EXPECT_EQ(QRV_MDB_XmlAppendChildElement(b.doc ? a->pstDoc : nullptr, b.parent ? a->pstDidlRoot : nullptr,
                                                b.name ? "x" : nullptr, "t", &made),
                  MDB_ERR_PARA);
        EXPECT_EQ(made, nullptr) << "the place is cleared first";
    }
    EXPECT_EQ(a.objects().size(), 2u);
}

}  // namespace
