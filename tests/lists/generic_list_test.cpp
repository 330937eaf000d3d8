/* SPDX-License-Identifier: MIT */
#include <mova/lists/generic_list.h>
#include <mova/lists/internal/invariants.h>

#include <tests/support/recording_host_test_case.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <vector>

namespace {

using mova::broken_invariant;
using mova::test::log;

int a, b, c, d, e;

class GenericList : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        list = GL_create();
    }

    void TearDown() override
    {
        GL_release(&list);
        recording_host_test_case::TearDown();
    }

    GL_list *list_of(std::initializer_list<void *> items)
    {
        GL_list *made = GL_create();
        for (void *item : items)
            GL_append_after_last(made, item);
        return made;
    }

    void fill(std::initializer_list<void *> items)
    {
        for (void *item : items)
            GL_append_after_last(list, item);
        host.take_log();
    }

    static std::vector<void *> items_of(const GL_list *list)
    {
        EXPECT_EQ(broken_invariant(*list), 0);
        std::vector<void *> items;
        for (const GL_node *node = list->first; node; node = node->next)
            items.push_back(node->item);
        return items;
    }

    std::vector<void *> items() { return items_of(list); }

    static std::vector<void *> delivered(GL_iterator iterator)
    {
        std::vector<void *> items;
        void *item;
        while (GL_next_item(&iterator, &item))
            items.push_back(item);
        return items;
    }

    GL_node *node_of(void *item)
    {
        GL_node *position = nullptr;
        EXPECT_EQ(GL_find_item(list, item, &position), 1);
        return position;
    }

    std::string name_of(const void *block) { return host.name_of(block); }

    static std::string size_of_head() { return std::to_string(sizeof(GL_list)); }
    static std::string size_of_node() { return std::to_string(sizeof(GL_node)); }

    using pointers = std::vector<void *>;

    GL_list *list = nullptr;
};

/* ---- creation and disposal ---- */

TEST_F(GenericList, NewListIsAllZero)
{
    EXPECT_EQ(list->first, nullptr);
    EXPECT_EQ(list->last, nullptr);
    EXPECT_EQ(list->count, 0);
    EXPECT_EQ(GL_count_items(list), 0);
}

TEST_F(GenericList, CreateAllocatesTheHeadAlone)
{
    EXPECT_EQ(host.take_log(), log{"alloc " + size_of_head() + " = #1"});
}

TEST_F(GenericList, ReleaseFreesNodesFromFirstToLastAndThenTheHead)
{
    fill({&a, &b, &c});
    GL_release(&list);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(host.take_log(), (log{"dealloc #2 " + size_of_node(), "dealloc #3 " + size_of_node(),
                                    "dealloc #4 " + size_of_node(), "dealloc #1 " + size_of_head()}));
}

TEST_F(GenericList, ReleaseOfANullVariableDoesNothing)
{
    GL_list *none = nullptr;
    host.take_log();
    GL_release(&none);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(GenericList, ReleaseLeavesTheItemsAlone)
{
    int value = 7;
    fill({&value});
    GL_release(&list);
    EXPECT_EQ(value, 7);
}

/* Writes down whose item field it was given, and clears it. */
void free_item(void **item)
{
    auto &host = mova::test::recording_host::get();
    const char *node = reinterpret_cast<const char *>(item) - offsetof(GL_node, item);
    host.write_down("free " + std::to_string(static_cast<int *>(*item) - &a) + " in " + host.name_of(node) +
                    (host.is_live(node) ? "" : ", which is dead"));
    *item = nullptr;
}

TEST_F(GenericList, TotalReleaseFreesEachItemJustBeforeItsNode)
{
    fill({&a, &a});
    GL_total_release(&list, free_item);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(host.take_log(), (log{"free 0 in #2", "dealloc #2 " + size_of_node(), "free 0 in #3",
                                    "dealloc #3 " + size_of_node(), "dealloc #1 " + size_of_head()}));
}

TEST_F(GenericList, TotalReleaseOfAnEmptyListFreesTheHead)
{
    host.take_log();
    GL_total_release(&list, free_item);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(host.take_log(), log{"dealloc #1 " + size_of_head()});
}

/* Unlike GL_release. The null head is read, which ends the program. */
TEST_F(GenericList, TotalReleaseDoesNotTestForANullVariable)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    GL_list *none = nullptr;
    EXPECT_DEATH(GL_total_release(&none, free_item), "");
}

TEST_F(GenericList, MakeEmptyFreesTheNodesAndKeepsTheHeadUsable)
{
    fill({&a, &b});
    GL_make_empty(list);
    EXPECT_EQ(host.take_log(), (log{"dealloc #2 " + size_of_node(), "dealloc #3 " + size_of_node()}));
    EXPECT_EQ(items(), pointers{});
    GL_append_after_last(list, &c);
    EXPECT_EQ(items(), pointers{&c});
}

TEST_F(GenericList, TotalMakeEmptyFreesEachItemJustBeforeItsNode)
{
    fill({&a, &a});
    GL_total_make_empty(list, free_item);
    EXPECT_EQ(host.take_log(),
              (log{"free 0 in #2", "dealloc #2 " + size_of_node(), "free 0 in #3", "dealloc #3 " + size_of_node()}));
    EXPECT_EQ(items(), pointers{});
}

TEST_F(GenericList, MakeEmptyOfAnEmptyListCallsNothing)
{
    host.take_log();
    GL_make_empty(list);
    GL_total_make_empty(list, free_item);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(items(), pointers{});
}

/* ---- copying and measuring ---- */

TEST_F(GenericList, CopyHoldsTheSamePointersInTheSameOrder)
{
    fill({&a, nullptr, &b, &a});
    GL_list *copy = GL_copy(list);
    EXPECT_EQ(host.take_log(), (log{"alloc " + size_of_head() + " = #6", "alloc " + size_of_node() + " = #7",
                                    "alloc " + size_of_node() + " = #8", "alloc " + size_of_node() + " = #9",
                                    "alloc " + size_of_node() + " = #10"}));
    EXPECT_EQ(items_of(copy), (pointers{&a, nullptr, &b, &a}));
    EXPECT_EQ(items(), (pointers{&a, nullptr, &b, &a}));
    GL_release(&copy);
}

TEST_F(GenericList, CopyOfAnEmptyListIsANewEmptyList)
{
    GL_list *copy = GL_copy(list);
    EXPECT_NE(copy, list);
    EXPECT_EQ(items_of(copy), pointers{});
    GL_release(&copy);
}

/* Receives the item itself, unlike a free callback, and answers with the next one. */
void *copy_item(void *item)
{
    auto &host = mova::test::recording_host::get();
    host.write_down("copy " + std::string(item == &a ? "a" : item == &b ? "b" : "?"));
    return item == &a ? &c : &d;
}

TEST_F(GenericList, TotalCopyHoldsWhatTheCallbackReturnedForEachItem)
{
    fill({&a, &b});
    GL_list *copy = GL_total_copy(list, copy_item);
    EXPECT_EQ(host.take_log(), (log{"alloc " + size_of_head() + " = #4", "copy a", "alloc " + size_of_node() + " = #5",
                                    "copy b", "alloc " + size_of_node() + " = #6"}));
    EXPECT_EQ(items_of(copy), (pointers{&c, &d}));
    EXPECT_EQ(items(), (pointers{&a, &b}));
    GL_release(&copy);
}

TEST_F(GenericList, CheckOfAnEmptyListCountsTheHead)
{
    EXPECT_EQ(GL_check(list, [](void *) -> int32_t { return 1000; }), 12);
}

TEST_F(GenericList, CheckAddsTwelveAndTheItemsSizeForEachNode)
{
    fill({&a, &b});
    EXPECT_EQ(GL_check(list, [](void *item) -> int32_t { return item == &a ? 5 : item == &b ? 7 : 1000; }), 48);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(GenericList, CheckWrapsAroundPast32Bits)
{
    fill({&a, &b});
    EXPECT_EQ(GL_check(list, [](void *) -> int32_t { return INT32_MAX; }), 36 - 2);
}

/* ---- insertion ---- */

TEST_F(GenericList, AppendToAnEmptyListMakesTheNodeFirstAndLast)
{
    GL_node *position = GL_append_after_last(list, &a);
    EXPECT_EQ(list->first, position);
    EXPECT_EQ(list->last, position);
    EXPECT_EQ(items(), pointers{&a});
}

TEST_F(GenericList, AppendAddsAtTheBack)
{
    fill({&a, &b});
    GL_node *position = GL_append_after_last(list, &c);
    EXPECT_EQ(host.take_log(), log{"alloc " + size_of_node() + " = " + name_of(position)});
    EXPECT_EQ(list->last, position);
    EXPECT_EQ(position->next, nullptr);
    EXPECT_EQ(items(), (pointers{&a, &b, &c}));
    EXPECT_EQ(GL_count_items(list), 3);
}

TEST_F(GenericList, InsertBeforeFirstIntoAnEmptyListMakesTheNodeFirstAndLast)
{
    GL_node *position = GL_insert_before_first(list, &a);
    EXPECT_EQ(list->first, position);
    EXPECT_EQ(list->last, position);
    EXPECT_EQ(items(), pointers{&a});
}

TEST_F(GenericList, InsertBeforeFirstAddsAtTheFront)
{
    fill({&b});
    GL_node *position = GL_insert_before_first(list, &a);
    EXPECT_EQ(host.take_log(), log{"alloc " + size_of_node() + " = " + name_of(position)});
    EXPECT_EQ(list->first, position);
    EXPECT_EQ(items(), (pointers{&a, &b}));
}

TEST_F(GenericList, InsertBeforeLinksBetweenThePositionAndItsPredecessor)
{
    fill({&a, &c});
    GL_node *position = GL_insert_before(list, node_of(&c), &b);
    EXPECT_EQ(position->item, &b);
    EXPECT_EQ(position->prev->item, &a);
    EXPECT_EQ(items(), (pointers{&a, &b, &c}));
}

TEST_F(GenericList, InsertBeforeTheFirstMakesTheNodeFirst)
{
    fill({&b});
    GL_node *position = GL_insert_before(list, list->first, &a);
    EXPECT_EQ(list->first, position);
    EXPECT_EQ(items(), (pointers{&a, &b}));
}

TEST_F(GenericList, InsertAfterLinksBetweenThePositionAndItsSuccessor)
{
    fill({&a, &c});
    GL_node *position = GL_insert_after(list, node_of(&a), &b);
    EXPECT_EQ(position->next->item, &c);
    EXPECT_EQ(items(), (pointers{&a, &b, &c}));
}

TEST_F(GenericList, InsertAfterTheLastMakesTheNodeLast)
{
    fill({&a});
    GL_node *position = GL_insert_after(list, list->last, &b);
    EXPECT_EQ(list->last, position);
    EXPECT_EQ(items(), (pointers{&a, &b}));
}

TEST_F(GenericList, InsertUniqueOfAPresentPointerReturnsNullAndChangesNothing)
{
    fill({&a, &b});
    EXPECT_EQ(GL_insert_unique(list, &b), nullptr);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(items(), (pointers{&a, &b}));
}

TEST_F(GenericList, InsertUniqueOfANewPointerAppendsIt)
{
    fill({&a});
    GL_node *position = GL_insert_unique(list, &b);
    EXPECT_EQ(position, list->last);
    EXPECT_EQ(items(), (pointers{&a, &b}));
}

TEST_F(GenericList, InsertUniqueComparesIdentityNotContents)
{
    int one = 1, other_one = 1;
    fill({&one});
    EXPECT_NE(GL_insert_unique(list, &other_one), nullptr);
}

TEST_F(GenericList, NullIsAnItemLikeAnyOther)
{
    GL_node *position = GL_insert_unique(list, nullptr);
    ASSERT_NE(position, nullptr);
    EXPECT_EQ(GL_insert_unique(list, nullptr), nullptr);
    GL_node *found = nullptr;
    EXPECT_EQ(GL_find_item(list, nullptr, &found), 1);
    EXPECT_EQ(found, position);
    EXPECT_EQ(delivered(GL_all_items(list)), pointers{nullptr});
}

/* ---- moving and joining ---- */

TEST_F(GenericList, MoveBeforeFirstOfTheFirstChangesNothing)
{
    fill({&a, &b});
    GL_move_before_first(list, list->first);
    EXPECT_EQ(items(), (pointers{&a, &b}));
}

TEST_F(GenericList, MoveBeforeFirstOfTheOnlyNodeChangesNothing)
{
    fill({&a});
    GL_move_before_first(list, list->first);
    EXPECT_EQ(items(), pointers{&a});
}

TEST_F(GenericList, MoveBeforeFirstOfTheLastMakesItsPredecessorLast)
{
    fill({&a, &b, &c});
    GL_node *moved = list->last;
    GL_move_before_first(list, moved);
    EXPECT_EQ(list->first, moved);
    EXPECT_EQ(list->last->item, &b);
    EXPECT_EQ(items(), (pointers{&c, &a, &b}));
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(GenericList, MoveBeforeFirstFromTheMiddleKeepsTheOthersInOrder)
{
    fill({&a, &b, &c});
    GL_move_before_first(list, node_of(&b));
    EXPECT_EQ(items(), (pointers{&b, &a, &c}));
    EXPECT_EQ(GL_count_items(list), 3);
}

TEST_F(GenericList, AppendListMovesTheNodesAndFreesTheSourceHead)
{
    fill({&a, &b});
    GL_list *source = list_of({&c, &d});
    GL_node *moved = source->first;
    std::string head = name_of(source);
    host.take_log();
    GL_append_list(list, &source);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(host.take_log(), log{"dealloc " + head + " " + size_of_head()});
    EXPECT_EQ(items(), (pointers{&a, &b, &c, &d}));
    EXPECT_EQ(list->first->next->next, moved);
}

TEST_F(GenericList, AppendListToAnEmptyTargetTakesEverythingOver)
{
    GL_list *source = list_of({&c, &d});
    GL_node *first = source->first;
    GL_append_list(list, &source);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(list->first, first);
    EXPECT_EQ(items(), (pointers{&c, &d}));
}

TEST_F(GenericList, AppendListOfAnEmptySourceFreesItsHeadOnly)
{
    fill({&a});
    GL_list *source = GL_create();
    std::string head = name_of(source);
    host.take_log();
    GL_append_list(list, &source);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(host.take_log(), log{"dealloc " + head + " " + size_of_head()});
    EXPECT_EQ(items(), pointers{&a});
}

TEST_F(GenericList, AppendListOfTwoEmptyListsStaysEmpty)
{
    GL_list *source = GL_create();
    GL_append_list(list, &source);
    EXPECT_EQ(source, nullptr);
    EXPECT_EQ(items(), pointers{});
}

/* ---- search, removal, replacement ---- */

TEST_F(GenericList, FindStoresTheFirstMatch)
{
    fill({&a, &b, &b});
    GL_node *position = nullptr;
    EXPECT_EQ(GL_find_item(list, &b, &position), 1);
    EXPECT_EQ(position, list->first->next);
}

TEST_F(GenericList, FindOfAnAbsentItemStoresNull)
{
    fill({&a});
    GL_node *position = list->first;
    EXPECT_EQ(GL_find_item(list, &b, &position), 0);
    EXPECT_EQ(position, nullptr);
}

TEST_F(GenericList, FindWorksWhereverTheNodesLie)
{
    std::vector<int> values(50);
    for (int &value : values)
        GL_append_after_last(list, &value);
    for (int i = 0; i < 50; i += 2)
        GL_move_before_first(list, node_of(&values[static_cast<std::size_t>(i)]));
    for (int &value : values)
        EXPECT_EQ(node_of(&value)->item, &value);
}

TEST_F(GenericList, RemovingTheOnlyNodeLeavesTheHeadZero)
{
    fill({&a});
    GL_remove_item(list, list->first);
    EXPECT_EQ(host.take_log(), log{"dealloc #2 " + size_of_node()});
    EXPECT_EQ(list->first, nullptr);
    EXPECT_EQ(list->last, nullptr);
    EXPECT_EQ(list->count, 0);
}

TEST_F(GenericList, RemovingTheFirstMakesItsSuccessorFirst)
{
    fill({&a, &b, &c});
    GL_remove_item(list, list->first);
    EXPECT_EQ(items(), (pointers{&b, &c}));
}

TEST_F(GenericList, RemovingTheLastMakesItsPredecessorLast)
{
    fill({&a, &b, &c});
    GL_remove_item(list, list->last);
    EXPECT_EQ(items(), (pointers{&a, &b}));
}

TEST_F(GenericList, RemovingFromTheMiddleJoinsTheNeighbours)
{
    fill({&a, &b, &c});
    GL_remove_item(list, node_of(&b));
    EXPECT_EQ(host.take_log(), log{"dealloc #3 " + size_of_node()});
    EXPECT_EQ(items(), (pointers{&a, &c}));
}

TEST_F(GenericList, SwapExchangesTheNodesItemAndTheCallersVariable)
{
    fill({&a, &b});
    void *item = &c;
    GL_swap_item(list->first, &item);
    EXPECT_EQ(item, &a);
    EXPECT_EQ(items(), (pointers{&c, &b}));
    EXPECT_EQ(host.take_log(), log{});
}

/* ---- iterators ---- */

void expect_fields(const GL_iterator &iterator, GL_node *next, GL_node *end, int32_t forward, GL_test test)
{
    EXPECT_EQ(iterator.current, nullptr);
    EXPECT_EQ(iterator.next, next);
    EXPECT_EQ(iterator.end, end);
    EXPECT_EQ(iterator.forward, forward);
    EXPECT_EQ(iterator.test, test);
}

int accept_all(void *)
{
    return 1;
}

TEST_F(GenericList, ConstructorsSetEveryField)
{
    fill({&a, &b, &c});
    GL_node *first = list->first, *middle = first->next, *last = list->last;
    expect_fields(GL_empty_iter(), nullptr, nullptr, 1, nullptr);
    expect_fields(GL_all_items(list), first, last, 1, nullptr);
    expect_fields(GL_all_items_reversed(list), last, first, 0, nullptr);
    expect_fields(GL_tested_items(list, accept_all), first, last, 1, accept_all);
    expect_fields(GL_all_items_inbetween(list, middle, last, 1), middle, last, 1, nullptr);
    expect_fields(GL_all_items_inbetween(list, last, middle, 0), last, middle, 0, nullptr);
    expect_fields(GL_tested_items_inbetween(list, middle, last, -5, accept_all), middle, last, -5, accept_all);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(GenericList, InbetweenConstructorsDoNotUseTheList)
{
    fill({&a, &b});
    EXPECT_EQ(delivered(GL_all_items_inbetween(nullptr, list->first, list->last, 1)), (pointers{&a, &b}));
    EXPECT_EQ(delivered(GL_tested_items_inbetween(nullptr, list->first, list->last, 1, accept_all)),
              (pointers{&a, &b}));
}

TEST_F(GenericList, AllItemsDeliversFirstToLastAndReversedLastToFirst)
{
    fill({&a, &b, &c});
    EXPECT_EQ(delivered(GL_all_items(list)), (pointers{&a, &b, &c}));
    EXPECT_EQ(delivered(GL_all_items_reversed(list)), (pointers{&c, &b, &a}));
}

TEST_F(GenericList, EmptyIteratorAndEmptyListDeliverNothingAndLeaveTheVariable)
{
    for (GL_iterator iterator : {GL_empty_iter(), GL_all_items(list), GL_all_items_reversed(list)}) {
        void *item = &e;
        EXPECT_EQ(GL_next_item(&iterator, &item), 0);
        EXPECT_EQ(item, &e);
        GL_node marker;
        GL_node *position = &marker;
        EXPECT_EQ(GL_next_position(&iterator, &position), 0);
        EXPECT_EQ(position, &marker);
        EXPECT_EQ(iterator.current, nullptr);
    }
}

TEST_F(GenericList, RangesAreInclusiveAtBothEnds)
{
    fill({&a, &b, &c, &d});
    GL_node *second = node_of(&b), *third = node_of(&c);
    EXPECT_EQ(delivered(GL_all_items_inbetween(list, second, third, 1)), (pointers{&b, &c}));
    EXPECT_EQ(delivered(GL_all_items_inbetween(list, third, second, 0)), (pointers{&c, &b}));
    EXPECT_EQ(delivered(GL_all_items_inbetween(list, second, second, 1)), pointers{&b});
    EXPECT_EQ(delivered(GL_all_items_inbetween(list, second, second, 0)), pointers{&b});
}

TEST_F(GenericList, AnyNonZeroDirectionWalksForward)
{
    fill({&a, &b, &c});
    EXPECT_EQ(delivered(GL_all_items_inbetween(list, list->first, list->last, -1)), (pointers{&a, &b, &c}));
    EXPECT_EQ(delivered(GL_all_items_inbetween(list, list->first, list->last, 256)), (pointers{&a, &b, &c}));
}

TEST_F(GenericList, ARangeWhoseEndLiesBehindRunsToTheListsEnd)
{
    fill({&a, &b, &c, &d});
    GL_node *second = node_of(&b), *third = node_of(&c);
    EXPECT_EQ(delivered(GL_all_items_inbetween(list, third, second, 1)), (pointers{&c, &d}));
    EXPECT_EQ(delivered(GL_all_items_inbetween(list, second, third, 0)), (pointers{&b, &a}));
    EXPECT_EQ(delivered(GL_all_items_inbetween(list, second, nullptr, 1)), (pointers{&b, &c, &d}));
}

TEST_F(GenericList, AStepKeepsCurrentAndFetchesTheSuccessor)
{
    fill({&a, &b});
    GL_iterator iterator = GL_all_items(list);
    void *item;
    EXPECT_EQ(GL_next_item(&iterator, &item), 1);
    EXPECT_EQ(iterator.current, list->first);
    EXPECT_EQ(iterator.next, list->last);
    EXPECT_EQ(GL_next_item(&iterator, &item), 1);
    EXPECT_EQ(iterator.current, list->last);
    EXPECT_EQ(iterator.next, nullptr);
    EXPECT_EQ(GL_next_item(&iterator, &item), 0);
    EXPECT_EQ(iterator.current, list->last);
    EXPECT_EQ(item, &b);
}

TEST_F(GenericList, NextPositionStoresTheNode)
{
    fill({&a, &b});
    GL_iterator iterator = GL_all_items_reversed(list);
    GL_node *position = nullptr;
    EXPECT_EQ(GL_next_position(&iterator, &position), 1);
    EXPECT_EQ(position, list->last);
    EXPECT_EQ(GL_next_position(&iterator, &position), 1);
    EXPECT_EQ(position, list->first);
    EXPECT_EQ(GL_next_position(&iterator, &position), 0);
}

/* What the predicates below saw, and what the caller's variable held while they were asked. */
std::vector<void *> asked;
void *delivered_item;
GL_node *delivered_position;
std::vector<void *> stored_when_asked;

int accept_b_and_d(void *item)
{
    asked.push_back(item);
    stored_when_asked.push_back(delivered_item);
    return item == &b ? -1 : item == &d ? 256 : 0;
}

int accept_nothing(void *item)
{
    asked.push_back(item);
    stored_when_asked.push_back(delivered_position);
    return 0;
}

class TestedGenericList : public GenericList {
protected:
    void SetUp() override
    {
        GenericList::SetUp();
        asked.clear();
        stored_when_asked.clear();
        delivered_item = nullptr;
        delivered_position = nullptr;
    }
};

TEST_F(TestedGenericList, TestedIterationDeliversWhatTheTestAccepts)
{
    fill({&a, &b, &c, &d, &e});
    EXPECT_EQ(delivered(GL_tested_items(list, accept_b_and_d)), (pointers{&b, &d}));
    EXPECT_EQ(asked, (pointers{&a, &b, &c, &d, &e}));
}

TEST_F(TestedGenericList, TestedRangeAsksAboutTheRangeOnly)
{
    fill({&a, &b, &c, &d, &e});
    EXPECT_EQ(delivered(GL_tested_items_inbetween(list, node_of(&d), node_of(&b), 0, accept_b_and_d)),
              (pointers{&d, &b}));
    EXPECT_EQ(asked, (pointers{&d, &c, &b}));
}

TEST_F(TestedGenericList, TheItemIsStoredBeforeTheTestIsAsked)
{
    fill({&a, &b});
    GL_iterator iterator = GL_tested_items(list, accept_b_and_d);
    EXPECT_EQ(GL_next_item(&iterator, &delivered_item), 1);
    EXPECT_EQ(stored_when_asked, (pointers{&a, &b}));
}

TEST_F(TestedGenericList, AfterAFinalRejectionTheVariableHoldsTheLastRejectedItem)
{
    fill({&a, &b, &c});
    GL_iterator iterator = GL_tested_items(list, accept_nothing);
    void *item = &e;
    EXPECT_EQ(GL_next_item(&iterator, &item), 0);
    EXPECT_EQ(item, &c);
    EXPECT_EQ(iterator.current, list->last);
    item = &e;
    EXPECT_EQ(GL_next_item(&iterator, &item), 0);
    EXPECT_EQ(item, &e);
}

TEST_F(TestedGenericList, NextPositionStoresTheNodeAndAsksAboutItsItem)
{
    fill({&a, &b});
    GL_iterator iterator = GL_tested_items(list, accept_nothing);
    EXPECT_EQ(GL_next_position(&iterator, &delivered_position), 0);
    EXPECT_EQ(delivered_position, list->last);
    EXPECT_EQ(asked, (pointers{&a, &b}));
    EXPECT_EQ(stored_when_asked, (pointers{list->first, list->last}));
}

TEST_F(TestedGenericList, NextPositionDeliversAcceptedNodes)
{
    fill({&a, &b, &c, &d});
    GL_iterator iterator = GL_tested_items(list, accept_b_and_d);
    GL_node *position = nullptr;
    EXPECT_EQ(GL_next_position(&iterator, &position), 1);
    EXPECT_EQ(position->item, &b);
    EXPECT_EQ(GL_next_position(&iterator, &position), 1);
    EXPECT_EQ(position->item, &d);
    EXPECT_EQ(GL_next_position(&iterator, &position), 0);
}

/* ---- editing while iterating ---- */

TEST_F(GenericList, TheDeliveredNodeMayBeRemovedWhileIterating)
{
    fill({&a, &b, &c, &d});
    GL_iterator iterator = GL_all_items(list);
    GL_node *position;
    pointers seen;
    while (GL_next_position(&iterator, &position)) {
        seen.push_back(position->item);
        GL_remove_item(list, position);
    }
    EXPECT_EQ(seen, (pointers{&a, &b, &c, &d}));
    EXPECT_EQ(items(), pointers{});
}

TEST_F(GenericList, TheDeliveredNodeMayBeRemovedWhileIteratingBackwards)
{
    fill({&a, &b, &c});
    GL_iterator iterator = GL_all_items_reversed(list);
    GL_node *position;
    while (GL_next_position(&iterator, &position)) {
        if (position->item != &b)
            GL_remove_item(list, position);
    }
    EXPECT_EQ(items(), pointers{&b});
}

TEST_F(GenericList, RemovingTheEndBeforeItIsReachedRunsOnToTheListsEnd)
{
    fill({&a, &b, &c, &d});
    GL_iterator forward = GL_all_items_inbetween(list, node_of(&a), node_of(&c), 1);
    GL_remove_item(list, node_of(&c));
    EXPECT_EQ(delivered(forward), (pointers{&a, &b, &d}));
}

TEST_F(GenericList, ANodeInsertedBehindCurrentIsNotDelivered)
{
    fill({&a, &b});
    GL_iterator iterator = GL_all_items(list);
    void *item;
    GL_next_item(&iterator, &item);
    GL_insert_after(list, iterator.current, &c);
    EXPECT_EQ(delivered(iterator), pointers{&b});
}

TEST_F(GenericList, ANodeInsertedAheadOfTheEndIsDeliveredAndOneAppendedBehindItIsNot)
{
    fill({&a, &b});
    GL_iterator iterator = GL_all_items(list);
    GL_insert_before(list, list->last, &c);
    GL_append_after_last(list, &d);
    EXPECT_EQ(delivered(iterator), (pointers{&a, &c, &b}));
}

TEST_F(GenericList, PositionsSurviveMovingJoiningAndSwapping)
{
    fill({&a, &b});
    GL_node *position = node_of(&b);
    GL_move_before_first(list, position);
    void *item = &c;
    GL_swap_item(position, &item);
    GL_list *target = list_of({&d});
    GL_append_list(target, &list);
    list = target;
    EXPECT_EQ(node_of(&c), position);
    EXPECT_EQ(items(), (pointers{&d, &c, &a}));
}

/* ---- the exported step ---- */

TEST_F(TestedGenericList, TheExportedStepAndTheInlineOneAreTheSame)
{
    int (*volatile exported_item)(GL_iterator *, void **) = GL_next_item;
    int (*volatile exported_position)(GL_iterator *, GL_node **) = GL_next_position;
    fill({&a, &b, &c, &d});
    GL_iterator called = GL_tested_items(list, accept_b_and_d), inlined = called;
    for (int result = 1; result;) {
        void *item = &e, *same = &e;
        result = exported_item(&called, &item);
        EXPECT_EQ(GL_next_item(&inlined, &same), result);
        EXPECT_EQ(item, same);
        EXPECT_EQ(called.current, inlined.current);
        EXPECT_EQ(called.next, inlined.next);
    }
    GL_iterator positions = GL_all_items(list);
    GL_node *position = nullptr;
    EXPECT_EQ(exported_position(&positions, &position), 1);
    EXPECT_EQ(position, list->first);
}

/* ---- leaving through a callback ---- */

struct left_callback {};

int throwing_test(void *)
{
    throw left_callback();
}

TEST_F(GenericList, AnExceptionOutOfATestLeavesTheIteratorOnTheTestedNode)
{
    fill({&a, &b});
    GL_iterator iterator = GL_tested_items(list, throwing_test);
    void *item = &e;
    EXPECT_THROW(GL_next_item(&iterator, &item), left_callback);
    EXPECT_EQ(item, &a);
    EXPECT_EQ(iterator.current, list->first);
    EXPECT_EQ(iterator.next, list->last);
}

TEST_F(GenericList, ManyItemsKeepTheirOrderThroughEveryWholeListOperation)
{
    std::vector<int> values(1000);
    pointers expected;
    for (int &value : values) {
        GL_append_after_last(list, &value);
        expected.push_back(&value);
    }
    EXPECT_EQ(items(), expected);
    GL_list *copy = GL_copy(list);
    EXPECT_EQ(items_of(copy), expected);
    GL_append_list(list, &copy);
    EXPECT_EQ(GL_count_items(list), 2000);
    EXPECT_EQ(GL_check(list, [](void *) -> int32_t { return 1; }), 12 + 2000 * 13);
}

} // namespace
