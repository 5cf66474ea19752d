// Container metadata and the browse of static containers through QRV_MDB_Browse on the shipped
// tree: the DIDL-Lite of a container with and without the filter, lists bounded by RequestedCount,
// the search classes written for every kind of value, ids too long to write, and the requests
// refused. Which children each container lists is shown by the tree walk.
#include <mdb.h>
#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "action.h"

namespace {

using mdbtest::Action;
using mdbtest::attr;
using Strings = std::vector<std::string>;

// The root with everything asked, and a music container with nothing asked: the fixed parts stay.
// Metadata answers one object whatever RequestedCount says.
TEST(StaticContainer, MetadataWithAndWithoutTheFilter) {
    Action all(true, 0), none(false);
    ASSERT_EQ(QRV_MDB_Browse("0", 0, all.ctx()), MDB_OK);
    ASSERT_EQ(QRV_MDB_Browse("0.1", 0, none.ctx()), MDB_OK);
    ASSERT_EQ(all.objects().size() + none.objects().size(), 2u);
    EXPECT_EQ(std::to_string(all->ulNumberReturned) + "/" + std::to_string(all->ulTotalMatches), "1/1");
    IXML_Element *root = all.objects()[0], *music = none.objects()[0];
    EXPECT_EQ(mdbtest::attrNames(root), (Strings{"id", "parentID", "restricted", "searchable"}));
    EXPECT_EQ(attr(root, "id") + " " + attr(root, "parentID") + " " + attr(root, "restricted") + " " +
                  attr(root, "searchable"), "0 -1 1 1");
    Strings names = mdbtest::childNames(root), classes;
    names.resize(4);
    EXPECT_EQ(names, (Strings{"dc:title", "upnp:class", "upnp:storageUsed", "upnp:writeStatus"}));
    EXPECT_EQ(mdbtest::childText(root, "upnp:storageUsed") + " " + mdbtest::childText(root, "upnp:writeStatus"),
              "-1 NOT_WRITABLE");
    for (uint32_t k = 1; k <= g_ulObjClassStringLen; ++k) {
        if (QRV_MDB_AdaptIsSearchClassMatched(k, g_stRootContainer.ucSearchClass) != 0) {
            classes.push_back(std::string(QRV_MDB_GetMediaClassById(k)) + " 1");
        }
    }
    EXPECT_EQ(mdbtest::searchClasses(root), classes);
    EXPECT_FALSE(classes.empty());
    EXPECT_EQ(mdbtest::attrNames(music), (Strings{"id", "parentID", "restricted"}));
    EXPECT_EQ(mdbtest::childNames(music), (Strings{"dc:title", "upnp:class", "upnp:storageUsed"}));

    Action two(true, 2, 1);  // a list writes at most RequestedCount and counts every child
    ASSERT_EQ(QRV_MDB_Browse("0", 1, two.ctx()), MDB_OK);
    EXPECT_EQ(std::to_string(two.objects().size()) + "/" + std::to_string(two->ulNumberReturned) + "/" +
                  std::to_string(two->ulTotalMatches), "2/2/" + std::to_string(g_stRootContainer.usChildNum));
}

// One class for 1..L, nothing for 0 and L+1..127, and for a set every class the adaptation puts in it.
TEST(StaticContainer, SearchClassesOfEveryKindOfValue) {
    const uint32_t count = g_ulObjClassStringLen;
    for (uint32_t value : {0u, 11u, count, count + 1, 127u, 128u, 200u, 255u}) {
        MdbStaticContainer node{};
        node.pcTitle = "t";
        node.ucClass = 1;
        node.ucSearchClass = static_cast<uint8_t>(value);
        Action a;
        ASSERT_EQ(QRV_MDB_BuildMetadataForStaticContainer(&node, nullptr, nullptr, a.ctx()), MDB_OK);
        Strings expected;
        for (uint32_t k = 1; k <= count; ++k) {
            if (value < 128 ? k == value : QRV_MDB_AdaptIsSearchClassMatched(k, value) != 0) {
                expected.push_back(std::string(QRV_MDB_GetMediaClassById(k)) + " 1");
            }
        }
        EXPECT_EQ(mdbtest::searchClasses(a.objects().at(0)), expected) << value;
    }
    EXPECT_EQ(QRV_MDB_AppendSearchClass(nullptr, nullptr, 11), MDB_ERR_PARA);
}

// An id and suffix longer than 255 characters are left out rather than cut.
TEST(StaticContainer, IdAndSuffixLongerThan255LeaveOutTheId) {
    const MdbStaticContainer *genres = nullptr;
    ASSERT_EQ(MdbLocateStaticContainerById("0.1.257", &genres, nullptr), MDB_OK);
    const std::string fits = "|" + std::string(255 - 7 - 1, '7');  // id + suffix = 255
    Action a;
    ASSERT_EQ(QRV_MDB_BuildMetadataForStaticContainer(genres, "Jazz", fits.c_str(), a.ctx()), MDB_OK);
    ASSERT_EQ(QRV_MDB_BuildMetadataForStaticContainer(genres, "Jazz", (fits + "7").c_str(), a.ctx()), MDB_OK);
    ASSERT_EQ(a.objects().size(), 2u);
    EXPECT_EQ(attr(a.objects()[0], "id"), "0.1.257" + fits);
    EXPECT_EQ(attr(a.objects()[1], "id") + " " + attr(a.objects()[1], "parentID"), "<none> 0.1.257");
}

TEST(StaticContainer, RefusedRequests) {
    Action a;
    const std::pair<const char *, uint32_t> cases[] = {
        {"0.1|5", MDB_ERR_NOT_FOUND}, {"0|", MDB_ERR_NOT_FOUND}, {"0.7", MDB_ERR_NOT_FOUND}, {nullptr, MDB_ERR_NOT_FOUND},
    };
    for (const auto &[id, status] : cases) EXPECT_EQ(QRV_MDB_Browse(id, 1, a.ctx()), status) << (id ? id : "NULL");
    EXPECT_TRUE(a.objects().empty());
    EXPECT_EQ(a->lUpnpErrCode, 0) << "dispatch failures set no UPnP error";
    EXPECT_EQ(QRV_MDB_Browse("0", 0, nullptr), MDB_ERR_PARA);
    EXPECT_EQ(QRV_MDB_BrowseStaticContainer(nullptr, nullptr, 0, a.ctx()), MDB_ERR_PARA);
    EXPECT_EQ(QRV_MDB_BrowseStaticContainer(&g_stRootContainer, nullptr, 0, nullptr), MDB_ERR_PARA);
    IXML_Element *made = reinterpret_cast<IXML_Element *>(0x1);
    EXPECT_EQ(QRV_MDB_XmlAppendChildElement(a->pstDoc, nullptr, "x", "t", &made), MDB_ERR_PARA);
    EXPECT_EQ(made, nullptr) << "the place is cleared first";
}

}  // namespace
