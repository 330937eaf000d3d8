/* Searching the keys of a hash table. */
#ifndef MOVA_HASH_INTERNAL_PROBE_H
#define MOVA_HASH_INTERNAL_PROBE_H

#include <cstddef>
#include <cstdint>

#include <mova/frame/host.h>

namespace mova::hash {

/* All probes return the first slot, from `slot` on and around the end, that is empty or holds `key`. There is an empty
   one. With key 0 that is the next empty slot. `mask` is the number of slots, a power of two from 8 on, less 1. */

inline size_t probe_one_by_one(const mova_word *keys, size_t mask, size_t slot, mova_word key)
{
    while (keys[slot] && keys[slot] != key)
        slot = (slot + 1) & mask;
    return slot;
}

#if defined(__x86_64__) && defined(__LP64__)

/* Whether the processor has AVX2. Found out when the library is loaded; tests clear it to take the other path. */
extern bool has_avx2;

/* Eight keys at a time. Requires AVX2. */
size_t probe_by_eight(const mova_word *keys, size_t mask, size_t slot, mova_word key);

inline size_t probe(const mova_word *keys, size_t mask, size_t slot, mova_word key)
{
    return has_avx2 ? probe_by_eight(keys, mask, slot, key) : probe_one_by_one(keys, mask, slot, key);
}

#else

inline size_t probe(const mova_word *keys, size_t mask, size_t slot, mova_word key)
{
    return probe_one_by_one(keys, mask, slot, key);
}

#endif

} // namespace mova::hash

#endif
