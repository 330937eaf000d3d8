/* SPDX-License-Identifier: MIT */
/* Programs that misuse a family, one of them a run: the program's arguments are the name of a cell, and a second one, whatever
   it is, takes the misuse out.

   A cell is one row of its family's table:

       {"removed position", 3, "GL_remove_item: the position was removed", remove_twice},

   Its name, the kind of misuse as docs/checked.md numbers them, the first line that is expected of it after "mova: ", and its
   function. This does all that is right whenever it is called, and asks `misused` before it does what is wrong:

       static void remove_twice(int misused)
       {
           GL_list *list = three_items();
           GL_node *position = list->first;
           GL_remove_item(list, position);
           if (misused)
               GL_remove_item(list, position);
           GL_release(&list);
       }

   A cell whose name begins with "order" is run with MOVA_CHECK=order.

   tests/checked/cells.cmake runs each cell both ways: with the misuse it wants the exact first line, with this program's file
   and a line of it in the second; without, silence. Where a cell may crash once the misuse is reported, that is no matter: it
   is run so that the first misuse ends it. */
#ifndef MOVA_TESTS_CHECKED_MISUSE_H
#define MOVA_TESTS_CHECKED_MISUSE_H

#include <pthread.h>
#include <stdio.h>
#include <string.h>

typedef struct misuse_cell {
    const char *name;
    int kind;
    const char *line;
    void (*run)(int misused);
} misuse_cell;

/* Does it in a thread of its own, while this one waits. */
static inline void in_a_thread(void *(*act)(void *), void *argument)
{
    pthread_t thread;
    if (pthread_create(&thread, NULL, act, argument) == 0)
        pthread_join(thread, NULL);
}

static inline void *do_nothing(void *argument)
{
    return argument;
}

/* What main() is made of: lists the cells, "name|kind|line" each, where no argument names one. */
static inline int run_cell(const misuse_cell *cells, size_t count, int arguments, char **argument)
{
    for (size_t i = 0; i < count; ++i) {
        if (arguments < 2)
            printf("%s|%d|%s\n", cells[i].name, cells[i].kind, cells[i].line);
        else if (strcmp(cells[i].name, argument[1]) == 0)
            return cells[i].run(arguments == 2), 0;
    }
    return arguments < 2 ? 0 : 1;
}

#endif
