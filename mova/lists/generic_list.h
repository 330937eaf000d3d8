/* SPDX-License-Identifier: MIT */
/* Generic pointer list: a doubly linked list of untyped pointers.

   The list never looks inside an item. It stores the pointer, compares it by identity, and hands it to the caller's
   callbacks where an operation must free, copy or measure items. A null item is an item like any other.

       empty              one item                         many items

       GL_list            GL_list                          GL_list
       +-------+          +-------+                        +-------+
       | first | null     | first |--+                     | first |-----------------+
       | last  | null     | last  |--+                     | last  |---------------- | ---------------+
       | count | 0        | count | 1|                     | count | 3               |                |
       +-------+          +-------+  v                     +-------+                 v                v
                             null <- A -> null                               null <- A <-> B <-> C -> null

       GL_node: | prev | next | item |

   Invariants:
     1. `count` is the number of nodes from `first` along `next` to `last`.
     2. `first` and `last` are both null when `count` is 0, and neither is null otherwise.
     3. The `prev` of `first` and the `next` of `last` are null.
     4. A node's `next` names that node as its `prev`.

   A position is a pointer to a node. It is valid until its node is removed or its list is emptied or released; moving
   a node to the front, joining two lists and swapping an item keep it valid.

   An iterator is a record that the caller keeps; it allocates nothing and needs no release. Its states are

       fresh         `current` is null, `next` is the node to deliver first
       delivering    `current` was delivered, `next` comes next
       exhausted     `next` is null: every further step returns 0

   It delivers from `next` up to and including `end`, and fetches the successor before it hands a node out. What an
   edit does to an iterator that is fresh or delivering:

       removing `current`                       the iteration goes on with `next`
       removing `next`                          not allowed: the iterator rests on a dead node
       removing `end` before it is reached      not allowed: the iteration runs on to the list's end
       inserting between `current` and `next`   the new node is not delivered
       inserting between `next` and `end`       the new node is delivered
       inserting beyond `end`                   the new node is not delivered
       moving a node to the front               the walk follows the links as they then are
       swapping an item                         the node is delivered with the item that it then has
       joining two lists                        the iteration stops at its `end`, as before
       emptying or releasing the list           the iterator is dead

   Where `end` does not lie ahead of `next`, the iteration runs to the list's end.

   Ownership: the list owns its head and its nodes, the caller owns the items; only the total_ functions free or copy
   items, through the caller's callback. A callback must not edit the list that calls it.

   Errors: nothing here raises an error, or checks an argument or an allocation. A null list (other than for GL_release),
   a null position and a position of another list are undefined, and so are more than 2147483647 nodes.

   Failures: an exception or a jump, out of a callback or out of the memory service, passes through, and the list is
   unchanged, where a function does not say otherwise. Nothing is lost by an exception.

   Threads: a list and its iterators belong to one thread at a time.

   Cost: constant, where nothing else is said. Heads and nodes come from MM_alloc_item, one block each. */
#ifndef MOVA_LISTS_GENERIC_LIST_H
#define MOVA_LISTS_GENERIC_LIST_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* A node, and so a position. The list makes and frees it. */
typedef struct GL_node {
    struct GL_node *prev, *next; /* the neighbours; null at the ends */
    void *item;                  /* the caller's */
} GL_node;

/* A list's head, which GL_create makes and GL_release frees. Programs read it, and change it through the functions alone. */
typedef struct GL_list {
    GL_node *first, *last; /* the ends; null in an empty list */
    int32_t count;         /* nodes */
} GL_list;

/* Accepts an item by returning non-zero. */
typedef int (*GL_test)(void *item);

/* Frees an item. Receives the address of the node's item field, not the item. */
typedef void (*GL_free_fn)(void **item);

/* Returns a copy of an item. Receives the item itself, unlike GL_free_fn. */
typedef void *(*GL_copy_fn)(void *item);

/* Returns the number of bytes that an item occupies. */
typedef int32_t (*GL_size_fn)(void *item);

/* An iterator, which the caller keeps and which owns nothing. */
typedef struct GL_iterator {
    GL_node *current, *next, *end; /* delivered last; to be delivered next; the last one to deliver */
    int32_t forward;               /* zero walks along `prev`, anything else along `next` */
    GL_test test;                  /* null accepts every item */
} GL_iterator;

/* ---- creation and disposal ---- */

/* Returns a new empty list. */
GL_list *GL_create(void) __attribute__((warn_unused_result));

/* Frees every node from first to last and the head, and sets `*list` to null. The items are left alone. Does nothing
   when `*list` is null. Linear. */
void GL_release(GL_list **list) __attribute__((nonnull(1)));

/* As GL_release, but calls `free_item` with the address of each node's item field before it frees that node.
   Requires a list: unlike GL_release, it does not test `*list` for null. That is deliberate.
   After an exception the list is usable: it begins with the item that `free_item` threw for, and those before are gone.
   After a jump it is releasable, and begins with the item that `free_item` jumped for. */
void GL_total_release(GL_list **list, GL_free_fn free_item) __attribute__((nonnull(1)));

/* Frees every node from first to last. The list is empty afterwards and stays usable. Linear. */
void GL_make_empty(GL_list *list) __attribute__((nonnull(1)));

/* As GL_make_empty, but calls `free_item` with the address of each node's item field before it frees that node. What an
   exception or a jump leaves is what GL_total_release leaves. */
void GL_total_make_empty(GL_list *list, GL_free_fn free_item) __attribute__((nonnull(1)));

/* ---- copying and measuring ---- */

/* Returns a new list of the same item pointers in the same order. Linear. A jump loses the part that was made. */
GL_list *GL_copy(const GL_list *list) __attribute__((nonnull(1), warn_unused_result));

/* Returns a new list of what `copy_item` returns for each item, first to last. Linear. A jump loses the part that was
   made; what `copy_item` had returned by the time of an exception or a jump stays the caller's. */
GL_list *GL_total_copy(const GL_list *list, GL_copy_fn copy_item) __attribute__((nonnull(1), warn_unused_result));

/* Returns the number of bytes that the list and its items occupy: 12 for the head, and for each node 12 plus what
   `item_size` returns for its item, modulo 2^32. Heads and nodes count with these sizes on every platform. Linear. */
int32_t GL_check(const GL_list *list, GL_size_fn item_size) __attribute__((nonnull(1)));

/* Returns the number of items. */
int32_t GL_count_items(const GL_list *list) __attribute__((nonnull(1)));

/* ---- insertion: each allocates one node and returns its position ---- */

/* Adds `item` at the back. */
GL_node *GL_append_after_last(GL_list *list, void *item) __attribute__((nonnull(1)));

/* Adds `item` at the front. */
GL_node *GL_insert_before_first(GL_list *list, void *item) __attribute__((nonnull(1)));

/* Adds `item` between `position` and its predecessor, or at the front where there is none. */
GL_node *GL_insert_before(GL_list *list, GL_node *position, void *item) __attribute__((nonnull(1, 2)));

/* Adds `item` between `position` and its successor, or at the back where there is none. */
GL_node *GL_insert_after(GL_list *list, GL_node *position, void *item) __attribute__((nonnull(1, 2)));

/* Adds `item` at the back, unless the list holds the same pointer already: then it changes nothing and returns null.
   Linear. */
GL_node *GL_insert_unique(GL_list *list, void *item) __attribute__((nonnull(1)));

/* ---- moving and joining ---- */

/* Makes `position` the first node. It allocates nothing, and all positions stay valid. */
void GL_move_before_first(GL_list *list, GL_node *position) __attribute__((nonnull(1, 2)));

/* Moves all nodes of `*source` to the back of `target`, frees the source's head and sets `*source` to null. Nothing is
   copied, and all positions stay valid, in `target`. Requires two different lists. */
void GL_append_list(GL_list *target, GL_list **source) __attribute__((nonnull(1, 2)));

/* ---- search, removal, replacement ---- */

/* Finds the first node, from the front, whose item is the pointer `item`. Returns 1 and stores the node in
   `*position`, or returns 0 and stores null. Linear. */
int GL_find_item(const GL_list *list, const void *item, GL_node **position) __attribute__((nonnull(1, 3)));

/* Unlinks and frees the node. The item is left alone. */
void GL_remove_item(GL_list *list, GL_node *position) __attribute__((nonnull(1, 2)));

/* Exchanges the node's item and the pointer at `*item`. */
void GL_swap_item(GL_node *position, void **item) __attribute__((nonnull(1, 2)));

/* ---- iteration: none of these allocates ---- */

/* Returns an iterator that delivers nothing. */
GL_iterator GL_empty_iter(void);

/* Returns an iterator that delivers, of the nodes from `from` to `to`, both inclusive, those whose item `test`
   accepts. A null test accepts all. Walks towards the back where `forward` is non-zero, else towards the front.
   The list argument is not used. */
GL_iterator GL_tested_items_inbetween(const GL_list *list, GL_node *from, GL_node *to, int forward, GL_test test);

/* As GL_tested_items_inbetween, without a test. */
GL_iterator GL_all_items_inbetween(const GL_list *list, GL_node *from, GL_node *to, int forward);

/* Returns an iterator over the items that `test` accepts, first to last. */
GL_iterator GL_tested_items(const GL_list *list, GL_test test) __attribute__((nonnull(1)));

/* Returns an iterator over all items, first to last. */
GL_iterator GL_all_items(const GL_list *list) __attribute__((nonnull(1)));

/* Returns an iterator over all items, last to first. */
GL_iterator GL_all_items_reversed(const GL_list *list) __attribute__((nonnull(1)));

/* Returns 1 and stores the next accepted item in `*item`, or returns 0 when the iteration is over. The item is stored
   before the test is asked, so after a 0 that follows rejected items `*item` holds the last of them; after a 0 with
   nothing left to deliver it is untouched. Linear in the number of rejected items. An item that the test throws or jumps
   for has been passed: the next step delivers what comes after it. */
int GL_next_item(GL_iterator *iterator, void **item) __attribute__((nonnull(1)));

/* As GL_next_item, but stores the node. The test is asked about the node's item. */
int GL_next_position(GL_iterator *iterator, GL_node **position) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#if !defined MOVA_NO_INLINE || defined MOVA_OWN_GENERIC_LIST
#include <mova/lists/inline/generic_list.h>
#endif

#endif
