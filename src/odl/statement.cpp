#include "odl/statement.h"

#include <algorithm>

namespace {

// A statement this long is taken as complete, so that a quote that is never closed does not draw the data behind the
// label into memory.
constexpr size_t longest_statement = size_t{1} << 24;
// A buffer that grew beyond this is given back with its statement.
constexpr size_t largest_kept_buffer = size_t{1} << 20;

// Case matters, and so does the blank: "OBJECT=X" is a keyword.
bool begins_with(std::string_view text, std::string_view word) {
    return text.starts_with(word) && (text.size() == word.size() || text[word.size()] == ' ');
}

bool is_closing_word(std::string_view word) {
    return word == "END" || word == "END_OBJECT" || word == "END_GROUP";
}

}  // namespace

void odl::Statement::add(std::string_view line, unsigned marks, long line_number) {
    size_t from = 0;
    if (text_.empty()) {
        text_ = line;
        line_number_ = line_number;
    } else {
        kept_.append(" ").append(line);
        text_ = kept_;
        from = text_.size() - line.size();
    }
    if (marks & MARK_QUOTE)
        quotes_ += quote_count(line);
    if (start_ == none)
        note_first_word(from);
    note_value(from, marks);
}

void odl::Statement::note_first_word(size_t from) {
    const size_t start = first_word_position(text_, from);
    if (start == text_.size())
        return;
    start_ = start;
    is_closing_ = text_[start] == 'E' && is_closing_word(odl::first_word(text_.substr(start)));
}

void odl::Statement::note_value(size_t from, unsigned marks) {
    if (equals_ == none)
        equals_ = text_.find('=', from);
    if (equals_ == none)
        return;
    if (value_ == none) {
        const size_t value = first_word_position(text_, std::max(from, equals_ + 1));
        if (value == text_.size())
            return;
        value_ = value;
        if (quotes_ > 0)
            quotes_before_value_ = quote_count(text_.substr(0, value));
    }
    if ((marks & MARK_BREAK) && (text_[value_] == '(' || text_[value_] == '{'))
        value_nesting_.add(text_.substr(std::max(from, value_)));
}

void odl::Statement::keep() {
    if (!kept_.empty())
        return;
    kept_ = text_;
    text_ = kept_;
}

void odl::Statement::add_comment(std::string_view comment) {
    if (comment.empty())
        return;
    if (!line_comment_.empty())
        line_comment_.append(newline);
    line_comment_.append(comment);
}

void odl::Statement::clear() {
    if (kept_.capacity() > largest_kept_buffer)
        kept_ = std::string();
    kept_.clear();
    line_comment_.clear();
    text_ = {};
    start_ = equals_ = value_ = none;
    is_closing_ = false;
    quotes_ = quotes_before_value_ = 0;
    value_nesting_ = {};
}

bool odl::Statement::is_balanced() const {
    const bool is_text = value_ != none && text_[value_] == '"';
    return is_text ? (quotes_ - quotes_before_value_) % 2 == 0 : value_nesting_.balanced();
}

bool odl::Statement::is_complete(bool is_first) const {
    if (is_closing_ || text_.size() >= longest_statement)
        return true;
    if (has_equals() && text_.back() != '=' && is_balanced())
        return true;
    return is_first && is_sfdu_label(text());
}

odl::StatementKind odl::Statement::kind() const {
    const std::string_view statement = text();
    switch (statement.empty() ? '\0' : statement.front()) {
        case 'O':
            return begins_with(statement, "OBJECT") ? StatementKind::OpenObject : StatementKind::Keyword;
        case 'G':
            return begins_with(statement, "GROUP") ? StatementKind::OpenGroup : StatementKind::Keyword;
        case 'E':
            if (begins_with(statement, "END_OBJECT") || begins_with(statement, "END_GROUP"))
                return StatementKind::CloseObject;
            return begins_with(statement, "END") ? StatementKind::EndLabel : StatementKind::Keyword;
        default:
            return StatementKind::Keyword;
    }
}

std::string_view odl::Statement::name() const {
    return without_trailing_blanks(text().substr(0, has_equals() ? equals_ - start_ : none));
}

std::string_view odl::Statement::value() const {
    if (!has_equals())
        return {};
    return text_.substr(value_ == none ? text_.size() : value_);
}
