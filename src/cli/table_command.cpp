#include "base/text.h"
#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/output.h"
#include "cli/product.h"
#include "cli/table_csv.h"
#include "cli/table_description.h"
#include "cli/table_fields.h"
#include "tables/model/column_summary.h"
#include "tables/model/flatten.h"

#include <algorithm>

namespace {

struct Request {
    std::string file;
    std::optional<std::string> object;
    std::optional<Interval> rows;
    std::optional<std::string> columns;
    std::optional<std::string> csv;  // "-": standard output
    std::optional<std::string> summary;
    bool is_scaled = false;
};

// Returns an empty text, or what is wrong with the arguments.
std::string take_request(std::span<char *const> words, Request *request) {
    std::optional<std::string> rows;
    const Option options[] = {{"--object", &request->object},   {"--rows", &rows},
                              {"--columns", &request->columns}, {"--summary", &request->summary},
                              {"--csv", &request->csv},         {"--scaled", nullptr, &request->is_scaled}};
    std::string mistake = take_arguments(words, options, &request->file);
    if (!mistake.empty())
        return mistake;
    if (rows && !(request->rows = interval(*rows)))
        return "--rows takes A:B with 1 <= A <= B, not " + *rows;
    if (request->csv && request->csv->empty())
        return "an output file needs a name";
    if (request->csv && request->summary)
        return "--csv and --summary are asked for one at a time";
    if (!request->csv && (rows || request->columns || request->is_scaled))
        return "--rows, --columns and --scaled go with --csv";
    return "";
}

// The table asked for, else the first one; null when there is none.
const TableInfo *find_table(const TableProduct &product, const std::optional<std::string> &pattern) {
    const auto matches = [&](const TableInfo &table) {
        const char *name = pattern ? pattern->c_str() : "*";
        return OdlWildCardCompare(name, table.name.c_str()) || OdlWildCardCompare(name, table.type.c_str()) ||
               (table.object->class_name && OdlWildCardCompare(name, table.object->class_name));
    };
    const auto found = std::ranges::find_if(product.tables, matches);
    return found == product.tables.end() ? nullptr : &*found;
}

// One table of a product, and what there was to tell of it.
class Work {
  public:
    Work(const Request &request, const TableProduct &product, const TableInfo &table)
        : request_(request),
          product_(product),
          number_(&table - product.tables.data() + 1),
          table_(table),
          flattened_(tb_add_arrays(&table_, &flat_) == 0),
          view_(table_) {
        if (!flattened_)
            tell(request.file + ": " + error_string);
        if (!view_.remark().empty())
            tell(view_.remark());
    }

    int describe() {
        print_table(view_, number_, stdout);
        const auto reader = tb_open_reader(product_.file, table_);
        if (reader)
            tell_missing_rows(reader->rows_present());
        return reader ? status() : exit_with_messages;
    }

    int export_csv() {
        CsvRequest csv{.view = &view_, .places = {}, .rows = {}, .is_scaled = request_.is_scaled};
        std::string error = choose_fields(view_, request_.columns, &csv.places);
        csv.rows = request_.rows.value_or(Interval{1, table_.rows});
        if (error.empty() && csv.rows.last > table_.rows)
            error = util_format("there is no row %lld; ROWS is %lld", static_cast<long long>(csv.rows.last),
                                static_cast<long long>(table_.rows));
        const bool to_file = *request_.csv != "-";
        if (error.empty() && to_file && is_one_of(*request_.csv, files_of_product(table_.object, table_.file_name)))
            error = *request_.csv + " belongs to the product";
        if (!error.empty())
            return fail(request_.file + ": " + error);
        const auto reader = tb_open_reader(product_.file, table_);
        if (!reader)
            return fail(request_.file + ": the table cannot be read");

        const int64_t present = reader->rows_present();
        if (csv.rows.last > present)
            tell_missing_rows(present);
        csv.rows.last = std::min(csv.rows.last, present);
        if (!to_file)  // a stream that failed is told at the end
            return write_csv(csv, reader.get(), stdout) ? status() : exit_failed;
        error = write_file(csv, reader.get());
        return error.empty() ? status() : fail(error);
    }

    int summarize() {
        const auto field = find_field(view_, *request_.summary);
        if (!field)
            return fail(request_.file + ": there is no column " + *request_.summary);
        const ColumnSummary summary =
            ts_summarize_column_1({&product_.file, &table_, field->column, field->bit_column, field->item,
                                   field->bit_item, field->bit_column != nullptr});
        switch (summary.outcome) {
            case SummaryOutcome::Refused:
                return fail(request_.file + ": " + std::string(util_trim(summary.text, " \n")));
            case SummaryOutcome::NoSummary:
                return fail(request_.file + ": " + std::string(util_trim(summary.note, " \n")));
            default:
                fputs(summary.text.c_str(), stdout);
                if (summary.rows_read > 0)
                    tell_missing_rows(summary.rows_read);
                else if (!summary.note.empty())  // the first row's field may lie outside the file, and the rows in it
                    tell(summary.note);
                return status();
        }
    }

  private:
    void tell(const std::string &text) {
        fail(text);
        has_messages_ = true;
    }

    void tell_missing_rows(int64_t present) {
        if (present < table_.rows)
            tell(util_format("%s holds %lld of %lld rows", table_.file_name.c_str(), static_cast<long long>(present),
                             static_cast<long long>(table_.rows)));
    }

    int status() const { return has_messages_ || had_notices() ? exit_with_messages : exit_done; }

    // Returns an empty text, or what failed; the file is then as it was.
    std::string write_file(const CsvRequest &csv, TableReader *reader) const {
        Output output;
        std::string error = output.open(*request_.csv);
        if (error.empty())
            error = write_csv(csv, reader, output.stream()) ? output.commit() : output.failure();
        return error;
    }

    const Request &request_;
    const TableProduct &product_;
    int64_t number_;  // of the table in the product
    FlatTable flat_;  // that the table's columns point into
    TableInfo table_;
    bool flattened_;  // all its arrays are columns
    ColumnView view_;
    bool has_messages_ = false;
};

// Of the table asked for, else of all.
int describe_tables(const Request &request, const TableProduct &product, const TableInfo &chosen) {
    int status = exit_done;
    for (const TableInfo &table : product.tables) {
        if (request.object && &table != &chosen)
            continue;
        if (!request.object && &table != &product.tables.front())
            fputs("\n", stdout);
        status = std::max(status, Work(request, product, table).describe());
    }
    return status;
}

}  // namespace

int run_table(std::span<char *const> arguments) {
    Request request;
    const std::string mistake = take_request(arguments, &request);
    if (!mistake.empty())
        return fail(mistake);
    std::string label;
    const OdlTree root = open_product(request.file, &label);
    if (!root)
        return exit_failed;
    const TableProduct product = tb_read_product(root.get());
    const TableInfo *table = find_table(product, request.object);
    if (!table)
        return fail(label + ": there is no table" + (request.object ? " " + *request.object : ""));
    request.file = label;
    if (!request.csv && !request.summary)
        return describe_tables(request, product, *table);
    Work work(request, product, *table);
    return request.csv ? work.export_csv() : work.summarize();
}
