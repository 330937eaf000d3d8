/* SPDX-License-Identifier: MIT */
/* Passes over an array of numbers, many at a time. */
#ifndef MOVA_ARRAYS_INTERNAL_NUMBER_PASSES_H
#define MOVA_ARRAYS_INTERNAL_NUMBER_PASSES_H

#include <mova/frame/internal/vector_code.h>

#include <cstdint>
#include <span>

namespace mova {

template <class Pass>
[[gnu::always_inline]] inline Pass pass_over(std::span<int32_t> numbers, Pass pass)
{
    for (size_t i = 0; i < numbers.size(); ++i)
        pass(numbers[i], static_cast<int32_t>(i));
    return pass;
}

template <class Pass>
MOVA_AVX2 Pass pass_over_by_avx2(std::span<int32_t> numbers, Pass pass)
{
    return pass_over(numbers, pass);
}

/* Calls `pass` with each number, which it may change, and its index, in order. Returns `pass` with what it has gathered.
   It should not branch, so that the compiler can take many numbers at a time. */
template <class Pass>
Pass for_each_number(std::span<int32_t> numbers, Pass pass)
{
    return use_avx2 ? pass_over_by_avx2(numbers, pass) : pass_over(numbers, pass);
}

} // namespace mova

#endif
