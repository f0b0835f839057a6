// Several bands shown together: each as levels between its own limits, in a colour of its own.
#pragma once

#include "viewer/model/band_choice.h"
#include "viewer/model/sample_source.h"

#include <functional>

// Gives the samples of one band (from 1) of an object: image_band_source, or one that knows its qube.
using BandSourceMaker = std::function<std::unique_ptr<SampleSource>(const ObjDesc *object, int64_t band)>;

// Levels of native samples, as the description says how they are stored: 0 at the lower limit, 255 at the upper,
// linear and rounded to nearest between, the same beyond. Without a number, or where the limits coincide, 0.
void map_to_levels(const void *samples, const ImageDescription &description, RealRange limits, int64_t count,
                   uint8_t *levels);
// Adds level x colour / 255 of each sample to a four-byte pixel; a component stops at 255.
void add_levels(const uint8_t *levels, Colour colour, int64_t count, uint8_t *pixels);

// A source that makes its own pictures: 4 bytes a pixel for colours, 1 for a band as grey, whose 8-bit unsigned samples
// are shown as they are unless a limit was typed. Bands are read one after the other, in strips.
class BandComposite final : public SampleSource {
  public:
    // The sources of the choice's bands, in its order, all of one size; none may be null.
    BandComposite(const BandChoice &choice, std::vector<std::unique_ptr<SampleSource>> sources);
    // The same from the bands of one object, which must outlive the source.
    BandComposite(const BandChoice &choice, const BandSourceMaker &maker, const ObjDesc *object);

    std::string describe(ImageDescription *description) override;  // as the first band is stored
    OaObjectPtr read_block(const SampleBlock &block) override;     // the first band
    bool gives_pictures() const override { return true; }
    std::unique_ptr<PixelImage> read_picture(const SampleBlock &block) override;
    std::string value_text(int64_t line, int64_t sample, bool hexadecimal) override;  // "band 1: 35  band 2: 40"
    bool click(int64_t line, int64_t sample) override;

    // What each band was shown between in the picture read last, in the choice's order; empty before.
    const std::vector<RealRange> &limits() const { return limits_; }

  private:
    struct Part {
        ShownBand shown;
        std::unique_ptr<SampleSource> source;
        ImageDescription description;
    };
    std::unique_ptr<PixelImage> compose(const SampleBlock &block, std::vector<std::string> *remarks);
    bool add_part(Part *part, const SampleBlock &block, PixelImage *image);
    bool shows_stored_bytes(const Part &part) const;

    bool is_grey_;
    std::vector<Part> parts_;
    std::vector<RealRange> limits_;
    bool is_described_ = false;
};
