#include "qubes/model/spectrum.h"

#include "base/text.h"
#include "qubes/model/qube_text.h"

#include <algorithm>

namespace {

// Means of the valid values of each band.
class BoxMean {
  public:
    explicit BoxMean(size_t bands) : bands_(bands) {}

    void add(const std::vector<OaQubeValue> &values) {
        for (size_t band = 0; band < values.size(); ++band)
            if (values[band].state == OA_QUBE_VALID) {
                bands_[band].sum += values[band].physical;
                ++bands_[band].count;
            }
    }
    void put_into(std::vector<OaQubeValue> *values) const {
        for (size_t band = 0; band < values->size(); ++band)
            if (const Band &mean = bands_[band]; mean.count > 0)
                (*values)[band] = {OA_QUBE_VALID, static_cast<double>(mean.sum / static_cast<long double>(mean.count))};
    }

  private:
    struct Band {
        long double sum = 0;  // not beyond its range, whatever doubles are added
        int64_t count = 0;
    };
    std::vector<Band> bands_;
};

bool read_values(OaQube *qube, int64_t line, int64_t sample, std::vector<OaQubeValue> *values) {
    const OaObjectPtr spectrum(OaReadQubeSpectrum(qube, line, sample));
    if (!spectrum)
        return false;
    const OaQubeItem &core = OaKeywordsOfQube(qube).core;
    const auto *samples = static_cast<const uint8_t *>(spectrum->data);
    values->clear();
    values->reserve(static_cast<size_t>(spectrum->size / core.bytes));
    for (int64_t at = 0; at + core.bytes <= spectrum->size; at += core.bytes)
        values->push_back(OaQubeValueOf(core, samples + at));
    return true;
}

}  // namespace

bool read_spectrum(OaQube *qube, int64_t line, int64_t sample, int64_t box, QubeSpectrum *out) {
    constexpr int64_t largest_box = 99;
    if (box < 1 || box > largest_box || box % 2 == 0) {
        OaReportFailure(502, "%s: a box of %lld is not an odd number up to %lld.", __func__,
                        static_cast<long long>(box), static_cast<long long>(largest_box));
        return false;
    }
    const auto &items = OaKeywordsOfQube(qube).core_items;
    if (items[OA_BAND_AXIS] > most_spectrum_bands) {
        OaReportFailure(720, "%s: spectra have at most %lld bands here, not %lld.", __func__,
                        static_cast<long long>(most_spectrum_bands), static_cast<long long>(items[OA_BAND_AXIS]));
        return false;
    }
    QubeSpectrum spectrum{line, sample, box, {}};
    if (!read_values(qube, line, sample, &spectrum.values))
        return false;
    if (box > 1) {
        const int64_t reach = box / 2;
        BoxMean mean(spectrum.values.size());
        std::vector<OaQubeValue> values;
        for (int64_t l = std::max<int64_t>(1, line - reach); l <= std::min(items[OA_LINE_AXIS], line + reach); ++l)
            for (int64_t s = std::max<int64_t>(1, sample - reach); s <= std::min(items[OA_SAMPLE_AXIS], sample + reach);
                 ++s) {
                if (!read_values(qube, l, s, &values))
                    return false;
                mean.add(values);
            }
        mean.put_into(&spectrum.values);
    }
    *out = std::move(spectrum);
    return true;
}

std::string spectrum_value_text(const OaQubeValue &value) {
    return value.state == OA_QUBE_VALID ? util_number_text(value.physical) : OaQubeStateName(value.state);
}

bool write_spectrum_csv(const OaQubeKeywords &qube, const QubeSpectrum &spectrum, FILE *file) {
    fputs("BAND,CENTER,VALUE\r\n", file);
    for (size_t i = 0; i < spectrum.values.size(); ++i) {
        const auto band = static_cast<int64_t>(i) + 1;
        fprintf(file, "%lld,%s,%s\r\n", static_cast<long long>(band), band_center_text(qube, band).c_str(),
                spectrum_value_text(spectrum.values[i]).c_str());
    }
    return !ferror(file);
}
