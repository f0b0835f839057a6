// Line ends made visible in a text that can be edited, and back.
#pragma once

#include <string>
#include <string_view>

// "<CR>" for each carriage return, "<LF>" for each line feed. Where the text itself holds what remove_line_end_marks
// would replace, its "<" becomes "<?<>", so that removing gives the text back as it was.
std::string add_line_end_marks(std::string_view text);
// "<LF>" becomes a line feed, "<CR>" a carriage return, "<?c>" the character c; everything else stays.
std::string remove_line_end_marks(std::string_view text);
