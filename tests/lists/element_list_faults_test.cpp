/* SPDX-License-Identifier: MIT */
#include <mova/lists/element_list.h>
#include <mova/lists/internal/invariants.h>

#include <tests/support/fault_sweep.h>

#include <string>

namespace {

using namespace mova::test;

int accepts_c(void *element)
{
    callback_called();
    return *static_cast<char *>(element) == 'C';
}

/* The open list ABCD, the ring XYZ, a walk over the list, and what the call made. */
struct lists {
    EL_list *open = EL_create(1), *ring = EL_create(1), *made = nullptr;
    EL_iterator walk;
    void *delivered = nullptr;

    lists()
    {
        for (const char *element = "ABCD"; *element; ++element)
            EL_append_after_last(open, element);
        for (const char *element = "XYZ"; *element; ++element)
            EL_append_after_last(ring, element);
        EL_set_closed(ring);
        walk = EL_tested_items_inbetween(open, open->first, open->last, 1, accepts_c);
    }

    std::string state() const { return text_of(open) + text_of(ring) + (made ? " made" : ""); }

    int broken_invariant() const { return mova::broken_invariant(*open) + 10 * mova::broken_invariant(*ring); }

    void go_on()
    {
        EL_remove_item(ring, ring->last);
        EL_insert_before_first(ring, "V");
        EL_reverse(ring);
        EL_roll(ring, ring->last);
        EL_make_open_at_position(ring, ring->last);
        EL_append_list(open, &ring);
        ring = EL_remove_and_get_end_part(open, open->first->next);
    }

    void release()
    {
        for (EL_list **list : {&open, &ring, &made}) {
            if (*list)
                EL_release(list);
        }
    }

    static std::string text_of(const EL_list *list)
    {
        std::string text = (list->closed ? "(ring " : "(") + std::to_string(list->count) + " ";
        EL_iterator iterator = EL_all_items(list);
        for (void *element; EL_next_item(&iterator, &element);)
            text += *static_cast<char *>(element);
        return text + ")";
    }
};

constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable}, loses_a_block{grade::unchanged, true};

const fault_row<lists> rows[] = {
    {"EL_create", [](lists &l) { l.made = EL_create(1); }, unchanged, unchanged},
    {"EL_append_after_last", [](lists &l) { EL_append_after_last(l.ring, "N"); }, unchanged, unchanged},
    {"EL_insert_before_first", [](lists &l) { EL_insert_before_first(l.ring, "N"); }, unchanged, unchanged},
    {"EL_insert_before", [](lists &l) { EL_insert_before(l.ring, l.ring->last, "N"); }, unchanged, unchanged},
    {"EL_insert_after", [](lists &l) { EL_insert_after(l.ring, l.ring->first, "N"); }, unchanged, unchanged},
    {"EL_insert_before_index", [](lists &l) { EL_insert_before_index(l.open, 1, "N"); }, unchanged, unchanged},
    {"EL_insert_after_index", [](lists &l) { EL_insert_after_index(l.open, 1, "N"); }, unchanged, unchanged},
    {"EL_replace_items_inbetween",
     [](lists &l) { EL_replace_items_inbetween(l.open, l.open->first, l.open->last, l.ring, 1); },
     usable,
     usable,
     {usable, {fault_source::raise}}},
    {"EL_total_copy", [](lists &l) { l.made = EL_total_copy(l.open); }, unchanged, loses_a_block},
    {"EL_total_copy of a ring", [](lists &l) { l.made = EL_total_copy(l.ring); }, unchanged, loses_a_block},
    {"EL_total_copy_inbetween", [](lists &l) { l.made = EL_total_copy_inbetween(l.ring, l.ring->last, l.ring->first); },
     unchanged, loses_a_block},
    {"EL_roll",
     [](lists &l) { EL_roll(l.open, l.open->first); },
     unchanged,
     unchanged,
     {unchanged, {fault_source::raise}}},
    {"EL_make_open_at_position", [](lists &l) { EL_make_open_at_position(l.ring, l.ring->last); }, unchanged,
     unchanged},
    {"EL_remove_and_get_end_part", [](lists &l) { l.made = EL_remove_and_get_end_part(l.open, l.open->last); },
     unchanged, loses_a_block},
    {"EL_remove_and_get_end_part of a ring",
     [](lists &l) { l.made = EL_remove_and_get_end_part(l.ring, l.ring->first); }, unchanged, loses_a_block},
    {"EL_next_position", [](lists &l) { EL_next_position(&l.walk, reinterpret_cast<EL_node **>(&l.delivered)); },
     unchanged, unchanged},
    {"EL_next_item", [](lists &l) { EL_next_item(&l.walk, &l.delivered); }, unchanged, unchanged},
    {"EL_next_item_copy", [](lists &l) { EL_next_item_copy(&l.walk, &l.delivered); }, unchanged, unchanged},
};

TEST(ElementListFaults, WhateverFailsTheListsAreLeftAsTheHeaderSays)
{
    sweep_faults("element list", rows, 144);
}

TEST(ElementListFaults, AnElementThatTheTestThrowsForHasBeenPassed)
{
    lists l;
    fault_plan::get().arm(fault_source::callback, fault_way::throws, 3);
    EXPECT_THROW(EL_next_item(&l.walk, &l.delivered), fault);
    EXPECT_EQ(l.delivered, EL_get_item_at_index(l.open, 2));
    EXPECT_EQ(EL_next_item(&l.walk, &l.delivered), 0);
    EXPECT_EQ(l.delivered, EL_get_item_at_index(l.open, 3));
    l.release();
}

} // namespace
