// A block of a large JPEG 2000 image in tiles, and the whole of it, from the page cache and in turns. Exits 1 when a
// block of 2000 x 2000 takes more than a tenth of what all 10000 x 10000 samples take, or is not a cut of them.
#include "base/notice.h"
#include "oa/jpeg2000.h"
#include "support/jpeg2000.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace {

constexpr int rounds = 3;
constexpr int64_t side = 10000;
constexpr int64_t block_side = 2000;
constexpr int64_t first = 4001;  // line and sample of the block
constexpr double most = 0.1;

struct Reading {
    OaObjectPtr samples;
    double seconds = 0;
};

// Label, headers and samples, as a window that opens the file reads them.
Reading read(const std::string &path, int64_t from, int64_t to) {
    const auto start = std::chrono::steady_clock::now();
    const OdlTree root(OaParseLabelFile(path.c_str(), nullptr, 0, 1));
    const ObjDesc *node = root ? OdlFindObjDesc(root.get(), "IMAGE", nullptr, nullptr, 1, SCOPE_TO_END) : nullptr;
    Jpeg2000Image image;
    Reading reading;
    if (node && OaOpenJpeg2000(node, &image) == 0)
        reading.samples.reset(OaReadJpeg2000Part(node, image, 1, OA_OWN_SIZE, from, to, from, to));
    reading.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return reading;
}

bool is_cut(const OaObject &block, const OaObject &whole) {
    const auto *part = static_cast<const char *>(block.data);
    const auto *all = static_cast<const char *>(whole.data) + (first - 1) * side + first - 1;
    for (int64_t line = 0; line < block_side; ++line)
        if (memcmp(part + line * block_side, all + line * side, block_side) != 0)
            return false;
    return true;
}

int compare(const std::string &path) {
    double block_seconds = 1e9;
    double whole_seconds = 1e9;
    for (int i = 0; i < rounds; ++i) {
        const Reading block = read(path, first, first + block_side - 1);
        const Reading whole = read(path, 1, side);
        if (!block.samples || !whole.samples || !is_cut(*block.samples, *whole.samples)) {
            printf("the block is not a cut of the whole\n");
            return 1;
        }
        block_seconds = std::min(block_seconds, block.seconds);
        whole_seconds = std::min(whole_seconds, whole.seconds);
    }
    printf("block %.0f ms, whole %.0f ms, ratio %.4f (at most %.2f)\n", 1e3 * block_seconds, 1e3 * whole_seconds,
           block_seconds / whole_seconds, most);
    return block_seconds <= most * whole_seconds ? 0 : 1;
}

}  // namespace

int main() {
    std::string folder = (std::filesystem::temp_directory_path() / "lumacart-bench-XXXXXX").string();
    if (!mkdtemp(folder.data()))
        return 1;
    const std::string path = write_jpeg2000(folder + "/large.jp2", {.width = side, .height = side, .tile = 500});
    const int status = path.empty() ? 1 : compare(path);
    std::filesystem::remove_all(folder);
    return status;
}
