/* SPDX-License-Identifier: MIT */
#include <mova/lists/element_list.h>

#include "c_api.h"
#include "check.h"

/* Checks the elements, each an int, and the links both ways. */
static void check_elements(const EL_list *list, int32_t count, const int *expected)
{
    const EL_node *prev = list->closed ? list->last : NULL;
    EL_node *node = list->first;
    CHECK(EL_count_items(list) == count);
    for (int32_t i = 0; i < count; ++i) {
        CHECK(node != NULL && node->prev == prev);
        CHECK(*(int *)EL_element(node) == expected[i]);
        prev = node;
        node = node->next;
    }
    CHECK(node == (list->closed ? list->first : NULL));
    CHECK(list->last == prev);
}

static void append(EL_list *list, int number)
{
    CHECK(EL_append_after_last(list, &number) == list->last);
}

static EL_list *list_of_three(void)
{
    EL_list *list = EL_create(sizeof(int));
    for (int number = 0; number < 3; ++number)
        append(list, number);
    return list;
}

static int is_odd(void *element)
{
    return *(int *)element % 2;
}

static void create_and_release(void)
{
    EL_list *list = EL_create(65535);
    CHECK(list->element_size == 65535);
    check_elements(list, 0, NULL);
    EL_release(&list);
    CHECK(list == NULL);
    list = list_of_three();
    EL_make_empty(list);
    check_elements(list, 0, NULL);
    EL_release(&list);
}

static void insert(void)
{
    const int numbers[] = {0, 1, 2, 3, 4};
    EL_list *list = EL_create(sizeof(int));
    EL_node *middle = EL_insert_before_first(list, &numbers[2]);
    CHECK(EL_insert_before(list, middle, &numbers[0]) == list->first);
    CHECK(EL_insert_after(list, middle, &numbers[4]) == list->last);
    CHECK(EL_insert_before_index(list, 1, &numbers[1]) == list->first->next);
    CHECK(EL_insert_after_index(list, 2, &numbers[3]) == list->last->prev);
    CHECK(EL_insert_after_index(list, 5, &numbers[0]) == NULL);
    check_elements(list, 5, numbers);
    EL_release(&list);
}

static void look_up(void)
{
    EL_list *list = list_of_three();
    CHECK(EL_get_pos_at_index(list, 2) == list->last);
    CHECK(EL_get_pos_at_index(list, 3) == NULL);
    CHECK(EL_get_index(list, list->last) == 2);
    CHECK(*(int *)EL_get_item_at_index(list, 1) == 1);
    CHECK(EL_advance(list, list->first, 2) == list->last);
    CHECK(EL_count_items_inbetween(list, list->first->next, list->last) == 2);
    EL_release(&list);
}

static void remove_and_replace(void)
{
    const int number = 7;
    EL_list *list = list_of_three();
    EL_list *source = list_of_three();
    EL_replace_item(list->last, &number, sizeof number);
    check_elements(list, 3, (const int[]){0, 1, 7});
    EL_replace_items_inbetween(list, list->first->next, list->last, source, sizeof number);
    check_elements(list, 3, (const int[]){0, 0, 1});
    EL_remove_item(list, list->first);
    CHECK(EL_remove_at_index(list, 1) == 1);
    CHECK(EL_remove_at_index(list, 1) == 0);
    check_elements(list, 1, (const int[]){0});
    EL_remove_items_inbetween(source, source->first, source->first->next);
    check_elements(source, 1, (const int[]){2});
    EL_release(&source);
    EL_release(&list);
}

static void copy_join_and_reverse(void)
{
    EL_list *list = list_of_three();
    EL_list *copy = EL_total_copy(list);
    EL_list *part = EL_total_copy_inbetween(list, list->first, list->first->next);
    EL_reverse(copy);
    EL_append_list(copy, &part);
    CHECK(part == NULL);
    check_elements(copy, 5, (const int[]){2, 1, 0, 0, 1});
    EL_release(&copy);
    EL_release(&list);
}

static void cut_rings(void)
{
    EL_list *list = list_of_three();
    EL_set_closed(list);
    EL_roll(list, list->last);
    check_elements(list, 3, (const int[]){2, 0, 1});
    CHECK(EL_make_open_at_position(list, list->last) == list->first);
    check_elements(list, 4, (const int[]){1, 2, 0, 1});
    EL_list *end_part = EL_remove_and_get_end_part(list, list->first->next);
    check_elements(list, 2, (const int[]){1, 2});
    check_elements(end_part, 3, (const int[]){2, 0, 1});
    EL_set_closed(end_part);
    EL_reset_closed(end_part);
    check_elements(end_part, 3, (const int[]){2, 0, 1});
    EL_release(&end_part);
    EL_release(&list);
}

/* Checks that an iterator delivers these elements and then nothing. */
static void check_delivery(EL_iterator iterator, int count, const int *expected)
{
    EL_iterator copying = iterator;
    void *element = NULL;
    int number = -1;
    for (int i = 0; i < count; ++i) {
        CHECK(EL_next_item(&iterator, &element) == 1);
        CHECK(*(int *)element == expected[i]);
        CHECK(EL_next_item_copy(&copying, &number) == 1);
        CHECK(number == expected[i]);
    }
    CHECK(EL_next_item(&iterator, &element) == 0);
    CHECK(EL_next_item_copy(&copying, &number) == 0);
}

static void iterate(void)
{
    EL_list *list = list_of_three();
    check_delivery(EL_all_items(list), 3, (const int[]){0, 1, 2});
    check_delivery(EL_all_items_reversed(list), 3, (const int[]){2, 1, 0});
    check_delivery(EL_all_items_inbetween(list, list->last, list->first->next, 0), 2, (const int[]){2, 1});
    check_delivery(EL_tested_items_inbetween(list, list->first, list->last, 1, is_odd), 1, (const int[]){1});
    EL_release(&list);
}

static void remove_while_iterating(void)
{
    EL_list *list = list_of_three();
    EL_iterator iterator = EL_tested_items_inbetween(list, list->first, list->last, 1, is_odd);
    EL_node *position;
    while (EL_next_position(&iterator, &position))
        EL_remove_item(list, position);
    check_elements(list, 2, (const int[]){0, 2});
    EL_release(&list);
}

void drive_element_list(void)
{
    create_and_release();
    insert();
    look_up();
    remove_and_replace();
    copy_join_and_reverse();
    cut_rings();
    iterate();
    remove_while_iterating();
}
