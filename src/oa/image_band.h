// One band of an image, open for reading: whatever the encoding, it gives rectangles of native samples.
#pragma once

#include "oa/oa.h"

#include <cstdint>
#include <memory>

// Lines and samples from 0.
struct SampleRectangle {
    int64_t line = 0;
    int64_t lines = 0;
    int64_t sample = 0;
    int64_t samples = 0;

    int64_t area() const { return lines * samples; }
    bool operator==(const SampleRectangle &) const = default;
    bool contains(const SampleRectangle &part) const {
        return part.line >= line && part.line + part.lines <= line + lines && part.sample >= sample &&
               part.sample + part.samples <= sample + samples;
    }
};

// How far a read came when the file ended before it: bytes from the rectangle's first sample on, and the first sample
// that is missing (from 0).
struct ShortRead {
    int64_t bytes_read = 0;
    int64_t bytes_wanted = 0;
    int64_t line = 0;
    int64_t sample = 0;
};

class ImageBand {
  public:
    virtual ~ImageBand() = default;

    // Fills `out`, zeroed before, with the rectangle's samples, line after line. Samples that the file does not hold
    // stay 0 and are told in `missing`. False after reporting.
    virtual bool read(const SampleRectangle &rectangle, uint8_t *out, ShortRead *missing) = 0;

    int64_t lines() const { return image_.lines; }
    int64_t line_samples() const { return image_.line_samples; }
    int64_t sample_size() const { return sample_size_; }
    // The image's label, describing this band in its native form.
    const ObjDesc *label() const { return label_.get(); }
    // Shows the message of a read that met the end of the file, once however many follow; does nothing when no sample
    // is missing.
    void tell_short_read(const ShortRead &missing);

  protected:
    ImageBand(const OaImageKeywords &image, OdlTree label, int64_t native_sample_size)
        : image_(image), label_(std::move(label)), sample_size_(native_sample_size) {}

    OaImageKeywords image_;

  private:
    OdlTree label_;
    int64_t sample_size_;      // bytes
    bool told_short_ = false;  // the end of the file was met and the user knows
};

// Checks the node and what it says of its image; a band of any number becomes 1 where the image has only one. False
// after reporting, as below in the name of `routine`.
bool read_image_keywords(const char *routine, const ObjDesc *image_node, int64_t *band, OaImageKeywords *image);
// Opens a band, from 1. Null after reporting.
std::unique_ptr<ImageBand> open_image_band(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image,
                                           int64_t band);
std::unique_ptr<ImageBand> open_plain_band(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image,
                                           int64_t band);
std::unique_ptr<ImageBand> open_huffman_band(const char *routine, const ObjDesc *image_node,
                                             const OaImageKeywords &image);
std::unique_ptr<ImageBand> open_previous_pixel_band(const char *routine, const ObjDesc *image_node,
                                                    const OaImageKeywords &image);
// Whole images of forms that are decoded at once. Null after reporting.
OaObject *read_clementine_image(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image);
OaObject *read_gif_image(const char *routine, const ObjDesc *image_node, const OaImageKeywords &image);

// Whether records, bands and bytes around lines are of a kind that the image's encoding allows (520), and the file can
// hold the image. False after reporting.
bool check_image_storage(const char *routine, const OaImageKeywords &image, const OaFileKeywords &file);

// The rectangle as a new object in `buffer` (zeroed, of the rectangle's size; from here on the object's), which `label`
// is to describe. Tells of missing samples and reports values that did not fit. Null after reporting.
OaObject *read_image_object(const char *routine, ImageBand *band, const SampleRectangle &rectangle,
                            OaPtr<uint8_t> buffer, OdlTree label);
