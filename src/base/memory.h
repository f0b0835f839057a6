// Heap wrappers. Every block that a record of the libraries owns comes from here, so that a block made by one library
// can be freed by another. Small blocks are served from a pool, large ones from the system's heap in huge pages.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

// Returns `size` uninitialised bytes aligned for any type (a valid pointer for size 0 too), or null when memory is out.
void *OaMalloc(size_t size);

// Returns `size` zero bytes; large blocks are zeroed by the system when first touched. Null when memory is out.
void *OaZeroedMalloc(size_t size);

// Gives a block of OaMalloc, OaZeroedMalloc or OaRealloc back; null is allowed.
void OaFree(void *block);

// Moves `old_size` bytes of `block` (may be null) into a block of `new_size` bytes and frees the old one.
// Returns null, leaving the old block as it is, when memory is out.
void *OaRealloc(void *block, size_t old_size, size_t new_size);

// Writes "I'm out of memory and I can't get up!" to standard output and ends the process with status 1.
[[noreturn]] void OaOutOfMemory();

// Returns a NUL-terminated copy of `text` that OaFree takes back. Never null: out of memory ends the process.
char *OaCopyText(std::string_view text);

struct OaDeleter {
    void operator()(void *block) const { OaFree(block); }
};
template <typename T>
using OaPtr = std::unique_ptr<T, OaDeleter>;
