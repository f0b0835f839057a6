// A folder of its own for each test that writes files, removed afterwards.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

class ScratchFolder {
  public:
    ScratchFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "lumacart-test-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            ADD_FAILURE() << "no temporary folder at " << pattern;
        path_ = pattern;
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    const std::filesystem::path &path() const { return path_; }
    std::string file(std::string_view name) const { return (path_ / name).string(); }
    // Writes the bytes into a file of that name and returns its path.
    std::string write(std::string_view name, std::string_view bytes) const {
        const std::string path = file(name);
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return path;
    }

  private:
    std::filesystem::path path_;
};

inline std::string read_file(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
