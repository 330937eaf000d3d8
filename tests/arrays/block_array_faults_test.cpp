/* SPDX-License-Identifier: MIT */
#include <mova/arrays/block_array.h>

#include <tests/support/fault_sweep.h>
#include <tests/support/array_storage.h>

#include <cstring>
#include <string>

namespace {

using namespace mova::test;

/* A full ring of four elements, a full open array of three, one of six, and a record that the call is to fill. */
struct blocks {
    GB_block ring, open, longer, made;
    bool fills_made = false;

    blocks()
    {
        fill(ring, 4);
        GB_set_closed(&ring);
        fill(open, 3);
        fill(longer, 6);
        std::memset(&made, 0xCD, sizeof made);
    }

    /* The record, which the call fills. */
    GB_block *to_fill()
    {
        fills_made = true;
        return &made;
    }

    std::string state() const { return text_of(ring) + text_of(open) + text_of(longer); }

    int broken_invariant() const
    {
        for (const GB_block *block : {&ring, &open, &longer, &made}) {
            if (const int broken = block == &made && !fills_made ? 0 : mova::test::broken_invariant(*block))
                return broken;
        }
        return 0;
    }

    void go_on()
    {
        const int32_t nine = 9;
        GB_roll(&ring, 1);
        GB_insert_item(&ring, 0, &nine);
        GB_append_block(&open, &longer);
        GB_copy(&longer, &open);
        if (fills_made)
            GB_append_after_last(&made, &nine);
    }

    void release()
    {
        for (GB_block *block : {&ring, &open, &longer})
            GB_release(block);
        if (fills_made)
            GB_release(&made);
    }

    static void fill(GB_block &block, int32_t count)
    {
        GB_init(&block, sizeof(int32_t), count);
        for (int32_t i = 0; i < count; ++i)
            GB_append_after_last(&block, &i);
    }

    static std::string text_of(const GB_block &block)
    {
        std::string text = (block.closed ? "ring " : "open ") + std::to_string(block.count) + "/" +
                           std::to_string(block.capacity) + "+" + std::to_string(block.increment) + ":";
        for (int32_t i = 0; i < block.count; ++i)
            text += " " + std::to_string(static_cast<const int32_t *>(block.data)[i]);
        return text + "\n";
    }
};

constexpr int32_t seven = 7;
constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable};

const fault_row<blocks> rows[] = {
    {"GB_init", [](blocks &b) { GB_init(b.to_fill(), 4, 5); }, unchanged, unchanged},
    {"GB_set_number_of_elements", [](blocks &b) { GB_set_number_of_elements(&b.open, 5); }, unchanged, unchanged},
    {"GB_append_after_last", [](blocks &b) { GB_append_after_last(&b.open, &seven); }, unchanged, unchanged},
    {"GB_append_block", [](blocks &b) { GB_append_block(&b.ring, &b.open); }, unchanged, unchanged},
    {"GB_insert_item", [](blocks &b) { GB_insert_item(&b.open, 1, &seven); }, unchanged, unchanged},
    {"GB_copy", [](blocks &b) { GB_copy(b.to_fill(), &b.ring); }, unchanged, unchanged},
    {"GB_copy_into", [](blocks &b) { GB_copy_into(&b.ring, &b.longer); }, unchanged, unchanged},
    {"GB_reverse", [](blocks &b) { GB_reverse(&b.open); }, unchanged, unchanged},
    {"GB_make_open_at_position", [](blocks &b) { GB_make_open_at_position(&b.ring, 2); }, usable, usable},
    {"GB_remove_and_get_end_part", [](blocks &b) { GB_remove_and_get_end_part(b.to_fill(), &b.open, 1); }, unchanged,
     unchanged},
    {"GB_roll", [](blocks &b) { GB_roll(&b.ring, 1); }, unchanged, unchanged},
};

TEST(BlockArrayFaults, WhateverFailsTheArraysAreLeftAsTheHeaderSays)
{
    sweep_faults("block array", rows, 44);
}

TEST(BlockArrayFaults, ARingThatCouldNotBeCutOpenHasGrown)
{
    blocks b;
    const std::string others = b.text_of(b.open) + b.text_of(b.longer);
    fault_plan::get().arm(fault_source::allocation, fault_way::throws, 2);
    EXPECT_THROW(GB_make_open_at_position(&b.ring, 2), fault);
    EXPECT_EQ(b.state(), "ring 4/14+10: 0 1 2 3\n" + others);
    b.release();
}

/* The record that a first allocation leaves when it fails. */
TEST(BlockArrayFaults, AnArrayWithoutItsFirstStorageIsEmptyAndHasNothingToRelease)
{
    recording_host &host = recording_host::get();
    for (fault_way way : {fault_way::throws, fault_way::answers}) {
        host.reset();
        blocks b;
        fault_plan::get().arm(fault_source::allocation, way, 1);
        try {
            EXPECT_EQ(GB_init(b.to_fill(), 4, 5), nullptr);
        } catch (const fault &) {
        }
        host.take_log();
        GB_release(&b.made);
        EXPECT_EQ(host.take_log(), std::vector<std::string>{});
        EXPECT_EQ(b.made.data, nullptr);
        EXPECT_EQ(b.text_of(b.made), "open 0/0+10:\n");
        EXPECT_EQ(b.made.element_size, 4u);
        b.release();
    }
    host.reset();
}

} // namespace
