#include "base/notice.h"

#include <cstdio>

namespace {

void write_notice(NoticeKind, const std::string &text) {
    fprintf(stderr, "%s\n", text.c_str());
}

NoticeHook installed_hook = write_notice;

}  // namespace

void util_set_notice_hook(NoticeHook hook) {
    installed_hook = hook ? hook : write_notice;
}

void util_notice(NoticeKind kind, const std::string &text) {
    installed_hook(kind, text);
}
