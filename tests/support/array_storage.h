/* SPDX-License-Identifier: MIT */
/* The arrays' own checks, and what only the host knows: that a storage is a block of the right size. */
#ifndef MOVA_TESTS_SUPPORT_ARRAY_STORAGE_H
#define MOVA_TESTS_SUPPORT_ARRAY_STORAGE_H

#include <mova/arrays/internal/invariants.h>

#include <tests/support/recording_host.h>

namespace mova::test {

/* Whether `data` is a block of so many elements, or null for none. */
inline bool is_storage(const void *data, int32_t count, uint32_t element_size)
{
    return data ? recording_host::get().size_of(data) == static_cast<std::size_t>(count) * element_size : count == 0;
}

/* Each returns the number, as the header gives it, of the first invariant that is broken, or 0. */

inline int broken_invariant(const GB_block &block)
{
    const int broken = mova::broken_invariant(block);
    return broken == 0 && !is_storage(block.data, block.capacity, block.element_size) ? 2 : broken;
}

inline int broken_invariant(const DA_array &array)
{
    const int broken = mova::broken_invariant(array);
    return broken == 0 && !is_storage(array.data, array.nalloc, array.element_size) ? 4 : broken;
}

inline int broken_invariant_of_table(const DA_array &table)
{
    const int broken = mova::broken_invariant_of_table(table);
    return broken == 0 && broken_invariant(table) != 0 ? 1 : broken;
}

} // namespace mova::test

#endif
