// Lists of short texts in one text.
#pragma once

#include <sstream>
#include <string>
#include <vector>

// What stands between the separators.
inline std::vector<std::string> words(const std::string &text, char separator = ' ') {
    std::istringstream stream(text);
    std::vector<std::string> found;
    for (std::string word; std::getline(stream, word, separator);)
        found.push_back(word);
    return found;
}
