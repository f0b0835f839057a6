// Memory that is out while tables are shown ends the program, with a word on where.
#pragma once

#include "base/notice.h"

#include <cstdlib>
#include <new>
#include <string>

// What `make` returns; when its memory is out, shows `text` and ends the process with status 1.
template <typename Make>
auto tb_or_out_of_memory(const char *text, const Make &make) {
    try {
        return make();
    } catch (const std::bad_alloc &) {
        util_notice(NoticeKind::Error, text);
        exit(EXIT_FAILURE);
    }
}
