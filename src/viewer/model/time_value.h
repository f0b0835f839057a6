// Dates and times as labels write them: 1996-12-31, 1996-366, 1996-12-31T23:59:60.5Z.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// A day of the Gregorian calendar, carried on before its introduction, and a time on it.
struct TimeValue {
    int year = 0;
    int month = 0;
    int day = 0;
    int day_of_year = 0;
    bool has_time = false;
    bool is_utc = false;  // "Z" follows the time
    int hour = 0;
    int minute = 0;
    std::string second = "00";  // as written, with its decimals
};

// Reads a date or a date and time; blanks and double quotes around it do not count. Returns an empty text, or in one
// sentence what is wrong; `time` is then left half filled.
std::string parse_time(std::string_view text, TimeValue *time);

// "1996-12-31", "1996-366", "23:59:60.5" with " UTC" behind it when the text says so.
std::string calendar_date_text(const TimeValue &time);
std::string day_of_year_text(const TimeValue &time);
std::string time_of_day_text(const TimeValue &time);
// Days since noon of day 0 of the Julian period, to a billionth of a day: "2450449.25". A date without a time stands
// for its first instant, a leap second for the first second of the next day.
std::string julian_date_text(const TimeValue &time);
