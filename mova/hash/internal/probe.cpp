/* SPDX-License-Identifier: MIT */
#include <mova/hash/internal/probe.h>

#include <bit>

namespace mova::hash {
namespace {

/* Up to here (8 MiB of keys) it is quicker to look at eight keys from the slot on, which may take two cache lines, than
   to guess wrong whether the rest of the slot's own line will do. */
constexpr size_t near_slots = size_t{1} << 20;

/* One bit for each of the eight keys at `keys` that is 0 or the one that fills `key`. */
MOVA_AVX2 inline uint32_t hits_among_eight(const mova_word *keys, const word_vector &key)
{
    uint32_t hits = 0;
#pragma GCC unroll 2
    for (size_t i = 0; i < 8; i += words_per_vector) {
        word_vector words;
        load(words, keys + i);
        hits |= signs_of((words == key) | (words == word_vector{})) << i;
    }
    return hits;
}

} // namespace

MOVA_AVX2 size_t probe_by_eight(const mova_word *keys, size_t mask, size_t slot, mova_word key)
{
    const word_vector sought = key - word_vector{};
    if (mask < near_slots && slot + 8 <= mask + 1) {
        const uint32_t near_hits = hits_among_eight(keys + slot, sought);
        if (near_hits)
            return slot + static_cast<size_t>(std::countr_zero(near_hits));
    }
    size_t group = slot & ~size_t{7};
    uint32_t hits = hits_among_eight(keys + group, sought) & (0xFFu << (slot & 7));
    while (!hits) {
        group = (group + 8) & mask;
        hits = hits_among_eight(keys + group, sought);
    }
    return group + static_cast<size_t>(std::countr_zero(hits));
}

} // namespace mova::hash
