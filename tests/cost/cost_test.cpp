/* SPDX-License-Identifier: MIT */
/* What a header calls constant takes as many instructions among 100000 items as among 100, and what it calls logarithmic a
   little more for ten times the items. The instructions are counted: a child process does the call once to have everything
   in place, and is then stepped through it. */
/* The functions, not their bodies in the headers. */
#define MOVA_NO_INLINE

#include <mova/container.h>
#include <mova/host/memory_blocks.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <vector>

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr std::array<int32_t, 4> sizes = {100, 1000, 10000, 100000};

/* Counts what lies between the child's second stop and its third. */
uint64_t steps_between_stops(pid_t child)
{
    int status = 0;
    const auto goes_on_to_a_stop = [&](int request) {
        return ptrace(static_cast<__ptrace_request>(request), child, nullptr, nullptr) == 0 &&
               waitpid(child, &status, 0) == child && WIFSTOPPED(status);
    };
    uint64_t steps = 0;
    if (waitpid(child, &status, 0) == child && WIFSTOPPED(status)) {
        while (goes_on_to_a_stop(PTRACE_SINGLESTEP) && WSTOPSIG(status) == SIGTRAP)
            ++steps;
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return steps;
}

/* The instructions of the call, with those of raising a signal; 0 where processes may not be traced. */
uint64_t instructions_of(void (*call)(void *), void *container)
{
    const pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0)
            _exit(1);
        for (int i = 0; i < 3; ++i)
            call(container);
        raise(SIGSTOP);
        call(container);
        raise(SIGSTOP);
        _exit(0);
    }
    return steps_between_stops(child);
}

/* ---- the containers, of so many items each ---- */

void *word(intptr_t number)
{
    return reinterpret_cast<void *>(number);
}

void *generic_list(int32_t count)
{
    GL_list *list = GL_create();
    for (int32_t i = 0; i < count; ++i)
        GL_append_after_last(list, word(i));
    return list;
}
GL_list *as_generic_list(void *list)
{
    return static_cast<GL_list *>(list);
}

void *element_list(int32_t count)
{
    EL_list *list = EL_create(sizeof(double));
    for (int32_t i = 0; i < count; ++i)
        EL_append_after_last(list, std::array<double, 1>{double(i)}.data());
    return list;
}
void *element_ring(int32_t count)
{
    void *list = element_list(count);
    EL_set_closed(static_cast<EL_list *>(list));
    return list;
}
EL_list *as_element_list(void *list)
{
    return static_cast<EL_list *>(list);
}

struct linked {
    linked *prev, *next;
};
linked loose;

void *simple_list(int32_t count)
{
    static std::vector<linked> items;
    items.assign(static_cast<std::size_t>(count), {});
    SL_list *list = SL_create();
    for (linked &each : items)
        SL_append_after_last(list, &each);
    return list;
}
void *simple_ring(int32_t count)
{
    void *list = simple_list(count);
    SL_set_closed(static_cast<SL_list *>(list));
    return list;
}
SL_list *as_simple_list(void *list)
{
    return static_cast<SL_list *>(list);
}

void *block_array(int32_t count)
{
    static GB_block block;
    GB_init(&block, sizeof(double), count + 1);
    block.count = count;
    return &block;
}
GB_block *as_block(void *block)
{
    return static_cast<GB_block *>(block);
}
const double number = 1;

void *dynamic_array(int32_t count)
{
    DA_array *array = DA_create(sizeof(double), 1000);
    DA_setsize(array, count);
    return array;
}
DA_array *as_array(void *array)
{
    return static_cast<DA_array *>(array);
}

void *id_table(int32_t count)
{
    DA_array *table = io_lut_create();
    io_lut_allow_reuse(table);
    for (int32_t i = 0; i < count; ++i)
        io_lut_add(table, table);
    return table;
}

void *sorted_numbers(int32_t count)
{
    DA_array *array = DA_create(sizeof(int32_t), 1000);
    DA_setsize(array, count);
    for (int32_t i = 0; i < count; ++i)
        static_cast<int32_t *>(DA_data(array))[i] = 2 * i;
    return array;
}

/* Filled to a half, whatever the size. */
void *hash_table(int32_t count)
{
    HSH_table *table = HSH_create(static_cast<uint32_t>(2 * count), 0);
    for (int32_t key = 1; key <= count; ++key)
        HSH_set_value(table, key, key);
    return table;
}
HSH_table *as_table(void *table)
{
    return static_cast<HSH_table *>(table);
}

void *pointer_lookup(int32_t count)
{
    mova_lookup *lookup = mova_lu_create();
    for (int32_t key = 1; key <= count; ++key)
        mova_lu_add(lookup, key, key);
    return lookup;
}
mova_lookup *as_lookup(void *lookup)
{
    return static_cast<mova_lookup *>(lookup);
}

int32_t compare_words(void *a, void *b)
{
    return (a > b) - (a < b);
}

/* Its items are the odd numbers. */
void *balanced_tree(int32_t count)
{
    GT_tree *made = GT_create_with_dupl_allowed(compare_words);
    for (int32_t i = 0; i < count; ++i)
        GT_insert_item(made, word(2 * i + 1));
    return made;
}
GT_tree *as_tree(void *made)
{
    return static_cast<GT_tree *>(made);
}

mb_pool *pool;

/* Half of the bodies are in memory. */
void *swap_cache(int32_t count)
{
    pool = mb_create_pool(std::size_t{64} * sizes.back());
    cc_cache *cache = cc_create(pool);
    const auto insert = [cache] {
        return cc_insert(
            cache, &loose, 0, [](void *) { return uint32_t{16}; }, [](void *, void *, uint32_t) {},
            [](void *, void *) {}, [](void *) {});
    };
    for (int32_t i = 0; i < count; ++i) {
        cc_entry *entry = insert();
        if (i % 2 == 0)
            cc_get(cache, entry);
    }
    return cache;
}
cc_cache *as_cache(void *cache)
{
    return static_cast<cc_cache *>(cache);
}

void *colour_table(int32_t count)
{
    static bool is_made = false;
    if (!is_made)
        RGBLUT_init(sizes.back(), nullptr, 0);
    is_made = true;
    static int32_t most;
    most = count;
    return &most;
}

/* ---- the calls: each leaves the container as it was ---- */

enum class growth { constant, logarithmic };

struct measured_call {
    const char *name;
    void *(*create)(int32_t count);
    void (*call)(void *container);
    growth promised = growth::constant;
};

const measured_call calls[] = {
    {"GL_append_after_last, GL_remove_item", generic_list,
     [](void *c) { GL_remove_item(as_generic_list(c), GL_append_after_last(as_generic_list(c), c)); }},
    {"GL_insert_before_first, GL_insert_after, GL_insert_before", generic_list,
     [](void *c) {
         GL_list *list = as_generic_list(c);
         GL_node *node = GL_insert_before_first(list, c);
         GL_remove_item(list, GL_insert_after(list, node, c));
         GL_remove_item(list, GL_insert_before(list, node, c));
         GL_remove_item(list, node);
     }},
    {"GL_move_before_first", generic_list,
     [](void *c) { GL_move_before_first(as_generic_list(c), as_generic_list(c)->last); }},
    {"GL_swap_item, GL_count_items", generic_list,
     [](void *c) {
         void *item = c;
         GL_swap_item(as_generic_list(c)->last, &item);
         GL_swap_item(as_generic_list(c)->last, &item);
         GL_count_items(as_generic_list(c));
     }},
    {"GL_append_list", generic_list,
     [](void *c) {
         GL_list *target = GL_create(), *source = GL_create();
         GL_append_after_last(target, c);
         *source = *as_generic_list(c);
         GL_append_list(target, &source);
         target->first->next->prev = nullptr;
         *target = {target->first, target->first, 1};
         target->first->next = nullptr;
         GL_release(&target);
     }},
    {"GL_all_items, GL_next_item, GL_next_position", generic_list,
     [](void *c) {
         GL_iterator iterator = GL_all_items(as_generic_list(c));
         void *item;
         GL_node *position;
         GL_next_item(&iterator, &item);
         iterator = GL_all_items_reversed(as_generic_list(c));
         GL_next_position(&iterator, &position);
     }},
    {"EL_append_after_last, EL_insert_before_first, EL_remove_item", element_list,
     [](void *c) {
         EL_list *list = as_element_list(c);
         EL_remove_item(list, EL_append_after_last(list, &number));
         EL_remove_item(list, EL_insert_before_first(list, &number));
     }},
    {"EL_insert_before, EL_insert_after", element_ring,
     [](void *c) {
         EL_list *list = as_element_list(c);
         EL_remove_item(list, EL_insert_before(list, list->last, &number));
         EL_remove_item(list, EL_insert_after(list, list->first, &number));
     }},
    {"EL_set_closed, EL_reset_closed, EL_replace_item, EL_count_items", element_list,
     [](void *c) {
         EL_list *list = as_element_list(c);
         EL_set_closed(list);
         EL_reset_closed(list);
         EL_replace_item(list->last, &number, sizeof number);
         EL_count_items(list);
     }},
    {"EL_roll", element_ring, [](void *c) { EL_roll(as_element_list(c), as_element_list(c)->last); }},
    {"EL_make_open_at_position", element_ring,
     [](void *c) {
         EL_list *list = as_element_list(c);
         EL_make_open_at_position(list, list->last);
         EL_remove_item(list, list->last);
         EL_set_closed(list);
     }},
    {"EL_all_items, EL_next_item, EL_next_item_copy", element_list,
     [](void *c) {
         EL_iterator iterator = EL_all_items(as_element_list(c));
         void *element;
         double copied;
         EL_next_item(&iterator, &element);
         EL_next_item_copy(&iterator, &copied);
     }},
    {"ES_push, ES_inspect_top, ES_pop, ES_is_empty", element_list,
     [](void *c) {
         double popped;
         ES_push(as_element_list(c), &number);
         ES_inspect_top(as_element_list(c), &popped);
         ES_pop(as_element_list(c), &popped);
         ES_is_empty(as_element_list(c));
     }},
    {"DBLL_add_double, DBLL_insert_after, DBLL_remove_double", element_list,
     [](void *c) {
         EL_list *list = as_element_list(c);
         EL_node *added = DBLL_add_double(list, 1);
         DBLL_remove_double(list, DBLL_insert_after(list, added, 2));
         DBLL_remove_double(list, added);
     }},
    {"DBLL_begin_value, DBLL_set_end_value, DBLL_size, DBLL_check", element_list,
     [](void *c) {
         EL_list *list = as_element_list(c);
         DBLL_set_end_value(list, DBLL_begin_value(list));
         DBLL_set_begin_value(list, DBLL_end_value(list));
         DBLL_size(list);
         DBLL_check(list);
     }},
    {"SL_append_after_last, SL_insert_before, SL_remove_item", simple_list,
     [](void *c) {
         SL_list *list = as_simple_list(c);
         SL_append_after_last(list, &loose);
         SL_remove_item(list, &loose);
         SL_insert_before(list, list->last, &loose);
         SL_remove_item(list, &loose);
     }},
    {"SL_set_closed, SL_reset_closed, SL_count_items", simple_list,
     [](void *c) {
         SL_set_closed(as_simple_list(c));
         SL_reset_closed(as_simple_list(c));
         SL_count_items(as_simple_list(c));
     }},
    {"SL_roll", simple_ring, [](void *c) { SL_roll(as_simple_list(c), as_simple_list(c)->last); }},
    {"SL_all_items, SL_next_item", simple_list,
     [](void *c) {
         SL_iterator iterator = SL_all_items(as_simple_list(c));
         void *item;
         SL_next_item(&iterator, &item);
     }},
    {"GB_append_after_last, GB_replace_item, GB_remove_last_item", block_array,
     [](void *c) {
         GB_append_after_last(as_block(c), &number);
         GB_replace_item(as_block(c), as_block(c)->count - 1, &number);
         GB_remove_last_item(as_block(c));
     }},
    {"GB_advance around a ring, GB_count_items, GB_set_closed", block_array,
     [](void *c) {
         GB_set_closed(as_block(c));
         GB_advance(as_block(c), 0, -1);
         GB_advance(as_block(c), as_block(c)->count - 1, 1 << 30);
         GB_count_items(as_block(c));
         GB_reset_closed(as_block(c));
     }},
    {"DA_append, DA_put_item, DA_get_item, DA_truncate", dynamic_array,
     [](void *c) {
         const int32_t count = DA_nitems(as_array(c));
         DA_append(as_array(c), &number, 1);
         DA_put_item(as_array(c), count, &number);
         DA_get_item(as_array(c), count);
         DA_truncate(as_array(c), count);
     }},
    {"DA_insert and DA_delete at the end, DA_memsize, DA_check", dynamic_array,
     [](void *c) {
         DA_insert(as_array(c), DA_nitems(as_array(c)), &number, 1);
         DA_delete(as_array(c), DA_nitems(as_array(c)) - 1, 1);
         DA_memsize(as_array(c));
         DA_check(as_array(c));
     }},
    {"DA_all_items, DA_next", dynamic_array,
     [](void *c) {
         DA_iterator iterator = DA_all_items(as_array(c));
         void *element;
         DA_next(&iterator, &element);
     }},
    {"io_lut_add, io_lut_set, io_lut_get_ptr, io_lut_look_ptr", id_table,
     [](void *c) {
         const int32_t id = io_lut_add(as_array(c), c);
         io_lut_set(as_array(c), nullptr, id);
         io_lut_get_ptr(as_array(c), id - 1);
         io_lut_look_ptr(as_array(c), id);
         DA_truncate(as_array(c), id);
     }},
    {"SA_check_number", sorted_numbers, [](void *c) { SA_check_number(as_array(c), 3); }, growth::logarithmic},
    {"HSH_get_value, HSH_contains_key, HSH_set_value of a stored key", hash_table,
     [](void *c) {
         HSH_get_value(as_table(c), 7);
         HSH_contains_key(as_table(c), -3);
         HSH_set_value(as_table(c), 50, 1);
     }},
    {"HSH_set_value, HSH_remove_entry", hash_table,
     [](void *c) {
         HSH_set_value(as_table(c), -3, 1);
         HSH_remove_entry(as_table(c), -3);
     }},
    {"HSH_all_entries, HSH_next", hash_table,
     [](void *c) {
         HSH_iterator iterator = HSH_all_entries(as_table(c));
         mova_word key, value;
         HSH_next(&iterator, &key, &value);
     }},
    {"mova_lu_get", pointer_lookup,
     [](void *c) {
         mova_lu_get(as_lookup(c), as_lookup(c)->front_key);
         mova_lu_get(as_lookup(c), 7);
     }},
    {"GT_insert_item, GT_remove_item", balanced_tree,
     [](void *c) { GT_remove_item(as_tree(c), GT_insert_item(as_tree(c), word(50))); }, growth::logarithmic},
    {"GT_search_item, GT_find_item", balanced_tree,
     [](void *c) {
         GT_tree_item *position;
         GT_search_item(as_tree(c), word(51), &position);
         GT_find_item(as_tree(c), word(53), &position);
     },
     growth::logarithmic},
    {"GT_remove_first_item", balanced_tree,
     [](void *c) {
         GT_insert_item(as_tree(c), word(0));
         GT_remove_first_item(as_tree(c));
     },
     growth::logarithmic},
    {"GT_all_items, GT_next_item, GT_current_item, GT_from_next, GT_end_iterator", balanced_tree,
     [](void *c) {
         GT_tree_iter *iterator = GT_all_items(as_tree(c));
         void *item;
         GT_next_item(iterator, &item);
         GT_current_item(iterator, &item);
         GT_end_iterator(GT_from_next(iterator));
         GT_end_iterator(iterator);
     }},
    {"cc_get in memory, cc_lazy_swap_out", swap_cache,
     [](void *c) {
         cc_get(as_cache(c), as_cache(c)->first->next);
         cc_lazy_swap_out(as_cache(c), as_cache(c)->last);
     }},
    {"cc_get that fetches, cc_swap_out", swap_cache,
     [](void *c) {
         cc_entry *entry = as_cache(c)->first;
         cc_get(as_cache(c), entry);
         cc_swap_out(as_cache(c), entry);
     }},
    {"cc_insert, cc_remove", swap_cache,
     [](void *c) {
         cc_entry *entry = cc_insert(as_cache(c), c, 0, nullptr, nullptr, nullptr, nullptr);
         cc_remove(as_cache(c), &entry);
     }},
    {"mb_get", swap_cache, [](void *c) { mb_get(pool, as_cache(c)->first->next->handle); }},
    {"CLUT_set, CLUT_get, CLUT_copy", colour_table,
     [](void *most) {
         int16_t red, green, blue;
         const int32_t index = *static_cast<int32_t *>(most) - 1;
         CLUT_set(index, 1, 2, 3);
         CLUT_get(index, &red, &green, &blue);
         CLUT_copy(index, 1);
     }},
};

/* Whether `large` instructions among `count` items are no more than those among the fewest, `small`, allow. */
bool keeps_its_promise(growth promised, uint64_t small, uint64_t large, int32_t count)
{
    const double levels = promised == growth::constant ? 1 : std::log2(count) / std::log2(sizes.front());
    return static_cast<double>(large) <= static_cast<double>(small) * levels * 1.1 + 16;
}

TEST(Cost, WhatAHeaderCallsConstantOrLogarithmicDoesNotGrowFaster)
{
    const uint64_t overhead = instructions_of([](void *) {}, nullptr);
    if (overhead == 0)
        GTEST_SKIP() << "processes may not be traced here";
    for (const measured_call &each : calls) {
        std::array<uint64_t, sizes.size()> counts;
        for (std::size_t i = 0; i < sizes.size(); ++i)
            counts[i] = instructions_of(each.call, each.create(sizes[i])) - overhead;
        std::printf("%-75s", each.name);
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            std::printf(" %6llu", static_cast<unsigned long long>(counts[i]));
            EXPECT_GT(counts[i], 0u) << each.name;
            EXPECT_TRUE(keeps_its_promise(each.promised, counts.front(), counts[i], sizes[i]))
                << each.name << ": " << counts[i] << " instructions among " << sizes[i] << " items, " << counts.front()
                << " among " << sizes.front();
        }
        std::printf("\n");
    }
}

/* So that the test above can fail. */
TEST(Cost, WhatIsLinearIsSeenToGrow)
{
    if (instructions_of([](void *) {}, nullptr) == 0)
        GTEST_SKIP() << "processes may not be traced here";
    const auto count_between = [](void *c) {
        EL_count_items_inbetween(as_element_list(c), as_element_list(c)->first, as_element_list(c)->last);
    };
    const uint64_t small = instructions_of(count_between, element_list(100));
    const uint64_t large = instructions_of(count_between, element_list(400));
    EXPECT_FALSE(keeps_its_promise(growth::constant, small, large, 400));
    EXPECT_FALSE(keeps_its_promise(growth::logarithmic, small, large, 400));
}

} // namespace
