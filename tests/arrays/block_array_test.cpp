/* SPDX-License-Identifier: MIT */
#include <mova/arrays/block_array.h>
#include <mova/frame/host.h>

#include <tests/arrays/letters.h>
#include <tests/support/recording_host_test_case.h>
#include <tests/support/array_storage.h>

#include <algorithm>
#include <climits>
#include <utility>

namespace {

using mova::test::broken_invariant;
using mova::test::bytes_of_elements;
using mova::test::distinct_elements;
using mova::test::element;
using mova::test::every_size;
using mova::test::log;
using mova::test::named;
using mova::test::names_of;
using mova::test::picked;

class BlockArray : public mova::test::recording_host_test_case {
protected:
    void TearDown() override
    {
        GB_release(&block);
        GB_release(&other);
        recording_host_test_case::TearDown();
    }

    /* Makes a block of these elements, with room for exactly `capacity`. */
    static void make(GB_block &made, const std::string &names, int32_t capacity)
    {
        GB_init(&made, sizeof(element), capacity);
        for (char name : names)
            GB_append_after_last(&made, named(name).data());
        mova::test::recording_host::get().take_log();
    }

    void make(const std::string &names, int32_t capacity) { make(block, names, capacity); }
    void make(const std::string &names) { make(names, static_cast<int32_t>(names.size())); }

    void make_ring(const std::string &names)
    {
        make(names);
        GB_set_closed(&block);
    }

    /* "ABC", or "ABC ring"; with the invariants verified. */
    static std::string text(const GB_block &shown)
    {
        EXPECT_EQ(broken_invariant(shown), 0);
        return names_of(shown.data, shown.count) + (shown.closed ? " ring" : "");
    }

    std::string text() { return text(block); }

    std::string name() { return host.name_of(block.data); }

    GB_block block{};
    GB_block other{};
};

/* ---- creation, disposal, state ---- */

TEST_F(BlockArray, InitFillsEveryFieldAndAllocatesTheStorage)
{
    std::memset(&block, 0xAB, sizeof block);
    void *storage = GB_init(&block, 12, 7);
    EXPECT_EQ(host.take_log(), log{"alloc 84 = #1"});
    EXPECT_EQ(host.name_of(storage), "#1");
    EXPECT_EQ(block.data, storage);
    EXPECT_EQ(block.element_size, 12u);
    EXPECT_EQ(block.count, 0);
    EXPECT_EQ(block.capacity, 7);
    EXPECT_EQ(block.increment, 10);
    EXPECT_EQ(block.closed, 0);
}

TEST_F(BlockArray, AnInitialCapacityBelow2AllocatesOneElement)
{
    for (auto [given, allocated] : {std::pair{0, 1}, {1, 1}, {-5, 1}, {INT32_MIN, 1}, {2, 2}, {3, 3}}) {
        host.reset();
        GB_init(&block, 12, given);
        EXPECT_EQ(host.take_log(), log{"alloc " + bytes_of_elements(allocated) + " = #1"});
        EXPECT_EQ(block.capacity, allocated);
        GB_release(&block);
    }
}

TEST_F(BlockArray, IncrementsAreStoredIn16Bits)
{
    make("");
    for (auto [given, stored] : {std::pair{7, 7}, {-1, -1}, {65537, 1}, {32768, -32768}, {0, 0}}) {
        GB_set_inc(&block, given);
        EXPECT_EQ(block.increment, stored);
    }
}

TEST_F(BlockArray, CapacitiesThatAreNotAboveTheCountChangeNothing)
{
    make("ABC", 5);
    for (int32_t n : {3, 2, 0, -1, 5}) {
        GB_set_number_of_elements(&block, n);
        EXPECT_EQ(host.take_log(), log{});
        EXPECT_EQ(block.capacity, 5);
    }
}

TEST_F(BlockArray, TheCapacityCanShrinkDownToAboveTheCount)
{
    make("ABC", 8);
    GB_set_number_of_elements(&block, 4);
    EXPECT_EQ(host.take_log(), log{"realloc #1 96 -> 48 = #2"});
    EXPECT_EQ(block.capacity, 4);
    EXPECT_EQ(text(), "ABC");
}

TEST_F(BlockArray, TheCapacityCanGrow)
{
    make("ABC");
    GB_set_number_of_elements(&block, 5);
    EXPECT_EQ(host.take_log(), log{"realloc #1 36 -> 60 = #2"});
    EXPECT_EQ(host.name_of(block.data), "#2");
    EXPECT_EQ(block.capacity, 5);
    EXPECT_EQ(text(), "ABC");
}

TEST_F(BlockArray, AReleasedArrayAllocatesAnew)
{
    make("");
    GB_release(&block);
    host.take_log();
    GB_set_number_of_elements(&block, 3);
    EXPECT_EQ(host.take_log(), log{"alloc 36 = #2"});
    EXPECT_EQ(block.capacity, 3);
    GB_release(&block);
    host.take_log();
    EXPECT_EQ(GB_append_after_last(&block, named('A').data()), 0);
    EXPECT_EQ(host.take_log(), log{"alloc 120 = #3"});
    EXPECT_EQ(text(), "A");
}

TEST_F(BlockArray, ReleaseFreesTheStorageAndSetsTheCapacityAlone)
{
    make("AB", 4);
    const GB_block before = block;
    GB_release(&block);
    EXPECT_EQ(host.take_log(), log{"dealloc #1 48"});
    EXPECT_EQ(block.capacity, 0);
    EXPECT_EQ(block.count, 2);
    EXPECT_EQ(block.data, before.data);
    GB_release(&block);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(BlockArray, MakeEmptyKeepsTheStorage)
{
    make_ring("ABC");
    GB_make_empty(&block);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(text(), " ring");
    EXPECT_EQ(block.capacity, 3);
    EXPECT_EQ(names_of(block.data, 3), "ABC");
}

TEST_F(BlockArray, ClosingAndOpeningSetTheFlagAlone)
{
    make("AB");
    GB_set_closed(&block);
    EXPECT_EQ(block.closed, 1);
    EXPECT_EQ(text(), "AB ring");
    GB_reset_closed(&block);
    EXPECT_EQ(block.closed, 0);
    EXPECT_EQ(text(), "AB");
    EXPECT_EQ(GB_count_items(&block), 2);
}

/* ---- elements ---- */

TEST_F(BlockArray, AppendingCopiesTheElementAndReturnsItsIndex)
{
    make("", 3);
    element given = named('A');
    EXPECT_EQ(GB_append_after_last(&block, given.data()), 0);
    given = named('Z');
    EXPECT_EQ(GB_append_after_last(&block, named('B').data()), 1);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(text(), "AB");
    EXPECT_EQ(GB_count_items(&block), 2);
}

TEST_F(BlockArray, AppendingToAFullArrayAddsRoomForTheIncrement)
{
    for (int32_t increment : {1, 3, 10}) {
        make("AB");
        GB_set_inc(&block, increment);
        const std::string old = name();
        EXPECT_EQ(GB_append_after_last(&block, named('C').data()), 2);
        EXPECT_EQ(host.take_log(),
                  log{"realloc " + old + " 24 -> " + bytes_of_elements(2 + increment) + " = " + name()});
        EXPECT_EQ(block.capacity, 2 + increment);
        EXPECT_EQ(text(), "ABC");
        GB_release(&block);
    }
}

TEST_F(BlockArray, AppendingManyGrowsOnceForEachIncrement)
{
    make("", 1);
    for (int i = 0; i < 32; ++i)
        GB_append_after_last(&block, named('x').data());
    EXPECT_EQ(host.take_log(), (log{"realloc #1 12 -> 132 = #2", "realloc #2 132 -> 252 = #3", //
                                    "realloc #3 252 -> 372 = #4", "realloc #4 372 -> 492 = #5"}));
    EXPECT_EQ(text(), std::string(32, 'x'));
}

TEST_F(BlockArray, ElementsOfEverySizeAreCopiedWhole)
{
    for (uint32_t size : every_size) {
        const std::vector<uint8_t> elements = distinct_elements(size, 23);
        GB_init(&block, size, 1);
        for (std::size_t i = 0; i < 22; ++i)
            GB_append_after_last(&block, elements.data() + i * size);
        GB_replace_item(&block, 4, elements.data() + 22 * size);
        auto expected = picked(elements, size, 22, [](int32_t i) { return i == 4 ? 22 : i; });
        EXPECT_EQ(std::memcmp(block.data, expected.data(), expected.size()), 0) << size;
        GB_release(&block);
    }
}

TEST_F(BlockArray, AppendingABlockGrowsToExactlyTheSumAndReleasesTheOther)
{
    make("AB", 3);
    make(other, "CDE", 7);
    const GB_block appended = other;
    EXPECT_EQ(GB_append_block(&block, &other), 2);
    EXPECT_EQ(host.take_log(), (log{"realloc #1 36 -> 60 = #3", "dealloc #2 84"}));
    EXPECT_EQ(text(), "ABCDE");
    EXPECT_EQ(block.capacity, 5);
    EXPECT_EQ(other.capacity, 0);
    EXPECT_EQ(other.count, 3);
    EXPECT_EQ(other.data, appended.data);
}

TEST_F(BlockArray, AppendingABlockThatFitsOnlyReleasesTheOther)
{
    make("AB", 5);
    make(other, "CDE", 3);
    EXPECT_EQ(GB_append_block(&block, &other), 2);
    EXPECT_EQ(host.take_log(), log{"dealloc #2 36"});
    EXPECT_EQ(text(), "ABCDE");
    EXPECT_EQ(block.capacity, 5);
}

TEST_F(BlockArray, AppendingAnEmptyBlockReturnsTheCount)
{
    make("AB");
    make(other, "", 4);
    EXPECT_EQ(GB_append_block(&block, &other), 2);
    EXPECT_EQ(host.take_log(), log{"dealloc #2 48"});
    EXPECT_EQ(text(), "AB");
}

TEST_F(BlockArray, RemovingTheLastItemOfAnEmptyArrayCountsBelowZero)
{
    make("AB");
    GB_remove_last_item(&block);
    EXPECT_EQ(text(), "A");
    GB_remove_last_item(&block);
    GB_remove_last_item(&block);
    EXPECT_EQ(GB_count_items(&block), -1);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(BlockArray, ACountBelowZeroCountsAsEmpty)
{
    make("");
    GB_remove_last_item(&block);
    GB_set_closed(&block);
    EXPECT_EQ(GB_advance(&block, 0, 0), -1);
    GB_roll(&block, 1);
    EXPECT_EQ(host.take_log(), log{});
    GB_reverse(&block);
    EXPECT_EQ(host.take_log(), (log{"alloc 12 = #2", "dealloc #2 12"}));
    GB_copy(&other, &block);
    EXPECT_EQ(host.take_log(), log{"alloc 12 = #3"});
    EXPECT_EQ(other.count, -1);
    GB_make_empty(&other);
    GB_copy_into(&other, &block);
    EXPECT_EQ(other.count, -1);
}

TEST_F(BlockArray, ReplacingCopiesOverOneElement)
{
    make("ABC");
    GB_replace_item(&block, 1, named('X').data());
    EXPECT_EQ(text(), "AXC");
}

TEST_F(BlockArray, InsertsBeforeEveryIndex)
{
    for (int32_t i = 0; i <= 4; ++i) {
        make("ABCD", 5);
        GB_insert_item(&block, i, named('x').data());
        EXPECT_EQ(host.take_log(), log{});
        EXPECT_EQ(text(), std::string("ABCD").insert(static_cast<std::size_t>(i), "x"));
        GB_release(&block);
    }
}

TEST_F(BlockArray, InsertingIntoAFullArrayAddsRoomForTheIncrement)
{
    make("AB");
    GB_insert_item(&block, 1, named('x').data());
    EXPECT_EQ(host.take_log(), log{"realloc #1 24 -> 144 = #2"});
    EXPECT_EQ(block.capacity, 12);
    EXPECT_EQ(text(), "AxB");
}

TEST_F(BlockArray, InsertingBeyondTheCountMovesNothing)
{
    make("AB", 6);
    GB_insert_item(&block, 4, named('x').data());
    EXPECT_EQ(block.count, 3);
    EXPECT_EQ(names_of(block.data, 6), "AB??x?");
}

TEST_F(BlockArray, RemovesAtEveryIndex)
{
    for (int32_t i = 0; i < 4; ++i) {
        make("ABCD");
        GB_remove_item(&block, i);
        EXPECT_EQ(text(), std::string("ABCD").erase(static_cast<std::size_t>(i), 1));
        EXPECT_EQ(names_of(block.data, 4)[3], 'D');
        GB_release(&block);
    }
    EXPECT_EQ(block.capacity, 0);
}

TEST_F(BlockArray, RemovingBeyondTheCountOnlyCounts)
{
    make("ABCD");
    GB_remove_item(&block, 4);
    EXPECT_EQ(text(), "ABC");
    GB_remove_item(&block, 100);
    EXPECT_EQ(text(), "AB");
    EXPECT_EQ(names_of(block.data, 4), "ABCD");
}

/* ---- positions ---- */

TEST_F(BlockArray, APositionIsAnIndex)
{
    make("ABC");
    for (int32_t position : {0, 2, 3, -7, INT32_MAX})
        EXPECT_EQ(GB_get_index(&block, position), position);
}

TEST_F(BlockArray, AdvancingAnEmptyArrayReturnsMinusOne)
{
    make("");
    EXPECT_EQ(GB_advance(&block, 0, 0), -1);
    GB_set_closed(&block);
    EXPECT_EQ(GB_advance(&block, 0, 1), -1);
}

TEST_F(BlockArray, AdvancingAnOpenArrayStopsAtItsEnds)
{
    make("ABCDE");
    EXPECT_EQ(GB_advance(&block, 1, 3), 4);
    EXPECT_EQ(GB_advance(&block, 4, -4), 0);
    EXPECT_EQ(GB_advance(&block, 4, 1), -1);
    EXPECT_EQ(GB_advance(&block, 0, -1), -1);
    EXPECT_EQ(GB_advance(&block, 7, -3), 4);
}

TEST_F(BlockArray, AdvancingARingGoesAround)
{
    make_ring("ABCDE");
    EXPECT_EQ(GB_advance(&block, 1, 3), 4);
    EXPECT_EQ(GB_advance(&block, 4, 1), 0);
    EXPECT_EQ(GB_advance(&block, 0, -7), 3);
    EXPECT_EQ(GB_advance(&block, 0, -5), 0);
    EXPECT_EQ(GB_advance(&block, 2, 1000000003), 0);
    EXPECT_EQ(GB_advance(&block, 2, -1000000003), 4);
}

/* ---- copying and reordering ---- */

TEST_F(BlockArray, ACopyHasItsOwnStorageOfExactlyTheCount)
{
    make("ABC", 9);
    GB_set_inc(&block, 77);
    GB_set_closed(&block);
    GB_copy(&other, &block);
    EXPECT_EQ(host.take_log(), log{"alloc 36 = #2"});
    EXPECT_EQ(text(other), "ABC ring");
    EXPECT_EQ(other.element_size, 12u);
    EXPECT_EQ(other.capacity, 3);
    EXPECT_EQ(other.increment, 77);
    EXPECT_EQ(text(), "ABC ring");
}

TEST_F(BlockArray, ACopyOfAnEmptyArrayHasRoomForOne)
{
    make("", 9);
    GB_copy(&other, &block);
    EXPECT_EQ(host.take_log(), log{"alloc 12 = #2"});
    EXPECT_EQ(text(other), "");
    EXPECT_EQ(other.capacity, 1);
}

TEST_F(BlockArray, CopyingIntoAnArrayMakesItsStorageAsLargeAsTheSource)
{
    make("ABC", 9);
    GB_set_closed(&block);
    make(other, "XY", 2);
    GB_set_inc(&other, 4);
    GB_copy_into(&other, &block);
    EXPECT_EQ(host.take_log(), log{"realloc #2 24 -> 36 = #3"});
    EXPECT_EQ(text(other), "ABC ring");
    EXPECT_EQ(other.increment, 4);
}

TEST_F(BlockArray, CopyingIntoAnArrayShrinksItsStorageWhereItHasFewerElements)
{
    make("ABC");
    make(other, "XY", 8);
    GB_copy_into(&other, &block);
    EXPECT_EQ(host.take_log(), log{"realloc #2 96 -> 36 = #3"});
    EXPECT_EQ(text(other), "ABC");
    EXPECT_EQ(other.capacity, 3);
}

TEST_F(BlockArray, CopyingIntoAnArrayOfAsManyElementsKeepsItsStorage)
{
    for (const char *target : {"UVW", "UVWXY"}) {
        make("ABC");
        make(other, target, 6);
        GB_set_closed(&other);
        GB_copy_into(&other, &block);
        EXPECT_EQ(host.take_log(), log{});
        EXPECT_EQ(text(other), "ABC");
        EXPECT_EQ(other.capacity, 6);
        GB_release(&other);
        GB_release(&block);
    }
}

TEST_F(BlockArray, CopyingAnEmptyArrayIntoAnotherKeepsItsStorage)
{
    make("");
    for (const char *target : {"", "XY"}) {
        make(other, target, 5);
        GB_copy_into(&other, &block);
        EXPECT_EQ(host.take_log(), log{});
        EXPECT_EQ(text(other), "");
        EXPECT_EQ(other.capacity, 5);
        GB_release(&other);
    }
}

TEST_F(BlockArray, CopyingAnEmptyArrayIntoAReleasedOneAllocatesNothing)
{
    make("");
    make(other, "", 1);
    GB_release(&other);
    host.take_log();
    GB_copy_into(&other, &block);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(other.count, 0);
    EXPECT_EQ(other.capacity, 0);
}

TEST_F(BlockArray, ReversesElementsOfEverySize)
{
    for (uint32_t size : every_size) {
        for (int32_t count = 0; count < 40; ++count) {
            const std::vector<uint8_t> elements = distinct_elements(size, count);
            GB_init(&block, size, count);
            std::copy(elements.begin(), elements.end(), static_cast<uint8_t *>(block.data));
            block.count = count;
            GB_reverse(&block);
            auto expected = picked(elements, size, count, [count](int32_t i) { return count - 1 - i; });
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), static_cast<uint8_t *>(block.data)))
                << count << " of " << size;
            EXPECT_EQ(block.count, count);
            GB_release(&block);
        }
    }
}

TEST_F(BlockArray, ReversingTakesABufferOfOneElementEvenForNone)
{
    for (const char *names : {"", "A", "ABC"}) {
        host.reset();
        make(names);
        GB_reverse(&block);
        EXPECT_EQ(host.take_log(), (log{"alloc 12 = #2", "dealloc #2 12"}));
        EXPECT_EQ(text(), std::string(names == std::string("ABC") ? "CBA" : names));
        GB_release(&block);
    }
}

/* ---- rings ---- */

TEST_F(BlockArray, CuttingARingRepeatsTheElementAtTheCut)
{
    const char *cut[] = {"ABCDA", "BCDAB", "CDABC", "DABCD"};
    for (int32_t position = 0; position < 4; ++position) {
        make("ABCD", 5);
        GB_set_closed(&block);
        const std::string storage = name();
        GB_make_open_at_position(&block, position);
        EXPECT_EQ(text(), cut[position]);
        EXPECT_EQ(name(), storage);
        EXPECT_EQ(block.capacity, 5);
        GB_release(&block);
    }
}

TEST_F(BlockArray, CuttingBuffersTheWholeRing)
{
    make("ABCD", 6);
    GB_set_closed(&block);
    GB_make_open_at_position(&block, 2);
    EXPECT_EQ(host.take_log(), (log{"alloc 48 = #2", "dealloc #2 48"}));
}

TEST_F(BlockArray, CuttingAFullRingGrowsBeforeItBuffers)
{
    make_ring("ABCD");
    GB_make_open_at_position(&block, 2);
    EXPECT_EQ(host.take_log(), (log{"realloc #1 48 -> 168 = #2", "alloc 48 = #3", "dealloc #3 48"}));
    EXPECT_EQ(text(), "CDABC");
    EXPECT_EQ(block.capacity, 14);
}

TEST_F(BlockArray, CuttingARingOfOneMakesTwo)
{
    make_ring("A");
    GB_make_open_at_position(&block, 0);
    EXPECT_EQ(text(), "AA");
}

TEST_F(BlockArray, OnlyARingIsCutAndOnlyAtAPosition)
{
    make("ABC");
    GB_make_open_at_position(&block, 1);
    EXPECT_EQ(text(), "ABC");
    GB_set_closed(&block);
    for (int32_t position : {-1, 3, INT32_MIN, INT32_MAX}) {
        GB_make_open_at_position(&block, position);
        EXPECT_EQ(text(), "ABC ring");
    }
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(block.capacity, 3);
}

TEST_F(BlockArray, SplittingLeavesTheElementAtTheSplitInBothParts)
{
    const char *kept[] = {"A", "AB", "ABC", "ABCD", "ABCDE"};
    const char *taken[] = {"ABCDE", "BCDE", "CDE", "DE", "E"};
    for (int32_t position = 0; position < 5; ++position) {
        make("ABCDE", 8);
        GB_set_inc(&block, 33);
        std::memset(&other, 0xAB, sizeof other);
        GB_remove_and_get_end_part(&other, &block, position);
        EXPECT_EQ(host.take_log(), log{"alloc " + bytes_of_elements(5 - position) + " = " + host.name_of(other.data)});
        EXPECT_EQ(text(), kept[position]);
        EXPECT_EQ(text(other), taken[position]);
        EXPECT_EQ(block.capacity, 8);
        EXPECT_EQ(other.capacity, 5 - position);
        EXPECT_EQ(other.increment, 33);
        EXPECT_EQ(other.element_size, 12u);
        GB_release(&other);
        GB_release(&block);
    }
}

TEST_F(BlockArray, OnlyAnOpenArrayIsSplitAndOnlyAtAPosition)
{
    make("ABC");
    GB_init(&other, 4, 1);
    host.take_log();
    for (int32_t position : {-1, 3, INT32_MIN, INT32_MAX})
        GB_remove_and_get_end_part(&other, &block, position);
    GB_set_closed(&block);
    GB_remove_and_get_end_part(&other, &block, 1);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(text(), "ABC ring");
    EXPECT_EQ(other.element_size, 4u);
    EXPECT_EQ(other.count, 0);
}

TEST_F(BlockArray, RollsElementsOfEverySizeByEveryAmount)
{
    for (uint32_t size : every_size) {
        for (int32_t count = 2; count < 8; ++count) {
            for (int32_t n = -2 * count - 1; n <= 2 * count + 1; ++n) {
                const std::vector<uint8_t> elements = distinct_elements(size, count);
                GB_init(&block, size, count);
                std::copy(elements.begin(), elements.end(), static_cast<uint8_t *>(block.data));
                block.count = count;
                GB_set_closed(&block);
                GB_roll(&block, n);
                auto expected =
                    picked(elements, size, count, [=](int32_t i) { return ((i + n) % count + count) % count; });
                EXPECT_EQ(std::memcmp(block.data, expected.data(), expected.size()), 0)
                    << count << " of " << size << " by " << n;
                GB_release(&block);
            }
        }
    }
}

TEST_F(BlockArray, RollingBuffersTheSmallerPiece)
{
    for (auto [names, n, buffered] : {std::tuple{"ABCDE", 1, 1},
                                      {"ABCDE", 2, 2},
                                      {"ABCDE", 3, 2},
                                      {"ABCDE", 4, 1},
                                      {"ABCDE", -1, 1},
                                      {"ABCDE", 11, 1},
                                      {"ABCD", 2, 2},
                                      {"AB", 1, 1},
                                      {"ABC", -8, 1}}) {
        host.reset();
        make_ring(names);
        GB_roll(&block, n);
        const std::string bytes = bytes_of_elements(buffered);
        EXPECT_EQ(host.take_log(), (log{"alloc " + bytes + " = #2", "dealloc #2 " + bytes})) << names << n;
        GB_release(&block);
    }
}

TEST_F(BlockArray, RollingByAMultipleOfTheCountBuffersNothing)
{
    make_ring("ABCDE");
    for (int32_t n : {0, 5, -5, 10, 2000000000}) {
        GB_roll(&block, n);
        EXPECT_EQ(host.take_log(), log{});
        EXPECT_EQ(text(), "ABCDE ring");
    }
}

TEST_F(BlockArray, RollsByTheLargestAmounts)
{
    make_ring("ABCDE");
    GB_roll(&block, INT32_MAX);
    EXPECT_EQ(text(), "CDEAB ring");
    GB_roll(&block, -2147483642);
    EXPECT_EQ(text(), "ABCDE ring");
}

TEST_F(BlockArray, OnlyARingOfTwoOrMoreIsRolled)
{
    make("ABC");
    GB_roll(&block, 1);
    EXPECT_EQ(text(), "ABC");
    GB_release(&block);
    host.take_log();
    for (const char *names : {"", "A"}) {
        make_ring(names);
        GB_roll(&block, 1);
        EXPECT_EQ(host.take_log(), log{});
        EXPECT_EQ(text(), std::string(names) + " ring");
        GB_release(&block);
        host.take_log();
    }
}

} // namespace
