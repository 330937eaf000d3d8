/* SPDX-License-Identifier: MIT */
#include "cache_calls.h"

#include <tests/support/recording_host_test_case.h>

#include <memory>

namespace {

using namespace mova::test;
using namespace mova::test::cache_calls;

class SwapCacheFaults : public recording_host_test_case {};

TEST_F(SwapCacheFaults, WhateverFailsTheCacheIsLeftAsTheHeaderSays)
{
    sweep_faults("swap cache", rows, 262);
}

/* What a fetch of B calls up to the end of its print, in turn; and whether B counts as in memory by then. */
const struct {
    fault_source source;
    int nth;
    bool in_memory;
} steps_of_a_fetch[] = {
    {fault_source::callback, 1, false},    {fault_source::pool_allocation, 1, false},
    {fault_source::pool_address, 1, true}, {fault_source::callback, 2, true},
    {fault_source::text, 1, true},
};

TEST_F(SwapCacheFaults, AfterAnExceptionABodyThatWasBeingFetchedIsOutAndItsBlockFree)
{
    for (const auto &step : steps_of_a_fetch) {
        host.reset();
        caches c;
        make_room();
        const std::string before = c.state();
        fault_plan::get().arm(step.source, fault_way::throws, step.nth);
        EXPECT_THROW(cc_get(c.cache, c.entry('B')), fault);
        EXPECT_EQ(c.state(), before);
        EXPECT_EQ(pool().live_blocks(), 3u);
        c.release();
    }
}

TEST_F(SwapCacheFaults, AfterAJumpSwappingTheEntryOutPutsItRight)
{
    for (const auto &step : steps_of_a_fetch) {
        host.reset();
        auto c = std::make_unique<caches>();
        make_room();
        const std::string before = c->state();
        fault_plan::get().arm(step.source, fault_way::jumps, step.nth);
        EXPECT_EQ(fault_sweep::run<caches>([](caches &jumped) { cc_get(jumped.cache, jumped.entry('B')); }, *c),
                  fault_sweep::ending::jumped);
        EXPECT_EQ(c->entry('B')->status, step.in_memory ? 0x80 : 0);
        cc_swap_out(c->cache, c->entry('B'));
        EXPECT_EQ(c->state(), before);
        EXPECT_EQ(pool().live_blocks(), 3u);
        c->release();
    }
}

TEST_F(SwapCacheFaults, TheBlockOfAnEntryThatWasNotInsertedStaysTheCallers)
{
    caches c;
    const std::string before = c.state();
    mb_handle block = mb_alloc(pool().address(), 0);
    for (fault_source source : {fault_source::allocation, fault_source::text}) {
        fault_plan::get().arm(source, fault_way::throws, 1);
        EXPECT_THROW(c.insert('E', block), fault);
        EXPECT_EQ(c.state(), before);
    }
    cc_free(c.cache, &block);
    c.release();
}

/* Where the trace fails the entry is gone, else it is the first. */
TEST_F(SwapCacheFaults, EmptyingThatWasCutShortGoesOnAtTheEntryThatFailed)
{
    caches c;
    fault_plan::get().arm(fault_source::callback, fault_way::throws, 2);
    EXPECT_THROW(cc_make_empty(c.cache), fault);
    EXPECT_EQ(c.state(), "C. B D! released A ");
    fault_plan::get().arm(fault_source::text, fault_way::throws, 1);
    EXPECT_THROW(cc_make_empty(c.cache), fault);
    EXPECT_EQ(c.state(), "B D! released A released C ");
    c.release();
}

/* A write-back that fails is tried again by the next eviction. */
TEST_F(SwapCacheFaults, ABodyThatCouldNotBeWrittenBackStaysDirty)
{
    caches c;
    fault_plan::get().arm(fault_source::callback, fault_way::throws, 2);
    EXPECT_THROW(cc_flush(c.cache), fault);
    EXPECT_EQ(c.state(), "A C B D! saved A ");
    cc_flush(c.cache);
    EXPECT_EQ(c.state(), "A C B D saved A saved D ");
    c.release();
}

} // namespace
