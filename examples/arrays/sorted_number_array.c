/* SPDX-License-Identifier: MIT */
/* A selection that follows the edits of the list that it selects from. */
#include <mova/arrays/sorted_number_array.h>
#include <stdio.h>

int main(void)
{
    DA_array *selected = DA_create(sizeof(int32_t), 16);
    SA_add_number(selected, 3);
    SA_add_number(selected, 1);
    SA_adapt_for_insert(selected, 2); /* the list has a new entry 2 */
    SA_adapt_for_remove(selected, 0); /* its entry 0 is gone */
    const int32_t *numbers = DA_data(selected);
    for (int i = 0; i < DA_nitems(selected); ++i)
        printf("%d\n", (int)numbers[i]);
    DA_release(selected);
}
