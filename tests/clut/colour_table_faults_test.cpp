/* SPDX-License-Identifier: MIT */
#include <mova/clut/colour_table.h>

#include <tests/support/colour_table_start.h>
#include <tests/support/fault_sweep.h>
#include <tests/support/recording_host_test_case.h>
#include <mova/clut/internal/invariants.h>

#include <algorithm>
#include <initializer_list>
#include <span>
#include <string>
#include <utility>

namespace {

using namespace mova::test;
using mova::modules;
using mova::clut::table;

void tell(int32_t, int16_t, int16_t, int16_t)
{
    callback_called();
}

std::string numbers(std::initializer_list<int32_t> each)
{
    std::string text;
    for (int32_t number : each)
        text += std::to_string(number) + " ";
    return text;
}

/* The table before it is made, and what a call returned. Everything is printed. */
struct no_table {
    int32_t result = -1;
    int16_t components[3] = {-1, -1, -1};

    no_table()
    {
        restart_colour_table();
        clut_debug = 2;
    }

    std::string state() const
    {
        const mova::clut_module_record &words = modules.rgblut;
        std::string text = numbers({words.first_free_index, words.full_warning, words.initialised, words.static_phase,
                                    table.size, table.dirty_index, result, components[0]});
        for (const auto &standard : standard_colours)
            text += numbers({*standard.word});
        for (int32_t index = 0; index < table.size; ++index) {
            const mova::clut::colour &colour = table.colours[index];
            text += numbers({table.states[index], colour.red, colour.green, colour.blue});
        }
        return text;
    }

    int broken_invariant() const { return modules.rgblut.initialised ? mova::clut::broken_invariant() : 0; }

    void go_on() { RGBLUT_init(60, nullptr, 0); }

    void release() { restart_colour_table(); }
};

/* A table of 44 indices in the static phase, of which 40 is hard. */
struct static_table : no_table {
    static_table()
    {
        RGBLUT_init(44, tell, 0);
        CLUT_set(40, 1, 2, 3);
    }

    int broken_invariant() const { return mova::clut::broken_invariant(); }

    /* Takes every index, and gives the last dynamic one back. */
    void go_on()
    {
        CLUT_set(modules.rgblut.static_phase ? 43 : 40, 4, 5, 6);
        CLUT_copy(20, 40);
        for (int i = 0; i < 6; ++i)
            CLUT_new_index();
        EXPECT_EQ(std::ranges::count(std::span(table.states, 44), mova::clut::free_index + 0), 0);
        int32_t last = 43;
        while (table.states[last] != mova::clut::dynamic_index)
            --last;
        CLUT_release_index(last);
        EXPECT_EQ(CLUT_new_index(), last);
    }
};

/* The same with every index hard. */
struct hard_table : static_table {
    hard_table()
    {
        for (int32_t index : {39, 41, 42, 43})
            CLUT_alloc(index);
    }
};

/* The static table after the dirty index, 39, and 41 and 42 were handed out, and 41 was released. */
struct dynamic_table : static_table {
    dynamic_table()
    {
        CLUT_new_index();
        CLUT_new_index();
        CLUT_release_index(41);
    }
};

/* The same with every index taken. */
struct full_table : dynamic_table {
    full_table()
    {
        CLUT_new_index();
        CLUT_new_index();
    }
};

constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable}, releasable{grade::releasable};
const answers after_a_raise{usable, {fault_source::raise}};

const fault_row<no_table> rows_without_a_table[] = {
    {"RGBLUT_init", [](no_table &) { RGBLUT_init(50, tell, 0); }, unchanged, releasable},
    {"RGBLUT_init of a table that is too small",
     [](no_table &) { RGBLUT_init(38, tell, 0); },
     releasable,
     releasable,
     {releasable, {fault_source::raise}}},
    {"CLUT_alloc before the table is made",
     [](no_table &) { CLUT_alloc(40); },
     unchanged,
     unchanged,
     {unchanged, {fault_source::raise}}},
    {"CLUT_new_index before the table is made",
     [](no_table &) { CLUT_new_index(); },
     unchanged,
     unchanged,
     {releasable, {fault_source::raise}}},
    {"CLUT_release_index before the table is made",
     [](no_table &) { CLUT_release_index(40); },
     unchanged,
     unchanged,
     {unchanged, {fault_source::raise}}},
    {"CLUT_set before the table is made",
     [](no_table &) { CLUT_set(40, 1, 2, 3); },
     unchanged,
     unchanged,
     {unchanged, {fault_source::raise}}},
    {"CLUT_get before the table is made",
     [](no_table &t) { CLUT_get(40, &t.components[0], &t.components[1], &t.components[2]); },
     unchanged,
     unchanged,
     {usable, {fault_source::raise}}},
    {"CLUT_copy before the table is made",
     [](no_table &) { CLUT_copy(20, 40); },
     unchanged,
     unchanged,
     {unchanged, {fault_source::raise}}},
    {"CLUT_statistics before the table is made", [](no_table &) { CLUT_statistics(); }, unchanged, unchanged},
};

const fault_row<static_table> rows_in_the_static_phase[] = {
    {"RGBLUT_init again",
     [](static_table &) { RGBLUT_init(50, tell, 0); },
     unchanged,
     unchanged,
     {releasable, {fault_source::raise}}},
    {"CLUT_alloc", [](static_table &) { CLUT_alloc(42); }, unchanged, usable},
    {"CLUT_alloc of a hard index", [](static_table &) { CLUT_alloc(40); }, unchanged, usable, after_a_raise},
    {"CLUT_set of a free index", [](static_table &) { CLUT_set(42, 7, 8, 9); }, unchanged, usable},
    {"CLUT_set of a hard index", [](static_table &) { CLUT_set(40, 7, 8, 9); }, unchanged, usable},
    {"CLUT_set outside", [](static_table &) { CLUT_set(44, 7, 8, 9); }, unchanged, unchanged, after_a_raise},
    {"CLUT_set_RGB", [](static_table &) { CLUT_set_RGB(42, 1, 1, 1); }, unchanged, usable},
    {"CLUT_get", [](static_table &t) { CLUT_get(40, &t.components[0], &t.components[1], &t.components[2]); }, usable,
     usable},
    {"CLUT_copy", [](static_table &) { CLUT_copy(20, 40); }, unchanged, usable},
    {"CLUT_copy to a free index", [](static_table &) { CLUT_copy(41, 40); }, unchanged, usable, after_a_raise},
    {"CLUT_copy outside", [](static_table &) { CLUT_copy(44, 40); }, unchanged, unchanged, after_a_raise},
    {"CLUT_new_index, the first", [](static_table &t) { t.result = CLUT_new_index(); }, usable, usable},
    {"CLUT_release_index of a hard index", [](static_table &) { CLUT_release_index(40); }, unchanged, unchanged},
    {"CLUT_statistics", [](static_table &) { CLUT_statistics(); }, unchanged, unchanged},
};

const fault_row<hard_table> rows_of_a_hard_table[] = {
    {"CLUT_new_index without an index to reserve",
     [](hard_table &t) { t.result = CLUT_new_index(); },
     releasable,
     releasable,
     {releasable, {fault_source::raise}}},
};

const fault_row<dynamic_table> rows_in_the_dynamic_phase[] = {
    {"CLUT_new_index", [](dynamic_table &t) { t.result = CLUT_new_index(); }, unchanged, usable},
    {"CLUT_release_index", [](dynamic_table &) { CLUT_release_index(42); }, unchanged, usable},
    {"CLUT_release_index of a hard index", [](dynamic_table &) { CLUT_release_index(40); }, unchanged, unchanged},
    {"CLUT_set of a free index", [](dynamic_table &) { CLUT_set(43, 7, 8, 9); }, unchanged, unchanged, after_a_raise},
};

const fault_row<full_table> rows_of_a_full_table[] = {
    {"CLUT_new_index of a full table", [](full_table &t) { t.result = CLUT_new_index(); }, usable, usable},
    {"CLUT_release_index of a full table", [](full_table &) { CLUT_release_index(42); }, unchanged, releasable},
};

class ColourTableFaults : public recording_host_test_case {
protected:
    void TearDown() override
    {
        restart_colour_table();
        recording_host_test_case::TearDown();
    }
};

TEST_F(ColourTableFaults, WhateverFailsTheTableIsLeftAsTheHeaderSays)
{
    sweep_faults("colour table, not made", rows_without_a_table, 300);
    sweep_faults("colour table, static phase", rows_in_the_static_phase, 115);
    sweep_faults("colour table, all hard", rows_of_a_hard_table, 10);
    sweep_faults("colour table, dynamic phase", rows_in_the_dynamic_phase, 30);
    sweep_faults("colour table, full", rows_of_a_full_table, 20);
}

void fail(fault_source source, fault_way way, int nth)
{
    fault_plan::get().arm(source, way, nth);
}

/* Runs `act`, which is to jump. */
void expect_jump(void (*act)(no_table &), no_table &subject)
{
    EXPECT_EQ(fault_sweep::run(act, subject), fault_sweep::ending::jumped);
    clut_debug = 0;
}

TEST_F(ColourTableFaults, AfterAJumpOutOfTheCallbackTheProgramCanMakeTheFixedIndicesHardItself)
{
    no_table subject;
    clut_debug = 0;
    fail(fault_source::callback, fault_way::jumps, 4);
    expect_jump([](no_table &) { RGBLUT_init(50, tell, 0); }, subject);
    for (int32_t index = 0; index < 50; ++index) {
        const bool was_set = index == GE_BLACK || index == GE_WHITE || index == GE_CLEAR || index == GE_RED;
        EXPECT_EQ(table.states[index], was_set ? 1 : 0) << index;
    }
    for (int32_t index = 0; index <= GE_DRKCYAN; ++index) {
        if (table.states[index] == 0)
            CLUT_alloc(index);
    }
    EXPECT_EQ(mova::clut::broken_invariant(), 0);
}

TEST_F(ColourTableFaults, AJumpOutOfTheAnnouncementLeavesATableWithoutIndices)
{
    no_table subject;
    fail(fault_source::text, fault_way::jumps, 1);
    expect_jump([](no_table &) { RGBLUT_init(50, tell, 0); }, subject);
    EXPECT_EQ(table.size, 0);
    expect_raise("RGBLUT", 93, 4297, [] { RGBLUT_init(50, tell, 0); });
    expect_raise("RGBLUT", 266, 4297, [] { CLUT_set(0, 1, 2, 3); });
}

TEST_F(ColourTableFaults, AnExceptionWhileATableIsReplacedBringsTheOldOneBack)
{
    for (auto [source, nth] : {std::pair{fault_source::text, 1}, {fault_source::callback, 7}}) {
        static_table subject;
        const std::string before = subject.state();
        host.set_raise_mode(raise_mode::returns);
        fail(source, fault_way::throws, nth);
        EXPECT_THROW(RGBLUT_init(80, tell, 0), fault);
        host.set_raise_mode(raise_mode::throws);
        EXPECT_EQ(subject.state(), before);
        subject.go_on();
    }
}

TEST_F(ColourTableFaults, AnExceptionOutOfTheFirstRequestsPrintEndsTheStaticPhaseAndLeavesTheIndexFree)
{
    static_table subject;
    fail(fault_source::text, fault_way::throws, 2);
    EXPECT_THROW(CLUT_new_index(), fault);
    EXPECT_EQ(modules.rgblut.static_phase, 0);
    EXPECT_EQ(table.dirty_index, 39);
    EXPECT_EQ(CLUT_new_index(), 41);
}

/* It had stayed at 42, which was taken meanwhile. */
TEST_F(ColourTableFaults, AnIndexThatCouldNotBePrintedIsTheFirstFreeOne)
{
    dynamic_table subject;
    EXPECT_EQ(CLUT_new_index(), 41);
    EXPECT_EQ(modules.rgblut.first_free_index, 42);
    fail(fault_source::text, fault_way::throws, 2);
    EXPECT_THROW(CLUT_new_index(), fault);
    EXPECT_EQ(modules.rgblut.first_free_index, 43);
    EXPECT_EQ(CLUT_new_index(), 43);
}

TEST_F(ColourTableFaults, WithoutAnIndexToReserveIndex0TakesTheDirtyOnesPartWhateverBecomesOfTheRaise)
{
    for (auto raises : {raise_mode::throws, raise_mode::returns, raise_mode::jumps}) {
        hard_table subject;
        host.set_raise_mode(raises);
        fault_sweep::run<hard_table>([](hard_table &t) { t.result = CLUT_new_index(); }, subject);
        EXPECT_EQ(modules.rgblut.static_phase, 0);
        EXPECT_EQ(table.dirty_index, 0);
        EXPECT_EQ(CLUT_new_index(), 0);
        host.set_raise_mode(raise_mode::throws);
    }
}

TEST_F(ColourTableFaults, AnAnswerOfAFullTableThatFailedHasMovedTheFirstFreeIndex)
{
    for (auto [way, nth] : {std::pair{fault_way::throws, 2}, {fault_way::throws, 3}, {fault_way::jumps, 2}}) {
        full_table subject;
        const int32_t first_free = modules.rgblut.first_free_index;
        fail(fault_source::text, way, nth);
        fault_sweep::run<full_table>([](full_table &) { CLUT_new_index(); }, subject);
        EXPECT_EQ(modules.rgblut.first_free_index, first_free + 1);
    }
}

TEST_F(ColourTableFaults, AWarningThatFailedIsGivenAgain)
{
    for (fault_way way : {fault_way::throws, fault_way::jumps}) {
        full_table subject;
        clut_debug = 0;
        fail(fault_source::text, way, 2);
        EXPECT_NE(fault_sweep::run<full_table>([](full_table &) { CLUT_new_index(); }, subject),
                  fault_sweep::ending::completed);
        host.take_log();
        EXPECT_EQ(CLUT_new_index(), 39);
        EXPECT_EQ(host.take_log(), (log{"debug_break", "message WARNING-CLUT FULL"}));
    }
}

TEST_F(ColourTableFaults, AnIndexWhoseReleaseWasJumpedOutOfIsFoundOnceALowerOneIsReleased)
{
    full_table subject;
    fail(fault_source::text, fault_way::jumps, 2);
    expect_jump([](no_table &) { CLUT_release_index(42); }, subject);
    EXPECT_EQ(table.states[42], mova::clut::free_index);
    EXPECT_EQ(CLUT_new_index(), 39);
    CLUT_release_index(41);
    EXPECT_EQ(CLUT_new_index(), 41);
    EXPECT_EQ(CLUT_new_index(), 42);
}

/* The callback ends the static phase before it fails. */
TEST_F(ColourTableFaults, AnIndexThatCouldNotBeSetIsFoundByTheNextRequest)
{
    restart_colour_table();
    RGBLUT_init(
        50,
        [](int32_t index, int16_t, int16_t, int16_t) {
            if (index == 39) {
                CLUT_new_index();
                throw fault{};
            }
        },
        0);
    EXPECT_THROW(CLUT_set(39, 1, 2, 3), fault);
    EXPECT_EQ(mova::clut::broken_invariant(), 0);
    EXPECT_EQ(CLUT_new_index(), 39);
}

} // namespace
