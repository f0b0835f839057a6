#include "cli/png_writer.h"

#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstring>

namespace {

// libpng's own function tells that writing failed, but not why.
void write_bytes(png_structp png, png_bytep bytes, size_t count) {
    if (fwrite(bytes, 1, count, static_cast<FILE *>(png_get_io_ptr(png))) != count)
        png_error(png, strerror(errno));
}

}  // namespace

struct PngWriter::State {
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::string error;

    // Runs a step that libpng may leave by a jump; the step holds nothing that would have to be destroyed.
    template <typename Step>
    bool run(Step step) {
        if (!error.empty())
            return false;
        if (!png || !info) {
            error = "no memory for a PNG file";
            return false;
        }
        if (setjmp(png_jmpbuf(png)))
            return false;
        step();
        return true;
    }
};

PngWriter::PngWriter() : state_(std::make_unique<State>()) {
    const auto keep_error = [](png_structp png, png_const_charp text) {
        static_cast<State *>(png_get_error_ptr(png))->error = text;
        png_longjmp(png, 1);
    };
    state_->png =
        png_create_write_struct(PNG_LIBPNG_VER_STRING, state_.get(), keep_error, [](png_structp, png_const_charp) {});
    if (state_->png)
        state_->info = png_create_info_struct(state_->png);
}

PngWriter::~PngWriter() {
    png_destroy_write_struct(&state_->png, &state_->info);
}

bool PngWriter::start(FILE *file, uint32_t width, uint32_t height) {
    return state_->run([=, png = state_->png, info = state_->info] {
        png_set_write_fn(png, file, write_bytes, nullptr);
        png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_IHDR(png, info, width, height, 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        png_write_info(png, info);
    });
}

bool PngWriter::write_row(const uint8_t *row) {
    return state_->run([=, png = state_->png] { png_write_row(png, row); });
}

bool PngWriter::finish() {
    return state_->run([png = state_->png] { png_write_end(png, nullptr); });
}

const std::string &PngWriter::error() const {
    return state_->error;
}
