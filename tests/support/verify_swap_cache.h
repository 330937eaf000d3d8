#ifndef MOVA_TESTS_SUPPORT_VERIFY_SWAP_CACHE_H
#define MOVA_TESTS_SUPPORT_VERIFY_SWAP_CACHE_H

#include <mova/cache/swap_cache.h>

namespace mova::test {

/* Returns the number of the first invariant that one entry breaks, or 0. `is_live` says whether a handle is. */
template <class IsLive>
int broken_entry_invariant(const cc_entry &entry, IsLive is_live)
{
    const bool in_memory = entry.status & 0x80;
    if ((entry.status & 0x3F) || (!in_memory && (entry.status & 0x40)))
        return 3;
    return in_memory ? (is_live(entry.handle) ? 0 : 4) : (entry.handle == 0 ? 0 : 4);
}

/* Returns the number, as the header gives it, of the first invariant that `cache` breaks, or 0. */
template <class IsLive>
int broken_invariant(const cc_cache &cache, IsLive is_live)
{
    if (!cache.first != !cache.last)
        return 2;
    const cc_entry *prev = nullptr;
    for (const cc_entry *entry = cache.first; entry; prev = entry, entry = entry->next) {
        if (entry->prev != prev)
            return 1;
        if (int broken = broken_entry_invariant(*entry, is_live))
            return broken;
    }
    return prev == cache.last ? 0 : 1;
}

} // namespace mova::test

#endif
