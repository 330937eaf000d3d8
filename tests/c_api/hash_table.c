/* SPDX-License-Identifier: MIT */
#include <mova/hash/hash_table.h>

#include <stddef.h>

#include "c_api.h"
#include "check.h"

static HSH_table *table_of_squares(int count)
{
    HSH_table *table = HSH_create(0, 0);
    for (int key = 1; key <= count; ++key)
        CHECK(HSH_set_value(table, key, key * key) == key * key);
    return table;
}

static void create_and_release(void)
{
    HSH_table *table = HSH_create(17, 4);
    CHECK(table->minimum_size == 32 && table->capacity == 32 && table->count == 0);
    CHECK(table->shift == 4 && table->maximum_shift == 4);
    HSH_release(&table);
    CHECK(table == NULL);
}

static void set_get_and_contain(void)
{
    HSH_table *table = table_of_squares(100);
    CHECK(HSH_get_value(table, 9) == 81);
    CHECK(HSH_set_value(table, 9, 0) == 0);
    CHECK(HSH_get_value(table, 9) == 0 && HSH_contains_key(table, 9) == 1);
    CHECK(HSH_get_value(table, 101) == 0 && HSH_contains_key(table, 101) == 0);
    CHECK(table->keys[mova_hash_find_slot(table->keys, (size_t)table->mask, 0, 0)] == 0);
    CHECK(mova_hash_table_statistics(table).longest_hit >= 1);
    CHECK(HSH_set_value(table, 0, 1) == 0 && table->count == 100);
    HSH_release(&table);
}

static void remove_entries(void)
{
    HSH_table *table = table_of_squares(100);
    CHECK(HSH_remove_entry(table, 101) == -1);
    for (int key = 1; key <= 100; ++key)
        CHECK(HSH_remove_entry(table, key) >= 0);
    CHECK(table->count == 0 && table->capacity == 8);
    HSH_release(&table);
}

static void iterate(void)
{
    HSH_table *table = table_of_squares(5);
    HSH_iterator iterator = HSH_all_entries(table);
    mova_word key = 0, value = 0;
    CHECK(iterator.table == table && iterator.index == 0);
    for (int expected = 1; expected <= 5; ++expected) {
        CHECK(HSH_next(&iterator, &key, &value) == 1);
        CHECK(key == expected && value == expected * expected);
    }
    CHECK(HSH_next(&iterator, &key, &value) == 0);
    CHECK(key == 5 && value == 25);
    HSH_release(&table);
}

static void look_up_records_by_address(void)
{
    double records[4] = {1, 2, 3, 4};
    HSH_table *table = HSH_create(8, 3);
    for (int i = 0; i < 4; ++i)
        HSH_set_value(table, (mova_word)&records[i], (mova_word)&records[3 - i]);
    CHECK(*(double *)HSH_get_value(table, (mova_word)&records[1]) == 3);
    HSH_release(&table);
}

void drive_hash_table(void)
{
    create_and_release();
    set_get_and_contain();
    remove_entries();
    iterate();
    look_up_records_by_address();
}
