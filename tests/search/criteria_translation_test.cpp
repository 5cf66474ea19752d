// Translation of criteria into WHERE texts: the worked examples, class and category scans,
// existence kinds, container rows, object ids, durations and resolutions, escaping of client values,
// and the refusal of texts that would not fit.
#include "search_probe.h"
#include "search/expression_translation.h"

#include <gtest/gtest.h>
#include <mdb.h>
#include <mdb_platform.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using searchtest::Prop;
using searchtest::Translate;
using searchtest::Translated;

namespace {

struct TranslationCase {
    std::string container;
    std::string criteria;
    std::string status;
    std::string where;
    uint32_t resultClass;
    std::string copy;      // the container copy afterwards
    uint32_t commaSep;     // 7: left unchanged
};

void RunCases(const std::vector<TranslationCase> &cases) {
    for (const TranslationCase &c : cases) {
        SCOPED_TRACE("container " + c.container + ", criteria " + c.criteria);
        Translated t = Translate(c.container, c.criteria);
        ASSERT_EQ(t.status, c.status);
        if (c.status != "MDB_OK") {
            continue;
        }
        EXPECT_EQ(t.where, c.where);
        EXPECT_EQ(t.resultClass, c.resultClass);
        EXPECT_EQ(t.copy, c.copy);
        EXPECT_EQ(t.commaSep, c.commaSep);
    }
}

TEST(CriteriaTranslation, WorkedExamples) {
    const std::string duration = Prop(8), resolution = Prop(11);
    RunCases({
        {"0", "*", "MDB_OK", "1", 0, "0", 7},
        {"0.2.512", "*", "MDB_OK", "(flags & 127) = 12", 0, "0.2.512", 7},
        {"0", "upnp:class derivedfrom \"object.item.audioItem\" and dc:title contains \"love\"", "MDB_OK",
         "((flags & 127) = 11) and title like '%love%'", 0, "0", 7},
        {"0.1.264|5", "dc:title contains \"x\"", "MDB_OK",
         "((flags & 127) = 11 or (flags & 127) = 2) and parentID = '5' and (title like '%x%')", 0, "0.1.264", 0},
        {"0.1.257", "upnp:class = \"object.container.genre.musicGenre\"", "MDB_OK",
         "(flags & 127) = 11 and (((flags & 127) = 11))", 4, "0.1.257", 7},
        {"0.1.257|3", "*", "MDB_OK", "(flags & 127) = 11 and genre_id = '3'", 0, "0.1.257", 1},
        {"0", "dc:title exists true", "MDB_OK", "1", 0, "0", 7},
        {"0", "dc:title exists false", "MDB_OK", "0", 0, "0", 7},
        {"0", resolution + " >= \"1920x1080\"", "MDB_OK",
         "((flags & 127) = 12 or (flags & 127) = 13) and resolution >= 4638564681600", 0, "0", 7},
        {"0", duration + " < \"0:05:00\"", "MDB_OK", "duration < 300000000", 0, "0", 7},
        {"0",
         "(upnp:class derivedfrom \"object.item.videoItem\" or upnp:class derivedfrom \"object.item.imageItem\") and "
         "dc:title contains \"sea\"",
         "MDB_OK", "(((flags & 127) = 12) or ((flags & 127) = 13)) and title like '%sea%'", 0, "0", 7},
    });
}

TEST(CriteriaTranslation, ClassValues) {
    const std::string artistClass = g_apcObjClassStrings[4];  // class 5
    RunCases({
        {"0", "upnp:class = \"object.nothing\"", "MDB_OK", "(0)", 0, "0", 7},
        {"0", "upnp:class derivedfrom \"object.item\"", "MDB_OK",
         "((flags & 127) = 11 or (flags & 127) = 12 or (flags & 127) = 13)", 0, "0", 7},
        {"0", "upnp:class derivedfrom \"\"", "MDB_OK",
         "((flags & 127) = 2 or (flags & 127) = 11 or (flags & 127) = 12 or (flags & 127) = 13)", 10, "0", 7},
        {"0.1.258", "upnp:class derivedfrom \"\"", "MDB_OK", "(flags & 127) = 11 and (((flags & 127) = 11))", 5,
         "0.1.258", 7},
        // Class 5 belongs to the artists of 0.1.258, not to the genres: the scan goes on, finds no
        // category, and the last matching container class (7, whose text is a prefix) stays.
        {"0.1.257", "upnp:class = \"" + artistClass + "\"", "MDB_OK", "(flags & 127) = 11 and ((0))", 7, "0.1.257", 7},
        // A value longer than a class text matches it too.
        {"0", "upnp:class = \"object.item.videoItem.movie\"", "MDB_OK", "((flags & 127) = 12)", 0, "0", 7},
        {"0", "upnp:class = \"object.container.storageFolder\"", "MDB_OK", "((flags & 127) = 2)", 1, "0", 7},
        {"0.2.514", "upnp:class derivedfrom \"object.container.album\"", "MDB_OK",
         "(flags & 127) = 12 and (((flags & 127) = 12))", 9, "0.2.514", 7},
    });
}

TEST(CriteriaTranslation, ExistenceKinds) {
    const std::string resolution = Prop(11);
    ASSERT_EQ(g_astDlnaCols[2].usSearchType, 0) << "upnp:class makes no existence statement";
    ASSERT_EQ(g_astDlnaCols[11].usSearchType, 24) << "resolution exists for video and pictures";
    RunCases({
        {"0", resolution + " exists true", "MDB_OK", "((flags & 127) = 12 or (flags & 127) = 13)", 0, "0", 7},
        {"0", resolution + " exists false", "MDB_OK", "((flags & 127) != 12 and (flags & 127) != 13)", 0, "0", 7},
        {"0", "upnp:class exists true", "MDB_OK", "1", 0, "0", 7},
        {"0", "upnp:class exists false", "MDB_OK", "1", 0, "0", 7},
        {"0", "@refID exists false", "MDB_OK", "1", 0, "0", 7},
        {"0", "@refID exists true", "MDB_OK", "0", 0, "0", 7},
        {"0.2.512", resolution + " exists true", "MDB_OK",
         "(flags & 127) = 12 and (((flags & 127) = 12 or (flags & 127) = 13))", 0, "0.2.512", 7},
    });
}

TEST(CriteriaTranslation, ContainerRows) {
    RunCases({
        {"0.1.264|0", "*", "MDB_OK", "((flags & 127) = 11 or (flags & 127) = 2)", 0, "0.1.264|0", 7},
        {"0.1.264|x", "*", "MDB_OK", "((flags & 127) = 11 or (flags & 127) = 2)", 0, "0.1.264|x", 7},
        {"0.1.256|7", "*", "MDB_OK", "(flags & 127) = 11", 0, "0.1.256", 1},
        {"0.2.516|12", "*", "MDB_OK", "((flags & 127) = 12 or (flags & 127) = 2) and parentID = '12'", 0, "0.2.516", 0},
        {"0.1.258|4", "dc:title contains \"a\"", "MDB_OK",
         "(flags & 127) = 11 and artist_id = '4' and (title like '%a%')", 0, "0.1.258", 1},
        {"0.2.514|2", "*", "MDB_OK", "(flags & 127) = 12 and album_id = '2'", 0, "0.2.514", 1},
        {"0", "*", "MDB_OK", "1", 0, "0", 7},
        {"0.9", "*", "MDB_ERR_NOT_FOUND", "", 0, "", 7},
        {"", "*", "MDB_OK", "1", 0, "", 7},  // an empty id reads as the root's number 0
    });
}

TEST(CriteriaTranslation, ObjectIds) {
    RunCases({
        {"0", "@id = \"0.1.256|17\"", "MDB_OK", "(flags & 127) = 11 and id = 17", 0, "0.1.256", 7},
        {"0", "@id = \"0.3.768|017\"", "MDB_OK", "(flags & 127) = 13 and id = 17", 0, "0.3.768", 7},
        {"0", "@id = \"0.1.264|5\"", "MDB_OK", "id = 5", 0, "0.1.264", 7},
        {"0.1.257", "@id = \"0.1.257|3\"", "MDB_OK",
         "(flags & 127) = 11 and (genre_id = '3' and (flags & 127) = 11)", 4, "0.1.257", 7},
        {"0.1.257", "@id = \"0.1.257|3,17\"", "MDB_OK",
         "(flags & 127) = 11 and (genre_id = '3' and (flags & 127) = 11 and id = 17)", 0, "0.1.257|3", 1},
        {"0.2.513", "@id = \"0.2.513|8\"", "MDB_OK",
         "(flags & 127) = 12 and (artist_id = '8' and (flags & 127) = 12)", 7, "0.2.513", 7},
        {"0", "@id = \"0.1.256\"", "MDB_OK", "1", 0, "0.1.256", 7},
        {"0.2", "@id = \"0.1.256|17\"", "MDB_ERR_PARA", "", 0, "", 7},
        {"0", "@id = \"0.9.999|1\"", "MDB_ERR_PARA", "", 0, "", 7},
        {"0", "@id = \"0.1.256|abc\"", "MDB_ERR_PARA", "", 0, "", 7},
        {"0", "@id = \"0.1.256|-5\"", "MDB_ERR_PARA", "", 0, "", 7},
        {"0", "@id = \"0.1.256|\"", "MDB_ERR_PARA", "", 0, "", 7},
        {"0", "@id = \"0.1.256|3,4\"", "MDB_ERR_PARA", "", 0, "", 7},
        {"0", "@id = \"0.1.256|99999999999999999999\"", "MDB_ERR_PARA", "", 0, "", 7},
        {"0.1.257", "@id = \"0.1.257|3,x\"", "MDB_ERR_PARA", "", 0, "", 7},
        {"0.1.257", "@id = \"0.1.257|3,1 or 1=1\"", "MDB_ERR_PARA", "", 0, "", 7},
    });
}

TEST(CriteriaTranslation, ResolutionsAndDurations) {
    const std::string resolution = Prop(11), duration = Prop(8);
    const std::string videoOrPicture = "((flags & 127) = 12 or (flags & 127) = 13) and ";
    RunCases({
        {"0", resolution + " = \"big\"", "MDB_OK", videoOrPicture + "0", 0, "0", 7},
        {"0", resolution + " < \"640x\"", "MDB_OK", videoOrPicture + "0", 0, "0", 7},
        {"0", resolution + " != \"1x1\"", "MDB_OK", videoOrPicture + "resolution != 4294967297", 0, "0", 7},
        {"0", resolution + " <= \"0x4294967297\"", "MDB_OK", videoOrPicture + "resolution <= 4294967296", 0, "0", 7},
        {"0", duration + " >= \"1:00:00\"", "MDB_OK", "duration >= 3600000000", 0, "0", 7},
        {"0", duration + " = \"soon\"", "MDB_OK", "duration = 0", 0, "0", 7},
    });
    struct {
        const char *text;
        long long micros;
    } durations[] = {
        {"1:00:00", 3600000000LL}, {"0:00:01.5", 1005000},  {"0:60:00", 0},
        {"-1:00:00", 0},          {"0:05:00", 300000000},   {"2:03:04.567", 7384567000LL},
        {"0:00:59.999", 59999000}, {"0:00:00.1000", 0},      {"0:00:60", 0},
        {"1:00", 0},              {"", 0},                   {"1:00:00.", 3600000000LL},
        {"99999999999:00:00", 0}, {"596523:14:07", 2147483647000000LL},
    };
    for (const auto &d : durations) {
        EXPECT_EQ(MdbParseDuration(d.text), d.micros) << d.text;
    }
}

TEST(CriteriaTranslation, ProtocolInfoNamesFamiliesAndProfiles) {
    const std::string pi = Prop(28);
    const std::string kAnyItem = "((flags & 127) = 11 or (flags & 127) = 12 or (flags & 127) = 13) and ";
    // The profile ids the expectations name, as the profile library knows them.
    struct {
        uint32_t id;
        const char *name, *mime;
    } profiles[] = {{11, "MP3", "audio/mpeg"},
                    {268, "MPEG_PS_PAL", "video/mpeg"},
                    {(7u << 16) + 268, "AVC_MP4_MP_SD_AAC_MULT5", "video/mp4"},
                    {(5u << 16) + 525, "PNG_TN", "image/png"},
                    {(10u << 16) + 11, "Unknown", "audio/x-wav"}};
    for (const auto &p : profiles) {
        const MdbDlnaProfile *profile = QRV_DLNA_GetProfileByProfileId(p.id);
        ASSERT_NE(profile, nullptr) << p.id;
        ASSERT_STREQ(profile->pcProfileName, p.name);
        ASSERT_STREQ(profile->pcMimeType, p.mime);
    }
    RunCases({
        {"0", pi + " contains \"DLNA.ORG_PN=MP3\"", "MDB_OK", kAnyItem + "flags = 11", 0, "0", 7},
        {"0", pi + " = \"DLNA.ORG_PN=MP3\"", "MDB_OK", kAnyItem + "flags = 11", 0, "0", 7},
        {"0", pi + " contains \"http-get:*:audio/mpeg:*\"", "MDB_OK", kAnyItem + "(flags & 65535) = 11", 0, "0", 7},
        {"0", pi + " contains \"http-get:*:video/mp4\"", "MDB_OK", kAnyItem + "(flags & 65535) = 268", 0, "0", 7},
        {"0", pi + " contains \"http-get:*:image/png:DLNA.ORG_PN=PNG_TN;DLNA.ORG_OP=01\"", "MDB_OK",
         kAnyItem + "flags = 328205", 0, "0", 7},
        {"0", pi + " contains \"http-get:*:audio/mpeg:DLNA.ORG_PN=PNG_TN\"", "MDB_OK", kAnyItem + "0", 0, "0", 7},
        {"0", pi + " contains \"DLNA.ORG_PN=Unknown\"", "MDB_OK", kAnyItem + "flags = 655371", 0, "0", 7},
        {"0", pi + " contains \"http-get:*:text/plain:*\"", "MDB_OK", kAnyItem + "0", 0, "0", 7},
        {"0", pi + " contains \"http-get:*:x' or 1=1 --:*\"", "MDB_OK", kAnyItem + "0", 0, "0", 7},
        {"0", pi + " contains \"audio/mpeg\"", "MDB_ERR_FAIL", "", 0, "", 7},
        {"0", pi + " contains \"\"", "MDB_ERR_FAIL", "", 0, "", 7},
    });
}

TEST(CriteriaTranslation, ClientValuesAreEscaped) {
    // dc:date exists for the three item classes, which restricts a comparison on it.
    const std::string kAnyItem = "((flags & 127) = 11 or (flags & 127) = 12 or (flags & 127) = 13) and ";
    RunCases({
        {"0", "dc:title contains \"it's\"", "MDB_OK", "title like '%it''s%'", 0, "0", 7},
        {"0", "dc:title contains \"x' or 1=1 --\"", "MDB_OK", "title like '%x'' or 1=1 --%'", 0, "0", 7},
        {"0", "dc:title contains \"50%_off\"", "MDB_OK", "title like '%50%_off%'", 0, "0", 7},
        {"0.1.264|5'x", "*", "MDB_OK", "((flags & 127) = 11 or (flags & 127) = 2) and parentID = '5''x'", 0, "0.1.264",
         0},
        {"0.1.264|5' or '1'='1", "*", "MDB_OK",
         "((flags & 127) = 11 or (flags & 127) = 2) and parentID = '5'' or ''1''=''1'", 0, "0.1.264", 0},
        {"0.1.257", "@id = \"0.1.257|it's\"", "MDB_OK",
         "(flags & 127) = 11 and (genre_id = 'it''s' and (flags & 127) = 11)", 4, "0.1.257", 7},
        // A double-quoted comparison value holds no double quote: the parser ends it at the first one.
        {"0", "dc:date >= \"2005-01-01\"", "MDB_OK", kAnyItem + "date >= \"2005-01-01\"", 0, "0", 7},
        {"0", "dc:date >= \"x' or 1=1 --\"", "MDB_OK", kAnyItem + "date >= \"x' or 1=1 --\"", 0, "0", 7},
    });
}

TEST(CriteriaTranslation, TextsThatWouldNotFitAreRefused) {
    // Three containments whose WHERE text is 53 characters plus the values.
    auto three = [](size_t a, size_t b, size_t c) {
        return "dc:title contains \"" + std::string(a, 'a') + "\" or dc:title contains \"" + std::string(b, 'b') +
               "\" or dc:title contains \"" + std::string(c, 'c') + "\"";
    };
    Translated fits = Translate("0", three(200, 200, 58));
    ASSERT_EQ(fits.status, "MDB_OK");
    EXPECT_EQ(fits.where.size(), 511u);
    const std::string last = "title like '%" + std::string(58, 'c') + "%'";
    EXPECT_EQ(fits.where.substr(fits.where.size() - last.size()), last);
    EXPECT_EQ(Translate("0", three(200, 200, 59)).status, "MDB_ERR_PARA");

    struct {
        std::string container, criteria, why;
    } refused[] = {
        {"0", "dc:title contains \"" + std::string(125, '\'') + "\"", "quotes doubled beyond the condition buffer"},
        {"0.1.264|5" + std::string(130, '\''), "*", "a sub-id whose quotes overflow the row condition"},
        {"0.1.257", "@id = \"0.1.257|" + std::string(100, '\'') + "\"", "a category id beyond its condition buffer"},
        {"0", "dc:date >= \"" + std::string(120, 'd') + "\"", "a comparison beyond its condition buffer"},
        {"0.1.264|5", "dc:title contains \"" + std::string(230, 'x') + "\" and dc:title contains \"" +
                          std::string(230, 'y') + "\"",
         "the WHERE text with the container's conditions"},
    };
    for (const auto &r : refused) {
        EXPECT_EQ(Translate(r.container, r.criteria).status, "MDB_ERR_PARA") << r.why;
    }
}

TEST(CriteriaTranslation, ExpressionsThatCannotRestrictKeepValidSql) {
    searchtest::SchemaDb schema;
    const std::string criteria[] = {
        "upnp:class exists true",
        "upnp:class exists true and dc:title contains \"a\"",
        "(upnp:class exists false) or (@id = \"0.1.256\")",
        "dc:title contains \"a\" or (upnp:class exists true and @id = \"0.1\")",
        "((@id = \"0\")) and (" + Prop(8) + " exists false or upnp:class exists true)",
    };
    for (const std::string &c : criteria) {
        Translated t = Translate("0", c);
        ASSERT_EQ(t.status, "MDB_OK") << c;
        EXPECT_EQ(searchtest::PrepareError(schema.db(), t.where), "") << c << " gives " << t.where;
    }

    // A comparison without a relational operator ("derivedfrom" on a plain property) keeps every row.
    MdbSearchSyntax st;
    std::memset(&st, 0, sizeof(st));
    std::strcpy(st.acSkeleton, "(_3 A _3) O _3");
    st.lExprNum = 3;
    st.apcExpr[0] = strdup("dc:title derivedfrom \"x\"");
    st.apcExpr[1] = strdup("dc:title contains \"b\"");
    st.apcExpr[2] = strdup("dc:title derivedfrom \"y\"");
    char copy[256] = "0", where[512];
    uint32_t resultClass = 0, commaSep = 0;
    ASSERT_EQ(MDBSearchCriteriaCheck("0", copy, sizeof(copy), &resultClass, where, sizeof(where), &commaSep, &st),
              MDB_OK);
    EXPECT_STREQ(where, "(1 and title like '%b%') or 1");
    EXPECT_EQ(searchtest::PrepareError(schema.db(), where), "");
}

// A record as a caller could fill it by hand, with one expression.
void FillRecord(MdbSearchSyntax &st, const char *skeleton, const char *expr) {
    std::memset(&st, 0, sizeof(st));
    std::strcpy(st.acSkeleton, skeleton);
    st.lExprNum = 1;
    st.apcExpr[0] = strdup(expr);
}

TEST(CriteriaTranslation, FailuresReleaseTheExpressions) {
    char copy[256], where[512];
    uint32_t resultClass = 0, commaSep = 0;
    MdbSearchSyntax st;
    struct {
        const char *container;
        char *copy;
        uint32_t *resultClass;
        char *where;
        uint32_t *commaSep;
        const char *status;
    } nulls[] = {
        {nullptr, copy, &resultClass, where, &commaSep, "MDB_ERR_FAIL"},
        {"0", nullptr, &resultClass, where, &commaSep, "MDB_ERR_FAIL"},
        {"0", copy, nullptr, where, &commaSep, "MDB_ERR_FAIL"},
        {"0", copy, &resultClass, where, nullptr, "MDB_ERR_FAIL"},
        {"0", copy, &resultClass, nullptr, &commaSep, "MDB_ERR_FAIL"},
    };
    for (const auto &n : nulls) {
        std::strcpy(copy, "0");
        FillRecord(st, "_3", "dc:title contains \"a\"");
        EXPECT_EQ(QRV_MDB_StatusName(MDBSearchCriteriaCheck(n.container, n.copy, 256, n.resultClass, n.where, 512,
                                                            n.commaSep, &st)),
                  std::string(n.status));
        EXPECT_EQ(st.lExprNum, 0);
        EXPECT_EQ(st.apcExpr[0], nullptr);
    }
    EXPECT_EQ(MDBSearchCriteriaCheck("0", copy, 256, &resultClass, where, 512, &commaSep, nullptr), MDB_ERR_FAIL);

    struct {
        const char *container, *skeleton, *expr, *status, *why;
    } bad[] = {
        {"0", "_999", "dc:title contains \"a\"", "MDB_ERR_PARA", "a property index beyond the table"},
        {"0", "_3 A _3", "dc:title contains \"a\"", "MDB_ERR_PARA", "more references than expressions"},
        {"0", "_3", "dc:title contains \"a\" or 1=1 --\"", "MDB_ERR_PARA", "a quote inside the value"},
        {"0", "_3", "dc:title contains a", "MDB_ERR_PARA", "no quoted value"},
        {"0.9", "_3", "dc:title contains \"a\"", "MDB_ERR_NOT_FOUND", "an unknown container"},
    };
    for (const auto &b : bad) {
        std::strcpy(copy, b.container);
        FillRecord(st, b.skeleton, b.expr);
        EXPECT_EQ(QRV_MDB_StatusName(
                      MDBSearchCriteriaCheck(b.container, copy, 256, &resultClass, where, 512, &commaSep, &st)),
                  std::string(b.status))
            << b.why;
        EXPECT_EQ(st.lExprNum, 0) << b.why;
    }
}

}  // namespace
