/* SPDX-License-Identifier: MIT */
/* A program that leaves some of what it made: three lists of one place, one of another, an iterator and a block. */
#include <mova/frame/host.h>
#include <mova/lists/generic_list.h>
#include <mova/tree/balanced_tree.h>

static int item;

static int compare(void *a, void *b)
{
    return (a > b) - (a < b);
}

static void *leave_lists(int count)
{
    GL_list *list = NULL;
    for (int i = 0; i < count; ++i)
        list = GL_create();
    return list;
}

int main(void)
{
    GL_append_after_last(leave_lists(3), &item);
    GL_list *released = GL_create();
    GL_release(&released);
    GT_tree *sorted = GT_create_with_dupl_allowed(compare);
    GT_insert_item(sorted, &item);
    GT_tree_iter *iterator = GT_all_items(sorted);
    (void)iterator;
    void *block = MM_alloc_item(24);
    MM_dealloc_item(block, 24);
    block = MM_alloc_item(40);
    return 0;
}
