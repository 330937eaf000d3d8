/* SPDX-License-Identifier: MIT */
/* The default memory service, and what it tells about itself.

   The service is MM_alloc_item, MM_dealloc_item and MM_realloc_item (mova/frame/host.h). What it promises beyond them:

   - A block whose size is a multiple of 16 is aligned to 16, any other to 8. A block of size 0 is a block of its own.
   - Threads may call it at the same time, and a thread may release or reallocate a block that another allocated. A
     thread that ends leaves its free blocks to the others.
   - It may be called at any time in the life of a process or a thread: from constructors and destructors of static
     and of thread-local objects, from the destructors of thread-specific data, in every round of them, and in the child
     of a process that forked, whatever its threads did. It is not for signal handlers. A plugin that contains the static
     library may be unloaded while threads that used it live; what it allocated stays.
   - Reallocation within a size class keeps the block where it is. Up to 1024 bytes there is a class for each multiple
     of 8; above, four in each doubling; above 256 KiB, on 64-bit platforms, the powers of two alone. Blocks above
     256 KiB have address space of their own, of which only the pages that were written to take up memory; they grow by
     moving pages, not bytes. Huge pages are asked for only where small blocks fill many chunks, and for a large block
     that grows to twice a size of 2 MiB or more; the next block in its place has them too.
   - A null that is released is no block, and nothing happens.
   - Memory that runs out is reported as an error of the module "memory" with code MOVA_ALLOCATION_FAILED and one of the
     lines below, after all that is not in use was given back, but for what other threads hold ready. Where the error's
     handler returns, or throws, nothing was allocated, and the block that was to be reallocated is as it was;
     MM_alloc_item and MM_realloc_item return null. By the grades of docs/contracts.md: unchanged, after a jump too.

   What is kept of the memory that was released:

   - A thread holds free blocks ready: of one size class at most 64 KiB, 64 blocks at first and 1024 where the program
     empties and fills them again and again, or one block; of all classes together 24 KiB at first, and up to 4 MiB in a
     thread that allocates and releases much. Those of a class that it did not run out of for a second go to the others,
     and all of them when the thread ends.
   - Chunks of 2 MiB in which nothing is live are kept for the next use, less than 128 MiB of them; so are released large
     blocks, less than 64 MiB together or a single one. What has lain there for a second goes back to the system.
   - A chunk with a live block in it stays. Its memory of what lies unused between blocks, in pieces of 4 KiB, goes back to
     the system when for one to two seconds no such piece of the chunk came into use or out of it.
   - All this happens at each 64th release by a thread of a block that is larger than 1 KiB or that the thread has no room
     for: the service has no thread of its own. Where nothing is released, all stays as it is. mova_memory_trim gives back
     at once all that can be.
   - Where the process has no key for thread-specific data left when it first calls the service, no thread holds free
     blocks ready, and releases do not count.
   - What the system does not take back (it keeps a limited number of mappings) or would keep as too many mappings, is
     emptied, but for a page, and serves the next of its size.
   - A child that was forked has lost the free blocks that threads of its parent held ready; they count as live in it.

   In libmova_host_system, which a program links in place of libmova_host to be watched by valgrind or a sanitizer, every
   block is a block of the system's allocator, every reallocation moves, and every count below is 0; so it is where the
   library itself is built with a sanitizer. A release with a wrong size then ends the program, as far as the allocator
   tells sizes: docs/debugging.md.

   Ownership: a block is the caller's until it is given back; records about blocks are the service's.

   Units: sizes are bytes. A block counts with the block size of its class, which is what it occupies. */
#ifndef MOVA_HOST_MEMORY_H
#define MOVA_HOST_MEMORY_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- blocks beside those of the service ---- */

/* They raise what MM_alloc_item raises, and return null where the error's handler returns. */

/* Returns a block whose bytes are all 0. It is released and reallocated like any other. Large blocks that come from the
   system need no clearing. */
void *mova_memory_zeroed(size_t size) __attribute__((malloc, alloc_size(1), warn_unused_result));

/* Returns a block that begins at a multiple of `alignment`, a power of two of at least 16. It goes back through
   mova_memory_release_aligned alone. Blocks whose size is a multiple of the alignment mostly occupy no more than others. */
void *mova_memory_aligned(size_t alignment, size_t size)
    __attribute__((malloc, alloc_size(2), alloc_align(1), warn_unused_result));

/* Takes back such a block; both figures are those that it was allocated with. */
void mova_memory_release_aligned(void *block, size_t alignment, size_t size);

/* ---- giving memory back ---- */

/* Gives the system back all that it can have: the free blocks that this thread holds ready, all chunks and large blocks
   that are kept, and what lies unused between blocks. What other threads hold ready stays with them. Linear in the chunks
   that are held; milliseconds where much is given back. */
void mova_memory_trim(void);

/* ---- errors ---- */

/* The lines with which the service reports that memory ran out. */
enum {
    MOVA_MEMORY_SIZE_TOO_LARGE = 10, /* the size is more than PTRDIFF_MAX */
    MOVA_MEMORY_NO_ROOM = 20,        /* a block of up to 256 KiB */
    MOVA_MEMORY_NO_MAPPING = 30,     /* a larger block */
    MOVA_MEMORY_NO_ROOM_TO_GROW = 40 /* a block above 256 KiB that was to become another one above */
};

/* The blocks of one size class. */
typedef struct mova_memory_class {
    size_t largest_size;  /* the largest size that the class serves: the next class begins one above */
    size_t block_size;    /* what a block occupies, and how far it grows without moving */
    size_t live_blocks;   /* blocks that the program holds */
    size_t cached_blocks; /* free blocks that threads hold ready for themselves */
} mova_memory_class;

/* All blocks. Those of up to 16 KiB lie in pages of 64 KiB, each of which holds blocks of one class; a page is in use while
   one of its blocks is live or held ready, a larger block while it is live or held ready itself. */
typedef struct mova_memory_totals {
    size_t live_blocks;  /* blocks that the program holds */
    size_t live_bytes;   /* what they occupy */
    size_t cached_bytes; /* what the free blocks occupy that threads hold ready for themselves */
    size_t peak_bytes;   /* the most that pages and larger blocks in use ever occupied together */
    size_t held_bytes;   /* address space held from the system: blocks, live or free, and all records about them */
} mova_memory_totals;

/* Returns the figures of the size class that serves `size`, all 0 where none does. They are exact while no other thread
   is inside the service; otherwise a block that is changing hands may be missed or counted twice. Linear in the number
   of threads. */
mova_memory_class mova_memory_statistics_of_size(size_t size);

/* Returns the figures of all classes together, each of which is as exact as mova_memory_statistics_of_size tells. Linear
   in the number of threads; some microseconds. */
mova_memory_totals mova_memory_statistics(void);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
