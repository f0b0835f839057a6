// The folder of real test files with known contents, which lies outside the project.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

// Path of a file in the corpus: the folder LUMACART_CORPUS, by default shared/corpus beside the checkout.
inline std::filesystem::path corpus_path(const std::string &name) {
    const char *folder = std::getenv("LUMACART_CORPUS");
    return std::filesystem::path(folder ? folder : LUMACART_DEFAULT_CORPUS) / name;
}

// The rows of a list in the corpus, whose first line names its columns; tabs stand between them.
inline std::vector<std::map<std::string, std::string>> read_corpus_list(const std::string &list) {
    std::ifstream file(corpus_path(list));
    std::vector<std::string> names;
    std::vector<std::map<std::string, std::string>> rows;
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        std::vector<std::string> texts;
        for (std::string text; std::getline(fields, text, '\t');)
            texts.push_back(text);
        if (names.empty()) {
            names = texts;
            continue;
        }
        auto &row = rows.emplace_back();
        for (size_t i = 0; i < names.size() && i < texts.size(); ++i)
            row[names[i]] = texts[i];
    }
    return rows;
}

// Skips the running test, saying so, where the corpus is absent.
#define REQUIRE_CORPUS()                                                                            \
    do {                                                                                            \
        if (!std::filesystem::exists(corpus_path("real/manifest.tsv")))                             \
            GTEST_SKIP() << "no corpus at " << corpus_path("").string() << "; set LUMACART_CORPUS"; \
    } while (false)
