/* SPDX-License-Identifier: MIT */
/* The edits of a number, of which the last three can be undone and done again. */
#include <mova/lists/element_list.h>
#include <stdio.h>

enum { KEPT = 3 };

typedef struct history {
    EL_list *edits; /* what was added, oldest first */
    EL_node *now;   /* the last edit that is done; null where all are undone */
    int value;
} history;

/* The edit that would be done again. */
static EL_node *next_of(const history *h)
{
    return h->now ? h->now->next : h->edits->first;
}

static void add(history *h, int amount)
{
    if (next_of(h))
        EL_remove_items_inbetween(h->edits, next_of(h), h->edits->last);
    h->now = EL_append_after_last(h->edits, &amount);
    h->value += amount;
    if (EL_count_items(h->edits) > KEPT)
        EL_remove_item(h->edits, h->edits->first);
}

static void undo(history *h)
{
    if (!h->now)
        return;
    h->value -= *(int *)EL_element(h->now);
    h->now = h->now->prev;
}

static void redo(history *h)
{
    if (!next_of(h))
        return;
    h->now = next_of(h);
    h->value += *(int *)EL_element(h->now);
}

int main(void)
{
    history h = {EL_create(sizeof(int)), NULL, 0};
    for (const char *key = "1234uuuurr5r"; *key; ++key) {
        if (*key == 'u')
            undo(&h);
        else if (*key == 'r')
            redo(&h);
        else
            add(&h, *key - '0');
        printf("%c: %d\n", *key, h.value);
    }
    EL_release(&h.edits);
}
