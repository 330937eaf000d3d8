/* SPDX-License-Identifier: MIT */
/* Damaged containers. A name ends in the number of the invariant that is broken first; where the library's own check can look
   at such damage, it says the same number, or the program ends. */
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <mova/arrays/internal/invariants.h>
#include <mova/cache/internal/invariants.h>
#include <mova/container.h>
#include <mova/hash/internal/invariants.h>
#include <mova/host/internal/invariants.h>
#include <mova/lists/internal/invariants.h>
#include <mova/tree/internal/invariants.h>

#include "sample.h"

extern "C" int numbers[];

namespace {

void expect(int number, int said, const char *what)
{
    if (number == said)
        return;
    std::printf("%s: the library says %d\n", what, said);
    std::_Exit(3);
}

/* An address where nothing is. */
template <class T>
T *wild()
{
    return reinterpret_cast<T *>(uintptr_t{48});
}

bool is_not_wild(const void *node)
{
    return node != wild<void>();
}

} // namespace

struct damaged_containers {
    GL_list *pointers_count_1, *pointers_end_2, *pointers_after_last_3, *pointers_endless_3, *pointers_prev_4,
        *pointers_wild_4, *pointers_wild_end_4, *pointers_last_1;
    EL_list *elements_open_ring_3, *elements_inner_ring_4;
    SL_list *simple_count_1;
    GB_block block_count_1, block_data_2, block_wild_2, block_closed_3;
    DA_array dynamic_data_1, dynamic_room_2, dynamic_count_3, dynamic_wild_4;
    DA_array *sorted_order_1, *id_size_1, *id_flags_2;
    GT_tree *tree_chain_1, *tree_prev_2, *tree_balance_3, *tree_order_4, *tree_iterator_5, *tree_endless_1,
        *tree_wild_1, *tree_wild_iterators_5;
    HSH_table *hash_size_1, *hash_mask_2, *hash_shift_2, *hash_mark_3, *hash_count_4, *hash_home_5, *hash_twice_5,
        *hash_wild_4;
    mova_lookup *lookup_shift_1, *lookup_table_4;
    mb_pool *pool_handle_1, *pool_address_2, *pool_blocks_3, *pool_list_4, *pool_rover_5;
    cc_cache *cache_prev_1, *cache_end_2, *cache_status_3, *cache_handle_4, *cache_wild_1;
} broken;

namespace {

/* ---- lists ---- */

GL_list *pointers()
{
    GL_list *list = GL_create();
    for (int i = 0; i < 3; ++i)
        GL_append_after_last(list, &numbers[i]);
    return list;
}

EL_list *elements()
{
    EL_list *list = EL_create(sizeof(int));
    for (int i = 0; i < 4; ++i)
        EL_append_after_last(list, &numbers[i]);
    return list;
}

struct item {
    mova_sl_links links;
} items[2];

void damage_lists()
{
    (broken.pointers_count_1 = pointers())->count = 4;
    (broken.pointers_last_1 = pointers())->last->next = nullptr;
    broken.pointers_last_1->count = 2;
    (broken.pointers_end_2 = pointers())->last = nullptr;
    (broken.pointers_after_last_3 = pointers())->last->next = broken.pointers_count_1->first;
    broken.pointers_endless_3 = pointers();
    broken.pointers_endless_3->last->next = broken.pointers_endless_3->first->next;
    broken.pointers_endless_3->count = 1000000000;
    broken.pointers_prev_4 = pointers();
    broken.pointers_prev_4->last->prev = broken.pointers_prev_4->first;
    (broken.pointers_wild_4 = pointers())->first->next = wild<GL_node>();
    (broken.pointers_wild_end_4 = pointers())->first = wild<GL_node>();
    (broken.elements_open_ring_3 = elements())->closed = 1;
    broken.elements_inner_ring_4 = elements();
    broken.elements_inner_ring_4->first->next->next->next = broken.elements_inner_ring_4->first->next;
    broken.simple_count_1 = SL_create();
    for (item &each : items)
        SL_append_after_last(broken.simple_count_1, &each);
    broken.simple_count_1->count = 3;
}

void check_lists()
{
    const GL_list *const lists[] = {broken.pointers_count_1,      broken.pointers_last_1,    broken.pointers_end_2,
                                    broken.pointers_after_last_3, broken.pointers_endless_3, broken.pointers_prev_4,
                                    broken.pointers_wild_4,       broken.pointers_wild_end_4};
    const int said[] = {1, 1, 2, 3, 3, 4, 4, 4};
    for (int i = 0; i < 8; ++i)
        expect(said[i], mova::broken_invariant(*lists[i], is_not_wild), "a pointer list");
    expect(3, mova::broken_invariant(*broken.elements_open_ring_3), "elements_open_ring");
    expect(4, mova::broken_invariant(*broken.elements_inner_ring_4), "elements_inner_ring");
    expect(1, mova::broken_invariant(*broken.simple_count_1), "simple_count");
}

/* ---- arrays ---- */

void damage_arrays()
{
    const GB_block block = {numbers, sizeof(int), 3, 4, 2, 0};
    broken.block_count_1 = broken.block_data_2 = broken.block_wild_2 = broken.block_closed_3 = block;
    broken.block_count_1.count = 5;
    broken.block_data_2.data = nullptr;
    broken.block_wild_2.data = wild<int>();
    broken.block_closed_3.closed = 7;
    const DA_array array = {sizeof(int), 2, 4, 3, numbers};
    broken.dynamic_data_1 = broken.dynamic_room_2 = broken.dynamic_count_3 = broken.dynamic_wild_4 = array;
    broken.dynamic_data_1.data = nullptr;
    broken.dynamic_room_2.nalloc = 5;
    broken.dynamic_count_3.nitems = 5;
    broken.dynamic_wild_4.data = wild<int>();
    broken.sorted_order_1 = DA_create(sizeof(int), 4);
    DA_append(broken.sorted_order_1, numbers, 3);
    static_cast<int *>(broken.sorted_order_1->data)[2] = 20;
    broken.id_size_1 = DA_create(2, 4);
    broken.id_flags_2 = io_lut_create();
    static_cast<uintptr_t *>(broken.id_flags_2->data)[0] = 6;
}

void check_arrays()
{
    expect(1, mova::broken_invariant(broken.block_count_1), "block_count");
    expect(2, mova::broken_invariant(broken.block_data_2), "block_data");
    expect(3, mova::broken_invariant(broken.block_closed_3), "block_closed");
    expect(1, mova::broken_invariant(broken.dynamic_data_1), "dynamic_data");
    expect(2, mova::broken_invariant(broken.dynamic_room_2), "dynamic_room");
    expect(3, mova::broken_invariant(broken.dynamic_count_3), "dynamic_count");
    expect(1, mova::broken_invariant_of_numbers(*broken.sorted_order_1), "sorted_order");
    expect(1, mova::broken_invariant_of_table(*broken.id_size_1), "id_size");
    expect(2, mova::broken_invariant_of_table(*broken.id_flags_2), "id_flags");
}

/* ---- trees ---- */

int32_t compare(void *a, void *b)
{
    return *static_cast<int *>(a) - *static_cast<int *>(b);
}

GT_tree *numbers_in_order()
{
    GT_tree *made = GT_create_with_dupl_not_allowed(compare);
    for (int i = 0; i < 5; ++i)
        GT_insert_item(made, &numbers[i]);
    return made;
}

void damage_trees()
{
    broken.tree_chain_1 = numbers_in_order();
    broken.tree_chain_1->first = broken.tree_chain_1->root;
    broken.tree_prev_2 = numbers_in_order();
    broken.tree_prev_2->last->prev = broken.tree_prev_2->first;
    (broken.tree_balance_3 = numbers_in_order())->root->balance = -1;
    (broken.tree_order_4 = numbers_in_order())->first->item = &numbers[4];
    broken.tree_iterator_5 = numbers_in_order();
    GT_all_items(broken.tree_iterator_5)->tree = broken.tree_chain_1;
    broken.tree_endless_1 = numbers_in_order();
    broken.tree_endless_1->first->left = broken.tree_endless_1->root;
    (broken.tree_wild_1 = numbers_in_order())->root->right = wild<GT_tree_item>();
    (broken.tree_wild_iterators_5 = numbers_in_order())->iterators = wild<GL_list>();
}

void check_trees()
{
    expect(1, mova::broken_invariant(*broken.tree_chain_1, compare), "tree_chain");
    expect(2, mova::broken_invariant(*broken.tree_prev_2, compare), "tree_prev");
    expect(3, mova::broken_invariant(*broken.tree_balance_3, compare), "tree_balance");
    expect(4, mova::broken_invariant(*broken.tree_order_4, compare), "tree_order");
    expect(5, mova::broken_invariant(*broken.tree_iterator_5, compare), "tree_iterator");
}

/* ---- hash tables ---- */

HSH_table *words()
{
    HSH_table *table = HSH_create(8, 0);
    for (mova_word key = 1; key <= 4; ++key)
        HSH_set_value(table, key, key);
    return table;
}

void damage_tables()
{
    (broken.hash_size_1 = words())->capacity = 9;
    (broken.hash_mask_2 = words())->mask = 15;
    (broken.hash_shift_2 = words())->shift = 1;
    (broken.hash_mark_3 = words())->high_water_mark = 8;
    (broken.hash_count_4 = words())->count = 5;
    (broken.hash_home_5 = words())->keys[3] = 14;
    (broken.hash_twice_5 = words())->keys[2] = 1;
    (broken.hash_wild_4 = words())->keys = wild<mova_word>();
    broken.lookup_shift_1 = mova_lu_create();
    broken.lookup_shift_1->table->maximum_shift = 4;
    broken.lookup_table_4 = mova_lu_create();
    broken.lookup_table_4->table->count = 1;
}

void check_tables()
{
    expect(1, mova::broken_invariant(*broken.hash_size_1), "hash_size");
    expect(2, mova::broken_invariant(*broken.hash_mask_2), "hash_mask");
    expect(2, mova::broken_invariant(*broken.hash_shift_2), "hash_shift");
    expect(3, mova::broken_invariant(*broken.hash_mark_3), "hash_mark");
    expect(4, mova::broken_invariant(*broken.hash_count_4), "hash_count");
    expect(5, mova::broken_invariant(*broken.hash_home_5), "hash_home");
    expect(5, mova::broken_invariant(*broken.hash_twice_5), "hash_twice");
    expect(1, mova::broken_invariant(*broken.lookup_shift_1), "lookup_shift");
    expect(4, mova::broken_invariant(*broken.lookup_table_4), "lookup_table");
}

/* ---- pools: what is opaque to programs is the class that they are made of ---- */

constexpr mb_handle none_such = 40;

mova::block_pool &inside(mb_pool *pool)
{
    return *reinterpret_cast<mova::block_pool *>(pool);
}

/* A record that may be written to. */
template <class Record>
Record &opened(const Record &record)
{
    return const_cast<Record &>(record);
}

/* Blocks 1, 3 and 5 of 16 bytes, with a gap of 32 after the first and the second. */
mb_pool *with_gaps()
{
    mb_pool *pool = mb_create_pool(256);
    for (const size_t size : {16u, 32u, 16u, 32u, 16u})
        static_cast<void>(mb_alloc(pool, size));
    for (mb_handle freed : {mb_handle{2}, mb_handle{4}})
        mb_free(pool, &freed);
    return pool;
}

void damage_pools()
{
    opened(std::as_const(inside(broken.pool_handle_1 = with_gaps())).place_of(1)).handle = 3;
    opened(std::as_const(inside(broken.pool_address_2 = with_gaps())).place_of(3)).address += 16;
    ++opened(inside(broken.pool_blocks_3 = with_gaps()).statistics()).live_blocks;
    opened(std::as_const(inside(broken.pool_list_4 = with_gaps())).block_of(3)).links.next = none_such;
    /* The rover follows the statistics and the handle that was given last. */
    const mb_statistics *statistics = &inside(broken.pool_rover_5 = with_gaps()).statistics();
    reinterpret_cast<mb_handle *>(const_cast<mb_statistics *>(statistics + 1))[1] = none_such;
}

void check_pools()
{
    expect(1, mova::broken_invariant(inside(broken.pool_handle_1)), "pool_handle");
    expect(2, mova::broken_invariant(inside(broken.pool_address_2)), "pool_address");
    expect(3, mova::broken_invariant(inside(broken.pool_blocks_3)), "pool_blocks");
    expect(4, mova::broken_invariant(inside(broken.pool_list_4)), "pool_list");
    expect(5, mova::broken_invariant(inside(broken.pool_rover_5)), "pool_rover");
}

/* ---- caches ---- */

uint32_t size_of(void *)
{
    return 16;
}

cc_cache *three_entries()
{
    cc_cache *cache = cc_create(mb_create_pool(256));
    for (int i = 0; i < 3; ++i)
        cc_insert(cache, &numbers[i], cc_alloc(cache, 16), size_of, nullptr, nullptr, nullptr);
    return cache;
}

void damage_caches()
{
    (broken.cache_prev_1 = three_entries())->last->prev = nullptr;
    (broken.cache_end_2 = three_entries())->last = nullptr;
    (broken.cache_status_3 = three_entries())->first->status = 0x41;
    (broken.cache_handle_4 = three_entries())->first->handle = 40;
    (broken.cache_wild_1 = three_entries())->first->next = wild<cc_entry>();
}

void check_caches()
{
    const auto is_live = [](mb_handle handle) { return mb_get(broken.cache_handle_4->pool, handle) != nullptr; };
    expect(1, mova::broken_invariant(*broken.cache_prev_1), "cache_prev");
    expect(2, mova::broken_invariant(*broken.cache_end_2), "cache_end");
    expect(3, mova::broken_invariant(*broken.cache_status_3), "cache_status");
    expect(4, mova::broken_invariant(*broken.cache_handle_4, is_live), "cache_handle");
    expect(1, mova::broken_invariant(*broken.cache_wild_1, mova::is_handle, is_not_wild), "cache_wild");
}

} // namespace

void make_damaged(void)
{
    damage_lists();
    check_lists();
    damage_arrays();
    check_arrays();
    damage_trees();
    check_trees();
    damage_tables();
    check_tables();
    damage_pools();
    check_pools();
    damage_caches();
    check_caches();
}
