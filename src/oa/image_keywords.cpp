// What an IMAGE node says of its image, and whether its file can hold that.
#include "base/text.h"
#include "decoders/gif_lzw.h"
#include "oa/oa.h"

#include <algorithm>
#include <sys/stat.h>

namespace {

// How many times the bytes that the file holds an image may claim.
constexpr int64_t largest_claim = 16;

struct EncodingName {
    const char *part;
    OaImageEncoding encoding;
};
constexpr EncodingName encoding_names[] = {
    {"HFD", OA_HUFFMAN},
    {"HUFFMAN", OA_HUFFMAN},
    {"PREVIOUS_PIXEL", OA_PREVIOUS_PIXEL},
    {"CLEM-JPEG", OA_CLEMENTINE_JPEG},
};

OaImageEncoding encoding_of(const std::string &text) {
    if (text == "N/A")
        return OA_NOT_ENCODED;
    for (const EncodingName &name : encoding_names)
        if (util_contains(text, name.part))
            return name.encoding;
    return text == "GIF" ? OA_GIF_ENCODING : OA_UNKNOWN_ENCODING;
}

OaBandStorage band_storage_of(const std::string &text) {
    if (text == "BAND_SEQUENTIAL")
        return OA_BAND_SEQUENTIAL;
    if (text == "LINE_INTERLEAVED")
        return OA_LINE_INTERLEAVED;
    return text == "SAMPLE_INTERLEAVED" ? OA_SAMPLE_INTERLEAVED : OA_NO_BAND_STORAGE;
}

// Upper case, without double quotes and outer blanks.
std::string plain_text(const char *value) {
    return util_upper(util_trim(util_without(value, '"')));
}

constexpr const char *reader = "OaGetImageKeywords";

// 0, or 1 after reporting. A keyword that is not there leaves `out` as it is, where it may be missing.
int read_size(const ObjDesc *node, const char *keyword, bool required, int64_t minimum, int64_t *out) {
    const char *text = nullptr;
    if (OaKwdValuetoStr(keyword, node, &text) != 0) {
        if (!required)
            return 0;
        OaReportFailure(531, "%s: %s keyword missing.", reader, keyword);
        return 1;
    }
    if (OaKwdValuetoLong(keyword, node, out) != 0)
        return 1;
    if (*out >= minimum)
        return 0;
    std::string name(keyword);
    std::replace(name.begin(), name.end(), '*', '_');
    OaReportFailure(502, "%s: %s = %lld is not a size.", reader, name.c_str(), static_cast<long long>(*out));
    return 1;
}

int read_band_storage(const ObjDesc *node, OaImageKeywords *out) {
    const char *text = nullptr;
    if (OaKwdValuetoStr("BAND_STORAGE_TYPE", node, &text) != 0) {
        if (out->bands < 2)
            return 0;
        OaReportFailure(531, "%s: BAND_STORAGE_TYPE keyword missing!", reader);
        return 1;
    }
    out->band_storage = band_storage_of(plain_text(text));
    if (out->band_storage != OA_NO_BAND_STORAGE || out->bands < 2)
        return 0;
    OaReportFailure(531, "%s: unknown BAND_STORAGE_TYPE: %s", reader, text);
    return 1;
}

int read_encoding(const ObjDesc *node, OaImageKeywords *out) {
    const char *text = nullptr;
    if (OaKwdValuetoStr("ENCODING_TYPE", node, &text) != 0)
        return 0;
    out->encoding = encoding_of(plain_text(text));
    if (out->encoding != OA_UNKNOWN_ENCODING)
        return 0;
    OaReportFailure(531, "%s: unknown ENCODING_TYPE: %s", reader, text);
    return 1;
}

// Bytes of one line of one band, with what stands around it; -1 when that is no size.
int64_t line_bytes(const OaImageKeywords &image) {
    int64_t bytes = 0;
    if (__builtin_mul_overflow(image.line_samples, image.sample_bits / 8, &bytes) ||
        __builtin_add_overflow(bytes, image.line_prefix_bytes, &bytes) ||
        __builtin_add_overflow(bytes, image.line_suffix_bytes, &bytes))
        return -1;
    return bytes;
}

// Bytes of all bands; -1 when that is no size.
int64_t image_bytes(const OaImageKeywords &image) {
    int64_t bytes = line_bytes(image);
    if (bytes < 0 || __builtin_mul_overflow(bytes, image.lines, &bytes) ||
        __builtin_mul_overflow(bytes, image.bands, &bytes))
        return -1;
    return bytes;
}

// The least that the file must hold for the image to be there: bytes of one line, and of all of them.
struct Claim {
    int64_t line = 0;
    int64_t all = 0;
};

// Lines of several bytes may be more than a number holds where those of one byte were not.
Claim claim_of_lines(int64_t line, int64_t lines) {
    int64_t all = 0;
    return {line, __builtin_mul_overflow(line, lines, &all) ? INT64_MAX : all};
}

Claim claim_of(const OaImageKeywords &image) {
    constexpr int64_t samples_a_byte_of_jpeg = 64;
    switch (image.encoding) {
        case OA_HUFFMAN: {
            // A record's length, the first sample, a bit for each of the others.
            const int64_t bytes = line_bytes(image);
            return claim_of_lines(3 + bytes / 8 + (bytes % 8 > 1 ? 1 : 0), image.lines);
        }
        case OA_PREVIOUS_PIXEL:
            return {image.line_samples, image.line_samples * image.lines};
        case OA_CLEMENTINE_JPEG:
            return {1, image.line_samples * image.lines / samples_a_byte_of_jpeg + 1};
        case OA_GIF_ENCODING:
            return {1, image.line_samples * image.lines / gif_most_pixels_per_byte + 1};
        default: {
            const bool interleaved = image.bands > 1 && (image.band_storage == OA_LINE_INTERLEAVED ||
                                                         image.band_storage == OA_SAMPLE_INTERLEAVED);
            return {line_bytes(image) * (interleaved ? image.bands : 1), image_bytes(image)};
        }
    }
}

std::string claims_of(const OaImageKeywords &image) {
    return util_format(
        "LINES = %lld, LINE_SAMPLES = %lld, SAMPLE_BITS = %lld, BANDS = %lld, LINE_PREFIX_BYTES = %lld, "
        "LINE_SUFFIX_BYTES = %lld",
        static_cast<long long>(image.lines), static_cast<long long>(image.line_samples),
        static_cast<long long>(image.sample_bits), static_cast<long long>(image.bands),
        static_cast<long long>(image.line_prefix_bytes), static_cast<long long>(image.line_suffix_bytes));
}

}  // namespace

int OaGetImageKeywords(const ObjDesc *node, OaImageKeywords *out) {
    *out = {};
    if (!node || OaGetObjectClass(node) != OA_IMAGE) {
        OaReportFailure(501, "%s: input ODL tree node must have class IMAGE.", __func__);
        return 1;
    }
    if (read_size(node, "LINES", true, 1, &out->lines) != 0 ||
        read_size(node, "LINE_SAMPLES", true, 1, &out->line_samples) != 0 ||
        read_size(node, "SAMPLE_BITS", true, 1, &out->sample_bits) != 0)
        return 1;
    if (out->sample_bits % 8 != 0) {
        OaReportFailure(502, "%s: SAMPLE_BITS = %lld: samples must be whole bytes.", __func__,
                        static_cast<long long>(out->sample_bits));
        return 1;
    }
    const char *sample_type = nullptr;
    if (OaKwdValuetoStr("SAMPLE_TYPE", node, &sample_type) != 0) {
        OaReportFailure(531, "%s: SAMPLE_TYPE keyword missing.", __func__);
        return 1;
    }
    out->sample_type = util_without(sample_type, '"');
    if (read_size(node, "BANDS", false, 1, &out->bands) != 0 || read_band_storage(node, out) != 0 ||
        read_size(node, "LINE*PREFIX*BYTES", false, 0, &out->line_prefix_bytes) != 0 ||
        read_size(node, "LINE*SUFFIX*BYTES", false, 0, &out->line_suffix_bytes) != 0 || read_encoding(node, out) != 0)
        return 1;
    if (image_bytes(*out) < 0) {
        OaReportFailure(502, "%s: %s describe an image larger than any file.", __func__, claims_of(*out).c_str());
        return 1;
    }
    return 0;
}

int OaCheckImageExtent(const OaImageKeywords &image, const OaFileKeywords &file) {
    struct stat status;
    if (stat(file.file_name.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        OaReportFailure(700, "%s: couldn't open %s ", __func__, file.file_name.c_str());
        return 1;
    }
    // A record of variable length takes two bytes at least.
    int64_t start = file.start;
    const bool too_far = file.record_type == OA_VARIABLE_LENGTH && __builtin_mul_overflow(start, 2, &start);
    const int64_t held = too_far ? 0 : status.st_size - start;
    const auto [line, claim] = claim_of(image);
    int64_t end = 0;
    if (start < 0 || held < line || (claim - 1) / largest_claim >= held || __builtin_add_overflow(start, claim, &end)) {
        OaReportFailure(
            502, "%s: %s claim %lld bytes, %lld a line, from byte %lld on; %s of %lld bytes holds %lld from there.",
            __func__, claims_of(image).c_str(), static_cast<long long>(claim), static_cast<long long>(line),
            static_cast<long long>(start) + 1, file.file_name.c_str(), static_cast<long long>(status.st_size),
            static_cast<long long>(held > 0 ? held : 0));
        return 1;
    }
    return 0;
}
