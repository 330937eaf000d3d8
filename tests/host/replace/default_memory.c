/* SPDX-License-Identifier: MIT */
#include "groups.h"

#include <stdint.h>
#include <string.h>

#include <mova/frame/host.h>
#include <mova/lists/generic_list.h>

static void check_that_a_list_works(void)
{
    int items[2];
    GL_list *list = GL_create();
    GL_append_after_last(list, &items[0]);
    GL_append_after_last(list, &items[1]);
    CHECK(GL_count_items(list) == 2);
    CHECK(list->last->item == &items[1]);
    GL_release(&list);
    CHECK(list == NULL);
}

static void check_that_a_block_grows(void)
{
    char *block = MM_alloc_item(8);
    memcpy(block, "abcdefg", 8);
    block = MM_realloc_item(block, 8, 4000);
    CHECK(strcmp(block, "abcdefg") == 0);
    MM_dealloc_item(block, 4000);
}

static void ask_for_too_much(void)
{
    void *none = MM_alloc_item(SIZE_MAX / 2 + 1);
    (void)none;
}

void check_memory(void)
{
    check_that_a_list_works();
    check_that_a_block_grows();
    /* The default allocator reports through the error service in force. */
    CHECK(code_raised_by(ask_for_too_much) == MOVA_ALLOCATION_FAILED);
}
