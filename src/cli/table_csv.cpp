#include "cli/table_csv.h"

#include "base/text.h"
#include "oa/value_text.h"
#include "tables/model/keyword_text.h"

#include <array>
#include <charconv>
#include <optional>

namespace {

constexpr size_t enough_to_write = size_t{1} << 16;

// Some characters must stand between quotes, and quotes are doubled there.
void quote_where_needed(std::string *line, size_t begin) {
    if (line->find_first_of(",\"\r\n", begin) == std::string::npos)
        return;
    std::string quoted = "\"";
    for (const char c : std::string_view(*line).substr(begin))
        quoted.append(c == '"' ? 2 : 1, c);
    line->replace(begin, std::string::npos, quoted + "\"");
}

// What turns stored values into those meant. More precise than these, so that 1 - 63 * 0.001 is 0.937.
struct Scale {
    long double factor = 1;
    long double offset = 0;
};

bool read_number(std::string_view text, long double *value) {
    text = util_trim(text, "\"' +");
    double rounded = 0;
    if (!OalParseReal(text, &rounded))
        return false;
    std::from_chars(text.data(), text.data() + text.size(), *value);
    if (static_cast<double>(*value) != rounded)  // a based number
        *value = rounded;
    return true;
}

std::optional<Scale> scale_of(const ViewField &field) {
    const ObjDesc *node = (field.bit_column ? field.bit_column : field.column)->object;
    Scale scale;
    const bool has_factor = read_number(tb_text_of("SCALING_FACTOR", node), &scale.factor);
    const bool has_offset = read_number(tb_text_of("OFFSET", node), &scale.offset);
    return has_factor || has_offset ? std::optional(scale) : std::nullopt;
}

// Texts that are no number stay.
void apply(const Scale &scale, std::string *line, size_t begin) {
    double value = 0;
    if (!OalParseReal(std::string_view(*line).substr(begin), &value))
        return;
    const auto meant = static_cast<double>(value * scale.factor + scale.offset);
    std::array<char, 32> text;
    const auto [end, error] = std::to_chars(text.begin(), text.end(), meant);
    line->replace(begin, std::string::npos, text.data(), static_cast<size_t>(end - text.data()));
}

class CsvWriter {
  public:
    explicit CsvWriter(FILE *stream) : stream_(stream) {}

    // Where the text of a field is appended, which then is ended.
    std::string *begin_field() {
        if (!is_first_)
            buffer_ += ',';
        is_first_ = false;
        begin_ = buffer_.size();
        return &buffer_;
    }
    void scale(const Scale &scale) { apply(scale, &buffer_, begin_); }
    bool end_field() {
        quote_where_needed(&buffer_, begin_);
        return buffer_.size() < enough_to_write || flush();
    }
    void end_line() {
        buffer_ += "\r\n";
        is_first_ = true;
    }
    bool flush() {
        const bool done = fwrite(buffer_.data(), 1, buffer_.size(), stream_) == buffer_.size();
        buffer_.clear();
        return done;
    }

  private:
    FILE *stream_;
    std::string buffer_;
    size_t begin_ = 0;
    bool is_first_ = true;
};

}  // namespace

bool write_csv(const CsvRequest &request, TableReader *reader, FILE *stream) {
    const ColumnView &view = *request.view;
    CsvWriter csv(stream);
    std::vector<std::optional<Scale>> scales(request.places.size());
    for (size_t i = 0; i < request.places.size(); ++i) {
        if (request.is_scaled)
            scales[i] = scale_of(view[request.places[i]]);
        *csv.begin_field() += view.name(request.places[i]);
        if (!csv.end_field())
            return false;
    }
    csv.end_line();
    for (int64_t row = request.rows.first - 1; row < request.rows.last; ++row) {
        for (size_t i = 0; i < request.places.size(); ++i) {
            const bool is_there = view.append(reader, row, request.places[i], csv.begin_field());
            if (is_there && scales[i])
                csv.scale(*scales[i]);
            if (!csv.end_field())
                return false;
        }
        csv.end_line();
    }
    return csv.flush();
}
