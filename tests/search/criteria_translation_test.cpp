// Translation of criteria into WHERE texts: the refusal of a text one character too long for the
// WHERE buffer, client durations, and records a caller fills by hand.
#include <gtest/gtest.h>
#include <mdb.h>

#include <cstring>
#include <string>
#include <vector>

#include "search/expression_translation.h"
#include "search_probes.h"

namespace {

// "status WHERE-text container-copy result-class comma-flag" of one translation (the class 99 and
// the flag 7 show where they are left unchanged).
std::string Translate(const std::string &container, const std::string &criteria) {
    MdbSearchSyntax st{};
    uint32_t status = MDBSearchCriteriaSyntax(criteria.c_str(), &st), resultClass = 99, commaSep = 7;
    char copy[256], where[512] = "";
    std::snprintf(copy, sizeof(copy), "%s", container.c_str());
    if (status == MDB_OK) {
        status = MDBSearchCriteriaCheck(container.c_str(), copy, sizeof(copy), &resultClass, where, sizeof(where),
                                        &commaSep, &st);
        EXPECT_EQ(st.lExprNum, 0) << "expression texts not released";
    }
    return std::string(QRV_MDB_StatusName(status)) + " " + (status == MDB_OK ? where : "") + " " + copy + " " +
           std::to_string(resultClass) + " " + std::to_string(commaSep);
}

// A text of 511 characters fits the WHERE buffer whole, one of 512 is refused rather than cut. What
// the texts select is checked by the search results tests.
TEST(CriteriaTranslation, WhereTextsFitTheirBufferOrAreRefused) {
    auto three = [](size_t c) {  // three containments give 53 characters plus the values
        return "dc:title contains \"" + std::string(200, 'a') + "\" or dc:title contains \"" + std::string(200, 'b') +
               "\" or dc:title contains \"" + std::string(c, 'c') + "\"";
    };
    const std::string fits = Translate("0", three(58));
    EXPECT_EQ(fits.size(), std::string("MDB_OK ").size() + 511 + std::string(" 0 0 7").size()) << fits;
    EXPECT_NE(fits.find("title like '%" + std::string(58, 'c') + "%' 0 0 7"), std::string::npos) << fits;
    EXPECT_EQ(Translate("0", three(59)).substr(0, 13), "MDB_ERR_PARA ");
}

TEST(CriteriaTranslation, ClientDurations) {
    const std::pair<const char *, long long> cases[] = {
        {"2:03:04.567", 7384567000LL}, {"0:00:01.5", 1005000}, {"0:00:59.999", 59999000}, {"1:00:00.", 3600000000LL},
        {"596523:14:07", 2147483647000000LL}, {"0:60:00", 0}, {"0:00:60", 0}, {"-1:00:00", 0}, {"0:00:00.1000", 0},
        {"1:00", 0}, {"", 0}, {"99999999999:00:00", 0},
    };
    for (const auto &[text, micros] : cases) EXPECT_EQ(MdbParseDuration(text), micros) << text;
}

// Records a caller could fill by hand: a comparison without a relational operator keeps every row
// (and the statement stays valid SQL); broken records are refused and every failure releases the
// expressions.
TEST(CriteriaTranslation, HandFilledRecords) {
    mdbtest::Catalogue catalogue;
    // result: the WHERE text, or the status name
    const struct { const char *container, *skeleton; std::vector<const char *> exprs; const char *result;
    } records[] = {
        {"0", "(_3 A _3) O _3", {"dc:title derivedfrom \"x\"", "dc:title contains \"b\"", "dc:title derivedfrom \"y\""},
         "(1 and title like '%b%') or 1"},
        {"0", "_2 O (_0)", {"upnp:class exists true", "@id = \"0.1\""}, "1 or (1)"},
        {"0", "_999", {"dc:title contains \"a\""}, "MDB_ERR_PARA"},
        {"0", "_3 A _3", {"dc:title contains \"a\""}, "MDB_ERR_PARA"},
        {"0", "_3", {"dc:title contains \"a\" or 1=1 --\""}, "MDB_ERR_PARA"},
        {"0", "_3", {"dc:title contains a"}, "MDB_ERR_PARA"},
        {"0.9", "_3", {"dc:title contains \"a\""}, "MDB_ERR_NOT_FOUND"},
        {nullptr, "_3", {"dc:title contains \"a\""}, "MDB_ERR_FAIL"},
    };
    for (const auto &r : records) {
        MdbSearchSyntax st{};
        std::strcpy(st.acSkeleton, r.skeleton);
        for (const char *e : r.exprs) st.apcExpr[st.lExprNum++] = strdup(e);
        char copy[256] = "0", where[512] = "";
        uint32_t resultClass = 0, commaSep = 0;
        uint32_t status = MDBSearchCriteriaCheck(r.container, copy, 256, &resultClass, where, 512, &commaSep, &st);
        EXPECT_EQ(status == MDB_OK ? std::string(where) : QRV_MDB_StatusName(status), r.result) << r.skeleton;
        EXPECT_EQ(st.lExprNum, 0);
        EXPECT_EQ(status == MDB_OK ? searchtest::PrepareError(catalogue.db(), where) : "", "") << where;
    }
}

}  // namespace
