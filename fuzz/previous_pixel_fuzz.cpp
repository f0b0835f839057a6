// The input is a size of pieces (a byte), lines and samples (a byte each), and coded bytes. Decoding by pieces must
// give what a walk byte by byte gives, and so must an image of those bytes, whole and line by line from the last.
#include "base/notice.h"
#include "base/text.h"
#include "decoders/previous_pixel.h"
#include "oa/oa.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace {

void require(bool holds) {
    if (!holds)
        abort();
}

std::vector<uint16_t> walk(std::string_view bytes) {
    std::vector<uint16_t> samples;
    unsigned previous = 0;
    for (size_t i = 0; i < bytes.size(); ++i) {
        const unsigned byte = static_cast<uint8_t>(bytes[i]);
        if (byte == 255 && i + 2 >= bytes.size())
            break;
        if (byte == 255) {
            previous = static_cast<uint8_t>(bytes[i + 1]) * 256u + static_cast<uint8_t>(bytes[i + 2]);
            i += 2;
        } else {
            previous = (previous + byte - 127) % 65536;
        }
        samples.push_back(static_cast<uint16_t>(previous));
    }
    return samples;
}

std::vector<uint16_t> decode(std::string_view bytes, size_t piece) {
    std::vector<uint16_t> samples;
    PreviousPixelState state;
    for (size_t at = 0; at < bytes.size(); at += piece) {
        const std::string_view part = bytes.substr(at, piece);
        const std::vector<uint8_t> copy(part.begin(), part.end());  // its end is guarded
        std::vector<uint16_t> out(copy.size());
        out.resize(static_cast<size_t>(OalDecodePreviousPixel(copy.data(), std::ssize(copy), out.data(), &state)));
        samples.insert(samples.end(), out.begin(), out.end());
    }
    return samples;
}

void read_image(std::string_view bytes, std::vector<uint16_t> expected, int lines, int samples) {
    const int file = memfd_create("data", MFD_CLOEXEC);
    require(write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    const std::string label = util_format(
        "^IMAGE = (\"/proc/self/fd/%d\", 1)\nOBJECT = IMAGE\nLINES = %d\nLINE_SAMPLES = %d\nSAMPLE_BITS = "
        "8\nSAMPLE_TYPE = UNSIGNED_INTEGER\nENCODING_TYPE = PREVIOUS_PIXEL\nEND_OBJECT\nEND\n",
        file, lines, samples);
    const OdlTree tree(OdlParseLabelString(label.c_str(), nullptr, 0, 1));
    const ObjDesc *image = OdlFindObjDesc(tree.get(), "IMAGE", nullptr, nullptr, 1, SCOPE_TO_END);
    const OaObjectPtr whole(OaReadImage(image, 1));
    OaObject *handle = OaOpenImage(image, 1);
    expected.resize(static_cast<size_t>(lines) * static_cast<size_t>(samples));
    if (whole) {
        require(bytes[0] == '\xff' && whole->size == std::ssize(expected) * 2);
        require(memcmp(whole->data, expected.data(), static_cast<size_t>(whole->size)) == 0);
        for (int line = lines; line >= 1; --line) {
            require(OaReadImagePixels(handle, line, 1) == samples);
            require(memcmp(handle->data, expected.data() + (line - 1) * samples, static_cast<size_t>(samples) * 2) ==
                    0);
        }
    }
    OaCloseImage(handle);
    close(file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static FILE *const nowhere = fopen("/dev/null", "w");
    Oa_message_fptr = nowhere;
    util_set_notice_hook([](NoticeKind, const std::string &) {});
    constexpr size_t head = 3;
    if (size < head)
        return 0;
    const std::string_view bytes(reinterpret_cast<const char *>(data) + head, size - head);
    const std::vector<uint16_t> samples = walk(bytes);
    require(decode(bytes, data[0] + 1u) == samples);
    require(decode(bytes, size) == samples);
    read_image(bytes, samples, data[1] + 1, data[2] + 1);
    return 0;
}
