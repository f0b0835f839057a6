// The input is a histogram, of as many values as its first byte says (each a place and a weight), and lines: two bytes
// of length each. Every line must decode as a walk bit by bit decodes it, and leave alone what it does not reach. The
// same histogram and the lines' records are then read as an image, in two orders.
#include "base/notice.h"
#include "base/text.h"
#include "decoders/huffman.h"
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

constexpr size_t room = 700;

void require(bool holds) {
    if (!holds)
        abort();
}

std::vector<uint8_t> walk(const HFDNode *root, std::string_view line) {
    std::vector<uint8_t> out(room, 77);
    out[0] = static_cast<uint8_t>(line[0]);
    size_t done = 1;
    const HFDNode *node = root;
    for (size_t bit = 8; bit < line.size() * 8 && done < room; ++bit) {
        if (!node->is_leaf())
            node = static_cast<uint8_t>(line[bit / 8]) >> (7 - bit % 8) & 1 ? node->right : node->left;
        if (node->is_leaf()) {
            out[done] = static_cast<uint8_t>(out[done - 1] - node->value);
            ++done;
            node = root;
        }
    }
    return out;
}

class DataFile {
  public:
    explicit DataFile(std::string_view bytes) : file_(memfd_create("data", MFD_CLOEXEC)) {
        require(file_ >= 0 && write(file_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    }
    ~DataFile() { close(file_); }
    DataFile(const DataFile &) = delete;
    DataFile &operator=(const DataFile &) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

  private:
    int file_;
};

void read_image(const std::vector<uint32_t> &frequencies, std::string_view records, int lines, int samples) {
    const DataFile histogram({reinterpret_cast<const char *>(frequencies.data()), frequencies.size() * 4});
    const DataFile data(records);
    const std::string label = util_format(
        "RECORD_TYPE = VARIABLE_LENGTH\nRECORD_BYTES = 900\n^ENCODING_HISTOGRAM = \"%s\"\n^IMAGE = \"%s\"\nOBJECT = "
        "ENCODING_HISTOGRAM\nRECORD_TYPE = UNDEFINED\nITEMS = 511\nDATA_TYPE = LSB_UNSIGNED_INTEGER\nITEM_BYTES = "
        "4\nEND_OBJECT\nOBJECT = IMAGE\nLINES = %d\nLINE_SAMPLES = %d\nSAMPLE_BITS = 8\nSAMPLE_TYPE = "
        "UNSIGNED_INTEGER\nENCODING_TYPE = HUFFMAN\nEND_OBJECT\nEND\n",
        histogram.path().c_str(), data.path().c_str(), lines, samples);
    const OdlTree tree(OdlParseLabelString(label.c_str(), nullptr, 0, 1));
    const ObjDesc *image = OdlFindObjDesc(tree.get(), "IMAGE", nullptr, nullptr, 1, SCOPE_TO_END);
    const OaObjectPtr whole(OaReadImage(image, 1));
    OaObject *handle = OaOpenImage(image, 1);
    require(!whole || handle);
    if (whole)
        for (int line = lines; line >= 1; --line) {
            require(OaReadImagePixels(handle, line, 1) == samples);
            require(memcmp(handle->data, static_cast<const char *>(whole->data) + (line - 1) * samples,
                           static_cast<size_t>(samples)) == 0);
        }
    OaCloseImage(handle);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static FILE *const nowhere = fopen("/dev/null", "w");
    Oa_message_fptr = nowhere;
    util_set_notice_hook([](NoticeKind, const std::string &) {});
    std::string_view input(reinterpret_cast<const char *>(data), size);
    const auto take = [&] {
        const uint8_t byte = input.empty() ? 0 : static_cast<uint8_t>(input[0]);
        input.remove_prefix(input.empty() ? 0 : 1);
        return byte;
    };
    std::vector<uint32_t> frequencies(hfd_frequencies, 0);
    const int values = take();
    const int lines = take() % 20 + 1;
    const int samples = take() + 1;
    for (int i = 0; i < values; ++i) {
        const size_t place = take() * 2u;
        const unsigned weight = take();
        frequencies[place] = weight >> 5 == 7 ? 4294967295u : (weight & 31) << (weight >> 5) * 4;
    }
    const std::string_view records = input;
    const HFDTreePtr tree(OalCreateHFDTree(frequencies.data()));
    while (tree && !input.empty()) {
        const size_t low = take();
        const size_t high = take() % 4;
        const size_t length = std::min(low + high * 256, input.size());
        const std::string_view line = input.substr(0, length);
        input.remove_prefix(length);
        if (line.empty())
            continue;
        const std::vector<uint8_t> copy(line.begin(), line.end());  // its end is guarded
        std::vector<uint8_t> out(room, 77);
        require(OalHFDDecompress(copy.data(), out.data(), std::ssize(copy), room, tree.get()) == 1);
        require(out == walk(tree->root, line));
    }
    read_image(frequencies, records, lines, samples);
    return 0;
}
