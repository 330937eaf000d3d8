/* SPDX-License-Identifier: MIT */
/* Every tree of up to seven nodes, with an iterator in every position, under every single edit, beside the model. */
#include "modelled_tree.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using mova::test::expected_calls;
using mova::test::modelled_tree;

constexpr int32_t most_nodes = 7;

/* The shape of a tree: its height, and the depth of each node in order. */
struct depths {
    int32_t height;
    std::vector<int32_t> of;
};

std::vector<depths> all_depths(int32_t count)
{
    if (count == 0)
        return {{0, {}}};
    std::vector<depths> all;
    for (int32_t on_the_left = 0; on_the_left < count; ++on_the_left) {
        for (const depths &left : all_depths(on_the_left)) {
            for (const depths &right : all_depths(count - 1 - on_the_left)) {
                if (std::abs(left.height - right.height) > 1)
                    continue;
                depths joined{1 + std::max(left.height, right.height), {}};
                for (int32_t depth : left.of)
                    joined.of.push_back(depth + 1);
                joined.of.push_back(0);
                for (int32_t depth : right.of)
                    joined.of.push_back(depth + 1);
                all.push_back(joined);
            }
        }
    }
    return all;
}

/* Needs no rotation. The keys are even, so that there is room between them. */
void insert_level_by_level(modelled_tree &t, const depths &shape)
{
    for (int32_t depth = 0; depth < shape.height; ++depth) {
        for (std::size_t i = 0; i < shape.of.size(); ++i) {
            if (shape.of[i] == depth)
                t.insert(2 * static_cast<int32_t>(i) + 2);
        }
    }
}

/* Iterators that are fresh at each node, that have delivered each node, and that are exhausted. */
void start_iterators_everywhere(modelled_tree &t)
{
    for (std::size_t delivered = 0; delivered <= t.size(); ++delivered) {
        t.start(modelled_tree::predicate::odd, 0);
        const std::size_t walker = t.iterator_count() - 1;
        for (std::size_t i = 0; i < delivered; ++i)
            t.step(walker, true);
        t.start_from(walker, false, modelled_tree::predicate::odd, 0);
    }
}

using edit = std::function<void(modelled_tree &)>;

std::vector<edit> all_edits(std::size_t count)
{
    std::vector<edit> edits = {
        [](modelled_tree &t) { t.remove_first(); },
        [](modelled_tree &t) { t.make_empty(false); },
        [](modelled_tree &t) { t.make_empty(true); },
    };
    for (int32_t key = 1; key <= 2 * static_cast<int32_t>(count) + 1; ++key)
        edits.emplace_back([key](modelled_tree &t) { t.insert(key); });
    for (std::size_t i = 0; i < count; ++i) {
        edits.emplace_back([i](modelled_tree &t) { t.remove(i); });
        edits.emplace_back([i](modelled_tree &t) { t.find_and_remove(i); });
        for (int32_t key : {0, 2 * static_cast<int32_t>(i) + 2, 99})
            edits.emplace_back([i, key](modelled_tree &t) { t.remove_with_key(i, key, false); });
        for (int32_t key : {0, 99})
            edits.emplace_back([i, key](modelled_tree &t) { t.sort_with_keys({{i, key}}); });
    }
    return edits;
}

/* Steps every iterator to its end, or ends it where the edit has left it on a released record. */
void run_iterators_out(modelled_tree &t)
{
    while (t.iterator_count()) {
        if (t.may_step(0))
            t.step(0, false);
        else
            t.end(0);
    }
}

void expect_edit(const depths &shape, bool dupl_allowed, const edit &make_edit)
{
    expected_calls expected;
    modelled_tree t(expected, dupl_allowed);
    insert_level_by_level(t, shape);
    start_iterators_everywhere(t);
    t.compare();
    make_edit(t);
    t.compare();
    run_iterators_out(t);
    t.compare();
    t.release(true);
    expected.require_nothing_left();
}

TEST(BalancedTreeModel, EverySmallTreeBehavesUnderEveryEditWithIteratorsEverywhere)
{
    std::size_t shapes = 0;
    for (int32_t count = 0; count <= most_nodes; ++count) {
        for (const depths &shape : all_depths(count)) {
            ++shapes;
            for (const edit &each : all_edits(static_cast<std::size_t>(count))) {
                for (bool dupl_allowed : {false, true})
                    ASSERT_NO_THROW(expect_edit(shape, dupl_allowed, each));
            }
        }
    }
    EXPECT_EQ(shapes, 1u + 1 + 2 + 1 + 4 + 6 + 4 + 17);
}

} // namespace
