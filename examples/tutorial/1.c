/* SPDX-License-Identifier: MIT */
/* Tasks in a list. */
#include <mova/lists/generic_list.h>
#include <stdio.h>

typedef struct task {
    const char *name, *needs;
} task;

int main(void)
{
    task tasks[] = {{"launch", "paint rig"}, {"paint", "sand"}, {"sand", ""}, {"rig", "mast"}, {"mast", ""}};
    GL_list *waiting = GL_create();
    for (int i = 0; i < 5; ++i)
        GL_append_after_last(waiting, &tasks[i]);

    GL_iterator walk = GL_all_items(waiting);
    void *item;
    while (GL_next_item(&walk, &item)) {
        const task *each = item;
        printf("%s (%s)\n", each->name, each->needs);
    }
    GL_release(&waiting);
}
