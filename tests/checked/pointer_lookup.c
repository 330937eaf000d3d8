/* SPDX-License-Identifier: MIT */
#include <mova/hash/pointer_lookup.h>
#include <mova/lists/generic_list.h>

#include "misuse.h"

static mova_lookup *three_keys(void)
{
    mova_lookup *lookup = mova_lu_create();
    for (mova_word key = 1; key <= 3; ++key)
        mova_lu_add(lookup, key, 10 * key);
    return lookup;
}

/* The lookup that a callback is to edit, where it is to. */
static mova_lookup *edited;

static void free_value(mova_word *value)
{
    if (edited)
        mova_lu_remove(edited, 1);
    *value = 0;
}

static void null_lookup(int misused)
{
    mova_lookup *lookup = three_keys();
    mova_lu_get(misused ? NULL : lookup, 1);
    mova_lu_release(&lookup, NULL);
    mova_lu_release(&lookup, NULL);
    mova_lu_release(NULL, NULL);
}

static void never_created(int misused)
{
    mova_lookup *lookup = three_keys();
    mova_lookup copy = *lookup;
    mova_lu_get(misused ? &copy : lookup, 1);
    mova_lu_release(&lookup, NULL);
}

static void released_twice(int misused)
{
    mova_lookup *lookup = three_keys();
    mova_lookup *alias = lookup;
    mova_lu_release(&lookup, NULL);
    if (misused)
        mova_lu_release(&alias, NULL);
}

static void lookup_of_another_family(int misused)
{
    mova_lookup *lookup = three_keys();
    GL_list *list = GL_create();
    void *wrong = list;
    mova_lu_remove(misused ? (mova_lookup *)wrong : lookup, 1);
    GL_release(&list);
    mova_lu_release(&lookup, NULL);
}

static void edited_by_release(int misused)
{
    mova_lookup *lookup = three_keys();
    edited = misused ? lookup : NULL;
    mova_lu_release(&lookup, free_value);
}

static void zero_key(int misused)
{
    mova_lookup *lookup = three_keys();
    mova_lu_add(lookup, misused ? 0 : 4, 4);
    HSH_contains_key(lookup->table, 4);
    mova_lu_release(&lookup, NULL);
}

static void too_many_slots(int misused)
{
    mova_lookup *lookup = three_keys();
    if (misused) {
        lookup->table->capacity = 1 << 30;
        lookup->table->high_water_mark = lookup->table->count;
    }
    mova_lu_add(lookup, 4, 4);
    mova_lu_release(&lookup, NULL);
}

static void damaged_table(int misused)
{
    mova_lookup *lookup = three_keys();
    if (misused)
        lookup->table->count = 0;
    mova_lu_release(&lookup, NULL);
}

static void table_nowhere(int misused)
{
    mova_lookup *lookup = three_keys();
    if (misused)
        lookup->table = (HSH_table *)(uintptr_t)0x1000;
    mova_lu_release(&lookup, NULL);
}

static const misuse_cell cells[] = {
    {"null lookup", 1, "mova_lu_get: the lookup is null", null_lookup},
    {"never created", 2, "mova_lu_get: the lookup was never created", never_created},
    {"released twice", 2, "mova_lu_release: the lookup was released", released_twice},
    {"lookup of another family", 2, "mova_lu_remove: the lookup is of another family", lookup_of_another_family},
    {"too many slots", 7, "mova_lu_add: the table would have more than 2^30 slots", too_many_slots},
    {"edited by release", 9, "mova_lu_remove: the lookup is calling back in mova_lu_release", edited_by_release},
    {"key 0", 11, "mova_lu_add: the key is 0", zero_key},
    {"damaged table", 13, "mova_lu_release: the lookup breaks its invariant 4", damaged_table},
    {"table nowhere", 13, "mova_lu_release: the lookup breaks its invariant 1", table_nowhere},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
