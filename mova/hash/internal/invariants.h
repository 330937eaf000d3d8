/* SPDX-License-Identifier: MIT */
/* The numbered invariants of the hash table and of the pointer lookup, as their headers give them. */
#ifndef MOVA_HASH_INTERNAL_INVARIANTS_H
#define MOVA_HASH_INTERNAL_INVARIANTS_H

#include <algorithm>
#include <bit>

#include <mova/hash/hash_table.h>
#include <mova/hash/internal/slots.h>
#include <mova/hash/pointer_lookup.h>

namespace mova {

inline bool is_table_size(int32_t size)
{
    return size >= 8 && std::has_single_bit(static_cast<uint32_t>(size));
}

/* Whether a search for the key of `slot` comes to it, and to no equal key before. Of the slots on the way none must be
   empty, which ends the walk where the counts are wrong too. */
inline bool is_reachable(const HSH_table &table, size_t slot)
{
    const mova_word key = table.keys[slot];
    size_t at = hash::home_of(&table, key);
    while (at != slot && table.keys[at] && table.keys[at] != key)
        at = (at + 1) & hash::mask_of(&table);
    return at == slot;
}

/* Returns the number of the first invariant that the fields of the record break, or 0. Constant time. */
inline int broken_record_invariant(const HSH_table &table)
{
    const int32_t capacity = table.capacity;
    if (!is_table_size(table.minimum_size) || !is_table_size(capacity) || capacity < table.minimum_size)
        return 1;
    const int32_t most = 32 - std::countr_zero(static_cast<uint32_t>(capacity));
    if (table.mask != capacity - 1 || table.shift != std::min(table.maximum_shift, most))
        return 2;
    if (table.low_water_mark != (capacity == table.minimum_size ? 0 : capacity / 4) ||
        table.high_water_mark != capacity - capacity / 8)
        return 3;
    return table.count < table.low_water_mark || table.count > table.high_water_mark ? 4 : 0;
}

/* Returns 5 where an entry of `count` slots from `first` on, around the end, cannot be reached from its home, else 0. What
   stands before them is taken to be as it should. Linear in the number of slots. */
inline int broken_run_invariant(const HSH_table &table, size_t first, int32_t count)
{
    const size_t mask = hash::mask_of(&table);
    int32_t last_empty = -table.capacity;
    for (int32_t place = 0; place < count; ++place) {
        const size_t slot = (first + static_cast<size_t>(place)) & mask;
        if (!table.keys[slot])
            last_empty = place;
        else if (place - static_cast<int32_t>((slot - hash::home_of(&table, table.keys[slot])) & mask) <= last_empty)
            return 5;
    }
    return 0;
}

/* Returns the number of the first invariant that the table breaks, or 0. */
inline int broken_invariant(const HSH_table &table)
{
    if (const int broken = broken_record_invariant(table))
        return broken;
    if (std::count(table.keys, table.keys + table.capacity, 0) != table.capacity - table.count)
        return 4;
    for (size_t slot = 0; slot <= hash::mask_of(&table); ++slot) {
        if (table.keys[slot] && !is_reachable(table, slot))
            return 5;
    }
    return 0;
}

/* The same for a pointer lookup: of the first invariant that it, or then its table, breaks. */
inline int broken_invariant(const mova_lookup &lookup)
{
    const bool table_is_right = lookup.table->minimum_size == 8 && lookup.table->maximum_shift == 0;
    return table_is_right ? broken_invariant(*lookup.table) : 1;
}

} // namespace mova

#endif
