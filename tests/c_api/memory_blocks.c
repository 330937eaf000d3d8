/* SPDX-License-Identifier: MIT */
#include <string.h>

#include <mova/frame/host.h>
#include <mova/host/errors.h>
#include <mova/host/memory_blocks.h>

#include "c_api.h"
#include "check.h"

static char text[80];
static int32_t code;

static void keep_error(const char *module, int32_t line, int32_t raised)
{
    mova_error_text(text, sizeof text, module, line, raised);
    code = raised;
}

static void movable_blocks(void)
{
    mb_pool *pool = mb_create_pool(64);
    mb_handle front = mb_alloc(pool, 30), back = mb_alloc(pool, 16);
    memcpy(mb_get(pool, back), "behind", 7);
    mb_free(pool, &front);
    CHECK(front == 0 && back != 0);
    CHECK(mb_alloc(pool, 49) == 0);
    /* The room is at both ends: the block in the middle moves. */
    mb_handle large = mb_alloc(pool, 48);
    CHECK(large != 0 && large != back);
    CHECK(strcmp(mb_get(pool, back), "behind") == 0);
    const mb_statistics figures = mb_pool_statistics(pool);
    CHECK(figures.budget == 64 && figures.live_bytes == 64 && figures.live_blocks == 2);
    CHECK(figures.moves == 1 && figures.moved_bytes == MB_UNIT);
    mb_release_pool(&pool);
    CHECK(pool == NULL);
}

static void dead_handle(void)
{
    mb_pool *pool = mb_create_pool(64);
    mb_handle handle = mb_alloc(pool, 0);
    mb_handle copy = handle;
    mb_free(pool, &handle);
    CHECK(mb_get(pool, copy) == NULL);
    mova_set_error_handler(keep_error);
    mb_free(pool, &copy);
    mova_set_error_handler(NULL);
    CHECK(code == MOVA_PRECONDITION_BROKEN && copy == 0);
    CHECK(strstr(text, "memory blocks, line 10:") == text);
    mb_release_pool(&pool);
}

void drive_memory_blocks(void)
{
    movable_blocks();
    if (drives_alone)
        dead_handle();
}
