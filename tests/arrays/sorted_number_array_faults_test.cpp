/* SPDX-License-Identifier: MIT */
#include <mova/arrays/sorted_number_array.h>

#include <tests/support/fault_sweep.h>
#include <tests/support/array_storage.h>

#include <string>

namespace {

using namespace mova::test;

/* The numbers 1 2 5 7, which fill their array. */
struct number_array {
    DA_array *array = DA_create(4, 4);

    number_array()
    {
        DA_extend(array, 3);
        for (int32_t number : {1, 2, 5, 7})
            DA_append(array, &number, 1);
    }

    std::string state() const
    {
        std::string text = std::to_string(DA_nalloc(array)) + ":";
        for (int32_t i = 0; i < DA_nitems(array); ++i)
            text += " " + std::to_string(static_cast<const int32_t *>(DA_data(array))[i]);
        return text;
    }

    int broken_invariant() const
    {
        return mova::test::broken_invariant(*array) + 10 * mova::broken_invariant_of_numbers(*array);
    }

    void go_on()
    {
        SA_add_number(array, 6);
        SA_adapt_for_insert(array, 3);
        SA_adapt_for_reverse(array, 10);
        SA_remove_number(array, 7);
    }

    void release() { DA_release(array); }
};

constexpr aftermath unchanged{grade::unchanged};

const fault_row<number_array> rows[] = {
    {"SA_add_number",
     [](number_array &a) { SA_add_number(a.array, 3); },
     unchanged,
     unchanged,
     {{grade::releasable, true}, {fault_source::allocation}, true}},
    {"SA_adapt_for_reverse", [](number_array &a) { SA_adapt_for_reverse(a.array, 10); }, unchanged, unchanged},
    {"SA_adapt_for_roll", [](number_array &a) { SA_adapt_for_roll(a.array, 3, 10); }, unchanged, unchanged},
    {"SA_adapt_for_roll, of numbers outside the companion", [](number_array &a) { SA_adapt_for_roll(a.array, 3, 6); },
     unchanged, unchanged},
};

TEST(SortedNumberArrayFaults, WhateverFailsTheNumbersAreLeftAsTheHeaderSays)
{
    sweep_faults("sorted number array", rows, 20);
}

} // namespace
