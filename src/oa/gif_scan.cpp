// The label tree of a GIF file.
#include "base/text.h"
#include "oa/gif.h"

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

void add_keyword(ObjDesc *node, const char *name, const char *value) {
    OdlPasteKwd(OdlNewKwd(name, value, nullptr, nullptr, node->file_name, 0), node);
}

void add_keyword(ObjDesc *node, const char *name, int64_t value) {
    add_keyword(node, name, std::to_string(value).c_str());
}

ObjDesc *add_object(ObjDesc *parent, const char *class_name) {
    ObjDesc *object = OdlNewObjDesc(class_name, nullptr, nullptr, nullptr, nullptr, parent->file_name, 0, 0);
    ++parent->child_count;
    return OdlPasteObjDesc(object, parent);
}

// A pointer's file name loses quotes and its last blanks; a file of such a name is pointed into as the label's own.
bool can_be_quoted(std::string_view name) {
    return name.find_first_of("\"'") == name.npos && !name.ends_with(' ');
}

// An object and the pointer to its data, at `byte` from 1.
ObjDesc *add_pointed_object(ObjDesc *root, const std::string &name, int64_t byte) {
    const auto at = static_cast<long long>(byte);
    const std::string place = can_be_quoted(root->file_name) ? util_format("(\"%s\",%-lld<BYTES>)", root->file_name, at)
                                                             : util_format("%-lld<BYTES>", at);
    add_keyword(root, util_format("^%s", util_upper(name).c_str()).c_str(), place.c_str());
    return add_object(root, name.c_str());
}

void OalGifAddTableObj(ObjDesc *root, const std::string &name, int64_t byte, int64_t colours) {
    ObjDesc *table = add_pointed_object(root, name, byte);
    add_keyword(table, "ROWS", colours);
    add_keyword(table, "COLUMNS", "3");
    add_keyword(table, "ROW_BYTES", "3");
    add_keyword(table, "INTERCHANGE_FORMAT", "BINARY");
    int start = 1;
    for (const char *colour : {"RED", "GREEN", "BLUE"}) {
        ObjDesc *column = add_object(table, "COLUMN");
        add_keyword(column, "NAME", colour);
        add_keyword(column, "START_BYTE", start++);
        add_keyword(column, "DATA_TYPE", "UNSIGNED_INTEGER");
        add_keyword(column, "BYTES", "1");
    }
}

void OalGifAddImageObj(ObjDesc *root, const std::string &name, int64_t byte, int64_t lines, int64_t line_samples,
                       bool interlaced) {
    ObjDesc *image = add_pointed_object(root, name, byte);
    add_keyword(image, "LINES", lines);
    add_keyword(image, "LINE_SAMPLES", line_samples);
    add_keyword(image, "SAMPLE_BITS", "8");
    add_keyword(image, "SAMPLE_TYPE", "UNSIGNED_INTEGER");
    add_keyword(image, "ENCODING_TYPE", "GIF");
    if (interlaced)
        add_keyword(image, "INTERLACE", "1");
}

// One pass over a file. Steps return false after reporting what ends the scan.
class GifScan {
  public:
    GifScan(FILE *file, const char *file_name)
        : file_(file),
          root_(OdlNewObjDesc("ROOT", nullptr, nullptr, nullptr, nullptr, file_name ? file_name : "", 0, 0)) {
        add_keyword(root_.get(), "KRV_VERSION_ID", "KRV3");
        add_keyword(root_.get(), "RECORD_TYPE", "UNDEFINED");
    }

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
