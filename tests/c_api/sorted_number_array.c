/* SPDX-License-Identifier: MIT */
#include <mova/arrays/sorted_number_array.h>

#include "c_api.h"
#include "check.h"

static void check_numbers(const DA_array *array, int32_t count, const int32_t *expected)
{
    CHECK(DA_nitems(array) == count);
    for (int32_t i = 0; i < count; ++i)
        CHECK(((const int32_t *)DA_data(array))[i] == expected[i]);
}

void drive_sorted_number_array(void)
{
    DA_array *array = DA_create(sizeof(int32_t), 8);
    SA_add_number(array, 5);
    SA_add_number(array, 1);
    SA_add_number(array, 3);
    SA_add_number(array, 3);
    check_numbers(array, 3, (const int32_t[]){1, 3, 5});
    SA_remove_number(array, 1);
    CHECK(SA_check_number(array, 1) == 0);
    CHECK(SA_check_number(array, 3) == 1);
    SA_adapt_for_insert(array, 4);
    check_numbers(array, 2, (const int32_t[]){3, 6});
    SA_adapt_for_reverse(array, 10);
    check_numbers(array, 2, (const int32_t[]){3, 6});
    SA_adapt_for_roll(array, 2, 10);
    check_numbers(array, 2, (const int32_t[]){1, 4});
    SA_adapt_for_remove(array, 1);
    check_numbers(array, 1, (const int32_t[]){3});
    DA_release(array);
}
