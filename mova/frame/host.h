/* SPDX-License-Identifier: MIT */
/* The host services: what the containers ask of the program that they are linked into.

   The containers allocate, print and report errors only through the functions declared here. They define none
   of them: a program takes libmova_host, which supplies all of them, or defines a group of its own.

       group           functions                                            supplied by
       memory          MM_alloc_item  MM_dealloc_item  MM_realloc_item      mova/host/memory.h
       memory blocks   mb_alloc  mb_get  mb_free                            mova/host/memory_blocks.h
       messages        mova_dprintf  debug_break  MSG_Message               mova/host/messages.h
       errors          EX_raise_exception_line                              mova/host/errors.h

   A program that replaces a group defines every function of that group, and its definitions are then used by
   the containers too, in shared and in static links.

   Errors: a service raises as its own header says, or as the program's definitions do; what passes through a container then
   says each container's header. Threads: all services may be called from several threads at the same time, but for those of
   one pool of memory blocks.

   Every size is a count of bytes, and may be 0: arrays of elements of no bytes ask for blocks of no bytes, have them
   reallocated and give them back as they do with others. */
#ifndef MOVA_FRAME_HOST_H
#define MOVA_FRAME_HOST_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* The machine word: wide enough for an integer or a pointer. */
typedef intptr_t mova_word;

/* A block of a memory-block pool. 0 is "no block". */
typedef uint32_t mb_handle;

/* A pool of movable memory blocks. The containers only hand it through. */
typedef struct mb_pool mb_pool;

/* The codes that accompany a raised error. A new one takes a text in mova/host/errors.cpp, which tests/host/errors_test.cpp
   expects, and a line in docs/contracts.md and in docs/errors.md. */
enum {
    MOVA_ALLOCATION_FAILED = 4197,   /* memory or room in a pool ran out */
    MOVA_PRECONDITION_BROKEN = 4297, /* a caller broke a rule of the function that it called */
    MOVA_ID_NOT_FOUND = 4397         /* a lookup by id or by pointer found nothing */
};

/* ---- memory ---- */

/* Returns a block of `size` bytes, not zeroed, aligned for any record or element of that size. Must not return null,
   not for a size of 0 either: a dynamic array takes that for a failure and raises MOVA_ALLOCATION_FAILED, and every
   other container writes through the null pointer. A service that runs out of memory reports that itself. The block is
   the caller's until it gives it to MM_dealloc_item or MM_realloc_item. */
void *MM_alloc_item(size_t size) __attribute__((malloc, warn_unused_result, alloc_size(1)));

/* Takes back a block. `size` is exactly the size that the block was allocated, or last reallocated, with. Does not fail: it
   neither throws nor jumps. */
void MM_dealloc_item(void *item, size_t size);

/* Returns a block of `new_size` bytes that begins with the old block's bytes, as many as the smaller of the two sizes;
   that may be the new one, and they may be equal. `old_size` is exact, as for MM_dealloc_item. The old pointer is dead
   afterwards. Only the two arrays call it. Where it returns null the old block stays as it is, with the service alone: a
   dynamic array forgets it, has no storage from then on, and raises MOVA_ALLOCATION_FAILED; a block array writes through
   the null pointer. */
void *MM_realloc_item(void *item, size_t old_size, size_t new_size) __attribute__((warn_unused_result, alloc_size(3)));

/* ---- memory blocks ---- */

/* Allocates a movable block of `size` bytes in `pool`. Returns its handle, or 0 when the pool has no room. */
mb_handle mb_alloc(mb_pool *pool, size_t size);

/* Returns the block's address, which holds until the next call that may move blocks of the pool. */
void *mb_get(mb_pool *pool, mb_handle handle);

/* Frees the block and clears the caller's handle. Does not fail, as MM_dealloc_item; what the default service raises for a handle
   that is not live says mova/host/memory_blocks.h. */
void mb_free(mb_pool *pool, mb_handle *handle) __attribute__((nonnull(2)));

/* ---- messages ---- */

/* Writes text to the debug output, in the manner of printf. It stands under this name because the C library owns
   the symbol `dprintf`, with another signature. */
void mova_dprintf(const char *format, ...) __attribute__((format(printf, 1, 2), nonnull(1)));

/* A place where a debugger may stop. Returns at once when none is attached. */
void debug_break(void);

/* Shows a warning to the user. `text` is the caller's and is not kept. */
void MSG_Message(const char *text) __attribute__((nonnull));

/* ---- errors ---- */

/* Reports an error: the name of the module that found it, the line that identifies the check, and one of the codes
   above. Ordinarily it does not return (it throws, jumps or ends the program). A host may return from it all the
   same; each container function says what it does then. `module` is a constant string that is never freed. */
void EX_raise_exception_line(const char *module, int32_t line, int32_t code);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
