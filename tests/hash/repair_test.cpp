/* SPDX-License-Identifier: MIT */
/* What a removal leaves in the slots, beside the literal table: many removals at the highest load, and long runs. */
#include <mova/hash/hash_table.h>

#include <tests/model/hash_keys.h>
#include <tests/model/literal_hash_table.h>
#include <tests/support/byte_source.h>
#include <tests/support/recording_host_test_case.h>

#include <optional>
#include <random>
#include <vector>

namespace {

using mova::test::key_shape;
using mova::test::literal_hash_table;
using mova::test::literal_memory;

class Repair : public mova::test::recording_host_test_case {
protected:
    void TearDown() override
    {
        HSH_release(&table);
        recording_host_test_case::TearDown();
    }

    void create(uint32_t size, int32_t shift)
    {
        if (table)
            HSH_release(&table);
        table = HSH_create(size, shift);
        literal.emplace(memory, size, shift);
    }

    void set(mova_word key)
    {
        HSH_set_value(table, key, ++last_value);
        literal->set(key, last_value);
    }

    /* Whether both tables are the same after the removal. */
    bool remove(mova_word key)
    {
        return (HSH_remove_entry(table, key) >= 0) == literal->remove(key) && literal->equals(*table);
    }

    mova_word key_in(int32_t slot) const { return table->keys[slot]; }

    literal_memory memory;
    std::optional<literal_hash_table> literal;
    HSH_table *table = nullptr;

private:
    mova_word last_value = 0;
};

TEST_F(Repair, RandomRemovalsAtSevenEighthsLeaveTheLiteralSlots)
{
    std::mt19937 random(mova::test::test_seed(1));
    for (key_shape key : mova::test::key_shapes) {
        for (auto [size, removals] : {std::pair{8, 20000}, {64, 60000}, {1024, 2000}}) {
            create(static_cast<uint32_t>(size), 0);
            while (table->count < table->high_water_mark)
                set(key(static_cast<mova_word>(random() % 100000)));
            for (int i = 0; i < removals;) {
                const mova_word stored = key_in(static_cast<int32_t>(random() % static_cast<uint32_t>(size)));
                if (!stored)
                    continue;
                ASSERT_TRUE(remove(stored)) << "MOVA_TEST_SEED=" << mova::test::test_seed(1);
                while (table->count < table->high_water_mark)
                    set(key(static_cast<mova_word>(random() % 100000)));
                ++i;
            }
        }
    }
}

/* The run that mova/hash/internal/repair.h draws, with place 0 in slot 8 and in the last slot. */
TEST_F(Repair, OfTheEntriesThatMayMoveTheRightmostDoes)
{
    for (mova_word place_0 : {8, 31}) {
        create(32, 0);
        const auto key = [=](mova_word home, mova_word number) { return 32 * number + (place_0 + home) % 32; };
        set(key(-2 + 32, 1));
        set(key(-1 + 32, 1));
        const mova_word removed = key(0, 1);
        set(removed);
        mova_word number = 1;
        for (mova_word home : {1, -2 + 32, 0, 3, 1, 2, 6})
            set(key(home, ++number));
        ASSERT_TRUE(remove(removed));
        std::vector<mova_word> numbers;
        for (int32_t place = 0; place < 8; ++place)
            numbers.push_back(key_in((static_cast<int32_t>(place_0) + place) % 32) / 32);
        EXPECT_EQ(numbers, (std::vector<mova_word>{4, 2, 3, 7, 5, 6, 8, 0}));
    }
}

/* Every entry stands one slot after its home, so that one removal moves each of them: 1500 in turn. */
TEST_F(Repair, ARunMayMoveAsAWhole)
{
    for (mova_word first : {1, 1000, 2047}) {
        create(2048, 0);
        set(first + 2048);
        for (mova_word key = first; key < first + 1500; ++key)
            set(key);
        ASSERT_TRUE(remove(first + 2048)) << first;
        EXPECT_EQ(key_in(static_cast<int32_t>(first)), first);
    }
}

/* Two runs of the same homes, one after the other. */
TEST_F(Repair, LongRunsWithTheSameHomesAreRepaired)
{
    for (mova_word first : {3, 1800}) {
        create(2048, 0);
        for (mova_word key = first; key < first + 700; ++key)
            set(key);
        for (mova_word key = first + 2048; key < first + 2048 + 700; ++key)
            set(key);
        for (mova_word key = first; key < first + 700; key += 13)
            ASSERT_TRUE(remove(key)) << key;
        for (mova_word key = first + 2048; key < first + 2048 + 700; key += 7)
            ASSERT_TRUE(remove(key)) << key;
    }
}

/* A run of keys at home, followed by colliding keys of every distance. */
TEST_F(Repair, KeysFarFromTheirHomesComeBack)
{
    for (int32_t distance : {1, 7, 8, 9, 255, 256, 257, 600, 1200}) {
        create(2048, 0);
        for (mova_word key = 1500; key < 1500 + distance; ++key)
            set(key);
        for (mova_word key : {1500, 1501, 1500 + distance / 2, 1500 + distance - 1})
            set(key + 4096);
        for (int32_t removed = 0; removed < distance; removed += 1 + distance / 20)
            ASSERT_TRUE(remove(1500 + removed)) << distance << " " << removed;
    }
}

} // namespace
