// The folder of real test files with known contents, which lies outside the project.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

// Path of a file in the corpus: the folder LUMACART_CORPUS, by default shared/corpus beside the checkout.
inline std::filesystem::path corpus_path(const std::string &name) {
    const char *folder = std::getenv("LUMACART_CORPUS");
    return std::filesystem::path(folder ? folder : LUMACART_DEFAULT_CORPUS) / name;
}

// Skips the running test, saying so, where the corpus is absent.
#define REQUIRE_CORPUS()                                                                            \
    do {                                                                                            \
        if (!std::filesystem::exists(corpus_path("real/manifest.tsv")))                             \
            GTEST_SKIP() << "no corpus at " << corpus_path("").string() << "; set LUMACART_CORPUS"; \
    } while (false)
