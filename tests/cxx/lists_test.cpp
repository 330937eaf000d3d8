/* SPDX-License-Identifier: MIT */
#include <mova/cxx/double_list.h>
#include <mova/cxx/element_list.h>
#include <mova/cxx/element_stack.h>
#include <mova/cxx/intrusive_list.h>
#include <mova/cxx/pointer_list.h>

#include <mova/lists/internal/invariants.h>

#include <tests/cxx/same_calls.h>

#include <algorithm>
#include <iterator>
#include <list>
/* The standard library's views ask more of the language than clang knew before. */
#if !defined(__clang__) || __clang_major__ >= 16
#define MOVA_TEST_VIEWS
#include <ranges>
#endif

namespace {

using mova::broken_invariant;
using mova::test::expect_same_calls;
using mova::test::items_of;
using mova::test::log;

using numbers = std::vector<int>;
using list = mova::element_list<int>;
using ring = mova::element_ring<int>;

struct job {
    int number;
    mova::links waiting = {};
    mova::links all = {};
    bool operator==(const job &other) const { return number == other.number; }
};
using waiting_jobs = mova::intrusive_list<job, &job::waiting>;
using pointers = mova::pointer_list<int>;

/* A number whose deaths are counted. */
struct mortal {
    explicit mortal(int given) : number(given) {}
    ~mortal() { ++deaths; }
    int number;
    static inline int deaths = 0;
};
using owning = mova::pointer_list<mortal, std::default_delete<mortal>>;

/* ---- what the types are ---- */

template <class Owner>
constexpr bool is_a_moving_pointer =
    sizeof(Owner) == sizeof(void *) && std::movable<Owner> &&
    !std::is_copy_constructible_v<Owner> && std::is_nothrow_move_constructible_v<Owner> && std::swappable<Owner>;
static_assert(is_a_moving_pointer<pointers> && is_a_moving_pointer<owning> && is_a_moving_pointer<list> &&
              is_a_moving_pointer<ring> && is_a_moving_pointer<mova::element_stack<int>> &&
              is_a_moving_pointer<waiting_jobs> && is_a_moving_pointer<mova::double_list>);

template <class Range>
constexpr bool has_small_iterators = sizeof(std::ranges::iterator_t<Range>) == sizeof(void *);
template <class List>
constexpr bool is_two_way =
    std::ranges::bidirectional_range<List> &&std::ranges::bidirectional_range<const List>
        &&std::ranges::common_range<List> &&std::ranges::sized_range<List> && !std::ranges::random_access_range<List>;
static_assert(is_two_way<pointers> && is_two_way<list> && is_two_way<waiting_jobs> && is_two_way<mova::double_list>);
static_assert(is_two_way<ring> && is_two_way<mova::intrusive_ring<job, &job::waiting>>);
static_assert(has_small_iterators<list> && has_small_iterators<pointers> && has_small_iterators<waiting_jobs>);
static_assert(std::bidirectional_iterator<ring::position> && sizeof(ring::position) == sizeof(void *) &&
              sizeof(ring::iterator) == 2 * sizeof(ring::position));
static_assert(std::convertible_to<ring::iterator, ring::position> &&
              std::convertible_to<ring::iterator, ring::const_position> &&
              !std::convertible_to<ring::const_iterator, ring::position>);
template <class Range>
constexpr bool is_two_way_view = std::ranges::bidirectional_range<Range> &&std::ranges::common_range<Range>
    &&std::ranges::view<Range> &&std::ranges::borrowed_range<Range>;
static_assert(is_two_way_view<decltype(std::declval<ring &>().reversed())> &&
              is_two_way_view<decltype(std::declval<const ring &>().reversed())> &&
              is_two_way_view<decltype(std::declval<ring &>().between({}, {}))> &&
              is_two_way_view<decltype(std::declval<const list &>().between({}, {}).reversed())>);
static_assert(std::ranges::borrowed_range<decltype(std::declval<list &>().reversed())>);
static_assert(std::ranges::view<decltype(std::declval<list &>().between({}, {}))>);
using walk = decltype(std::declval<list &>().positions());
static_assert(std::ranges::input_range<walk> && std::ranges::view<walk> && !std::ranges::forward_range<walk>);

/* What is constant leads to constants. */
static_assert(std::same_as<std::ranges::range_reference_t<const list>, const int &>);
static_assert(std::same_as<std::ranges::range_reference_t<const pointers>, const int *>);
static_assert(std::convertible_to<list::iterator, list::const_iterator> &&
              !std::convertible_to<list::const_iterator, list::iterator>);
static_assert(std::same_as<std::iterator_traits<list::iterator>::iterator_category, std::bidirectional_iterator_tag>);

class TypedLists : public mova::test::recording_host_test_case {};

/* ---- walks ---- */

TEST_F(TypedLists, AnOpenChainIsWalkedBothWaysAndBackFromItsEnd)
{
    list l = {1, 2, 3};
    EXPECT_EQ(items_of(l), (numbers{1, 2, 3}));
    EXPECT_EQ(items_of(l.reversed()), (numbers{3, 2, 1}));
    EXPECT_EQ(items_of(std::as_const(l).reversed()), (numbers{3, 2, 1}));
    EXPECT_EQ(items_of(l.between(std::next(l.begin()), std::prev(l.end()))), (numbers{2, 3}));
    auto at = l.begin();
    std::advance(at, 3);
    EXPECT_EQ(at, l.end());
    EXPECT_EQ(at.get(), nullptr);
    EXPECT_EQ(*--at, 3);
    EXPECT_EQ(at, std::prev(l.end()));
    EXPECT_EQ(std::vector<int>(std::reverse_iterator(l.end()), std::reverse_iterator(l.begin())), (numbers{3, 2, 1}));
    EXPECT_EQ(list().begin(), list().end());
    list none;
    EXPECT_EQ(items_of(none.reversed()), numbers{});
}

TEST_F(TypedLists, ALoopThatHasTakenTheEndMayAppend)
{
    list l = {1, 2, 3};
    for (int number : l) {
        if (number < 3)
            l.append(number + 10);
    }
    EXPECT_EQ(items_of(l), (numbers{1, 2, 3, 11, 12}));
}

TEST_F(TypedLists, ARingIsWalkedOnceAroundAndForEver)
{
    ring r = {1, 2, 3};
    EXPECT_EQ(broken_invariant(*r.get()), 0);
    EXPECT_EQ(items_of(r), (numbers{1, 2, 3}));
    EXPECT_EQ(items_of(r.reversed()), (numbers{3, 2, 1}));
    EXPECT_EQ(items_of(std::as_const(r)), (numbers{1, 2, 3}));
    const ring::position last = r.position_at(2), second = r.position_at(1);
    EXPECT_EQ(items_of(r.between(last, second)), (numbers{3, 1, 2}));
    EXPECT_EQ(items_of(r.between(second, second)), (numbers{2}));
    numbers seen;
    for (int number : r.around(last)) {
        seen.push_back(number);
        if (seen.size() == 7)
            break;
    }
    EXPECT_EQ(seen, (numbers{3, 1, 2, 3, 1, 2, 3}));
    ring::position at = r.begin();
    EXPECT_EQ(*--at, 3);
    EXPECT_EQ(*std::next(r.around().begin(), 4), 2);
    EXPECT_EQ(items_of(ring()), numbers{});
    EXPECT_EQ(items_of(ring{7}), numbers{7});
    ring none, one = {7};
    EXPECT_EQ(items_of(none.reversed()), numbers{});
    EXPECT_EQ(items_of(one.reversed()), numbers{7});
}

/* Every walk, also one that crosses the seam or comes back to its beginning, is walked both ways and turned about half way. */
TEST_F(TypedLists, AWalkOnceAroundARingGoesBothWays)
{
    for (int size = 1; size <= 4; ++size) {
        ring r;
        for (int i = 0; i < size; ++i)
            r.append(i);
        for (int from = 0; from < size; ++from) {
            for (int length = 1; length <= size; ++length) {
                numbers expected;
                for (int i = 0; i < length; ++i)
                    expected.push_back((from + i) % size);
                const auto part = r.between(r.position_at(from), r.position_at((from + length - 1) % size));
                EXPECT_EQ(items_of(part), expected);
                for (auto at = part.begin(); at != part.end(); ++at)
                    EXPECT_EQ(std::prev(std::next(at)), at);
                for (auto at = part.end(); at != part.begin(); --at)
                    EXPECT_EQ(std::next(std::prev(at)), at);
                std::ranges::reverse(expected);
                EXPECT_EQ(items_of(part.reversed()), expected);
            }
        }
    }
    ring r = {3, 1, 2};
    std::ranges::reverse(r);
    EXPECT_EQ(items_of(r), (numbers{2, 1, 3}));
    EXPECT_EQ(items_of(std::as_const(r).reversed()), (numbers{3, 1, 2}));
    EXPECT_EQ(*std::prev(r.end()), 3);
}

TEST_F(TypedLists, WhatAWalkOverPositionsDeliveredMayBeRemoved)
{
    list l = {1, 2, 3, 4, 5};
    for (auto at : l.positions()) {
        if (*at % 2)
            l.remove(at);
        else
            l.insert_after(at, *at * 10);
    }
    EXPECT_EQ(items_of(l), (numbers{2, 20, 4, 40}));
    numbers backwards;
    for (auto at : l.positions_reversed()) {
        backwards.push_back(*at);
        l.remove(at);
    }
    EXPECT_EQ(backwards, (numbers{40, 4, 20, 2}));
    EXPECT_TRUE(l.empty());

    ring r = {1, 2, 3, 4};
    numbers across_the_seam;
    for (auto at : r.positions_reversed(r.position_at(1), r.position_at(2)))
        across_the_seam.push_back(*at);
    EXPECT_EQ(across_the_seam, (numbers{2, 1, 4, 3}));
    for (auto at : r.positions(r.position_at(3), r.position_at(1)))
        r.remove(at);
    EXPECT_EQ(items_of(r), numbers{3});
    EXPECT_EQ(broken_invariant(*r.get()), 0);
}

TEST_F(TypedLists, AWalkPassesOverWhatIsNotAccepted)
{
    list l = {1, 2, 3, 4, 5, 6};
    numbers asked;
    for (auto at : l.positions_if([&asked](int number) { return asked.push_back(number), number % 2 == 0; }))
        l.remove(at);
    EXPECT_EQ(asked, (numbers{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(items_of(l), (numbers{1, 3, 5}));
    ring r = {1, 2, 3, 4};
    for (auto at : r.positions_if([](int number) { return number > 2; }))
        *at += 10;
    EXPECT_EQ(items_of(r), (numbers{1, 2, 13, 14}));
    for (auto at : l.positions_if([](int) { return false; }))
        FAIL() << *at;
    auto odd = l.positions_if([](int number) { return number == 3 ? throw number : true; });
    auto step = odd.begin();
    EXPECT_EQ(**step, 1);
    EXPECT_THROW(++step, int);
    ++step;
    EXPECT_EQ(**step, 5) << "the walk has passed what the predicate threw for";
    EXPECT_EQ(odd.get().current, l.position_at(2).get());
}

TEST_F(TypedLists, RemoveIfTakesPredicatesThatCaptureAndKeepsWhatFollowsAnException)
{
    list l = {1, 2, 3, 4, 5, 6};
    int asked = 0;
    EXPECT_EQ(l.remove_if([&asked](int number) { return ++asked, number > 4; }), 2u);
    EXPECT_EQ(asked, 6);
    EXPECT_THROW(l.remove_if([](int number) { return number == 3 ? throw number : true; }), int);
    EXPECT_EQ(items_of(l), (numbers{3, 4}));
    EXPECT_EQ(broken_invariant(*l.get()), 0);
}

TEST_F(TypedLists, StandardAlgorithmsApply)
{
    list l = {3, 1, 2};
    std::ranges::reverse(l);
    EXPECT_EQ(items_of(l), (numbers{2, 1, 3}));
    EXPECT_EQ(std::ranges::max(l), 3);
    std::ranges::copy(numbers{8, 9}, std::back_inserter(l));
    EXPECT_NE(std::ranges::find(l, 9), l.end());
    std::ranges::next_permutation(l);
    EXPECT_EQ(items_of(l), (numbers{2, 1, 3, 9, 8}));
    EXPECT_EQ(std::ranges::count_if(ring{1, 2, 3}, [](int n) { return n > 1; }), 2);
#ifdef MOVA_TEST_VIEWS
    EXPECT_EQ(items_of(l | std::views::reverse | std::views::transform([](int n) { return n * 2; })),
              (numbers{16, 18, 6, 2, 4}));
    ring two = {1, 2};
    EXPECT_EQ(items_of(two.around() | std::views::take(5)), (numbers{1, 2, 1, 2, 1}));
    for (auto at : l.positions() | std::views::filter([](auto each) { return *each > 2; }))
        l.remove(at);
    EXPECT_EQ(items_of(l), (numbers{2, 1}));
    int least = 1;
    for (auto at : l.positions_if([&least](int n) { return n > least; }) | std::views::take(1))
        l.remove(at);
    EXPECT_EQ(items_of(l), numbers{1});
#endif
    list other = {5, 6, 7};
    const auto above = [&other](int limit) { return other.positions_if([limit](int n) { return n > limit; }); };
    auto filtered = above(5);
    static_assert(std::movable<decltype(filtered)> && sizeof(filtered) <= sizeof(EL_iterator) + 2 * sizeof(void *));
    filtered = above(6);
    EXPECT_EQ(**filtered.begin(), 7);
}

/* ---- owners ---- */

TEST_F(TypedLists, AnOwnerThatWasMovedFromIsNullAndReadsAsEmpty)
{
    list l = {1, 2};
    list other = std::move(l);
    EXPECT_FALSE(l);
    EXPECT_EQ(l.get(), nullptr);
    EXPECT_EQ(items_of(l), numbers{});
    EXPECT_EQ(items_of(l.reversed()), numbers{});
    EXPECT_EQ(l.positions().begin(), std::default_sentinel);
    EXPECT_EQ(l.size(), 0u);
    EXPECT_TRUE(l.empty());
    EXPECT_EQ(l, list());
    std::swap(l, other);
    EXPECT_EQ(items_of(l), (numbers{1, 2}));
    EXPECT_FALSE(other);
    EXPECT_EQ(other.release(), nullptr);
    ring r(nullptr);
    EXPECT_EQ(items_of(r), numbers{});
    waiting_jobs jobs(nullptr);
    EXPECT_TRUE(jobs.empty());
}

TEST_F(TypedLists, HeadsAreAdoptedAndReleased)
{
    EL_list *raw = EL_create(sizeof(int));
    const int five = 5;
    EL_append_after_last(raw, &five);
    list l(raw);
    EXPECT_EQ(l.get(), raw);
    l.append(6);
    EXPECT_EQ(items_of(l), (numbers{5, 6}));
    raw = l.release();
    EXPECT_FALSE(l);
    EXPECT_EQ(broken_invariant(*raw), 0);
    EL_release(&raw);
}

/* ---- element lists and rings ---- */

TEST_F(TypedLists, TheCallsAreThoseOfTheElementList)
{
    expect_same_calls(
        [] {
            EL_list *l = EL_create(sizeof(int));
            int n = 1;
            EL_node *first = EL_append_after_last(l, &n);
            EL_append_after_last(l, &n);
            EL_insert_before_first(l, &n);
            EL_insert_before(l, first, &n);
            EL_insert_after(l, first, &n);
            EL_remove_item(l, first);
            EL_list *copy = EL_total_copy(l);
            EL_set_closed(copy);
            EL_append_after_last(copy, &n);
            EL_list *part = EL_remove_and_get_end_part(l, l->last);
            EL_append_list(l, &part);
            EL_release(&copy);
            EL_release(&l);
        },
        [] {
            list l;
            const auto first = l.append(1);
            l.append(1);
            l.prepend(1);
            l.insert_before(first, 1);
            l.insert_after(first, 1);
            l.remove(first);
            ring copy = l.copy().close();
            copy.append(1);
            l.append(l.split(std::prev(l.end())));
            copy = nullptr;
        });
    EXPECT_EQ(host.live_blocks(), 0u);
}

TEST_F(TypedLists, AppendingToARingKeepsItClosed)
{
    ring r;
    for (int n : {1, 2, 3}) {
        r.append(n);
        EXPECT_EQ(broken_invariant(*r.get()), 0);
    }
    EXPECT_EQ(r.get()->closed, 1);
    r.clear();
    EXPECT_TRUE(r.empty());
    EXPECT_EQ(r.get()->closed, 1);
}

TEST_F(TypedLists, RingsAreRolledCutAndSplit)
{
    ring r = {1, 2, 3, 4};
    r.roll(r.position_at(2));
    EXPECT_EQ(items_of(r), (numbers{3, 4, 1, 2}));
}

TEST_F(TypedLists, ConversionsTakeTheHeadAlong)
{
    list l = {1, 2, 3};
    EL_list *head = l.get();
    ring r = std::move(l).close();
    EXPECT_FALSE(l);
    EXPECT_EQ(r.get(), head);
    l = std::move(r).open_at(r.position_at(1));
    EXPECT_EQ(items_of(l), (numbers{2, 3, 1, 2}));
    auto [front, back] = std::move(l).close().split(ring::position(head->last));
    EXPECT_EQ(items_of(front), (numbers{2, 3, 1, 2}));
    EXPECT_EQ(items_of(back), (numbers{2}));
    EXPECT_EQ(items_of(ring{1, 2}.copy()), (numbers{1, 2}));
    EXPECT_EQ(items_of(ring{1, 2}.open()), (numbers{1, 2}));
}

TEST_F(TypedLists, RangesAreReplacedRemovedAndFound)
{
    list l = {1, 2, 3, 4, 5}, source = {8, 9};
    l.replace(l.position_at(1), l.position_at(2), source);
    EXPECT_EQ(items_of(l), (numbers{1, 8, 9, 4, 5}));
    EXPECT_THROW(l.replace(l.begin(), l.position_at(2), source), mova::test::raised);
    l.remove(l.begin(), l.position_at(2));
    EXPECT_EQ(items_of(l), (numbers{4, 5}));
    EXPECT_EQ(l.index_of(l.position_at(1)), 1);
    EXPECT_EQ(l.position_at(2), l.end());
    l.reverse();
    EXPECT_EQ(l.front(), 5);
    EXPECT_EQ(l.back(), 4);
    const auto sixth = l.insert_before(l.end(), 6);
    EXPECT_EQ(sixth, std::prev(l.end()));
    EXPECT_EQ(*l.remove(l.begin()), 4);
    EXPECT_EQ(items_of(l.copy(l.begin(), l.begin())), numbers{4});
}

TEST_F(TypedLists, ListsCompareAsTheirElements)
{
    EXPECT_EQ((list{1, 2}), (list{1, 2}));
    EXPECT_NE((list{1, 2}), (list{1, 2, 3}));
    EXPECT_NE((list{1, 2}), (list{1, 3}));
    EXPECT_LT((list{1, 2}), (list{1, 2, 3}));
    EXPECT_GT((list{1, 2, 3}), (list{1, 2}));
    EXPECT_GT((list{2}), (list{1, 2, 3}));
    EXPECT_EQ((ring{1}), (ring{1}));
    EXPECT_EQ(mova::to<list>(std::list<short>{1, 2}), (list{1, 2}));
    EXPECT_EQ(list(numbers{4}), list{4});
}

TEST_F(TypedLists, StacksPushAndPop)
{
    mova::element_stack<int> stack;
    EXPECT_EQ(stack.pop(), std::nullopt);
    stack.push(1);
    stack.push(2);
    EXPECT_EQ(broken_invariant(*stack.get()), 0);
    EXPECT_FALSE(stack.empty());
    EXPECT_EQ(stack.top(), 2);
    EXPECT_EQ(stack.size(), 2u);
    EXPECT_EQ(stack.pop(), 2);
    EXPECT_EQ(broken_invariant(*stack.get()), 0);
    EXPECT_EQ(stack.pop(), 1);
    EXPECT_TRUE(stack.empty());
    EXPECT_EQ(broken_invariant(*stack.get()), 0);
    stack.push(3);
    stack.clear();
    EXPECT_TRUE(stack.empty());
    EXPECT_TRUE(mova::element_stack<int>(nullptr).empty());
}

TEST_F(TypedLists, TheCallsAreThoseOfTheElementStack)
{
    expect_same_calls(
        [] {
            ES_stack *stack = ES_create(sizeof(int));
            int n = 1;
            ES_push(stack, &n);
            ES_push(stack, &n);
            ES_pop(stack, &n);
            ES_release(&stack);
        },
        [] {
            mova::element_stack<int> stack;
            stack.push(1);
            stack.push(1);
            stack.pop();
        });
}

TEST_F(TypedLists, DoublesAreSortedThinnedAndFound)
{
    mova::double_list l = {3, 1, 2, 2.25};
    l.sort();
    EXPECT_EQ(items_of(l), (std::vector<double>{1, 2, 2.25, 3}));
    EXPECT_FALSE(l.insert_unique(2.1, 0.5));
    EXPECT_TRUE(l.insert_unique(2.75, 0.125));
    EXPECT_TRUE(l.insert_unique(9, 0.5)) << "although it was appended";
    l.thin_out(0.5);
    EXPECT_EQ(items_of(l), (std::vector<double>{1, 2, 2.75, 9}));
    EXPECT_EQ(l.nearest(8, 1).index, 3);
    EXPECT_EQ(l.nearest(20, 1).index, -1);
    l.add_to_all(1);
    EXPECT_EQ(l.front(), 2);
    mova::double_list moved = l.copy();
    EXPECT_EQ(moved, l);
}

/* ---- pointer lists ---- */

TEST_F(TypedLists, PointersAreKeptInOrderAndFoundByIdentity)
{
    int items[4] = {0, 1, 2, 3};
    pointers l;
    l.append(&items[1]);
    const auto third = l.append(nullptr);
    l.prepend(&items[0]);
    l.insert_before(third, &items[2]);
    l.insert_before(l.end(), &items[3]);
    EXPECT_EQ(broken_invariant(*l.get()), 0);
    EXPECT_EQ(items_of(l), (std::vector<int *>{&items[0], &items[1], &items[2], nullptr, &items[3]}));
    EXPECT_EQ(*l.find(&items[2]), &items[2]);
    l.remove(l.find(&items[2]));
    EXPECT_EQ(l.find(&items[2]), l.end());
    EXPECT_EQ(l.insert_unique(&items[0]), l.end());
    EXPECT_EQ(l.replace(third, &items[2]), nullptr);
    l.move_to_front(third);
    EXPECT_EQ(items_of(l.reversed()), (std::vector<int *>{&items[3], &items[1], &items[0], &items[2]}));
    EXPECT_EQ(l.copy(), l);
    pointers other(items_of(l));
    l.append(std::move(other));
    EXPECT_FALSE(other);
    EXPECT_EQ(l.size(), 8u);
    EXPECT_EQ(l.remove_if([&items](const int *item) { return item == items; }), 2u);
    mova::pointer_list<const int> constant;
    constant.append(&items[1]);
    EXPECT_EQ(*constant.front(), 1);
    l.clear();
    EXPECT_TRUE(l.empty());
}

TEST_F(TypedLists, AListThatOwnsItsItemsDeletesThem)
{
    mortal::deaths = 0;
    {
        owning l;
        for (int n : {1, 2, 3, 4, 5})
            l.append(std::make_unique<mortal>(n));
        l.remove(l.begin());
        EXPECT_EQ(mortal::deaths, 1);
        const std::unique_ptr<mortal> taken = l.take(l.begin());
        EXPECT_EQ(taken->number, 2);
        EXPECT_EQ(l.replace(l.begin(), std::make_unique<mortal>(6))->number, 3);
        EXPECT_EQ(mortal::deaths, 2);
        owning copy = l.copy([](const mortal *each) { return std::make_unique<mortal>(each->number); });
        EXPECT_EQ(copy.size(), 3u);
        copy.clear();
        EXPECT_EQ(mortal::deaths, 5);
        l.prepend(std::make_unique<mortal>(0));
        l.insert_after(l.begin(), std::make_unique<mortal>(0));
        const owning moved = std::move(l);
    }
    EXPECT_EQ(mortal::deaths, 11);

    mova::pointer_list<mortal, mova::host_delete> in_host;
    in_host.append(nullptr);
    in_host.prepend(mova::make_item<mortal>(1));
    EXPECT_EQ(in_host.front()->number, 1);
}

TEST_F(TypedLists, AnItemIsNotLostWhereItsNodeCannotBeMade)
{
    mortal::deaths = 0;
    owning l;
    mova::test::fault_plan::get().arm(mova::test::fault_source::allocation, mova::test::fault_way::throws, 1);
    EXPECT_ANY_THROW(l.append(std::make_unique<mortal>(1)));
    EXPECT_EQ(mortal::deaths, 1);
    EXPECT_TRUE(l.empty());
}

TEST_F(TypedLists, ACopyThatThrowsLeavesNothing)
{
    mortal::deaths = 0;
    owning l;
    for (int n : {1, 2, 3})
        l.append(std::make_unique<mortal>(n));
    const std::size_t blocks = host.live_blocks();
    const auto copied = [](const mortal *each) {
        return each->number == 3 ? throw each->number : std::make_unique<mortal>(each->number);
    };
    EXPECT_THROW(l.copy(copied), int);
    EXPECT_EQ(mortal::deaths, 2);
    EXPECT_EQ(host.live_blocks(), blocks);
    EXPECT_THROW(l.remove_if([](const mortal *each) { return each->number == 2 ? throw 2 : true; }), int);
    EXPECT_EQ(mortal::deaths, 3);
    EXPECT_EQ(l.front()->number, 2);
    EXPECT_EQ(l.size(), 2u);
}

TEST_F(TypedLists, TheCallsAreThoseOfThePointerList)
{
    int item = 1;
    expect_same_calls(
        [&] {
            GL_list *l = GL_create();
            GL_append_after_last(l, &item);
            GL_remove_item(l, GL_append_after_last(l, &item));
            GL_list *copy = GL_copy(l);
            GL_append_list(l, &copy);
            GL_release(&l);
        },
        [&] {
            pointers l;
            l.append(&item);
            l.remove(l.append(&item));
            l.append(l.copy());
        });
}

/* ---- intrusive lists ---- */

TEST_F(TypedLists, RecordsAreLinkedThroughTheMemberThatIsNamed)
{
    job jobs[4] = {{0}, {1}, {2}, {3}};
    waiting_jobs waiting;
    mova::intrusive_list<job, &job::all> all;
    for (job &each : jobs) {
        waiting.append(each);
        all.prepend(each);
    }
    EXPECT_EQ(broken_invariant(*waiting.get()), 0);
    EXPECT_EQ(waiting.remove_if([](const job &each) { return each.number % 2 != 0; }), 2u);
    EXPECT_EQ(jobs[1].waiting.next, nullptr);
    EXPECT_EQ(waiting.size(), 2u);
    EXPECT_EQ(all.size(), 4u);
    EXPECT_EQ(&all.front(), &jobs[3]);
    EXPECT_EQ(std::next(all.begin())->number, 2);
    waiting.insert_after(waiting.position_of(jobs[0]), jobs[1]);
    waiting.insert_before(waiting.end(), jobs[3]);
    EXPECT_EQ(&waiting.back(), &jobs[3]);
    EXPECT_EQ(&waiting.take(waiting.begin()), &jobs[0]);
    waiting.reverse();
    EXPECT_EQ(items_of(waiting), (std::vector<job>{{3}, {2}, {1}}));
    EXPECT_EQ(waiting.insert_before(waiting.position_of(jobs[2]), jobs[0]), waiting.position_of(jobs[0]));
    EXPECT_EQ(items_of(waiting), (std::vector<job>{{3}, {0}, {2}, {1}}));
    EXPECT_EQ(items_of(waiting.reversed()), (std::vector<job>{{1}, {2}, {0}, {3}}));
    waiting.clear();
    EXPECT_TRUE(waiting.empty());
}

TEST_F(TypedLists, RecordsFormRings)
{
    job jobs[3] = {{0}, {1}, {2}};
    mova::intrusive_ring<job, &job::waiting> r;
    for (job &each : jobs)
        r.append(each);
    EXPECT_EQ(broken_invariant(*r.get()), 0);
    r.roll(r.position_of(jobs[1]));
    EXPECT_EQ(items_of(r), (std::vector<job>{{1}, {2}, {0}}));
    for (auto at : r.positions())
        r.remove(at);
    EXPECT_TRUE(r.empty());
    waiting_jobs open = std::move(r).open();
    open.append(jobs[0]);
    EXPECT_EQ(broken_invariant(*open.get()), 0);
}

TEST_F(TypedLists, AnIntrusiveListMayOwnItsRecords)
{
    mova::intrusive_list<job, &job::waiting, std::default_delete<job>> l;
    l.append(std::make_unique<job>(job{1}));
    l.append(std::make_unique<job>(job{2}));
    auto copy = l.copy([](const job &each) { return std::make_unique<job>(job{each.number}); });
    EXPECT_EQ(copy, l);
    EXPECT_EQ(copy.take(copy.begin())->number, 1);
    l.append(std::move(copy));
    EXPECT_EQ(l.size(), 3u);
    l.remove(l.begin());
}

} // namespace
