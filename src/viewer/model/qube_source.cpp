#include "viewer/model/qube_source.h"

#include "base/notice.h"
#include "base/text.h"

#include <algorithm>
#include <array>
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

class QubeBandSource : public SampleSource {
  public:
    QubeBandSource(const ObjDesc *node, int64_t band) : qube_(OaOpenQube(node)), plane_{OA_BAND_AXIS, band, false} {
        if (qube_)
            for (const std::string &remark : keywords().remarks)
                util_notice(NoticeKind::Warning, remark);
        else
            failure_ = error_string;
    }

    std::string describe(ImageDescription *description) override;
    OaObjectPtr read_block(const SampleBlock &block) override;
    std::string value_text(int64_t line, int64_t sample, bool hexadecimal) override;
    bool click(int64_t, int64_t) override { return false; }

  private:
    const OaQubeKeywords &keywords() const { return OaKeywordsOfQube(qube_.get()); }
    bool gives_stored_values() const {
        const OaQubeItem &core = keywords().core;
        return !core.is_scaled() && (OaQubeNumberKind(core) != OaNumberKind::Real || core.bytes == sizeof(float));
    }

    OaQubePtr qube_;
    OaQubePlane plane_;
    std::string failure_;  // why there is no qube
};

std::string QubeBandSource::describe(ImageDescription *description) {
    if (!qube_)
        return failure_;
    const OaQubeExtent extent = OaQubePlaneExtent(keywords(), OA_BAND_AXIS);
    const OaQubeItem item = gives_stored_values() ? keywords().core : physical_item();
    description->lines = extent.lines;
    description->line_samples = extent.samples;
    description->bands = keywords().core_items[OA_BAND_AXIS];
    description->sample_bits = item.bytes * 8;
    description->sample_type = item.type;
    description->is_signed = OaQubeNumberKind(item) != OaNumberKind::Unsigned;
    description->qube_item = std::make_shared<OaQubeItem>(item);
    divide_if_large(description);
    return "";
}

OaObjectPtr QubeBandSource::read_block(const SampleBlock &block) {
    if (!qube_)
        return nullptr;
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
    OaQubePhysicalValues(keywords().core, stored->data, count, values.get());
    OaLongtoKwdValue("SAMPLE_BITS", stored->odl, 8 * int64_t{sizeof(float)});
    OaStrtoKwdValue("SAMPLE_TYPE", stored->odl, native_real);
    OaFree(stored->data);
    stored->data = values.release();
    stored->size = bytes;
    return stored;
}

std::string QubeBandSource::value_text(int64_t line, int64_t sample, bool) {
    const OaObjectPtr stored(qube_ ? OaReadQubePart(qube_.get(), plane_, line, line, sample, sample) : nullptr);
    if (!stored)
        return "";
    const OaQubeItem &core = keywords().core;
    const OaQubeValue value = OaQubeValueOf(core, stored->data);
    const std::string text = value.state == OA_QUBE_VALID
                                 ? util_format("%.9g", value.physical) + (core.unit.empty() ? "" : " " + core.unit)
                                 : OaQubeStateName(value.state);
    return util_format("band %lld: ", static_cast<long long>(plane_.number)) + text;
}

}  // namespace

std::unique_ptr<SampleSource> qube_band_source(const ObjDesc *qube, int64_t band) {
    return std::make_unique<QubeBandSource>(qube, band);
}

void map_qube_samples(const void *samples, const OaQubeItem &item, RealRange range, int64_t count, uint8_t *display) {
    constexpr int64_t piece = 4096;
    constexpr float levels = 256;
    std::array<float, piece> values;
    const auto *bytes = static_cast<const uint8_t *>(samples);
    const double span = range.maximum - range.minimum;
    const float scale = span > 0 ? static_cast<float>(levels / span) : 0;
    const auto minimum = static_cast<float>(range.minimum);
    for (int64_t done = 0; done < count; done += piece) {
        const int64_t some = std::min(piece, count - done);
        OaQubePhysicalValues(item, bytes + done * item.bytes, some, values.data());
        for (int64_t i = 0; i < some; ++i) {
            const float value = values[static_cast<size_t>(i)];
            const float level = item.bytes == 1 ? static_cast<float>(bytes[done + i]) : (value - minimum) * scale;
            // A comparison with NaN is false: no data become 0.
            display[done + i] = value == value && level > 0 ? static_cast<uint8_t>(std::min(level, levels - 1)) : 0;
        }
    }
}
