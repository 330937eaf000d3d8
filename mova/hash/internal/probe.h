/* SPDX-License-Identifier: MIT */
/* Searching the keys of a hash table. */
#ifndef MOVA_HASH_INTERNAL_PROBE_H
#define MOVA_HASH_INTERNAL_PROBE_H

#include <cstddef>

#include <mova/frame/internal/vector_code.h>

namespace mova::hash {

/* All probes return the first slot, from `slot` on and around the end, that is empty or holds `key`. There is an empty
   one. With key 0 that is the next empty slot. `mask` is the number of slots, a power of two from 8 on, less 1. */

inline size_t probe_one_by_one(const mova_word *keys, size_t mask, size_t slot, mova_word key)
{
    while (keys[slot] && keys[slot] != key)
        slot = (slot + 1) & mask;
    return slot;
}

/* Eight keys at a time. */
MOVA_AVX2 size_t probe_by_eight(const mova_word *keys, size_t mask, size_t slot, mova_word key);

inline size_t probe(const mova_word *keys, size_t mask, size_t slot, mova_word key)
{
    return use_avx2 ? probe_by_eight(keys, mask, slot, key) : probe_one_by_one(keys, mask, slot, key);
}

} // namespace mova::hash

#endif
