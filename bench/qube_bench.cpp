// Stepping through all bands of a qube from the page cache, in each order of axes, against `cat` on the same file, in
// turns, in the same run:
//
//     qube_bench [MEGABYTES]
//
// A line for each order: milliseconds of cat (which copies the file from the page cache into one small buffer: what
// reading costs at least), of all bands in turn as native samples, and their ratio; then those of the first band, of
// the middle quarter of all bands in turn, and of one spectrum (medians).
#include "oa/qube.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

namespace {

constexpr int rounds = 7;
constexpr int64_t samples = 1024;
constexpr int64_t bands = 144;
constexpr int64_t item_bytes = 2;

struct Order {
    const char *axes;
    const char *items;  // printf format of samples, lines and bands in turn
};
constexpr Order orders[] = {
    {"SAMPLE, LINE, BAND", "%1$lld, %2$lld, %3$lld"}, {"SAMPLE, BAND, LINE", "%1$lld, %3$lld, %2$lld"},
    {"BAND, SAMPLE, LINE", "%3$lld, %1$lld, %2$lld"}, {"LINE, SAMPLE, BAND", "%2$lld, %1$lld, %3$lld"},
    {"LINE, BAND, SAMPLE", "%2$lld, %3$lld, %1$lld"}, {"BAND, LINE, SAMPLE", "%3$lld, %2$lld, %1$lld"},
};

// A detached qube; removed at the end.
class Product {
  public:
    Product(const Order &order, int64_t lines) {
        std::string pattern = (std::filesystem::temp_directory_path() / "lumacart-bench-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        std::ofstream data(data_file(), std::ios::binary);
        std::vector<char> piece(static_cast<size_t>(samples * bands * item_bytes));
        for (size_t i = 0; i < piece.size(); ++i)
            piece[i] = static_cast<char>(i * 7 % 61);
        for (int64_t i = 0; i < lines; ++i)
            data.write(piece.data(), static_cast<std::streamsize>(piece.size()));
        char items[100];
        snprintf(items, sizeof items, order.items, static_cast<long long>(samples), static_cast<long long>(lines),
                 static_cast<long long>(bands));
        std::ofstream(folder_ / "X.LBL") << "^QUBE = \"X.QUB\"\nOBJECT = QUBE\nAXES = 3\nAXIS_NAME = (" << order.axes
                                         << ")\nCORE_ITEMS = (" << items
                                         << ")\nCORE_ITEM_BYTES = 2\nCORE_ITEM_TYPE = MSB_INTEGER\nEND_OBJECT\nEND\n";
        root_.reset(OaParseLabelFile((folder_ / "X.LBL").c_str(), nullptr, 0, 1));
    }
    ~Product() { std::filesystem::remove_all(folder_); }
    Product(const Product &) = delete;
    Product &operator=(const Product &) = delete;

    std::string data_file() const { return folder_ / "X.QUB"; }
    OaQubePtr open() const {
        return OaQubePtr(OaOpenQube(OdlFindObjDesc(root_.get(), "QUBE", nullptr, nullptr, 1, SCOPE_TO_END)));
    }

  private:
    std::filesystem::path folder_;
    OdlTree root_;
};

double milliseconds(const std::function<bool()> &work) {
    const auto start = std::chrono::steady_clock::now();
    if (!work()) {
        fprintf(stderr, "not read\n");
        exit(1);
    }
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

bool read_bands(const Product &product, int64_t last) {
    const OaQubePtr qube = product.open();
    for (int64_t band = 1; qube && band <= last; ++band)
        if (!OaObjectPtr(OaReadQubePlane(qube.get(), {OA_BAND_AXIS, band, false})))
            return false;
    return qube != nullptr;
}

bool read_quarters(const Product &product, int64_t lines) {
    const OaQubePtr qube = product.open();
    for (int64_t band = 1; qube && band <= bands; ++band)
        if (!OaObjectPtr(OaReadQubePart(qube.get(), {OA_BAND_AXIS, band, false}, lines / 4 + 1, lines * 3 / 4,
                                        samples / 4 + 1, samples * 3 / 4)))
            return false;
    return qube != nullptr;
}

double median(std::vector<double> times) {
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

void compare(const Order &order, int64_t lines) {
    const Product product(order, lines);
    const std::string cat = "cat '" + product.data_file() + "' >/dev/null";
    const std::function<bool()> works[] = {
        [&] { return std::system(cat.c_str()) == 0; }, [&] { return read_bands(product, bands); },
        [&] { return read_bands(product, 1); }, [&] { return read_quarters(product, lines); },
        [&] { return OaObjectPtr(OaReadQubeSpectrum(product.open().get(), lines / 2, samples / 2)) != nullptr; }};
    std::vector<double> times[std::size(works)];
    for (int round = 0; round <= rounds; ++round) {
        for (size_t i = 0; i < std::size(works); ++i) {
            const double time = milliseconds(works[i]);
            if (round > 0)  // the first fills the page cache
                times[i].push_back(time);
        }
    }
    printf("%s  cat %6.1f  all bands %6.1f  ratio %4.2f  first band %5.1f  quarters %6.1f  spectrum %.2f\n", order.axes,
           median(times[0]), median(times[1]), median(times[1]) / median(times[0]), median(times[2]), median(times[3]),
           median(times[4]));
}

}  // namespace

int main(int argc, char **argv) {
    const int64_t megabytes = argc > 1 ? atoll(argv[1]) : 300;
    const int64_t lines = std::max<int64_t>(1, megabytes * 1000000 / (samples * bands * item_bytes));
    for (const Order &order : orders)
        compare(order, lines);
}
