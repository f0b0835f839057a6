// The tables of a label: which objects they are, what their keywords say, where their data are.
#include "tables/model/table_info.h"

#include "base/file.h"
#include "base/text.h"
#include "tables/model/keyword_text.h"
#include "tables/model/line_index.h"
#include "tables/model/out_of_memory.h"
#include "tables/model/value_lists.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace {

constexpr std::string_view formats_known = "BINARY,ASCII,NONE";
constexpr size_t longest_class = 50;
constexpr std::string_view class_ends[] = {"TABLE",     "SERIES",     "SPECTRUM",
                                           "PALLETTE",  // as labels have it
                                           "GAZETTEER", "SPREADSHEET"};

// --- Pointers -----------------------------------------------------------------------------------------------------

using PointerMap = std::map<std::string_view, std::vector<const Kwd *>>;

// The pointers of a label by the names that they point to, in its order.
PointerMap pointers_of(const ObjDesc *root) {
    PointerMap pointers;
    for (const ObjDesc *node = root; node; node = OdlTraverseTree(node, root->level))
        for (const Kwd *keyword = node->first_keyword; keyword; keyword = keyword->right_sibling)
            if (keyword->name && *keyword->name == '^')
                pointers[keyword->name + 1].push_back(keyword);
    return pointers;
}

// The path under which the file opens; else the last name tried.
std::string find_data_file(const std::string &name, const char *label_file) {
    const auto opens = [](const std::string &path) { return util_open_regular(path.c_str()) != nullptr; };
    std::string path = name;
    if (opens(path))
        return path;
    path = util_lower(name);
    if (opens(path) || name.find('/') != std::string::npos)
        return path;
    const std::string label = label_file ? label_file : "";
    const std::string directory = label.substr(0, label.rfind('/') + 1);
    path = directory + name;
    if (opens(path))
        return path;
    return directory + util_lower(name);
}

// Finds where the data of tables begin; keeps the lines of the text files that it counted, for tables may take turns.
class DataFinder {
  public:
    explicit DataFinder(const TableProduct &product) : file_(product.file), pointers_(pointers_of(product.root)) {}

    void locate(TableInfo *table) {
        const Kwd *pointer = pointer_of(*table);
        int64_t location = 1;
        int location_type = ODL_RECORD_LOCATION;
        const OaPtr<char> name(pointer ? OdlGetFileName(pointer, &location, &location_type) : nullptr);
        if (!name)
            return;
        table->file_name = find_data_file(name.get(), pointer->file_name);
        table->start_byte =
            location_type == ODL_BYTE_LOCATION ? std::max<int64_t>(location, -1) : start_of_record(location, *table);
    }

  private:
    static constexpr size_t most_counted = 16;
    struct CountedFile {
        FilePtr file;
        std::unique_ptr<LineIndex> lines;
    };

    // Of several pointers the one whose place among them is the table's place among those of its class, else the last.
    const Kwd *pointer_of(const TableInfo &table) {
        const std::string class_name = tb_class_of(table.object);
        auto found = pointers_.find(class_name);
        const int64_t before = tables_before_[class_name]++;
        if (found == pointers_.end())
            found = pointers_.find(table.name);
        if (found == pointers_.end())
            return nullptr;
        const std::vector<const Kwd *> &named = found->second;
        return named[std::min(static_cast<size_t>(before), named.size() - 1)];
    }

    // 1-based byte of a 1-based record; -1 when it is no position.
    int64_t start_of_record(int64_t record, const TableInfo &table) {
        if (file_.record_type == "STREAM")
            return record == 1 ? 1 : start_of_line(record, table.file_name);
        const int64_t record_bytes = file_.record_bytes >= 0 ? file_.record_bytes : table.row_bytes;
        int64_t start = -1;
        if (record < 1 || __builtin_mul_overflow(record - 1, record_bytes, &start) || start == INT64_MAX)
            return -1;
        return start + 1;
    }

    int64_t start_of_line(int64_t line, const std::string &path) {
        auto counted = counted_.find(path);
        if (counted == counted_.end()) {
            if (counted_.size() >= most_counted)
                counted_.clear();
            counted = counted_.try_emplace(path).first;
            counted->second.file = util_open_regular(path.c_str());
            if (const FilePtr &file = counted->second.file)
                counted->second.lines = std::make_unique<LineIndex>(fileno(file.get()), 0);
        }
        const CountedFile &found = counted->second;
        // Each line has a byte at least.
        if (!found.lines || line < 1 || line > util_file_size(found.file.get()))
            return -1;
        const int64_t offset = found.lines->offset_of(line - 1);
        return offset < 0 ? -1 : offset + 1;
    }

    const TableFileInfo &file_;
    PointerMap pointers_;
    std::map<std::string, int64_t> tables_before_;  // by class
    std::map<std::string, CountedFile> counted_;    // by path
};

// Kept when a list has it.
std::string listed(const char *keyword, const ObjDesc *node, std::span<const std::string_view> list) {
    const std::string value = tb_normalised(tb_text_of(keyword, node));
    return search_string_array_1(list, value) >= 0 ? value : "Unknown";
}

}  // namespace

bool TableInfo::is_spreadsheet() const {
    return tb_class_of(object).ends_with("SPREADSHEET");
}

bool tb_is_table(const ObjDesc *node) {
    if (!node || node->is_a_group)
        return false;
    const std::string name = tb_class_of(node).substr(0, longest_class);
    return name == "INDEX" || std::ranges::any_of(class_ends, [&](auto end) { return name.ends_with(end); });
}

void tb_get_file_info(TableProduct *product) {
    const ObjDesc *root = product->root;
    TableFileInfo &file = product->file;
    file.record_type = listed("RECORD_TYPE", root, tb_record_types);
    file.blocking_type = listed("BLOCKING_TYPE", root, tb_blocking_types);
    file.block_bytes = tb_number_of({"BLOCK_BYTES"}, root, -1);
    file.block_records = tb_number_of({"BLOCK_RECORDS"}, root, -1);
    file.record_bytes = tb_number_of({"RECORD_BYTES"}, root, -1);
    file.file_records = tb_number_of({"FILE_RECORDS"}, root, -1);
}

void get_table_key_words(const ObjDesc *object, TableInfo *table, const TableFileInfo &file) {
    table->object = object;
    const std::string class_name = tb_class_of(object);
    table->type = class_name == "INDEX" ? "TABLE" : class_name;
    table->name = tb_name_of(object, class_name);
    table->rows = std::clamp<int64_t>(tb_number_of({"ROWS", "RECORDS"}, object, 1), 0, tb_most_rows);
    table->row_bytes = tb_number_of({"ROW_BYTES", "BYTES"}, object, file.record_bytes);
    table->row_prefix_bytes = std::max<int64_t>(tb_number_of({"ROW_PREFIX_BYTES"}, object, 0), 0);
    table->row_suffix_bytes = std::max<int64_t>(tb_number_of({"ROW_SUFFIX_BYTES"}, object, 0), 0);
    for (const char *keyword : {"INTERCHANGE_FORMAT", "FORMAT"}) {
        const std::string format = tb_normalised(tb_text_of(keyword, object));
        if (format.empty())
            continue;
        if (util_contains(formats_known, format))
            table->interchange_format = format;
        break;
    }
}

void tb_get_table_info(TableProduct *product) {
    product->tables.clear();
    if (!product->root)
        return;
    tb_or_out_of_memory("Lumacart tb_get_table_info ran out of memory", [&] {
        DataFinder finder(*product);
        for (const ObjDesc *node = product->root; node; node = OdlTraverseTree(node, product->root->level)) {
            if (!tb_is_table(node))
                continue;
            TableInfo &table = product->tables.emplace_back();
            get_table_key_words(node, &table, product->file);
            finder.locate(&table);
            tb_get_column_info_2(node, &table);
        }
    });
}

TableProduct tb_read_product(const ObjDesc *root) {
    TableProduct product;
    product.root = root;
    tb_get_file_info(&product);
    tb_get_table_info(&product);
    return product;
}

TableInfo tb_table_of(const TableProduct &product, const ObjDesc *object) {
    for (const TableInfo &table : product.tables) {
        if (table.object == object)
            return table;
    }
    TableInfo table;
    get_table_key_words(object, &table, product.file);
    DataFinder(product).locate(&table);
    tb_get_column_info_2(object, &table);
    return table;
}

std::string tb_columns_remark(const TableInfo &table) {
    if (!table.columns_left_out)
        return "";
    return util_format("The table has more columns than can be shown. The first %lld are.",
                       static_cast<long long>(table.column_count()));
}
