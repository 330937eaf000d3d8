/* Finding a pointer among pointers. */
#ifndef MOVA_ARRAYS_INTERNAL_FIND_WORD_H
#define MOVA_ARRAYS_INTERNAL_FIND_WORD_H

#include <mova/frame/internal/cpu.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace mova {

/* Returns the index of the first of `count` pointers that is `sought`, or `count`. */
inline size_t find_word_portably(const void *const *pointers, size_t count, const void *sought)
{
    return static_cast<size_t>(std::find(pointers, pointers + count, sought) - pointers);
}

#ifdef MOVA_AVX2
using word_vector [[gnu::vector_size(32)]] = uintptr_t;

/* The words of a block that are in one vector, and its vectors. Eight keep the tests of whole blocks rare. */
constexpr size_t block_lanes = sizeof(word_vector) / sizeof(uintptr_t), block_vectors = 8,
                 block_words = block_vectors * block_lanes;

MOVA_AVX2 inline bool block_holds(const void *const *pointers, const word_vector &sought)
{
    word_vector matches = {};
    for (size_t i = 0; i < block_vectors; ++i) {
        word_vector words;
        std::memcpy(&words, pointers + i * block_lanes, sizeof words);
        matches |= reinterpret_cast<word_vector>(words == sought);
    }
    uintptr_t any = 0;
    for (size_t lane = 0; lane < block_lanes; ++lane)
        any |= matches[lane];
    return any != 0;
}

/* Passes over the blocks that do not hold the pointer. */
MOVA_AVX2 inline size_t find_word_by_avx2(const void *const *pointers, size_t count, const void *sought)
{
    const word_vector pattern = reinterpret_cast<uintptr_t>(sought) - word_vector{};
    size_t passed = 0;
    while (count - passed >= block_words && !block_holds(pointers + passed, pattern))
        passed += block_words;
    return passed + find_word_portably(pointers + passed, count - passed, sought);
}
#endif

inline size_t find_word(const void *const *pointers, size_t count, const void *sought)
{
#ifdef MOVA_AVX2
    if (has_avx2())
        return find_word_by_avx2(pointers, count, sought);
#endif
    return find_word_portably(pointers, count, sought);
}

} // namespace mova

#endif
