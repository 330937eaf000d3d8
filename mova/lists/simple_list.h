/* SPDX-License-Identifier: MIT */
/* Simple list: an intrusive doubly linked list. The caller's records are the nodes.

   Every item begins with two pointers, which the list owns while the item is linked; what follows them is the
   caller's. The list allocates its head and nothing else. An item is on one simple list at a time.

       item: | prev | next | the caller's fields … |

       empty         one, open           many, open                          many, ring

       SL_list       null <- A -> null   null <- A <-> B <-> C -> null       +-> A <-> B <-> C <-+
       +--------+       first               first        last                +-------------------+
       | first  |       last                                                   first        last
       | last   |
       | count  |    one, ring           SL_roll of the ring A B C at C:     first is now C: ring C A B
       | closed |    +-> A <-+
       +--------+    +-------+           SL_remove_item leaves an item with both links null.

   Invariants:
     1. `count` is the number of items from `first` along `next` to `last`.
     2. `first` and `last` are both null when `count` is 0, and neither is null otherwise.
     3. Open: the `prev` of `first` and the `next` of `last` are null.
        Ring: the `prev` of `first` is `last` and the `next` of `last` is `first`; a single item is its own neighbour.
     4. An item's `next` names that item as its `prev`.
   `closed` may stay set on a list that removals have emptied; the next insertion then builds a ring of one.

   Since an item is its own position, positions stay valid as long as the items live. What an edit does to an
   iterator that has delivered `current` and will deliver `upcoming`, up to and including `end`:

       inserting                        the item is delivered if it lies between `upcoming` and `end`
       removing or freeing `current`    the iteration goes on with `upcoming`
       removing `upcoming`              it is delivered, and the iteration ends there: its links are null
       removing `end`                   the iteration runs on to the open end; on a ring it never ends
       SL_roll                          none: `end` is where it was
       SL_reverse                       the iteration walks the other way, from `upcoming`
       SL_append_list                   the iteration stops at its `end`, as before
       SL_make_empty, the releases      the iterator is dead if the items are

   Ownership: the list owns its head and the items' links, the caller owns the items; SL_total_release and
   SL_make_empty hand them to the caller's callback, which may free them. Errors: two functions raise, as they say;
   nothing else is checked. A null list, an item of another list and more than 2147483647 items are undefined. One thread
   at a time.

   Failures: an exception or a jump, out of a callback, a raise or the memory service, passes through, and the list is
   unchanged, where a function does not say otherwise. Nothing is lost by an exception. An iterator has passed the item
   that its test threw or jumped for.

   Cost: constant, where nothing else is said. */
#ifndef MOVA_LISTS_SIMPLE_LIST_H
#define MOVA_LISTS_SIMPLE_LIST_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* A list's head, which SL_create makes and the releases free. Programs read it, and change it through the functions alone. */
typedef struct SL_list {
    void *first, *last; /* the ends, of a ring too; null in an empty list */
    int32_t count;      /* items */
    int32_t closed;     /* non-zero for a ring */
} SL_list;

/* Accepts an item by returning non-zero. */
typedef int (*SL_test)(void *item);

/* Frees an item. Receives the address of a variable that holds the item, and may set that variable. */
typedef void (*SL_free_fn)(void **item);

/* Returns a copy of an item. Receives the item itself. */
typedef void *(*SL_copy_fn)(void *item);

/* Returns the number of bytes that an item occupies. */
typedef int32_t (*SL_size_fn)(void *item);

/* An iterator, which the caller keeps and which owns nothing. */
typedef struct SL_iterator {
    void *current, *upcoming, *end; /* delivered last; to be delivered next; the last one to deliver */
    int32_t forward;                /* zero walks along `prev`, anything else along `next` */
    int32_t unused;                 /* means nothing; nothing reads it */
    SL_test test;                   /* null accepts every item */
} SL_iterator;

/* What every item begins with, whatever its own type. */
typedef struct __attribute__((may_alias)) mova_sl_links {
    struct mova_sl_links *prev, *next; /* the neighbours; null at the ends of an open list, and off a list */
} mova_sl_links;

/* ---- creation and disposal ---- */

/* Returns a new empty, open list. */
SL_list *SL_create(void) __attribute__((warn_unused_result));

/* Frees the head of an empty list and sets `*list` to null.
   Raises line 75, MOVA_PRECONDITION_BROKEN, when the list holds items. Where the raise returns, the head is freed
   all the same, and the items stay linked to each other. */
void SL_release(SL_list **list) __attribute__((nonnull(1)));

/* Opens the list, calls `free_item` for every item from first to last, frees the head and sets `*list` to null.
   Linear.
   After an exception the list is usable: it is open and begins with the item that `free_item` threw for, and those before
   are gone. After a jump it is releasable, and begins with the item that `free_item` jumped for. */
void SL_total_release(SL_list **list, SL_free_fn free_item) __attribute__((nonnull(1)));

/* Opens the list and calls `free_item` for every item from first to last. The list is empty and open afterwards.
   Requires a callback when the list has items. Linear. What an exception or a jump leaves is what SL_total_release
   leaves. */
void SL_make_empty(SL_list *list, SL_free_fn free_item) __attribute__((nonnull(1)));

/* ---- copying, measuring, state ---- */

/* Returns a new list of what `copy_item` returns for each item, first to last, closed if this one is. The copies
   are items of their own: their links are overwritten. Linear.
   A jump loses the new head. What `copy_item` had returned by the time of an exception or a jump stays the caller's. */
SL_list *SL_total_copy(const SL_list *list, SL_copy_fn copy_item) __attribute__((nonnull(1), warn_unused_result));

/* Returns the number of bytes that the list and its items occupy: 16 for the head, on every platform, and what
   `item_size` returns for each item, modulo 2^32. Linear. */
int32_t SL_check(const SL_list *list, SL_size_fn item_size) __attribute__((nonnull(1)));

/* Makes the list a ring. */
void SL_set_closed(SL_list *list) __attribute__((nonnull(1)));

/* Makes the list open. */
void SL_reset_closed(SL_list *list) __attribute__((nonnull(1)));

/* Returns the number of items. */
int32_t SL_count_items(const SL_list *list) __attribute__((nonnull(1)));

/* ---- positions and indices ---- */

/* Returns the item that lies `n` links after `item`, or before it for a negative number; null where an open list
   ends before that. A ring is walked around. Linear in n. */
void *SL_advance(const SL_list *list, void *item, int32_t n);

/* Returns the number of steps from the first item to `item`, which must be on the list. Linear. */
int32_t SL_get_index(const SL_list *list, const void *item) __attribute__((nonnull(1)));

/* Returns the item with this index, counted from 0, or null where there is none. Never walks around a ring. Linear
   in the index. */
void *SL_pos_at_index(const SL_list *list, int32_t index) __attribute__((nonnull(1)));

/* ---- insertion ---- */

/* Links `item` at the back: in a ring, between the last and the first. */
void SL_append_after_last(SL_list *list, void *item) __attribute__((nonnull(1, 2)));

/* Links `item` at the front. */
void SL_insert_before_first(SL_list *list, void *item) __attribute__((nonnull(1, 2)));

/* Links `item` before `position`. Before the first it becomes the first. */
void SL_insert_before(SL_list *list, void *position, void *item) __attribute__((nonnull(1, 3)));

/* Links `item` after `position`. After the last it becomes the last. */
void SL_insert_after(SL_list *list, void *position, void *item) __attribute__((nonnull(1, 3)));

/* Links `item` before the item with this index, counted from 0, and returns 1. Where there is none, changes nothing and
   returns 0. Linear in the index. */
int SL_insert_before_index(SL_list *list, int32_t index, void *item) __attribute__((nonnull(1)));

/* As SL_insert_before_index, but links `item` after the item with this index. */
int SL_insert_after_index(SL_list *list, int32_t index, void *item) __attribute__((nonnull(1)));

/* Links `item` at the back unless it is on the list already. Requires an open list: the search ends only at a null
   link, so on a ring that does not hold the item it never ends. That is deliberate. Linear. */
void SL_insert_unique(SL_list *list, void *item) __attribute__((nonnull(1)));

/* ---- removal, reordering, joining ---- */

/* Unlinks `item` and sets its links to null. A ring stays closed, even when it becomes empty. */
void SL_remove_item(SL_list *list, void *item) __attribute__((nonnull(1, 2)));

/* Removes the item with this index and returns 1, or returns 0 where there is none. Linear in the index. */
int SL_remove_at_index(SL_list *list, int32_t index) __attribute__((nonnull(1)));

/* Reverses the order. A ring stays a ring. Linear. */
void SL_reverse(SL_list *list) __attribute__((nonnull(1)));

/* Moves all items of `*other` to the back of `list`, frees the other head and sets `*other` to null. Requires two
   different open lists, which is not checked. */
void SL_append_list(SL_list *list, SL_list **other) __attribute__((nonnull(1, 2)));

/* Makes `item` the first of a ring. Does nothing on an open list.
   Raises line 743, MOVA_PRECONDITION_BROKEN, when the list is closed and the item has no predecessor: then it is
   not on a ring. Where the raise returns, the list begins with that item and has no last one: it is lost until SL_roll
   makes an item of the ring the first. */
void SL_roll(SL_list *list, void *item) __attribute__((nonnull(1)));

/* ---- iteration: none of these allocates ---- */

/* Returns an iterator that delivers nothing. */
SL_iterator SL_empty_iter(void);

/* Returns an iterator that delivers, of the items from `from` to `to`, both inclusive, those that `test` accepts. A
   null test accepts all. Walks along `next` where `forward` is non-zero, else along `prev`; on a ring it may cross
   the seam. The list argument is not used. */
SL_iterator SL_tested_items_inbetween(const SL_list *list, void *from, void *to, int forward, SL_test test);

/* As SL_tested_items_inbetween, without a test. */
SL_iterator SL_all_items_inbetween(const SL_list *list, void *from, void *to, int forward);

/* Returns an iterator over the items that `test` accepts, first to last. */
SL_iterator SL_tested_items(const SL_list *list, SL_test test) __attribute__((nonnull(1)));

/* Returns an iterator over the items that `test` accepts, last to first. */
SL_iterator SL_tested_items_reversed(const SL_list *list, SL_test test) __attribute__((nonnull(1)));

/* Returns an iterator over all items, first to last. */
SL_iterator SL_all_items(const SL_list *list) __attribute__((nonnull(1)));

/* Returns an iterator over all items, last to first. */
SL_iterator SL_all_items_reversed(const SL_list *list) __attribute__((nonnull(1)));

/* Returns 1 and stores the next accepted item in `*item`, or returns 0 and leaves `*item` when the iteration is
   over: unlike a pointer list's, this iterator stores only what was accepted. Linear in the number of rejected
   items. */
int SL_next_item(SL_iterator *iterator, void **item) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#if !defined MOVA_NO_INLINE || defined MOVA_OWN_SIMPLE_LIST
#include <mova/lists/inline/simple_list.h>
#endif

#endif
