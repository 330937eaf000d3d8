/* SPDX-License-Identifier: MIT */
/* Where a key belongs. */
#ifndef MOVA_HASH_INTERNAL_SLOTS_H
#define MOVA_HASH_INTERNAL_SLOTS_H

#include <cstddef>

#include <mova/hash/inline/hash_table.h>

namespace mova::hash {

inline size_t mask_of(const HSH_table *table)
{
    return static_cast<size_t>(table->mask);
}

inline size_t home_of(const HSH_table *table, mova_word key)
{
    return mova_hsh_home(table, key);
}

} // namespace mova::hash

#endif
