/* SPDX-License-Identifier: MIT */
/* The checked pools of movable blocks: the ordinary ones, and before each call a look at the pool and the handle. */
#include <mova/checked/internal/blocks.h>
#include <mova/host/memory_blocks.h>

#include <cstdio>
#include <cstdlib>

extern "C" {
mb_handle mova_plain_mb_alloc(mb_pool *pool, size_t size);
void *mova_plain_mb_get(mb_pool *pool, mb_handle handle);
void mova_plain_mb_free(mb_pool *pool, mb_handle *handle);
mb_statistics mova_plain_mb_pool_statistics(const mb_pool *pool);
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

void judge_pool(const char *function, const mb_pool *pool, const void *where)
{
    if (!pool)
        say(function, "the pool is null", where);
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
