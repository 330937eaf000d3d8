/* SPDX-License-Identifier: MIT */
/* Finding a pointer among pointers. */
#ifndef MOVA_ARRAYS_INTERNAL_FIND_WORD_H
#define MOVA_ARRAYS_INTERNAL_FIND_WORD_H

#include <mova/frame/internal/vector_code.h>

#include <algorithm>
#include <cstddef>

namespace mova {

/* Returns the index of the first of `count` pointers that is `sought`, or `count`. */
inline size_t find_word_plainly(const void *const *pointers, size_t count, const void *sought)
{
    return static_cast<size_t>(std::find(pointers, pointers + count, sought) - pointers);
}

/* So many vectors make a block: enough to keep the tests of whole blocks rare. */
constexpr size_t block_vectors = 8, block_words = block_vectors * words_per_vector;

MOVA_AVX2 inline bool block_holds(const void *const *pointers, const word_vector &sought)
{
    word_vector matches = {};
    for (size_t i = 0; i < block_vectors; ++i) {
        word_vector words;
        load(words, pointers + i * words_per_vector);
        matches |= words == sought;
    }
    return signs_of(matches) != 0;
}

/* Passes over the blocks that do not hold the pointer. */
MOVA_AVX2 inline size_t find_word_by_avx2(const void *const *pointers, size_t count, const void *sought)
{
    const word_vector pattern = reinterpret_cast<mova_word>(sought) - word_vector{};
    size_t passed = 0;
    while (count - passed >= block_words && !block_holds(pointers + passed, pattern))
        passed += block_words;
    return passed + find_word_plainly(pointers + passed, count - passed, sought);
}

inline size_t find_word(const void *const *pointers, size_t count, const void *sought)
{
    return use_avx2 ? find_word_by_avx2(pointers, count, sought) : find_word_plainly(pointers, count, sought);
}

} // namespace mova

#endif
