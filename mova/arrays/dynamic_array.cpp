/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_DYNAMIC_ARRAY
#include <mova/arrays/dynamic_array.h>

#include <cstring>

#include <mova/arrays/internal/elements.h>
#include <mova/arrays/internal/invariants.h>
#include <mova/frame/host.h>
#include <mova/frame/internal/module_records.h>
#include <mova/frame/internal/undo.h>

using mova::bytes_of;
using mova::elements;
using mova::is_whole;

namespace {

/* What a head counts for in a report. */
constexpr uint32_t reported_head_bytes = 20;

elements elements_of(const DA_array *array)
{
    return {array->data, array->element_size};
}

size_t storage_bytes(const DA_array *array)
{
    return bytes_of(array->nalloc, array->element_size);
}

/* Makes the record; raises with the line of the function that it is for, and returns null where the host returns. */
DA_array *create_head(uint32_t element_size, int32_t increment, int32_t line)
{
    auto *array = static_cast<DA_array *>(MM_alloc_item(sizeof(DA_array)));
    if (array)
        *array = {element_size, increment, 0, 0, nullptr};
    else
        mova::raise(mova::modules.darray, line, MOVA_ALLOCATION_FAILED);
    return array;
}

/* Extends an array that has no room for `needed` elements. Returns whether there is storage then: none after a failure
   whose raise returned, or where none was needed. */
bool make_room(DA_array *array, int32_t needed)
{
    if (array->nalloc < needed)
        DA_extend(array, needed);
    return array->data != nullptr;
}

/* As make_room, for element i; asks for one element more than make_room would. */
bool make_room_for_item(DA_array *array, int32_t i)
{
    if (i >= array->nalloc)
        DA_extend(array, i + 1);
    return array->data != nullptr;
}

void lengthen(DA_array *array, int32_t nitems)
{
    if (array->nitems < nitems)
        array->nitems = nitems;
}

/* Whether the storage of `source` holds as many elements of the size of `destination` as it has elements. */
bool is_readable_as(const DA_array *destination, const DA_array *source)
{
    return bytes_of(source->nitems, destination->element_size) <= storage_bytes(source);
}

/* Copies last, so that the copy's call ends the function. */
void append_in_place(DA_array *array, const void *source, int32_t n)
{
    if (!array->data)
        return;
    const int32_t end = array->nitems;
    array->nitems = end + n;
    assert(n >= 0 && is_whole(*array));
    elements_of(array).write(end, source, n);
}

/* Apart from the usual append, which so has no registers to save. */
[[gnu::noinline]] void extend_and_append(DA_array *array, const void *source, int32_t n)
{
    DA_extend(array, array->nitems + n);
    append_in_place(array, source, n);
}

void insert_before(DA_array *array, int32_t i, const void *source, int32_t n)
{
    assert(i >= 0 && n >= 0);
    if (!make_room(array, array->nitems + n))
        return;
    elements_of(array).move(i + n, i, array->nitems - i);
    elements_of(array).write(i, source, n);
    array->nitems += n;
    assert(is_whole(*array));
}

void insert_past_end(DA_array *array, int32_t i, const void *source, int32_t n)
{
    const bool has_room = make_room(array, i + n + 1);
    array->nitems = i + n;
    assert(is_whole(*array));
    if (has_room)
        elements_of(array).write(i, source, n);
}

} // namespace

/* ---- creation and disposal ---- */

DA_array *DA_create(uint32_t element_size, int32_t increment)
{
    return create_head(element_size, increment, 33);
}

void DA_release(DA_array *array)
{
    if (!array)
        return;
    DA_clear(array);
    MM_dealloc_item(array, sizeof(DA_array));
}

void DA_clear(DA_array *array)
{
    if (array->data)
        MM_dealloc_item(array->data, storage_bytes(array));
    array->data = nullptr;
    array->nitems = array->nalloc = 0;
}

DA_array *DA_copy(const DA_array *array)
{
    DA_array *copy = create_head(array->element_size, array->increment, 271);
    if (copy)
        mova::or_undo([&] { DA_append(copy, array->data, array->nitems); }, [&] { DA_release(copy); });
    return copy;
}

void DA_copy_into(DA_array *destination, const DA_array *source)
{
    if (destination->element_size != source->element_size)
        mova::raise(mova::modules.darray, 289, MOVA_PRECONDITION_BROKEN);
    DA_clear(destination);
    if (is_readable_as(destination, source))
        DA_append(destination, source->data, source->nitems);
}

/* ---- sizes ---- */

uint32_t DA_memsize(const DA_array *array)
{
    return array ? static_cast<uint32_t>(storage_bytes(array)) : 0;
}

uint32_t DA_check(const DA_array *array)
{
    return reported_head_bytes + (array->data ? DA_memsize(array) : 0);
}

void DA_extend(DA_array *array, int32_t n)
{
    assert(array->increment >= 1);
    /* Strictly more than n: the quotient is rounded towards zero before 1 is added. */
    const int32_t target = (n / array->increment + 1) * array->increment;
    if (array->nalloc >= target)
        return;
    const size_t old_bytes = storage_bytes(array), new_bytes = bytes_of(target, array->element_size);
    array->data = array->data ? MM_realloc_item(array->data, old_bytes, new_bytes) : MM_alloc_item(new_bytes);
    if (!array->data)
        return mova::raise(mova::modules.darray, 111, MOVA_ALLOCATION_FAILED);
    std::memset(static_cast<char *>(array->data) + old_bytes, 0, new_bytes - old_bytes);
    array->nalloc = target;
    assert(is_whole(*array));
}

void DA_setsize(DA_array *array, int32_t n)
{
    DA_extend(array, n);
    array->nitems = n;
    assert(n >= 0 && is_whole(*array));
}

void DA_truncate(DA_array *array, int32_t n)
{
    if (n < array->nitems)
        array->nitems = n;
}

void DA_reset(DA_array *array)
{
    array->nitems = 0;
}

/* ---- elements ---- */

char *DA_string(DA_array *array)
{
    if (!make_room(array, array->nitems + 1))
        return nullptr;
    auto *bytes = static_cast<char *>(array->data);
    bytes[array->nitems] = 0;
    return bytes;
}

void *DA_get_item(DA_array *array, int32_t i)
{
    assert(i >= 0);
    const bool has_room = make_room_for_item(array, i);
    lengthen(array, i + 1);
    assert(is_whole(*array));
    return has_room ? elements_of(array).at(i) : nullptr;
}

void DA_put_item(DA_array *array, int32_t i, const void *source)
{
    assert(i >= 0);
    if (!make_room_for_item(array, i))
        return;
    if (source)
        elements_of(array).put(i, source);
    else
        std::memset(elements_of(array).at(i), 0, array->element_size);
    lengthen(array, i + 1);
    assert(is_whole(*array));
}

/* At the start of a cache line: elsewhere an append takes a quarter longer. */
[[gnu::aligned(64)]] void DA_append(DA_array *array, const void *source, int32_t n)
{
    if (array->nalloc < array->nitems + n)
        extend_and_append(array, source, n);
    else
        append_in_place(array, source, n);
}

void DA_insert(DA_array *array, int32_t i, const void *source, int32_t n)
{
    if (i < array->nitems)
        insert_before(array, i, source, n);
    else
        insert_past_end(array, i, source, n);
}

void DA_delete(DA_array *array, int32_t i, int32_t n)
{
    assert(i >= 0 && n >= 0 && n <= array->nitems - i);
    elements_of(array).move(i, i + n, array->nitems - i - n);
    array->nitems -= n;
}

int DA_equal(const DA_array *a, const DA_array *b)
{
    if (a->nitems != b->nitems || a->element_size != b->element_size)
        return 0;
    return a->nitems == 0 || std::memcmp(a->data, b->data, bytes_of(a->nitems, a->element_size)) == 0;
}

/* ---- iteration ---- */

DA_iterator DA_all_items(DA_array *array)
{
    return DA_tested_items(array, nullptr);
}

DA_iterator DA_tested_items(DA_array *array, DA_test test)
{
    return {array, 1, 0, array->nitems - 1, test};
}

int DA_next(DA_iterator *iterator, void **item)
{
    const int32_t nitems = iterator->array->nitems;
    const int32_t step = iterator->forward ? 1 : -1;
    *item = nullptr;
    while (iterator->forward ? iterator->current <= iterator->last : iterator->current >= iterator->last) {
        /* Deliberately without an else: the test sees the element before it once more. */
        if (iterator->current >= 0 && iterator->current < nitems)
            *item = DA_get_item(iterator->array, iterator->current);
        iterator->current += step;
        if (*item && (!iterator->test || iterator->test(*item)))
            return 1;
    }
    *item = nullptr;
    return 0;
}

/* ---- reordering ---- */

void DA_reverse(DA_array *array)
{
    elements_of(array).reverse(array->nitems);
}

void DA_roll(DA_array *array, int32_t n)
{
    if (array->nitems >= 2)
        elements_of(array).roll(array->nitems, n);
}
