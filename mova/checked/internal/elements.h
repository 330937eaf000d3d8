/* SPDX-License-Identifier: MIT */
/* What is said of the memory of elements. */
#ifndef MOVA_CHECKED_INTERNAL_ELEMENTS_H
#define MOVA_CHECKED_INTERNAL_ELEMENTS_H

#include "call.h"

#include <utility>

namespace mova::checked {

inline void say_sizes_differ(call &made, unsigned long given, unsigned long own)
{
    made.wrong().say("the elements have %lu bytes, not %lu", own, given);
}

/* Of two arrays. Which sizes they are is not in the first line: it is one misuse for each place. */
inline void say_element_sizes(call &made, unsigned target, unsigned source)
{
    made.wrong().say("the elements of the two arrays differ in size");
    made.wrong().add(nullptr, "%-10s %u bytes and %u bytes", "sizes", target, source);
}

inline uint64_t elements_bytes(int64_t count, uint32_t element_size)
{
    return count > 0 ? static_cast<uint64_t>(count) * element_size : 0;
}

/* Whether a block can have so many bytes. On 64-bit all can that 31 bits of count and 32 of size come to. */
inline bool is_size(uint64_t bytes)
{
    return std::in_range<size_t>(bytes);
}

inline bool lies_in(const void *address, const void *storage, uint64_t bytes)
{
    const auto given = reinterpret_cast<uintptr_t>(address), begin = reinterpret_cast<uintptr_t>(storage);
    return storage && given >= begin && given - begin < bytes;
}

/* Whether two pieces of that many bytes share some, but not all. */
inline bool overlap(const void *a, const void *b, size_t bytes)
{
    return a != b && (lies_in(a, b, bytes) || lies_in(b, a, bytes));
}

} // namespace mova::checked

#endif
