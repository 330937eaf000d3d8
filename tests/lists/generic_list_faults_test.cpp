/* SPDX-License-Identifier: MIT */
#include <mova/lists/generic_list.h>
#include <mova/lists/internal/invariants.h>

#include <tests/support/fault_sweep.h>

#include <string>

namespace {

using namespace mova::test;

int items[4];

void free_item(void **item)
{
    callback_called();
    *item = nullptr;
}

void *same_item(void *item)
{
    callback_called();
    return item;
}

int32_t size_of_item(void *)
{
    callback_called();
    return 4;
}

int accepts_last(void *item)
{
    callback_called();
    return item == &items[2];
}

/* A list of three items, one of one, and what the call made. */
struct lists {
    GL_list *three = GL_create(), *one = GL_create(), *made = nullptr;
    GL_iterator walk;
    void *delivered = nullptr;

    lists()
    {
        for (int i = 0; i < 3; ++i)
            GL_append_after_last(three, &items[i]);
        GL_append_after_last(one, &items[3]);
        walk = GL_tested_items(three, accepts_last);
    }

    std::string state() const { return text_of(three) + text_of(one) + (made ? " made" : ""); }

    int broken_invariant() const { return mova::broken_invariant(*three) + 10 * mova::broken_invariant(*one); }

    void go_on()
    {
        GL_remove_item(three, three->last);
        GL_insert_before_first(three, &items[0]);
        GL_append_list(three, &one);
        one = GL_copy(three);
    }

    void release()
    {
        for (GL_list **list : {&three, &one, &made})
            GL_release(list);
    }

    static std::string text_of(const GL_list *list)
    {
        std::string text = "(" + std::to_string(list->count);
        for (const GL_node *node = list->first; node; node = node->next)
            text += " " + std::to_string(static_cast<int *>(node->item) - items);
        return text + ")";
    }
};

constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable}, releasable{grade::releasable};
constexpr aftermath loses_the_part{grade::unchanged, true};

const fault_row<lists> rows[] = {
    {"GL_create", [](lists &l) { l.made = GL_create(); }, unchanged, unchanged},
    {"GL_append_after_last", [](lists &l) { GL_append_after_last(l.three, &items[3]); }, unchanged, unchanged},
    {"GL_insert_before_first", [](lists &l) { GL_insert_before_first(l.three, &items[3]); }, unchanged, unchanged},
    {"GL_insert_before", [](lists &l) { GL_insert_before(l.three, l.three->last, &items[3]); }, unchanged, unchanged},
    {"GL_insert_after", [](lists &l) { GL_insert_after(l.three, l.three->first, &items[3]); }, unchanged, unchanged},
    {"GL_insert_unique", [](lists &l) { GL_insert_unique(l.three, &items[3]); }, unchanged, unchanged},
    {"GL_copy", [](lists &l) { l.made = GL_copy(l.three); }, unchanged, loses_the_part},
    {"GL_total_copy", [](lists &l) { l.made = GL_total_copy(l.three, same_item); }, unchanged, loses_the_part},
    {"GL_check", [](lists &l) { GL_check(l.three, size_of_item); }, unchanged, unchanged},
    {"GL_next_item", [](lists &l) { GL_next_item(&l.walk, &l.delivered); }, unchanged, unchanged},
    {"GL_next_position", [](lists &l) { GL_next_position(&l.walk, reinterpret_cast<GL_node **>(&l.delivered)); },
     unchanged, unchanged},
    {"GL_total_make_empty", [](lists &l) { GL_total_make_empty(l.three, free_item); }, usable, releasable},
    {"GL_total_release", [](lists &l) { GL_total_release(&l.three, free_item); }, usable, releasable},
};

TEST(GenericListFaults, WhateverFailsTheListsAreLeftAsTheHeaderSays)
{
    sweep_faults("generic list", rows, 128);
}

TEST(GenericListFaults, AfterAnExceptionTheListBeginsWithTheItemThatWasNotFreed)
{
    lists l;
    fault_plan::get().arm(fault_source::callback, fault_way::throws, 2);
    EXPECT_THROW(GL_total_make_empty(l.three, free_item), fault);
    EXPECT_EQ(l.state(), "(2 1 2)(1 3)");
    l.release();
    EXPECT_EQ(recording_host::get().live_blocks(), 0u);
}

TEST(GenericListFaults, AfterAJumpReleasingGoesOnWithTheItemThatWasNotFreed)
{
    lists l;
    fault_plan::get().arm(fault_source::callback, fault_way::jumps, 2);
    EXPECT_EQ(fault_sweep::run<lists>([](lists &left) { GL_total_release(&left.three, free_item); }, l),
              fault_sweep::ending::jumped);
    ASSERT_NE(l.three, nullptr);
    EXPECT_EQ(l.three->first->item, &items[1]);
    GL_total_make_empty(l.three, free_item);
    EXPECT_EQ(l.broken_invariant(), 0);
    l.release();
    EXPECT_EQ(recording_host::get().live_blocks(), 0u);
}

} // namespace
