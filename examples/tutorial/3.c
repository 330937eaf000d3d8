/* SPDX-License-Identifier: MIT */
/* Tasks are read, and belong to the list that they are in. */
#include <mova/frame/host.h>
#include <mova/lists/generic_list.h>
#include <stdio.h>
#include <string.h>

typedef struct task {
    char name[16], needs[64];
} task;

/* Returns the task of the next line, which is the caller's, or null at the end. */
static task *read_task(FILE *from)
{
    char line[80];
    if (!fgets(line, sizeof line, from))
        return NULL;
    task *made = MM_alloc_item(sizeof *made);
    memset(made, 0, sizeof *made);
    sscanf(line, "%15s %63[^\n]", made->name, made->needs);
    return made;
}

static void free_task(void **item)
{
    MM_dealloc_item(*item, sizeof(task));
}

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
    GL_list *waiting = GL_create(), *done = GL_create();
    for (task *each = read_task(stdin); each; each = read_task(stdin))
        GL_append_after_last(waiting, each);
    while (walk_once(waiting, done))
        printf("\n");
    GL_total_release(&waiting, free_task);
    GL_total_release(&done, free_task);
}
