// Keeps the notices that a test provokes.
#pragma once

#include "base/notice.h"

#include <string>
#include <vector>

class Notices {
  public:
    Notices() {
        texts.clear();
        util_set_notice_hook([](NoticeKind, const std::string &text) { texts.push_back(text); });
    }
    ~Notices() { util_set_notice_hook(nullptr); }
    Notices(const Notices &) = delete;
    Notices &operator=(const Notices &) = delete;

    inline static std::vector<std::string> texts;
};
