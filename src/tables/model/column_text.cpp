#include "tables/model/column_text.h"

#include "tables/model/out_of_memory.h"
#include "tables/model/value_lists.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int64_t most_asterisks = 32767;

// Beside the entries of tb_data_types, one by one. IBM's forms have no formatter.
struct TypeFormat {
    std::string_view type;
    FieldFormat format;
};
constexpr TypeFormat type_formats[] = {
    {"ASCII COMPLEX", tb_append_char},
    {"ASCII INTEGER", tb_append_char},
    {"ASCII REAL", tb_append_char},
    {"BOOLEAN", tb_append_msb_unsigned},
    {"CHARACTER", tb_append_char},
    {"COMPLEX", tb_append_msb_ieee_complex},
    {"DATE", tb_append_char},
    {"FLOAT", tb_append_msb_ieee_real},
    {"IBM COMPLEX", nullptr},
    {"IBM INTEGER", nullptr},
    {"IBM REAL", nullptr},
    {"IBM UNSIGNED INTEGER", nullptr},
    {"IEEE COMPLEX", tb_append_msb_ieee_complex},
    {"IEEE REAL", tb_append_msb_ieee_real},
    {"INTEGER", tb_append_msb_signed},
    {"LSB BIT STRING", tb_append_lsb_binary},
    {"LSB IEEE COMPLEX", tb_append_lsb_ieee_complex},
    {"LSB IEEE REAL", tb_append_lsb_ieee_real},
    {"LSB INTEGER", tb_append_lsb_signed},
    {"LSB UNSIGNED INTEGER", tb_append_lsb_unsigned},
    {"MAC COMPLEX", tb_append_msb_ieee_complex},
    {"MAC INTEGER", tb_append_msb_signed},
    {"MAC REAL", tb_append_msb_ieee_real},
    {"MAC UNSIGNED INTEGER", tb_append_msb_unsigned},
    {"MSB BIT STRING", tb_append_msb_binary},
    {"MSB IEEE COMPLEX", tb_append_msb_ieee_complex},
    {"MSB IEEE REAL", tb_append_msb_ieee_real},
    {"MSB INTEGER", tb_append_msb_signed},
    {"MSB UNSIGNED INTEGER", tb_append_msb_unsigned},
    {"PC COMPLEX", tb_append_lsb_ieee_complex},
    {"PC INTEGER", tb_append_lsb_signed},
    {"PC REAL", tb_append_lsb_ieee_real},
    {"PC UNSIGNED INTEGER", tb_append_lsb_unsigned},
    {"REAL", tb_append_msb_ieee_real},
    {"SUN COMPLEX", tb_append_msb_ieee_complex},
    {"SUN INTEGER", tb_append_msb_signed},
    {"SUN REAL", tb_append_msb_ieee_real},
    {"SUN UNSIGNED INTEGER", tb_append_msb_unsigned},
    {"TIME", tb_append_char},
    {"UNSIGNED INTEGER", tb_append_msb_unsigned},
    {"VAX COMPLEX", tb_append_vax_complex},
    {"VAX DOUBLE", tb_append_vax_real},
    {"VAX INTEGER", tb_append_lsb_signed},
    {"VAX REAL", tb_append_vax_real},
    {"VAX UNSIGNED INTEGER", tb_append_lsb_unsigned},
    {"VAXG COMPLEX", tb_append_vaxg_complex},
    {"VAXG REAL", tb_append_vaxg_real},
};
static_assert(std::ranges::is_sorted(type_formats, {}, &TypeFormat::type));

constexpr FieldFormat bit_type_formats[] = {
    tb_append_msb_unsigned,  // BOOLEAN
    tb_append_msb_signed,    // INTEGER
    tb_append_msb_signed,    // MSB INTEGER
    tb_append_msb_unsigned,  // MSB UNSIGNED INTEGER
    tb_append_msb_unsigned,  // UNSIGNED INTEGER
};

constexpr FieldFormat display_formats[] = {tb_append_msb_binary, tb_append_hex, tb_append_octal, tb_append_char};

FieldFormat format_of_type(std::string_view type) {
    const auto found = std::ranges::lower_bound(type_formats, type, {}, &TypeFormat::type);
    return found != std::end(type_formats) && found->type == type ? found->format : nullptr;
}

FieldFormat format_of_display(int display) {
    return display < 0 ? nullptr : display_formats[display];
}

// Removes the blanks at both ends of what was appended behind `begin`.
void trim_from(size_t begin, std::string *text) {
    const size_t last = text->find_last_not_of(' ');
    text->resize(last == std::string::npos || last < begin ? begin : last + 1);
    const size_t first = text->find_first_not_of(' ', begin);
    if (first != std::string::npos && first > begin)
        text->erase(begin, first - begin);
}

FieldSpan without_blanks(FieldSpan bytes) {
    while (!bytes.empty() && bytes.back() == ' ')
        bytes = bytes.first(bytes.size() - 1);
    while (!bytes.empty() && bytes.front() == ' ')
        bytes = bytes.subspan(1);
    return bytes;
}

// --- Bits ---------------------------------------------------------------------------------------------------------

constexpr int64_t result_bits = 32;

// The last bits of an item, as a number; bits of the bytes count from 1, the highest of the first byte. The first
// `turned` bytes are taken in the opposite order.
uint32_t bits_of_item(const ColumnInfo &bit_column, FieldSpan bytes, size_t turned, int64_t bit_item, bool is_signed) {
    const int64_t count = bit_column.bytes;
    int64_t last = 0;  // from 0, the bit behind the item's last
    if (count < 1 || __builtin_mul_overflow(bit_item, count, &last) ||
        __builtin_add_overflow(last, bit_column.start_byte, &last) || last <= 1)
        return 0;
    --last;
    const auto bit_at = [&](int64_t bit) {
        const auto byte = static_cast<uint64_t>(bit) / 8;
        if (bit < 0 || byte >= bytes.size())
            return 0U;
        return bytes[byte < turned ? turned - 1 - byte : byte] >> (7 - bit % 8) & 1U;
    };
    const int64_t kept = std::min(count, result_bits);
    uint32_t value = 0;
    for (int64_t bit = last - kept; bit < last; ++bit)
        value = value << 1 | bit_at(bit);
    if (is_signed && kept < result_bits && bit_at(last - kept))
        value |= ~uint32_t{0} << kept;
    return value;
}

std::array<uint8_t, 4> high_byte_first(uint32_t value) {
    return {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16), static_cast<uint8_t>(value >> 8),
            static_cast<uint8_t>(value)};
}

}  // namespace

FieldFormat tb_column_format(const TableInfo &table, const ColumnInfo &column) {
    const int display = search_string_array_1(tb_display_formats, column.display_format);
    if (search_string_array_1(tb_table_formats, table.interchange_format) != TB_ASCII_TABLE && display == TB_SHOW_TEXT)
        return format_of_type(column.data_type);
    return format_of_display(display);
}

FieldFormat tb_bit_column_format(const TableInfo &table, const ColumnInfo &bit_column) {
    const int display = search_string_array_1(tb_display_formats, bit_column.display_format);
    if (search_string_array_1(tb_table_formats, table.interchange_format) == TB_ASCII_TABLE || display != TB_SHOW_TEXT)
        return format_of_display(display);
    const int type = search_string_array_1(tb_bit_data_types, bit_column.data_type);
    return type < 0 ? nullptr : bit_type_formats[type];
}

void tb_append_asterisks(int64_t width, std::string *text) {
    text->append(width < 1 ? 4 : static_cast<size_t>(std::min(width, most_asterisks)), '*');
}

void tb_append_field(FieldFormat format, FieldSpan bytes, std::string *text) {
    if (format == tb_append_char) {
        tb_append_char(without_blanks(bytes), text);
        return;
    }
    const size_t begin = text->size();
    if (!format || !format(bytes, text))
        tb_append_asterisks(static_cast<int64_t>(bytes.size()), text);
    else
        trim_from(begin, text);
}

void tb_append_bit_field(FieldFormat format, const ColumnInfo &bit_column, FieldSpan bytes, int64_t bit_item,
                         bool swaps, std::string *text) {
    // Only two or four bytes are turned round; a zero byte ends them.
    size_t turned = 0;
    if (swaps && !bytes.empty())
        turned = strnlen(reinterpret_cast<const char *>(bytes.data()), bytes.size());
    if (turned != 2 && turned != 4)
        turned = 0;
    const auto value = high_byte_first(bits_of_item(bit_column, bytes, turned, bit_item, false));
    tb_append_field(format, value, text);
}

std::string tb_format_column_value_1(const ColumnInfo &column, const uint8_t *bytes, int64_t width,
                                     const TableInfo &table) {
    return tb_or_out_of_memory("Lumacart tb_format_column_value_1 ran out of memory", [&] {
        std::string text;
        if (width < 1)
            tb_append_asterisks(width, &text);
        else
            tb_append_field(tb_column_format(table, column), FieldSpan(bytes, static_cast<size_t>(width)), &text);
        return text;
    });
}

std::string tb_format_bit_column_value_1(const TableInfo &table, const ColumnInfo &bit_column, FieldSpan bytes,
                                         int64_t bit_item, int64_t *out_width, const std::string &parent_type) {
    *out_width = result_bits / 8;
    return tb_or_out_of_memory("Lumacart tb_format_bit_column_value_1 ran out of memory", [&] {
        std::string text;
        tb_append_bit_field(tb_bit_column_format(table, bit_column), bit_column, bytes, bit_item,
                            parent_type == "LSB BIT STRING", &text);
        return text;
    });
}

std::array<uint8_t, 4> tb_justify_bit_column_value_1(const ColumnInfo &bit_column, FieldSpan bytes, int64_t bit_item,
                                                     int64_t *out_width, bool is_signed) {
    *out_width = result_bits / 8;
    return high_byte_first(bits_of_item(bit_column, bytes, 0, bit_item, is_signed));
}
