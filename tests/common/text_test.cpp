// The text toolkit: appends that cut or refuse but never write beyond their buffer, and the one
// decimal reader in each form the library takes numbers in.
#include "common/text.h"

#include <mdb.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

namespace {

TEST(Text, AppendsCutOrRefuseButNeverOverrun) {
    struct {
        const char *start;
        uint32_t size;
        const char *src, *cut, *whole;  // MdbStrAppend cuts; MdbAppendWhole refuses what does not fit
    } cases[] = {{"ab", 8, "cd", "abcd", "abcd"},
                 {"ab", 5, "cdef", "abcd", "ab"},
                 {"ab", 3, "cd", "ab", "ab"},
                 {"", 1, "cd", "", ""},
                 {"abc", 8, nullptr, "abc", "abc"}};
    for (const auto &c : cases) {
        for (bool bWhole : {false, true}) {
            char buf[16];
            std::memset(buf, '#', sizeof(buf));
            std::strcpy(buf, c.start);
            if (bWhole) {
                EXPECT_EQ(MdbAppendWhole(buf, c.size, c.src),
                          c.src == nullptr ? MDB_ERR_FAIL : std::strcmp(c.whole, c.start) == 0 ? MDB_ERR_PARA : MDB_OK);
            } else {
                EXPECT_EQ(MdbStrAppend(buf, c.size, c.src), buf);
            }
            EXPECT_STREQ(buf, bWhole ? c.whole : c.cut);
            EXPECT_EQ(buf[c.size], '#') << "written beyond the size";
        }
    }
    char full[4] = {'a', 'b', 'c', 'd'};  // no NUL within the size: left alone
    MdbStrAppend(full, 4, "x");
    EXPECT_EQ(std::string(full, 4), "abcd");
    EXPECT_EQ(MdbAppendWhole(full, 4, "x"), MDB_ERR_PARA);
    EXPECT_EQ(MdbStrAppend(nullptr, 4, "x"), nullptr);
}

TEST(Text, DecimalsReadAsAtoiDoesInEveryForm) {
    const struct {
        const char *text, *rest;
        bool digits, fits;
        long long saturated;
        uint32_t wrapped;
        unsigned long long asUnsigned;
    } cases[] = {
        {"42abc", "abc", true, true, 42, 42u, 42},
        {" \t+7", "", true, true, 7, 7u, 7},
        {"-1", "", true, true, -1, 0xFFFFFFFFu, ULLONG_MAX},
        {"x1", "x1", false, true, 0, 0u, 0},
        {"", "", false, true, 0, 0u, 0},
        {"4294967297", "", true, true, 4294967297LL, 1u, 4294967297ULL},
        {"-9223372036854775808", "", true, true, LLONG_MIN, 0u, 9223372036854775808ULL},
        {"9223372036854775808", "", true, false, LLONG_MAX, 0u, 9223372036854775808ULL},
        {"99999999999999999999", "", true, false, LLONG_MAX, 1661992959u, ULLONG_MAX},
        {"-99999999999999999999", "", true, false, LLONG_MIN, 0u - 1661992959u, ULLONG_MAX},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.text);
        const MdbDecimal d = MdbReadDecimal(c.text);
        EXPECT_STREQ(d.pcEnd, c.rest);
        EXPECT_EQ(d.bDigits, c.digits);
        EXPECT_EQ(d.FitsSigned(), c.fits);
        EXPECT_EQ(d.Saturated(), c.saturated);
        EXPECT_EQ(d.Wrapped32(), c.wrapped);
        EXPECT_EQ(d.Unsigned(), c.asUnsigned);
    }
}

}  // namespace
