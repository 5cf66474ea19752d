// The library's own rule for element properties it writes itself (flag 0x2 clear): a row without a
// value gives the element with the text "[Unknown]". The shipped table sends every optional element
// through the adaptation builder, so this program links a table of its own in its place (the
// test kit is a static archive: this definition wins and the shipped table is not linked).
#include "action.h"

#include "cds/item_writer.h"

#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>

extern "C" {

const MdbDlnaCol g_astDlnaCols[] = {
    {"id", "@id", MDB_COL_ALWAYS, 0, nullptr, 1},
    {"parentID", "@parentID", MDB_COL_ALWAYS, 1, nullptr, 1},
    {"class", "upnp:class", MDB_COL_ALWAYS | MDB_COL_ELEMENT, 2, nullptr, 0},
    {"title", "dc:title", MDB_COL_ALWAYS | MDB_COL_ELEMENT, 3, nullptr, 1},
    // written by the library itself, from the fifth value of the row
    {"album", "upnp:album", MDB_COL_ELEMENT, 4, nullptr, 4},
};
const uint32_t g_ulNumOfDlnaCols = sizeof(g_astDlnaCols) / sizeof(g_astDlnaCols[0]);

}  // extern "C"

namespace {

TEST(LibraryWrittenElement, WithoutValueReadsUnknown) {
    const struct { const char *stored, *written; } cases[] = {
        {"Kind of Blue", "Kind of Blue"}, {nullptr, "[Unknown]"}, {"", "[Unknown]"},
    };
    for (const auto &c : cases) {
        mdbtest::Action action;
        IXML_Element *item = ixmlDocument_createElement(action->pstDoc, "item");
        ASSERT_NE(item, nullptr);
        ixmlNode_appendChild(&action->pstDidlRoot->n, &item->n);
        char id[] = "7", parent[] = "1", flags[] = "11", title[] = "So What";
        char *row[] = {id, parent, flags, title, const_cast<char *>(c.stored)};
        MdbItemBuildCtx ctx = MdbMakeItemBuildCtx(nullptr, action.ctx(), "0.1.256", 0);
        EXPECT_EQ(MdbBuildColumn(&ctx, 5, row, nullptr, 11, 4, item, nullptr), MDB_OK);
        EXPECT_EQ(mdbtest::childText(item, "upnp:album"), c.written) << (c.stored ? c.stored : "NULL");
        EXPECT_EQ(mdbtest::childNames(item).size(), 1u);
    }
}

}  // namespace
