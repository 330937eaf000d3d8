/* SPDX-License-Identifier: MIT */
/* The rows of the hash table. */
#ifndef MOVA_CHECKED_HASH_TABLE_H
#define MOVA_CHECKED_HASH_TABLE_H

#include "internal/chains.h"
#include "internal/roles.h"

#include <mova/hash/hash_table.h>
#include <mova/hash/internal/invariants.h>
#include <mova/hash/internal/probe.h>

#include <algorithm>
#include <bit>
#include <iterator>
#include <limits>

namespace mova::checked {

namespace hsh {

/* As broken_invariant, of a table whose keys may be anywhere, but linear however they crowd: of invariant 5 it does not look
   for a key that stands twice. */
inline int broken_invariant(const HSH_table &table)
{
    if (const int broken = broken_record_invariant(table))
        return broken;
    if (!are_bytes_there(table.keys, static_cast<size_t>(table.capacity) * sizeof *table.keys))
        return 4;
    const mova_word *const keys = table.keys, *const end = keys + table.capacity;
    if (std::count(keys, end, mova_word{0}) != table.capacity - table.count)
        return 4;
    const mova_word *const empty = std::find(keys, end, mova_word{0});
    return broken_run_invariant(table, static_cast<size_t>(empty - keys), table.capacity);
}

} // namespace hsh

inline constexpr family hash_table = {
    "table",
    "hash table",
    "block",
    false,
    nullptr,
    [](const void *table) { return hsh::broken_invariant(*static_cast<const HSH_table *>(table)); },
    [](const void *table) { return int64_t{static_cast<const HSH_table *>(table)->capacity}; },
};

namespace hsh {

/* ---- edits while a table is walked ----

   An iterator is the program's record, and nothing is known of its copies. So a walk is followed from its first step on: each
   notes where it has left the record at that address, and one that finds it there goes on with that walk. Any other is not
   followed, for other steps may have been compiled into the program. */

struct walk {
    const HSH_iterator *iterator;
    owner_number table;
    uint32_t edits; /* of the table by then */
    int32_t index;
};

/* The walk that the address has the place of; another's may be in it. */
inline walk &walk_of(const HSH_iterator *iterator)
{
    static walk walks[256];
    const auto address = reinterpret_cast<uintptr_t>(iterator);
    return walks[(address / alignof(HSH_iterator) ^ address >> 12) % std::size(walks)];
}

/* HSH_next. */
struct walks : role {
    static void before(call &made, const auto &arguments)
    {
        const HSH_iterator *const iterator = std::get<0>(arguments);
        if (!iterator)
            return made.wrong().say("the iterator is null");
        const owner_number table = made.judge_container(hash_table, iterator->table, use::read);
        walk &followed = walk_of(iterator);
        if (followed.iterator != iterator || followed.table != table || followed.index != iterator->index) {
            followed.iterator = table != 0 && iterator->index == 0 ? iterator : nullptr;
            return;
        }
        if (table == 0 || followed.edits == owner_at(table).edits || iterator->index >= iterator->table->capacity)
            return;
        made.wrong().say("the table was edited while it is walked");
        made.wrong().show_container(table);
    }

    static void after(call &made, const auto &arguments, int goes_on)
    {
        const HSH_iterator *const iterator = std::get<0>(arguments);
        walk &followed = walk_of(iterator);
        const owner_number table = made.used(0);
        if (table != 0 && followed.iterator == iterator)
            followed = {goes_on ? iterator : nullptr, table, owner_at(table).edits, iterator->index};
    }
};

/* HSH_set_value: a key that is new may move others. */
struct stores : role {
    static void before(call &made, const auto &arguments)
    {
        const HSH_table *const table = std::get<0>(arguments);
        if (made.used(0) != 0)
            made.remember(table->keys + table->count);
    }

    static void after(call &made, const auto &arguments, mova_word)
    {
        const HSH_table *const table = std::get<0>(arguments);
        if (made.used(0) != 0 && made.remembered() != table->keys + table->count)
            ++owner_at(made.used(0)).edits;
    }
};

struct removes : role {
    static void after(call &made, const auto &, int removed)
    {
        if (made.used(0) != 0 && removed >= 0)
            ++owner_at(made.used(0)).edits;
    }
};

/* ---- arguments ---- */

/* 0 marks an empty slot: what is stored for it is lost. */
struct key : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<1>(arguments) == 0)
            made.wrong().say("the key is 0");
    }
};

/* As many as the header allows, and as a block has room for. */
constexpr int most_slots_bits =
    std::min(30, std::numeric_limits<size_t>::digits - std::countr_zero(sizeof(mova_word)) - 1);
constexpr uint32_t most_slots = uint32_t{1} << most_slots_bits;

struct sizes : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [size, shift] = arguments;
        if (size > most_slots)
            made.wrong().say("the size is above 2^%d", most_slots_bits);
        else if (shift < 0)
            made.wrong().say("the maximum shift is negative");
    }
};

/* A new key would double the largest table. */
inline void judge_room(call &made, const HSH_table *table, mova_word key)
{
    if (table->capacity != static_cast<int32_t>(most_slots) || table->count < table->high_water_mark)
        return;
    const size_t home = hash::home_of(table, key);
    if (table->keys[home] != key &&
        !table->keys[hash::probe_one_by_one(table->keys, hash::mask_of(table), home, key)]) {
        made.wrong().say("the table would have more than 2^%d slots", most_slots_bits);
        made.wrong().show_container(made.used(0));
    }
}

struct room : role {
    static void before(call &made, const auto &arguments)
    {
        if (made.used(0) != 0)
            judge_room(made, std::get<0>(arguments), std::get<1>(arguments));
    }
};

inline constexpr container<0, hash_table> read{use::read}, edit{use::edit};
inline constexpr released<0, hash_table> gone{false};
inline constexpr makes<hash_table> table;

} // namespace hsh

namespace rows {

inline constexpr row HSH_create{hsh::sizes{}, hsh::table};
inline constexpr row HSH_release{hsh::gone};
inline constexpr row HSH_set_value{hsh::edit, hsh::key{}, hsh::room{}, hsh::stores{}};
inline constexpr row HSH_get_value{hsh::read};
inline constexpr row HSH_contains_key{hsh::read};
inline constexpr row mova_hash_find_slot{role{}};
inline constexpr row HSH_remove_entry{hsh::edit, hsh::removes{}};
inline constexpr row HSH_all_entries{hsh::read};
inline constexpr row HSH_next{hsh::walks{}};
inline constexpr row mova_hash_table_statistics{hsh::read};

} // namespace rows

} // namespace mova::checked

#endif
