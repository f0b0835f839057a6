#include "decoders/jpeg_grey.h"

#include "base/text.h"

#include <csetjmp>
#include <cstddef>
#include <jpeglib.h>

namespace {

constexpr int most_scans = 100;  // a stream may repeat itself without end in a few bytes each
constexpr int64_t own_memory = int64_t{16} << 20;

// What the decoder's callbacks find from its error manager.
struct Escape {
    jpeg_error_mgr errors;  // first: callbacks know its address
    jmp_buf place;
    char message[JMSG_LENGTH_MAX];
    char damage[JMSG_LENGTH_MAX];
};
static_assert(offsetof(Escape, errors) == 0);

Escape *escape_of(j_common_ptr jpeg) {
    return reinterpret_cast<Escape *>(jpeg->err);
}

[[noreturn]] void leave(j_common_ptr jpeg) {
    jpeg->err->format_message(jpeg, escape_of(jpeg)->message);
    longjmp(escape_of(jpeg)->place, 1);
}

// Keeps the first warning.
void note(j_common_ptr jpeg, int level) {
    if (level < 0 && jpeg->err->num_warnings++ == 0)
        jpeg->err->format_message(jpeg, escape_of(jpeg)->damage);
}

void stay_silent(j_common_ptr) {}

[[noreturn]] void refuse(j_common_ptr jpeg, const char *reason) {
    Escape *escape = escape_of(jpeg);
    snprintf(escape->message, sizeof escape->message, "%s", reason);
    longjmp(escape->place, 1);
}

void count_scans(j_common_ptr jpeg) {
    if (reinterpret_cast<j_decompress_ptr>(jpeg)->input_scan_number > most_scans)
        refuse(jpeg, "it has too many scans");
}

void check_picture(j_decompress_ptr jpeg, int64_t lines, int64_t samples) {
    const auto common = reinterpret_cast<j_common_ptr>(jpeg);
    if (jpeg->num_components != 1 || jpeg->jpeg_color_space != JCS_GRAYSCALE)
        refuse(common, "it is not grey");
    if (jpeg->image_height != lines || jpeg->image_width != samples)
        refuse(common, "its size is not that of the label");
}

// Everything below is left by longjmp on failure: nothing here may need a destructor.
bool decode(FILE *file, int64_t lines, int64_t samples, uint8_t *out, Escape *escape) {
    jpeg_decompress_struct jpeg = {};
    jpeg_progress_mgr progress = {};
    jpeg.err = jpeg_std_error(&escape->errors);
    jpeg.err->error_exit = leave;
    jpeg.err->emit_message = note;
    jpeg.err->output_message = stay_silent;
    progress.progress_monitor = count_scans;
    if (setjmp(escape->place) != 0) {
        jpeg_destroy_decompress(&jpeg);
        return false;
    }
    jpeg_create_decompress(&jpeg);
    jpeg.progress = &progress;
    jpeg.mem->max_memory_to_use = static_cast<long>(own_memory + 4 * lines * samples);
    jpeg_stdio_src(&jpeg, file);
    jpeg_read_header(&jpeg, TRUE);
    check_picture(&jpeg, lines, samples);
    jpeg.out_color_space = JCS_GRAYSCALE;
    jpeg_start_decompress(&jpeg);
    while (jpeg.output_scanline < jpeg.output_height) {
        JSAMPROW row = out + static_cast<int64_t>(jpeg.output_scanline) * samples;
        jpeg_read_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_decompress(&jpeg);
    jpeg_destroy_decompress(&jpeg);
    return true;
}

}  // namespace

#define TEXT_OF(value) #value
#define EXPANDED_TEXT_OF(value) TEXT_OF(value)
const char *jpeg_library_version() {
#ifdef LIBJPEG_TURBO_VERSION
    return "libjpeg-turbo " EXPANDED_TEXT_OF(LIBJPEG_TURBO_VERSION);
#else
    return "libjpeg " EXPANDED_TEXT_OF(JPEG_LIB_VERSION);
#endif
}

bool is_jpeg_stream(FILE *file) {
    const off_t start = ftello(file);
    uint8_t bytes[3] = {};
    const size_t count = fread(bytes, 1, sizeof bytes, file);
    fseeko(file, start, SEEK_SET);
    return count == sizeof bytes && bytes[0] == 0xff && bytes[1] == 0xd8 && bytes[2] == 0xff;
}

std::string decode_grey_jpeg(FILE *file, int64_t lines, int64_t samples, uint8_t *out, std::string *damage) {
    Escape escape = {};
    const bool done = decode(file, lines, samples, out, &escape);
    *damage = escape.damage;
    return done ? "" : util_format("the JPEG stream can't be decoded: %s", escape.message);
}
