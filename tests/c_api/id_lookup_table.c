/* SPDX-License-Identifier: MIT */
#include <mova/arrays/id_lookup_table.h>

#include "c_api.h"
#include "check.h"

static void iterate(const DA_array *table, int count, void *const *expected)
{
    io_lut_iterator iterator = io_lut_all_items(table);
    for (int i = 0; i < count; ++i)
        CHECK(io_lut_next_item(&iterator) == expected[i]);
    CHECK(io_lut_next_item(&iterator) == NULL);
}

void drive_id_lookup_table(void)
{
    char things[3];
    DA_array *table = io_lut_create();
    CHECK(io_lut_add(table, &things[0]) == 1);
    CHECK(io_lut_add(table, &things[1]) == 2);
    CHECK(io_lut_get_id(table, &things[1]) == 2);
    CHECK(io_lut_look_id(table, &things[2]) == 0);
    CHECK(io_lut_get_ptr(table, 1) == &things[0]);
    CHECK(io_lut_look_ptr(table, 3) == NULL);
    io_lut_set(table, &things[2], 5);
    iterate(table, 3, (void *const[]){&things[0], &things[1], &things[2]});
    io_lut_allow_reuse(table);
    io_lut_set(table, NULL, 1);
    iterate(table, 2, (void *const[]){&things[1], &things[2]});
    io_lut_release(&table);
    CHECK(table == NULL);
}
