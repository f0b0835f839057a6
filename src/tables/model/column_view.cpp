#include "tables/model/column_view.h"

#include "base/text.h"
#include "tables/model/keyword_text.h"

#include <algorithm>

namespace {

constexpr size_t longest_unit = 256;

}  // namespace

ColumnView::ColumnView(const TableInfo &table, ColumnViewOptions options) : table_(table) {
    left_out_ = table.columns_left_out;
    for (const ColumnInfo &column : table.columns) {
        if (size() >= tb_most_columns) {
            left_out_ = true;
            break;
        }
        add_column(column, options);
    }
}

bool ColumnView::add(const ViewField &field) {
    if (size() >= tb_most_columns) {
        left_out_ = true;
        return false;
    }
    fields_.push_back(field);
    return true;
}

void ColumnView::add_column(const ColumnInfo &column, ColumnViewOptions options) {
    const int64_t items = options.items ? std::max<int64_t>(column.items, 1) : 1;
    const bool as_bits = options.bit_columns && !column.bit_columns.empty();
    std::vector<FieldFormat> formats;
    for (const ColumnInfo &bits : column.bit_columns)
        formats.push_back(as_bits ? tb_bit_column_format(table_, bits) : nullptr);
    const FieldFormat format = tb_column_format(table_, column);
    for (int64_t item = 1; item <= items; ++item) {
        if (!as_bits) {
            if (!add({&column, nullptr, item, 1, format}))
                return;
            continue;
        }
        for (size_t i = 0; i < formats.size(); ++i) {
            const ColumnInfo &bits = column.bit_columns[i];
            const int64_t bit_items = options.items ? std::max<int64_t>(bits.items, 1) : 1;
            for (int64_t bit_item = 1; bit_item <= bit_items; ++bit_item)
                if (!add({&column, &bits, item, bit_item, formats[i]}))
                    return;
        }
    }
}

std::string ColumnView::name(int64_t i) const {
    const ViewField &field = (*this)[i];
    std::string name = (field.bit_column ? field.bit_column : field.column)->name + field.column->repetition;
    const auto add_number = [&](int64_t items, int64_t item) {
        if (items > 1)
            name.append(1, '_').append(std::to_string(item));
    };
    add_number(field.column->items, field.item);
    if (field.bit_column)
        add_number(field.bit_column->items, field.bit_item);
    return name;
}

std::string ColumnView::unit(int64_t i) const {
    const ViewField &field = (*this)[i];
    const ObjDesc *node = (field.bit_column ? field.bit_column : field.column)->object;
    return std::string(util_trim(tb_text_of("UNIT", node), "\"' ").substr(0, longest_unit));
}

const std::string &ColumnView::data_type(int64_t i) const {
    const ViewField &field = (*this)[i];
    return (field.bit_column ? field.bit_column : field.column)->data_type;
}

int64_t ColumnView::width(int64_t i) const {
    const ViewField &field = (*this)[i];
    return (field.bit_column ? field.bit_column : field.column)->bytes;
}

std::string ColumnView::remark() const {
    if (!left_out_)
        return "";
    return util_format("The table has more columns than can be shown. The first %lld are.",
                       static_cast<long long>(size()));
}

bool ColumnView::append(TableReader *reader, int64_t row, int64_t i, std::string *text) const {
    const ViewField &at = (*this)[i];
    FieldBytes field;
    if (!reader->read(row, *at.column, at.item, &field)) {
        const bool is_described = field.offset >= 0 && at.column->bytes > 0;
        if (reader->gives_text() || is_described || row < 0 || row >= table_.rows)
            return false;
        tb_append_asterisks(at.column->bytes, text);
        return true;
    }
    if (at.bit_column) {
        tb_append_bit_field(at.format, *at.bit_column, field.bytes, at.bit_item, tb_swaps_bytes(*at.column), text);
    } else if (reader->gives_text()) {
        const auto *begin = reinterpret_cast<const char *>(field.bytes.data());
        text->append(util_trim({begin, field.bytes.size()}));
    } else {
        tb_append_field(at.format, field.bytes, text);
    }
    return true;
}
