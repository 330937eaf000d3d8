/* SPDX-License-Identifier: MIT */
#include <mova/lists/simple_list.h>
#include <mova/lists/internal/invariants.h>

#include <tests/support/recording_host_test_case.h>

#include <array>
#include <string>

namespace {

using mova::broken_invariant;
using mova::test::expect_raise;
using mova::test::log;
using mova::test::recording_host;

/* A caller's record: the links, and what is the caller's own. */
struct record {
    record *prev, *next;
    char name;
};

record *record_of(void *item)
{
    return static_cast<record *>(item);
}

const std::string head_bytes = std::to_string(sizeof(SL_list));

/* What the callbacks below were handed, in order, and the caller's variable as it stood each time. */
std::string handed;
std::string stored_when_asked;
void *stored;

class SimpleList : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        handed = stored_when_asked = "";
        stored = nullptr;
        make_records();
        list = SL_create();
        host.take_log();
    }

    void TearDown() override
    {
        if (list)
            drop(&list);
        recording_host_test_case::TearDown();
    }

    /* Items A to Z. On no list, and with links that no list may take for its own. */
    void make_records()
    {
        for (char name = 'A'; name <= 'Z'; ++name)
            *at(name) = {at(name), at(name), name};
    }

    record *at(char name) { return &records[static_cast<std::size_t>(name - 'A')]; }

    static void drop(SL_list **dropped)
    {
        SL_make_empty(*dropped, [](void **) {});
        SL_release(dropped);
    }

    void fill(SL_list *filled, const std::string &names)
    {
        for (char name : names)
            SL_append_after_last(filled, at(name));
    }

    void fill(const std::string &names) { fill(list, names); }

    void fill_ring(const std::string &names)
    {
        fill(names);
        SL_set_closed(list);
    }

    /* Begins afresh with this list, open or closed. */
    void refill(const std::string &names, bool ring)
    {
        SL_make_empty(list, [](void **) {});
        make_records();
        if (ring)
            SL_set_closed(list);
        fill(names);
    }

    /* "ABC", or "ABC ring"; with the invariants verified. */
    static std::string text(const SL_list *shown)
    {
        EXPECT_EQ(broken_invariant(*shown), 0);
        std::string names;
        const record *item = record_of(shown->first);
        for (int32_t i = 0; i < shown->count; ++i, item = item->next)
            names += item->name;
        return names + (shown->closed ? " ring" : "");
    }

    std::string text() { return text(list); }

    static std::string delivered(SL_iterator iterator)
    {
        std::string names;
        for (void *item; SL_next_item(&iterator, &item);)
            names += record_of(item)->name;
        return names;
    }

    void expect_unlinked(char name)
    {
        EXPECT_EQ(at(name)->prev, nullptr) << name;
        EXPECT_EQ(at(name)->next, nullptr) << name;
    }

    std::array<record, 26> records;
    SL_list *list = nullptr;
};

/* Marks the item, as freeing it would, and clears the variable. */
void free_record(void **item)
{
    handed += record_of(*item)->name;
    *record_of(*item) = {nullptr, nullptr, '-'};
    *item = nullptr;
}

/* ---- creation and disposal ---- */

TEST_F(SimpleList, NewListIsEmptyAndOpen)
{
    EXPECT_EQ(list->first, nullptr);
    EXPECT_EQ(list->last, nullptr);
    EXPECT_EQ(list->count, 0);
    EXPECT_EQ(list->closed, 0);
    SL_list *other = SL_create();
    EXPECT_EQ(host.take_log(), log{"alloc " + head_bytes + " = #2"});
    SL_release(&other);
}

TEST_F(SimpleList, ReleaseFreesTheHeadOfAnEmptyList)
{
    for (bool ring : {false, true}) {
        SL_list *made = SL_create();
        if (ring)
            SL_set_closed(made);
        std::string head = host.name_of(made);
        host.take_log();
        SL_release(&made);
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(host.take_log(), log{"dealloc " + head + " " + head_bytes});
    }
}

TEST_F(SimpleList, ReleaseOfAListWithItemsRaises)
{
    fill("AB");
    expect_raise("sgenlist", 75, 4297, [&] { SL_release(&list); });
    EXPECT_EQ(host.take_log(), log{"raise sgenlist 75 4297"});
    EXPECT_EQ(text(), "AB");
}

TEST_F(SimpleList, WhereTheRaiseReturnsReleaseFreesTheHeadAndLeavesTheItemsLinked)
{
    fill("AB");
    host.set_raise_mode(recording_host::raise_mode::returns);
    SL_release(&list);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(host.take_log(), (log{"raise sgenlist 75 4297", "dealloc #1 " + head_bytes}));
    EXPECT_EQ(at('A')->next, at('B'));
    EXPECT_EQ(at('B')->prev, at('A'));
}

TEST_F(SimpleList, TotalReleaseHandsOverEveryItemFromFirstToLastAndFreesTheHead)
{
    for (bool ring : {false, true}) {
        SL_list *made = SL_create();
        fill(made, "CAB");
        if (ring)
            SL_set_closed(made);
        std::string head = host.name_of(made);
        host.take_log();
        handed = "";
        SL_total_release(&made, free_record);
        EXPECT_EQ(handed, "CAB");
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(host.take_log(), log{"dealloc " + head + " " + head_bytes});
        make_records();
    }
}

TEST_F(SimpleList, MakeEmptyHandsOverEveryItemAndLeavesAnEmptyOpenList)
{
    fill_ring("CAB");
    SL_make_empty(list, free_record);
    EXPECT_EQ(handed, "CAB");
    EXPECT_EQ(text(), "");
    EXPECT_EQ(host.take_log(), log{});
    fill("D");
    EXPECT_EQ(text(), "D");
}

TEST_F(SimpleList, AnEmptyListIsEmptiedAndReleasedWithoutACallback)
{
    SL_set_closed(list);
    SL_make_empty(list, nullptr);
    EXPECT_EQ(text(), "");
    SL_total_release(&list, nullptr);
    EXPECT_EQ(list, nullptr);
}

TEST_F(SimpleList, TheCallbackGetsTheAddressOfAVariableThatHoldsTheItem)
{
    static record *expected;
    static const SL_list *emptied;
    fill("A");
    expected = at('A');
    emptied = list;
    SL_make_empty(list, [](void **item) {
        handed += record_of(*item)->name;
        EXPECT_EQ(*item, expected);
        EXPECT_NE(static_cast<void *>(item), expected);
        EXPECT_NE(item, &emptied->first);
        EXPECT_NE(item, &emptied->last);
        *item = nullptr;
    });
    EXPECT_EQ(handed, "A");
}

TEST_F(SimpleList, TheCallbackFindsTheRingOpened)
{
    fill_ring("AB");
    SL_make_empty(list, [](void **item) {
        handed += record_of(*item)->prev ? record_of(*item)->prev->name : '-';
        handed += record_of(*item)->next ? record_of(*item)->next->name : '-';
    });
    EXPECT_EQ(handed, "-BA-");
}

/* ---- copying and measuring ---- */

/* The copy of A is N, of B is O, and so on. */
void *thirteen_further(void *item)
{
    handed += record_of(item)->name;
    return record_of(item) + 13;
}

TEST_F(SimpleList, TotalCopyLinksWhatTheCallbackReturns)
{
    for (const char *names : {"", "A", "CAB"}) {
        for (bool ring : {false, true}) {
            refill(names, ring);
            host.take_log();
            handed = "";
            SL_list *copy = SL_total_copy(list, thirteen_further);
            EXPECT_EQ(host.take_log(), log{"alloc " + head_bytes + " = " + host.name_of(copy)});
            EXPECT_EQ(handed, names);
            std::string copied = names;
            for (char &name : copied)
                name = static_cast<char>(name + 13);
            EXPECT_EQ(text(copy), copied + (ring ? " ring" : ""));
            EXPECT_EQ(text(), names + std::string(ring ? " ring" : ""));
            drop(&copy);
        }
    }
}

/* The copies carry the links of what they were copied from; the list writes its own over them. */
TEST_F(SimpleList, CopiesMayCarryTheLinksOfTheirOriginals)
{
    fill_ring("AB");
    SL_list *copy = SL_total_copy(list, [](void *item) -> void * {
        record *made = record_of(item) + 13;
        *made = *record_of(item);
        return made;
    });
    EXPECT_EQ(text(copy), "AB ring");
    EXPECT_EQ(copy->first, at('N'));
    EXPECT_EQ(text(), "AB ring");
    drop(&copy);
}

int32_t ten_more_for_each_letter(void *item)
{
    handed += record_of(item)->name;
    return 10 * (record_of(item)->name - 'A' + 1);
}

TEST_F(SimpleList, CheckReportsTheHeadAndEveryItemOnce)
{
    EXPECT_EQ(SL_check(list, ten_more_for_each_letter), 16);
    EXPECT_EQ(SL_check(list, nullptr), 16);
    for (bool ring : {false, true}) {
        refill("CAB", ring);
        handed = "";
        EXPECT_EQ(SL_check(list, ten_more_for_each_letter), 16 + 30 + 10 + 20);
        EXPECT_EQ(handed, "CAB");
        refill("A", ring);
        EXPECT_EQ(SL_check(list, ten_more_for_each_letter), 16 + 10);
    }
}

/* ---- open and closed ---- */

TEST_F(SimpleList, ClosingLinksTheEndsToEachOther)
{
    fill("AB");
    SL_set_closed(list);
    EXPECT_EQ(at('A')->prev, at('B'));
    EXPECT_EQ(at('B')->next, at('A'));
    EXPECT_EQ(list->closed, 1);
    SL_reset_closed(list);
    EXPECT_EQ(list->closed, 0);
    EXPECT_EQ(text(), "AB");
}

TEST_F(SimpleList, ClosingASingleItemLinksItToItself)
{
    fill_ring("A");
    EXPECT_EQ(at('A')->prev, at('A'));
    EXPECT_EQ(at('A')->next, at('A'));
    SL_reset_closed(list);
    expect_unlinked('A');
}

TEST_F(SimpleList, ClosingAnEmptyListSetsTheFlagAlone)
{
    SL_set_closed(list);
    EXPECT_EQ(text(), " ring");
    SL_reset_closed(list);
    EXPECT_EQ(text(), "");
}

/* ---- positions and indices ---- */

TEST_F(SimpleList, CountIsTheHeadsOwn)
{
    EXPECT_EQ(SL_count_items(list), 0);
    fill("ABC");
    EXPECT_EQ(SL_count_items(list), 3);
    list->count = 7;
    EXPECT_EQ(SL_count_items(list), 7);
    list->count = 3;
}

TEST_F(SimpleList, AdvanceFollowsLinksAndEndsAtANullOne)
{
    fill("ABC");
    EXPECT_EQ(SL_advance(list, at('B'), 0), at('B'));
    EXPECT_EQ(SL_advance(list, at('A'), 2), at('C'));
    EXPECT_EQ(SL_advance(list, at('C'), -2), at('A'));
    EXPECT_EQ(SL_advance(list, at('C'), 1), nullptr);
    EXPECT_EQ(SL_advance(list, at('A'), 3), nullptr);
    EXPECT_EQ(SL_advance(list, at('A'), INT32_MAX), nullptr);
    EXPECT_EQ(SL_advance(list, at('C'), -3), nullptr);
    EXPECT_EQ(SL_advance(list, at('C'), INT32_MIN), nullptr);
}

TEST_F(SimpleList, AdvanceWalksAroundARing)
{
    fill_ring("ABC");
    EXPECT_EQ(SL_advance(list, at('C'), 1), at('A'));
    EXPECT_EQ(SL_advance(list, at('A'), 7), at('B'));
    EXPECT_EQ(SL_advance(list, at('A'), -1), at('C'));
    EXPECT_EQ(SL_advance(list, at('A'), -7), at('C'));
}

TEST_F(SimpleList, IndexAndPositionAreEachOthersInverse)
{
    for (bool ring : {false, true}) {
        refill("CAB", ring);
        for (int32_t index = 0; index < 3; ++index)
            EXPECT_EQ(SL_get_index(list, SL_pos_at_index(list, index)), index);
        EXPECT_EQ(SL_pos_at_index(list, 0), at('C'));
        EXPECT_EQ(SL_pos_at_index(list, 2), at('B'));
    }
}

TEST_F(SimpleList, AnIndexPastTheEndHasNoPositionOnARingEither)
{
    for (bool ring : {false, true}) {
        refill("ABC", ring);
        for (int32_t index : {-1, 3, 4, INT32_MAX, INT32_MIN})
            EXPECT_EQ(SL_pos_at_index(list, index), nullptr) << index;
        refill("", ring);
        EXPECT_EQ(SL_pos_at_index(list, 0), nullptr);
        EXPECT_EQ(SL_pos_at_index(list, 1), nullptr);
    }
}

/* ---- insertion ---- */

TEST_F(SimpleList, InsertsAtEveryPlaceOfAnOpenListAndOfARing)
{
    for (bool ring : {false, true}) {
        refill("", ring);
        SL_insert_before_first(list, at('C'));
        EXPECT_EQ(text(), std::string("C") + (ring ? " ring" : ""));
        SL_insert_before_first(list, at('B'));
        SL_insert_before(list, at('B'), at('A'));
        SL_append_after_last(list, at('F'));
        SL_insert_after(list, at('F'), at('G'));
        SL_insert_before(list, at('F'), at('E'));
        SL_insert_after(list, at('C'), at('D'));
        EXPECT_EQ(text(), std::string("ABCDEFG") + (ring ? " ring" : ""));
    }
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SimpleList, TheFirstItemOfARingIsItsOwnNeighbour)
{
    for (auto insert : {SL_append_after_last, SL_insert_before_first}) {
        refill("", true);
        insert(list, at('A'));
        EXPECT_EQ(at('A')->prev, at('A'));
        EXPECT_EQ(at('A')->next, at('A'));
        EXPECT_EQ(text(), "A ring");
        refill("", false);
        insert(list, at('A'));
        expect_unlinked('A');
        EXPECT_EQ(text(), "A");
    }
}

TEST_F(SimpleList, InsertsByIndex)
{
    for (bool ring : {false, true}) {
        refill("BD", ring);
        EXPECT_EQ(SL_insert_before_index(list, 0, at('A')), 1);
        EXPECT_EQ(SL_insert_after_index(list, 1, at('C')), 1);
        EXPECT_EQ(SL_insert_before_index(list, 3, at('X')), 1);
        EXPECT_EQ(SL_insert_after_index(list, 4, at('E')), 1);
        EXPECT_EQ(text(), std::string("ABCXDE") + (ring ? " ring" : ""));
    }
}

TEST_F(SimpleList, AnIndexThatIsNoneInsertsNothing)
{
    for (const char *names : {"", "AB"}) {
        refill(names, false);
        for (int32_t index : {-1, 2, 1000, INT32_MIN}) {
            EXPECT_EQ(SL_insert_before_index(list, index, at('X')), 0);
            EXPECT_EQ(SL_insert_after_index(list, index, at('X')), 0);
        }
        EXPECT_EQ(text(), names);
        EXPECT_EQ(at('X')->next, at('X')) << "the item was touched";
    }
}

TEST_F(SimpleList, InsertUniqueAppendsWhatIsNotThereYet)
{
    for (char name : std::string("ABACBC"))
        SL_insert_unique(list, at(name));
    EXPECT_EQ(text(), "ABC");
}

TEST_F(SimpleList, InsertUniqueFindsAnItemOfARing)
{
    fill_ring("ABC");
    SL_insert_unique(list, at('C'));
    EXPECT_EQ(text(), "ABC ring");
    refill("", true);
    SL_insert_unique(list, at('A'));
    EXPECT_EQ(text(), "A ring") << "an empty ring is searched to its end";
}

/* ---- removal ---- */

TEST_F(SimpleList, RemovesFromEveryPlaceOfAnOpenListAndOfARing)
{
    for (bool ring : {false, true}) {
        const std::string suffix = ring ? " ring" : "";
        refill("ABCD", ring);
        SL_remove_item(list, at('A'));
        EXPECT_EQ(text(), "BCD" + suffix);
        SL_remove_item(list, at('C'));
        EXPECT_EQ(text(), "BD" + suffix);
        SL_remove_item(list, at('D'));
        EXPECT_EQ(text(), "B" + suffix);
        SL_remove_item(list, at('B'));
        EXPECT_EQ(text(), suffix);
        for (char name : std::string("ABCD"))
            expect_unlinked(name);
    }
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SimpleList, RemovingTheOnlyItemOfARingKeepsItClosed)
{
    fill_ring("A");
    SL_remove_item(list, at('A'));
    EXPECT_EQ(list->first, nullptr);
    EXPECT_EQ(list->last, nullptr);
    EXPECT_EQ(list->count, 0);
    EXPECT_EQ(list->closed, 1);
    fill("B");
    EXPECT_EQ(text(), "B ring");
}

TEST_F(SimpleList, RemovesByIndex)
{
    fill("ABC");
    EXPECT_EQ(SL_remove_at_index(list, 1), 1);
    expect_unlinked('B');
    EXPECT_EQ(text(), "AC");
    EXPECT_EQ(SL_remove_at_index(list, 2), 0);
    EXPECT_EQ(SL_remove_at_index(list, -1), 0);
    EXPECT_EQ(text(), "AC");
}

TEST_F(SimpleList, ARemovedItemMayGoOnAnotherList)
{
    SL_list *other = SL_create();
    fill("AB");
    SL_remove_item(list, at('A'));
    fill(other, "A");
    EXPECT_EQ(text(), "B");
    EXPECT_EQ(text(other), "A");
    drop(&other);
}

/* ---- reordering and joining ---- */

TEST_F(SimpleList, ReverseKeepsTheRing)
{
    for (bool ring : {false, true}) {
        for (std::string names : {"", "A", "AB", "ABC"}) {
            refill(names, ring);
            SL_reverse(list);
            EXPECT_EQ(text(), std::string(names.rbegin(), names.rend()) + (ring ? " ring" : ""));
        }
        EXPECT_EQ(list->first, at('C'));
        EXPECT_EQ(list->last, at('A'));
        EXPECT_EQ(delivered(SL_all_items_reversed(list)), "ABC");
    }
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SimpleList, AppendListMovesTheItemsAndFreesTheOtherHead)
{
    for (const char *target : {"", "AB"}) {
        for (const char *moved : {"", "CD"}) {
            refill(target, false);
            SL_list *other = SL_create();
            fill(other, moved);
            std::string head = host.name_of(other);
            host.take_log();
            SL_append_list(list, &other);
            EXPECT_EQ(other, nullptr);
            EXPECT_EQ(host.take_log(), log{"dealloc " + head + " " + head_bytes});
            EXPECT_EQ(text(), std::string(target) + moved);
        }
    }
}

/* The flags and the ends are left as they are found: joining rings is the caller's mistake, and nothing hides it. */
TEST_F(SimpleList, AppendListLooksAtNoClosedFlag)
{
    fill_ring("A");
    SL_list *other = SL_create();
    fill(other, "B");
    SL_append_list(list, &other);
    EXPECT_EQ(list->closed, 1);
    EXPECT_EQ(at('B')->next, nullptr);
    EXPECT_EQ(at('A')->prev, at('A'));
    other = SL_create();
    fill(other, "C");
    SL_set_closed(other);
    SL_reset_closed(list);
    SL_append_list(list, &other);
    EXPECT_EQ(list->closed, 0);
    EXPECT_EQ(at('C')->next, at('C'));
    SL_reset_closed(list);
    EXPECT_EQ(text(), "ABC");
}

TEST_F(SimpleList, RollMakesTheItemTheFirstOfARing)
{
    fill_ring("ABC");
    SL_roll(list, at('C'));
    EXPECT_EQ(text(), "CAB ring");
    SL_roll(list, at('C'));
    EXPECT_EQ(text(), "CAB ring");
    SL_roll(list, at('A'));
    EXPECT_EQ(text(), "ABC ring");
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SimpleList, RollOfAnOpenListChangesNothingAndRaisesNothing)
{
    fill("ABC");
    for (char name : std::string("ABC"))
        SL_roll(list, at(name));
    EXPECT_EQ(text(), "ABC");
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SimpleList, RollToAnItemThatIsOnNoRingRaises)
{
    fill_ring("AB");
    *at('X') = {nullptr, nullptr, 'X'};
    expect_raise("sgenlist", 743, 4297, [&] { SL_roll(list, at('X')); });
    EXPECT_EQ(host.take_log(), log{"raise sgenlist 743 4297"});
    EXPECT_EQ(text(), "AB ring");
}

TEST_F(SimpleList, WhereTheRaiseReturnsRollGoesOn)
{
    fill_ring("AB");
    *at('X') = {nullptr, nullptr, 'X'};
    host.set_raise_mode(recording_host::raise_mode::returns);
    SL_roll(list, at('X'));
    EXPECT_EQ(host.take_log(), log{"raise sgenlist 743 4297"});
    EXPECT_EQ(list->first, at('X'));
    EXPECT_EQ(list->last, nullptr);
    SL_roll(list, at('A'));
    EXPECT_EQ(text(), "AB ring");
}

/* ---- iterators ---- */

int accept_b_and_d(void *item)
{
    handed += record_of(item)->name;
    stored_when_asked += stored ? record_of(stored)->name : '-';
    return handed.back() == 'B' ? -1 : handed.back() == 'D' ? 256 : 0;
}

void expect_fields(const SL_iterator &iterator, void *upcoming, void *end, int32_t forward, SL_test test)
{
    EXPECT_EQ(iterator.current, nullptr);
    EXPECT_EQ(iterator.upcoming, upcoming);
    EXPECT_EQ(iterator.end, end);
    EXPECT_EQ(iterator.forward, forward);
    EXPECT_EQ(iterator.test, test);
}

TEST_F(SimpleList, ConstructorsSetEveryField)
{
    fill("ABC");
    void *a = at('A'), *b = at('B'), *c = at('C');
    expect_fields(SL_empty_iter(), nullptr, nullptr, 1, nullptr);
    expect_fields(SL_all_items(list), a, c, 1, nullptr);
    expect_fields(SL_all_items_reversed(list), c, a, 0, nullptr);
    expect_fields(SL_all_items_inbetween(list, b, c, 1), b, c, 1, nullptr);
    expect_fields(SL_all_items_inbetween(nullptr, c, b, 0), c, b, 0, nullptr);
    expect_fields(SL_tested_items(list, accept_b_and_d), a, c, 1, accept_b_and_d);
    expect_fields(SL_tested_items_reversed(list, accept_b_and_d), c, a, 0, accept_b_and_d);
    expect_fields(SL_tested_items_inbetween(nullptr, c, b, 0, accept_b_and_d), c, b, 0, accept_b_and_d);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SimpleList, AnEmptyIteratorAndAnEmptyListDeliverNothing)
{
    EXPECT_EQ(delivered(SL_empty_iter()), "");
    for (bool ring : {false, true}) {
        refill("", ring);
        EXPECT_EQ(delivered(SL_all_items(list)), "");
        EXPECT_EQ(delivered(SL_all_items_reversed(list)), "");
    }
}

TEST_F(SimpleList, IterationIsInclusiveInBothDirections)
{
    fill("ABCD");
    EXPECT_EQ(delivered(SL_all_items(list)), "ABCD");
    EXPECT_EQ(delivered(SL_all_items_reversed(list)), "DCBA");
    EXPECT_EQ(delivered(SL_all_items_inbetween(list, at('B'), at('C'), -7)), "BC");
    EXPECT_EQ(delivered(SL_all_items_inbetween(list, at('C'), at('B'), 0)), "CB");
    EXPECT_EQ(delivered(SL_all_items_inbetween(list, at('B'), at('B'), 1)), "B");
}

TEST_F(SimpleList, AWalkThatDoesNotMeetItsEndRunsToTheNullLink)
{
    fill("ABCD");
    EXPECT_EQ(delivered(SL_all_items_inbetween(list, at('C'), at('B'), 1)), "CD");
    EXPECT_EQ(delivered(SL_all_items_inbetween(list, at('B'), at('C'), 0)), "BA");
    EXPECT_EQ(delivered(SL_all_items_inbetween(list, at('B'), nullptr, 1)), "BCD");
}

TEST_F(SimpleList, RangesOfARingMayCrossTheSeam)
{
    fill_ring("ABCD");
    EXPECT_EQ(delivered(SL_all_items_inbetween(list, at('C'), at('B'), 1)), "CDAB");
    EXPECT_EQ(delivered(SL_all_items_inbetween(list, at('B'), at('C'), 0)), "BADC");
    EXPECT_EQ(delivered(SL_tested_items_inbetween(list, at('D'), at('B'), 1, accept_b_and_d)), "DB");
    EXPECT_EQ(delivered(SL_all_items(list)), "ABCD");
    EXPECT_EQ(delivered(SL_all_items_reversed(list)), "DCBA");
}

TEST_F(SimpleList, OnlyWhatTheTestAcceptsIsStored)
{
    fill("ABCDE");
    SL_iterator iterator = SL_tested_items(list, accept_b_and_d);
    EXPECT_EQ(SL_next_item(&iterator, &stored), 1);
    EXPECT_EQ(stored, at('B'));
    EXPECT_EQ(iterator.current, at('B'));
    EXPECT_EQ(iterator.upcoming, at('C'));
    EXPECT_EQ(SL_next_item(&iterator, &stored), 1);
    EXPECT_EQ(stored, at('D'));
    EXPECT_EQ(SL_next_item(&iterator, &stored), 0);
    EXPECT_EQ(stored, at('D'));
    EXPECT_EQ(iterator.current, at('E'));
    EXPECT_EQ(handed, "ABCDE");
    EXPECT_EQ(stored_when_asked, "--BBD");
}

TEST_F(SimpleList, TestedIterationRunsBackwardToo)
{
    fill("ABCDE");
    EXPECT_EQ(delivered(SL_tested_items_reversed(list, accept_b_and_d)), "DB");
    EXPECT_EQ(delivered(SL_tested_items_inbetween(list, at('E'), at('C'), 0, accept_b_and_d)), "D");
    EXPECT_EQ(handed, "EDCBAEDC");
}

TEST_F(SimpleList, ATestThatAcceptsNothingIsAskedAboutEveryItemInOneCall)
{
    for (bool ring : {false, true}) {
        refill("ACE", ring);
        handed = "";
        SL_iterator iterator = SL_tested_items(list, accept_b_and_d);
        stored = at('Z');
        EXPECT_EQ(SL_next_item(&iterator, &stored), 0);
        EXPECT_EQ(handed, "ACE");
        EXPECT_EQ(stored, at('Z'));
    }
}

TEST_F(SimpleList, AnExhaustedIteratorLeavesTheCallersVariable)
{
    fill("A");
    SL_iterator iterator = SL_all_items(list);
    void *item = nullptr;
    EXPECT_EQ(SL_next_item(&iterator, &item), 1);
    EXPECT_EQ(item, at('A'));
    for (int i = 0; i < 2; ++i) {
        item = at('Z');
        EXPECT_EQ(SL_next_item(&iterator, &item), 0);
        EXPECT_EQ(item, at('Z'));
        EXPECT_EQ(iterator.current, at('A'));
    }
}

TEST_F(SimpleList, TheDeliveredItemMayBeRemovedOnARingToo)
{
    fill_ring("ABCDE");
    SL_iterator iterator = SL_all_items_inbetween(list, at('D'), at('B'), 1);
    std::string removed;
    for (void *item; SL_next_item(&iterator, &item);) {
        removed += record_of(item)->name;
        SL_remove_item(list, item);
        record_of(item)->name = '-';
    }
    EXPECT_EQ(removed, "DEAB");
    EXPECT_EQ(text(), "C ring");
}

} // namespace
