/* SPDX-License-Identifier: MIT */
#include "groups.h"

#include <string.h>

#include <mova/cache/swap_cache.h>
#include <mova/host/memory_blocks.h>

static mb_pool *pool;
static mb_handle handle;

static void free_a_dead_handle(void)
{
    handle = 1;
    mb_free(pool, &handle);
}

void check_memory_blocks(void)
{
    pool = mb_create_pool(100);
    cc_cache *cache = cc_create(pool);
    handle = cc_alloc(cache, 100);
    memset(mb_get(pool, handle), 1, 100);
    CHECK(mb_pool_statistics(pool).live_blocks == 1);
    cc_free(cache, &handle);
    CHECK(mb_pool_statistics(pool).live_blocks == 0);
    MM_dealloc_item(cache, sizeof *cache);
    /* The default pool reports through the error service in force. */
    CHECK(code_raised_by(free_a_dead_handle) == MOVA_PRECONDITION_BROKEN);
    mb_release_pool(&pool);
}
