// Decoding of areas of JPEG 2000 images by OpenJPEG.
#include "decoders/jpeg2000.h"

#include "base/file.h"
#include "base/text.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <openjpeg.h>
#include <sys/stat.h>
#include <thread>

namespace {

constexpr size_t stream_buffer = 16384;  // what is read around each marker; code data are read past it
constexpr int64_t most_samples_at_once = int64_t{64} << 20;
constexpr int64_t samples_worth_threads = 65536;
constexpr unsigned most_threads = 32;
constexpr const char *missing_tiles = "tiles are missing";
constexpr size_t most_kept_bytes = size_t{64} << 20;

// --- The file as the library reads it -----------------------------------------------------------------------------

struct Source {
    FilePtr file;
    int64_t start = 0;
    int64_t held = 0;  // bytes that are taken from the file
    int64_t size = 0;  // with those that are added
    int64_t position = 0;
    int64_t cut_length_at = -1;  // where the length of a tile part stands that is to end with the file
};

// A file that ends early gets its last tile part and its end marker back, so that whatever lies before them is read.
// (The library would also allocate what the tile part says that it holds.)
void mend(const Source &source, uint8_t *bytes, size_t count) {
    constexpr uint8_t end_marker[] = {0xFF, 0xD9};
    const int64_t length = source.held - (source.cut_length_at - 6);  // 6 bytes of the part stand before
    const auto put = [&](int64_t position, uint8_t byte) {
        const int64_t at = position - source.position;
        if (at >= 0 && at < static_cast<int64_t>(count))
            bytes[at] = byte;
    };
    for (int64_t i = 0; i < 4 && source.cut_length_at >= 0; ++i)
        put(source.cut_length_at + i, static_cast<uint8_t>(length >> (8 * (3 - i))));
    for (int64_t i = 0; i < source.size - source.held; ++i)
        put(source.held + i, end_marker[i]);
}

OPJ_SIZE_T read_source(void *buffer, OPJ_SIZE_T count, void *data) {
    auto *source = static_cast<Source *>(data);
    const auto wanted = std::min(count, static_cast<size_t>(source->size - source->position));
    const int64_t from_file = std::clamp<int64_t>(source->held - source->position, 0, static_cast<int64_t>(wanted));
    const size_t got =
        read_at(source->file.get(), source->start + source->position, buffer, static_cast<size_t>(from_file));
    if (wanted == 0 || got < static_cast<size_t>(from_file))
        return static_cast<OPJ_SIZE_T>(-1);
    mend(*source, static_cast<uint8_t *>(buffer), wanted);
    source->position += static_cast<int64_t>(wanted);
    return wanted;
}

OPJ_BOOL seek_source(OPJ_OFF_T position, void *data) {
    auto *source = static_cast<Source *>(data);
    if (position < 0 || position > source->size)
        return OPJ_FALSE;
    source->position = position;
    return OPJ_TRUE;
}

OPJ_OFF_T skip_source(OPJ_OFF_T count, void *data) {
    auto *source = static_cast<Source *>(data);
    if (count < 0 || count > source->size - source->position)
        return -1;
    source->position += count;
    return count;
}

struct StreamDeleter {
    void operator()(opj_stream_t *stream) const { opj_stream_destroy(stream); }
};
struct CodecDeleter {
    void operator()(opj_codec_t *codec) const { opj_destroy_codec(codec); }
};
struct ImageDeleter {
    void operator()(opj_image_t *image) const { opj_image_destroy(image); }
};

// The first of the library's messages, in one line.
void keep_first(const char *text, void *data) {
    auto *kept = static_cast<std::string *>(data);
    if (kept->empty())
        *kept = util_trim(text, " .\r\n");
}

// --- One decoding -------------------------------------------------------------------------------------------------

// One pass of the library over a file: it is opened, and then decodes one area.
class Decoding {
  public:
    // False when the file cannot be opened or its headers are refused; `message` then says why.
    bool open(const Jpeg2000Image &image, bool strict, unsigned threads);
    bool decode_component(size_t component);
    bool decode(const Jpeg2000Image &image, const Jpeg2000Component &component, const Jpeg2000Area &area);

    const opj_image_t *image() const { return image_.get(); }
    std::string message() const { return error_.empty() ? warning_ : error_; }

  private:
    std::string error_;
    std::string warning_;
    Source source_;
    std::unique_ptr<opj_stream_t, StreamDeleter> stream_;
    std::unique_ptr<opj_codec_t, CodecDeleter> codec_;
    std::unique_ptr<opj_image_t, ImageDeleter> image_;
};

bool Decoding::open(const Jpeg2000Image &image, bool strict, unsigned threads) {
    source_.file = util_open_regular(image.file_name.c_str());
    if (!source_.file) {
        error_ = "the file does not open";
        return false;
    }
    source_.start = image.start;
    source_.held = std::max<int64_t>(0, util_file_size(source_.file.get()) - image.start);
    source_.size = source_.held;
    if (!strict) {
        source_.held = std::min(source_.held, image.tile_parts_end - image.start);
        source_.size = source_.held + 2;
        source_.cut_length_at = image.cut_tile_part >= 0 ? image.cut_tile_part - image.start + 6 : -1;
    }
    stream_.reset(opj_stream_create(stream_buffer, OPJ_TRUE));
    codec_.reset(opj_create_decompress(image.in_boxes ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
    if (!stream_ || !codec_) {
        error_ = "there is not enough memory";
        return false;
    }
    opj_stream_set_user_data(stream_.get(), &source_, nullptr);
    opj_stream_set_user_data_length(stream_.get(), static_cast<OPJ_UINT64>(source_.size));
    opj_stream_set_read_function(stream_.get(), read_source);
    opj_stream_set_skip_function(stream_.get(), skip_source);
    opj_stream_set_seek_function(stream_.get(), seek_source);
    opj_set_error_handler(codec_.get(), keep_first, &error_);
    opj_set_warning_handler(codec_.get(), keep_first, &warning_);
    opj_set_info_handler(codec_.get(), nullptr, nullptr);

    // Components as they are coded, not as a palette or colour space would show them.
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    parameters.flags |= OPJ_DPARAMETERS_IGNORE_PCLR_CMAP_CDEF_FLAG;
    opj_image_t *header = nullptr;
    const bool opened = opj_setup_decoder(codec_.get(), &parameters) &&
                        opj_decoder_set_strict_mode(codec_.get(), strict ? OPJ_TRUE : OPJ_FALSE) &&
                        (threads < 2 || opj_codec_set_threads(codec_.get(), static_cast<int>(threads))) &&
                        opj_read_header(stream_.get(), codec_.get(), &header);
    image_.reset(header);
    if (opened && image_ && image_->numcomps == image.components.size())
        return true;
    keep_first("its headers are damaged", &error_);
    return false;
}

bool Decoding::decode_component(size_t component) {
    auto index = static_cast<OPJ_UINT32>(component);
    return opj_set_decoded_components(codec_.get(), 1, &index, OPJ_FALSE);
}

bool Decoding::decode(const Jpeg2000Image &image, const Jpeg2000Component &component, const Jpeg2000Area &area) {
    const bool is_whole = area == Jpeg2000Area{0, component.lines, 0, component.line_samples};
    if (!is_whole) {
        const int64_t left = (component.first_x + area.sample) * component.step_x;
        const int64_t top = (component.first_y + area.line) * component.step_y;
        const int64_t right = std::min(image.x1, left + area.samples * component.step_x);
        const int64_t bottom = std::min(image.y1, top + area.lines * component.step_y);
        if (!opj_set_decode_area(codec_.get(), image_.get(), static_cast<OPJ_INT32>(left), static_cast<OPJ_INT32>(top),
                                 static_cast<OPJ_INT32>(right), static_cast<OPJ_INT32>(bottom)))
            return false;
    }
    return opj_decode(codec_.get(), stream_.get(), image_.get());
}

template <typename T>
void narrow(const OPJ_INT32 *from, int64_t from_width, const Jpeg2000Area &area, uint8_t *out, int64_t out_width) {
    for (int64_t line = 0; line < area.lines; ++line) {
        const OPJ_INT32 *row = from + line * from_width;
        uint8_t *to = out + line * out_width * static_cast<int64_t>(sizeof(T));
        for (int64_t i = 0; i < area.samples; ++i) {
            const auto value = static_cast<T>(row[i]);
            memcpy(to + i * static_cast<int64_t>(sizeof(T)), &value, sizeof value);
        }
    }
}

// Lines of `out` are `out_width` samples apart. False when the library did not give what was asked for.
bool take_samples(const opj_image_comp_t &from, const Jpeg2000Component &component, const Jpeg2000Area &area,
                  uint8_t *out, int64_t out_width) {
    if (!from.data || from.w != area.samples || from.h != area.lines || from.factor != 0)
        return false;
    switch (component.sample_bytes()) {
        case 1:
            narrow<uint8_t>(from.data, from.w, area, out, out_width);
            break;
        case 2:
            narrow<uint16_t>(from.data, from.w, area, out, out_width);
            break;
        default:
            narrow<uint32_t>(from.data, from.w, area, out, out_width);
    }
    return true;
}

// --- Components that were decoded along ---------------------------------------------------------------------------

// Where components can only be decoded together, whoever reads one will mostly read the others next: they are kept
// until each was taken, or another decoding takes their place.
struct Kept {
    std::string file_name;
    int64_t start = 0;
    struct stat status = {};
    Jpeg2000Area area;
    std::string damage;
    std::vector<std::vector<uint8_t>> planes;
};
Kept kept;

bool same_file(const struct stat &a, const struct stat &b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec;
}

bool take_kept(const Jpeg2000Image &image, size_t component, const Jpeg2000Area &area, uint8_t *out,
               std::string *damage) {
    struct stat status;
    if (component >= kept.planes.size() || kept.planes[component].empty() || kept.file_name != image.file_name ||
        kept.start != image.start || !(kept.area == area) || stat(image.file_name.c_str(), &status) != 0 ||
        !same_file(status, kept.status))
        return false;
    std::vector<uint8_t> plane = std::move(kept.planes[component]);
    kept.planes[component].clear();
    memcpy(out, plane.data(), plane.size());
    *damage = kept.damage;
    return true;
}

void keep_others(const Jpeg2000Image &image, size_t component, const Jpeg2000Area &area, const opj_image_t &decoded,
                 const std::string &damage) {
    kept = {};
    size_t bytes = 0;
    for (const Jpeg2000Component &other : image.components)
        bytes += static_cast<size_t>(area.lines * area.samples * other.sample_bytes());
    if (bytes > most_kept_bytes || stat(image.file_name.c_str(), &kept.status) != 0)
        return;
    const Jpeg2000Component &taken = image.components[component];
    kept.planes.resize(image.components.size());
    for (size_t i = 0; i < image.components.size(); ++i) {
        const Jpeg2000Component &other = image.components[i];
        if (i == component || other.step_x != taken.step_x || other.step_y != taken.step_y)
            continue;
        kept.planes[i].resize(static_cast<size_t>(area.lines * area.samples * other.sample_bytes()));
        if (!take_samples(decoded.comps[i], other, area, kept.planes[i].data(), area.samples))
            kept.planes[i].clear();
    }
    kept.file_name = image.file_name;
    kept.start = image.start;
    kept.area = area;
    kept.damage = damage;
}

// --- Areas --------------------------------------------------------------------------------------------------------

enum class Tiles { All, Some, None };

// How many of the tiles that an area touches begin in the file.
Tiles tiles_there(const Jpeg2000Image &image, const Jpeg2000Component &component, const Jpeg2000Area &area) {
    const auto first = [](int64_t first_of_all, int64_t at, int64_t step, int64_t origin, int64_t tile) {
        return (std::max((first_of_all + at) * step, origin) - origin) / tile;
    };
    const int64_t left = first(component.first_x, area.sample, component.step_x, image.tile_x0, image.tile_width);
    const int64_t top = first(component.first_y, area.line, component.step_y, image.tile_y0, image.tile_height);
    const int64_t right = std::min(image.tiles_across - 1, first(component.first_x, area.sample + area.samples - 1,
                                                                 component.step_x, image.tile_x0, image.tile_width));
    const int64_t bottom = std::min(image.tiles_down - 1, first(component.first_y, area.line + area.lines - 1,
                                                                component.step_y, image.tile_y0, image.tile_height));
    bool some = false;
    bool all = true;
    for (int64_t down = top; down <= bottom; ++down)
        for (int64_t across = left; across <= right; ++across) {
            const bool is_there = image.tile_is_there[static_cast<size_t>(down * image.tiles_across + across)];
            some = some || is_there;
            all = all && is_there;
        }
    return all ? Tiles::All : some ? Tiles::Some : Tiles::None;
}

unsigned threads_for(const Jpeg2000Area &area) {
    if (area.lines * area.samples < samples_worth_threads)
        return 1;
    return std::clamp(std::thread::hardware_concurrency(), 1U, most_threads);
}

// Decodes what the library can hold at once, of the area `whole` whose first sample goes to `out`.
std::string decode_piece(const Jpeg2000Image &image, size_t component, const Jpeg2000Area &whole,
                         const Jpeg2000Area &area, uint8_t *out, std::string *damage) {
    const Jpeg2000Component &wanted = image.components[component];
    const Tiles there = tiles_there(image, wanted, area);
    if (there == Tiles::None) {
        const auto &tiles = image.tile_is_there;
        if (std::find(tiles.begin(), tiles.end(), true) == tiles.end())
            return "the file ends before its first tile";
        *damage = missing_tiles;
        return "";
    }
    uint8_t *at = out + ((area.line - whole.line) * whole.samples + area.sample - whole.sample) * wanted.sample_bytes();
    const bool together = image.joins_components && component < 3;
    std::string first_failure;
    for (const bool strict : {true, false}) {
        Decoding decoding;
        if (decoding.open(image, strict, threads_for(area)) && (together || decoding.decode_component(component)) &&
            decoding.decode(image, wanted, area) &&
            take_samples(decoding.image()->comps[together ? component : 0], wanted, area, at, whole.samples)) {
            if (!strict)
                *damage = first_failure;
            else if (there == Tiles::Some)
                *damage = missing_tiles;
            if (together && area == whole)
                keep_others(image, component, area, *decoding.image(), *damage);
            return "";
        }
        if (strict)
            first_failure = decoding.message();
    }
    return first_failure.empty() ? "its code data are damaged" : first_failure;
}

}  // namespace

std::string jpeg2000_library_version() {
    return std::string("OpenJPEG ") + opj_version();
}

std::string open_jpeg2000(const std::string &file_name, int64_t start, Jpeg2000Image *image) {
    *image = {};
    const FilePtr file = util_open_regular(file_name.c_str());
    if (!file)
        return "the file does not open";
    image->file_name = file_name;
    image->start = start;
    image->file_size = util_file_size(file.get());
    std::string fault = scan_jpeg2000(file.get(), image);
    if (!fault.empty())
        return fault;
    Decoding decoding;
    return decoding.open(*image, true, 1) ? "" : decoding.message();
}

std::string decode_jpeg2000(const Jpeg2000Image &image, size_t component, const Jpeg2000Area &area, uint8_t *out,
                            std::string *damage) {
    damage->clear();
    const Jpeg2000Component &wanted = image.components[component];
    if (take_kept(image, component, area, out, damage))
        return "";
    const bool together = image.joins_components && component < 3;
    const int64_t most = most_samples_at_once / static_cast<int64_t>(together ? image.components.size() : 1);
    const int64_t width = std::clamp<int64_t>(most, 1, area.samples);
    int64_t height = std::clamp<int64_t>(most / width, 1, area.lines);
    // Pieces that end with a row of tiles, so that no tile is decoded twice.
    const int64_t tile_lines = image.tile_height / wanted.step_y;
    if (height < area.lines && tile_lines > 0 && height > tile_lines)
        height -= height % tile_lines;
    for (int64_t line = 0; line < area.lines; line += height)
        for (int64_t sample = 0; sample < area.samples; sample += width) {
            const Jpeg2000Area piece = {area.line + line, std::min(height, area.lines - line), area.sample + sample,
                                        std::min(width, area.samples - sample)};
            std::string found;
            std::string fault = decode_piece(image, component, area, piece, out, &found);
            if (!fault.empty())
                return fault;
            if (damage->empty())
                *damage = found;
        }
    return "";
}
