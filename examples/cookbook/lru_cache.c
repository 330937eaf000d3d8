/* SPDX-License-Identifier: MIT */
/* A cache of three results: the one that was asked for longest ago makes room. */
#include <mova/hash/hash_table.h>
#include <mova/lists/generic_list.h>
#include <stdio.h>

typedef struct result {
    mova_word key;
    long square;
} result;

typedef struct cache {
    GL_list *by_use;  /* the result that was asked for last is the first */
    HSH_table *nodes; /* from a key to its node in that list */
    int32_t room;
} cache;

/* Returns the node for a new result: another one, or the oldest result's, which is forgotten. */
static GL_node *make_room(cache *c)
{
    if (GL_count_items(c->by_use) < c->room)
        return GL_insert_before_first(c->by_use, MM_alloc_item(sizeof(result)));
    GL_node *oldest = c->by_use->last;
    HSH_remove_entry(c->nodes, ((result *)oldest->item)->key);
    GL_move_before_first(c->by_use, oldest);
    return oldest;
}

static long square(cache *c, mova_word key)
{
    GL_node *node = (GL_node *)HSH_get_value(c->nodes, key);
    if (node) {
        GL_move_before_first(c->by_use, node);
    } else {
        printf("%d is computed\n", (int)key);
        node = make_room(c);
        *(result *)node->item = (result){key, (long)(key * key)};
        HSH_set_value(c->nodes, key, (mova_word)node);
    }
    return ((result *)node->item)->square;
}

static void free_result(void **item)
{
    MM_dealloc_item(*item, sizeof(result));
}

int main(void)
{
    cache c = {GL_create(), HSH_create(8, 0), 3};
    const mova_word asked[] = {2, 3, 4, 2, 5, 3};
    for (int i = 0; i < 6; ++i)
        printf("%ld\n", square(&c, asked[i]));
    GL_total_release(&c.by_use, free_result);
    HSH_release(&c.nodes);
}
