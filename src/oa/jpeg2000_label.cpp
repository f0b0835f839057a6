// JPEG 2000 files and labels: the label tree of a file, and the file that a label means.
#include "base/file.h"
#include "base/text.h"
#include "oa/jpeg2000.h"
#include "oa/made_label.h"
#include "oa/signatures.h"

#include <algorithm>
#include <bit>

namespace {

// Without what writers put between the words.
std::string plain_name(std::string_view text) {
    std::string name = util_upper(text);
    std::erase_if(name, [](char c) { return c == ' ' || c == '-' || c == '_' || c == '"' || c == '\''; });
    return name;
}

std::string value_of(const ObjDesc *node, const char *keyword) {
    const char *text = nullptr;
    return OaKwdValuetoStr(keyword, node, &text) == 0 && text ? std::string(util_trim(text, " \"'")) : "";
}

bool is_jpeg2000_encoding(const std::string &text) {
    const std::string name = plain_name(text);
    return util_contains(name, "JP2") || util_contains(name, "JPX") || util_contains(name, "JPEG2000");
}

bool is_file_like(const ObjDesc *node) {
    return !node->parent || (node->class_name && util_upper(node->class_name).ends_with("FILE"));
}

bool holds_jpeg2000(const std::string &path, int64_t start) {
    const FilePtr file = util_open_regular(path.c_str());
    char bytes[longest_signature];
    return file && start >= 0 && is_jpeg2000({bytes, read_at(file.get(), start, bytes, sizeof bytes)});
}

// The existing file that a file object names, when it is a JPEG 2000 file or said to be one.
bool names_jpeg2000(const ObjDesc *node, std::string *path) {
    const std::string name = value_of(node, "FILE_NAME");
    if (name.empty() || !is_file_like(node))
        return false;
    const OaPtr<char> found(OdlGetFileSpec(name.c_str(), node->file_name, nullptr));
    if (!found || (!is_jpeg2000_encoding(value_of(node, "ENCODING_TYPE")) && !holds_jpeg2000(found.get(), 0)))
        return false;
    *path = found.get();
    return true;
}

// The encoding that an image's label tells, in it or, failing that, of the file around it.
std::string encoding_of(const ObjDesc *image_node) {
    std::string encoding = value_of(image_node, "ENCODING_TYPE");
    for (const ObjDesc *around = image_node->parent; around && encoding.empty(); around = around->parent)
        if (is_file_like(around))
            encoding = value_of(around, "ENCODING_TYPE");
    return encoding;
}

// At the image's start or the file's; the first is no byte where records have lengths of their own.
bool starts_with_jpeg2000(const OaFileKeywords &file, int64_t *start) {
    *start = file.record_type == OA_VARIABLE_LENGTH ? 0 : file.start;
    if (holds_jpeg2000(file.file_name, *start))
        return true;
    *start = 0;
    return file.start != 0 && holds_jpeg2000(file.file_name, 0);
}

}  // namespace

bool OalFindJpeg2000File(const ObjDesc *node, std::string_view uncompressed_name, std::string *path) {
    if (OaGetObjectClass(node) != OA_IMAGE)
        return false;
    std::string other;
    for (const ObjDesc *around = node->parent; around; around = around->parent) {
        std::string found;
        if (names_jpeg2000(around, &found)) {
            *path = found;
            return true;
        }
        for (const ObjDesc *beside = around->first_child; beside; beside = beside->right_sibling) {
            if (!names_jpeg2000(beside, &found))
                continue;
            if (plain_name(value_of(beside, "UNCOMPRESSED_FILE_NAME")) == plain_name(uncompressed_name)) {
                *path = found;
                return true;
            }
            if (other.empty())
                other = found;
        }
    }
    *path = other;
    return !other.empty();
}

bool OaIsJpeg2000Image(const ObjDesc *image_node) {
    if (!image_node || OaGetObjectClass(image_node) != OA_IMAGE)
        return false;
    if (is_jpeg2000_encoding(encoding_of(image_node)))
        return true;
    OaFileKeywords file;
    std::string fault;
    int64_t start = 0;
    return OalFindData(image_node, &file, &fault) == 0 &&
           (file.stands_for_uncompressed || starts_with_jpeg2000(file, &start));
}

int64_t OaJpeg2000Bands(const ObjDesc *image_node) {
    OaFileKeywords file;
    std::string fault;
    int64_t start = 0;
    Jpeg2000Image image;
    const bool opens = OaIsJpeg2000Image(image_node) && OalFindData(image_node, &file, &fault) == 0 &&
                       starts_with_jpeg2000(file, &start) && open_jpeg2000(file.file_name, start, &image).empty();
    return opens ? static_cast<int64_t>(image.components.size()) : 0;
}

ObjDesc *OalCreateODLTreeFromJpeg2000(const char *file_name) {
    Jpeg2000Image image;
    const std::string fault = open_jpeg2000(file_name, 0, &image);
    if (!fault.empty()) {
        OaReportFailure(700, "%s: %s is a JPEG 2000 file that cannot be read: %s.", __func__, file_name, fault.c_str());
        return nullptr;
    }
    int64_t bytes = 1;
    int bits = 0;
    bool any_signed = false;
    for (const Jpeg2000Component &component : image.components) {
        bytes = std::max(bytes, component.sample_bytes());
        bits = std::max(bits, component.bits);
        any_signed = any_signed || component.is_signed;
    }
    OdlTree root(OalNewMadeLabel(file_name));
    ObjDesc *node = OalAddPointedObject(root.get(), "IMAGE", 1);
    OalAddKeyword(node, "LINES", image.lines());
    OalAddKeyword(node, "LINE_SAMPLES", image.line_samples());
    OalAddKeyword(node, "SAMPLE_BITS", 8 * bytes);
    OalAddKeyword(node, "SAMPLE_TYPE", OalJpeg2000SampleType(bytes, any_signed).c_str());
    if (bits < 8 * bytes && !any_signed)
        OalAddKeyword(node, "SAMPLE_BIT_MASK",
                      util_format("2#%s#", std::string(static_cast<size_t>(bits), '1').c_str()).c_str());
    OalAddKeyword(node, "BANDS", static_cast<int64_t>(image.components.size()));
    OalAddKeyword(node, "BAND_STORAGE_TYPE", "BAND_SEQUENTIAL");
    OalAddKeyword(node, "ENCODING_TYPE", !image.in_boxes ? "JPEG2000" : image.is_jpx ? "JPX" : "JP2");
    return root.release();
}

std::string OalJpeg2000SampleType(int64_t sample_bytes, bool is_signed) {
    std::string type = is_signed ? "INTEGER" : "UNSIGNED_INTEGER";
    if (sample_bytes == 1)
        return type;
    return (std::endian::native == std::endian::little ? "LSB_" : "MSB_") + type;
}

int OaOpenJpeg2000(const ObjDesc *image_node, Jpeg2000Image *image) {
    OaFileKeywords file;
    if (OaGetFileKeywords(image_node, &file) != 0)
        return 1;
    int64_t start = 0;
    if (!starts_with_jpeg2000(file, &start)) {
        OaReportFailure(502, "%s: there are no JPEG 2000 data at byte %lld of %s.", __func__,
                        static_cast<long long>(file.start) + 1, file.file_name.c_str());
        return 1;
    }
    const std::string fault = open_jpeg2000(file.file_name, start, image);
    if (!fault.empty()) {
        OaReportFailure(700, "%s: the JPEG 2000 data of %s cannot be read: %s.", __func__, file.file_name.c_str(),
                        fault.c_str());
        return 1;
    }
    OalTellLabelDifference(image_node, *image);
    return 0;
}
