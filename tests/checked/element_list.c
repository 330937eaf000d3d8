/* SPDX-License-Identifier: MIT */
#include <limits.h>

#include <mova/lists/element_list.h>
#include <mova/lists/generic_list.h>

#include "misuse.h"

static const int numbers[] = {1, 2, 3};

static EL_list *three_numbers(void)
{
    EL_list *list = EL_create(sizeof(int));
    for (int i = 0; i < 3; ++i)
        EL_append_after_last(list, &numbers[i]);
    return list;
}

static EL_list *ring_of_three(void)
{
    EL_list *ring = three_numbers();
    EL_set_closed(ring);
    return ring;
}

/* The list that a test is to edit, where it is to. */
static EL_list *edited;

static int accept(void *element)
{
    if (edited)
        EL_append_after_last(edited, element);
    return 1;
}

/* ---- containers ---- */

static void null_list(int misused)
{
    EL_list *list = three_numbers();
    EL_reverse(misused ? NULL : list);
    EL_release(&list);
}

static void null_position(int misused)
{
    EL_list *list = three_numbers();
    EL_advance(list, misused ? NULL : list->first, 1);
    EL_release(&list);
}

static void never_created(int misused)
{
    EL_list stray = {NULL, NULL, sizeof(int), 0, 0};
    EL_list *list = three_numbers();
    EL_append_after_last(misused ? &stray : list, &numbers[0]);
    EL_release(&list);
}

static void used_after_release(int misused)
{
    EL_list *list = three_numbers();
    EL_list *alias = list;
    if (!misused)
        EL_reverse(alias);
    EL_release(&list);
    if (misused)
        EL_reverse(alias);
}

static void released_twice(int misused)
{
    EL_list *list = three_numbers();
    EL_list *alias = list;
    EL_release(&list);
    if (misused)
        EL_release(&alias);
}

static void list_of_another_family(int misused)
{
    GL_list *other = GL_create();
    EL_list *list = three_numbers();
    void *wrong = other;
    EL_count_items(misused ? (EL_list *)wrong : list);
    EL_release(&list);
    GL_release(&other);
}

static void joined_to_itself(int misused)
{
    EL_list *list = three_numbers();
    EL_list *other = misused ? list : three_numbers();
    EL_append_list(list, &other);
    EL_release(&list);
}

static void joined_ring(int misused)
{
    EL_list *list = three_numbers();
    EL_list *other = misused ? ring_of_three() : three_numbers();
    EL_append_list(list, &other);
    EL_release(&list);
}

/* ---- positions ---- */

static void position_of_another_list(int misused)
{
    EL_list *list = three_numbers();
    EL_list *other = three_numbers();
    EL_insert_before(misused ? other : list, list->first, &numbers[0]);
    EL_release(&list);
    EL_release(&other);
}

static void removed_position(int misused)
{
    EL_list *list = three_numbers();
    EL_node *position = list->first;
    EL_remove_item(list, position);
    EL_get_index(list, misused ? position : list->first);
    EL_release(&list);
}

static void position_of_another_family(int misused)
{
    GL_list *other = GL_create();
    EL_list *list = three_numbers();
    void *wrong = GL_append_after_last(other, NULL);
    EL_insert_after(list, misused ? (EL_node *)wrong : list->last, &numbers[0]);
    EL_release(&list);
    GL_release(&other);
}

/* After a split the positions are of the part that they are in. */
static void position_of_the_end_part(int misused)
{
    EL_list *list = three_numbers();
    EL_node *position = list->last;
    EL_list *part = EL_remove_and_get_end_part(list, list->first->next);
    EL_remove_item(misused ? list : part, position);
    EL_release(&part);
    EL_release(&list);
}

static void position_after_joining(int misused)
{
    EL_list *list = three_numbers();
    EL_list *source = three_numbers();
    EL_list *other = three_numbers();
    EL_node *position = source->first;
    EL_append_list(list, &source);
    EL_remove_item(misused ? other : list, position);
    EL_release(&list);
    EL_release(&other);
}

static void rolled_to_another_ring(int misused)
{
    EL_list *ring = ring_of_three();
    EL_list *other = ring_of_three();
    EL_roll(ring, misused ? other->last : ring->last);
    EL_release(&ring);
    EL_release(&other);
}

/* ---- iterators and ranges ---- */

static void step(EL_iterator *iterator)
{
    EL_node *position;
    EL_next_position(iterator, &position);
}

static void rests_on_removed(int misused)
{
    EL_list *list = three_numbers();
    EL_iterator iterator = EL_all_items(list);
    step(&iterator);
    EL_remove_item(list, misused ? list->first->next : list->first);
    step(&iterator);
    EL_release(&list);
}

/* It would go round and round. */
static void end_of_a_ring_was_removed(int misused)
{
    EL_list *ring = ring_of_three();
    EL_iterator iterator = EL_all_items(ring);
    step(&iterator);
    EL_remove_item(ring, misused ? ring->last : ring->first);
    step(&iterator);
    EL_release(&ring);
}

static void end_of_another_list(int misused)
{
    EL_list *ring = ring_of_three();
    EL_list *other = ring_of_three();
    EL_iterator iterator = EL_all_items_inbetween(ring, ring->first, misused ? other->last : ring->last, 1);
    step(&iterator);
    EL_release(&ring);
    EL_release(&other);
}

/* On an open list an iterator stops at the list's end. */
static void ring_with_a_foreign_end(int misused)
{
    EL_list *ring = ring_of_three();
    EL_list *other = three_numbers();
    EL_iterator iterator = EL_all_items(misused ? ring : other);
    void *element;
    iterator.end = other->first;
    EL_next_item(&iterator, &element);
    EL_release(&ring);
    EL_release(&other);
}

static void no_end_on_a_ring(int misused)
{
    EL_list *ring = ring_of_three();
    EL_iterator iterator = EL_tested_items_inbetween(ring, ring->first, misused ? NULL : ring->last, 1, NULL);
    step(&iterator);
    EL_release(&ring);
}

static void outlived_its_list(int misused)
{
    EL_list *list = three_numbers();
    EL_iterator iterator = EL_all_items(list);
    int number;
    if (misused)
        EL_make_empty(list);
    EL_next_item_copy(&iterator, &number);
    EL_release(&list);
}

static void end_behind_begin(int misused)
{
    EL_list *list = three_numbers();
    if (misused)
        EL_count_items_inbetween(list, list->last, list->first);
    else
        EL_count_items_inbetween(list, list->first, list->last);
    EL_release(&list);
}

static void removed_range_of_another_list(int misused)
{
    EL_list *list = three_numbers();
    EL_list *other = three_numbers();
    EL_remove_items_inbetween(list, list->first, misused ? other->last : list->last);
    EL_release(&list);
    EL_release(&other);
}

/* ---- sizes, counts, callbacks, damage ---- */

static void joined_sizes_differ(int misused)
{
    EL_list *list = three_numbers();
    EL_list *other = EL_create(misused ? sizeof(short) : sizeof(int));
    EL_append_list(list, &other);
    EL_release(&list);
}

static void replaced_by_too_much(int misused)
{
    const long large[] = {0, 0};
    EL_list *list = three_numbers();
    EL_replace_item(list->first, large, misused ? sizeof large : sizeof(int));
    EL_release(&list);
}

static void replaced_by_its_neighbour_bytes(int misused)
{
    EL_list *list = three_numbers();
    char *own = EL_element(list->first);
    EL_replace_item(list->first, misused ? own - 2 : own, sizeof(int));
    EL_release(&list);
}

static void range_replaced_by_too_much(int misused)
{
    EL_list *list = three_numbers();
    EL_list *source = three_numbers();
    EL_replace_items_inbetween(list, list->first, list->last, source, misused ? 16 : sizeof(int));
    EL_release(&list);
    EL_release(&source);
}

static void too_many_items(int misused)
{
    EL_list *list = three_numbers();
    if (misused)
        list->count = INT_MAX;
    EL_insert_before_first(list, &numbers[0]);
    EL_release(&list);
}

static void edited_by_test(int misused)
{
    EL_list *list = three_numbers();
    EL_iterator iterator = EL_tested_items_inbetween(list, list->first, list->last, 1, accept);
    edited = misused ? list : NULL;
    step(&iterator);
    EL_release(&list);
}

static void damaged_count(int misused)
{
    EL_list *list = three_numbers();
    if (misused)
        --list->count;
    EL_release(&list);
}

static void damaged_ring(int misused)
{
    EL_list *ring = ring_of_three();
    if (misused)
        ring->closed = 0;
    EL_release(&ring);
}

static const misuse_cell cells[] = {
    {"null list", 1, "EL_reverse: the list is null", null_list},
    {"null position", 1, "EL_advance: the position is null", null_position},
    {"never created", 2, "EL_append_after_last: the list was never created", never_created},
    {"used after release", 2, "EL_reverse: the list was released", used_after_release},
    {"released twice", 2, "EL_release: the list was released", released_twice},
    {"list of another family", 2, "EL_count_items: the list is of another family", list_of_another_family},
    {"joined to itself", 2, "EL_append_list: the two lists are the same", joined_to_itself},
    {"joined ring", 2, "EL_append_list: the list is a ring", joined_ring},
    {"position of another list", 3, "EL_insert_before: the position is of another list", position_of_another_list},
    {"removed position", 3, "EL_get_index: the position was removed", removed_position},
    {"position of another family", 3, "EL_insert_after: the position is of another family", position_of_another_family},
    {"position of the end part", 3, "EL_remove_item: the position is of another list", position_of_the_end_part},
    {"position after joining", 3, "EL_remove_item: the position is of another list", position_after_joining},
    {"rolled to another ring", 3, "EL_roll: the position is of another list", rolled_to_another_ring},
    {"rests on removed", 4, "EL_next_position: the iterator rests on a removed position", rests_on_removed},
    {"end of a ring was removed", 4, "EL_next_position: the iterator's end was removed", end_of_a_ring_was_removed},
    {"outlived its list", 4, "EL_next_item_copy: the iterator rests on a removed position", outlived_its_list},
    {"end of another list", 5, "EL_all_items_inbetween: the position is of another list", end_of_another_list},
    {"ring with a foreign end", 4, "EL_next_item: the iterator's end is of another list", ring_with_a_foreign_end},
    {"no end on a ring", 5, "EL_tested_items_inbetween: the end is null on a ring", no_end_on_a_ring},
    {"end behind begin", 5, "EL_count_items_inbetween: the end does not lie ahead of the begin", end_behind_begin},
    {"removed range of another list", 5, "EL_remove_items_inbetween: the end is of another list",
     removed_range_of_another_list},
    {"joined sizes differ", 6, "EL_append_list: the elements have 4 bytes, not 2", joined_sizes_differ},
    {"replaced by too much", 6, "EL_replace_item: the elements have 4 bytes, not 16", replaced_by_too_much},
    {"replaced by its neighbour bytes", 6, "EL_replace_item: the element overlaps the one that it replaces",
     replaced_by_its_neighbour_bytes},
    {"range replaced by too much", 6, "EL_replace_items_inbetween: the elements have 4 bytes, not 16",
     range_replaced_by_too_much},
    {"too many items", 7, "EL_insert_before_first: the list would hold more than 2147483647 items", too_many_items},
    {"edited by test", 9, "EL_append_after_last: the list is calling back in EL_next_position", edited_by_test},
    {"damaged count", 13, "EL_release: the list breaks its invariant 1", damaged_count},
    {"damaged ring", 13, "EL_release: the list breaks its invariant 3", damaged_ring},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
