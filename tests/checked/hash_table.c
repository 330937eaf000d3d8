/* SPDX-License-Identifier: MIT */
#include <mova/hash/hash_table.h>
#include <mova/lists/generic_list.h>

#include "misuse.h"

static HSH_table *three_keys(void)
{
    HSH_table *table = HSH_create(8, 0);
    for (mova_word key = 1; key <= 3; ++key)
        HSH_set_value(table, key, 10 * key);
    return table;
}

/* ---- containers ---- */

static void null_table(int misused)
{
    HSH_table *table = three_keys();
    HSH_get_value(misused ? NULL : table, 1);
    HSH_release(&table);
}

static void null_address(int misused)
{
    HSH_table *table = three_keys();
    HSH_table *none = NULL;
    if (misused)
        HSH_release(&none);
    HSH_release(&table);
}

static void null_iterator(int misused)
{
    HSH_table *table = three_keys();
    HSH_iterator iterator = HSH_all_entries(table);
    mova_word key, value;
    HSH_next(misused ? NULL : &iterator, &key, &value);
    HSH_release(&table);
}

static void never_created(int misused)
{
    HSH_table *table = three_keys();
    HSH_table copy = *table;
    HSH_contains_key(misused ? &copy : table, 1);
    HSH_release(&table);
}

static void used_after_release(int misused)
{
    HSH_table *table = three_keys();
    HSH_table *alias = table;
    if (misused)
        HSH_release(&table);
    HSH_set_value(alias, 4, 4);
    HSH_release(&table);
}

static void table_of_another_family(int misused)
{
    HSH_table *table = three_keys();
    GL_list *list = GL_create();
    void *wrong = list;
    HSH_remove_entry(misused ? (HSH_table *)wrong : table, 1);
    GL_release(&list);
    HSH_release(&table);
}

/* ---- walks ---- */

static HSH_iterator after_one_step(HSH_table *table)
{
    HSH_iterator iterator = HSH_all_entries(table);
    return iterator;
}

static void new_key_while_walked(int misused)
{
    HSH_table *table = three_keys();
    HSH_iterator iterator = after_one_step(table);
    mova_word key, value;
    HSH_next(&iterator, &key, &value);
    HSH_set_value(table, misused ? 99 : key, 1);
    HSH_next(&iterator, &key, &value);
    HSH_release(&table);
}

static void removal_while_walked(int misused)
{
    HSH_table *table = three_keys();
    HSH_iterator iterator = after_one_step(table);
    mova_word key, value;
    HSH_next(&iterator, &key, &value);
    HSH_remove_entry(table, misused ? key : 99);
    HSH_next(&iterator, &key, &value);
    HSH_release(&table);
}

/* A walk that begins anew where another was left has not been edited. */
static void walked_anew(int misused)
{
    HSH_table *table = three_keys();
    HSH_iterator iterator = after_one_step(table);
    mova_word key, value;
    HSH_next(&iterator, &key, &value);
    HSH_remove_entry(table, key);
    iterator = after_one_step(table);
    HSH_next(&iterator, &key, &value);
    if (misused)
        HSH_remove_entry(table, key);
    HSH_next(&iterator, &key, &value);
    HSH_release(&table);
}

static void walk_outlived_its_table(int misused)
{
    HSH_table *table = three_keys();
    HSH_iterator iterator = after_one_step(table);
    mova_word key, value;
    if (misused)
        HSH_release(&table);
    HSH_next(&iterator, &key, &value);
    if (table)
        HSH_release(&table);
}

/* ---- keys, sizes, damage ---- */

static void zero_key(int misused)
{
    HSH_table *table = three_keys();
    HSH_set_value(table, misused ? 0 : 4, 4);
    HSH_release(&table);
}

static void too_large(int misused)
{
    HSH_table *table = HSH_create(misused ? (1u << 30) + 1 : 8, 0);
    HSH_release(&table);
}

static void negative_shift(int misused)
{
    HSH_table *table = HSH_create(8, misused ? -1 : 0);
    HSH_release(&table);
}

static void too_many_slots(int misused)
{
    HSH_table *table = three_keys();
    if (misused) {
        table->capacity = 1 << 30;
        table->high_water_mark = table->count;
    }
    HSH_set_value(table, 4, 4);
    HSH_release(&table);
}

static void damaged_count(int misused)
{
    HSH_table *table = three_keys();
    if (misused)
        table->count = 2;
    HSH_release(&table);
}

static void damaged_key(int misused)
{
    HSH_table *table = three_keys();
    if (misused)
        table->keys[1] = 6;
    HSH_release(&table);
}

static void keys_nowhere(int misused)
{
    HSH_table *table = three_keys();
    if (misused)
        table->keys = (mova_word *)(uintptr_t)0x1000;
    HSH_release(&table);
}

static const misuse_cell cells[] = {
    {"null table", 1, "HSH_get_value: the table is null", null_table},
    {"null address", 1, "HSH_release: the table is null", null_address},
    {"null iterator", 1, "HSH_next: the iterator is null", null_iterator},
    {"never created", 2, "HSH_contains_key: the table was never created", never_created},
    {"used after release", 2, "HSH_set_value: the table was released", used_after_release},
    {"table of another family", 2, "HSH_remove_entry: the table is of another family", table_of_another_family},
    {"new key while walked", 11, "HSH_next: the table was edited while it is walked", new_key_while_walked},
    {"removal while walked", 11, "HSH_next: the table was edited while it is walked", removal_while_walked},
    {"walked anew", 11, "HSH_next: the table was edited while it is walked", walked_anew},
    {"walk outlived its table", 4, "HSH_next: the table was released", walk_outlived_its_table},
    {"key 0", 11, "HSH_set_value: the key is 0", zero_key},
    {"too large", 7, "HSH_create: the size is above 2^30", too_large},
    {"negative shift", 7, "HSH_create: the maximum shift is negative", negative_shift},
    {"too many slots", 7, "HSH_set_value: the table would have more than 2^30 slots", too_many_slots},
    {"damaged count", 13, "HSH_release: the table breaks its invariant 4", damaged_count},
    {"damaged key", 13, "HSH_release: the table breaks its invariant 5", damaged_key},
    {"keys nowhere", 13, "HSH_release: the table breaks its invariant 4", keys_nowhere},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
