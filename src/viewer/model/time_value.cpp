#include "viewer/model/time_value.h"

#include "base/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

constexpr char forms[] = "Write YYYY-MM-DD or YYYY-DDD, and for a time on that day Thh:mm or Thh:mm:ss.fff and Z.";
constexpr std::array<int, 12> month_lengths = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr size_t year_digits = 4;
constexpr int leap_second = 60;

bool is_leap(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int length_of_month(int year, int month) {
    return month_lengths[static_cast<size_t>(month - 1)] + (month == 2 && is_leap(year) ? 1 : 0);
}

// Takes the digits at the start of the text, which stay below the range of int for the lengths that are allowed.
std::string_view take_digits(std::string_view *text) {
    const size_t length = std::min(text->find_first_not_of("0123456789"), text->size());
    const std::string_view digits = text->substr(0, length);
    text->remove_prefix(length);
    return digits;
}

bool take(std::string_view *text, char wanted) {
    if (!text->starts_with(wanted))
        return false;
    text->remove_prefix(1);
    return true;
}

int number_of(std::string_view digits) {
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return value;
}

// The number at the start of the text, of at most `most` digits; a fault where it is not within the limits.
std::string take_number(std::string_view *text, const char *what, size_t most, int low, int high, int *out) {
    const std::string_view digits = take_digits(text);
    if (digits.empty())
        return util_format("The %s is missing. %s", what, forms);
    *out = number_of(digits);
    if (digits.size() > most || *out < low || *out > high)
        return util_format("The %s %.*s is not one of %d to %d.", what,
                           static_cast<int>(std::min<size_t>(digits.size(), 20)), digits.data(), low, high);
    return "";
}

std::string take_year(std::string_view *text, TimeValue *time) {
    if (text->starts_with('-') || text->starts_with('+'))
        return "A year has no sign: labels cannot write years before 0001.";
    const std::string_view digits = take_digits(text);
    if (digits.empty())
        return util_format("This is no date. %s", forms);
    if (digits.size() != year_digits)
        return util_format("A year has four digits. %s", forms);
    time->year = number_of(digits);
    return time->year == 0 ? "The years of labels begin with 0001." : "";
}

void set_day_of_year(int day_of_year, TimeValue *time) {
    time->day_of_year = day_of_year;
    time->month = 1;
    time->day = day_of_year;
    while (time->day > length_of_month(time->year, time->month))
        time->day -= length_of_month(time->year, time->month++);
}

std::string take_month_and_day(std::string_view *text, TimeValue *time) {
    std::string fault = take_number(text, "month", 2, 1, 12, &time->month);
    if (!fault.empty())
        return fault;
    if (!take(text, '-'))
        return util_format("The day is missing. %s", forms);
    const int length = length_of_month(time->year, time->month);
    fault = take_number(text, "day", 2, 1, 31, &time->day);
    if (fault.empty() && time->day > length)
        fault = util_format("Month %d of %04d has %d days.", time->month, time->year, length);
    time->day_of_year = time->day;
    for (int month = 1; month < time->month; ++month)
        time->day_of_year += length_of_month(time->year, month);
    return fault;
}

std::string take_date(std::string_view *text, TimeValue *time) {
    std::string fault = take_year(text, time);
    if (!fault.empty())
        return fault;
    if (!take(text, '-'))
        return util_format("The day is missing. %s", forms);
    std::string_view ahead = *text;
    const size_t digits = take_digits(&ahead).size();
    if (digits < 3 || ahead.starts_with('-'))
        return take_month_and_day(text, time);
    int day_of_year = 0;
    std::string wrong = take_number(text, "day of the year", 3, 1, 366, &day_of_year);
    if (wrong.empty() && day_of_year == 366 && !is_leap(time->year))
        wrong = util_format("%04d is no leap year: it has 365 days.", time->year);
    if (wrong.empty())
        set_day_of_year(day_of_year, time);
    return wrong;
}

std::string take_seconds(std::string_view *text, TimeValue *time) {
    const std::string_view start = *text;
    int second = 0;
    std::string fault = take_number(text, "second", 2, 0, leap_second, &second);
    if (!fault.empty())
        return fault;
    if (second == leap_second && (time->hour != 23 || time->minute != 59))
        return "Second 60, a leap second, can only follow 23:59:59.";
    if (take(text, '.') && take_digits(text).empty())
        return "Digits are missing behind the point.";
    time->second = start.substr(0, start.size() - text->size());
    return "";
}

std::string take_time_of_day(std::string_view *text, TimeValue *time) {
    time->has_time = true;
    std::string fault = take_number(text, "hour", 2, 0, 23, &time->hour);
    if (!fault.empty())
        return fault;
    if (!take(text, ':'))
        return util_format("The minute is missing. %s", forms);
    fault = take_number(text, "minute", 2, 0, 59, &time->minute);
    if (fault.empty() && take(text, ':'))
        fault = take_seconds(text, time);
    time->is_utc = fault.empty() && (take(text, 'Z') || take(text, 'z'));
    return fault;
}

// Days from noon of the Julian period's first day to noon of this one.
int64_t julian_day_number(const TimeValue &time) {
    constexpr int64_t before_year_1 = 1721425;  // of 0001-01-01, plus one for days counted from 1
    const int64_t years = time.year - 1;
    return before_year_1 + years * 365 + years / 4 - years / 100 + years / 400 + time.day_of_year;
}

}  // namespace

std::string parse_time(std::string_view text, TimeValue *time) {
    *time = TimeValue();
    text = util_trim(util_trim(util_trim(text, " \t"), "\""), " \t");
    std::string fault = take_date(&text, time);
    if (fault.empty() && (take(&text, 'T') || take(&text, 't')))
        fault = take_time_of_day(&text, time);
    if (fault.empty() && !text.empty())
        fault = util_format("\"%.*s\" does not belong to a %s. %s", static_cast<int>(std::min<size_t>(text.size(), 20)),
                            text.data(), time->has_time ? "time" : "date", forms);
    return fault;
}

std::string calendar_date_text(const TimeValue &time) {
    return util_format("%04d-%02d-%02d", time.year, time.month, time.day);
}

std::string day_of_year_text(const TimeValue &time) {
    return util_format("%04d-%03d", time.year, time.day_of_year);
}

std::string time_of_day_text(const TimeValue &time) {
    return util_format("%02d:%02d:%s%s", time.hour, time.minute, time.second.c_str(), time.is_utc ? " UTC" : "");
}

std::string julian_date_text(const TimeValue &time) {
    constexpr int64_t parts = 1'000'000'000;
    double second = 0;
    std::from_chars(time.second.data(), time.second.data() + time.second.size(), second);
    const double of_day = (time.hour * 3600 + time.minute * 60 + second) / 86400;
    const int64_t all = julian_day_number(time) * parts - parts / 2 + std::llround(of_day * parts);
    std::string text =
        util_format("%lld.%09lld", static_cast<long long>(all / parts), static_cast<long long>(all % parts));
    text.erase(std::max(text.find_last_not_of('0'), text.find('.') + 1) + 1);
    return text;
}
