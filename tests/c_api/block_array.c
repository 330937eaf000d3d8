/* SPDX-License-Identifier: MIT */
#include <mova/arrays/block_array.h>

#include "c_api.h"
#include "check.h"

static void check_elements(const GB_block *block, int32_t count, const int *expected)
{
    CHECK(GB_count_items(block) == count);
    CHECK(block->count <= block->capacity);
    for (int32_t i = 0; i < count; ++i)
        CHECK(((const int *)block->data)[GB_get_index(block, i)] == expected[i]);
}

static GB_block block_of(int32_t count)
{
    GB_block block;
    CHECK(GB_init(&block, sizeof(int), 0) == block.data);
    for (int number = 0; number < count; ++number)
        CHECK(GB_append_after_last(&block, &number) == number);
    return block;
}

static void grow_and_shrink(void)
{
    GB_block block = block_of(3);
    CHECK(block.capacity == 11);
    GB_set_number_of_elements(&block, 4);
    CHECK(block.capacity == 4);
    GB_set_inc(&block, 2);
    CHECK(block.increment == 2);
    GB_make_empty(&block);
    check_elements(&block, 0, NULL);
    GB_release(&block);
    CHECK(block.capacity == 0);
}

static void edit(void)
{
    const int seven = 7;
    GB_block block = block_of(3);
    GB_insert_item(&block, 1, &seven);
    check_elements(&block, 4, (const int[]){0, 7, 1, 2});
    GB_remove_item(&block, 0);
    GB_replace_item(&block, 2, &seven);
    check_elements(&block, 3, (const int[]){7, 1, 7});
    GB_remove_last_item(&block);
    GB_reverse(&block);
    check_elements(&block, 2, (const int[]){1, 7});
    GB_release(&block);
}

static void copy_and_join(void)
{
    GB_block block = block_of(2), copy, other = block_of(1);
    GB_copy(&copy, &block);
    check_elements(&copy, 2, (const int[]){0, 1});
    CHECK(GB_append_block(&copy, &other) == 2);
    check_elements(&copy, 3, (const int[]){0, 1, 0});
    GB_copy_into(&block, &copy);
    check_elements(&block, 3, (const int[]){0, 1, 0});
    GB_release(&copy);
    GB_release(&block);
}

static void cut_rings(void)
{
    GB_block block = block_of(4), end_part;
    CHECK(GB_advance(&block, 3, 1) == -1);
    GB_set_closed(&block);
    CHECK(GB_advance(&block, 3, 1) == 0);
    GB_roll(&block, 1);
    check_elements(&block, 4, (const int[]){1, 2, 3, 0});
    GB_make_open_at_position(&block, 2);
    check_elements(&block, 5, (const int[]){3, 0, 1, 2, 3});
    GB_remove_and_get_end_part(&end_part, &block, 3);
    check_elements(&block, 4, (const int[]){3, 0, 1, 2});
    check_elements(&end_part, 2, (const int[]){2, 3});
    GB_set_closed(&end_part);
    GB_reset_closed(&end_part);
    CHECK(end_part.closed == 0);
    GB_release(&end_part);
    GB_release(&block);
}

void drive_block_array(void)
{
    grow_and_shrink();
    edit();
    copy_and_join();
    cut_rings();
}
