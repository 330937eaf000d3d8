/* SPDX-License-Identifier: MIT */
/* A caller's loops, which an optimising compiler is to put together without a call of the library. */
#include <mova/arrays/block_array.h>
#include <mova/arrays/id_lookup_table.h>
#include <mova/hash/hash_table.h>
#include <mova/hash/pointer_lookup.h>
#include <mova/lists/double_list.h>
#include <mova/lists/element_stack.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>

long sum_of_items(const GL_list *list);
long sum_of_elements(const EL_list *list);
long sum_of_copied_elements(const EL_list *list);
long number_of_positions(const EL_list *list);
long sum_of_records(const SL_list *list);
mova_word sum_of_entries(HSH_table *table);
mova_word value_of(const mova_lookup *lookup, mova_word key);
long sum_of_counts(const GL_list *items, const SL_list *records, const GB_block *block, const DBLL_list *values);
int is_first(const DA_array *ids, const ES_stack *stack);

struct record {
    struct record *prev, *next;
    int number;
};

long sum_of_items(const GL_list *list)
{
    long sum = 0;
    void *item;
    GL_iterator iterator = GL_all_items(list);
    while (GL_next_item(&iterator, &item))
        sum += *(int *)item;
    return sum;
}

long sum_of_elements(const EL_list *list)
{
    long sum = 0;
    void *element;
    EL_iterator iterator = EL_all_items(list);
    while (EL_next_item(&iterator, &element))
        sum += *(int *)element;
    return sum;
}

long sum_of_copied_elements(const EL_list *list)
{
    long sum = 0;
    int element;
    EL_iterator iterator = EL_all_items_reversed(list);
    while (EL_next_item_copy(&iterator, &element))
        sum += element;
    return sum;
}

long number_of_positions(const EL_list *list)
{
    long number = 0;
    EL_node *position;
    EL_iterator iterator = EL_all_items_inbetween(list, list->first, list->last, 1);
    while (EL_next_position(&iterator, &position))
        ++number;
    return number;
}

long sum_of_records(const SL_list *list)
{
    long sum = 0;
    void *item;
    SL_iterator iterator = SL_all_items(list);
    while (SL_next_item(&iterator, &item))
        sum += ((struct record *)item)->number;
    return sum;
}

mova_word sum_of_entries(HSH_table *table)
{
    mova_word sum = 0, key, value;
    HSH_iterator iterator = HSH_all_entries(table);
    while (HSH_next(&iterator, &key, &value))
        sum += key + value;
    return sum;
}

/* Where the keys stand in their home slots. */
mova_word value_of(const mova_lookup *lookup, mova_word key)
{
    return HSH_contains_key(lookup->table, key) ? mova_lu_get(lookup, key) : 0;
}

long sum_of_counts(const GL_list *items, const SL_list *records, const GB_block *block, const DBLL_list *values)
{
    return (long)GL_count_items(items) + SL_count_items(records) + GB_count_items(block) + DBLL_size(values);
}

/* Whether what is on top of the stack has the first id, and no other follows. */
int is_first(const DA_array *ids, const ES_stack *stack)
{
    void *top = 0;
    return ES_inspect_top(stack, &top) && ES_count_items(stack) && io_lut_look_ptr(ids, 1) == top &&
           DA_nitems(ids) == 2;
}
