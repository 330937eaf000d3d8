/* SPDX-License-Identifier: MIT */
#include <mova/cxx/block_array.h>
#include <mova/cxx/dynamic_array.h>
#include <mova/cxx/id_table.h>
#include <mova/cxx/sorted_numbers.h>

#include <tests/cxx/same_calls.h>

#include <algorithm>
#include <iterator>

/* The compilers that have views: docs/cxx.md. */
#if !defined(__clang__) || __clang_major__ >= 16
#include <ranges>
#define MOVA_TEST_VIEWS
#endif

namespace {

using mova::test::expect_same_calls;
using mova::test::items_of;

using numbers = std::vector<int>;
using dynamic = mova::dynamic_array<int>;
using block = mova::block_array<int>;

template <class Array>
constexpr bool is_an_array =
    std::ranges::contiguous_range<Array> &&std::ranges::contiguous_range<const Array> &&std::ranges::sized_range<Array>
        &&std::convertible_to<Array &, std::span<int>> &&std::convertible_to<const Array &, std::span<const int>>
            &&std::same_as<std::ranges::range_reference_t<const Array>, const int &> &&std::movable<Array> &&
    !std::is_copy_constructible_v<Array> && std::is_nothrow_move_constructible_v<Array>;
static_assert(is_an_array<dynamic> && sizeof(dynamic) == sizeof(void *));
static_assert(is_an_array<block> && sizeof(block) == sizeof(GB_block));
static_assert(std::ranges::contiguous_range<const mova::sorted_numbers> &&
              !std::ranges::output_range<mova::sorted_numbers, std::int32_t> &&
              sizeof(mova::sorted_numbers) == sizeof(void *));
using ids = mova::id_table<int>;
static_assert(std::ranges::forward_range<ids> && std::ranges::common_range<const ids> &&
              sizeof(ids) == sizeof(void *) && sizeof(ids::iterator) == sizeof(io_lut_iterator) &&
              std::same_as<std::ranges::range_reference_t<const ids>, const int *>);
static_assert(std::bidirectional_iterator<mova::array_circulator<int>>);

template <class Array>
class TypedArrays : public mova::test::recording_host_test_case {
};
using array_types = ::testing::Types<dynamic, block>;
TYPED_TEST_SUITE(TypedArrays, array_types);

TYPED_TEST(TypedArrays, ElementsAreAddedReadAndRemoved)
{
    TypeParam a;
    EXPECT_TRUE(a.empty());
    for (int n = 0; n < 40; ++n) {
        a.append(n);
        a.append(a.front());
    }
    EXPECT_EQ(a.size(), 80u);
    EXPECT_EQ(a.remove_if([](int n) { return n == 0; }), 41u);
    EXPECT_EQ(a.front(), 1);
    EXPECT_EQ(a.back(), 39);
    a.insert(0, a[2]);
    EXPECT_EQ(a[0], 3);
    a.remove(0);
    a.cut(2, 35);
    EXPECT_EQ(items_of(a), (numbers{1, 2, 38, 39}));
    EXPECT_EQ(items_of(a.reversed()), (numbers{39, 38, 2, 1}));
    EXPECT_EQ(items_of(a.between(1, 2)), (numbers{2, 38}));
    a.reverse();
    EXPECT_EQ(a, TypeParam({39, 38, 2, 1}));
    a.clear();
    EXPECT_TRUE(a.empty());
    EXPECT_GT(a.capacity(), 0u);
}

TYPED_TEST(TypedArrays, StandardAlgorithmsApply)
{
    TypeParam a(numbers{3, 1, 2});
    std::ranges::sort(a);
    EXPECT_EQ(items_of(a), (numbers{1, 2, 3}));
    std::ranges::copy(numbers{4, 5}, std::back_inserter(a));
    const std::span<int> all = a;
    EXPECT_EQ(all.size(), 5u);
    EXPECT_EQ(all.data(), a.data());
    EXPECT_LT(a, TypeParam({1, 3}));
    EXPECT_EQ(mova::to<TypeParam>(numbers{1}), TypeParam({1}));
}

/* Cannot be read below 0. */
struct brittle {
    int number;
    operator int() const { return number < 0 ? throw number : number; }
};

TYPED_TEST(TypedArrays, AConstructorThatThrowsLeavesNoBlock)
{
    EXPECT_THROW(mova::to<TypeParam>(std::vector<brittle>{{1}, {2}, {-3}}), int);
    EXPECT_EQ(this->host.live_blocks(), 0u);
    bool struck = true;
    for (int failing = 1; struck; ++failing) {
        mova::test::fault_plan::get().arm(mova::test::fault_source::allocation, mova::test::fault_way::throws, failing);
        try {
            mova::to<TypeParam>(numbers(30));
        } catch (const mova::test::fault &) {
        }
        struck = mova::test::fault_plan::get().has_struck();
        EXPECT_EQ(this->host.live_blocks(), 0u);
        EXPECT_TRUE(struck || failing > 2) << "thirty elements take more than one block";
    }
    mova::test::fault_plan::get().disarm();
}

TYPED_TEST(TypedArrays, AWalkKnowsOfItsEdits)
{
    TypeParam a = {1, 2, 3, 4, 5, 6};
    numbers seen;
    for (auto at : a.positions()) {
        seen.push_back(*at);
        if (*at % 2) {
            at.remove();
        } else if (*at == 4) {
            at.insert_before(40);
            EXPECT_EQ(*at, 4);
            at.insert_after(41);
            a.append(42);
        }
    }
    EXPECT_EQ(seen, (numbers{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(items_of(a), (numbers{2, 40, 4, 41, 6, 42}));
#ifdef MOVA_TEST_VIEWS
    for (auto at : a.positions() | std::views::filter([](auto each) { return *each > 40; }))
        at.remove();
    EXPECT_EQ(items_of(a), (numbers{2, 40, 4, 6}));
#endif
    for (auto at : a.positions())
        at.remove();
    EXPECT_TRUE(a.empty());
    EXPECT_EQ(a.positions().begin(), a.positions().end());
}

TYPED_TEST(TypedArrays, AWalkEndsWhereTheArrayHasNoMoreElementsOrIsMoved)
{
    TypeParam a = {1, 2, 3, 4};
    numbers seen;
    for (auto at : a.positions()) {
        seen.push_back(*at);
        a.remove(a.size() - 1);
    }
    EXPECT_EQ(seen, (numbers{1, 2}));
    TypeParam taken;
    for (auto at : a.positions()) {
        seen.push_back(*at);
        taken = std::move(a);
    }
    EXPECT_EQ(seen, (numbers{1, 2, 1}));
    EXPECT_EQ(items_of(taken), (numbers{1, 2}));
}

TYPED_TEST(TypedArrays, APredicateThatThrowsLeavesWhatItWasNotAskedFor)
{
    TypeParam a = {1, 2, 3, 4};
    EXPECT_THROW(a.remove_if([](int n) { return n == 3 ? throw n : n == 1; }), int);
    EXPECT_EQ(items_of(a), (numbers{2, 3, 4}));
}

TYPED_TEST(TypedArrays, AnArrayThatWasMovedFromReadsAsEmpty)
{
    TypeParam a = {1, 2};
    TypeParam other = std::move(a);
    EXPECT_TRUE(a.empty());
    EXPECT_EQ(items_of(a), numbers{});
    std::swap(a, other);
    EXPECT_EQ(items_of(a), (numbers{1, 2}));
    EXPECT_EQ(a.copy(), a);
    TypeParam assigned = {7};
    assigned.assign(a);
    EXPECT_EQ(assigned, a);
    other = std::move(assigned);
    EXPECT_EQ(other.back(), 2);
}

class TypedArrayFamilies : public mova::test::recording_host_test_case {};

TEST_F(TypedArrayFamilies, TheCallsAreThoseOfTheDynamicArray)
{
    const int n = 1;
    expect_same_calls(
        [&] {
            DA_array *a = DA_create(sizeof(int), 2);
            for (int i = 0; i < 5; ++i)
                DA_append(a, &n, 1);
            DA_insert(a, 0, &n, 1);
            DA_get_item(a, 9);
            DA_array *copy = DA_copy(a);
            DA_roll(a, 3);
            DA_release(copy);
            DA_release(a);
        },
        [&] {
            dynamic a(2);
            for (int i = 0; i < 5; ++i)
                a.append(n);
            a.insert(0, n);
            a.grow_to(9);
            dynamic copy = a.copy();
            a.roll(3);
            copy = dynamic(nullptr);
        });
}

TEST_F(TypedArrayFamilies, DynamicArraysGrowWithZeroes)
{
    dynamic a(4);
    a.grow_to(2) = 7;
    EXPECT_EQ(items_of(a), (numbers{0, 0, 7}));
    a.resize(5);
    a.truncate(4);
    EXPECT_EQ(items_of(a), (numbers{0, 0, 7, 0}));
    a.append(std::span<const int>(numbers{1, 2}));
    a.insert(1, numbers{8, 9});
    EXPECT_EQ(items_of(a), (numbers{0, 8, 9, 0, 7, 0, 1, 2}));
    a.reserve(20);
    EXPECT_EQ(std::as_const(a).capacity(), 24u);
    a.clear_storage();
    EXPECT_EQ(a.capacity(), 0u);
    mova::dynamic_array<char> text = {'o', 'k'};
    EXPECT_STREQ(text.c_str(), "ok");
    DA_array *raw = a.release();
    EXPECT_FALSE(a);
    a = dynamic(raw);
    EXPECT_EQ(dynamic(nullptr).size(), 0u);
    EXPECT_EQ(dynamic(nullptr).capacity(), 0u);
}

TEST_F(TypedArrayFamilies, BlockArraysAreRings)
{
    block a = {1, 2, 3};
    a.close();
    EXPECT_TRUE(a.is_closed());
    numbers seen;
    for (int n : a.around(2)) {
        seen.push_back(n);
        if (seen.size() == 5)
            break;
    }
    EXPECT_EQ(seen, (numbers{3, 1, 2, 3, 1}));
    EXPECT_EQ(*--a.around().begin(), 3);
    EXPECT_EQ(*--a.around(2).begin(), 2);
    a.cut(1, 0);
    EXPECT_EQ(items_of(a), (numbers{1, 2, 3}));
    EXPECT_EQ(a.advance(2, 1), 0);
    a.roll(1);
    EXPECT_EQ(items_of(a), (numbers{2, 3, 1}));
    a.open_at(1);
    EXPECT_EQ(items_of(a), (numbers{3, 1, 2, 3}));
    const block end_part = a.split(2);
    EXPECT_EQ(items_of(a), (numbers{3, 1, 2}));
    EXPECT_EQ(items_of(end_part), (numbers{2, 3}));
    block more = {8, 9};
    a.append(std::move(more));
    EXPECT_EQ(more.capacity(), 0u);
    more.append(1);
    EXPECT_EQ(items_of(more), numbers{1});
    a.remove_last();
    EXPECT_EQ(a.back(), 8);
    a.set_capacity(20);
    EXPECT_EQ(a.capacity(), 20u);
    a.open();
    a.set_increment(5);
    GB_block raw = a.release();
    EXPECT_EQ(raw.increment, 5);
    EXPECT_EQ(block(raw).front(), 3);
}

TEST_F(TypedArrayFamilies, TheCallsAreThoseOfTheBlockArray)
{
    const int n = 1;
    expect_same_calls(
        [&] {
            GB_block a, part;
            GB_init(&a, sizeof(int), 2);
            for (int i = 0; i < 5; ++i)
                GB_append_after_last(&a, &n);
            GB_remove_and_get_end_part(&part, &a, 2);
            GB_append_block(&a, &part);
            GB_reverse(&a);
            GB_release(&a);
        },
        [&] {
            block a(2);
            for (int i = 0; i < 5; ++i)
                a.append(n);
            a.append(a.split(2));
            a.reverse();
        });
}

TEST_F(TypedArrayFamilies, NumbersFollowTheirCompanion)
{
    mova::dynamic_array<char> letters = {'a', 'b', 'c', 'd', 'e'};
    mova::sorted_numbers selected = {3, 1, 3};
    EXPECT_EQ(items_of(selected), (std::vector<std::int32_t>{1, 3}));
    mova::companion edited(letters, selected);
    const auto named = [&] {
        std::string text;
        for (const std::int32_t number : selected)
            text += letters[static_cast<std::size_t>(number)];
        return text;
    };
    edited.insert(2, 'x');
    EXPECT_EQ(named(), "bd");
    edited.remove(0);
    EXPECT_EQ(named(), "bd");
    edited.reverse();
    EXPECT_EQ(named(), "db");
    edited.roll(1);
    EXPECT_EQ(named(), "db");
    edited.remove(0);
    EXPECT_EQ(named(), "b");
    EXPECT_EQ(selected.size(), 1u);
    EXPECT_TRUE(selected.contains(selected[0]));
    EXPECT_EQ(selected.copy(), selected);
    selected.remove(selected[0]);
    EXPECT_TRUE(selected.empty());
    selected.add(1);
    selected.clear();
    EXPECT_FALSE(selected.contains(1));
    const char first = letters[0];
    selected.add(0);
    edited.roll(2);
    EXPECT_EQ(named(), std::string(1, first)) << "one that comes round the end";
}

TEST_F(TypedArrayFamilies, IdsNamePointers)
{
    int items[3] = {0, 1, 2};
    ids table;
    EXPECT_TRUE(table.empty());
    EXPECT_EQ(table.add(&items[0]), 1);
    table.set(4, &items[1]);
    EXPECT_EQ(items_of(table), (std::vector<int *>{&items[0], &items[1]}));
    EXPECT_EQ(std::next(table.begin()).id(), 4);
    EXPECT_EQ(table.find(4), &items[1]);
    EXPECT_EQ(std::as_const(table).find(3), nullptr);
    EXPECT_EQ(table.find(0), nullptr);
    EXPECT_EQ(&table[1], &items[0]);
    EXPECT_THROW(table[2], mova::test::raised);
    EXPECT_THROW(table.set(1, &items[2]), mova::test::raised);
    table.allow_reuse();
    table.set(1, nullptr);
    EXPECT_EQ(table.id_of(&items[0]), 0);
    EXPECT_EQ(table.find(0), nullptr) << "although a word of the table's own stands there";
    EXPECT_EQ(items_of(std::as_const(table)), (std::vector<const int *>{&items[1]}));
    table.set(4, nullptr);
    EXPECT_TRUE(table.empty()) << "all ids are free";
    EXPECT_TRUE(ids(nullptr).empty());
}

} // namespace
