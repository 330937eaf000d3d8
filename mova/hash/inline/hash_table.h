/* SPDX-License-Identifier: MIT */
/* Bodies of functions of mova/hash/hash_table.h, where their contracts are. mova/frame/inline.h says what the marks mean. */
#ifndef MOVA_HASH_INLINE_HASH_TABLE_H
#define MOVA_HASH_INLINE_HASH_TABLE_H

#include <stddef.h>

#include <mova/frame/inline.h>
#include <mova/hash/hash_table.h>

#ifdef MOVA_OWN_HASH_TABLE
#define HSH_INLINE
#else
#define HSH_INLINE MOVA_INLINE
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- iteration ---- */

HSH_INLINE HSH_iterator HSH_all_entries(HSH_table *table)
{
    HSH_iterator iterator = {table, table->count ? 0 : table->capacity};
    return iterator;
}

HSH_INLINE int HSH_next(HSH_iterator *iterator, mova_word *key, mova_word *value)
{
    const HSH_table *table = iterator->table;
    while (iterator->index < table->capacity) {
        const int32_t slot = iterator->index++;
        if (table->keys[slot]) {
            *key = table->keys[slot];
            *value = table->values[slot];
            return 1;
        }
    }
    return 0;
}

/* ---- searching: the look at the home slot, where most keys stand. The library goes on, eight slots at a time ---- */

/* The slot that a key has in a table that is empty otherwise. */
MOVA_INLINE_PART size_t mova_hsh_home(const HSH_table *table, mova_word key)
{
    return (MOVA_CAST(uint32_t, key) >> table->shift) & MOVA_CAST(uint32_t, table->mask);
}

/* The slot that holds `key`, or the empty slot where it belongs. */
MOVA_INLINE_PART size_t mova_hsh_slot(const HSH_table *table, mova_word key)
{
    const size_t home = mova_hsh_home(table, key);
    const mova_word there = table->keys[home];
    MOVA_ASSERT(table->count < table->capacity); /* invariant 4: an empty slot ends every search */
    if (!there || there == key)
        return home;
    return mova_hash_find_slot(table->keys, MOVA_CAST(uint32_t, table->mask), home, key);
}

/* The same, with the value sent for before the search. */
MOVA_INLINE_PART size_t mova_hsh_slot_and_value(const HSH_table *table, mova_word key)
{
    __builtin_prefetch(table->values + mova_hsh_home(table, key));
    return mova_hsh_slot(table, key);
}

HSH_INLINE mova_word HSH_get_value(const HSH_table *table, mova_word key)
{
    const size_t slot = mova_hsh_slot_and_value(table, key);
    return table->keys[slot] ? table->values[slot] : 0;
}

HSH_INLINE int HSH_contains_key(const HSH_table *table, mova_word key)
{
    return table->keys[mova_hsh_slot(table, key)] != 0;
}

#ifndef MOVA_OWN_HASH_TABLE

extern mova_word mova_hsh_call_set_value(HSH_table *table, mova_word key, mova_word value) MOVA_CALL(HSH_set_value);

/* All but a key of 0, and a new key that makes the table grow. */
MOVA_SHORTCUT mova_word HSH_set_value(HSH_table *table, mova_word key, mova_word value)
{
    size_t slot;
    if (!key)
        return mova_hsh_call_set_value(table, key, value);
    slot = mova_hsh_slot_and_value(table, key);
    if (!table->keys[slot]) {
        if (table->count >= table->high_water_mark)
            return mova_hsh_call_set_value(table, key, value);
        table->keys[slot] = key;
        ++table->count;
    }
    table->values[slot] = value;
    return value;
}

#endif

#ifdef __cplusplus
}
#endif
#undef HSH_INLINE

#endif
