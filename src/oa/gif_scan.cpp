// The label tree of a GIF file.
#include "base/text.h"
#include "oa/gif.h"
#include "oa/made_label.h"

#include <string>
#include <string_view>

namespace {

constexpr const char *routine = "OalCreateODLTreeFromGif";
constexpr int64_t most_images = 16384;     // a tree takes far more memory than the smallest images in their file
constexpr int most_stray_bytes_told = 16;  // a damaged file may hold millions

constexpr uint8_t has_colour_table = 0x80;
constexpr uint8_t is_interlaced = 0x40;

int64_t low_first(const uint8_t *bytes) {
    return bytes[0] | bytes[1] << 8;
}

int64_t colours_of(uint8_t flags) {
    return int64_t{2} << (flags & 7);
}

void OalGifAddTableObj(ObjDesc *root, const std::string &name, int64_t byte, int64_t colours) {
    ObjDesc *table = OalAddPointedObject(root, name, byte);
    OalAddKeyword(table, "ROWS", colours);
    OalAddKeyword(table, "COLUMNS", "3");
    OalAddKeyword(table, "ROW_BYTES", "3");
    OalAddKeyword(table, "INTERCHANGE_FORMAT", "BINARY");
    int start = 1;
    for (const char *colour : {"RED", "GREEN", "BLUE"}) {
        ObjDesc *column = OalAddObject(table, "COLUMN");
        OalAddKeyword(column, "NAME", colour);
        OalAddKeyword(column, "START_BYTE", start++);
        OalAddKeyword(column, "DATA_TYPE", "UNSIGNED_INTEGER");
        OalAddKeyword(column, "BYTES", "1");
    }
}

void OalGifAddImageObj(ObjDesc *root, const std::string &name, int64_t byte, int64_t lines, int64_t line_samples,
                       bool interlaced) {
    ObjDesc *image = OalAddPointedObject(root, name, byte);
    OalAddKeyword(image, "LINES", lines);
    OalAddKeyword(image, "LINE_SAMPLES", line_samples);
    OalAddKeyword(image, "SAMPLE_BITS", "8");
    OalAddKeyword(image, "SAMPLE_TYPE", "UNSIGNED_INTEGER");
    OalAddKeyword(image, "ENCODING_TYPE", "GIF");
    if (interlaced)
        OalAddKeyword(image, "INTERLACE", "1");
}

// One pass over a file. Steps return false after reporting what ends the scan.
class GifScan {
  public:
    GifScan(FILE *file, const char *file_name) : file_(file), root_(OalNewMadeLabel(file_name)) {}

    bool read_header();
    bool read_blocks();
    ObjDesc *take_root() { return root_.release(); }

  private:
    void read_colour_table(const std::string &name, int64_t colours);
    bool read_extension();
    bool read_image();
    void tell_stray(int byte);

    GifFile file_;
    OdlTree root_;
    int64_t images_ = 0;
    int64_t local_tables_ = 0;
    int stray_bytes_ = 0;
};

// The table of the given name, whose first entry comes next.
void GifScan::read_colour_table(const std::string &name, int64_t colours) {
    OalGifAddTableObj(root_.get(), name, file_.position() + 1, colours);
    uint8_t entries[256 * 3];
    if (!file_.read(entries, static_cast<size_t>(colours) * 3))
        OalGifError("OalGifReadColorMap", "bad colormap");
}

bool GifScan::read_header() {
    uint8_t magic[6];
    if (!file_.read(magic, sizeof magic)) {
        OalGifError(routine, "error reading magic number");
        return false;
    }
    const std::string_view text(reinterpret_cast<const char *>(magic), sizeof magic);
    if (!text.starts_with("GIF")) {
        OalGifError(routine, "not a GIF file");
        return false;
    }
    if (!text.ends_with("87a") && !text.ends_with("89a"))
        OalGifError(routine, "bad version number, not '87a' or '89a'");
    uint8_t screen[7];  // width, height, flags, background colour, aspect ratio
    if (!file_.read(screen, sizeof screen)) {
        OalGifError(routine, "failed to read screen descriptor");
        return false;
    }
    if (screen[4] & has_colour_table)
        read_colour_table("GLOBAL_COLOR_TABLE", colours_of(screen[4]));
    if (screen[6] != 0 && screen[6] != 49)
        OalGifMsg(routine, "warning - non-square pixels");
    return true;
}

bool GifScan::read_blocks() {
    for (;;) {
        uint8_t introducer = 0;
        if (!file_.read(&introducer, 1)) {
            OalGifError(routine, "EOF or read error on image data");
            return false;
        }
        switch (introducer) {
            case ';':
                return true;
            case '!':
                if (!read_extension())
                    return false;
                break;
            case ',':
                if (!read_image())
                    return false;
                break;
            default:
                tell_stray(introducer);
        }
    }
}

bool GifScan::read_extension() {
    uint8_t label = 0;
    if (!file_.read(&label, 1)) {
        OalGifError(routine, "EOF or read error on extension function code");
        return false;
    }
    constexpr std::string_view known = "\xF9\xFE\x01\xFF";  // graphic control, comment, plain text, application
    if (known.find(static_cast<char>(label)) == known.npos)
        OalGifMsg("OalGifDoExtension", util_format("UNKNOWN (0x%02x)", label).c_str());
    file_.skip_blocks();
    return true;
}

bool GifScan::read_image() {
    uint8_t descriptor[9];  // left, top, width, height, flags
    if (!file_.read(descriptor, sizeof descriptor)) {
        OalGifError(routine, "couldn't read left/top/width/height");
        return false;
    }
    if (++images_ > most_images) {
        OalGifError(routine, util_format("more than %d images", static_cast<int>(most_images)).c_str());
        return false;
    }
    const uint8_t flags = descriptor[8];
    if (flags & has_colour_table)
        read_colour_table(++local_tables_ == 1 ? "LOCAL_1_COLOR_TABLE" : "LOCAL_COLOR_TABLE", colours_of(flags));
    const std::string name = images_ == 1 ? "GIF_IMAGE" : util_format("GIF_%-d_IMAGE", static_cast<int>(images_));
    OalGifAddImageObj(root_.get(), name, file_.position() + 1, low_first(descriptor + 6), low_first(descriptor + 4),
                      (flags & is_interlaced) != 0);
    uint8_t code_size = 0;
    if (file_.read(&code_size, 1))
        file_.skip_blocks();
    else
        OalGifError("OalGifReadImage", "EOF or read error on image data");
    return true;
}

void GifScan::tell_stray(int byte) {
    if (++stray_bytes_ <= most_stray_bytes_told)
        OalGifMsg(routine, util_format("bogus character 0x%02x, ignoring", byte).c_str());
}

}  // namespace

ObjDesc *OalCreateODLTreeFromGif(FILE *file, const char *file_name) {
    GifScan scan(file, file_name);
    return scan.read_header() && scan.read_blocks() ? scan.take_root() : nullptr;
}
