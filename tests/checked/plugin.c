/* SPDX-License-Identifier: MIT */
/* What plugin_program.c loads, calls and unloads. */
#include <mova/lists/generic_list.h>

GL_list *make_list(void *item);
void use_list(GL_list *list, GL_node *position);

GL_list *make_list(void *item)
{
    GL_list *list = GL_create();
    GL_append_after_last(list, item);
    GL_append_after_last(list, item);
    return list;
}

void use_list(GL_list *list, GL_node *position)
{
    GL_remove_item(list, position);
}
