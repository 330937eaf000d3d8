#ifndef MOVA_TESTS_SUPPORT_VERIFY_HASH_TABLE_H
#define MOVA_TESTS_SUPPORT_VERIFY_HASH_TABLE_H

#include <mova/hash/hash_table.h>
#include <mova/hash/pointer_lookup.h>

#include <algorithm>
#include <bit>

namespace mova::test {

inline bool is_table_size(int32_t size)
{
    return size >= 8 && std::has_single_bit(static_cast<uint32_t>(size));
}

/* Whether a search for the key of `slot` comes to it, and to no equal key before. */
inline bool is_reachable(const HSH_table &table, int32_t slot)
{
    mova_word key = table.keys[slot];
    auto at = static_cast<int32_t>((static_cast<uint32_t>(key) >> table.shift) & static_cast<uint32_t>(table.mask));
    while (table.keys[at] && table.keys[at] != key)
        at = (at + 1) % table.capacity;
    return at == slot;
}

/* Returns the number, as the header gives it, of the first invariant that `table` breaks, or 0. */
inline int broken_invariant(const HSH_table &table)
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
    auto occupied = capacity - std::count(table.keys, table.keys + capacity, 0);
    if (table.count != occupied || table.count < table.low_water_mark || table.count > table.high_water_mark)
        return 4;
    for (int32_t slot = 0; slot < capacity; ++slot) {
        if (table.keys[slot] && !is_reachable(table, slot))
            return 5;
    }
    return 0;
}

/* The same for a pointer lookup: of the first invariant that it, or then its table, breaks. */
inline int broken_invariant(const mova_lookup &lookup)
{
    bool table_is_right = lookup.table->minimum_size == 8 && lookup.table->maximum_shift == 0;
    return table_is_right ? broken_invariant(*lookup.table) : 1;
}

} // namespace mova::test

#endif
