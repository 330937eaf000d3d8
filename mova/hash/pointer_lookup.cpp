#include <mova/hash/pointer_lookup.h>

namespace {

void release_values(mova_lookup *lookup, mova_lu_release_fn release_value)
{
    if (lookup->front_value)
        release_value(&lookup->front_value);
    HSH_iterator iterator = HSH_all_entries(lookup->table);
    for (mova_word key, value; HSH_next(&iterator, &key, &value);)
        release_value(&value);
}

} // namespace

mova_lookup *mova_lu_create(void)
{
    mova_lookup *lookup = static_cast<mova_lookup *>(MM_alloc_item(sizeof(mova_lookup)));
    lookup->front_key = lookup->front_value = 0;
    lookup->table = HSH_create(0, 0);
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

mova_word mova_lu_get(const mova_lookup *lookup, mova_word key)
{
    return key == lookup->front_key ? lookup->front_value : HSH_get_value(lookup->table, key);
}

void mova_lu_remove(mova_lookup *lookup, mova_word key)
{
    if (key == lookup->front_key)
        lookup->front_key = lookup->front_value = 0;
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
    MM_dealloc_item(*lookup, sizeof(mova_lookup));
    *lookup = nullptr;
}
