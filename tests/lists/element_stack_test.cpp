/* SPDX-License-Identifier: MIT */
#include <mova/lists/element_stack.h>
#include <mova/lists/internal/invariants.h>

#include <tests/support/recording_host_test_case.h>

namespace {

using mova::broken_invariant;
using mova::test::log;

class ElementStack : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        stack = ES_create(sizeof(int));
        host.take_log();
    }

    void TearDown() override
    {
        if (stack)
            ES_release(&stack);
        recording_host_test_case::TearDown();
    }

    void push(std::initializer_list<int> values)
    {
        for (int value : values)
            ES_push(stack, &value);
        EXPECT_EQ(broken_invariant(*stack), 0);
    }

    ES_stack *stack = nullptr;
    int buffer = -1;
};

TEST_F(ElementStack, NewStackIsEmpty)
{
    EXPECT_EQ(ES_is_empty(stack), 1);
    EXPECT_EQ(ES_count_items(stack), 0);
    EXPECT_EQ(ES_pop(stack, &buffer), 0);
    EXPECT_EQ(ES_inspect_top(stack, &buffer), 0);
    EXPECT_EQ(buffer, -1);
    EXPECT_EQ(stack->element_size, sizeof(int));
}

TEST_F(ElementStack, PopsInReverseOrderOfPushing)
{
    push({1, 2, 3});
    for (int expected : {3, 2, 1}) {
        EXPECT_EQ(ES_pop(stack, &buffer), 1);
        EXPECT_EQ(buffer, expected);
        EXPECT_EQ(broken_invariant(*stack), 0);
    }
    buffer = -1;
    EXPECT_EQ(ES_pop(stack, &buffer), 0);
    EXPECT_EQ(buffer, -1);
    EXPECT_EQ(ES_is_empty(stack), 1);
}

TEST_F(ElementStack, InspectingTheTopRemovesNothing)
{
    push({1, 2});
    host.take_log();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(ES_inspect_top(stack, &buffer), 1);
        EXPECT_EQ(buffer, 2);
    }
    EXPECT_EQ(ES_count_items(stack), 2);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(ElementStack, PushReturnsThePositionOfTheNewTop)
{
    int value = 7;
    EXPECT_EQ(ES_push(stack, &value), stack->last);
    value = 8;
    EXPECT_EQ(ES_push(stack, &value), stack->last);
    EXPECT_EQ(ES_is_empty(stack), 0);
}

TEST_F(ElementStack, CountsWhatWasPushedAndNotPopped)
{
    push({1, 2});
    ES_pop(stack, &buffer);
    EXPECT_EQ(ES_count_items(stack), 1);
}

TEST_F(ElementStack, PopFreesTheNode)
{
    push({1});
    std::string node = host.name_of(stack->last);
    host.take_log();
    ES_pop(stack, &buffer);
    EXPECT_EQ(host.take_log(), log{"dealloc " + node + " " + std::to_string(sizeof(EL_node) + sizeof(int))});
}

TEST_F(ElementStack, EmptinessIsReadFromTheEndsNotFromTheCount)
{
    push({1});
    stack->count = 0;
    EXPECT_EQ(ES_is_empty(stack), 0);
    EXPECT_EQ(ES_pop(stack, &buffer), 1);
    EXPECT_EQ(buffer, 1);
    stack->first = stack->last = nullptr;
    stack->count = 0;
}

TEST_F(ElementStack, AStackIsAnElementList)
{
    push({1, 2, 3});
    EXPECT_EQ(*static_cast<int *>(EL_get_item_at_index(stack, 0)), 1);
    EL_reverse(stack);
    EXPECT_EQ(ES_pop(stack, &buffer), 1);
    EXPECT_EQ(buffer, 1);
}

TEST_F(ElementStack, MakeEmptyAndReleaseFreeEverything)
{
    push({1, 2});
    ES_make_empty(stack);
    EXPECT_EQ(ES_is_empty(stack), 1);
    EXPECT_EQ(host.live_blocks(), 1u);
    push({1});
    ES_release(&stack);
    EXPECT_EQ(stack, nullptr);
    EXPECT_EQ(host.live_blocks(), 0u);
}

TEST_F(ElementStack, OnlyTheLow16BitsOfTheElementSizeCount)
{
    ES_stack *made = ES_create(65540);
    EXPECT_EQ(made->element_size, 4);
    ES_release(&made);
}

} // namespace
