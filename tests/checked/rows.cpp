/* SPDX-License-Identifier: MIT */
/* Every check of every function, one after the other in one program: a mistake is received, and the call that it is in is left, so
   that nothing comes of it. The cells show what people see of a check; this shows that none is missing. */
#define MOVA_NO_SHORT_NAMES
#include <mova/arrays/block_array.h>
#include <mova/arrays/dynamic_array.h>
#include <mova/arrays/id_lookup_table.h>
#include <mova/arrays/sorted_number_array.h>
#include <mova/cache/swap_cache.h>
#include <mova/checked/checked.h>
#include <mova/clut/colour_table.h>
#include <mova/frame/host.h>
#include <mova/hash/hash_table.h>
#include <mova/hash/pointer_lookup.h>
#include <mova/host/memory_blocks.h>
#include <mova/lists/double_list.h>
#include <mova/lists/element_list.h>
#include <mova/lists/element_stack.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>
#include <mova/tree/balanced_tree.h>

#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <utility>

namespace {

constexpr int32_t most = std::numeric_limits<int32_t>::max();

std::jmp_buf before_the_call;
std::string received;

void receive(const mova_misuse *misuse, void *)
{
    received = std::string(misuse->function) + ": " + misuse->what;
    std::longjmp(before_the_call, 1);
}

int failures;

void expect(const std::string &line, void (*make)())
{
    received.clear();
    if (setjmp(before_the_call) == 0)
        make();
    if (received == line)
        return;
    std::printf("expected \"%s\", not \"%s\"\n", line.c_str(), received.c_str());
    ++failures;
}

/* ---- nothing where something is required: each function is called with zeroes ---- */

template <class Result, class... Arguments>
void call_with_zeroes(Result (*function)(Arguments...))
{
    static_cast<void>(function(Arguments{}...));
}

template <auto Function>
void with_zeroes()
{
    call_with_zeroes(Function);
}

struct function {
    const char *name;
    void (*call)();
};

/* The functions of the families, as their headers declare them. */
const function functions[] = {
#include "functions.h"
};

/* What is said where a function begins with this. The longest beginning counts; null where zeroes are right. */
struct saying {
    const char *beginning, *what;
};

const saying sayings[] = {
    {"GL_", "the list is null"},
    {"GL_create", nullptr},
    {"GL_release", "the address of the list is null"},
    {"GL_total_release", "the address of the list is null"},
    {"GL_swap_item", "the position is null"},
    {"GL_empty_iter", nullptr},
    {"GL_tested_items_inbetween", nullptr},
    {"GL_all_items_inbetween", nullptr},
    {"GL_next_", "the iterator is null"},

    {"EL_", "the list is null"},
    {"EL_create", nullptr},
    {"EL_release", "the address of the list is null"},
    {"EL_advance", "the position is null"},
    {"EL_replace_item", "the position is null"},
    {"EL_replace_items", "the list is null"},
    {"EL_next_", "the iterator is null"},

    {"ES_", "the stack is null"},
    {"ES_create", nullptr},
    {"ES_release", "the address of the stack is null"},

    {"DBLL_", "the list is null"},
    {"DBLL_create", nullptr},
    {"DBLL_release", "the address of the list is null"},
    {"DBLL_advance", "the position is null"},
    {"DBLL_replace_double", "the position is null"},
    {"DBLL_replace_doubles", "the list is null"},
    {"DBLL_next_", "the iterator is null"},

    {"SL_", "the list is null"},
    {"SL_create", nullptr},
    {"SL_release", "the address of the list is null"},
    {"SL_total_release", "the address of the list is null"},
    {"SL_empty_iter", nullptr},
    {"SL_tested_items_inbetween", nullptr},
    {"SL_all_items_inbetween", nullptr},
    {"SL_next_", "the iterator is null"},

    {"GB_", "the array is null"},
    {"GB_get_index", nullptr},

    {"DA_", "the array is null"},
    {"DA_create", "the increment is below 1"},
    {"DA_release", nullptr},
    {"DA_memsize", nullptr},
    {"DA_next", "the iterator is null"},
    {"SA_", "the array is null"},

    {"io_lut_", "the table is null"},
    {"io_lut_create", nullptr},
    {"io_lut_release", "the address of the table is null"},
    {"io_lut_next_", "the iterator is null"},

    {"GT_", "the tree is null"},
    {"GT_create", nullptr},
    {"GT_release", "the address of the tree is null"},
    {"GT_total_release", "the address of the tree is null"},
    {"GT_make_empty", nullptr},
    {"GT_total_make_empty", nullptr},
    {"GT_allocate_node", nullptr},
    {"GT_free_node", "the position is null"},
    {"GT_from_", "the iterator is null"},
    {"GT_next_", "the iterator is null"},
    {"GT_current_", "the iterator is null"},
    {"GT_end_", "the iterator is null"},
    {"GT_check", nullptr},

    {"HSH_", "the table is null"},
    {"HSH_create", nullptr},
    {"HSH_release", "the address of the table is null"},
    {"HSH_next", "the iterator is null"},
    {"mova_hash_table_statistics", "the table is null"},
    {"mova_lu_", "the lookup is null"},
    {"mova_lu_create", nullptr},
    {"mova_lu_release", nullptr},

    {"cc_", "the cache is null"},
    {"cc_create", "the pool is null"},
};

/* It is called by what stands in headers. */
bool is_for_the_library(const char *name)
{
    return std::strcmp(name, "mova_hash_find_slot") == 0;
}

const char *what_is_said_of(const char *name)
{
    const saying *best = nullptr;
    for (const saying &each : sayings) {
        const size_t length = std::strlen(each.beginning);
        if (std::strncmp(name, each.beginning, length) == 0 && (!best || length > std::strlen(best->beginning)))
            best = &each;
    }
    return best ? best->what : "?";
}

/* ---- the other arguments ---- */

double number = 1;
int small;
void *item;

void *copy_item(void *copied)
{
    return copied;
}
void leave_alone(void **)
{
}
int32_t compare(void *a, void *b)
{
    return (a > b) - (a < b);
}

/* What the mistakes are made with: containers of three, one of each that says it is full, positions that were removed. */
GL_list *pointers = GL_create(), *full_of_pointers = GL_create(), *no_pointers;
GL_node *removed_pointer;
GL_iterator pointer_walk;
EL_list *numbers = EL_create(sizeof number), *full = EL_create(sizeof number), *ring = EL_create(sizeof number),
        *smalls = EL_create(sizeof small), *no_numbers;
EL_node *removed_number;
EL_iterator walk;
ES_stack *full_stack = ES_create(sizeof number);
struct record {
    record *prev, *next;
} records[4], stray, copied;
SL_list *linked = SL_create(), *full_of_links = SL_create(), *closed = SL_create(), *no_links;
GB_block block, small_block;
DA_array *array = DA_create(sizeof number, 1), *array_of_smalls = DA_create(sizeof small, 1), *none,
         *released_array = DA_create(1, 1);
DA_array *longest = DA_create(1, most);
GT_tree *tree = GT_create_with_dupl_not_allowed(compare);
GT_tree_item *removed_node;
GT_tree_iter *ended;
HSH_table *table = HSH_create(8, 0);
mova_lookup *lookup = mova_lu_create();
mb_pool *pool = mb_create_pool(1000);
cc_cache *cache = cc_create(pool), *cache_without_pool;
cc_entry *removed_entry, *entry_without_pool;
int16_t component, *no_component;
int32_t dynamic_index;

void fill_what_is_used()
{
    for (int i = 0; i < 3; ++i) {
        GL_append_after_last(pointers, &number);
        GL_append_after_last(full_of_pointers, &number);
        for (EL_list *const each : {numbers, full, ring})
            EL_append_after_last(each, &number);
        EL_append_after_last(smalls, &small);
        ES_push(full_stack, &number);
        DA_append(array, &number, 1);
        GT_insert_item(tree, &records[i]);
    }
    DA_release(released_array);
    EL_set_closed(ring);
    removed_pointer = pointers->first;
    pointer_walk = GL_all_items(pointers);
    GL_remove_item(pointers, removed_pointer);
    removed_number = numbers->first;
    walk = EL_all_items(numbers);
    EL_remove_item(numbers, removed_number);
    removed_node = tree->first;
    GT_remove_item(tree, removed_node);
    ended = GT_all_items(tree);
    GT_end_iterator(ended);
    SL_append_after_last(linked, &records[0]);
    SL_append_after_last(linked, &records[1]);
    SL_append_after_last(full_of_links, &records[2]);
    SL_append_after_last(closed, &records[3]);
    SL_set_closed(closed);
    full_of_pointers->count = full->count = full_stack->count = full_of_links->count = most;
    GB_init(&block, sizeof number, 1);
    GB_append_after_last(&block, &number);
    GB_init(&small_block, sizeof small, 1);
    cc_entry *entry = cc_insert(cache, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
    removed_entry = entry;
    cc_remove(cache, &entry);
    mb_pool *released = mb_create_pool(1000);
    cache_without_pool = cc_create(released);
    entry_without_pool = cc_insert(cache_without_pool, nullptr, 0, nullptr, nullptr, nullptr, nullptr);
    mb_release_pool(&released);
}

DA_array *numbers_not_in_order()
{
    const int32_t falling[] = {2, 1};
    DA_array *made = DA_create(sizeof falling[0], 1);
    DA_append(made, falling, 2);
    return made;
}

int32_t accept(void *)
{
    return 1;
}

GT_tree_iter *stepped()
{
    GT_tree_iter *made = GT_all_items(tree);
    GT_next_item(made, &item);
    return made;
}

void step_after_end(GT_tree_iter *made)
{
    GT_end_iterator(made);
    GT_next_item(made, &item);
}

struct mistake {
    const char *line;
    void (*make)();
};

const mistake mistakes[] = {
    {"GL_append_after_last: the list would hold more than 2147483647 items",
     [] { GL_append_after_last(full_of_pointers, item); }},
    {"GL_insert_before_first: the list would hold more than 2147483647 items",
     [] { GL_insert_before_first(full_of_pointers, item); }},
    {"GL_insert_before: the list would hold more than 2147483647 items",
     [] { GL_insert_before(full_of_pointers, full_of_pointers->first, item); }},
    {"GL_insert_after: the list would hold more than 2147483647 items",
     [] { GL_insert_after(full_of_pointers, full_of_pointers->first, item); }},
    {"GL_insert_unique: the list would hold more than 2147483647 items",
     [] { GL_insert_unique(full_of_pointers, item); }},
    {"GL_insert_before: the position was removed", [] { GL_insert_before(pointers, removed_pointer, item); }},
    {"GL_insert_after: the position was removed", [] { GL_insert_after(pointers, removed_pointer, item); }},
    {"GL_move_before_first: the position was removed", [] { GL_move_before_first(pointers, removed_pointer); }},
    {"GL_remove_item: the position was removed", [] { GL_remove_item(pointers, removed_pointer); }},
    {"GL_swap_item: the position was removed", [] { GL_swap_item(removed_pointer, &item); }},
    {"GL_append_list: the list is null", [] { GL_append_list(pointers, &no_pointers); }},
    {"GL_append_list: the two lists are the same", [] { GL_append_list(pointers, &pointers); }},
    {"GL_tested_items_inbetween: the position was removed",
     [] { GL_tested_items_inbetween(pointers, removed_pointer, pointers->last, 1, nullptr); }},
    {"GL_tested_items_inbetween: the position was removed",
     [] { GL_tested_items_inbetween(pointers, pointers->last, removed_pointer, 1, nullptr); }},
    {"GL_all_items_inbetween: the position was removed",
     [] { GL_all_items_inbetween(pointers, removed_pointer, pointers->last, 1); }},
    {"GL_all_items_inbetween: the position was removed",
     [] { GL_all_items_inbetween(pointers, pointers->last, removed_pointer, 1); }},
    {"GL_next_item: the iterator rests on a removed position", [] { GL_next_item(&pointer_walk, &item); }},
    {"GL_next_position: the iterator rests on a removed position",
     [] { GL_next_position(&pointer_walk, &removed_pointer); }},

    {"EL_append_after_last: the list would hold more than 2147483647 items",
     [] { EL_append_after_last(full, &number); }},
    {"EL_insert_before_first: the list would hold more than 2147483647 items",
     [] { EL_insert_before_first(full, &number); }},
    {"EL_insert_before: the list would hold more than 2147483647 items",
     [] { EL_insert_before(full, full->first, &number); }},
    {"EL_insert_after: the list would hold more than 2147483647 items",
     [] { EL_insert_after(full, full->first, &number); }},
    {"EL_insert_before_index: the list would hold more than 2147483647 items",
     [] { EL_insert_before_index(full, 0, &number); }},
    {"EL_insert_after_index: the list would hold more than 2147483647 items",
     [] { EL_insert_after_index(full, 0, &number); }},
    {"EL_insert_before: the position was removed", [] { EL_insert_before(numbers, removed_number, &number); }},
    {"EL_insert_after: the position was removed", [] { EL_insert_after(numbers, removed_number, &number); }},
    {"EL_advance: the position was removed", [] { EL_advance(numbers, removed_number, 1); }},
    {"EL_get_index: the position was removed", [] { EL_get_index(numbers, removed_number); }},
    {"EL_remove_item: the position was removed", [] { EL_remove_item(numbers, removed_number); }},
    {"EL_make_open_at_position: the position was removed", [] { EL_make_open_at_position(numbers, removed_number); }},
    {"EL_remove_and_get_end_part: the position was removed",
     [] { EL_remove_and_get_end_part(numbers, removed_number); }},
    {"EL_count_items_inbetween: the begin was removed",
     [] { EL_count_items_inbetween(numbers, removed_number, numbers->last); }},
    {"EL_count_items_inbetween: the end was removed",
     [] { EL_count_items_inbetween(numbers, numbers->first, removed_number); }},
    {"EL_count_items_inbetween: the end does not lie ahead of the begin",
     [] { EL_count_items_inbetween(numbers, numbers->last, numbers->first); }},
    {"EL_remove_items_inbetween: the end does not lie ahead of the begin",
     [] { EL_remove_items_inbetween(numbers, numbers->last, numbers->first); }},
    {"EL_total_copy_inbetween: the end does not lie ahead of the begin",
     [] { EL_total_copy_inbetween(numbers, numbers->last, numbers->first); }},
    {"EL_replace_items_inbetween: the end does not lie ahead of the begin",
     [] { EL_replace_items_inbetween(numbers, numbers->last, numbers->first, ring, sizeof number); }},
    {"EL_replace_items_inbetween: the list is null",
     [] { EL_replace_items_inbetween(numbers, numbers->first, numbers->last, no_numbers, sizeof number); }},
    {"EL_replace_items_inbetween: the elements have 8 bytes, not 9",
     [] { EL_replace_items_inbetween(numbers, numbers->first, numbers->last, ring, 9); }},
    {"EL_replace_items_inbetween: the elements have 4 bytes, not 8",
     [] { EL_replace_items_inbetween(numbers, numbers->first, numbers->last, smalls, sizeof number); }},
    {"EL_replace_item: the elements have 8 bytes, not 9", [] { EL_replace_item(numbers->first, &number, 9); }},
    {"EL_append_list: the list is null", [] { EL_append_list(numbers, &no_numbers); }},
    {"EL_append_list: the two lists are the same", [] { EL_append_list(numbers, &numbers); }},
    {"EL_append_list: the list is a ring", [] { EL_append_list(numbers, &ring); }},
    {"EL_append_list: the elements have 8 bytes, not 4", [] { EL_append_list(numbers, &smalls); }},
    {"EL_roll: the position is of another list", [] { EL_roll(ring, full->last); }},
    {"EL_tested_items_inbetween: the position was removed",
     [] { EL_tested_items_inbetween(numbers, removed_number, numbers->last, 1, nullptr); }},
    {"EL_tested_items_inbetween: the position was removed",
     [] { EL_tested_items_inbetween(numbers, numbers->first, removed_number, 1, nullptr); }},
    {"EL_tested_items_inbetween: the end is null on a ring",
     [] { EL_tested_items_inbetween(ring, ring->first, nullptr, 1, nullptr); }},
    {"EL_all_items_inbetween: the position was removed",
     [] { EL_all_items_inbetween(numbers, removed_number, numbers->last, 1); }},
    {"EL_all_items_inbetween: the position was removed",
     [] { EL_all_items_inbetween(numbers, numbers->first, removed_number, 1); }},
    {"EL_all_items_inbetween: the end is null on a ring",
     [] { EL_all_items_inbetween(ring, ring->first, nullptr, 1); }},
    {"EL_next_position: the iterator rests on a removed position", [] { EL_next_position(&walk, &removed_number); }},
    {"EL_next_item: the iterator rests on a removed position", [] { EL_next_item(&walk, &item); }},
    {"EL_next_item_copy: the iterator rests on a removed position", [] { EL_next_item_copy(&walk, &number); }},
    {"ES_push: the stack would hold more than 2147483647 items", [] { ES_push(full_stack, &number); }},

    {"DBLL_add_double: the list would hold more than 2147483647 items", [] { DBLL_add_double(full, 1); }},
    {"DBLL_add_double_unique: the list would hold more than 2147483647 items",
     [] { DBLL_add_double_unique(full, 1, 1); }},
    {"DBLL_insert_before: the list would hold more than 2147483647 items",
     [] { DBLL_insert_before(full, full->first, 1); }},
    {"DBLL_insert_after: the list would hold more than 2147483647 items",
     [] { DBLL_insert_after(full, full->first, 1); }},
    {"DBLL_insert_before_index: the list would hold more than 2147483647 items",
     [] { DBLL_insert_before_index(full, 0, 1); }},
    {"DBLL_insert_after_index: the list would hold more than 2147483647 items",
     [] { DBLL_insert_after_index(full, 0, 1); }},
    {"DBLL_insert_before: the position was removed", [] { DBLL_insert_before(numbers, removed_number, 1); }},
    {"DBLL_insert_after: the position was removed", [] { DBLL_insert_after(numbers, removed_number, 1); }},
    {"DBLL_remove_double: the position was removed", [] { DBLL_remove_double(numbers, removed_number); }},
    {"DBLL_replace_double: the position was removed", [] { DBLL_replace_double(removed_number, 1); }},
    {"DBLL_advance: the position was removed", [] { DBLL_advance(numbers, removed_number, 1); }},
    {"DBLL_roll: the position is of another list", [] { DBLL_roll(ring, full->last); }},
    {"DBLL_size_inbetween: the end does not lie ahead of the begin",
     [] { DBLL_size_inbetween(numbers, numbers->last, numbers->first); }},
    {"DBLL_copy_inbetween: the end does not lie ahead of the begin",
     [] { DBLL_copy_inbetween(numbers, numbers->last, numbers->first); }},
    {"DBLL_replace_doubles_inbetween: the end does not lie ahead of the begin",
     [] { DBLL_replace_doubles_inbetween(numbers, numbers->last, numbers->first, ring); }},
    {"DBLL_replace_doubles_inbetween: the list is null",
     [] { DBLL_replace_doubles_inbetween(numbers, numbers->first, numbers->last, no_numbers); }},
    {"DBLL_replace_doubles_inbetween: the elements have 4 bytes, not 8",
     [] { DBLL_replace_doubles_inbetween(numbers, numbers->first, numbers->last, smalls); }},
    {"DBLL_replace_doubles_inbetween: the elements have 4 bytes, not 8",
     [] { DBLL_replace_doubles_inbetween(smalls, smalls->first, smalls->last, numbers); }},
    {"DBLL_add_double: the elements have 4 bytes, not 8", [] { DBLL_add_double(smalls, 1); }},
    {"DBLL_insert_before: the elements have 4 bytes, not 8", [] { DBLL_insert_before(smalls, smalls->first, 1); }},
    {"DBLL_insert_after: the elements have 4 bytes, not 8", [] { DBLL_insert_after(smalls, smalls->first, 1); }},
    {"DBLL_insert_before_index: the elements have 4 bytes, not 8", [] { DBLL_insert_before_index(smalls, 0, 1); }},
    {"DBLL_insert_after_index: the elements have 4 bytes, not 8", [] { DBLL_insert_after_index(smalls, 0, 1); }},
    {"DBLL_add_double_unique: the elements have 4 bytes, not 8", [] { DBLL_add_double_unique(smalls, 1, 1); }},
    {"DBLL_remove_double_occ: the elements have 4 bytes, not 8", [] { DBLL_remove_double_occ(smalls, 1); }},
    {"DBLL_replace_double: the elements have 4 bytes, not 8", [] { DBLL_replace_double(smalls->first, 1); }},
    {"DBLL_begin_value: the elements have 4 bytes, not 8", [] { DBLL_begin_value(smalls); }},
    {"DBLL_end_value: the elements have 4 bytes, not 8", [] { DBLL_end_value(smalls); }},
    {"DBLL_set_begin_value: the elements have 4 bytes, not 8", [] { DBLL_set_begin_value(smalls, 1); }},
    {"DBLL_set_end_value: the elements have 4 bytes, not 8", [] { DBLL_set_end_value(smalls, 1); }},
    {"DBLL_add_to_all: the elements have 4 bytes, not 8", [] { DBLL_add_to_all(smalls, 1); }},
    {"DBLL_find_index_of_nearest: the elements have 4 bytes, not 8",
     [] { DBLL_find_index_of_nearest(smalls, 1, 1, &number); }},
    {"DBLL_sort: the elements have 4 bytes, not 8", [] { DBLL_sort(smalls); }},
    {"DBLL_all_doubles_inbetween: the position was removed",
     [] { DBLL_all_doubles_inbetween(numbers, removed_number, numbers->last); }},
    {"DBLL_all_doubles_inbetween: the position was removed",
     [] { DBLL_all_doubles_inbetween(numbers, numbers->first, removed_number); }},
    {"DBLL_all_doubles_inbetween: the end is null on a ring",
     [] { DBLL_all_doubles_inbetween(ring, ring->first, nullptr); }},
    {"DBLL_all_doubles_inbetween_reversed: the position was removed",
     [] { DBLL_all_doubles_inbetween_reversed(numbers, removed_number, numbers->last); }},
    {"DBLL_all_doubles_inbetween_reversed: the position was removed",
     [] { DBLL_all_doubles_inbetween_reversed(numbers, numbers->first, removed_number); }},
    {"DBLL_all_doubles_inbetween_reversed: the end is null on a ring",
     [] { DBLL_all_doubles_inbetween_reversed(ring, ring->first, nullptr); }},
    {"DBLL_next_position: the iterator rests on a removed position",
     [] { DBLL_next_position(&walk, &removed_number); }},
    {"DBLL_next_double: the iterator rests on a removed position", [] { DBLL_next_double(&walk, &number); }},

    {"SL_append_after_last: the list would hold more than 2147483647 items",
     [] { SL_append_after_last(full_of_links, &stray); }},
    {"SL_insert_before_first: the list would hold more than 2147483647 items",
     [] { SL_insert_before_first(full_of_links, &stray); }},
    {"SL_insert_before: the list would hold more than 2147483647 items",
     [] { SL_insert_before(full_of_links, &records[2], &stray); }},
    {"SL_insert_after: the list would hold more than 2147483647 items",
     [] { SL_insert_after(full_of_links, &records[2], &stray); }},
    {"SL_insert_before_index: the list would hold more than 2147483647 items",
     [] { SL_insert_before_index(full_of_links, 0, &stray); }},
    {"SL_insert_after_index: the list would hold more than 2147483647 items",
     [] { SL_insert_after_index(full_of_links, 0, &stray); }},
    {"SL_insert_unique: the list would hold more than 2147483647 items",
     [] { SL_insert_unique(full_of_links, &stray); }},
    {"SL_advance: the item is on no list", [] { SL_advance(linked, &stray, 1); }},
    {"SL_get_index: the item is on no list", [] { SL_get_index(linked, &stray); }},
    {"SL_insert_before: the item is on no list", [] { SL_insert_before(linked, &stray, &stray); }},
    {"SL_insert_after: the item is on no list", [] { SL_insert_after(linked, &stray, &stray); }},
    {"SL_remove_item: the item is on no list", [] { SL_remove_item(linked, &stray); }},
    {"SL_roll: the item is of another list", [] { SL_roll(closed, &records[1]); }},
    {"SL_append_after_last: the item is on a list already", [] { SL_append_after_last(linked, &records[3]); }},
    {"SL_insert_before_first: the item is on a list already", [] { SL_insert_before_first(linked, &records[3]); }},
    {"SL_insert_before: the item is on a list already", [] { SL_insert_before(linked, &records[0], &records[3]); }},
    {"SL_insert_after: the item is on a list already", [] { SL_insert_after(linked, &records[0], &records[3]); }},
    {"SL_insert_before_index: the item is on a list already", [] { SL_insert_before_index(linked, 0, &records[3]); }},
    {"SL_insert_after_index: the item is on a list already", [] { SL_insert_after_index(linked, 0, &records[3]); }},
    {"SL_insert_unique: the item is on a list already", [] { SL_insert_unique(linked, &records[3]); }},
    {"SL_append_list: the list is null", [] { SL_append_list(linked, &no_links); }},
    {"SL_append_list: the two lists are the same", [] { SL_append_list(linked, &linked); }},
    {"SL_append_list: the list is a ring", [] { SL_append_list(linked, &closed); }},

    {"GB_append_block: the array is null", [] { GB_append_block(&block, nullptr); }},
    {"GB_append_block: the array is null", [] { GB_append_block(nullptr, &block); }},
    {"GB_copy: the array is null", [] { GB_copy(nullptr, &block); }},
    {"GB_copy_into: the array is null", [] { GB_copy_into(nullptr, &block); }},
    {"GB_remove_and_get_end_part: the array is null", [] { GB_remove_and_get_end_part(nullptr, &block, 0); }},
    {"GB_append_block: the two arrays are the same", [] { GB_append_block(&block, &block); }},
    {"GB_append_block: the elements of the two arrays differ in size", [] { GB_append_block(&block, &small_block); }},
    {"GB_copy: the array is null", [] { GB_copy(&block, nullptr); }},
    {"GB_copy: the two arrays are the same", [] { GB_copy(&block, &block); }},
    {"GB_copy_into: the array is null", [] { GB_copy_into(&block, nullptr); }},
    {"GB_copy_into: the elements of the two arrays differ in size", [] { GB_copy_into(&block, &small_block); }},
    {"GB_remove_and_get_end_part: the array is null", [] { GB_remove_and_get_end_part(&block, nullptr, 0); }},
    {"GB_remove_and_get_end_part: the two arrays are the same", [] { GB_remove_and_get_end_part(&block, &block, 0); }},
    {"GB_remove_last_item: the array is empty", [] { GB_remove_last_item(&small_block); }},
    {"GB_replace_item: the index is out of range", [] { GB_replace_item(&block, 1, &number); }},
    {"GB_insert_item: the index is out of range", [] { GB_insert_item(&block, 2, &number); }},
    {"GB_remove_item: the index is out of range", [] { GB_remove_item(&block, -1); }},

    {"DA_copy_into: the array is null", [] { DA_copy_into(array, none); }},
    {"DA_copy_into: the elements of the two arrays differ in size", [] { DA_copy_into(array, array_of_smalls); }},
    {"DA_equal: the array is null", [] { DA_equal(array, none); }},
    {"DA_equal: the array is null", [] { DA_equal(none, array); }},
    {"DA_release: the array was released", [] { DA_release(released_array); }},
    {"DA_memsize: the array was released", [] { DA_memsize(released_array); }},
    {"DA_setsize: the count is negative", [] { DA_setsize(array, -1); }},
    {"DA_truncate: the count is negative", [] { DA_truncate(array, -1); }},
    {"DA_get_item: the index is negative", [] { DA_get_item(array, -1); }},
    {"DA_put_item: the index is negative", [] { DA_put_item(array, -1, &number); }},
    {"DA_append: the count is negative", [] { DA_append(array, &number, -1); }},
    {"DA_insert: the index is negative", [] { DA_insert(array, -1, &number, 1); }},
    {"DA_insert: the count is negative", [] { DA_insert(array, 0, &number, -1); }},
    {"DA_delete: the index is negative", [] { DA_delete(array, -1, 1); }},
    {"DA_delete: the count is negative", [] { DA_delete(array, 0, -1); }},
    {"DA_delete: the elements reach past the end", [] { DA_delete(array, 0, 4); }},
    {"DA_extend: the array would have more than 2147483647 elements", [] { DA_extend(longest, 1); }},
    {"DA_setsize: the array would have more than 2147483647 elements", [] { DA_setsize(longest, 1); }},
    {"DA_get_item: the array would have more than 2147483647 elements", [] { DA_get_item(longest, 1); }},
    {"DA_put_item: the array would have more than 2147483647 elements", [] { DA_put_item(longest, 1, &number); }},
    {"DA_append: the array would have more than 2147483647 elements", [] { DA_append(longest, &number, 1); }},
    {"DA_insert: the array would have more than 2147483647 elements", [] { DA_insert(longest, 0, &number, 1); }},

    {"io_lut_allow_reuse: the array is no table of ids", [] { io_lut_allow_reuse(array_of_smalls); }},
    {"io_lut_add: the array is no table of ids", [] { io_lut_add(array_of_smalls, &number); }},
    {"io_lut_get_id: the array is no table of ids", [] { io_lut_get_id(array_of_smalls, &number); }},
    {"io_lut_look_id: the array is no table of ids", [] { io_lut_look_id(array_of_smalls, &number); }},
    {"io_lut_set: the array is no table of ids", [] { io_lut_set(array_of_smalls, &number, 1); }},
    {"io_lut_get_ptr: the array is no table of ids", [] { io_lut_get_ptr(array_of_smalls, 1); }},
    {"io_lut_look_ptr: the array is no table of ids", [] { io_lut_look_ptr(array_of_smalls, 1); }},
    {"io_lut_all_items: the array is no table of ids", [] { io_lut_all_items(array_of_smalls); }},

    {"io_lut_add: the array would have more than 2147483647 elements",
     [] {
         DA_array *ids = io_lut_create();
         ids->nitems = ids->nalloc = most;
         io_lut_add(ids, &number);
     }},

    {"SA_add_number: the numbers are not in order", [] { SA_add_number(numbers_not_in_order(), 1); }},
    {"SA_remove_number: the numbers are not in order", [] { SA_remove_number(numbers_not_in_order(), 1); }},
    {"SA_check_number: the numbers are not in order", [] { SA_check_number(numbers_not_in_order(), 1); }},
    {"SA_add_number: the elements have 8 bytes, not 4", [] { SA_add_number(array, 1); }},
    {"SA_remove_number: the elements have 8 bytes, not 4", [] { SA_remove_number(array, 1); }},
    {"SA_check_number: the elements have 8 bytes, not 4", [] { SA_check_number(array, 1); }},
    {"SA_adapt_for_insert: the elements have 8 bytes, not 4", [] { SA_adapt_for_insert(array, 1); }},
    {"SA_adapt_for_remove: the elements have 8 bytes, not 4", [] { SA_adapt_for_remove(array, 1); }},
    {"SA_adapt_for_reverse: the elements have 8 bytes, not 4", [] { SA_adapt_for_reverse(array, 1); }},
    {"SA_adapt_for_roll: the elements have 8 bytes, not 4", [] { SA_adapt_for_roll(array, 1, 1); }},
    {"SA_adapt_for_roll: the count is 0", [] { SA_adapt_for_roll(array_of_smalls, 1, 0); }},

    {"GT_remove_item: the position was removed", [] { GT_remove_item(tree, removed_node); }},
    {"GT_remove_item_global: the position was removed", [] { GT_remove_item_global(tree, removed_node); }},
    {"GT_next_item: the iterator has ended", [] { step_after_end(GT_all_items_conditional(tree, accept)); }},
    {"GT_next_item: the iterator has ended", [] { step_after_end(GT_all_items_while_conditioned(tree, accept)); }},
    {"GT_next_item: the iterator has ended", [] { step_after_end(GT_from_current(stepped())); }},
    {"GT_next_item: the iterator has ended", [] { step_after_end(GT_from_current_conditional(stepped(), accept)); }},
    {"GT_next_item: the iterator has ended",
     [] { step_after_end(GT_from_current_while_conditioned(stepped(), accept)); }},
    {"GT_next_item: the iterator has ended", [] { step_after_end(GT_from_next(stepped())); }},
    {"GT_next_item: the iterator has ended", [] { step_after_end(GT_from_next_conditional(stepped(), accept)); }},
    {"GT_next_item: the iterator has ended", [] { step_after_end(GT_from_next_while_conditioned(stepped(), accept)); }},
    {"GT_make_empty: the tree was released",
     [] {
         GT_tree *released = GT_create_with_dupl_allowed(compare), *alias = released;
         GT_release(&released);
         GT_make_empty(alias);
     }},
    {"GT_total_make_empty: the tree was released",
     [] {
         GT_tree *released = GT_create_with_dupl_not_allowed(compare), *alias = released;
         GT_total_release(&released, 0);
         GT_total_make_empty(alias, 0);
     }},
    {"GT_free_node: the position was removed", [] { GT_free_node(removed_node); }},
    {"GT_from_current: the iterator has ended", [] { GT_from_current(ended); }},
    {"GT_from_current_conditional: the iterator has ended", [] { GT_from_current_conditional(ended, nullptr); }},
    {"GT_from_current_while_conditioned: the iterator has ended",
     [] { GT_from_current_while_conditioned(ended, nullptr); }},
    {"GT_from_next: the iterator has ended", [] { GT_from_next(ended); }},
    {"GT_from_next_conditional: the iterator has ended", [] { GT_from_next_conditional(ended, nullptr); }},
    {"GT_from_next_while_conditioned: the iterator has ended", [] { GT_from_next_while_conditioned(ended, nullptr); }},
    {"GT_next_item: the iterator has ended", [] { GT_next_item(ended, &item); }},
    {"GT_next_position: the iterator has ended", [] { GT_next_position(ended, &removed_node); }},
    {"GT_current_item: the iterator has ended", [] { GT_current_item(ended, &item); }},
    {"GT_end_iterator: the iterator has ended", [] { GT_end_iterator(ended); }},

    {"HSH_create: the size is above 2^30", [] { HSH_create(UINT32_MAX, 0); }},
    {"HSH_create: the maximum shift is negative", [] { HSH_create(0, -1); }},
    {"HSH_set_value: the key is 0", [] { HSH_set_value(table, 0, 1); }},
    {"mova_lu_release: the lookup was released",
     [] {
         mova_lookup *released = mova_lu_create(), *alias = released;
         mova_lu_release(&released, nullptr);
         mova_lu_release(&alias, nullptr);
     }},
    {"mova_lu_add: the key is 0", [] { mova_lu_add(lookup, 0, 1); }},

    {"cc_insert: the handle names no block of the cache's pool",
     [] { cc_insert(cache, nullptr, 99, nullptr, nullptr, nullptr, nullptr); }},
    {"cc_free: the address of the handle is null", [] { cc_free(cache, nullptr); }},
    {"cc_get: the entry was removed", [] { cc_get(cache, removed_entry); }},
    {"cc_lazy_swap_out: the entry was removed", [] { cc_lazy_swap_out(cache, removed_entry); }},
    {"cc_swap_out: the entry was removed", [] { cc_swap_out(cache, removed_entry); }},
    {"cc_remove: the entry was removed", [] { cc_remove(cache, &removed_entry); }},
    {"cc_insert: the cache's pool was released",
     [] { cc_insert(cache_without_pool, nullptr, 0, nullptr, nullptr, nullptr, nullptr); }},
    {"cc_get: the cache's pool was released", [] { cc_get(cache_without_pool, entry_without_pool); }},
    {"cc_lazy_swap_out: the cache's pool was released",
     [] { cc_lazy_swap_out(cache_without_pool, entry_without_pool); }},
    {"cc_swap_out: the cache's pool was released", [] { cc_swap_out(cache_without_pool, entry_without_pool); }},
    {"cc_flush: the cache's pool was released", [] { cc_flush(cache_without_pool); }},
    {"cc_alloc: the cache's pool was released", [] { cc_alloc(cache_without_pool, 1); }},
    {"cc_free: the cache's pool was released", [] { cc_free(cache_without_pool, nullptr); }},
    {"cc_remove: the cache's pool was released", [] { cc_remove(cache_without_pool, &entry_without_pool); }},
    {"cc_make_empty: the cache's pool was released", [] { cc_make_empty(cache_without_pool); }},

    {"CLUT_alloc: the index is negative", [] { CLUT_alloc(-1); }},
    {"CLUT_release_index: the index is negative", [] { CLUT_release_index(-1); }},
    {"CLUT_set: the index is negative", [] { CLUT_set(-1, 1, 1, 1); }},
    {"CLUT_set_RGB: the index is negative", [] { CLUT_set_RGB(-1, 1, 1, 1); }},
    {"CLUT_set_RGB: a component is out of range", [] { CLUT_set_RGB(1, 1e9f, 1, 1); }},
    {"CLUT_set_RGB: a component is out of range", [] { CLUT_set_RGB(1, 1, 1e9f, 1); }},
    {"CLUT_set_RGB: a component is out of range", [] { CLUT_set_RGB(1, 1, 1, 1e9f); }},
    {"CLUT_get: the index is negative", [] { CLUT_get(-1, &component, &component, &component); }},
    {"CLUT_get: the address of a component is null", [] { CLUT_get(1, no_component, &component, &component); }},
    {"CLUT_get: the address of a component is null", [] { CLUT_get(1, &component, no_component, &component); }},
    {"CLUT_get: the address of a component is null", [] { CLUT_get(1, &component, &component, no_component); }},
    {"CLUT_copy: the index is negative", [] { CLUT_copy(-1, 1); }},
    {"CLUT_copy: the index is negative", [] { CLUT_copy(1, -1); }},

    {"SL_get_index: the item is of another list",
     [] {
         static_cast<void>(SL_total_copy(full_of_links, [](void *) -> void * { return &copied; }));
         SL_get_index(linked, &copied);
     }},
    {"SL_get_index: the item was removed",
     [] {
         SL_list *released = SL_create();
         SL_append_after_last(released, &stray);
         SL_total_release(&released, leave_alone);
         SL_get_index(linked, &stray);
     }},

    /* What a function makes is known. */
    {"",
     [] {
         GL_list *copies[] = {GL_copy(pointers), GL_total_copy(pointers, copy_item)};
         for (GL_list *&each : copies)
             GL_count_items(each), GL_release(&each);
     }},
    {"",
     [] {
         EL_list *copies[] = {EL_total_copy(numbers),
                              EL_total_copy_inbetween(numbers, numbers->first, numbers->last),
                              EL_remove_and_get_end_part(numbers, numbers->last),
                              DBLL_copy(numbers),
                              DBLL_copy_inbetween(numbers, numbers->first, numbers->last),
                              DBLL_create_with_two(1, 2),
                              DBLL_create()};
         for (EL_list *&each : copies)
             EL_count_items(each), EL_release(&each);
     }},
    {"",
     [] {
         DA_array *copy = DA_copy(array);
         DA_nitems(copy);
         DA_release(copy);
     }},
    {"",
     [] {
         GT_tree *other = GT_create_with_dupl_allowed(compare);
         GT_insert_item(other, &number);
         GT_release(&other);
     }},
};

/* ---- the colour table, from another thread while one is in it ---- */

void (*called_meanwhile)();

void shown(int32_t, int16_t, int16_t, int16_t)
{
    if (called_meanwhile)
        std::thread(std::exchange(called_meanwhile, nullptr)).join();
}

void (*const uses_of_the_table[])() = {
    [] { CLUT_alloc(50); },
    [] { CLUT_set(50, 1, 1, 1); },
    [] { CLUT_set_RGB(50, 1, 1, 1); },
    [] { CLUT_copy(50, 20); },
    [] { CLUT_get(20, &component, &component, &component); },
    [] { CLUT_statistics(); },
    [] { dynamic_index = CLUT_new_index(); },
    [] { CLUT_release_index(dynamic_index); },
};

void make_it_while_it_is_used()
{
    called_meanwhile = [] { CLUT_statistics(); };
    RGBLUT_init(64, shown, 0);
}

void (*used_meanwhile)();

void set_while_it_is_used()
{
    called_meanwhile = used_meanwhile;
    CLUT_set(40, 1, 2, 3);
}

/* ---- trees, out of a callback of which nothing of a tree may be called ---- */

int32_t calls_everything(void *a, void *b)
{
    std::jmp_buf kept;
    std::memcpy(&kept, &before_the_call, sizeof kept);
    for (const function &each : functions) {
        if (std::strncmp(each.name, "GT_", 3) == 0)
            expect(std::string(each.name) + ": a tree is calling back in GT_insert_item", each.call);
    }
    std::memcpy(&before_the_call, &kept, sizeof kept);
    received.clear();
    return compare(a, b);
}

void call_back()
{
    GT_tree *calling = GT_create_with_dupl_not_allowed(calls_everything);
    GT_insert_item(calling, &records[0]);
    GT_insert_item(calling, &records[1]);
    GT_release(&calling);
}

} // namespace

int main()
{
    mova_checked_set_receiver(receive, nullptr);
    for (const function &each : functions) {
        if (is_for_the_library(each.name))
            continue;
        const char *const what = what_is_said_of(each.name);
        expect(what ? std::string(each.name) + ": " + what : "", each.call);
    }
    fill_what_is_used();
    for (const mistake &each : mistakes)
        expect(each.line, each.make);
    expect("", call_back);
    std::thread([] {}).join();
    expect("RGBLUT_init: another thread used the colour table meanwhile", make_it_while_it_is_used);
    for (const auto use : uses_of_the_table) {
        used_meanwhile = use;
        expect("CLUT_set: another thread used the colour table meanwhile", set_while_it_is_used);
    }
    return failures != 0;
}
