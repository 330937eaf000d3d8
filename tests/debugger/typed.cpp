/* SPDX-License-Identifier: MIT */
/* Containers of the typed layer. */
#include <string>

#include <mova/cxx.h>

#include "sample.h"

namespace {

struct point {
    int x, y;
};

struct task {
    int64_t number;
    mova::links waiting;
};

struct by_x {
    int operator()(const point &a, const point &b) const { return a.x - b.x; }
};

struct tile {
    std::size_t size;
    std::size_t body_size() const { return size; }
    void fill(std::span<std::byte> body) { std::fill(body.begin(), body.end(), std::byte{1}); }
};

struct visit {
    int country, visits;
};

point points[] = {{3, 1}, {1, 2}, {2, 3}};
task first_task = {1, {}}, second_task = {2, {}};
tile large_tile = {64}, small_tile = {32};

/* They outlive main: a debugger looks at them, and nobody releases them. */
struct containers {
    mova::pointer_list<point> pointers;
    mova::element_list<point> elements;
    mova::element_ring<int> ring;
    mova::double_list doubles;
    mova::element_stack<int> stack;
    mova::intrusive_list<task, &task::waiting> queue;
    mova::dynamic_array<point> dynamic;
    mova::block_array<point> block;
    mova::sorted_numbers sorted;
    mova::id_table<point> ids;
    mova::balanced_set<point, by_x> tree;
    mova::hash_table<int, point *> table;
    mova::pointer_lookup<point *, int> lookup;
    mova::keyed_table<visit, &visit::country> keyed;
    mova::block_pool pool{512};
    mova::swap_cache<tile> cache{pool.get()};
    mova::pointer_list<point> moved_from{nullptr};
};

} // namespace

containers *typed;

void make_typed(void)
{
    typed = new containers;
    for (point &each : points) {
        typed->pointers.append(&each);
        typed->elements.append(each);
        typed->ring.append(each.x);
        typed->doubles.append(each.x / 4.0);
        typed->stack.push(each.x);
        typed->dynamic.append(each);
        typed->block.append(each);
        typed->sorted.add(each.x);
        typed->ids.add(&each);
        typed->tree.insert(each);
        typed->table.set(each.x, &each);
        typed->lookup.add(&each, each.x);
        typed->keyed.insert({each.x, each.y});
    }
    typed->queue.append(first_task);
    typed->queue.append(second_task);
    typed->cache.insert(large_tile);
    typed->cache.insert(small_tile);
    typed->cache.body(typed->cache.begin());
}
