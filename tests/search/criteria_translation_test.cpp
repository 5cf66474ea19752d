// Translation of criteria into WHERE texts: the worked examples, class and category scans, existence
// kinds, container rows, object ids, durations, resolutions and protocolInfo, escaping of client
// values, the refusal of texts that would not fit, and valid SQL for expressions that cannot restrict.
#include <gtest/gtest.h>
#include <mdb.h>
#include <mdb_platform.h>

#include <cstring>
#include <string>
#include <vector>

#include "search/expression_translation.h"
#include "search_library.h"

using searchtest::Prop;
using searchtest::Translate;
using searchtest::Translated;

namespace {

struct TranslationCase {
    std::string container, criteria, where;  // where: the WHERE text, or the status name of a refusal
    uint32_t resultClass = 0;
    std::string copy = "";  // the container copy afterwards; "" for the container itself
    uint32_t commaSep = 7;  // 7: left unchanged
};

void RunCases(const std::vector<TranslationCase> &cases) {
    for (const TranslationCase &c : cases) {
        SCOPED_TRACE("container " + c.container + ", criteria " + c.criteria);
        Translated t = Translate(c.container, c.criteria);
        if (c.where.rfind("MDB_", 0) == 0) {
            EXPECT_EQ(t.status, c.where);
            continue;
        }
        ASSERT_EQ(t.status, "MDB_OK");
        EXPECT_EQ(t.where, c.where);
        EXPECT_EQ(t.resultClass, c.resultClass);
        EXPECT_EQ(t.copy, c.copy.empty() ? c.container : c.copy);
        EXPECT_EQ(t.commaSep, c.commaSep);
    }
}

const std::string kAudioOrFolder = "((flags & 127) = 11 or (flags & 127) = 2)";
const std::string kVisual = "((flags & 127) = 12 or (flags & 127) = 13)";
const std::string kAnyItem = "((flags & 127) = 11 or (flags & 127) = 12 or (flags & 127) = 13)";

TEST(CriteriaTranslation, WorkedExamples) {
    RunCases({
        {"0", "*", "1"},
        {"0.2.512", "*", "(flags & 127) = 12"},
        {"0", "upnp:class derivedfrom \"object.item.audioItem\" and dc:title contains \"love\"",
         "((flags & 127) = 11) and title like '%love%'"},
        {"0.1.264|5", "dc:title contains \"x\"", kAudioOrFolder + " and parentID = '5' and (title like '%x%')", 0,
         "0.1.264", 0},
        {"0.1.257", "upnp:class = \"object.container.genre.musicGenre\"",
         "(flags & 127) = 11 and (((flags & 127) = 11))", 4},
        {"0.1.257|3", "*", "(flags & 127) = 11 and genre_id = '3'", 0, "0.1.257", 1},
        {"0", "dc:title exists true", "1"},
        {"0", "dc:title exists false", "0"},
        {"0", Prop(11) + " >= \"1920x1080\"", kVisual + " and resolution >= 4638564681600"},
        {"0", Prop(8) + " < \"0:05:00\"", "duration < 300000000"},
        {"0",
         "(upnp:class derivedfrom \"object.item.videoItem\" or upnp:class derivedfrom \"object.item.imageItem\") and "
         "dc:title contains \"sea\"",
         "(((flags & 127) = 12) or ((flags & 127) = 13)) and title like '%sea%'"},
    });
}

TEST(CriteriaTranslation, ClassesAndExistence) {
    RunCases({
        {"0", "upnp:class = \"object.nothing\"", "(0)"},
        {"0", "upnp:class derivedfrom \"object.item\"", kAnyItem},
        {"0", "upnp:class derivedfrom \"\"", "((flags & 127) = 2 or " + kAnyItem.substr(1), 10},
        {"0.1.258", "upnp:class derivedfrom \"\"", "(flags & 127) = 11 and (((flags & 127) = 11))", 5},
        // Class 5 belongs to the artists of 0.1.258, not to the genres: the scan goes on, finds no
        // category, and the last matching container class (7, whose text is a prefix) stays.
        {"0.1.257", "upnp:class = \"" + std::string(g_apcObjClassStrings[4]) + "\"", "(flags & 127) = 11 and ((0))", 7},
        {"0", "upnp:class = \"object.item.videoItem.movie\"", "((flags & 127) = 12)"},  // longer than a class text
        {"0", "upnp:class = \"object.container.storageFolder\"", "((flags & 127) = 2)", 1},
        {"0.2.514", "upnp:class derivedfrom \"object.container.album\"",
         "(flags & 127) = 12 and (((flags & 127) = 12))", 9},
        {"0", Prop(11) + " exists true", kVisual},
        {"0", Prop(11) + " exists false", "((flags & 127) != 12 and (flags & 127) != 13)"},
        {"0.2.512", Prop(11) + " exists true", "(flags & 127) = 12 and (" + kVisual + ")"},
        {"0", "upnp:class exists false", "1"},  // existence kind 0 cannot restrict
        {"0", "@refID exists false", "1"},
        {"0", "@refID exists true", "0"},
    });
}

TEST(CriteriaTranslation, ContainersAndObjectIds) {
    RunCases({
        {"0.1.264|0", "*", kAudioOrFolder},
        {"0.1.264|x", "*", kAudioOrFolder},
        {"0.1.256|7", "*", "(flags & 127) = 11", 0, "0.1.256", 1},
        {"0.2.516|12", "*", "((flags & 127) = 12 or (flags & 127) = 2) and parentID = '12'", 0, "0.2.516", 0},
        {"0.1.258|4", "dc:title contains \"a\"", "(flags & 127) = 11 and artist_id = '4' and (title like '%a%')", 0,
         "0.1.258", 1},
        {"", "*", "1"},  // an empty id reads as the root's number 0
        {"0.9", "*", "MDB_ERR_NOT_FOUND"},
        {"0", "@id = \"0.1.256|17\"", "(flags & 127) = 11 and id = 17", 0, "0.1.256"},
        {"0", "@id = \"0.3.768|017\"", "(flags & 127) = 13 and id = 17", 0, "0.3.768"},
        {"0", "@id = \"0.1.264|5\"", "id = 5", 0, "0.1.264"},
        {"0.1.257", "@id = \"0.1.257|3\"", "(flags & 127) = 11 and (genre_id = '3' and (flags & 127) = 11)", 4},
        {"0.1.257", "@id = \"0.1.257|3,17\"",
         "(flags & 127) = 11 and (genre_id = '3' and (flags & 127) = 11 and id = 17)", 0, "0.1.257|3", 1},
        {"0.2.513", "@id = \"0.2.513|8\"", "(flags & 127) = 12 and (artist_id = '8' and (flags & 127) = 12)", 7},
        {"0", "@id = \"0.1.256\"", "1", 0, "0.1.256"},  // no sub-id: cannot restrict
        {"0.2", "@id = \"0.1.256|17\"", "MDB_ERR_PARA"},
        {"0", "@id = \"0.9.999|1\"", "MDB_ERR_PARA"},
        {"0", "@id = \"0.1.256|abc\"", "MDB_ERR_PARA"},
        {"0", "@id = \"0.1.256|\"", "MDB_ERR_PARA"},
        {"0", "@id = \"0.1.256|3,4\"", "MDB_ERR_PARA"},
        {"0", "@id = \"0.1.256|99999999999999999999\"", "MDB_ERR_PARA"},
        {"0.1.257", "@id = \"0.1.257|3,1 or 1=1\"", "MDB_ERR_PARA"},
    });
}

TEST(CriteriaTranslation, DurationsResolutionsAndProtocolInfo) {
    const std::string resolution = Prop(11), duration = Prop(8), pi = Prop(28);
    RunCases({
        {"0", resolution + " = \"big\"", kVisual + " and 0"},
        {"0", resolution + " < \"640x\"", kVisual + " and 0"},
        {"0", resolution + " != \"1x1\"", kVisual + " and resolution != 4294967297"},
        {"0", resolution + " <= \"0x4294967297\"", kVisual + " and resolution <= 4294967296"},
        {"0", duration + " = \"soon\"", "duration = 0"},
        {"0", pi + " = \"DLNA.ORG_PN=MP3\"", kAnyItem + " and flags = 11"},
        {"0", pi + " contains \"http-get:*:audio/mpeg:*\"", kAnyItem + " and (flags & 65535) = 11"},
        {"0", pi + " contains \"http-get:*:image/png:DLNA.ORG_PN=PNG_TN;DLNA.ORG_OP=01\"",
         kAnyItem + " and flags = 328205"},
        {"0", pi + " contains \"http-get:*:audio/mpeg:DLNA.ORG_PN=PNG_TN\"", kAnyItem + " and 0"},
        {"0", pi + " contains \"DLNA.ORG_PN=Unknown\"", kAnyItem + " and flags = 655371"},
        {"0", pi + " contains \"audio/mpeg\"", "MDB_ERR_FAIL"},
    });
    struct {
        const char *text;
        long long micros;
    } durations[] = {
        {"2:03:04.567", 7384567000LL}, {"0:00:01.5", 1005000}, {"0:00:59.999", 59999000}, {"1:00:00.", 3600000000LL},
        {"596523:14:07", 2147483647000000LL}, {"0:60:00", 0}, {"0:00:60", 0}, {"-1:00:00", 0}, {"0:00:00.1000", 0},
        {"1:00", 0}, {"", 0}, {"99999999999:00:00", 0},
    };
    for (const auto &d : durations) {
        EXPECT_EQ(MdbParseDuration(d.text), d.micros) << d.text;
    }
}

TEST(CriteriaTranslation, ClientValuesAreEscapedAndMustFit) {
    RunCases({
        {"0", "dc:title contains \"it's\"", "title like '%it''s%'"},
        {"0", "dc:title contains \"x' or 1=1 --\"", "title like '%x'' or 1=1 --%'"},
        {"0", "dc:title contains \"50%_off\"", "title like '%50\\%\\_off%' ESCAPE '\\'"},
        {"0.1.264|5' or '1'='1", "*", kAudioOrFolder + " and parentID = '5'' or ''1''=''1'", 0, "0.1.264", 0},
        {"0.1.257", "@id = \"0.1.257|it's\"", "(flags & 127) = 11 and (genre_id = 'it''s' and (flags & 127) = 11)", 4},
        {"0", Prop(28) + " contains \"http-get:*:x' or 1=1 --:*\"", kAnyItem + " and 0"},
        // A double-quoted comparison value holds no double quote: the parser ends it at the first one.
        {"0", "dc:date >= \"x' or 1=1 --\"", kAnyItem + " and date >= 'x'' or 1=1 --'"},
        {"0", "dc:title contains \"" + std::string(125, '\'') + "\"", "MDB_ERR_PARA"},
        {"0.1.264|5" + std::string(130, '\''), "*", "MDB_ERR_PARA"},
        {"0.1.257", "@id = \"0.1.257|" + std::string(100, '\'') + "\"", "MDB_ERR_PARA"},
        {"0", "dc:date >= \"" + std::string(120, 'd') + "\"", "MDB_ERR_PARA"},
        {"0.1.264|5",
         "dc:title contains \"" + std::string(230, 'x') + "\" and dc:title contains \"" + std::string(230, 'y') + "\"",
         "MDB_ERR_PARA"},
    });
    // Three containments give 53 characters plus the values: 511 fit whole, 512 are refused.
    auto three = [](size_t c) {
        return "dc:title contains \"" + std::string(200, 'a') + "\" or dc:title contains \"" + std::string(200, 'b') +
               "\" or dc:title contains \"" + std::string(c, 'c') + "\"";
    };
    Translated fits = Translate("0", three(58));
    ASSERT_EQ(fits.status, "MDB_OK");
    EXPECT_EQ(fits.where.size(), 511u);
    const std::string last = "title like '%" + std::string(58, 'c') + "%'";
    EXPECT_EQ(fits.where.substr(fits.where.size() - last.size()), last);
    EXPECT_EQ(Translate("0", three(59)).status, "MDB_ERR_PARA");
}

TEST(CriteriaTranslation, ExpressionsThatCannotRestrictKeepValidSql) {
    searchtest::SearchLibrary lib;
    const std::string criteria[] = {
        "upnp:class exists true and dc:title contains \"a\"",
        "(upnp:class exists false) or (@id = \"0.1.256\")",
        "dc:title contains \"a\" or (upnp:class exists true and @id = \"0.1\")",
        "((@id = \"0\")) and (" + Prop(8) + " exists false or upnp:class exists true)",
    };
    for (const std::string &c : criteria) {
        Translated t = Translate("0", c);
        ASSERT_EQ(t.status, "MDB_OK") << c;
        EXPECT_EQ(searchtest::PrepareError(lib.db(), t.where), "") << c << " gives " << t.where;
    }

    // Records a caller could fill by hand: a comparison without a relational operator keeps every
    // row; broken records are refused and every failure releases the expressions.
    struct {
        const char *container, *skeleton;
        std::vector<const char *> exprs;
        const char *result;  // the WHERE text, or the status name
    } records[] = {
        {"0",
         "(_3 A _3) O _3",
         {"dc:title derivedfrom \"x\"", "dc:title contains \"b\"", "dc:title derivedfrom \"y\""},
         "(1 and title like '%b%') or 1"},
        {"0", "_999", {"dc:title contains \"a\""}, "MDB_ERR_PARA"},
        {"0", "_3 A _3", {"dc:title contains \"a\""}, "MDB_ERR_PARA"},
        {"0", "_3", {"dc:title contains \"a\" or 1=1 --\""}, "MDB_ERR_PARA"},
        {"0", "_3", {"dc:title contains a"}, "MDB_ERR_PARA"},
        {"0.9", "_3", {"dc:title contains \"a\""}, "MDB_ERR_NOT_FOUND"},
        {nullptr, "_3", {"dc:title contains \"a\""}, "MDB_ERR_FAIL"},
    };
    for (const auto &r : records) {
        SCOPED_TRACE(r.skeleton);
        MdbSearchSyntax st;
        std::memset(&st, 0, sizeof(st));
        std::strcpy(st.acSkeleton, r.skeleton);
        for (const char *e : r.exprs) {
            st.apcExpr[st.lExprNum++] = strdup(e);
        }
        char copy[256], where[512] = "";
        std::snprintf(copy, sizeof(copy), "%s", r.container ? r.container : "0");
        uint32_t resultClass = 0, commaSep = 0;
        uint32_t status = MDBSearchCriteriaCheck(r.container, copy, 256, &resultClass, where, 512, &commaSep, &st);
        EXPECT_EQ(status == MDB_OK ? std::string(where) : QRV_MDB_StatusName(status), r.result);
        EXPECT_EQ(st.lExprNum, 0);
        if (status == MDB_OK) {
            EXPECT_EQ(searchtest::PrepareError(lib.db(), where), "");
        }
    }
}

}  // namespace
