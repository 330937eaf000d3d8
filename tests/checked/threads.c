/* SPDX-License-Identifier: MIT */
/* Two threads in one container, of the families whose calls have no callback to wait in: this program's own memory service lets
   another thread in while it is asked for a block. A cell's name begins with its family's prefix. */
#include <stdlib.h>

#include <mova/arrays/block_array.h>
#include <mova/arrays/dynamic_array.h>
#include <mova/arrays/id_lookup_table.h>
#include <mova/arrays/sorted_number_array.h>
#include <mova/frame/host.h>
#include <mova/hash/hash_table.h>
#include <mova/hash/pointer_lookup.h>
#include <mova/host/memory_blocks.h>
#include <mova/lists/double_list.h>
#include <mova/lists/element_list.h>
#include <mova/lists/element_stack.h>

#include "misuse.h"

/* What the other thread does next, and to what. */
static void *(*other_act)(void *);
static void *other_container;

void *MM_alloc_item(size_t size)
{
    void *(*act)(void *) = other_act;
    other_act = NULL;
    if (act)
        in_a_thread(act, other_container);
    return malloc(size ? size : 1);
}

void MM_dealloc_item(void *item, size_t size)
{
    (void)size;
    free(item);
}

void *MM_realloc_item(void *item, size_t old_size, size_t new_size)
{
    void *block = MM_alloc_item(new_size);
    if (item)
        memcpy(block, item, old_size < new_size ? old_size : new_size);
    MM_dealloc_item(item, old_size);
    return block;
}

/* The next block that is asked for has to wait for the other thread. */
static void let_in(void *(*act)(void *), void *container)
{
    in_a_thread(do_nothing, NULL);
    other_act = act;
    other_container = container;
}

/* ---- lists ---- */

static const double number = 1;

static void *count_list(void *list)
{
    EL_count_items(list);
    return NULL;
}

static void list_is_read(int misused)
{
    EL_list *list = EL_create(sizeof number), *other = EL_create(sizeof number);
    let_in(count_list, misused ? list : other);
    EL_append_after_last(list, &number);
    EL_release(&list);
    EL_release(&other);
}

static void *reverse_list(void *list)
{
    EL_reverse(list);
    return NULL;
}

static void list_is_copied(int misused)
{
    EL_list *list = EL_create(sizeof number), *other = EL_create(sizeof number), *copy;
    let_in(reverse_list, misused ? list : other);
    copy = EL_total_copy(list);
    EL_release(&copy);
    EL_release(&list);
    EL_release(&other);
}

static void *count_stack(void *stack)
{
    ES_count_items(stack);
    return NULL;
}

static void stack_is_read(int misused)
{
    ES_stack *stack = ES_create(sizeof number), *other = ES_create(sizeof number);
    let_in(count_stack, misused ? stack : other);
    ES_push(stack, &number);
    ES_release(&stack);
    ES_release(&other);
}

static void *count_doubles(void *list)
{
    DBLL_size(list);
    return NULL;
}

static void doubles_are_read(int misused)
{
    DBLL_list *list = DBLL_create(), *other = DBLL_create();
    let_in(count_doubles, misused ? list : other);
    DBLL_add_double(list, number);
    DBLL_release(&list);
    DBLL_release(&other);
}

/* ---- tables ---- */

static void *look_up(void *table)
{
    HSH_contains_key(table, 1);
    return NULL;
}

static void table_is_read(int misused)
{
    HSH_table *table = HSH_create(8, 0), *other = HSH_create(8, 0);
    let_in(look_up, misused ? table : other);
    for (mova_word key = 1; key < 20; ++key)
        HSH_set_value(table, key, key);
    HSH_release(&table);
    HSH_release(&other);
}

static void *look_up_pointer(void *lookup)
{
    mova_lu_get(lookup, 1);
    return NULL;
}

static void lookup_is_read(int misused)
{
    mova_lookup *lookup = mova_lu_create(), *other = mova_lu_create();
    let_in(look_up_pointer, misused ? lookup : other);
    for (mova_word key = 1; key < 20; ++key)
        mova_lu_add(lookup, key, key);
    mova_lu_release(&lookup, NULL);
    mova_lu_release(&other, NULL);
}

/* ---- arrays ---- */

static void *count_block(void *array)
{
    GB_count_items(array);
    return NULL;
}

static void block_is_read(int misused)
{
    GB_block array, other;
    GB_init(&array, sizeof number, 0);
    GB_init(&other, sizeof number, 0);
    let_in(count_block, misused ? &array : &other);
    for (int i = 0; i < 100; ++i)
        GB_append_after_last(&array, &number);
    GB_release(&array);
    GB_release(&other);
}

static void *make_block_empty(void *array)
{
    GB_make_empty(array);
    return NULL;
}

static void block_is_copied(int misused)
{
    GB_block array, other, copy;
    GB_init(&array, sizeof number, 0);
    GB_init(&other, sizeof number, 0);
    GB_append_after_last(&array, &number);
    let_in(make_block_empty, misused ? &array : &other);
    GB_copy(&copy, &array);
    GB_release(&array);
    GB_release(&other);
    GB_release(&copy);
}

static void *count_array(void *array)
{
    DA_nitems(array);
    return NULL;
}

static void array_is_read(int misused)
{
    DA_array *array = DA_create(sizeof number, 1), *other = DA_create(sizeof number, 1);
    let_in(count_array, misused ? array : other);
    DA_append(array, &number, 1);
    DA_release(array);
    DA_release(other);
}

static void *check_number(void *numbers)
{
    SA_check_number(numbers, 1);
    return NULL;
}

static void numbers_are_read(int misused)
{
    DA_array *numbers = DA_create(sizeof(int32_t), 1), *other = DA_create(sizeof(int32_t), 1);
    let_in(check_number, misused ? numbers : other);
    SA_add_number(numbers, 1);
    DA_release(numbers);
    DA_release(other);
}

static void *look_for_id(void *table)
{
    io_lut_look_ptr(table, 1);
    return NULL;
}

static void ids_are_read(int misused)
{
    static char bytes[2000];
    DA_array *table = io_lut_create(), *other = io_lut_create();
    let_in(look_for_id, misused ? table : other);
    for (int i = 0; i < 2000; ++i)
        io_lut_add(table, &bytes[i]);
    io_lut_release(&table);
    io_lut_release(&other);
}

/* ---- pools ---- */

static void *get_block(void *pool)
{
    return mb_get(pool, 1);
}

static void pool_is_read(int misused)
{
    mb_pool *pool = mb_create_pool(4096), *other = mb_create_pool(4096);
    let_in(get_block, misused ? pool : other);
    for (int i = 0; i < 200 && mb_alloc(pool, 8); ++i)
        ;
    mb_release_pool(&pool);
    mb_release_pool(&other);
}

static const misuse_cell cells[] = {
    {"EL is read", 10, "EL_append_after_last: another thread used the list meanwhile", list_is_read},
    {"EL is copied", 10, "EL_total_copy: another thread used the list meanwhile", list_is_copied},
    {"ES is read", 10, "ES_push: another thread used the stack meanwhile", stack_is_read},
    {"DBLL is read", 10, "DBLL_add_double: another thread used the list meanwhile", doubles_are_read},
    {"HSH is read", 10, "HSH_set_value: another thread used the table meanwhile", table_is_read},
    {"mova_lu is read", 10, "mova_lu_add: another thread used the lookup meanwhile", lookup_is_read},
    {"GB is read", 10, "GB_append_after_last: another thread used the array meanwhile", block_is_read},
    {"GB is copied", 10, "GB_copy: another thread used the array meanwhile", block_is_copied},
    {"DA is read", 10, "DA_append: another thread used the array meanwhile", array_is_read},
    {"SA is read", 10, "SA_add_number: another thread used the array meanwhile", numbers_are_read},
    {"io_lut is read", 10, "io_lut_add: another thread used the table meanwhile", ids_are_read},
    {"mb is read", 10, "mb_alloc: another thread used the pool meanwhile", pool_is_read},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
