/* SPDX-License-Identifier: MIT */
/* A task that is done brings others, which take its place in the list. */
#include <mova/frame/host.h>
#include <mova/lists/generic_list.h>
#include <mova/tree/balanced_tree.h>
#include <stdio.h>
#include <string.h>

typedef struct task {
    char name[16], needs[64];
} task;

/* Returns a new task, which is the caller's. */
static task *make_task(void)
{
    task *made = MM_alloc_item(sizeof *made);
    memset(made, 0, sizeof *made);
    return made;
}

/* Returns the task of the next line, which is the caller's, or null at the end. */
static task *read_task(FILE *from)
{
    char line[80];
    if (!fgets(line, sizeof line, from))
        return NULL;
    task *made = make_task();
    sscanf(line, "%15s %63[^\n]", made->name, made->needs);
    return made;
}

static void free_task(void **item)
{
    MM_dealloc_item(*item, sizeof(task));
}

/* The name comes first in a task: a name alone may be looked for, too. */
static int32_t by_name(void *a, void *b)
{
    return strcmp(a, b);
}

static int is_done(GT_tree *done, char *name)
{
    GT_tree_item *found;
    return GT_search_item(done, name, &found);
}

/* Whether all that the task needs is done. */
static int may_start(const task *each, GT_tree *done)
{
    char need[16];
    int length;
    for (const char *rest = each->needs; sscanf(rest, "%15s%n", need, &length) == 1; rest += length) {
        if (need[0] != '+' && !is_done(done, need))
            return 0;
    }
    return 1;
}

/* Inserts, after the position, what its task brings: the words with a plus. */
static void insert_brought(GL_list *waiting, GL_node *at)
{
    const task *each = at->item;
    char word[16];
    int length;
    for (const char *rest = each->needs; sscanf(rest, "%15s%n", word, &length) == 1; rest += length) {
        if (word[0] != '+')
            continue;
        task *brought = make_task();
        strcpy(brought->name, word + 1);
        at = GL_insert_after(waiting, at, brought);
    }
}

/* Does every task that may start. Returns how many did. */
static int walk_once(GL_list *waiting, GT_tree *done)
{
    int started = 0;
    GL_iterator walk = GL_all_items(waiting);
    GL_node *at;
    while (GL_next_position(&walk, &at)) {
        task *each = at->item;
        if (!may_start(each, done))
            continue;
        printf("%s%s", started++ ? " " : "", each->name);
        insert_brought(waiting, at);
        GL_remove_item(waiting, at);
        if (GT_insert_item(done, each)->item != each)
            MM_dealloc_item(each, sizeof *each);
    }
    return started;
}

int main(void)
{
    GL_list *waiting = GL_create();
    GT_tree *done = GT_create_with_dupl_not_allowed(by_name);
    for (task *each = read_task(stdin); each; each = read_task(stdin))
        GL_append_after_last(waiting, each);
    while (walk_once(waiting, done))
        printf("\n");

    printf("done:");
    GT_tree_iter *walk = GT_all_items(done);
    void *item;
    while (GT_next_item(walk, &item)) {
        const task *each = item;
        printf(" %s", each->name);
    }
    printf("\n");
    GL_total_release(&waiting, free_task);
    GT_total_release(&done, sizeof(task));
}
