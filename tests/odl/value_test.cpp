#include "odl/odl.h"
#include "odl/validate.h"
#include "support/words.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Value, HasTheTypeOfItsText) {
    struct {
        OdlValueType type;
        std::initializer_list<const char *> texts;
    } const cases[] = {
        {VALUE_INTEGER, {"42", "+42", "-7", " 42 <m> ", "0", "16#FF#", "2#101#", "16#ff#", "10#-99#", "16##"}},
        {VALUE_REAL, {"-1.5E-3", ".5", "-.5", "5.", ".", "1E5", "1e5", "1E+5", "1.5E2.5", "1E2E3", "3.5 <km/s>"}},
        {VALUE_SYMBOL, {"", "  ", "<m>", "VALUE_1", "'any thing'", "A", "EZT", "_", "E1", "TZ9", "A<m>"}},
        {VALUE_TEXT, {"\"\"", "\"any thing\"", "\""}},
        {VALUE_DATE, {"1997-12-31", "1997-365", "1-1"}},
        {VALUE_DATE_TIME, {"1997-12-31T23:59:59.5Z", "1997-365T00:00", "1997-12-31t12z", "1997-01-01T"}},
        {VALUE_SEQUENCE, {"(1,2)", "("}},
        {VALUE_SET, {"{a, b}", "{"}},
    };
    for (const auto &one : cases) {
        for (const char *text : one.texts) {
            odl_errno = 0;
            EXPECT_EQ(OdlDataType(text), one.type) << text;
            EXPECT_EQ(odl_errno, 0) << text;
        }
    }
    for (const std::string &text :
         words("N/A|12:30|-ABC|1E|12ABC|1 2|1.2.3|+|-|--1|1-2-3-4|A-B|5A|2#102#|17#1#|1#0#|-16#FF#|16#FF|"
               "16#F#F#|99999999999#1#|1E5E|1E\"5\"|1997-12-31T1:2:3:4|1997-12-31T:1|1997-12-31T1:|"
               "1997-12-31T1.5:2|1997-1-1T1Z2|+1997-12-31|1997-12E1|A.B|A#1#|1_000|A+B|caf\xc3\xa9|A\tB|1T",
               '|')) {
        odl_errno = 0;
        EXPECT_EQ(OdlDataType(text.c_str()), VALUE_UNKNOWN) << text;
        EXPECT_EQ(odl_errno, 311) << text;
    }
    EXPECT_EQ(OdlDataType(nullptr), VALUE_UNKNOWN);
}

TEST(Value, ChainOfExponentsTakesOneWalk) {
    std::string chain;
    for (int i = 0; i < 500'000; ++i)
        chain += "1E";
    EXPECT_EQ(OdlDataType(chain.c_str()), VALUE_UNKNOWN);
    EXPECT_EQ(OdlDataType((chain + "1").c_str()), VALUE_REAL);
}

TEST(Value, ElementsAndWordsAreFoundInPlace) {
    struct {
        const char *text;
        const char *from_start;  // what OdlValueStart points at
        int end;                 // index that OdlValueEnd gives for that
    } const elements[] = {
        {"(1, 2)", "1, 2)", 0},  {"{ \n AB ,C}", "AB ,C}", 1},
        {"A B  )", "A B  )", 2}, {"12", "12", 1},
        {"( )", "", 0},          {"", "", 0},
    };
    for (const auto &one : elements) {
        const char *start = OdlValueStart(one.text);
        EXPECT_STREQ(start, one.from_start);
        EXPECT_EQ(OdlValueEnd(start) - start, one.end) << one.text;
    }
    EXPECT_STREQ(OdlFirstWord(" \t\x7f\xff\x01word next"), "word next");
    EXPECT_STREQ(OdlFirstWord(" \x80"), "");
    EXPECT_STREQ(OdlNextWord("word \xa0 next"), "next");
    EXPECT_STREQ(OdlNextWord("word"), "");
    EXPECT_EQ(OdlFirstWord(nullptr), nullptr);
    EXPECT_EQ(OdlNextWord(nullptr), nullptr);
}

TEST(Value, StatementsAreCompleteWhenTheirValueIs) {
    for (const char *complete : {"A = 1", "A = \"x\"", "A = \"x (\"", "A = (1, {2})", "A = b\"c", "A = 1)", "A", "A ="})
        EXPECT_TRUE(CheckBalance(complete)) << complete;
    for (const char *open : {"A = \"x", "A = \"x\" \"", "A = (1", "A = (\"a)\", 1)", "A = {1}}", "A=({1)"})
        EXPECT_FALSE(CheckBalance(open)) << open;
    long braces = 10;
    long parentheses = 0;
    OdlNestingLevel("{{}(((", &braces, &parentheses);
    EXPECT_EQ(braces, 11);
    EXPECT_EQ(parentheses, 3);
}

}  // namespace
