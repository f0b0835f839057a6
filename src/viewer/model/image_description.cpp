#include "viewer/model/image_description.h"

#include "base/text.h"
#include "oa/data_type.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace {

constexpr int64_t largest_undivided = 2 * block_span;  // lines + samples of an image that is shown in one block

// Reads a size; an empty text, or the error to show.
std::string size_keyword(const ObjDesc *node, const char *name, int64_t *out) {
    if (OaKwdValuetoLong(name, node, out) != 0)
        return util_format("Open Image - get %s failed", name);
    if (*out < 1)
        return util_format("Open Image - get %s failed\n%s = %lld is not a size.", name, name,
                           static_cast<long long>(*out));
    return "";
}

// A value of another type counts as absent and is not worth a report.
int64_t integer_keyword(const ObjDesc *node, const char *name, int64_t when_absent) {
    const char *text = nullptr;
    int64_t value = 0;
    const bool is_integer = OaKwdValuetoStr(name, node, &text) == 0 && text && OdlDataType(text) == VALUE_INTEGER;
    return is_integer && OaKwdValuetoLong(name, node, &value) == 0 ? value : when_absent;
}

std::string text_keyword(const ObjDesc *node, const char *name, const char *when_absent) {
    const char *text = nullptr;
    return OaKwdValuetoStr(name, node, &text) == 0 && text ? util_without(text, '"') : when_absent;
}

bool is_digits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

bool is_real_sample_type(const std::string &sample_type) {
    std::string name = sample_type;
    const OaDataType type = OaStrtoKRVDataType(name.data(), OA_BINARY);
    return type == OA_IEEE_REAL || type == OA_PC_REAL || type == OA_VAX_REAL || type == OA_VAXG_REAL;
}

std::string describe_image(const ObjDesc *image, ImageDescription *description) {
    std::string fault = size_keyword(image, "LINE_SAMPLES", &description->line_samples);
    if (fault.empty())
        fault = size_keyword(image, "LINES", &description->lines);
    if (!fault.empty())
        return fault;
    if (OaKwdValuetoLong("SAMPLE_BITS", image, &description->sample_bits) != 0)
        return "Open Image - get SAMPLE_BITS failed";
    description->sample_type = text_keyword(image, "SAMPLE_TYPE", "");
    if (description->sample_type.empty())
        return "Open Image - get SAMPLE_TYPE failed";
    description->line_display_direction = text_keyword(image, "LINE_DISPLAY_DIRECTION", "DOWN");
    description->sample_display_direction = text_keyword(image, "SAMPLE_DISPLAY_DIRECTION", "RIGHT");

    divide_if_large(description);

    description->minimum = integer_keyword(image, "MINIMUM", -1);
    description->maximum = integer_keyword(image, "MAXIMUM", -1);
    description->bands = std::max<int64_t>(1, integer_keyword(image, "BANDS", 1));
    const int64_t bits = description->sample_bits;
    if (bits != 8 && bits != 16 && bits != 32 && bits != 64)
        return "Open Image - SAMPLE_BITS not equal to 8, 16, 32 or 64";
    description->is_signed = !util_contains(description->sample_type, "UNSIGNED");
    return "";
}

void divide_if_large(ImageDescription *description) {
    const bool large = description->lines > largest_undivided - std::min(description->line_samples, largest_undivided);
    description->lines_large = large && description->lines > block_span;
    description->samples_large = large && description->line_samples > block_span;
}

void initialize_display_image_ranges(ImageDescription *description, bool lines_large, bool samples_large) {
    description->block = {1, lines_large ? block_span : description->lines, 1,
                          samples_large ? block_span : description->line_samples};
}

bool auto_get_image_ranges(const ImageDescription &description, BlockStep step, SampleBlock *block) {
    const bool over_lines = step == BlockStep::Up || step == BlockStep::Down;
    const int64_t extent = over_lines ? description.lines : description.line_samples;
    SampleBlock next = description.block;
    int64_t &first = over_lines ? next.first_line : next.first_sample;
    int64_t &last = over_lines ? next.last_line : next.last_sample;
    if (step == BlockStep::Up || step == BlockStep::Left) {
        if (first <= 1)
            return false;
        last = first - 1;
        first = std::max<int64_t>(1, first - block_span);
    } else {
        if (last >= extent)
            return false;
        first = last + 1;
        last = extent - last > block_span ? last + block_span : extent;
    }
    *block = next;
    return true;
}

std::string convert_to_long(const std::string &text, const std::string &field_name, int64_t *out) {
    std::string_view digits = util_trim(text);
    if (!digits.empty() && digits.front() == '+')
        digits.remove_prefix(1);
    errno = 0;
    const long long value = is_digits(digits) ? strtoll(std::string(digits).c_str(), nullptr, 10) : 0;
    if (errno == ERANGE)
        return util_format("Overflow has occurred while converting the value in the %s field", field_name.c_str());
    if (value < 1)
        return util_format("Invalid value entered in the %s field. Value must be a positive integer greater than 0",
                           field_name.c_str());
    *out = value;
    return "";
}

std::string check_for_valid_ranges(const SampleBlock &block, int64_t lines, int64_t line_samples, int64_t span_limit) {
    const int span = static_cast<int>(span_limit);
    if (block.last_line - block.first_line > span_limit)
        return util_format(
            "Difference between Stop and Start Line values is greater than %d. Please choose a smaller range", span);
    if (block.last_sample - block.first_sample > span_limit)
        return util_format(
            "Difference between Stop and Start Line Sample values is greater than %d. Please choose a smaller range",
            span);
    if (block.last_line < block.first_line)
        return "Stop Line value cannot be less than the Start Line value";
    if (block.last_sample < block.first_sample)
        return "Stop Line Sample value cannot be less than the Start Line Sample value";
    if (block.last_line == block.first_line || block.last_sample == block.first_sample)
        return "Start and stop lines and/or line samples cannot be equal";
    if (block.last_sample > line_samples)
        return util_format(
            "Start and/or Stop Line Sample value is greater than %ld, the maximum line sample value allowed in this "
            "image.\nPlease choose a smaller value.",
            static_cast<long>(line_samples));
    if (block.last_line > lines)
        return util_format(
            "Start and/or Stop Line Value is greater than %ld, the maximum line value allowed in this image.\nPlease "
            "choose a smaller value.",
            static_cast<long>(lines));
    return "";
}
