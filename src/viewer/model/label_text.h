// Files read as lines of text, whole or as far as their label goes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

constexpr int64_t most_text_bytes = int64_t{32} << 20;
constexpr size_t most_text_lines = 1'000'000;

struct FileText {
    bool opened = false;
    std::vector<std::string> lines;  // each with the bytes that end it
    bool is_cut = false;             // the file, or its label, is longer than what is read
    bool has_more = false;           // behind the END statement the file holds more than blanks
};

// Reads a regular file by the stream reader. `label_only`: to its END statement.
FileText read_file_text(const std::string &path, bool label_only);

// Whether the file starts as a GIF or JPEG 2000 file does: its label is made from it, not in it.
bool file_describes_itself(const std::string &path);

// Whether the file is a label with data behind its END statement, or data that describe themselves: what would be lost
// if a text took its place.
bool holds_data_behind_label(const std::string &path);

// A text as it is saved: without the line feed, the carriage return or the pair of both at its end.
std::string_view without_line_end(std::string_view text);
