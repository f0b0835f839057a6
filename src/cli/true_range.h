// The true minimum and maximum of native samples, gathered strip after strip.
#pragma once

#include "viewer/model/extremes.h"

#include <cstdint>
#include <string>

class TrueRange {
  public:
    // Of samples of that SAMPLE_TYPE and size. Types without numbers and orders that are not the machine's have no
    // range.
    TrueRange(const std::string &sample_type, int64_t sample_bits);

    void add(const void *samples, int64_t count);
    // "minimum maximum" of the finite samples, or "- -".
    std::string text() const;

  private:
    enum class Kind { None, Signed, Unsigned, Real };

    Kind kind_ = Kind::None;
    int64_t bits_ = 0;
    Extremes<int64_t> signed_;
    Extremes<uint64_t> unsigned_;
    Extremes<double> reals_;
};
