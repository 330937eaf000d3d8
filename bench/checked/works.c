/* SPDX-License-Identifier: MIT */
/* What row X1 measures: one program that works on 1e5 items, every step of it a call, and is then run on the ordinary and on
   the checked libraries.

   usage: checked_works WORK     prints nanoseconds of processor time an item, the median of some passes */
#include <mova/hash/hash_table.h>
#include <mova/lists/generic_list.h>
#include <mova/tree/balanced_tree.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

enum { items = 100000, passes = 15 };

/* In an order that has nothing to do with their values. */
static int numbers[items];

static double now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return (double)time.tv_sec * 1e9 + (double)time.tv_nsec;
}

static void scatter_numbers(void)
{
    unsigned long state = 1;
    for (int i = 0; i < items; ++i)
        numbers[i] = i + 1;
    for (int i = items - 1; i > 0; --i) {
        state = state * 6364136223846793005UL + 1442695040888963407UL;
        int other = (int)((state >> 33) % (unsigned long)(i + 1)), kept = numbers[i];
        numbers[i] = numbers[other];
        numbers[other] = kept;
    }
}

/* ---- a pointer list ---- */

static GL_list *filled_list(void)
{
    GL_list *list = GL_create();
    for (int i = 0; i < items; ++i)
        GL_append_after_last(list, &numbers[i]);
    return list;
}

static double append_and_release(void)
{
    double begin = now();
    GL_list *list = filled_list();
    GL_release(&list);
    return now() - begin;
}

static double walk(void)
{
    GL_list *list = filled_list();
    double begin = now();
    GL_iterator iterator = GL_all_items(list);
    for (void *item; GL_next_item(&iterator, &item);) {
    }
    double time = now() - begin;
    GL_release(&list);
    return time;
}

/* ---- a tree ---- */

static int compare(void *a, void *b)
{
    int left = *(int *)a, right = *(int *)b;
    return (left > right) - (left < right);
}

static void insert_numbers(GT_tree *tree)
{
    for (int i = 0; i < items; ++i)
        GT_insert_item(tree, &numbers[i]);
}

static double tree_insertion(void)
{
    GT_tree *tree = GT_create_with_dupl_not_allowed(compare);
    double begin = now();
    insert_numbers(tree);
    double time = now() - begin;
    GT_release(&tree);
    return time;
}

static double tree_search(void)
{
    GT_tree *tree = GT_create_with_dupl_not_allowed(compare);
    insert_numbers(tree);
    double begin = now();
    for (int i = items - 1; i >= 0; --i) {
        GT_tree_item *position;
        GT_find_item(tree, &numbers[i], &position);
    }
    double time = now() - begin;
    GT_release(&tree);
    return time;
}

/* ---- a hash table ---- */

static HSH_table *filled_table(void)
{
    HSH_table *table = HSH_create(0, 0);
    for (int i = 0; i < items; ++i)
        HSH_set_value(table, (mova_word)numbers[i], (mova_word)i);
    return table;
}

static double hash_insertion(void)
{
    double begin = now();
    HSH_table *table = filled_table();
    double time = now() - begin;
    HSH_release(&table);
    return time;
}

static double hash_hit(void)
{
    HSH_table *table = filled_table();
    double begin = now();
    for (int i = items - 1; i >= 0; --i)
        HSH_get_value(table, (mova_word)numbers[i]);
    double time = now() - begin;
    HSH_release(&table);
    return time;
}

/* ---- */

static const struct work {
    const char *name;
    double (*pass)(void);
} works[] = {
    {"append and release", append_and_release}, {"walk", walk},
    {"tree insertion", tree_insertion},         {"tree search", tree_search},
    {"hash insertion", hash_insertion},         {"hash hit", hash_hit},
};

static int compare_times(const void *a, const void *b)
{
    double left = *(const double *)a, right = *(const double *)b;
    return (left > right) - (left < right);
}

int main(int count, char **arguments)
{
    scatter_numbers();
    for (size_t i = 0; i < sizeof works / sizeof *works && count == 2; ++i) {
        if (strcmp(works[i].name, arguments[1]) != 0)
            continue;
        double times[passes];
        for (int pass = 0; pass < passes; ++pass)
            times[pass] = works[i].pass() / items;
        qsort(times, passes, sizeof *times, compare_times);
        printf("%.3f\n", times[passes / 2]);
        return 0;
    }
    return 1;
}
