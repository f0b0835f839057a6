// From a change of the colour table to the window that shows it, 1600 x 1200 pixels: a frame at 60 Hz is 16.7 ms.
#include "support/product.h"
#include "support/window_driver.h"
#include "support/window_viewer.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>

namespace {

constexpr int width = 1600;
constexpr int height = 1200;

std::string write_noise(const ScratchFolder &folder) {
    ImageProduct product;
    product.lines = height;
    product.samples = width;
    product.data.resize(size_t{width} * height);
    std::mt19937 random(1);
    for (char &pixel : product.data)
        pixel = static_cast<char>(random());
    return write_detached(folder, "NOISE", product);
}

Window *g_image;

// A drag of the white point by a level, as the histogram window does it, with that window closed or open.
void BM_MoveWhitePoint(benchmark::State &state) {
    if (state.range(0)) {
        choose_command(g_image, 1050);
        settle();
    }
    DisplayControl &control = window_state(g_image)->display_state->control;
    int position = 255;
    for (auto _ : state) {
        position = position > 100 ? position - 1 : 255;
        move_bar(&control, DisplayBar::White, position);
        UpdateDisplay(g_image);
        settle();
    }
    state.SetItemsProcessed(state.iterations() * width * height);
}
BENCHMARK(BM_MoveWhitePoint)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_ChangePalette(benchmark::State &state) {
    int palette = 0;
    for (auto _ : state) {
        palette = (palette + 1) % (last_palette + 1);
        ChangePalette(g_image, palette);
        settle();
    }
}
BENCHMARK(BM_ChangePalette)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    benchmark::Initialize(&argc, argv);
    int result = 1;
    run_viewer([&] {
        const ScratchFolder folder;
        g_image = open_in_viewer(write_noise(folder));
        if (!g_image)
            return;
        resize_window(g_image, width + 2, height + 40);
        const GuiSize client = gui_client_size(g_image);
        if (client.width < width || client.height < height)
            return;
        benchmark::RunSpecifiedBenchmarks();
        result = 0;
    });
    benchmark::Shutdown();
    return result;
}
