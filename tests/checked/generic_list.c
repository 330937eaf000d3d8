/* SPDX-License-Identifier: MIT */
#include <limits.h>
#include <stdint.h>
#include <stdlib.h>

#include <mova/lists/element_list.h>
#include <mova/lists/generic_list.h>

#include "misuse.h"

static int items[3];

static GL_list *three_items(void)
{
    GL_list *list = GL_create();
    for (int i = 0; i < 3; ++i)
        GL_append_after_last(list, &items[i]);
    return list;
}

/* The list that a callback is to edit, where it is to. */
static GL_list *edited;

static void free_item(void **item)
{
    *item = NULL;
    if (edited)
        GL_append_after_last(edited, &items[0]);
}

static void release_in_callback(void **item)
{
    GL_list *list = edited;
    *item = NULL;
    if (list)
        GL_release(&list);
}

static void *copy_item(void *item)
{
    if (edited)
        GL_make_empty(edited);
    return item;
}

static int accept(void *item)
{
    if (edited)
        GL_remove_item(edited, edited->last);
    return item != NULL;
}

/* ---- containers ---- */

static void null_address_of_position(int misused)
{
    GL_list *list = three_items();
    GL_node *position;
    GL_find_item(list, &items[1], misused ? NULL : &position);
    GL_release(&list);
}

static void null_list(int misused)
{
    GL_list *list = three_items();
    GL_count_items(misused ? NULL : list);
    GL_release(&list);
}

static void null_position(int misused)
{
    GL_list *list = three_items();
    GL_insert_before(list, misused ? NULL : list->first, &items[0]);
    GL_release(&list);
}

static void never_created(int misused)
{
    GL_list stray = {NULL, NULL, 0};
    GL_list *list = three_items();
    GL_append_after_last(misused ? &stray : list, &items[0]);
    GL_release(&list);
}

static void position_as_list(int misused)
{
    GL_list *list = three_items();
    void *wrong = list->first;
    GL_count_items(misused ? (GL_list *)wrong : list);
    GL_release(&list);
}

static void used_after_release(int misused)
{
    GL_list *list = three_items();
    GL_list *alias = list;
    if (!misused)
        GL_append_after_last(alias, &items[0]);
    GL_release(&list);
    if (misused)
        GL_append_after_last(alias, &items[0]);
}

static void released_twice(int misused)
{
    GL_list *list = three_items();
    GL_list *alias = list;
    GL_release(&list);
    if (misused)
        GL_release(&alias);
}

static void joined_list_used(int misused)
{
    GL_list *target = three_items();
    GL_list *source = three_items();
    GL_list *alias = source;
    GL_append_list(target, &source);
    GL_count_items(misused ? alias : target);
    GL_release(&target);
}

static void list_of_another_family(int misused)
{
    EL_list *other = EL_create(sizeof(int));
    GL_list *list = three_items();
    void *wrong = other;
    GL_count_items(misused ? (GL_list *)wrong : list);
    EL_release(&other);
    GL_release(&list);
}

static void joined_to_itself(int misused)
{
    GL_list *list = three_items();
    GL_list *other = misused ? list : three_items();
    GL_append_list(list, &other);
    GL_release(&list);
}

/* ---- positions ---- */

static void position_of_another_list(int misused)
{
    GL_list *list = three_items();
    GL_list *other = three_items();
    GL_remove_item(misused ? other : list, list->first);
    GL_release(&list);
    GL_release(&other);
}

static void removed_position(int misused)
{
    GL_list *list = three_items();
    GL_node *position = list->first;
    GL_remove_item(list, position);
    if (misused)
        GL_move_before_first(list, position);
    GL_release(&list);
}

static void position_of_emptied_list(int misused)
{
    GL_list *list = three_items();
    GL_node *position = list->first;
    void *item = &items[1];
    if (misused)
        GL_make_empty(list);
    GL_swap_item(position, &item);
    GL_release(&list);
}

static void position_of_another_family(int misused)
{
    EL_list *other = EL_create(sizeof(int));
    GL_list *list = three_items();
    void *wrong = EL_append_after_last(other, &items[0]);
    GL_insert_after(list, misused ? (GL_node *)wrong : list->last, &items[0]);
    EL_release(&other);
    GL_release(&list);
}

static void list_as_position(int misused)
{
    GL_list *list = three_items();
    void *wrong = list;
    GL_insert_after(list, misused ? (GL_node *)wrong : list->last, &items[0]);
    GL_release(&list);
}

/* ---- iterators ---- */

static void step(GL_iterator *iterator)
{
    void *item;
    GL_next_item(iterator, &item);
}

static void rests_on_removed(int misused)
{
    GL_list *list = three_items();
    GL_iterator iterator = GL_all_items(list);
    step(&iterator);
    GL_remove_item(list, misused ? list->first->next : list->first);
    step(&iterator);
    GL_release(&list);
}

static void end_was_removed(int misused)
{
    GL_list *list = three_items();
    GL_iterator iterator = GL_all_items(list);
    GL_node *position;
    GL_next_position(&iterator, &position);
    GL_remove_item(list, misused ? list->last : list->first);
    GL_next_position(&iterator, &position);
    GL_release(&list);
}

static void end_of_another_list(int misused)
{
    GL_list *list = three_items();
    GL_list *other = three_items();
    GL_iterator iterator = GL_all_items_inbetween(list, list->first, misused ? other->last : list->last, 1);
    step(&iterator);
    GL_release(&list);
    GL_release(&other);
}

static void outlived_its_list(int misused)
{
    GL_list *list = three_items();
    GL_iterator iterator = GL_all_items(list);
    if (misused)
        GL_release(&list);
    step(&iterator);
    GL_release(&list);
}

static void null_iterator(int misused)
{
    GL_list *list = three_items();
    GL_iterator iterator = GL_all_items(list);
    step(misused ? NULL : &iterator);
    GL_release(&list);
}

static void iterator_from_removed(int misused)
{
    GL_list *list = three_items();
    GL_node *position = list->first;
    GL_iterator iterator;
    if (misused)
        GL_remove_item(list, position);
    iterator = GL_all_items_inbetween(list, position, list->last, 1);
    step(&iterator);
    GL_release(&list);
}

/* ---- counts, callbacks, damage ---- */

static void too_many_items(int misused)
{
    GL_list *list = three_items();
    if (misused)
        list->count = INT_MAX;
    GL_insert_before_first(list, &items[0]);
    GL_release(&list);
}

static void edited_by_free(int misused)
{
    GL_list *list = three_items();
    edited = misused ? list : NULL;
    GL_total_make_empty(list, free_item);
    GL_release(&list);
}

static void released_by_free(int misused)
{
    GL_list *list = three_items();
    edited = misused ? list : NULL;
    GL_total_release(&list, release_in_callback);
}

static void emptied_by_copy(int misused)
{
    GL_list *list = three_items();
    GL_list *copy;
    edited = misused ? list : NULL;
    copy = GL_total_copy(list, copy_item);
    GL_release(&copy);
    GL_release(&list);
}

static void *append_one(void *list)
{
    GL_append_after_last(list, &items[0]);
    return NULL;
}

static void *copy_while_another_edits(void *item)
{
    if (edited)
        in_a_thread(append_one, edited);
    edited = NULL;
    return item;
}

static void copied_and_edited(int misused)
{
    GL_list *list = three_items(), *other = three_items();
    GL_list *copy;
    in_a_thread(do_nothing, NULL);
    edited = misused ? list : other;
    copy = GL_total_copy(list, copy_while_another_edits);
    GL_release(&copy);
    GL_release(&list);
    GL_release(&other);
}

static void *count(void *list)
{
    return GL_count_items(list) == 3 ? list : NULL;
}

static void *copy_while_another_reads(void *item)
{
    in_a_thread(count, edited);
    return item;
}

/* That is no misuse. */
static void copied_and_counted(int misused)
{
    GL_list *list = three_items();
    GL_list *copy;
    in_a_thread(do_nothing, NULL);
    edited = list;
    copy = GL_total_copy(list, copy_while_another_reads);
    GL_release(&copy);
    if (misused) {
        copy = GL_total_copy(list, copy_while_another_edits);
        GL_release(&copy);
    }
    GL_release(&list);
}

static void edited_by_test(int misused)
{
    GL_list *list = three_items();
    GL_iterator iterator = GL_tested_items(list, accept);
    edited = misused ? list : NULL;
    step(&iterator);
    GL_release(&list);
}

static void damaged_count(int misused)
{
    GL_list *list = three_items();
    if (misused)
        list->count = 2;
    GL_release(&list);
}

static void damaged_link(int misused)
{
    GL_list *list = three_items();
    if (misused)
        list->first->next->prev = NULL;
    GL_release(&list);
}

static void link_to_nowhere(int misused)
{
    GL_list *list = three_items();
    if (misused)
        list->first->next->next = (GL_node *)(uintptr_t)0x1000;
    GL_release(&list);
}

static const misuse_cell cells[] = {
    {"null list", 1, "GL_count_items: the list is null", null_list},
    {"null position", 1, "GL_insert_before: the position is null", null_position},
    {"null iterator", 1, "GL_next_item: the iterator is null", null_iterator},
    {"null address of position", 1, "GL_find_item: the address of the position is null", null_address_of_position},
    {"never created", 2, "GL_append_after_last: the list was never created", never_created},
    {"position as list", 2, "GL_count_items: the list was never created", position_as_list},
    {"used after release", 2, "GL_append_after_last: the list was released", used_after_release},
    {"released twice", 2, "GL_release: the list was released", released_twice},
    {"joined list used", 2, "GL_count_items: the list was released", joined_list_used},
    {"list of another family", 2, "GL_count_items: the list is of another family", list_of_another_family},
    {"joined to itself", 2, "GL_append_list: the two lists are the same", joined_to_itself},
    {"position of another list", 3, "GL_remove_item: the position is of another list", position_of_another_list},
    {"removed position", 3, "GL_move_before_first: the position was removed", removed_position},
    {"position of emptied list", 3, "GL_swap_item: the position was removed", position_of_emptied_list},
    {"position of another family", 3, "GL_insert_after: the position is of another family", position_of_another_family},
    {"list as position", 3, "GL_insert_after: the position is a list", list_as_position},
    {"rests on removed", 4, "GL_next_item: the iterator rests on a removed position", rests_on_removed},
    {"end was removed", 4, "GL_next_position: the iterator's end was removed", end_was_removed},
    {"end of another list", 4, "GL_next_item: the iterator's end is of another list", end_of_another_list},
    {"outlived its list", 4, "GL_next_item: the iterator rests on a removed position", outlived_its_list},
    {"iterator from removed", 4, "GL_all_items_inbetween: the position was removed", iterator_from_removed},
    {"too many items", 7, "GL_insert_before_first: the list would hold more than 2147483647 items", too_many_items},
    {"edited by free", 9, "GL_append_after_last: the list is calling back in GL_total_make_empty", edited_by_free},
    {"released by free", 9, "GL_release: the list is calling back in GL_total_release", released_by_free},
    {"emptied by copy", 9, "GL_make_empty: the list is calling back in GL_total_copy", emptied_by_copy},
    {"edited by test", 9, "GL_remove_item: the list is calling back in GL_next_item", edited_by_test},
    {"copied and edited", 10, "GL_total_copy: another thread used the list meanwhile", copied_and_edited},
    {"copied and counted", 10, "GL_total_copy: another thread used the list meanwhile", copied_and_counted},
    {"damaged count", 13, "GL_release: the list breaks its invariant 1", damaged_count},
    {"damaged link", 13, "GL_release: the list breaks its invariant 4", damaged_link},
    {"link to nowhere", 13, "GL_release: the list breaks its invariant 4", link_to_nowhere},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
