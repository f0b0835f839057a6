// Reading GIF files from the page cache, scan and every image: ours and, where it is installed, giflib's DGifSlurp, in
// turns. Made pictures from noise to runs, or the files named. Exits 1 when the two do not give the same pixels.
#include "oa/oa.h"
#include "support/gif.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>
#ifdef LUMACART_GIFLIB
#include <gif_lib.h>
#endif

namespace {

constexpr int rounds = 9;
constexpr int side = 3000;

// Planes of colour indices, one behind the other.
using Pixels = std::string;

Pixels read_ours(const std::string &path) {
    const OdlTree root(OaParseLabelFile(path.c_str(), nullptr, 0, 1));
    Pixels pixels;
    for (const ObjDesc *node = root ? root->first_child : nullptr; node; node = node->right_sibling) {
        if (OaGetObjectClass(node) != OA_IMAGE)
            continue;
        const OaObjectPtr image(OaReadImage(node, 1));
        if (image)
            pixels.append(static_cast<const char *>(image->data), static_cast<size_t>(image->size));
    }
    return pixels;
}

double time_ours(const std::string &path) {
    const auto start = std::chrono::steady_clock::now();
    const OdlTree root(OaParseLabelFile(path.c_str(), nullptr, 0, 1));
    for (const ObjDesc *node = root ? root->first_child : nullptr; node; node = node->right_sibling) {
        if (OaGetObjectClass(node) == OA_IMAGE)
            const OaObjectPtr image(OaReadImage(node, 1));
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

#ifdef LUMACART_GIFLIB
double time_giflib(const std::string &path, Pixels *pixels) {
    const auto start = std::chrono::steady_clock::now();
    GifFileType *gif = DGifOpenFileName(path.c_str(), nullptr);
    const bool read = gif && DGifSlurp(gif) == GIF_OK;
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    for (int i = 0; pixels && read && i < gif->ImageCount; ++i) {
        const SavedImage &image = gif->SavedImages[i];
        pixels->append(reinterpret_cast<const char *>(image.RasterBits),
                       static_cast<size_t>(image.ImageDesc.Width) * static_cast<size_t>(image.ImageDesc.Height));
    }
    if (gif)
        DGifCloseFile(gif, nullptr);
    return seconds;
}
#endif

double median(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

// Prints the medians; false when the pixels differ.
bool compare(const std::string &name, const std::string &path) {
    const Pixels pixels = read_ours(path);
    std::vector<double> ours;
    [[maybe_unused]] std::vector<double> theirs;
    for (int i = 0; i < rounds; ++i) {
        ours.push_back(time_ours(path));
#ifdef LUMACART_GIFLIB
        theirs.push_back(time_giflib(path, nullptr));
#endif
    }
    const double millions = static_cast<double>(pixels.size()) / 1e6;
    printf("%-20s %8.2f Mpixel %8.2f MB   ours %8.2f ms %7.0f Mpixel/s", name.c_str(), millions,
           static_cast<double>(std::filesystem::file_size(path)) / 1e6, median(ours) * 1e3, millions / median(ours));
    bool equal = true;
#ifdef LUMACART_GIFLIB
    Pixels their_pixels;
    time_giflib(path, &their_pixels);
    equal = pixels == their_pixels;
    printf("   giflib %8.2f ms %7.0f Mpixel/s   ratio %.2f%s", median(theirs) * 1e3, millions / median(theirs),
           median(theirs) / median(ours), equal ? "" : "   PIXELS DIFFER");
#endif
    printf("\n");
    return equal;
}

struct Picture {
    const char *name;
    int code_size;
    int flags;
    uint8_t (*pixel)(int x, int y, uint32_t noise);
};
constexpr Picture pictures[] = {
    {"noise, 256 colours", 8, 0, [](int, int, uint32_t noise) { return static_cast<uint8_t>(noise); }},
    {"noise, 16 colours", 4, 0, [](int, int, uint32_t noise) { return static_cast<uint8_t>(noise & 15); }},
    {"noise, 2 colours", 2, 0, [](int, int, uint32_t noise) { return static_cast<uint8_t>(noise & 1); }},
    {"grained slope", 8, 0,
     [](int x, int y, uint32_t noise) { return static_cast<uint8_t>((x + y) / 30 + static_cast<int>(noise & 3)); }},
    {"grained, interlaced", 8, 0x40,
     [](int x, int y, uint32_t noise) { return static_cast<uint8_t>((x + y) / 30 + static_cast<int>(noise & 3)); }},
    {"smooth slope", 8, 0, [](int x, int y, uint32_t) { return static_cast<uint8_t>((x + 2 * y) / 40); }},
    {"map", 4, 0, [](int x, int y, uint32_t) { return static_cast<uint8_t>((x / 97 * 7 + y / 61 * 3) & 15); }},
    {"one colour", 2, 0, [](int, int, uint32_t) { return uint8_t{1}; }},
};

bool compare_made(const std::filesystem::path &folder) {
    bool equal = true;
    for (const Picture &picture : pictures) {
        std::mt19937 noise(1);
        std::string pixels;
        pixels.reserve(size_t{side} * side);
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x)
                pixels += static_cast<char>(picture.pixel(x, y, static_cast<uint32_t>(noise() >> 8)));
        const std::string path = folder / "made.gif";
        std::ofstream(path, std::ios::binary)
            << gif_header(side, side, 256) << gif_image(side, side, pixels, picture.code_size, picture.flags) << ';';
        equal &= compare(picture.name, path);
    }
    return equal;
}

}  // namespace

int main(int argc, char **argv) {
    bool equal = true;
    for (int i = 1; i < argc; ++i)
        equal &= compare(std::filesystem::path(argv[i]).filename(), argv[i]);
    if (argc > 1)
        return equal ? 0 : 1;
    std::string pattern = (std::filesystem::temp_directory_path() / "lumacart-bench-XXXXXX").string();
    const std::filesystem::path folder = mkdtemp(pattern.data());
    equal = compare_made(folder);
    std::filesystem::remove_all(folder);
    return equal ? 0 : 1;
}
