// Rows of columns through the slot descriptor tree, beside a plain copy of the same bytes in the same run.
//
//   table_bench --reals FILE ROWS COLUMNS OUT    reads text rows of fields of 16 bytes each, a comma or line feed last,
//                                                writes the doubles, prints the processor's milliseconds
#include "base/text.h"
#include "oa/sdt.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int64_t source_bytes = 16 << 20;

struct Row {
    const char *name;
    int64_t bytes;
    std::vector<std::string> columns;  // TYPE BYTES
};

const Row rows[] = {
    {"integers_16_of_4", 64, std::vector<std::string>(16, "MSB_INTEGER 4")},
    {"alternating_4_and_2",
     64,
     {"MSB_INTEGER 4", "MSB_INTEGER 4", "MSB_INTEGER 2", "MSB_INTEGER 2", "CHARACTER 4", "IEEE_REAL 8", "MSB_INTEGER 4",
      "MSB_INTEGER 2", "CHARACTER 2", "IEEE_REAL 8", "LSB_INTEGER 4", "CHARACTER 20"}},
    {"texts_64_of_1", 64, std::vector<std::string>(64, "CHARACTER 1")},
};

std::string label_of(const Row &row) {
    std::string text = util_format("OBJECT = TABLE\nROWS = %lld\nROW_BYTES = %lld\n",
                                   static_cast<long long>(source_bytes / row.bytes), static_cast<long long>(row.bytes));
    int64_t start = 1;
    for (const std::string &column : row.columns) {
        const size_t blank = column.find(' ');
        const int64_t bytes = atol(column.c_str() + blank);
        text +=
            util_format("OBJECT = COLUMN\nDATA_TYPE = %s\nSTART_BYTE = %lld\nBYTES = %lld\nEND_OBJECT = COLUMN\n",
                        column.substr(0, blank).c_str(), static_cast<long long>(start), static_cast<long long>(bytes));
        start += bytes;
    }
    return text + "END_OBJECT = TABLE\nEND\n";
}

// A plan for the only object of the label, ready to run.
OaSdt plan_label(const std::string &label, OaInterchangeFormat format) {
    const OdlTree root(OdlParseLabelString(label.c_str(), nullptr, 0, 1));
    const OaSdt plan(OdlCutObjDesc(root->first_child));
    return OaSdt(OalCreateSDT(plan.get(), format) ? OalCompressSDT(plan.get()) : nullptr);
}

void feed(ObjDesc *plan, const std::vector<char> &source, std::vector<char> *target) {
    constexpr size_t chunk = 256 * 1024;
    ObjDesc *leaf = OalInitializeSDT(plan, target->data(), static_cast<int64_t>(target->size()));
    for (size_t at = 0; leaf && at < source.size(); at += chunk)
        if (OalProcessSDT(source.data() + at, static_cast<int64_t>(std::min(chunk, source.size() - at)), &leaf))
            return;
}

void copy(benchmark::State &state) {
    const std::vector<char> source(source_bytes, 'x');
    std::vector<char> target(source_bytes);
    for (auto _ : state) {
        memcpy(target.data(), source.data(), source.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * source_bytes);
}
BENCHMARK(copy);

void convert(benchmark::State &state, const Row &row) {
    const OaSdt plan = plan_label(label_of(row), OA_BINARY);
    const std::vector<char> source(source_bytes, 'x');
    std::vector<char> target(static_cast<size_t>(OalDestinationSize(plan.get())));
    for (auto _ : state) {
        feed(plan.get(), source, &target);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * source_bytes);
}

int time_reals(char **arguments) {
    constexpr int field = 16;
    std::ifstream file(arguments[0], std::ios::binary);
    const std::vector<char> source{std::istreambuf_iterator<char>(file), {}};
    const int columns = atoi(arguments[2]);
    std::string label = util_format("OBJECT = TABLE\nROWS = %s\nROW_BYTES = %d\n", arguments[1], columns * field);
    for (int i = 0; i < columns; ++i)
        label += util_format("OBJECT = COLUMN\nDATA_TYPE = ASCII_REAL\nSTART_BYTE = %d\nBYTES = %d\nEND_OBJECT\n",
                             i * field + 1, field - 1);
    const OaSdt plan = plan_label(label + "END_OBJECT\nEND\n", OA_ASCII);
    std::vector<char> target(static_cast<size_t>(OalDestinationSize(plan.get())));
    const clock_t start = clock();
    feed(plan.get(), source, &target);
    printf("%.3f\n", static_cast<double>(clock() - start) * 1e3 / CLOCKS_PER_SEC);
    std::ofstream(arguments[3], std::ios::binary).write(target.data(), static_cast<std::streamsize>(target.size()));
    return 0;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 6 && std::string_view(argv[1]) == "--reals")
        return time_reals(argv + 2);
    for (const Row &row : rows)
        benchmark::RegisterBenchmark(row.name, convert, row)->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
