// The input is the body of a label, a zero byte, and the bytes of the data file. All tables are read as text, in order
// and at random places; both must agree. Their labels are flattened and their columns summed up.
#include "base/notice.h"
#include "base/text.h"
#include "data_file.h"
#include "tables/model/browser_position.h"
#include "tables/model/column_summary.h"
#include "tables/tables.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

constexpr int64_t most_tables = 4;
constexpr int64_t most_rows = 12;  // looked at from either end
constexpr int64_t most_fields = 40;

std::string cell(const ColumnView &view, TableReader *reader, int64_t row, int64_t i) {
    std::string text;
    return view.append(reader, row, i, &text) ? text : "(none)";
}

void look_at(const ColumnView &view, TableReader *forward, TableReader *backward, int64_t first, int64_t last) {
    const int64_t fields = std::min(view.size(), most_fields);
    std::vector<std::string> cells;
    for (int64_t row = first; row <= last; ++row)
        for (int64_t i = 0; i < fields; ++i)
            cells.push_back(cell(view, forward, row, i));
    for (int64_t row = last; row >= first; --row)
        for (int64_t i = fields - 1; i >= 0; --i) {
            require(cell(view, backward, row, i) == cells.back());
            cells.pop_back();
        }
}

void read_table(const TableFileInfo &file, TableInfo *table) {
    for (const char *display : {"TEXT", "OCTAL"}) {
        for (ColumnInfo &column : table->columns)
            column.display_format = display;
        const ColumnView view(*table);
        require(view.size() <= tb_most_columns);
        for (int64_t i = 0; i < std::min(view.size(), most_fields); ++i)
            require(!view.name(i).empty() || !view.data_type(i).empty() || view.unit(i).empty());
        const auto forward = tb_open_reader(file, *table);
        const auto backward = tb_open_reader(file, *table);
        require(!forward == !backward);
        if (!forward)
            return;
        look_at(view, forward.get(), backward.get(), 0, most_rows);
        const int64_t present = forward->rows_present();
        require(present >= 0 && present <= table->rows);
        look_at(view, forward.get(), backward.get(), std::max<int64_t>(present - most_rows, 0), present);
    }
}

// Columns are reached as a browser reaches them.
void sum_up_columns(TableProduct *product) {
    BrowserPosition at = tb_start_of(product);
    do {
        toggle_show_items_flag(&at);
        for (int64_t i = 0; at.current_column() && i < most_fields; ++i, tb_move_right(&at, 1)) {
            for (const bool of_bits : {false, true}) {
                const ColumnSummary summary =
                    ts_summarize_column_1({&product->file, at.current_table(), at.current_column(),
                                           at.current_bit_column(), at.item, at.bit_item, of_bits});
                require(summary.rows_read <= at.current_table()->rows);
                require(summary.text.empty() || summary.text.back() == '\n');
            }
        }
    } while (tb_next_table(&at));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static FILE *const nowhere = fopen("/dev/null", "w");
    Oa_message_fptr = nowhere;
    util_set_notice_hook([](NoticeKind, const std::string &) {});
    const std::string_view input(reinterpret_cast<const char *>(data), size);
    const size_t label_end = std::min(input.find('\0'), input.size());
    const DataFile file(input.substr(std::min(label_end + 1, input.size())));
    std::string label;
    for (const char *pointer : {"TABLE", "SPREADSHEET", "INDEX"})
        label += util_format("^%s = (\"%s\", 1)\n", pointer, file.path().c_str());
    label += std::string(input.substr(0, label_end)) + "\nEND\n";
    const OdlTree tree(OdlParseLabelString(label.c_str(), nullptr, 0, 1));
    if (!tree)
        return 0;
    TableProduct product = tb_read_product(tree.get());
    product.tables.resize(std::min<size_t>(product.tables.size(), most_tables));
    for (TableInfo &table : product.tables) {
        require(table.column_count() <= tb_most_columns);
        read_table(product.file, &table);
        TableInfo with_arrays = table;
        FlatTable arrays;
        tb_add_arrays(&with_arrays, &arrays);
        require(with_arrays.column_count() <= tb_most_columns);
        if (arrays.root)
            read_table(product.file, &with_arrays);
        FlatTable flat;
        if (flatten_table(const_cast<ObjDesc *>(table.object), &flat) == 0)
            require(OaCheckODLTree(flat.root ? flat.root.get() : tree.get()) == 0);
    }
    sum_up_columns(&product);
    return 0;
}
