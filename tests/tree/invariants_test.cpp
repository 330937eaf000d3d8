/* SPDX-License-Identifier: MIT */
#include <mova/tree/internal/invariants.h>

#include <gtest/gtest.h>

namespace {

int32_t compare_numbers(void *a, void *b)
{
    return *static_cast<int32_t *>(a) - *static_cast<int32_t *>(b);
}

/* The tree of 1, 2 and 3 with two iterators, as it should be; each row of a table then breaks it. */
struct tree_of_three {
    int32_t numbers[3] = {1, 2, 3};
    tree_item a{&numbers[0], nullptr, nullptr, nullptr, &b, 0};
    tree_item b{&numbers[1], &a, &c, &a, &c, 0};
    tree_item c{&numbers[2], nullptr, nullptr, &b, nullptr, 0};
    tree_iter one{&a, nullptr, &t, nullptr, 0}, other = one;
    GL_node first_iterator{nullptr, &last_iterator, &one}, last_iterator{&first_iterator, nullptr, &other};
    GL_list iterators{&first_iterator, &last_iterator, 2};
    tree t{&b, &a, &c, compare_numbers, 0, &iterators};

    /* The same chain below one node, as far as its links go; its balances say so. */
    void lean_to_the_left()
    {
        t.root = &c, c.left = &b, b.right = nullptr;
        b.balance = -1, c.balance = -2;
    }

    void lean_to_the_right()
    {
        t.root = &a, a.right = &b, b.left = nullptr;
        b.balance = 1, a.balance = 2;
    }

    void remove_all_but_the_iterators() { t.root = t.first = t.last = nullptr; }
};

using three = tree_of_three;

const struct row {
    const char *what;
    void (*break_it)(three &x);
    int broken;
} rows[] = {
    {"nothing", [](three &) {}, 0},
    {"an empty tree", [](three &x) { x.remove_all_but_the_iterators(); }, 0},
    {"a first without a root",
     [](three &x) {
         x.remove_all_but_the_iterators();
         x.t.first = &x.a;
     },
     1},
    {"a last without a root",
     [](three &x) {
         x.remove_all_but_the_iterators();
         x.t.last = &x.c;
     },
     1},
    {"a first that is not the least", [](three &x) { x.t.first = &x.b; }, 1},
    {"a last that is not the greatest", [](three &x) { x.t.last = &x.b; }, 1},
    {"a next that passes over a node", [](three &x) { x.a.next = &x.c; }, 1},
    {"a next at the end that leads nowhere", [](three &x) { x.b.next = nullptr; }, 1},
    {"a node before the first", [](three &x) { x.a.prev = &x.c; }, 2},
    {"a prev that passes over a node", [](three &x) { x.c.prev = &x.a; }, 2},
    {"a node after the last", [](three &x) { x.c.next = &x.a; }, 2},
    {"a root that says that its right side is higher", [](three &x) { x.b.balance = 1; }, 3},
    {"a left node that says that it has a side", [](three &x) { x.a.balance = -1; }, 3},
    {"a right node that says that it has a side", [](three &x) { x.c.balance = 1; }, 3},
    {"a left side that is higher by two", [](three &x) { x.lean_to_the_left(); }, 3},
    {"a right side that is higher by two", [](three &x) { x.lean_to_the_right(); }, 3},
    {"an item that is greater than the next", [](three &x) { x.numbers[0] = 5; }, 4},
    {"an item that is equal to the next", [](three &x) { x.numbers[0] = 2; }, 4},
    {"equal items where they are allowed", [](three &x) { x.numbers[0] = 2, x.t.dupl_allowed = 1; }, 0},
    {"an order that nobody asks for", [](three &x) { x.numbers[0] = 5, x.t.compare = nullptr; }, 0},
    {"a list of iterators that is broken", [](three &x) { x.iterators.count = 1; }, 5},
    {"an iterator of another tree", [](three &x) { x.one.tree = nullptr; }, 5},
    {"an iterator that is listed twice", [](three &x) { x.last_iterator.item = &x.one; }, 5},
};

TEST(TreeInvariants, TheCheckReturnsTheNumberThatTheHeaderGives)
{
    for (const row &tried : rows) {
        tree_of_three x;
        tried.break_it(x);
        EXPECT_EQ(mova::broken_invariant(x.t, x.t.compare), tried.broken) << tried.what;
    }
}

} // namespace
