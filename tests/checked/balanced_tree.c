/* SPDX-License-Identifier: MIT */
#include <limits.h>
#include <stdint.h>

#define MOVA_NO_SHORT_NAMES

#include <mova/lists/generic_list.h>
#include <mova/tree/balanced_tree.h>

#include "misuse.h"

static int items[5];

/* The tree that a callback is to look at, where it is to. */
static GT_tree *touched;

static int32_t by_number(void *a, void *b)
{
    const int x = *(int *)a, y = *(int *)b;
    if (touched)
        GT_count_items(touched);
    return (x > y) - (x < y);
}

/* Never equal: an item goes before itself. */
static int32_t always_before(void *a, void *b)
{
    return by_number(a, b) ? by_number(a, b) : -1;
}

static int32_t always_after(void *a, void *b)
{
    return by_number(a, b) ? by_number(a, b) : 1;
}

static int32_t accept(void *item)
{
    if (touched)
        GT_insert_item(touched, item);
    return 1;
}

static GT_tree *filled(GT_tree *tree)
{
    for (int i = 0; i < 5; ++i) {
        items[i] = 10 * (i + 1);
        GT_insert_item(tree, &items[i]);
    }
    return tree;
}

static GT_tree *five_items(void)
{
    return filled(GT_create_with_dupl_not_allowed(by_number));
}

/* ---- containers ---- */

static void null_tree(int misused)
{
    GT_tree *tree = five_items();
    GT_count_items(misused ? NULL : tree);
    GT_release(&tree);
}

static void null_position(int misused)
{
    GT_tree *tree = five_items();
    GT_remove_item(tree, misused ? NULL : tree->first);
    GT_release(&tree);
}

static void null_iterator(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_iter *iterator = GT_all_items(tree);
    GT_tree_iter *none = NULL;
    GT_end_iterator(misused ? none : iterator);
    GT_release(&tree);
}

static void null_address(int misused)
{
    GT_tree *tree = five_items();
    GT_release(misused ? NULL : &tree);
}

static void position_as_tree(int misused)
{
    GT_tree *tree = five_items();
    void *wrong = tree->first;
    GT_insert_item(misused ? (GT_tree *)wrong : tree, &items[0]);
    GT_release(&tree);
}

static void never_created(int misused)
{
    GL_list iterators = {NULL, NULL, 0};
    GT_tree stray = {NULL, NULL, NULL, by_number, 1, &iterators};
    GT_tree *tree = five_items();
    GT_count_items(misused ? &stray : tree);
    GT_release(&tree);
}

static void used_after_release(int misused)
{
    GT_tree *tree = five_items();
    GT_tree *alias = tree;
    GT_tree_item *position;
    if (misused)
        GT_release(&tree);
    GT_search_item(alias, &items[1], &position);
    GT_release(&tree);
}

static void released_twice(int misused)
{
    GT_tree *tree = five_items();
    GT_tree *alias = tree;
    GT_release(&tree);
    if (misused)
        GT_release(&alias);
}

static void tree_of_another_family(int misused)
{
    GL_list *list = GL_create();
    GT_tree *tree = five_items();
    void *wrong = tree;
    GL_count_items(misused ? (GL_list *)wrong : list);
    GT_release(&tree);
    GL_release(&list);
}

/* ---- positions ---- */

static void position_of_another_tree(int misused)
{
    GT_tree *tree = five_items();
    GT_tree *other = five_items();
    GT_remove_item(misused ? other : tree, tree->first);
    GT_release(&tree);
    GT_release(&other);
}

static void removed_position(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *position = tree->first;
    GT_remove_item(tree, position);
    GT_remove_item_global(tree, misused ? position : tree->first);
    GT_release(&tree);
}

static void position_of_another_family(int misused)
{
    GL_list *list = GL_create();
    GT_tree *tree = five_items();
    void *wrong = GL_append_after_last(list, &items[0]);
    GT_remove_item(tree, misused ? (GT_tree_item *)wrong : tree->first);
    GT_release(&tree);
    GL_release(&list);
}

static void iterator_as_position(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_iter *iterator = GT_all_items(tree);
    void *wrong = iterator;
    GT_remove_item(tree, misused ? (GT_tree_item *)wrong : tree->first);
    GT_end_iterator(iterator);
    GT_release(&tree);
}

static void node_freed_twice(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *node = tree->first;
    GT_tree_item *alone = GT_allocate_node(&items[0]);
    GT_remove_item(tree, node);
    GT_free_node(misused ? node : alone);
    GT_release(&tree);
}

/* ---- iterators ---- */

static void stepped_after_its_end(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_iter *iterator = GT_all_items(tree);
    void *item;
    while (GT_next_item(iterator, &item))
        continue;
    if (misused)
        GT_next_item(iterator, &item);
    GT_release(&tree);
}

static void ended_twice(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_iter *iterator = GT_all_items(tree);
    GT_end_iterator(iterator);
    if (misused)
        GT_end_iterator(iterator);
    GT_release(&tree);
}

static void outlived_its_tree(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_iter *iterator = GT_all_items(tree);
    GT_tree_item *position;
    if (misused)
        GT_release(&tree);
    GT_next_position(iterator, &position);
    GT_end_iterator(iterator);
    GT_release(&tree);
}

/* The tree is 20 (10, 40 (30, 50)). Where 40 is removed, the record of 30 takes its place, and what rests on 30 is left on
   the released one. */
static GT_tree_iter *stepped(GT_tree *tree, int steps)
{
    GT_tree_iter *iterator = GT_all_items(tree);
    void *item;
    for (int i = 0; i < steps; ++i)
        GT_next_item(iterator, &item);
    return iterator;
}

/* Its cursor was the predecessor of a node with two children. */
static void rests_on_a_predecessor(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *inner = tree->root->right;
    GT_tree_iter *iterator = stepped(tree, misused ? 2 : 1);
    void *item;
    GT_remove_item(tree, inner);
    GT_next_item(iterator, &item);
    GT_end_iterator(iterator);
    GT_release(&tree);
}

static void current_on_a_predecessor(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *inner = tree->root->right;
    GT_tree_iter *iterator = stepped(tree, misused ? 3 : 2);
    void *item;
    GT_remove_item(tree, inner);
    GT_current_item(iterator, &item);
    GT_end_iterator(iterator);
    GT_release(&tree);
}

static void copied_from_a_predecessor(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *inner = tree->root->right;
    GT_tree_iter *iterator = stepped(tree, misused ? 3 : 2), *copy;
    GT_remove_item(tree, inner);
    copy = GT_from_current(iterator);
    GT_end_iterator(copy);
    GT_end_iterator(iterator);
    GT_release(&tree);
}

static void next_copied_from_a_predecessor(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *inner = tree->root->right;
    GT_tree_iter *iterator = stepped(tree, misused ? 2 : 1), *copy;
    GT_remove_item(tree, inner);
    copy = GT_from_next(iterator);
    GT_end_iterator(copy);
    GT_end_iterator(iterator);
    GT_release(&tree);
}

static void current_of_a_fresh_one(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_iter *iterator = stepped(tree, misused ? 0 : 1);
    void *item;
    GT_current_item(iterator, &item);
    GT_end_iterator(iterator);
    GT_release(&tree);
}

/* ---- comparisons and keys ---- */

static void key_was_changed(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *position = tree->first;
    if (misused)
        items[0] = 99;
    GT_remove_item(tree, position);
    GT_release(&tree);
}

static int calls_left = INT_MAX;

static int32_t forgetful(void *a, void *b)
{
    return calls_left-- > 0 ? by_number(a, b) : -1;
}

static void changes_its_mind(int misused)
{
    GT_tree *tree = filled(GT_create_with_dupl_not_allowed(forgetful));
    calls_left = misused ? 3 : INT_MAX;
    GT_find_and_remove_item(tree, &items[4]);
    calls_left = INT_MAX;
    GT_release(&tree);
}

static void goes_before_itself(int misused)
{
    GT_tree *tree = filled(GT_create_with_dupl_allowed(misused ? always_before : by_number));
    GT_insert_item(tree, &items[2]);
    GT_release(&tree);
}

static void goes_after_itself(int misused)
{
    GT_tree *tree = filled(GT_create_with_dupl_not_allowed(misused ? always_after : by_number));
    GT_insert_item(tree, &items[2]);
    GT_release(&tree);
}

/* Answers with a truth. */
static int32_t is_before(void *a, void *b)
{
    return by_number(a, b) < 0;
}

static void asked_both_ways(int misused)
{
    GT_tree *tree = filled(GT_create_with_dupl_allowed(misused ? is_before : by_number));
    GT_release(&tree);
}

static void changed_neighbour(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *position;
    if (misused)
        items[2] = 99;
    GT_search_item(tree, &items[3], &position);
    GT_release(&tree);
}

static void equal_neighbour(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *position;
    if (misused)
        items[2] = items[3];
    GT_find_item(tree, &items[3], &position);
    GT_release(&tree);
}

/* ---- callbacks, damage ---- */

static void read_by_a_comparison(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *position;
    touched = misused ? tree : NULL;
    GT_find_item(tree, &items[0], &position);
    GT_release(&tree);
}

static void another_edited_by_a_condition(int misused)
{
    GT_tree *tree = five_items();
    GT_tree *other = five_items();
    GT_tree_iter *iterator = GT_all_items_conditional(tree, accept);
    void *item;
    touched = misused ? other : NULL;
    GT_next_item(iterator, &item);
    touched = NULL;
    GT_end_iterator(iterator);
    GT_release(&tree);
    GT_release(&other);
}

static void damaged_chain(int misused)
{
    GT_tree *tree = five_items();
    if (misused)
        tree->first->next->prev = NULL;
    GT_release(&tree);
}

static void link_to_nowhere(int misused)
{
    GT_tree *tree = five_items();
    if (misused)
        tree->root->left->right = (GT_tree_item *)(uintptr_t)0x1000;
    GT_release(&tree);
}

static void link_in_a_circle(int misused)
{
    GT_tree *tree = five_items();
    if (misused)
        tree->first->left = tree->root;
    GT_release(&tree);
}

static void null_address_of_position(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *position;
    GT_find_item(tree, &items[1], misused ? NULL : &position);
    GT_release(&tree);
}

static void damaged_balance(int misused)
{
    GT_tree *tree = five_items();
    if (misused)
        tree->first->balance = 1;
    GT_make_empty(tree);
    GT_release(&tree);
}

static void damaged_list_of_iterators(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_iter *iterator = GT_all_items(tree);
    if (misused)
        tree->iterators->count = 2;
    GT_make_empty(tree);
    GT_end_iterator(iterator);
    GT_release(&tree);
}

static GT_tree *edited_elsewhere;

static void *insert_one(void *tree)
{
    GT_insert_item(tree, &items[0]);
    return NULL;
}

static int32_t compare_while_another_edits(void *a, void *b)
{
    GT_tree *tree = edited_elsewhere;
    edited_elsewhere = NULL;
    if (tree)
        in_a_thread(insert_one, tree);
    return by_number(a, b);
}

static void another_edited_by_a_thread(int misused)
{
    GT_tree *tree = GT_create_with_dupl_not_allowed(compare_while_another_edits);
    GT_tree *other = GT_create_with_dupl_not_allowed(by_number);
    in_a_thread(do_nothing, NULL);
    filled(tree);
    edited_elsewhere = misused ? other : NULL;
    GT_insert_item(tree, &items[0]);
    GT_release(&tree);
    GT_release(&other);
}

static void null_address_of_search(int misused)
{
    GT_tree *tree = five_items();
    GT_tree_item *position;
    GT_search_item(tree, &items[1], misused ? NULL : &position);
    GT_release(&tree);
}

static const misuse_cell cells[] = {
    {"null tree", 1, "GT_count_items: the tree is null", null_tree},
    {"null position", 1, "GT_remove_item: the position is null", null_position},
    {"null iterator", 1, "GT_end_iterator: the iterator is null", null_iterator},
    {"null address", 1, "GT_release: the address of the tree is null", null_address},
    {"position as tree", 2, "GT_insert_item: the tree was never created", position_as_tree},
    {"never created", 2, "GT_count_items: the tree was never created", never_created},
    {"used after release", 2, "GT_search_item: the tree was released", used_after_release},
    {"released twice", 2, "GT_release: the tree was released", released_twice},
    {"tree of another family", 2, "GL_count_items: the list is of another family", tree_of_another_family},
    {"position of another tree", 3, "GT_remove_item: the position is of another tree", position_of_another_tree},
    {"removed position", 3, "GT_remove_item_global: the position was removed", removed_position},
    {"node freed twice", 3, "GT_free_node: the position was removed", node_freed_twice},
    {"position of another family", 3, "GT_remove_item: the position is of another family", position_of_another_family},
    {"iterator as position", 3, "GT_remove_item: the position is an iterator", iterator_as_position},
    {"stepped after its end", 4, "GT_next_item: the iterator has ended", stepped_after_its_end},
    {"ended twice", 4, "GT_end_iterator: the iterator has ended", ended_twice},
    {"outlived its tree", 4, "GT_next_position: the iterator outlived its tree", outlived_its_tree},
    {"rests on a predecessor", 4, "GT_next_item: the iterator rests on a removed position", rests_on_a_predecessor},
    {"current on a predecessor", 4, "GT_current_item: the iterator rests on a removed position",
     current_on_a_predecessor},
    {"copied from a predecessor", 4, "GT_from_current: the iterator rests on a removed position",
     copied_from_a_predecessor},
    {"next copied from a predecessor", 4, "GT_from_next: the iterator rests on a removed position",
     next_copied_from_a_predecessor},
    {"current of a fresh one", 4, "GT_current_item: the iterator has no current item", current_of_a_fresh_one},
    {"key was changed", 8, "GT_remove_item: the comparison does not lead to the position", key_was_changed},
    {"changes its mind", 8, "GT_find_and_remove_item: the comparison contradicts itself", changes_its_mind},
    {"goes before itself", 8, "GT_insert_item: the comparison contradicts itself: an item goes before itself",
     goes_before_itself},
    {"goes after itself", 8, "GT_insert_item: the comparison contradicts itself: an item goes after itself",
     goes_after_itself},
    {"order asked both ways", 8, "GT_insert_item: the comparison contradicts itself", asked_both_ways},
    {"order of a changed neighbour", 8, "GT_search_item: neighbours in the tree are not in order", changed_neighbour},
    {"order of an equal neighbour", 8, "GT_find_item: neighbours in the tree are not in order", equal_neighbour},
    {"read by a comparison", 9, "GT_count_items: a tree is calling back in GT_find_item", read_by_a_comparison},
    {"another edited by a condition", 9, "GT_insert_item: a tree is calling back in GT_next_item",
     another_edited_by_a_condition},
    {"another tree edited by a thread", 10, "GT_insert_item: another thread used a tree meanwhile",
     another_edited_by_a_thread},
    {"damaged chain", 13, "GT_release: the tree breaks its invariant 2", damaged_chain},
    {"null address of position", 1, "GT_find_item: the address of the position is null", null_address_of_position},
    {"null address of search", 1, "GT_search_item: the address of the position is null", null_address_of_search},
    {"link to nowhere", 13, "GT_release: the tree breaks its invariant 1", link_to_nowhere},
    {"link in a circle", 13, "GT_release: the tree breaks its invariant 1", link_in_a_circle},
    {"damaged balance", 13, "GT_make_empty: the tree breaks its invariant 3", damaged_balance},
    {"damaged list of iterators", 13, "GT_make_empty: the tree breaks its invariant 5", damaged_list_of_iterators},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
