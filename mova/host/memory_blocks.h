/* SPDX-License-Identifier: MIT */
/* The default memory-block service: pools of movable blocks.

   A pool is a piece of memory, its arena, of the size that the program gives. Blocks lie in it with gaps between them. A
   program holds a block by its handle and asks for its address, because the pool moves blocks: when no gap is large
   enough for a new block although the gaps together are, it slides some blocks together.

       arena   | A A A A | B B | . . . | C C C C C | . | D | . . . |     three gaps, 7 units together
       mb_alloc of 4 units: none of the gaps fits; between two of them lies D, the least that has to move
               | A A A A | B B | . . . | C C C C C | D | . . . . |
               | A A A A | B B | . . . | C C C C C | D | E E E E |

   The service is mb_alloc, mb_get and mb_free (mova/frame/host.h). What it promises beyond them:

   - A block occupies its size, rounded up to a multiple of MB_UNIT, and begins at a multiple of MB_UNIT. The budget is
     rounded up likewise. Nothing else comes out of the budget: records about blocks lie outside the arena.
   - mb_alloc answers 0 only where the live blocks leave fewer bytes than the new one occupies. So a block may be as large
     as the whole budget. A block of size 0 occupies nothing, always has room, and has a handle and an address like
     any other.
   - Only mb_alloc moves blocks. An address holds until the next mb_alloc in its pool, and as long as its block.
   - A handle is never 0, and names no other block until the pool has counted through all 32-bit numbers. To mb_get, a
     handle that is not live is no block: the result is null. To mb_free it is an error, as below; 0 is none, and frees
     nothing.
   - Errors are reported under the module "memory blocks", with MOVA_PRECONDITION_BROKEN and the line below. Where the
     handler returns, mb_free has freed nothing and clears the handle all the same.
   - A pool takes its memory from the memory service, which reports where it has none. Where that error's handler returns,
     the function that asked returns null or 0. The pool is as it was in either case.
   - Failures, by the grades of docs/contracts.md: unchanged. A jump out of mb_create_pool loses what memory it had taken.

   Cost: mb_get is constant. mb_alloc and mb_free take as many steps as a size above 16 KiB has bits, and constant time
   below, amortised over the growth of the pool's table, until blocks have to move. A block takes the smallest gap that is
   large enough. Blocks are moved only when no gap fits: those between some neighbouring gaps that are large enough
   together. The search for gaps with little between them takes about as long as the moving. The fuller a pool, the more
   often that is: docs/performance.md gives figures.

   A pool belongs to one thread at a time; different pools do not know of each other. A pool cannot tell another pool's
   handles from its own.

   A program that defines mb_alloc, mb_get and mb_free itself replaces this group. It then uses nothing that is declared
   here: in a static link that would bring in the defaults a second time.

   Ownership: a pool owns its arena, its blocks and its records, until mb_release_pool; a handle owns nothing.

   Units: sizes are bytes. */
#ifndef MOVA_HOST_MEMORY_BLOCKS_H
#define MOVA_HOST_MEMORY_BLOCKS_H

#include <stddef.h>
#include <stdint.h>

#include <mova/frame/host.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* The pool's unit, in bytes. */
enum {
    MB_UNIT = 16 /* blocks begin at, and occupy, multiples of it */
};

/* The line with which the service reports an error. */
enum {
    MB_NOT_LIVE = 10 /* mb_free of a handle that is not 0 and names no live block */
};

/* What a pool holds, and what it has moved. Sizes are bytes. */
typedef struct mb_statistics {
    size_t budget;        /* what the live blocks may occupy together */
    size_t live_bytes;    /* what they occupy */
    size_t live_blocks;   /* their number */
    uint64_t moves;       /* blocks that were moved since the pool was made */
    uint64_t moved_bytes; /* what they occupied */
} mb_statistics;

/* Returns a new pool with room for `budget` bytes of blocks. On most systems, memory of the arena that was never written
   to is only reserved. */
mb_pool *mb_create_pool(size_t budget) __attribute__((warn_unused_result));

/* Frees the pool with all its blocks, and sets `*pool` to null. A null pool is none to free. Constant. */
void mb_release_pool(mb_pool **pool) __attribute__((nonnull(1)));

/* Returns the pool's figures. Constant. */
mb_statistics mb_pool_statistics(const mb_pool *pool) __attribute__((nonnull(1)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
