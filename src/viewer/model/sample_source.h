// Where an image window takes its samples from. The window never asks which kind of product stands behind.
#pragma once

#include "viewer/model/image_description.h"

#include <memory>
#include <string>

class SampleSource {
  public:
    virtual ~SampleSource() = default;

    // Fills the description; an empty text, or the error to show.
    virtual std::string describe(ImageDescription *description) = 0;
    // Native samples of the block, row after row, in the form that describe told. Null after reporting.
    virtual OaObjectPtr read_block(const SampleBlock &block) = 0;
    // Whether the source makes its own display image, by read_picture, where others leave that to the stretch.
    virtual bool gives_pictures() const { return false; }
    // The display image of the block, in storage order. Null after reporting.
    virtual std::unique_ptr<PixelImage> read_picture(const SampleBlock &) { return nullptr; }
    // More to say about the value at a line and sample (1-based) than its display level, integers with their bits as
    // hexadecimal digits too; empty when there is nothing.
    virtual std::string value_text(int64_t line, int64_t sample, bool hexadecimal) = 0;
    // A click at a line and sample; true when the source made something of it.
    virtual bool click(int64_t line, int64_t sample) = 0;
};

// One band (from 1) of an IMAGE node, however its samples are encoded, in the image's size; the node must outlive the
// source.
std::unique_ptr<SampleSource> image_band_source(const ObjDesc *image, int64_t band);
