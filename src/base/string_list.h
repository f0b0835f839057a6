// A doubly linked list of texts.
#pragma once

#include <string>

struct StringListEntry {
    std::string text;
    StringListEntry *next = nullptr;
    StringListEntry *previous = nullptr;
};

struct StringList {
    StringListEntry *head = nullptr;
    StringListEntry *tail = nullptr;

    StringList() = default;
    ~StringList();
    StringList(StringList &&other) noexcept;
    StringList &operator=(StringList &&other) noexcept;
    StringList(const StringList &) = delete;
    StringList &operator=(const StringList &) = delete;
};

// Appends a copy of the text; a null text changes nothing. The process ends after a message when memory is out.
void util_append_string_list(StringList *list, const char *text);
// Appends a text that may hold any bytes.
void util_append_string_list(StringList *list, std::string text);
// Links a ready entry as it is; the list owns it from then on.
void util_append_string_list(StringList *list, StringListEntry *ready);
