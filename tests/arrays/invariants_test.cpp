/* SPDX-License-Identifier: MIT */
#include <mova/arrays/internal/invariants.h>

#include <gtest/gtest.h>

namespace {

using mova::broken_invariant;

TEST(ArrayInvariants, TheCheckOfABlockArrayReturnsTheNumberThatTheHeaderGives)
{
    const struct {
        const char *what;
        void (*break_it)(GB_block &block);
        int broken;
    } cases[] = {
        {"nothing", [](GB_block &) {}, 0},
        {"a ring", [](GB_block &x) { x.closed = 1; }, 0},
        {"no room, and no storage", [](GB_block &x) { x.count = 0, x.capacity = 0, x.data = nullptr; }, 0},
        {"a count below 0", [](GB_block &x) { x.count = -1; }, 1},
        {"a count beyond the room", [](GB_block &x) { x.count = 4; }, 1},
        {"room without storage", [](GB_block &x) { x.data = nullptr; }, 2},
        {"closed by another word than 1", [](GB_block &x) { x.closed = 2; }, 3},
    };
    for (const auto &each : cases) {
        char storage[12];
        GB_block block = {};
        block.data = storage, block.element_size = 4, block.count = 3, block.capacity = 3;
        each.break_it(block);
        EXPECT_EQ(broken_invariant(block), each.broken) << each.what;
    }
}

TEST(ArrayInvariants, TheCheckOfADynamicArrayReturnsTheNumberThatTheHeaderGives)
{
    const struct {
        const char *what;
        void (*break_it)(DA_array &array);
        int broken;
    } cases[] = {
        {"nothing", [](DA_array &) {}, 0},
        {"no room, and no storage", [](DA_array &x) { x.nitems = 0, x.nalloc = 0, x.data = nullptr; }, 0},
        {"room without storage", [](DA_array &x) { x.data = nullptr; }, 1},
        {"storage without room", [](DA_array &x) { x.nalloc = 0; }, 1},
        {"room that is no multiple of the increment", [](DA_array &x) { x.nalloc = 3; }, 2},
        {"more elements than room", [](DA_array &x) { x.nitems = 5; }, 3},
    };
    for (const auto &each : cases) {
        char storage[16];
        DA_array array = {};
        array.data = storage, array.element_size = 4, array.increment = 2, array.nitems = 3, array.nalloc = 4;
        each.break_it(array);
        EXPECT_EQ(broken_invariant(array), each.broken) << each.what;
    }
}

TEST(ArrayInvariants, TheCheckOfAnIdTableReturnsTheNumberThatTheHeaderGives)
{
    const struct {
        const char *what;
        void (*break_it)(DA_array &table);
        int broken;
    } cases[] = {
        {"nothing", [](DA_array &) {}, 0},
        {"elements of another size", [](DA_array &x) { x.element_size = 1; }, 1},
        {"a broken array", [](DA_array &x) { x.nalloc = 3; }, 1},
        {"no word for the flags", [](DA_array &x) { x.nitems = 0; }, 2},
        {"a flag that there is not", [](DA_array &x) { *static_cast<uintptr_t *>(x.data) = 2; }, 2},
    };
    for (const auto &each : cases) {
        uintptr_t storage[4] = {1, 0, 0, 0};
        DA_array table = {};
        table.data = storage, table.element_size = sizeof(void *), table.increment = 4, table.nitems = 2,
        table.nalloc = 4;
        each.break_it(table);
        EXPECT_EQ(mova::broken_invariant_of_table(table), each.broken) << each.what;
    }
}

TEST(ArrayInvariants, NumbersThatDoNotGrowBreakTheFirst)
{
    int32_t numbers[] = {1, 2, 2};
    DA_array array = {};
    array.data = numbers, array.nitems = 3;
    EXPECT_EQ(mova::broken_invariant_of_numbers(array), 1);
    numbers[2] = 3;
    EXPECT_EQ(mova::broken_invariant_of_numbers(array), 0);
}

/* Where a header lets an invariant be broken, the edits do not mind. */
TEST(ArrayInvariants, ArraysAreWholeWhereTheirHeadersLetThemBeBroken)
{
    GB_block block = {};
    block.count = -1;
    EXPECT_TRUE(mova::is_whole(block));
    DA_array array = {};
    array.increment = 2, array.nalloc = 3;
    EXPECT_TRUE(mova::is_whole(array));
    block.count = 0;
    EXPECT_TRUE(mova::is_whole(block));
    testing::internal::CaptureStderr();
    block.count = 1;
    EXPECT_FALSE(mova::is_whole(block));
    array.data = &array;
    array.nalloc = 4;
    EXPECT_TRUE(mova::is_whole(array));
    array.nalloc = 3;
    EXPECT_FALSE(mova::is_whole(array));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "invariant 1 is broken\ninvariant 2 is broken\n");
}

} // namespace
