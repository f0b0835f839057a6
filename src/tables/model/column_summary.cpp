#include "tables/model/column_summary.h"

#include "base/text.h"
#include "oa/ascii_number.h"
#include "tables/model/column_text.h"
#include "tables/model/occurrence_table.h"
#include "tables/model/table_reader.h"
#include "tables/model/value_lists.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

constexpr int64_t rows_between_questions = 16384;

// --- Classes ------------------------------------------------------------------------------------------------------

struct TypeClass {
    std::string_view type;
    SummaryClass summary;
};
// Types that are not here have no summary.
constexpr TypeClass type_classes[] = {
    {"ASCII INTEGER", SummaryClass::Signed},
    {"ASCII REAL", SummaryClass::Real},
    {"CHARACTER", SummaryClass::Character},
    {"DATE", SummaryClass::Date},
    {"FLOAT", SummaryClass::Real},
    {"IEEE REAL", SummaryClass::Real},
    {"INTEGER", SummaryClass::Signed},
    {"LSB IEEE REAL", SummaryClass::Real},
    {"LSB INTEGER", SummaryClass::Signed},
    {"LSB UNSIGNED INTEGER", SummaryClass::Unsigned},
    {"MAC INTEGER", SummaryClass::Signed},
    {"MAC REAL", SummaryClass::Real},
    {"MAC UNSIGNED INTEGER", SummaryClass::Unsigned},
    {"MSB IEEE REAL", SummaryClass::Real},
    {"MSB INTEGER", SummaryClass::Signed},
    {"MSB UNSIGNED INTEGER", SummaryClass::Unsigned},
    {"PC INTEGER", SummaryClass::Signed},
    {"PC REAL", SummaryClass::Real},
    {"PC UNSIGNED INTEGER", SummaryClass::Unsigned},
    {"REAL", SummaryClass::Real},
    {"SUN INTEGER", SummaryClass::Signed},
    {"SUN REAL", SummaryClass::Real},
    {"SUN UNSIGNED INTEGER", SummaryClass::Unsigned},
    {"TIME", SummaryClass::Date},
    {"UNSIGNED INTEGER", SummaryClass::Unsigned},
    {"VAX INTEGER", SummaryClass::Signed},
    {"VAX REAL", SummaryClass::Real},
    {"VAX UNSIGNED INTEGER", SummaryClass::Unsigned},
    {"VAXG REAL", SummaryClass::Real},
};
constexpr TypeClass bit_type_classes[] = {
    {"BOOLEAN", SummaryClass::Character},         {"INTEGER", SummaryClass::Signed},
    {"MSB INTEGER", SummaryClass::Signed},        {"MSB UNSIGNED INTEGER", SummaryClass::Unsigned},
    {"UNSIGNED INTEGER", SummaryClass::Unsigned},
};

constexpr int64_t too_wide_for_real = 9;  // in a binary table
constexpr int64_t too_wide_for_integer = 5;
constexpr int64_t too_wide_for_text = 61;

bool is_integer(SummaryClass summary) {
    return summary == SummaryClass::Signed || summary == SummaryClass::Unsigned;
}

bool is_number(SummaryClass summary) {
    return summary == SummaryClass::Real || is_integer(summary);
}

// --- Numbers ------------------------------------------------------------------------------------------------------

constexpr std::array<bool, 256> only(std::string_view characters) {
    std::array<bool, 256> allowed = {};
    for (const char c : characters)
        allowed[static_cast<uint8_t>(c)] = true;
    return allowed;
}

template <typename T>
struct NumberText;
template <>
struct NumberText<double> {
    static constexpr auto characters = only(" +-eE.0123456789");
};
template <>
struct NumberText<int64_t> {
    static constexpr auto characters = only(" -+0123456789");
};
template <>
struct NumberText<uint64_t> {
    static constexpr auto characters = only(" 0123456789");
};

// What a text reads as that stands for no number of the type: the nearest.
template <typename T>
T saturated(std::string_view text) {
    if constexpr (std::is_floating_point_v<T>)
        return OalReadAsciiReal(reinterpret_cast<const uint8_t *>(text.data()), static_cast<int64_t>(text.size()));
    else
        return text.starts_with('-') ? std::numeric_limits<T>::min() : std::numeric_limits<T>::max();
}

// The number at the start of a text without blanks around it; what is behind it does not matter.
template <typename T>
bool read_number(std::string_view text, T *value) {
    const bool has_sign = text.starts_with('+') || text.starts_with('-');
    const bool is_negated = std::is_unsigned_v<T> && text.starts_with('-');
    const std::string_view digits = has_sign && (is_negated || text[0] == '+') ? text.substr(1) : text;
    if (digits.data() != text.data() && digits.starts_with('-'))
        return false;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), *value);
    if (error == std::errc::result_out_of_range)
        *value = saturated<T>(digits);
    else if (error != std::errc())
        return false;
    if constexpr (std::is_unsigned_v<T>)
        *value = is_negated ? T{0} - *value : *value;
    return true;
}

std::string shown(double value) {
    return util_format("%e", value);
}
std::string shown(int64_t value) {
    return std::to_string(value);
}
std::string shown(uint64_t value) {
    return std::to_string(value);
}

void add_line(std::string line, std::string *lines) {
    line.resize(std::min(line.size(), ts_longest_line));
    lines->append(line).append("\n");
}

template <typename T>
class Numbers {
  public:
    explicit Numbers(int64_t rows) : rows_(static_cast<double>(rows)) {}

    void add(const std::string &text) {
        for (const char c : text)
            is_suspicious_ |= !NumberText<T>::characters[static_cast<uint8_t>(c)];
        T value = {};
        if (!read_number(text, &value) || std::isnan(static_cast<double>(value)))
            return;
        minimum_ = counted_ == 0 ? value : std::min(minimum_, value);
        maximum_ = counted_ == 0 ? value : std::max(maximum_, value);
        ++counted_;
        // Term by term, so that the whole sum is never needed.
        const double term = static_cast<double>(value) / rows_;
        const double next = average_ + term;
        has_overflow_ |= term > 0 && next < average_;
        has_underflow_ |= term < 0 && next > average_;
        average_ = next;
    }

    void report(std::string_view, std::string *lines) const {
        if (has_overflow_)
            add_line(" WARNING: Overflow occurred during computation of average.", lines);
        if (has_underflow_)
            add_line(" WARNING: Underflow occurred during computation of average.", lines);
        if (is_suspicious_)
            lines->append(
                "\n     WARNING: Numeric column contains suspicious characters.\n"
                "     WARNING: Computed values may be incorrect.\n\n");
        if (counted_ == 0)
            return;
        const auto counted = static_cast<double>(counted_);
        const double average = counted == rows_ ? average_ : average_ * (rows_ / counted);
        add_line("     Minimum:             " + shown(minimum_), lines);
        add_line("     Maximum:             " + shown(maximum_), lines);
        constexpr const char *format =
            std::is_floating_point_v<T> ? "     Approximate Average: %e" : "     Approximate Average: %.6f";
        add_line(util_format(format, average), lines);
    }

  private:
    double rows_;
    T minimum_ = {};
    T maximum_ = {};
    int64_t counted_ = 0;
    double average_ = 0;
    bool is_suspicious_ = false;
    bool has_overflow_ = false;
    bool has_underflow_ = false;
};

// --- Texts --------------------------------------------------------------------------------------------------------

class Texts {
  public:
    explicit Texts(bool has_range) : has_range_(has_range) {}

    void add(const std::string &text) {
        if (has_range_ && (!any_ || text < minimum_))
            minimum_.assign(text, 0, ts_longest_line);
        if (has_range_ && (!any_ || text > maximum_))
            maximum_.assign(text, 0, ts_longest_line);
        any_ = true;
        is_full_ = is_full_ || !ts_insert_occurrence_1(&occurrences_, text);
    }

    void report(std::string_view kind, std::string *lines) const {
        if (is_full_)
            add_line(" WARNING: Occurrence table exceeded maximum size. All values will not be counted in the table.",
                     lines);
        if (!any_)
            return;
        if (has_range_) {
            add_line("     Minimum: " + minimum_, lines);
            add_line("     Maximum: " + maximum_, lines);
        }
        lines->append("     ").append(kind).append(" contains: \n");
        ts_print_occurrence_1(occurrences_, lines);
    }

  private:
    bool has_range_;
    bool any_ = false;
    bool is_full_ = false;
    std::string minimum_;
    std::string maximum_;
    OccurrenceTable occurrences_;
};

// --- The pass -----------------------------------------------------------------------------------------------------

// The fields to sum up, as text.
class Fields {
  public:
    Fields(const SummaryRequest &request, TableReader *reader, SummaryClass summary)
        : request_(request), reader_(reader), swaps_(tb_swaps_bytes(*request.column)) {
        ColumnInfo shown = request.of_bit_column ? *request.bit_column : *request.column;
        if (is_number(summary))
            shown.display_format = tb_display_formats[TB_SHOW_TEXT];
        format_ = request.of_bit_column ? tb_bit_column_format(*request.table, shown)
                                        : tb_column_format(*request.table, shown);
    }

    bool read(int64_t row, std::string *text) {
        text->clear();
        if (!reader_->read(row, *request_.column, request_.item, &field_))
            return false;
        if (request_.of_bit_column) {
            tb_append_bit_field(format_, *request_.bit_column, field_.bytes, request_.bit_item, swaps_, text);
        } else if (reader_->gives_text()) {
            text->assign(util_trim({reinterpret_cast<const char *>(field_.bytes.data()), field_.bytes.size()}));
        } else {
            tb_append_field(format_, field_.bytes, text);
        }
        return true;
    }

    TableReader *reader() const { return reader_; }
    std::string missing_text() const { return tb_missing_text(field_); }
    const SummaryRequest &request() const { return request_; }

  private:
    const SummaryRequest &request_;
    TableReader *reader_;
    bool swaps_;
    FieldFormat format_ = nullptr;
    FieldBytes field_;
};

template <typename Values>
void pass_over_rows(Fields *fields, Values values, ColumnSummary *summary) {
    const SummaryRequest &request = fields->request();
    const bool has_short_rows = fields->reader()->gives_text();  // a field may be missing though its row is there
    const int64_t present = has_short_rows ? fields->reader()->rows_present() : request.table->rows;
    std::string text;
    int64_t row = 0;
    for (; row < present; ++row) {
        if (row % rows_between_questions == 0 && request.go_on && !request.go_on(row)) {
            summary->outcome = SummaryOutcome::Stopped;
            break;
        }
        if (fields->read(row, &text))
            values.add(text);
        else if (!has_short_rows)
            break;
    }
    summary->rows_read = row;
    if (row < request.table->rows && summary->outcome == SummaryOutcome::Done) {
        summary->outcome = SummaryOutcome::EndedEarly;
        summary->note = has_short_rows
                            ? util_format("The data file holds %lld of %lld rows.", static_cast<long long>(row),
                                          static_cast<long long>(request.table->rows))
                            : fields->missing_text();
    }
    values.report(request.of_bit_column ? "Bit Column" : "Column", &summary->text);
}

// What is missing for a summary; null: nothing is.
const char *missing_of(const SummaryRequest &request) {
    const TableInfo *table = request.table;
    const ColumnInfo *column = request.column;
    const ColumnInfo *bits = request.bit_column;
    if (!table)
        return "   There is no current table\n";
    if (!column)
        return "   There is no current column\n";
    if (request.of_bit_column && !bits)
        return "  There is no current bit column\n";
    if (table->file_name.empty() || table->file_name == "Unknown")
        return "  The name of the data file is invalid or missing\n";
    if (!table->is_spreadsheet()) {  // whose rows and fields need no sizes
        if (table->row_bytes < 1)
            return "  The table's ROW_BYTES field is invalid or missing\n";
        if (column->start_byte < 0)
            return "  The column's START_BYTES field is invalid or missing\n";
        if (column->bytes < 1)
            return "  The column's BYTES field is invalid or missing\n";
    }
    if (request.of_bit_column && bits->start_byte < 1)
        return "  The bit column's START_BIT field is invalid or missing\n";
    if (request.of_bit_column && bits->bytes < 1)
        return "  The bit column's BITS field is invalid or missing\n";
    return nullptr;
}

ColumnSummary refused(std::string text) {
    return {SummaryOutcome::Refused, std::move(text), "", 0};
}

}  // namespace

SummaryClass ts_map_type_1(const TableInfo &table, const ColumnInfo &column, bool is_bit_column) {
    const std::span<const TypeClass> classes =
        is_bit_column ? std::span<const TypeClass>(bit_type_classes) : std::span<const TypeClass>(type_classes);
    const auto found = std::ranges::find(classes, column.data_type, &TypeClass::type);
    if (found == classes.end())
        return SummaryClass::None;
    const SummaryClass summary = found->summary;
    const bool is_binary = table.interchange_format == tb_table_formats[TB_BINARY_TABLE];
    if ((is_binary && summary == SummaryClass::Real && column.bytes >= too_wide_for_real) ||
        (is_binary && is_integer(summary) && column.bytes >= too_wide_for_integer) ||
        (!is_number(summary) && column.bytes >= too_wide_for_text))
        return SummaryClass::None;
    return summary;
}

ColumnSummary ts_summarize_column_1(const SummaryRequest &request) {
    if (const char *missing = missing_of(request))
        return refused(missing);
    const TableInfo &table = *request.table;
    const SummaryClass kind =
        ts_map_type_1(table, request.of_bit_column ? *request.bit_column : *request.column, request.of_bit_column);
    if (kind == SummaryClass::None)
        return {SummaryOutcome::NoSummary, "",
                "     Unable to display a summary for this data type and/or column size.\n", 0};
    const auto reader = tb_open_reader(*request.file, table);
    if (!reader)
        return refused(oa_errno == 531 ? "  " + error_string + "\n" : "  Unable to open the data file\n");
    ColumnSummary summary;
    Fields fields(request, reader.get(), kind);
    switch (kind) {
        case SummaryClass::Real:
            pass_over_rows(&fields, Numbers<double>(reader->rows_present()), &summary);
            break;
        case SummaryClass::Signed:
            pass_over_rows(&fields, Numbers<int64_t>(reader->rows_present()), &summary);
            break;
        case SummaryClass::Unsigned:
            pass_over_rows(&fields, Numbers<uint64_t>(reader->rows_present()), &summary);
            break;
        default:
            pass_over_rows(&fields, Texts(kind == SummaryClass::Date), &summary);
    }
    return summary;
}
