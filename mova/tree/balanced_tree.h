/* SPDX-License-Identifier: MIT */
/* Balanced tree: a height-balanced binary search tree of the caller's items, whose iterators stay valid while it is
   edited.

   Items are untyped pointers. A comparison, given when the tree is made, orders them; a tree either admits items that
   compare equal, and then keeps them in the order of their insertion, or refuses them. Besides the links of the tree,
   every node lies in a chain from the smallest item to the greatest.

       tree t                      the tree                        the chain
       +--------------+
       | root         |------->       D  -1                        first             last
       | first        |             /   \                            |                 |
       | last         |        +1  B     E  0                        v                 v
       | compare      |             \                                B <-> C <-> D <-> E
       | dupl_allowed |           0  C
       | iterators    |---> a pointer list of every live iterator
       +--------------+
                           tree_item: | item | left | right | prev | next | balance |

   Invariants:
     1. The nodes in order of the tree are those of the chain from `first` along `next` to `last`; all three of `root`,
        `first` and `last` are null in an empty tree.
     2. A node's `next` names that node as its `prev`; the `prev` of `first` and the `next` of `last` are null.
     3. A node's `balance` is the height of its right subtree minus that of its left one: -1, 0 or +1.
     4. No item compares greater than its successor, nor equal to it where duplicates are not allowed. (Keys that are
        changed in place break this, until GT_sort.)
     5. `iterators` holds every iterator of the tree that was made and has not ended, each once.

   A position is a pointer to a node. It is valid until its node is removed, or the tree emptied or released. Removing
   a node never moves an item into another node: only GT_sort does.

   An iterator is a record of the tree's, in one of four states:

       fresh              `current` is null, `cursor` is where the iteration starts
       delivering         `current` was delivered last; the next step looks at `cursor` first
       current removed    `current` is null, `cursor` stands as before
       exhausted          `cursor` is null: the next step ends the iterator

   It walks the chain upwards. What an edit does to an iterator, by what `current` and `cursor` rest on:

       edit                                     rests on              then
       inserting N                              `current` before N    `cursor` is N: N is delivered next
                                                anything else         stays; N is delivered if it comes after `cursor`
       removing N                               `current` is N        `current` is null
                                                `cursor` is N         `cursor` is the successor of N
       removing N, which has two children;      `current` is P        `current` is N, which is released
         P is the predecessor of N              `cursor` is P         `cursor` is N, which is released
       GT_sort                                  any                   stays on its node, which may hold another item
       GT_make_empty, GT_total_make_empty       any                   exhausted
       GT_release, GT_total_release             any                   dead: all three pointers are null

   The two lines about P are deliberate, and a trap: P's own record takes the place of N, and the iterator is left on
   the record that is released. Removing the item that the only live iterator has just delivered never does this. In
   other cases end the iterators that may rest on P, and start them anew. One whose `cursor` was P may only be ended
   (GT_end_iterator looks at neither). One whose `current` was P may be stepped, but until it has delivered again it
   must not be asked for its current item or be copied from, and insertions go on reading that record.

   Ownership: the tree owns its head, its nodes and the list of its iterators; the caller owns the items, which only
   the total_ functions free. An iterator frees itself when it ends. Those that outlive their tree's release are never
   freed, and stay counted.

   Errors are raised with the module name "gentree" and MOVA_PRECONDITION_BROKEN; nothing else is checked. A null tree
   (where nothing is said about it), a position of another tree, an iterator that has ended, more than 2147483647 items in all
   trees together and a null answer of the memory service are undefined.

   Failures: an exception or a jump, out of a callback, the memory service, the debug output or a raise, passes through,
   and the tree and its iterators are unchanged, where a function does not say otherwise. Nothing is lost by an exception.
   A jump out of the second allocation that a tree or an iterator needs loses its record, which stays counted.

   Lines 1728, 1760 and 1799 guard the steps of a removal. Only the first can be raised, by GT_remove_first_item.

   Callbacks must not call a function of this family. All trees share counters, so the whole family belongs to one
   thread at a time.

   Cost, with n items: constant, where nothing else is said; insertions and removals also look at every live iterator.
   Heads, nodes and iterators come from MM_alloc_item, one block each. */
#ifndef MOVA_TREE_BALANCED_TREE_H
#define MOVA_TREE_BALANCED_TREE_H

#include <stddef.h>
#include <stdint.h>

#include <mova/lists/generic_list.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Returns a negative number where `a` goes before `b`, zero where they are equal, a positive one otherwise. The item
   that is being placed or looked for comes first. A comparison that answers with a truth, `a < b` as 1 or 0, never says
   that `a` goes before `b`: the items then stand in no order, and none is found. */
typedef int32_t (*GT_compare)(void *a, void *b);

/* Accepts an item by returning non-zero. */
typedef int32_t (*GT_condition)(void *item);

/* Prints an item, without a line end. */
typedef void (*GT_print_fn)(void *item);

/* A node, and so a position. The tree makes and frees it. */
typedef struct GT_tree_item {
    void *item;                        /* the caller's */
    struct GT_tree_item *left, *right; /* what goes before the item, and what after it or is equal and came later */
    struct GT_tree_item *prev, *next;  /* the neighbours in order; null at the ends */
    int32_t balance;                   /* the height on the right minus that on the left: -1, 0 or +1 */
} GT_tree_item;

/* A tree's head, which the two functions below make and GT_release frees. Programs read it, and change it through the
   functions alone. */
typedef struct GT_tree {
    struct GT_tree_item *root, *first, *last; /* the top, and the ends of the chain; null in an empty tree */
    GT_compare compare;                       /* orders the items */
    int32_t dupl_allowed;                     /* 1 or 0 */
    GL_list *iterators;                       /* every one that lives; the tree's own */
} GT_tree;

/* An iterator, which the tree allocates. It frees itself when a step returns 0; GT_end_iterator frees it before. */
typedef struct GT_tree_iter {
    struct GT_tree_item *cursor, *current; /* the node to look at next; the one that was delivered last */
    struct GT_tree *tree;                  /* that it walks over */
    GT_condition condition;                /* for modes 1 and 2 */
    int32_t mode; /* 0 delivers every item, 1 those accepted, 2 all up to the first that is rejected */
} GT_tree_iter;

/* The short names of the three, which a program with types of these names leaves out by defining MOVA_NO_SHORT_NAMES before
   it includes this. */
#ifndef MOVA_NO_SHORT_NAMES
typedef GT_tree tree;
typedef GT_tree_item tree_item;
typedef GT_tree_iter tree_iter;
#endif

/* ---- creation and disposal ---- */

/* Returns a new empty tree that admits items that compare equal. */
GT_tree *GT_create_with_dupl_allowed(GT_compare compare) __attribute__((warn_unused_result));

/* Returns a new empty tree that refuses an item that compares equal to one it holds. */
GT_tree *GT_create_with_dupl_not_allowed(GT_compare compare) __attribute__((warn_unused_result));

/* Clears every live iterator's pointers, releases the list of iterators, frees every node, each after both its
   subtrees, and the head, and sets `*t` to null. The items are left alone, and so are the iterators' records. Does
   nothing when `*t` is null. Linear. */
void GT_release(GT_tree **t) __attribute__((nonnull(1)));

/* As GT_release, but frees each node's item ahead of the node: MM_dealloc_item with `item_size` bytes. */
void GT_total_release(GT_tree **t, size_t item_size) __attribute__((nonnull(1)));

/* Exhausts every live iterator and frees every node, each after both its subtrees. The tree is empty afterwards and
   stays usable. Does nothing when `t` is null. Linear. */
void GT_make_empty(GT_tree *t);

/* As GT_make_empty, but frees each node's item ahead of the node: MM_dealloc_item with `item_size` bytes. */
void GT_total_make_empty(GT_tree *t, size_t item_size);

/* ---- insertion and search ---- */

/* Inserts `item`, after all that compare equal to it, and returns its position. In a tree without duplicates that
   holds an item equal to it, changes nothing and returns that item's position: the caller looks at the node's `item`.
   Asks one comparison a level: O(log n).
   Raises line 1181 or 1236 where a `balance` that the insertion must change on its left or its right side is not one of
   -1, 0, +1. The item is in the tree by then, and stays in it where the raise throws or jumps: the tree is releasable,
   and usable once its balances are right. Where the host returns, that balance is left alone and the ancestors are
   rebalanced as if the subtree had grown, up to a rotation whose nodes are not all there. */
GT_tree_item *GT_insert_item(GT_tree *t, void *item) __attribute__((nonnull(1)));

/* Finds the node that holds the pointer `item` itself: it is compared by identity first, and by the tree's comparison
   only to find the way. Returns 1 and stores the node in `*position`, or returns 0 and stores null. O(log n), and up to
   every item that compares equal. */
int GT_find_item(GT_tree *t, void *item, GT_tree_item **position) __attribute__((nonnull(1, 3)));

/* Finds a node whose item compares equal to `key`: the one nearest to the root, not the first in order. `key` is the
   comparison's first argument and need not be an item. Returns 1 and stores the node in `*position`, or returns 0 and
   stores null. O(log n). */
int GT_search_item(GT_tree *t, void *key, GT_tree_item **position) __attribute__((nonnull(1, 3)));

/* Returns the number of items, by a walk over all nodes: linear. */
int32_t GT_count_items(const GT_tree *t) __attribute__((nonnull(1)));

/* ---- removal: the node is freed, its item left alone ---- */

/* Removes the node, which it reaches by comparing its item with those on the way. O(log n), and up to every item that
   compares equal. Balances outside -1 … +1 are left as they are.
   Raises line 481, and changes nothing, when the comparisons do not lead to the node. */
void GT_remove_item(GT_tree *t, GT_tree_item *position) __attribute__((nonnull(1)));

/* As GT_remove_item, but visits every node where the comparisons do not lead to the position: for an item whose key was
   changed after its insertion. The second way is linear.
   Raises line 545, and changes nothing, when the node is not in the tree. */
void GT_remove_item_global(GT_tree *t, GT_tree_item *position) __attribute__((nonnull(1)));

/* Finds the node that holds the pointer `item` itself, as GT_find_item does, and removes it, as GT_remove_item does.
   Raises line 566 when no node holds it, and line 579 when the removal does not reach the node; neither changes
   anything. */
void GT_find_and_remove_item(GT_tree *t, void *item) __attribute__((nonnull(1)));

/* Removes the node `first`, without comparing. O(log n).
   Raises line 1427, and changes nothing, when the tree is empty. Raises line 1728 when `first`, which a program must
   not write, names a node that has a left child; where the host returns, that child's subtree is lost, and the tree is
   releasable. */
void GT_remove_first_item(GT_tree *t) __attribute__((nonnull(1)));

/* ---- nodes alone: for code that links and unlinks them itself, as the typed layer's does ---- */

/* Returns a new node that holds `item` and is in no tree: all else in it is 0. It counts as live from now on. Who links it
   keeps the invariants, and tells the iterators as the table above says. */
GT_tree_item *GT_allocate_node(void *item) __attribute__((warn_unused_result));

/* Frees a node that is in no tree, or no longer; its item is left alone. Does not read it. */
void GT_free_node(GT_tree_item *node);

/* ---- iteration: each constructor allocates an iterator and puts it at the end of the tree's list ----

   An iterator frees itself when a step returns 0, and only then: who leaves the loop before, by a break or a return, ends it
   with GT_end_iterator. Else it stays in the tree's list, and every later edit looks at it. */

/* Returns an iterator over all items, from the first on. Its `condition` is left unset. */
GT_tree_iter *GT_all_items(GT_tree *t) __attribute__((nonnull(1), warn_unused_result));

/* Returns an iterator over the items that `condition` accepts, from the first on. */
GT_tree_iter *GT_all_items_conditional(GT_tree *t, GT_condition condition)
    __attribute__((nonnull(1), warn_unused_result));

/* Returns an iterator over all items from the first on, up to the first that `condition` rejects. */
GT_tree_iter *GT_all_items_while_conditioned(GT_tree *t, GT_condition condition)
    __attribute__((nonnull(1), warn_unused_result));

/* Returns an iterator over all items, from the one on that `iterator` has delivered last. `iterator` is not changed. If its
   current item is none, or was removed, the new one is exhausted. Copies the `condition`, and does not ask it. */
GT_tree_iter *GT_from_current(GT_tree_iter *iterator) __attribute__((nonnull(1), warn_unused_result));

/* As GT_from_current, but returns an iterator over the items that `condition` accepts. */
GT_tree_iter *GT_from_current_conditional(GT_tree_iter *iterator, GT_condition condition)
    __attribute__((nonnull(1), warn_unused_result));

/* As GT_from_current, but returns an iterator over all items up to the first that `condition` rejects. */
GT_tree_iter *GT_from_current_while_conditioned(GT_tree_iter *iterator, GT_condition condition)
    __attribute__((nonnull(1), warn_unused_result));

/* As GT_from_current, but returns an iterator from the item on at which `iterator` would look next. */
GT_tree_iter *GT_from_next(GT_tree_iter *iterator) __attribute__((nonnull(1), warn_unused_result));

/* As GT_from_next, but returns an iterator over the items that `condition` accepts. */
GT_tree_iter *GT_from_next_conditional(GT_tree_iter *iterator, GT_condition condition)
    __attribute__((nonnull(1), warn_unused_result));

/* As GT_from_next, but returns an iterator over all items up to the first that `condition` rejects. */
GT_tree_iter *GT_from_next_while_conditioned(GT_tree_iter *iterator, GT_condition condition)
    __attribute__((nonnull(1), warn_unused_result));

/* Returns 1 and stores the next accepted item in `*item`. Or the iteration is over: takes the iterator out of the
   tree's list, frees it, and returns 0 with `*item` untouched. The item just delivered may be removed. Linear in the
   number of rejected items; the last step in the number of live iterators. An item that the condition throws or jumps
   for has been passed, with those rejected before it: the next step goes on after it.
   Raises line 896 when the iterator that ends is not in its tree's list. Where the host returns, it is freed all the
   same; else it stays, with what it has not looked at still ahead of it. */
int GT_next_item(GT_tree_iter *iterator, void **item) __attribute__((nonnull(1)));

/* As GT_next_item, but stores the node. Raises line 937 instead of 896. */
int GT_next_position(GT_tree_iter *iterator, GT_tree_item **position) __attribute__((nonnull(1)));

/* Stores the item that was delivered last, and returns 1 when it is not null, else 0. Requires that one was delivered
   and has not been removed. */
int GT_current_item(GT_tree_iter *iterator, void **item) __attribute__((nonnull(1, 2)));

/* Takes the iterator out of the tree's list and frees it. Linear in the number of live iterators.
   Raises line 962 when it is not in its tree's list. Where the host returns, it is freed all the same. */
void GT_end_iterator(GT_tree_iter *iterator) __attribute__((nonnull(1)));

/* ---- maintenance ---- */

/* Puts the items in order again after their keys were changed in place, by a bubble sort along the chain: items move
   between nodes, and everything else stays. Items that compare equal keep their order. Uses an iterator of the tree's
   in each pass. Linear for items in order, quadratic at worst. After an exception or a jump the tree is usable: the
   items are all there, in some order, and may be sorted again. A jump out of the comparison leaves that iterator in the
   tree's list, as the last one. */
void GT_sort(GT_tree *t) __attribute__((nonnull(1)));

/* Prints how many trees, nodes and iterators are live, of all trees together, a line each. */
void GT_check(void);

/* Prints the tree on its side, the smallest item first: a line for each item, indented by three blanks a level, with
   the item as `print` prints it, and, where its balance B is not the difference D of the heights, a warning:
   " B D ERROR IN BALANCE !!!!!!!!!!". O(n log n). */
void GT_print_tree(GT_tree *t, GT_print_fn print) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
