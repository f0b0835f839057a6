// Parsing: lines are cleaned of comments and joined into statements, and each statement becomes an object, a keyword
// or the end of one.
#include "odl/parser.h"

#include "base/file.h"
#include "base/memory.h"
#include "base/notice.h"
#include "base/text.h"
#include "odl/characters.h"
#include "odl/checks.h"
#include "odl/line_reader.h"
#include "odl/message.h"
#include "odl/odl.h"
#include "odl/open_names.h"
#include "odl/record.h"
#include "odl/statement.h"

#include <algorithm>
#include <array>
#include <utility>

const char *const newline = "\r\n";
const char *const pathSep = "/";

namespace {

// Position of the "/*" of a comment that runs to the line's end, or npos. `within_quotes`: the line begins inside a
// quoted text.
size_t comment_position(std::string_view line, bool within_quotes) {
    for (size_t i = 0; i + 1 < line.size(); ++i) {
        if (line[i] == '"')
            within_quotes = !within_quotes;
        else if (line[i] == '/' && line[i + 1] == '*' && !within_quotes)
            return i;
    }
    return std::string_view::npos;
}

std::string_view null_if_empty(std::string_view text) {
    return text.empty() ? std::string_view() : text;
}

// The root can be given comments by several closing statements; the last one stays.
void store_comment(char *&slot, std::string_view comment) {
    if (comment.empty())
        return;
    OaFree(slot);
    slot = OaCopyText(comment);
}

struct Counts {
    long objects = 0;
    long end_objects = 0;
    long keywords = 0;
    long comments = 0;
};

class Parser {
  public:
    Parser(odl::LineReader &lines, const char *file_name, const odl::MessageFile &messages,
           std::vector<Kwd *> &pointers)
        : lines_(lines), file_name_(odl::view_of(file_name)), messages_(messages), pointers_(pointers) {
        root_ = odl::new_obj_desc({.class_name = "ROOT", .file_name = file_name_}, 0, 0);
        current_ = root_;
    }

    // The root is the caller's.
    ObjDesc *parse(bool ignore_missing_end, int64_t most_bytes);
    const Counts &counts() const { return counts_; }

  private:
    std::string_view clean(const odl::Line &line);
    void take_line(const odl::Line &line);
    void take_comment_line(std::string_view comment);
    bool interrupts_statement(std::string_view line) const;

    void finish_statement();
    void open_object(int16_t is_a_group);
    void close_object();
    void add_keyword();
    void end_label();

    odl::MessagePlace place() const { return messages_.at(statement_.line_number()); }
    int32_t line_number() const { return static_cast<int32_t>(statement_.line_number()); }

    odl::LineReader &lines_;
    std::string_view file_name_;
    const odl::MessageFile &messages_;
    std::vector<Kwd *> &pointers_;
    ObjDesc *root_;
    ObjDesc *current_;
    odl::Statement statement_;
    std::string pending_comment_;  // comment lines and blank lines since the last statement
    odl::OpenNames names_;
    Counts counts_;
    std::array<char, 256> cleaned_ = {};
    bool is_first_statement_ = true;
    bool end_found_ = false;
};

ObjDesc *Parser::parse(bool ignore_missing_end, int64_t most_bytes) {
    odl::Line line;
    while (!end_found_ && lines_.bytes_taken() < most_bytes && lines_.next(line))
        take_line(line);
    if (!statement_.empty())
        finish_statement();
    const odl::MessagePlace last_line = messages_.at(lines_.line_number());
    if (current_ != root_)
        OdlPrintMessage(nullptr, last_line.handle, last_line.line,
                        "Not enough END_OBJECT statements.  Some objects may be incomplete");
    if (!end_found_ && lines_.bytes_taken() >= most_bytes)
        util_notice(NoticeKind::Note, util_format("%s: No END in %lld bytes.  What follows is ignored",
                                                  std::string(file_name_).c_str(), static_cast<long long>(most_bytes)));
    if (!end_found_ && !ignore_missing_end)
        OdlPrintMessage(nullptr, last_line.handle, last_line.line, "END statement is missing");
    return root_;
}

// The line without trailing control characters and blanks, and with blanks for tabs.
std::string_view Parser::clean(const odl::Line &line) {
    std::string_view text = odl::without_trailing(line.text, odl::MARK_CONTROL);
    if (line.marks & odl::MARK_TAB) {
        std::replace_copy(text.begin(), text.end(), cleaned_.begin(), '\t', ' ');
        text = {cleaned_.data(), text.size()};
    }
    return odl::without_trailing_blanks(text);
}

void Parser::take_line(const odl::Line &line) {
    std::string_view text = clean(line);
    std::string_view comment;
    if (line.marks & odl::MARK_SLASH) {
        const size_t position = comment_position(text, statement_.is_within_quotes());
        if (position != std::string_view::npos) {
            ++counts_.comments;
            comment = text.substr(position);
            text = odl::without_trailing_blanks(text.substr(0, position));
        }
    }
    if (text.empty()) {
        take_comment_line(comment);
        return;
    }
    if (interrupts_statement(text))
        finish_statement();
    statement_.add(text, line.marks, lines_.line_number());
    statement_.add_comment(comment);
    if (statement_.is_complete(is_first_statement_))
        finish_statement();
    else
        statement_.keep();
}

// An empty comment stands for a blank line.
void Parser::take_comment_line(std::string_view comment) {
    if (comment.empty() || (!pending_comment_.empty() && pending_comment_.back() != '\n'))
        pending_comment_.append(newline);
    pending_comment_.append(comment);
}

// A broken statement just before END, or one without a value before END_OBJECT, must not swallow that line: the data
// behind the label would be read as label.
bool Parser::interrupts_statement(std::string_view line) const {
    if (statement_.empty() || statement_.is_within_quotes())
        return false;
    const std::string_view word = odl::first_word(line);
    if (word == "END")
        return util_trim(line) == word;
    return !statement_.has_value() && (word == "END_OBJECT" || word == "END_GROUP");
}

void Parser::finish_statement() {
    switch (statement_.kind()) {
        case odl::StatementKind::OpenObject:
            open_object(0);
            break;
        case odl::StatementKind::OpenGroup:
            open_object(1);
            break;
        case odl::StatementKind::CloseObject:
            close_object();
            break;
        case odl::StatementKind::EndLabel:
            end_label();
            break;
        case odl::StatementKind::Keyword:
            add_keyword();
            break;
    }
    statement_.clear();
    is_first_statement_ = false;
}

void Parser::open_object(int16_t is_a_group) {
    ++counts_.objects;
    ++current_->child_count;
    std::string_view class_name = statement_.value();
    odl::check_object(statement_.has_equals(), class_name, place());
    ObjDesc *object = odl::new_obj_desc({.class_name = class_name,
                                         .pre_comment = null_if_empty(pending_comment_),
                                         .line_comment = null_if_empty(statement_.line_comment()),
                                         .file_name = file_name_},
                                        is_a_group, line_number());
    current_ = OdlPasteObjDesc(object, current_);
    names_.open_object();
    pending_comment_.clear();
}

void Parser::close_object() {
    ++counts_.end_objects;
    std::string_view class_name = statement_.value();
    odl::check_end_object(current_, statement_.has_equals(), class_name, place());
    store_comment(current_->post_comment, pending_comment_);
    store_comment(current_->end_comment, statement_.line_comment());
    pending_comment_.clear();
    if (!current_->parent)
        return;
    current_ = current_->parent;
    names_.close_object();
}

void Parser::add_keyword() {
    ++counts_.keywords;
    odl::KeywordStatement parts{statement_.name(), statement_.has_equals(), statement_.value()};
    odl::check_keyword(parts, place(), [this](std::string_view name) { return names_.contains(name); });
    Kwd *keyword = odl::new_kwd({.name = parts.name,
                                 .value = parts.value,
                                 .pre_comment = null_if_empty(pending_comment_),
                                 .line_comment = null_if_empty(statement_.line_comment()),
                                 .file_name = file_name_},
                                line_number());
    OdlPasteKwd(keyword, current_);
    names_.add({keyword->name, parts.name.size()});
    if (keyword->is_a_pointer)
        pointers_.push_back(keyword);
    if (keyword->is_a_list)
        odl::check_braces(parts.value, place());
    pending_comment_.clear();
}

void Parser::end_label() {
    end_found_ = true;
    store_comment(current_->post_comment, pending_comment_);
}

void print_banner(const char *file_name, FILE *handle) {
    const std::string dashes(74, '-');
    const std::string name = file_name ? file_name : "(no file name provided)";
    const std::string banner = "\n" + dashes + "\nParsing File:  " + name + "\n" + dashes + "\n\n";
    OdlPrintLine(nullptr, handle, banner.c_str());
}

void print_metrics(const Counts &counts, FILE *handle) {
    const std::pair<const char *, long> rows[] = {
        {"Syntax Messages", odl_message_count},
        {"OBJECT Statements", counts.objects},
        {"END_OBJECT Statements", counts.end_objects},
        {"Keywords", counts.keywords},
        {"Comments", counts.comments},
    };
    std::string box =
        "           | Parsing Metrics:              |\n"
        "           |                               |\n";
    for (const auto &[what, count] : rows)
        box += util_format("           | %7ld %-22s|\n", count, what);
    box += "           |-------------------------------|\n\n";
    OdlPrintLine(nullptr, handle, box.c_str());
}

}  // namespace

ObjDesc *odl::parse_label(const ParseRequest &request, std::vector<Kwd *> &pointers) {
    odl_message_count = 0;
    odl_suppress_messages = request.suppress_messages;
    const MessageFile messages(request.message_file_name, request.message_file_handle);
    print_banner(request.file_name, messages.handle());

    FilePtr opened;
    FILE *file = request.file_handle;
    if (!request.label_text && !file) {
        opened = request.file_name ? util_open_regular(request.file_name) : nullptr;
        file = opened.get();
        if (!file) {
            messages.at(0).report(200, "Unable to open the label file.  Parsing cannot continue");
            return nullptr;
        }
    }

    LineReader lines = request.label_text ? LineReader(std::string_view(request.label_text)) : LineReader(file);
    Parser parser(lines, request.file_name, messages, pointers);
    ObjDesc *root = parser.parse(request.ignore_missing_end, request.most_bytes);
    // The caller's stream is left behind the label, not behind the buffer.
    if (file && !opened)
        fseeko(file, -lines.bytes_ahead(), SEEK_CUR);
    if (!request.suppress_metrics)
        print_metrics(parser.counts(), messages.handle());
    if (!request.suppress_hierarchy)
        OdlPrintHierarchy(root, nullptr, messages.handle());
    return root;
}

ObjDesc *OdlParseFile(const char *file_name, FILE *file_handle, const char *label_text, const char *message_file_name,
                      FILE *message_file_handle, int suppress_messages, int suppress_metrics, int suppress_hierarchy,
                      int ignore_missing_end) {
    std::vector<Kwd *> pointers;
    return odl::parse_label({file_name, file_handle, label_text, message_file_name, message_file_handle,
                             suppress_messages, suppress_metrics, suppress_hierarchy, ignore_missing_end},
                            pointers);
}

namespace {

ObjDesc *parse_and_expand(const odl::ParseRequest &request, int expand) {
    std::vector<Kwd *> pointers;
    ObjDesc *root = odl::parse_label(request, pointers);
    if (!root)
        return nullptr;
    return odl::expand_label(root, pointers, request.message_file_name, expand, request.suppress_messages);
}

}  // namespace

ObjDesc *OdlParseLabelFile(const char *file_name, const char *message_file_name, int expand, int suppress_messages) {
    return parse_and_expand(
        {.file_name = file_name, .message_file_name = message_file_name, .suppress_messages = suppress_messages},
        expand);
}

ObjDesc *OdlParseLabelString(const char *text, const char *message_file_name, int expand, int suppress_messages) {
    return parse_and_expand(
        {.label_text = text, .message_file_name = message_file_name, .suppress_messages = suppress_messages}, expand);
}
