// Lookups in the vocabulary tables: class texts by number and back, property indexes by name.
// (Status names are read by every test that compares a status by its name.)
#include <mdb.h>
#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Vocabulary, ClassTextsAndNumbers) {
    const uint32_t last = g_ulObjClassStringLen;
    ASSERT_NE(QRV_MDB_GetMediaClassById(11), nullptr);
    EXPECT_STREQ(QRV_MDB_GetMediaClassById(11 + 128), QRV_MDB_GetMediaClassById(11)) << "the low seven bits";
    EXPECT_STREQ(QRV_MDB_GetMediaClassById(0x0103000B), QRV_MDB_GetMediaClassById(11)) << "a whole flags word";
    for (uint32_t outside : {0u, 128u, last + 1}) EXPECT_EQ(QRV_MDB_GetMediaClassById(outside), nullptr) << outside;
    for (uint32_t n = 1; n <= last; ++n) EXPECT_EQ(QRV_MDB_GetMediaClassByStr(QRV_MDB_GetMediaClassById(n)), n);
    std::string upper = g_apcObjClassStrings[0];
    upper[0] = static_cast<char>(std::toupper(upper[0]));
    for (const char *text : {upper.c_str(), "object.item.audioItem", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(QRV_MDB_GetMediaClassByStr(text), 0u) << "case matters, prefixes do not match";
    }
}

TEST(Vocabulary, PropertyIndexByExactName) {
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        // Each name finds itself or an earlier entry of the same name.
        const uint32_t found = QRV_MDB_GetFilterIdx(g_astDlnaCols[i].pcPropName);
        ASSERT_LE(found, i);
        EXPECT_STREQ(g_astDlnaCols[found].pcPropName, g_astDlnaCols[i].pcPropName);
    }
    for (const char *name : {"dc:titl", "DC:TITLE", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(QRV_MDB_GetFilterIdx(name), 0xFFFFFFFFu) << (name ? name : "NULL");
    }
}

}  // namespace
