// Plots of two columns of two million rows of text, from the page cache: reading, the plain line, the scene of curves
// and its numbers as CSV.
#include "tables/model/curve_column.h"
#include "tables/model/plot_data.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

constexpr int64_t rows = 2'000'000;
constexpr int row_bytes = 20;

// Two columns: a number that grows, and one that swings or, as a tangle, jumps about.
class Product {
  public:
    Product() {
        std::string pattern = (std::filesystem::temp_directory_path() / "lumacart-bench-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        std::ofstream data(folder_ / "T.DAT", std::ios::binary);
        char row[row_bytes + 2];
        for (int64_t i = 0; i < rows; ++i) {
            const auto x = static_cast<double>(i);
            snprintf(row, sizeof row, "%9.0f %9.5f\n", x,
                     std::sin(x / 2e5) + static_cast<double>(i * 7919 % 101) / 1e3);
            data.write(row, row_bytes);
        }
        std::ofstream label(folder_ / "T.LBL");
        label << "^TABLE = \"T.DAT\"\nOBJECT = TABLE\nINTERCHANGE_FORMAT = ASCII\nROWS = " << rows
              << "\nROW_BYTES = 20\nOBJECT = COLUMN\nNAME = X\nDATA_TYPE = ASCII_INTEGER\nSTART_BYTE = 1\nBYTES = 9\n"
                 "END_OBJECT\nOBJECT = COLUMN\nNAME = Y\nDATA_TYPE = ASCII_REAL\nSTART_BYTE = 11\nBYTES = 9\n"
                 "END_OBJECT\nEND_OBJECT\nEND\n";
        label.close();
        root_.reset(OaParseLabelFile((folder_ / "T.LBL").c_str(), nullptr, 0, 1));
        tables_ = tb_read_product(root_.get());
    }
    ~Product() { std::filesystem::remove_all(folder_); }
    Product(const Product &) = delete;
    Product &operator=(const Product &) = delete;

    const TableInfo &table() const { return tables_.tables[0]; }
    std::unique_ptr<TableReader> reader() const { return tb_open_reader(tables_.file, table()); }

  private:
    std::filesystem::path folder_;
    OdlTree root_;
    TableProduct tables_;
};

const Product &product() {
    static const Product made;
    return made;
}

void read_axes(PlotAxis *x, PlotAxis *y) {
    const auto reader = product().reader();
    plot_read_column(reader.get(), product().table().columns[0], 1, rows, &x->values);
    plot_read_column(reader.get(), product().table().columns[1], 1, rows, &y->values);
    scale_axis(x);
    scale_axis(y);
}

CurvePlot read_curve() {
    CurvePlot plot = {"", "X", "Y", {{"Y", {}, {}}}};
    const auto reader = product().reader();
    const TableInfo &table = product().table();
    read_curve_column(reader.get(), table, table.columns[0], 1, rows, &plot.curves[0].x);
    read_curve_column(reader.get(), table, table.columns[1], 1, rows, &plot.curves[0].y);
    return plot;
}

// X and Y changed round: lines from side to side, none of which can be left out.
void exchange(CurvePlot *plot) {
    std::swap(plot->curves[0].x, plot->curves[0].y);
}

void read_plain(benchmark::State &state) {
    product();
    for (auto _ : state) {
        PlotAxis x, y;
        read_axes(&x, &y);
        benchmark::DoNotOptimize(x.values.data());
    }
}
BENCHMARK(read_plain)->Unit(benchmark::kMillisecond);

void draw_plain(benchmark::State &state) {
    PlotAxis x, y;
    read_axes(&x, &y);
    for (auto _ : state)
        benchmark::DoNotOptimize(state.range(0) ? plot_picture(plot_line(y, x)) : plot_picture(plot_line(x, y)));
}
BENCHMARK(draw_plain)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void read_detailed(benchmark::State &state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(read_curve());
}
BENCHMARK(read_detailed)->Unit(benchmark::kMillisecond);

void lay_out_detailed(benchmark::State &state) {
    CurvePlot plot = read_curve();
    if (state.range(0))
        exchange(&plot);
    const CurveFont font = {[](const std::string &text) { return static_cast<int>(7 * text.size()); }, 16};
    size_t drawn = 0;
    for (auto _ : state) {
        const CurveScene scene = curve_scene(plot, {}, 1200, 800, font);
        drawn = scene.marks.empty() ? scene.lines.back().points.size() : scene.marks[0].places.size();
    }
    state.counters["points"] = static_cast<double>(drawn);
}
BENCHMARK(lay_out_detailed)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void write_numbers(benchmark::State &state) {
    const CurvePlot plot = read_curve();
    FILE *null = fopen("/dev/null", "w");
    for (auto _ : state)
        benchmark::DoNotOptimize(write_curve_csv(plot, null));
    fclose(null);
}
BENCHMARK(write_numbers)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
