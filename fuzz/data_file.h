// What targets share that read an object from its data file.
#pragma once

#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

// A file in memory that holds the bytes while the object lives.
class DataFile {
  public:
    explicit DataFile(std::string_view bytes) : file_(memfd_create("data", MFD_CLOEXEC)) {
        if (file_ < 0 || write(file_, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            abort();
    }
    ~DataFile() { close(file_); }
    DataFile(const DataFile &) = delete;
    DataFile &operator=(const DataFile &) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

  private:
    int file_;
};

inline void require(bool holds) {
    if (!holds)
        abort();
}
