/* SPDX-License-Identifier: MIT */
/* A program that uses nothing but a container, and has types of its own by the short names. */
#define MOVA_NO_SHORT_NAMES
#include <mova/container.h>

typedef struct tree {
    int tree_item;
} tree, *tree_item, *tree_iter;

int main(void)
{
    tree item = {0};
    GL_list *list = GL_create();
    GL_append_after_last(list, &item);
    const int32_t count = GL_count_items(list);
    GL_release(&list);
    return count == 1 ? 0 : 1;
}
