// What a library must show to the user rather than log: a missing structure file, a short read, a fatal note.
#pragma once

#include <string>

enum class NoticeKind { Note, Warning, Error };

using NoticeHook = void (*)(NoticeKind kind, const std::string &text);

// Installs the function that shows notices; null restores the first one, which writes them to standard error.
void util_set_notice_hook(NoticeHook hook);

// Shows `text` through the installed hook.
void util_notice(NoticeKind kind, const std::string &text);
