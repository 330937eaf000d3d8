/* SPDX-License-Identifier: MIT */
#include <mova/arrays/sorted_number_array.h>

#include <tests/support/recording_host_test_case.h>
#include <tests/support/array_storage.h>

#include <algorithm>
#include <climits>
#include <numeric>
#include <random>
#include <utility>

namespace {

using mova::broken_invariant_of_numbers;
using mova::test::broken_invariant;
using mova::test::expect_raise;
using mova::test::log;
using numbers = std::vector<int32_t>;

class SortedNumberArray : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        array = DA_create(4, 10);
        host.take_log();
    }

    void TearDown() override
    {
        DA_release(array);
        recording_host_test_case::TearDown();
    }

    /* Fills the array as it is given, in order or not. */
    void fill(const numbers &filled)
    {
        DA_reset(array);
        DA_append(array, filled.data(), static_cast<int32_t>(filled.size()));
        host.take_log();
    }

    numbers contents() const
    {
        EXPECT_EQ(broken_invariant(*array), 0);
        const auto *data = static_cast<const int32_t *>(DA_data(array));
        return numbers(data, data + DA_nitems(array));
    }

    DA_array *array = nullptr;
};

/* ---- plain code, word by word ---- */

struct found_at {
    int32_t index;
    bool found;
};

found_at halved_search(const numbers &a, int32_t x)
{
    int32_t low = 0, high = static_cast<int32_t>(a.size()) - 1;
    while (high >= low) {
        const int32_t middle = (low + high) / 2;
        const int32_t at_middle = a[static_cast<std::size_t>(middle)];
        if (x < at_middle)
            high = middle - 1;
        else if (at_middle < x)
            low = middle + 1;
        else
            return {middle, true};
    }
    return {low, false};
}

numbers rolled(numbers a, int32_t n, int32_t count)
{
    std::size_t k = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] < n)
            k = i;
        a[i] = static_cast<int32_t>((int64_t{a[i]} + count - n) % count);
    }
    std::rotate(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(k), a.end());
    return a;
}

/* ---- adding, removing, looking up ---- */

TEST_F(SortedNumberArray, NumbersAreKeptAscendingAndOnce)
{
    for (int32_t number : {5, 1, 3, 3})
        SA_add_number(array, number);
    EXPECT_EQ(contents(), (numbers{1, 3, 5}));
    EXPECT_EQ(SA_check_number(array, 3), 1);
    EXPECT_EQ(SA_check_number(array, 4), 0);
}

TEST_F(SortedNumberArray, NegativeNumbersComeBeforePositiveOnes)
{
    for (int32_t number : {0, INT32_MAX, -1, 7, INT32_MIN, -100})
        SA_add_number(array, number);
    EXPECT_EQ(contents(), (numbers{INT32_MIN, -100, -1, 0, 7, INT32_MAX}));
    for (int32_t number : contents())
        EXPECT_EQ(SA_check_number(array, number), 1);
    EXPECT_EQ(SA_check_number(array, -2), 0);
}

TEST_F(SortedNumberArray, AnEmptyArrayHoldsNoNumber)
{
    EXPECT_EQ(SA_check_number(array, 0), 0);
    SA_remove_number(array, 0);
    EXPECT_EQ(contents(), numbers{});
    EXPECT_EQ(host.take_log(), log{});
}

/* At the end DA_insert asks for one element more than before another. */
TEST_F(SortedNumberArray, AddingGrowsAsInsertingDoes)
{
    fill({1, 2, 3, 4, 5, 6, 7, 8});
    SA_add_number(array, 0);
    EXPECT_EQ(host.take_log(), log{});
    fill({1, 2, 3, 4, 5, 6, 7, 8, 9});
    SA_add_number(array, 10);
    EXPECT_EQ(host.take_log(), log{"realloc #2 40 -> 80 = #3"});
}

TEST_F(SortedNumberArray, AddingANumberThatIsThereDoesNothing)
{
    fill({1, 3, 5});
    SA_add_number(array, 5);
    EXPECT_EQ(contents(), (numbers{1, 3, 5}));
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SortedNumberArray, RemovesANumberAndLeavesTheOthers)
{
    fill({1, 3, 5, 7});
    SA_remove_number(array, 4);
    EXPECT_EQ(contents(), (numbers{1, 3, 5, 7}));
    SA_remove_number(array, 3);
    EXPECT_EQ(contents(), (numbers{1, 5, 7}));
    SA_remove_number(array, 7);
    SA_remove_number(array, 1);
    EXPECT_EQ(contents(), (numbers{5}));
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SortedNumberArray, FindsEveryNumberAndNoOtherWhateverTheLength)
{
    for (int32_t length = 1; length < 40; ++length) {
        numbers odd;
        for (int32_t i = 0; i < length; ++i)
            odd.push_back(2 * i + 1);
        fill(odd);
        for (int32_t i = -1; i <= 2 * length + 1; ++i)
            EXPECT_EQ(SA_check_number(array, i), i > 0 && i % 2 == 1 && i < 2 * length ? 1 : 0)
                << i << " of " << length;
    }
}

/* Which numbers are missed in an array that is out of order is fixed. */
TEST_F(SortedNumberArray, ProbesTheSamePlacesEvenWhereTheArrayIsOutOfOrder)
{
    std::mt19937 engine(5489);
    for (int run = 0; run < 300; ++run) {
        numbers unsorted(engine() % 40);
        for (int32_t &number : unsorted)
            number = static_cast<int32_t>(engine() % 50);
        for (int32_t sought = -1; sought <= 50; ++sought) {
            const found_at place = halved_search(unsorted, sought);
            fill(unsorted);
            EXPECT_EQ(SA_check_number(array, sought), place.found ? 1 : 0);
            SA_add_number(array, sought);
            numbers added = unsorted;
            if (!place.found)
                added.insert(added.begin() + place.index, sought);
            EXPECT_EQ(contents(), added);
        }
    }
}

TEST_F(SortedNumberArray, RemovesTheEqualNumberThatTheSearchMeets)
{
    fill({3, 9, 3, 0, 3});
    SA_remove_number(array, 3);
    EXPECT_EQ(contents(), (numbers{3, 9, 0, 3}));
    SA_remove_number(array, 3);
    EXPECT_EQ(contents(), (numbers{9, 0, 3}));
}

/* Long arrays are searched in a way of their own. */
TEST_F(SortedNumberArray, SearchesLongArraysByTheSameProbes)
{
    std::mt19937 engine(5489);
    numbers many((1 << 19) + 1000);
    std::iota(many.begin(), many.end(), -1000);
    for (int swaps = 0; swaps < 1000; ++swaps)
        std::swap(many[engine() % many.size()], many[engine() % many.size()]);
    fill(many);
    for (int i = 0; i < 20000; ++i) {
        const auto sought = static_cast<int32_t>(engine() % many.size()) - 1500;
        ASSERT_EQ(SA_check_number(array, sought), halved_search(many, sought).found ? 1 : 0) << sought;
    }
}

/* ---- following a companion ---- */

TEST_F(SortedNumberArray, AnInsertionMovesTheNumbersFromThereOn)
{
    fill({1, 3, 5});
    SA_adapt_for_insert(array, 3);
    EXPECT_EQ(contents(), (numbers{1, 4, 6}));
    SA_adapt_for_insert(array, 7);
    EXPECT_EQ(contents(), (numbers{1, 4, 6}));
    SA_adapt_for_insert(array, -5);
    EXPECT_EQ(contents(), (numbers{2, 5, 7}));
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SortedNumberArray, ARemovalTakesTheNumberOutAndMovesThoseAboveIt)
{
    fill({1, 3, 5});
    SA_adapt_for_remove(array, 3);
    EXPECT_EQ(contents(), (numbers{1, 4}));
    SA_adapt_for_remove(array, 0);
    EXPECT_EQ(contents(), (numbers{0, 3}));
    SA_adapt_for_remove(array, 2);
    EXPECT_EQ(contents(), (numbers{0, 2}));
    SA_adapt_for_remove(array, 9);
    EXPECT_EQ(contents(), (numbers{0, 2}));
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SortedNumberArray, AReversalMirrorsTheNumbersInOrder)
{
    fill({0, 2});
    SA_adapt_for_reverse(array, 5);
    EXPECT_EQ(contents(), (numbers{2, 4}));
    EXPECT_EQ(host.take_log(), (log{"alloc 4 = #3", "dealloc #3 4"}));
    fill({});
    SA_adapt_for_reverse(array, 5);
    EXPECT_EQ(contents(), numbers{});
    EXPECT_EQ(host.take_log(), (log{"alloc 4 = #4", "dealloc #4 4"}));
}

TEST_F(SortedNumberArray, NumbersWrapAroundTheEndsOfTheirRange)
{
    fill({INT32_MIN, 5, INT32_MAX});
    SA_adapt_for_insert(array, 6);
    EXPECT_EQ(contents(), (numbers{INT32_MIN, 5, INT32_MIN}));
    fill({INT32_MIN + 1, 5});
    SA_adapt_for_reverse(array, 1);
    EXPECT_EQ(contents(), (numbers{-5, INT32_MAX}));
}

TEST_F(SortedNumberArray, ARollThatNoNumberPrecedesKeepsTheOrder)
{
    fill({5, 7});
    SA_adapt_for_roll(array, 3, 10);
    EXPECT_EQ(contents(), (numbers{2, 4}));
    EXPECT_EQ(broken_invariant_of_numbers(*array), 0);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SortedNumberArray, ARollThatOneNumberPrecedesIsNotRotated)
{
    fill({1, 5, 7});
    SA_adapt_for_roll(array, 3, 10);
    EXPECT_EQ(contents(), (numbers{8, 2, 4}));
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(broken_invariant_of_numbers(*array), 1);
}

TEST_F(SortedNumberArray, ARollIsRotatedByTheIndexOfTheLastNumberThatPrecedesIt)
{
    fill({1, 2, 5, 7});
    SA_adapt_for_roll(array, 3, 10);
    EXPECT_EQ(contents(), (numbers{9, 2, 4, 8}));
    EXPECT_EQ(host.take_log(), (log{"alloc 4 = #3", "dealloc #3 4"}));
    fill({1, 2});
    SA_adapt_for_roll(array, 3, 10);
    EXPECT_EQ(contents(), (numbers{9, 8}));
}

TEST_F(SortedNumberArray, RollingAnEmptyArrayChangesNothing)
{
    SA_adapt_for_roll(array, 3, 10);
    SA_adapt_for_roll(array, 0, 0);
    EXPECT_EQ(contents(), numbers{});
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(SortedNumberArray, RollingByNothingOrByTheWholeKeepsTheNumbers)
{
    fill({0, 4, 9});
    SA_adapt_for_roll(array, 0, 10);
    EXPECT_EQ(contents(), (numbers{0, 4, 9}));
    SA_adapt_for_roll(array, 10, 10);
    EXPECT_EQ(contents(), (numbers{9, 0, 4}));
}

/* The remainder takes the sign of what is divided, and numbers outside the companion are rolled too. */
TEST_F(SortedNumberArray, RollsNumbersOutsideTheCompanionByTheSameRemainder)
{
    fill({-25, -3, 4, 12, 40});
    SA_adapt_for_roll(array, 4, 10);
    EXPECT_EQ(contents(), (numbers{3, 0, 8, 6, -9}));
    fill({1, 5});
    SA_adapt_for_roll(array, 17, 10);
    EXPECT_EQ(contents(), (numbers{-2, -6}));
    fill({1, 5});
    SA_adapt_for_roll(array, -17, 10);
    EXPECT_EQ(contents(), (numbers{8, 2}));
    fill({1, 5});
    SA_adapt_for_roll(array, 0, -4);
    EXPECT_EQ(contents(), (numbers{-3, 1}));
}

TEST_F(SortedNumberArray, RollsEveryLengthAsPlainCodeDoes)
{
    std::mt19937 engine(5489);
    for (int run = 0; run < 2000; ++run) {
        const auto count = static_cast<int32_t>(1 + engine() % 90);
        const int32_t reach = run % 3 == 0 ? count + 3 : count;
        numbers indices(engine() % 70);
        for (int32_t &index : indices)
            index = static_cast<int32_t>(engine() % static_cast<uint32_t>(reach)) - (run % 3 == 0 ? 2 : 0);
        if (run % 2)
            std::sort(indices.begin(), indices.end());
        const int32_t n = static_cast<int32_t>(engine() % static_cast<uint32_t>(count + 5)) - 2;
        fill(indices);
        SA_adapt_for_roll(array, n, count);
        ASSERT_EQ(contents(), rolled(indices, n, count)) << n << " of " << count;
    }
}

TEST_F(SortedNumberArray, RollsTheLargestCompanion)
{
    const numbers indices = {0, 1, 1000000000, INT32_MAX - 1};
    for (int32_t n : {0, 1, 2, 1000000000, INT32_MAX - 1, INT32_MAX}) {
        fill(indices);
        SA_adapt_for_roll(array, n, INT32_MAX);
        EXPECT_EQ(contents(), rolled(indices, n, INT32_MAX)) << n;
    }
}

TEST_F(SortedNumberArray, AdaptsEveryLengthAsPlainCodeDoes)
{
    for (int32_t length = 0; length < 70; ++length) {
        numbers even(static_cast<std::size_t>(length));
        for (int32_t i = 0; i < length; ++i)
            even[static_cast<std::size_t>(i)] = 2 * i;
        numbers inserted = even, removed = even, reversed = even;
        for (int32_t &number : inserted)
            number += number >= length ? 1 : 0;
        removed.erase(std::remove(removed.begin(), removed.end(), length), removed.end());
        for (int32_t &number : removed)
            number -= number > length ? 1 : 0;
        for (int32_t &number : reversed)
            number = 200 - number - 1;
        std::reverse(reversed.begin(), reversed.end());
        fill(even);
        SA_adapt_for_insert(array, length);
        EXPECT_EQ(contents(), inserted);
        fill(even);
        SA_adapt_for_remove(array, length);
        EXPECT_EQ(contents(), removed);
        fill(even);
        SA_adapt_for_reverse(array, 200);
        EXPECT_EQ(contents(), reversed);
    }
}

/* ---- where there is no memory ---- */

TEST_F(SortedNumberArray, AddingWithoutMemoryRaisesAsTheDynamicArrayDoes)
{
    host.fail_allocation(1);
    expect_raise("darray", 111, 4197, [&] { SA_add_number(array, 3); });
    EXPECT_EQ(host.take_log(), (log{"alloc 40 = null", "raise darray 111 4197"}));
    EXPECT_EQ(contents(), numbers{});
}

} // namespace
