/* SPDX-License-Identifier: MIT */
/* What the checked container library and the checked host tell each other. Each is of use without the other: what is declared
   here is weak, and null where the other is not there.

       program  ----------------------->  MM_alloc_item   \
          |                                                 checked host: sizes, guards, double releases
          v                                               /
       containers  -> mova_checked_allocate             */
#ifndef MOVA_CHECKED_INTERNAL_BLOCKS_H
#define MOVA_CHECKED_INTERNAL_BLOCKS_H

#include "records.h"

#include <mova/frame/host.h>
#include <mova/frame/internal/single_threaded.h>

#include <cstddef>

namespace mova::checked {

/* What is wrong with a block of the memory service. Of `made` and `released` null is not shown. */
struct block_misuse {
    const char *function;
    const char *what;
    const void *where;
    const void *block;
    size_t size;
    const void *made, *released;
};

/* What released memory is filled with: no word of it is an address on 64-bit. */
constexpr int pattern_of_the_released = 0xDF;

/* The checked host's blocks of up to 1016 bytes that lie at one distance from each other. */
struct size_class {
    slab *newest;
    uint32_t used, most;         /* of the newest slab's blocks: those that ever were in use, and all of them */
    block_record *oldest, **end; /* a queue of those that were released */
    uint32_t kept, most_kept;    /* in it; how many are in it at least, before one serves again */
};

/* A block that was allocated, null where there was no memory; and where the containers' checks note what it is, null where it
   is no small block. */
struct given_block {
    void *bytes;
    entry *noted;
};

/* What a visit of all blocks is told of each one that lives. */
using block_visitor = void (*)(const void *block, size_t size, const void *made, const entry &noted, void *context);

} // namespace mova::checked

#pragma GCC visibility push(default)
extern "C" {

/* ---- the checked host's ---- */

/* Whether that function is the checked host's, and not the program's own. */
__attribute__((weak)) bool mova_checked_is_service(void *(*allocate)(size_t));

/* The services, told of the place in the program that the call came from, and not of any in the containers. */
__attribute__((weak)) mova::checked::given_block mova_checked_allocate(size_t size, const void *where);
__attribute__((weak)) void mova_checked_release(void *item, size_t size, const void *where);
__attribute__((weak)) mova::checked::given_block mova_checked_reallocate(void *item, size_t old_size, size_t new_size,
                                                                         const void *where);

/* Where its blocks of up to 1016 bytes lie, and the classes of them: small_blocks.h. */
extern __attribute__((weak)) mova::checked::slab_table mova_checked_slabs;
extern __attribute__((weak)) mova::checked::size_class mova_checked_classes[65];

/* The entry of the larger block that begins there, or null. */
__attribute__((weak)) mova::checked::entry *mova_checked_find_large(uintptr_t address);

/* Whether a pool was released, of late; stores the place where. */
__attribute__((weak)) bool mova_checked_pool_was_released(const void *pool, const void **where);

/* Whether that function is the checked pools'. */
__attribute__((weak)) bool mova_checked_is_pool_service(void *(*get)(mb_pool *, mb_handle));

/* As mb_get, and says nothing. */
__attribute__((weak)) void *mova_checked_look_at_block(mb_pool *pool, mb_handle handle);

/* What it means that a program must not touch the address, or null; stores the place of the call since which that is so. Takes
   no lock. */
__attribute__((weak)) const char *mova_checked_explain_fault(const void *address, const void **where);

/* Looks at the guards of what lives and at what was released: the program ends. */
__attribute__((weak)) void mova_checked_judge_blocks(void);

/* Names what lives, under the service's lock. */
__attribute__((weak)) void mova_checked_visit_blocks(mova::checked::block_visitor visit, void *context);

/* How many bytes lie around the blocks that live, and in the records of them. */
__attribute__((weak)) size_t mova_checked_block_bytes(void);

/* ---- the checked containers' ---- */

__attribute__((weak)) void mova_checked_report_block(const mova::checked::block_misuse *misuse);

/* The program itself released the block, or was given it. */
__attribute__((weak)) void mova_checked_note_released(const void *block, const void *where);
__attribute__((weak)) void mova_checked_note_allocated(const void *block);

/* The place in the program of a call that returns there: where that is in the containers, of the one that runs. */
__attribute__((weak)) const void *mova_checked_place_of(const void *returns_to);

/* A large block goes back to where it came from. Without the service's lock. */
__attribute__((weak)) void mova_checked_note_gone(const void *block);
}
#pragma GCC visibility pop

#endif
