/* SPDX-License-Identifier: MIT */
/* Element list: a doubly linked list of copies of fixed-size elements, open or closed into a ring.

   The list states the size of its elements once. Every insertion copies that many bytes into a new node, after the
   node's two links; reading copies them out again, or hands out a pointer into the node. No
   constructor or destructor is called: an object of C++ that owns something, such as a std::string, may not be an element.

       empty              one, open           many, open                          many, ring

       EL_list            null <- A -> null   null <- A <-> B <-> C -> null       +-> A <-> B <-> C <-+
       +--------------+          first               first        last            +-------------------+
       | first        |          last                                                first       last
       | last         |
       | element_size |   one, ring           EL_node: | prev | next | element_size bytes … |
       | count        |   +-> A <-+
       | closed       |   +-------+
       +--------------+

   Invariants:
     1. `count` is the number of nodes from `first` along `next` to `last`.
     2. `first` and `last` are both null when `count` is 0, and neither is null otherwise.
     3. Open: the `prev` of `first` and the `next` of `last` are null.
        Ring: the `prev` of `first` is `last` and the `next` of `last` is `first`; a single node is its own neighbour.
     4. A node's `next` names that node as its `prev`.
   `closed` may stay set on a list that removals have emptied; the next insertion then builds a ring of one.

   Three edits of the ring A B C, each at B; B' is a new node with a copy of B's element:

       EL_roll                       ring A B C       first is now B:     ring B C A
       EL_make_open_at_position      ring A B C       cut at B:           open B C A B'
       EL_remove_and_get_end_part    ring A B C D     split at C:         open A B C'   and, returned,   open C D

   The element at a cut stands at both of its sides. That is deliberate: an open list that was made from a ring has
   one element more than the ring.

   A position is a pointer to a node, an element pointer a pointer to the bytes inside it. What an edit does to
   them, and to an iterator that has delivered `current` and will deliver `next`, up to and including `end`:

       edit                               positions                      iterators
       inserting                          stay                           deliver the new node between `next` and `end`
       EL_remove_item of `current`        that one dies                  go on
       EL_remove_item of `next`           that one dies                  dead
       EL_remove_item of `end`            that one dies                  run on to the open end; never end on a ring
       EL_replace_…, writing the bytes    stay                           stay
       EL_set_closed, EL_reset_closed     stay                           stay; a range may then cross the seam, or not
       EL_roll                            stay                           stay: `end` is where it was
       EL_reverse                         stay                           walk the other way, from `next`
       EL_append_list                     stay, in the target            stop at their `end`, as before
       EL_make_open_at_position           stay; the copy is new          stop at the cut where they would cross it
       EL_remove_and_get_end_part         stay, from there on in the     stop at the split where they would cross it
                                          returned list
       EL_make_empty, EL_release          die                            die

   Ownership: the list owns its head, its nodes and the elements in them. Nothing here calls back but an iterator's
   test. Errors: two functions raise, as they say; nothing else is checked. A null list, a position of another list,
   or a range whose `to` does not lie ahead (on a ring such a walk never ends) are undefined, and so are more than
   2147483647 nodes. One thread at a time.

   Failures: an exception or a jump, out of the memory service, a raise or a test, passes through, and the list is
   unchanged, where a function does not say otherwise. Nothing is lost by an exception. An iterator has passed the
   element that its test threw or jumped for.

   Cost: constant, where nothing else is said. Heads and nodes come from MM_alloc_item, one block each. */
#ifndef MOVA_LISTS_ELEMENT_LIST_H
#define MOVA_LISTS_ELEMENT_LIST_H

#include <stddef.h>
#include <stdint.h>

#include <mova/frame/inline.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* A node, and so a position. The list makes and frees it. The element's bytes follow the links. */
typedef struct EL_node {
    struct EL_node *prev, *next; /* the neighbours; null at the ends of an open list */
} EL_node;

/* A list's head, which EL_create makes and EL_release frees. Programs read it, and change it through the functions alone. */
typedef struct EL_list {
    EL_node *first, *last; /* the ends, of a ring too; null in an empty list */
    uint16_t element_size; /* bytes */
    int32_t count;         /* elements */
    int32_t closed;        /* non-zero for a ring */
} EL_list;

/* Accepts an element, which it receives where it lies in its node, by returning non-zero. */
typedef int (*EL_test)(void *element);

/* An iterator, which the caller keeps and which owns nothing. */
typedef struct EL_iterator {
    EL_node *current, *next, *end; /* delivered last; to be delivered next; the last one to deliver */
    int32_t forward;               /* zero walks along `prev`, anything else along `next` */
    uint32_t element_size;         /* bytes, as the list had it */
    EL_test test;                  /* null accepts every element */
} EL_iterator;

MOVA_INLINE_PART void *mova_el_element(EL_node *node)
{
    return node + 1;
}

/* Returns the element inside the node. Writing through it changes the stored element; it is valid as long as the
   position. */
static inline void *EL_element(EL_node *position)
{
    return mova_el_element(position);
}

/* ---- creation, disposal, state ---- */

/* Returns a new empty, open list of elements of `element_size` bytes. Only the low 16 bits count: elements have 0
   to 65535 bytes, and 65536 makes elements of 0, for which every pointer to an element or buffer may be null. */
EL_list *EL_create(uint32_t element_size) __attribute__((warn_unused_result));

/* Frees every node from first to last and the head, and sets `*list` to null. Requires a list. Linear. */
void EL_release(EL_list **list) __attribute__((nonnull(1)));

/* Frees every node from first to last. The list is empty and open afterwards. Linear. */
void EL_make_empty(EL_list *list) __attribute__((nonnull(1)));

/* Makes the list a ring. */
void EL_set_closed(EL_list *list) __attribute__((nonnull(1)));

/* Makes the list open. */
void EL_reset_closed(EL_list *list) __attribute__((nonnull(1)));

/* Returns the number of elements. */
int32_t EL_count_items(const EL_list *list) __attribute__((nonnull(1)));

/* Returns the number of nodes from `from` along `next` to `to`, both inclusive. Linear. */
int32_t EL_count_items_inbetween(const EL_list *list, EL_node *from, EL_node *to) __attribute__((nonnull(1)));

/* ---- insertion: each allocates one node, copies the element into it and returns its position ---- */

/* Adds an element at the back: in a ring, between the last and the first. */
EL_node *EL_append_after_last(EL_list *list, const void *element) __attribute__((nonnull(1)));

/* Adds an element at the front. */
EL_node *EL_insert_before_first(EL_list *list, const void *element) __attribute__((nonnull(1)));

/* Adds an element before `position`. Before the first it becomes the first. */
EL_node *EL_insert_before(EL_list *list, EL_node *position, const void *element) __attribute__((nonnull(1)));

/* Adds an element after `position`. After the last it becomes the last. */
EL_node *EL_insert_after(EL_list *list, EL_node *position, const void *element) __attribute__((nonnull(1)));

/* Adds an element before the element with this index, counted from 0. Where there is none, inserts nothing and returns null.
   Linear in the index. */
EL_node *EL_insert_before_index(EL_list *list, int32_t index, const void *element) __attribute__((nonnull(1)));

/* As EL_insert_before_index, but adds the element after the one with this index. */
EL_node *EL_insert_after_index(EL_list *list, int32_t index, const void *element) __attribute__((nonnull(1)));

/* ---- positions and indices ---- */

/* Returns the node that lies `steps` links after `position`, or before it for a negative number; null where an open
   list ends before that. A ring is walked around. The list argument is not used. Linear in the steps. */
EL_node *EL_advance(const EL_list *list, EL_node *position, int32_t steps);

/* Returns the number of steps from the first node to `position`. Linear. */
int32_t EL_get_index(const EL_list *list, const EL_node *position) __attribute__((nonnull(1)));

/* Returns the position with this index, counted from 0, or null where there is none. Never walks around a ring.
   Linear in the index. */
EL_node *EL_get_pos_at_index(const EL_list *list, int32_t index) __attribute__((nonnull(1)));

/* Returns a pointer to the element with this index, or null where there is none. Linear in the index. */
void *EL_get_item_at_index(const EL_list *list, int32_t index) __attribute__((nonnull(1)));

/* ---- removal and replacement ---- */

/* Unlinks and frees the node. A ring stays closed, even when it becomes empty. */
void EL_remove_item(EL_list *list, EL_node *position) __attribute__((nonnull(1, 2)));

/* Removes the element with this index and returns 1, or returns 0 where there is none. Linear in the index. */
int EL_remove_at_index(EL_list *list, int32_t index) __attribute__((nonnull(1)));

/* Removes the nodes from `from` along `next` to `to`, both inclusive. Linear in their number. */
void EL_remove_items_inbetween(EL_list *list, EL_node *from, EL_node *to) __attribute__((nonnull(1)));

/* Copies `size` bytes from `element`, which may be the node's own, into the node. This function does not see the list:
   the caller knows how large its elements are. */
void EL_replace_item(EL_node *position, const void *element, uint32_t size) __attribute__((nonnull(1)));

/* Replaces the elements from `from` along `next` to `to`, both inclusive, by those of `source` from its first,
   `size` bytes each. Linear.
   Raises line 557, MOVA_PRECONDITION_BROKEN, when `source` has fewer elements than the range. The list is usable then:
   as many elements as `source` has are replaced, and stay so, whether the raise returns or not. */
void EL_replace_items_inbetween(EL_list *list, EL_node *from, EL_node *to, EL_list *source, uint32_t size)
    __attribute__((nonnull(1, 4)));

/* ---- copying, joining, reordering ---- */

/* Returns a new list of the same elements in the same order, closed if this one is. Linear. A jump loses the part that was
   made. */
EL_list *EL_total_copy(EL_list *list) __attribute__((nonnull(1), warn_unused_result));

/* Returns a new open list of copies of the elements from `from` along `next` to `to`, both inclusive. Linear. A jump
   loses the part that was made. */
EL_list *EL_total_copy_inbetween(EL_list *list, EL_node *from, EL_node *to)
    __attribute__((nonnull(1), warn_unused_result));

/* Moves all nodes of `*source` to the back of `target`, frees the source's head and sets `*source` to null.
   Requires two different open lists of the same element size, which is not checked. */
void EL_append_list(EL_list *target, EL_list **source) __attribute__((nonnull(1, 2)));

/* Reverses the order. Positions keep their elements; a ring stays a ring. Linear. */
void EL_reverse(EL_list *list) __attribute__((nonnull(1)));

/* ---- rings ---- */

/* Makes `position` the first of a ring. Changes nothing on an open list.
   Raises line 989, MOVA_PRECONDITION_BROKEN, when `position` has no predecessor: the first of an open list, which is
   unchanged where the raise returns. A ring then begins with that foreign node and has no last one, and is lost until
   EL_roll makes a node of its own the first. */
void EL_roll(EL_list *list, EL_node *position) __attribute__((nonnull(1, 2)));

/* Cuts a ring open at `position`, which becomes the first; a new last node gets a copy of its element. Returns
   `position`. On an open list it cuts off the nodes ahead of `position` without freeing them. */
EL_node *EL_make_open_at_position(EL_list *list, EL_node *position) __attribute__((nonnull(1, 2)));

/* Splits the list before `position`, and returns a new list of the end part. The list keeps its first node up to a new last one, which gets a copy of the
   element at `position`; the returned list has the nodes from `position` to the old last. Both are open. Linear. A jump
   loses the new node's block. */
EL_list *EL_remove_and_get_end_part(EL_list *list, EL_node *position)
    __attribute__((nonnull(1, 2), warn_unused_result));

/* ---- iteration: none of these allocates ---- */

/* Returns an iterator that delivers, of the nodes from `from` to `to`, both inclusive, those whose element `test`
   accepts. A null test accepts all. Walks along `next` where `forward` is non-zero, else along `prev`; on a ring it
   may cross the seam. */
EL_iterator EL_tested_items_inbetween(const EL_list *list, EL_node *from, EL_node *to, int forward, EL_test test)
    __attribute__((nonnull(1)));

/* As EL_tested_items_inbetween, without a test. */
EL_iterator EL_all_items_inbetween(const EL_list *list, EL_node *from, EL_node *to, int forward)
    __attribute__((nonnull(1)));

/* Returns an iterator over all elements, first to last. */
EL_iterator EL_all_items(const EL_list *list) __attribute__((nonnull(1)));

/* Returns an iterator over all elements, last to first. */
EL_iterator EL_all_items_reversed(const EL_list *list) __attribute__((nonnull(1)));

/* Returns 1 and stores the next accepted node in `*position`, or returns 0 when the iteration is over. The node is
   stored before the test is asked, so after a 0 that follows rejected ones `*position` holds the last of them.
   Linear in the number of rejected elements. */
int EL_next_position(EL_iterator *iterator, EL_node **position) __attribute__((nonnull(1)));

/* As EL_next_position, but stores a pointer to the element inside the node. */
int EL_next_item(EL_iterator *iterator, void **element) __attribute__((nonnull(1)));

/* Returns 1 and copies the next accepted element into `buffer`, or returns 0 when the iteration is over. Unlike the
   two above it copies only what was accepted: after a 0 the buffer is untouched. */
int EL_next_item_copy(EL_iterator *iterator, void *buffer) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#if !defined MOVA_NO_INLINE || defined MOVA_OWN_ELEMENT_LIST
#include <mova/lists/inline/element_list.h>
#endif

#endif
