/* SPDX-License-Identifier: MIT */
/* Bookmarks in a text stay at their lines while lines are inserted, removed and turned round. */
#include <mova/arrays/sorted_number_array.h>
#include <stdio.h>

typedef struct text {
    DA_array *lines;     /* of const char * */
    DA_array *bookmarks; /* the numbers of some lines */
} text;

static void insert_line(text *t, int32_t at, const char *line)
{
    DA_insert(t->lines, at, &line, 1);
    SA_adapt_for_insert(t->bookmarks, at);
}

static void remove_line(text *t, int32_t at)
{
    DA_delete(t->lines, at, 1);
    SA_adapt_for_remove(t->bookmarks, at);
}

static void reverse(text *t)
{
    DA_reverse(t->lines);
    SA_adapt_for_reverse(t->bookmarks, DA_nitems(t->lines));
}

static void print_bookmarks(const text *t, const char *after)
{
    const int32_t *numbers = DA_data(t->bookmarks);
    const char *const *lines = DA_data(t->lines);
    printf("%s:", after);
    for (int32_t i = 0; i < DA_nitems(t->bookmarks); ++i)
        printf(" %d %s", (int)numbers[i], lines[numbers[i]]);
    printf("\n");
}

int main(void)
{
    text t = {DA_create(sizeof(char *), 64), DA_create(4, 64)};
    const char *const lines[] = {"ant", "bee", "cat", "dog", "eel"};
    DA_append(t.lines, lines, 5);
    SA_add_number(t.bookmarks, 3);
    SA_add_number(t.bookmarks, 1);
    print_bookmarks(&t, "at first");
    insert_line(&t, 2, "bug");
    print_bookmarks(&t, "after an insertion");
    remove_line(&t, 1);
    print_bookmarks(&t, "after a removal");
    reverse(&t);
    print_bookmarks(&t, "turned round");
    DA_release(t.bookmarks);
    DA_release(t.lines);
}
