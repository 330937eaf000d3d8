/* SPDX-License-Identifier: MIT */
/* A pool of movable blocks, owned: mova/host/memory_blocks.h. A program that has blocks of its own does without it.

       mova::block_pool pool(1 << 20);                   a budget in bytes
       mova::swap_cache<tile, pixel> tiles(pool.get());

   A pool must outlive the caches whose bodies are in it. A null pool has none.

   Errors: a pool that cannot be made throws what the memory service throws; a block that has no room is the handle 0. */
#ifndef MOVA_CXX_BLOCK_POOL_H
#define MOVA_CXX_BLOCK_POOL_H

#include <span>

#include <mova/cxx/owner.h>
#include <mova/host/memory_blocks.h>

namespace mova {

/* A pool, which owns its blocks. */
class block_pool : public owner<mb_pool, release_by<mb_release_pool>> {
public:
    using owner::owner;
    /* With room for blocks of so many bytes together. */
    explicit block_pool(std::size_t budget) : owner(mb_create_pool(budget)) {}

    /* Of the pool as it is now: mb_pool_statistics. */
    mb_statistics statistics() const noexcept { return mb_pool_statistics(get()); }

    /* Room for so many elements, or 0 where there is none. Moves other blocks. */
    template <class T>
    mb_handle alloc(std::size_t count)
    {
        return mb_alloc(get(), count * sizeof(T));
    }
    /* The elements of a live block, until the next alloc. */
    template <class T>
    std::span<T> elements(mb_handle handle, std::size_t count) noexcept
    {
        return {static_cast<T *>(mb_get(get(), handle)), count};
    }
    /* Frees the block, and sets the handle to 0. */
    void free(mb_handle &handle) noexcept { mb_free(get(), &handle); }
};

} // namespace mova

#endif
