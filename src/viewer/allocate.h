// Records and texts whose lack of memory has a message of its own.
#pragma once

#include <memory>
#include <new>

// Null, where other allocations end the process, when memory is out. The record's constructor must not allocate.
template <typename T>
std::unique_ptr<T> new_or_null() {
    const std::new_handler ending = std::set_new_handler(nullptr);
    std::unique_ptr<T> made(new (std::nothrow) T);
    std::set_new_handler(ending);
    return made;
}

// Runs a function whose lack of memory can be told, where it would end the process; false when memory is out.
template <typename Function>
bool with_memory(Function &&function) {
    const std::new_handler ending = std::set_new_handler(nullptr);
    bool done = true;
    try {
        function();
    } catch (const std::bad_alloc &) {
        done = false;
    }
    std::set_new_handler(ending);
    return done;
}
