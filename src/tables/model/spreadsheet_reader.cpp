#include "tables/model/spreadsheet_reader.h"

#include "base/notice.h"
#include "base/text.h"
#include "tables/model/byte_window.h"
#include "tables/model/keyword_text.h"
#include "tables/model/line_index.h"

#include <algorithm>
#include <cstring>

namespace {

// Of a longer row the rest is not looked at.
constexpr int64_t longest_row = int64_t{1} << 27;
constexpr size_t most_fields = size_t{1} << 20;
// A line's end is looked for in pieces: whoever goes through short lines shall not search a whole window each time.
constexpr size_t search_step = 4096;

struct Delimiter {
    std::string_view value;
    char character;
};
constexpr Delimiter delimiters[] = {{"COMMA", ','}, {"SEMICOLON", ';'}, {"VERTICAL_BAR", '|'}, {"TAB", '\t'}};

size_t find_line_end(std::string_view text, size_t from) {
    for (; from < text.size(); from += search_step) {
        const size_t end = text.substr(from, search_step).find_first_of("\r\n");
        if (end != std::string_view::npos)
            return from + end;
    }
    return std::string_view::npos;
}

// The fields of a line, found as they are asked for.
class LineFields {
  public:
    explicit LineFields(char delimiter) : delimiter_(delimiter) {}

    void begin(std::string_view line) {
        line_ = line;
        next_ = 0;
        ended_ = false;
        ends_.clear();
        last_closing_ = std::string_view::npos;
        for (size_t at = line.rfind('\''); at != std::string_view::npos && at > 0; at = line.rfind('\'', at - 1)) {
            if (at + 1 == line.size() || line[at + 1] == delimiter_) {
                last_closing_ = at;
                break;
            }
        }
    }

    // Field `number`, from 0, as written. False when the line has fewer.
    bool field(size_t number, size_t *from, size_t *to) {
        if (number >= most_fields)
            return false;
        while (!ended_ && ends_.size() <= number)
            take_field();
        if (number >= ends_.size())
            return false;
        *from = number == 0 ? 0 : ends_[number - 1] + 1;
        *to = ends_[number];
        return true;
    }

  private:
    // A double quote opens and closes anywhere. A single one opens at the start of a field where another one closes
    // before a delimiter; elsewhere it is an apostrophe.
    void take_field() {
        size_t at = next_;
        if (at < line_.size() && line_[at] == '\'' && last_closing_ != std::string_view::npos && last_closing_ > at) {
            do {
                at = line_.find('\'', at + 1);
            } while (at + 1 < line_.size() && line_[at + 1] != delimiter_);
            ++at;
        }
        bool is_quoted = false;
        for (; at < line_.size() && (is_quoted || line_[at] != delimiter_); ++at)
            is_quoted ^= line_[at] == '"';
        ends_.push_back(static_cast<uint32_t>(at));
        next_ = at + 1;
        ended_ = at >= line_.size();
    }

    char delimiter_;
    std::string_view line_;
    size_t next_ = 0;
    bool ended_ = false;
    size_t last_closing_ = 0;  // the last single quote before a delimiter or the end
    std::vector<uint32_t> ends_;
};

class SpreadsheetReader : public TableReader {
  public:
    SpreadsheetReader(const TableInfo &table, FilePtr data, char delimiter)
        : table_(table),
          window_(std::move(data)),
          lines_(window_.descriptor(), table.start_byte - 1),
          fields_(delimiter) {}

    int64_t rows_present() override { return lines_.count(table_.rows); }
    bool gives_text() const override { return true; }

    bool read(int64_t row, const ColumnInfo &column, int64_t item, FieldBytes *field) override {
        *field = {{}, 0, -1};
        int64_t number = 0;
        if (item < 1 || !load(row) || __builtin_add_overflow(column.items_before, item - 1, &number))
            return false;
        size_t from = 0;
        size_t to = 0;
        if (number < 0 || !fields_.field(static_cast<size_t>(number), &from, &to))
            return false;
        const std::string_view line = line_;
        const std::string_view text = util_trim(line.substr(from, to - from), "\"");
        field->bytes = FieldSpan(reinterpret_cast<const uint8_t *>(text.data()), text.size());
        field->held = static_cast<int64_t>(text.size());
        field->offset = line_start_ + static_cast<int64_t>(from);
        return true;
    }

  private:
    // Makes the row the current one. False when the file has no such line.
    bool load(int64_t row) {
        if (row < 0 || row >= table_.rows)
            return false;
        if (row == row_)
            return true;
        const int64_t start = row == row_ + 1 && next_start_ >= 0 ? next_start_ : lines_.offset_of(row);
        row_ = -1;
        next_start_ = -1;
        if (start < 0 || start >= window_.file_size() || !take_line(start))
            return false;
        row_ = row;
        line_start_ = start;
        fields_.begin(line_);
        return true;
    }

    bool take_line(int64_t start) {
        size_t searched = 0;
        for (int64_t wanted = search_step;; wanted = std::min(2 * wanted, longest_row + 2)) {
            const auto bytes = window_.from(start, wanted, start);
            const std::string_view text(reinterpret_cast<const char *>(bytes.data()), bytes.size());
            if (text.empty())
                return false;
            const size_t end = find_line_end(text, searched);
            // Behind a carriage return one byte more must be seen.
            const bool is_whole = end != std::string_view::npos && (text[end] == '\n' || end + 1 < text.size());
            const bool at_file_end = start + static_cast<int64_t>(text.size()) >= window_.file_size();
            if (is_whole || at_file_end || static_cast<int64_t>(text.size()) > longest_row) {
                line_ = text.substr(0, std::min(end, static_cast<size_t>(longest_row)));
                if (is_whole)
                    next_start_ = start + static_cast<int64_t>(end) + (text.substr(end, 2) == "\r\n" ? 2 : 1);
                return true;
            }
            searched = end == std::string_view::npos ? text.size() : end;
        }
    }

    const TableInfo &table_;
    ByteWindow window_;
    LineIndex lines_;
    LineFields fields_;
    std::string_view line_;  // in the window
    int64_t line_start_ = 0;
    int64_t row_ = -1;
    int64_t next_start_ = -1;
};

std::unique_ptr<TableReader> refuse(const char *text) {
    oa_errno = 531;
    error_string = text;
    util_notice(NoticeKind::Error, text);
    return nullptr;
}

}  // namespace

std::unique_ptr<TableReader> open_spreadsheet(const TableInfo &table, FilePtr data) {
    std::string_view value;
    for (const ObjDesc *node = table.object; node && value.empty(); node = node->parent)
        value = tb_text_of("FIELD_DELIMITER", node);
    if (value.empty())
        return refuse("Cannot find FIELD_DELIMITER keyword in the label");
    const std::string name = util_upper(util_trim(value, "\"' "));
    const auto *found = std::ranges::find(delimiters, name, &Delimiter::value);
    if (found == std::end(delimiters))
        return refuse("Unknown FIELD_DELIMITER value in the label");
    return std::make_unique<SpreadsheetReader>(table, std::move(data), found->character);
}
