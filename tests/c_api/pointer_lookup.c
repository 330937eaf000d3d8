/* SPDX-License-Identifier: MIT */
#include <mova/hash/pointer_lookup.h>

#include <stddef.h>

#include "c_api.h"
#include "check.h"

static _Thread_local mova_word released;

static void add_up(mova_word *value)
{
    released += *value;
}

static void add_get_and_remove(void)
{
    mova_lookup *lookup = mova_lu_create();
    CHECK(mova_lu_get(lookup, 1) == 0);
    CHECK(mova_lu_add(lookup, 1, 10) == 0);
    CHECK(mova_lu_add(lookup, 2, 20) == 10);
    CHECK(mova_lu_add(lookup, 1, 30) == 20);
    CHECK(mova_lu_get(lookup, 1) == 30 && mova_lu_get(lookup, 2) == 20);
    CHECK(mova_lu_statistics(lookup).longest_hit == 1);
    mova_lu_remove(lookup, 1);
    CHECK(mova_lu_get(lookup, 1) == 10);
    mova_lu_remove(lookup, 2);
    CHECK(mova_lu_get(lookup, 2) == 0);
    mova_lu_release(&lookup, NULL);
    CHECK(lookup == NULL);
}

static void release_values(void)
{
    mova_lookup *lookup = mova_lu_create();
    for (int key = 1; key <= 20; ++key)
        mova_lu_add(lookup, key, key);
    released = 0;
    mova_lu_release(&lookup, add_up);
    CHECK(released == 210);
    mova_lu_release(&lookup, add_up);
    mova_lu_release(NULL, add_up);
    CHECK(released == 210);
}

void drive_pointer_lookup(void)
{
    add_get_and_remove();
    release_values();
}
