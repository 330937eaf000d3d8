/* SPDX-License-Identifier: MIT */
#include <mova/host/memory_blocks.h>

#include <algorithm>
#include <new>
#include <utility>

#include <mova/frame/internal/assert.h>
#include <mova/host/internal/block_pool.h>
#include <mova/host/internal/invariants.h>

static_assert(MB_UNIT == mova::gap_classes::unit);

struct mb_pool : mova::block_pool {
    using block_pool::block_pool;
};

namespace {

/* A budget that is too large to be rounded up is left to the memory service to refuse. */
size_t rounded(size_t budget)
{
    return budget > SIZE_MAX - MB_UNIT ? budget : mova::block_pool::occupied_by(budget);
}

} // namespace

mb_pool *mb_create_pool(size_t budget)
{
    /* An arena has a unit at least, for blocks of size 0 to have an address. */
    mova::owned_memory arena = mova::take_memory(rounded(std::max(budget, size_t{1})));
    mova::owned_memory table = arena ? mova::block_pool::empty_table() : nullptr;
    mova::owned_memory pool = table ? mova::take_memory(sizeof(mb_pool)) : nullptr;
    if (!pool)
        return nullptr;
    auto *created = new (pool.release()) mb_pool(std::move(arena), std::move(table), rounded(budget));
    assert(mova::intact(mova::broken_invariant(*created)));
    return created;
}

void mb_release_pool(mb_pool **pool)
{
    mb_pool *released = std::exchange(*pool, nullptr);
    if (!released)
        return;
    released->~mb_pool();
    MM_dealloc_item(released, sizeof(mb_pool));
}

mb_statistics mb_pool_statistics(const mb_pool *pool)
{
    return pool->statistics();
}

mb_handle mb_alloc(mb_pool *pool, size_t size)
{
    return pool->allocate(size);
}

void *mb_get(mb_pool *pool, mb_handle handle)
{
    return pool->get(handle);
}

void mb_free(mb_pool *pool, mb_handle *handle)
{
    if (pool->get(*handle))
        pool->release(*handle);
    else if (*handle != 0)
        EX_raise_exception_line("memory blocks", MB_NOT_LIVE, MOVA_PRECONDITION_BROKEN);
    *handle = 0;
}
