/* SPDX-License-Identifier: MIT */
#include <limits.h>

#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>

#include "misuse.h"

typedef struct record {
    struct record *prev, *next;
    int number;
} record;

static record records[4];

static SL_list *list_of(int from, int to)
{
    SL_list *list = SL_create();
    for (int i = from; i < to; ++i)
        SL_append_after_last(list, &records[i]);
    return list;
}

/* The list that a callback is to edit, where it is to. */
static SL_list *edited;

static void free_item(void **item)
{
    if (edited)
        SL_remove_item(edited, *item);
}

static int accept(void *item)
{
    if (edited)
        SL_reverse(edited);
    return item != NULL;
}

static void release(SL_list *list)
{
    edited = NULL;
    SL_total_release(&list, free_item);
}

/* ---- containers ---- */

static void null_list(int misused)
{
    SL_list *list = list_of(0, 3);
    SL_reverse(misused ? NULL : list);
    release(list);
}

static void null_item(int misused)
{
    SL_list *list = list_of(0, 3);
    SL_append_after_last(list, misused ? NULL : &records[3]);
    release(list);
}

static void null_position(int misused)
{
    SL_list *list = list_of(0, 3);
    SL_insert_before(list, misused ? NULL : &records[0], &records[3]);
    release(list);
}

static void never_created(int misused)
{
    SL_list stray = {NULL, NULL, 0, 0};
    SL_list *list = list_of(0, 3);
    SL_append_after_last(misused ? &stray : list, &records[3]);
    release(list);
}

static void used_after_release(int misused)
{
    SL_list *list = list_of(0, 3);
    if (!misused)
        SL_count_items(list);
    release(list);
    if (misused)
        SL_count_items(list);
}

static void released_twice(int misused)
{
    SL_list *list = list_of(0, 3);
    release(list);
    if (misused)
        release(list);
}

static void list_of_another_family(int misused)
{
    GL_list *other = GL_create();
    SL_list *list = list_of(0, 3);
    void *wrong = other;
    SL_count_items(misused ? (SL_list *)wrong : list);
    release(list);
    GL_release(&other);
}

static void joined_to_itself(int misused)
{
    SL_list *list = list_of(0, 2);
    SL_list *other = misused ? list : list_of(2, 3);
    SL_append_list(list, &other);
    release(list);
}

static void joined_ring(int misused)
{
    SL_list *list = list_of(0, 2);
    SL_list *other = list_of(2, 3);
    if (misused)
        SL_set_closed(other);
    SL_append_list(list, &other);
    release(list);
}

/* ---- items ---- */

static void item_of_another_list(int misused)
{
    SL_list *list = list_of(0, 2);
    SL_list *other = list_of(2, 3);
    SL_remove_item(misused ? other : list, &records[0]);
    release(list);
    release(other);
}

static void removed_item(int misused)
{
    SL_list *list = list_of(0, 3);
    SL_remove_item(list, &records[0]);
    SL_get_index(list, misused ? &records[0] : &records[1]);
    release(list);
}

static void item_removed_at_index(int misused)
{
    SL_list *list = list_of(0, 3);
    SL_remove_at_index(list, 1);
    SL_advance(list, misused ? &records[1] : &records[2], 1);
    release(list);
}

static void item_of_an_emptied_list(int misused)
{
    SL_list *list = list_of(0, 3);
    if (misused)
        SL_make_empty(list, free_item);
    SL_remove_item(list, &records[0]);
    release(list);
}

static void item_never_linked(int misused)
{
    SL_list *list = list_of(0, 3);
    SL_insert_after(list, misused ? &records[3] : &records[2], &(record){NULL, NULL, 0});
    SL_remove_at_index(list, 3);
    release(list);
}

static void linked_twice(int misused)
{
    SL_list *list = list_of(0, 3);
    SL_append_after_last(list, misused ? &records[1] : &records[3]);
    release(list);
}

static void linked_into_two_lists(int misused)
{
    SL_list *list = list_of(0, 3);
    SL_list *other = SL_create();
    SL_insert_unique(other, misused ? &records[1] : &records[3]);
    release(list);
    release(other);
}

static void rolled_to_another_ring(int misused)
{
    SL_list *ring = list_of(0, 2);
    SL_list *other = list_of(2, 4);
    SL_set_closed(ring);
    SL_set_closed(other);
    SL_roll(ring, misused ? &records[3] : &records[1]);
    release(ring);
    release(other);
}

/* ---- iterators and walks ---- */

static void null_iterator(int misused)
{
    void *item;
    SL_list *list = list_of(0, 3);
    SL_iterator iterator = SL_all_items(list);
    SL_next_item(misused ? NULL : &iterator, &item);
    release(list);
}

/* An open list's iterator stops at the list's end; a ring has none. */
static void end_of_a_ring_was_removed(int misused)
{
    void *item;
    SL_list *list = list_of(0, 3);
    SL_iterator iterator = SL_all_items(list);
    if (misused)
        SL_set_closed(list);
    SL_next_item(&iterator, &item);
    SL_remove_item(list, &records[2]);
    SL_next_item(&iterator, &item);
    release(list);
}

static void ring_with_a_foreign_end(int misused)
{
    void *item;
    SL_list *list = list_of(0, 2);
    SL_list *other = list_of(2, 3);
    SL_iterator iterator = SL_all_items_inbetween(list, &records[0], &records[2], 1);
    if (misused)
        SL_set_closed(list);
    SL_next_item(&iterator, &item);
    release(list);
    release(other);
}

static void endless_search(int misused)
{
    SL_list *list = list_of(0, 3);
    if (misused)
        SL_set_closed(list);
    SL_insert_unique(list, &records[3]);
    release(list);
}

/* ---- counts, callbacks, damage ---- */

static void too_many_items(int misused)
{
    SL_list *list = list_of(0, 3);
    if (misused)
        list->count = INT_MAX;
    SL_append_after_last(list, &records[3]);
    release(list);
}

static void edited_by_free(int misused)
{
    SL_list *list = list_of(0, 3);
    edited = misused ? list : NULL;
    SL_make_empty(list, free_item);
    release(list);
}

static void edited_by_test(int misused)
{
    void *item;
    SL_list *list = list_of(0, 3);
    SL_iterator iterator = SL_tested_items(list, accept);
    edited = misused ? list : NULL;
    SL_next_item(&iterator, &item);
    release(list);
}

static void *reverse_it(void *list)
{
    SL_reverse(list);
    return NULL;
}

static void *copy_while_another_edits(void *item)
{
    static record copies[3];
    static int count;
    if (edited)
        in_a_thread(reverse_it, edited);
    edited = NULL;
    (void)item;
    return &copies[count++];
}

static void copied_and_edited(int misused)
{
    SL_list *list = list_of(0, 3), *other = list_of(3, 4), *copy;
    in_a_thread(do_nothing, NULL);
    edited = misused ? list : other;
    copy = SL_total_copy(list, copy_while_another_edits);
    release(copy);
    release(list);
    release(other);
}

static void damaged_links(int misused)
{
    SL_list *list = list_of(0, 3);
    if (misused)
        records[1].prev = NULL;
    release(list);
}

static const misuse_cell cells[] = {
    {"null list", 1, "SL_reverse: the list is null", null_list},
    {"null item", 1, "SL_append_after_last: the item is null", null_item},
    {"null position", 1, "SL_insert_before: the item is null", null_position},
    {"null iterator", 1, "SL_next_item: the iterator is null", null_iterator},
    {"never created", 2, "SL_append_after_last: the list was never created", never_created},
    {"used after release", 2, "SL_count_items: the list was released", used_after_release},
    {"released twice", 2, "SL_total_release: the list was released", released_twice},
    {"list of another family", 2, "SL_count_items: the list is of another family", list_of_another_family},
    {"joined to itself", 2, "SL_append_list: the two lists are the same", joined_to_itself},
    {"joined ring", 2, "SL_append_list: the list is a ring", joined_ring},
    {"item of another list", 3, "SL_remove_item: the item is of another list", item_of_another_list},
    {"removed item", 3, "SL_get_index: the item was removed", removed_item},
    {"item removed at index", 3, "SL_advance: the item was removed", item_removed_at_index},
    {"item of an emptied list", 3, "SL_remove_item: the item was removed", item_of_an_emptied_list},
    {"item never linked", 3, "SL_insert_after: the item is on no list", item_never_linked},
    {"linked twice", 3, "SL_append_after_last: the item is on a list already", linked_twice},
    {"linked into two lists", 3, "SL_insert_unique: the item is on a list already", linked_into_two_lists},
    {"rolled to another ring", 3, "SL_roll: the item is of another list", rolled_to_another_ring},
    {"end of a ring was removed", 4, "SL_next_item: the iterator's end was removed", end_of_a_ring_was_removed},
    {"ring with a foreign end", 4, "SL_next_item: the iterator's end is of another list", ring_with_a_foreign_end},
    {"endless search", 5, "SL_insert_unique: the list is a ring", endless_search},
    {"too many items", 7, "SL_append_after_last: the list would hold more than 2147483647 items", too_many_items},
    {"edited by free", 9, "SL_remove_item: the list is calling back in SL_make_empty", edited_by_free},
    {"edited by test", 9, "SL_reverse: the list is calling back in SL_next_item", edited_by_test},
    {"copied and edited", 10, "SL_total_copy: another thread used the list meanwhile", copied_and_edited},
    {"damaged links", 13, "SL_total_release: the list breaks its invariant 4", damaged_links},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
