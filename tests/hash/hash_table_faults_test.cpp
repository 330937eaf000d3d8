/* SPDX-License-Identifier: MIT */
#include <mova/hash/hash_table.h>

#include <tests/support/fault_sweep.h>
#include <mova/hash/internal/invariants.h>

#include <string>

namespace {

using namespace mova::test;

/* A table that the next key doubles, one that the next removal halves, and what the call made. */
struct tables {
    HSH_table *full = HSH_create(0, 0), *thin = HSH_create(0, 0), *made = nullptr;
    mova_word stored = 0;
    int removed = -1;

    tables()
    {
        for (mova_word key = 1; key <= 7; ++key)
            HSH_set_value(full, key, 10 * key);
        for (mova_word key = 1; key <= 8; ++key)
            HSH_set_value(thin, key, 10 * key);
        for (mova_word key = 1; key <= 4; ++key)
            HSH_remove_entry(thin, key);
    }

    std::string state() const
    {
        return text_of(full) + text_of(thin) + (made ? " made" : "") + " " + std::to_string(stored) + " " +
               std::to_string(removed);
    }

    int broken_invariant() const { return mova::broken_invariant(*full) + 10 * mova::broken_invariant(*thin); }

    void go_on()
    {
        for (HSH_table *table : {full, thin}) {
            HSH_set_value(table, 100, 1);
            EXPECT_EQ(HSH_get_value(table, 100), 1);
            EXPECT_EQ(HSH_remove_entry(table, 5), 0);
            EXPECT_EQ(HSH_contains_key(table, 5), 0);
        }
        HSH_set_value(full, 8, 80);
        EXPECT_EQ(full->capacity, 16);
    }

    void release()
    {
        for (HSH_table **table : {&full, &thin, &made}) {
            if (*table)
                HSH_release(table);
        }
    }

    static std::string text_of(const HSH_table *table)
    {
        std::string text = "(" + std::to_string(table->capacity) + " " + std::to_string(table->count);
        for (int32_t slot = 0; slot < table->capacity; ++slot)
            text += " " + std::to_string(table->keys[slot]) + "=" + std::to_string(table->values[slot]);
        return text + ")";
    }
};

constexpr aftermath unchanged{grade::unchanged}, loses_what_was_made{grade::unchanged, true};

const fault_row<tables> rows[] = {
    {"HSH_create", [](tables &t) { t.made = HSH_create(20, 0); }, unchanged, loses_what_was_made},
    {"HSH_set_value", [](tables &t) { t.stored = HSH_set_value(t.full, 8, 80); }, unchanged, loses_what_was_made},
    {"HSH_remove_entry", [](tables &t) { t.removed = HSH_remove_entry(t.thin, 6); }, unchanged, loses_what_was_made},
    {"mova_hash_table_statistics", [](tables &t) { mova_hash_table_statistics(t.full); }, unchanged, unchanged},
};

TEST(HashTableFaults, WhateverFailsTheTablesAreLeftAsTheHeaderSays)
{
    sweep_faults("hash table", rows, 28);
}

} // namespace
