/* SPDX-License-Identifier: MIT */
/* Ten typical mistakes, one a run: the program's argument is the number that docs/debugging.md gives it. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <mova/container.h>
#include <mova/host/memory_blocks.h>

static int numbers[] = {1, 2, 3};

static volatile int sink;

static GL_list *three_numbers(void)
{
    GL_list *list = GL_create();
    for (int i = 0; i < 3; ++i)
        GL_append_after_last(list, &numbers[i]);
    return list;
}

static void use_a_list_after_its_release(void)
{
    GL_list *list = three_numbers();
    GL_list *alias = list;
    GL_release(&list);
    sink = (int)alias->count;
}

static void release_a_block_twice(void)
{
    void *block = MM_alloc_item(24);
    MM_dealloc_item(block, 24);
    MM_dealloc_item(block, 24);
}

static void release_a_block_with_a_wrong_size(void)
{
    void *block = MM_alloc_item(24);
    MM_dealloc_item(block, 16);
}

static void forget_to_release_a_list(void)
{
    GL_list *list = three_numbers();
    sink = (int)GL_count_items(list);
}

static void use_a_position_after_its_removal(void)
{
    GL_list *list = three_numbers();
    GL_node *position = list->first;
    GL_remove_item(list, position);
    sink = *(int *)position->item;
    GL_release(&list);
}

static void keep_an_element_while_the_array_grows(void)
{
    DA_array *array = DA_create(sizeof(int), 1);
    DA_append(array, numbers, 1);
    const int *element = DA_get_item(array, 0);
    DA_append(array, numbers, 3);
    sink = *element;
    DA_release(array);
}

static int32_t compare(void *a, void *b)
{
    return *(int *)a - *(int *)b;
}

static void use_a_trees_iterator_after_its_end(void)
{
    GT_tree *sorted = GT_create_with_dupl_allowed(compare);
    GT_tree_iter *iterator = GT_all_items(sorted);
    void *item;
    while (GT_next_item(iterator, &item))
        ;
    sink = (int)iterator->mode;
    GT_release(&sorted);
}

static void hand_over_an_element_that_is_too_short(void)
{
    EL_list *list = EL_create(64);
    char *element = calloc(1, 8);
    EL_append_after_last(list, element);
    free(element);
    EL_release(&list);
}

static mb_pool *pool_with(mb_handle *first, mb_handle *second)
{
    mb_pool *pool = mb_create_pool(192);
    *first = mb_alloc(pool, 64);
    *second = mb_alloc(pool, 64);
    memset(mb_get(pool, *first), 0, 64);
    memset(mb_get(pool, *second), 0, 64);
    return pool;
}

static void keep_a_blocks_address_while_blocks_move(void)
{
    mb_handle first, second;
    mb_pool *pool = pool_with(&first, &second);
    const char *address = mb_get(pool, second);
    mb_free(pool, &first);
    mb_handle third = mb_alloc(pool, 112);
    mb_free(pool, &third);
    sink = address[32];
    mb_release_pool(&pool);
}

static void write_past_a_block_of_a_pool(void)
{
    mb_handle first, second;
    mb_pool *pool = pool_with(&first, &second);
    char *address = mb_get(pool, second);
    address[64] = 1;
    mb_release_pool(&pool);
}

int main(int count, char **arguments)
{
    void (*const mistakes[])(void) = {
        use_a_list_after_its_release,
        release_a_block_twice,
        release_a_block_with_a_wrong_size,
        forget_to_release_a_list,
        use_a_position_after_its_removal,
        keep_an_element_while_the_array_grows,
        use_a_trees_iterator_after_its_end,
        hand_over_an_element_that_is_too_short,
        keep_a_blocks_address_while_blocks_move,
        write_past_a_block_of_a_pool,
    };
    const int number = count == 2 ? atoi(arguments[1]) : 0;
    if (number >= 1 && number <= (int)(sizeof mistakes / sizeof mistakes[0]))
        mistakes[number - 1]();
    return 0;
}
