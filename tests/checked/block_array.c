/* SPDX-License-Identifier: MIT */
#include <limits.h>

#include <mova/arrays/block_array.h>

#include "misuse.h"

static const int numbers[] = {1, 2, 3};

static GB_block three_numbers(void)
{
    GB_block array;
    GB_init(&array, sizeof(int), 3);
    for (int i = 0; i < 3; ++i)
        GB_append_after_last(&array, &numbers[i]);
    return array;
}

/* ---- containers ---- */

static void null_array(int misused)
{
    GB_block array = three_numbers();
    GB_reverse(misused ? NULL : &array);
    GB_release(&array);
}

static void null_record(int misused)
{
    GB_block array = three_numbers();
    GB_release(&array);
    GB_init(misused ? NULL : &array, sizeof(int), 3);
    GB_release(&array);
}

static void used_after_release(int misused)
{
    GB_block array = three_numbers();
    if (!misused)
        GB_replace_item(&array, 1, &numbers[0]);
    GB_release(&array);
    if (misused)
        GB_replace_item(&array, 1, &numbers[0]);
}

static void copy_of_a_released_one(int misused)
{
    GB_block array = three_numbers();
    GB_block copy = array;
    if (misused)
        GB_release(&array);
    GB_append_after_last(&copy, &numbers[0]);
    GB_release(&copy);
}

static void released_twice(int misused)
{
    GB_block array = three_numbers();
    GB_block copy = array;
    GB_release(&array);
    if (misused)
        GB_release(&copy);
    GB_release(&array);
}

static void joined_to_itself(int misused)
{
    GB_block array = three_numbers();
    GB_block other = three_numbers();
    GB_append_block(&array, misused ? &array : &other);
    GB_release(&other);
    GB_release(&array);
}

static void copied_over_itself(int misused)
{
    GB_block array = three_numbers();
    GB_block other;
    GB_copy(misused ? &array : &other, &array);
    GB_release(&other);
    GB_release(&array);
}

/* ---- sizes and overlaps ---- */

static void joined_to_another_size(int misused)
{
    GB_block array = three_numbers();
    GB_block other;
    GB_init(&other, misused ? sizeof(double) : sizeof(int), 3);
    GB_append_block(&array, &other);
    GB_release(&array);
}

static void copied_into_another_size(int misused)
{
    GB_block array = three_numbers();
    GB_block other;
    GB_init(&other, misused ? sizeof(double) : sizeof(int), 3);
    GB_copy_into(&other, &array);
    GB_release(&other);
    GB_release(&array);
}

static void appended_to_itself(int misused)
{
    GB_block array = three_numbers();
    GB_append_after_last(&array, misused ? array.data : &numbers[0]);
    GB_release(&array);
}

static void inserted_into_itself(int misused)
{
    GB_block array = three_numbers();
    GB_insert_item(&array, 3, misused ? array.data : &numbers[0]);
    GB_release(&array);
}

static void replaced_by_itself(int misused)
{
    GB_block array = three_numbers();
    GB_replace_item(&array, 1, (char *)array.data + sizeof(int) + (misused ? 2 : 0));
    GB_release(&array);
}

/* ---- indices and counts ---- */

static void replaced_past_the_end(int misused)
{
    GB_block array = three_numbers();
    GB_replace_item(&array, misused ? 3 : 2, &numbers[0]);
    GB_release(&array);
}

static void removed_before_the_first(int misused)
{
    GB_block array = three_numbers();
    GB_remove_item(&array, misused ? -1 : 0);
    GB_release(&array);
}

static void inserted_past_the_end(int misused)
{
    GB_block array = three_numbers();
    GB_insert_item(&array, misused ? 4 : 3, &numbers[0]);
    GB_release(&array);
}

static void removed_from_none(int misused)
{
    GB_block array = three_numbers();
    if (misused)
        GB_make_empty(&array);
    GB_remove_last_item(&array);
    GB_release(&array);
}

static void increment_of_zero(int misused)
{
    GB_block array = three_numbers();
    GB_set_inc(&array, misused ? 0 : 1);
    GB_append_after_last(&array, &numbers[0]);
    GB_release(&array);
}

static void appended_too_much(int misused)
{
    GB_block array = three_numbers();
    if (misused)
        array.count = array.capacity = INT_MAX - 9;
    GB_append_after_last(&array, &numbers[0]);
    GB_release(&array);
}

static void joined_too_much(int misused)
{
    GB_block array = three_numbers();
    GB_block other = three_numbers();
    if (misused)
        array.count = array.capacity = INT_MAX - 2;
    GB_append_block(&array, &other);
    GB_release(&array);
}

/* ---- damage ---- */

static void damaged_count(int misused)
{
    GB_block array = three_numbers();
    if (misused)
        array.count = 4;
    GB_release(&array);
}

static void damaged_storage(int misused)
{
    GB_block array = three_numbers();
    void *storage = array.data;
    if (misused)
        array.data = NULL;
    GB_roll(&array, 1);
    array.data = storage;
    GB_release(&array);
}

static void damaged_state(int misused)
{
    GB_block array = three_numbers();
    if (misused)
        array.closed = 7;
    GB_reverse(&array);
    GB_release(&array);
}

static const misuse_cell cells[] = {
    {"null array", 1, "GB_reverse: the array is null", null_array},
    {"null record", 1, "GB_init: the array is null", null_record},
    {"used after release", 2, "GB_replace_item: the array was released", used_after_release},
    {"copy of a released one", 2, "GB_append_after_last: the array was released", copy_of_a_released_one},
    {"released twice", 2, "GB_release: the array was released", released_twice},
    {"joined to itself", 2, "GB_append_block: the two arrays are the same", joined_to_itself},
    {"copied over itself", 2, "GB_copy: the two arrays are the same", copied_over_itself},
    {"joined to another size", 6, "GB_append_block: the elements of the two arrays differ in size",
     joined_to_another_size},
    {"copied into another size", 6, "GB_copy_into: the elements of the two arrays differ in size",
     copied_into_another_size},
    {"appended to itself", 6, "GB_append_after_last: the element lies in the array, which grows for it",
     appended_to_itself},
    {"inserted into itself", 6, "GB_insert_item: the element lies in the array, which grows for it",
     inserted_into_itself},
    {"replaced by itself", 6, "GB_replace_item: the element overlaps the one that it replaces", replaced_by_itself},
    {"replaced past the end", 7, "GB_replace_item: the index is out of range", replaced_past_the_end},
    {"removed before the first", 7, "GB_remove_item: the index is out of range", removed_before_the_first},
    {"inserted past the end", 7, "GB_insert_item: the index is out of range", inserted_past_the_end},
    {"removed from none", 7, "GB_remove_last_item: the array is empty", removed_from_none},
    {"increment of 0", 7, "GB_append_after_last: the array is full, and its increment is below 1", increment_of_zero},
    {"appended too much", 7, "GB_append_after_last: the array would have more than 2147483647 elements",
     appended_too_much},
    {"joined too much", 7, "GB_append_block: the array would have more than 2147483647 elements", joined_too_much},
    {"damaged count", 13, "GB_release: the array breaks its invariant 1", damaged_count},
    {"damaged storage", 13, "GB_roll: the array breaks its invariant 2", damaged_storage},
    {"damaged state", 13, "GB_reverse: the array breaks its invariant 3", damaged_state},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
