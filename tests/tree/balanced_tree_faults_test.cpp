/* SPDX-License-Identifier: MIT */
#include <mova/frame/internal/module_records.h>
#include <mova/tree/balanced_tree.h>
#include <mova/tree/internal/invariants.h>

#include <tests/support/fault_sweep.h>

#include <string>
#include <utility>

namespace {

using namespace mova::test;

int32_t compare_numbers(void *a, void *b)
{
    callback_called();
    return *static_cast<int *>(a) - *static_cast<int *>(b);
}

int32_t is_above_5(void *item)
{
    callback_called();
    return *static_cast<int *>(item) > 5;
}

int32_t is_below_7(void *item)
{
    callback_called();
    return *static_cast<int *>(item) < 7;
}

void print_number(void *)
{
    callback_called();
}

/* A tree with iterators, one whose keys were changed, an empty one, and what the call made or stored. */
struct trees {
    const mova::tree_module_record counted_before = mova::modules.gentree;
    int numbers[8] = {4, 2, 6, 1, 3, 5, 7, 4}, keys[4] = {1, 2, 3, 4}, added = 8;
    tree *seven = GT_create_with_dupl_allowed(compare_numbers),
         *unsorted = GT_create_with_dupl_allowed(compare_numbers),
         *empty = GT_create_with_dupl_not_allowed(compare_numbers), *made = nullptr;
    tree_item *root = nullptr, *stored = nullptr, stranger = {&added, nullptr, nullptr, nullptr, nullptr, 0};
    tree_iter *filter, *while_below, *unregistered, *made_iterator = nullptr;
    void *delivered = nullptr;

    trees()
    {
        for (int i = 0; i < 7; ++i)
            GT_insert_item(seven, &numbers[i]);
        for (int &key : keys)
            GT_insert_item(unsorted, &key);
        keys[0] = 9;
        keys[2] = 0;
        root = seven->root;
        filter = GT_all_items_conditional(seven, is_above_5);
        while_below = GT_all_items_while_conditioned(seven, is_below_7);
        GT_next_item(filter, &delivered);
        unregistered = GT_from_next(filter);
        GT_next_item(unregistered, &delivered);
        GL_remove_item(seven->iterators, seven->iterators->last);
    }

    std::string state() const
    {
        std::string text = text_of(seven) + text_of(unsorted) + text_of(empty) + (made ? " made" : "");
        text += made_iterator ? " made an iterator" : "";
        for (const tree_iter *iterator : {filter, while_below, unregistered})
            text += " " + text_of(iterator->current) + text_of(iterator->cursor);
        return text + " " + text_of(stored);
    }

    /* The keys of `unsorted` were changed, so that its order may be wrong. */
    int broken_invariant() const
    {
        return mova::broken_invariant(*seven, compare_numbers) + 10 * mova::broken_invariant(*unsorted, nullptr) +
               100 * mova::broken_invariant(*empty, compare_numbers);
    }

    void go_on()
    {
        GT_insert_item(seven, &numbers[7]);
        GT_remove_first_item(seven);
        while (GT_next_item(while_below, &delivered))
            ;
        GT_sort(unsorted);
        EXPECT_EQ(mova::broken_invariant(*unsorted, compare_numbers), 0);
        for (tree *each : {unsorted, empty})
            GT_find_and_remove_item(each, GT_insert_item(each, &added)->item);
    }

    /* What was lost stays counted, and nothing else does; the next test begins without it. */
    void release()
    {
        if (unregistered)
            GL_append_after_last(seven->iterators, unregistered);
        for (tree **each : {&seven, &unsorted, &empty, &made}) {
            while (*each && (*each)->iterators->count)
                GT_end_iterator(static_cast<tree_iter *>((*each)->iterators->first->item));
            GT_release(each);
        }
        const mova::tree_module_record now = std::exchange(mova::modules.gentree, counted_before);
        const int32_t left = now.live_trees - counted_before.live_trees + now.live_nodes - counted_before.live_nodes +
                             now.live_iterators - counted_before.live_iterators;
        EXPECT_EQ(static_cast<std::size_t>(left), recording_host::get().live_blocks());
    }

    static std::string text_of(const tree_item *node)
    {
        return node ? std::to_string(*static_cast<int *>(node->item)) : ".";
    }

    static void append_text(const tree_item *node, std::string &text)
    {
        if (!node)
            return;
        text += "(";
        append_text(node->left, text);
        text += text_of(node) + " " + std::to_string(node->balance);
        append_text(node->right, text);
        text += ")";
    }

    static std::string text_of(const tree *t)
    {
        std::string text;
        append_text(t->root, text);
        return text + std::to_string(t->iterators->count);
    }
};

constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable}, releasable{grade::releasable};
constexpr aftermath loses_what_was_made{grade::unchanged, true};
const answers raise_leaves_all{unchanged, {fault_source::raise}},
    raise_ends_the_iterator{usable, {fault_source::raise}};

void end_as_unregistered(trees &s, void (*step)(trees &s))
{
    step(s);
    s.unregistered = nullptr;
}

const fault_row<trees> rows[] = {
    {"GT_create_with_dupl_allowed", [](trees &s) { s.made = GT_create_with_dupl_allowed(compare_numbers); }, unchanged,
     loses_what_was_made},
    {"GT_create_with_dupl_not_allowed", [](trees &s) { s.made = GT_create_with_dupl_not_allowed(compare_numbers); },
     unchanged, loses_what_was_made},
    {"GT_insert_item", [](trees &s) { s.stored = GT_insert_item(s.seven, &s.added); }, unchanged, unchanged},
    {"GT_insert_item, a balance out of range",
     [](trees &s) {
         s.seven->last->balance = 7;
         s.stored = GT_insert_item(s.seven, &s.added);
     },
     releasable,
     releasable,
     {releasable, {fault_source::raise}}},
    {"GT_find_item", [](trees &s) { GT_find_item(s.seven, &s.numbers[3], &s.stored); }, unchanged, unchanged},
    {"GT_search_item", [](trees &s) { GT_search_item(s.seven, &s.numbers[3], &s.stored); }, unchanged, unchanged},
    {"GT_remove_item", [](trees &s) { GT_remove_item(s.seven, s.root->right->left); }, unchanged, unchanged},
    {"GT_remove_item, a stranger", [](trees &s) { GT_remove_item(s.seven, &s.stranger); }, unchanged, unchanged,
     raise_leaves_all},
    {"GT_remove_item_global", [](trees &s) { GT_remove_item_global(s.seven, &s.stranger); }, unchanged, unchanged,
     raise_leaves_all},
    {"GT_find_and_remove_item", [](trees &s) { GT_find_and_remove_item(s.seven, &s.numbers[3]); }, unchanged,
     unchanged},
    {"GT_find_and_remove_item, a stranger", [](trees &s) { GT_find_and_remove_item(s.seven, &s.numbers[7]); },
     unchanged, unchanged, raise_leaves_all},
    {"GT_remove_first_item, an empty tree", [](trees &s) { GT_remove_first_item(s.empty); }, unchanged, unchanged,
     raise_leaves_all},
    {"GT_remove_first_item, a wrong first",
     [](trees &s) {
         s.seven->first = s.root;
         GT_remove_first_item(s.seven);
     },
     releasable, releasable},
    {"GT_all_items", [](trees &s) { s.made_iterator = GT_all_items(s.seven); }, unchanged, loses_what_was_made},
    {"GT_all_items_conditional", [](trees &s) { s.made_iterator = GT_all_items_conditional(s.seven, is_above_5); },
     unchanged, loses_what_was_made},
    {"GT_all_items_while_conditioned",
     [](trees &s) { s.made_iterator = GT_all_items_while_conditioned(s.seven, is_below_7); }, unchanged,
     loses_what_was_made},
    {"GT_from_current", [](trees &s) { s.made_iterator = GT_from_current(s.filter); }, unchanged, loses_what_was_made},
    {"GT_from_current_conditional",
     [](trees &s) { s.made_iterator = GT_from_current_conditional(s.filter, is_above_5); }, unchanged,
     loses_what_was_made},
    {"GT_from_current_while_conditioned",
     [](trees &s) { s.made_iterator = GT_from_current_while_conditioned(s.filter, is_below_7); }, unchanged,
     loses_what_was_made},
    {"GT_from_next", [](trees &s) { s.made_iterator = GT_from_next(s.filter); }, unchanged, loses_what_was_made},
    {"GT_from_next_conditional", [](trees &s) { s.made_iterator = GT_from_next_conditional(s.filter, is_above_5); },
     unchanged, loses_what_was_made},
    {"GT_from_next_while_conditioned",
     [](trees &s) { s.made_iterator = GT_from_next_while_conditioned(s.filter, is_below_7); }, unchanged,
     loses_what_was_made},
    {"GT_next_item", [](trees &s) { GT_next_item(s.while_below, &s.delivered); }, usable, usable},
    {"GT_next_position", [](trees &s) { GT_next_position(s.filter, &s.stored); }, usable, usable},
    {"GT_next_item, unregistered",
     [](trees &s) { end_as_unregistered(s, [](trees &of) { GT_next_item(of.unregistered, &of.delivered); }); },
     unchanged, unchanged, raise_ends_the_iterator},
    {"GT_next_position, unregistered",
     [](trees &s) { end_as_unregistered(s, [](trees &of) { GT_next_position(of.unregistered, &of.stored); }); },
     unchanged, unchanged, raise_ends_the_iterator},
    {"GT_end_iterator, unregistered",
     [](trees &s) { end_as_unregistered(s, [](trees &of) { GT_end_iterator(of.unregistered); }); }, unchanged,
     unchanged, raise_ends_the_iterator},
    {"GT_sort", [](trees &s) { GT_sort(s.unsorted); }, usable, {grade::usable, true}},
    {"GT_allocate_node", [](trees &s) { GT_free_node(GT_allocate_node(&s.added)); }, unchanged, unchanged},
    {"GT_check", [](trees &) { GT_check(); }, unchanged, unchanged},
    {"GT_print_tree", [](trees &s) { GT_print_tree(s.seven, print_number); }, unchanged, unchanged},
};

TEST(BalancedTreeFaults, WhateverFailsTheTreesAreLeftAsTheHeaderSays)
{
    sweep_faults("balanced tree", rows, 420);
}

/* Where its second comparison fails. */
struct interrupted_sort : trees {
    explicit interrupted_sort(fault_way way)
    {
        fault_plan::get().arm(fault_source::callback, way, 2);
        fault_sweep::run<trees>([](trees &s) { GT_sort(s.unsorted); }, *this);
        EXPECT_EQ(text_of(unsorted->first) + text_of(unsorted->first->next), "29") << "the first comparison moved 9 up";
        EXPECT_EQ(unsorted->first->next->next->item, &keys[2]);
        EXPECT_EQ(unsorted->last->item, &keys[3]);
    }
};

TEST(BalancedTreeFaults, ASortThatThrowsEndsItsIteratorAndKeepsEveryItem)
{
    interrupted_sort sort(fault_way::throws);
    EXPECT_EQ(sort.unsorted->iterators->count, 0);
    sort.go_on();
    sort.release();
}

TEST(BalancedTreeFaults, ASortThatJumpsLeavesItsIteratorAsTheLastOfTheTrees)
{
    interrupted_sort sort(fault_way::jumps);
    ASSERT_EQ(sort.unsorted->iterators->count, 1);
    GT_end_iterator(static_cast<tree_iter *>(sort.unsorted->iterators->last->item));
    sort.go_on();
    sort.release();
}

TEST(BalancedTreeFaults, AnIteratorHasPassedTheItemThatItsConditionFailedFor)
{
    for (fault_way way : {fault_way::throws, fault_way::jumps}) {
        trees s;
        fault_plan::get().arm(fault_source::callback, way, 2);
        fault_sweep::run<trees>([](trees &of) { GT_next_item(of.while_below, &of.delivered); }, s);
        fault_sweep::run<trees>([](trees &of) { GT_next_item(of.while_below, &of.delivered); }, s);
        EXPECT_EQ(trees::text_of(s.while_below->current) + trees::text_of(s.while_below->cursor), "13");
        EXPECT_EQ(GT_next_item(s.while_below, &s.delivered), 1);
        EXPECT_EQ(s.delivered, &s.numbers[4]);
        s.release();
    }
}

} // namespace
