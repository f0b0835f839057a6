#include "base/string_list.h"

#include "base/notice.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

constexpr char last_words[] = "FATAL ERROR: Something awful happened. I'm leaving!\n";

[[noreturn]] void leave() {
    util_notice(NoticeKind::Note, last_words);
    fputs(last_words, stdout);
    exit(EXIT_SUCCESS);
}

}  // namespace

StringList::~StringList() {
    while (head)
        delete std::exchange(head, head->next);
}

StringList::StringList(StringList &&other) noexcept
    : head(std::exchange(other.head, nullptr)), tail(std::exchange(other.tail, nullptr)) {}

StringList &StringList::operator=(StringList &&other) noexcept {
    std::swap(head, other.head);
    std::swap(tail, other.tail);
    return *this;
}

void util_append_string_list(StringList *list, const char *text) {
    if (!text)
        return;
    const std::new_handler ending = std::set_new_handler(nullptr);
    try {
        std::string copy = text;
        std::set_new_handler(ending);
        util_append_string_list(list, std::move(copy));
    } catch (const std::bad_alloc &) {
        puts("FATAL ERROR: Program is out of memory.");
        leave();
    }
}

void util_append_string_list(StringList *list, std::string text) {
    const std::new_handler ending = std::set_new_handler(nullptr);
    auto *entry = new (std::nothrow) StringListEntry;
    std::set_new_handler(ending);
    if (!entry) {
        util_notice(NoticeKind::Warning, "String list - memory allocation failed");
        leave();
    }
    entry->text = std::move(text);
    util_append_string_list(list, entry);
}

void util_append_string_list(StringList *list, StringListEntry *ready) {
    ready->previous = list->tail;
    ready->next = nullptr;
    (list->tail ? list->tail->next : list->head) = ready;
    list->tail = ready;
}
