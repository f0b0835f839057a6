#include "base/notice.h"

#include <cstdio>
#include <utility>

namespace {

void write_notice(NoticeKind, const std::string &text) {
    fprintf(stderr, "%s\n", text.c_str());
}

NoticeHook installed_hook = write_notice;
HeldNotices *holder = nullptr;  // the innermost one that exists

}  // namespace

void util_set_notice_hook(NoticeHook hook) {
    installed_hook = hook ? hook : write_notice;
}

HeldNotices::HeldNotices() : outer_(std::exchange(holder, this)) {}

HeldNotices::~HeldNotices() {
    holder = outer_;
}

void util_notice(NoticeKind kind, const std::string &text) {
    if (holder)
        holder->notices_.push_back({kind, text});
    else
        installed_hook(kind, text);
}
