// The input is an IMAGE object in label language, a zero byte, and the bytes of the data file. The image is read whole,
// and by rectangles and runs; both must agree.
#include "base/notice.h"
#include "base/text.h"
#include "data_file.h"
#include "oa/oa.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr int64_t largest_compared = int64_t{1} << 22;  // samples; larger images are read but not compared

int64_t number_of(const ObjDesc *node, const char *name) {
    int64_t value = 0;
    require(OaKwdValuetoLong(name, node, &value) == 0);
    return value;
}

void compare(const OaObject *whole, OaObject *handle) {
    const int64_t lines = number_of(whole->odl, "LINES");
    const int64_t samples = number_of(whole->odl, "LINE_SAMPLES");
    const int64_t size = number_of(whole->odl, "SAMPLE_BITS") / 8;
    require(whole->size == lines * samples * size);
    const auto *bytes = static_cast<const char *>(whole->data);
    for (const int64_t line : {int64_t{1}, lines / 2 + 1, lines}) {
        const int64_t sample = (line - 1) % samples + 1;
        require(OaReadImagePixels(handle, line, sample) == samples - sample + 1);
        require(memcmp(handle->data, bytes + ((line - 1) * samples + sample - 1) * size,
                       static_cast<size_t>((samples - sample + 1) * size)) == 0);
    }
    const int64_t first_line = lines / 3 + 1;
    const int64_t first_sample = samples / 3 + 1;
    const OaObjectPtr part(OaReadPartialImage(handle, first_line, lines, first_sample, samples));
    require(part != nullptr);
    const int64_t width = samples - first_sample + 1;
    for (int64_t line = first_line; line <= lines; ++line)
        require(memcmp(static_cast<const char *>(part->data) + (line - first_line) * width * size,
                       bytes + ((line - 1) * samples + first_sample - 1) * size,
                       static_cast<size_t>(width * size)) == 0);
}

void read_image(const ObjDesc *image, int64_t band) {
    OaImageKeywords keywords;
    const bool described = OaGetImageKeywords(image, &keywords) == 0;
    const OaObjectPtr whole(OaReadImage(image, band));
    OaObject *handle = OaOpenImage(image, band);
    const bool only_whole =
        described && (keywords.encoding == OA_GIF_ENCODING || keywords.encoding == OA_CLEMENTINE_JPEG);
    // Faults of coded data are met by reading, not by opening.
    const bool is_coded = described && (keywords.encoding == OA_HUFFMAN || keywords.encoding == OA_PREVIOUS_PIXEL);
    require(only_whole ? !handle : is_coded ? !whole || handle : !whole == !handle);
    require(!whole || described);
    if (whole && handle && keywords.lines * keywords.line_samples <= largest_compared)
        compare(whole.get(), handle);
    // Whether data can be decoded shows only when they are read.
    if (handle && !whole)
        require(!OaReadPartialImage(handle, 1, keywords.lines, 1, keywords.line_samples));
    OaCloseImage(handle);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static FILE *const nowhere = fopen("/dev/null", "w");
    Oa_message_fptr = nowhere;
    util_set_notice_hook([](NoticeKind, const std::string &) {});
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    const size_t label_end = std::min(input.find('\0'), input.size());
    const DataFile file(input.substr(std::min(label_end + 1, input.size())));
    const std::string label = util_format("^IMAGE = (\"%s\", 1)\n", file.path().c_str()) +
                              std::string(input.substr(0, label_end)) + "\nEND\n";
    const OdlTree tree(OdlParseLabelString(label.c_str(), nullptr, 0, 1));
    if (OaIsOlderLabel(tree.get())) {
        require((OaConvertOlderLabel(tree.get()) == 0) == (tree->first_child != nullptr));
        require(OaCheckODLTree(tree.get()) == 0);
    }
    if (const ObjDesc *image = tree ? OdlFindObjDesc(tree.get(), "*IMAGE", nullptr, nullptr, 1, SCOPE_TO_END) : nullptr)
        for (const int64_t band : {1, 2, 3})
            read_image(image, band);
    return 0;
}
