#include "support/hex.h"
#include "tables/model/column_text.h"
#include "tables/model/value_lists.h"

#include <gtest/gtest.h>

#include <string>

namespace {

FieldSpan span_of(const std::string &bytes) {
    return {reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size()};
}

// The field as the formatter of a column of that type and display format shows it.
std::string shown(const char *type, const std::string &hex, const char *display = "TEXT",
                  const char *table_format = "BINARY") {
    TableInfo table;
    table.interchange_format = table_format;
    ColumnInfo column;
    column.data_type = type;
    column.display_format = display;
    const std::string bytes = from_hex(hex);
    return tb_format_column_value_1(column, span_of(bytes).data(), static_cast<int64_t>(bytes.size()), table);
}

TEST(FieldText, Types) {
    const std::tuple<const char *, const char *, const char *> cases[] = {
        {"CHARACTER", "20 41 00 42 7f ff 20", "A.B.."},
        {"ASCII REAL", "20 20 20", ""},
        {"LSB INTEGER", "ffff", "-1"},
        {"LSB UNSIGNED INTEGER", "ffff", "65535"},
        {"VAX INTEGER", "80", "-128"},
        {"MSB INTEGER", "80000000", "-2147483648"},
        {"BOOLEAN", "80000000", "2147483648"},
        {"PC INTEGER", "000000000080", "-140737488355328"},
        {"UNSIGNED INTEGER", "ffffffffffff", "281474976710655"},
        {"SUN INTEGER", "8000000000000000", "-9223372036854775808"},
        {"MSB UNSIGNED INTEGER", "ffffffffffffffff", "18446744073709551615"},
        {"MSB INTEGER", "010203", "***"},  // no integer has three bytes
        {"IEEE REAL", "3dcccccd", "0.1"},
        {"PC REAL", "9a9999999999b93f", "0.1"},
        {"REAL", "7f7fffff", "3.4028235e+38"},
        {"PC REAL", "0000000000000080 ff3f", "1"},
        {"MAC REAL", "ff800000", "-Inf"},
        {"LSB IEEE REAL", "0000c0ff", "NaN"},
        {"VAX REAL", "80400000", "1"},
        {"VAX DOUBLE", "80c0000000000000", "-1"},
        {"VAX REAL", "00800000", "NaN"},  // reserved operand
        {"VAXG REAL", "1040000000000000", "1"},
        {"VAXG REAL", "80400000", "****"},
        {"VAXG REAL", "00c00000 00000000 00000000 00000000", "-0.5"},
        {"COMPLEX", "3f800000 c0000000", "1 -2"},
        {"PC COMPLEX", "0000803f 000000c0", "1 -2"},
        {"VAX COMPLEX", "80400000 80c00000", "1 -1"},
        {"COMPLEX", "3f80000000", "*****"},
        {"LSB BIT STRING", "0180", "10000000 00000001"},
        {"MSB BIT STRING", "0180", "00000001 10000000"},
        {"IBM REAL", "41100000", "****"},
        {"Unknown", "41", "*"},
    };
    for (const auto &[type, hex, text] : cases)
        EXPECT_EQ(shown(type, hex), text) << type << " " << hex;
}

TEST(FieldText, DisplayFormats) {
    const std::tuple<const char *, const char *, const char *, const char *> cases[] = {
        {"HEX", "BINARY", "01020304ff", "01020304 ff"},
        {"OCTAL", "BINARY", "01 08 3f", "011077"},
        {"OCTAL", "BINARY", "40 ff", "10377"},  // the third digit of the first byte is written over
        {"OCTAL", "BINARY", "01010140 40", "01010110 100"},
        {"BINARY", "ASCII", "05", "00000101"},
        {"TEXT", "ASCII", "3132", "12"},  // whatever the type
        {"TEXT", "NONE", "3132", "12594"},
        {"SHAPE", "BINARY", "3132", "**"},
    };
    for (const auto &[display, table_format, hex, text] : cases)
        EXPECT_EQ(shown("MSB INTEGER", hex, display, table_format), text) << display << " " << hex;
    EXPECT_EQ(tb_format_column_value_1({}, nullptr, -1, {}), "****");
}

TEST(FieldText, BitColumns) {
    const struct {
        const char *parent;
        const char *hex;
        int64_t start_bit;
        int64_t bits;
        int64_t item;
        const char *text;
    } cases[] = {
        {"MSB BIT STRING", "e0000000", 1, 3, 1, "7"},  // no sign is extended
        {"MSB BIT STRING", "12345678", 5, 8, 1, "35"},
        {"MSB BIT STRING", "12345678", 1, 4, 8, "8"},
        {"MSB BIT STRING", "ffff", 9, 16, 1, "65280"},    // bits beyond the bytes are 0
        {"MSB BIT STRING", "ff00000001", 1, 40, 1, "1"},  // the last 32 of 40
        {"MSB BIT STRING", "ff", 0, 4, 1, "7"},
        {"MSB BIT STRING", "ff", INT64_MIN, 4, 1, "0"},
        {"MSB BIT STRING", "ff", INT64_MAX, INT64_MAX, 2, "0"},
        {"MSB BIT STRING", "ff", 1, 0, 1, "0"},
        {"LSB BIT STRING", "01020304", 1, 8, 1, "4"},
        {"LSB BIT STRING", "0102", 1, 8, 1, "2"},
        {"LSB BIT STRING", "010203", 1, 8, 1, "1"},       // not turned round
        {"LSB BIT STRING", "01020004", 1, 16, 1, "513"},  // measured as two bytes
        {"LSB BIT STRING", "00020304", 1, 16, 1, "2"},
    };
    TableInfo table;
    for (const auto &at : cases) {
        ColumnInfo bits;
        bits.data_type = "INTEGER";
        bits.start_byte = at.start_bit;
        bits.bytes = at.bits;
        const std::string bytes = from_hex(at.hex);
        int64_t width = 0;
        EXPECT_EQ(tb_format_bit_column_value_1(table, bits, span_of(bytes), at.item, &width, at.parent), at.text)
            << at.hex << " " << at.start_bit;
        EXPECT_EQ(width, 4);
    }
    int64_t width = 0;
    ColumnInfo unknown;
    unknown.bytes = 3;
    unknown.start_byte = 1;
    EXPECT_EQ(tb_justify_bit_column_value_1(unknown, span_of("\xe0"), 1, &width, true),
              (std::array<uint8_t, 4>{255, 255, 255, 255}));
    EXPECT_EQ(tb_format_bit_column_value_1(table, unknown, {}, 1, &width, ""), "****");
}

TEST(FieldText, ValuesOfLabels) {
    EXPECT_EQ(tb_normalised("\"fixed__length \""), "FIXED LENGTH");
    EXPECT_EQ(search_string_array_1(tb_data_types, tb_data_types.back()), std::ssize(tb_data_types) - 1);
    EXPECT_EQ(search_string_array_1(tb_data_types, "INT"), -1);
}

}  // namespace
