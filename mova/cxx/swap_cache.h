/* SPDX-License-Identifier: MIT */
/* Swap cache, typed: mova/cache/swap_cache.h for items of type Item, whose bodies are arrays of Element.

       struct tile {
           std::size_t body_size() const;                  in elements
           void fill(std::span<pixel> body);               draws it, fetches it
           void write_back(std::span<pixel> body);         if it may be dirty; left out, nothing is saved
           void let_go();                                  told by clear() and by the cache's end; may be left out
       };
       mova::swap_cache<tile, pixel> tiles(pool.get());
       const auto entry = tiles.insert(some_tile);
       std::span<pixel> body = tiles.body(entry);          fetched, if it is out

   Other names than these four are given by a type without state, as the last argument: item_callbacks shows its form.

   A body lies where it is until the next body is fetched, or a block allocated: then it may have moved or gone. The C header's
   table says what each call does to bodies and to the order of entries. What was changed in a fetched body is lost.

   As a bidirectional range the cache delivers its items, first the one that goes next. A position is an entry: it is as large
   as a pointer, and lives until it is removed.

   Ownership: the cache owns its entries and its head, which the C functions never free; the items are the caller's, and so is
   the pool. Errors: line 334 where the pool has no room, as mova::error, and what the callbacks throw. There is never room for
   4 GiB or more, and nothing is evicted for that. The cache is usable then, and nothing is lost: insert() has not inserted; a
   body() that was being fetched is out, and what was evicted for it stays out; swap_out() and flush() have kept a body that
   could not be written back, dirty; clear() has let go of the items before. */
#ifndef MOVA_CXX_SWAP_CACHE_H
#define MOVA_CXX_SWAP_CACHE_H

#include <span>

#include <mova/cache/swap_cache.h>
#include <mova/cxx/chain.h>

namespace mova {

/* How a cache asks its items, where nothing else is given. */
struct item_callbacks {
    /* The number of elements of the body. */
    template <class Item>
    std::size_t size(const Item &item) const requires requires
    {
        item.body_size();
    }
    {
        return item.body_size();
    }
    /* Fills the body. */
    template <class Item, class Element>
    void fill(Item &item, std::span<Element> body) const requires requires
    {
        item.fill(body);
    }
    {
        item.fill(body);
    }
    /* Saves the body, which goes. */
    template <class Item, class Element>
    void write_back(Item &item, std::span<Element> body) const
    {
        if constexpr (requires { item.write_back(body); })
            item.write_back(body);
    }
    /* Tells the item that its entry goes. */
    template <class Item>
    void let_go(Item &item) const
    {
        if constexpr (requires { item.let_go(); })
            item.let_go();
    }
};

template <class Item>
struct cache_links {
    using head = cc_cache;
    using node = cc_entry;
    using value_type = std::remove_const_t<Item>;
    using reference = Item &;
    using constant = cache_links<const Item>;

    static node *first(const head &cache) noexcept { return cache.first; }
    static node *last(const head &cache) noexcept { return cache.last; }
    static node *next(const node *at) noexcept { return at->next; }
    static node *prev(const node *at) noexcept { return at->prev; }
    static Item &item(const node *at) noexcept { return *static_cast<Item *>(at->item); }
};

struct release_cache {
    void operator()(cc_cache *cache) const noexcept
    {
        cc_make_empty(cache);
        MM_dealloc_item(cache, sizeof *cache);
    }
};

/* A cache, which owns its head and its entries. The items and the pool are the caller's. */
template <class Item, class Element = std::byte, class Callbacks = item_callbacks>
class swap_cache : public open_chain<cache_links<Item>, release_cache> {
    using base = open_chain<cache_links<Item>, release_cache>;
    static_assert(
        std::is_trivially_copyable_v<Element> && alignof(Element) <= 16,
        "mova::swap_cache: a pool moves bodies as bytes, which these elements do not allow: take elements that "
        "std::memcpy may copy");
    static_assert(stateless<Callbacks>,
                  "mova::swap_cache: callbacks must have no state, for each entry keeps them as plain "
                  "functions: take a class like mova::item_callbacks, and put the state into the items");

public:
    using base::base, base::get;
    using typename base::position;
    /* Without entries; the bodies will lie in this pool, which must outlive the cache. */
    explicit swap_cache(mb_pool *pool) : base(cc_create(pool)) {}

    /* Registers an item whose body is out. Returns its entry, the first now. */
    position insert(Item &item) { return insert(item, 0); }

    /* The same with a body that the caller has put into a block from alloc(): the only copy, which is written back before it
       goes. The block is the cache's from now on. */
    position insert(Item &item, mb_handle filled)
    {
        constexpr bool has_callbacks = requires(const Callbacks &asked, const Item &constant, std::span<Element> body)
        {
            std::size_t{asked.size(constant)};
            asked.fill(item, body);
        };
        static_assert(
            has_callbacks,
            "mova::swap_cache: an item says how large its body is and fills it: give it std::size_t body_size() const, "
            "in elements, and void fill(std::span<Element>); for other names take callbacks of your own");
        if constexpr (has_callbacks)
            return position(cc_insert(get(), std::addressof(item), filled, size_of, fill, write_back, let_go));
        else
            return this->end();
    }

    /* The body, which is fetched where it is out; empty where there is no room and the host returns from the raise. Where
       the C functions fetch it and the host returns, the most that they can count is asked for. */
    std::span<Element> body(position entry)
    {
        const std::size_t count = Callbacks().size(std::as_const(*entry));
        void *const block = may_have(count) ? cc_get(get(), entry.get()) : nullptr;
        return {static_cast<Element *>(block), block ? count : 0};
    }

    /* Whether the body is in memory. */
    static bool is_in_memory(position entry) noexcept { return entry.get()->handle != 0; }

    /* Makes a body that is in memory the next to go. */
    void let_go_next(position entry) noexcept { cc_lazy_swap_out(get(), entry.get()); }
    /* Evicts the body, which is written back where it may be dirty. The entry stays where it is. */
    void swap_out(position entry) { cc_swap_out(get(), entry.get()); }
    /* Evicts all bodies in this way. Linear. */
    void flush() { cc_flush(get()); }

    /* Removes the entry, and frees its body; nothing is written back. Returns the position of the successor. */
    position remove(position entry) noexcept
    {
        cc_entry *removed = (entry++).get();
        cc_remove(get(), &removed);
        return entry;
    }
    /* Removes all entries in this way, and has each item let go before. Linear. */
    void clear() { cc_make_empty(get()); }

    /* ---- blocks of the caller's ---- */

    /* Room for so many elements; what is in its way is evicted. Raises line 334 where there is none: 0, where the host returns. */
    mb_handle alloc(std::size_t count) { return may_have(count) ? cc_alloc(get(), bytes_of(count)) : 0; }
    /* The elements, until the next block is allocated or body fetched. */
    Element *at(mb_handle block) noexcept { return static_cast<Element *>(mb_get(get()->pool, block)); }
    /* Frees the block, and sets the handle to 0. */
    void free(mb_handle &block) noexcept { cc_free(get(), &block); }

private:
    static constexpr std::uint32_t most_bytes = UINT32_MAX;

    static std::uint32_t bytes_of(std::size_t count) noexcept
    {
        return static_cast<std::uint32_t>(count * sizeof(Element));
    }
    /* Whether the C functions can count the bytes of so many elements. What they cannot has no room. */
    static bool may_have(std::size_t count)
    {
        if (count <= std::size_t{most_bytes} / sizeof(Element)) [[likely]]
            return true;
        EX_raise_exception_line("cache", 334, MOVA_ALLOCATION_FAILED);
        return false;
    }

    static Item &item_of(void *item) noexcept { return *static_cast<Item *>(item); }
    static std::span<Element> body_at(void *item, void *block)
    {
        return {static_cast<Element *>(block), Callbacks().size(std::as_const(item_of(item)))};
    }
    static std::uint32_t size_of(void *item)
    {
        const std::size_t count = Callbacks().size(std::as_const(item_of(item)));
        return may_have(count) ? bytes_of(count) : most_bytes;
    }
    static void fill(void *item, void *block, std::uint32_t size)
    {
        Callbacks().fill(item_of(item), std::span<Element>(static_cast<Element *>(block), size / sizeof(Element)));
    }
    static void write_back(void *item, void *block) { Callbacks().write_back(item_of(item), body_at(item, block)); }
    static void let_go(void *item) { Callbacks().let_go(item_of(item)); }
};

} // namespace mova

#endif
