// Reading tables from the page cache: a page of 100 rows x 30 columns out of small and huge files, and whole tables
// against reading their bytes alone.
#include "oa/oa.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr int columns = 100;
constexpr int64_t row_bytes = columns * 4;

// A table of 100 columns of 4 bytes in a sparse file, or with data where it is to be read whole; removed at the end.
class Product {
  public:
    Product(int64_t rows, const char *type, bool sparse, bool by_column = false) {
        std::string pattern = (std::filesystem::temp_directory_path() / "lumacart-bench-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        const int file = open(path().c_str(), O_WRONLY | O_CREAT, 0600);
        made_ = ftruncate(file, rows * row_bytes) == 0;
        std::vector<char> row(row_bytes);
        for (size_t i = 0; i < row.size(); ++i)
            row[i] = static_cast<char>(i * 7 % 61);
        for (int64_t i = 0; !sparse && i < rows; ++i)
            made_ = made_ && write(file, row.data(), row.size()) == row_bytes;
        close(file);
        std::ofstream label(folder_ / "T.LBL");
        label << "^TABLE = \"T.DAT\"\nOBJECT = TABLE\nROWS = " << rows << "\nROW_BYTES = " << row_bytes << "\n";
        if (by_column)
            label << "TABLE_STORAGE_TYPE = COLUMN_MAJOR\n";
        for (int i = 0; i < columns; ++i)
            label << "OBJECT = COLUMN\nNAME = C" << i << "\nDATA_TYPE = " << type << "\nSTART_BYTE = " << 4 * i + 1
                  << "\nBYTES = 4\nEND_OBJECT\n";
        label << "END_OBJECT\nEND\n";
        label.close();
        root_.reset(OaParseLabelFile((folder_ / "T.LBL").c_str(), nullptr, 0, 1));
    }
    ~Product() { std::filesystem::remove_all(folder_); }
    Product(const Product &) = delete;
    Product &operator=(const Product &) = delete;

    bool made() const { return made_; }
    std::string path() const { return folder_ / "T.DAT"; }
    const ObjDesc *table() const { return OdlFindObjDesc(root_.get(), "TABLE", nullptr, nullptr, 1, SCOPE_TO_END); }

  private:
    std::filesystem::path folder_;
    OdlTree root_;
    bool made_ = false;
};

void read_page(benchmark::State &state, int64_t rows, bool by_column) {
    const Product product(rows, "MSB_INTEGER", true, by_column);
    if (!product.made())
        return state.SkipWithError("no sparse file of that size can be made");
    const int64_t first = rows / 2;
    for (auto _ : state) {
        const OaObjectPtr page(OaReadSubTable(product.table(), first, first + 99, 41, 70));
        if (!page)
            state.SkipWithError("not read");
    }
}

constexpr int64_t whole_rows = 250000;  // 100 MB

void read_whole(benchmark::State &state, const char *type) {
    const Product product(whole_rows, type, false);
    for (auto _ : state) {
        const OaObjectPtr table(OaReadTable(product.table()));
        if (!table)
            state.SkipWithError("not read");
    }
    state.SetBytesProcessed(state.iterations() * whole_rows * row_bytes);
}

// The same bytes into memory that is new each time, as an object's is.
void read_bytes(benchmark::State &state) {
    const Product product(whole_rows, "MSB_INTEGER", false);
    for (auto _ : state) {
        const OaPtr<char> bytes(static_cast<char *>(OaZeroedMalloc(whole_rows * row_bytes)));
        const int file = open(product.path().c_str(), O_RDONLY);
        int64_t held = 0;
        for (ssize_t got = 1; got > 0 && held < whole_rows * row_bytes; held += got)
            got = read(file, bytes.get() + held, static_cast<size_t>(whole_rows * row_bytes - held));
        close(file);
        benchmark::DoNotOptimize(bytes.get());
    }
    state.SetBytesProcessed(state.iterations() * whole_rows * row_bytes);
}

}  // namespace

int main(int argc, char **argv) {
    constexpr int64_t small = 10'000'000 / row_bytes;
    constexpr int64_t huge = 100'000'000'000 / row_bytes;
    for (const bool by_column : {false, true}) {
        const std::string order = by_column ? "page/by_column/" : "page/by_row/";
        benchmark::RegisterBenchmark((order + "10_MB").c_str(), read_page, small, by_column);
        benchmark::RegisterBenchmark((order + "100_GB").c_str(), read_page, huge, by_column);
    }
    for (const char *type : {"LSB_INTEGER", "MSB_INTEGER", "VAX_REAL", "CHARACTER"})
        benchmark::RegisterBenchmark((std::string("whole_100_MB/") + type).c_str(), read_whole, type)
            ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("whole_100_MB/bytes_only", read_bytes)->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
