/* Blocks in pages: those of one size class lie in pages of 64 KiB, and pages in chunks from the system.

       chunk: 2 MiB, at a multiple of 2 MiB                      page: 64 KiB
       +---------+--------+--------+-------+---------+           +---+---+---+---+---+-----+
       | records | page 1 | page 2 |  ...  | page 31 |           | 0 | 1 | 2 | 3 | 4 | ... |
       +---------+--------+--------+-------+---------+           +---+---+---+---+---+-----+
         the record of page 2:  free_bits                          0   1   1   0   1   1    1 = free

   A block that is larger than a page has a run of pages to itself, with the record of the first.

   Invariants:
     1. A block's chunk, page and number follow from its address.
     2. A set bit is a free block, and `free_blocks` is the number of set bits. No word before `first_word` has one.
     3. A page is in its class's list exactly while it has a free block and one that is not. A page with none but
        free blocks is not in use: it belongs to no class, and its bit in its chunk's `free_pages` is set.
     4. A chunk is in the list exactly while it has a page that is not in use.
     5. `taken` is the number of the class's blocks that are not free.
     6. A class and its pages are touched under the class's lock, chunks under `chunks_lock`. */
#ifndef MOVA_HOST_INTERNAL_PAGES_H
#define MOVA_HOST_INTERNAL_PAGES_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <mutex>

#include <mova/host/internal/locks.h>
#include <mova/host/internal/mappings.h>
#include <mova/host/internal/size_classes.h>

namespace mova::pages {

template <class T>
void link(T *&first, T *node)
{
    node->prev = nullptr;
    node->next = first;
    if (first)
        first->prev = node;
    first = node;
}

template <class T>
void unlink(T *&first, T *node)
{
    (node->prev ? node->prev->next : first) = node->next;
    if (node->next)
        node->next->prev = node->prev;
}

constexpr size_t page_size = size_t{64} << 10, chunk_size = mappings::alignment;
constexpr uint32_t all_pages = ~uint32_t{1}; /* page 0 is where the records are */
constexpr size_t most_unused_chunks = 64;

struct page {
    page *next, *prev;
    char *start;
    size_t block_size;
    uint32_t reciprocal; /* 2^32 / block_size, rounded up */
    uint32_t blocks, free_blocks, first_word;
    uint64_t free_bits[page_size / 8 / 64];

    void make_free(char *at, size_t size)
    {
        start = at;
        block_size = size;
        reciprocal = static_cast<uint32_t>(((uint64_t{1} << 32) + size - 1) / size);
        blocks = free_blocks = static_cast<uint32_t>(std::max(page_size / size, size_t{1}));
        first_word = 0;
        std::fill_n(free_bits, blocks / 64, ~uint64_t{0});
        if (blocks % 64 != 0)
            free_bits[blocks / 64] = (uint64_t{1} << blocks % 64) - 1;
    }

    /* Takes up to `wanted` blocks of the first bitmap word that has any, the lowest last. Returns their number.
       Requires a free block. */
    uint32_t take(void **taken, uint32_t wanted)
    {
        while (!free_bits[first_word])
            first_word++;
        uint64_t word = free_bits[first_word];
        uint32_t count = std::min(static_cast<uint32_t>(std::popcount(word)), wanted);
        size_t size = block_size;
        char *at = start + size * 64 * first_word;
        if (count == 64) {
            for (void **to = taken + 64; to != taken; at += size)
                *--to = at;
            word = 0;
        } else {
            for (void **to = taken + count; to != taken; word &= word - 1)
                *--to = at + size * static_cast<unsigned>(__builtin_ctzll(word));
        }
        free_bits[first_word] = word;
        free_blocks -= count;
        return count;
    }

    /* Takes back one block. Returns 1. */
    uint32_t give(const void *block)
    {
        uint32_t number = number_of(block);
        free_bits[number / 64] |= uint64_t{1} << number % 64;
        first_word = std::min(first_word, number / 64);
        free_blocks++;
        return 1;
    }

    /* Takes back the first of the blocks, and as many after it as lie side by side in one bitmap word, which is then
       written once. (Blocks that lie side by side are in one page: a page is not filled to its end, or with whole
       words.) Returns their number. */
    uint32_t give_row(void *const *given, uint32_t most)
    {
        uint32_t number = number_of(given[0]), count = 1;
        uint64_t bit = uint64_t{1} << number % 64, bits = bit;
        const char *neighbour = static_cast<const char *>(given[0]) + block_size;
        for (; count < most && bit << 1 != 0 && given[count] == neighbour; neighbour += block_size, count++)
            bits |= bit <<= 1;
        free_bits[number / 64] |= bits;
        first_word = std::min(first_word, number / 64);
        free_blocks += count;
        return count;
    }

    uint32_t number_of(const void *block) const
    {
        return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(block) % page_size * uint64_t{reciprocal} >> 32);
    }
};

struct chunk {
    chunk *next, *prev;
    uint32_t free_pages;
    page pages[chunk_size / page_size];
};
static_assert(sizeof(chunk) <= page_size);

inline constinit std::mutex chunks_lock;
inline constinit chunk *chunks = nullptr;
inline constinit size_t mapped_chunks = 0, unused_chunks = 0;

inline chunk *chunk_of(const void *address)
{
    return reinterpret_cast<chunk *>(reinterpret_cast<uintptr_t>(address) & ~(uintptr_t{chunk_size} - 1));
}

/* The page, or the first of the run of pages, that the block lies in. */
inline page *page_of(const void *block)
{
    uintptr_t address = reinterpret_cast<uintptr_t>(block), index = address % chunk_size / page_size;
    return reinterpret_cast<page *>(address - address % chunk_size + offsetof(chunk, pages) + index * sizeof(page));
}

/* As many ones as a block takes pages. */
inline uint32_t run_for(size_t block_size)
{
    return (uint32_t{1} << (block_size + page_size - 1) / page_size) - 1;
}

/* The pages at which a run of free ones begins that is long enough. */
inline uint32_t run_starts(const chunk *in, uint32_t run)
{
    uint32_t starts = in->free_pages;
    for (; run > 1; run >>= 1)
        starts &= starts >> 1;
    return starts;
}

/* The first chunk does without huge pages, so that a program of few blocks stays small. */
inline chunk *map_chunk()
{
    auto wanted = mapped_chunks == 0 ? mappings::kind::ordinary : mappings::kind::huge;
    auto *mapped = static_cast<chunk *>(mappings::map(chunk_size, wanted));
    if (!mapped)
        return nullptr;
    mapped->free_pages = all_pages;
    mapped_chunks++;
    unused_chunks++;
    link(chunks, mapped);
    return mapped;
}

inline void unmap_chunk(chunk *unmapped)
{
    unlink(chunks, unmapped);
    unused_chunks--;
    mapped_chunks--;
    mappings::unmap(unmapped, chunk_size);
}

/* Returns a page of free blocks, or null where memory has run out. */
inline page *take_page(size_t block_size)
{
    auto guard = locked(chunks_lock);
    uint32_t run = run_for(block_size);
    chunk *from = chunks;
    while (from && !run_starts(from, run))
        from = from->next;
    if (!from && !(from = map_chunk()))
        return nullptr;
    auto index = static_cast<size_t>(std::countr_zero(run_starts(from, run)));
    unused_chunks -= from->free_pages == all_pages;
    from->free_pages &= ~(run << index);
    mappings::count_used(static_cast<size_t>(std::popcount(run)) * page_size);
    if (!from->free_pages)
        unlink(chunks, from);
    from->pages[index].make_free(reinterpret_cast<char *>(from) + index * page_size, block_size);
    return &from->pages[index];
}

/* Takes back a page whose blocks are all free. Beyond some chunks in reserve, unused ones go back to the system. */
inline void give_page(page *given)
{
    auto guard = locked(chunks_lock);
    chunk *to = chunk_of(given);
    if (!to->free_pages)
        link(chunks, to);
    uint32_t run = run_for(given->block_size);
    to->free_pages |= run << (given - to->pages);
    mappings::count_used(-static_cast<size_t>(std::popcount(run)) * page_size);
    unused_chunks += to->free_pages == all_pages;
    if (unused_chunks > most_unused_chunks)
        unmap_chunk(to);
}

/* ---- the classes ------------------------------------------------------------------------------------------ */

struct size_class {
    std::mutex lock;
    page *pages;
    size_t taken;
};

inline constinit size_class classes[size_classes::first_large_class] = {};

/* Takes up to `wanted` blocks of a class. Returns their number, which is 0 where memory has run out. */
inline uint32_t take(unsigned index, void **blocks, uint32_t wanted)
{
    size_class &own = classes[index];
    auto guard = locked(own.lock);
    if (!own.pages) {
        page *fresh = take_page(size_classes::block_size(index));
        if (!fresh)
            return 0;
        link(own.pages, fresh);
    }
    page *from = own.pages;
    uint32_t count = from->take(blocks, wanted);
    if (from->free_blocks == 0)
        unlink(own.pages, from);
    own.taken += count;
    return count;
}

/* Takes back blocks of any places. `in_rows` is for those of which many lie side by side. */
template <bool in_rows>
void give_each(size_class &own, void *const *blocks, uint32_t count)
{
    for (uint32_t given = 0; given < count;) {
        page *to = page_of(blocks[given]);
        if (to->free_blocks == 0)
            link(own.pages, to);
        given += in_rows ? to->give_row(blocks + given, count - given) : to->give(blocks[given]);
        if (to->free_blocks == to->blocks) {
            unlink(own.pages, to);
            give_page(to);
        }
    }
}

inline void give(unsigned index, void *const *blocks, uint32_t count)
{
    size_class &own = classes[index];
    auto guard = locked(own.lock);
    own.taken -= count;
    if (count > 1 && static_cast<char *>(blocks[0]) + size_classes::block_size(index) == blocks[1])
        give_each<true>(own, blocks, count);
    else
        give_each<false>(own, blocks, count);
}

} // namespace mova::pages

#endif
