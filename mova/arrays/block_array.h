/* SPDX-License-Identifier: MIT */
/* Block array: a growable array of fixed-size elements in a record that the caller declares, open or closed into a ring.

       GB_block                          data
       +--------------+                  +-----+-----+-----+-----+-----+-----+
       | data         | ---------------> |  A  |  B  |  C  |  D  |  ?  |  ?  |
       | element_size |                  +-----+-----+-----+-----+-----+-----+
       | count        |  4                 0     1     2     3
       | capacity     |  6               element i lies at data + i * element_size
       | increment    |  2
       | closed       |  0 open: the array ends at D; 1 ring: after D comes A
       +--------------+

   The caller reads the fields, and there is no accessor for the elements: the order of the fields is part of the
   interface. The record may be uninitialised before GB_init, GB_copy or GB_remove_and_get_end_part fills it.

   Invariants, from then until GB_release:
     1. 0 <= `count` <= `capacity`.
     2. `data` is a block of `capacity` * `element_size` bytes from MM_alloc_item or MM_realloc_item, or null where
        `capacity` is 0.
     3. `closed` is 0 or 1.
   GB_remove_last_item of an empty array makes `count` -1, which breaks the first.

   Three edits, each at C (index 2):

       GB_roll                       ring A B C D       ring C D A B
       GB_make_open_at_position      ring A B C D       open C D A B C
       GB_remove_and_get_end_part    open A B C D       open A B C   and, in the new record,   open C D

   The element at a cut stands at both of its sides. That is deliberate: an open array that was made from a ring has
   one element more than the ring.

   What an edit does to a pointer to an element, and to a position (an index):

       edit                                        pointers                      positions
       appending, inserting, to a full array       die                           those from there on are one higher
       appending, inserting otherwise              from there on: next element   those from there on are one higher
       GB_remove_item                              from there on: next element   those beyond are one lower
       GB_set_number_of_elements, GB_copy_into     die where the capacity        stay
                                                   changes
       GB_append_block                             as for a full array; the      stay; of the other: + the result
                                                   other's die
       GB_reverse, GB_roll, GB_make_open_…         stay, at another element      name another element
       GB_release                                  die                           -

   An element that is appended or inserted must not lie in the array itself when that is full.

   Ownership: the record is the caller's, the storage the array's. Nothing here calls back, and nothing raises; indices are
   tested only where a function says so; anything else that is out of range is undefined, and so are a full array whose
   `increment` is below 1, or whose count and increment together are above 2147483647, and arrays that are joined to more
   elements than that. One thread at a time.

   Failures: an exception or a jump out of the memory service passes through. Every array is then unchanged, where a
   function does not say otherwise, and nothing is lost. A record that was to be filled is an empty array without storage:
   `data` null, `capacity` 0. It is good for everything, and there is nothing in it to release. A null answer of the
   memory service leaves that too in GB_init; in all other functions it is undefined.

   Cost: constant, where nothing else is said. Runs of elements are moved as one block. */
#ifndef MOVA_ARRAYS_BLOCK_ARRAY_H
#define MOVA_ARRAYS_BLOCK_ARRAY_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* An array's record, which the caller declares and which owns its storage. Programs read it, and change it through the
   functions alone. */
typedef struct GB_block {
    void *data;            /* the storage */
    uint32_t element_size; /* bytes */
    int32_t count;         /* elements in use */
    int32_t capacity;      /* elements allocated */
    int16_t increment;     /* elements that are added when a full array grows */
    int16_t closed;        /* 1 for a ring, 0 for an open array */
} GB_block;

/* ---- creation, disposal, state ---- */

/* Fills the record: no elements of `element_size` bytes, open, increment 10, with storage for `initial_capacity`
   elements, or for 1 where that is below 2. Returns the storage, or null where the memory service answers that. A record
   that has storage must be released first. */
void *GB_init(GB_block *block, uint32_t element_size, int32_t initial_capacity) __attribute__((nonnull(1)));

/* Sets the number of elements by which a full array grows. Only the low 16 bits count, as a signed number. */
void GB_set_inc(GB_block *block, int32_t increment) __attribute__((nonnull(1)));

/* Makes the storage as large as `n` elements. Does nothing where `n` is the capacity, or where it is not above the
   count; so it can shrink the storage too. Where the capacity is 0 it allocates anew. Linear. */
void GB_set_number_of_elements(GB_block *block, int32_t n) __attribute__((nonnull(1)));

/* Frees the storage, where the capacity is above 0, and sets the capacity to 0. `data` and `count` stay as they are
   and mean nothing any more. */
void GB_release(GB_block *block) __attribute__((nonnull(1)));

/* Sets the count to 0 and keeps the storage. */
void GB_make_empty(GB_block *block) __attribute__((nonnull(1)));

/* Makes the array a ring. */
void GB_set_closed(GB_block *block) __attribute__((nonnull(1)));

/* Makes the array open. */
void GB_reset_closed(GB_block *block) __attribute__((nonnull(1)));

/* Returns the number of elements. */
int32_t GB_count_items(const GB_block *block) __attribute__((nonnull(1)));

/* ---- elements ---- */

/* Copies an element to the end and returns its index. A full array first grows to `increment` elements more than it
   has, which is linear. */
int32_t GB_append_after_last(GB_block *block, const void *element) __attribute__((nonnull(1)));

/* Appends the elements of `other`, then releases `other`. Where the storage is too small it grows to exactly what is
   needed. Returns the index of the first appended element: what the count was. Requires the same element size. Linear
   in the other's count. */
int32_t GB_append_block(GB_block *block, GB_block *other) __attribute__((nonnull(1, 2)));

/* Subtracts 1 from the count, even from 0. */
void GB_remove_last_item(GB_block *block) __attribute__((nonnull(1)));

/* Copies an element over element `i`. */
void GB_replace_item(GB_block *block, int32_t i, const void *element) __attribute__((nonnull(1)));

/* Copies an element in before element `i`; `i` may be the count. Grows as GB_append_after_last. Linear in the number of
   elements from there on. */
void GB_insert_item(GB_block *block, int32_t i, const void *element) __attribute__((nonnull(1)));

/* Takes element `i` out. Linear in the number of elements beyond. */
void GB_remove_item(GB_block *block, int32_t i) __attribute__((nonnull(1)));

/* ---- positions ---- */

/* Returns the position `steps` after `index`, or before it for a negative number: around a ring, or -1 outside an open
   array. Returns -1 for an empty array. */
int32_t GB_advance(const GB_block *block, int32_t index, int32_t steps) __attribute__((nonnull(1)));

/* Returns `position`: a position is an index. */
int32_t GB_get_index(const GB_block *block, int32_t position);

/* ---- copying and reordering ---- */

/* Fills the new record with a copy: the same elements, increment and state, with storage for exactly the count, or for
   1. The new record must have no storage. Linear. */
void GB_copy(GB_block *new_block, const GB_block *source) __attribute__((nonnull(1, 2)));

/* Gives `destination` the elements and the state of `source`, not its increment. Makes its storage as large as they are
   with GB_set_number_of_elements, which does nothing where the destination has as many elements or more. Requires the
   same element size. Linear. */
void GB_copy_into(GB_block *destination, const GB_block *source) __attribute__((nonnull(1, 2)));

/* Reverses the order, through a buffer of one element from MM_alloc_item. Linear. */
void GB_reverse(GB_block *block) __attribute__((nonnull(1)));

/* ---- rings ---- */

/* Cuts a ring open at `position`, whose element becomes the first and, once more, the last. Does nothing to an open
   array or where there is no such position. Grows as GB_append_after_last, then uses a buffer of `count` elements from
   MM_alloc_item: where that fails, the array has grown and is the same ring. Linear. */
void GB_make_open_at_position(GB_block *block, int32_t position) __attribute__((nonnull(1)));

/* Splits an open array: fills the new record with the elements from `position` on, with storage for exactly those and
   the increment of `source`, which keeps those up to and including `position`, and its storage. Does nothing to a ring
   or where there is no such position. The new record must have no storage. Linear in the new count. */
void GB_remove_and_get_end_part(GB_block *new_block, GB_block *source, int32_t position) __attribute__((nonnull(1, 2)));

/* Rotates a ring so that element `n` becomes the first: element i is then what element (i + n) modulo the count was,
   whatever the sign of `n`. Does nothing to an open array, or to fewer than 2 elements. Uses a buffer for the smaller of
   the two pieces from MM_alloc_item, unless everything stays. Linear. */
void GB_roll(GB_block *block, int32_t n) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#if !defined MOVA_NO_INLINE || defined MOVA_OWN_BLOCK_ARRAY
#include <mova/arrays/inline/block_array.h>
#endif

#endif
