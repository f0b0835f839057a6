#include "viewer/model/label_text.h"

#include "base/file.h"
#include "base/text.h"
#include "oa/signatures.h"
#include "oa/stream.h"

namespace {

constexpr std::string_view blanks = " \t\r\n\f\v";
constexpr size_t most_blanks = 64 * 1024;  // behind a label before they count as data

bool is_line_end(char c) {
    return c == '\n' || c == '\r';
}

bool is_blank(std::string_view text) {
    return text.find_first_not_of(blanks) == std::string_view::npos;
}

// Finds the END statement among the lines of a label, not in its texts and comments.
class EndFinder {
  public:
    // Where the line's END statement ends; npos when it has none.
    size_t find(std::string_view line) {
        const size_t start = line.find_first_not_of(" \t");
        if (!in_text_ && !in_comment_ && start != std::string_view::npos && line.substr(start).starts_with("END")) {
            const size_t end = start + 3;
            if (end == line.size() || util_contains(" \t\r\n\f\v/", line.substr(end, 1)) || line[end] == '\0')
                return end;
        }
        follow(line);
        return std::string_view::npos;
    }

  private:
    void follow(std::string_view line) {
        for (size_t at = 0; at < line.size(); ++at) {
            const std::string_view pair = line.substr(at, 2);
            if (in_comment_)
                in_comment_ = pair != "*/";
            else if (line[at] == '"')
                in_text_ = !in_text_;
            else if (!in_text_ && pair == "/*")
                in_comment_ = true;
        }
        // A comment ends with its line where nothing else ends it.
        in_comment_ = false;
    }

    bool in_text_ = false;
    bool in_comment_ = false;
};

// Lines of any length from the pieces that the stream delivers.
class LineReader {
  public:
    LineReader(const std::string &path, bool is_label) {
        FilePtr file = util_open_regular(path.c_str());
        if (!file)
            return;
        // In labels, records with their length in front are told by its upper byte, as when the label is parsed.
        char start[2] = {};
        const bool has_lengths = is_label && fread(start, 1, 2, file.get()) == 2 && start[1] == '\0';
        file.reset();
        stream_.reset(OalOpenStream(path.c_str(), has_lengths ? OA_VARIABLE_LENGTH : OA_STREAM, 0, 0, "r"));
    }

    bool is_open() const { return stream_ != nullptr; }

    // False at the end. A line is read no further than `most` bytes.
    bool next(std::string *line, int64_t most) {
        line->clear();
        for (;;) {
            if (pending_.empty() && !read_piece())
                return !line->empty();
            const bool is_other_half = pending_.size() == 1 && is_line_end(pending_[0]) && !line->empty() &&
                                       is_line_end(line->back()) && pending_[0] != line->back();
            const bool is_whole = !line->empty() && is_line_end(line->back()) && !is_other_half;
            if (is_whole || static_cast<int64_t>(line->size()) >= most)
                return true;
            line->append(pending_);
            // A piece that fills the stream's buffer may go on, if only with the other half of its line end.
            const bool is_full =
                stream_->record_type == OA_STREAM && static_cast<int64_t>(pending_.size()) >= stream_->buffer_size - 2;
            pending_.clear();
            if (!is_full)
                return true;
        }
    }

  private:
    bool read_piece() {
        char *piece = nullptr;
        int64_t length = 0;
        const int code = OalReadStream(stream_.get(), 0, &piece, -1, &length);
        if (code < 0 || (code != 0 && length < 1) || length < 0)
            return false;
        // A record that is not text has no line end of its own.
        pending_.assign(piece, static_cast<size_t>(length));
        if (stream_->record_type == OA_VARIABLE_LENGTH)
            pending_ += '\n';
        return !pending_.empty();
    }

    OaStreamPtr stream_;
    std::string pending_;
};

// Cuts the line that holds the END statement behind it; false when more than blanks followed in the line.
bool cut_behind_end(std::string *line, size_t end) {
    if (is_blank(std::string_view(*line).substr(end)))
        return true;
    const std::string_view rest = std::string_view(*line).substr(end);
    const size_t comment = rest.find_first_not_of(" \t");
    if (comment != std::string_view::npos && rest.substr(comment).starts_with("/*")) {
        const size_t close = rest.find("*/", comment);
        const size_t comment_end = close == std::string_view::npos ? rest.size() : close + 2;
        if (is_blank(rest.substr(comment_end)))
            return true;
        end += comment_end;
    }
    line->resize(end);
    return false;
}

bool more_than_blanks_follow(LineReader *reader) {
    std::string line;
    for (size_t read = 0; read < most_blanks; read += line.size()) {
        if (!reader->next(&line, most_blanks))
            return false;
        if (!is_blank(line))
            return true;
    }
    return true;
}

}  // namespace

FileText read_file_text(const std::string &path, bool label_only) {
    FileText text;
    LineReader reader(path, label_only);
    text.opened = reader.is_open();
    EndFinder finder;
    std::string line;
    int64_t left = most_text_bytes;
    while (text.opened && reader.next(&line, left)) {
        left -= static_cast<int64_t>(line.size());
        const size_t end = label_only ? finder.find(line) : std::string_view::npos;
        if (end != std::string_view::npos) {
            text.has_more = !cut_behind_end(&line, end) || more_than_blanks_follow(&reader);
            text.lines.push_back(std::move(line));
            return text;
        }
        text.lines.push_back(std::move(line));
        if (left <= 0 || text.lines.size() >= most_text_lines) {
            text.is_cut = reader.next(&line, 1);
            break;
        }
    }
    return text;
}

bool file_describes_itself(const std::string &path) {
    const FilePtr file = util_open_regular(path.c_str());
    char start[longest_signature];
    return file && describes_itself({start, fread(start, 1, sizeof(start), file.get())});
}

bool holds_data_behind_label(const std::string &path) {
    if (file_describes_itself(path))
        return true;
    LineReader reader(path, true);
    EndFinder finder;
    std::string line;
    for (int64_t left = most_text_bytes; reader.is_open() && left > 0 && reader.next(&line, left);) {
        left -= static_cast<int64_t>(line.size());
        const size_t end = finder.find(line);
        if (end != std::string_view::npos)
            return !cut_behind_end(&line, end) || more_than_blanks_follow(&reader);
    }
    return false;
}

std::string_view without_line_end(std::string_view text) {
    if (text.ends_with("\r\n") || text.ends_with("\n\r"))
        return text.substr(0, text.size() - 2);
    if (text.ends_with('\n') || text.ends_with('\r'))
        return text.substr(0, text.size() - 1);
    return text;
}
