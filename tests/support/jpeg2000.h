// JPEG 2000 files on disk, written tile by tile with OpenJPEG.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <openjpeg.h>
#include <string>
#include <vector>

struct Jpeg2000Picture {
    uint32_t width = 1;
    uint32_t height = 1;
    uint32_t components = 1;
    uint32_t bits = 8;
    bool is_signed = false;
    uint32_t tile = 0;    // side; 0: one tile
    uint32_t origin = 0;  // of the image on the grid, in both directions
    uint32_t step = 1;    // of components behind the first
    bool joined = false;  // the first three are transformed together
    bool boxes = true;    // JP2 rather than a bare codestream
    int levels = 3;       // 2 to their power may not be more than the smaller side of the picture or a tile

    uint32_t step_of(uint32_t component) const { return component == 0 ? 1 : step; }
    // Of the component, counted from the grid's origin.
    int32_t value(uint32_t component, uint32_t line, uint32_t sample) const {
        const uint32_t mixed = sample * 3 + line * 5 + (line * sample >> 3) % 31 + component * 50;
        const auto value = static_cast<int32_t>(mixed & ((uint32_t{1} << bits) - 1));
        return is_signed ? value - (1 << (bits - 1)) : value;
    }
};

namespace jpeg2000_writing {

inline uint32_t steps(uint32_t end, uint32_t step) {
    return (end + step - 1) / step;
}

template <typename T>
void put(std::vector<uint8_t> *bytes, int32_t value) {
    const auto stored = static_cast<T>(value);
    const auto *at = reinterpret_cast<const uint8_t *>(&stored);
    bytes->insert(bytes->end(), at, at + sizeof stored);
}

// Of so many components from this one on.
inline std::vector<uint8_t> tile_samples(const Jpeg2000Picture &picture, uint32_t left, uint32_t top, uint32_t right,
                                         uint32_t bottom, uint32_t component, uint32_t count) {
    std::vector<uint8_t> bytes;
    for (uint32_t c = component; c < component + count; ++c) {
        const uint32_t step = picture.step_of(c);
        for (uint32_t line = steps(top, step); line < steps(bottom, step); ++line)
            for (uint32_t sample = steps(left, step); sample < steps(right, step); ++sample) {
                const int32_t value = picture.value(c, line, sample);
                picture.bits <= 8    ? put<int8_t>(&bytes, value)
                : picture.bits <= 16 ? put<int16_t>(&bytes, value)
                                     : put<int32_t>(&bytes, value);
            }
    }
    return bytes;
}

inline bool write_tiles(opj_codec_t *codec, opj_stream_t *stream, const Jpeg2000Picture &picture, uint32_t side_x,
                        uint32_t side_y) {
    const uint32_t x1 = picture.origin + picture.width;
    const uint32_t y1 = picture.origin + picture.height;
    uint32_t index = 0;
    for (uint32_t top = 0; top < y1; top += side_y)
        for (uint32_t left = 0; left < x1; left += side_x) {
            auto bytes = tile_samples(picture, std::max(left, picture.origin), std::max(top, picture.origin),
                                      std::min(left + side_x, x1), std::min(top + side_y, y1), 0, picture.components);
            if (!opj_write_tile(codec, index++, bytes.data(), static_cast<OPJ_UINT32>(bytes.size()), stream))
                return false;
        }
    return true;
}

}  // namespace jpeg2000_writing

// Writes a reversible file; the tile that holds the origin must hold samples. Returns its path, empty on failure.
inline std::string write_jpeg2000(const std::string &path, const Jpeg2000Picture &picture) {
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    const uint32_t x1 = picture.origin + picture.width;
    const uint32_t y1 = picture.origin + picture.height;
    parameters.tile_size_on = picture.tile ? OPJ_TRUE : OPJ_FALSE;
    parameters.cp_tdx = static_cast<int>(picture.tile ? picture.tile : x1);
    parameters.cp_tdy = static_cast<int>(picture.tile ? picture.tile : y1);
    parameters.tcp_mct = picture.joined ? 1 : 0;
    parameters.numresolution = picture.levels + 1;
    parameters.image_offset_x0 = parameters.image_offset_y0 = static_cast<int>(picture.origin);
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    std::vector<opj_image_cmptparm_t> components(picture.components);
    for (uint32_t c = 0; c < picture.components; ++c) {
        opj_image_cmptparm_t &component = components[c];
        component = {};
        component.dx = component.dy = picture.step_of(c);
        component.prec = picture.bits;
        component.sgnd = picture.is_signed;
        component.x0 = component.y0 = jpeg2000_writing::steps(picture.origin, component.dx);
        component.w = jpeg2000_writing::steps(x1, component.dx) - component.x0;
        component.h = jpeg2000_writing::steps(y1, component.dy) - component.y0;
    }
    opj_image_t *image = opj_image_tile_create(picture.components, components.data(),
                                               picture.components >= 3 ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_GRAY);
    image->x0 = image->y0 = picture.origin;
    image->x1 = x1;
    image->y1 = y1;
    opj_codec_t *codec = opj_create_compress(picture.boxes ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K);
    opj_stream_t *stream = opj_stream_create_default_file_stream(path.c_str(), OPJ_FALSE);
    const bool written = opj_setup_encoder(codec, &parameters, image) && opj_codec_set_threads(codec, 2) &&
                         opj_start_compress(codec, image, stream) &&
                         jpeg2000_writing::write_tiles(codec, stream, picture, static_cast<uint32_t>(parameters.cp_tdx),
                                                       static_cast<uint32_t>(parameters.cp_tdy)) &&
                         opj_end_compress(codec, stream);
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
    opj_image_destroy(image);
    return written ? path : "";
}
