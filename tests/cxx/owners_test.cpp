/* SPDX-License-Identifier: MIT */
/* What every class that owns a head does when it has none. */
#include <mova/cxx.h>

#include <tests/support/recording_host_test_case.h>

#include <string>

namespace {

struct job {
    int number;
    mova::links waiting;
    bool operator==(const job &other) const { return number == other.number; }
};

template <class Owner>
class Owners : public mova::test::recording_host_test_case {
};

using owners = ::testing::Types<mova::pointer_list<int>, mova::pointer_list<int, std::default_delete<int>>,
                                mova::element_list<int>, mova::element_ring<int>, mova::element_stack<int>,
                                mova::intrusive_list<job, &job::waiting>, mova::intrusive_ring<job, &job::waiting>,
                                mova::double_list, mova::dynamic_array<int>, mova::sorted_numbers, mova::id_table<int>,
                                mova::balanced_set<int>, mova::balanced_multiset<int>, mova::hash_table<int, int>,
                                mova::pointer_lookup<int *, int>>;
TYPED_TEST_SUITE(Owners, owners);
static_assert(std::movable<mova::block_pool> && sizeof(mova::block_pool) == sizeof(void *));

using cache = mova::swap_cache<job>;

template <class Owner>
void expect_nothing_in(Owner &owner)
{
    EXPECT_FALSE(owner);
    EXPECT_EQ(owner.get(), nullptr);
    EXPECT_EQ(owner.release(), nullptr);
    if constexpr (std::ranges::range<Owner>) {
        EXPECT_TRUE(std::ranges::empty(owner));
        EXPECT_TRUE(std::as_const(owner).begin() == std::as_const(owner).end());
        EXPECT_TRUE(owner.begin() == owner.end());
    }
    if constexpr (requires { owner.size(); }) {
        EXPECT_EQ(owner.size(), 0u);
    }
    if constexpr (requires { owner.reversed(); }) {
        EXPECT_TRUE(owner.reversed().empty());
    }
    if constexpr (requires { owner == owner; }) {
        EXPECT_TRUE(owner == Owner(nullptr));
    }
}

template <class Owner>
void expect_moves_leave_nothing(Owner made, Owner other)
{
    using owner = Owner;
    static_assert(sizeof(owner) == sizeof(void *));
    auto *const head = made.get();
    ASSERT_NE(head, nullptr);
    ASSERT_NE(other.get(), nullptr);
    other = std::move(made);
    EXPECT_EQ(other.get(), head);
    expect_nothing_in(made);
    owner taken = std::move(other);
    EXPECT_EQ(taken.get(), head);
    expect_nothing_in(other);
    owner none(nullptr);
    expect_nothing_in(none);
    using std::swap;
    swap(made, taken);
    EXPECT_EQ(made.get(), head);
    expect_nothing_in(taken);
    taken = std::move(made);
    EXPECT_EQ(taken.get(), head);
    owner adopted(taken.release());
    EXPECT_EQ(adopted.get(), head);
}

TYPED_TEST(Owners, OneThatWasMovedFromIsEmptyAndCanBeAssignedTo)
{
    expect_moves_leave_nothing(TypeParam(), TypeParam());
}

/* Those that hold records, not a pointer to a head, have no storage then, and can be used. What a colour
   leaves: cache_test.cpp. */
class OwnersOfOtherThings : public mova::test::recording_host_test_case {};

TEST_F(OwnersOfOtherThings, ACacheThatWasMovedFromIsEmptyAndCanBeAssignedTo)
{
    expect_moves_leave_nothing(cache(host.pool().address()), cache(host.pool().address()));
}

template <class Owner>
void assign_to_itself(Owner &owner)
{
    Owner &same = owner;
    owner = std::move(same);
}

TEST_F(OwnersOfOtherThings, ABlockArrayThatWasMovedFromHasNoStorageAndCanBeUsed)
{
    mova::block_array<int> block = {1, 2}, other = std::move(block);
    EXPECT_TRUE(block.empty() && block.begin() == block.end() && block.capacity() == 0);
    block.append(3);
    EXPECT_EQ(block.front() + other.back(), 5);
    block = std::move(other);
    EXPECT_TRUE(other.empty() && other.capacity() == 0);
    other.append(4);
    assign_to_itself(block);
    EXPECT_EQ(block.back() + other.back(), 6);
}

template <class Container>
void give_itself(Container &&container, auto give)
{
    const std::size_t size = container.size();
    give(container, container);
    EXPECT_EQ(container.size(), size);
}

TEST_F(OwnersOfOtherThings, WhatIsGivenItselfStaysAsItIs)
{
    const auto append = [](auto &container, auto &same) { container.append(std::move(same)); };
    const auto assign = [](auto &container, auto &same) { container.assign(same); };
    const auto swap = [](auto &container, auto &same) { std::ranges::swap(container, same); };
    int number = 1;
    job jobs[2] = {};
    mova::pointer_list<int> pointers;
    mova::intrusive_list<job, &job::waiting> waiting;
    for (job &each : jobs)
        pointers.append(&number), waiting.append(each);
    give_itself(pointers, append);
    give_itself(waiting, append);
    give_itself(mova::element_list<int>{1, 2}, append);
    give_itself(mova::block_array<int>{1, 2}, append);
    give_itself(mova::block_array<int>{1, 2}, assign);
    give_itself(mova::dynamic_array<int>{1, 2}, assign);
    give_itself(mova::dynamic_array<int>{1, 2}, swap);
    give_itself(mova::element_list<int>{1, 2}, swap);
    give_itself(pointers, swap);
}

TEST_F(OwnersOfOtherThings, AnItemWhoseConstructorThrowsLeavesNoBlock)
{
    struct brittle {
        explicit brittle(int number) { throw number; }
    };
    EXPECT_THROW(mova::make_item<brittle>(7), int);
    EXPECT_EQ(host.live_blocks(), 0u);
    EXPECT_EQ(host.take_log(), (mova::test::log{"alloc " + std::to_string(sizeof(brittle)) + " = #1",
                                                "dealloc #1 " + std::to_string(sizeof(brittle))}));
}

TEST_F(OwnersOfOtherThings, AKeyedTableThatWasMovedFromHasNoMemoryAndCanBeUsed)
{
    struct named {
        std::string name;
    };
    mova::keyed_table<named, &named::name> table;
    table.insert({"Oslo"});
    auto taken = std::move(table);
    EXPECT_TRUE(table.empty() && !table.contains("Oslo") && table.begin() == table.end() && !table.data());
    EXPECT_TRUE(table.insert({"Rome"}).second);
    EXPECT_TRUE(taken.contains("Oslo"));
    taken = std::move(table);
    EXPECT_TRUE(table.empty() && !table.contains("Oslo") && !table.data());
    EXPECT_TRUE(table.insert({"Bern"}).second);
    assign_to_itself(taken);
    EXPECT_TRUE(taken.contains("Rome") && !taken.contains("Oslo"));
}

} // namespace
