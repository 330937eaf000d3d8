/* SPDX-License-Identifier: MIT */
/* Swap cache: keeps the bodies of many items in a pool of memory blocks, and drops bodies when the pool runs short.

   The caller registers each item once, as an entry, with four callbacks. It asks for the entry's body with cc_get. A body
   that is not in memory is then fetched: the cache allocates a block, makes other entries give theirs back where the pool
   has no room, and has the item fill it. The cache never keeps an address of a block, only its handle: blocks may move.

       cc_cache          cc_entry         cc_entry         cc_entry
       +-------+  null <- +------+ <----> +------+ <----> +------+ -> null
       | first | -------> |  A   |        |  B   |        |  C   |
       | last  | ----+    | 0xC0 |        | 0x00 |        | 0x80 |
       | pool  |     |    +------+        +------+        +------+
       +-------+     |       | dirty         out          ^   | clean
           |         +-------------------------------------+   |
           v                 v  handle                         v  handle
       pool:   | ........ | body of A | ................ | body of C | ... |

       cc_get(B):  B is fetched and becomes the first entry: B A C.
       A body has to go:  A, the first in memory, is written back and gives its block up; then C.

   The front is at once the entry that was inserted or fetched last and the first to give its block back. That is
   deliberate: a body that has just been used makes room for the next.

   The states of an entry, by `status`, and what leads from each to the others:

       out     0x00   cc_insert without a handle       cc_get -> clean
       clean   0x80   its item can fill it again       an eviction -> out
       dirty   0xC0   cc_insert with a handle:         an eviction -> written back, then out
                      the block is the only copy

   An eviction is cc_swap_out, cc_flush, or cc_alloc when the pool has no room. Nothing makes a fetched body dirty: what a
   caller changes in one is lost when it is evicted. cc_remove and cc_make_empty end an entry in any state and write
   nothing back.

   Invariants:
     1. An entry's `next` names that entry as its `prev`; the `prev` of `first` and the `next` of `last` are null.
     2. `first` and `last` are both null, or neither.
     3. `status` has no bits but 0x80 and 0x40, and 0x40 only together with 0x80.
     4. `handle` names a live block of the pool while 0x80 is set, and is 0 otherwise.

   What each call does to the address that cc_get returned, and to the order of the entries:

       cc_get of a body in memory         addresses hold           the entry becomes the first
       cc_get of a body that is out       all addresses are dead   the entry becomes the first
       cc_alloc                           all addresses are dead   no change
       cc_lazy_swap_out                   addresses hold           an entry in memory becomes the first
       cc_swap_out, cc_flush              dead are those evicted   no change
       cc_insert                          addresses hold           the new entry is the first
       cc_remove, cc_make_empty           dead are those removed   the others keep their order

   Ownership: the cache owns its entries, and a block while its handle stands in one. The items, and blocks that were
   taken with cc_alloc, are the caller's. A cache's head is never freed: there is no release function.

   The callbacks run inside the cache's calls and have no result that is read, but the size. A write-back must not remove
   entries of the same cache, nor a fetch its own entry. Only cc_alloc raises, and so does cc_get, which calls it. A null
   cache, and an entry of another cache, are undefined. One thread at a time.

   Failures: an exception or a jump, out of a callback, the pool, the memory service, the debug output or a raise, passes
   through, and the cache is unchanged, where a function does not say otherwise. It is usable in every case, and nothing
   is lost. A body that could not be written back stays in memory and dirty.

   Cost: constant, where nothing else is said, beside the callbacks and the pool. */
#ifndef MOVA_CACHE_SWAP_CACHE_H
#define MOVA_CACHE_SWAP_CACHE_H

#include <stdint.h>

#include <mova/frame/host.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Returns the size of an item's body in bytes. */
typedef uint32_t (*cc_size_fn)(void *item);

/* Fills the block, of `size` bytes, with the item's body. */
typedef void (*cc_swap_in_fn)(void *item, void *block, uint32_t size);

/* Saves the body that is in the block, which is then freed. */
typedef void (*cc_write_back_fn)(void *item, void *block);

/* Told of an entry that cc_make_empty is about to remove. */
typedef void (*cc_release_fn)(void *item);

/* An item's entry, which cc_insert makes and cc_remove frees. Programs read it, and change it through the functions alone. */
typedef struct cc_entry {
    struct cc_entry *prev, *next;   /* the neighbours; null at the ends */
    void *item;                     /* the caller's */
    mb_handle handle;               /* the body's block; 0 while the body is out */
    cc_size_fn size_fn;             /* asked before the body is fetched */
    cc_swap_in_fn swap_in_fn;       /* fetches the body */
    cc_write_back_fn write_back_fn; /* saves a dirty body */
    cc_release_fn release_fn;       /* told of the entry's end by cc_make_empty */
    uint8_t status;                 /* 0x80 in memory, 0x40 dirty */
} cc_entry;

/* A cache's head, which cc_create makes and nothing frees. */
typedef struct cc_cache {
    cc_entry *first, *last; /* the ends; null in an empty cache */
    mb_pool *pool;          /* the bodies' blocks are its; it is the caller's */
} cc_cache;

/* While it is not zero, the functions that say so print a line through the host's debug output. The library only reads
   it. A program may set it at any time, and may define it itself, with the value that it is to have from the start. */
extern int32_t cc_debug;

/* Returns a new cache without entries, whose bodies will be blocks of `pool`. */
cc_cache *cc_create(mb_pool *pool) __attribute__((warn_unused_result));

/* Registers `item` and returns its entry, the first now. With a handle, the caller has put the body in that block, which
   is the only copy and belongs to the cache from now on: the entry is dirty. With 0 it is out. Prints under cc_debug.
   A jump out of the print leaves the entry in, as the first. After any other failure the block is still the caller's. */
cc_entry *cc_insert(cc_cache *cache, void *item, mb_handle handle, cc_size_fn size_fn, cc_swap_in_fn swap_in_fn,
                    cc_write_back_fn write_back_fn, cc_release_fn release_fn) __attribute__((nonnull(1)));

/* Returns the address of the entry's body and makes the entry the first. A body that is out is fetched: asks for its
   size, allocates with cc_alloc, has the item fill the block, and prints under cc_debug. A body in memory costs no
   callback. The address holds until a block is allocated in the pool or this one is freed.
   Raises as cc_alloc does. Where the raise returns, the entry stays out and in its place, and the result is null.
   After an exception a body that was being fetched is out again, its block is free, and the entry is in its place; what
   was evicted for it stays evicted. After a jump out of the fetch or the print it counts as in memory, whole or not:
   cc_swap_out puts that right. Where the pool fails to give the address that is to be returned, the body is in memory
   and the entry is the first. */
void *cc_get(cc_cache *cache, cc_entry *entry) __attribute__((nonnull(1, 2)));

/* Makes an entry that is in memory the first, and so the next to be evicted. Frees nothing now. */
void cc_lazy_swap_out(cc_cache *cache, cc_entry *entry) __attribute__((nonnull(1, 2)));

/* Evicts the entry's body, where it is in memory; a dirty one is written back first. The entry keeps its place. Prints
   under cc_debug, whatever the entry's state. */
void cc_swap_out(cc_cache *cache, cc_entry *entry) __attribute__((nonnull(1, 2)));

/* Calls cc_swap_out for every entry, first to last. Linear. After a failure the entries before the one that failed are
   out, and the others as they were. */
void cc_flush(cc_cache *cache) __attribute__((nonnull(1)));

/* Allocates a block of `size` bytes in the cache's pool and returns its handle. Where the pool has no room, evicts the
   bodies in memory from the first entry on, and tries again after each entry, in memory or not, until the pool
   answers. The block is the caller's: give it to cc_insert or to cc_free.
   Raises line 334, MOVA_ALLOCATION_FAILED, when the pool has no room after the last entry either. Where the raise
   returns, the result is 0. After a failure what was evicted stays evicted. Linear in the number of entries passed. */
mb_handle cc_alloc(cc_cache *cache, uint32_t size) __attribute__((nonnull(1)));

/* Frees a block that the caller took with cc_alloc and holds itself, and clears `*handle`. */
void cc_free(cc_cache *cache, mb_handle *handle) __attribute__((nonnull(1, 2)));

/* Removes the entry and sets `*entry` to null. A body in memory is freed and, even where it is dirty, not written back.
   Prints under cc_debug; where the print fails, that is done already. */
void cc_remove(cc_cache *cache, cc_entry **entry) __attribute__((nonnull(1, 2)));

/* Removes every entry as cc_remove does, first to last, and calls its `release_fn` just before. The cache can be used
   again. Linear. After a failure of a `release_fn` the cache begins with its entry; those before are gone. */
void cc_make_empty(cc_cache *cache) __attribute__((nonnull(1)));

/* Returns the bytes that the cache's own records occupy, without the blocks: 12 for the head and 36 for each entry, on
   every platform. Linear. */
uint32_t cc_check(const cc_cache *cache) __attribute__((nonnull(1)));

/* Prints a line for the cache and one for each entry, first to last, whatever cc_debug says. Of an address the low 32
   bits are printed. Linear. */
void cc_print(const cc_cache *cache) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
