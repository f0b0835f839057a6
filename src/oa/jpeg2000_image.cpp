// Reading the bands of JPEG 2000 images.
#include "base/notice.h"
#include "base/text.h"
#include "oa/jpeg2000.h"
#include "oa/sample_plan.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <vector>

namespace {

struct LabelNumber {
    const char *keyword;
    int64_t in_codestream;
    int64_t also;  // what a label may say too
};

// Where each sample of a line, or each line, of the image stands in a component.
std::vector<int64_t> places(int64_t first, int64_t count, int64_t finest_first, int64_t finest_step,
                            int64_t component_first, int64_t component_step, int64_t component_count) {
    std::vector<int64_t> places(static_cast<size_t>(count));
    for (int64_t i = 0; i < count; ++i) {
        const int64_t on_grid = (finest_first + first + i) * finest_step;
        places[static_cast<size_t>(i)] =
            std::clamp<int64_t>(on_grid / component_step - component_first, 0, component_count - 1);
    }
    return places;
}

void repeat_samples(const uint8_t *from, const Jpeg2000Area &held, const std::vector<int64_t> &lines,
                    const std::vector<int64_t> &samples, size_t bytes, uint8_t *out) {
    for (const int64_t line : lines) {
        const uint8_t *row = from + static_cast<size_t>((line - held.line) * held.samples) * bytes;
        for (const int64_t sample : samples) {
            memcpy(out, row + static_cast<size_t>(sample - held.sample) * bytes, bytes);
            out += bytes;
        }
    }
}

// A component on the samples of the image, which others have more of.
std::string decode_enlarged(const Jpeg2000Image &image, size_t index, const Jpeg2000Area &area, uint8_t *out,
                            std::string *damage) {
    const Jpeg2000Component &component = image.components[index];
    const auto finest_across = std::max_element(
        image.components.begin(), image.components.end(),
        [](const Jpeg2000Component &a, const Jpeg2000Component &b) { return a.line_samples < b.line_samples; });
    const auto finest_down =
        std::max_element(image.components.begin(), image.components.end(),
                         [](const Jpeg2000Component &a, const Jpeg2000Component &b) { return a.lines < b.lines; });
    const auto lines = places(area.line, area.lines, finest_down->first_y, finest_down->step_y, component.first_y,
                              component.step_y, component.lines);
    const auto samples = places(area.sample, area.samples, finest_across->first_x, finest_across->step_x,
                                component.first_x, component.step_x, component.line_samples);
    const Jpeg2000Area held = {lines.front(), lines.back() - lines.front() + 1, samples.front(),
                               samples.back() - samples.front() + 1};
    const auto bytes = static_cast<size_t>(component.sample_bytes());
    const OaPtr<uint8_t> own(
        static_cast<uint8_t *>(OaZeroedMalloc(static_cast<size_t>(held.lines * held.samples) * bytes)));
    if (!own)
        return "there is not enough memory";
    std::string fault = decode_jpeg2000(image, index, held, own.get(), damage);
    if (fault.empty())
        repeat_samples(own.get(), held, lines, samples, bytes, out);
    return fault;
}

int64_t lines_of(const Jpeg2000Image &image, size_t component, OaComponentSize size) {
    return size == OA_OWN_SIZE ? image.components[component].lines : image.lines();
}

int64_t samples_of(const Jpeg2000Image &image, size_t component, OaComponentSize size) {
    return size == OA_OWN_SIZE ? image.components[component].line_samples : image.line_samples();
}

void tell_damage(const Jpeg2000Image &image, const std::string &damage) {
    if (!damage.empty())
        util_notice(
            NoticeKind::Warning,
            util_format("The JPEG 2000 data of %s are damaged or end early:\n%s\nWhat could not be decoded is 0 "
                        "or coarse.",
                        image.file_name.c_str(), damage.c_str()));
}

}  // namespace

void OalTellLabelDifference(const ObjDesc *image_node, const Jpeg2000Image &image) {
    static std::set<std::string> told;
    const Jpeg2000Component &first = image.components[0];
    const auto components = static_cast<int64_t>(image.components.size());
    std::string differences;
    for (const LabelNumber &number : {LabelNumber{"LINES", image.lines(), image.lines()},
                                      LabelNumber{"LINE_SAMPLES", image.line_samples(), image.line_samples()},
                                      LabelNumber{"SAMPLE_BITS", first.bits, 8 * first.sample_bytes()},
                                      LabelNumber{"BANDS", components, components}}) {
        int64_t in_label = 0;
        const char *text = nullptr;
        if (OaKwdValuetoStr(number.keyword, image_node, &text) == 0 && OdlDataType(text) == VALUE_INTEGER &&
            OaKwdValuetoLong(number.keyword, image_node, &in_label) == 0 && in_label != number.in_codestream &&
            in_label != number.also)
            differences += util_format("\n%s = %lld in the label, %lld in the data", number.keyword,
                                       static_cast<long long>(in_label), static_cast<long long>(number.in_codestream));
    }
    if (!differences.empty() && told.insert(image.file_name).second)
        util_notice(NoticeKind::Note, util_format("The label and the JPEG 2000 data of %s do not agree; the data are "
                                                  "shown as they are.%s",
                                                  image.file_name.c_str(), differences.c_str()));
}

OdlTree OaDescribeJpeg2000Band(const ObjDesc *image_node, const Jpeg2000Image &image, int64_t band,
                               OaComponentSize size) {
    const auto bands = static_cast<int64_t>(image.components.size());
    const auto index = static_cast<size_t>(band >= 1 && band <= bands ? band - 1 : 0);
    const Jpeg2000Component &component = image.components[index];
    OdlTree label = copy_image_label(image_node);
    delete_storage_keywords(label.get());
    delete_keywords(label.get(), {"BAND_STORAGE_TYPE", "BAND_SEQUENCE", "SAMPLE_BIT_MASK"});
    OaLongtoKwdValue("LINES", label.get(), lines_of(image, index, size));
    OaLongtoKwdValue("LINE_SAMPLES", label.get(), samples_of(image, index, size));
    OaLongtoKwdValue("SAMPLE_BITS", label.get(), 8 * component.sample_bytes());
    OaStrtoKwdValue("SAMPLE_TYPE", label.get(),
                    OalJpeg2000SampleType(component.sample_bytes(), component.is_signed).c_str());
    OaLongtoKwdValue("BANDS", label.get(), bands);
    return label;
}

OaObject *OaReadJpeg2000Part(const ObjDesc *image_node, const Jpeg2000Image &image, int64_t band, OaComponentSize size,
                             int64_t first_line, int64_t last_line, int64_t first_sample, int64_t last_sample) {
    if (band < 1 || band > static_cast<int64_t>(image.components.size())) {
        OaReportFailure(502, "%s: there is no component %lld; there are %zu.", __func__, static_cast<long long>(band),
                        image.components.size());
        return nullptr;
    }
    const auto index = static_cast<size_t>(band - 1);
    if (first_line < 1 || last_line < first_line || last_line > lines_of(image, index, size) || first_sample < 1 ||
        last_sample < first_sample || last_sample > samples_of(image, index, size)) {
        OaReportFailure(502, "%s: lines %lld to %lld, samples %lld to %lld are not in the image.", __func__,
                        static_cast<long long>(first_line), static_cast<long long>(last_line),
                        static_cast<long long>(first_sample), static_cast<long long>(last_sample));
        return nullptr;
    }
    const Jpeg2000Component &component = image.components[index];
    const Jpeg2000Area area = {first_line - 1, last_line - first_line + 1, first_sample - 1,
                               last_sample - first_sample + 1};
    int64_t bytes = 0;
    const bool too_large = __builtin_mul_overflow(area.lines, area.samples, &bytes) ||
                           __builtin_mul_overflow(bytes, component.sample_bytes(), &bytes);
    OaPtr<uint8_t> samples(too_large ? nullptr : static_cast<uint8_t *>(OaZeroedMalloc(static_cast<size_t>(bytes))));
    if (!samples) {
        OaReportFailure(720, "%s: no memory for %lld lines of %lld samples.", __func__,
                        static_cast<long long>(area.lines), static_cast<long long>(area.samples));
        return nullptr;
    }
    const bool as_it_is =
        component.lines == lines_of(image, index, size) && component.line_samples == samples_of(image, index, size);
    std::string damage;
    const std::string fault = as_it_is ? decode_jpeg2000(image, index, area, samples.get(), &damage)
                                       : decode_enlarged(image, index, area, samples.get(), &damage);
    if (!fault.empty()) {
        OaReportFailure(700, "%s: the JPEG 2000 data of %s cannot be decoded: %s.", __func__, image.file_name.c_str(),
                        fault.c_str());
        return nullptr;
    }
    tell_damage(image, damage);
    OdlTree label = OaDescribeJpeg2000Band(image_node, image, band, size);
    delete_keywords(label.get(), {"BANDS"});
    OaLongtoKwdValue("LINES", label.get(), area.lines);
    OaLongtoKwdValue("LINE_SAMPLES", label.get(), area.samples);
    OaLongtoKwdValue("FIRST_LINE", label.get(), first_line);
    OaLongtoKwdValue("FIRST_SAMPLE", label.get(), first_sample);
    return OaNewOaObject(label.release(), samples.release(), bytes);
}

OaObject *OaReadJpeg2000Image(const ObjDesc *image_node, int64_t band) {
    Jpeg2000Image image;
    if (OaOpenJpeg2000(image_node, &image) != 0)
        return nullptr;
    return OaReadJpeg2000Part(image_node, image, band, OA_IMAGE_SIZE, 1, image.lines(), 1, image.line_samples());
}
