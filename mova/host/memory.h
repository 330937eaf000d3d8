/* The default memory service, and what it tells about itself.

   The service is MM_alloc_item, MM_dealloc_item and MM_realloc_item (mova/frame/host.h). What it promises beyond them:

   - A block whose size is a multiple of 16 is aligned to 16, any other to 8. A block of size 0 is a block of its own.
   - Threads may call it at the same time, and a thread may release or reallocate a block that another allocated. A
     thread that ends leaves its free blocks to the others.
   - It may be called at any time in the life of a process or a thread: from constructors and destructors of static
     and of thread-local objects, and from the destructors of thread-specific data. It is not for signal handlers, nor
     for a child that a process with more than one thread has forked.
   - Reallocation within a size class keeps the block where it is. Up to 1024 bytes there is a class for each multiple
     of 8; above, four in each doubling; above 256 KiB, on 64-bit platforms, the powers of two alone. Blocks above
     256 KiB have address space of their own, of which only the pages that were written to take up memory; they grow
     by moving pages, not bytes. A released block of up to 64 MiB is kept for the next of its class, one in each.
   - Memory that runs out is reported as an error of the module "memory" with code MOVA_ALLOCATION_FAILED and one of the
     lines below. Where the error's handler returns, MM_alloc_item and MM_realloc_item return null, and the block that
     was to be reallocated is as it was.

   Under the address, thread and memory sanitizers every block is a block of the system's allocator, and every count
   below is 0.

   Units: sizes are bytes. A block counts with the block size of its class, which is what it occupies. */
#ifndef MOVA_HOST_MEMORY_H
#define MOVA_HOST_MEMORY_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* The lines with which the service reports that memory ran out. */
enum {
    MOVA_MEMORY_SIZE_TOO_LARGE = 10, /* the size is more than PTRDIFF_MAX */
    MOVA_MEMORY_NO_ROOM = 20,        /* a block of up to 256 KiB */
    MOVA_MEMORY_NO_MAPPING = 30,     /* a larger block */
    MOVA_MEMORY_NO_ROOM_TO_GROW = 40 /* a block above 256 KiB that was to become larger or smaller */
};

/* The blocks of one size class. */
typedef struct mova_memory_class {
    size_t largest_size;  /* the largest size that the class serves: the next class begins one above */
    size_t block_size;    /* what a block occupies, and how far it grows without moving */
    size_t live_blocks;   /* blocks that the program holds */
    size_t cached_blocks; /* free blocks that threads hold ready for themselves */
} mova_memory_class;

/* All blocks. What is in use is in pages of 64 KiB, each of which holds blocks of one class; a page is in use while one
   of its blocks is live or cached. A large block is in use while it is live. */
typedef struct mova_memory_totals {
    size_t live_blocks;  /* blocks that the program holds */
    size_t live_bytes;   /* what they occupy */
    size_t cached_bytes; /* what the free blocks occupy that threads hold ready for themselves */
    size_t peak_bytes;   /* the most that pages and large blocks in use ever occupied together */
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
