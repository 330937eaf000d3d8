/* SPDX-License-Identifier: MIT */
/* Tasks leave the list of those that wait while it is walked. */
#include <mova/lists/generic_list.h>
#include <stdio.h>
#include <string.h>

typedef struct task {
    const char *name, *needs;
} task;

static int is_done(const GL_list *done, const char *name)
{
    GL_iterator walk = GL_all_items(done);
    void *item;
    while (GL_next_item(&walk, &item)) {
        const task *each = item;
        if (strcmp(each->name, name) == 0)
            return 1;
    }
    return 0;
}

/* Whether all that the task needs is done. */
static int may_start(const task *each, const GL_list *done)
{
    char need[16];
    int length;
    for (const char *rest = each->needs; sscanf(rest, "%15s%n", need, &length) == 1; rest += length) {
        if (!is_done(done, need))
            return 0;
    }
    return 1;
}

/* Does every task that may start. Returns how many did. */
static int walk_once(GL_list *waiting, GL_list *done)
{
    int started = 0;
    GL_iterator walk = GL_all_items(waiting);
    GL_node *at;
    while (GL_next_position(&walk, &at)) {
        task *each = at->item;
        if (!may_start(each, done))
            continue;
        printf("%s%s", started++ ? " " : "", each->name);
        GL_remove_item(waiting, at);
        GL_append_after_last(done, each);
    }
    return started;
}

int main(void)
{
    task tasks[] = {{"launch", "paint rig"}, {"paint", "sand"}, {"sand", ""}, {"rig", "mast"}, {"mast", ""}};
    GL_list *waiting = GL_create(), *done = GL_create();
    for (int i = 0; i < 5; ++i)
        GL_append_after_last(waiting, &tasks[i]);
    while (walk_once(waiting, done))
        printf("\n");
    GL_release(&waiting);
    GL_release(&done);
}
