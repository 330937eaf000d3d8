/* SPDX-License-Identifier: MIT */
#include <mova/hash/hash_table.h>

#include <tests/model/literal_hash_table.h>
#include <tests/support/recording_host_test_case.h>
#include <mova/hash/internal/invariants.h>

#include <limits>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using mova::broken_invariant;
using mova::test::literal_hash_table;
using mova::test::literal_memory;
using mova::test::log;
using mova::test::recording_host;

using words = std::vector<mova_word>;

const std::string record_bytes = std::to_string(sizeof(HSH_table));

std::string bytes_of(int capacity)
{
    return std::to_string(static_cast<std::size_t>(capacity) * sizeof(mova_word));
}

class HashTable : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        create(0, 0);
    }

    void TearDown() override
    {
        if (table)
            HSH_release(&table);
        recording_host_test_case::TearDown();
    }

    /* Takes the place of the table that was there. */
    void create(uint32_t initial_size, int32_t maximum_shift)
    {
        if (table)
            HSH_release(&table);
        table = HSH_create(initial_size, maximum_shift);
        host.take_log();
    }

    /* Stores each key with ten times itself as its value. */
    void fill(const words &keys)
    {
        for (mova_word key : keys)
            HSH_set_value(table, key, 10 * key);
        host.take_log();
    }

    void fill_up_to(mova_word last)
    {
        for (mova_word key = 1; key <= last; ++key)
            HSH_set_value(table, key, 10 * key);
        host.take_log();
    }

    /* The keys slot by slot, "." for an empty one; with the invariants verified. */
    std::string slots() const
    {
        EXPECT_EQ(broken_invariant(*table), 0);
        return text(table->keys);
    }

    std::string value_words() const { return text(table->values); }

    /* "key=value" for each entry in the order of delivery. */
    std::string entries() const
    {
        std::ostringstream out;
        HSH_iterator iterator = HSH_all_entries(table);
        for (mova_word key, value; HSH_next(&iterator, &key, &value);)
            out << (out.tellp() ? " " : "") << key << "=" << value;
        return out.str();
    }

    HSH_table *table = nullptr;

private:
    std::string text(const mova_word *array) const
    {
        std::ostringstream out;
        for (int32_t slot = 0; slot < table->capacity; ++slot) {
            out << (slot ? " " : "");
            array[slot] ? out << array[slot] : out << ".";
        }
        return out.str();
    }
};

/* ---- creation and release ---- */

TEST_F(HashTable, NewTableIsEmpty)
{
    create(64, 3);
    EXPECT_EQ(table->minimum_size, 64);
    EXPECT_EQ(table->capacity, 64);
    EXPECT_EQ(table->count, 0);
    EXPECT_EQ(table->low_water_mark, 0);
    EXPECT_EQ(table->high_water_mark, 56);
    EXPECT_EQ(table->mask, 63);
    EXPECT_EQ(table->shift, 3);
    EXPECT_EQ(table->maximum_shift, 3);
    for (int32_t slot = 0; slot < 64; ++slot) {
        EXPECT_EQ(table->keys[slot], 0);
        EXPECT_EQ(table->values[slot], 0);
    }
}

TEST_F(HashTable, InitialSizeIsRaisedToAPowerOfTwoOfAtLeast8)
{
    for (auto [given, raised] : {std::pair{0u, 8},
                                 {1u, 8},
                                 {8u, 8},
                                 {9u, 16},
                                 {16u, 16},
                                 {17u, 32},
                                 {32u, 32},
                                 {33u, 64},
                                 {1000u, 1024},
                                 {1024u, 1024},
                                 {1025u, 2048}}) {
        create(given, 0);
        EXPECT_EQ(table->minimum_size, raised) << given;
        EXPECT_EQ(table->capacity, raised) << given;
    }
}

TEST_F(HashTable, CreationAllocatesTheRecordTheKeysAndTheValues)
{
    HSH_table *other = HSH_create(17, 0);
    const std::string record = host.name_of(other), keys = host.name_of(other->keys);
    const std::string values = host.name_of(other->values);
    EXPECT_EQ(host.take_log(), (log{"alloc " + record_bytes + " = " + record, "alloc " + bytes_of(32) + " = " + keys,
                                    "alloc " + bytes_of(32) + " = " + values}));
    HSH_release(&other);
    EXPECT_EQ(host.take_log(), (log{"dealloc " + keys + " " + bytes_of(32), "dealloc " + values + " " + bytes_of(32),
                                    "dealloc " + record + " " + record_bytes}));
    EXPECT_EQ(other, nullptr);
}

TEST_F(HashTable, ShiftIsTheMaximumOrWhatTheCapacityLeavesOf32Bits)
{
    create(8, 2);
    EXPECT_EQ(table->shift, 2);
    create(8, 29);
    EXPECT_EQ(table->shift, 29);
    create(8, 40);
    EXPECT_EQ(table->shift, 29);
    EXPECT_EQ(table->maximum_shift, 40);
    create(4096, 40);
    EXPECT_EQ(table->shift, 20);
}

/* ---- storing and finding ---- */

TEST_F(HashTable, StoresValuesAndFindsThem)
{
    EXPECT_EQ(HSH_set_value(table, 5, 50), 50);
    EXPECT_EQ(HSH_set_value(table, 6, -1), -1);
    EXPECT_EQ(table->count, 2);
    EXPECT_EQ(HSH_get_value(table, 5), 50);
    EXPECT_EQ(HSH_get_value(table, 6), -1);
    EXPECT_EQ(HSH_contains_key(table, 5), 1);
    EXPECT_EQ(slots(), ". . . . . 5 6 .");
    EXPECT_EQ(value_words(), ". . . . . 50 -1 .");
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(HashTable, AbsentKeysHaveTheValue0)
{
    fill({1, 9});
    EXPECT_EQ(HSH_get_value(table, 17), 0);
    EXPECT_EQ(HSH_contains_key(table, 17), 0);
    EXPECT_EQ(HSH_get_value(table, 4), 0);
    EXPECT_EQ(HSH_contains_key(table, 4), 0);
}

TEST_F(HashTable, AStored0IsToldFromAnAbsentKey)
{
    EXPECT_EQ(HSH_set_value(table, 7, 0), 0);
    EXPECT_EQ(HSH_get_value(table, 7), 0);
    EXPECT_EQ(HSH_contains_key(table, 7), 1);
    EXPECT_EQ(HSH_get_value(table, 3), 0);
    EXPECT_EQ(HSH_contains_key(table, 3), 0);
}

TEST_F(HashTable, ReplacingAValueKeepsTheCount)
{
    fill({3, 11});
    EXPECT_EQ(HSH_set_value(table, 11, 4), 4);
    EXPECT_EQ(HSH_get_value(table, 11), 4);
    EXPECT_EQ(HSH_get_value(table, 3), 30);
    EXPECT_EQ(table->count, 2);
    EXPECT_EQ(slots(), ". . . 3 11 . . .");
}

TEST_F(HashTable, Key0IsRefused)
{
    fill_up_to(7);
    EXPECT_EQ(HSH_set_value(table, 0, 5), 0);
    EXPECT_EQ(HSH_get_value(table, 0), 0);
    EXPECT_EQ(HSH_contains_key(table, 0), 0);
    EXPECT_EQ(HSH_remove_entry(table, 0), -1);
    EXPECT_EQ(slots(), ". 1 2 3 4 5 6 7");
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(HashTable, KeysWhoseHomeIsTakenStandInTheNextFreeSlot)
{
    fill({6, 14, 22, 7, 1});
    EXPECT_EQ(slots(), "22 7 1 . . . 6 14");
    for (mova_word key : {6, 14, 22, 7, 1})
        EXPECT_EQ(HSH_get_value(table, key), 10 * key);
    EXPECT_EQ(HSH_contains_key(table, 30), 0);
}

TEST_F(HashTable, ShiftDropsTheLowBitsOfTheKey)
{
    create(8, 4);
    fill({0x10, 0x25, 0x7F, 0x1F, 0xF0});
    EXPECT_EQ(slots(), "240 16 37 31 . . . 127");
}

TEST_F(HashTable, TheSignNeverReachesTheHomeSlot)
{
    const mova_word least = std::numeric_limits<int32_t>::min();
    create(8, 40);
    fill({-1, least, 1});
    EXPECT_EQ(table->shift, 29);
    EXPECT_EQ(table->keys[7], -1);
    EXPECT_EQ(table->keys[4], least);
    EXPECT_EQ(table->keys[0], 1);
    create(8, 0);
    fill({-1, -2, least});
    EXPECT_EQ(table->keys[7], -1);
    EXPECT_EQ(table->keys[6], -2);
    EXPECT_EQ(table->keys[0], least);
    EXPECT_EQ(HSH_get_value(table, -2), -20);
}

#if INTPTR_MAX > INT32_MAX
TEST_F(HashTable, KeysThatDifferOnlyAboveTheir32LowBitsShareAHome)
{
    const mova_word high = mova_word{1} << 32;
    create(8, 40);
    fill({high, 5 * high, -high, 1});
    EXPECT_EQ(table->keys[0], high);
    EXPECT_EQ(table->keys[1], 5 * high);
    EXPECT_EQ(table->keys[2], -high);
    EXPECT_EQ(table->keys[3], 1);
    EXPECT_EQ(HSH_get_value(table, 5 * high), 50 * high);
    EXPECT_EQ(HSH_get_value(table, 2 * high), 0);
    EXPECT_GE(HSH_remove_entry(table, high), 0);
    EXPECT_EQ(table->keys[0], 1);
    EXPECT_EQ(table->keys[3], 0);
    EXPECT_EQ(broken_invariant(*table), 0);
}
#endif

/* Every run of up to 40 slots in a table of 64, so that each begins, ends and wraps everywhere in a group of eight. */
TEST_F(HashTable, FindsEveryKeyOfARunThatBeginsAnywhere)
{
    for (mova_word home = 0; home < 64; ++home) {
        create(64, 0);
        for (mova_word length = 1; length <= 40; ++length) {
            const mova_word key = 64 * length + home;
            EXPECT_EQ(HSH_contains_key(table, key), 0);
            HSH_set_value(table, key, length);
            EXPECT_EQ(table->keys[(home + length - 1) % 64], key);
            EXPECT_EQ(HSH_get_value(table, key), length);
            EXPECT_EQ(HSH_get_value(table, 64 + home), 1);
        }
        EXPECT_EQ(broken_invariant(*table), 0);
    }
}

/* ---- growing and shrinking ---- */

TEST_F(HashTable, TheEighthKeyOfATableOf8DoublesItFirst)
{
    fill_up_to(7);
    EXPECT_EQ(table->capacity, 8);
    EXPECT_EQ(table->high_water_mark, 7);
    const std::string old_keys = host.name_of(table->keys), old_values = host.name_of(table->values);
    EXPECT_EQ(HSH_set_value(table, 15, 150), 150);
    EXPECT_EQ(host.take_log(),
              (log{"alloc " + bytes_of(16) + " = " + host.name_of(table->keys),
                   "alloc " + bytes_of(16) + " = " + host.name_of(table->values),
                   "dealloc " + old_keys + " " + bytes_of(8), "dealloc " + old_values + " " + bytes_of(8)}));
    EXPECT_EQ(slots(), ". 1 2 3 4 5 6 7 . . . . . . . 15");
    EXPECT_EQ(value_words(), ". 10 20 30 40 50 60 70 . . . . . . . 150");
    EXPECT_EQ(table->minimum_size, 8);
    EXPECT_EQ(table->capacity, 16);
    EXPECT_EQ(table->count, 8);
    EXPECT_EQ(table->low_water_mark, 4);
    EXPECT_EQ(table->high_water_mark, 14);
    EXPECT_EQ(table->mask, 15);
}

TEST_F(HashTable, ReplacingInAFullTableDoesNotGrowIt)
{
    fill_up_to(7);
    EXPECT_EQ(HSH_set_value(table, 7, 1), 1);
    EXPECT_EQ(table->capacity, 8);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(HashTable, GrowingPlacesEntriesInTheOrderOfTheOldSlots)
{
    fill({7, 15, 23, 31});
    EXPECT_EQ(slots(), "15 23 31 . . . . 7");
    fill({3, 4, 5, 6});
    EXPECT_EQ(slots(), "31 . . 3 4 5 6 23 7 . . . . . . 15");
}

TEST_F(HashTable, ResizingComputesTheShiftAnew)
{
    create(8, 40);
    fill_up_to(8);
    EXPECT_EQ(table->shift, 28);
    fill_up_to(15);
    EXPECT_EQ(table->shift, 27);
    for (mova_word key = 1; key <= 15; ++key)
        HSH_remove_entry(table, key);
    EXPECT_EQ(table->shift, 29);
}

TEST_F(HashTable, RemovingToBelowAQuarterHalvesTheTable)
{
    fill_up_to(8);
    for (mova_word key : {1, 2, 3, 4})
        EXPECT_GE(HSH_remove_entry(table, key), 0);
    EXPECT_EQ(table->capacity, 16);
    EXPECT_EQ(host.take_log(), log{});
    const std::string old_keys = host.name_of(table->keys), old_values = host.name_of(table->values);
    EXPECT_GE(HSH_remove_entry(table, 6), 0);
    EXPECT_EQ(host.take_log(),
              (log{"alloc " + bytes_of(8) + " = " + host.name_of(table->keys),
                   "alloc " + bytes_of(8) + " = " + host.name_of(table->values),
                   "dealloc " + old_keys + " " + bytes_of(16), "dealloc " + old_values + " " + bytes_of(16)}));
    EXPECT_EQ(slots(), "8 . . . . 5 . 7");
    EXPECT_EQ(value_words(), "80 . . . . 50 . 70");
    EXPECT_EQ(table->capacity, 8);
    EXPECT_EQ(table->low_water_mark, 0);
    EXPECT_EQ(table->count, 3);
}

TEST_F(HashTable, NeverShrinksBelowItsMinimumSize)
{
    for (uint32_t size : {8u, 64u}) {
        create(size, 0);
        const auto capacity = static_cast<int32_t>(size);
        fill_up_to(size);
        EXPECT_EQ(table->capacity, 2 * capacity);
        EXPECT_EQ(table->low_water_mark, capacity / 2);
        for (mova_word key = 1; key <= capacity; ++key)
            HSH_remove_entry(table, key);
        EXPECT_EQ(table->capacity, capacity);
        EXPECT_EQ(table->low_water_mark, 0);
        EXPECT_EQ(table->count, 0);
    }
}

/* ---- removal ---- */

TEST_F(HashTable, RemovingAnAbsentKeyChangesNothing)
{
    fill({6, 14});
    EXPECT_EQ(HSH_remove_entry(table, 22), -1);
    EXPECT_EQ(HSH_remove_entry(table, 1), -1);
    EXPECT_EQ(slots(), ". . . . . . 6 14");
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(HashTable, ARemovedSlotKeepsItsValueWord)
{
    fill({1, 2});
    EXPECT_GE(HSH_remove_entry(table, 2), 0);
    EXPECT_EQ(slots(), ". 1 . . . . . .");
    EXPECT_EQ(value_words(), ". 10 20 . . . . .");
    EXPECT_EQ(table->count, 1);
    EXPECT_EQ(HSH_get_value(table, 2), 0);
    EXPECT_EQ(HSH_contains_key(table, 2), 0);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(HashTable, TheLastEntryThatMayMoveFillsTheHole)
{
    fill({8, 16, 24, 3});
    EXPECT_EQ(slots(), "8 16 24 3 . . . .");
    EXPECT_GE(HSH_remove_entry(table, 8), 0);
    EXPECT_EQ(slots(), "24 16 . 3 . . . .");
    EXPECT_EQ(value_words(), "240 160 240 30 . . . .") << "the slot that was left keeps its value word";
}

TEST_F(HashTable, EntriesAtHomeStay)
{
    fill({1, 2, 3, 4});
    HSH_remove_entry(table, 1);
    HSH_remove_entry(table, 3);
    EXPECT_EQ(slots(), ". . 2 . 4 . . .");
}

/* The run that the header draws. */
TEST_F(HashTable, RemovalRepairsARunThatWraps)
{
    fill({14, 7, 22, 30, 1});
    EXPECT_EQ(slots(), "22 30 1 . . . 14 7");
    HSH_remove_entry(table, 14);
    EXPECT_EQ(slots(), "22 1 . . . . 30 7");
    EXPECT_EQ(entries(), "22=220 1=10 30=300 7=70");
}

TEST_F(HashTable, ARunBeforeTheHoleIsLeftAlone)
{
    fill({2, 10, 18, 26});
    HSH_remove_entry(table, 18);
    EXPECT_EQ(slots(), ". . 2 10 26 . . .");
    HSH_remove_entry(table, 26);
    EXPECT_EQ(slots(), ". . 2 10 . . . .");
}

TEST_F(HashTable, EveryOtherKeyOfARunIsFoundAfterARemoval)
{
    for (mova_word home = 0; home < 8; ++home) {
        for (int removed = 0; removed < 7; ++removed) {
            create(0, 0);
            words keys;
            for (int i = 1; i <= 7; ++i)
                keys.push_back(8 * i + (home + i % 2) % 8);
            fill(keys);
            EXPECT_GE(HSH_remove_entry(table, keys[static_cast<std::size_t>(removed)]), 0);
            EXPECT_EQ(broken_invariant(*table), 0);
            for (int i = 0; i < 7; ++i) {
                const mova_word key = keys[static_cast<std::size_t>(i)];
                EXPECT_EQ(HSH_get_value(table, key), i == removed ? 0 : 10 * key);
            }
        }
    }
}

/* ---- iteration ---- */

TEST_F(HashTable, IteratesInTheOrderOfTheSlots)
{
    fill({13, 4, 5, 7, 2});
    EXPECT_EQ(slots(), ". . 2 . 4 13 5 7");
    EXPECT_EQ(entries(), "2=20 4=40 13=130 5=50 7=70");
}

TEST_F(HashTable, AnIteratorKnowsTheNextSlotToLookAt)
{
    fill({3, 7});
    mova_word key = 0, value = 0;
    HSH_iterator iterator = HSH_all_entries(table);
    EXPECT_EQ(iterator.table, table);
    EXPECT_EQ(iterator.index, 0);
    EXPECT_EQ(HSH_next(&iterator, &key, &value), 1);
    EXPECT_EQ(iterator.index, 4);
    EXPECT_EQ(HSH_next(&iterator, &key, &value), 1);
    EXPECT_EQ(iterator.index, 8);
    HSH_remove_entry(table, 7);
    iterator = HSH_all_entries(table);
    HSH_next(&iterator, &key, &value);
    EXPECT_EQ(HSH_next(&iterator, &key, &value), 0);
    EXPECT_EQ(iterator.index, 8);
    EXPECT_EQ(HSH_next(&iterator, &key, &value), 0);
    EXPECT_EQ(iterator.index, 8);
}

TEST_F(HashTable, TheEndOfAnIterationStoresNothing)
{
    mova_word key = -5, value = -6;
    HSH_iterator iterator = HSH_all_entries(table);
    EXPECT_EQ(iterator.table, table);
    EXPECT_EQ(iterator.index, table->capacity);
    EXPECT_EQ(HSH_next(&iterator, &key, &value), 0);
    EXPECT_EQ(key, -5);
    EXPECT_EQ(value, -6);
}

TEST_F(HashTable, AnIteratorDeliversTheValueThatIsStoredWhenItArrives)
{
    fill({1, 2});
    HSH_iterator iterator = HSH_all_entries(table);
    mova_word key, value;
    HSH_next(&iterator, &key, &value);
    HSH_set_value(table, 2, 0);
    EXPECT_EQ(HSH_next(&iterator, &key, &value), 1);
    EXPECT_EQ(value, 0);
}

/* ---- the check of the invariants ---- */

TEST_F(HashTable, TheCheckNamesTheInvariantThatIsBroken)
{
    const struct {
        void (*break_it)(HSH_table &table);
        int broken;
    } cases[] = {
        {[](HSH_table &t) { t.minimum_size = 4; }, 1},
        {[](HSH_table &t) { t.capacity = 12; }, 1},
        {[](HSH_table &t) { t.minimum_size = 16; }, 1},
        {[](HSH_table &t) { t.mask = 15; }, 2},
        {[](HSH_table &t) { t.shift = 1; }, 2},
        {[](HSH_table &t) { t.low_water_mark = 2; }, 3},
        {[](HSH_table &t) { t.high_water_mark = 8; }, 3},
        {[](HSH_table &t) { t.count = 4; }, 4},
        {[](HSH_table &t) { t.count = -1; }, 4},
        {[](HSH_table &t) { t.count = 8; }, 4},
        {[](HSH_table &t) { t.keys[2] = 9; }, 0},
        {[](HSH_table &t) { t.keys[1] = t.keys[3] = 3; }, 5},
        {[](HSH_table &t) { t.keys[2] = 1; }, 5},
        {[](HSH_table &t) { t.keys[2] = 0, t.keys[5] = 3, t.keys[3] = 0, t.count = 2; }, 5},
    };
    fill({1, 2, 3});
    for (const auto &each : cases) {
        HSH_table record = *table;
        words keys(table->keys, table->keys + 8);
        record.keys = keys.data();
        each.break_it(record);
        EXPECT_EQ(broken_invariant(record), each.broken) << &each - cases;
    }
}

TEST_F(HashTable, TheCheckOfARunFindsAnEntryAfterAnEmptySlot)
{
    fill({6, 14, 22, 30});
    EXPECT_EQ(slots(), "22 30 . . . . 6 14");
    EXPECT_EQ(mova::broken_run_invariant(*table, 6, 4), 0);
    for (int emptied : {6, 7, 0}) {
        const mova_word key = std::exchange(table->keys[emptied], 0);
        EXPECT_EQ(mova::broken_run_invariant(*table, 6, 4), 5);
        table->keys[emptied] = key;
    }
}

/* ---- the same slots as those of the literal table ---- */

TEST_F(HashTable, EveryInitialSizeAndShiftGrowsAndShrinksByTheRules)
{
    for (uint32_t size = 0; size <= 40; ++size) {
        for (int32_t shift = 0; shift <= 40; ++shift) {
            create(size, shift);
            literal_memory memory;
            literal_hash_table literal(memory, size, shift);
            EXPECT_TRUE(literal.equals(*table));
            for (mova_word i = 1; i <= 60; ++i)
                EXPECT_EQ(HSH_set_value(table, i * 77, i), literal.set(i * 77, i));
            EXPECT_TRUE(literal.equals(*table)) << size << " " << shift;
            for (mova_word i = 1; i <= 60; ++i)
                EXPECT_EQ(HSH_remove_entry(table, i * 77) >= 0, literal.remove(i * 77));
            EXPECT_TRUE(literal.equals(*table)) << size << " " << shift;
        }
    }
}

} // namespace
