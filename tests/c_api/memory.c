/* SPDX-License-Identifier: MIT */
#include <string.h>

#include <mova/frame/host.h>
#include <mova/host/memory.h>

#include "c_api.h"
#include "check.h"

/* What the compiler takes the block's size for, where it looks: what was asked for. */
static int is_taken_for(size_t known, size_t asked)
{
#ifdef __OPTIMIZE__
    return known == asked;
#else
    return known == (size_t)-1 || known == asked;
#endif
}

void drive_memory(void)
{
    char *block = MM_alloc_item(4);
    CHECK(is_taken_for(__builtin_object_size(block, 0), 4));
    memcpy(block, "abc", 4);
    block = MM_realloc_item(block, 4, 40);
    CHECK(is_taken_for(__builtin_object_size(block, 0), 40));
    CHECK(strcmp(block, "abc") == 0);
    const mova_memory_totals totals = mova_memory_statistics();
    const mova_memory_class class_of_40 = mova_memory_statistics_of_size(40);
    /* While other threads allocate, a block may be missed. Under a sanitizer the blocks are the system's, and all figures
       are 0. */
    CHECK(!drives_alone || totals.held_bytes == 0 || class_of_40.live_blocks >= 1);
    CHECK(!drives_alone || totals.live_bytes >= class_of_40.live_blocks * class_of_40.block_size);
    MM_dealloc_item(block, 40);
    block = mova_memory_zeroed(100);
    CHECK(is_taken_for(__builtin_object_size(block, 0), 100));
    CHECK(block[0] == 0 && block[99] == 0);
    MM_dealloc_item(block, 100);
    block = mova_memory_aligned(256, 100);
    CHECK(is_taken_for(__builtin_object_size(block, 0), 100));
    CHECK((uintptr_t)block % 256 == 0);
    mova_memory_release_aligned(block, 256, 100);
    mova_memory_trim();
}
