/* SPDX-License-Identifier: MIT */
/* The tree itself: creation, insertion, search, removal. */
#include "balanced_tree_test_case.h"

#include <algorithm>
#include <limits>
#include <set>

namespace {

using mova::broken_invariant;
using mova::test::compare_keys;
using mova::test::list_bytes;
using mova::test::log;
using mova::test::name_of;
using mova::test::node_bytes;
using mova::test::record;
using mova::test::recorded_compare;
using mova::test::recording_host;
using mova::test::tree_bytes;

class BalancedTree : public mova::test::balanced_tree_test_case {};

/* ---- creation and disposal ---- */

TEST_F(BalancedTree, NewTreeIsEmptyAndKeepsItsComparisonAndRule)
{
    tree *other = GT_create_with_dupl_allowed(compare_keys);
    EXPECT_EQ(host.take_log(), (log{"alloc " + tree_bytes + " = #3", "alloc " + list_bytes + " = #4"}));
    for (tree *made : {t, other}) {
        EXPECT_EQ(made->root, nullptr);
        EXPECT_EQ(made->first, nullptr);
        EXPECT_EQ(made->last, nullptr);
        EXPECT_EQ(made->iterators->count, 0);
        EXPECT_EQ(GT_count_items(made), 0);
    }
    EXPECT_EQ(other->compare, compare_keys);
    EXPECT_EQ(other->dupl_allowed, 1);
    EXPECT_EQ(t->compare, recorded_compare);
    EXPECT_EQ(t->dupl_allowed, 0);
    EXPECT_EQ(counted(), (std::vector{2, 0, 0}));
    GT_release(&other);
    EXPECT_EQ(counted(), (std::vector{1, 0, 0}));
}

TEST_F(BalancedTree, ReleaseFreesTheIteratorListThenEachNodeAfterItsSubtreesThenTheHead)
{
    insert_all({2, 1, 3});
    tree_iter *iterator = GT_all_items(t);
    log expected = {"dealloc " + host.name_of(t->iterators->first) + " " + mova::test::list_node_bytes,
                    "dealloc " + host.name_of(t->iterators) + " " + list_bytes,
                    "dealloc " + host.name_of(at(1)) + " " + node_bytes,
                    "dealloc " + host.name_of(at(3)) + " " + node_bytes,
                    "dealloc " + host.name_of(at(2)) + " " + node_bytes,
                    "dealloc " + host.name_of(t) + " " + tree_bytes};
    host.take_log();
    GT_release(&t);
    EXPECT_EQ(t, nullptr);
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(iterator->cursor, nullptr);
    EXPECT_EQ(iterator->current, nullptr);
    EXPECT_EQ(iterator->tree, nullptr);
    EXPECT_EQ(counted(), (std::vector{0, 0, 1})) << "the iterator's record is not the tree's to free";
    MM_dealloc_item(iterator, sizeof *iterator);
    --mova::modules.gentree.live_iterators;
}

TEST_F(BalancedTree, ReleaseOfNullDoesNothing)
{
    tree *none = nullptr;
    GT_release(&none);
    GT_total_release(&none, 8);
    GT_make_empty(none);
    GT_total_make_empty(none, 8);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(host.take_log(), log{});
}

struct key_block {
    int32_t key;
    char more[20];
};

int32_t compare_blocks(void *a, void *b)
{
    return static_cast<key_block *>(a)->key - static_cast<key_block *>(b)->key;
}

class TotalFunctions : public BalancedTree {
protected:
    void SetUp() override
    {
        BalancedTree::SetUp();
        total = GT_create_with_dupl_allowed(compare_blocks);
        for (int32_t key : {4, 2, 5, 1, 3}) {
            auto *block = static_cast<key_block *>(MM_alloc_item(sizeof(key_block)));
            block->key = key;
            GT_insert_item(total, block);
        }
        for (const tree_item *node :
             {total->root->left->left, total->root->left->right, total->root->left, total->root->right, total->root}) {
            freed.push_back("dealloc " + host.name_of(node->item) + " " + std::to_string(sizeof(key_block)));
            freed.push_back("dealloc " + host.name_of(node) + " " + node_bytes);
        }
        host.take_log();
    }

    tree *total = nullptr;
    log freed; /* each node after its subtrees, and its item before it */
};

TEST_F(TotalFunctions, ReleaseFreesEachItemJustBeforeItsNode)
{
    log expected = {"dealloc " + host.name_of(total->iterators) + " " + list_bytes};
    expected.insert(expected.end(), freed.begin(), freed.end());
    expected.push_back("dealloc " + host.name_of(total) + " " + tree_bytes);
    GT_total_release(&total, sizeof(key_block));
    EXPECT_EQ(total, nullptr);
    EXPECT_EQ(host.take_log(), expected);
}

TEST_F(TotalFunctions, MakeEmptyFreesEachItemJustBeforeItsNode)
{
    tree_iter *iterator = GT_all_items(total);
    host.take_log();
    GT_total_make_empty(total, sizeof(key_block));
    EXPECT_EQ(host.take_log(), freed);
    EXPECT_EQ(total->root, nullptr);
    EXPECT_EQ(iterator->cursor, nullptr);
    EXPECT_EQ(iterator->tree, total);
    GT_end_iterator(iterator);
    GT_release(&total);
}

TEST_F(BalancedTree, MakeEmptyKeepsTheRuleAndTheIteratorsAndTheTreeUsable)
{
    allow_duplicates();
    insert_all({2, 1, 3});
    tree_iter *iterator = GT_all_items(t);
    GL_list *iterators = t->iterators;
    void *item;
    GT_next_item(iterator, &item);
    log expected = {"dealloc " + host.name_of(at(1)) + " " + node_bytes,
                    "dealloc " + host.name_of(at(3)) + " " + node_bytes,
                    "dealloc " + host.name_of(at(2)) + " " + node_bytes};
    host.take_log();
    GT_make_empty(t);
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(shape(), ".");
    EXPECT_EQ(t->dupl_allowed, 1);
    EXPECT_EQ(t->compare, recorded_compare);
    EXPECT_EQ(t->iterators, iterators);
    EXPECT_EQ(iterators->count, 1);
    EXPECT_EQ(iterator->cursor, nullptr);
    EXPECT_EQ(iterator->current, nullptr);
    EXPECT_EQ(iterator->tree, t);
    insert(4);
    EXPECT_EQ(shape(), "4");
    GT_end_iterator(iterator);
}

/* ---- insertion ---- */

TEST_F(BalancedTree, FirstItemIsInsertedWithoutAComparison)
{
    record *item = make(5);
    tree_item *position = GT_insert_item(t, item);
    EXPECT_EQ(host.take_log(), log{"alloc " + node_bytes + " = " + host.name_of(position)});
    EXPECT_EQ(t->root, position);
    EXPECT_EQ(t->first, position);
    EXPECT_EQ(t->last, position);
    EXPECT_EQ(position->item, item);
    EXPECT_EQ(position->left, nullptr);
    EXPECT_EQ(position->right, nullptr);
    EXPECT_EQ(position->prev, nullptr);
    EXPECT_EQ(position->next, nullptr);
    EXPECT_EQ(position->balance, 0);
    EXPECT_EQ(counted(), (std::vector{1, 1, 0}));
}

TEST_F(BalancedTree, InsertionComparesTheNewItemWithThoseOnTheWayAndThenAllocates)
{
    insert_all({4, 2, 6, 1, 3});
    tree_item *position = insert(5);
    EXPECT_EQ(host.take_log(),
              (log{"compare 5 4", "compare 5 6", "alloc " + node_bytes + " = " + host.name_of(position)}));
    EXPECT_EQ(shape(), "((1 2 3) 4 (5 6- .))");
}

TEST_F(BalancedTree, EveryInsertionBetweenItsNeighboursIsLinkedIntoTheChain)
{
    insert_all({4, 2, 6});
    for (int32_t key : {1, 3, 5, 7})
        insert(key);
    EXPECT_EQ(order(), "1 2 3 4 5 6 7");
    EXPECT_EQ(shape(), "((1 2 3) 4 (5 6 7))");
}

TEST_F(BalancedTree, GrowingTheLowerSideBalancesANode)
{
    insert_all({2, 1});
    EXPECT_EQ(shape(), "(1 2- .)");
    insert(3);
    EXPECT_EQ(shape(), "(1 2 3)");
}

TEST_F(BalancedTree, FourRotationsOfInsertion)
{
    using keys = std::vector<int32_t>;
    const std::pair<keys, std::string> cases[] = {
        {{3, 2, 1}, "(1 2 3)"},                       /* left, single */
        {{1, 2, 3}, "(1 2 3)"},                       /* right, single */
        {{3, 1, 2}, "(1 2 3)"},                       /* left, double */
        {{1, 3, 2}, "(1 2 3)"},                       /* right, double */
        {{5, 3, 6, 2, 4, 1}, "((1 2- .) 3 (4 5 6))"}, /* left, single, with subtrees */
        {{2, 1, 4, 3, 5, 6}, "((1 2 3) 4 (. 5+ 6))"}, /* right, single, with subtrees */
        {{5, 2, 6, 1, 4, 3}, "((1 2 3) 4 (. 5+ 6))"}, /* left, double, where c is higher on its left */
        {{6, 2, 7, 1, 4, 5}, "((1 2- .) 4 (5 6 7))"}, /* left, double, where c is higher on its right */
        {{2, 1, 6, 4, 7, 5}, "((1 2- .) 4 (5 6 7))"}, /* right, double, where c is higher on its right */
        {{2, 1, 6, 4, 7, 3}, "((1 2 3) 4 (. 6+ 7))"}, /* right, double, where c is higher on its left */
    };
    for (const auto &[inserted, expected] : cases) {
        for (int32_t key : inserted)
            insert(key);
        EXPECT_EQ(shape(), expected);
        GT_make_empty(t);
    }
}

TEST_F(BalancedTree, RotationBelowTheRootStopsTheGrowth)
{
    insert_all({4, 2, 6, 7});
    EXPECT_EQ(shape(), "(2 4+ (. 6+ 7))");
    insert(8);
    EXPECT_EQ(shape(), "(2 4+ (6 7 8))");
}

TEST_F(BalancedTree, AnEqualItemIsRefusedWhereDuplicatesAreNotAllowed)
{
    insert_all({2, 1, 3});
    tree_item *before = at(3);
    auto counted_before = counted();
    EXPECT_EQ(insert(3, "3b"), before);
    EXPECT_EQ(host.take_log(), (log{"compare 3b 2", "compare 3b 3"}));
    EXPECT_EQ(insert(2, "2b"), t->root);
    EXPECT_EQ(shape(), "(1 2 3)");
    EXPECT_EQ(counted(), counted_before);
}

TEST_F(BalancedTree, EqualItemsKeepTheOrderOfTheirInsertion)
{
    allow_duplicates();
    for (const char *name : {"a", "b", "c", "d", "e", "f", "g"}) {
        insert(5, std::string("5") + name);
        insert(4, std::string("4") + name);
    }
    EXPECT_EQ(order(), "4a 4b 4c 4d 4e 4f 4g 5a 5b 5c 5d 5e 5f 5g");
    EXPECT_EQ(broken_invariant(*t, compare_keys), 0);
}

TEST_F(BalancedTree, AnEqualItemGoesDownTheRightSide)
{
    allow_duplicates();
    insert(1, "1a");
    insert(1, "1b");
    host.take_log();
    tree_item *position = insert(1, "1c");
    EXPECT_EQ(host.take_log(),
              (log{"compare 1c 1a", "compare 1c 1b", "alloc " + node_bytes + " = " + host.name_of(position)}));
    EXPECT_EQ(shape(), "(1a 1b 1c)");
}

TEST_F(BalancedTree, NullIsAnItemLikeAnyOther)
{
    tree *nulls = GT_create_with_dupl_allowed([](void *, void *) -> int32_t { return 0; });
    tree_item *position = GT_insert_item(nulls, nullptr);
    GT_insert_item(nulls, make(1));
    tree_item *found;
    EXPECT_EQ(GT_find_item(nulls, nullptr, &found), 1);
    EXPECT_EQ(found, position);
    GT_release(&nulls);
}

TEST_F(BalancedTree, InsertionRaisesWhereTheBalanceOfANodeThatGrewOnTheLeftIsOutOfRange)
{
    insert_all({2, 3});
    for (int32_t balance : {2, -2, std::numeric_limits<int32_t>::min()}) {
        GT_make_empty(t);
        insert_all({2, 3});
        at(2)->balance = balance;
        expect_raise(1181, [&] { insert(1); });
        EXPECT_EQ(order(), "1 2 3");
        EXPECT_EQ(at(2)->balance, balance);
        EXPECT_EQ(counted(), (std::vector{1, 3, 0}));
    }
}

TEST_F(BalancedTree, InsertionRaisesWhereTheBalanceOfANodeThatGrewOnTheRightIsOutOfRange)
{
    for (int32_t balance : {2, -2, std::numeric_limits<int32_t>::max()}) {
        GT_make_empty(t);
        insert_all({2, 1});
        at(2)->balance = balance;
        expect_raise(1236, [&] { insert(3); });
        EXPECT_EQ(order(), "1 2 3");
        EXPECT_EQ(at(2)->balance, balance);
    }
}

TEST_F(BalancedTree, InsertionGoesOnUpwardsAsGrownWhenTheHostReturnsFromTheRaise)
{
    insert_all({8, 4, 12, 2, 6, 10, 14});
    host.set_raise_mode(recording_host::raise_mode::returns);
    at(4)->balance = 3;
    at(2)->balance = -5;
    tree_item *position = insert(1);
    EXPECT_EQ(host.take_log(),
              (log{"compare 1 8", "compare 1 4", "compare 1 2", "alloc " + node_bytes + " = " + host.name_of(position),
                   "raise gentree 1181 4297", "raise gentree 1181 4297"}));
    EXPECT_EQ(position, t->first);
    EXPECT_EQ(at(2)->balance, -5);
    EXPECT_EQ(at(4)->balance, 3);
    EXPECT_EQ(t->root->balance, -1);
    at(14)->balance = 7;
    insert(15);
    EXPECT_EQ(mova::test::recording_host::get().take_log().back(), "raise gentree 1236 4297");
    EXPECT_EQ(at(12)->balance, 1);
    EXPECT_EQ(t->root->balance, 0);
}

TEST_F(BalancedTree, RebalancingEndsAtARotationWithoutItsNodesWhenTheHostReturnsFromTheRaise)
{
    host.set_raise_mode(recording_host::raise_mode::returns);
    insert_all({6, 4, 2});
    insert_all({1});
    ASSERT_EQ(shape(), "((1 2- .) 4- 6)");
    at(1)->balance = 5;
    insert(0);
    EXPECT_EQ(unverified_shape(), "(((0 1+ .) 2- .) 4- 6)");
    EXPECT_EQ(at(1)->balance, 5);
    EXPECT_EQ(taken("raise"), log{"raise gentree 1181 4297"});
    GT_make_empty(t);
    insert_all({4, 6, 2, 7});
    at(7)->balance = 5;
    insert(8);
    EXPECT_EQ(unverified_shape(), "(2 4+ (. 6+ (. 7+ 8)))");
    EXPECT_EQ(taken("raise"), log{"raise gentree 1236 4297"});
}

TEST_F(BalancedTree, ABalanceOnTheWayThatNeedNotChangeIsNotLookedAt)
{
    insert_all({8, 4, 12, 10});
    at(8)->balance = 7;
    insert(13);
    EXPECT_EQ(unverified_shape(), "(4 8+ (10 12 13))");
    EXPECT_EQ(at(8)->balance, 7);
}

/* A program that puts every balance to 0 gets a tree as deep as it has items. */
TEST_F(BalancedTree, ATreeThatWasMadeDeepIsGoneThroughToItsEnd)
{
    constexpr int32_t count = 300;
    t->compare = compare_keys;
    for (int32_t key = 0; key < count; ++key) {
        insert(key);
        for (tree_item *node = t->first; node; node = node->next)
            node->balance = 0;
    }
    EXPECT_EQ(GT_count_items(t), count);
    EXPECT_EQ(mova::broken_chain_invariant(*t), 0);
    tree_item *deepest = t->root;
    for (int32_t depth = 1; depth < count; ++depth)
        deepest = deepest->right;
    EXPECT_EQ(deepest, t->last);
    tree_item *added = insert(count);
    for (tree_item *node = t->root; node != added; node = node->right)
        EXPECT_EQ(node->balance, 1);
    EXPECT_EQ(insert(count), added);
    GT_remove_item(t, added);
    EXPECT_EQ(GT_count_items(t), count);
    for (tree_item *node = t->root; node; node = node->right)
        EXPECT_EQ(node->balance, 0);
}

/* The same, with each edit that keeps its way down. */
class DeepTree : public BalancedTree {
protected:
    static constexpr int32_t count = 150;

    void insert_without_rotation(int32_t key)
    {
        insert(key);
        set_balances(0);
    }

    void set_balances(int32_t balance)
    {
        for (tree_item *node = t->first; node; node = node->next)
            node->balance = balance;
    }

    void expect_balances(int32_t balance) const
    {
        EXPECT_EQ(mova::broken_chain_invariant(*t), 0);
        for (const tree_item *node = t->first; node; node = node->next)
            EXPECT_EQ(node->balance, balance) << name_of(node->item);
    }
};

TEST_F(DeepTree, ThePredecessorIsReachedAndTheWayBackRebalancedThroughIt)
{
    for (int32_t key : {count, count + 1})
        insert_without_rotation(key);
    for (int32_t key = 0; key < count; ++key)
        insert_without_rotation(key);
    set_balances(1);
    tree_item *predecessor = at(count - 1);
    t->root->balance = -1;
    GT_remove_item(t, t->root);
    EXPECT_EQ(t->root, predecessor);
    EXPECT_EQ(t->root->left, t->first);
    at(count + 1)->balance = 0;
    expect_balances(0);
}

TEST_F(DeepTree, TheFirstNodeIsReached)
{
    for (int32_t key = count; key > 0; --key)
        insert_without_rotation(key);
    set_balances(-1);
    GT_remove_first_item(t);
    EXPECT_EQ(GT_count_items(t), count - 1);
    expect_balances(0);
}

TEST_F(DeepTree, EveryEqualItemIsComparedOnceOnTheWay)
{
    allow_duplicates();
    for (int32_t i = 0; i < count; ++i) {
        insert(1, "e" + std::to_string(i));
        set_balances(0);
    }
    set_balances(1);
    t->last->balance = 0;
    host.take_log();
    log expected;
    const std::string last = name_of(t->last->item);
    for (int32_t i = 0; i < count - 1; ++i)
        expected.push_back("compare " + last + " e" + std::to_string(i));
    GT_remove_item(t, t->last);
    EXPECT_EQ(taken("compare"), expected);
    EXPECT_EQ(GT_count_items(t), count - 1);
    expect_balances(0);
}

/* ---- the check of the invariants ---- */

TEST_F(BalancedTree, TheCheckNamesTheInvariantThatIsBroken)
{
    insert_all({4, 2, 6, 1, 3});
    tree_iter *iterator = GT_all_items(t), *other = GT_all_items(t);
    void **first_registered = &t->iterators->first->item;
    const auto number = [this] { return mova::broken_invariant(*t, compare_keys); };
    const auto expect_broken = [&](int expected, auto &field, auto broken) {
        const auto sound = std::exchange(field, broken);
        EXPECT_EQ(number(), expected);
        field = sound;
        EXPECT_EQ(number(), 0);
    };
    expect_broken(1, t->first, at(2));
    expect_broken(1, t->last, at(4));
    expect_broken(1, at(2)->next, at(4));
    expect_broken(1, at(4)->left, nullptr);
    expect_broken(2, at(3)->prev, at(1));
    expect_broken(2, t->first->prev, at(6));
    expect_broken(2, t->last->next, at(1));
    expect_broken(3, at(2)->balance, 1);
    expect_broken(3, at(4)->balance, 2);
    expect_broken(4, static_cast<record *>(at(3)->item)->key, 5);
    expect_broken(4, static_cast<record *>(at(3)->item)->key, 2);
    expect_broken(5, *first_registered, static_cast<void *>(other));
    expect_broken(5, iterator->tree, nullptr);
    expect_broken(5, t->iterators->count, 1);
    static_cast<record *>(at(3)->item)->key = 5;
    EXPECT_EQ(mova::broken_invariant(*t, nullptr), 0) << "the order is not looked at";
    t->dupl_allowed = 1;
    static_cast<record *>(at(3)->item)->key = 2;
    EXPECT_EQ(number(), 0) << "equal items are in order where duplicates are allowed";
    GT_end_iterator(iterator);
    GT_end_iterator(other);
    GT_make_empty(t);
    EXPECT_EQ(number(), 0);
    tree_item stray = {};
    expect_broken(1, t->first, &stray);
}

/* ---- search ---- */

TEST_F(BalancedTree, FindComparesIdentityFirstAndItemsOnlyToFindTheWay)
{
    insert_all({4, 2, 6, 1, 3});
    tree_item *found = nullptr;
    EXPECT_EQ(GT_find_item(t, at(3)->item, &found), 1);
    EXPECT_EQ(found, at(3));
    EXPECT_EQ(host.take_log(), (log{"compare 3 4", "compare 3 2"}));
    EXPECT_EQ(GT_find_item(t, at(4)->item, &found), 1);
    EXPECT_EQ(found, t->root);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(BalancedTree, FindDoesNotFindAnotherItemThatComparesEqual)
{
    insert_all({4, 2, 6});
    tree_item *found = t->root;
    record *other = make(2, "2b");
    EXPECT_EQ(GT_find_item(t, other, &found), 0);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(host.take_log(), (log{"compare 2b 4", "compare 2b 2"}));
    EXPECT_EQ(GT_search_item(t, other, &found), 1);
    EXPECT_EQ(found, at(2));
    EXPECT_EQ(host.take_log(), (log{"compare 2b 4", "compare 2b 2"}));
}

TEST_F(BalancedTree, FindLooksOnBothSidesOfAnEqualItemLeftFirst)
{
    allow_duplicates();
    for (const char *name : {"a", "b", "c", "d", "e", "f", "g"})
        insert(5, name);
    ASSERT_EQ(shape(), "((a b c) d (e f g))");
    host.take_log();
    tree_item *found;
    EXPECT_EQ(GT_find_item(t, at("g")->item, &found), 1);
    EXPECT_EQ(found, at("g"));
    EXPECT_EQ(host.take_log(),
              (log{"compare g d", "compare g b", "compare g a", "compare g c", "compare g f", "compare g e"}));
    EXPECT_EQ(GT_find_item(t, at("c")->item, &found), 1);
    EXPECT_EQ(found, at("c"));
    EXPECT_EQ(host.take_log(), (log{"compare c d", "compare c b", "compare c a"}));
    EXPECT_EQ(GT_find_item(t, make(5, "x"), &found), 0);
    EXPECT_EQ(host.take_log().size(), 7u);
    EXPECT_EQ(GT_find_item(t, make(4, "y"), &found), 0);
    EXPECT_EQ(host.take_log(), (log{"compare y d", "compare y b", "compare y a"}));
}

TEST_F(BalancedTree, SearchReturnsTheEqualItemNearestToTheRoot)
{
    allow_duplicates();
    for (const char *name : {"a", "b", "c"})
        insert(5, name);
    tree_item *found;
    host.take_log();
    EXPECT_EQ(GT_search_item(t, make(5, "key"), &found), 1);
    EXPECT_EQ(found, at("b"));
    EXPECT_EQ(host.take_log(), log{"compare key b"});
}

TEST_F(BalancedTree, SearchForAnAbsentKeyStoresNull)
{
    insert_all({4, 2, 6});
    tree_item *found = t->root;
    EXPECT_EQ(GT_search_item(t, make(5), &found), 0);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(host.take_log(), (log{"compare 5 4", "compare 5 6"}));
}

TEST_F(BalancedTree, AnEmptyTreeHoldsNothing)
{
    tree_item *found = reinterpret_cast<tree_item *>(this);
    EXPECT_EQ(GT_find_item(t, make(1), &found), 0);
    EXPECT_EQ(found, nullptr);
    found = reinterpret_cast<tree_item *>(this);
    EXPECT_EQ(GT_search_item(t, make(1), &found), 0);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(BalancedTree, CountIsTheNumberOfItems)
{
    for (int32_t key = 0; key < 10; ++key) {
        EXPECT_EQ(GT_count_items(t), key);
        insert(key);
    }
}

/* ---- removal ---- */

TEST_F(BalancedTree, RemovalComparesTheRemovedItemWithThoseOnTheWayAndFreesTheNode)
{
    insert_all({4, 2, 6, 1, 3});
    log expected = {"compare 1 4", "compare 1 2", "dealloc " + host.name_of(at(1)) + " " + node_bytes};
    GT_remove_item(t, at(1));
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(shape(), "((. 2+ 3) 4- 6)");
    EXPECT_EQ(counted(), (std::vector{1, 4, 0}));
}

TEST_F(BalancedTree, RemovingTheOnlyItemEmptiesTheTree)
{
    insert_all({1});
    GT_remove_item(t, t->root);
    EXPECT_EQ(shape(), ".");
    EXPECT_EQ(t->first, nullptr);
    EXPECT_EQ(t->last, nullptr);
}

TEST_F(BalancedTree, ANodeWithOneChildIsReplacedByThatChild)
{
    insert_all({4, 2, 6, 1});
    GT_remove_item(t, at(2));
    EXPECT_EQ(shape(), "(1 4 6)");
    insert_all({7});
    GT_remove_item(t, at(6));
    EXPECT_EQ(shape(), "(1 4 7)");
}

TEST_F(BalancedTree, ANodeWithTwoChildrenGivesItsPlaceToItsPredecessorsRecord)
{
    insert_all({4, 2, 6, 1, 3, 5, 7});
    tree_item *predecessor = at(3);
    log expected = {"dealloc " + host.name_of(t->root) + " " + node_bytes};
    GT_remove_item(t, t->root);
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(t->root, predecessor);
    EXPECT_EQ(shape(), "((1 2- .) 3 (5 6 7))");
}

TEST_F(BalancedTree, ThePredecessorMayBeTheLeftChildAndMayHaveAChildItself)
{
    insert_all({4, 2, 5, 1});
    tree_item *left = at(2);
    GT_remove_item(t, t->root);
    EXPECT_EQ(t->root, left);
    EXPECT_EQ(shape(), "(1 2 5)");
    GT_make_empty(t);
    insert_all({6, 3, 8, 2, 5, 7, 9, 1, 4});
    ASSERT_EQ(shape(), "(((1 2- .) 3 (4 5- .)) 6- (7 8 9))");
    GT_remove_item(t, t->root);
    EXPECT_EQ(shape(), "(((1 2- .) 3- 4) 5- (7 8 9))");
}

TEST_F(BalancedTree, TheWayToThePredecessorIsRebalancedWhereverItShrank)
{
    /* The left child itself is rotated, while the node it hangs on is on its way out. */
    insert_all({8, 4, 10, 2, 6, 9, 11, 1, 3, 5, 12, 7});
    GT_remove_item(t, at(7));
    GT_remove_item(t, at(5));
    ASSERT_EQ(shape(), "(((1 2 3) 4- 6) 8 (9 10+ (. 11+ 12)))");
    GT_remove_item(t, t->root);
    EXPECT_EQ(shape(), "((1 2+ (3 4- .)) 6 (9 10+ (. 11+ 12)))");
}

TEST_F(BalancedTree, RotationsOfRemoval)
{
    using keys = std::vector<int32_t>;
    struct rotation {
        keys inserted;
        int32_t removed;
        std::string expected;
    };
    const rotation cases[] = {
        {{2, 1, 3, 4}, 1, "(2 3 4)"},                         /* left shrank, single */
        {{3, 4, 2, 1}, 4, "(1 2 3)"},                         /* right shrank, single */
        {{2, 1, 4, 3}, 1, "(2 3 4)"},                         /* left shrank, double */
        {{3, 4, 1, 2}, 4, "(1 2 3)"},                         /* right shrank, double */
        {{2, 1, 4, 3, 5}, 1, "((. 2+ 3) 4- 5)"},              /* left shrank, single, no lower than before */
        {{4, 5, 2, 1, 3}, 5, "(1 2+ (3 4- .))"},              /* right shrank, single, no lower than before */
        {{3, 2, 7, 1, 5, 8, 4, 6}, 1, "((2 3 4) 5 (6 7 8))"}, /* left shrank, double, c even */
        {{3, 2, 7, 1, 5, 8, 4}, 1, "((2 3 4) 5 (. 7+ 8))"},   /* left shrank, double, c higher on its left */
        {{3, 2, 7, 1, 5, 8, 6}, 1, "((2 3- .) 5 (6 7 8))"},   /* left shrank, double, c higher on its right */
        {{6, 7, 2, 8, 4, 1, 5, 3}, 8, "((1 2 3) 4 (5 6 7))"}, /* right shrank, double, c even */
        {{6, 7, 2, 8, 4, 1, 5}, 8, "((1 2- .) 4 (5 6 7))"},   /* right shrank, double, c higher on its right */
        {{6, 7, 2, 8, 4, 1, 3}, 8, "((1 2 3) 4 (. 6+ 7))"},   /* right shrank, double, c higher on its left */
    };
    for (const rotation &each : cases) {
        for (int32_t key : each.inserted)
            insert(key);
        GT_remove_item(t, at(each.removed));
        EXPECT_EQ(shape(), each.expected);
        GT_make_empty(t);
    }
}

TEST_F(BalancedTree, ARemovedItemIsFoundAmongItemsThatCompareEqual)
{
    allow_duplicates();
    for (const char *name : {"a", "b", "c", "d", "e", "f", "g"})
        insert(5, name);
    host.take_log();
    log expected = {"compare f d", "compare f b", "compare f a", "compare f c",
                    "dealloc " + host.name_of(at("f")) + " " + node_bytes};
    GT_remove_item(t, at("f"));
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(order(), "a b c d e g");
    EXPECT_EQ(shape(), "((a b c) d (. e+ g))");
}

TEST_F(BalancedTree, RemovalRaisesWhenTheComparisonsDoNotLeadToTheNode)
{
    insert_all({4, 2, 6});
    static_cast<record *>(at(2)->item)->key = 7;
    tree_item *position = at(2);
    expect_raise(481, [&] { GT_remove_item(t, position); });
    EXPECT_EQ(host.take_log(), (log{"compare 2 4", "compare 2 6", "raise gentree 481 4297"}));
    EXPECT_EQ(order(), "2 4 6");
    host.set_raise_mode(recording_host::raise_mode::returns);
    GT_remove_item(t, position);
    EXPECT_EQ(order(), "2 4 6");
    EXPECT_EQ(counted(), (std::vector{1, 3, 0}));
}

TEST_F(BalancedTree, RemovalOfAPositionOfAnotherTreeRaises)
{
    insert_all({4, 2, 6});
    tree_item stranger = {make(5), nullptr, nullptr, nullptr, nullptr, 0};
    expect_raise(481, [&] { GT_remove_item(t, &stranger); });
    expect_raise(545, [&] { GT_remove_item_global(t, &stranger); });
    GT_make_empty(t);
    expect_raise(481, [&] { GT_remove_item(t, &stranger); });
    expect_raise(545, [&] { GT_remove_item_global(t, &stranger); });
}

TEST_F(BalancedTree, AnEmptyTreeHasNoPositionNotEvenNull)
{
    expect_raise(481, [&] { GT_remove_item(t, nullptr); });
    expect_raise(545, [&] { GT_remove_item_global(t, nullptr); });
}

TEST_F(BalancedTree, GlobalRemovalVisitsEveryNodeWhereTheComparisonsDoNotLeadToTheItem)
{
    insert_all({4, 2, 6, 1, 3, 5, 7});
    static_cast<record *>(at(5)->item)->key = 0;
    log expected = {"compare 5 4", "compare 5 2", "compare 5 1", "dealloc " + host.name_of(at(5)) + " " + node_bytes};
    GT_remove_item_global(t, at(5));
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(shape(), "((1 2 3) 4 (. 6+ 7))");
}

TEST_F(BalancedTree, GlobalRemovalRebalancesOnBothSides)
{
    for (int32_t removed : {1, 5}) {
        GT_make_empty(t);
        insert_all({3, 2, 4, removed == 1 ? 1 : 5});
        ASSERT_EQ(GT_count_items(t), 4);
        tree_item *lower = removed == 1 ? at(4) : at(2);
        static_cast<record *>(lower->item)->key = removed == 1 ? -9 : 99;
        GT_remove_item_global(t, lower);
        EXPECT_EQ(shape(), removed == 1 ? "(1 2 3)" : "(3 4 5)");
    }
}

TEST_F(BalancedTree, GlobalRemovalRemovesByComparisonWhereThatLeadsToTheNode)
{
    insert_all({4, 2, 6});
    log expected = {"compare 6 4", "dealloc " + host.name_of(at(6)) + " " + node_bytes};
    GT_remove_item_global(t, at(6));
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(shape(), "(2 4- .)");
}

TEST_F(BalancedTree, GlobalRemovalRaisesWhenTheNodeIsNotInTheTree)
{
    insert_all({4, 2, 6});
    tree_item stranger = {make(5), nullptr, nullptr, nullptr, nullptr, 0};
    host.set_raise_mode(recording_host::raise_mode::returns);
    GT_remove_item_global(t, &stranger);
    EXPECT_EQ(host.take_log(), (log{"compare 5 4", "compare 5 6", "raise gentree 545 4297"}));
    EXPECT_EQ(shape(), "(2 4 6)");
}

TEST_F(BalancedTree, FindAndRemoveFindsByIdentityAndThenRemovesByComparison)
{
    insert_all({4, 2, 6, 1});
    log expected = {"compare 1 4", "compare 1 2", "compare 1 4", "compare 1 2",
                    "dealloc " + host.name_of(at(1)) + " " + node_bytes};
    GT_find_and_remove_item(t, at(1)->item);
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(shape(), "(2 4 6)");
}

TEST_F(BalancedTree, FindAndRemoveRaisesWhenNoNodeHoldsTheItem)
{
    insert_all({4, 2, 6});
    record *absent = make(2, "2b");
    expect_raise(566, [&] { GT_find_and_remove_item(t, absent); });
    host.take_log();
    host.set_raise_mode(recording_host::raise_mode::returns);
    GT_find_and_remove_item(t, absent);
    EXPECT_EQ(host.take_log(), (log{"compare 2b 4", "compare 2b 2", "raise gentree 566 4297"}));
    EXPECT_EQ(shape(), "(2 4 6)");
    GT_make_empty(t);
    host.take_log();
    GT_find_and_remove_item(t, absent);
    EXPECT_EQ(host.take_log(), log{"raise gentree 566 4297"});
}

/* Finding and removing ask the same comparisons, so that only a comparison that contradicts itself gets here. */
int32_t asked_before_turning;

int32_t turning_compare(void *a, void *b)
{
    return asked_before_turning-- > 0 ? compare_keys(a, b) : -compare_keys(a, b);
}

TEST_F(BalancedTree, FindAndRemoveRaisesWhenTheRemovalDoesNotReachTheNode)
{
    insert_all({4, 2, 6});
    t->compare = turning_compare;
    asked_before_turning = 1;
    expect_raise(579, [&] { GT_find_and_remove_item(t, at(2)->item); });
    host.take_log();
    host.set_raise_mode(recording_host::raise_mode::returns);
    asked_before_turning = 1;
    GT_find_and_remove_item(t, at(2)->item);
    EXPECT_EQ(host.take_log(), log{"raise gentree 579 4297"});
    EXPECT_EQ(shape(), "(2 4 6)");
}

TEST_F(BalancedTree, RemoveFirstRemovesTheSmallestItemWithoutAComparison)
{
    insert_all({4, 2, 6, 1, 3, 5, 7});
    for (const char *expected :
         {"((. 2+ 3) 4 (5 6 7))", "(3 4+ (5 6 7))", "((. 4+ 5) 6- 7)", "(5 6 7)", "(. 6+ 7)", "7", "."}) {
        log freed = {"dealloc " + host.name_of(t->first) + " " + node_bytes};
        GT_remove_first_item(t);
        EXPECT_EQ(host.take_log(), freed);
        EXPECT_EQ(shape(), expected);
    }
    EXPECT_EQ(counted(), (std::vector{1, 0, 0}));
}

TEST_F(BalancedTree, RemoveFirstOfAnEmptyTreeRaises)
{
    expect_raise(1427, [&] { GT_remove_first_item(t); });
    host.set_raise_mode(recording_host::raise_mode::returns);
    host.take_log();
    GT_remove_first_item(t);
    EXPECT_EQ(host.take_log(), log{"raise gentree 1427 4297"});
    EXPECT_EQ(shape(), ".");
}

TEST_F(BalancedTree, RemoveFirstRaisesAndChangesNothingWhereFirstIsNotOnTheLeft)
{
    insert_all({4, 2, 6, 1, 3});
    tree_item *first = t->first;
    t->first = at(6);
    host.set_raise_mode(recording_host::raise_mode::returns);
    GT_remove_first_item(t);
    EXPECT_EQ(host.take_log(), log{"raise gentree 1427 4297"});
    t->first = first;
    EXPECT_EQ(shape(), "((1 2 3) 4- 6)");
}

TEST_F(BalancedTree, RemoveFirstRaisesWhereFirstHasALeftChild)
{
    insert_all({4, 2, 6, 1, 3});
    tree_item *first = t->first, *inner = at(2);
    t->first = inner;
    expect_raise(1728, [&] { GT_remove_first_item(t); });
    EXPECT_EQ(unverified_shape(), "((1 2 3) 4- 6)");
    host.take_log();
    /* Where the host returns, the removal goes on; what hung on the left is lost to the tree. */
    host.set_raise_mode(recording_host::raise_mode::returns);
    log expected = {"raise gentree 1728 4297", "dealloc " + host.name_of(inner) + " " + node_bytes};
    GT_remove_first_item(t);
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(unverified_shape(), "(3 4 6)");
    EXPECT_EQ(t->first, at(3));
    EXPECT_EQ(t->first->prev, first) << "the chain ahead of it is left alone";
    MM_dealloc_item(first, sizeof *first);
    --mova::modules.gentree.live_nodes;
}

TEST_F(BalancedTree, RemovalFollowsTheNodesOwnLinksWhereTheEndsOfTheChainAreWrong)
{
    insert_all({4, 2, 6});
    tree_item *wrong = at(4);
    t->first = t->last = wrong;
    GT_remove_item(t, wrong);
    EXPECT_EQ(t->first, wrong);
    EXPECT_EQ(t->last, wrong);
    EXPECT_EQ(t->root->next, t->root->right);
    EXPECT_EQ(t->root->right->prev, t->root);
    GT_make_empty(t);
    insert_all({1});
    tree_item stray = {};
    wrong = t->last;
    wrong->next = &stray;
    GT_remove_first_item(t);
    EXPECT_EQ(t->first, &stray);
    EXPECT_EQ(t->last, wrong);
    EXPECT_EQ(t->root, nullptr);
}

TEST_F(BalancedTree, RemovalLeavesABalanceThatIsOutOfRangeAloneAndGoesOnUpwards)
{
    for (int32_t balance : {5, -5}) {
        for (int32_t removed : {1, 3}) {
            GT_make_empty(t);
            insert_all({4, 2, 6, 1, 3, 5, 7, 8});
            GT_remove_item(t, at(removed));
            at(2)->balance = balance;
            GT_remove_item(t, at(removed == 1 ? 3 : 1));
            EXPECT_EQ(at(2)->balance, balance);
            EXPECT_EQ(t->root, at(6)) << "the left side of 4 counts as lower, and the right is too high";
            GT_make_empty(t);
        }
    }
    EXPECT_EQ(taken("raise"), log{});
}

/* ---- exceptions out of a comparison ---- */

int32_t throwing_compare(void *, void *)
{
    throw std::runtime_error("no order");
}

TEST_F(BalancedTree, AComparisonThatThrowsLeavesTheTreeAsItWas)
{
    insert_all({4, 2, 6});
    tree_item *found;
    t->compare = throwing_compare;
    EXPECT_THROW(insert(1), std::runtime_error);
    EXPECT_THROW(GT_remove_item(t, at(2)), std::runtime_error);
    EXPECT_THROW(GT_remove_item_global(t, at(2)), std::runtime_error);
    EXPECT_THROW(GT_find_and_remove_item(t, at(2)->item), std::runtime_error);
    EXPECT_THROW(GT_find_item(t, at(2)->item, &found), std::runtime_error);
    EXPECT_THROW(GT_search_item(t, at(2)->item, &found), std::runtime_error);
    EXPECT_EQ(shape(), "(2 4 6)");
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(counted(), (std::vector{1, 3, 0}));
    t->compare = recorded_compare;
    GT_remove_item(t, at(2));
    EXPECT_EQ(shape(), "(. 4+ 6)");
}

/* ---- two trees ---- */

TEST_F(BalancedTree, TreesDoNotDisturbEachOther)
{
    tree *other = GT_create_with_dupl_allowed([](void *a, void *b) { return -compare_keys(a, b); });
    for (int32_t key : {1, 2, 3, 2}) {
        insert(key);
        GT_insert_item(other, make(key));
    }
    EXPECT_EQ(shape(), "(1 2 3)");
    EXPECT_EQ(GT_count_items(other), 4);
    EXPECT_EQ(static_cast<record *>(other->first->item)->key, 3);
    EXPECT_EQ(counted(), (std::vector{2, 7, 0}));
    GT_release(&other);
}

} // namespace
