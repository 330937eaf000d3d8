/* SPDX-License-Identifier: MIT */
/* Sorted number array: a set of 32-bit numbers in ascending order, in a dynamic array.

   The numbers usually are positions in a companion list that is kept elsewhere: which of its entries are selected, say.
   Whenever the companion is edited, its owner calls the function that adapts the numbers, and they go on naming the same
   entries:

       companion             a b c d e          selected: b and d                 [1 3]
       insert x at 2         a b x c d e        SA_adapt_for_insert(array, 2)     [1 4]
       remove at 1           a x c d e          SA_adapt_for_remove(array, 1)     [3]
       reverse               e d c x a          SA_adapt_for_reverse(array, 5)    [1]
       make entry 3 first    x a e d c          SA_adapt_for_roll(array, 3, 5)    [3]

   The array is any DA_array of element size 4: the caller makes it with DA_create(4, increment), reads it with DA_data
   and DA_nitems, and releases it with DA_release.

   Invariant:
     1. Each number is less than the next.
   SA_add_number, SA_remove_number and the adapting functions keep it, but for SA_adapt_for_roll, which keeps it only
   where no number lay below `n`, and where fewer than two are stored.

   After a roll the numbers are right, but their order is not to be relied on. Those that lay below `n`, say m of them,
   have become the largest, at the front. A rotation by m would put them in order again; the array is rotated by the index
   of the last of them, m - 1. That is deliberate:

       10 entries, n = 3     [5 7]         [2 4]                     none below 3: in order
                             [1 5 7]       [8 2 4]                   one below 3: no rotation
                             [1 2 5 7]     [8 9 2 4] -> [9 2 4 8]    two below 3: rotated by 1
                             [1 2]         [8 9]     -> [9 8]        all below 3: rotated by 1

   On an array that is not in order SA_check_number, SA_add_number and SA_remove_number may miss a number that is there:
   they search by halves, as on any array.

   Numbers are compared as signed. A number that would not fit in 32 bits wraps around; a roll computes in more bits, and
   its remainder always fits.

   Failures: no errors but those of DA_insert, where the array cannot grow for SA_add_number, and the array is then as that
   leaves it. An exception or a jump out of the memory service leaves it unchanged: SA_adapt_for_reverse and
   SA_adapt_for_roll take the buffer that they need before they change a number.

   Ownership: the array is the caller's. One thread at a time.

   Cost: SA_check_number is logarithmic, all others are linear; all are cheap passes over 4 bytes a number. */
#ifndef MOVA_ARRAYS_SORTED_NUMBER_ARRAY_H
#define MOVA_ARRAYS_SORTED_NUMBER_ARRAY_H

#include <stdint.h>

#include <mova/arrays/dynamic_array.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Adds a number, with DA_insert, unless it is there. */
void SA_add_number(DA_array *array, int32_t number) __attribute__((nonnull(1)));

/* Removes a number, with DA_delete, if it is there. */
void SA_remove_number(DA_array *array, int32_t number) __attribute__((nonnull(1)));

/* Returns 1 when the number is there, else 0. */
int SA_check_number(const DA_array *array, int32_t number) __attribute__((nonnull(1)));

/* The companion got a new entry at `position`: adds 1 to every number from `position` on. */
void SA_adapt_for_insert(DA_array *array, int32_t position) __attribute__((nonnull(1)));

/* The companion lost its entry at `position`: removes that number, and subtracts 1 from every one above it. */
void SA_adapt_for_remove(DA_array *array, int32_t position) __attribute__((nonnull(1)));

/* The companion of `count` entries was reversed: reverses the array with DA_reverse and makes every number v the number
   `count` - v - 1. */
void SA_adapt_for_reverse(DA_array *array, int32_t count) __attribute__((nonnull(1)));

/* The companion of `count` entries was rolled so that its entry `n` became the first: rotates the array with DA_roll as
   said above, and makes every number v the remainder of v + `count` - `n` divided by `count`, with the sign of the
   dividend. Requires that `count` is not 0. */
void SA_adapt_for_roll(DA_array *array, int32_t n, int32_t count) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
