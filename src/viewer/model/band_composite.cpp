#include "viewer/model/band_composite.h"

#include "base/notice.h"
#include "base/text.h"
#include "viewer/model/extremes.h"
#include "viewer/model/image_part.h"
#include "viewer/model/sample_value.h"
#include "viewer/model/vectorise.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>

namespace {

constexpr RealRange nothing = {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
constexpr int64_t piece = 4096;  // samples that are mapped or added at a time

// Calls `use` with a pointer to the samples in their native type; false when there is no such type.
template <typename Use>
bool with_samples(const void *samples, const ImageDescription &description, Use use) {
    const bool is_signed = description.is_signed;
    const bool is_real = is_real_sample_type(description.sample_type);
    switch (description.sample_bits) {
        case 8:
            is_signed ? use(static_cast<const int8_t *>(samples)) : use(static_cast<const uint8_t *>(samples));
            return true;
        case 16:
            is_signed ? use(static_cast<const int16_t *>(samples)) : use(static_cast<const uint16_t *>(samples));
            return true;
        case 32:
            if (is_real)
                use(static_cast<const float *>(samples));
            else
                is_signed ? use(static_cast<const int32_t *>(samples)) : use(static_cast<const uint32_t *>(samples));
            return true;
        case 64:
            if (is_real)
                use(static_cast<const double *>(samples));
            else
                is_signed ? use(static_cast<const int64_t *>(samples)) : use(static_cast<const uint64_t *>(samples));
            return true;
        default:
            return false;
    }
}

// Halves, so that the span of the largest doubles has a size too.
struct LevelScale {
    double half_minimum;
    double half_span;

    explicit LevelScale(RealRange limits)
        : half_minimum(limits.minimum / 2), half_span(limits.maximum / 2 - half_minimum) {
        if (!(half_span > 0))
            half_span = std::numeric_limits<double>::infinity();  // all samples are at the lower end
    }
    // A comparison with a NaN is false: what is no number becomes 0.
    [[gnu::always_inline]] uint8_t level(double value) const {
        const double level = (value / 2 - half_minimum) / half_span * 255 + 0.5;
        const double floored = level > 0 ? level : 0;
        return static_cast<uint8_t>(static_cast<int32_t>(floored < 255 ? floored : 255));
    }
};

template <typename T>
void map_values(const T *samples, const LevelScale &scale, int64_t count, uint8_t *levels) {
    if constexpr (sizeof(T) <= 2) {
        // There are fewer values than samples in all but small images.
        constexpr int32_t lowest = std::numeric_limits<T>::is_signed ? -(1 << (8 * sizeof(T) - 1)) : 0;
        std::array<uint8_t, size_t{1} << 8 * sizeof(T)> table;
        for (size_t i = 0; i < table.size(); ++i)
            table[i] = scale.level(static_cast<double>(static_cast<int32_t>(i) + lowest));
        for (int64_t i = 0; i < count; ++i)
            levels[i] = table[static_cast<size_t>(samples[i] - lowest)];
    } else {
        run_vectorised([=]() __attribute__((always_inline)) {
            for (int64_t i = 0; i < count; ++i)
                levels[i] = scale.level(static_cast<double>(samples[i]));
        });
    }
}

void map_qube_values(const void *samples, const OaQubeItem &item, const LevelScale &scale, int64_t count,
                     uint8_t *levels) {
    std::array<double, piece> values;
    const auto *bytes = static_cast<const uint8_t *>(samples);
    for (int64_t done = 0; done < count; done += piece) {
        const int64_t some = std::min(piece, count - done);
        OaQubePhysicalValues(item, bytes + done * item.bytes, some, values.data());
        map_values(values.data(), scale, some, levels + done);
    }
}

// Widens the range to the finite samples.
void widen(const void *samples, const ImageDescription &description, int64_t count, RealRange *range) {
    if (description.qube_item) {
        OaQubeWidenRange(*description.qube_item, samples, count, &range->minimum, &range->maximum);
        return;
    }
    with_samples(samples, description, [&]<typename T>(const T *values) {
        constexpr Extremes<T> none = {std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()};
        const Extremes<T> found = widened<Infinities::PassedOver>(values, count, none);
        if (found.minimum > found.maximum)
            return;
        range->minimum = std::min(range->minimum, static_cast<double>(found.minimum));
        range->maximum = std::max(range->maximum, static_cast<double>(found.maximum));
    });
}

// The limits of the block shown where none were typed; null samples end it early.
bool find_limits(ImagePart *strips, const ImageDescription &description, const ShownBand &shown, RealRange *limits) {
    RealRange found = nothing;
    for (int64_t i = 0; !(shown.minimum && shown.maximum) && i < strips->strip_count(); ++i) {
        const OaObject *samples = strips->read(i);
        if (!samples)
            return false;
        const SampleBlock strip = strips->strip(i);
        widen(samples->data, description, strip.lines() * strip.samples(), &found);
    }
    if (found.minimum > found.maximum)
        found = {0, 0};
    *limits = {shown.minimum.value_or(found.minimum), shown.maximum.value_or(found.maximum)};
    return true;
}

bool can_be_read(const ImageDescription &description) {
    return description.qube_item || with_samples(nullptr, description, [](const auto *) {});
}

std::vector<std::unique_ptr<SampleSource>> make_sources(const BandChoice &choice, const BandSourceMaker &maker,
                                                        const ObjDesc *object) {
    std::vector<std::unique_ptr<SampleSource>> sources;
    for (const ShownBand &shown : choice.bands)
        sources.push_back(maker(object, shown.band));
    return sources;
}

}  // namespace

void map_to_levels(const void *samples, const ImageDescription &description, RealRange limits, int64_t count,
                   uint8_t *levels) {
    const LevelScale scale(limits);
    if (description.qube_item)
        map_qube_values(samples, *description.qube_item, scale, count, levels);
    else
        with_samples(samples, description, [&](const auto *values) { map_values(values, scale, count, levels); });
}

void add_levels(const uint8_t *levels, Colour colour, int64_t count, uint8_t *pixels) {
    const std::array<uint32_t, 3> components = {colour.blue, colour.green, colour.red};
    std::array<std::array<uint8_t, 4>, 256> shares = {};
    for (uint32_t level = 0; level < shares.size(); ++level) {
        for (size_t i = 0; i < components.size(); ++i)
            shares[level][i] = static_cast<uint8_t>((level * components[i] + 127) / 255);
    }
    std::array<uint8_t, 4 * piece> added;
    for (int64_t done = 0; done < count; done += piece) {
        const int64_t some = std::min(piece, count - done);
        for (int64_t i = 0; i < some; ++i)
            memcpy(added.data() + 4 * i, shares[levels[done + i]].data(), 4);
        uint8_t *bytes = pixels + 4 * done;
        run_vectorised([&]() __attribute__((always_inline)) {
            for (int64_t i = 0; i < 4 * some; ++i) {
                const auto sum = static_cast<uint8_t>(bytes[i] + added[static_cast<size_t>(i)]);
                bytes[i] = sum < bytes[i] ? 255 : sum;
            }
        });
    }
}

BandComposite::BandComposite(const BandChoice &choice, std::vector<std::unique_ptr<SampleSource>> sources)
    : is_grey_(choice.is_grey) {
    const size_t count = is_grey_ ? std::min<size_t>(1, sources.size()) : sources.size();
    for (size_t i = 0; i < count; ++i)
        parts_.push_back({choice.bands[i], std::move(sources[i]), {}});
}

BandComposite::BandComposite(const BandChoice &choice, const BandSourceMaker &maker, const ObjDesc *object)
    : BandComposite(choice, make_sources(choice, maker, object)) {}

std::string BandComposite::describe(ImageDescription *description) {
    if (parts_.empty())
        return "Choose at least one band.";
    for (Part &part : parts_) {
        part.description = ImageDescription();
        std::string fault = part.source->describe(&part.description);
        if (!fault.empty())
            return fault;
        const ImageDescription &first = parts_.front().description;
        if (part.description.lines != first.lines || part.description.line_samples != first.line_samples)
            return "Bands of different sizes cannot be shown together.";
        if (!can_be_read(part.description))
            return util_format("Samples of %lld bits cannot be shown.",
                               static_cast<long long>(part.description.sample_bits));
    }
    is_described_ = true;
    return parts_.front().source->describe(description);
}

OaObjectPtr BandComposite::read_block(const SampleBlock &block) {
    return parts_.empty() ? nullptr : parts_.front().source->read_block(block);
}

bool BandComposite::shows_stored_bytes(const Part &part) const {
    return is_grey_ && part.description.sample_bits == 8 && !part.description.is_signed &&
           !part.description.qube_item && !part.shown.minimum && !part.shown.maximum;
}

bool BandComposite::add_part(Part *part, const SampleBlock &block, PixelImage *image) {
    ImagePart strips(part->source.get(), block, part->description.sample_bits / 8);
    RealRange limits = {0, 255};
    if (!shows_stored_bytes(*part) && !find_limits(&strips, part->description, part->shown, &limits))
        return false;
    std::vector<uint8_t> levels;
    for (int64_t i = 0; i < strips.strip_count(); ++i) {
        const OaObject *samples = strips.read(i);
        if (!samples)
            return false;
        const SampleBlock strip = strips.strip(i);
        const int64_t count = strip.lines() * strip.samples();
        uint8_t *pixels =
            image->pixels.get() + (strip.first_line - block.first_line) * block.samples() * image->bytes_per_pixel;
        if (is_grey_) {
            map_to_levels(samples->data, part->description, limits, count, pixels);
            continue;
        }
        levels.resize(static_cast<size_t>(count));
        map_to_levels(samples->data, part->description, limits, count, levels.data());
        add_levels(levels.data(), part->shown.colour, count, pixels);
    }
    limits_.push_back(limits);
    return true;
}

std::unique_ptr<PixelImage> BandComposite::compose(const SampleBlock &block, std::vector<std::string> *remarks) {
    std::unique_ptr<PixelImage> image;
    if (block.lines() <= INT_MAX && block.samples() <= INT_MAX)
        image =
            util_new_pixel_image(static_cast<int>(block.samples()), static_cast<int>(block.lines()), is_grey_ ? 1 : 4);
    if (!image) {
        OaReportFailure(720, "%s: no memory for a display image of %lld lines and %lld samples.", __func__,
                        static_cast<long long>(block.lines()), static_cast<long long>(block.samples()));
        return nullptr;
    }
    image->colours = util_grey_colours();
    for (Part &part : parts_) {
        const HeldNotices held;
        const bool added = add_part(&part, block, image.get());
        if (!held.notices().empty())
            remarks->push_back(util_format("Band %lld: ", static_cast<long long>(part.shown.band)) +
                               held.notices().front().text);
        if (!added)
            return nullptr;
    }
    return image;
}

// A file that ends early is told of once, not once a band, and when nothing is left to do: whoever shows a box may see
// the window go meanwhile.
std::unique_ptr<PixelImage> BandComposite::read_picture(const SampleBlock &block) {
    ImageDescription ignored;
    if (!is_described_ && !describe(&ignored).empty())
        return nullptr;
    limits_.clear();
    std::vector<std::string> remarks;
    auto image = compose(block, &remarks);
    std::string text;
    for (const std::string &remark : remarks)
        text += (text.empty() ? "" : "\n\n") + remark;
    if (!text.empty())
        util_notice(NoticeKind::Error, text);
    return image;
}

std::string BandComposite::value_text(int64_t line, int64_t sample, bool hexadecimal) {
    const HeldNotices held;  // what is missing was told when the picture was made
    std::string text;
    for (Part &part : parts_) {
        std::string value = part.source->value_text(line, sample, hexadecimal);
        const char *gap = "\n";  // what a source says may be long
        if (value.empty()) {
            gap = "  ";
            const OaObjectPtr found = part.source->read_block({line, line, sample, sample});
            value = util_format("band %lld: ", static_cast<long long>(part.shown.band)) +
                    (found ? sample_text(found->data, 0, part.description, hexadecimal) : "-");
        }
        text += (text.empty() ? "" : gap) + value;
    }
    return text;
}

bool BandComposite::click(int64_t line, int64_t sample) {
    return !parts_.empty() && parts_.front().source->click(line, sample);
}
