/* SPDX-License-Identifier: MIT */
#include <mova/arrays/dynamic_array.h>

#include <string.h>

#include "c_api.h"
#include "check.h"

static void check_elements(const DA_array *array, int32_t count, const int *expected)
{
    CHECK(DA_nitems(array) == count);
    CHECK(DA_nitems(array) <= DA_nalloc(array));
    for (int32_t i = 0; i < count; ++i)
        CHECK(((const int *)DA_data(array))[i] == expected[i]);
}

static DA_array *array_of_five(void)
{
    DA_array *array = DA_create(sizeof(int), 4);
    DA_append(array, (const int[]){0, 1, 2, 3, 4}, 5);
    return array;
}

static void measure(void)
{
    DA_array *array = DA_create(sizeof(int), 4);
    CHECK(DA_check(array) == 20);
    DA_extend(array, 4);
    CHECK(DA_nalloc(array) == 8);
    CHECK(DA_memsize(array) == 8 * sizeof(int));
    CHECK(DA_memsize(NULL) == 0);
    DA_setsize(array, 6);
    DA_truncate(array, 3);
    check_elements(array, 3, (const int[]){0, 0, 0});
    DA_reset(array);
    check_elements(array, 0, NULL);
    DA_clear(array);
    CHECK(DA_data(array) == NULL);
    DA_release(array);
}

static void edit(void)
{
    const int seven = 7;
    DA_array *array = array_of_five();
    DA_put_item(array, 6, &seven);
    DA_put_item(array, 4, NULL);
    check_elements(array, 7, (const int[]){0, 1, 2, 3, 0, 0, 7});
    DA_delete(array, 2, 4);
    DA_insert(array, 1, (const int[]){8, 9}, 2);
    check_elements(array, 5, (const int[]){0, 8, 9, 1, 7});
    *(int *)DA_get_item(array, 5) = 6;
    DA_reverse(array);
    check_elements(array, 6, (const int[]){6, 7, 1, 9, 8, 0});
    DA_roll(array, 2);
    check_elements(array, 6, (const int[]){1, 9, 8, 0, 6, 7});
    DA_release(array);
}

static void copy_and_compare(void)
{
    DA_array *array = array_of_five();
    DA_array *copy = DA_copy(array);
    CHECK(DA_equal(array, copy) == 1);
    DA_truncate(array, 2);
    CHECK(DA_equal(array, copy) == 0);
    DA_copy_into(copy, array);
    CHECK(DA_equal(array, copy) == 1);
    DA_release(copy);
    DA_release(array);
}

static int is_odd(void *element)
{
    return *(int *)element % 2;
}

static void iterate(void)
{
    DA_array *array = array_of_five();
    DA_iterator iterator = DA_all_items(array);
    void *item;
    int sum = 0;
    while (DA_next(&iterator, &item))
        sum += *(int *)item;
    CHECK(sum == 10);
    for (iterator = DA_tested_items(array, is_odd); DA_next(&iterator, &item);)
        CHECK(*(int *)item % 2 == 1);
    CHECK(item == NULL);
    DA_release(array);
}

static void make_a_string(void)
{
    DA_array *array = DA_create(1, 4);
    DA_append(array, "abcd", 4);
    CHECK(strcmp(DA_string(array), "abcd") == 0);
    CHECK(DA_nitems(array) == 4);
    DA_release(array);
}

void drive_dynamic_array(void)
{
    measure();
    edit();
    copy_and_compare();
    iterate();
    make_a_string();
}
