// Catches what the libraries report and what they would show to the user while a test runs.
#pragma once

#include "base/error.h"
#include "base/notice.h"

#include <cstdio>
#include <string>
#include <vector>

class Reports {
  public:
    Reports() {
        oa_errno = 0;
        error_string.clear();
        Oa_message_fptr = messages_;
        notices().clear();
        util_set_notice_hook([](NoticeKind, const std::string &text) { notices().push_back(text); });
    }
    ~Reports() {
        util_set_notice_hook(nullptr);
        Oa_message_fptr = nullptr;
        fclose(messages_);
    }
    Reports(const Reports &) = delete;
    Reports &operator=(const Reports &) = delete;

    // Shown since the Reports began.
    static std::vector<std::string> &notices() {
        static std::vector<std::string> texts;
        return texts;
    }
    // Everything reported so far.
    std::string text() const {
        rewind(messages_);
        std::string all;
        for (int c = fgetc(messages_); c != EOF; c = fgetc(messages_))
            all += static_cast<char>(c);
        return all;
    }

  private:
    FILE *messages_ = tmpfile();
};
