// One statement, assembled from physical lines, with running counts in place of re-reading it for every line.
#pragma once

#include "odl/checks.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace odl {

enum class StatementKind { Keyword, OpenObject, OpenGroup, CloseObject, EndLabel };

class Statement {
  public:
    // Adds a cleaned, non-empty line with the CharacterMark bits of its bytes. It must stay valid until `keep` is
    // called or the statement is done.
    void add(std::string_view line, unsigned marks, long line_number);
    // Copies what has been added, so that a further line can be read and added.
    void keep();
    void clear();

    bool empty() const { return text_.empty(); }
    // `is_first`: no statement stood before it in the label, so that it may be an SFDU header.
    bool is_complete(bool is_first) const;
    bool is_within_quotes() const { return quotes_ % 2 != 0; }
    bool has_value() const { return value_ != none; }

    StatementKind kind() const;
    long line_number() const { return line_number_; }
    // From the first word on.
    std::string_view text() const { return text_.substr(start_ == none ? text_.size() : start_); }
    bool has_equals() const { return equals_ != none; }
    // What stands before the "=", or all of the text without one.
    std::string_view name() const;
    // What stands after the "=", from its first word; null without "=".
    std::string_view value() const;

    // The comments of the statement's own lines, joined by `newline`.
    std::string_view line_comment() const { return line_comment_; }
    void add_comment(std::string_view comment);

  private:
    static constexpr size_t none = std::string_view::npos;

    void note_first_word(size_t from);
    void note_value(size_t from, unsigned marks);
    bool is_balanced() const;

    std::string_view text_;  // the single line, or all of kept_
    std::string kept_;
    std::string line_comment_;
    long line_number_ = 0;
    size_t start_ = none;      // of the first word
    bool is_closing_ = false;  // the first word is END, END_OBJECT or END_GROUP
    size_t equals_ = none;     // of the first "="
    size_t value_ = none;      // of the first word after it
    size_t quotes_ = 0;
    size_t quotes_before_value_ = 0;
    Nesting value_nesting_;
};

}  // namespace odl
