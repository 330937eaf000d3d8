/* SPDX-License-Identifier: MIT */
#include <mova/lists/double_list.h>
#include <mova/lists/internal/invariants.h>

#include <tests/support/byte_source.h>
#include <tests/support/recording_host_test_case.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <random>

namespace {

/* Counts down to a request of the sort's that is to be refused. */
int requests_until_refusal = 0;

} // namespace

/* The sort takes its room from here. */
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept
{
    if (requests_until_refusal > 0 && --requests_until_refusal == 0)
        return nullptr;
    return std::malloc(size);
}

void operator delete[](void *block) noexcept
{
    std::free(block);
}

void operator delete[](void *block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete[](void *block, const std::nothrow_t &) noexcept
{
    std::free(block);
}

void *operator new[](std::size_t size)
{
    if (void *block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}

namespace {

using mova::broken_invariant;
using mova::test::expect_raise;
using mova::test::log;
using doubles = std::vector<double>;

constexpr double nan_value = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

class DoubleList : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        list = DBLL_create();
    }

    void TearDown() override
    {
        if (list)
            DBLL_release(&list);
        recording_host_test_case::TearDown();
    }

    void fill(const doubles &values)
    {
        DBLL_make_empty(list);
        for (double value : values)
            DBLL_add_double(list, value);
    }

    static doubles values_of(const DBLL_list *shown)
    {
        EXPECT_EQ(broken_invariant(*shown), 0);
        doubles values;
        EL_iterator iterator = DBLL_all_doubles(shown);
        for (double value; DBLL_next_double(&iterator, &value);)
            values.push_back(value);
        EXPECT_EQ(values.size(), static_cast<std::size_t>(DBLL_size(shown)));
        return values;
    }

    doubles values() { return values_of(list); }

    EL_node *at(int32_t index) { return EL_get_pos_at_index(list, index); }

    DBLL_list *list = nullptr;
};

/* ---- the thin layer ---- */

TEST_F(DoubleList, IsAnElementListOfDoubles)
{
    EXPECT_EQ(list->element_size, 8);
    EXPECT_EQ(DBLL_is_empty(list), 1);
    EXPECT_EQ(DBLL_size(list), 0);
    EXPECT_EQ(DBLL_add_double(list, 2.5), list->last);
    EXPECT_EQ(DBLL_is_empty(list), 0);
    EXPECT_EQ(values(), doubles{2.5});
}

TEST_F(DoubleList, EmptinessIsReadFromTheEndsNotFromTheCount)
{
    fill({1});
    list->count = 0;
    EXPECT_EQ(DBLL_is_empty(list), 0);
    list->count = 1;
}

TEST_F(DoubleList, CreateWithTwoKeepsTheOrderGiven)
{
    DBLL_list *two = DBLL_create_with_two(3.0, 1.0);
    EXPECT_EQ(values_of(two), (doubles{3.0, 1.0}));
    DBLL_release(&two);
    EXPECT_EQ(two, nullptr);
}

TEST_F(DoubleList, InsertsAndRemovesByPositionAndIndex)
{
    fill({2, 5});
    EXPECT_EQ(DBLL_insert_before(list, list->first, 1), list->first);
    EXPECT_EQ(DBLL_insert_after(list, list->last, 6), list->last);
    DBLL_insert_after_index(list, 1, 3);
    DBLL_insert_before_index(list, 3, 4);
    EXPECT_EQ(values(), (doubles{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(DBLL_insert_before_index(list, 6, 9), nullptr);
    EXPECT_EQ(DBLL_insert_after_index(list, -1, 9), nullptr);
    DBLL_remove_double(list, at(2));
    EXPECT_EQ(DBLL_remove_at_index(list, 0), 1);
    EXPECT_EQ(DBLL_remove_at_index(list, 4), 0);
    EXPECT_EQ(values(), (doubles{2, 4, 5, 6}));
}

TEST_F(DoubleList, ReplacesOneAndARange)
{
    fill({1, 2, 3, 4});
    DBLL_replace_double(at(0), 9);
    DBLL_list *source = DBLL_create_with_two(7, 8);
    DBLL_replace_doubles_inbetween(list, at(1), at(2), source);
    EXPECT_EQ(values(), (doubles{9, 7, 8, 4}));
    host.take_log();
    expect_raise("egenlist", 557, 4297, [&] { DBLL_replace_doubles_inbetween(list, at(0), at(3), source); });
    EXPECT_EQ(host.take_log(), log{"raise egenlist 557 4297"});
    EXPECT_EQ(values(), (doubles{7, 8, 8, 4}));
    DBLL_release(&source);
}

TEST_F(DoubleList, RingsRollReverseAndCopy)
{
    fill({1, 2, 3});
    DBLL_set_closed(list);
    DBLL_roll(list, at(2));
    EXPECT_EQ(values(), (doubles{3, 1, 2}));
    DBLL_reverse(list);
    EXPECT_EQ(values(), (doubles{2, 1, 3}));
    EXPECT_EQ(DBLL_advance(list, list->last, 1), list->first);
    EXPECT_EQ(DBLL_size_inbetween(list, at(2), at(0)), 2);
    DBLL_list *copy = DBLL_copy(list), *part = DBLL_copy_inbetween(list, at(2), at(0));
    EXPECT_EQ(values_of(copy), (doubles{2, 1, 3}));
    EXPECT_EQ(copy->closed, 1);
    EXPECT_EQ(values_of(part), (doubles{3, 2}));
    DBLL_reset_closed(list);
    expect_raise("egenlist", 989, 4297, [&] { DBLL_roll(list, list->first); });
    DBLL_release(&copy);
    DBLL_release(&part);
}

TEST_F(DoubleList, IteratesBothWaysAndOverRanges)
{
    fill({1, 2, 3, 4});
    auto delivered = [](EL_iterator iterator) {
        doubles values;
        for (double value; DBLL_next_double(&iterator, &value);)
            values.push_back(value);
        return values;
    };
    EXPECT_EQ(delivered(DBLL_all_doubles_reversed(list)), (doubles{4, 3, 2, 1}));
    EXPECT_EQ(delivered(DBLL_all_doubles_inbetween(list, at(1), at(2))), (doubles{2, 3}));
    EXPECT_EQ(delivered(DBLL_all_doubles_inbetween_reversed(list, at(2), at(0))), (doubles{3, 2, 1}));
    EL_iterator iterator = DBLL_all_doubles_inbetween(list, at(3), at(3));
    EL_node *position = nullptr;
    EXPECT_EQ(DBLL_next_position(&iterator, &position), 1);
    EXPECT_EQ(position, list->last);
    double value = -1;
    EXPECT_EQ(DBLL_next_double(&iterator, &value), 0);
    EXPECT_EQ(value, -1);
}

TEST_F(DoubleList, EndValuesOfAnEmptyListAreZeroAndCannotBeSet)
{
    DBLL_set_begin_value(list, 5);
    DBLL_set_end_value(list, 5);
    EXPECT_EQ(DBLL_begin_value(list), 0.0);
    EXPECT_EQ(DBLL_end_value(list), 0.0);
    EXPECT_EQ(DBLL_size(list), 0);
}

TEST_F(DoubleList, EndValuesAreReadAndSet)
{
    fill({1, 2, 3});
    EXPECT_EQ(DBLL_begin_value(list), 1);
    EXPECT_EQ(DBLL_end_value(list), 3);
    DBLL_set_begin_value(list, 7);
    DBLL_set_end_value(list, 8);
    EXPECT_EQ(values(), (doubles{7, 2, 8}));
}

TEST_F(DoubleList, AddsAnOffsetToEveryValue)
{
    fill({1, -2.5, infinity});
    DBLL_add_to_all(list, 0.25);
    EXPECT_EQ(values(), (doubles{1.25, -2.25, infinity}));
}

TEST_F(DoubleList, CheckReports16BytesForEachValue)
{
    EXPECT_EQ(DBLL_check(list), 0);
    fill({1, 2, 3});
    EXPECT_EQ(DBLL_check(list), 48);
}

/* ---- insertion of what is not there yet ---- */

TEST_F(DoubleList, AddUniqueRefusesWhatIsWithinTheToleranceIncluded)
{
    fill({1, 2, 3});
    EXPECT_EQ(DBLL_add_double_unique(list, 2.05, 0.1), 0);
    EXPECT_EQ(DBLL_add_double_unique(list, 2.5, 0.5), 0);
    EXPECT_EQ(DBLL_add_double_unique(list, 3.0, 0.0), 0);
    EXPECT_EQ(values(), (doubles{1, 2, 3}));
}

TEST_F(DoubleList, AddUniqueInsertsWithResult1AndAppendsWithResult0)
{
    EXPECT_EQ(DBLL_add_double_unique(list, 2, 0.1), 0);
    EXPECT_EQ(DBLL_add_double_unique(list, 1, 0.1), 1);
    EXPECT_EQ(DBLL_add_double_unique(list, 1.5, 0.1), 1);
    EXPECT_EQ(DBLL_add_double_unique(list, 3, 0.1), 0);
    EXPECT_EQ(values(), (doubles{1, 1.5, 2, 3}));
}

TEST_F(DoubleList, AddUniqueSearchesALongListFromTheNearerEnd)
{
    fill({1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(DBLL_add_double_unique(list, 9, 0.1), 0) << "eight elements are searched forward";
    EXPECT_EQ(DBLL_add_double_unique(list, 10, 0.1), 1) << "nine are searched backward, and the value is past the end";
    EXPECT_EQ(DBLL_add_double_unique(list, 9.5, 0.1), 1);
    EXPECT_EQ(values(), (doubles{1, 2, 3, 4, 5, 6, 7, 8, 9, 9.5, 10}));
}

/* Both directions find another place in a list that is not ascending. */
TEST_F(DoubleList, AddUniqueKeepsForwardOnATie)
{
    const doubles crossed = {0, 9, 9, 9, 1, 9, 9, 9, 10};
    fill(crossed);
    EXPECT_EQ(DBLL_add_double_unique(list, 5, 0.1), 1);
    EXPECT_EQ(values(), (doubles{0, 5, 9, 9, 9, 1, 9, 9, 9, 10}));
    fill(crossed);
    EXPECT_EQ(DBLL_add_double_unique(list, 5.5, 0.1), 1);
    EXPECT_EQ(values(), (doubles{0, 9, 9, 9, 1, 5.5, 9, 9, 9, 10}));
}

/* Two infinities have no distance, nor does anything lie within a tolerance below 0. */
TEST_F(DoubleList, AddUniqueInsertsAnEqualValueFartherOnInItsDirection)
{
    fill({1, infinity});
    const EL_node *last = list->last;
    EXPECT_EQ(DBLL_add_double_unique(list, infinity, 0.1), 0);
    EXPECT_EQ(list->last->prev, last);
    fill({1, 2, 3, 4, 5, 6, 7, 8, 9});
    last = list->last;
    EXPECT_EQ(DBLL_add_double_unique(list, 9, -1), 1) << "nine are searched backward";
    EXPECT_EQ(list->last, last);
    EXPECT_EQ(DBLL_size(list), 10);
}

TEST_F(DoubleList, AddUniqueAppendsWhatComparesWithNothing)
{
    fill({1, 2});
    EXPECT_EQ(DBLL_add_double_unique(list, nan_value, 1), 0);
    EXPECT_EQ(DBLL_size(list), 3);
    EXPECT_TRUE(std::isnan(DBLL_end_value(list)));
}

/* ---- the nearest value ---- */

TEST_F(DoubleList, FindsTheNearestWithinTwiceTheDistance)
{
    fill({1, 4, 6});
    double nearest = -1;
    EXPECT_EQ(DBLL_find_index_of_nearest(list, 5.0, 1.0, &nearest), 1);
    EXPECT_EQ(nearest, 1.0);
    EXPECT_EQ(DBLL_find_index_of_nearest(list, 5.0, 0.4, &nearest), -1);
    EXPECT_EQ(nearest, 0.8);
    EXPECT_EQ(DBLL_find_index_of_nearest(list, 5.0, 0.5, &nearest), -1) << "twice the distance is excluded";
    EXPECT_EQ(DBLL_find_index_of_nearest(list, 5.75, 100, &nearest), 2);
    EXPECT_EQ(nearest, 0.25);
    DBLL_make_empty(list);
    EXPECT_EQ(DBLL_find_index_of_nearest(list, 0, 3, &nearest), -1);
    EXPECT_EQ(nearest, 6);
}

/* A machine that calculates with more digits than a double's must not tell these apart. */
TEST_F(DoubleList, DistancesHaveThePrecisionOfADouble)
{
    fill({0, 1e-18});
    double nearest = -1;
    EXPECT_EQ(DBLL_find_index_of_nearest(list, 1.0, 1.0, &nearest), 0);
    EXPECT_EQ(nearest, 1.0);
    fill({-1e-12, 0});
    EXPECT_EQ(DBLL_find_index_of_nearest(list, 1.0, 1.0, &nearest), 1) << "but these";
    fill({-1e-18});
    EXPECT_EQ(DBLL_add_double_unique(list, 1.0, 1.0), 0);
    EXPECT_EQ(DBLL_size(list), 1);
    fill({1e-18, 1.0, 2.0});
    DBLL_remove_double_occ(list, 1.0);
    EXPECT_EQ(values(), (doubles{1e-18, 1.0, 2.0}));
}

/* ---- sorting ---- */

/* The passes that define the result: neighbours exchange where the later is less, until none does. */
void exchange_until_sorted(doubles &values)
{
    for (bool exchanged = true; exchanged;) {
        exchanged = false;
        for (std::size_t i = 1; i < values.size(); ++i) {
            if (values[i] < values[i - 1]) {
                std::swap(values[i], values[i - 1]);
                exchanged = true;
            }
        }
    }
}

std::vector<uint64_t> bits(const doubles &values)
{
    std::vector<uint64_t> all;
    for (double value : values)
        all.push_back(std::bit_cast<uint64_t>(value));
    return all;
}

/* Few values, so that many are equal; both zeroes, the infinities, and NaNs with marks to tell them apart. */
doubles random_values(std::mt19937 &engine)
{
    doubles values(engine() % 60);
    for (double &value : values) {
        switch (engine() % 12) {
        case 0: value = engine() % 2 ? 0.0 : -0.0; break;
        case 1: value = engine() % 2 ? infinity : -infinity; break;
        case 2: value = std::bit_cast<double>(0x7FF8000000000000u + engine() % 100); break;
        default: value = static_cast<double>(engine() % 20) - 10; break;
        }
    }
    return values;
}

TEST_F(DoubleList, SortMovesValuesAndKeepsPositions)
{
    fill({3, 1, 2});
    std::vector<EL_node *> positions = {at(0), at(1), at(2)};
    host.take_log();
    DBLL_sort(list);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(values(), (doubles{1, 2, 3}));
    EXPECT_EQ((std::vector<EL_node *>{at(0), at(1), at(2)}), positions);
}

TEST_F(DoubleList, SortOfAnEmptyListAndOfOneValueChangesNothing)
{
    DBLL_sort(list);
    EXPECT_EQ(values(), doubles{});
    fill({1});
    DBLL_sort(list);
    EXPECT_EQ(values(), doubles{1});
}

TEST_F(DoubleList, AListInOrderIsSortedWithoutRoom)
{
    fill({1, 2, 2, nan_value, 0.0, -0.0, 7});
    requests_until_refusal = 1;
    DBLL_sort(list);
    EXPECT_EQ(requests_until_refusal, 1) << "room was asked for";
    requests_until_refusal = 0;
    EXPECT_EQ(bits(values()), bits({1, 2, 2, nan_value, 0.0, -0.0, 7}));
}

TEST_F(DoubleList, NoValueMovesPastANan)
{
    fill({5, 3, nan_value, 4, 1, 2});
    DBLL_sort(list);
    EXPECT_EQ(bits(values()), bits({3, 5, nan_value, 1, 2, 4}));
}

TEST_F(DoubleList, SortGivesTheResultOfTheExchangingPasses)
{
    const uint32_t seed = mova::test::test_seed(1);
    std::mt19937 engine(seed);
    for (int round = 0; round < 4000; ++round) {
        doubles expected = random_values(engine);
        fill(expected);
        bool ring = engine() % 2;
        if (ring)
            DBLL_set_closed(list);
        requests_until_refusal = engine() % 2 ? 1 : 0;
        DBLL_sort(list);
        requests_until_refusal = 0;
        exchange_until_sorted(expected);
        ASSERT_EQ(bits(values()), bits(expected)) << "MOVA_TEST_SEED=" << seed << ", round " << round;
        ASSERT_EQ(list->closed, ring ? 1 : 0);
    }
}

TEST_F(DoubleList, SortsLongLists)
{
    std::mt19937 engine(7);
    doubles expected(100000);
    for (double &value : expected)
        value = static_cast<double>(engine());
    fill(expected);
    DBLL_sort(list);
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(values(), expected);
}

/* ---- thinning ---- */

TEST_F(DoubleList, RemoveOccurrencesThinsNeighboursNearerThanTheTolerance)
{
    fill({1.4, 3.0, 1.0, 1.2});
    DBLL_remove_double_occ(list, 0.5);
    EXPECT_EQ(values(), (doubles{1.0, 3.0}));
}

TEST_F(DoubleList, RemoveOccurrencesKeepsTheEndValueExactly)
{
    fill({1.0, 2.0, 2.1});
    EL_node *last = list->last;
    DBLL_remove_double_occ(list, 0.5);
    EXPECT_EQ(values(), (doubles{1.0, 2.1}));
    EXPECT_EQ(list->last, last);
}

TEST_F(DoubleList, RemoveOccurrencesNeverRemovesTheFirstOrTheLast)
{
    fill({1.1, 1.0});
    DBLL_remove_double_occ(list, 0.5);
    EXPECT_EQ(values(), (doubles{1.0, 1.1}));
    fill({1.0, 1.1, 1.2});
    DBLL_remove_double_occ(list, 0.5);
    EXPECT_EQ(values(), (doubles{1.0, 1.2}));
    fill({1.0});
    DBLL_remove_double_occ(list, 0.5);
    EXPECT_EQ(values(), doubles{1.0});
    fill({});
    DBLL_remove_double_occ(list, 0.5);
    EXPECT_EQ(values(), doubles{});
}

TEST_F(DoubleList, RemoveOccurrencesKeepsADifferenceOfTheToleranceItself)
{
    fill({2.0, 2.5});
    DBLL_remove_double_occ(list, 0.5);
    EXPECT_EQ(values(), (doubles{2.0, 2.5}));
}

TEST_F(DoubleList, RemoveOccurrencesThinsASlowDriftToSteps)
{
    fill({0, 0.25, 0.5, 0.75, 1.0, 1.25, 10});
    DBLL_remove_double_occ(list, 0.5);
    EXPECT_EQ(values(), (doubles{0, 0.5, 1.0, 10}));
}

TEST_F(DoubleList, RemoveOccurrencesEndsOnARing)
{
    fill({1.2, 1.0, 5.0, 1.4});
    DBLL_set_closed(list);
    DBLL_remove_double_occ(list, 0.5);
    EXPECT_EQ(values(), (doubles{1.0, 5.0}));
    EXPECT_EQ(list->closed, 1);
}

} // namespace
