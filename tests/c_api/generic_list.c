/* SPDX-License-Identifier: MIT */
#include <mova/lists/generic_list.h>

#include "c_api.h"
#include "check.h"

static int numbers[4] = {0, 1, 2, 3};
static _Thread_local int freed;

static void count_freed(void **item)
{
    CHECK(*item >= (void *)&numbers[0] && *item <= (void *)&numbers[3]);
    ++freed;
}

static void *next_number(void *item)
{
    return (int *)item + 1;
}

static int32_t bytes_of_number(void *item)
{
    return (int32_t) * (int *)item;
}

static int is_odd(void *item)
{
    return *(int *)item % 2;
}

/* Checks the items, each as its index in `numbers`, and the links both ways. */
static void check_items(const GL_list *list, int32_t count, const int *indices)
{
    const GL_node *prev = NULL;
    const GL_node *node = list->first;
    CHECK(GL_count_items(list) == count);
    for (int32_t i = 0; i < count; ++i) {
        CHECK(node != NULL && node->prev == prev);
        CHECK(node->item == &numbers[indices[i]]);
        prev = node;
        node = node->next;
    }
    CHECK(node == NULL);
    CHECK(list->last == prev);
}

static GL_list *list_of_three(void)
{
    GL_list *list = GL_create();
    for (int i = 0; i < 3; ++i)
        GL_append_after_last(list, &numbers[i]);
    return list;
}

static void create_and_release(void)
{
    GL_list *list = GL_create();
    check_items(list, 0, NULL);
    GL_release(&list);
    CHECK(list == NULL);
    GL_release(&list);
    CHECK(list == NULL);
}

static void empty(void)
{
    GL_list *list = list_of_three();
    GL_make_empty(list);
    check_items(list, 0, NULL);
    GL_append_after_last(list, &numbers[1]);
    freed = 0;
    GL_total_make_empty(list, count_freed);
    check_items(list, 0, NULL);
    CHECK(freed == 1);
    GL_append_after_last(list, &numbers[1]);
    GL_append_after_last(list, &numbers[2]);
    GL_total_release(&list, count_freed);
    CHECK(list == NULL);
    CHECK(freed == 3);
}

static void copy_and_measure(void)
{
    GL_list *list = list_of_three();
    GL_list *same = GL_copy(list);
    GL_list *other = GL_total_copy(list, next_number);
    check_items(same, 3, (const int[]){0, 1, 2});
    check_items(other, 3, (const int[]){1, 2, 3});
    CHECK(GL_check(other, bytes_of_number) == 12 + (12 + 1) + (12 + 2) + (12 + 3));
    GL_release(&other);
    GL_release(&same);
    GL_release(&list);
}

static void insert(void)
{
    GL_list *list = GL_create();
    GL_node *middle = GL_insert_before_first(list, &numbers[1]);
    CHECK(GL_insert_before(list, middle, &numbers[0]) == list->first);
    CHECK(GL_insert_after(list, middle, &numbers[2]) == list->last);
    CHECK(GL_insert_unique(list, &numbers[0]) == NULL);
    CHECK(GL_insert_unique(list, &numbers[3]) == list->last);
    check_items(list, 4, (const int[]){0, 1, 2, 3});
    GL_release(&list);
}

static void move_and_join(void)
{
    GL_list *list = list_of_three();
    GL_list *source = list_of_three();
    GL_move_before_first(list, list->last);
    check_items(list, 3, (const int[]){2, 0, 1});
    GL_append_list(list, &source);
    CHECK(source == NULL);
    check_items(list, 6, (const int[]){2, 0, 1, 0, 1, 2});
    GL_release(&list);
}

static void find_swap_and_remove(void)
{
    GL_list *list = list_of_three();
    GL_node *position;
    CHECK(GL_find_item(list, &numbers[3], &position) == 0);
    CHECK(position == NULL);
    CHECK(GL_find_item(list, &numbers[1], &position) == 1);
    CHECK(position == list->first->next);

    void *item = &numbers[3];
    GL_swap_item(position, &item);
    CHECK(item == &numbers[1]);
    check_items(list, 3, (const int[]){0, 3, 2});
    GL_remove_item(list, position);
    check_items(list, 2, (const int[]){0, 2});
    GL_release(&list);
}

/* Checks that an iterator delivers these items and then nothing. */
static void check_delivery(GL_iterator iterator, int count, const int *indices)
{
    void *item = NULL;
    for (int i = 0; i < count; ++i) {
        CHECK(GL_next_item(&iterator, &item) == 1);
        CHECK(item == &numbers[indices[i]]);
    }
    CHECK(GL_next_item(&iterator, &item) == 0);
}

static void iterate(void)
{
    GL_list *list = list_of_three();
    check_delivery(GL_empty_iter(), 0, NULL);
    check_delivery(GL_all_items(list), 3, (const int[]){0, 1, 2});
    check_delivery(GL_all_items_reversed(list), 3, (const int[]){2, 1, 0});
    check_delivery(GL_tested_items(list, is_odd), 1, (const int[]){1});
    check_delivery(GL_all_items_inbetween(list, list->last, list->first->next, 0), 2, (const int[]){2, 1});
    check_delivery(GL_tested_items_inbetween(list, list->first->next, list->last, 1, is_odd), 1, (const int[]){1});
    GL_release(&list);
}

static void remove_while_iterating(void)
{
    GL_list *list = list_of_three();
    GL_iterator iterator = GL_tested_items(list, is_odd);
    GL_node *position;
    while (GL_next_position(&iterator, &position))
        GL_remove_item(list, position);
    check_items(list, 2, (const int[]){0, 2});
    GL_release(&list);
}

void drive_generic_list(void)
{
    create_and_release();
    empty();
    copy_and_measure();
    insert();
    move_and_join();
    find_swap_and_remove();
    iterate();
    remove_while_iterating();
}
