/* SPDX-License-Identifier: MIT */
/* Double list: a list of double-precision numbers.

   It is an element list (mova/lists/element_list.h) whose elements are doubles, handed over by value. Positions and
   iterators are the element list's, and so are the invariants, the ownership, what edits do to positions and
   iterators, the two errors, which pass through under the module name "egenlist", and what a failure leaves.

       DBLL_list: EL_list with element_size 8        node: | prev | next | double |

   Some functions assume, and do not check, a list that is open and ascending; they say so. Comparisons are those of
   the arithmetic: a NaN is neither less than nor near anything, and the two zeroes are equal.

   Cost: constant, where nothing else is said. */
#ifndef MOVA_LISTS_DOUBLE_LIST_H
#define MOVA_LISTS_DOUBLE_LIST_H

#include <mova/lists/element_list.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* A list's head: an element list's, of elements of 8 bytes, whose every field means the same. */
typedef EL_list DBLL_list;

/* ---- creation, disposal, state ---- */

/* Returns a new empty, open list. */
DBLL_list *DBLL_create(void) __attribute__((warn_unused_result));

/* Returns a new list of two values, in the order given. A jump loses the part that was made. */
DBLL_list *DBLL_create_with_two(double first, double second) __attribute__((warn_unused_result));

/* Frees all nodes and the head, and sets `*list` to null. Linear. */
void DBLL_release(DBLL_list **list) __attribute__((nonnull(1)));

/* Frees all nodes. The list is empty and open afterwards. Linear. */
void DBLL_make_empty(DBLL_list *list) __attribute__((nonnull(1)));

/* Returns the number of values. */
int32_t DBLL_size(const DBLL_list *list) __attribute__((nonnull(1)));

/* Returns the number of values from `from` along `next` to `to`, both inclusive. Linear. */
int32_t DBLL_size_inbetween(const DBLL_list *list, EL_node *from, EL_node *to) __attribute__((nonnull(1)));

/* Returns 1 when the list holds no value, else 0. It looks at the ends, not at the count. */
int DBLL_is_empty(const DBLL_list *list) __attribute__((nonnull(1)));

/* Makes the list a ring. */
void DBLL_set_closed(DBLL_list *list) __attribute__((nonnull(1)));

/* Makes the list open. */
void DBLL_reset_closed(DBLL_list *list) __attribute__((nonnull(1)));

/* Returns 16 for each value, modulo 2^32: what the values and their links occupied on the 32-bit machine. It checks nothing. */
int32_t DBLL_check(const DBLL_list *list) __attribute__((nonnull(1)));

/* ---- insertion, removal, replacement ---- */

/* Adds a value at the back. Returns its position. */
EL_node *DBLL_add_double(DBLL_list *list, double value) __attribute__((nonnull(1)));

/* Adds a value before `position`. Returns its position. */
EL_node *DBLL_insert_before(DBLL_list *list, EL_node *position, double value) __attribute__((nonnull(1)));

/* Adds a value after `position`. Returns its position. */
EL_node *DBLL_insert_after(DBLL_list *list, EL_node *position, double value) __attribute__((nonnull(1)));

/* Adds a value before the one with this index, counted from 0, and returns its position. Where there is none, inserts
   nothing and returns null. Linear in the index. */
EL_node *DBLL_insert_before_index(DBLL_list *list, int32_t index, double value) __attribute__((nonnull(1)));

/* As DBLL_insert_before_index, but adds the value after the one with this index. */
EL_node *DBLL_insert_after_index(DBLL_list *list, int32_t index, double value) __attribute__((nonnull(1)));

/* Inserts `value` into an ascending list, unless a value lies within `tolerance` of it, the tolerance included.
   Returns 1 when it was inserted beside an element, and 0 when it was not inserted or was appended to the end: 0
   does not tell these two apart. From 9 elements on the search begins at the end that the value is nearer to; a
   value past the end is then inserted after the last node, with result 1. Linear. */
int DBLL_add_double_unique(DBLL_list *list, double value, double tolerance) __attribute__((nonnull(1)));

/* Removes the node. */
void DBLL_remove_double(DBLL_list *list, EL_node *position) __attribute__((nonnull(1, 2)));

/* Removes the value with this index and returns 1, or returns 0 where there is none. Linear in the index. */
int DBLL_remove_at_index(DBLL_list *list, int32_t index) __attribute__((nonnull(1)));

/* Sorts the list, as DBLL_sort does, and thins out neighbours that differ by less than `tolerance`, the tolerance
   excluded. A value is compared with the last one that was kept; the first and the last value of the sorted list
   are never removed. Linear beside the sorting. */
void DBLL_remove_double_occ(DBLL_list *list, double tolerance) __attribute__((nonnull(1)));

/* Sets the value at `position`. */
void DBLL_replace_double(EL_node *position, double value) __attribute__((nonnull(1)));

/* Replaces the values from `from` along `next` to `to`, both inclusive, by those of `source` from its first.
   Linear.
   Raises what EL_replace_items_inbetween raises. */
void DBLL_replace_doubles_inbetween(DBLL_list *list, EL_node *from, EL_node *to, DBLL_list *source)
    __attribute__((nonnull(1, 4)));

/* ---- values ---- */

/* Returns the first value, 0.0 of an empty list. */
double DBLL_begin_value(const DBLL_list *list) __attribute__((nonnull(1)));

/* Returns the last value, 0.0 of an empty list. */
double DBLL_end_value(const DBLL_list *list) __attribute__((nonnull(1)));

/* Sets the first value. Does nothing on an empty list. */
void DBLL_set_begin_value(DBLL_list *list, double value) __attribute__((nonnull(1)));

/* Sets the last value. Does nothing on an empty list. */
void DBLL_set_end_value(DBLL_list *list, double value) __attribute__((nonnull(1)));

/* Adds `offset` to every value. Linear. */
void DBLL_add_to_all(DBLL_list *list, double offset) __attribute__((nonnull(1)));

/* Returns the index of the value that is nearest to `value`, of those nearer than twice `distance` (twice: that is
   deliberate), the first of several; −1 where there is none. Stores how near it is in `*nearest_distance`, or twice
   `distance` where there is none. The list need not be sorted. Linear. */
int32_t DBLL_find_index_of_nearest(const DBLL_list *list, double value, double distance, double *nearest_distance)
    __attribute__((nonnull(1, 4)));

/* Sorts the values in ascending order; the positions stay where they are and get other values. Equal values, the
   two zeroes among them, keep their order. A NaN keeps its place, and no value moves past it: the values between
   two NaNs are sorted among themselves. A ring is sorted from `first` to `last` and stays a ring. Linear for a list
   that is in order, else n log n, with room for n doubles from the standard library; n² where it has none. */
void DBLL_sort(DBLL_list *list) __attribute__((nonnull(1)));

/* ---- positions, copies, rings ---- */

/* As EL_advance. */
EL_node *DBLL_advance(const DBLL_list *list, EL_node *position, int32_t steps);

/* As EL_reverse. */
void DBLL_reverse(DBLL_list *list) __attribute__((nonnull(1)));

/* As EL_total_copy, which tells what a failure leaves. */
DBLL_list *DBLL_copy(DBLL_list *list) __attribute__((nonnull(1), warn_unused_result));

/* As EL_total_copy_inbetween, which tells what a failure leaves. */
DBLL_list *DBLL_copy_inbetween(DBLL_list *list, EL_node *from, EL_node *to)
    __attribute__((nonnull(1), warn_unused_result));

/* As EL_roll, which tells what it raises. */
void DBLL_roll(DBLL_list *list, EL_node *position) __attribute__((nonnull(1, 2)));

/* ---- iteration: none of these allocates ---- */

/* Returns an iterator over all values, first to last. */
EL_iterator DBLL_all_doubles(const DBLL_list *list) __attribute__((nonnull(1)));

/* Returns an iterator over all values, last to first. */
EL_iterator DBLL_all_doubles_reversed(const DBLL_list *list) __attribute__((nonnull(1)));

/* Returns an iterator over the values from `from` along `next` to `to`, both inclusive. */
EL_iterator DBLL_all_doubles_inbetween(const DBLL_list *list, EL_node *from, EL_node *to) __attribute__((nonnull(1)));

/* Returns an iterator over the values from `from` along `prev` to `to`, both inclusive. */
EL_iterator DBLL_all_doubles_inbetween_reversed(const DBLL_list *list, EL_node *from, EL_node *to)
    __attribute__((nonnull(1)));

/* Returns 1 and stores the next position, or returns 0 when the iteration is over. */
int DBLL_next_position(EL_iterator *iterator, EL_node **position) __attribute__((nonnull(1)));

/* Returns 1 and stores the next value, or returns 0 and leaves `*value` when the iteration is over. */
int DBLL_next_double(EL_iterator *iterator, double *value) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#if !defined MOVA_NO_INLINE || defined MOVA_OWN_DOUBLE_LIST
#include <mova/lists/inline/double_list.h>
#endif

#endif
