// The criteria checker: which texts are accepted, the skeleton and expression texts it leaves, the
// limits that refuse hostile texts, and the small exported helpers it is built from.
#include <gtest/gtest.h>
#include <mdb.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "search/search_words.h"
#include "search_library.h"

namespace {

// A checked record that releases its expressions when the test is done with it.
struct Parsed {
    MdbSearchSyntax st{};
    std::string status;
    explicit Parsed(const std::string &criteria) {
        status = QRV_MDB_StatusName(MDBSearchCriteriaSyntax(criteria.c_str(), &st));
    }
    ~Parsed() {
        for (int32_t i = 0; i < st.lExprNum && i < MDB_SEARCH_MAX_EXPR; ++i) {
            std::free(st.apcExpr[i]);
        }
    }
    std::vector<std::string> exprs() const { return std::vector<std::string>(st.apcExpr, st.apcExpr + st.lExprNum); }
    // A refused text leaves no expression and no skeleton behind.
    void expectEmpty() const {
        EXPECT_EQ(st.lExprNum, 0);
        EXPECT_TRUE(std::all_of(std::begin(st.acSkeleton), std::end(st.acSkeleton), [](char c) { return c == 0; }));
    }
};

TEST(CriteriaSyntax, AcceptedTexts) {
    const std::string x = "dc:title = \"x\"", y = "dc:title = \"y\"", z = "dc:title = \"z\"";
    struct {
        std::string criteria, skeleton;
        std::vector<std::string> exprs;
    } cases[] = {
        {"*", "*", {}},
        {"*anything", "*", {}},  // nothing after the wildcard is examined
        {"   \t\n", "", {}},
        {"  " + x + "  ", "_3", {x}},
        {"dc:title contains \"a b\"", "_3", {"dc:title contains \"a b\""}},
        {"dc:title  contains \"love\"", "_3", {"dc:title  contains \"love\""}},  // inner blanks are kept
        {"dc:title = \"\"", "_3", {"dc:title = \"\""}},
        {"upnp:class derivedfrom \"object.item\"", "_2", {"upnp:class derivedfrom \"object.item\""}},
        {"upnp:class = \"object.item\"", "_2", {"upnp:class = \"object.item\""}},
        {"dc:title exists true", "_3", {"dc:title exists true"}},
        {"(dc:title exists false)", "(_3)", {"dc:title exists false"}},
        {"dc:date <= \"1\" or dc:date != \"2\" or dc:date > \"3\"",
         "_4 O _4 O _4",
         {"dc:date <= \"1\"", "dc:date != \"2\"", "dc:date > \"3\""}},
        {"(" + x + ")and " + y, "(_3) A _3", {x, y}},  // a parenthesis needs no whitespace
        {"((" + x + "))", "((_3))", {x}},
        {x + " or (" + y + " and " + z + ")", "_3 O (_3 A _3)", {x, y, z}},
        {x + " or\t" + y, "_3 O _3", {x, y}},
        {"(upnp:class derivedfrom \"object.item.audioItem\" or upnp:class derivedfrom \"object.item.videoItem\") "
         "and dc:title contains \"x\"",
         "(_2 O _2) A _3",
         {"upnp:class derivedfrom \"object.item.audioItem\"", "upnp:class derivedfrom \"object.item.videoItem\"",
          "dc:title contains \"x\""}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.criteria);
        Parsed p(c.criteria);
        ASSERT_EQ(p.status, "MDB_OK");
        EXPECT_EQ(p.st.acSkeleton, c.skeleton);
        EXPECT_EQ(p.exprs(), c.exprs);
        EXPECT_EQ(p.st.lParenDepth, 0);
    }
}

// Among them: "=<", "!=" and "contains" where the property's recognizer doesn't know them, a missing
// blank, a backslash (which does not protect a quote) and a text ending after a stored expression.
TEST(CriteriaSyntax, RejectedTextsLeaveNothing) {
    const char *cases[] = {
        "dc:title != \"x\"", "dc:date =< \"x\"", "upnp:class contains \"item\"", "dc:title contain \"x\"",
        "dc:title Contains \"x\"", "dc:title=\"x\"", "dc:title =\"x\"", "dc:title = x", "dc:title = \"x",
        "dc:title = \"x\"and dc:title = \"y\"", "dc:title = \"x\" and(dc:title = \"y\")",
        "dc:title = \"x\" AND dc:title = \"y\"", "dc:title = \"x\" orx dc:title = \"y\"", "(dc:title = \"x\"",
        "dc:title = \"x\")", "()", "and dc:title = \"x\"", "dc:title = \"x\" and", "dc:title = \"x\" dc:title = \"y\"",
        "dc:title = \"x\" and and dc:title = \"y\"", "(dc:title = \"x\") (dc:title = \"y\")", "dc:title = \"x\" (",
        "dc:title = \"a\\\"b\"", "dc:title exists truex", "dc:title exists maybe", "dc:title existsx true",
        "unknown:prop = \"x\"", "DC:TITLE = \"x\"", " *", "dc:title", "dc:title \"x\"",
    };
    for (const char *criteria : cases) {
        SCOPED_TRACE(criteria);
        Parsed p(criteria);
        EXPECT_EQ(p.status, "MDB_ERR_PARA");
        p.expectEmpty();
    }
    for (const char *criteria : {static_cast<const char *>(nullptr), ""}) {
        MdbSearchSyntax st;
        std::memset(&st, 0x5a, sizeof(st));
        EXPECT_EQ(MDBSearchCriteriaSyntax(criteria, &st), MDB_ERR_PARA);
        const unsigned char *bytes = reinterpret_cast<const unsigned char *>(&st);
        EXPECT_TRUE(std::all_of(bytes, bytes + sizeof(st), [](unsigned char b) { return b == 0x5a; }))
            << "record touched";
    }
    EXPECT_EQ(MDBSearchCriteriaSyntax("*", nullptr), MDB_ERR_PARA);
}

std::string Repeat(const std::string &part, const std::string &joiner, int n) {
    std::string s;
    for (int i = 0; i < n; ++i) {
        s += (i ? joiner : "") + part;
    }
    return s;
}

std::string Nested(const std::string &inner, int depth) {
    return std::string(depth, '(') + inner + std::string(depth, ')');
}

TEST(CriteriaSyntax, LimitsRefuseTheWholeText) {
    const std::string expr = "dc:title = \"x\"";
    const std::string value255(255 - std::strlen("dc:title = \"\""), 'v');
    // 26 groups 16 deep of "_33" (985 characters), " A " and one more group 14 deep: 1023 or 1024.
    const std::string groups = Repeat(Nested("@refID exists false", 16), " and ", 26) + " and ";
    const std::string skeleton1023 = groups + Nested(expr + " and " + expr, 14);
    struct {
        std::string criteria;
        int exprs;  // -1: refused with MDB_ERR_PARA
    } cases[] = {
        {Repeat(expr, " or ", 32), 32},
        {Repeat(expr, " or ", 33), -1},
        {"dc:title = \"" + value255 + "\"", 1},
        {"dc:title = \"" + value255 + "v\"", -1},
        {"dc:title = \"a\" and dc:title = \"" + value255 + "v\"", -1},
        {Nested(expr, 16), 1},
        {Nested(expr, 17), -1},
        {Nested(expr, 100), -1},
        {Repeat(expr + " and (", "", 17) + expr + std::string(17, ')'), -1},
        {skeleton1023, 28},
        {groups + Nested("@refID exists false and " + expr, 14), -1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.criteria.substr(0, 60) + "... of " + std::to_string(c.criteria.size()));
        Parsed p(c.criteria);
        EXPECT_EQ(p.status, c.exprs < 0 ? "MDB_ERR_PARA" : "MDB_OK");
        if (c.exprs < 0) {
            p.expectEmpty();
        } else {
            EXPECT_EQ(p.st.lExprNum, c.exprs);
        }
    }
    EXPECT_EQ(std::strlen(Parsed(skeleton1023).st.acSkeleton), 1023u);

    // The second of three copies fails: the first is released, nothing is left in the record.
    searchtest::FailStrdupCall(1);
    Parsed failed("dc:title = \"a\" and dc:title = \"b\" and dc:title = \"c\"");
    searchtest::FailStrdupCall(-1);
    EXPECT_EQ(failed.status, "MDB_ERR_MEM");
    failed.expectEmpty();
}

TEST(CriteriaSyntax, ExportedHelpers) {
    for (int32_t (*fn)(const char **) : {MdbCmpRelOp, MdbCmpEqualOp, MdbCmpStringOp, MdbCmpDerivedOp}) {
        const char *none = nullptr;
        EXPECT_EQ(fn(nullptr), -1);
        EXPECT_EQ(fn(&none), -1);
    }
    std::string spaces;
    for (int c = 0; c < 256; ++c) {
        spaces += MdbIsSpace(static_cast<char>(c)) ? std::string(1, static_cast<char>(c)) : "";
    }
    EXPECT_EQ(spaces, "\t\n\v\f\r ");

}

}  // namespace
