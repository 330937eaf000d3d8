/* SPDX-License-Identifier: MIT */
/* Misuses of pools of movable blocks. */
#include "misuse.h"

#include <mova/host/errors.h>
#include <mova/host/memory_blocks.h>

static void ignore_error(const char *module, int32_t line, int32_t code)
{
    (void)module;
    (void)line;
    (void)code;
}

static void free_twice(int misused)
{
    mova_set_error_handler(ignore_error);
    mb_pool *pool = mb_create_pool(1000);
    mb_handle handle = mb_alloc(pool, 10), copy = handle;
    mb_free(pool, &handle);
    if (misused)
        mb_free(pool, &copy);
    mb_release_pool(&pool);
}

static void use_released(int misused)
{
    mb_pool *pool = mb_create_pool(4096), *alias = pool;
    if (misused)
        mb_release_pool(&pool);
    mb_get(alias, 1);
    mb_release_pool(&pool);
}

static void allocate_in_null(int misused)
{
    mb_pool *pool = mb_create_pool(1000);
    mb_handle handle = mb_alloc(misused ? NULL : pool, 10);
    mb_free(pool, &handle);
    mb_release_pool(&pool);
}

static void get_from_null(int misused)
{
    mb_pool *pool = mb_create_pool(1000);
    mb_handle handle = mb_alloc(pool, 10);
    *(char *)mb_get(misused ? NULL : pool, handle) = 1;
    mb_free(pool, &handle);
    mb_release_pool(&pool);
}

static void free_in_null(int misused)
{
    mb_pool *pool = mb_create_pool(1000);
    mb_handle handle = mb_alloc(pool, 10);
    mb_free(misused ? NULL : pool, &handle);
    mb_release_pool(&pool);
}

static void free_null(int misused)
{
    mb_pool *pool = mb_create_pool(1000);
    mb_handle handle = mb_alloc(pool, 10);
    mb_free(pool, misused ? NULL : &handle);
    mb_release_pool(&pool);
}

static void ask_null(int misused)
{
    mb_pool *pool = mb_create_pool(1000);
    mb_pool_statistics(misused ? NULL : pool);
    mb_release_pool(&pool);
}

static const misuse_cell cells[] = {
    {"freed twice", 12, "mb_free: the block was freed, or is none of this pool", free_twice},
    {"released pool", 2, "mb_get: the pool was released", use_released},
    {"null to allocate in", 1, "mb_alloc: the pool is null", allocate_in_null},
    {"null to get from", 1, "mb_get: the pool is null", get_from_null},
    {"null to free in", 1, "mb_free: the pool is null", free_in_null},
    {"null to free", 1, "mb_free: the handle is null", free_null},
    {"null to ask", 1, "mb_pool_statistics: the pool is null", ask_null},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof *cells, arguments, argument);
}
