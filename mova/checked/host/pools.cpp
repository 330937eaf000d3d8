/* SPDX-License-Identifier: MIT */
/* The checked pools of movable blocks: the ordinary ones, and before each call a look at the pool and the handle. */
#include <mova/checked/internal/blocks.h>
#include <mova/host/memory_blocks.h>

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <mutex>

extern "C" {
mb_handle mova_plain_mb_alloc(mb_pool *pool, size_t size);
void *mova_plain_mb_get(mb_pool *pool, mb_handle handle);
void mova_plain_mb_free(mb_pool *pool, mb_handle *handle);
mb_statistics mova_plain_mb_pool_statistics(const mb_pool *pool);
mb_pool *mova_plain_mb_create_pool(size_t budget);
void mova_plain_mb_release_pool(mb_pool **pool);
}

namespace {

void say(const char *function, const char *what, const void *where)
{
    const mova::checked::block_misuse misuse = {function, what, where, nullptr, 0, nullptr, nullptr};
    if (mova_checked_report_block)
        return mova_checked_report_block(&misuse);
    std::fprintf(stderr, "mova: %s: %s\n", function, what);
    std::abort();
}

/* The pools that were released last. */
struct released_pools {
    struct released {
        const void *pool, *where;
    };

    std::mutex mutex;
    released last[64] = {};
    unsigned next = 0;

    released *find(const void *pool)
    {
        for (released &each : last) {
            if (each.pool == pool)
                return &each;
        }
        return nullptr;
    }
};

constinit released_pools gone;

void judge_pool(const char *function, const mb_pool *pool, const void *where)
{
    const void *released_in;
    if (!pool)
        say(function, "the pool is null", where);
    else if (mova_checked_pool_was_released(pool, &released_in))
        say(function, "the pool was released", where);
}

} // namespace

mb_handle mb_alloc(mb_pool *pool, size_t size)
{
    judge_pool("mb_alloc", pool, __builtin_return_address(0));
    return mova_plain_mb_alloc(pool, size);
}

void *mb_get(mb_pool *pool, mb_handle handle)
{
    judge_pool("mb_get", pool, __builtin_return_address(0));
    return mova_plain_mb_get(pool, handle);
}

/* A handle that is not live is an error of the service's own, which is raised after this. */
void mb_free(mb_pool *pool, mb_handle *handle)
{
    const void *const where = __builtin_return_address(0);
    judge_pool("mb_free", pool, where);
    if (!handle)
        say("mb_free", "the handle is null", where);
    else if (*handle != 0 && !mova_plain_mb_get(pool, *handle))
        say("mb_free", "the block was freed, or is none of this pool", where);
    mova_plain_mb_free(pool, handle);
}

mb_statistics mb_pool_statistics(const mb_pool *pool)
{
    judge_pool("mb_pool_statistics", pool, __builtin_return_address(0));
    return mova_plain_mb_pool_statistics(pool);
}

mb_pool *mb_create_pool(size_t budget)
{
    mb_pool *const pool = mova_plain_mb_create_pool(budget);
    const std::lock_guard lock(gone.mutex);
    if (released_pools::released *const before = gone.find(pool))
        *before = {};
    return pool;
}

void mb_release_pool(mb_pool **pool)
{
    if (pool && *pool) {
        const std::lock_guard lock(gone.mutex);
        gone.last[gone.next++ % std::size(gone.last)] = {*pool, __builtin_return_address(0)};
    }
    mova_plain_mb_release_pool(pool);
}

bool mova_checked_pool_was_released(const void *pool, const void **where)
{
    const std::lock_guard lock(gone.mutex);
    const released_pools::released *const found = pool ? gone.find(pool) : nullptr;
    if (found)
        *where = found->where;
    return found != nullptr;
}
