/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_ID_LOOKUP_TABLE
#include <mova/arrays/id_lookup_table.h>

#include <mova/arrays/internal/find_word.h>
#include <mova/frame/host.h>
#include <mova/frame/internal/assert.h>
#include <mova/frame/internal/module_records.h>
#include <mova/frame/internal/undo.h>

namespace {

constexpr int32_t increment = 1024;
constexpr uintptr_t reuse_allowed = 1;

/* Word 0 holds the flags, the others the pointers. */
void **words(const DA_array *table)
{
    assert(table->element_size == sizeof(void *));
    return static_cast<void **>(DA_data(table));
}

uintptr_t flags(const DA_array *table)
{
    assert(DA_nitems(table) >= 1);
    return reinterpret_cast<uintptr_t>(words(table)[0]);
}

/* The word at an index of the storage, in use or not; null where the storage does not reach. */
void *word_at(const DA_array *table, int32_t index)
{
    return words(table) && index >= 0 && index < DA_nalloc(table) ? words(table)[index] : nullptr;
}

} // namespace

DA_array *io_lut_create(void)
{
    DA_array *table = DA_create(sizeof(void *), increment);
    const uintptr_t no_flags = 0;
    if (table)
        mova::or_undo([&] { DA_append(table, &no_flags, 1); }, [&] { DA_release(table); });
    return table;
}

void io_lut_allow_reuse(DA_array *table)
{
    words(table)[0] = reinterpret_cast<void *>(flags(table) | reuse_allowed);
}

void io_lut_release(DA_array **table)
{
    DA_release(*table);
    *table = nullptr;
}

int32_t io_lut_add(DA_array *table, void *pointer)
{
    DA_append(table, &pointer, 1);
    return DA_nitems(table) - 1;
}

int32_t io_lut_get_id(const DA_array *table, const void *pointer)
{
    int32_t id = io_lut_look_id(table, pointer);
    if (id == 0)
        mova::raise(mova::modules.plut, 108, MOVA_ID_NOT_FOUND);
    return id;
}

int32_t io_lut_look_id(const DA_array *table, const void *pointer)
{
    if (DA_nitems(table) < 2)
        return 0;
    const auto slots = static_cast<size_t>(DA_nitems(table) - 1);
    const size_t found = mova::find_word(words(table) + 1, slots, pointer);
    return found < slots ? static_cast<int32_t>(found + 1) : 0;
}

void io_lut_set(DA_array *table, void *pointer, int32_t id)
{
    if (!(flags(table) & reuse_allowed) && id < DA_nitems(table) && words(table)[id] != pointer)
        mova::raise(mova::modules.plut, 140, MOVA_PRECONDITION_BROKEN);
    DA_put_item(table, id, &pointer);
}

void *io_lut_get_ptr(const DA_array *table, int32_t id)
{
    if (!io_lut_look_ptr(table, id))
        mova::raise(mova::modules.plut, 155, MOVA_ID_NOT_FOUND);
    return word_at(table, id);
}

io_lut_iterator io_lut_all_items(const DA_array *table)
{
    return {words(table), DA_nitems(table), 1};
}

void *io_lut_next_item(io_lut_iterator *iterator)
{
    while (iterator->next < iterator->count && !iterator->storage[iterator->next])
        ++iterator->next;
    if (iterator->next >= iterator->count)
        return nullptr;
    return iterator->storage[iterator->next++];
}
