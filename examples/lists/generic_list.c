/* SPDX-License-Identifier: MIT */
#include <mova/lists/generic_list.h>
#include <stdio.h>

static int is_even(void *item)
{
    return *(int *)item % 2 == 0;
}

int main(void)
{
    int numbers[] = {1, 2, 3, 4};
    GL_list *list = GL_create();
    for (int i = 0; i < 4; ++i)
        GL_append_after_last(list, &numbers[i]);
    GL_iterator iterator = GL_tested_items(list, is_even);
    GL_node *position;
    while (GL_next_position(&iterator, &position))
        GL_remove_item(list, position);
    printf("%d odd numbers are left\n", (int)GL_count_items(list));
    GL_release(&list);
}
