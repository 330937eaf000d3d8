/* SPDX-License-Identifier: MIT */
#include <mova/frame/internal/assert.h>
#include <mova/lists/internal/invariants.h>

#include <gtest/gtest.h>

#include <string>

namespace {

/* Three nodes in a list, as it should be; each row of a table then breaks it. */
struct chain_of_three {
    GL_node a, b, c;
    GL_list list;

    chain_of_three() : a{nullptr, &b, nullptr}, b{&a, &c, nullptr}, c{&b, nullptr, nullptr}, list{&a, &c, 3} {}
};

struct row {
    const char *what;
    void (*break_it)(chain_of_three &chain);
    int broken;
};

const row rows[] = {
    {"nothing", [](chain_of_three &) {}, 0},
    {"an empty list",
     [](chain_of_three &x) {
         x.list = {nullptr, nullptr, 0};
     },
     0},
    {"a count that is too small", [](chain_of_three &x) { x.list.count = 2; }, 1},
    {"a count that is too large", [](chain_of_three &x) { x.list.count = 4; }, 1},
    {"a last that the links do not lead to", [](chain_of_three &x) { x.b.next = nullptr; }, 1},
    {"a count without a last", [](chain_of_three &x) { x.list.last = nullptr; }, 2},
    {"a count without a first", [](chain_of_three &x) { x.list.first = nullptr; }, 2},
    {"ends without a count", [](chain_of_three &x) { x.list.count = 0; }, 2},
    {"a node before the first", [](chain_of_three &x) { x.a.prev = &x.c; }, 3},
    {"a node after the last", [](chain_of_three &x) { x.c.next = &x.a; }, 3},
    {"a node that its successor does not name", [](chain_of_three &x) { x.c.prev = &x.a; }, 4},
};

TEST(ListInvariants, TheCheckReturnsTheNumberThatTheHeaderGives)
{
    for (const row &tried : rows) {
        chain_of_three chain;
        tried.break_it(chain);
        EXPECT_EQ(mova::broken_invariant(chain.list), tried.broken) << tried.what;
    }
}

TEST(ListInvariants, TheEndsOfARingAreEachOthersNeighbours)
{
    EL_node a, b;
    a = {&b, &b}, b = {&a, &a};
    EL_list ring = {&a, &b, 0, 2, 1};
    EXPECT_EQ(mova::broken_invariant(ring), 0);
    ring.closed = 0;
    EXPECT_EQ(mova::broken_invariant(ring), 3);
    mova_sl_links c, d;
    c = {nullptr, &d}, d = {&c, nullptr};
    SL_list open = {&c, &d, 2, 0};
    EXPECT_EQ(mova::broken_invariant(open), 0);
    open.closed = 1;
    EXPECT_EQ(mova::broken_invariant(open), 3);
}

TEST(ListInvariants, ABrokenOneIsNamedWhereItIsAsserted)
{
    testing::internal::CaptureStderr();
    EXPECT_TRUE(mova::intact(0));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
    EXPECT_FALSE(mova::intact(4));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "invariant 4 is broken\n");
}

#ifndef NDEBUG
TEST(ListInvariants, BuildsWithAssertsStopAtABrokenOne)
{
    chain_of_three chain;
    chain.b.prev = &chain.b;
    EXPECT_DEATH(GL_remove_item(&chain.list, &chain.b), "neighbours_hold");
}
#endif

} // namespace
