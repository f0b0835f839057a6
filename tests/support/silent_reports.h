// Keeps reports from standard error while a test provokes them.
#pragma once

#include "base/error.h"

#include <cstdio>

class SilentReports {
  public:
    SilentReports() {
        oa_errno = 0;
        error_string.clear();
        Oa_message_fptr = stream_;
    }
    ~SilentReports() {
        Oa_message_fptr = before_;
        fclose(stream_);
    }
    SilentReports(const SilentReports &) = delete;
    SilentReports &operator=(const SilentReports &) = delete;

    bool nothing_written() const { return ftell(stream_) == 0; }

  private:
    FILE *before_ = Oa_message_fptr;
    FILE *stream_ = tmpfile();
};
