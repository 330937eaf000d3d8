/* SPDX-License-Identifier: MIT */
/* Positions of grid lines: sorted, without those that nearly coincide, and the nearest to a point. */
#include <mova/lists/double_list.h>
#include <stdio.h>

int main(void)
{
    const double positions[] = {30, 10, 20, 10.001, 40};
    DBLL_list *lines = DBLL_create();
    for (int i = 0; i < 5; ++i)
        DBLL_add_double(lines, positions[i]);
    DBLL_sort(lines);
    DBLL_remove_double_occ(lines, 0.01);

    double away;
    const int32_t nearest = DBLL_find_index_of_nearest(lines, 22, 5, &away);
    printf("line %d of %d is %g away\n", (int)nearest, (int)DBLL_size(lines), away);
    DBLL_release(&lines);
}
