/* SPDX-License-Identifier: MIT */
#include <mova/tree/balanced_tree.h>

#include <mova/frame/host.h>

#include "c_api.h"
#include "check.h"

static int numbers[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
static int printed;

static int32_t compare_numbers(void *a, void *b)
{
    const int left = *(const int *)a, right = *(const int *)b;
    return (left > right) - (left < right);
}

static int32_t is_odd(void *item)
{
    return *(const int *)item % 2;
}

static void print_number(void *item)
{
    printed = printed * 10 + *(const int *)item;
    mova_dprintf("%d", *(const int *)item);
}

/* Checks the numbers along the chain, each as a digit, and its links both ways. */
static void check_numbers(const tree *t, const char *digits)
{
    const tree_item *prev = NULL, *node = t->first;
    for (; *digits; ++digits, prev = node, node = node->next) {
        CHECK(node && *(const int *)node->item == *digits - '0');
        CHECK(node->prev == prev);
    }
    CHECK(node == NULL);
    CHECK(t->last == prev);
}

static tree *tree_of(const char *digits)
{
    tree *t = GT_create_with_dupl_not_allowed(compare_numbers);
    for (; *digits; ++digits)
        GT_insert_item(t, &numbers[*digits - '0']);
    return t;
}

static tree_item *position_of(tree *t, int number)
{
    tree_item *position = NULL;
    CHECK(GT_find_item(t, &numbers[number], &position) == 1);
    return position;
}

static void create_and_release(void)
{
    tree *t = tree_of("213");
    CHECK(GT_count_items(t) == 3);
    check_numbers(t, "123");
    GT_make_empty(t);
    check_numbers(t, "");
    CHECK(t->root == NULL);
    GT_release(&t);
    CHECK(t == NULL);
    GT_release(&t);
}

static tree *tree_of_owned_numbers(void)
{
    tree *t = GT_create_with_dupl_allowed(compare_numbers);
    for (int i = 0; i < 5; ++i) {
        int *number = MM_alloc_item(sizeof *number);
        *number = i % 3;
        GT_insert_item(t, number);
    }
    return t;
}

static void free_with_items(void)
{
    tree *t = tree_of_owned_numbers();
    check_numbers(t, "00112");
    GT_total_make_empty(t, sizeof(int));
    check_numbers(t, "");
    GT_release(&t);
    t = tree_of_owned_numbers();
    GT_total_release(&t, sizeof(int));
    CHECK(t == NULL);
}

static void look_up(void)
{
    tree *t = tree_of("4261357");
    tree_item *position;
    int five = 5;
    CHECK(GT_search_item(t, &five, &position) == 1);
    CHECK(position->item == &numbers[5]);
    CHECK(GT_find_item(t, &five, &position) == 0);
    CHECK(position == NULL);
    CHECK(GT_insert_item(t, &five) == position_of(t, 5));
    check_numbers(t, "1234567");
    GT_release(&t);
}

static void remove_items(void)
{
    tree *t = tree_of("4261357");
    GT_remove_item(t, position_of(t, 4));
    check_numbers(t, "123567");
    GT_remove_first_item(t);
    GT_find_and_remove_item(t, &numbers[6]);
    check_numbers(t, "2357");
    tree_item *seven = position_of(t, 7);
    numbers[7] = 0;
    GT_remove_item_global(t, seven);
    numbers[7] = 7;
    check_numbers(t, "235");
    GT_release(&t);
}

static void make_a_node_without_a_tree(void)
{
    tree_item *node = GT_allocate_node(&numbers[3]);
    CHECK(node->item == &numbers[3]);
    CHECK(!node->left && !node->right && !node->prev && !node->next && node->balance == 0);
    GT_free_node(node);
}

/* Checks that the iterator delivers these numbers and then nothing. */
static void check_delivery(tree_iter *iterator, const char *digits)
{
    void *item = NULL;
    for (; *digits; ++digits) {
        CHECK(GT_next_item(iterator, &item) == 1);
        CHECK(item == &numbers[*digits - '0']);
    }
    CHECK(GT_next_item(iterator, &item) == 0);
}

static void iterate(void)
{
    tree *t = tree_of("13524");
    tree_iter *given = GT_all_items(t);
    void *item;
    check_delivery(GT_all_items(t), "12345");
    check_delivery(GT_all_items_conditional(t, is_odd), "135");
    check_delivery(GT_all_items_while_conditioned(t, is_odd), "1");
    CHECK(GT_next_item(given, &item) == 1);
    CHECK(GT_current_item(given, &item) == 1);
    CHECK(item == &numbers[1]);
    check_delivery(GT_from_current(given), "12345");
    check_delivery(GT_from_current_conditional(given, is_odd), "135");
    check_delivery(GT_from_current_while_conditioned(given, is_odd), "1");
    check_delivery(GT_from_next(given), "2345");
    check_delivery(GT_from_next_conditional(given, is_odd), "35");
    check_delivery(GT_from_next_while_conditioned(given, is_odd), "");
    GT_end_iterator(given);
    CHECK(t->iterators->count == 0);
    GT_release(&t);
}

static void remove_while_iterating(void)
{
    tree *t = tree_of("1234567");
    tree_iter *iterator = GT_all_items_conditional(t, is_odd);
    for (tree_item *position; GT_next_position(iterator, &position);)
        GT_remove_item(t, position);
    check_numbers(t, "246");
    GT_release(&t);
}

static void sort_check_and_print(void)
{
    tree *t = tree_of("12345");
    numbers[1] = 9;
    GT_sort(t);
    check_numbers(t, "23459");
    GT_check();
    GT_print_tree(t, print_number);
    CHECK(printed == 23459);
    numbers[1] = 1;
    GT_release(&t);
}

void drive_balanced_tree(void)
{
    create_and_release();
    free_with_items();
    look_up();
    remove_items();
    make_a_node_without_a_tree();
    iterate();
    remove_while_iterating();
    sort_check_and_print();
}
