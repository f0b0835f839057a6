// What a library must show to the user rather than log: a missing structure file, a short read, a fatal note.
#pragma once

#include <string>
#include <vector>

enum class NoticeKind { Note, Warning, Error };

using NoticeHook = void (*)(NoticeKind kind, const std::string &text);

// Installs the function that shows notices; null restores the first one, which writes them to standard error.
void util_set_notice_hook(NoticeHook hook);

// Shows `text` through the installed hook.
void util_notice(NoticeKind kind, const std::string &text);

struct Notice {
    NoticeKind kind;
    std::string text;
};

// While one exists, notices are kept, whatever hook is installed.
class HeldNotices {
  public:
    HeldNotices();
    ~HeldNotices();
    HeldNotices(const HeldNotices &) = delete;
    HeldNotices &operator=(const HeldNotices &) = delete;

    const std::vector<Notice> &notices() const { return notices_; }

  private:
    friend void util_notice(NoticeKind kind, const std::string &text);

    std::vector<Notice> notices_;
    HeldNotices *const outer_;
};
