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

static void release_twice(int misused)
{
    mb_pool *pool = mb_create_pool(1000), *alias = pool;
    mb_release_pool(&pool);
    if (misused)
        mb_release_pool(&alias);
}

/* The pool has room for the third block only where the second was moved. */
static char *touched_before_a_move(mb_pool *pool, mb_handle *moved)
{
    mb_handle first = mb_alloc(pool, 512);
    char *address;
    *moved = mb_alloc(pool, 256);
    address = mb_get(pool, *moved);
    memset(address, 1, 256);
    mb_free(pool, &first);
    if (!mb_alloc(pool, 700))
        puts("no room");
    return address;
}

static void write_where_it_lay(int misused)
{
    mb_pool *pool = mb_create_pool(1024);
    mb_handle moved;
    char *before = touched_before_a_move(pool, &moved), *now = mb_get(pool, moved);
    if (now[0] != 1 || now[255] != 1)
        puts("another body");
    *(misused ? before : now) = 2;
    mb_release_pool(&pool);
}

static void copy_from_where_it_lay(int misused)
{
    mb_pool *pool = mb_create_pool(1024);
    mb_handle moved;
    char copy[256], *before = touched_before_a_move(pool, &moved);
    memcpy(copy, misused ? before : mb_get(pool, moved), sizeof copy);
    mb_release_pool(&pool);
}

static void touch_after_release(int misused)
{
    mb_pool *pool = mb_create_pool(1000);
    mb_handle handle = mb_alloc(pool, 10);
    char *block = mb_get(pool, handle);
    if (misused)
        mb_release_pool(&pool);
    *block = 1;
    mb_release_pool(&pool);
}

static void follow_out_of_freed(int misused)
{
    static int number;
    mb_pool *pool = mb_create_pool(1000);
    mb_handle handle = mb_alloc(pool, sizeof(int *));
    int **block = mb_get(pool, handle);
    *block = &number;
    if (misused)
        mb_free(pool, &handle);
    **block = 1;
    mb_release_pool(&pool);
}

static const misuse_cell cells[] = {
    {"freed twice", 12, "mb_free: the block was freed, or is none of this pool", free_twice},
    {"released twice", 2, "mb_release_pool: the pool was released", release_twice},
#if defined __x86_64__
    {"written where it lay", 12, "fault: a block is touched where it lay before its pool moved blocks",
     write_where_it_lay},
    {"copied from where it lay", 12, "fault: a block is touched where it lay before its pool moved blocks",
     copy_from_where_it_lay},
    {"touched after release", 12, "fault: a block of a released pool is touched", touch_after_release},
    {"followed out of freed", 14, "fault: a pointer out of a released block is followed", follow_out_of_freed},
#endif
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
