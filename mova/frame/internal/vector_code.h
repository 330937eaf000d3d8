/* SPDX-License-Identifier: MIT */
/* How a body for the processor's vectors is chosen before the plain one.

   What gains by vectors has two bodies: one that is marked MOVA_AVX2, and a plain one, which every machine can run.

       MOVA_AVX2 size_t find_by_avx2(…);
       size_t find_plainly(…);
       size_t find(…) { return use_avx2 ? find_by_avx2(…) : find_plainly(…); }

   Nothing else names a machine. On one without AVX2 the mark is empty and use_avx2 is never true, so that the compiler
   leaves the first body out. */
#ifndef MOVA_FRAME_INTERNAL_VECTOR_CODE_H
#define MOVA_FRAME_INTERNAL_VECTOR_CODE_H

#include <mova/frame/host.h>

#include <cstring>

namespace mova {

/* As many words as one vector holds. Handed over by reference only: how it is passed otherwise depends on the flags that a
   file is compiled with. */
using word_vector [[gnu::vector_size(32)]] = mova_word;
constexpr size_t words_per_vector = sizeof(word_vector) / sizeof(mova_word);

} // namespace mova

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

/* Marks a function that is compiled for AVX2, whatever the rest is compiled for. */
#define MOVA_AVX2 [[gnu::target("avx2")]]

namespace mova {

/* Whether the processor has AVX2. Found out while the library is loaded, and false before. Tests clear it. */
extern bool use_avx2;

/* Loads a vector from where it need not be aligned. Once: g++ would load it anew for each use, which takes time where it
   lies in two cache lines. */
MOVA_AVX2 inline void load(word_vector &words, const void *from)
{
    std::memcpy(&words, from, sizeof words);
    asm("" : "+x"(words));
}

/* Returns one bit for each word of `words` that is below 0, as those are that a comparison found true. */
MOVA_AVX2 inline uint32_t signs_of(const word_vector &words)
{
    if constexpr (words_per_vector == 4)
        return static_cast<uint32_t>(_mm256_movemask_pd(reinterpret_cast<__m256d>(words)));
    else
        return static_cast<uint32_t>(_mm256_movemask_ps(reinterpret_cast<__m256>(words)));
}

} // namespace mova

#else

#define MOVA_AVX2

namespace mova {

constexpr bool use_avx2 = false;

inline void load(word_vector &words, const void *from)
{
    std::memcpy(&words, from, sizeof words);
}

inline uint32_t signs_of(const word_vector &words)
{
    uint32_t signs = 0;
    for (size_t i = 0; i < words_per_vector; ++i)
        signs |= (words[i] < 0 ? 1u : 0u) << i;
    return signs;
}

} // namespace mova

#endif

#endif
