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

TYPED_TEST(Owners, OneThatWasMovedFromIsEmptyAndCanBeAssignedTo)
{
    using owner = TypeParam;
    static_assert(sizeof(owner) == sizeof(void *));
    owner made;
    auto *const head = made.get();
    ASSERT_NE(head, nullptr);
    owner taken = std::move(made);
    EXPECT_EQ(taken.get(), head);
    expect_nothing_in(made);
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

/* The two that hold records, not a pointer to a head, have no storage then, and can be used. */
TEST(OwnersOfStorage, OnesThatWereMovedFromCanBeUsed)
{
    mova::block_array<int> block = {1, 2}, other = std::move(block);
    EXPECT_TRUE(block.empty() && block.begin() == block.end());
    block.append(3);
    EXPECT_EQ(block.front() + other.back(), 5);

    struct named {
        std::string name;
    };
    mova::keyed_table<named, &named::name> table;
    table.insert({"Oslo"});
    auto taken = std::move(table);
    EXPECT_TRUE(table.empty() && !table.contains("Oslo") && table.begin() == table.end());
    EXPECT_TRUE(table.insert({"Rome"}).second);
    EXPECT_TRUE(taken.contains("Oslo"));
}

} // namespace
