/* SPDX-License-Identifier: MIT */
#include <limits.h>

#include <mova/lists/double_list.h>
#include <mova/lists/generic_list.h>

#include "misuse.h"

static DBLL_list *three_numbers(void)
{
    DBLL_list *list = DBLL_create_with_two(1, 2);
    DBLL_add_double(list, 3);
    return list;
}

static void null_list(int misused)
{
    DBLL_list *list = three_numbers();
    DBLL_sort(misused ? NULL : list);
    DBLL_release(&list);
}

static void null_position(int misused)
{
    DBLL_list *list = three_numbers();
    DBLL_replace_double(misused ? NULL : list->first, 4);
    DBLL_release(&list);
}

static void never_created(int misused)
{
    DBLL_list stray = {NULL, NULL, sizeof(double), 0, 0};
    DBLL_list *list = three_numbers();
    DBLL_add_double(misused ? &stray : list, 4);
    DBLL_release(&list);
}

static void used_after_release(int misused)
{
    DBLL_list *list = three_numbers();
    DBLL_list *alias = list;
    if (!misused)
        DBLL_begin_value(alias);
    DBLL_release(&list);
    if (misused)
        DBLL_begin_value(alias);
}

static void released_twice(int misused)
{
    DBLL_list *list = three_numbers();
    DBLL_list *alias = list;
    DBLL_release(&list);
    if (misused)
        DBLL_release(&alias);
}

static void list_of_another_family(int misused)
{
    GL_list *other = GL_create();
    DBLL_list *list = three_numbers();
    void *wrong = other;
    DBLL_size(misused ? (DBLL_list *)wrong : list);
    DBLL_release(&list);
    GL_release(&other);
}

static void position_of_another_list(int misused)
{
    DBLL_list *list = three_numbers();
    DBLL_list *other = three_numbers();
    DBLL_insert_before(misused ? other : list, list->first, 0);
    DBLL_release(&list);
    DBLL_release(&other);
}

static void removed_position(int misused)
{
    DBLL_list *list = three_numbers();
    EL_node *position = list->first;
    DBLL_remove_double(list, position);
    if (misused)
        DBLL_advance(list, position, 1);
    DBLL_release(&list);
}

static void rolled_to_another_ring(int misused)
{
    DBLL_list *ring = three_numbers();
    DBLL_list *other = three_numbers();
    DBLL_set_closed(ring);
    DBLL_roll(ring, misused ? other->last : ring->last);
    DBLL_release(&ring);
    DBLL_release(&other);
}

static void rests_on_removed(int misused)
{
    double value;
    DBLL_list *list = three_numbers();
    EL_iterator iterator = DBLL_all_doubles(list);
    DBLL_next_double(&iterator, &value);
    DBLL_remove_at_index(list, misused ? 1 : 0);
    DBLL_next_double(&iterator, &value);
    DBLL_release(&list);
}

/* On an open list the iterator stops at the list's end. */
static void end_was_removed(int misused)
{
    EL_node *position;
    DBLL_list *list = three_numbers();
    EL_iterator iterator = DBLL_all_doubles(list);
    if (misused)
        DBLL_set_closed(list);
    DBLL_next_position(&iterator, &position);
    DBLL_remove_at_index(list, 2);
    DBLL_next_position(&iterator, &position);
    DBLL_release(&list);
}

static void no_end_on_a_ring(int misused)
{
    DBLL_list *ring = three_numbers();
    DBLL_set_closed(ring);
    DBLL_all_doubles_inbetween(ring, ring->first, misused ? NULL : ring->last);
    DBLL_release(&ring);
}

static void end_behind_begin(int misused)
{
    DBLL_list *list = three_numbers();
    DBLL_list *copy = NULL;
    if (misused)
        copy = DBLL_copy_inbetween(list, list->last, list->first);
    else
        copy = DBLL_copy_inbetween(list, list->first, list->last);
    DBLL_release(&copy);
    DBLL_release(&list);
}

static void elements_are_no_doubles(int misused)
{
    EL_list *list = EL_create(misused ? sizeof(float) : sizeof(double));
    DBLL_add_double(list, 1);
    EL_release(&list);
}

static void source_has_no_doubles(int misused)
{
    DBLL_list *list = three_numbers();
    EL_list *source = misused ? EL_create(sizeof(float)) : three_numbers();
    DBLL_replace_doubles_inbetween(list, list->first, list->last, source);
    EL_release(&source);
    DBLL_release(&list);
}

static void element_is_no_double(int misused)
{
    const double value = 1;
    EL_list *list = EL_create(misused ? sizeof(float) : sizeof(double));
    DBLL_replace_double(EL_append_after_last(list, &value), value);
    EL_release(&list);
}

static void too_many_items(int misused)
{
    DBLL_list *list = three_numbers();
    if (misused)
        list->count = INT_MAX;
    DBLL_add_double(list, 4);
    DBLL_release(&list);
}

static void damaged_count(int misused)
{
    DBLL_list *list = three_numbers();
    if (misused)
        ++list->count;
    DBLL_release(&list);
}

static const misuse_cell cells[] = {
    {"null list", 1, "DBLL_sort: the list is null", null_list},
    {"null position", 1, "DBLL_replace_double: the position is null", null_position},
    {"never created", 2, "DBLL_add_double: the list was never created", never_created},
    {"used after release", 2, "DBLL_begin_value: the list was released", used_after_release},
    {"released twice", 2, "DBLL_release: the list was released", released_twice},
    {"list of another family", 2, "DBLL_size: the list is of another family", list_of_another_family},
    {"position of another list", 3, "DBLL_insert_before: the position is of another list", position_of_another_list},
    {"removed position", 3, "DBLL_advance: the position was removed", removed_position},
    {"rolled to another ring", 3, "DBLL_roll: the position is of another list", rolled_to_another_ring},
    {"rests on removed", 4, "DBLL_next_double: the iterator rests on a removed position", rests_on_removed},
    {"end was removed", 4, "DBLL_next_position: the iterator's end was removed", end_was_removed},
    {"no end on a ring", 5, "DBLL_all_doubles_inbetween: the end is null on a ring", no_end_on_a_ring},
    {"end behind begin", 5, "DBLL_copy_inbetween: the end does not lie ahead of the begin", end_behind_begin},
    {"elements are no doubles", 6, "DBLL_add_double: the elements have 4 bytes, not 8", elements_are_no_doubles},
    {"source has no doubles", 6, "DBLL_replace_doubles_inbetween: the elements have 4 bytes, not 8",
     source_has_no_doubles},
    {"element is no double", 6, "DBLL_replace_double: the elements have 4 bytes, not 8", element_is_no_double},
    {"too many items", 7, "DBLL_add_double: the list would hold more than 2147483647 items", too_many_items},
    {"damaged count", 13, "DBLL_release: the list breaks its invariant 1", damaged_count},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
