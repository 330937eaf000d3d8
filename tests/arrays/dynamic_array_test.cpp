/* SPDX-License-Identifier: MIT */
#include <mova/arrays/dynamic_array.h>
#include <mova/frame/host.h>

#include <tests/arrays/letters.h>
#include <tests/support/recording_host_test_case.h>
#include <tests/support/array_storage.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <utility>

namespace {

using mova::test::broken_invariant;
using mova::test::bytes_of_elements;
using mova::test::distinct_elements;
using mova::test::element;
using mova::test::elements_named;
using mova::test::every_size;
using mova::test::expect_raise;
using mova::test::log;
using mova::test::name_of_element;
using mova::test::named;
using mova::test::names_of;
using mova::test::picked;
using mova::test::recording_host;

/* What the test below was asked about; where `act` is set, it is called at each question. */
std::string asked;
std::function<void(char)> act;

int is_upper_case(void *bytes)
{
    const char name = name_of_element(bytes);
    asked += name;
    if (act)
        act(name);
    return name >= 'A' && name <= 'Z' ? 64 : 0;
}

class DynamicArray : public mova::test::recording_host_test_case {
protected:
    void SetUp() override
    {
        recording_host_test_case::SetUp();
        asked = "";
        act = nullptr;
        start(4);
    }

    void TearDown() override
    {
        DA_release(array);
        recording_host_test_case::TearDown();
    }

    static DA_array *array_of(const std::string &names, int32_t increment = 4)
    {
        DA_array *made = DA_create(sizeof(element), increment);
        DA_append(made, elements_named(names).data(), static_cast<int32_t>(names.size()));
        return made;
    }

    /* A new array of another increment; the host numbers its head 1. */
    void start(int32_t increment)
    {
        DA_release(array);
        EXPECT_EQ(host.take_complaints(), log{});
        EXPECT_EQ(host.live_blocks(), 0u);
        host.reset();
        array = DA_create(sizeof(element), increment);
        host.take_log();
    }

    void start(int32_t increment, const std::string &names)
    {
        start(increment);
        append(names);
        host.take_log();
    }

    void append(const std::string &names)
    {
        DA_append(array, elements_named(names).data(), static_cast<int32_t>(names.size()));
    }

    void insert(int32_t i, const std::string &names)
    {
        DA_insert(array, i, elements_named(names).data(), static_cast<int32_t>(names.size()));
    }

    void put(int32_t i, char name) { DA_put_item(array, i, named(name).data()); }

    /* The names of the elements in use; with the invariants verified. */
    static std::string text(const DA_array *shown)
    {
        EXPECT_EQ(broken_invariant(*shown), 0);
        return names_of(shown->data, shown->nitems);
    }

    std::string text() { return text(array); }

    /* The same of all that there is storage for, with a bar where the array ends: "AB|..". */
    std::string whole_storage()
    {
        EXPECT_EQ(broken_invariant(*array), 0);
        return names_of(array->data, array->nalloc).insert(static_cast<std::size_t>(array->nitems), "|");
    }

    static std::string delivered(DA_iterator iterator)
    {
        std::string names;
        for (void *item; DA_next(&iterator, &item);)
            names += name_of_element(item);
        return names;
    }

    /* Runs the call with its first allocation failing and the host returning from the raise. */
    template <class Call>
    void fail_and_return(Call call)
    {
        host.take_log();
        host.set_raise_mode(recording_host::raise_mode::returns);
        host.fail_allocation(1);
        call();
        host.set_raise_mode(recording_host::raise_mode::throws);
    }

    /* The same with the raise thrown, which must have been the one with this line. */
    template <class Call>
    void fail_and_throw(int32_t line, Call call)
    {
        host.take_log();
        host.fail_allocation(1);
        expect_raise("darray", line, 4197, call);
    }

    DA_array *array = nullptr;
};

/* ---- creation and disposal ---- */

TEST_F(DynamicArray, NewArrayHasNoStorage)
{
    DA_array *made = DA_create(7, 9);
    EXPECT_EQ(host.take_log(), log{"alloc " + std::to_string(sizeof(DA_array)) + " = #2"});
    EXPECT_EQ(made->element_size, 7u);
    EXPECT_EQ(made->increment, 9);
    EXPECT_EQ(made->nalloc, 0);
    EXPECT_EQ(made->nitems, 0);
    EXPECT_EQ(made->data, nullptr);
    EXPECT_EQ(DA_data(made), nullptr);
    EXPECT_EQ(DA_nalloc(made), 0);
    EXPECT_EQ(DA_nitems(made), 0);
    DA_release(made);
    EXPECT_EQ(host.take_log(), log{"dealloc #2 " + std::to_string(sizeof(DA_array))});
}

TEST_F(DynamicArray, ReleaseFreesTheStorageAndThenTheHead)
{
    append("ABCDE");
    host.take_log();
    DA_release(std::exchange(array, nullptr));
    EXPECT_EQ(host.take_log(), (log{"dealloc #2 96", "dealloc #1 " + std::to_string(sizeof(DA_array))}));
}

TEST_F(DynamicArray, ReleasingNullDoesNothing)
{
    DA_release(nullptr);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(DynamicArray, ClearFreesTheStorageAndKeepsTheShape)
{
    append("ABC");
    host.take_log();
    DA_clear(array);
    EXPECT_EQ(host.take_log(), log{"dealloc #2 48"});
    EXPECT_EQ(array->data, nullptr);
    EXPECT_EQ(array->nalloc, 0);
    EXPECT_EQ(array->nitems, 0);
    EXPECT_EQ(array->element_size, sizeof(element));
    EXPECT_EQ(array->increment, 4);
    DA_clear(array);
    EXPECT_EQ(host.take_log(), log{});
}

/* ---- sizes ---- */

TEST_F(DynamicArray, ReportsItsMemoryByTheDesignsOwnHead)
{
    EXPECT_EQ(DA_check(array), 20u);
    EXPECT_EQ(DA_memsize(array), 0u);
    EXPECT_EQ(DA_memsize(nullptr), 0u);
    append("A");
    EXPECT_EQ(DA_check(array), 20u + 48u);
    EXPECT_EQ(DA_memsize(array), 48u);
    DA_reset(array);
    EXPECT_EQ(DA_check(array), 68u);
}

TEST_F(DynamicArray, ExtendsToTheSmallestMultipleStrictlyAboveTheNumber)
{
    const std::pair<int32_t, int32_t> extensions[] = {{0, 4}, {1, 4}, {3, 4}, {4, 8}, {7, 8}, {8, 12}, {11, 12}};
    for (auto [n, nalloc] : extensions) {
        start(4);
        DA_extend(array, n);
        EXPECT_EQ(host.take_log(), log{"alloc " + bytes_of_elements(nalloc) + " = #2"});
        EXPECT_EQ(DA_nalloc(array), nalloc);
        EXPECT_EQ(DA_nitems(array), 0);
        EXPECT_EQ(whole_storage(), "|" + std::string(static_cast<std::size_t>(nalloc), '.'));
    }
}

TEST_F(DynamicArray, ExtendsByAnIncrementOfOneToOneSpareElement)
{
    start(1);
    DA_extend(array, 0);
    EXPECT_EQ(DA_nalloc(array), 1);
    DA_extend(array, 5);
    EXPECT_EQ(DA_nalloc(array), 6);
}

TEST_F(DynamicArray, ExtendingForANegativeNumberRoundsTowardsZero)
{
    for (int32_t n : {-4, -5, -7, -8, -100}) {
        DA_extend(array, n);
        EXPECT_EQ(host.take_log(), log{}) << n;
    }
    DA_extend(array, -3);
    EXPECT_EQ(host.take_log(), log{"alloc 48 = #2"});
}

TEST_F(DynamicArray, GrowthKeepsTheElementsAndTheSpareOnesAndZeroesWhatItAdds)
{
    append("ABCD");
    DA_truncate(array, 2);
    host.take_log();
    DA_extend(array, 8);
    EXPECT_EQ(host.take_log(), log{"realloc #2 96 -> 144 = #3"});
    EXPECT_EQ(whole_storage(), "AB|CD........");
}

TEST_F(DynamicArray, CapacityNeverShrinks)
{
    append("ABCDE");
    host.take_log();
    DA_extend(array, 0);
    DA_extend(array, 7);
    DA_truncate(array, 1);
    DA_setsize(array, 0);
    DA_delete(array, 0, 0);
    DA_reset(array);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(DA_nalloc(array), 8);
}

TEST_F(DynamicArray, SetsizeAlwaysExtends)
{
    const std::pair<int32_t, int32_t> sizes[] = {{3, 4}, {4, 8}, {0, 4}, {8, 12}};
    for (auto [n, nalloc] : sizes) {
        start(4);
        DA_setsize(array, n);
        EXPECT_EQ(DA_nitems(array), n);
        EXPECT_EQ(DA_nalloc(array), nalloc);
    }
}

TEST_F(DynamicArray, SetsizeShortensAndLengthensOverWhatWasThere)
{
    append("ABCDE");
    DA_setsize(array, 2);
    EXPECT_EQ(whole_storage(), "AB|CDE...");
    DA_setsize(array, 7);
    EXPECT_EQ(whole_storage(), "ABCDE..|.");
}

TEST_F(DynamicArray, TruncateNeverLengthens)
{
    append("ABC");
    DA_truncate(array, 4);
    EXPECT_EQ(text(), "ABC");
    DA_truncate(array, 3);
    EXPECT_EQ(text(), "ABC");
    DA_truncate(array, 1);
    EXPECT_EQ(whole_storage(), "A|BC.");
    DA_truncate(array, 0);
    EXPECT_EQ(text(), "");
}

TEST_F(DynamicArray, ResetKeepsTheStorageAndWhatIsInIt)
{
    append("ABCDEFG");
    host.take_log();
    DA_reset(array);
    EXPECT_EQ(text(), "");
    put(5, 'x');
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(text(), "ABCDEx");
}

/* ---- elements ---- */

TEST_F(DynamicArray, DataIsTheStorage)
{
    append("AB");
    EXPECT_EQ(DA_data(array), array->data);
    EXPECT_EQ(host.name_of(DA_data(array)), "#2");
}

TEST_F(DynamicArray, StringEndsAnArrayOfBytesWithAZero)
{
    DA_array *bytes = DA_create(1, 4);
    DA_append(bytes, "abcd", 4);
    DA_truncate(bytes, 3);
    host.take_log();
    EXPECT_STREQ(DA_string(bytes), "abc");
    EXPECT_EQ(DA_string(bytes), DA_data(bytes));
    EXPECT_EQ(DA_nitems(bytes), 3);
    EXPECT_EQ(host.take_log(), log{});
    DA_release(bytes);
}

TEST_F(DynamicArray, StringAsksForOneElementMoreWhereThereIsNoneSpare)
{
    DA_array *bytes = DA_create(1, 4);
    EXPECT_STREQ(DA_string(bytes), "");
    EXPECT_EQ(DA_nalloc(bytes), 4);
    EXPECT_EQ(DA_nitems(bytes), 0);
    DA_append(bytes, "abcd", 4);
    EXPECT_EQ(DA_nalloc(bytes), 4);
    EXPECT_STREQ(DA_string(bytes), "abcd");
    EXPECT_EQ(DA_nalloc(bytes), 8);
    EXPECT_EQ(DA_nitems(bytes), 4);
    DA_release(bytes);
}

TEST_F(DynamicArray, StringCountsBytesWhateverTheElementSize)
{
    append("ABC");
    const char *bytes = DA_string(array);
    EXPECT_EQ(std::string(bytes), "AAA");
    EXPECT_EQ(bytes[4], 'A');
    EXPECT_EQ(DA_nitems(array), 3);
}

TEST_F(DynamicArray, GettingAnElementReturnsItsPlace)
{
    append("ABC");
    host.take_log();
    EXPECT_EQ(DA_get_item(array, 0), DA_data(array));
    EXPECT_EQ(name_of_element(DA_get_item(array, 2)), 'C');
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(text(), "ABC");
}

TEST_F(DynamicArray, GettingPastTheEndLengthensTheArray)
{
    void *item = DA_get_item(array, 9);
    EXPECT_EQ(host.take_log(), log{"alloc 144 = #2"});
    EXPECT_EQ(item, static_cast<char *>(DA_data(array)) + 9 * sizeof(element));
    EXPECT_EQ(DA_nalloc(array), 12);
    EXPECT_EQ(text(), "..........");
    DA_get_item(array, 11);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(DA_nitems(array), 12);
    DA_get_item(array, 12);
    EXPECT_EQ(host.take_log(), log{"realloc #2 144 -> 192 = #3"});
    EXPECT_EQ(DA_nitems(array), 13);
}

TEST_F(DynamicArray, GettingTheElementBelowAMultipleAsksForTheNextOne)
{
    DA_get_item(array, 3);
    EXPECT_EQ(DA_nalloc(array), 8);
}

TEST_F(DynamicArray, PuttingCopiesOverAnElement)
{
    append("ABC");
    element given = named('x');
    DA_put_item(array, 1, given.data());
    given = named('z');
    EXPECT_EQ(text(), "AxC");
}

TEST_F(DynamicArray, PuttingNullZeroesTheElement)
{
    append("ABC");
    DA_put_item(array, 1, nullptr);
    EXPECT_EQ(text(), "A.C");
    DA_reset(array);
    DA_put_item(array, 2, nullptr);
    EXPECT_EQ(text(), "A..");
}

TEST_F(DynamicArray, PuttingPastTheEndLengthensTheArrayAndWritesOneElement)
{
    put(5, 'x');
    EXPECT_EQ(host.take_log(), log{"alloc 96 = #2"});
    EXPECT_EQ(whole_storage(), ".....x|..");
    DA_truncate(array, 1);
    put(3, 'y');
    EXPECT_EQ(whole_storage(), "...y|.x..");
    put(8, 'z');
    EXPECT_EQ(host.take_log(), log{"realloc #2 96 -> 144 = #3"});
    EXPECT_EQ(whole_storage(), "...y.x..z|...");
}

TEST_F(DynamicArray, PuttingTheElementBelowAMultipleAsksForTheNextOne)
{
    put(3, 'x');
    EXPECT_EQ(DA_nalloc(array), 8);
}

TEST_F(DynamicArray, AppendingExtendsWhereThereIsNoRoom)
{
    start(10);
    append("ABCDEFGHIJ");
    EXPECT_EQ(host.take_log(), log{"alloc 240 = #2"});
    EXPECT_EQ(DA_nalloc(array), 20);
    append("KLMNOPQRST");
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(text(), "ABCDEFGHIJKLMNOPQRST");
    append("U");
    EXPECT_EQ(host.take_log(), log{"realloc #2 240 -> 360 = #3"});
    EXPECT_EQ(DA_nalloc(array), 30);
    EXPECT_EQ(text(), "ABCDEFGHIJKLMNOPQRSTU");
}

TEST_F(DynamicArray, AppendingOneAtATimeGrowsByTheIncrement)
{
    for (int i = 0; i < 13; ++i)
        append("x");
    EXPECT_EQ(host.take_log(), (log{"alloc 48 = #2", "realloc #2 48 -> 96 = #3", "realloc #3 96 -> 144 = #4", //
                                    "realloc #4 144 -> 192 = #5"}));
}

TEST_F(DynamicArray, AppendingNoneChangesNothing)
{
    DA_append(array, nullptr, 0);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(DA_data(array), nullptr);
}

TEST_F(DynamicArray, AppendingItsOwnElementsDoublesAnArrayThatHasRoom)
{
    append("ABC");
    DA_extend(array, 8);
    DA_append(array, DA_data(array), 3);
    EXPECT_EQ(text(), "ABCABC");
}

TEST_F(DynamicArray, InsertsBeforeEveryElement)
{
    for (int32_t i = 0; i < 4; ++i) {
        start(16, "ABCD");
        insert(i, "xyz");
        EXPECT_EQ(host.take_log(), log{});
        EXPECT_EQ(text(), std::string("ABCD").insert(static_cast<std::size_t>(i), "xyz"));
    }
}

TEST_F(DynamicArray, InsertingBeforeAnElementAsksForTheSum)
{
    const std::tuple<const char *, const char *, int32_t> insertions[] = {
        {"ABC", "x", 4}, {"ABC", "xy", 8}, {"ABCD", "xyzu", 8}, {"ABCD", "xyzuv", 12}};
    for (auto [names, inserted, nalloc] : insertions) {
        start(4, names);
        insert(1, inserted);
        EXPECT_EQ(DA_nalloc(array), nalloc) << names << inserted;
        EXPECT_EQ(text(), std::string(names).insert(1, inserted));
    }
}

TEST_F(DynamicArray, InsertingAtTheEndAsksForOneElementMore)
{
    const std::tuple<const char *, const char *, int32_t> insertions[] = {
        {"", "x", 4}, {"AB", "x", 4}, {"ABC", "x", 8}, {"A", "xyz", 8}, {"ABCD", "xyz", 8}, {"ABCD", "xyzu", 12}};
    for (auto [names, inserted, nalloc] : insertions) {
        start(4, names);
        insert(DA_nitems(array), inserted);
        EXPECT_EQ(DA_nalloc(array), nalloc) << names << inserted;
        EXPECT_EQ(text(), std::string(names) + inserted);
    }
}

TEST_F(DynamicArray, InsertingPastTheEndLeavesAGap)
{
    append("ABCD");
    DA_truncate(array, 2);
    host.take_log();
    insert(4, "xy");
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(whole_storage(), "ABCDxy|..");
    insert(8, "zu");
    EXPECT_EQ(host.take_log(), log{"realloc #2 96 -> 144 = #3"});
    EXPECT_EQ(whole_storage(), "ABCDxy..zu|..");
}

TEST_F(DynamicArray, InsertingNoneBeforeAnElementChangesNothing)
{
    append("AB");
    host.take_log();
    DA_insert(array, 1, nullptr, 0);
    EXPECT_EQ(host.take_log(), log{});
    EXPECT_EQ(text(), "AB");
}

TEST_F(DynamicArray, InsertingNonePastTheEndLengthensTheArray)
{
    append("AB");
    DA_insert(array, 3, nullptr, 0);
    EXPECT_EQ(text(), "AB.");
}

TEST_F(DynamicArray, DeletesAtEveryPlace)
{
    for (int32_t i = 0; i <= 5; ++i) {
        for (int32_t n = 0; n <= 5 - i; ++n) {
            start(4, "ABCDE");
            DA_delete(array, i, n);
            EXPECT_EQ(host.take_log(), log{});
            EXPECT_EQ(text(), std::string("ABCDE").erase(static_cast<std::size_t>(i), static_cast<std::size_t>(n)));
            EXPECT_EQ(DA_nalloc(array), 8);
        }
    }
}

TEST_F(DynamicArray, DeletingLeavesTheOldElementsBehindTheEnd)
{
    append("ABCDE");
    DA_delete(array, 1, 2);
    EXPECT_EQ(whole_storage(), "ADE|DE...");
}

TEST_F(DynamicArray, ElementsOfEverySizeAreCopiedWhole)
{
    for (uint32_t size : every_size) {
        DA_array *made = DA_create(size, 4);
        const std::vector<uint8_t> elements = distinct_elements(size, 9);
        const auto source = [&](std::size_t i) { return elements.data() + i * size; };
        DA_append(made, source(0), 3);
        DA_append(made, source(3), 1);
        DA_insert(made, 1, source(4), 2);
        DA_put_item(made, 7, source(6));
        const int32_t order[] = {0, 4, 5, 1, 2, 3};
        const auto expected = picked(elements, size, 6, [&](int32_t i) { return order[i]; });
        EXPECT_EQ(std::memcmp(DA_data(made), expected.data(), expected.size()), 0) << size;
        EXPECT_EQ(std::memcmp(DA_get_item(made, 7), source(6), size), 0) << size;
        DA_release(made);
    }
}

TEST_F(DynamicArray, ElementsWithoutBytesAreCounted)
{
    DA_array *made = DA_create(0, 4);
    DA_append(made, "", 5);
    DA_reverse(made);
    DA_roll(made, 2);
    EXPECT_EQ(DA_nitems(made), 5);
    EXPECT_EQ(DA_memsize(made), 0u);
    EXPECT_EQ(DA_check(made), 20u);
    DA_release(made);
}

/* ---- comparing and copying ---- */

TEST_F(DynamicArray, EqualArraysHaveTheSameElements)
{
    append("ABC");
    DA_array *same = array_of("ABC", 7), *other = array_of("ABX"), *shorter = array_of("AB"), *empty = array_of("");
    EXPECT_EQ(DA_equal(array, same), 1);
    EXPECT_EQ(DA_equal(array, other), 0);
    EXPECT_EQ(DA_equal(array, shorter), 0);
    EXPECT_EQ(DA_equal(shorter, array), 0);
    EXPECT_EQ(DA_equal(array, empty), 0);
    EXPECT_EQ(DA_equal(array, array), 1);
    DA_truncate(array, 2);
    EXPECT_EQ(DA_equal(array, shorter), 1);
    for (DA_array *made : {same, other, shorter, empty})
        DA_release(made);
}

TEST_F(DynamicArray, EqualLooksAtTheLastByte)
{
    append("ABC");
    DA_array *other = array_of("ABC");
    static_cast<char *>(DA_get_item(other, 2))[sizeof(element) - 1] = 'x';
    EXPECT_EQ(DA_equal(array, other), 0);
    DA_release(other);
}

TEST_F(DynamicArray, EmptyArraysAreEqualWhereTheirElementsHaveTheSameSize)
{
    DA_array *same = DA_create(sizeof(element), 1), *other = DA_create(8, 4);
    EXPECT_EQ(DA_equal(array, same), 1);
    EXPECT_EQ(DA_equal(array, other), 0);
    DA_extend(same, 1);
    EXPECT_EQ(DA_equal(array, same), 1);
    DA_release(same);
    DA_release(other);
}

TEST_F(DynamicArray, ArraysOfOtherElementSizesDifferWhateverTheirBytes)
{
    DA_array *fours = DA_create(4, 4), *sixes = DA_create(6, 4);
    DA_append(fours, "aaaaaaaaaaaa", 2);
    DA_append(sixes, "aaaaaaaaaaaa", 2);
    EXPECT_EQ(DA_equal(fours, sixes), 0);
    DA_release(fours);
    DA_release(sixes);
}

TEST_F(DynamicArray, ACopyIsMadeByAppending)
{
    append("ABCD");
    DA_extend(array, 20);
    host.take_log();
    DA_array *copy = DA_copy(array);
    EXPECT_EQ(host.take_log(), (log{"alloc " + std::to_string(sizeof(DA_array)) + " = #4", "alloc 96 = #5"}));
    EXPECT_EQ(text(copy), "ABCD");
    EXPECT_EQ(copy->nalloc, 8);
    EXPECT_EQ(copy->increment, 4);
    EXPECT_EQ(copy->element_size, sizeof(element));
    DA_release(copy);
}

TEST_F(DynamicArray, ACopyOfAnEmptyArrayHasNoStorage)
{
    DA_extend(array, 5);
    host.take_log();
    DA_array *copy = DA_copy(array);
    EXPECT_EQ(host.take_log(), log{"alloc " + std::to_string(sizeof(DA_array)) + " = #3"});
    EXPECT_EQ(copy->data, nullptr);
    EXPECT_EQ(copy->nalloc, 0);
    DA_release(copy);
}

TEST_F(DynamicArray, CopyingIntoAnArrayFreesItsStorageFirst)
{
    append("ABCD");
    DA_array *target = array_of("UVWXYZ", 3);
    host.take_log();
    DA_copy_into(target, array);
    EXPECT_EQ(host.take_log(), (log{"dealloc #4 108", "alloc 72 = #5"}));
    EXPECT_EQ(text(target), "ABCD");
    EXPECT_EQ(target->increment, 3);
    EXPECT_EQ(target->nalloc, 6);
    EXPECT_EQ(text(), "ABCD");
    DA_reset(array);
    DA_copy_into(target, array);
    EXPECT_EQ(host.take_log(), log{"dealloc #5 72"});
    EXPECT_EQ(target->data, nullptr);
    DA_release(target);
}

TEST_F(DynamicArray, CopyingAnArrayIntoItselfClearsIt)
{
    append("ABC");
    DA_copy_into(array, array);
    EXPECT_EQ(text(), "");
    EXPECT_EQ(array->nalloc, 0);
}

TEST_F(DynamicArray, CopyingElementsOfAnotherSizeRaisesLine289AndLeavesTheTarget)
{
    DA_array *fours = DA_create(4, 4), *eights = DA_create(8, 4);
    DA_append(fours, "aaaabbbb", 2);
    DA_append(eights, "ccccdddd", 1);
    host.take_log();
    expect_raise("darray", 289, 4297, [&] { DA_copy_into(eights, fours); });
    EXPECT_EQ(host.take_log(), log{"raise darray 289 4297"});
    EXPECT_EQ(DA_nitems(eights), 1);
    EXPECT_EQ(std::memcmp(DA_data(eights), "ccccdddd", 8), 0);
    DA_release(fours);
    DA_release(eights);
}

TEST_F(DynamicArray, CopyingElementsOfAnotherSizeGoesOnWhereTheHostReturns)
{
    DA_array *fours = DA_create(4, 4), *eights = DA_create(8, 4);
    DA_append(fours, "aaaabbbb", 2);
    DA_append(eights, "ccccdddd", 1);
    host.take_log();
    host.set_raise_mode(recording_host::raise_mode::returns);
    DA_copy_into(eights, fours);
    EXPECT_EQ(host.take_log(), (log{"raise darray 289 4297", "dealloc #5 32", "alloc 32 = #6"}));
    EXPECT_EQ(DA_nitems(eights), 2);
    EXPECT_EQ(std::memcmp(DA_data(eights), "aaaabbbb\0\0\0\0\0\0\0", 16), 0);
    DA_release(fours);
    DA_release(eights);
}

TEST_F(DynamicArray, CopyingMoreBytesThanTheSourceHasClearsTheTargetWhereTheHostReturns)
{
    DA_array *fours = DA_create(4, 4), *eights = DA_create(8, 4);
    DA_append(fours, "aaaabbbbcccc", 3);
    DA_append(eights, "ccccdddd", 1);
    host.set_raise_mode(recording_host::raise_mode::returns);
    DA_copy_into(eights, fours);
    EXPECT_EQ(DA_nitems(eights), 0);
    EXPECT_EQ(DA_data(eights), nullptr);
    DA_release(fours);
    DA_release(eights);
}

/* ---- iteration ---- */

TEST_F(DynamicArray, IteratorsStartAtTheFirstElementAndEndAtTheLast)
{
    append("ABC");
    DA_iterator iterator = DA_all_items(array);
    EXPECT_EQ(iterator.array, array);
    EXPECT_EQ(iterator.forward, 1);
    EXPECT_EQ(iterator.current, 0);
    EXPECT_EQ(iterator.last, 2);
    EXPECT_EQ(iterator.test, nullptr);
    iterator = DA_tested_items(array, is_upper_case);
    EXPECT_EQ(iterator.array, array);
    EXPECT_EQ(iterator.forward, 1);
    EXPECT_EQ(iterator.current, 0);
    EXPECT_EQ(iterator.last, 2);
    EXPECT_EQ(iterator.test, is_upper_case);
}

TEST_F(DynamicArray, DeliversPointersIntoTheStorageInOrder)
{
    append("ABC");
    host.take_log();
    DA_iterator iterator = DA_all_items(array);
    for (int32_t i = 0; i < 3; ++i) {
        void *item = nullptr;
        EXPECT_EQ(DA_next(&iterator, &item), 1);
        EXPECT_EQ(item, DA_get_item(array, i));
        EXPECT_EQ(iterator.current, i + 1);
    }
    void *item = &item;
    EXPECT_EQ(DA_next(&iterator, &item), 0);
    EXPECT_EQ(item, nullptr);
    EXPECT_EQ(iterator.current, 3);
    EXPECT_EQ(host.take_log(), log{});
}

TEST_F(DynamicArray, AnIterationOfAnEmptyArrayEndsAtOnce)
{
    DA_iterator iterator = DA_tested_items(array, is_upper_case);
    EXPECT_EQ(iterator.last, -1);
    void *item = &item;
    EXPECT_EQ(DA_next(&iterator, &item), 0);
    EXPECT_EQ(item, nullptr);
    EXPECT_EQ(asked, "");
    EXPECT_EQ(iterator.current, 0);
}

TEST_F(DynamicArray, DeliversWhatTheTestAccepts)
{
    append("aBcDe");
    EXPECT_EQ(delivered(DA_tested_items(array, is_upper_case)), "BD");
    EXPECT_EQ(asked, "aBcDe");
    EXPECT_EQ(delivered(DA_tested_items(array, nullptr)), "aBcDe");
}

TEST_F(DynamicArray, DeliversNothingWhereTheTestAcceptsNothing)
{
    append("abc");
    DA_iterator iterator = DA_tested_items(array, is_upper_case);
    void *item = &item;
    EXPECT_EQ(DA_next(&iterator, &item), 0);
    EXPECT_EQ(item, nullptr);
    EXPECT_EQ(asked, "abc");
}

TEST_F(DynamicArray, WalksDownWhereForwardIsZero)
{
    append("aBCdE");
    EXPECT_EQ(delivered({array, 0, 4, 0, nullptr}), "EdCBa");
    EXPECT_EQ(delivered({array, 0, 3, 1, is_upper_case}), "CB");
    EXPECT_EQ(delivered({array, 0, 0, 1, nullptr}), "");
    DA_iterator iterator = {array, 0, 0, 0, nullptr};
    void *item = nullptr;
    EXPECT_EQ(DA_next(&iterator, &item), 1);
    EXPECT_EQ(iterator.current, -1);
}

TEST_F(DynamicArray, AnyForwardButZeroWalksUp)
{
    append("ABC");
    EXPECT_EQ(delivered({array, -1, 0, 2, nullptr}), "ABC");
    EXPECT_EQ(delivered({array, 256, 1, 2, nullptr}), "BC");
}

TEST_F(DynamicArray, PassesOverIndicesThatAreNone)
{
    append("ABC");
    EXPECT_EQ(delivered({array, 1, -3, 7, nullptr}), "ABC");
    EXPECT_EQ(delivered({array, 0, 9, -4, nullptr}), "CBA");
    EXPECT_EQ(text(), "ABC");
}

TEST_F(DynamicArray, StopsAtTheIndexThatWasTheLast)
{
    append("AB");
    DA_iterator iterator = DA_all_items(array);
    append("CDEFG");
    EXPECT_EQ(delivered(iterator), "AB");
}

TEST_F(DynamicArray, PassesOverElementsThatWentBetweenTwoSteps)
{
    append("ABCD");
    DA_iterator iterator = DA_all_items(array);
    void *item = nullptr;
    DA_next(&iterator, &item);
    DA_truncate(array, 2);
    EXPECT_EQ(delivered(iterator), "B");
    EXPECT_EQ(DA_nitems(array), 2);
}

/* The test sees the rejected element once more for each index that is passed over. */
TEST_F(DynamicArray, AsksAgainAboutTheRejectedElementWhereIndicesHaveGone)
{
    append("AbCD");
    DA_iterator iterator = DA_tested_items(array, is_upper_case);
    void *item = nullptr;
    DA_next(&iterator, &item);
    DA_truncate(array, 2);
    EXPECT_EQ(DA_next(&iterator, &item), 0);
    EXPECT_EQ(item, nullptr);
    EXPECT_EQ(asked, "Abbb");
}

TEST_F(DynamicArray, DeliversAnElementThatIsAcceptedWhenAskedAgain)
{
    append("AbCD");
    DA_iterator iterator = DA_tested_items(array, is_upper_case);
    void *item = nullptr;
    DA_next(&iterator, &item);
    DA_truncate(array, 2);
    act = [this](char name) {
        if (name == 'b')
            put(1, 'X');
    };
    EXPECT_EQ(DA_next(&iterator, &item), 1);
    EXPECT_EQ(item, DA_get_item(array, 1));
    EXPECT_EQ(asked, "AbX");
    EXPECT_EQ(iterator.current, 3);
}

/* The length counts as it was when the step began. */
TEST_F(DynamicArray, GetsElementsThatTheTestTookAwayDuringTheStep)
{
    append("abcd");
    DA_iterator iterator = DA_tested_items(array, is_upper_case);
    act = [this](char name) {
        if (name == 'a')
            DA_truncate(array, 1);
    };
    void *item = nullptr;
    EXPECT_EQ(DA_next(&iterator, &item), 0);
    EXPECT_EQ(asked, "abcd");
    EXPECT_EQ(text(), "abcd");
}

/* ---- reordering ---- */

TEST_F(DynamicArray, ReversesElementsOfEverySize)
{
    for (uint32_t size : every_size) {
        for (int32_t count = 0; count < 40; ++count) {
            DA_array *made = DA_create(size, 4);
            const std::vector<uint8_t> elements = distinct_elements(size, count);
            DA_append(made, elements.data(), count);
            DA_reverse(made);
            const auto expected = picked(elements, size, count, [count](int32_t i) { return count - 1 - i; });
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), static_cast<uint8_t *>(DA_data(made))))
                << count << " of " << size;
            DA_release(made);
        }
    }
}

TEST_F(DynamicArray, ReversingTakesABufferOfOneElementEvenForNone)
{
    for (const char *names : {"", "A", "ABC"}) {
        start(4, names);
        const std::string buffer = *names ? "#3" : "#2";
        DA_reverse(array);
        EXPECT_EQ(host.take_log(), (log{"alloc 12 = " + buffer, "dealloc " + buffer + " 12"}));
    }
    EXPECT_EQ(whole_storage(), "CBA|.");
}

TEST_F(DynamicArray, RollsElementsOfEverySizeByEveryAmount)
{
    for (uint32_t size : every_size) {
        for (int32_t count = 1; count < 8; ++count) {
            for (int32_t n = -2 * count - 1; n <= 2 * count + 1; ++n) {
                DA_array *made = DA_create(size, 4);
                const std::vector<uint8_t> elements = distinct_elements(size, count);
                DA_append(made, elements.data(), count);
                DA_roll(made, n);
                const auto expected =
                    picked(elements, size, count, [=](int32_t i) { return ((i + n) % count + count) % count; });
                EXPECT_EQ(std::memcmp(DA_data(made), expected.data(), expected.size()), 0)
                    << count << " of " << size << " by " << n;
                DA_release(made);
            }
        }
    }
}

TEST_F(DynamicArray, RollingBuffersTheSmallerPiece)
{
    for (auto [names, n, buffered] : {std::tuple{"ABCDE", 1, 1},
                                      {"ABCDE", 2, 2},
                                      {"ABCDE", 3, 2},
                                      {"ABCDE", 4, 1},
                                      {"ABCDE", -1, 1},
                                      {"ABCDE", 11, 1},
                                      {"ABCD", 2, 2},
                                      {"AB", 1, 1},
                                      {"ABC", -8, 1}}) {
        start(4, names);
        DA_roll(array, n);
        const std::string bytes = bytes_of_elements(buffered);
        EXPECT_EQ(host.take_log(), (log{"alloc " + bytes + " = #3", "dealloc #3 " + bytes})) << names << n;
    }
}

TEST_F(DynamicArray, RollingLessThanTwoOrByAMultipleOfTheLengthTakesNoBuffer)
{
    for (const char *names : {"", "A"}) {
        start(4, names);
        DA_roll(array, 1);
        EXPECT_EQ(host.take_log(), log{});
        EXPECT_EQ(text(), names);
    }
    start(4, "ABCDE");
    for (int32_t n : {0, 5, -5, 10, 2000000000}) {
        DA_roll(array, n);
        EXPECT_EQ(host.take_log(), log{});
        EXPECT_EQ(text(), "ABCDE");
    }
}

TEST_F(DynamicArray, RollsByTheLargestAmounts)
{
    append("ABCDE");
    DA_roll(array, INT32_MAX);
    EXPECT_EQ(text(), "CDEAB");
    DA_roll(array, -2147483642);
    EXPECT_EQ(text(), "ABCDE");
}

/* ---- where there is no memory ---- */

TEST_F(DynamicArray, CreatingWithoutMemoryRaisesLine33)
{
    fail_and_throw(33, [] { return DA_create(4, 4); });
    fail_and_return([] { EXPECT_EQ(DA_create(4, 4), nullptr); });
    EXPECT_EQ(host.take_log(), (log{"alloc " + std::to_string(sizeof(DA_array)) + " = null", "raise darray 33 4197"}));
}

TEST_F(DynamicArray, CopyingWithoutMemoryForTheHeadRaisesLine271)
{
    append("AB");
    fail_and_throw(271, [&] { return DA_copy(array); });
    fail_and_return([&] { EXPECT_EQ(DA_copy(array), nullptr); });
    EXPECT_EQ(host.take_log(), (log{"alloc " + std::to_string(sizeof(DA_array)) + " = null", "raise darray 271 4197"}));
}

TEST_F(DynamicArray, CopyingWithoutMemoryForTheElementsReturnsAnEmptyArrayWhereTheHostReturns)
{
    append("AB");
    host.take_log();
    host.set_raise_mode(recording_host::raise_mode::returns);
    host.fail_allocation(2);
    DA_array *copy = DA_copy(array);
    EXPECT_EQ(host.take_log().back(), "raise darray 111 4197");
    EXPECT_EQ(DA_nitems(copy), 0);
    EXPECT_EQ(text(copy), "");
    DA_release(copy);
}

/* Every function that grows an array. */
struct grower {
    const char *name;
    void (*grow)(DA_array *array);
    int32_t length_after_return; /* of an array of 4 elements with increment 4 */
};

const element x = named('x');
const std::vector<element> five = elements_named("vwxyz");

const grower growers[] = {
    {"extend", [](DA_array *array) { DA_extend(array, 8); }, 4},
    {"setsize", [](DA_array *array) { DA_setsize(array, 9); }, 9},
    {"string", [](DA_array *array) { EXPECT_EQ(DA_string(array), nullptr); }, 4},
    {"get", [](DA_array *array) { EXPECT_EQ(DA_get_item(array, 8), nullptr); }, 9},
    {"put", [](DA_array *array) { DA_put_item(array, 8, x.data()); }, 4},
    {"put null", [](DA_array *array) { DA_put_item(array, 8, nullptr); }, 4},
    {"append", [](DA_array *array) { DA_append(array, five.data(), 5); }, 4},
    {"insert", [](DA_array *array) { DA_insert(array, 3, five.data(), 5); }, 4},
    {"insert at the end", [](DA_array *array) { DA_insert(array, 4, five.data(), 5); }, 9},
    {"insert past the end", [](DA_array *array) { DA_insert(array, 7, five.data(), 5); }, 12},
};

/* An array of four elements that is full. */
class GrowingDynamicArray : public DynamicArray {
protected:
    void fill()
    {
        start(4);
        append("ABC");
        append("D");
        storage = array->data;
    }

    /* The host's block is still there, and only the host knows. */
    void expect_lost_storage(int32_t length)
    {
        EXPECT_EQ(array->data, nullptr);
        EXPECT_EQ(array->nalloc, 4);
        EXPECT_EQ(array->nitems, length);
        EXPECT_TRUE(host.is_live(storage));
        EXPECT_EQ(names_of(storage, 4), "ABCD");
        MM_dealloc_item(storage, 4 * sizeof(element));
    }

    void *storage = nullptr;
};

TEST_F(GrowingDynamicArray, ReallocatingWithoutMemoryRaisesLine111AndLosesTheStorage)
{
    for (const grower &tested : growers) {
        SCOPED_TRACE(tested.name);
        fill();
        fail_and_throw(111, [&] { tested.grow(array); });
        EXPECT_EQ(host.take_log().size(), 2u);
        expect_lost_storage(4);
    }
}

TEST_F(GrowingDynamicArray, ReallocatingWithoutMemoryGoesOnAsFarAsItCanWhereTheHostReturns)
{
    for (const grower &tested : growers) {
        SCOPED_TRACE(tested.name);
        fill();
        fail_and_return([&] { tested.grow(array); });
        EXPECT_EQ(host.take_log().back(), "raise darray 111 4197");
        expect_lost_storage(tested.length_after_return);
    }
}

TEST_F(GrowingDynamicArray, AllocatingWithoutMemoryRaisesLine111AndLeavesTheArrayEmpty)
{
    for (const grower &tested : growers) {
        SCOPED_TRACE(tested.name);
        start(4);
        fail_and_throw(111, [&] { tested.grow(array); });
        EXPECT_EQ(text(), "");
        EXPECT_EQ(DA_data(array), nullptr);
        EXPECT_EQ(DA_nalloc(array), 0);
    }
}

TEST_F(GrowingDynamicArray, AnArrayThatLostItsStorageIsClearedAndGrowsAgain)
{
    fill();
    fail_and_return([&] { DA_extend(array, 8); });
    expect_lost_storage(4);
    EXPECT_EQ(DA_memsize(array), 48u);
    EXPECT_EQ(DA_check(array), 20u);
    host.take_log();
    DA_clear(array);
    EXPECT_EQ(host.take_log(), log{});
    append("xy");
    EXPECT_EQ(text(), "xy");
}

} // namespace
