/* SPDX-License-Identifier: MIT */
#include <mova/arrays/dynamic_array.h>

#include <tests/support/fault_sweep.h>
#include <tests/support/array_storage.h>

#include <string>

namespace {

using namespace mova::test;

int accepts_two(void *element)
{
    callback_called();
    return *static_cast<int32_t *>(element) == 2;
}

/* A full array of six numbers, an array of one, one of larger elements, one without storage, and what the call makes. */
struct arrays {
    DA_array *six = array_of(6, 4), *one = array_of(1, 4), *wide = array_of(6, 8), *bare = DA_create(4, 3),
             *made = nullptr;
    DA_iterator walk = DA_tested_items(six, accepts_two);
    void *delivered = nullptr;

    std::string state() const
    {
        return text_of(six) + text_of(one) + text_of(wide) + text_of(bare) + (made ? "made" : "");
    }

    int broken_invariant() const
    {
        for (const DA_array *array : {six, one, wide, bare, made}) {
            if (const int broken = array ? mova::test::broken_invariant(*array) : 0)
                return broken;
        }
        return 0;
    }

    void go_on()
    {
        const int64_t nine = 9;
        for (DA_array *array : {six, one, wide, bare}) {
            DA_append(array, &nine, 1);
            DA_insert(array, 0, &nine, 1);
            DA_roll(array, 1);
            DA_delete(array, 0, 1);
        }
        DA_copy_into(one, six);
    }

    void release()
    {
        for (DA_array *array : {six, one, wide, bare, made})
            DA_release(array);
    }

    static DA_array *array_of(int32_t count, uint32_t element_size)
    {
        DA_array *array = DA_create(element_size, 3);
        DA_extend(array, count - 1);
        for (int32_t i = 0; i < count; ++i)
            *static_cast<int32_t *>(DA_get_item(array, i)) = i;
        return array;
    }

    static const void *at(const DA_array *array, int32_t i)
    {
        return static_cast<const char *>(array->data) + static_cast<std::size_t>(i) * array->element_size;
    }

    static std::string text_of(const DA_array *array)
    {
        std::string text = std::to_string(array->nitems) + "/" + std::to_string(array->nalloc) + ":";
        for (int32_t i = 0; i < array->nitems; ++i)
            text += " " + std::to_string(*static_cast<const int32_t *>(at(array, i)));
        return text + "\n";
    }
};

const int32_t numbers[] = {7, 8};
constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable}, loses_the_head{grade::unchanged, true};

/* After a null answer the array has lost its storage, whatever becomes of the raise. */
const answers loses_the_storage{{grade::releasable, true}, {fault_source::allocation}, true};

/* It has none yet. */
const answers counts_what_is_not_there{{grade::releasable}, {fault_source::allocation}};

const fault_row<arrays> rows[] = {
    {"DA_create",
     [](arrays &a) { a.made = DA_create(4, 3); },
     unchanged,
     unchanged,
     {unchanged, {fault_source::allocation}}},
    {"DA_copy",
     [](arrays &a) { a.made = DA_copy(a.six); },
     unchanged,
     loses_the_head,
     {usable, {fault_source::allocation}}},
    {"DA_copy_into",
     [](arrays &a) { DA_copy_into(a.one, a.six); },
     usable,
     usable,
     {usable, {fault_source::allocation}}},
    {"DA_copy_into, of another element size",
     [](arrays &a) { DA_copy_into(a.one, a.wide); },
     unchanged,
     unchanged,
     {usable, {fault_source::raise}}},
    {"DA_extend", [](arrays &a) { DA_extend(a.six, 6); }, unchanged, unchanged, loses_the_storage},
    {"DA_setsize", [](arrays &a) { DA_setsize(a.six, 6); }, unchanged, unchanged, loses_the_storage},
    {"DA_setsize, without storage", [](arrays &a) { DA_setsize(a.bare, 6); }, unchanged, unchanged,
     counts_what_is_not_there},
    {"DA_get_item, without storage", [](arrays &a) { DA_get_item(a.bare, 6); }, unchanged, unchanged,
     counts_what_is_not_there},
    {"DA_append, without storage",
     [](arrays &a) { DA_append(a.bare, numbers, 2); },
     unchanged,
     unchanged,
     {unchanged, {fault_source::allocation}}},
    {"DA_string", [](arrays &a) { DA_string(a.six); }, unchanged, unchanged, loses_the_storage},
    {"DA_get_item", [](arrays &a) { DA_get_item(a.six, 6); }, unchanged, unchanged, loses_the_storage},
    {"DA_put_item", [](arrays &a) { DA_put_item(a.six, 6, numbers); }, unchanged, unchanged, loses_the_storage},
    {"DA_append", [](arrays &a) { DA_append(a.six, numbers, 2); }, unchanged, unchanged, loses_the_storage},
    {"DA_insert", [](arrays &a) { DA_insert(a.six, 1, numbers, 2); }, unchanged, unchanged, loses_the_storage},
    {"DA_insert, past the end", [](arrays &a) { DA_insert(a.six, 8, numbers, 2); }, unchanged, unchanged,
     loses_the_storage},
    {"DA_next", [](arrays &a) { DA_next(&a.walk, &a.delivered); }, unchanged, unchanged},
    {"DA_reverse", [](arrays &a) { DA_reverse(a.six); }, unchanged, unchanged},
    {"DA_roll", [](arrays &a) { DA_roll(a.six, 2); }, unchanged, unchanged},
};

TEST(DynamicArrayFaults, WhateverFailsTheArraysAreLeftAsTheHeaderSays)
{
    sweep_faults("dynamic array", rows, 170);
}

TEST(DynamicArrayFaults, AnArrayThatCouldNotBeCopiedIntoIsCleared)
{
    arrays a;
    fault_plan::get().arm(fault_source::allocation, fault_way::throws, 1);
    EXPECT_THROW(DA_copy_into(a.one, a.six), fault);
    EXPECT_EQ(a.text_of(a.one), "0/0:\n");
    a.release();
}

TEST(DynamicArrayFaults, AnIteratorHasPassedTheElementThatItsTestThrewFor)
{
    arrays a;
    fault_plan::get().arm(fault_source::callback, fault_way::throws, 3);
    EXPECT_THROW(DA_next(&a.walk, &a.delivered), fault);
    EXPECT_EQ(a.walk.current, 3);
    EXPECT_EQ(a.delivered, DA_get_item(a.six, 2));
    a.release();
}

} // namespace
