/* SPDX-License-Identifier: MIT */
#include <mova/lists/element_list.h>
#include <mova/lists/internal/invariants.h>
#include <mova/lists/element_stack.h>

#include <tests/support/recording_host_test_case.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace {

using mova::broken_invariant;
using mova::test::expect_raise;
using mova::test::log;
using mova::test::recording_host;

/* Elements of 12 bytes, each named by a letter. */
using element = std::array<char, 12>;

element named(char name)
{
    element made;
    made.fill(name);
    return made;
}

char name_of_element(const void *bytes)
{
    element read;
    std::memcpy(&read, bytes, sizeof read);
    EXPECT_EQ(read, named(read[0])) << "an element is torn";
    return read[0];
}

const std::string node_bytes = std::to_string(sizeof(EL_node) + sizeof(element));
const std::string head_bytes = std::to_string(sizeof(EL_list));

/* What the test below was asked about, and what the caller's variable held at the time. */
std::string asked;
std::string stored_when_asked;
void *stored;

class ElementList : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        asked = stored_when_asked = "";
        stored = nullptr;
        list = EL_create(sizeof(element));
        host.take_log();
    }

    void TearDown() override
    {
        if (list)
            EL_release(&list);
        recording_host_test_case::TearDown();
    }

    static void fill(EL_list *filled, const std::string &names)
    {
        for (char name : names)
            EL_append_after_last(filled, named(name).data());
    }

    void fill(const std::string &names)
    {
        fill(list, names);
        host.take_log();
    }

    void fill_ring(const std::string &names)
    {
        fill(names);
        EL_set_closed(list);
    }

    static EL_list *list_of(const std::string &names)
    {
        EL_list *made = EL_create(sizeof(element));
        fill(made, names);
        return made;
    }

    /* "ABC", or "ABC ring"; with the invariants verified. */
    static std::string text(const EL_list *shown)
    {
        EXPECT_EQ(broken_invariant(*shown), 0);
        std::string names;
        const EL_node *node = shown->first;
        for (int32_t i = 0; i < shown->count; ++i, node = node->next)
            names += name_of_element(node + 1);
        return names + (shown->closed ? " ring" : "");
    }

    std::string text() { return text(list); }

    /* The first node with this name. */
    EL_node *at(char name)
    {
        EL_node *node = list->first;
        while (name_of_element(EL_element(node)) != name)
            node = node->next;
        return node;
    }

    static std::string delivered(EL_iterator iterator)
    {
        std::string names;
        for (void *bytes; EL_next_item(&iterator, &bytes);)
            names += name_of_element(bytes);
        return names;
    }

    EL_list *list = nullptr;
};

/* ---- creation, disposal, state ---- */

TEST_F(ElementList, NewListIsEmptyAndOpen)
{
    EXPECT_EQ(list->first, nullptr);
    EXPECT_EQ(list->last, nullptr);
    EXPECT_EQ(list->element_size, sizeof(element));
    EXPECT_EQ(list->count, 0);
    EXPECT_EQ(list->closed, 0);
    EL_list *other = EL_create(8);
    EXPECT_EQ(host.take_log(), log{"alloc " + head_bytes + " = #2"});
    EL_release(&other);
}

TEST_F(ElementList, OnlyTheLow16BitsOfTheElementSizeCount)
{
    for (auto [given, kept] : {std::pair{65535u, 65535}, {65536u, 0}, {65540u, 4}, {0u, 0}}) {
        EL_list *made = EL_create(given);
        EXPECT_EQ(made->element_size, kept);
        EL_release(&made);
    }
}

/* The undefined-behaviour sanitizer watches this one. */
TEST_F(ElementList, ElementsOfSize0MayBeNull)
{
    void *volatile none = nullptr; /* the compiler would warn of a constant */
    EL_list *made = EL_create(0);
    EL_node *node = EL_append_after_last(made, none);
    EL_insert_before(made, node, none);
    EL_replace_item(node, none, 0);
    EL_iterator iterator = EL_all_items(made);
    EXPECT_EQ(EL_next_item_copy(&iterator, none), 1);
    EXPECT_EQ(ES_inspect_top(made, none), 1);
    EXPECT_EQ(ES_pop(made, none), 1);
    EXPECT_EQ(made->count, 1);
    EL_release(&made);
    host.take_log();
}

TEST_F(ElementList, NodesAreTheirLinksAndTheElement)
{
    for (uint32_t size : {0u, 1u, 7u, 8u, 9u, 16u, 65535u}) {
        EL_list *made = EL_create(size);
        std::vector<char> bytes(size + 1, 'x');
        host.take_log();
        EL_node *node = EL_append_after_last(made, bytes.data());
        std::string node_size = std::to_string(sizeof(EL_node) + size);
        EXPECT_EQ(host.take_log(), log{"alloc " + node_size + " = " + host.name_of(node)});
        EXPECT_EQ(std::memcmp(EL_element(node), bytes.data(), size), 0);
        std::string name = host.name_of(node);
        EL_remove_item(made, node);
        EXPECT_EQ(host.take_log(), log{"dealloc " + name + " " + node_size});
        EL_release(&made);
    }
}

TEST_F(ElementList, ReleaseFreesNodesFromFirstToLastAndThenTheHead)
{
    for (bool ring : {false, true}) {
        EL_list *made = list_of("AB");
        if (ring)
            EL_set_closed(made);
        log expected = {"dealloc " + host.name_of(made->first) + " " + node_bytes,
                        "dealloc " + host.name_of(made->last) + " " + node_bytes,
                        "dealloc " + host.name_of(made) + " " + head_bytes};
        host.take_log();
        EL_release(&made);
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(host.take_log(), expected);
    }
}

TEST_F(ElementList, MakeEmptyLeavesAnEmptyOpenList)
{
    fill_ring("ABC");
    EL_make_empty(list);
    EXPECT_EQ(host.live_blocks(), 1u);
    EXPECT_EQ(text(), "");
    fill("D");
    EXPECT_EQ(text(), "D");
}

TEST_F(ElementList, ClosingLinksTheEndsToEachOther)
{
    fill("AB");
    EL_set_closed(list);
    EXPECT_EQ(list->first->prev, list->last);
    EXPECT_EQ(list->last->next, list->first);
    EXPECT_EQ(list->closed, 1);
    EXPECT_EQ(delivered(EL_all_items(list)), "AB");
    EL_reset_closed(list);
    EXPECT_EQ(text(), "AB");
}

TEST_F(ElementList, ClosingASingleNodeLinksItToItself)
{
    fill_ring("A");
    EXPECT_EQ(list->first->prev, list->first);
    EXPECT_EQ(list->first->next, list->first);
}

TEST_F(ElementList, ClosingAnEmptyListSetsTheFlagAlone)
{
    EL_set_closed(list);
    EXPECT_EQ(text(), " ring");
    EL_reset_closed(list);
    EXPECT_EQ(text(), "");
}

TEST_F(ElementList, CountsTheWholeListAndRanges)
{
    fill("ABCD");
    EXPECT_EQ(EL_count_items(list), 4);
    EXPECT_EQ(EL_count_items_inbetween(list, at('B'), at('D')), 3);
    EXPECT_EQ(EL_count_items_inbetween(list, at('B'), at('B')), 1);
    EL_set_closed(list);
    EXPECT_EQ(EL_count_items_inbetween(list, at('D'), at('B')), 3);
}

/* ---- insertion ---- */

TEST_F(ElementList, InsertionsCopyTheElementAndReturnItsPosition)
{
    element given = named('A');
    EL_node *position = EL_append_after_last(list, given.data());
    given = named('Z');
    EXPECT_EQ(host.take_log(), log{"alloc " + node_bytes + " = #2"});
    EXPECT_EQ(position, list->first);
    EXPECT_EQ(text(), "A");
}

TEST_F(ElementList, InsertsAtEveryPlaceOfAnOpenListAndOfARing)
{
    for (const char *ring : {"", " ring"}) {
        EL_make_empty(list);
        if (*ring)
            EL_set_closed(list);
        EL_insert_before_first(list, named('C').data());
        EXPECT_EQ(text(), std::string("C") + ring);
        EL_insert_before_first(list, named('B').data());
        EL_insert_before(list, list->first, named('A').data());
        EL_append_after_last(list, named('F').data());
        EL_insert_after(list, list->last, named('G').data());
        EL_insert_before(list, at('F'), named('E').data());
        EL_insert_after(list, at('C'), named('D').data());
        EXPECT_EQ(text(), std::string("ABCDEFG") + ring);
    }
}

TEST_F(ElementList, InsertingBeforeTheFirstOfARingKeepsTheRing)
{
    fill_ring("BC");
    EL_node *position = EL_insert_before(list, list->first, named('A').data());
    EXPECT_EQ(list->first, position);
    EXPECT_EQ(list->last->next, position);
    EXPECT_EQ(text(), "ABC ring");
}

TEST_F(ElementList, InsertsByIndex)
{
    fill("BD");
    EXPECT_EQ(EL_insert_before_index(list, 0, named('A').data()), list->first);
    EL_node *position = EL_insert_after_index(list, 1, named('C').data());
    EXPECT_EQ(position, at('C'));
    EXPECT_EQ(EL_insert_after_index(list, 3, named('E').data()), list->last);
    EXPECT_EQ(text(), "ABCDE");
}

TEST_F(ElementList, AnIndexThatIsNoneInsertsNothing)
{
    fill("AB");
    for (int32_t index : {-1, 2, 1000, INT32_MIN}) {
        EXPECT_EQ(EL_insert_before_index(list, index, named('X').data()), nullptr);
        EXPECT_EQ(EL_insert_after_index(list, index, named('X').data()), nullptr);
    }
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(text(), "AB");
}

/* ---- positions and indices ---- */

TEST_F(ElementList, AdvanceFollowsLinksAndEndsAtANullOne)
{
    fill("ABC");
    EXPECT_EQ(EL_advance(list, at('B'), 0), at('B'));
    EXPECT_EQ(EL_advance(list, list->first, 2), list->last);
    EXPECT_EQ(EL_advance(list, list->last, -2), list->first);
    EXPECT_EQ(EL_advance(list, list->first, 5), nullptr);
    EXPECT_EQ(EL_advance(list, list->first, -1), nullptr);
    EXPECT_EQ(EL_advance(list, list->first, INT32_MIN), nullptr);
    EXPECT_EQ(EL_advance(nullptr, list->first, 1), at('B'));
}

TEST_F(ElementList, AdvanceWalksAroundARing)
{
    fill_ring("ABC");
    EXPECT_EQ(EL_advance(list, list->first, 4), at('B'));
    EXPECT_EQ(EL_advance(list, list->first, -1), list->last);
}

TEST_F(ElementList, IndexAndPositionAreEachOthersInverse)
{
    fill("ABC");
    for (int32_t index = 0; index < 3; ++index) {
        EL_node *position = EL_get_pos_at_index(list, index);
        EXPECT_EQ(EL_get_index(list, position), index);
        EXPECT_EQ(EL_get_item_at_index(list, index), EL_element(position));
    }
}

TEST_F(ElementList, AnIndexPastTheEndHasNoPositionOnARingEither)
{
    fill_ring("ABC");
    for (int32_t index : {3, 4, -1}) {
        EXPECT_EQ(EL_get_pos_at_index(list, index), nullptr);
        EXPECT_EQ(EL_get_item_at_index(list, index), nullptr);
    }
    EL_make_empty(list);
    EXPECT_EQ(EL_get_pos_at_index(list, 0), nullptr);
}

/* ---- removal and replacement ---- */

TEST_F(ElementList, RemovesFromEveryPlaceOfAnOpenListAndOfARing)
{
    for (const char *ring : {"", " ring"}) {
        EL_make_empty(list);
        fill("ABCD");
        if (*ring)
            EL_set_closed(list);
        EL_remove_item(list, list->first);
        EXPECT_EQ(text(), std::string("BCD") + ring);
        EL_remove_item(list, at('C'));
        EXPECT_EQ(text(), std::string("BD") + ring);
        EL_remove_item(list, list->last);
        EXPECT_EQ(text(), std::string("B") + ring);
        EL_remove_item(list, list->first);
        EXPECT_EQ(text(), ring);
    }
}

TEST_F(ElementList, RemovingTheOnlyNodeOfARingKeepsItClosed)
{
    fill_ring("A");
    EL_remove_item(list, list->first);
    EXPECT_EQ(list->first, nullptr);
    EXPECT_EQ(list->last, nullptr);
    EXPECT_EQ(list->closed, 1);
    EL_append_after_last(list, named('B').data());
    EXPECT_EQ(text(), "B ring");
    EXPECT_EQ(list->first->next, list->first);
}

TEST_F(ElementList, RemovesByIndex)
{
    fill("ABC");
    EXPECT_EQ(EL_remove_at_index(list, 1), 1);
    EXPECT_EQ(text(), "AC");
    EXPECT_EQ(EL_remove_at_index(list, 2), 0);
    EXPECT_EQ(EL_remove_at_index(list, -1), 0);
    EXPECT_EQ(text(), "AC");
}

TEST_F(ElementList, RemovesRangesAcrossTheSeamToo)
{
    fill("ABCDE");
    EL_remove_items_inbetween(list, at('B'), at('C'));
    EXPECT_EQ(text(), "ADE");
    EL_set_closed(list);
    EL_remove_items_inbetween(list, at('E'), at('A'));
    EXPECT_EQ(text(), "D ring");
    EL_remove_items_inbetween(list, at('D'), at('D'));
    EXPECT_EQ(text(), " ring");
}

TEST_F(ElementList, ReplaceCopiesAsManyBytesAsItIsTold)
{
    fill("AB");
    EL_replace_item(list->first, named('X').data(), sizeof(element));
    EXPECT_EQ(text(), "XB");
    EL_replace_item(list->first, named('Y').data(), 2);
    EXPECT_EQ(std::memcmp(EL_element(list->first), "YYXXXXXXXXXX", 12), 0);
    EL_replace_item(list->first, named('X').data(), 2);
    EL_replace_item(list->first, EL_element(list->first), sizeof(element));
    EXPECT_EQ(text(), "XB");
}

TEST_F(ElementList, ReplacesARangeByTheElementsOfAnotherList)
{
    fill("ABCD");
    EL_list *source = list_of("XYZ");
    host.take_log();
    EL_replace_items_inbetween(list, at('B'), at('C'), source, sizeof(element));
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(text(), "AXYD");
    EXPECT_EQ(text(source), "XYZ");
    EL_release(&source);
}

TEST_F(ElementList, ARangeMayBeReplacedByItsOwnList)
{
    fill("ABCD");
    EL_replace_items_inbetween(list, at('A'), at('D'), list, sizeof(element));
    EXPECT_EQ(text(), "ABCD");
    EL_replace_items_inbetween(list, at('B'), at('C'), list, sizeof(element));
    EXPECT_EQ(text(), "AAAD");
}

TEST_F(ElementList, ASourceThatRunsOutRaisesAfterReplacingWhatItHas)
{
    for (auto mode : {recording_host::raise_mode::throws, recording_host::raise_mode::returns}) {
        EL_make_empty(list);
        fill("ABCD");
        EL_list *source = list_of("XY");
        host.set_raise_mode(mode);
        host.take_log();
        const auto replace = [&] { EL_replace_items_inbetween(list, at('B'), at('D'), source, sizeof(element)); };
        if (mode == recording_host::raise_mode::throws)
            expect_raise("egenlist", 557, 4297, replace);
        else
            replace();
        EXPECT_EQ(host.take_log(), log{"raise egenlist 557 4297"});
        EXPECT_EQ(text(), "AXYD");
        EL_release(&source);
    }
}

TEST_F(ElementList, AnEmptySourceRaisesAtOnce)
{
    fill("A");
    EL_list *source = EL_create(sizeof(element));
    expect_raise("egenlist", 557, 4297,
                 [&] { EL_replace_items_inbetween(list, at('A'), at('A'), source, sizeof(element)); });
    EXPECT_EQ(text(), "A");
    EL_release(&source);
}

/* ---- copying, joining, reordering ---- */

TEST_F(ElementList, TotalCopyCopiesEveryState)
{
    for (const char *names : {"", "A", "ABC"}) {
        for (bool ring : {false, true}) {
            EL_make_empty(list);
            fill(names);
            if (ring)
                EL_set_closed(list);
            host.take_log();
            EL_list *copy = EL_total_copy(list);
            EXPECT_EQ(host.take_log().size(), 1 + std::strlen(names));
            EXPECT_EQ(text(copy), std::string(names) + (ring ? " ring" : ""));
            EXPECT_EQ(text(), text(copy));
            EXPECT_EQ(copy->element_size, sizeof(element));
            EL_release(&copy);
        }
    }
}

/* Joining rings leaves ends that are not linked (AppendListLooksAtNoClosedFlag). */
TEST_F(ElementList, TotalCopyLinksTheEndsOfJoinedRings)
{
    fill_ring("A");
    EL_list *source = list_of("B");
    EL_append_list(list, &source);
    EL_list *copy = EL_total_copy(list);
    EXPECT_EQ(text(), "AB ring");
    EXPECT_EQ(text(copy), "AB ring");
    EL_release(&copy);
}

TEST_F(ElementList, CopyOfARangeIsAnOpenList)
{
    fill("ABCD");
    EL_list *copy = EL_total_copy_inbetween(list, at('B'), at('C'));
    EXPECT_EQ(text(copy), "BC");
    EL_release(&copy);
    EL_set_closed(list);
    copy = EL_total_copy_inbetween(list, at('D'), at('A'));
    EXPECT_EQ(text(copy), "DA");
    EXPECT_EQ(text(), "ABCD ring");
    EL_release(&copy);
}

TEST_F(ElementList, AppendListMovesTheNodesAndFreesTheSourceHead)
{
    for (const char *target : {"", "AB"}) {
        for (const char *moved : {"", "CD"}) {
            EL_make_empty(list);
            fill(target);
            EL_list *source = list_of(moved);
            std::string head = host.name_of(source);
            host.take_log();
            EL_append_list(list, &source);
            EXPECT_EQ(source, nullptr);
            EXPECT_EQ(host.take_log(), log{"dealloc " + head + " " + head_bytes});
            EXPECT_EQ(text(), std::string(target) + moved);
        }
    }
}

/* The flags and the ends are left as they are found: joining rings is the caller's mistake, and nothing hides it. */
TEST_F(ElementList, AppendListLooksAtNoClosedFlag)
{
    fill_ring("A");
    EL_list *source = list_of("B");
    EL_append_list(list, &source);
    EXPECT_EQ(list->closed, 1);
    EXPECT_EQ(list->last->next, nullptr);
    EXPECT_EQ(list->first->prev, list->first);
    EL_reset_closed(list);
    EXPECT_EQ(text(), "AB");
}

TEST_F(ElementList, ReverseKeepsPositionsAndTheRing)
{
    fill("ABC");
    EL_node *a = at('A');
    EL_reverse(list);
    EXPECT_EQ(text(), "CBA");
    EXPECT_EQ(list->last, a);
    EL_set_closed(list);
    EL_reverse(list);
    EXPECT_EQ(text(), "ABC ring");
    EXPECT_EQ(delivered(EL_all_items(list)), "ABC");
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(ElementList, ReverseOfAnEmptyListAndOfASingleNodeChangesNothing)
{
    EL_reverse(list);
    EXPECT_EQ(text(), "");
    fill_ring("A");
    EL_reverse(list);
    EXPECT_EQ(text(), "A ring");
}

/* ---- rings ---- */

TEST_F(ElementList, RollMakesThePositionTheFirstOfARing)
{
    fill_ring("ABC");
    EL_roll(list, at('C'));
    EXPECT_EQ(text(), "CAB ring");
    EL_roll(list, list->first);
    EXPECT_EQ(text(), "CAB ring");
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(ElementList, RollOfAnOpenListChangesNothing)
{
    fill("ABC");
    EL_roll(list, at('B'));
    EXPECT_EQ(text(), "ABC");
}

TEST_F(ElementList, RollToTheFirstOfAnOpenListRaises)
{
    fill("ABC");
    expect_raise("egenlist", 989, 4297, [&] { EL_roll(list, list->first); });
    EXPECT_EQ(host.take_log(), log{"raise egenlist 989 4297"});
    host.set_raise_mode(recording_host::raise_mode::returns);
    EL_roll(list, list->first);
    EXPECT_EQ(host.take_log(), log{"raise egenlist 989 4297"});
    EXPECT_EQ(text(), "ABC");
}

TEST_F(ElementList, WhereTheRaiseReturnsRollGoesOn)
{
    fill_ring("AB");
    EL_node *a = list->first;
    EL_node lone = {nullptr, nullptr};
    host.set_raise_mode(recording_host::raise_mode::returns);
    EL_roll(list, &lone);
    EXPECT_EQ(host.take_log(), log{"raise egenlist 989 4297"});
    EXPECT_EQ(list->first, &lone);
    EXPECT_EQ(list->last, nullptr);
    EL_roll(list, a);
    EXPECT_EQ(text(), "AB ring");
}

TEST_F(ElementList, CuttingARingOpenDuplicatesTheElementAtTheCut)
{
    fill_ring("ABC");
    EL_node *position = at('B');
    EXPECT_EQ(EL_make_open_at_position(list, position), position);
    EXPECT_EQ(host.take_log(), log{"alloc " + node_bytes + " = " + host.name_of(list->last)});
    EXPECT_EQ(list->first, position);
    EXPECT_EQ(text(), "BCAB");
}

TEST_F(ElementList, CuttingARingOpenAtItsFirstOrOnlyNode)
{
    fill_ring("ABC");
    EL_make_open_at_position(list, list->first);
    EXPECT_EQ(text(), "ABCA");
    EL_make_empty(list);
    fill_ring("A");
    EL_make_open_at_position(list, list->first);
    EXPECT_EQ(text(), "AA");
}

TEST_F(ElementList, CuttingAnOpenListDropsTheNodesAheadWithoutFreeingThem)
{
    fill("ABC");
    EL_node *lost = at('A');
    EL_make_open_at_position(list, at('C'));
    EXPECT_EQ(list->count, 4);
    EXPECT_EQ(list->first->next, nullptr);
    EXPECT_TRUE(host.is_live(lost));
    for (EL_node *node = lost; node;) {
        EL_node *next = node->next;
        MM_dealloc_item(node, sizeof(EL_node) + sizeof(element));
        node = next;
    }
    list->last = list->first;
    list->count = 1;
}

TEST_F(ElementList, SplittingDuplicatesTheElementAtTheSplit)
{
    fill("ABCD");
    EL_node *position = at('C');
    EL_list *end_part = EL_remove_and_get_end_part(list, position);
    EXPECT_EQ(host.take_log(), (log{"alloc " + node_bytes + " = " + host.name_of(list->last),
                                    "alloc " + head_bytes + " = " + host.name_of(end_part)}));
    EXPECT_EQ(text(), "ABC");
    EXPECT_EQ(text(end_part), "CD");
    EXPECT_EQ(end_part->first, position);
    EXPECT_EQ(end_part->element_size, sizeof(element));
    EL_release(&end_part);
}

TEST_F(ElementList, SplittingAtEitherEnd)
{
    fill("ABC");
    EL_list *end_part = EL_remove_and_get_end_part(list, list->last);
    EXPECT_EQ(text(), "ABC");
    EXPECT_EQ(text(end_part), "C");
    EL_release(&end_part);
    end_part = EL_remove_and_get_end_part(list, list->first);
    EXPECT_EQ(text(), "A");
    EXPECT_EQ(text(end_part), "ABC");
    EL_release(&end_part);
}

TEST_F(ElementList, SplittingARingOpensBothParts)
{
    fill_ring("ABCD");
    EL_list *end_part = EL_remove_and_get_end_part(list, at('C'));
    EXPECT_EQ(text(), "ABC");
    EXPECT_EQ(text(end_part), "CD");
    EL_release(&end_part);
    EL_set_closed(list);
    end_part = EL_remove_and_get_end_part(list, list->first);
    EXPECT_EQ(text(), "A");
    EXPECT_EQ(text(end_part), "ABC");
    EL_release(&end_part);
}

/* ---- iterators ---- */

int accept_b_and_d(void *bytes)
{
    asked += name_of_element(bytes);
    stored_when_asked += stored ? name_of_element(stored) : '-';
    return asked.back() == 'B' ? -1 : asked.back() == 'D' ? 256 : 0;
}

void expect_fields(const EL_iterator &iterator, EL_node *next, EL_node *end, int32_t forward, EL_test test)
{
    EXPECT_EQ(iterator.current, nullptr);
    EXPECT_EQ(iterator.next, next);
    EXPECT_EQ(iterator.end, end);
    EXPECT_EQ(iterator.forward, forward);
    EXPECT_EQ(iterator.element_size, sizeof(element));
    EXPECT_EQ(iterator.test, test);
}

TEST_F(ElementList, ConstructorsSetEveryField)
{
    fill("ABC");
    expect_fields(EL_all_items(list), list->first, list->last, 1, nullptr);
    expect_fields(EL_all_items_reversed(list), list->last, list->first, 0, nullptr);
    expect_fields(EL_all_items_inbetween(list, at('B'), at('C'), 1), at('B'), at('C'), 1, nullptr);
    expect_fields(EL_tested_items_inbetween(list, at('C'), at('B'), 0, accept_b_and_d), at('C'), at('B'), 0,
                  accept_b_and_d);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(ElementList, IterationIsInclusiveInBothDirections)
{
    fill("ABCD");
    EXPECT_EQ(delivered(EL_all_items(list)), "ABCD");
    EXPECT_EQ(delivered(EL_all_items_reversed(list)), "DCBA");
    EXPECT_EQ(delivered(EL_all_items_inbetween(list, at('B'), at('C'), -7)), "BC");
    EXPECT_EQ(delivered(EL_all_items_inbetween(list, at('C'), at('B'), 0)), "CB");
    EXPECT_EQ(delivered(EL_all_items_inbetween(list, at('C'), at('B'), 1)), "CD");
}

TEST_F(ElementList, RangesOfARingMayCrossTheSeam)
{
    fill_ring("ABCD");
    EXPECT_EQ(delivered(EL_all_items_inbetween(list, at('C'), at('B'), 1)), "CDAB");
    EXPECT_EQ(delivered(EL_all_items_inbetween(list, at('B'), at('C'), 0)), "BADC");
    EXPECT_EQ(delivered(EL_all_items(list)), "ABCD");
    EXPECT_EQ(delivered(EL_all_items_reversed(list)), "DCBA");
}

TEST_F(ElementList, AnExhaustedIteratorLeavesTheCallersVariable)
{
    fill("A");
    EL_iterator iterator = EL_all_items(list);
    EL_node marker, *position = nullptr;
    EXPECT_EQ(EL_next_position(&iterator, &position), 1);
    EXPECT_EQ(position, list->first);
    EXPECT_EQ(iterator.current, list->first);
    position = &marker;
    void *bytes = &marker;
    element buffer = named('-');
    EXPECT_EQ(EL_next_position(&iterator, &position), 0);
    EXPECT_EQ(EL_next_item(&iterator, &bytes), 0);
    EXPECT_EQ(EL_next_item_copy(&iterator, &buffer), 0);
    EXPECT_EQ(position, &marker);
    EXPECT_EQ(bytes, &marker);
    EXPECT_EQ(buffer, named('-'));
}

TEST_F(ElementList, NextItemAndNextPositionStoreBeforeTheTestIsAsked)
{
    fill("ABC");
    EL_iterator iterator = EL_tested_items_inbetween(list, list->first, list->last, 1, accept_b_and_d);
    EXPECT_EQ(EL_next_item(&iterator, &stored), 1);
    EXPECT_EQ(stored_when_asked, "AB");
    EXPECT_EQ(EL_next_item(&iterator, &stored), 0);
    EXPECT_EQ(stored, EL_element(list->last));
    iterator = EL_tested_items_inbetween(list, at('C'), at('C'), 1, accept_b_and_d);
    EL_node *position = nullptr;
    EXPECT_EQ(EL_next_position(&iterator, &position), 0);
    EXPECT_EQ(position, list->last);
    EXPECT_EQ(asked, "ABCC");
}

TEST_F(ElementList, NextItemCopyCopiesOnlyWhatWasAccepted)
{
    fill("ABCDE");
    element buffer = named('-');
    EL_iterator iterator = EL_tested_items_inbetween(list, list->first, list->last, 1, accept_b_and_d);
    EXPECT_EQ(EL_next_item_copy(&iterator, &buffer), 1);
    EXPECT_EQ(buffer, named('B'));
    EXPECT_EQ(EL_next_item_copy(&iterator, &buffer), 1);
    EXPECT_EQ(buffer, named('D'));
    EXPECT_EQ(EL_next_item_copy(&iterator, &buffer), 0);
    EXPECT_EQ(buffer, named('D'));
    EXPECT_EQ(iterator.current, list->last);
}

TEST_F(ElementList, WritingThroughAnElementPointerChangesTheStoredElement)
{
    fill("ABC");
    element changed = named('X');
    std::memcpy(EL_get_item_at_index(list, 1), changed.data(), sizeof changed);
    EXPECT_EQ(text(), "AXC");
}

TEST_F(ElementList, TheDeliveredNodeMayBeRemovedOnARingToo)
{
    fill_ring("ABCDE");
    EL_iterator iterator = EL_all_items_inbetween(list, at('D'), at('B'), 1);
    std::string removed;
    for (EL_node *position; EL_next_position(&iterator, &position);) {
        removed += name_of_element(EL_element(position));
        EL_remove_item(list, position);
    }
    EXPECT_EQ(removed, "DEAB");
    EXPECT_EQ(text(), "C ring");
}

} // namespace
