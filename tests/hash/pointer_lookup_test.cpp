/* SPDX-License-Identifier: MIT */
#include <mova/hash/pointer_lookup.h>

#include <tests/support/recording_host_test_case.h>
#include <mova/hash/internal/invariants.h>

#include <string>
#include <vector>

namespace {

using mova::broken_invariant;
using mova::test::log;
using mova::test::recording_host;

const std::string lookup_bytes = std::to_string(sizeof(mova_lookup));
const std::string table_bytes = std::to_string(sizeof(HSH_table));
const std::string array_bytes = std::to_string(8 * sizeof(mova_word));

constexpr mova_word a = 0x1003, b = 0x2005, c = 0x3001;

/* The lookup that is being released, to tell where the callback's values stand. */
const mova_lookup *being_released;

void write_down_release(mova_word *value)
{
    const char *place = value == &being_released->front_value ? "front " : "copy ";
    recording_host::get().write_down(place + std::to_string(*value));
    *value = 99;
}

class PointerLookup : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        lookup = mova_lu_create();
        host.take_log();
    }

    void TearDown() override
    {
        mova_lu_release(&lookup, nullptr);
        recording_host_test_case::TearDown();
    }

    void expect_front(mova_word key, mova_word value) const
    {
        EXPECT_EQ(lookup->front_key, key);
        EXPECT_EQ(lookup->front_value, value);
        EXPECT_EQ(broken_invariant(*lookup), 0);
    }

    /* The values handed over, with where they stood, and then nothing but the memory's calls. */
    log released_values()
    {
        host.take_log();
        being_released = lookup;
        mova_lu_release(&lookup, write_down_release);
        log values = host.take_log();
        EXPECT_GE(values.size(), 4u);
        values.resize(values.size() - 4);
        return values;
    }

    mova_lookup *lookup = nullptr;
};

TEST_F(PointerLookup, CreationAllocatesTheRecordAndATableOf8SlotsWithoutAShift)
{
    mova_lookup *other = mova_lu_create();
    EXPECT_EQ(host.take_log(), (log{"alloc " + lookup_bytes + " = " + host.name_of(other),
                                    "alloc " + table_bytes + " = " + host.name_of(other->table),
                                    "alloc " + array_bytes + " = " + host.name_of(other->table->keys),
                                    "alloc " + array_bytes + " = " + host.name_of(other->table->values)}));
    EXPECT_EQ(other->front_key, 0);
    EXPECT_EQ(other->front_value, 0);
    EXPECT_EQ(other->table->minimum_size, 8);
    EXPECT_EQ(other->table->capacity, 8);
    EXPECT_EQ(other->table->maximum_shift, 0);
    EXPECT_EQ(other->table->shift, 0);
    mova_lu_release(&other, nullptr);
}

TEST_F(PointerLookup, ReleaseFreesTheTableAndThenTheRecord)
{
    log expected = {"dealloc " + host.name_of(lookup->table->keys) + " " + array_bytes,
                    "dealloc " + host.name_of(lookup->table->values) + " " + array_bytes,
                    "dealloc " + host.name_of(lookup->table) + " " + table_bytes,
                    "dealloc " + host.name_of(lookup) + " " + lookup_bytes};
    mova_lu_release(&lookup, write_down_release);
    EXPECT_EQ(host.take_log(), expected);
    EXPECT_EQ(lookup, nullptr);
}

TEST_F(PointerLookup, ReleasingANullLookupDoesNothing)
{
    mova_lookup *none = nullptr;
    mova_lu_release(&none, write_down_release);
    mova_lu_release(nullptr, write_down_release);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(PointerLookup, AFreshLookupReturns0ForEveryKey)
{
    for (mova_word key : {mova_word{0}, a, b, mova_word{-1}})
        EXPECT_EQ(mova_lu_get(lookup, key), 0);
}

TEST_F(PointerLookup, ThePairAddedLastStandsInFront)
{
    EXPECT_EQ(mova_lu_add(lookup, a, 1), 0);
    expect_front(a, 1);
    EXPECT_EQ(lookup->table->count, 0);
    EXPECT_EQ(mova_lu_get(lookup, a), 1);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(PointerLookup, TheNextPairPushesTheFrontIntoTheTable)
{
    mova_lu_add(lookup, a, 1);
    EXPECT_EQ(mova_lu_add(lookup, b, 2), 1);
    expect_front(b, 2);
    EXPECT_EQ(lookup->table->keys[a % 8], a);
    EXPECT_EQ(lookup->table->values[a % 8], 1);
    EXPECT_EQ(mova_lu_get(lookup, a), 1);
    EXPECT_EQ(mova_lu_get(lookup, b), 2);
    EXPECT_EQ(mova_lu_add(lookup, c, 3), 2);
    EXPECT_EQ(lookup->table->count, 2);
}

TEST_F(PointerLookup, APairThatIsPushedReplacesItsKeysOlderValue)
{
    mova_lu_add(lookup, a, 1);
    mova_lu_add(lookup, a, 2);
    EXPECT_EQ(mova_lu_add(lookup, b, 3), 2);
    EXPECT_EQ(lookup->table->count, 1);
    EXPECT_EQ(mova_lu_get(lookup, a), 2);
}

TEST_F(PointerLookup, AnOlderValueComesToLightWhenTheFrontIsRemoved)
{
    mova_lu_add(lookup, a, 1);
    EXPECT_EQ(mova_lu_add(lookup, a, 2), 1);
    EXPECT_EQ(mova_lu_get(lookup, a), 2);
    mova_lu_remove(lookup, a);
    expect_front(0, 0);
    EXPECT_EQ(lookup->table->count, 1);
    EXPECT_EQ(mova_lu_get(lookup, a), 1);
    mova_lu_remove(lookup, a);
    EXPECT_EQ(lookup->table->count, 0);
    EXPECT_EQ(mova_lu_get(lookup, a), 0);
}

TEST_F(PointerLookup, RemovesFromTheTableWhatIsNotInFront)
{
    mova_lu_add(lookup, a, 1);
    mova_lu_add(lookup, b, 2);
    mova_lu_remove(lookup, a);
    EXPECT_EQ(mova_lu_get(lookup, a), 0);
    EXPECT_EQ(mova_lu_get(lookup, b), 2);
    expect_front(b, 2);
    mova_lu_remove(lookup, c);
    expect_front(b, 2);
}

TEST_F(PointerLookup, AnEmptiedFrontIsNotPushed)
{
    mova_lu_add(lookup, a, 1);
    mova_lu_remove(lookup, a);
    EXPECT_EQ(mova_lu_add(lookup, b, 2), 0);
    EXPECT_EQ(lookup->table->count, 0);
}

TEST_F(PointerLookup, Key0StandsInFrontAndCountsAsEmpty)
{
    mova_lu_add(lookup, a, 1);
    EXPECT_EQ(mova_lu_add(lookup, 0, 7), 1);
    expect_front(0, 7);
    EXPECT_EQ(mova_lu_get(lookup, 0), 7);
    EXPECT_EQ(mova_lu_get(lookup, a), 1);
    EXPECT_EQ(mova_lu_add(lookup, b, 2), 0);
    EXPECT_EQ(lookup->table->count, 1);
    EXPECT_EQ(mova_lu_get(lookup, 0), 0);
}

TEST_F(PointerLookup, RemovingKey0ClearsItsValueInFront)
{
    mova_lu_add(lookup, 0, 7);
    mova_lu_remove(lookup, 0);
    expect_front(0, 0);
    EXPECT_EQ(mova_lu_get(lookup, 0), 0);
}

TEST_F(PointerLookup, RemovingKey0LeavesAnotherFrontAndTheTableAlone)
{
    mova_lu_add(lookup, a, 1);
    mova_lu_add(lookup, b, 2);
    mova_lu_remove(lookup, 0);
    expect_front(b, 2);
    EXPECT_EQ(lookup->table->count, 1);
}

TEST_F(PointerLookup, AValueOf0IsKeptLikeAnyOther)
{
    mova_lu_add(lookup, a, 0);
    EXPECT_EQ(mova_lu_add(lookup, b, 2), 0);
    EXPECT_EQ(lookup->table->count, 1);
    EXPECT_EQ(HSH_contains_key(lookup->table, a), 1);
}

TEST_F(PointerLookup, ReleaseHandsOverTheFrontAndThenTheTableInTheOrderOfItsSlots)
{
    mova_lu_add(lookup, a, 1);
    mova_lu_add(lookup, b, 2);
    mova_lu_add(lookup, c, 3);
    mova_lu_add(lookup, c, 4);
    EXPECT_EQ(released_values(), (log{"front 4", "copy 3", "copy 1", "copy 2"}));
}

TEST_F(PointerLookup, ReleaseHandsOverA0FromTheTableButNotFromTheFront)
{
    mova_lu_add(lookup, a, 0);
    mova_lu_add(lookup, b, 0);
    EXPECT_EQ(released_values(), log{"copy 0"});
}

TEST_F(PointerLookup, ReleaseHandsOverTheValueOfKey0InFront)
{
    mova_lu_add(lookup, 0, 7);
    EXPECT_EQ(released_values(), log{"front 7"});
}

TEST_F(PointerLookup, ReleaseWithoutACallbackFreesOnlyItsOwnMemory)
{
    mova_lu_add(lookup, a, 1);
    mova_lu_add(lookup, b, 2);
    mova_lu_release(&lookup, nullptr);
    EXPECT_EQ(lookup, nullptr);
    EXPECT_EQ(host.live_blocks(), 0u);
    EXPECT_EQ(host.take_log().size(), 4u);
}

TEST_F(PointerLookup, TheTableGrowsAndShrinksAsPairsComeAndGo)
{
    for (mova_word i = 1; i <= 100; ++i)
        mova_lu_add(lookup, 16 * i, i);
    EXPECT_EQ(lookup->table->capacity, 128);
    for (mova_word i = 1; i <= 100; ++i)
        EXPECT_EQ(mova_lu_get(lookup, 16 * i), i);
    for (mova_word i = 1; i <= 100; ++i)
        mova_lu_remove(lookup, 16 * i);
    EXPECT_EQ(lookup->table->capacity, 8);
    EXPECT_EQ(lookup->table->count, 0);
    expect_front(0, 0);
}

/* ---- the check of the invariants ---- */

TEST_F(PointerLookup, TheCheckNamesTheInvariantThatIsBroken)
{
    const HSH_table right = *lookup->table;
    lookup->table->minimum_size = 16;
    EXPECT_EQ(broken_invariant(*lookup), 1);
    *lookup->table = right;
    lookup->table->maximum_shift = 1;
    EXPECT_EQ(broken_invariant(*lookup), 1);
    *lookup->table = right;
    lookup->table->mask = 15;
    EXPECT_EQ(broken_invariant(*lookup), 2);
    *lookup->table = right;
    EXPECT_EQ(broken_invariant(*lookup), 0);
}

} // namespace
