/* SPDX-License-Identifier: MIT */
#include <mova/hash/hash_table.h>
#include <mova/hash/pointer_lookup.h>

#include <tests/support/recording_host_test_case.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace {

using mova::test::log;
using mova::test::recording_host;

using words = std::vector<mova_word>;

words keys_of(int count, const std::function<mova_word(mova_word)> &key)
{
    words keys;
    for (int i = 1; i <= count; ++i)
        keys.push_back(key(i));
    return keys;
}

/* The same figures by looking for every key, and from every slot for an empty one. */
mova_hash_statistics counted_one_by_one(const HSH_table &table)
{
    mova_hash_statistics counted = {};
    double hits = 0, misses = 0;
    for (int32_t slot = 0; slot < table.capacity; ++slot) {
        const auto way = [&table](int32_t from, mova_word key) {
            int32_t looked_at = 1;
            for (int32_t at = from; table.keys[at] && table.keys[at] != key; at = (at + 1) & table.mask)
                ++looked_at;
            return looked_at;
        };
        misses += way(slot, 0);
        counted.longest_miss = std::max(counted.longest_miss, way(slot, 0));
        const mova_word key = table.keys[slot];
        if (!key)
            continue;
        const int32_t hit = way(static_cast<int32_t>(static_cast<uint32_t>(key) >> table.shift) & table.mask, key);
        hits += hit;
        counted.longest_hit = std::max(counted.longest_hit, hit);
    }
    counted.load = static_cast<double>(table.count) / table.capacity;
    counted.mean_hit = table.count ? hits / table.count : 0;
    counted.mean_miss = misses / table.capacity;
    return counted;
}

class HashStatistics : public mova::test::recording_host_test_case {
protected:
    void TearDown() override
    {
        HSH_release(&table);
        recording_host_test_case::TearDown();
    }

    void create(uint32_t size, int32_t shift, const words &keys)
    {
        if (table)
            HSH_release(&table);
        table = HSH_create(size, shift);
        for (mova_word key : keys)
            HSH_set_value(table, key, 1);
        host.take_log();
    }

    /* By making the table anew with every shift. */
    int32_t best_shift_of(uint32_t size, const words &keys)
    {
        int32_t best = 0;
        double least = 0;
        for (int32_t shift = 0; shift < 32; ++shift) {
            create(size, shift, keys);
            const mova_hash_statistics counted = counted_one_by_one(*table);
            if (shift == 0 || counted.mean_hit + counted.mean_miss < least) {
                least = counted.mean_hit + counted.mean_miss;
                best = shift;
            }
        }
        return best;
    }

    HSH_table *table = nullptr;
};

TEST_F(HashStatistics, TellWhatSearchesForEveryKeyAndFromEverySlotFind)
{
    const std::vector<words> patterns = {
        {},
        {22, 30, 1, 14, 7},
        keys_of(56, [](mova_word i) { return i; }),
        keys_of(40, [](mova_word i) { return 48 * i; }),
        keys_of(56, [](mova_word i) { return 4096 * i; }),
        keys_of(30, [](mova_word i) { return (i * 2654435761u) & 0x7fffffff; }),
        keys_of(20, [](mova_word i) { return 63 + 64 * i; }),
    };
    for (const words &keys : patterns) {
        const int32_t best = best_shift_of(64, keys);
        for (int32_t shift : {0, 3, 6, 12, 31}) {
            create(64, shift, keys);
            const mova_hash_statistics told = mova_hash_table_statistics(table);
            const mova_hash_statistics counted = counted_one_by_one(*table);
            SCOPED_TRACE(std::to_string(keys.size()) + " keys, shift " + std::to_string(shift));
            EXPECT_DOUBLE_EQ(told.load, counted.load);
            EXPECT_DOUBLE_EQ(told.mean_hit, counted.mean_hit);
            EXPECT_DOUBLE_EQ(told.mean_miss, counted.mean_miss);
            EXPECT_EQ(told.longest_hit, counted.longest_hit);
            EXPECT_EQ(told.longest_miss, counted.longest_miss);
            EXPECT_EQ(told.best_shift, best);
        }
    }
}

/* A table of 8 slots takes the upper three bits at most. The upper two would keep these keys nearer to their homes. */
TEST_F(HashStatistics, AdviseNoShiftBeyondTheMostThatTheTableTakes)
{
    words keys;
    for (uint32_t key : {0x100u, 0xc0000000u, 0xc0000001u, 0xc0020000u, 0xe0000000u})
        keys.push_back(static_cast<mova_word>(key));
    const int32_t best = best_shift_of(8, keys);
    create(8, 0, keys);
    EXPECT_EQ(mova_hash_table_statistics(table).best_shift, best);
}

/* Half of the slots are taken: pages are spread best over every other slot. */
TEST_F(HashStatistics, LeadToTheShiftOfPages)
{
    const words pages = keys_of(1000, [](mova_word i) { return 4096 * i; });
    create(0, 0, pages);
    EXPECT_GT(mova_hash_table_statistics(table).mean_hit, 100);
    const int32_t shift = mova_hash_table_statistics(table).best_shift;
    EXPECT_EQ(shift, 11);
    create(0, shift, pages);
    EXPECT_EQ(mova_hash_table_statistics(table).mean_hit, 1);
    EXPECT_EQ(mova_hash_table_statistics(table).longest_miss, 2);
}

TEST_F(HashStatistics, TakeFourBytesASlotFromTheHostAndGiveThemBack)
{
    create(64, 0, {1, 2, 3});
    mova_hash_table_statistics(table);
    const log calls = host.take_log();
    ASSERT_EQ(calls.size(), 2u);
    const std::string block = calls[0].substr(calls[0].find('#'));
    EXPECT_EQ(calls, (log{"alloc 256 = " + block, "dealloc " + block + " 256"}));
}

TEST_F(HashStatistics, OfALookupAreThoseOfItsTableWithoutTheFront)
{
    create(0, 0, {});
    mova_lookup *lookup = mova_lu_create();
    for (mova_word key : {16, 32, 48})
        mova_lu_add(lookup, key, 1);
    const mova_hash_statistics told = mova_lu_statistics(lookup);
    EXPECT_EQ(told.load, 2.0 / 8);
    EXPECT_EQ(told.longest_hit, 2);
    EXPECT_EQ(told.best_shift, 2); /* homes 4 and 0 */
    mova_lu_release(&lookup, nullptr);
}

} // namespace
