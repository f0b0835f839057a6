// What boxes and markers of a JPEG 2000 file say of its image, and whether decoding it stays within bounds.
#include "base/text.h"
#include "decoders/jpeg2000.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unistd.h>

namespace {

constexpr int most_boxes = 10000;
constexpr int most_markers = 100000;     // of the main header
constexpr int most_tile_parts = 200000;  // beyond, what the headers of tiles say is not looked for
constexpr int64_t most_tiles = 65535;
constexpr int64_t most_components = 16384;
constexpr int most_bits = 31;  // of the library; the standard knows 38
constexpr int64_t smallest_tile_part = 14;

// A blank image takes hardly more bytes than its headers, so that its size is no reason to refuse it; what the library
// needs for its tiles and code-blocks is, when a small file asks for much.
constexpr int64_t most_samples_a_byte = int64_t{1} << 20;
constexpr double memory_without_data = 256.0 * (1 << 20);
constexpr double most_memory_a_byte = 1024;
constexpr double most_memory = 4096.0 * (1 << 20);
constexpr double tile_memory = 6144;  // what the library holds for each tile, tile component, precinct of a band, block
constexpr double tile_component_memory = 1200;
constexpr double precinct_memory = 512;
constexpr double block_memory = 256;

enum Marker : uint16_t {
    SOC = 0xFF4F,
    SIZ = 0xFF51,
    COD = 0xFF52,
    COC = 0xFF53,
    SOT = 0xFF90,
    SOD = 0xFF93,
};

// Numbers in files have their high byte first.
uint64_t number(const uint8_t *bytes, int count) {
    uint64_t value = 0;
    for (int i = 0; i < count; ++i)
        value = value << 8 | bytes[i];
    return value;
}

int64_t steps_up_to(int64_t end, int64_t step) {
    return (end + step - 1) / step;
}

// How components are cut into precincts and code-blocks.
struct CodingStyle {
    int levels = 0;
    int block_width = 6;  // exponents of 2, as are those of precincts, the smallest resolution first
    int block_height = 6;
    int precinct_width[33] = {};
    int precinct_height[33] = {};
};

// Memory for the precincts and code-blocks of one component of a tile.
double memory_of(const CodingStyle &style, int64_t width, int64_t height) {
    double memory = 0;
    for (int resolution = 0; resolution <= style.levels; ++resolution) {
        const int shift = std::min(style.levels - resolution, 62);
        const bool is_lowest = resolution == 0;
        const auto parts = [&](int64_t extent, int precinct, int block, double *blocks) {
            const double part = static_cast<double>(extent >> shift) + 2;
            const int band_precinct = is_lowest ? precinct : std::max(precinct - 1, 0);
            const double precincts = part / static_cast<double>(int64_t{1} << precinct) + 2;
            *blocks = (is_lowest ? part : part / 2) / static_cast<double>(int64_t{1} << std::min(block, band_precinct));
            *blocks += 2;
            return precincts;
        };
        double blocks_across = 0;
        double blocks_down = 0;
        const double precincts = parts(width, style.precinct_width[resolution], style.block_width, &blocks_across) *
                                 parts(height, style.precinct_height[resolution], style.block_height, &blocks_down);
        const int bands = is_lowest ? 1 : 3;
        memory += bands * (precincts * precinct_memory + blocks_across * blocks_down * block_memory);
    }
    return memory;
}

class Scan {
  public:
    Scan(FILE *file, Jpeg2000Image *image) : file_(file), image_(image) {}

    std::string run();

  private:
    std::string find_codestream(int64_t *position) const;
    std::string read_size(int64_t position, int64_t length);
    std::string read_components(const uint8_t *bytes);
    std::string read_tiles();
    std::string read_main_header(int64_t position);
    void read_style(int marker, int64_t position, int64_t length);
    void read_tile_header(int64_t position, int64_t end);
    void read_tile_parts();
    std::string check_bounds() const;
    bool read(int64_t position, void *bytes, size_t count) const {
        return read_at(file_, position, bytes, count) == count;
    }

    FILE *file_;
    Jpeg2000Image *image_;
    int64_t tile_parts_ = 0;  // where they begin
    std::vector<CodingStyle> styles_;
};

std::string Scan::find_codestream(int64_t *position) const {
    *position = image_->start;
    if (!image_->in_boxes)
        return "";
    for (int i = 0; i < most_boxes; ++i) {
        uint8_t head[16];
        if (!read(*position, head, 8))
            break;
        auto size = static_cast<int64_t>(number(head, 4));
        int64_t head_size = 8;
        if (size == 1) {
            if (!read(*position + 8, head + 8, 8))
                break;
            head_size = 16;
            size = static_cast<int64_t>(number(head + 8, 8));
        }
        if (memcmp(head + 4, "jp2c", 4) == 0) {
            *position += head_size;
            return "";
        }
        if (size < head_size || size > image_->file_size - *position)
            break;
        *position += size;
    }
    return "there is no codestream in its boxes";
}

std::string Scan::read_components(const uint8_t *bytes) {
    for (Jpeg2000Component &component : image_->components) {
        component.bits = (bytes[0] & 0x7F) + 1;
        component.is_signed = (bytes[0] & 0x80) != 0;
        component.step_x = bytes[1];
        component.step_y = bytes[2];
        bytes += 3;
        if (component.bits > most_bits)
            return util_format("samples of %d bits are not supported; the most are %d", component.bits, most_bits);
        if (component.step_x < 1 || component.step_y < 1)
            return "a component has no samples";
        component.first_x = steps_up_to(image_->x0, component.step_x);
        component.first_y = steps_up_to(image_->y0, component.step_y);
        component.line_samples = steps_up_to(image_->x1, component.step_x) - component.first_x;
        component.lines = steps_up_to(image_->y1, component.step_y) - component.first_y;
        if (component.line_samples < 1 || component.lines < 1)
            return "a component has no samples";
    }
    return "";
}

std::string Scan::read_tiles() {
    Jpeg2000Image &image = *image_;
    if (image.tile_width < 1 || image.tile_height < 1 || image.tile_x0 > image.x0 || image.tile_y0 > image.y0 ||
        image.tile_x0 + image.tile_width <= image.x0 || image.tile_y0 + image.tile_height <= image.y0)
        return "its tiles do not cover it";
    image.tiles_across = steps_up_to(image.x1 - image.tile_x0, image.tile_width);
    image.tiles_down = steps_up_to(image.y1 - image.tile_y0, image.tile_height);
    int64_t tiles = 0;
    if (__builtin_mul_overflow(image.tiles_across, image.tiles_down, &tiles) || tiles > most_tiles)
        return util_format("it has more than %lld tiles", static_cast<long long>(most_tiles));
    if (tiles > 1 && tiles > image.file_size / smallest_tile_part)
        return util_format("%lld tiles are more than the file can hold", static_cast<long long>(tiles));
    image.tile_is_there.resize(static_cast<size_t>(tiles));
    return "";
}

std::string Scan::read_size(int64_t position, int64_t length) {
    constexpr int64_t fixed_length = 36;  // behind the marker's length
    std::vector<uint8_t> bytes(static_cast<size_t>(length));
    if (!read(position, bytes.data(), bytes.size()) || length < fixed_length)
        return "its size marker is cut";
    int64_t numbers[8];
    for (int i = 0; i < 8; ++i)
        numbers[i] = static_cast<int64_t>(number(bytes.data() + 2 + 4 * i, 4));
    Jpeg2000Image &image = *image_;
    image.x1 = numbers[0];
    image.y1 = numbers[1];
    image.x0 = numbers[2];
    image.y0 = numbers[3];
    image.tile_width = numbers[4];
    image.tile_height = numbers[5];
    image.tile_x0 = numbers[6];
    image.tile_y0 = numbers[7];
    const auto components = static_cast<int64_t>(number(bytes.data() + 34, 2));
    if (image.x1 > INT32_MAX || image.y1 > INT32_MAX || image.x0 >= image.x1 || image.y0 >= image.y1)
        return util_format("%lld to %lld by %lld to %lld is no size that can be decoded",
                           static_cast<long long>(image.x0), static_cast<long long>(image.x1),
                           static_cast<long long>(image.y0), static_cast<long long>(image.y1));
    if (components < 1 || components > most_components || length != fixed_length + 3 * components)
        return "its number of components and its size marker do not agree";
    image.components.resize(static_cast<size_t>(components));
    std::string fault = read_components(bytes.data() + fixed_length);
    return fault.empty() ? read_tiles() : fault;
}

// COD begins with its style, the progression, layers and the joining of components; COC with its component.
void Scan::read_style(int marker, int64_t position, int64_t length) {
    uint8_t bytes[64] = {};
    const auto size = static_cast<size_t>(std::min<int64_t>(length, sizeof bytes));
    if (!read(position, bytes, size))
        return;
    const size_t component_bytes = image_->components.size() < 257 ? 1 : 2;
    const uint8_t *at = marker == COD ? bytes + 5 : bytes + component_bytes + 1;
    const bool has_precincts = (marker == COD ? bytes[0] : bytes[component_bytes]) & 1;
    if (marker == COD && bytes[4] != 0)
        image_->joins_components = true;
    CodingStyle style;
    style.levels = std::min<int>(at[0], 32);
    style.block_width = std::min((at[1] & 15) + 2, 10);
    style.block_height = std::min((at[2] & 15) + 2, 10);
    for (int i = 0; i <= style.levels; ++i) {
        const uint8_t exponents = has_precincts ? at[5 + i] : 0xFF;
        style.precinct_width[i] = exponents & 15;
        style.precinct_height[i] = exponents >> 4;
    }
    const auto is_same = [&](const CodingStyle &other) { return memcmp(&style, &other, sizeof style) == 0; };
    if (std::none_of(styles_.begin(), styles_.end(), is_same) && styles_.size() < 1000)
        styles_.push_back(style);
}

std::string Scan::read_main_header(int64_t position) {
    uint8_t bytes[4];
    if (!read(position, bytes, 2) || number(bytes, 2) != SOC)
        return "there is no codestream";
    position += 2;
    for (int i = 0; i < most_markers; ++i) {
        if (!read(position, bytes, 4))
            return "its header is cut";
        const auto marker = static_cast<int>(number(bytes, 2));
        const auto length = static_cast<int64_t>(number(bytes + 2, 2)) - 2;
        if ((marker == SIZ) != (i == 0) || marker < 0xFF00 || length < 0)
            return "its header is damaged";
        if (marker == SOT) {
            tile_parts_ = position;
            return "";
        }
        if (marker == SIZ) {
            std::string fault = read_size(position + 4, length);
            if (!fault.empty())
                return fault;
        } else if (marker == COD || marker == COC) {
            read_style(marker, position + 4, length);
        }
        position += 4 + length;
    }
    return "its header has no end";
}

// Tiles may have coding styles of their own.
void Scan::read_tile_header(int64_t position, int64_t end) {
    uint8_t bytes[4];
    while (position < end && read(position, bytes, 4)) {
        const auto marker = static_cast<int>(number(bytes, 2));
        const auto length = static_cast<int64_t>(number(bytes + 2, 2)) - 2;
        if (marker < 0xFF00 || marker == SOD || length < 0)
            return;
        if (marker == COD || marker == COC)
            read_style(marker, position + 4, length);
        position += 4 + length;
    }
}

void Scan::read_tile_parts() {
    int64_t position = tile_parts_;
    for (int i = 0;; ++i) {
        image_->tile_parts_end = std::min(position, image_->file_size);
        uint8_t part[12];
        if (!read(position, part, sizeof part) || number(part, 2) != SOT)
            return;
        if (i == most_tile_parts) {
            image_->joins_components = image_->components.size() >= 3;
            image_->tile_is_there.assign(image_->tile_is_there.size(), true);
            image_->tile_parts_end = image_->file_size;
            return;
        }
        const auto index = static_cast<size_t>(number(part + 4, 2));
        const auto length = static_cast<int64_t>(number(part + 6, 4));
        const bool is_last = length < static_cast<int64_t>(sizeof part);  // 0: to the end of the file
        const int64_t end = is_last ? image_->file_size : position + length;
        if (end > image_->file_size)
            image_->cut_tile_part = position;
        if (index < image_->tile_is_there.size())
            image_->tile_is_there[index] = true;
        read_tile_header(position + static_cast<int64_t>(sizeof part), std::min(end, image_->file_size));
        position = end;
    }
}

std::string Scan::check_bounds() const {
    const Jpeg2000Image &image = *image_;
    const double bytes = static_cast<double>(image.file_size - image.start);
    if (static_cast<double>(image.lines()) * static_cast<double>(image.line_samples()) / most_samples_a_byte > bytes)
        return util_format("%lld lines of %lld samples are more than so few bytes can hold",
                           static_cast<long long>(image.lines()), static_cast<long long>(image.line_samples()));
    double blocks = 0;
    for (const CodingStyle &style : styles_) {
        double of_style = 0;
        for (const Jpeg2000Component &component : image.components)
            of_style += memory_of(style, std::min(component.line_samples, image.tile_width / component.step_x + 2),
                                  std::min(component.lines, image.tile_height / component.step_y + 2));
        blocks = std::max(blocks, of_style);
    }
    const auto components = static_cast<double>(image.components.size());
    const double tiles =
        static_cast<double>(image.tile_is_there.size()) * (tile_memory + components * tile_component_memory);
    if (tiles + blocks > std::min(memory_without_data + most_memory_a_byte * bytes, most_memory))
        return "its tiles and code-blocks are too many to be decoded";
    return "";
}

std::string Scan::run() {
    uint8_t head[24] = {};
    read_at(file_, image_->start, head, sizeof head);
    image_->in_boxes = memcmp(head, "\0\0\0\x0CjP  ", 8) == 0;
    image_->is_jpx = image_->in_boxes && memcmp(head + 16, "ftypjpx", 7) == 0;
    int64_t position = 0;
    std::string fault = find_codestream(&position);
    if (fault.empty())
        fault = read_main_header(position);
    if (!fault.empty())
        return fault;
    read_tile_parts();
    image_->joins_components = image_->joins_components && image_->components.size() >= 3;
    return check_bounds();
}

}  // namespace

size_t read_at(FILE *file, int64_t position, void *bytes, size_t count) {
    size_t done = 0;
    while (done < count) {
        const ssize_t got =
            pread(fileno(file), static_cast<char *>(bytes) + done, count - done, position + static_cast<int64_t>(done));
        if (got <= 0)
            break;
        done += static_cast<size_t>(got);
    }
    return done;
}

int64_t Jpeg2000Image::lines() const {
    int64_t most = 0;
    for (const Jpeg2000Component &component : components)
        most = std::max(most, component.lines);
    return most;
}

int64_t Jpeg2000Image::line_samples() const {
    int64_t most = 0;
    for (const Jpeg2000Component &component : components)
        most = std::max(most, component.line_samples);
    return most;
}

std::string scan_jpeg2000(FILE *file, Jpeg2000Image *image) {
    return Scan(file, image).run();
}
