// Reading images from the page cache: samples a second by sample type and storage, whole and by blocks.
#include "oa/oa.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int64_t side = 10000;

struct Storage {
    const char *name;
    const char *type;
    int bits;
    int bands;  // the last is read
    const char *order;
};
constexpr Storage storages[] = {
    {"bytes", "UNSIGNED_INTEGER", 8, 1, "BAND_SEQUENTIAL"},
    {"native_16", "LSB_INTEGER", 16, 1, "BAND_SEQUENTIAL"},
    {"swapped_16", "MSB_INTEGER", 16, 1, "BAND_SEQUENTIAL"},
    {"vax_32", "VAX_REAL", 32, 1, "BAND_SEQUENTIAL"},
    {"by_line_8", "UNSIGNED_INTEGER", 8, 3, "LINE_INTERLEAVED"},
    {"by_sample_8", "UNSIGNED_INTEGER", 8, 3, "SAMPLE_INTERLEAVED"},
    {"by_sample_swapped_16", "MSB_INTEGER", 16, 3, "SAMPLE_INTERLEAVED"},
};

// A detached image of side x side samples of one band, bands behind or within each other; removed at the end.
class Product {
  public:
    explicit Product(const Storage &storage) {
        std::string pattern = (std::filesystem::temp_directory_path() / "lumacart-bench-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        std::ofstream data(folder_ / "X.IMG", std::ios::binary);
        std::vector<char> line(static_cast<size_t>(side * storage.bits / 8 * storage.bands));
        for (size_t i = 0; i < line.size(); ++i)
            line[i] = static_cast<char>(i * 7 % 61);
        for (int64_t i = 0; i < side; ++i)
            data.write(line.data(), static_cast<std::streamsize>(line.size()));
        std::ofstream(folder_ / "X.LBL") << "^IMAGE = \"X.IMG\"\nOBJECT = IMAGE\nLINES = " << side
                                         << "\nLINE_SAMPLES = " << side << "\nSAMPLE_BITS = " << storage.bits
                                         << "\nSAMPLE_TYPE = " << storage.type << "\nBANDS = " << storage.bands
                                         << "\nBAND_STORAGE_TYPE = " << storage.order << "\nEND_OBJECT\nEND\n";
        root_.reset(OaParseLabelFile((folder_ / "X.LBL").c_str(), nullptr, 0, 1));
    }
    ~Product() { std::filesystem::remove_all(folder_); }
    Product(const Product &) = delete;
    Product &operator=(const Product &) = delete;

    const ObjDesc *image() const { return OdlFindObjDesc(root_.get(), "IMAGE", nullptr, nullptr, 1, SCOPE_TO_END); }

  private:
    std::filesystem::path folder_;
    OdlTree root_;
};

void read_whole(benchmark::State &state, const Storage &storage) {
    const Product product(storage);
    for (auto _ : state) {
        const OaObjectPtr object(OaReadImage(product.image(), storage.bands));
        if (!object)
            state.SkipWithError("not read");
    }
    state.SetItemsProcessed(state.iterations() * side * side);
}

void read_block(benchmark::State &state, const Storage &storage) {
    constexpr int64_t block = 2000;
    const Product product(storage);
    for (auto _ : state) {
        OaObject *handle = OaOpenImage(product.image(), storage.bands);
        const OaObjectPtr object(OaReadPartialImage(handle, block + 1, 2 * block, block + 1, 2 * block));
        if (!object)
            state.SkipWithError("not read");
        OaCloseImage(handle);
    }
    state.SetItemsProcessed(state.iterations() * block * block);
}

}  // namespace

int main(int argc, char **argv) {
    for (const Storage &storage : storages) {
        const std::string name = storage.name;
        benchmark::RegisterBenchmark((name + "/whole").c_str(), read_whole, storage)->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((name + "/block").c_str(), read_block, storage)->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
