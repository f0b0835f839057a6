// Dates and times as labels have them: whatever is taken for one is the same day in either form.
#include "viewer/model/sample_value.h"
#include "viewer/model/time_value.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    double number = 0;
    convert_to_number(text, "Minimum", &number);
    TimeValue time;
    if (!parse_time(text, &time).empty())
        return 0;
    TimeValue by_date;
    TimeValue by_day;
    if (!parse_time(calendar_date_text(time), &by_date).empty() || !parse_time(day_of_year_text(time), &by_day).empty())
        abort();
    if (julian_date_text(by_date) != julian_date_text(by_day) || by_date.day_of_year != time.day_of_year ||
        julian_date_text(time) < julian_date_text(by_date))
        abort();
    return 0;
}
