/* SPDX-License-Identifier: MIT */
/* The numbered invariants of the arrays, as their headers give them. How large a block is, only the host knows: of a storage
   no more is checked than whether there is one. */
#ifndef MOVA_ARRAYS_INTERNAL_INVARIANTS_H
#define MOVA_ARRAYS_INTERNAL_INVARIANTS_H

#include <mova/arrays/block_array.h>
#include <mova/arrays/id_lookup_table.h>

#include <mova/frame/internal/assert.h>

#include <algorithm>
#include <functional>

namespace mova {

/* Each returns the number of the first invariant that is broken, or 0. */

inline int broken_invariant(const GB_block &block)
{
    if (block.count < 0 || block.count > block.capacity)
        return 1;
    if (block.capacity > 0 && !block.data)
        return 2;
    return block.closed == 0 || block.closed == 1 ? 0 : 3;
}

inline int broken_invariant(const DA_array &array)
{
    if ((array.data == nullptr) != (array.nalloc == 0))
        return 1;
    if (array.nalloc % array.increment != 0)
        return 2;
    return array.nitems <= array.nalloc ? 0 : 3;
}

/* Of the sorted numbers in `array`, which is whole. Linear. */
inline int broken_invariant_of_numbers(const DA_array &array)
{
    const auto *numbers = static_cast<const int32_t *>(array.data), *end = numbers + array.nitems;
    return std::adjacent_find(numbers, end, std::greater_equal<>()) == end ? 0 : 1;
}

inline int broken_invariant_of_table(const DA_array &table)
{
    if (table.element_size != sizeof(void *) || broken_invariant(table) != 0)
        return 1;
    return table.nitems >= 1 && *static_cast<const uintptr_t *>(table.data) <= 1 ? 0 : 2;
}

/* What the edits assert: the invariants, but where a header lets them be broken. A count below 0 is what GB_remove_last_item
   makes of 0; a dynamic array without data may have lost it to a failure. */

inline bool is_whole(const GB_block &block)
{
    return block.count < 0 || intact(broken_invariant(block));
}

inline bool is_whole(const DA_array &array)
{
    return !array.data || intact(broken_invariant(array));
}

} // namespace mova

#endif
