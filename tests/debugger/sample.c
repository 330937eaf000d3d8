/* SPDX-License-Identifier: MIT */
#include "sample.h"

#include <stdlib.h>
#include <string.h>

#include <mova/container.h>
#include <mova/host/memory_blocks.h>

int numbers[] = {10, 20, 30, 40, 50, 60};

typedef struct job {
    struct job *prev, *next;
    int number;
} job;

job first_job = {NULL, NULL, 7}, second_job = {NULL, NULL, 8}, third_job = {NULL, NULL, 9};

/* ---- lists ---- */

GL_list *pointer_list, *empty_list;
GL_iterator pointer_walk;
EL_list *element_list, *element_ring, *wide_list, *long_list;
EL_iterator element_walk;
DBLL_list *double_list;
ES_stack *stack;
SL_list *simple_list, *simple_ring;
SL_iterator simple_walk;

static void make_pointer_lists(void)
{
    GL_node *position;
    empty_list = GL_create();
    pointer_list = GL_create();
    for (int i = 0; i < 4; ++i)
        GL_append_after_last(pointer_list, &numbers[i]);
    GL_remove_item(pointer_list, pointer_list->first->next);
    GL_append_after_last(pointer_list, NULL);
    pointer_walk = GL_all_items(pointer_list);
    GL_next_position(&pointer_walk, &position);
}

static void make_element_lists(void)
{
    const char text[] = "twenty-one bytes long";
    element_list = EL_create(sizeof numbers[0]);
    element_ring = EL_create(sizeof numbers[0]);
    long_list = EL_create(sizeof numbers[0]);
    for (int i = 0; i < 1500; ++i)
        EL_append_after_last(long_list, &i);
    EL_set_closed(element_ring);
    wide_list = EL_create(21);
    EL_append_after_last(wide_list, (void *)text);
    for (int i = 0; i < 4; ++i) {
        EL_append_after_last(element_list, &numbers[i]);
        EL_append_after_last(element_ring, &numbers[i]);
    }
    EL_roll(element_ring, element_ring->first->next);
    element_walk = EL_all_items(element_list);
    double_list = DBLL_create_with_two(0.5, 2.25);
    stack = ES_create(sizeof numbers[0]);
    for (int i = 0; i < 3; ++i)
        ES_push(stack, &numbers[i]);
    ES_pop(stack, &numbers[5]);
}

static void make_simple_lists(void)
{
    simple_list = SL_create();
    SL_append_after_last(simple_list, &first_job);
    simple_ring = SL_create();
    SL_set_closed(simple_ring);
    SL_append_after_last(simple_ring, &second_job);
    SL_append_after_last(simple_ring, &third_job);
    simple_walk = SL_all_items(simple_list);
}

/* ---- arrays ---- */

GB_block block_array, block_ring;
DA_array *dynamic_array, *sorted_array, *id_table;
DA_iterator array_walk;
io_lut_iterator id_walk;

static void make_arrays(void)
{
    void *element;
    GB_init(&block_array, sizeof numbers[0], 2);
    GB_init(&block_ring, sizeof numbers[0], 2);
    block_ring.closed = 1;
    dynamic_array = DA_create(sizeof numbers[0], 4);
    sorted_array = DA_create(sizeof numbers[0], 4);
    for (int i = 0; i < 3; ++i) {
        GB_append_after_last(&block_array, &numbers[i]);
        GB_append_after_last(&block_ring, &numbers[i]);
        DA_append(dynamic_array, &numbers[i], 1);
        SA_add_number(sorted_array, 9 - 4 * i);
    }
    array_walk = DA_all_items(dynamic_array);
    DA_next(&array_walk, &element);
    id_table = io_lut_create();
    io_lut_allow_reuse(id_table);
    for (int i = 0; i < 3; ++i)
        io_lut_add(id_table, &numbers[i]);
    io_lut_set(id_table, NULL, 2);
    id_walk = io_lut_all_items(id_table);
}

/* ---- the tree ---- */

int tree_keys[] = {5, 2, 8, 1, 3, 9, 7, 4};
GT_tree *balanced_tree, *empty_tree;
GT_tree_iter *tree_walk;

static int32_t compare(void *a, void *b)
{
    return *(int *)a - *(int *)b;
}

static void make_trees(void)
{
    void *item;
    empty_tree = GT_create_with_dupl_not_allowed(compare);
    balanced_tree = GT_create_with_dupl_allowed(compare);
    for (int i = 0; i < 8; ++i)
        GT_insert_item(balanced_tree, &tree_keys[i]);
    tree_walk = GT_all_items(balanced_tree);
    GT_next_item(tree_walk, &item);
    GT_next_item(tree_walk, &item);
    GT_remove_item(balanced_tree, balanced_tree->last);
}

/* ---- hash tables ---- */

HSH_table *hash_table, *empty_table;
HSH_iterator hash_walk;
mova_lookup *lookup;

static void make_hash_tables(void)
{
    static const int keys[] = {22, 30, 14, 7, 1, 17};
    mova_word key, value;
    empty_table = HSH_create(8, 0);
    hash_table = HSH_create(8, 0);
    for (int i = 0; i < 6; ++i)
        HSH_set_value(hash_table, keys[i], 100 + i);
    HSH_remove_entry(hash_table, 17);
    HSH_set_value(hash_table, 9, -1);
    HSH_set_value(hash_table, 25, 106);
    hash_walk = HSH_all_entries(hash_table);
    HSH_next(&hash_walk, &key, &value);
    lookup = mova_lu_create();
    for (int i = 1; i <= 3; ++i)
        mova_lu_add(lookup, 16 * i, i);
}

/* ---- the cache and its pool ---- */

mb_pool *movable_blocks;
cc_cache *swap_cache;

static uint32_t size_of(void *item)
{
    return (uint32_t) * (int *)item;
}

static void fill(void *item, void *block, uint32_t size)
{
    memset(block, *(int *)item, size);
}

static void told(void *item)
{
    (void)item;
}

static void written(void *item, void *block)
{
    (void)item;
    (void)block;
}

static void make_cache(void)
{
    mb_handle taken, dirty;
    movable_blocks = mb_create_pool(1024);
    swap_cache = cc_create(movable_blocks);
    taken = cc_alloc(swap_cache, 64);
    dirty = cc_alloc(swap_cache, 100);
    memset(mb_get(movable_blocks, dirty), 0, 100);
    cc_insert(swap_cache, &numbers[0], 0, size_of, fill, written, told);
    cc_insert(swap_cache, &numbers[1], dirty, size_of, fill, written, told);
    cc_get(swap_cache, cc_insert(swap_cache, &numbers[2], 0, size_of, fill, written, told));
    cc_free(swap_cache, &taken);
}

/* ---- the colour table ---- */

static void make_colours(void)
{
    int32_t index;
    RGBLUT_init(64, NULL, 0);
    CLUT_new_index();
    index = CLUT_new_index();
    CLUT_set(CLUT_new_index(), 194, 178, 128);
    CLUT_release_index(index);
}

/* ---- the program ---- */

__attribute__((noinline)) void stop_here(void)
{
    __asm__ volatile("");
}

int main(int count, char **arguments)
{
    (void)arguments;
    make_pointer_lists();
    make_element_lists();
    make_simple_lists();
    make_arrays();
    make_trees();
    make_hash_tables();
    make_cache();
    make_colours();
    make_typed();
    make_damaged();
    stop_here();
    if (count > 1)
        abort();
    return 0;
}
