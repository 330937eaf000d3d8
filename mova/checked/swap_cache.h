/* SPDX-License-Identifier: MIT */
/* The rows of the swap cache. Of the blocks in its pool the pool itself is asked, where it is the checked host's. */
#ifndef MOVA_CHECKED_SWAP_CACHE_H
#define MOVA_CHECKED_SWAP_CACHE_H

#include "internal/blocks.h"
#include "internal/chains.h"
#include "internal/roles.h"

#include <mova/cache/internal/invariants.h>
#include <mova/cache/swap_cache.h>

#include <cstring>
#include <initializer_list>

namespace mova::checked {

namespace cc {

/* Whether a handle surely names no live block of the pool. */
inline bool is_stale(mb_pool *pool, mb_handle handle)
{
    return handle != 0 && pool && has_checked_pools() && !mova_checked_look_at_block(pool, handle);
}

inline int broken_invariant(const cc_cache &cache)
{
    return mova::broken_invariant(
        cache, [&cache](mb_handle handle) { return handle != 0 && !is_stale(cache.pool, handle); },
        [](const cc_entry *entry) { return is_there(entry); });
}

} // namespace cc

inline constexpr family swap_cache = {
    "cache", "swap cache",
    "entry", false,
    nullptr, [](const void *cache) { return cc::broken_invariant(*static_cast<const cc_cache *>(cache)); },
    nullptr,
};

namespace cc {

struct has_pool : role {
    static void before(call &made, const auto &arguments)
    {
        if (!std::get<0>(arguments))
            made.wrong().say("the pool is null");
    }
};

/* The cache's pool, which its bodies lie in. */
struct pool_is_there : role {
    static void before(call &made, const auto &arguments)
    {
        const void *where = nullptr;
        if (made.used(0) == 0 || !mova_checked_pool_was_released ||
            !mova_checked_pool_was_released(std::get<0>(arguments)->pool, &where))
            return;
        made.wrong().say("the cache's pool was released");
        made.wrong().add(where, "%-10s released in  ", "pool");
        made.wrong().show_container(made.used(0));
    }
};

/* An entry of the cache, and its block, where it has one. */
struct own_entry : role {
    static void before(call &made, const auto &arguments)
    {
        const cc_entry *const given = std::get<1>(arguments);
        made.judge_position(swap_cache, made.used(0), given, "entry");
        made.is_about(given);
        if (made.is_wrong() || made.used(0) == 0 || !is_stale(std::get<0>(arguments)->pool, given->handle))
            return;
        made.wrong().say("the entry's block was freed");
        made.wrong().show_member("entry", given, *find(given));
    }
};

/* What a write-back must not do at all, and a fetch not to its own entry. A call that evicts runs no other callbacks than
   write-backs. */
inline bool forbids_removal(const running_call &outer, owner_number cache, const void *removed)
{
    if (outer.used[0] != cache)
        return false;
    for (const char *const evicts : {"cc_swap_out", "cc_flush", "cc_alloc"}) {
        if (std::strcmp(outer.function, evicts) == 0)
            return true;
    }
    return outer.position == removed && std::strcmp(outer.function, "cc_get") == 0;
}

struct removes : role {
    static void before(call &made, const auto &arguments)
    {
        if (!std::get<1>(arguments))
            return made.wrong().say("the address of the entry is null");
        const cc_entry *const removed = *std::get<1>(arguments);
        own_entry::before(made, std::tuple(std::get<0>(arguments), removed));
        if (made.is_wrong() || made.used(0) == 0)
            return;
        const running_call *const outer =
            made.outer_call([&](const running_call &of) { return forbids_removal(of, made.used(0), removed); });
        if (!outer)
            return;
        made.wrong().say("the entry's cache is calling back in %s", outer->function);
        made.wrong().show_container(made.used(0));
    }
};

/* A block that the program has, and the cache is to take over or to free. */
template <int Argument>
struct block : role {
    static void before(call &made, const auto &arguments)
    {
        if constexpr (std::is_pointer_v<std::decay_t<decltype(std::get<Argument>(arguments))>>) {
            if (!std::get<Argument>(arguments))
                made.wrong().say("the address of the handle is null");
            else
                judge(made, std::get<0>(arguments), *std::get<Argument>(arguments));
        } else {
            judge(made, std::get<0>(arguments), std::get<Argument>(arguments));
        }
    }

private:
    static void judge(call &made, const cc_cache *in, mb_handle handle)
    {
        if (made.used(0) == 0 || !is_stale(in->pool, handle))
            return;
        made.wrong().say("the handle names no block of the cache's pool");
        made.wrong().add(nullptr, "%-10s %lu", "handle", static_cast<unsigned long>(handle));
        made.wrong().show_container(made.used(0));
    }
};

inline constexpr container<0, swap_cache> read{use::read}, edit{use::nested}, empty{use::empty};
inline constexpr makes<swap_cache> cache;
inline constexpr pool_is_there pool;
inline constexpr own_entry at;

} // namespace cc

namespace rows {

inline constexpr row cc_create{cc::has_pool{}, cc::cache};
inline constexpr row cc_insert{cc::edit, cc::pool, cc::block<2>{}};
inline constexpr row cc_get{cc::edit, cc::pool, cc::at};
inline constexpr row cc_lazy_swap_out{cc::edit, cc::pool, cc::at};
inline constexpr row cc_swap_out{cc::edit, cc::pool, cc::at};
inline constexpr row cc_flush{cc::edit, cc::pool};
inline constexpr row cc_alloc{cc::edit, cc::pool};
inline constexpr row cc_free{cc::edit, cc::pool, cc::block<1>{}};
inline constexpr row cc_remove{cc::edit, cc::pool, cc::removes{}};
inline constexpr row cc_make_empty{cc::empty, cc::pool};
inline constexpr row cc_check{cc::read};
inline constexpr row cc_print{cc::read};

} // namespace rows

} // namespace mova::checked

#endif
