/* SPDX-License-Identifier: MIT */
/* The tree's iterators, and what edits do to them. */
#include "balanced_tree_test_case.h"

#include <mova/tree/internal/iterators.h>

#include <cstring>
#include <map>
#include <utility>

namespace {

using mova::test::iterator_bytes;
using mova::test::list_node_bytes;
using mova::test::log;
using mova::test::name_of;
using mova::test::node_bytes;
using mova::test::record;
using mova::test::recording_host;

int32_t odd(void *item)
{
    recording_host::get().write_down("odd " + name_of(item));
    return static_cast<record *>(item)->key % 2 ? -3 : 0;
}

int32_t below_3(void *item)
{
    recording_host::get().write_down("below_3 " + name_of(item));
    return static_cast<record *>(item)->key < 3;
}

class TreeIteration : public mova::test::balanced_tree_test_case {
protected:
    /* The name that the next step delivers, or "end". */
    std::string step(tree_iter *iterator)
    {
        void *item = this;
        if (GT_next_item(iterator, &item))
            return name_of(item);
        EXPECT_EQ(item, this) << "the last step stored something";
        return "end";
    }

    std::string steps(tree_iter *iterator, int count)
    {
        std::string names;
        for (int i = 0; i < count; ++i)
            names += (names.empty() ? "" : " ") + step(iterator);
        return names;
    }

    /* All names that are still delivered. */
    std::string rest(tree_iter *iterator)
    {
        std::string names;
        for (void *item; GT_next_item(iterator, &item);)
            names += (names.empty() ? "" : " ") + name_of(item);
        return names;
    }

    tree_item *step_to_position(tree_iter *iterator)
    {
        tree_item *position = nullptr;
        EXPECT_EQ(GT_next_position(iterator, &position), 1);
        return position;
    }

    /* An iterator that has delivered this item last. */
    tree_iter *iterator_at(int32_t key)
    {
        tree_iter *iterator = GT_all_items(t);
        while (step_to_position(iterator) != at(key))
            ;
        return iterator;
    }
};

/* ---- creation ---- */

TEST_F(TreeIteration, AnIteratorIsAllocatedAndThenPutAtTheEndOfTheTreesList)
{
    insert_all({2, 1, 3});
    tree_iter *first = GT_all_items(t);
    EXPECT_EQ(host.take_log(), (log{"alloc " + iterator_bytes + " = " + host.name_of(first),
                                    "alloc " + list_node_bytes + " = " + host.name_of(t->iterators->first)}));
    tree_iter *second = GT_from_next(first);
    EXPECT_EQ(t->iterators->count, 2);
    EXPECT_EQ(t->iterators->first->item, first);
    EXPECT_EQ(t->iterators->last->item, second);
    EXPECT_EQ(counted(), (std::vector{1, 3, 2}));
    GT_end_iterator(first);
    GT_end_iterator(second);
}

TEST_F(TreeIteration, TheNineConstructorsSetTheFields)
{
    insert_all({4, 2, 6, 1, 3});
    tree_iter *given = GT_all_items_conditional(t, odd);
    EXPECT_EQ(steps(given, 1), "1");
    const tree_iter before = *given;
    struct made {
        tree_iter *iterator;
        tree_item *cursor;
        int32_t mode;
        GT_condition condition;
    };
    const GT_condition unset = nullptr;
    const made all[] = {
        {GT_all_items(t), t->first, 0, unset},
        {GT_all_items_conditional(t, below_3), t->first, 1, below_3},
        {GT_all_items_while_conditioned(t, below_3), t->first, 2, below_3},
        {GT_from_current(given), at(1), 0, odd},
        {GT_from_current_conditional(given, below_3), at(1), 1, below_3},
        {GT_from_current_while_conditioned(given, below_3), at(1), 2, below_3},
        {GT_from_next(given), at(2), 0, odd},
        {GT_from_next_conditional(given, below_3), at(2), 1, below_3},
        {GT_from_next_while_conditioned(given, below_3), at(2), 2, below_3},
    };
    for (const made &each : all) {
        EXPECT_EQ(each.iterator->cursor, each.cursor);
        EXPECT_EQ(each.iterator->current, nullptr);
        EXPECT_EQ(each.iterator->tree, t);
        EXPECT_EQ(each.iterator->mode, each.mode);
        EXPECT_TRUE(each.condition == unset || each.iterator->condition == each.condition);
        GT_end_iterator(each.iterator);
    }
    EXPECT_EQ(given->cursor, before.cursor);
    EXPECT_EQ(given->current, before.current);
    EXPECT_EQ(given->condition, before.condition);
    EXPECT_EQ(given->mode, before.mode);
    GT_end_iterator(given);
}

TEST_F(TreeIteration, AnIteratorOverAllItemsLeavesItsConditionUnset)
{
    tree_iter *iterator = GT_all_items(t);
    unsigned char bytes[sizeof iterator->condition];
    std::memcpy(bytes, &iterator->condition, sizeof bytes);
    for (unsigned char byte : bytes)
        EXPECT_EQ(byte, 0xCD) << "the host's mark of a fresh block is gone";
    GT_end_iterator(iterator);
}

/* ---- stepping ---- */

TEST_F(TreeIteration, DeliversItemsInOrderAndEndsByItself)
{
    insert_all({4, 2, 6, 1, 3});
    tree_iter *iterator = GT_all_items(t);
    EXPECT_EQ(iterator->current, nullptr);
    EXPECT_EQ(step(iterator), "1");
    EXPECT_EQ(iterator->current, at(1));
    EXPECT_EQ(iterator->cursor, at(2));
    EXPECT_EQ(steps(iterator, 4), "2 3 4 6");
    EXPECT_EQ(iterator->cursor, nullptr);
    log expected = {"dealloc " + host.name_of(t->iterators->first) + " " + list_node_bytes,
                    "dealloc " + host.name_of(iterator) + " " + iterator_bytes};
    host.take_log();
    EXPECT_EQ(step(iterator), "end");
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(t->iterators->count, 0);
    EXPECT_EQ(counted(), (std::vector{1, 5, 0}));
}

TEST_F(TreeIteration, PositionsAreDeliveredAlike)
{
    insert_all({2, 1, 3});
    tree_iter *iterator = GT_all_items(t);
    for (int32_t key : {1, 2, 3})
        EXPECT_EQ(step_to_position(iterator), at(key));
    tree_item untouched, *position = &untouched;
    EXPECT_EQ(GT_next_position(iterator, &position), 0);
    EXPECT_EQ(position, &untouched);
    EXPECT_EQ(counted(), (std::vector{1, 3, 0}));
}

TEST_F(TreeIteration, AnIteratorOverAnEmptyTreeEndsAtOnce)
{
    EXPECT_EQ(step(GT_all_items(t)), "end");
    EXPECT_EQ(step(GT_all_items_conditional(t, odd)), "end");
    EXPECT_EQ(step(GT_all_items_while_conditioned(t, odd)), "end");
    EXPECT_EQ(counted(), (std::vector{1, 0, 0}));
    EXPECT_EQ(taken("odd"), log{});
}

TEST_F(TreeIteration, AConditionFiltersTheItems)
{
    insert_all({1, 2, 3, 4, 5, 6});
    tree_iter *iterator = GT_all_items_conditional(t, odd);
    EXPECT_EQ(step(iterator), "1");
    EXPECT_EQ(step(iterator), "3");
    EXPECT_EQ(iterator->current, at(3));
    EXPECT_EQ(iterator->cursor, at(4));
    EXPECT_EQ(taken("odd"), (log{"odd 1", "odd 2", "odd 3"}));
    EXPECT_EQ(steps(iterator, 2), "5 end");
    EXPECT_EQ(taken("odd"), (log{"odd 4", "odd 5", "odd 6"}));
}

TEST_F(TreeIteration, AFilterLooksAtEveryItemAndAWhileStopsAtTheFirstRejectedOne)
{
    insert_all({1, 2, 3, 4, 5});
    EXPECT_EQ(rest(GT_all_items_conditional(t, below_3)), "1 2");
    EXPECT_EQ(taken("below_3"), (log{"below_3 1", "below_3 2", "below_3 3", "below_3 4", "below_3 5"}));
    EXPECT_EQ(rest(GT_all_items_while_conditioned(t, below_3)), "1 2");
    EXPECT_EQ(taken("below_3"), (log{"below_3 1", "below_3 2", "below_3 3"}));
}

TEST_F(TreeIteration, TheRejectedItemOfAWhileStaysConsumed)
{
    insert_all({1, 3, 4, 5});
    tree_iter *iterator = GT_all_items_while_conditioned(t, odd);
    EXPECT_EQ(steps(iterator, 2), "1 3");
    GT_remove_item(t, at(1));
    tree_item *rejected = at(4), *after = at(5);
    GL_node *registered = t->iterators->first;
    GL_remove_item(t->iterators, registered);
    tree_item *position;
    expect_raise(937, [&] { GT_next_position(iterator, &position); });
    EXPECT_EQ(iterator->current, rejected->prev);
    EXPECT_EQ(iterator->cursor, after);
    GL_append_after_last(t->iterators, iterator);
    GT_end_iterator(iterator);
}

TEST_F(TreeIteration, FromCurrentStartsWithTheItemDeliveredLastAndFromNextAfterIt)
{
    insert_all({1, 2, 3, 4, 5});
    tree_iter *given = GT_all_items(t);
    EXPECT_EQ(steps(given, 2), "1 2");
    EXPECT_EQ(rest(GT_from_current(given)), "2 3 4 5");
    EXPECT_EQ(rest(GT_from_next(given)), "3 4 5");
    EXPECT_EQ(rest(GT_from_current_conditional(given, odd)), "3 5");
    EXPECT_EQ(rest(GT_from_next_conditional(given, odd)), "3 5");
    EXPECT_EQ(rest(GT_from_current_while_conditioned(given, odd)), "");
    EXPECT_EQ(rest(GT_from_next_while_conditioned(given, odd)), "3");
    EXPECT_EQ(rest(given), "3 4 5");
}

TEST_F(TreeIteration, FromCurrentOfAnIteratorWithoutACurrentItemEndsAtOnce)
{
    insert_all({1, 2, 3});
    tree_iter *given = GT_all_items(t);
    EXPECT_EQ(step(GT_from_current(given)), "end");
    GT_remove_item(t, step_to_position(given));
    EXPECT_EQ(step(GT_from_current(given)), "end");
    EXPECT_EQ(rest(GT_from_next(given)), "2 3");
    EXPECT_EQ(rest(given), "2 3");
}

TEST_F(TreeIteration, FromNextOfAnExhaustedIteratorEndsAtOnce)
{
    insert_all({1});
    tree_iter *given = GT_all_items(t);
    EXPECT_EQ(step(given), "1");
    EXPECT_EQ(step(GT_from_next(given)), "end");
    EXPECT_EQ(step(given), "end");
}

TEST_F(TreeIteration, CurrentItemIsTheItemDeliveredLast)
{
    insert_all({1, 2});
    tree_iter *iterator = GT_all_items(t);
    void *item = nullptr;
    for (int32_t key : {1, 2}) {
        step(iterator);
        EXPECT_EQ(GT_current_item(iterator, &item), 1);
        EXPECT_EQ(item, at(key)->item);
    }
    GT_end_iterator(iterator);
}

TEST_F(TreeIteration, ACurrentItemThatIsNullIsStoredAndReportedAsNone)
{
    tree *nulls = GT_create_with_dupl_allowed(mova::test::compare_keys);
    GT_insert_item(nulls, nullptr);
    tree_iter *iterator = GT_all_items(nulls);
    void *item = this;
    EXPECT_EQ(GT_next_item(iterator, &item), 1);
    EXPECT_EQ(item, nullptr);
    item = this;
    EXPECT_EQ(GT_current_item(iterator, &item), 0);
    EXPECT_EQ(item, nullptr);
    GT_end_iterator(iterator);
    GT_release(&nulls);
}

/* ---- ending ---- */

TEST_F(TreeIteration, EndingTakesTheIteratorOutOfTheListAndFreesIt)
{
    insert_all({1, 2});
    tree_iter *first = GT_all_items(t), *second = GT_all_items(t), *third = GT_all_items(t);
    log expected = {"dealloc " + host.name_of(t->iterators->first->next) + " " + list_node_bytes,
                    "dealloc " + host.name_of(second) + " " + iterator_bytes};
    host.take_log();
    GT_end_iterator(second);
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(t->iterators->first->item, first);
    EXPECT_EQ(t->iterators->last->item, third);
    EXPECT_EQ(counted(), (std::vector{1, 2, 2}));
    GT_end_iterator(first);
    GT_end_iterator(third);
}

class UnregisteredIterator : public TreeIteration {
protected:
    void SetUp() override
    {
        TreeIteration::SetUp();
        insert_all({1});
        iterator = GT_all_items(t);
        step(iterator);
        GL_make_empty(t->iterators);
        host.take_log();
    }

    /* Expects the raise, thrown and returned from. Where the host returns from it, the iterator is freed. */
    template <class Call>
    void expect_raise_both_ways(int32_t line, Call call)
    {
        const std::string raise = "raise gentree " + std::to_string(line) + " 4297";
        expect_raise(line, call);
        EXPECT_TRUE(host.is_live(iterator));
        EXPECT_EQ(host.take_log(), log{raise});
        EXPECT_EQ(counted(), (std::vector{1, 1, 1}));
        host.set_raise_mode(recording_host::raise_mode::returns);
        call();
        EXPECT_EQ(host.take_log(), (log{raise, "dealloc " + host.name_of(iterator) + " " + iterator_bytes}));
        EXPECT_EQ(counted(), (std::vector{1, 1, 0}));
    }

    tree_iter *iterator = nullptr;
};

TEST_F(UnregisteredIterator, RaisesWhenTheItemsRunOut)
{
    void *item = this;
    expect_raise_both_ways(896, [&] { EXPECT_EQ(GT_next_item(iterator, &item), 0); });
    EXPECT_EQ(item, this);
}

TEST_F(UnregisteredIterator, RaisesWhenThePositionsRunOut)
{
    tree_item *position = t->root;
    expect_raise_both_ways(937, [&] { EXPECT_EQ(GT_next_position(iterator, &position), 0); });
    EXPECT_EQ(position, t->root);
}

TEST_F(UnregisteredIterator, RaisesWhenItIsEnded)
{
    expect_raise_both_ways(962, [&] { GT_end_iterator(iterator); });
}

/* ---- insertion under an iterator ---- */

TEST_F(TreeIteration, AnItemInsertedDirectlyAfterTheOneDeliveredLastIsDeliveredNext)
{
    insert_all({10, 20, 30});
    tree_iter *iterator = iterator_at(20);
    insert(25);
    EXPECT_EQ(iterator->cursor, at(25));
    insert(22);
    EXPECT_EQ(rest(iterator), "22 25 30");
}

TEST_F(TreeIteration, AnItemInsertedAfterTheLastIsDeliveredByAnExhaustedIterator)
{
    insert_all({10, 20});
    tree_iter *iterator = iterator_at(20);
    EXPECT_EQ(iterator->cursor, nullptr);
    insert(30);
    EXPECT_EQ(rest(iterator), "30");
}

TEST_F(TreeIteration, AnEqualItemInsertedAfterTheOneDeliveredLastIsDeliveredNext)
{
    allow_duplicates();
    insert_all({10, 20, 30});
    tree_iter *iterator = iterator_at(20);
    insert(20, "20b");
    EXPECT_EQ(rest(iterator), "20b 30");
}

TEST_F(TreeIteration, AnItemInsertedFurtherAheadIsMetInItsTurnAndOneBehindIsNot)
{
    insert_all({10, 20, 30});
    tree_iter *iterator = iterator_at(10);
    insert(5);
    insert(25);
    EXPECT_EQ(rest(iterator), "20 25 30");
}

TEST_F(TreeIteration, AFreshIteratorDoesNotSeeANewSmallestItem)
{
    insert_all({10, 20});
    tree_iter *iterator = GT_all_items(t);
    insert(5);
    EXPECT_EQ(iterator->cursor, at(10));
    EXPECT_EQ(rest(iterator), "10 20");
}

TEST_F(TreeIteration, AnIteratorWhoseCurrentItemWasRemovedDoesNotSeeWhatIsInsertedThere)
{
    insert_all({10, 20, 30});
    tree_iter *iterator = iterator_at(20);
    GT_remove_item(t, at(20));
    insert(25);
    EXPECT_EQ(rest(iterator), "30");
}

TEST_F(TreeIteration, EveryLiveIteratorFollowsEveryEdit)
{
    insert_all({10, 20, 30});
    tree_iter *first = iterator_at(20), *second = iterator_at(10), *third = iterator_at(20);
    insert(25);
    EXPECT_EQ(rest(third), "25 30");
    EXPECT_EQ(rest(second), "20 25 30");
    GT_remove_item(t, at(25));
    EXPECT_EQ(rest(first), "30");
}

/* ---- removal under an iterator ---- */

TEST_F(TreeIteration, TheItemJustDeliveredMayBeRemoved)
{
    insert_all({4, 2, 6, 1, 3, 5, 7});
    tree_iter *iterator = GT_all_items(t);
    std::string delivered;
    for (tree_item *position; GT_next_position(iterator, &position);) {
        delivered += name_of(position->item);
        GT_remove_item(t, position);
        EXPECT_EQ(shape().find(delivered.back()), std::string::npos);
    }
    EXPECT_EQ(delivered, "1234567");
    EXPECT_EQ(counted(), (std::vector{1, 0, 0}));
}

TEST_F(TreeIteration, RemovingTheCurrentNodeLeavesTheIteratorWithoutOne)
{
    for (int32_t removed : {2, 4, 6, 1}) { /* one left child, two children, one right child, none */
        GT_make_empty(t);
        insert_all({4, 2, 6, 1, 7});
        tree_iter *iterator = iterator_at(removed);
        tree_item *cursor = iterator->cursor;
        GT_remove_item(t, at(removed));
        EXPECT_EQ(iterator->current, nullptr);
        EXPECT_EQ(iterator->cursor, cursor);
        GT_end_iterator(iterator);
    }
}

TEST_F(TreeIteration, RemovingTheNodeAtTheCursorMovesTheCursorOn)
{
    const std::map<int32_t, std::string> rests = {{2, "4 6 7"}, {6, "7"}, {7, ""}};
    for (const auto &[removed, expected] : rests) {
        GT_make_empty(t);
        insert_all({4, 2, 6, 1, 7});
        tree_iter *iterator = iterator_at(std::stoi(name_of(at(removed)->prev->item)));
        tree_item *current = iterator->current;
        GT_remove_item(t, at(removed));
        EXPECT_EQ(iterator->current, current);
        EXPECT_EQ(rest(iterator), expected);
    }
}

TEST_F(TreeIteration, RemovingTheFirstNodeLeadsTheIteratorsOff)
{
    for (bool with_right_child : {false, true}) {
        GT_make_empty(t);
        insert_all({4, 2, 6});
        if (with_right_child)
            insert(3);
        tree_iter *fresh = GT_all_items(t), *delivering = iterator_at(2);
        GT_remove_first_item(t);
        EXPECT_EQ(delivering->current, nullptr);
        EXPECT_EQ(rest(fresh), with_right_child ? "3 4 6" : "4 6");
        EXPECT_EQ(rest(delivering), with_right_child ? "3 4 6" : "4 6");
    }
}

TEST_F(TreeIteration, GlobalAndFindingRemovalLeadTheIteratorsOff)
{
    insert_all({4, 2, 6});
    tree_iter *iterator = GT_all_items(t);
    GT_find_and_remove_item(t, at(2)->item);
    EXPECT_EQ(iterator->cursor, at(4));
    static_cast<record *>(at(6)->item)->key = 0;
    EXPECT_EQ(step(iterator), "4");
    GT_remove_item_global(t, at(6));
    EXPECT_EQ(iterator->cursor, nullptr);
    GT_end_iterator(iterator);
}

/* The node with two children is released, and its predecessor's record takes its place; an iterator on the predecessor
   is all the same led to the released record. Deliberate. */
TEST_F(TreeIteration, AnIteratorOnThePredecessorIsLeftOnTheReleasedRecord)
{
    insert_all({4, 2, 6, 1, 3, 5, 7});
    tree_item *removed = at(4), *predecessor = at(3);
    tree_iter *delivered_it = iterator_at(3);
    tree_iter *about_to_deliver_it = iterator_at(2);
    tree_iter *fresh = GT_from_next(about_to_deliver_it);
    tree_iter *elsewhere = iterator_at(5);
    EXPECT_EQ(delivered_it->cursor, removed);
    GT_remove_item(t, removed);
    EXPECT_FALSE(host.is_live(removed));
    EXPECT_EQ(t->root, predecessor);

    EXPECT_EQ(delivered_it->current, removed);
    EXPECT_EQ(delivered_it->cursor, at(5));
    EXPECT_EQ(about_to_deliver_it->current, at(2));
    EXPECT_EQ(about_to_deliver_it->cursor, removed);
    EXPECT_EQ(fresh->current, nullptr);
    EXPECT_EQ(fresh->cursor, removed);
    EXPECT_EQ(elsewhere->current, at(5));
    EXPECT_EQ(elsewhere->cursor, at(6));

    EXPECT_EQ(step(delivered_it), "5") << "its cursor is in order";
    GT_end_iterator(about_to_deliver_it);
    GT_end_iterator(fresh);
    EXPECT_EQ(rest(delivered_it), "6 7");
    EXPECT_EQ(rest(elsewhere), "6 7");
}

TEST_F(TreeIteration, AnInsertionReadsTheReleasedRecordAndLeavesTheIteratorAlone)
{
    insert_all({4, 2, 6, 1, 3, 5, 7});
    tree_item *removed = at(4);
    tree_iter *iterator = iterator_at(3);
    GT_remove_item(t, removed);
    insert(8);
    EXPECT_EQ(iterator->current, removed);
    EXPECT_EQ(iterator->cursor, at(5));
    GT_end_iterator(iterator);
}

TEST_F(TreeIteration, AnIteratorOnTheNodeWithTwoChildrenIsLedOff)
{
    insert_all({4, 2, 6, 1, 3, 5, 7});
    tree_iter *on_it = iterator_at(4);
    tree_iter *before_it = GT_from_current(on_it);
    GT_remove_item(t, at(4));
    EXPECT_EQ(on_it->current, nullptr);
    EXPECT_EQ(on_it->cursor, at(5));
    EXPECT_EQ(before_it->cursor, at(5));
    GT_end_iterator(on_it);
    GT_end_iterator(before_it);
}

/* ---- the tree goes ---- */

TEST_F(TreeIteration, AnIteratorOfAnEmptiedTreeEndsWithItsNextStep)
{
    insert_all({2, 1, 3});
    tree_iter *iterator = iterator_at(1);
    GT_make_empty(t);
    EXPECT_EQ(counted(), (std::vector{1, 0, 1}));
    insert(4);
    EXPECT_EQ(step(iterator), "end");
    EXPECT_EQ(counted(), (std::vector{1, 1, 0}));
}

TEST_F(TreeIteration, ThePiecesOfAnIteratorOfAReleasedTreeAreCleared)
{
    insert_all({2, 1, 3});
    tree_iter *iterator = GT_all_items_conditional(t, odd);
    step(iterator);
    GT_release(&t);
    EXPECT_EQ(iterator->cursor, nullptr);
    EXPECT_EQ(iterator->current, nullptr);
    EXPECT_EQ(iterator->tree, nullptr);
    EXPECT_EQ(iterator->condition, odd);
    EXPECT_EQ(iterator->mode, 1);
    EXPECT_EQ(counted(), (std::vector{0, 0, 1}));
    MM_dealloc_item(iterator, sizeof *iterator);
    --mova::modules.gentree.live_iterators;
}

/* ---- the fix-ups by themselves: what no edit of a sound tree leads to ---- */

class FixUps : public TreeIteration {
protected:
    void SetUp() override
    {
        TreeIteration::SetUp();
        insert_all({4, 2, 6, 1, 3});
        iterator = iterator_at(2);
        host.take_log();
    }

    void TearDown() override
    {
        GT_end_iterator(iterator);
        TreeIteration::TearDown();
    }

    tree_iter *iterator = nullptr;
};

TEST_F(FixUps, RemovalByTheRightChildRaisesWhereThereIsALeftOne)
{
    expect_raise(1728, [&] { mova::gt::fix_up_removal_by_right_child(t, at(2)); });
    EXPECT_EQ(iterator->current, at(2));
    host.set_raise_mode(recording_host::raise_mode::returns);
    mova::gt::fix_up_removal_by_right_child(t, at(2));
    EXPECT_EQ(iterator->current, nullptr);
}

TEST_F(FixUps, RemovalByTheLeftChildRaisesWhereThereIsARightOne)
{
    expect_raise(1760, [&] { mova::gt::fix_up_removal_by_left_child(t, at(2)); });
    EXPECT_EQ(iterator->current, at(2));
    host.set_raise_mode(recording_host::raise_mode::returns);
    mova::gt::fix_up_removal_by_left_child(t, at(2));
    EXPECT_EQ(iterator->current, nullptr);
}

TEST_F(FixUps, RemovalByThePredecessorRaisesWhereAChildIsMissingOrThePredecessorHasARightOne)
{
    tree_item node = *at(4), other = *at(1);
    for (tree_item **missing : {&node.left, &node.right}) {
        tree_item *child = std::exchange(*missing, nullptr);
        expect_raise(1799, [&] { mova::gt::fix_up_removal_by_predecessor(t, &node, &other); });
        *missing = child;
    }
    expect_raise(1799, [&] { mova::gt::fix_up_removal_by_predecessor(t, &node, at(2)); });
    mova::gt::fix_up_removal_by_predecessor(t, &node, &other);
    EXPECT_EQ(iterator->current, at(2));
    host.set_raise_mode(recording_host::raise_mode::returns);
    mova::gt::fix_up_removal_by_predecessor(t, &node, at(2));
    EXPECT_EQ(iterator->current, &node);
    iterator->current = nullptr;
}

} // namespace
