/* SPDX-License-Identifier: MIT */
#include "groups.h"

#include <mova/cache/swap_cache.h>
#include <mova/host/memory_blocks.h>

/* A pool with room for one block. */
struct mb_pool {
    int taken;
    char room[100];
};

mb_handle mb_alloc(mb_pool *pool, size_t size)
{
    if (pool->taken || size > sizeof pool->room)
        return 0;
    pool->taken = 1;
    return 77;
}

void *mb_get(mb_pool *pool, mb_handle handle)
{
    return handle == 77 ? pool->room : NULL;
}

void mb_free(mb_pool *pool, mb_handle *handle)
{
    pool->taken = 0;
    *handle = 0;
}

#ifdef LINKED_STATICALLY
#pragma weak mb_create_pool

static void check_that_the_default_is_absent(void)
{
    CHECK(mb_create_pool == NULL);
}
#else
static void check_that_the_default_is_absent(void)
{
}
#endif

static uint32_t whole_room(void *item)
{
    (void)item;
    return 100;
}

static void fill(void *item, void *block, uint32_t size)
{
    (void)size;
    *(void **)item = block;
}

void check_memory_blocks(void)
{
    static mb_pool pool;
    static void *filled;
    cc_cache *cache = cc_create(&pool);
    cc_entry *entry = cc_insert(cache, &filled, 0, whole_room, fill, NULL, NULL);
    CHECK(cc_get(cache, entry) == pool.room);
    CHECK(filled == pool.room && entry->handle == 77 && pool.taken);
    cc_remove(cache, &entry);
    CHECK(!pool.taken);
    MM_dealloc_item(cache, sizeof *cache);
    check_that_the_default_is_absent();
}
