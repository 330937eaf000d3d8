/* SPDX-License-Identifier: MIT */
/* A caller's loops, which an optimising compiler is to put together without a call of the library. */
#include <mova/hash/hash_table.h>
#include <mova/hash/pointer_lookup.h>
#include <mova/lists/element_list.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>

long sum_of_items(const GL_list *list);
long sum_of_elements(const EL_list *list);
long sum_of_copied_elements(const EL_list *list);
long number_of_positions(const EL_list *list);
long sum_of_records(const SL_list *list);
mova_word sum_of_entries(HSH_table *table);
mova_word value_of(const mova_lookup *lookup, mova_word key);

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
