// How fast a large label becomes a tree. Without arguments of its own it is a Google Benchmark program; two modes serve
// label_peer, which times another program on the same file:
//   label_bench --write FILE    writes the label
//   label_bench --parse FILE    parses it once with all checks, prints milliseconds and the memory that it took
#include "base/text.h"
#include "odl/odl.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/resource.h>

namespace {

// About 5 MB: objects of seven keywords, with comments, units, a list and a text over two lines.
std::string large_label() {
    constexpr int objects = 20000;
    std::string label = "KRV_VERSION_ID = KRV3\r\n/* A table of many columns */\r\n";
    for (int i = 1; i <= objects; ++i) {
        if (i % 10 == 1)
            label += util_format("\r\n/* Columns from number %d on */\r\n", i);
        label += "OBJECT = COLUMN\r\n";
        label += util_format("  NAME = \"CHANNEL_%05d\"%s\r\n", i, i % 4 ? "" : "  /* calibrated */");
        label += util_format("  DATA_TYPE = %s\r\n", i % 3 ? "MSB_UNSIGNED_INTEGER" : "IEEE_REAL");
        label += util_format("  START_BYTE = %d\r\n", 4 * i - 3);
        label += "  BYTES = 4\r\n";
        label += util_format("  LIMITS = (%d.5 <m>, -%d.25E-3 <km/s>)\r\n", i % 97, i % 89);
        label += util_format("  CHANGED = 1997-%02d-%02dT23:59:%02d.5Z\r\n", i % 12 + 1, i % 28 + 1, i % 60);
        label += "  NOTE = \"Brightness, corrected\r\n    for dark current\"\r\n";
        label += "END_OBJECT = COLUMN\r\n";
    }
    return label + "END\r\n";
}

void write_label(const char *path) {
    const std::string label = large_label();
    std::ofstream(path, std::ios::binary).write(label.data(), static_cast<std::streamsize>(label.size()));
}

ObjDesc *parse(const char *path) {
    return OdlParseLabelFile(path, nullptr, ODL_EXPAND_STRUCTURE | ODL_EXPAND_CATALOG, 1);
}

long peak_kilobytes() {
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

int parse_once(const char *path) {
    const long before = peak_kilobytes();
    const auto start = std::chrono::steady_clock::now();
    ObjDesc *root = parse(path);
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    if (!root || odl_message_count)
        return 1;
    printf("%.3f %ld\n", time.count(), (peak_kilobytes() - before) * 1024);
    return 0;
}

const std::string &label_on_disk() {
    static const std::string path = [] {
        std::string name = (std::filesystem::temp_directory_path() / "label_bench.lbl").string();
        write_label(name.c_str());
        return name;
    }();
    return path;
}

void parse_and_free(benchmark::State &state) {
    const std::string &path = label_on_disk();
    for (auto _ : state)
        OdlFreeTree(parse(path.c_str()));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(std::filesystem::file_size(path)));
}
BENCHMARK(parse_and_free)->Unit(benchmark::kMillisecond);

void free_tree(benchmark::State &state) {
    for (auto _ : state) {
        state.PauseTiming();
        ObjDesc *root = parse(label_on_disk().c_str());
        state.ResumeTiming();
        OdlFreeTree(root);
    }
}
BENCHMARK(free_tree)->Unit(benchmark::kMillisecond);

void find_last_keyword(benchmark::State &state) {
    ObjDesc *root = parse(label_on_disk().c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(OdlFindKwd(root, "NAME", "*20000*", 1, SCOPE_TO_END));
    OdlFreeTree(root);
}
BENCHMARK(find_last_keyword)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
    if (argc == 3 && strcmp(argv[1], "--write") == 0) {
        write_label(argv[2]);
        return 0;
    }
    if (argc == 3 && strcmp(argv[1], "--parse") == 0)
        return parse_once(argv[2]);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::error_code ignored;
    std::filesystem::remove(std::filesystem::temp_directory_path() / "label_bench.lbl", ignored);
    return 0;
}
