/* SPDX-License-Identifier: MIT */
#include <mova/arrays/id_lookup_table.h>

#include <tests/support/fault_sweep.h>
#include <tests/support/array_storage.h>

#include <string>

namespace {

using namespace mova::test;

int items[3];

/* A table that is full, its last id free, and what the call makes. */
struct tables {
    DA_array *table = io_lut_create(), *made = nullptr;

    tables()
    {
        for (int i = 1; i < 1023; ++i)
            io_lut_add(table, &items[i % 2]);
        io_lut_add(table, nullptr);
    }

    std::string state() const
    {
        std::string text = std::to_string(DA_nitems(table)) + "/" + std::to_string(DA_nalloc(table)) + ":";
        io_lut_iterator all = io_lut_all_items(table);
        while (void *item = io_lut_next_item(&all))
            text += item == &items[0] ? "0" : item == &items[1] ? "1" : "?";
        return text + (made ? " made" : "");
    }

    int broken_invariant() const
    {
        return broken_invariant_of_table(*table) + (made ? 10 * broken_invariant_of_table(*made) : 0);
    }

    void go_on()
    {
        io_lut_set(table, &items[2], io_lut_add(table, &items[2]));
        io_lut_allow_reuse(table);
        io_lut_set(table, nullptr, 1);
    }

    void release()
    {
        for (DA_array **released : {&table, &made})
            io_lut_release(released);
    }
};

constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable}, loses_the_table{grade::unchanged, true};
const answers loses_the_storage{{grade::releasable, true}, {fault_source::allocation}, true};

const fault_row<tables> rows[] = {
    {"io_lut_create",
     [](tables &t) { t.made = io_lut_create(); },
     unchanged,
     loses_the_table,
     {{grade::releasable}, {fault_source::allocation}}},
    {"io_lut_add", [](tables &t) { io_lut_add(t.table, &items[2]); }, unchanged, unchanged, loses_the_storage},
    {"io_lut_set", [](tables &t) { io_lut_set(t.table, &items[2], 2000); }, unchanged, unchanged, loses_the_storage},
    {"io_lut_set, of an id in use",
     [](tables &t) { io_lut_set(t.table, &items[2], 1); },
     unchanged,
     unchanged,
     {usable, {fault_source::raise}}},
    {"io_lut_get_id",
     [](tables &t) { io_lut_get_id(t.table, &items[2]); },
     unchanged,
     unchanged,
     {unchanged, {fault_source::raise}}},
    {"io_lut_get_ptr",
     [](tables &t) { io_lut_get_ptr(t.table, 1023); },
     unchanged,
     unchanged,
     {unchanged, {fault_source::raise}}},
};

TEST(IdLookupTableFaults, WhateverFailsTheTablesAreLeftAsTheHeaderSays)
{
    sweep_faults("id lookup table", rows, 55);
}

} // namespace
