// Lookups in the vocabulary tables, and status names.
#include <mdb.h>
#include <mdb_platform.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Vocabulary, ClassTextByNumberUsesTheLowSevenBits) {
    ASSERT_NE(QRV_MDB_GetMediaClassById(11), nullptr);
    EXPECT_STREQ(QRV_MDB_GetMediaClassById(11 + 128), QRV_MDB_GetMediaClassById(11));
    EXPECT_STREQ(QRV_MDB_GetMediaClassById(0x0103000B), QRV_MDB_GetMediaClassById(11)) << "a whole flags word";
    EXPECT_EQ(QRV_MDB_GetMediaClassById(128), nullptr);
    EXPECT_EQ(QRV_MDB_GetMediaClassById(0), nullptr);
    EXPECT_EQ(QRV_MDB_GetMediaClassById(g_ulObjClassStringLen + 1), nullptr);
    EXPECT_STREQ(QRV_MDB_GetMediaClassById(g_ulObjClassStringLen), g_apcObjClassStrings[g_ulObjClassStringLen - 1]);
}

TEST(Vocabulary, ClassNumberByTextIsExactAndOneBased) {
    EXPECT_EQ(QRV_MDB_GetMediaClassByStr(g_apcObjClassStrings[0]), 1u);
    for (uint32_t n = 1; n <= g_ulObjClassStringLen; ++n) {
        EXPECT_EQ(QRV_MDB_GetMediaClassByStr(QRV_MDB_GetMediaClassById(n)), n);
    }
    std::string upper = g_apcObjClassStrings[0];
    upper[0] = static_cast<char>(std::toupper(upper[0]));
    EXPECT_EQ(QRV_MDB_GetMediaClassByStr(upper.c_str()), 0u) << "case matters";
    EXPECT_EQ(QRV_MDB_GetMediaClassByStr("object.item.audioItem"), 0u) << "prefixes do not match";
    EXPECT_EQ(QRV_MDB_GetMediaClassByStr(nullptr), 0u);
}

TEST(Vocabulary, PropertyIndexByExactName) {
    EXPECT_EQ(QRV_MDB_GetFilterIdx("dc:title"), 3u);
    EXPECT_EQ(QRV_MDB_GetFilterIdx("upnp:class"), 2u);
    for (uint32_t i = 0; i < g_ulNumOfDlnaCols; ++i) {
        // Each name finds itself or an earlier entry of the same name.
        uint32_t found = QRV_MDB_GetFilterIdx(g_astDlnaCols[i].pcPropName);
        ASSERT_LE(found, i);
        EXPECT_STREQ(g_astDlnaCols[found].pcPropName, g_astDlnaCols[i].pcPropName);
    }
    EXPECT_EQ(QRV_MDB_GetFilterIdx("dc:titl"), 0xFFFFFFFFu);
    EXPECT_EQ(QRV_MDB_GetFilterIdx("DC:TITLE"), 0xFFFFFFFFu);
    EXPECT_EQ(QRV_MDB_GetFilterIdx(nullptr), 0xFFFFFFFFu);
    EXPECT_GE(QRV_MDB_GetFilterIdx("no:such"), g_ulNumOfDlnaCols) << "fails the caller's bound test";
}

TEST(Vocabulary, StatusNames) {
    const struct {
        uint32_t status;
        const char *name;
    } cases[] = {
        {MDB_OK, "MDB_OK"},           {MDB_ERR_PARA, "MDB_ERR_PARA"},           {MDB_ERR_MEM, "MDB_ERR_MEM"},
        {MDB_ERR_FAIL, "MDB_ERR_FAIL"}, {MDB_ERR_NOT_FOUND, "MDB_ERR_NOT_FOUND"}, {MDB_ERR_DB, "MDB_ERR_DB"},
        {0xf00002u, "MDB_UNKNOWN_STATUS"},
    };
    for (const auto &c : cases) {
        EXPECT_STREQ(QRV_MDB_StatusName(c.status), c.name);
    }
    EXPECT_EQ(g_ulDlnaCertification, 1u);
}

}  // namespace
