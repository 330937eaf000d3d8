/* SPDX-License-Identifier: MIT */
#include <limits.h>

#include <mova/arrays/sorted_number_array.h>
#include <mova/lists/generic_list.h>

#include "misuse.h"

static DA_array *three_numbers(void)
{
    DA_array *array = DA_create(sizeof(int32_t), 4);
    for (int32_t number = 1; number <= 3; ++number)
        SA_add_number(array, number);
    return array;
}

/* ---- containers ---- */

static void null_array(int misused)
{
    DA_array *array = three_numbers();
    SA_check_number(misused ? NULL : array, 1);
    DA_release(array);
}

static void used_after_release(int misused)
{
    DA_array *array = three_numbers();
    if (!misused)
        SA_add_number(array, 4);
    DA_release(array);
    if (misused)
        SA_add_number(array, 4);
}

static void array_of_another_family(int misused)
{
    DA_array *array = three_numbers();
    GL_list *list = GL_create();
    void *wrong = list;
    SA_adapt_for_insert(misused ? (DA_array *)wrong : array, 1);
    GL_release(&list);
    DA_release(array);
}

static void array_of_doubles(int misused)
{
    DA_array *array = three_numbers();
    DA_array *other = DA_create(sizeof(double), 4);
    SA_check_number(misused ? other : array, 1);
    DA_release(other);
    DA_release(array);
}

/* ---- counts, order, damage ---- */

static void rolled_without_a_companion(int misused)
{
    DA_array *array = three_numbers();
    SA_adapt_for_roll(array, 0, misused ? 0 : 4);
    DA_release(array);
}

static void added_too_many(int misused)
{
    DA_array *array = three_numbers();
    if (misused)
        array->increment = INT_MAX, array->nalloc = array->nitems;
    SA_add_number(array, 2);
    DA_release(array);
}

static void order_after_a_roll(int misused)
{
    DA_array *array = three_numbers();
    SA_adapt_for_roll(array, misused ? 2 : 1, 4);
    SA_check_number(array, 1);
    DA_release(array);
}

static void damaged_count(int misused)
{
    DA_array *array = three_numbers();
    if (misused)
        array->nitems = 5;
    for (int i = 0; i < 600; ++i)
        SA_remove_number(array, 9);
    DA_release(array);
}

static const misuse_cell cells[] = {
    {"null array", 1, "SA_check_number: the array is null", null_array},
    {"used after release", 2, "SA_add_number: the array was released", used_after_release},
    {"array of another family", 2, "SA_adapt_for_insert: the array is of another family", array_of_another_family},
    {"array of doubles", 6, "SA_check_number: the elements have 8 bytes, not 4", array_of_doubles},
    {"rolled without a companion", 7, "SA_adapt_for_roll: the count is 0", rolled_without_a_companion},
    {"added too many", 7, "SA_add_number: the array would have more than 2147483647 elements", added_too_many},
    {"order after a roll", 8, "SA_check_number: the numbers are not in order", order_after_a_roll},
    {"damaged count", 13, "SA_remove_number: the array breaks its invariant 3", damaged_count},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
