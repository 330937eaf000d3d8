/* SPDX-License-Identifier: MIT */
/* What is compiled into the caller. The linker sends the calls of this file to counters here, on their way to the library. */
#include <mova/cxx.h>

#include <gtest/gtest.h>

namespace {

int library_calls = 0;

/* How many of the functions below `work` calls. */
template <class Work>
int calls_in(Work work)
{
    library_calls = 0;
    work();
    return library_calls;
}

} // namespace

extern "C" {

/* The linker's names for a function that it replaces, and for the one that replaces it. */
#define MOVA_COUNT(result, name, parameters, ...)                                                                      \
    result __real_##name parameters;                                                                                   \
    result __wrap_##name parameters;                                                                                   \
    result __wrap_##name parameters                                                                                    \
    {                                                                                                                  \
        ++library_calls;                                                                                               \
        return __real_##name(__VA_ARGS__);                                                                             \
    }

MOVA_COUNT(GL_node *, GL_append_after_last, (GL_list * list, void *item), list, item)
MOVA_COUNT(EL_node *, EL_append_after_last, (EL_list * list, const void *element), list, element)
MOVA_COUNT(void, SL_append_after_last, (SL_list * list, void *item), list, item)
MOVA_COUNT(EL_node *, ES_push, (ES_stack * stack, const void *element), stack, element)
MOVA_COUNT(int, ES_pop, (ES_stack * stack, void *buffer), stack, buffer)
MOVA_COUNT(int32_t, GB_append_after_last, (GB_block * block, const void *element), block, element)
MOVA_COUNT(void, DA_append, (DA_array * array, const void *elements, int32_t n), array, elements, n)
MOVA_COUNT(void *, DA_get_item, (DA_array * array, int32_t i), array, i)
MOVA_COUNT(void *, io_lut_look_ptr, (const DA_array *table, int32_t id), table, id)
MOVA_COUNT(size_t, mova_hash_find_slot, (const mova_word *keys, size_t mask, size_t slot, mova_word key), keys, mask,
           slot, key)

#undef MOVA_COUNT
}

namespace {

struct job {
    int number;
    mova::links waiting;
};

TEST(CompiledIn, ListsAndStacksAppendPushAndPopWithoutTheLibrary)
{
    int number = 1;
    mova::pointer_list<int> pointers;
    mova::element_list<int> elements;
    mova::element_ring<int> ring;
    mova::element_stack<int> stack;
    job each = {1, {}};
    mova::intrusive_list<job, &job::waiting> jobs;
    EXPECT_EQ(calls_in([&] {
                  pointers.append(&number);
                  elements.append(number);
                  ring.append(number);
                  jobs.append(each);
                  stack.push(number);
                  EXPECT_EQ(stack.pop(), 1);
                  EXPECT_EQ(stack.pop(), std::nullopt);
              }),
              0);
}

TEST(CompiledIn, ArraysAppendAndReadWithoutTheLibraryUnlessTheyAreFull)
{
    mova::dynamic_array<int> dynamic(4);
    mova::block_array<int> block(4);
    dynamic.append(0); /* the first makes it grow */
    block.append(0);
    const auto fill = [&] {
        for (int i = 1; i < 4; ++i) {
            dynamic.append(i);
            block.append(i);
            EXPECT_EQ(dynamic[static_cast<std::size_t>(i)] + block[static_cast<std::size_t>(i)], 2 * i);
        }
    };
    EXPECT_EQ(calls_in(fill), 0);
    EXPECT_EQ(calls_in([&] { dynamic.append(4), block.append(4); }), 2);
    mova::id_table<int> ids;
    int item = 0;
    const std::int32_t id = ids.add(&item);
    const auto look = [&] {
        EXPECT_EQ(ids.find(id), &item);
        EXPECT_EQ(ids.find(id + 1), nullptr);
    };
    EXPECT_EQ(calls_in(look), 0);
}

/* Keys 1 to 7 are at home in slots of their own; 9 and 1 share one, where there are eight. */
TEST(CompiledIn, TheHashTablesLookAtTheHomeSlotIsWithoutTheLibrary)
{
    mova::hash_table<int, int> table;
    for (int key = 1; key < 4; ++key)
        table.set(key, key * 10);
    ASSERT_EQ(table.get()->capacity, 8);
    for (int key = 1; key < 8; ++key) {
        EXPECT_EQ(calls_in([&] {
                      EXPECT_EQ(table.contains(key), key < 4);
                      EXPECT_EQ(table.get_or(key, -1), key < 4 ? key * 10 : -1);
                      EXPECT_EQ(table.find(key).has_value(), key < 4);
                  }),
                  0);
    }
    EXPECT_EQ(calls_in([&] { EXPECT_EQ(table.get_or(9, -1), -1); }), 1);
}

} // namespace
