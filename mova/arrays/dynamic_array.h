/* SPDX-License-Identifier: MIT */
/* Dynamic array: a growable array of fixed-size elements that it knows only as bytes. It copies and moves bytes and calls no
   constructor or destructor: an object of C++ that owns something, such as a std::string, may not lie in it.

       DA_array                data
       +--------------+        +-----+-----+-----+-----+-----+-----+
       | element_size |        |  A  |  B  |  C  |  D  | 0 … |  ?  |
       | increment    |  3     +-----+-----+-----+-----+-----+-----+
       | nalloc       |  6       0     1     2     3  |
       | nitems       |  4                            +- spare: zeroes where growth added it and nobody wrote since,
       | data         | ----^                            else what was there before
       +--------------+

   A new array has no storage. The first growth allocates it, later ones reallocate it, always to a multiple of the
   increment, and always so that at least one element is spare. Only DA_clear, DA_copy_into and DA_release free it. The
   spare elements are part of the array's state: nothing writes there but growth, which zeroes what it adds, and whoever
   lengthens the array over them finds there what was left.

   Invariants:
     1. `data` is null exactly when `nalloc` is 0.
     2. `nalloc` is a multiple of `increment`.
     3. `nitems` is at most `nalloc`.
     4. `data` is a block of `nalloc` * `element_size` bytes from MM_alloc_item or MM_realloc_item.
   `increment` must be at least 1 and `nitems` not negative; nothing checks either.

   What makes an array grow, and what it then asks DA_extend for:

       DA_setsize(n)                           always                         n
       DA_string                               nalloc < nitems + 1            nitems + 1
       DA_get_item(i), DA_put_item(i)          nalloc <= i                    i + 1
       DA_append(n)                            nalloc < nitems + n            nitems + n
       DA_insert(i, n), i < nitems             nalloc < nitems + n            nitems + n
       DA_insert(i, n), i >= nitems            nalloc < i + n + 1             i + n + 1

   A pointer to an element lives until the array grows or is cleared; inserting, deleting, reversing and rolling put
   another element there. No source may lie in an array that has to grow for it. Iterators name elements by index, and
   live as long as the array: see DA_next.

   Errors are raised for module "darray". Nothing else is checked: a null array (but for DA_release and DA_memsize), an
   index below 0 and a count below 0 are undefined, and so are sizes whose sum with the increment does not stay below 2^31.

   Failures: an exception or a jump, out of the memory service, a raise or a test, passes through. The array is then
   unchanged and nothing is lost, where a function does not say otherwise. A null answer of the memory service is another
   matter. An array that grew from storage, and got null (line 111, MOVA_ALLOCATION_FAILED), has null `data` and the old
   `nalloc` and `nitems`: the old elements are lost to it, and the host, which knows about the failure, still has their
   block. Such an array breaks invariant 1. It is releasable: good for DA_release, DA_clear and DA_memsize, whatever became
   of the raise. An array that had no storage still has none: it is unchanged, unless the host returned. Where the host
   returned from the raise, the function goes on as far as it can without storage: each says how far. An array whose
   `nitems` then counts elements that are not there is releasable. Only DA_reverse and DA_roll take a null answer as
   undefined.

   Ownership: the array owns its head and its storage. One thread at a time.

   Cost: constant, where nothing else is said; growth is linear, and by a fixed increment, so that appending n elements
   one at a time moves the storage up to n / increment times. */
#ifndef MOVA_ARRAYS_DYNAMIC_ARRAY_H
#define MOVA_ARRAYS_DYNAMIC_ARRAY_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* An array's head, which DA_create makes and DA_release frees. Programs read it, and change it through the functions
   alone. */
typedef struct DA_array {
    uint32_t element_size; /* bytes */
    int32_t increment;     /* elements */
    int32_t nalloc;        /* elements allocated */
    int32_t nitems;        /* elements in use */
    void *data;            /* the storage; null where there is none */
} DA_array;

/* Accepts an element, which it receives where it lies in the array, by returning non-zero. */
typedef int (*DA_test)(void *element);

/* An iterator, which the caller keeps and which owns nothing. */
typedef struct DA_iterator {
    DA_array *array; /* that it walks over */
    int32_t forward; /* zero walks down, anything else up */
    int32_t current; /* the next index to look at */
    int32_t last;    /* the last index to look at */
    DA_test test;    /* null accepts every element */
} DA_iterator;

/* ---- creation and disposal ---- */

/* Returns a new empty array of elements of `element_size` bytes, without storage. Requires `increment` >= 1.
   Raises line 33, MOVA_ALLOCATION_FAILED, when there is no memory for the head; returns null where the host returns. */
DA_array *DA_create(uint32_t element_size, int32_t increment) __attribute__((warn_unused_result));

/* Frees the storage, if there is any, and the head. Does nothing for null. */
void DA_release(DA_array *array);

/* Frees the storage, if there is any. The array is as new, with its element size and increment. */
void DA_clear(DA_array *array) __attribute__((nonnull(1)));

/* Returns a new array of the same elements, element size and increment; of an empty array, without storage. Linear.
   Raises line 271, MOVA_ALLOCATION_FAILED, when there is no memory for the head; returns null where the host returns.
   When there is none for the storage, raises as DA_append; returns an array without elements where the host returns. A
   jump loses the new head. */
DA_array *DA_copy(const DA_array *array) __attribute__((nonnull(1), warn_unused_result));

/* Clears `destination`, then appends the elements of `source` to it. The destination keeps its increment. An array that
   is copied into itself is cleared, and so is one that there is no storage for. Linear.
   Raises line 289, MOVA_PRECONDITION_BROKEN, when the element sizes differ. Where the host returns, goes on to append
   `nitems` elements of the destination's size from the source's storage, if that holds as many bytes. */
void DA_copy_into(DA_array *destination, const DA_array *source) __attribute__((nonnull(1, 2)));

/* ---- sizes ---- */

/* Returns the number of elements in use. */
int32_t DA_nitems(const DA_array *array) __attribute__((nonnull(1)));

/* Returns the number of elements that there is storage for. */
int32_t DA_nalloc(const DA_array *array) __attribute__((nonnull(1)));

/* Returns the bytes of storage, modulo 2^32; 0 for null. */
uint32_t DA_memsize(const DA_array *array);

/* Returns the bytes that the array holds, modulo 2^32: its storage, if there is any, and 20 for the head. */
uint32_t DA_check(const DA_array *array) __attribute__((nonnull(1)));

/* Makes `nalloc` at least (n / increment + 1) * increment, which is the smallest multiple of the increment above `n`.
   The elements stay, what is added is zeroed, and `nitems` stays.
   Raises line 111, MOVA_ALLOCATION_FAILED, when there is no memory; where the host returns, returns. */
void DA_extend(DA_array *array, int32_t n) __attribute__((nonnull(1)));

/* Extends the array for `n` elements, always, and makes it that long: longer or shorter. After a failure that returned,
   `nitems` is `n` too. */
void DA_setsize(DA_array *array, int32_t n) __attribute__((nonnull(1)));

/* Makes the array `n` elements long where it is longer. Keeps the storage. */
void DA_truncate(DA_array *array, int32_t n) __attribute__((nonnull(1)));

/* Makes the array 0 elements long. Keeps the storage. */
void DA_reset(DA_array *array) __attribute__((nonnull(1)));

/* ---- elements ---- */

/* Returns the storage, which is null when there is none. */
void *DA_data(const DA_array *array) __attribute__((nonnull(1)));

/* Makes a string of an array of bytes: writes a zero byte at byte `nitems` of the storage, whatever the element size,
   and returns the storage. The array does not become longer. Returns null after a failure that returned. */
char *DA_string(DA_array *array) __attribute__((nonnull(1)));

/* Returns a pointer to element `i`. Where the array ends before that, makes it `i` + 1 elements long. After a failure
   that returned, does that too and returns null. */
void *DA_get_item(DA_array *array, int32_t i) __attribute__((nonnull(1)));

/* Copies an element over element `i`, or zeroes that where `source` is null. Where the array ends before that, makes it
   `i` + 1 elements long; the elements in between are not written. After a failure that returned, does nothing more. */
void DA_put_item(DA_array *array, int32_t i, const void *source) __attribute__((nonnull(1)));

/* Copies `n` elements to the end. After a failure that returned, does nothing more. Linear in `n`. */
void DA_append(DA_array *array, const void *source, int32_t n) __attribute__((nonnull(1)));

/* Copies `n` elements in before element `i`. Where the array ends before that, the elements in between are not written.
   Linear in `n` and the number of elements from there on. After a failure that returned, does nothing more where `i` is
   an element, else makes the array `i` + `n` elements long. */
void DA_insert(DA_array *array, int32_t i, const void *source, int32_t n) __attribute__((nonnull(1)));

/* Takes `n` elements out, from element `i` on. Requires that there are so many. Keeps the storage. Linear in the number
   of elements beyond. */
void DA_delete(DA_array *array, int32_t i, int32_t n) __attribute__((nonnull(1)));

/* Returns 1 when both arrays have the same number of elements, of the same size and the same bytes, else 0. Linear. */
int DA_equal(const DA_array *a, const DA_array *b) __attribute__((nonnull(1, 2)));

/* ---- iteration: none of these allocates ---- */

/* Returns an iterator over all elements, first to last. */
DA_iterator DA_all_items(DA_array *array) __attribute__((nonnull(1)));

/* Returns an iterator over the elements that `test` accepts, first to last. A null test accepts all. */
DA_iterator DA_tested_items(DA_array *array, DA_test test) __attribute__((nonnull(1)));

/* Returns 1 and stores a pointer to the next accepted element in `*item`, or returns 0 and stores null when the
   iteration is over. The iterator goes on to the index that was the last one when it was made; elements that were
   appended since are not delivered, and indices that have gone since are passed over. Linear in the number of rejected
   elements.
   Deliberately, for each index that is passed over the test is asked once more about the element that it rejected last
   in this call. An element that the test throws or jumps for has been passed, and `*item` points to it. To walk down, a
   caller sets `forward` to 0, `current` to the upper index and `last` to the lower. */
int DA_next(DA_iterator *iterator, void **item) __attribute__((nonnull(1, 2)));

/* ---- reordering ---- */

/* Reverses the order, through a buffer of one element from MM_alloc_item, which must not fail. Linear. */
void DA_reverse(DA_array *array) __attribute__((nonnull(1)));

/* Rotates the elements so that element `n` becomes the first: element i is then what element (i + n) modulo `nitems` was,
   whatever the sign of `n`. Does nothing to fewer than 2 elements. Uses a buffer for the smaller of the two pieces from
   MM_alloc_item, which must not fail, unless everything stays. Linear. */
void DA_roll(DA_array *array, int32_t n) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#if !defined MOVA_NO_INLINE || defined MOVA_OWN_DYNAMIC_ARRAY
#include <mova/arrays/inline/dynamic_array.h>
#endif

#endif
