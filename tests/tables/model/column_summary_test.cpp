#include "tables/model/column_summary.h"

#include "support/scratch.h"
#include "support/sdt_tree.h"
#include "support/silent_reports.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

// A table of one column; its rows are the column's bytes.
struct OneColumn {
    const char *format;
    const char *type;
    int64_t bytes;
    std::string data;
    int64_t rows = 0;  // 0: as many as there are
    std::string more = {};
};

struct ColumnProduct {
    explicit ColumnProduct(const OneColumn &column) {
        const int64_t rows = column.rows ? column.rows : static_cast<int64_t>(column.data.size()) / column.bytes;
        folder.write("t.tab", column.data);
        const std::string label =
            folder.write("t.lbl", "^TABLE = \"t.tab\"\n" +
                                      table(rows, column.bytes, ::column(column.type, 1, column.bytes, column.more),
                                            util_format("INTERCHANGE_FORMAT = %s\n", column.format)) +
                                      "END\n");
        root.reset(OaParseLabelFile(label.c_str(), nullptr, 0, 1));
        product = tb_read_product(root.get());
        request = {&product.file, &product.tables.at(0), &product.tables.at(0).columns.at(0)};
    }
    ColumnSummary summary() const { return ts_summarize_column_1(request); }

    ScratchFolder folder;
    OdlTree root;
    TableProduct product;
    SummaryRequest request;
};

std::string numbers(const char *minimum, const char *maximum, const char *average) {
    return util_format("     Minimum:             %s\n     Maximum:             %s\n     Approximate Average: %s\n",
                       minimum, maximum, average);
}

const std::string suspicious =
    "\n     WARNING: Numeric column contains suspicious characters.\n"
    "     WARNING: Computed values may be incorrect.\n\n";

TEST(ColumnSummary, Lines) {
    const std::pair<OneColumn, std::string> cases[] = {
        {{"ASCII", "ASCII_REAL", 5, "  1.0  2.0  3.0"}, numbers("1.000000e+00", "3.000000e+00", "2.000000e+00")},
        {{"ASCII", "ASCII_REAL", 5, "+1.E1 -.5      "}, numbers("-5.000000e-01", "1.000000e+01", "4.750000e+00")},
        {{"ASCII", "ASCII_REAL", 5, "1.5D3N/A   2.5 "},
         suspicious + numbers("1.500000e+00", "2.500000e+00", "2.000000e+00")},
        {{"ASCII", "ASCII_REAL", 6, "1e9999-1e-99"}, numbers("-1.000000e-99", "inf", "inf")},
        {{"ASCII", "ASCII_REAL", 3, "         "}, ""},
        {{"ASCII", "ASCII_INTEGER", 8, "       1      +2      -9"}, numbers("-9", "2", "-2.000000")},
        {{"ASCII", "ASCII_INTEGER", 20, "99999999999999999999                 0.5"},
         suspicious + numbers("0", "9223372036854775807", "4611686018427387904.000000")},
        {{"ASCII", "UNSIGNED_INTEGER", 2, "1 -1"},
         suspicious + numbers("1", "18446744073709551615", "9223372036854775808.000000")},
        {{"BINARY", "MSB_INTEGER", 2, "\xff\xfe\0\x4"s}, numbers("-2", "4", "1.000000")},
        {{"BINARY", "PC_UNSIGNED_INTEGER", 4, "\xff\xff\xff\xff"s},
         numbers("4294967295", "4294967295", "4294967295.000000")},
        {{"BINARY", "IEEE_REAL", 4, "\x3f\x80\0\0\x7f\xc0\0\0\x40\x40\0\0"s},  // the second is not a number
         suspicious + numbers("1.000000e+00", "3.000000e+00", "2.000000e+00")},
        {{"ASCII", "CHARACTER", 3, "b  a%sb  \xff\1 "},
         "     Column contains: \n     .. -- 1 occurrence\n     a%s -- 1 occurrence\n     b -- 2 occurrences\n"},
        {{"ASCII", "DATE", 4, "19982001    "},
         "     Minimum: \n     Maximum: 2001\n     Column contains: \n      -- 1 occurrence\n"
         "     1998 -- 1 occurrence\n     2001 -- 1 occurrence\n"},
    };
    for (const auto &[column, text] : cases) {
        const ColumnSummary summary = ColumnProduct(column).summary();
        EXPECT_EQ(summary.text, text) << column.type << " " << column.data;
        EXPECT_EQ(summary.note, "");
        EXPECT_EQ(summary.outcome, SummaryOutcome::Done);
    }
}

TEST(ColumnSummary, BitColumnsItemsAndDisplayFormats) {
    ColumnProduct bits({"BINARY", "MSB_BIT_STRING", 1, "\x80\x20\xe0", 0,
                        "OBJECT = BIT_COLUMN\nNAME = B\nBIT_DATA_TYPE = MSB_INTEGER\nSTART_BIT = 1\nBITS = 3\n"
                        "END_OBJECT\nOBJECT = BIT_COLUMN\nNAME = C\nBIT_DATA_TYPE = BOOLEAN\nSTART_BIT = 1\n"
                        "BITS = 1\nITEMS = 2\nEND_OBJECT\n"});
    bits.request.of_bit_column = true;
    bits.request.bit_column = &bits.request.column->bit_columns.at(0);
    EXPECT_EQ(bits.summary().text, numbers("1", "7", "4.000000"));
    bits.request.bit_column = &bits.request.column->bit_columns.at(1);
    bits.request.bit_item = 2;
    EXPECT_EQ(bits.summary().text, "     Bit Column contains: \n     0 -- 2 occurrences\n     1 -- 1 occurrence\n");

    ColumnProduct items({"ASCII", "ASCII_INTEGER", 4, " 1 2 3 4", 0, "ITEMS = 2\nITEM_BYTES = 2\n"});
    items.request.item = 2;
    for (const char *format : {"TEXT", "HEX"}) {  // numbers stay numbers
        items.product.tables[0].columns[0].display_format = format;
        EXPECT_EQ(items.summary().text, numbers("2", "4", "3.000000")) << format;
    }
}

TEST(ColumnSummary, WhichTypesAndWidthsHaveOne) {
    const struct {
        const char *format;
        const char *type;
        int64_t bytes;
        bool is_bits;
        SummaryClass expected;
    } cases[] = {
        {"BINARY", "IEEE REAL", 8, false, SummaryClass::Real},
        {"BINARY", "IEEE REAL", 9, false, SummaryClass::None},
        {"BINARY", "VAX DOUBLE", 8, false, SummaryClass::None},
        {"ASCII", "ASCII REAL", 60, false, SummaryClass::Real},
        {"BINARY", "MSB INTEGER", 4, false, SummaryClass::Signed},
        {"BINARY", "MSB INTEGER", 8, false, SummaryClass::None},
        {"ASCII", "ASCII INTEGER", 8, false, SummaryClass::Signed},
        {"ASCII", "CHARACTER", 60, false, SummaryClass::Character},
        {"ASCII", "CHARACTER", 61, false, SummaryClass::None},
        {"ASCII", "TIME", 61, false, SummaryClass::None},
        {"BINARY", "IBM REAL", 4, false, SummaryClass::None},
        {"BINARY", "Unknown", 4, false, SummaryClass::None},
        {"BINARY", "UNSIGNED INTEGER", 4, true, SummaryClass::Unsigned},
        {"BINARY", "UNSIGNED INTEGER", 5, true, SummaryClass::None},
        {"BINARY", "BOOLEAN", 5, true, SummaryClass::Character},
        {"BINARY", "BOOLEAN", 1, false, SummaryClass::None},
    };
    TableInfo table;
    ColumnInfo column;
    for (const auto &c : cases) {
        table.interchange_format = c.format;
        column.data_type = c.type;
        column.bytes = c.bytes;
        EXPECT_EQ(ts_map_type_1(table, column, c.is_bits), c.expected) << c.type << c.bytes;
    }
    EXPECT_EQ(ColumnProduct({"BINARY", "IBM_REAL", 4, "1234"}).summary().note,
              "     Unable to display a summary for this data type and/or column size.\n");
}

TEST(ColumnSummary, CountsNoMoreThanSoManyDifferentTexts) {
    const std::string warning =
        " WARNING: Occurrence table exceeded maximum size. All values will not be counted in the table.\n";
    const auto data = [](int different, const std::string &behind) {
        std::string text;
        for (int i = 0; i < different; ++i)
            text += util_format("%03d", i);
        return text + behind;
    };
    const std::tuple<std::string, bool, const char *> cases[] = {
        {data(499, "000000"), false, "000 -- 3 occurrences"},
        {data(500, ""), false, "000 -- 1 occurrence"},
        {data(500, "000"), true, "000 -- 1 occurrence"},
        {data(600, ""), true, "000 -- 1 occurrence"},
    };
    for (const auto &[rows, warns, first] : cases) {
        const std::string text = ColumnProduct({"ASCII", "CHARACTER", 3, rows}).summary().text;
        EXPECT_EQ(text.starts_with(warning), warns);
        EXPECT_TRUE(util_contains(text, first)) << text;
        EXPECT_FALSE(util_contains(text, "500 --"));
    }
}

TEST(ColumnSummary, TellsWhatIsMissing) {
    const SilentReports silent;
    const OneColumn column{"ASCII", "ASCII_INTEGER", 1, "123"};
    const std::pair<std::function<void(ColumnProduct *)>, const char *> cases[] = {
        {[](ColumnProduct *p) { p->request.table = nullptr; }, "   There is no current table\n"},
        {[](ColumnProduct *p) { p->request.column = nullptr; }, "   There is no current column\n"},
        {[](ColumnProduct *p) { p->request.of_bit_column = true; }, "  There is no current bit column\n"},
        {[](ColumnProduct *p) { p->product.tables[0].file_name = "Unknown"; },
         "  The name of the data file is invalid or missing\n"},
        {[](ColumnProduct *p) { p->product.tables[0].row_bytes = -1; },
         "  The table's ROW_BYTES field is invalid or missing\n"},
        {[](ColumnProduct *p) { p->product.tables[0].columns[0].start_byte = -1; },
         "  The column's START_BYTES field is invalid or missing\n"},
        {[](ColumnProduct *p) { p->product.tables[0].columns[0].bytes = 0; },
         "  The column's BYTES field is invalid or missing\n"},
        {[](ColumnProduct *p) {
             p->request.of_bit_column = true;
             p->request.bit_column = p->request.column;
             p->product.tables[0].columns[0].start_byte = 0;
         },
         "  The bit column's START_BIT field is invalid or missing\n"},
        {[](ColumnProduct *p) { std::filesystem::remove(p->folder.file("t.tab")); },
         "  Unable to open the data file\n"},
    };
    for (const auto &[spoil, text] : cases) {
        ColumnProduct product(column);
        spoil(&product);
        const ColumnSummary summary = product.summary();
        EXPECT_EQ(summary.outcome, SummaryOutcome::Refused);
        EXPECT_EQ(summary.text, text);
    }
}

TEST(ColumnSummary, EndsWithTheFile) {
    ColumnProduct product({"ASCII", "ASCII_INTEGER", 2, " 1 3", INT32_MAX});
    ColumnSummary summary = product.summary();
    EXPECT_EQ(summary.text, numbers("1", "3", "2.000000"));
    EXPECT_EQ(summary.note, "0 bytes read. Current byte location in data file is 4");
    EXPECT_EQ(summary.outcome, SummaryOutcome::EndedEarly);
    EXPECT_EQ(summary.rows_read, 2);
    product.request.go_on = [](int64_t) { return false; };
    EXPECT_EQ(product.summary().outcome, SummaryOutcome::Stopped);
}

}  // namespace
