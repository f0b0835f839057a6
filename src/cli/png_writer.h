// Grey PNG files, written row by row.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

class PngWriter {
  public:
    PngWriter();
    ~PngWriter();
    PngWriter(const PngWriter &) = delete;
    PngWriter &operator=(const PngWriter &) = delete;

    // Each returns false when it failed, and so do all calls that follow; error() then says why. `file` must stay open
    // until finish.
    bool start(FILE *file, uint32_t width, uint32_t height);
    bool write_row(const uint8_t *row);  // width levels
    bool finish();

    const std::string &error() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};
