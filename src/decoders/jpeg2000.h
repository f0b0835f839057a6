// JPEG 2000 images: the boxes of JP2 and JPX files, or bare codestreams, from any byte of a file on. What a codestream
// says of itself is read first, and checked before the library that decodes it allocates for it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

// Name and version of the library that decodes them.
std::string jpeg2000_library_version();

// One component: its own size, which is smaller than the image's where it has fewer samples than the reference grid.
struct Jpeg2000Component {
    int64_t lines = 0;
    int64_t line_samples = 0;
    int bits = 0;  // 1 to 31
    bool is_signed = false;
    int64_t step_x = 1;  // of the reference grid
    int64_t step_y = 1;
    int64_t first_x = 0;  // of its samples, counted in steps from the grid's origin
    int64_t first_y = 0;

    // Of a decoded sample, in the machine's byte order: 1, 2 or 4.
    int64_t sample_bytes() const { return bits <= 8 ? 1 : bits <= 16 ? 2 : 4; }
};

struct Jpeg2000Image {
    std::string file_name;
    int64_t start = 0;  // byte of the file where the boxes or the codestream begin
    int64_t file_size = 0;
    bool in_boxes = false;
    bool is_jpx = false;
    int64_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;  // the image on the reference grid
    int64_t tile_x0 = 0, tile_y0 = 0, tile_width = 0, tile_height = 0;
    int64_t tiles_across = 0, tiles_down = 0;
    std::vector<Jpeg2000Component> components;
    std::vector<bool> tile_is_there;  // whether its data begin in the file; row after row
    int64_t cut_tile_part = -1;       // byte of the file where one begins that reaches beyond its end
    int64_t tile_parts_end = 0;       // byte of the file behind the last tile part
    bool joins_components = false;    // the first three can only be decoded together

    // The size of its largest component.
    int64_t lines() const;
    int64_t line_samples() const;
};

// Finds the codestream in the boxes from `start` on and reads its headers. An empty text, or why it cannot be decoded.
std::string open_jpeg2000(const std::string &file_name, int64_t start, Jpeg2000Image *image);

// Samples of a component, counted from 0.
struct Jpeg2000Area {
    int64_t line = 0;
    int64_t lines = 0;
    int64_t sample = 0;
    int64_t samples = 0;

    bool operator==(const Jpeg2000Area &) const = default;
};

// Decodes an area of a component (from 0) into native samples of its sample_bytes, line after line, in `out`, zeroed
// before; only tiles and code-blocks that the area touches, on all cores. An empty text, or why it failed. Where the
// data end early or tiles are missing the samples stay 0 or coarse, and `damage` tells.
std::string decode_jpeg2000(const Jpeg2000Image &image, size_t component, const Jpeg2000Area &area, uint8_t *out,
                            std::string *damage);

// --- Inside the decoder -------------------------------------------------------------------------------------------

// Reads up to `count` bytes at a byte of the file; fewer at its end.
size_t read_at(FILE *file, int64_t position, void *bytes, size_t count);

// Fills the image from its boxes and markers; whether its parts fit together is left to the library. An empty text, or
// what is wrong.
std::string scan_jpeg2000(FILE *file, Jpeg2000Image *image);
