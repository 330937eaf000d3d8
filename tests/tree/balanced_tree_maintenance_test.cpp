/* SPDX-License-Identifier: MIT */
/* Sorting, checking, printing. */
#include "balanced_tree_test_case.h"

#include <random>

namespace {

using mova::test::compare_keys;
using mova::test::iterator_bytes;
using mova::test::list_node_bytes;
using mova::test::log;
using mova::test::name_of;
using mova::test::node_bytes;
using mova::test::record;
using mova::test::recorded_compare;
using mova::test::recording_host;

class TreeMaintenance : public mova::test::balanced_tree_test_case {
protected:
    void change_key(const std::string &name, int32_t key) { static_cast<record *>(at(name)->item)->key = key; }

    /* The host calls of one pass, with the comparisons that it asks in between. */
    log pass(int &next_block, const log &comparisons) const
    {
        const std::string iterator = "#" + std::to_string(next_block++), node = "#" + std::to_string(next_block++);
        log calls = {"alloc " + iterator_bytes + " = " + iterator, "alloc " + list_node_bytes + " = " + node};
        calls.insert(calls.end(), comparisons.begin(), comparisons.end());
        calls.push_back("dealloc " + node + " " + list_node_bytes);
        calls.push_back("dealloc " + iterator + " " + iterator_bytes);
        return calls;
    }

    static void append(log &to, const log &more) { to.insert(to.end(), more.begin(), more.end()); }

    /* The number of the block that is allocated next. */
    int next_block()
    {
        void *probe = MM_alloc_item(1);
        int number = std::stoi(host.name_of(probe).substr(1)) + 1;
        MM_dealloc_item(probe, 1);
        host.take_log();
        return number;
    }
};

/* ---- sort ---- */

TEST_F(TreeMaintenance, SortingNoneOrOneItemDoesNothing)
{
    GT_sort(t);
    EXPECT_EQ(host.take_log(), log{});
    insert_all({1});
    GT_sort(t);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(TreeMaintenance, SortingItemsInOrderMakesOnePass)
{
    insert_all({2, 1, 3});
    int block = next_block();
    GT_sort(t);
    EXPECT_EQ(host.take_log(), pass(block, {"compare 2 1", "compare 3 2"}));
    EXPECT_EQ(shape(), "(1 2 3)");
    EXPECT_EQ(counted(), (std::vector{1, 3, 0}));
}

TEST_F(TreeMaintenance, AnItemThatBelongsAtTheEndIsCarriedThereInOnePassAndASecondConfirmsIt)
{
    insert_all({4, 2, 6, 1});
    const std::vector<tree_item *> nodes = {at(1), at(2), at(4), at(6)};
    change_key("1", 9);
    int block = next_block();
    log expected = pass(block, {"compare 2 1", "compare 4 1", "compare 6 1"});
    append(expected, pass(block, {"compare 4 2", "compare 6 4"}));
    GT_sort(t);
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(order(), "2 4 6 1");
    EXPECT_EQ((std::vector{t->first, t->first->next, t->last->prev, t->last}), nodes) << "only items move";
    EXPECT_EQ(shape(), "((2 4- .) 6- 1)");
}

TEST_F(TreeMaintenance, EachPassStopsWhereTheOneBeforeExchangedLast)
{
    insert_all({1, 2, 3, 4, 5});
    for (int32_t key : {1, 2, 3})
        change_key(std::to_string(key), 4 - key);
    ASSERT_EQ(order(), "1 2 3 4 5");
    int block = next_block();
    log expected = pass(block, {"compare 2 1", "compare 3 1", "compare 4 1", "compare 5 4"});
    append(expected, pass(block, {"compare 3 2"}));
    append(expected, pass(block, {}));
    GT_sort(t);
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(order(), "3 2 1 4 5");
}

TEST_F(TreeMaintenance, ItemsThatCompareEqualKeepTheirOrder)
{
    allow_duplicates();
    int32_t key = 0;
    for (const char *name : {"a", "b", "c", "d", "e", "f", "g", "h"})
        insert(key++, name);
    for (const char *name : {"a", "c", "e", "g"})
        change_key(name, 2);
    for (const char *name : {"b", "d", "f", "h"})
        change_key(name, 1);
    GT_sort(t);
    EXPECT_EQ(order(), "b d f h a c e g");
    shape();
}

TEST_F(TreeMaintenance, RandomKeysAreSorted)
{
    std::mt19937 engine(7);
    allow_duplicates();
    t->compare = compare_keys;
    for (int32_t key = 0; key < 60; ++key)
        insert(key);
    for (int round = 0; round < 20; ++round) {
        for (tree_item *node = t->first; node; node = node->next)
            static_cast<record *>(node->item)->key = static_cast<int32_t>(engine() % 40);
        GT_sort(t);
        EXPECT_EQ(mova::broken_invariant(*t, compare_keys), 0);
    }
}

TEST_F(TreeMaintenance, AnOpenIteratorKeepsItsPlaceWhileItemsMove)
{
    insert_all({2, 1, 3});
    tree_iter *iterator = GT_all_items(t);
    tree_item *position;
    GT_next_position(iterator, &position);
    change_key("1", 9);
    GT_sort(t);
    EXPECT_EQ(iterator->current, position);
    EXPECT_EQ(iterator->cursor, t->root);
    void *item;
    GT_current_item(iterator, &item);
    EXPECT_EQ(name_of(item), "2");
    EXPECT_EQ(t->iterators->count, 1);
    GT_end_iterator(iterator);
}

/* ---- check ---- */

TEST_F(TreeMaintenance, CheckPrintsTheLiveRecordsOfAllTrees)
{
    ASSERT_EQ(counters_before, (std::vector{0, 0, 0}));
    insert_all({2, 1, 3});
    tree_iter *iterator = GT_all_items(t);
    host.take_log();
    GT_check();
    EXPECT_EQ(host.take_log(), (log{"dprintf allocated trees      = 1\n", "dprintf allocated tree_items = 3\n",
                                    "dprintf allocated tree_iters = 1\n"}));
    tree *other = GT_create_with_dupl_allowed(compare_keys);
    GT_end_iterator(iterator);
    GT_remove_first_item(t);
    host.take_log();
    GT_check();
    EXPECT_EQ(host.take_log(), (log{"dprintf allocated trees      = 2\n", "dprintf allocated tree_items = 2\n",
                                    "dprintf allocated tree_iters = 0\n"}));
    GT_release(&other);
}

TEST_F(TreeMaintenance, ANodeWithoutATreeIsCountedUntilItIsFreed)
{
    host.take_log();
    tree_item *node = GT_allocate_node(&t);
    EXPECT_EQ(node->item, &t);
    for (const tree_item *link : {node->left, node->right, node->prev, node->next})
        EXPECT_EQ(link, nullptr);
    EXPECT_EQ(node->balance, 0);
    GT_check();
    GT_free_node(node);
    GT_check();
    const std::string of_trees = "dprintf allocated trees      = 1\n",
                      of_iterators = "dprintf allocated tree_iters = 0\n";
    EXPECT_EQ(host.take_log(),
              (log{"alloc " + node_bytes + " = #3", of_trees, "dprintf allocated tree_items = 1\n", of_iterators,
                   "dealloc #3 " + node_bytes, of_trees, "dprintf allocated tree_items = 0\n", of_iterators}));
}

/* ---- print ---- */

void print_name(void *item)
{
    recording_host::get().write_down("print " + name_of(item));
}

TEST_F(TreeMaintenance, AnEmptyTreePrintsNothing)
{
    GT_print_tree(t, print_name);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(TreeMaintenance, EachItemIsALineIndentedByItsDepthTheSmallestFirst)
{
    insert_all({4, 2, 5, 1});
    GT_print_tree(t, print_name);
    const std::string blanks = "dprintf    ", line_end = "dprintf \n";
    EXPECT_EQ(host.take_log(), (log{blanks, blanks, "print 1", line_end, blanks, "print 2", line_end, "print 4",
                                    line_end, blanks, "print 5", line_end}));
}

TEST_F(TreeMaintenance, AWrongBalanceIsPrintedWithTheOneThatWouldBeRight)
{
    insert_all({4, 2, 5, 1});
    t->root->balance = 0;
    at(5)->balance = -7;
    GT_print_tree(t, print_name);
    const std::string blanks = "dprintf    ", line_end = "dprintf \n";
    EXPECT_EQ(host.take_log(), (log{blanks, blanks, "print 1", line_end, blanks, "print 2", line_end, "print 4",
                                    "dprintf  0 -1 ERROR IN BALANCE !!!!!!!!!!", line_end, blanks, "print 5",
                                    "dprintf  -7 0 ERROR IN BALANCE !!!!!!!!!!", line_end}));
}

} // namespace
