// The criteria checker: which texts are accepted, the skeleton and expression texts it leaves,
// the limits that refuse hostile texts, and the operator recognizers of the property table.
#include "search_probe.h"
#include "search/search_words.h"

#include <gtest/gtest.h>
#include <mdb.h>
#include <mdb_platform.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// A record that releases its expressions when the test is done with it.
struct Parsed {
    MdbSearchSyntax st{};
    uint32_t status = 0;
    explicit Parsed(const char *criteria) { status = MDBSearchCriteriaSyntax(criteria, &st); }
    ~Parsed() {
        for (int32_t i = 0; i < st.lExprNum && i < MDB_SEARCH_MAX_EXPR; ++i) {
            std::free(st.apcExpr[i]);
        }
    }
    std::vector<std::string> exprs() const {
        std::vector<std::string> v;
        for (int32_t i = 0; i < st.lExprNum; ++i) {
            v.emplace_back(st.apcExpr[i]);
        }
        return v;
    }
    bool skeletonAllZero() const {
        for (char c : st.acSkeleton) {
            if (c != 0) {
                return false;
            }
        }
        return true;
    }
};

std::string Status(uint32_t s) { return QRV_MDB_StatusName(s); }

struct SyntaxCase {
    const char *criteria;
    bool accepted;
    const char *skeleton;  // when accepted
    std::vector<std::string> exprs;
    const char *why;
};

TEST(CriteriaSyntax, AcceptsAndRejectsTheLanguage) {
    const std::vector<SyntaxCase> cases = {
        {"*", true, "*", {}, "the wildcard"},
        {"*anything", true, "*", {}, "nothing after the wildcard is examined"},
        {"   \t\n", true, "", {}, "blanks only"},
        {"dc:title contains \"a b\"", true, "_3", {"dc:title contains \"a b\""}, "one containment"},
        {"dc:title = \"x\"", true, "_3", {"dc:title = \"x\""}, "the string recognizer knows ="},
        {"dc:title != \"x\"", false, "", {}, "the string recognizer doesn't know !="},
        {"upnp:class derivedfrom \"object.item\"", true, "_2", {"upnp:class derivedfrom \"object.item\""}, "derivedfrom"},
        {"upnp:class = \"object.item\"", true, "_2", {"upnp:class = \"object.item\""}, "class equality"},
        {"upnp:class contains \"item\"", false, "", {}, "the class recognizer doesn't know contains"},
        {"dc:title exists true", true, "_3", {"dc:title exists true"}, "existence test"},
        {"dc:title=\"x\"", false, "", {}, "no whitespace after the property"},
        {"dc:title =\"x\"", false, "", {}, "no whitespace after the operator"},
        {"dc:title = x", false, "", {}, "no opening quote"},
        {"dc:title = \"x", false, "", {}, "no closing quote"},
        {"dc:title = \"x\"and dc:title = \"y\"", false, "", {}, "no whitespace after the value"},
        {"(dc:title = \"x\")and dc:title = \"y\"", true, "(_3) A _3", {"dc:title = \"x\"", "dc:title = \"y\""},
         "a parenthesis needs no whitespace"},
        {"dc:title = \"x\" and(dc:title = \"y\")", false, "", {}, "no whitespace after and"},
        {"dc:title = \"x\" AND dc:title = \"y\"", false, "", {}, "keywords are lower case"},
        {"(dc:title = \"x\"", false, "", {}, "unclosed parenthesis"},
        {"dc:title = \"x\")", false, "", {}, "depth below zero"},
        {"()", false, "", {}, "empty parentheses"},
        {"and dc:title = \"x\"", false, "", {}, "logical operator first"},
        {"dc:title = \"x\" and", false, "", {}, "ends after a logical operator"},
        {"dc:title = \"x\" dc:title = \"y\"", false, "", {}, "expression after expression"},
        {"dc:title = \"a\\\"b\"", false, "", {}, "a backslash does not protect a quote"},
        {"dc:title exists truex", false, "", {}, "letters after true"},
        {"(dc:title exists true)", true, "(_3)", {"dc:title exists true"}, "existence in parentheses"},
        {"dc:title exists maybe", false, "", {}, "neither true nor false"},
        {"dc:title existsx true", false, "", {}, "letters after exists"},
        {"dc:title exists false", true, "_3", {"dc:title exists false"}, "exists false"},
        {"dc:title  contains \"love\"", true, "_3", {"dc:title  contains \"love\""}, "inner blanks are kept"},
        {"  dc:title = \"x\"  ", true, "_3", {"dc:title = \"x\""}, "blanks around the text"},
        {"(upnp:class derivedfrom \"object.item.audioItem\" or upnp:class derivedfrom \"object.item.videoItem\") "
         "and dc:title contains \"x\"",
         true,
         "(_2 O _2) A _3",
         {"upnp:class derivedfrom \"object.item.audioItem\"", "upnp:class derivedfrom \"object.item.videoItem\"",
          "dc:title contains \"x\""},
         "skeleton in reading order"},
        {"((dc:title = \"x\"))", true, "((_3))", {"dc:title = \"x\""}, "nested parentheses"},
        {"dc:title = \"x\" or (dc:title = \"y\" and dc:title = \"z\")", true, "_3 O (_3 A _3)",
         {"dc:title = \"x\"", "dc:title = \"y\"", "dc:title = \"z\""}, "or and and"},
        {"dc:title = \"x\" or\tdc:title = \"y\"", true, "_3 O _3", {"dc:title = \"x\"", "dc:title = \"y\""},
         "a tab is whitespace"},
        {"dc:title = \"x\" orx dc:title = \"y\"", false, "", {}, "letters after or"},
        {"dc:title = \"\"", true, "_3", {"dc:title = \"\""}, "empty value"},
        {"dc:title = \"x\" and and dc:title = \"y\"", false, "", {}, "two logical operators"},
        {"(dc:title = \"x\") (dc:title = \"y\")", false, "", {}, "parenthesis after parenthesis"},
        {"dc:title = \"x\" (", false, "", {}, "open parenthesis after an expression"},
        {"unknown:prop = \"x\"", false, "", {}, "unknown property"},
        {"DC:TITLE = \"x\"", false, "", {}, "property names are case sensitive"},
        {" *", false, "", {}, "the wildcard only as first character"},
        {"dc:title", false, "", {}, "a property alone"},
        {"dc:title \"x\"", false, "", {}, "no operator"},
    };
    for (const SyntaxCase &c : cases) {
        SCOPED_TRACE(std::string(c.why) + ": " + c.criteria);
        Parsed p(c.criteria);
        if (!c.accepted) {
            EXPECT_EQ(Status(p.status), "MDB_ERR_PARA");
            EXPECT_EQ(p.st.lExprNum, 0);
            EXPECT_TRUE(p.skeletonAllZero());
            continue;
        }
        ASSERT_EQ(Status(p.status), "MDB_OK");
        EXPECT_STREQ(p.st.acSkeleton, c.skeleton);
        EXPECT_EQ(p.exprs(), c.exprs);
        EXPECT_EQ(p.st.lParenDepth, 0);
    }
}

TEST(CriteriaSyntax, EndStateOfAcceptedTexts) {
    struct {
        const char *criteria;
        uint32_t state;
    } cases[] = {
        {"  ", MDB_SYN_START},
        {"dc:title = \"x\"", MDB_SYN_EXPR},
        {"(dc:title = \"x\")", MDB_SYN_CLOSE},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.criteria);
        Parsed p(c.criteria);
        ASSERT_EQ(Status(p.status), "MDB_OK");
        EXPECT_EQ(p.st.ulState, c.state);
    }
}

TEST(CriteriaSyntax, NullOrEmptyLeavesTheRecordUntouched) {
    for (const char *criteria : {static_cast<const char *>(nullptr), ""}) {
        MdbSearchSyntax st;
        std::memset(&st, 0x5a, sizeof(st));
        EXPECT_EQ(Status(MDBSearchCriteriaSyntax(criteria, &st)), "MDB_ERR_PARA");
        const unsigned char *bytes = reinterpret_cast<const unsigned char *>(&st);
        size_t changed = 0;
        for (size_t i = 0; i < sizeof(st); ++i) {
            changed += bytes[i] != 0x5a;
        }
        EXPECT_EQ(changed, 0u);
    }
    EXPECT_EQ(Status(MDBSearchCriteriaSyntax("*", nullptr)), "MDB_ERR_PARA");
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
    std::string value255(255 - std::strlen("dc:title = \"\""), 'v');
    std::string value256 = value255 + "v";
    // 26 groups 16 deep of "_33" (985 characters), " A " and one more group 14 deep: 1023 or 1024.
    const std::string groups = Repeat(Nested("@refID exists false", 16), " and ", 26) + " and ";
    const std::string skeleton1023 = groups + Nested(expr + " and " + expr, 14);
    const std::string skeleton1024 = groups + Nested("@refID exists false and " + expr, 14);
    struct {
        std::string criteria;
        const char *status;
        int exprs;
        const char *why;
    } cases[] = {
        {Repeat(expr, " or ", 32), "MDB_OK", 32, "32 expressions fill the record"},
        {Repeat(expr, " or ", 33), "MDB_ERR_PARA", 0, "a 33rd expression"},
        {"dc:title = \"" + value255 + "\"", "MDB_OK", 1, "an expression of 255 characters"},
        {"dc:title = \"" + value256 + "\"", "MDB_ERR_PARA", 0, "an expression of 256 characters"},
        {"dc:title = \"a\" and dc:title = \"" + value256 + "\"", "MDB_ERR_PARA", 0, "a long second expression"},
        {Nested(expr, 16), "MDB_OK", 1, "parentheses 16 deep"},
        {Nested(expr, 17), "MDB_ERR_PARA", 0, "parentheses 17 deep"},
        {Nested(expr, 100), "MDB_ERR_PARA", 0, "parentheses deeper than SQLite parses"},
        {Repeat(expr + " and (", "", 17) + expr + std::string(17, ')'), "MDB_ERR_PARA", 0, "17 nested and-groups"},
        {skeleton1023, "MDB_OK", 28, "a skeleton of 1023"},
        {skeleton1024, "MDB_ERR_PARA", 0, "a skeleton of 1024"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.why);
        Parsed p(c.criteria.c_str());
        EXPECT_EQ(Status(p.status), c.status);
        EXPECT_EQ(p.st.lExprNum, c.exprs);
        if (p.status != MDB_OK) {
            EXPECT_TRUE(p.skeletonAllZero());
        }
    }
    Parsed full(skeleton1023.c_str());
    EXPECT_EQ(std::strlen(full.st.acSkeleton), 1023u);
}

TEST(CriteriaSyntax, FailedCopyGivesMemoryErrorAndKeepsNothing) {
    // The second of three copies fails: the first is released, nothing is left in the record.
    searchtest::FailStrdupCall(1);
    Parsed p("dc:title = \"a\" and dc:title = \"b\" and dc:title = \"c\"");
    searchtest::FailStrdupCall(-1);
    EXPECT_EQ(Status(p.status), "MDB_ERR_MEM");
    EXPECT_EQ(p.st.lExprNum, 0);
    EXPECT_TRUE(p.skeletonAllZero());
}

TEST(CriteriaSyntax, RejectionAfterStoredExpressionsReleasesThem) {
    // Leak checking (ASan) shows that the two stored texts are released.
    Parsed p("dc:title = \"a\" and dc:title = \"b\" and");
    EXPECT_EQ(Status(p.status), "MDB_ERR_PARA");
    EXPECT_EQ(p.st.lExprNum, 0);
}

struct RecognizerCase {
    int32_t (*fn)(const char **);
    const char *name;
    const char *text;
    int32_t result;
    size_t moved;
};

TEST(CriteriaSyntax, OperatorRecognizers) {
    const std::vector<RecognizerCase> cases = {
        {MdbCmpRelOp, "rel", "= \"x\"", 0, 1},
        {MdbCmpRelOp, "rel", "!= \"x\"", 0, 2},
        {MdbCmpRelOp, "rel", "<= \"x\"", 0, 2},
        {MdbCmpRelOp, "rel", "< \"x\"", 0, 1},
        {MdbCmpRelOp, "rel", ">= \"x\"", 0, 2},
        {MdbCmpRelOp, "rel", "> \"x\"", 0, 1},
        {MdbCmpRelOp, "rel", "=< \"x\"", 0, 1},
        {MdbCmpRelOp, "rel", "contains \"x\"", -1, 0},
        {MdbCmpRelOp, "rel", "", -1, 0},
        {MdbCmpEqualOp, "equal", "= \"x\"", 0, 1},
        {MdbCmpEqualOp, "equal", "== \"x\"", 0, 1},
        {MdbCmpEqualOp, "equal", "!= \"x\"", -1, 0},
        {MdbCmpEqualOp, "equal", "<= \"x\"", -1, 0},
        {MdbCmpStringOp, "string", "contains \"x\"", 0, 8},
        {MdbCmpStringOp, "string", "= \"x\"", 0, 1},
        {MdbCmpStringOp, "string", "Contains \"x\"", -1, 0},
        {MdbCmpStringOp, "string", "contain \"x\"", -1, 0},
        {MdbCmpStringOp, "string", "derivedfrom \"x\"", -1, 0},
        {MdbCmpDerivedOp, "derived", "derivedfrom \"x\"", 0, 11},
        {MdbCmpDerivedOp, "derived", "= \"x\"", 0, 1},
        {MdbCmpDerivedOp, "derived", "contains \"x\"", -1, 0},
        {MdbCmpDerivedOp, "derived", "< \"x\"", -1, 0},
    };
    for (const RecognizerCase &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " on '" + c.text + "'");
        const char *cursor = c.text;
        EXPECT_EQ(c.fn(&cursor), c.result);
        EXPECT_EQ(static_cast<size_t>(cursor - c.text), c.moved);
        EXPECT_EQ(c.fn(nullptr), -1);
        const char *nullCursor = nullptr;
        EXPECT_EQ(c.fn(&nullCursor), -1);
    }
}

TEST(CriteriaSyntax, StrAppendCutsAtTheSize) {
    struct {
        const char *start;
        uint32_t size;
        const char *src;
        const char *result;
    } cases[] = {
        {"ab", 8, "cd", "abcd"},
        {"ab", 5, "cdef", "abcd"},
        {"ab", 3, "cd", "ab"},
        {"", 1, "cd", ""},
        {"abc", 8, "", "abc"},
    };
    for (const auto &c : cases) {
        char buf[16];
        std::memset(buf, '#', sizeof(buf));
        std::strcpy(buf, c.start);
        EXPECT_EQ(MdbStrAppend(buf, c.size, c.src), buf);
        EXPECT_STREQ(buf, c.result);
        EXPECT_EQ(buf[c.size], '#') << "written beyond the size";
    }
    char full[4] = {'a', 'b', 'c', 'd'};  // not terminated within its size: left alone
    MdbStrAppend(full, 4, "x");
    EXPECT_EQ(std::string(full, 4), "abcd");
    EXPECT_EQ(MdbStrAppend(nullptr, 4, "x"), nullptr);
    char buf[4] = "a";
    EXPECT_EQ(MdbStrAppend(buf, 4, nullptr), buf);
    EXPECT_STREQ(buf, "a");
}

TEST(CriteriaSyntax, WhitespaceIsExactlySixCharacters) {
    std::string spaces;
    for (int c = 0; c < 256; ++c) {
        if (MdbIsSpace(static_cast<char>(c))) {
            spaces += static_cast<char>(c);
        }
    }
    EXPECT_EQ(spaces, std::string("\t\n\v\f\r "));
    const char *text = " \t\n\v\f\rx ";
    MdbSkipSpace(&text);
    EXPECT_STREQ(text, "x ");
    const char *empty = "  ";
    MdbSkipSpace(&empty);
    EXPECT_STREQ(empty, "");
}

}  // namespace
