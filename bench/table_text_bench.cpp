// Tables as text: processor time for a cell, and memory, of 2,000,000 rows that are formatted from the first to the
// last, of fields at random places, and of the plain way that opens, seeks and reads the file for each field. And the
// first and the last page of 100 rows x 30 columns of a sparse file of 100 GB, from the label on.
//   table_text_bench [rows]
#include "tables/tables.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <random>
#include <string>
#include <sys/resource.h>

namespace {

// Of the processor, in nanoseconds.
double now() {
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

struct Column {
    const char *type;
    int bytes;
};

// A row of each kind: what is in it does not matter but for reals, whose digits are what takes time.
struct Kind {
    const char *name;
    const char *format;
    std::vector<Column> columns;
};

std::string number_text(std::mt19937_64 *random, int width) {
    char text[32];
    snprintf(text, sizeof text, "%*.4f", width, static_cast<double>((*random)() % 1000000) / 1e3);
    return {text, static_cast<size_t>(width)};
}

void write_data(const std::string &path, const Kind &kind, int64_t rows) {
    FILE *file = fopen(path.c_str(), "wb");
    std::mt19937_64 random(1);
    for (int64_t row = 0; row < rows; ++row) {
        std::string line;
        for (const Column &column : kind.columns) {
            const uint64_t bits = random();
            const double real = static_cast<double>(bits) / 1e15;
            const auto single = static_cast<float>(real);
            if (std::string_view(kind.name) == "spreadsheet")
                line += std::to_string(bits % 100000) + ",";
            else if (std::string_view(kind.format) == "ASCII")
                line += number_text(&random, column.bytes);
            else if (std::string_view(column.type) == "PC_REAL")
                line.append(
                    column.bytes == 8 ? reinterpret_cast<const char *>(&real) : reinterpret_cast<const char *>(&single),
                    static_cast<size_t>(column.bytes));
            else
                line.append(reinterpret_cast<const char *>(&bits), static_cast<size_t>(column.bytes));
        }
        if (std::string_view(kind.name) == "spreadsheet")
            line.back() = '\n';
        fwrite(line.data(), 1, line.size(), file);
    }
    fclose(file);
}

std::string label_of(const std::string &path, const Kind &kind, int64_t rows) {
    const bool is_sheet = std::string_view(kind.name) == "spreadsheet";
    const std::string class_name = is_sheet ? "SPREADSHEET" : "TABLE";
    std::string columns;
    int start = 1;
    for (const Column &column : kind.columns) {
        columns += std::string("OBJECT = ") + (is_sheet ? "FIELD" : "COLUMN") +
                   "\nNAME = C\nDATA_TYPE = " + column.type + "\nSTART_BYTE = " + std::to_string(start) +
                   "\nBYTES = " + std::to_string(column.bytes) + "\nEND_OBJECT\n";
        start += column.bytes;
    }
    return "^" + class_name + " = \"" + path + "\"\nOBJECT = " + class_name + "\nINTERCHANGE_FORMAT = " + kind.format +
           "\nFIELD_DELIMITER = COMMA\nROWS = " + std::to_string(rows) + "\nROW_BYTES = " + std::to_string(start - 1) +
           "\n" + columns + "END_OBJECT\nEND\n";
}

void measure(const Kind &kind, const std::string &path, int64_t rows) {
    write_data(path, kind, rows);
    const OdlTree root(OdlParseLabelString(label_of(path, kind, rows).c_str(), nullptr, 0, 1));
    const TableProduct product = tb_read_product(root.get());
    const TableInfo &table = product.tables.at(0);
    const ColumnView view(table);
    const auto reader = tb_open_reader(product.file, table);
    if (!reader || reader->rows_present() != rows)
        exit(EXIT_FAILURE);

    std::string text;
    size_t bytes = 0;
    double start = now();
    for (int64_t row = 0; row < rows; ++row) {
        text.clear();
        for (int64_t i = 0; i < view.size(); ++i)
            view.append(reader.get(), row, i, &text);
        bytes += text.size();
    }
    const double in_order = (now() - start) / static_cast<double>(rows * view.size());

    constexpr int64_t jumps = 20000;
    std::mt19937_64 random(2);
    start = now();
    for (int64_t i = 0; i < jumps; ++i)
        view.append(reader.get(), static_cast<int64_t>(random() % static_cast<uint64_t>(rows)), i % view.size(), &text);
    const double at_random = (now() - start) / static_cast<double>(jumps);

    start = now();
    for (int64_t i = 0; i < jumps; ++i) {
        const auto again = tb_open_reader(product.file, table);
        view.append(again.get(), i % 64, 0, &text);
    }
    const double opened = (now() - start) / static_cast<double>(jumps);
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    printf(
        "%-12s %3lld columns: %6.1f ns a cell in order (%.0f MB of text), %8.0f at random, %8.0f opened for each; "
        "%ld MB at most\n",
        kind.name, static_cast<long long>(view.size()), in_order, static_cast<double>(bytes) / 1e6, at_random, opened,
        usage.ru_maxrss / 1024);
}

// The time from the label's text to that of the page.
double page_time(const std::string &label, int64_t first_row) {
    const double start = now();
    const OdlTree root(OdlParseLabelString(label.c_str(), nullptr, 0, 1));
    const TableProduct product = tb_read_product(root.get());
    const TableInfo &table = product.tables.at(0);
    const ColumnView view(table);
    const auto reader = tb_open_reader(product.file, table);
    std::string text;
    for (int64_t row = first_row; row < first_row + 100; ++row) {
        for (int64_t i = 0; i < view.size(); ++i) {
            if (!reader || !view.append(reader.get(), row, i, &text))
                exit(EXIT_FAILURE);
        }
    }
    return now() - start;
}

void measure_pages(const std::string &path) {
    const Kind kind = {"huge", "BINARY", std::vector<Column>(30, {"MSB_INTEGER", 4})};
    constexpr int64_t row_bytes = 120;
    constexpr int64_t rows = 100'000'000'000 / row_bytes;
    write_data(path, kind, 0);
    std::error_code refused;
    std::filesystem::resize_file(path, rows * row_bytes, refused);
    if (refused) {
        printf("no sparse file of 100 GB can be made here\n");
        return;
    }
    const std::string label = label_of(path, kind, rows);
    const double first = page_time(label, 0);
    printf("100 GB: first page %.2f ms, last page %.2f ms\n", first / 1e6, page_time(label, rows - 100) / 1e6);
}

}  // namespace

int main(int argc, char **argv) {
    const int64_t rows = argc > 1 && atoll(argv[1]) > 0 ? atoll(argv[1]) : 2000000;
    const Kind kinds[] = {
        {"ascii", "ASCII", std::vector<Column>(8, {"ASCII_REAL", 12})},
        {"integers", "BINARY", std::vector<Column>(8, {"MSB_INTEGER", 4})},
        {"singles", "BINARY", std::vector<Column>(8, {"PC_REAL", 4})},
        {"doubles", "BINARY", std::vector<Column>(8, {"PC_REAL", 8})},
        {"vax", "BINARY", std::vector<Column>(8, {"VAX_REAL", 4})},
        {"spreadsheet", "ASCII", std::vector<Column>(8, {"ASCII_INTEGER", 6})},
    };
    const std::string path = std::filesystem::temp_directory_path() / "lumacart-table-bench.dat";
    for (const Kind &kind : kinds)
        measure(kind, path, rows);
    measure_pages(path);
    std::filesystem::remove(path);
    return 0;
}
