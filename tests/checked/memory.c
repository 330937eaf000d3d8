/* SPDX-License-Identifier: MIT */
/* Misuses of blocks of the memory service. */
#include "misuse.h"

#include <mova/frame/host.h>
#include <mova/host/memory.h>

static void release_with_wrong_size(int misused)
{
    void *block = MM_alloc_item(24);
    MM_dealloc_item(block, misused ? 16 : 24);
}

static void reallocate_with_wrong_size(int misused)
{
    void *block = MM_alloc_item(24);
    block = MM_realloc_item(block, misused ? 32 : 24, 40);
    MM_dealloc_item(block, 40);
}

static void release_twice(int misused)
{
    void *block = MM_alloc_item(24);
    MM_dealloc_item(block, 24);
    if (misused)
        MM_dealloc_item(block, 24);
}

static void reallocate_released(int misused)
{
    void *block = MM_alloc_item(24);
    void *moved = MM_realloc_item(block, 24, 48);
    if (misused)
        moved = MM_realloc_item(block, 24, 48);
    MM_dealloc_item(moved, 48);
}

static void release_on_the_stack(int misused)
{
    char bytes[256] = {0};
    if (misused)
        MM_dealloc_item(bytes + 128, 16);
}

static void release_inside_of_block(int misused)
{
    char *block = MM_alloc_item(128);
    memset(block, 0, 128);
    MM_dealloc_item(misused ? block + 64 : block, misused ? 64 : 128);
}

static void write_behind(int misused)
{
    char *block = MM_alloc_item(21);
    block[misused ? 21 : 20] = 1;
    MM_dealloc_item(block, 21);
}

static void write_before(int misused)
{
    char *block = mova_memory_zeroed(24);
    block[misused ? -1 : 0] = 1;
    MM_dealloc_item(block, 24);
}

/* Above 1016 bytes blocks lie elsewhere, and above 16 KiB none is kept. */
static void write_around_large(int before, int misused)
{
    static const size_t sizes[] = {1016, 1017, 4096, 16384, 16385, 100000, 300000};
    for (size_t i = 0; i < sizeof sizes / sizeof *sizes; ++i) {
        char *block = MM_alloc_item(sizes[i]);
        memset(block, 0, sizes[i]);
        if (misused && i + 1 == sizeof sizes / sizeof *sizes)
            block[before ? -1 : (long)sizes[i]] = 1;
        MM_dealloc_item(block, sizes[i]);
    }
}

static void write_before_large(int misused)
{
    write_around_large(1, misused);
}

static void write_behind_large(int misused)
{
    write_around_large(0, misused);
}

static void write_behind_and_keep(int misused)
{
    static char *kept;
    kept = MM_alloc_item(24);
    kept[misused ? 24 : 23] = 1;
    if (!misused)
        MM_dealloc_item(kept, 24);
}

static void write_after_release(int misused)
{
    char *block = MM_alloc_item(24);
    MM_dealloc_item(block, 24);
    if (misused)
        block[8] = 1;
}

/* It is found when the block is let go, before the program ends. */
static void write_long_after_release(int misused)
{
    char *block = MM_alloc_item(24);
    MM_dealloc_item(block, 24);
    if (misused)
        block[23] = 1;
    for (int i = 0; i < 20000; ++i)
        MM_dealloc_item(MM_alloc_item(24), 24);
    for (int i = 0; i < 20000 && misused; ++i)
        (void)!MM_alloc_item(24);
}

/* Blocks of that size are kept too, as far as 4 MiB reach. */
static void write_long_after_release_of_large(int misused)
{
    char *block = MM_alloc_item(4096);
    MM_dealloc_item(block, 4096);
    if (misused)
        block[4095] = 1;
    for (int i = 0; i < 2000; ++i)
        MM_dealloc_item(MM_alloc_item(4096), 4096);
    for (int i = 0; i < 2000 && misused; ++i)
        (void)!MM_alloc_item(4096);
}

static void follow_out_of_released(int misused)
{
    static int number;
    int **block = MM_alloc_item(24);
    *block = &number;
    MM_dealloc_item(block, 24);
    if (misused)
        **block = 1;
}

static const misuse_cell cells[] = {
    {"wrong size", 14, "MM_dealloc_item: the size is 16, and the block's is 24", release_with_wrong_size},
    {"wrong old size", 14, "MM_realloc_item: the size is 32, and the block's is 24", reallocate_with_wrong_size},
    {"released twice", 14, "MM_dealloc_item: the block was released", release_twice},
    {"released and reallocated", 14, "MM_realloc_item: the block was released", reallocate_released},
    {"never allocated", 14, "MM_dealloc_item: no block begins there", release_on_the_stack},
    {"inside of a block", 14, "MM_dealloc_item: no block begins there", release_inside_of_block},
    {"written behind", 14, "MM_dealloc_item: bytes behind the block were written to", write_behind},
    {"written before", 14, "MM_dealloc_item: bytes before the block were written to", write_before},
    {"large, written before", 14, "MM_dealloc_item: bytes before the block were written to", write_before_large},
    {"large, written behind", 14, "MM_dealloc_item: bytes behind the block were written to", write_behind_large},
    {"written behind, kept", 14, "MM_alloc_item: bytes behind the block were written to", write_behind_and_keep},
    {"written after release", 14, "MM_dealloc_item: the block was written to after its release", write_after_release},
    {"written long after release", 14, "MM_dealloc_item: the block was written to after its release",
     write_long_after_release},
    {"large, written long after", 14, "MM_dealloc_item: the block was written to after its release",
     write_long_after_release_of_large},
#if defined __x86_64__
    {"followed out of released", 14, "fault: a pointer out of a released block is followed", follow_out_of_released},
#endif
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof *cells, arguments, argument);
}
