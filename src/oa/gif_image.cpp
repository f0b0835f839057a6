// The images of a GIF file.
#include "base/notice.h"
#include "base/text.h"
#include "decoders/gif_lzw.h"
#include "oa/gif.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr const char *reader = "OalReadImageFromGif";
constexpr const char *decoding = "OalGifReadImage";
constexpr const char *unpacking = "OalGifLWZReadByte";
constexpr int64_t largest_side = 65535;

// Code data without the counts of their sub-blocks, some of these at a time.
class CodePieces {
  public:
    explicit CodePieces(GifFile *file) : file_(file) {}

    // Empty where the data end: at the terminator, or after reporting at the end of the file.
    std::span<const uint8_t> next() {
        size_t size = 0;
        while (!ended_ && size + largest_block <= sizeof bytes_) {
            const int count = file_->read_block(bytes_ + size);
            ended_ = count <= 0;
            if (count > 0)
                last_block_ = count;
            size += ended_ ? 0 : static_cast<size_t>(count);
        }
        return {bytes_, size};
    }

    // Whether sub-blocks follow the one that a place so many bytes before the end of the piece is in.
    bool more_blocks_behind(int64_t bytes_before_end) {
        int64_t blocks = 0;
        if (!ended_)
            file_->skip_blocks(&blocks);
        return blocks > 0 || bytes_before_end >= last_block_;
    }

  private:
    static constexpr size_t largest_block = 255;

    GifFile *file_;
    bool ended_ = false;
    int64_t last_block_ = 0;  // bytes of the last sub-block
    uint8_t bytes_[64 * largest_block];
};

// Decodes what there is and reports what is wrong with it.
void decode_pieces(GifFile *file, GifLzwDecoder *decoder) {
    using State = GifLzwDecoder::State;
    CodePieces pieces(file);
    State state = State::NeedsCodes;
    while (state == State::NeedsCodes) {
        const std::span<const uint8_t> codes = pieces.next();
        if (codes.empty()) {
            OalGifError(unpacking, "ran off the end of my bits");
            return;
        }
        state = decoder->decode(codes);
    }
    if (state == State::BadCode)
        OalGifError(unpacking, "circular table entry BIG ERROR");
    else if (state == State::Full)
        OalGifMsg(decoding, "too much input data, ignoring extra...");
    else if (pieces.more_blocks_behind(decoder->bytes_left()))
        OalGifError(unpacking, "missing EOD in data stream (common occurence)");
}

// Rows in the order of the four passes to rows from top to bottom; `pixels` of them are there.
void undo_interlace(const uint8_t *passes, int64_t pixels, int64_t height, int64_t width, uint8_t *rows) {
    struct Pass {
        int64_t first, step;
    };
    for (const Pass &pass : {Pass{0, 8}, Pass{4, 8}, Pass{2, 4}, Pass{1, 2}}) {
        for (int64_t row = pass.first; row < height && pixels > 0; row += pass.step) {
            memcpy(rows + row * width, passes, static_cast<size_t>(std::min(width, pixels)));
            passes += width;
            pixels -= width;
        }
    }
}

struct GifPixels {
    OaPtr<uint8_t> rows;  // null after reporting
    int64_t decoded = 0;
};

OaPtr<uint8_t> new_pixels(int64_t count) {
    OaPtr<uint8_t> pixels(static_cast<uint8_t *>(OaZeroedMalloc(static_cast<size_t>(count))));
    if (!pixels)
        OalGifError(decoding, "couldn't alloc space for image");
    return pixels;
}

// Memory is asked for at once but costs nothing before pixels are written to it.
GifPixels OalGifReadImage(GifFile *file, int64_t width, int64_t height, bool interlaced) {
    uint8_t code_size = 0;
    if (!file->read(&code_size, 1)) {
        OalGifError(decoding, "EOF or read error on image data");
        return {};
    }
    if (code_size < gif_least_code_size || code_size > gif_largest_code_size) {
        OalGifError(decoding, "error reading image");
        return {};
    }
    const int64_t size = width * height;
    GifPixels image;
    image.rows = new_pixels(size + GifLzwDecoder::slack);
    if (!image.rows)
        return {};
    const auto decoder = std::make_unique<GifLzwDecoder>(code_size, image.rows.get(), size);
    decode_pieces(file, decoder.get());
    image.decoded = decoder->pixels();
    decoder->clear_rest();
    if (image.decoded == 0) {
        OalGifError(decoding, "error reading image");
        return {};
    }
    if (interlaced) {
        OaPtr<uint8_t> rows = new_pixels(size);
        if (rows)
            undo_interlace(image.rows.get(), image.decoded, height, width, rows.get());
        image.rows = std::move(rows);
    }
    return image;
}

bool check_encoding(const ObjDesc *image_node) {
    const char *encoding = nullptr;
    if (!image_node || OaKwdValuetoStr("ENCODING_TYPE", image_node, &encoding) != 0) {
        OaReportFailure(531, "%s: Couldn't find ENCODING_TYPE = GIF!", reader);
        return false;
    }
    if (util_upper(util_trim(util_without(encoding, '"'))) != "GIF") {
        OaReportFailure(520, "%s: ENCODING_TYPE must be GIF!", reader);
        return false;
    }
    return true;
}

// Whether the file can hold so many pixels from there on.
bool check_size(FILE *file, int64_t byte_offset, int64_t lines, int64_t line_samples) {
    const int64_t held = util_file_size(file) - byte_offset;
    if (lines >= 1 && lines <= largest_side && line_samples >= 1 && line_samples <= largest_side &&
        (lines * line_samples - 1) / gif_most_pixels_per_byte < held)
        return true;
    OaReportFailure(502, "%s: %lld bytes hold no image of %lld lines and %lld samples.", reader,
                    static_cast<long long>(std::max<int64_t>(held, 0)), static_cast<long long>(lines),
                    static_cast<long long>(line_samples));
    return false;
}

void tell_missing_pixels(const char *file_name, int64_t decoded, int64_t size) {
    if (decoded < size)
        util_notice(NoticeKind::Warning,
                    util_format("%s: the data of a GIF image end early.\nPixels read: %lld.\nPixels of the image: %lld",
                                file_name, static_cast<long long>(decoded), static_cast<long long>(size)));
}

}  // namespace

OaObject *OalReadImageFromGif(const char *file_name, int64_t byte_offset, int64_t lines, int64_t line_samples,
                              const ObjDesc *image_node) {
    if (!check_encoding(image_node))
        return nullptr;
    const char *text = nullptr;
    int64_t interlace = 0;
    if (OaKwdValuetoStr("INTERLACE", image_node, &text) == 0 &&
        OaKwdValuetoLong("INTERLACE", image_node, &interlace) != 0)
        return nullptr;
    const FilePtr file = util_open_regular(file_name);
    if (!file) {
        OaReportFailure(700, "%s: couldn't open %s ", reader, file_name);
        return nullptr;
    }
    if (byte_offset < 0 || fseeko(file.get(), byte_offset, SEEK_SET) != 0) {
        OaReportFailure(700, "%s: fseek returned error!", reader);
        return nullptr;
    }
    if (!check_size(file.get(), byte_offset, lines, line_samples))
        return nullptr;
    GifFile bytes(file.get());
    GifPixels image = OalGifReadImage(&bytes, line_samples, lines, interlace != 0);
    if (!image.rows)
        return nullptr;
    const int64_t size = lines * line_samples;
    tell_missing_pixels(file_name, image.decoded, size);
    OdlTree label(OaCopyTree(image_node, OA_COPY_LABEL));
    OaDeleteKwd("INTERLACE", label.get());
    OaDeleteKwd("ENCODING_TYPE", label.get());
    return OaNewOaObject(label.release(), image.rows.release(), size);
}
