/* SPDX-License-Identifier: MIT */
/* Id/pointer lookup table: hands out small integer ids for pointers, and turns an id back into its pointer.

   The table is a dynamic array of words as wide as a pointer. Word 0 holds the table's flags; the word at index i > 0 is
   the slot of id i, with its pointer, or null where that id is free.

       DA_array                 data
       nitems       5           +-------+-----+-----+------+-----+
       element_size 4 or 8      | flags |  p  |  q  | null |  p  |
       increment    1024        +-------+-----+-----+------+-----+
                                  0       1     2     3      4      <- ids: 3 is free, p has two

   Invariants:
     1. The element size is sizeof(void *), and the array's own invariants hold.
     2. There is at least the word of the flags, and nothing is set in it but bit 0: reuse is allowed.

   Ids are handed out by appending, in increasing order: no free one is looked for, and a pointer that is added twice has
   two. io_lut_set gives any id to any pointer. There is no function that removes: an id is freed by setting it to null,
   which for an id in use needs io_lut_allow_reuse. Id 0 is never valid.

   Pointers may be found in the table by DA_data and DA_nitems too. An iterator reads the storage and the length that the
   table had when it was made: once an addition or io_lut_set has made the table longer it must not be used any more.
   Setting an id otherwise shows in what the iterator delivers.

   Errors are raised for module "plut", as the functions say; a table that cannot grow raises as the dynamic array does.
   Null tables are undefined, and so are negative ids in io_lut_set.

   Failures: an exception or a jump, out of the memory service or a raise, passes through. The table is unchanged and
   nothing is lost, where a function does not say otherwise. A null answer of the memory service leaves a table that was to
   grow as it leaves a dynamic array: releasable.

   Ownership: the table owns its words; the pointers are the caller's and are never followed. One thread at a time.

   Cost: constant, where nothing else is said. */
#ifndef MOVA_ARRAYS_ID_LOOKUP_TABLE_H
#define MOVA_ARRAYS_ID_LOOKUP_TABLE_H

#include <stdint.h>

#include <mova/arrays/dynamic_array.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* An iterator, which the caller keeps and which owns nothing. */
typedef struct io_lut_iterator {
    void **storage; /* the table's words */
    int32_t count;  /* the words, that of the flags included */
    int32_t next;   /* the next index to look at */
} io_lut_iterator;

/* Returns a new table without ids. Raises as DA_create and DA_append do; returns null where the host returns from the
   first. Where it returns from the second, the table has no word for its flags and may only be released. A jump
   loses the part of the table that was made. */
DA_array *io_lut_create(void) __attribute__((warn_unused_result));

/* Lets io_lut_set overwrite ids in use, from now on. */
void io_lut_allow_reuse(DA_array *table) __attribute__((nonnull(1)));

/* Frees the table and sets `*table` to null. */
void io_lut_release(DA_array **table) __attribute__((nonnull(1)));

/* Gives the pointer the next id, and returns that. After a failure to grow that returned, returns the highest id that
   there is. */
int32_t io_lut_add(DA_array *table, void *pointer) __attribute__((nonnull(1)));

/* Returns the lowest id of the pointer; of null, the first free id. Linear, several slots at a time.
   Raises line 108, MOVA_ID_NOT_FOUND, when there is none; returns 0 where the host returns. */
int32_t io_lut_get_id(const DA_array *table, const void *pointer) __attribute__((nonnull(1)));

/* Returns the lowest id of the pointer, or 0 when there is none. Linear, several slots at a time. */
int32_t io_lut_look_id(const DA_array *table, const void *pointer) __attribute__((nonnull(1)));

/* Gives the id to the pointer. Beyond the highest id it makes the table longer; the ids in between are free.
   Raises line 140, MOVA_PRECONDITION_BROKEN, when reuse is not allowed, the table has that id, free or not, and its word
   is not the pointer; gives it to the pointer all the same where the host returns. Id 0 is the word of the flags, which
   it overwrites. */
void io_lut_set(DA_array *table, void *pointer, int32_t id) __attribute__((nonnull(1)));

/* Returns the pointer of the id.
   Raises line 155, MOVA_ID_NOT_FOUND, when there is no such id or it is free. Where the host returns, returns the word at
   that index, be it the flags or a spare one, or null where there is none. */
void *io_lut_get_ptr(const DA_array *table, int32_t id) __attribute__((nonnull(1)));

/* Returns the pointer of the id, or null when there is no such id or it is free. */
void *io_lut_look_ptr(const DA_array *table, int32_t id) __attribute__((nonnull(1)));

/* Returns an iterator over the pointers in the order of their ids. Allocates nothing. */
io_lut_iterator io_lut_all_items(const DA_array *table) __attribute__((nonnull(1)));

/* Returns the next pointer, or null when the iteration is over. Free ids are passed over. */
void *io_lut_next_item(io_lut_iterator *iterator) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#if !defined MOVA_NO_INLINE || defined MOVA_OWN_ID_LOOKUP_TABLE
#include <mova/arrays/inline/id_lookup_table.h>
#endif

#endif
