/* SPDX-License-Identifier: MIT */
#include <limits.h>

#include <mova/arrays/dynamic_array.h>
#include <mova/lists/generic_list.h>

#include "misuse.h"

static const int numbers[] = {1, 2, 3};

static DA_array *three_numbers(void)
{
    DA_array *array = DA_create(sizeof(int), 4);
    DA_append(array, numbers, 3);
    return array;
}

/* ---- containers ---- */

static void null_array(int misused)
{
    DA_array *array = three_numbers();
    DA_nitems(misused ? NULL : array);
    DA_release(array);
}

static void null_iterator(int misused)
{
    DA_array *array = three_numbers();
    DA_iterator iterator = DA_all_items(array);
    void *item;
    DA_next(misused ? NULL : &iterator, &item);
    DA_release(array);
}

static void never_created(int misused)
{
    DA_array stray = {sizeof(int), 4, 0, 0, NULL};
    DA_array *array = three_numbers();
    DA_setsize(misused ? &stray : array, 2);
    DA_release(array);
}

static void used_after_release(int misused)
{
    DA_array *array = three_numbers();
    if (!misused)
        DA_append(array, numbers, 1);
    DA_release(array);
    if (misused)
        DA_append(array, numbers, 1);
}

static void released_twice(int misused)
{
    DA_array *array = three_numbers();
    DA_release(array);
    if (misused)
        DA_release(array);
    DA_release(NULL);
}

static void array_of_another_family(int misused)
{
    DA_array *array = three_numbers();
    GL_list *list = GL_create();
    void *wrong = list;
    DA_reverse(misused ? (DA_array *)wrong : array);
    GL_release(&list);
    DA_release(array);
}

static void walk_of_a_released_array(int misused)
{
    DA_array *array = three_numbers();
    DA_iterator iterator = DA_all_items(array);
    void *item;
    if (misused)
        DA_release(array);
    DA_next(&iterator, &item);
    if (!misused)
        DA_release(array);
}

/* ---- sizes and overlaps ---- */

static void copied_into_another_size(int misused)
{
    DA_array *array = three_numbers();
    DA_array *other = DA_create(misused ? sizeof(double) : sizeof(int), 4);
    DA_copy_into(other, array);
    DA_release(other);
    DA_release(array);
}

static void appended_to_itself(int misused)
{
    DA_array *array = three_numbers();
    DA_append(array, array->data, misused ? 3 : 1);
    DA_release(array);
}

static void inserted_into_itself(int misused)
{
    DA_array *array = three_numbers();
    DA_insert(array, 0, misused ? array->data : numbers, 3);
    DA_release(array);
}

static void put_over_itself(int misused)
{
    DA_array *array = three_numbers();
    DA_put_item(array, 1, (char *)array->data + sizeof(int) + (misused ? 2 : 0));
    DA_release(array);
}

/* ---- indices and counts ---- */

static void increment_of_zero(int misused)
{
    DA_array *array = DA_create(sizeof(int), misused ? 0 : 1);
    DA_release(array);
}

static void negative_index(int misused)
{
    DA_array *array = three_numbers();
    DA_get_item(array, misused ? -1 : 0);
    DA_release(array);
}

static void negative_count(int misused)
{
    DA_array *array = three_numbers();
    DA_append(array, numbers, misused ? -1 : 0);
    DA_release(array);
}

static void negative_size(int misused)
{
    DA_array *array = three_numbers();
    DA_setsize(array, misused ? -1 : 0);
    DA_release(array);
}

static void inserted_too_few(int misused)
{
    DA_array *array = three_numbers();
    DA_insert(array, 1, numbers, misused ? -2 : 1);
    DA_release(array);
}

static void deleted_past_the_end(int misused)
{
    DA_array *array = three_numbers();
    DA_delete(array, 2, misused ? 2 : 1);
    DA_release(array);
}

static void deleted_too_few(int misused)
{
    DA_array *array = three_numbers();
    DA_delete(array, 1, misused ? -1 : 1);
    DA_release(array);
}

static void extended_too_far(int misused)
{
    DA_array *array = three_numbers();
    DA_extend(array, misused ? INT_MAX - 3 : 8);
    DA_release(array);
}

static void put_too_far(int misused)
{
    DA_array *array = three_numbers();
    DA_put_item(array, misused ? INT_MAX : 8, NULL);
    DA_release(array);
}

static void got_too_far(int misused)
{
    DA_array *array = three_numbers();
    DA_get_item(array, misused ? INT_MAX - 1 : 8);
    DA_release(array);
}

static void appended_too_much(int misused)
{
    DA_array *array = three_numbers();
    DA_append(array, numbers, misused ? INT_MAX : 3);
    DA_release(array);
}

static void inserted_too_far(int misused)
{
    DA_array *array = three_numbers();
    DA_insert(array, misused ? INT_MAX - 1 : 1, numbers, 2);
    DA_release(array);
}

/* ---- damage ---- */

static void damaged_count(int misused)
{
    DA_array *array = three_numbers();
    if (misused)
        array->nitems = 5;
    DA_clear(array);
    DA_release(array);
}

static void damaged_increment(int misused)
{
    DA_array *array = three_numbers();
    if (misused)
        array->increment = 0;
    DA_release(array);
}

static const misuse_cell cells[] = {
    {"null array", 1, "DA_nitems: the array is null", null_array},
    {"null iterator", 1, "DA_next: the iterator is null", null_iterator},
    {"never created", 2, "DA_setsize: the array was never created", never_created},
    {"used after release", 2, "DA_append: the array was released", used_after_release},
    {"released twice", 2, "DA_release: the array was released", released_twice},
    {"array of another family", 2, "DA_reverse: the array is of another family", array_of_another_family},
    {"walk of a released array", 11, "DA_next: the array was released", walk_of_a_released_array},
    {"copied into another size", 6, "DA_copy_into: the elements of the two arrays differ in size",
     copied_into_another_size},
    {"appended to itself", 6, "DA_append: the elements lie in the array, which grows for them", appended_to_itself},
    {"inserted into itself", 6, "DA_insert: the elements lie in the array, which grows for them", inserted_into_itself},
    {"put over itself", 6, "DA_put_item: the source overlaps the element", put_over_itself},
    {"increment of 0", 7, "DA_create: the increment is below 1", increment_of_zero},
    {"negative index", 7, "DA_get_item: the index is negative", negative_index},
    {"negative count", 7, "DA_append: the count is negative", negative_count},
    {"negative size", 7, "DA_setsize: the count is negative", negative_size},
    {"inserted too few", 7, "DA_insert: the count is negative", inserted_too_few},
    {"deleted past the end", 7, "DA_delete: the elements reach past the end", deleted_past_the_end},
    {"deleted too few", 7, "DA_delete: the count is negative", deleted_too_few},
    {"extended too far", 7, "DA_extend: the array would have more than 2147483647 elements", extended_too_far},
    {"put too far", 7, "DA_put_item: the array would have more than 2147483647 elements", put_too_far},
    {"got too far", 7, "DA_get_item: the array would have more than 2147483647 elements", got_too_far},
    {"appended too much", 7, "DA_append: the array would have more than 2147483647 elements", appended_too_much},
    {"inserted too far", 7, "DA_insert: the array would have more than 2147483647 elements", inserted_too_far},
    {"damaged count", 13, "DA_clear: the array breaks its invariant 3", damaged_count},
    {"damaged increment", 13, "DA_release: the array breaks its invariant 2", damaged_increment},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
