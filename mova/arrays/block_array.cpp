/* SPDX-License-Identifier: MIT */
#define MOVA_OWN_BLOCK_ARRAY
#include <mova/arrays/block_array.h>

#include <algorithm>

#include <mova/arrays/internal/elements.h>
#include <mova/arrays/internal/host_buffer.h>
#include <mova/arrays/internal/invariants.h>
#include <mova/frame/host.h>

using mova::bytes_of;
using mova::elements;
using mova::is_whole;

namespace {

constexpr int16_t default_increment = 10;

elements elements_of(const GB_block *block)
{
    return {block->data, block->element_size};
}

size_t storage_bytes(const GB_block *block)
{
    return bytes_of(block->capacity, block->element_size);
}

bool is_position(const GB_block *block, int32_t position)
{
    return position >= 0 && position < block->count;
}

void make_room_for_one(GB_block *block)
{
    if (block->count >= block->capacity)
        GB_set_number_of_elements(block, block->count + block->increment);
    assert(block->count >= 0 && block->count < block->capacity);
}

/* Takes over the first `count` of the elements that lie from `first` on. */
void take(GB_block *block, const void *first, int32_t count)
{
    block->count = count;
    elements_of(block).write(0, first, count);
}

} // namespace

/* ---- creation, disposal, state ---- */

void *GB_init(GB_block *block, uint32_t element_size, int32_t initial_capacity)
{
    const int32_t capacity = std::max(initial_capacity, 1);
    /* Where the allocation fails, in whatever way, there is no capacity, and so nothing to release. */
    *block = {nullptr, element_size, 0, 0, default_increment, 0};
    block->data = MM_alloc_item(bytes_of(capacity, element_size));
    block->capacity = block->data ? capacity : 0;
    return block->data;
}

void GB_set_inc(GB_block *block, int32_t increment)
{
    block->increment = static_cast<int16_t>(increment);
}

void GB_set_number_of_elements(GB_block *block, int32_t n)
{
    if (block->count >= n || n == block->capacity)
        return;
    const size_t new_bytes = bytes_of(n, block->element_size);
    block->data =
        block->capacity ? MM_realloc_item(block->data, storage_bytes(block), new_bytes) : MM_alloc_item(new_bytes);
    block->capacity = n;
    assert(is_whole(*block));
}

void GB_release(GB_block *block)
{
    if (block->capacity > 0)
        MM_dealloc_item(block->data, storage_bytes(block));
    block->capacity = 0;
}

void GB_make_empty(GB_block *block)
{
    block->count = 0;
}

void GB_set_closed(GB_block *block)
{
    block->closed = 1;
}

void GB_reset_closed(GB_block *block)
{
    block->closed = 0;
}

/* ---- elements ---- */

/* In as few lines of the instruction cache as it fits into. */
[[gnu::aligned(64)]] int32_t GB_append_after_last(GB_block *block, const void *element)
{
    make_room_for_one(block);
    const int32_t index = block->count++;
    elements_of(block).put(index, element);
    return index;
}

int32_t GB_append_block(GB_block *block, GB_block *other)
{
    const int32_t first = block->count, appended = other->count;
    if (block->capacity < first + appended)
        GB_set_number_of_elements(block, first + appended);
    assert(block->element_size == other->element_size && is_whole(*other));
    elements_of(block).write(first, other->data, appended);
    block->count += appended;
    GB_release(other);
    assert(is_whole(*block));
    return first;
}

void GB_remove_last_item(GB_block *block)
{
    --block->count;
}

void GB_replace_item(GB_block *block, int32_t i, const void *element)
{
    assert(is_position(block, i));
    elements_of(block).put(i, element);
}

void GB_insert_item(GB_block *block, int32_t i, const void *element)
{
    make_room_for_one(block);
    assert(i >= 0 && i < block->capacity);
    if (i < block->count)
        elements_of(block).move(i + 1, i, block->count - i);
    elements_of(block).put(i, element);
    ++block->count;
    assert(is_whole(*block));
}

void GB_remove_item(GB_block *block, int32_t i)
{
    assert(i >= 0);
    if (i + 1 < block->count)
        elements_of(block).move(i, i + 1, block->count - i - 1);
    --block->count;
}

/* ---- positions ---- */

int32_t GB_advance(const GB_block *block, int32_t index, int32_t steps)
{
    if (block->count < 1)
        return -1;
    int64_t position = int64_t{index} + steps;
    if (position >= 0 && position < block->count)
        return static_cast<int32_t>(position);
    if (!block->closed)
        return -1;
    position %= block->count;
    return static_cast<int32_t>(position < 0 ? position + block->count : position);
}

int32_t GB_get_index(const GB_block *, int32_t position)
{
    return position;
}

/* ---- copying and reordering ---- */

void GB_copy(GB_block *new_block, const GB_block *source)
{
    GB_init(new_block, source->element_size, source->count);
    new_block->increment = source->increment;
    new_block->closed = source->closed;
    take(new_block, source->data, source->count);
    assert(is_whole(*new_block));
}

void GB_copy_into(GB_block *destination, const GB_block *source)
{
    GB_set_number_of_elements(destination, std::max(source->count, 0));
    destination->closed = source->closed;
    assert(destination->element_size == source->element_size && destination->capacity >= source->count);
    take(destination, source->data, source->count);
}

void GB_reverse(GB_block *block)
{
    elements_of(block).reverse(block->count);
}

/* ---- rings ---- */

void GB_make_open_at_position(GB_block *block, int32_t position)
{
    if (!block->closed || !is_position(block, position))
        return;
    make_room_for_one(block);
    const int32_t kept = block->count - position;
    const mova::host_buffer buffer(bytes_of(block->count, block->element_size));
    const elements all = elements_of(block);
    all.read(buffer.block(), 0, position + 1);
    all.move(0, position, kept);
    all.write(kept, buffer.block(), position + 1);
    ++block->count;
    block->closed = 0;
    assert(is_whole(*block));
}

void GB_remove_and_get_end_part(GB_block *new_block, GB_block *source, int32_t position)
{
    if (source->closed || !is_position(source, position))
        return;
    const int32_t count = source->count - position;
    GB_init(new_block, source->element_size, count);
    new_block->increment = source->increment;
    new_block->closed = source->closed;
    take(new_block, elements_of(source).at(position), count);
    source->count = position + 1;
    assert(is_whole(*source) && is_whole(*new_block));
}

void GB_roll(GB_block *block, int32_t n)
{
    if (block->closed && block->count >= 2)
        elements_of(block).roll(block->count, n);
}
