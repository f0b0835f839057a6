// The phases between a stored image and its display bytes, each on 4 million samples.
//
// `display_bench --time LABEL DISPLAY` instead opens one image as a window does, writes its display bytes into a file
// and prints the milliseconds of reading, of finding the range and of mapping.
#include "base/file.h"
#include "oa/oa.h"
#include "viewer/model/rotate.h"
#include "viewer/model/stretch.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr int64_t lines = 2000;
constexpr int64_t line_samples = 2000;
constexpr int64_t sample_count = lines * line_samples;

const std::vector<uint16_t> &noise() {
    static const std::vector<uint16_t> values = [] {
        std::vector<uint16_t> made(sample_count * 4);
        std::mt19937 random(1);
        for (uint16_t &value : made)
            value = static_cast<uint16_t>(random() & 0x3fff);
        return made;
    }();
    return values;
}

ImageDescription described(const benchmark::State &state) {
    ImageDescription description;
    description.sample_bits = state.range(0);
    description.sample_type = state.range(1) ? "PC_REAL" : "LSB_INTEGER";
    return description;
}

void count_samples(benchmark::State &state) {
    state.SetItemsProcessed(state.iterations() * sample_count);
}

void BM_FindRange(benchmark::State &state) {
    for (auto _ : state) {
        ImageDescription description = described(state);
        StretchRangeFinder finder(description);
        finder.add(noise().data(), lines, line_samples);
        finder.store(&description);
        benchmark::DoNotOptimize(description);
    }
    count_samples(state);
}
BENCHMARK(BM_FindRange)->Args({16, 0})->Args({32, 0})->Args({64, 1});

void BM_MapSamples(benchmark::State &state) {
    ImageDescription description = described(state);
    description.minimum = 10;
    description.maximum = 16000;
    std::vector<uint8_t> display(sample_count);
    for (auto _ : state) {
        map_samples(noise().data(), description, sample_count, display.data());
        benchmark::ClobberMemory();
    }
    count_samples(state);
}
BENCHMARK(BM_MapSamples)->Args({16, 0})->Args({32, 0})->Args({32, 1})->Args({64, 1});

std::unique_ptr<PixelImage> noisy_image(int bytes_per_pixel) {
    auto image = util_new_pixel_image(line_samples, lines, bytes_per_pixel);
    memcpy(image->pixels.get(), noise().data(), static_cast<size_t>(sample_count * bytes_per_pixel));
    return image;
}

void BM_CountLevels(benchmark::State &state) {
    const auto image = noisy_image(1);
    for (auto _ : state)
        benchmark::DoNotOptimize(count_levels(*image));
    count_samples(state);
}
BENCHMARK(BM_CountLevels);

template <std::unique_ptr<PixelImage> (*operation)(const PixelImage &)>
void BM_Turn(benchmark::State &state) {
    const auto image = noisy_image(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(operation(*image));
    count_samples(state);
}
BENCHMARK(BM_Turn<rotate_image_90>)->Arg(1)->Arg(4);
BENCHMARK(BM_Turn<rotate_image_180>)->Arg(1)->Arg(4);
BENCHMARK(BM_Turn<invert_image_vertical>)->Arg(1)->Arg(4);

// A turn of 10,000 x 10,000 pixels beside a plain copy of the same bytes, each into a new image.
constexpr int large_side = 10000;

std::unique_ptr<PixelImage> large_image(int bytes_per_pixel) {
    auto image = util_new_pixel_image(large_side, large_side, bytes_per_pixel);
    const int64_t size = int64_t{large_side} * large_side * bytes_per_pixel;
    for (int64_t i = 0; image && i < size; ++i)
        image->pixels.get()[i] = static_cast<uint8_t>(i * 7 + i / large_side);
    return image;
}

std::unique_ptr<PixelImage> plain_copy(const PixelImage &image) {
    auto copy = util_new_pixel_image(image.width, image.height, image.bytes_per_pixel);
    memcpy(copy->pixels.get(), image.pixels.get(),
           static_cast<size_t>(int64_t{image.width} * image.height * image.bytes_per_pixel));
    return copy;
}

template <std::unique_ptr<PixelImage> (*operation)(const PixelImage &)>
void BM_TurnLarge(benchmark::State &state) {
    const auto image = large_image(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(operation(*image));
    state.SetBytesProcessed(state.iterations() * large_side * large_side * state.range(0));
}
BENCHMARK(BM_TurnLarge<plain_copy>)->Arg(1)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TurnLarge<rotate_image_90>)->Arg(1)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TurnLarge<rotate_image_180>)->Arg(1)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TurnLarge<rotate_image_270>)->Arg(1)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TurnLarge<rotate_invert_image_90>)->Arg(1)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TurnLarge<rotate_invert_image_180>)->Arg(1)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TurnLarge<rotate_invert_image_270>)->Arg(1)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TurnLarge<invert_image_horizontal>)->Arg(1)->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);

int time_one_image(const char *label, const char *display_path) {
    using Clock = std::chrono::steady_clock;
    const OdlTree root(OaParseLabelFile(label, nullptr, 0, 1));
    const ObjDesc *node = root ? OdlFindObjDesc(root.get(), "*IMAGE", nullptr, nullptr, 1, SCOPE_TO_END) : nullptr;
    ImageDescription description;
    if (!node || !describe_image(node, &description).empty())
        return 1;
    const Clock::time_point start = Clock::now();
    const OaObjectPtr samples(OaReadImage(node, 1));
    const Clock::time_point read = Clock::now();
    if (!samples)
        return 1;
    StretchRangeFinder finder(description);
    finder.add(samples->data, description.lines, description.line_samples);
    finder.store(&description);
    const Clock::time_point ranged = Clock::now();
    if (!build_display_image(samples->data, &description, description.lines, description.line_samples).empty())
        return 1;
    const Clock::time_point mapped = Clock::now();

    const auto milliseconds = [](Clock::duration time) {
        return std::chrono::duration<double, std::milli>(time).count();
    };
    printf("%.2f %.2f %.2f\n", milliseconds(read - start), milliseconds(ranged - read), milliseconds(mapped - ranged));
    const FilePtr file(fopen(display_path, "wb"));
    const auto size = static_cast<size_t>(description.lines * description.line_samples);
    return file && fwrite(description.display_image->pixels.get(), 1, size, file.get()) == size ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 4 && strcmp(argv[1], "--time") == 0)
        return time_one_image(argv[2], argv[3]);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
