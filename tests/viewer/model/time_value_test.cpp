#include "viewer/model/time_value.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(ParseTime, KnowsTheCalendar) {
    struct Case {
        const char *text;
        const char *date;
        const char *day_of_year;
        const char *julian_date;
    };
    for (const Case &c : std::vector<Case>{
             {"1996-12-31", "1996-12-31", "1996-366", "2450448.5"},
             {" \"1996-366\" ", "1996-12-31", "1996-366", "2450448.5"},
             {"1996-12-31T23:59:60Z", "1996-12-31", "1996-366", "2450449.5"},
             {"2000-01-01T12:00:00", "2000-01-01", "2000-001", "2451545.0"},
             {"1900-060", "1900-03-01", "1900-060", "2415079.5"},
             {"2000-3-1", "2000-03-01", "2000-061", "2451604.5"},
             {"0001-01-01", "0001-01-01", "0001-001", "1721425.5"},
             {"9999-365T23:59:59.9999999", "9999-12-31", "9999-365", "5373484.5"},
             {"1997-06-30T00:00:00.0864Z", "1997-06-30", "1997-181", "2450629.500001"},
         }) {
        TimeValue time;
        EXPECT_EQ(parse_time(c.text, &time), "") << c.text;
        EXPECT_EQ(calendar_date_text(time), c.date);
        EXPECT_EQ(day_of_year_text(time), c.day_of_year);
        EXPECT_EQ(julian_date_text(time), c.julian_date) << c.text;
    }
}

TEST(ParseTime, SaysWhatIsWrong) {
    struct Case {
        const char *text;
        const char *told;
    };
    for (const Case &c : std::vector<Case>{
             {"", "no date"},
             {"UNK", "no date"},
             {"N/A", "no date"},
             {"-0043-03-15", "years before 0001"},
             {"0000-01-01", "begin with 0001"},
             {"96-12-31", "four digits"},
             {"99999999999999999999-01-01", "four digits"},
             {"1996", "day is missing"},
             {"1996-12", "day is missing"},
             {"1996-", "month is missing"},
             {"1996-13-01", "month 13 is not one of 1 to 12"},
             {"1995-00-01", "month 00"},
             {"1995-02-29", "Month 2 of 1995 has 28 days"},
             {"1900-366", "no leap year"},
             {"1996-367", "day of the year 367"},
             {"1996-000", "day of the year 000"},
             {"1996-1234", "day of the year 1234"},
             {"1996-12-31T", "hour is missing"},
             {"1996-12-31T24:00", "hour 24 is not one of 0 to 23"},
             {"1996-12-31T12", "minute is missing"},
             {"1996-12-31T12:60", "minute 60"},
             {"1996-12-31T12:30:60", "leap second"},
             {"1996-12-31T12:30:5.Z", "behind the point"},
             {"1996-12-31T12:30+07", "\"+07\" does not belong"},
             {"1996-12-31 12:30", "does not belong to a date"},
             {"1996-12-31T12:30:00ZZ", "\"Z\" does not belong"},
         }) {
        TimeValue time;
        const std::string fault = parse_time(c.text, &time);
        EXPECT_NE(fault.find(c.told), std::string::npos) << c.text << ": " << fault;
    }
}

}  // namespace
