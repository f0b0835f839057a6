// Keeps reports from standard error while a test provokes them.
#pragma once

#include "base/error.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

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

// The last report has this code and holds this part of a message.
inline void expect_report(int code, const std::string &part, const std::string &what = "") {
    EXPECT_EQ(oa_errno, code) << what << " " << error_string;
    EXPECT_NE(error_string.find(part), std::string::npos) << what << " " << error_string;
}
