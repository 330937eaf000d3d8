/* SPDX-License-Identifier: MIT */
/* A text that is put together: the array grows as it must. */
#include <mova/arrays/dynamic_array.h>
#include <stdio.h>
#include <string.h>

static void write(DA_array *text, const char *words)
{
    DA_append(text, words, (int32_t)strlen(words));
}

int main(void)
{
    DA_array *text = DA_create(1, 64);
    write(text, "plain functions");
    DA_insert(text, 6, "records, plain ", 15);
    DA_delete(text, 0, 6);
    printf("%s\n", DA_string(text));
    printf("%d bytes in room for %d\n", (int)DA_nitems(text), (int)DA_nalloc(text));
    DA_release(text);
}
