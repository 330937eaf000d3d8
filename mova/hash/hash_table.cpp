/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_HASH_TABLE
#include <mova/hash/hash_table.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include <mova/frame/internal/assert.h>
#include <mova/frame/internal/undo.h>
#include <mova/hash/internal/invariants.h>
#include <mova/hash/internal/probe.h>
#include <mova/hash/internal/repair.h>
#include <mova/hash/internal/slots.h>

using mova::broken_invariant, mova::broken_record_invariant, mova::intact;
using mova::hash::home_of, mova::hash::mask_of, mova::hash::probe;

namespace {

/* The smallest capacity that a table has for at least `size` slots. */
int32_t capacity_for(uint32_t size)
{
    return static_cast<int32_t>(std::bit_ceil(std::max(size, 8u)));
}

size_t array_bytes(int32_t capacity)
{
    return static_cast<size_t>(capacity) * sizeof(mova_word);
}

struct arrays {
    mova_word *keys, *values;
};

arrays create_arrays(int32_t capacity)
{
    const size_t bytes = array_bytes(capacity);
    const auto allocate = [bytes] { return static_cast<mova_word *>(MM_alloc_item(bytes)); };
    mova_word *keys = allocate();
    mova_word *values = mova::or_undo(allocate, [&] { MM_dealloc_item(keys, bytes); });
    std::memset(keys, 0, bytes);
    std::memset(values, 0, bytes);
    return {keys, values};
}

void free_arrays(const HSH_table &table)
{
    MM_dealloc_item(table.keys, array_bytes(table.capacity));
    MM_dealloc_item(table.values, array_bytes(table.capacity));
}

void free_record(HSH_table *table)
{
    MM_dealloc_item(table, sizeof(HSH_table));
}

/* Makes the table one of `capacity` empty slots. The arrays that it had are the caller's. The marks say when it shrinks and
   grows: the header's invariants 3 and 4, and tests/model/literal_hash_table.h, say the same. */
void use_arrays(HSH_table *table, arrays fresh, int32_t capacity)
{
    table->capacity = capacity;
    table->count = 0;
    table->low_water_mark = table->minimum_size < capacity ? capacity / 4 : 0;
    table->high_water_mark = capacity / 8 * 7;
    table->mask = capacity - 1;
    table->shift = std::min(table->maximum_shift, 32 - std::countr_zero(static_cast<uint32_t>(capacity)));
    table->keys = fresh.keys;
    table->values = fresh.values;
}

/* Stores an entry whose key is not in the table, which has room for it. */
void place(HSH_table *table, mova_word key, mova_word value)
{
    assert(table->count < table->high_water_mark);
    size_t slot = home_of(table, key);
    if (table->keys[slot])
        slot = probe(table->keys, mask_of(table), slot, 0);
    table->keys[slot] = key;
    table->values[slot] = value;
    ++table->count;
}

/* Moves the entries into fresh arrays, in the order of their slots, and frees the old ones. */
void move_to(HSH_table *table, arrays fresh, int32_t capacity)
{
    const HSH_table old = *table;
    use_arrays(table, fresh, capacity);
    for (int32_t slot = 0; slot < old.capacity; ++slot) {
        if (old.keys[slot])
            place(table, old.keys[slot], old.values[slot]);
    }
    free_arrays(old);
    assert(intact(broken_invariant(*table)));
}

void grow(HSH_table *table)
{
    const int32_t capacity = table->capacity * 2;
    move_to(table, create_arrays(capacity), capacity);
}

/* Takes out the entry of `slot` and halves the table. That does not go below the minimum size: a table of that size has
   a low-water mark of 0. The arrays are made first: a memory service that fails finds the table as it was. */
void shrink_without(HSH_table *table, size_t slot)
{
    assert(table->capacity > table->minimum_size); /* invariant 3 */
    const int32_t capacity = table->capacity / 2;
    const arrays fresh = create_arrays(capacity);
    table->keys[slot] = 0;
    move_to(table, fresh, capacity);
}

/* Aligned, for where its loops lie decides on up to a fifth of the time of a removal. */
[[gnu::aligned(64)]] void take_out(HSH_table *table, size_t slot)
{
    table->keys[slot] = 0;
    --table->count;
    if (table->keys[(slot + 1) & mask_of(table)])
        mova::hash::repair(table, slot).run();
}

/* The slot of `key`, which is put into the table where it is absent. Its value is the caller's to store. */
size_t slot_for(HSH_table *table, mova_word key)
{
    size_t slot = mova_hsh_slot(table, key);
    if (table->keys[slot])
        return slot;
    if (table->count >= table->high_water_mark) {
        grow(table);
        slot = mova_hsh_slot(table, key);
    }
    ++table->count;
    table->keys[slot] = key;
    return slot;
}

} // namespace

HSH_table *HSH_create(uint32_t initial_size, int32_t maximum_shift)
{
    HSH_table *table = static_cast<HSH_table *>(MM_alloc_item(sizeof(HSH_table)));
    table->minimum_size = capacity_for(initial_size);
    table->maximum_shift = maximum_shift;
    const arrays fresh = mova::or_undo([&] { return create_arrays(table->minimum_size); }, [&] { free_record(table); });
    use_arrays(table, fresh, table->minimum_size);
    assert(intact(broken_invariant(*table)));
    return table;
}

void HSH_release(HSH_table **table)
{
    free_arrays(**table);
    free_record(*table);
    *table = nullptr;
}

mova_word HSH_set_value(HSH_table *table, mova_word key, mova_word value)
{
    if (!key)
        return 0;
    __builtin_prefetch(table->values + home_of(table, key));
    const size_t slot = slot_for(table, key); /* which may give the table other arrays */
    table->values[slot] = value;
    assert(intact(broken_record_invariant(*table)));
    return value;
}

size_t mova_hash_find_slot(const mova_word *keys, size_t mask, size_t slot, mova_word key)
{
    return probe(keys, mask, slot, key);
}

int HSH_remove_entry(HSH_table *table, mova_word key)
{
    const size_t slot = mova_hsh_slot(table, key);
    if (!table->keys[slot])
        return -1;
    if (table->count > table->low_water_mark)
        take_out(table, slot);
    else
        shrink_without(table, slot);
    assert(intact(broken_record_invariant(*table)));
    return 0;
}
