/* SPDX-License-Identifier: MIT */
/* The numbered invariants of the swap cache, as its header gives them. */
#ifndef MOVA_CACHE_INTERNAL_INVARIANTS_H
#define MOVA_CACHE_INTERNAL_INVARIANTS_H

#include <mova/cache/swap_cache.h>

namespace mova {

/* What can be said of a handle without its pool: 0 is none. */
inline bool is_handle(mb_handle handle)
{
    return handle != 0;
}

/* Returns the number of the first invariant that the state of one entry breaks, or 0. `is_live` says whether a handle is. */
template <class IsLive>
int broken_state_invariant(const cc_entry &entry, IsLive is_live)
{
    const bool in_memory = (entry.status & 0x80) != 0;
    if ((entry.status & 0x3F) || (!in_memory && (entry.status & 0x40)))
        return 3;
    return (in_memory ? is_live(entry.handle) : entry.handle == 0) ? 0 : 4;
}

/* The same of the links between an entry and its neighbours. */
inline int broken_link_invariant(const cc_cache &cache, const cc_entry &entry)
{
    const bool begins = entry.prev ? entry.prev->next == &entry : cache.first == &entry;
    const bool ends = entry.next ? entry.next->prev == &entry : cache.last == &entry;
    return begins && ends ? 0 : 1;
}

inline bool is_entry(const cc_entry *)
{
    return true;
}

/* Returns the number of the first invariant that the cache breaks, or 0. A link to what `is_readable` denies leads to no entry. */
template <class IsLive = bool(mb_handle), class Readable = bool(const cc_entry *)>
int broken_invariant(const cc_cache &cache, const IsLive &is_live = is_handle, const Readable &is_readable = is_entry)
{
    if (!cache.first != !cache.last)
        return 2;
    const cc_entry *reached = nullptr;
    for (const cc_entry *entry = cache.first; entry; entry = entry->next) {
        if (!is_readable(entry) || entry->prev != reached)
            return 1;
        if (const int broken = broken_state_invariant(*entry, is_live))
            return broken;
        reached = entry;
    }
    return reached == cache.last ? 0 : 1;
}

} // namespace mova

#endif
