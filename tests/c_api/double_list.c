/* SPDX-License-Identifier: MIT */
#include <mova/lists/double_list.h>

#include "c_api.h"
#include "check.h"

/* Checks that an iterator delivers these values and then nothing. */
static void check_delivery(EL_iterator iterator, int32_t count, const double *expected)
{
    double value = -1.0;
    for (int32_t i = 0; i < count; ++i) {
        CHECK(DBLL_next_double(&iterator, &value) == 1);
        CHECK(value == expected[i]);
    }
    CHECK(DBLL_next_double(&iterator, &value) == 0);
}

static void check_values(const DBLL_list *list, int32_t count, const double *expected)
{
    CHECK(DBLL_size(list) == count);
    CHECK(DBLL_check(list) == 16 * count);
    CHECK(DBLL_is_empty(list) == (count == 0));
    check_delivery(DBLL_all_doubles(list), count, expected);
}

static DBLL_list *list_of_three(void)
{
    DBLL_list *list = DBLL_create_with_two(1.0, 2.0);
    CHECK(DBLL_add_double(list, 3.0) == list->last);
    return list;
}

static void create_and_release(void)
{
    DBLL_list *list = DBLL_create();
    check_values(list, 0, NULL);
    DBLL_add_double(list, 1.0);
    DBLL_make_empty(list);
    check_values(list, 0, NULL);
    DBLL_release(&list);
    CHECK(list == NULL);
}

static void insert(void)
{
    DBLL_list *list = list_of_three();
    CHECK(DBLL_insert_before(list, list->first, 0.5) == list->first);
    CHECK(DBLL_insert_after(list, list->last, 4.0) == list->last);
    CHECK(DBLL_insert_before_index(list, 1, 0.75) == list->first->next);
    CHECK(DBLL_insert_after_index(list, 9, 9.0) == NULL);
    CHECK(DBLL_insert_after_index(list, 4, 3.5) == list->last->prev);
    CHECK(DBLL_add_double_unique(list, 2.05, 0.1) == 0);
    CHECK(DBLL_add_double_unique(list, 2.5, 0.1) == 1);
    check_values(list, 8, (const double[]){0.5, 0.75, 1.0, 2.0, 2.5, 3.0, 3.5, 4.0});
    DBLL_release(&list);
}

static void remove_and_replace(void)
{
    DBLL_list *list = list_of_three();
    DBLL_list *source = DBLL_create_with_two(7.0, 8.0);
    DBLL_replace_double(list->first, 5.0);
    DBLL_replace_doubles_inbetween(list, list->first->next, list->last, source);
    check_values(list, 3, (const double[]){5.0, 7.0, 8.0});
    DBLL_remove_double(list, list->first);
    CHECK(DBLL_remove_at_index(list, 1) == 1);
    CHECK(DBLL_remove_at_index(list, 1) == 0);
    check_values(list, 1, (const double[]){7.0});
    DBLL_release(&source);
    DBLL_release(&list);
}

static void sort_and_thin(void)
{
    DBLL_list *list = DBLL_create_with_two(3.0, 1.0);
    DBLL_add_double(list, 1.25);
    DBLL_sort(list);
    check_values(list, 3, (const double[]){1.0, 1.25, 3.0});
    DBLL_remove_double_occ(list, 0.5);
    check_values(list, 2, (const double[]){1.0, 3.0});
    DBLL_release(&list);
}

static void read_and_set_values(void)
{
    double nearest = -1.0;
    DBLL_list *list = list_of_three();
    DBLL_set_begin_value(list, 0.0);
    DBLL_set_end_value(list, 6.0);
    CHECK(DBLL_begin_value(list) == 0.0 && DBLL_end_value(list) == 6.0);
    DBLL_add_to_all(list, 0.5);
    check_values(list, 3, (const double[]){0.5, 2.5, 6.5});
    CHECK(DBLL_find_index_of_nearest(list, 6.0, 1.0, &nearest) == 2);
    CHECK(nearest == 0.5);
    DBLL_release(&list);
}

static void copy_roll_and_reverse(void)
{
    DBLL_list *list = list_of_three();
    DBLL_list *part = DBLL_copy_inbetween(list, list->first, list->first->next);
    check_values(part, 2, (const double[]){1.0, 2.0});
    DBLL_set_closed(list);
    DBLL_roll(list, list->last);
    DBLL_list *copy = DBLL_copy(list);
    DBLL_reset_closed(copy);
    check_values(copy, 3, (const double[]){3.0, 1.0, 2.0});
    CHECK(DBLL_advance(copy, copy->first, 2) == copy->last);
    DBLL_reverse(copy);
    check_values(copy, 3, (const double[]){2.0, 1.0, 3.0});
    DBLL_release(&copy);
    DBLL_release(&part);
    DBLL_release(&list);
}

static void iterate(void)
{
    DBLL_list *list = list_of_three();
    EL_node *middle = list->first->next;
    check_delivery(DBLL_all_doubles_reversed(list), 3, (const double[]){3.0, 2.0, 1.0});
    check_delivery(DBLL_all_doubles_inbetween(list, middle, list->last), 2, (const double[]){2.0, 3.0});
    check_delivery(DBLL_all_doubles_inbetween_reversed(list, middle, list->first), 2, (const double[]){2.0, 1.0});
    CHECK(DBLL_size_inbetween(list, list->first, middle) == 2);
    EL_iterator iterator = DBLL_all_doubles(list);
    EL_node *position;
    CHECK(DBLL_next_position(&iterator, &position) == 1 && position == list->first);
    DBLL_release(&list);
}

void drive_double_list(void)
{
    create_and_release();
    insert();
    remove_and_replace();
    sort_and_thin();
    read_and_set_values();
    copy_roll_and_reverse();
    iterate();
}
