/* SPDX-License-Identifier: MIT */
#include <mova/lists/double_list.h>
#include <mova/lists/internal/invariants.h>

#include <tests/support/fault_sweep.h>

#include <string>

namespace {

using namespace mova::test;

/* The open list 1 2 3 4, the ring 5 6 7, and what the call made. */
struct lists {
    DBLL_list *open = DBLL_create(), *ring = DBLL_create_with_two(5, 6), *made = nullptr;

    lists()
    {
        for (double value : {1, 2, 3, 4})
            DBLL_add_double(open, value);
        DBLL_add_double(ring, 7);
        DBLL_set_closed(ring);
    }

    std::string state() const { return text_of(open) + text_of(ring) + (made ? " made" : ""); }

    int broken_invariant() const { return mova::broken_invariant(*open) + 10 * mova::broken_invariant(*ring); }

    void go_on()
    {
        DBLL_add_double_unique(open, 2.5, 0.1);
        DBLL_remove_double_occ(open, 0.7);
        DBLL_reverse(ring);
        DBLL_roll(ring, ring->last);
        DBLL_sort(ring);
    }

    void release()
    {
        for (DBLL_list **list : {&open, &ring, &made}) {
            if (*list)
                DBLL_release(list);
        }
    }

    static std::string text_of(const DBLL_list *list)
    {
        std::string text = (list->closed ? "(ring " : "(") + std::to_string(list->count);
        EL_iterator iterator = DBLL_all_doubles(list);
        for (double value; DBLL_next_double(&iterator, &value);)
            text += " " + std::to_string(value);
        return text + ")";
    }
};

constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable}, loses_the_part{grade::unchanged, true};

const fault_row<lists> rows[] = {
    {"DBLL_create", [](lists &l) { l.made = DBLL_create(); }, unchanged, unchanged},
    {"DBLL_create_with_two", [](lists &l) { l.made = DBLL_create_with_two(1, 2); }, unchanged, loses_the_part},
    {"DBLL_add_double", [](lists &l) { DBLL_add_double(l.ring, 9); }, unchanged, unchanged},
    {"DBLL_insert_before", [](lists &l) { DBLL_insert_before(l.ring, l.ring->last, 9); }, unchanged, unchanged},
    {"DBLL_insert_after", [](lists &l) { DBLL_insert_after(l.ring, l.ring->last, 9); }, unchanged, unchanged},
    {"DBLL_insert_before_index", [](lists &l) { DBLL_insert_before_index(l.open, 1, 9); }, unchanged, unchanged},
    {"DBLL_insert_after_index", [](lists &l) { DBLL_insert_after_index(l.open, 1, 9); }, unchanged, unchanged},
    {"DBLL_add_double_unique", [](lists &l) { DBLL_add_double_unique(l.open, 1.5, 0.1); }, unchanged, unchanged},
    {"DBLL_add_double_unique at the end", [](lists &l) { DBLL_add_double_unique(l.open, 9, 0.1); }, unchanged,
     unchanged},
    {"DBLL_replace_doubles_inbetween",
     [](lists &l) { DBLL_replace_doubles_inbetween(l.open, l.open->first, l.open->last, l.ring); },
     usable,
     usable,
     {usable, {fault_source::raise}}},
    {"DBLL_copy", [](lists &l) { l.made = DBLL_copy(l.open); }, unchanged, loses_the_part},
    {"DBLL_copy of a ring", [](lists &l) { l.made = DBLL_copy(l.ring); }, unchanged, loses_the_part},
    {"DBLL_copy_inbetween", [](lists &l) { l.made = DBLL_copy_inbetween(l.ring, l.ring->last, l.ring->first); },
     unchanged, loses_the_part},
    {"DBLL_roll",
     [](lists &l) { DBLL_roll(l.open, l.open->first); },
     unchanged,
     unchanged,
     {unchanged, {fault_source::raise}}},
};

TEST(DoubleListFaults, WhateverFailsTheListsAreLeftAsTheHeaderSays)
{
    sweep_faults("double list", rows, 104);
}

} // namespace
