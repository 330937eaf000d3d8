/* SPDX-License-Identifier: MIT */
/* A page: 64 KiB of blocks of one size, with a bitmap of those that are free.

       +---+---+---+---+---+-----+
       | 0 | 1 | 2 | 3 | 4 | ... |          the page
       +---+---+---+---+---+-----+
         0   1   1   0   1   1              free_bits in its record, which lies elsewhere: 1 = free

   Invariant: a set bit is a free block, and `free_blocks` is the number of set bits. No word before `first_word` has one. */
#ifndef MOVA_HOST_INTERNAL_PAGE_H
#define MOVA_HOST_INTERNAL_PAGE_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include <mova/frame/internal/assert.h>
#include <mova/host/internal/size_classes.h>
#include <mova/host/internal/unit_set.h>

namespace mova {

struct page {
    page *next, *prev;
    char *start;
    size_t block_size;
    uint32_t reciprocal; /* 2^32 / block_size, rounded up */
    uint32_t blocks, free_blocks, first_word;
    uint64_t free_bits[page_size / size_classes::step / 64];

    /* Requires a block size of at most the page's. */
    void make_free(size_t size)
    {
        assert(size <= page_size);
        block_size = size;
        reciprocal = static_cast<uint32_t>(((uint64_t{1} << 32) + size - 1) / size);
        blocks = free_blocks = static_cast<uint32_t>(page_size / size);
        first_word = 0;
        std::fill_n(free_bits, blocks / 64, ~uint64_t{0});
        if (blocks % 64 != 0)
            free_bits[blocks / 64] = (uint64_t{1} << blocks % 64) - 1;
    }

    /* Takes up to `wanted` blocks of the first bitmap word that has any, the lowest last. Returns their number.
       Requires a free block. */
    uint32_t take(void **taken, uint32_t wanted)
    {
        assert(free_blocks > 0 && wanted > 0);
        while (!free_bits[first_word])
            ++first_word;
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

    /* Takes back one block. */
    void give(const void *block)
    {
        uint32_t number = number_of(block);
        assert(!(free_bits[number / 64] >> number % 64 & 1)); /* else it was released twice */
        free_bits[number / 64] |= uint64_t{1} << number % 64;
        first_word = std::min(first_word, number / 64);
        ++free_blocks;
    }

    /* Takes back the first of the blocks, and as many after it as lie side by side in one bitmap word, which is then
       written once. Returns their number. */
    uint32_t give_row(void *const *given, uint32_t most)
    {
        const uint32_t number = number_of(given[0]);
        most = std::min({most, blocks - number, 64 - number % 64});
        const char *neighbour = static_cast<const char *>(given[0]) + block_size;
        uint32_t count = 1;
        for (; count < most && given[count] == neighbour; neighbour += block_size)
            ++count;
        const uint64_t bits = ~uint64_t{0} >> (64 - count) << number % 64;
        assert(!(free_bits[number / 64] & bits)); /* else one was released twice */
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

} // namespace mova

#endif
