#include "base/memory.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>

#if defined(__SANITIZE_ADDRESS__)
#define LUMACART_PLAIN_HEAP 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LUMACART_PLAIN_HEAP 1
#endif
#endif

#ifdef LUMACART_PLAIN_HEAP

// Under AddressSanitizer every block comes from its heap, so that each overrun and leak is seen.
void *OaMalloc(size_t size) {
    return malloc(size ? size : 1);
}
void *OaZeroedMalloc(size_t size) {
    return calloc(size ? size : 1, 1);
}
void OaFree(void *block) {
    free(block);
}

#else

// A block is preceded by eight bytes that say where it came from:
//   1 .. class_count      a pool cell of that many grains; its payload is eight bytes shorter
//   heap_origin           malloc; the block starts heap_offset bytes before the payload
//   mapped_origin         mmap; the eight bytes before hold the mapping's length, the mapping starts map_offset before
namespace {

constexpr size_t grain = 16;
constexpr size_t class_count = 32;
constexpr size_t header_size = sizeof(uint64_t);
constexpr size_t largest_pooled = class_count * grain - header_size;
constexpr size_t first_chunk_size = size_t{1} << 18;
constexpr size_t huge_page = size_t{1} << 21;
constexpr size_t smallest_mapped = size_t{1} << 20;
constexpr size_t smallest_huge = size_t{1} << 22;
constexpr size_t heap_offset = 16;
constexpr size_t map_offset = 64;
constexpr size_t largest_spare = size_t{1} << 26;
constexpr uint64_t heap_origin = 0x48454150;
constexpr uint64_t mapped_origin = 0x4d415050;

struct FreeCell {
    FreeCell *next;
};

std::array<FreeCell *, class_count + 1> free_cells = {};
char *chunk_position = nullptr;
size_t chunk_left = 0;

uint64_t &origin_of(void *payload) {
    return *(static_cast<uint64_t *>(payload) - 1);
}

// Small programs take little; once as much as a huge page was used, chunks are huge pages.
size_t next_chunk_size() {
    static size_t taken = 0;
    const size_t size = taken < huge_page ? first_chunk_size : huge_page;
    taken += size;
    return size;
}

char *new_chunk(size_t size) {
    if (size < huge_page)
        return static_cast<char *>(malloc(size));
    void *chunk = aligned_alloc(huge_page, size);
    if (chunk)
        madvise(chunk, size, MADV_HUGEPAGE);
    return static_cast<char *>(chunk);
}

void *pool_cell(size_t size) {
    const size_t grains = (size + header_size + grain - 1) / grain;
    if (FreeCell *cell = free_cells[grains]) {
        free_cells[grains] = cell->next;
        return cell;
    }
    const size_t cell_size = grains * grain;
    // Cells start eight bytes off the alignment so that payloads are aligned; the rest of the old chunk is lost.
    if (chunk_left < cell_size) {
        const size_t chunk_size = next_chunk_size();
        char *chunk = new_chunk(chunk_size);
        if (!chunk)
            return nullptr;
        chunk_position = chunk + header_size;
        chunk_left = chunk_size - grain;
    }
    void *payload = chunk_position + header_size;
    chunk_position += cell_size;
    chunk_left -= cell_size;
    origin_of(payload) = grains;
    return payload;
}

void *heap_block(size_t size) {
    auto *block = static_cast<char *>(malloc(size + heap_offset));
    if (!block)
        return nullptr;
    void *payload = block + heap_offset;
    origin_of(payload) = heap_origin;
    return payload;
}

// The mapping last given back, kept for the next block of about its size: whoever steps through images of one size
// would otherwise wait for the system to clear the same pages each time.
struct SpareMapping {
    void *mapping = nullptr;
    size_t length = 0;

    // Null when a block of that length is not there.
    void *take(size_t wanted) {
        if (!mapping || length < wanted || length / 2 > wanted)
            return nullptr;
        void *taken = mapping;
        mapping = nullptr;
        return taken;
    }
    void keep(void *freed, size_t freed_length) {
        if (freed_length > largest_spare) {
            munmap(freed, freed_length);
            return;
        }
        if (mapping)
            munmap(mapping, length);
        mapping = freed;
        length = freed_length;
    }
} spare;

void *mapped_block(size_t size) {
    if (size > SIZE_MAX - map_offset)
        return nullptr;
    const size_t length = size + map_offset;
    void *mapping = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED)
        return nullptr;
    if (length >= smallest_huge)
        madvise(mapping, length, MADV_HUGEPAGE);
    auto *payload = static_cast<char *>(mapping) + map_offset;
    origin_of(payload) = mapped_origin;
    origin_of(payload - header_size) = length;
    return payload;
}

}  // namespace

void *OaMalloc(size_t size) {
    if (size <= largest_pooled)
        return pool_cell(size);
    if (size < smallest_mapped)
        return heap_block(size);
    if (size <= largest_spare - map_offset)
        if (void *mapping = spare.take(size + map_offset))
            return static_cast<char *>(mapping) + map_offset;  // its origin and length still stand before it
    return mapped_block(size);
}

void *OaZeroedMalloc(size_t size) {
    void *block = size < smallest_mapped ? OaMalloc(size) : mapped_block(size);
    if (block && size < smallest_mapped)
        memset(block, 0, size);
    return block;
}

void OaFree(void *block) {
    if (!block)
        return;
    const uint64_t origin = origin_of(block);
    if (origin <= class_count) {
        auto *cell = static_cast<FreeCell *>(block);
        cell->next = free_cells[origin];
        free_cells[origin] = cell;
    } else if (origin == heap_origin) {
        free(static_cast<char *>(block) - heap_offset);
    } else {
        char *payload = static_cast<char *>(block);
        spare.keep(payload - map_offset, origin_of(payload - header_size));
    }
}

#endif

void *OaRealloc(void *block, size_t old_size, size_t new_size) {
    void *moved = OaMalloc(new_size);
    if (!moved)
        return nullptr;
    if (block)
        memcpy(moved, block, old_size < new_size ? old_size : new_size);
    OaFree(block);
    return moved;
}

void OaOutOfMemory() {
    puts("I'm out of memory and I can't get up!");
    fflush(stdout);
    exit(1);
}

char *OaCopyText(std::string_view text) {
    auto *copy = static_cast<char *>(OaMalloc(text.size() + 1));
    if (!copy)
        OaOutOfMemory();
    memcpy(copy, text.data(), text.size());
    copy[text.size()] = '\0';
    return copy;
}
