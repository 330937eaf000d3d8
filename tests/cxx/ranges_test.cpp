/* SPDX-License-Identifier: MIT */
/* What the containers are as ranges, in one table, and what walks over lists do while these are edited. */
#include <mova/cxx.h>

#include <tests/cxx/same_calls.h>

#include <algorithm>
#include <iterator>
#include <numeric>
#include <string>

namespace {

using mova::test::items_of;

struct job {
    int number = 0;
    mova::links waiting = {};
};
struct named {
    std::string name;
};
struct tile {
    std::size_t body_size() const { return 1; }
    void fill(std::span<char>) {}
};

/* ---- the table ---- */

enum strength { input, forward, bidirectional, contiguous };

struct properties {
    strength reach;
    bool sized, common, borrowed;
    std::size_t words; /* of an iterator */
    bool operator==(const properties &) const = default;
};

template <class Range>
constexpr strength reach_of = std::ranges::contiguous_range<Range>      ? contiguous
                              : std::ranges::bidirectional_range<Range> ? bidirectional
                              : std::ranges::forward_range<Range>       ? forward
                                                                        : input;

template <class Range>
constexpr properties of = {reach_of<Range>, std::ranges::sized_range<Range>, std::ranges::common_range<Range>,
                           std::ranges::borrowed_range<Range>,
                           (sizeof(std::ranges::iterator_t<Range>) + sizeof(void *) - 1) / sizeof(void *)};

/* A container and a constant one are the same, but that this leads to constants. */
template <class Container>
constexpr bool respects_const =
    of<const Container> == of<Container> &&
    !std::same_as<std::ranges::range_reference_t<Container>, std::ranges::range_reference_t<const Container>> &&
    std::convertible_to<std::ranges::iterator_t<Container>, std::ranges::iterator_t<const Container>> &&
    !std::convertible_to<std::ranges::iterator_t<const Container>, std::ranges::iterator_t<Container>>;

using pointers = mova::pointer_list<int>;
using list = mova::element_list<int>;
using ring = mova::element_ring<int>;
using jobs = mova::intrusive_list<job, &job::waiting>;
using job_ring = mova::intrusive_ring<job, &job::waiting>;
using dynamic = mova::dynamic_array<int>;
using block = mova::block_array<int>;
using ids = mova::id_table<int>;
using set = mova::balanced_set<int>;
using table = mova::hash_table<int, int>;
using keyed = mova::keyed_table<named, &named::name>;
using cache = mova::swap_cache<tile, char>;

/*                                        reach          sized  common borrowed words */
static_assert(of<pointers> == properties{bidirectional, true, true, false, 1} && respects_const<pointers>);
static_assert(of<list> == properties{bidirectional, true, true, false, 1} && respects_const<list>);
static_assert(of<mova::double_list> == of<list> && respects_const<mova::double_list>);
static_assert(of<ring> == properties{bidirectional, true, true, false, 2} && respects_const<ring>);
static_assert(of<jobs> == of<list> && respects_const<jobs>);
static_assert(of<job_ring> == of<ring> && respects_const<job_ring>);
static_assert(of<dynamic> == properties{contiguous, true, true, false, 1} && respects_const<dynamic>);
static_assert(of<block> == of<dynamic> && respects_const<block>);
static_assert(of<mova::sorted_numbers> == of<dynamic> && of<const mova::sorted_numbers> == of<dynamic>);
static_assert(of<ids> == properties{forward, false, true, false, sizeof(io_lut_iterator) / sizeof(void *)});
static_assert(respects_const<ids>);
static_assert(of<set> == properties{bidirectional, false, true, false, 1} && respects_const<set>);
static_assert(of<mova::balanced_multiset<int>> == of<set>);
static_assert(of<table> == properties{forward, true, true, false, 2} && of<const table> == of<table>);
static_assert(of<keyed> == of<dynamic> && respects_const<keyed>);
static_assert(of<cache> == properties{bidirectional, false, true, false, 1} && respects_const<cache>);

/* What is made of them is a view, and goes on living where the object that delivered it ends. */
template <class View>
constexpr bool is_view_of_parts = std::ranges::view<View> &&std::ranges::borrowed_range<View>;
static_assert(is_view_of_parts<decltype(std::declval<list &>().reversed())>);
static_assert(is_view_of_parts<decltype(std::declval<const jobs &>().reversed())>);
static_assert(is_view_of_parts<decltype(std::declval<const ring &>().around())>);
static_assert(is_view_of_parts<decltype(std::declval<const dynamic &>().between(0, 0))>);
static_assert(is_view_of_parts<decltype(std::declval<block &>().around())>);
static_assert(is_view_of_parts<decltype(std::declval<const set &>().equal_range(1))>);
static_assert(of<decltype(std::declval<ring &>().around())> == properties{bidirectional, false, false, true, 1});

/* Walks over positions are walked once, and only where the container may be edited. */
template <class Container>
constexpr bool has_positions = requires(Container &container)
{
    container.positions();
};
template <class Container>
constexpr bool is_walked_once = has_positions<Container> && !has_positions<const Container> &&
                                reach_of<decltype(std::declval<Container &>().positions())> == input;
static_assert(is_walked_once<pointers> && is_walked_once<list> && is_walked_once<ring> && is_walked_once<jobs> &&
              is_walked_once<dynamic> && is_walked_once<block> && is_walked_once<set>);
static_assert(!has_positions<cache> && !has_positions<ids>);

class TypedRanges : public mova::test::recording_host_test_case {};

/* The standard's functions for iterators, which look at their category alone, step back too. */
TEST_F(TypedRanges, StandardFunctionsStepBackFromTheEnd)
{
    int numbers[] = {1, 2, 3};
    const auto last_of = [](const auto &container) { return *std::prev(container.end()); };
    pointers l(std::vector<int *>{&numbers[0], &numbers[1], &numbers[2]});
    EXPECT_EQ(last_of(l), &numbers[2]);
    EXPECT_EQ(std::next(l.begin(), 3), l.end());
    EXPECT_EQ(std::distance(l.begin(), l.end()), 3);
    EXPECT_EQ(std::vector<int *>(std::reverse_iterator(l.end()), std::reverse_iterator(l.begin())),
              (std::vector<int *>{&numbers[2], &numbers[1], &numbers[0]}));
    EXPECT_EQ(last_of(list(numbers)), 3);
    EXPECT_EQ(last_of(ring(numbers)), 3);
    EXPECT_EQ(last_of(dynamic(numbers)), 3);
    EXPECT_EQ(last_of(set(numbers)), 3);
}

TEST_F(TypedRanges, ConstantIteratorsAreThoseOfConstants)
{
    const auto sum_of = [](auto container) {
        using made = decltype(container);
        static_assert(std::same_as<decltype(container.cbegin()), typename made::const_iterator> &&
                      std::same_as<decltype(*container.cend()), const int &>);
        return std::accumulate(container.cbegin(), container.cend(), 0);
    };
    const int numbers[] = {1, 2, 3};
    EXPECT_EQ(sum_of(list(numbers)) + sum_of(ring(numbers)) + sum_of(dynamic(numbers)) + sum_of(block(numbers)), 24);
}

/* ---- editing while walking: the table of mova/cxx/chain.h, in each kind of list ---- */

template <class List>
class EditedLists : public mova::test::recording_host_test_case {
protected:
    using position = typename List::position;

    List filled()
    {
        List made;
        for (std::size_t i = 0; i < 4; ++i)
            made.append(item(i));
        return made;
    }

    /* The item of a number: the number, its job, or a pointer to it. */
    decltype(auto) item(std::size_t number)
    {
        jobs_[number].number = numbers_[number] = static_cast<int>(number);
        if constexpr (std::same_as<typename List::value_type, job>)
            return (jobs_[number]);
        else if constexpr (std::same_as<typename List::value_type, int>)
            return static_cast<int>(number);
        else
            return &numbers_[number];
    }
    static int number_of(int number) { return number; }
    static int number_of(const int *pointer) { return *pointer; }
    static int number_of(const job &each) { return each.number; }

    static std::string contents(const List &l)
    {
        std::string text;
        for (auto &&each : l)
            text += std::to_string(number_of(each));
        return text;
    }
    static position position_of(List &l, std::ptrdiff_t index) { return std::next(l.begin(), index); }

    int numbers_[10] = {};
    job jobs_[10];
};
using edited_lists = ::testing::Types<pointers, list, ring, jobs, job_ring>;
TYPED_TEST_SUITE(EditedLists, edited_lists);

TYPED_TEST(EditedLists, OverItemsTheSuccessorMayGoAndWhatLiesAheadIsDelivered)
{
    TypeParam l = this->filled();
    std::string seen;
    for (auto &&each : l) {
        const int number = this->number_of(each);
        seen += std::to_string(number);
        if (number == 1) {
            l.remove(this->position_of(l, 2)); /* the successor */
            l.insert_after(this->position_of(l, 1), this->item(5));
            l.insert_after(this->position_of(l, 0), this->item(6)); /* lies behind */
        }
        if (number == 3)
            l.remove(this->position_of(l, 1)); /* another */
    }
    EXPECT_EQ(seen, "0153");
    EXPECT_EQ(this->contents(l), "0153");
}

TYPED_TEST(EditedLists, OverPositionsWhatWasDeliveredMayGoAndWhatLiesBeyondTheSuccessorIsDelivered)
{
    TypeParam l = this->filled();
    std::string seen;
    for (auto at : l.positions()) {
        const int number = this->number_of(*at);
        seen += std::to_string(number);
        if (number == 0) {
            l.insert_after(at, this->item(5));                      /* not beyond the successor */
            l.insert_after(this->position_of(l, 2), this->item(6)); /* after 1, the successor */
            l.insert_after(this->position_of(l, 5), this->item(7)); /* after 3, the end of this walk */
            l.remove(at);
        }
        if (number == 2)
            l.remove(this->position_of(l, 0)); /* 5, which lies behind */
    }
    EXPECT_EQ(seen, "01623");
    EXPECT_EQ(this->contents(l), "16237");
    for (auto at : l.positions())
        l.remove(at);
    EXPECT_TRUE(l.empty());
}

TYPED_TEST(EditedLists, WalksGoAlongTheLinksOfAListThatWasReversed)
{
    TypeParam l = this->filled();
    if constexpr (requires { l.reverse(); }) {
        std::string seen;
        for (auto at : l.positions(this->position_of(l, 2), this->position_of(l, 3))) {
            seen += std::to_string(this->number_of(*at));
            if (seen == "2")
                l.reverse();
        }
        EXPECT_EQ(seen, "23") << "the successor was fetched, and is the end of this walk";
        EXPECT_EQ(this->contents(l), "3210");
    }
}

} // namespace
