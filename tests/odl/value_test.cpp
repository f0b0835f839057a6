#include "odl/odl.h"
#include "odl/validate.h"

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
        {VALUE_UNKNOWN, {"N/A", "12:30", "-ABC", "1E", "12ABC", "1 2", "1.2.3", "+", "--1", "1-2-3-4", "A-B", "5A"}},
        {VALUE_UNKNOWN, {"2#102#", "17#1#", "1#0#", "-16#FF#", "16#FF", "16#F#F#", "99999999999#1#", "A#1#"}},
        {VALUE_UNKNOWN, {"1E5E", "1E\"5\"", "+1997-12-31", "1997-12E1", "1997-12-31T1:2:3:4", "1997-12-31T:1"}},
        {VALUE_UNKNOWN, {"1997-12-31T1:", "1997-12-31T1.5:2", "1997-1-1T1Z2", "1T", "A.B", "1_000", "A+B", "A\tB"}},
    };
    for (const auto &one : cases) {
        for (const char *text : one.texts) {
            odl_errno = 0;
            EXPECT_EQ(OdlDataType(text), one.type) << text;
            EXPECT_EQ(odl_errno, one.type == VALUE_UNKNOWN ? 311 : 0) << text;
        }
    }
}

TEST(Value, ChainOfExponentsTakesOneWalk) {
    std::string chain;
    for (int i = 0; i < 500'000; ++i)
        chain += "1E";
    EXPECT_EQ(OdlDataType(chain.c_str()), VALUE_UNKNOWN);
    EXPECT_EQ(OdlDataType((chain + "1").c_str()), VALUE_REAL);
}

TEST(Value, StatementsAreCompleteWhenTheirValueIs) {
    for (const char *complete : {"A = 1", "A = \"x\"", "A = \"x (\"", "A = (1, {2})", "A = b\"c", "A = 1)", "A", "A ="})
        EXPECT_TRUE(CheckBalance(complete)) << complete;
    for (const char *open : {"A = \"x", "A = \"x\" \"", "A = (1", "A = (\"a)\", 1)", "A = {1}}", "A=({1)"})
        EXPECT_FALSE(CheckBalance(open)) << open;
}

}  // namespace
