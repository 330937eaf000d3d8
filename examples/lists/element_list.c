/* SPDX-License-Identifier: MIT */
/* A polygon as a ring of its corners: rolled to begin at the lowest, then walked backwards. */
#include <mova/lists/element_list.h>
#include <stdio.h>

struct corner {
    int x, y;
};

/* An element lies right after its node. */
static int height(EL_node *position)
{
    return ((struct corner *)(position + 1))->y;
}

static EL_node *lowest(EL_list *ring)
{
    EL_node *found = ring->first, *position;
    EL_iterator iterator = EL_all_items(ring);
    while (EL_next_position(&iterator, &position))
        if (height(position) < height(found))
            found = position;
    return found;
}

int main(void)
{
    const struct corner corners[] = {{0, 4}, {4, 4}, {3, 0}, {1, 1}};
    EL_list *ring = EL_create(sizeof(struct corner));
    for (int i = 0; i < 4; ++i)
        EL_append_after_last(ring, &corners[i]);
    EL_set_closed(ring);
    EL_roll(ring, lowest(ring));

    void *element;
    EL_iterator iterator = EL_all_items_reversed(ring);
    while (EL_next_item(&iterator, &element)) {
        const struct corner *corner = element;
        printf("%d,%d\n", corner->x, corner->y);
    }
    EL_release(&ring);
}
