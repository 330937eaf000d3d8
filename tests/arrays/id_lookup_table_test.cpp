/* SPDX-License-Identifier: MIT */
#include <mova/arrays/id_lookup_table.h>

#include <tests/support/recording_host_test_case.h>
#include <tests/support/array_storage.h>

#include <array>
#include <climits>

namespace {

using mova::test::broken_invariant_of_table;
using mova::test::log;
using mova::test::recording_host;

/* What the pointers point at: never read. */
std::array<char, 4096> things;

void *thing(std::size_t i)
{
    return &things[i];
}

std::string storage_bytes(std::size_t words)
{
    return std::to_string(words * sizeof(void *));
}

class IdLookupTable : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        table = io_lut_create();
    }

    void TearDown() override
    {
        if (table)
            io_lut_release(&table);
        recording_host_test_case::TearDown();
    }

    void add(std::size_t first, std::size_t count)
    {
        for (std::size_t i = first; i < first + count; ++i)
            io_lut_add(table, thing(i));
    }

    uintptr_t flags() const { return *static_cast<uintptr_t *>(DA_data(table)); }

    /* Runs the call, which must raise so. */
    template <class Call>
    void expect_raise(int32_t line, int32_t code, Call call)
    {
        host.take_log();
        mova::test::expect_raise("plut", line, code, call);
        EXPECT_EQ(host.take_log(), log{"raise plut " + std::to_string(line) + " " + std::to_string(code)});
    }

    DA_array *table = nullptr;
};

TEST_F(IdLookupTable, NewTableHoldsItsFlagsAlone)
{
    EXPECT_EQ(host.take_log(), (log{"alloc " + std::to_string(sizeof(DA_array)) + " = #1", //
                                    "alloc " + storage_bytes(1024) + " = #2"}));
    EXPECT_EQ(DA_nitems(table), 1);
    EXPECT_EQ(table->element_size, sizeof(void *));
    EXPECT_EQ(table->increment, 1024);
    EXPECT_EQ(flags(), 0u);
    EXPECT_EQ(broken_invariant_of_table(*table), 0);
}

TEST_F(IdLookupTable, AllowingReuseSetsBit0OfTheFlags)
{
    io_lut_allow_reuse(table);
    EXPECT_EQ(flags(), 1u);
    io_lut_allow_reuse(table);
    EXPECT_EQ(flags(), 1u);
    EXPECT_EQ(broken_invariant_of_table(*table), 0);
}

TEST_F(IdLookupTable, ReleaseFreesTheTableAndClearsTheHandle)
{
    host.take_log();
    io_lut_release(&table);
    EXPECT_EQ(table, nullptr);
    EXPECT_EQ(host.take_log(),
              (log{"dealloc #2 " + storage_bytes(1024), "dealloc #1 " + std::to_string(sizeof(DA_array))}));
    io_lut_release(&table);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(IdLookupTable, IdsAreHandedOutFromOneUpwards)
{
    EXPECT_EQ(io_lut_add(table, thing(0)), 1);
    EXPECT_EQ(io_lut_add(table, thing(1)), 2);
    EXPECT_EQ(io_lut_add(table, thing(0)), 3);
    EXPECT_EQ(DA_nitems(table), 4);
    EXPECT_EQ(io_lut_get_ptr(table, 1), thing(0));
    EXPECT_EQ(io_lut_get_ptr(table, 2), thing(1));
    EXPECT_EQ(io_lut_get_ptr(table, 3), thing(0));
}

TEST_F(IdLookupTable, AddingLooksForNoFreeId)
{
    io_lut_set(table, thing(0), 3);
    EXPECT_EQ(io_lut_add(table, thing(1)), 4);
    EXPECT_EQ(io_lut_look_ptr(table, 1), nullptr);
}

TEST_F(IdLookupTable, NullIsAddedLikeAnyPointer)
{
    EXPECT_EQ(io_lut_add(table, nullptr), 1);
    EXPECT_EQ(io_lut_add(table, thing(0)), 2);
    EXPECT_EQ(io_lut_look_ptr(table, 1), nullptr);
    EXPECT_EQ(io_lut_look_id(table, nullptr), 1);
}

TEST_F(IdLookupTable, GrowsBy1024Ids)
{
    host.take_log();
    add(0, 1023);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(io_lut_add(table, thing(1023)), 1024);
    EXPECT_EQ(host.take_log(), log{"realloc #2 " + storage_bytes(1024) + " -> " + storage_bytes(2048) + " = #3"});
    EXPECT_EQ(io_lut_get_ptr(table, 1023), thing(1022));
    EXPECT_EQ(broken_invariant_of_table(*table), 0);
}

/* ---- finding ids ---- */

TEST_F(IdLookupTable, FindsTheLowestIdOfAPointer)
{
    add(0, 3);
    add(1, 1);
    EXPECT_EQ(io_lut_get_id(table, thing(1)), 2);
    EXPECT_EQ(io_lut_look_id(table, thing(1)), 2);
}

/* The slots are compared many at a time: every length and every place, and the pointer after the end too. */
TEST_F(IdLookupTable, FindsAPointerAtEveryPlaceOfEveryLength)
{
    for (int32_t length = 1; length < 150; ++length) {
        add(static_cast<std::size_t>(length), 1);
        for (int32_t id = 1; id <= length; ++id)
            ASSERT_EQ(io_lut_look_id(table, thing(static_cast<std::size_t>(id))), id) << "of " << length;
        ASSERT_EQ(io_lut_look_id(table, thing(0)), 0);
    }
    DA_truncate(table, 100);
    EXPECT_EQ(io_lut_look_id(table, thing(99)), 99);
    EXPECT_EQ(io_lut_look_id(table, thing(100)), 0);
}

TEST_F(IdLookupTable, FindsTheFirstOfManyEqualPointers)
{
    add(0, 70);
    for (int i = 0; i < 70; ++i)
        io_lut_add(table, thing(100));
    EXPECT_EQ(io_lut_look_id(table, thing(100)), 71);
}

/* Halves of words that agree do not make words that agree. */
TEST_F(IdLookupTable, ComparesWholeWords)
{
    const auto low = uintptr_t{0x12345678}, high = low << (sizeof(void *) * 4);
    for (int i = 0; i < 64; ++i)
        io_lut_add(table, reinterpret_cast<void *>(i % 2 ? low : high));
    EXPECT_EQ(io_lut_look_id(table, reinterpret_cast<void *>(low | high)), 0);
    EXPECT_EQ(io_lut_look_id(table, reinterpret_cast<void *>(low)), 2);
}

TEST_F(IdLookupTable, LookingForNullFindsTheFirstFreeId)
{
    add(0, 2);
    EXPECT_EQ(io_lut_look_id(table, nullptr), 0);
    io_lut_set(table, thing(5), 6);
    EXPECT_EQ(io_lut_look_id(table, nullptr), 3);
    EXPECT_EQ(io_lut_get_id(table, nullptr), 3);
}

TEST_F(IdLookupTable, TheFlagsAreNoPointer)
{
    io_lut_allow_reuse(table);
    add(0, 1);
    EXPECT_EQ(io_lut_look_id(table, reinterpret_cast<void *>(uintptr_t{1})), 0);
}

TEST_F(IdLookupTable, APointerWithoutAnIdRaisesLine108)
{
    expect_raise(108, 4397, [&] { io_lut_get_id(table, thing(0)); });
    add(0, 3);
    expect_raise(108, 4397, [&] { io_lut_get_id(table, thing(3)); });
    host.set_raise_mode(recording_host::raise_mode::returns);
    EXPECT_EQ(io_lut_get_id(table, thing(3)), 0);
    EXPECT_EQ(host.take_log(), log{"raise plut 108 4397"});
}

TEST_F(IdLookupTable, LookingRaisesNothing)
{
    host.take_log();
    EXPECT_EQ(io_lut_look_id(table, thing(0)), 0);
    EXPECT_EQ(io_lut_look_id(table, nullptr), 0);
    add(0, 1);
    EXPECT_EQ(io_lut_look_id(table, thing(1)), 0);
    EXPECT_EQ(io_lut_look_ptr(table, 2), nullptr);
    EXPECT_EQ(host.take_log(), log{});
}

/* ---- setting ---- */

TEST_F(IdLookupTable, SettingBeyondTheHighestIdLengthensTheTable)
{
    add(0, 2);
    io_lut_set(table, thing(9), 10);
    EXPECT_EQ(DA_nitems(table), 11);
    EXPECT_EQ(io_lut_get_ptr(table, 10), thing(9));
    for (int32_t id = 3; id < 10; ++id)
        EXPECT_EQ(io_lut_look_ptr(table, id), nullptr);
    EXPECT_EQ(broken_invariant_of_table(*table), 0);
}

TEST_F(IdLookupTable, SettingTheNextIdNeedsNoReuse)
{
    add(0, 2);
    io_lut_set(table, thing(5), 3);
    EXPECT_EQ(io_lut_get_ptr(table, 3), thing(5));
}

TEST_F(IdLookupTable, SettingFarBeyondGrowsOnce)
{
    host.take_log();
    io_lut_set(table, thing(0), 5000);
    EXPECT_EQ(host.take_log(), log{"realloc #2 " + storage_bytes(1024) + " -> " + storage_bytes(5120) + " = #3"});
    EXPECT_EQ(io_lut_look_ptr(table, 4999), nullptr);
    EXPECT_EQ(io_lut_look_id(table, thing(0)), 5000);
}

TEST_F(IdLookupTable, SettingAnIdToItsOwnPointerIsAccepted)
{
    add(0, 2);
    io_lut_set(table, thing(1), 2);
    EXPECT_EQ(io_lut_get_ptr(table, 2), thing(1));
}

TEST_F(IdLookupTable, SettingAnIdInUseRaisesLine140WithoutReuse)
{
    add(0, 2);
    expect_raise(140, 4297, [&] { io_lut_set(table, thing(5), 2); });
    EXPECT_EQ(io_lut_get_ptr(table, 2), thing(1));
    expect_raise(140, 4297, [&] { io_lut_set(table, nullptr, 2); });
    EXPECT_EQ(io_lut_get_ptr(table, 2), thing(1));
}

TEST_F(IdLookupTable, SettingAFreeIdRaisesLine140WithoutReuse)
{
    io_lut_set(table, thing(0), 3);
    expect_raise(140, 4297, [&] { io_lut_set(table, thing(1), 2); });
    io_lut_set(table, nullptr, 2);
    EXPECT_EQ(io_lut_look_ptr(table, 2), nullptr);
}

TEST_F(IdLookupTable, SettingGoesOnWhereTheHostReturns)
{
    add(0, 2);
    host.take_log();
    host.set_raise_mode(recording_host::raise_mode::returns);
    io_lut_set(table, thing(5), 2);
    EXPECT_EQ(host.take_log(), log{"raise plut 140 4297"});
    EXPECT_EQ(io_lut_get_ptr(table, 2), thing(5));
}

TEST_F(IdLookupTable, ReuseLetsIdsBeReplacedAndFreed)
{
    add(0, 2);
    io_lut_allow_reuse(table);
    host.take_log();
    io_lut_set(table, thing(5), 1);
    io_lut_set(table, nullptr, 2);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(io_lut_get_ptr(table, 1), thing(5));
    EXPECT_EQ(io_lut_look_ptr(table, 2), nullptr);
    EXPECT_EQ(DA_nitems(table), 3);
    EXPECT_EQ(io_lut_look_id(table, nullptr), 2);
}

TEST_F(IdLookupTable, IdZeroIsTheFlagsWord)
{
    io_lut_set(table, nullptr, 0);
    expect_raise(140, 4297, [&] { io_lut_set(table, reinterpret_cast<void *>(uintptr_t{1}), 0); });
    EXPECT_EQ(flags(), 0u);
    io_lut_allow_reuse(table);
    io_lut_set(table, nullptr, 0);
    EXPECT_EQ(flags(), 0u);
}

/* ---- finding pointers ---- */

TEST_F(IdLookupTable, AnIdWithoutAPointerRaisesLine155)
{
    add(0, 2);
    io_lut_set(table, thing(3), 4);
    for (int32_t id : {0, 3, 5, 1023, 1024, -1, INT32_MIN, INT32_MAX}) {
        expect_raise(155, 4397, [&] { io_lut_get_ptr(table, id); });
        EXPECT_EQ(io_lut_look_ptr(table, id), nullptr);
    }
}

/* The word is returned whatever it is, where the storage has it. */
TEST_F(IdLookupTable, AnIdWithoutAPointerReturnsItsWordWhereTheHostReturns)
{
    io_lut_allow_reuse(table);
    add(0, 3);
    DA_truncate(table, 3);
    host.take_log();
    host.set_raise_mode(recording_host::raise_mode::returns);
    EXPECT_EQ(io_lut_get_ptr(table, 0), reinterpret_cast<void *>(uintptr_t{1}));
    EXPECT_EQ(io_lut_get_ptr(table, 3), thing(2));
    EXPECT_EQ(io_lut_get_ptr(table, 4), nullptr);
    EXPECT_EQ(io_lut_get_ptr(table, 1024), nullptr);
    EXPECT_EQ(io_lut_get_ptr(table, -1), nullptr);
    EXPECT_EQ(host.take_log(), log(5, "raise plut 155 4397"));
}

/* ---- iteration ---- */

TEST_F(IdLookupTable, AnIteratorStartsAtTheFirstId)
{
    add(0, 2);
    host.take_log();
    const io_lut_iterator iterator = io_lut_all_items(table);
    EXPECT_EQ(static_cast<void *>(iterator.storage), DA_data(table));
    EXPECT_EQ(iterator.count, 3);
    EXPECT_EQ(iterator.next, 1);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(IdLookupTable, DeliversThePointersInTheOrderOfTheirIdsAndPassesOverFreeOnes)
{
    add(0, 2);
    io_lut_set(table, thing(9), 10);
    io_lut_set(table, nullptr, 12);
    io_lut_iterator iterator = io_lut_all_items(table);
    EXPECT_EQ(io_lut_next_item(&iterator), thing(0));
    EXPECT_EQ(iterator.next, 2);
    EXPECT_EQ(io_lut_next_item(&iterator), thing(1));
    EXPECT_EQ(io_lut_next_item(&iterator), thing(9));
    EXPECT_EQ(iterator.next, 11);
    EXPECT_EQ(io_lut_next_item(&iterator), nullptr);
    EXPECT_EQ(iterator.next, 13);
    EXPECT_EQ(io_lut_next_item(&iterator), nullptr);
    EXPECT_EQ(iterator.next, 13);
}

TEST_F(IdLookupTable, AnIterationOfANewTableEndsAtOnce)
{
    io_lut_allow_reuse(table);
    io_lut_iterator iterator = io_lut_all_items(table);
    EXPECT_EQ(io_lut_next_item(&iterator), nullptr);
    EXPECT_EQ(iterator.next, 1);
}

TEST_F(IdLookupTable, AnIterationShowsIdsThatWereSetAndNoneThatWereAdded)
{
    add(0, 2);
    io_lut_allow_reuse(table);
    io_lut_iterator iterator = io_lut_all_items(table);
    io_lut_set(table, thing(7), 1);
    io_lut_set(table, thing(8), 3);
    EXPECT_EQ(io_lut_next_item(&iterator), thing(7));
    EXPECT_EQ(io_lut_next_item(&iterator), thing(1));
    EXPECT_EQ(io_lut_next_item(&iterator), nullptr);
}

/* ---- where there is no memory ---- */

TEST_F(IdLookupTable, CreatingWithoutMemoryRaisesAsTheDynamicArrayDoes)
{
    host.take_log();
    host.fail_allocation(1);
    mova::test::expect_raise("darray", 33, 4197, io_lut_create);
    EXPECT_EQ(host.take_log().back(), "raise darray 33 4197");
    host.set_raise_mode(recording_host::raise_mode::returns);
    host.fail_allocation(1);
    EXPECT_EQ(io_lut_create(), nullptr);
    EXPECT_EQ(host.take_log().back(), "raise darray 33 4197");
}

TEST_F(IdLookupTable, CreatingWithoutMemoryForTheFlagsReturnsATableToRelease)
{
    host.set_raise_mode(recording_host::raise_mode::returns);
    host.fail_allocation(2);
    DA_array *made = io_lut_create();
    EXPECT_EQ(host.take_log().back(), "raise darray 111 4197");
    EXPECT_EQ(DA_nitems(made), 0);
    EXPECT_EQ(DA_data(made), nullptr);
    io_lut_release(&made);
    EXPECT_EQ(made, nullptr);
}

TEST_F(IdLookupTable, AddingWithoutMemoryReturnsTheHighestIdWhereTheHostReturns)
{
    add(0, 1023);
    void *storage = DA_data(table);
    host.set_raise_mode(recording_host::raise_mode::returns);
    host.fail_allocation(1);
    EXPECT_EQ(io_lut_add(table, thing(0)), 1023);
    EXPECT_EQ(host.take_log().back(), "raise darray 111 4197");
    EXPECT_EQ(DA_data(table), nullptr);
    EXPECT_EQ(DA_nitems(table), 1024);
    MM_dealloc_item(storage, 1024 * sizeof(void *));
}

} // namespace
