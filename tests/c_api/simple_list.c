/* SPDX-License-Identifier: MIT */
#include <mova/lists/simple_list.h>

#include "c_api.h"
#include "check.h"

struct record {
    struct record *prev, *next;
    int number;
};

static _Thread_local struct record records[8];
static _Thread_local int freed;

static void number_records(void)
{
    for (int number = 0; number < 8; ++number)
        records[number] = (struct record){NULL, NULL, number};
}

static void count_freed(void **item)
{
    CHECK(*item >= (void *)&records[0] && *item <= (void *)&records[7]);
    *item = NULL;
    ++freed;
}

static void *fourth_further(void *item)
{
    return (struct record *)item + 4;
}

static int32_t bytes_of_record(void *item)
{
    return (int32_t)((struct record *)item)->number;
}

static int is_odd(void *item)
{
    return ((struct record *)item)->number % 2;
}

/* Checks the items, each as its number, and the links both ways. */
static void check_items(const SL_list *list, int32_t count, const int *numbers)
{
    const struct record *prev = list->closed ? list->last : NULL;
    const struct record *item = list->first;
    CHECK(SL_count_items(list) == count);
    for (int32_t i = 0; i < count; ++i) {
        CHECK(item == &records[numbers[i]]);
        CHECK(item->prev == prev);
        prev = item;
        item = item->next;
    }
    CHECK(item == (list->closed ? list->first : NULL));
    CHECK(list->last == prev);
}

static SL_list *list_of_three(void)
{
    SL_list *list = SL_create();
    number_records();
    for (int number = 0; number < 3; ++number)
        SL_append_after_last(list, &records[number]);
    return list;
}

static void create_and_release(void)
{
    SL_list *list = SL_create();
    check_items(list, 0, NULL);
    SL_release(&list);
    CHECK(list == NULL);
    list = list_of_three();
    freed = 0;
    SL_make_empty(list, count_freed);
    CHECK(freed == 3);
    check_items(list, 0, NULL);
    SL_append_after_last(list, &records[0]);
    SL_total_release(&list, count_freed);
    CHECK(list == NULL);
    CHECK(freed == 4);
}

static void copy_and_measure(void)
{
    SL_list *list = list_of_three();
    SL_list *copy = SL_total_copy(list, fourth_further);
    check_items(copy, 3, (const int[]){4, 5, 6});
    CHECK(SL_check(copy, bytes_of_record) == 16 + 4 + 5 + 6);
    SL_total_release(&copy, count_freed);
    SL_total_release(&list, count_freed);
}

static void insert(void)
{
    SL_list *list = SL_create();
    number_records();
    SL_insert_before_first(list, &records[2]);
    SL_insert_before(list, &records[2], &records[0]);
    SL_insert_after(list, &records[2], &records[4]);
    CHECK(SL_insert_before_index(list, 1, &records[1]) == 1);
    CHECK(SL_insert_after_index(list, 2, &records[3]) == 1);
    CHECK(SL_insert_after_index(list, 5, &records[5]) == 0);
    SL_insert_unique(list, &records[2]);
    SL_insert_unique(list, &records[5]);
    check_items(list, 6, (const int[]){0, 1, 2, 3, 4, 5});
    SL_total_release(&list, count_freed);
}

static void look_up(void)
{
    SL_list *list = list_of_three();
    CHECK(SL_pos_at_index(list, 2) == &records[2]);
    CHECK(SL_pos_at_index(list, 3) == NULL);
    CHECK(SL_get_index(list, &records[2]) == 2);
    CHECK(SL_advance(list, &records[0], 2) == &records[2]);
    SL_total_release(&list, count_freed);
}

static void remove_items(void)
{
    SL_list *list = list_of_three();
    SL_remove_item(list, &records[1]);
    CHECK(records[1].prev == NULL && records[1].next == NULL);
    check_items(list, 2, (const int[]){0, 2});
    CHECK(SL_remove_at_index(list, 1) == 1);
    CHECK(SL_remove_at_index(list, 1) == 0);
    check_items(list, 1, (const int[]){0});
    SL_total_release(&list, count_freed);
}

static void roll_reverse_and_join(void)
{
    SL_list *list = list_of_three();
    SL_list *other = SL_create();
    SL_set_closed(list);
    SL_roll(list, &records[2]);
    check_items(list, 3, (const int[]){2, 0, 1});
    SL_reverse(list);
    check_items(list, 3, (const int[]){1, 0, 2});
    SL_reset_closed(list);
    SL_append_after_last(other, &records[3]);
    SL_append_list(list, &other);
    CHECK(other == NULL);
    check_items(list, 4, (const int[]){1, 0, 2, 3});
    SL_total_release(&list, count_freed);
}

/* Checks that an iterator delivers these items and then nothing. */
static void check_delivery(SL_iterator iterator, int count, const int *numbers)
{
    void *item = NULL;
    for (int i = 0; i < count; ++i) {
        CHECK(SL_next_item(&iterator, &item) == 1);
        CHECK(item == &records[numbers[i]]);
    }
    CHECK(SL_next_item(&iterator, &item) == 0);
}

static void iterate(void)
{
    SL_list *list = list_of_three();
    check_delivery(SL_empty_iter(), 0, NULL);
    check_delivery(SL_all_items(list), 3, (const int[]){0, 1, 2});
    check_delivery(SL_all_items_reversed(list), 3, (const int[]){2, 1, 0});
    check_delivery(SL_all_items_inbetween(list, &records[2], &records[1], 0), 2, (const int[]){2, 1});
    check_delivery(SL_tested_items(list, is_odd), 1, (const int[]){1});
    check_delivery(SL_tested_items_reversed(list, is_odd), 1, (const int[]){1});
    check_delivery(SL_tested_items_inbetween(list, &records[1], &records[2], 1, is_odd), 1, (const int[]){1});
    SL_total_release(&list, count_freed);
}

static void remove_while_iterating(void)
{
    SL_list *list = list_of_three();
    SL_iterator iterator = SL_tested_items(list, is_odd);
    void *item;
    while (SL_next_item(&iterator, &item))
        SL_remove_item(list, item);
    check_items(list, 2, (const int[]){0, 2});
    SL_total_release(&list, count_freed);
}

void drive_simple_list(void)
{
    create_and_release();
    copy_and_measure();
    insert();
    look_up();
    remove_items();
    roll_reverse_and_join();
    iterate();
    remove_while_iterating();
}
