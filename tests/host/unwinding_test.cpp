/* SPDX-License-Identifier: MIT */
// Exceptions and longjmp leave the library through its own frames and through callers written in C. The memory
// service is the program's own here: it hands out pieces of one array, so that what a cut-off call leaves behind is
// no leak.
#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <tuple>

#include <gtest/gtest.h>

#include <mova/frame/host.h>
#include <mova/host/errors.h>
#include <mova/host/messages.h>
#include <mova/lists/generic_list.h>

#include "unwinding_callers.h"

namespace {

alignas(16) std::array<unsigned char, 1 << 14> arena;
std::size_t arena_used = 0;

} // namespace

void *MM_alloc_item(size_t size)
{
    unsigned char *item = arena.data() + arena_used;
    arena_used += (size + 15) / 16 * 16;
    if (arena_used > arena.size())
        throw std::bad_alloc();
    return item;
}

void MM_dealloc_item(void *, size_t)
{
}

void *MM_realloc_item(void *item, size_t old_size, size_t new_size)
{
    return std::memcpy(MM_alloc_item(new_size), item, std::min(old_size, new_size));
}

namespace {

std::array<int, 3> items{1, 2, 3};

int refuse_the_second(void *item)
{
    if (item == &items[1])
        throw std::domain_error("the second");
    return 1;
}

void *copy_all_but_the_second(void *item)
{
    refuse_the_second(item);
    return item;
}

void free_all_but_the_second(void **item)
{
    refuse_the_second(*item);
}

class Unwinding : public testing::Test {
protected:
    Unwinding()
    {
        frames_left = 0;
        for (int &item : items)
            GL_append_after_last(list, &item);
    }

    ~Unwinding() override
    {
        arena_used = 0;
        mova_set_error_handler(nullptr);
        mova_set_debug_print(nullptr);
    }

    void expect_whole_list() const
    {
        EXPECT_EQ(list->count, 3);
        EXPECT_EQ(list->first->item, &items[0]);
        EXPECT_EQ(list->first->next->item, &items[1]);
        EXPECT_EQ(list->last->item, &items[2]);
    }

    GL_list *list = GL_create();
};

TEST_F(Unwinding, AnExceptionPassesFromACopyCallbackThroughTheLibrary)
{
    EXPECT_THROW(std::ignore = GL_total_copy(list, copy_all_but_the_second), std::domain_error);
    expect_whole_list();
}

TEST_F(Unwinding, AnExceptionPassesFromACopyCallbackThroughTheLibraryAndACallerInC)
{
    EXPECT_THROW(c_total_copy(list, copy_all_but_the_second), std::domain_error);
    EXPECT_EQ(frames_left, 1);
    expect_whole_list();
}

TEST_F(Unwinding, AnExceptionPassesFromAFreeCallback)
{
    EXPECT_THROW(GL_total_make_empty(list, free_all_but_the_second), std::domain_error);
}

TEST_F(Unwinding, AnIterationGoesOnAfterAnExceptionFromItsTest)
{
    GL_iterator iterator = GL_tested_items(list, refuse_the_second);
    void *item = nullptr;
    EXPECT_EQ(c_next_item(&iterator, &item), 1);
    EXPECT_EQ(item, &items[0]);
    EXPECT_THROW(c_next_item(&iterator, &item), std::domain_error);
    EXPECT_EQ(frames_left, 2);
    EXPECT_EQ(c_next_item(&iterator, &item), 1);
    EXPECT_EQ(item, &items[2]);
    EXPECT_EQ(c_next_item(&iterator, &item), 0);
}

TEST_F(Unwinding, ARaisePassesThroughACallerInC)
{
    EXPECT_THROW(c_raise("genlist", 1, MOVA_PRECONDITION_BROKEN), mova::error);
    EXPECT_EQ(frames_left, 1);
}

TEST_F(Unwinding, AJumpPassesFromTheErrorHandler)
{
    EXPECT_EQ(jump_out_of_the_error_handler(), 1);
}

TEST_F(Unwinding, AJumpPassesFromATestAndTheIterationGoesOn)
{
    GL_iterator iterator = GL_all_items(list);
    EXPECT_EQ(jump_out_of_a_test(&iterator), 1);
    iterator.test = nullptr;
    void *item = nullptr;
    EXPECT_EQ(c_next_item(&iterator, &item), 1);
    EXPECT_EQ(item, &items[1]);
}

TEST_F(Unwinding, AJumpPassesFromAFreeCallback)
{
    EXPECT_EQ(jump_out_of_a_free_callback(list), 1);
}

TEST_F(Unwinding, AJumpPassesFromATextFunction)
{
    EXPECT_EQ(jump_out_of_a_text_function(), 1);
}

} // namespace
