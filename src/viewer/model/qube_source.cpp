#include "viewer/model/qube_source.h"

#include "base/notice.h"
#include "base/text.h"

#include <bit>
#include <cmath>

namespace {

constexpr const char *native_real = std::endian::native == std::endian::little ? "PC_REAL" : "IEEE_REAL";

OaQubeItem physical_item() {
    OaQubeItem item;
    item.type = native_real;
    item.bytes = sizeof(float);
    return item;
}

// "0x00FF"
std::string stored_bits(const void *native_sample, int64_t bytes) {
    uint64_t bits = 0;
    const auto *sample = static_cast<const uint8_t *>(native_sample);
    for (int64_t i = 0; i < bytes; ++i) {
        const int64_t place = std::endian::native == std::endian::little ? i : bytes - 1 - i;
        bits |= uint64_t{sample[i]} << (8 * place);
    }
    return util_format("0x%0*llX", static_cast<int>(2 * bytes), static_cast<unsigned long long>(bits));
}

class QubePlaneSource : public SampleSource {
  public:
    QubePlaneSource(std::shared_ptr<OaQube> qube, const OaQubePlane &plane, std::string suffix_name, QubeClick click)
        : qube_(std::move(qube)), plane_(plane), suffix_name_(std::move(suffix_name)), click_(std::move(click)) {
        if (!plane.is_suffix)
            item_ = keywords().core;
        else if (const OaQubeItem *item = OaItemOfPlane(qube_.get(), plane))
            item_ = *item;
    }

    std::string describe(ImageDescription *description) override;
    OaObjectPtr read_block(const SampleBlock &block) override;
    std::string value_text(int64_t line, int64_t sample, bool hexadecimal) override;
    bool click(int64_t line, int64_t sample) override { return click_ && click_(line, sample); }

  private:
    const OaQubeKeywords &keywords() const { return OaKeywordsOfQube(qube_.get()); }
    bool gives_stored_values() const {
        return !item_.is_scaled() && (OaQubeNumberKind(item_) != OaNumberKind::Real || item_.bytes == sizeof(float));
    }
    std::string plane_text() const;
    std::string place_text(int64_t line, int64_t sample) const;

    std::shared_ptr<OaQube> qube_;
    OaQubePlane plane_;
    std::string suffix_name_;
    OaQubeItem item_;  // of no number kind where there is no such suffix plane
    QubeClick click_;
};

// In place of a qube that cannot be opened.
class NoQubeSource : public SampleSource {
  public:
    explicit NoQubeSource(std::string failure) : failure_(std::move(failure)) {}

    std::string describe(ImageDescription *) override { return failure_; }
    OaObjectPtr read_block(const SampleBlock &) override { return nullptr; }
    std::string value_text(int64_t, int64_t, bool) override { return ""; }
    bool click(int64_t, int64_t) override { return false; }

  private:
    std::string failure_;
};

std::string QubePlaneSource::describe(ImageDescription *description) {
    if (OaQubeNumberKind(item_) == OaNumberKind::None)
        return util_format("Open Qube failed\n%s: items of type %s and %lld bytes cannot be shown.",
                           plane_text().c_str(), item_.type.c_str(), static_cast<long long>(item_.bytes));
    const OaQubeExtent extent = OaQubePlaneExtent(keywords(), plane_.axis);
    const OaQubeItem item = gives_stored_values() ? item_ : physical_item();
    description->lines = extent.lines;
    description->line_samples = extent.samples;
    description->bands = plane_.is_suffix ? 1 : keywords().core_items[plane_.axis];
    description->sample_bits = item.bytes * 8;
    description->sample_type = item.type;
    description->is_signed = OaQubeNumberKind(item) != OaNumberKind::Unsigned;
    description->qube_item = std::make_shared<OaQubeItem>(item);
    divide_if_large(description);
    return "";
}

OaObjectPtr QubePlaneSource::read_block(const SampleBlock &block) {
    OaObjectPtr stored(
        OaReadQubePart(qube_.get(), plane_, block.first_line, block.last_line, block.first_sample, block.last_sample));
    if (!stored || gives_stored_values())
        return stored;
    const int64_t count = block.lines() * block.samples();
    const int64_t bytes = count * int64_t{sizeof(float)};
    OaPtr<float> values(static_cast<float *>(OaMalloc(static_cast<size_t>(bytes))));
    if (!values) {
        OaReportFailure(720, "%s: no memory for %lld bytes of samples.", __func__, static_cast<long long>(bytes));
        return nullptr;
    }
    OaQubePhysicalValues(item_, stored->data, count, values.get());
    OaLongtoKwdValue("SAMPLE_BITS", stored->odl, 8 * int64_t{sizeof(float)});
    OaStrtoKwdValue("SAMPLE_TYPE", stored->odl, native_real);
    OaFree(stored->data);
    stored->data = values.release();
    stored->size = bytes;
    return stored;
}

// "band 3 (1.25 MICROMETER)", or the name of a suffix plane.
std::string QubePlaneSource::plane_text() const {
    if (plane_.is_suffix)
        return suffix_name_;
    std::string text = util_lower(OaQubeAxisName(plane_.axis)) + " " + std::to_string(plane_.number);
    const auto &[centers, widths, unit] = keywords().band_bins;
    const auto index = static_cast<size_t>(plane_.number - 1);
    if (plane_.axis == OA_BAND_AXIS && index < centers.size() && std::isfinite(centers[index]))
        text += " (" + util_number_text(centers[index]) + (unit.empty() ? "" : " " + unit) + ")";
    return text;
}

// Of planes whose lines and samples run along other axes of the qube: " at line 2, band 3".
std::string QubePlaneSource::place_text(int64_t line, int64_t sample) const {
    if (plane_.axis == OA_BAND_AXIS)
        return "";
    return util_format(" at %s %lld, band %lld", plane_.axis == OA_SAMPLE_AXIS ? "line" : "sample",
                       static_cast<long long>(sample), static_cast<long long>(line));
}

std::string QubePlaneSource::value_text(int64_t line, int64_t sample, bool hexadecimal) {
    const OaObjectPtr stored(OaReadQubePart(qube_.get(), plane_, line, line, sample, sample));
    if (!stored)
        return "";
    const OaQubeValue value = OaQubeValueOf(item_, stored->data);
    std::string text = value.state == OA_QUBE_VALID
                           ? util_number_text(value.physical) + (item_.unit.empty() ? "" : " " + item_.unit)
                           : OaQubeStateName(value.state);
    if (hexadecimal && OaQubeNumberKind(item_) != OaNumberKind::Real)
        text += " (" + stored_bits(stored->data, item_.bytes) + ")";
    return plane_text() + place_text(line, sample) + ": " + text;
}

}  // namespace

std::unique_ptr<SampleSource> qube_plane_source(std::shared_ptr<OaQube> qube, const OaQubePlane &plane,
                                                std::string suffix_name, QubeClick click) {
    return std::make_unique<QubePlaneSource>(std::move(qube), plane, std::move(suffix_name), std::move(click));
}

std::unique_ptr<SampleSource> qube_band_source(const ObjDesc *node, int64_t band) {
    OaQubePtr qube(OaOpenQube(node));
    if (!qube)
        return std::make_unique<NoQubeSource>(error_string);
    for (const std::string &remark : OaKeywordsOfQube(qube.get()).remarks)
        util_notice(NoticeKind::Warning, remark);
    return qube_plane_source(std::move(qube), {OA_BAND_AXIS, band, false});
}
