/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_POINTER_LOOKUP
#include <mova/hash/pointer_lookup.h>

#include <mova/frame/internal/assert.h>
#include <mova/frame/internal/undo.h>
#include <mova/hash/internal/invariants.h>

#include <algorithm>

namespace {

void empty_front(mova_lookup *lookup)
{
    lookup->front_key = lookup->front_value = 0;
}

/* Where the callback throws, the front is empty, and the values in the table that it had before are 0. (To take their
   keys out of the table could ask for memory.) */
void release_values(mova_lookup *lookup, mova_lu_release_fn release_value)
{
    if (lookup->front_value)
        release_value(&lookup->front_value);
    HSH_iterator iterator = HSH_all_entries(lookup->table);
    mova::or_undo(
        [&] {
            for (mova_word key, value; HSH_next(&iterator, &key, &value);)
                release_value(&value);
        },
        [&] {
            empty_front(lookup);
            std::fill_n(lookup->table->values, iterator.index - 1, 0);
        });
}

void free_record(mova_lookup *lookup)
{
    MM_dealloc_item(lookup, sizeof(mova_lookup));
}

} // namespace

mova_lookup *mova_lu_create(void)
{
    mova_lookup *lookup = static_cast<mova_lookup *>(MM_alloc_item(sizeof(mova_lookup)));
    empty_front(lookup);
    lookup->table = mova::or_undo([] { return HSH_create(0, 0); }, [&] { free_record(lookup); });
    assert(mova::intact(mova::broken_invariant(*lookup)));
    return lookup;
}

mova_word mova_lu_add(mova_lookup *lookup, mova_word key, mova_word value)
{
    mova_word moved = 0;
    if (lookup->front_key)
        moved = HSH_set_value(lookup->table, lookup->front_key, lookup->front_value);
    lookup->front_key = key;
    lookup->front_value = value;
    return moved;
}

void mova_lu_remove(mova_lookup *lookup, mova_word key)
{
    if (key == lookup->front_key)
        empty_front(lookup);
    else
        HSH_remove_entry(lookup->table, key);
}

void mova_lu_release(mova_lookup **lookup, mova_lu_release_fn release_value)
{
    if (!lookup || !*lookup)
        return;
    if (release_value)
        release_values(*lookup, release_value);
    HSH_release(&(*lookup)->table);
    free_record(*lookup);
    *lookup = nullptr;
}
