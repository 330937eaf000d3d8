/* SPDX-License-Identifier: MIT */
/* The whole program: errors are told, and everything is released. */
#include <mova/frame/host.h>
#include <mova/host/errors.h>
#include <mova/lists/generic_list.h>
#include <mova/tree/balanced_tree.h>
#include <stdio.h>
#include <stdlib.h>
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

/* Adds the task of each line. Returns 0, or the number of the first line that is none. */
static int read_tasks(GL_list *waiting, FILE *from)
{
    char line[80], end;
    for (int number = 1; fgets(line, sizeof line, from); ++number) {
        task *read = make_task();
        GL_append_after_last(waiting, read);
        if (sscanf(line, "%15s%c%63[^\n]", read->name, &end, read->needs) < 2 || !strchr(" \n", end))
            return number;
    }
    return 0;
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

static void print_done(GT_tree *done)
{
    printf("done:");
    GT_tree_iter *walk = GT_all_items(done);
    void *item;
    while (GT_next_item(walk, &item)) {
        const task *each = item;
        printf(" %s", each->name);
    }
    printf("\n");
}

static void print_waiting(const GL_list *waiting)
{
    fprintf(stderr, "plan: these wait for ever:");
    GL_iterator walk = GL_all_items(waiting);
    void *item;
    while (GL_next_item(&walk, &item)) {
        const task *each = item;
        fprintf(stderr, " %s", each->name);
    }
    fprintf(stderr, "\n");
}

/* What the library raises ends the program, with a line that says what it was. */
static void give_up(const char *module, int32_t line, int32_t code)
{
    char text[160];
    mova_error_text(text, sizeof text, module, line, code);
    fprintf(stderr, "plan: %s\n", text);
    exit(2);
}

int main(void)
{
    mova_set_error_handler(give_up);
    GL_list *waiting = GL_create();
    GT_tree *done = GT_create_with_dupl_not_allowed(by_name);
    const int bad_line = read_tasks(waiting, stdin);
    if (bad_line) {
        fprintf(stderr, "plan: line %d is no task\n", bad_line);
    } else {
        while (walk_once(waiting, done))
            printf("\n");
        print_done(done);
        if (GL_count_items(waiting))
            print_waiting(waiting);
    }
    const int status = bad_line ? 2 : GL_count_items(waiting) ? 1 : 0;
    GL_total_release(&waiting, free_task);
    GT_total_release(&done, sizeof(task));
    return status;
}
