/* SPDX-License-Identifier: MIT */
/* The probe for eight keys at a time finds what one key at a time does. */
#include <mova/hash/internal/probe.h>

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

using mova::hash::probe, mova::hash::probe_one_by_one;

/* Slots between two words that no probe may take for the slots' own: empty ones, where any search would end. */
class slots {
public:
    explicit slots(size_t count) : words_(count + 2), count_(count) {}

    mova_word &operator[](size_t slot) { return words_[slot + 1]; }

    void expect_the_same(size_t from, mova_word key) const
    {
        const mova_word *keys = words_.data() + 1;
        EXPECT_EQ(probe(keys, count_ - 1, from, key), probe_one_by_one(keys, count_ - 1, from, key))
            << count_ << " slots, from " << from << ", key " << key;
    }

private:
    std::vector<mova_word> words_;
    size_t count_;
};

/* From each slot, itself too: for the next empty one, for a key that may be there, and for one that is not. */
TEST(Probe, FindsTheFirstOfItsKeyAndAnEmptySlotFromEverySlot)
{
    std::mt19937 random(1);
    for (size_t count : {8u, 16u, 64u}) {
        for (size_t most_empty = 1; most_empty <= count; ++most_empty) {
            slots table(count);
            for (size_t slot = 0; slot < count; ++slot)
                table[slot] = static_cast<mova_word>(random() % 12 + 1);
            for (size_t i = 0; i < most_empty; ++i)
                table[random() % count] = 0;
            for (size_t from = 0; from < count; ++from) {
                for (mova_word key : {0, 5, 99})
                    table.expect_the_same(from, key);
            }
        }
    }
}

/* Where the slots are many, their groups of eight are looked at from the start. */
TEST(Probe, FindsTheSameAmongMillionsOfSlots)
{
    for (size_t count : {size_t{1} << 20, size_t{1} << 21}) {
        slots table(count);
        for (size_t slot : {8u, 9u, 10u, 11u, 12u, 13u, 14u, 15u, 16u, 17u, 18u})
            table[slot] = static_cast<mova_word>(slot);
        table[count - 1] = 7;
        for (size_t from = 6; from < 20; ++from) {
            for (mova_word key : {0, 8, 11, 15, 16, 18, 99})
                table.expect_the_same(from, key);
        }
        table.expect_the_same(count - 1, 0);
    }
}

} // namespace
