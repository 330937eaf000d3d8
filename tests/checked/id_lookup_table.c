/* SPDX-License-Identifier: MIT */
#include <limits.h>

#include <mova/arrays/id_lookup_table.h>
#include <mova/lists/generic_list.h>

#include "misuse.h"

static int things[2];

static DA_array *two_ids(void)
{
    DA_array *table = io_lut_create();
    for (int i = 0; i < 2; ++i)
        io_lut_add(table, &things[i]);
    return table;
}

/* ---- containers ---- */

static void null_table(int misused)
{
    DA_array *table = two_ids();
    io_lut_add(misused ? NULL : table, things);
    io_lut_release(&table);
}

static void null_iterator(int misused)
{
    DA_array *table = two_ids();
    io_lut_iterator iterator = io_lut_all_items(table);
    io_lut_next_item(misused ? NULL : &iterator);
    io_lut_release(&table);
}

static void used_after_release(int misused)
{
    DA_array *table = two_ids();
    DA_array *alias = table;
    if (misused)
        io_lut_release(&table);
    io_lut_look_ptr(alias, 1);
    if (table)
        io_lut_release(&table);
}

static void table_of_another_family(int misused)
{
    DA_array *table = two_ids();
    GL_list *list = GL_create();
    void *wrong = list;
    io_lut_look_id(misused ? (DA_array *)wrong : table, things);
    GL_release(&list);
    io_lut_release(&table);
}

static void array_of_numbers(int misused)
{
    DA_array *array = DA_create(sizeof(int), 4);
    DA_array *table = two_ids();
    DA_setsize(array, 1);
    if (misused)
        io_lut_add(array, things);
    DA_release(array);
    io_lut_release(&table);
}

static void array_without_flags(int misused)
{
    DA_array *array = DA_create(sizeof(void *), 4);
    DA_setsize(array, misused ? 0 : 1);
    io_lut_set(array, things, 1);
    DA_release(array);
}

/* ---- iterators and ids ---- */

static void storage_was_released(int misused)
{
    DA_array *table = two_ids();
    io_lut_iterator iterator = io_lut_all_items(table);
    if (misused)
        io_lut_release(&table);
    io_lut_next_item(&iterator);
    io_lut_release(&table);
}

static void became_longer(int misused)
{
    DA_array *table = two_ids();
    io_lut_iterator iterator = io_lut_all_items(table);
    if (misused)
        io_lut_add(table, things);
    io_lut_next_item(&iterator);
    io_lut_release(&table);
}

static void id_zero(int misused)
{
    DA_array *table = two_ids();
    io_lut_allow_reuse(table);
    io_lut_set(table, things, misused ? 0 : 1);
    io_lut_release(&table);
}

static void too_large_an_id(int misused)
{
    DA_array *table = two_ids();
    io_lut_set(table, things, misused ? INT_MAX - 1 : 4);
    io_lut_release(&table);
}

/* ---- damage ---- */

static void damaged_length(int misused)
{
    DA_array *table = two_ids();
    if (misused)
        table->nitems = 5000;
    io_lut_release(&table);
}

static const misuse_cell cells[] = {
    {"null table", 1, "io_lut_add: the table is null", null_table},
    {"null iterator", 1, "io_lut_next_item: the iterator is null", null_iterator},
    {"used after release", 2, "io_lut_look_ptr: the table was released", used_after_release},
    {"table of another family", 2, "io_lut_look_id: the table is of another family", table_of_another_family},
    {"array of numbers", 6, "io_lut_add: the array is no table of ids", array_of_numbers},
    {"array without flags", 2, "io_lut_set: the array is no table of ids", array_without_flags},
    {"storage was released", 11, "io_lut_next_item: the storage that the iterator reads was released",
     storage_was_released},
    {"became longer", 11, "io_lut_next_item: the table became longer since the iterator was made", became_longer},
    {"id 0", 7, "io_lut_set: the id is below 1", id_zero},
    {"too large an id", 7, "io_lut_set: the array would have more than 2147483647 elements", too_large_an_id},
    {"damaged length", 13, "io_lut_release: the table breaks its invariant 3", damaged_length},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
