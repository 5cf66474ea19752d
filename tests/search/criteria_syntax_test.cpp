// The criteria checker: which texts are accepted and into how many expressions, the texts and
// limits it refuses (leaving nothing behind), and a failed copy. The program defines strdup so that
// the library's copies can be made to fail.
#include <gtest/gtest.h>
#include <mdb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {
int g_failAt = -1, g_calls = 0;  // the strdup call that fails, counted from FailStrdupCall
void FailStrdupCall(int n) { g_calls = 0, g_failAt = n; }
}  // namespace

extern "C" char *strdup(const char *pcText) {
    if (g_failAt >= 0 && g_calls++ == g_failAt) {
        g_failAt = -1;
        return nullptr;
    }
    const size_t len = std::strlen(pcText) + 1;
    char *pcCopy = static_cast<char *>(std::malloc(len));
    return pcCopy != nullptr ? static_cast<char *>(std::memcpy(pcCopy, pcText, len)) : nullptr;
}

namespace {

// A checked record that releases its expressions when the test is done with it.
struct Parsed {
    MdbSearchSyntax st{};
    std::string status;
    explicit Parsed(const char *criteria) { status = QRV_MDB_StatusName(MDBSearchCriteriaSyntax(criteria, &st)); }
    ~Parsed() {
        for (int32_t i = 0; i < st.lExprNum && i < MDB_SEARCH_MAX_EXPR; ++i) std::free(st.apcExpr[i]);
    }
    // The number of expressions, or -1 for a refused text, which leaves no expression and no skeleton.
    int exprs() const {
        const bool empty = std::all_of(std::begin(st.acSkeleton), std::end(st.acSkeleton), [](char c) { return !c; });
        EXPECT_TRUE(status == "MDB_OK" || (st.lExprNum == 0 && empty)) << "a refused text left something";
        return status == "MDB_OK" ? st.lExprNum : status == "MDB_ERR_PARA" ? -1 : -2;
    }
};

std::string Repeat(const std::string &part, const std::string &joiner, int n) {
    std::string s;
    for (int i = 0; i < n; ++i) s += (i ? joiner : "") + part;
    return s;
}

std::string Nested(const std::string &inner, int depth) {
    return std::string(depth, '(') + inner + std::string(depth, ')');
}

// Among the refused: "=<", "!=" and "contains" where the property's recognizer doesn't know them, a
// missing blank, a backslash (which does not protect a quote) and a text ending after an expression.
TEST(CriteriaSyntax, AcceptedAndRefusedTexts) {
    const std::string x = "dc:title = \"x\"", y = "dc:title = \"y\"", z = "dc:title = \"z\"";
    const std::pair<std::string, int> cases[] = {
        {"*", 0}, {"*anything", 0}, {"   \t\n", 0}, {"  " + x + "  ", 1}, {"dc:title  contains \"a b\"", 1},
        {"dc:title = \"\"", 1}, {"upnp:class derivedfrom \"object.item\"", 1}, {"(dc:title exists false)", 1},
        {"dc:date <= \"1\" or dc:date != \"2\" or dc:date > \"3\"", 3}, {"(" + x + ")and " + y, 2},
        {"((" + x + "))", 1}, {x + " or (" + y + " and " + z + ")", 3}, {x + " or\t" + y, 2},
        {"dc:title != \"x\"", -1}, {"dc:date =< \"x\"", -1}, {"upnp:class contains \"item\"", -1},
        {"dc:title contain \"x\"", -1}, {"dc:title Contains \"x\"", -1}, {"dc:title=\"x\"", -1},
        {"dc:title =\"x\"", -1}, {"dc:title = x", -1}, {"dc:title = \"x", -1}, {x + "and " + y, -1},
        {x + " and(" + y + ")", -1}, {x + " AND " + y, -1}, {x + " orx " + y, -1}, {"(" + x, -1}, {x + ")", -1},
        {"()", -1}, {"and " + x, -1}, {x + " and", -1}, {x + " " + y, -1}, {x + " and and " + y, -1},
        {"(" + x + ") (" + y + ")", -1}, {x + " (", -1}, {"dc:title = \"a\\\"b\"", -1},
        {"dc:title exists truex", -1}, {"dc:title exists maybe", -1}, {"dc:title existsx true", -1},
        {"unknown:prop = \"x\"", -1}, {"DC:TITLE = \"x\"", -1}, {" *", -1}, {"dc:title", -1}, {"dc:title \"x\"", -1},
        {"", -1},
    };
    for (const auto &[criteria, exprs] : cases) EXPECT_EQ(Parsed(criteria.c_str()).exprs(), exprs) << criteria;
    EXPECT_EQ(Parsed(nullptr).exprs(), -1);
    for (int32_t (*fn)(const char **) : {MdbCmpRelOp, MdbCmpEqualOp, MdbCmpStringOp, MdbCmpDerivedOp}) {
        EXPECT_EQ(fn(nullptr), -1);  // the operator readers refuse a missing text
    }
}

// More than 32 expressions, an expression over 255 characters, nesting deeper than 16 or a
// skeleton over 1023 characters refuse the whole text; a failed copy releases what was copied.
TEST(CriteriaSyntax, LimitsRefuseTheWholeText) {
    const std::string expr = "dc:title = \"x\"";
    const std::string value255(255 - std::strlen("dc:title = \"\""), 'v');
    // 26 groups 16 deep of "_33" (985 characters), " A " and one more group 14 deep: 1023 or 1024.
    const std::string groups = Repeat(Nested("@refID exists false", 16), " and ", 26) + " and ";
    const std::pair<std::string, int> cases[] = {
        {Repeat(expr, " or ", 32), 32}, {Repeat(expr, " or ", 33), -1},
        {"dc:title = \"" + value255 + "\"", 1}, {"dc:title = \"" + value255 + "v\"", -1},
        {"dc:title = \"a\" and dc:title = \"" + value255 + "v\"", -1},
        {Nested(expr, 16), 1}, {Nested(expr, 17), -1}, {Nested(expr, 100), -1},
        {Repeat(expr + " and (", "", 17) + expr + std::string(17, ')'), -1},
        {groups + Nested(expr + " and " + expr, 14), 28}, {groups + Nested("@refID exists false and " + expr, 14), -1},
    };
    for (const auto &[criteria, exprs] : cases) {
        EXPECT_EQ(Parsed(criteria.c_str()).exprs(), exprs) << criteria.substr(0, 60) << "... of " << criteria.size();
    }
    FailStrdupCall(1);  // the second of three copies
    Parsed failed("dc:title = \"a\" and dc:title = \"b\" and dc:title = \"c\"");
    FailStrdupCall(-1);
    EXPECT_EQ(failed.exprs(), -2);
    EXPECT_EQ(failed.status, "MDB_ERR_MEM");
}

}  // namespace
