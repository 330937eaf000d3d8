/* SPDX-License-Identifier: MIT */
#include <mova/lists/internal/invariants.h>
#include <mova/lists/simple_list.h>

#include <tests/support/fault_sweep.h>

#include <string>
#include <tuple>

namespace {

using namespace mova::test;

struct record {
    record *prev, *next;
    char name;
};

record records[] = {{nullptr, nullptr, 'A'}, {nullptr, nullptr, 'B'}, {nullptr, nullptr, 'C'},
                    {nullptr, nullptr, 'X'}, {nullptr, nullptr, 'Y'}, {nullptr, nullptr, 'Z'}};
record copies[6];

void free_item(void **item)
{
    callback_called();
    *static_cast<record *>(*item) = {nullptr, nullptr, '-'};
}

void *copy_of(void *item)
{
    callback_called();
    record *original = static_cast<record *>(item);
    record *copy = &copies[original - records];
    *copy = {nullptr, nullptr, original->name};
    return copy;
}

int32_t size_of_item(void *)
{
    callback_called();
    return 4;
}

int accepts_c(void *item)
{
    callback_called();
    return static_cast<record *>(item)->name == 'C';
}

/* The open list ABC, the ring XY, the item Z alone, a walk over the list, and what the call made. */
struct lists {
    SL_list *open = SL_create(), *ring = SL_create(), *made = nullptr;
    record *alone = &records[5];
    SL_iterator walk;
    void *delivered = nullptr;

    lists()
    {
        for (int i = 0; i < 6; ++i)
            records[i] = {nullptr, nullptr, "ABCXYZ"[i]};
        for (int i = 0; i < 3; ++i)
            SL_append_after_last(open, &records[i]);
        for (int i = 3; i < 5; ++i)
            SL_append_after_last(ring, &records[i]);
        SL_set_closed(ring);
        walk = SL_tested_items(open, accepts_c);
    }

    std::string state() const { return text_of(open) + text_of(ring) + (made ? " made" : ""); }

    int broken_invariant() const
    {
        return (open ? mova::broken_invariant(*open) : 0) + 10 * mova::broken_invariant(*ring);
    }

    void go_on()
    {
        if (!open)
            open = SL_create();
        SL_insert_after(ring, ring->first, alone);
        SL_reverse(ring);
        SL_roll(ring, alone);
        SL_remove_item(ring, alone);
        SL_reset_closed(ring);
        SL_append_list(open, &ring);
        ring = SL_create();
        SL_reverse(open);
    }

    void release()
    {
        for (SL_list **list : {&open, &ring, &made}) {
            if (*list)
                SL_total_release(list, free_item);
        }
    }

    static std::string text_of(const SL_list *list)
    {
        if (!list)
            return "()";
        std::string text = (list->closed ? "(ring " : "(") + std::to_string(list->count) + " ";
        SL_iterator iterator = SL_all_items(list);
        for (void *item; SL_next_item(&iterator, &item);)
            text += static_cast<record *>(item)->name;
        return text + ")";
    }
};

constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable}, releasable{grade::releasable},
    lost{grade::lost};
constexpr aftermath loses_the_head{grade::unchanged, true};
const answers returned_from{usable, {fault_source::raise}};

const fault_row<lists> rows[] = {
    {"SL_create", [](lists &l) { l.made = SL_create(); }, unchanged, unchanged},
    {"SL_release", [](lists &l) { SL_release(&l.open); }, unchanged, unchanged, returned_from},
    {"SL_total_release", [](lists &l) { SL_total_release(&l.open, free_item); }, usable, releasable},
    {"SL_total_release of a ring", [](lists &l) { SL_total_release(&l.ring, free_item); }, usable, releasable},
    {"SL_make_empty", [](lists &l) { SL_make_empty(l.open, free_item); }, usable, releasable},
    {"SL_make_empty of a ring", [](lists &l) { SL_make_empty(l.ring, free_item); }, usable, releasable},
    {"SL_total_copy", [](lists &l) { l.made = SL_total_copy(l.open, copy_of); }, unchanged, loses_the_head},
    {"SL_total_copy of a ring", [](lists &l) { l.made = SL_total_copy(l.ring, copy_of); }, unchanged, loses_the_head},
    {"SL_check", [](lists &l) { SL_check(l.ring, size_of_item); }, unchanged, unchanged},
    {"SL_roll", [](lists &l) { SL_roll(l.ring, l.alone); }, unchanged, unchanged, {lost, {fault_source::raise}}},
    {"SL_next_item", [](lists &l) { SL_next_item(&l.walk, &l.delivered); }, unchanged, unchanged},
};

TEST(SimpleListFaults, WhateverFailsTheListsAreLeftAsTheHeaderSays)
{
    sweep_faults("simple list", rows, 104);
}

TEST(SimpleListFaults, AfterAnExceptionTheListIsOpenAndBeginsWithTheItemThatWasNotFreed)
{
    lists l;
    SL_set_closed(l.open);
    fault_plan::get().arm(fault_source::callback, fault_way::throws, 2);
    EXPECT_THROW(SL_make_empty(l.open, free_item), fault);
    EXPECT_EQ(l.state(), "(2 BC)(ring 2 XY)");
    l.release();
    EXPECT_EQ(recording_host::get().live_blocks(), 0u);
}

TEST(SimpleListFaults, AfterAJumpReleasingGoesOnWithTheItemThatWasNotFreed)
{
    lists l;
    fault_plan::get().arm(fault_source::callback, fault_way::jumps, 2);
    EXPECT_EQ(fault_sweep::run<lists>([](lists &left) { SL_total_release(&left.open, free_item); }, l),
              fault_sweep::ending::jumped);
    ASSERT_NE(l.open, nullptr);
    EXPECT_EQ(l.open->closed, 0);
    EXPECT_EQ(l.open->first, &records[1]);
    SL_make_empty(l.open, free_item);
    EXPECT_EQ(records[2].name, '-');
    EXPECT_EQ(l.broken_invariant(), 0);
    l.release();
    EXPECT_EQ(recording_host::get().live_blocks(), 0u);
}

TEST(SimpleListFaults, CopiesThatWereMadeBeforeAnExceptionStayTheCallers)
{
    lists l;
    fault_plan::get().arm(fault_source::callback, fault_way::throws, 3);
    EXPECT_THROW(std::ignore = SL_total_copy(l.open, copy_of), fault);
    EXPECT_EQ(copies[0].next, &copies[1]);
    EXPECT_EQ(copies[1].prev, &copies[0]);
    l.release();
}

TEST(SimpleListFaults, AnItemThatTheTestThrowsForHasBeenPassed)
{
    lists l;
    fault_plan::get().arm(fault_source::callback, fault_way::throws, 2);
    EXPECT_THROW(SL_next_item(&l.walk, &l.delivered), fault);
    EXPECT_EQ(l.delivered, nullptr);
    EXPECT_EQ(SL_next_item(&l.walk, &l.delivered), 1);
    EXPECT_EQ(l.delivered, &records[2]);
    l.release();
}

} // namespace
