/* SPDX-License-Identifier: MIT */
/* The one rule by which the iterators of all lists step. */
#ifndef MOVA_LISTS_ITERATOR_STEP_H
#define MOVA_LISTS_ITERATOR_STEP_H

#include <stddef.h>
#include <stdint.h>

#include <mova/frame/inline.h>

/* Returns what an iterator delivers after `current`: nothing once `end` has been delivered, else the neighbour in the
   iterator's direction. An iterator calls this before it hands `current` out, which is why the caller may remove the
   node that it was just given. `prev` and `next` are the links of `current`. */
MOVA_INLINE_PART void *mova_iterator_step(const void *current, const void *end, int32_t forward, void *prev, void *next)
{
    if (current == end)
        return NULL;
    return forward ? next : prev;
}

#endif
