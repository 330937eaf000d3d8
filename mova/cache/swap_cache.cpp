/* SPDX-License-Identifier: MIT */
#include <mova/cache/swap_cache.h>

#include <mova/cache/internal/invariants.h>
#include <mova/frame/internal/assert.h>
#include <mova/frame/internal/module_records.h>
#include <mova/frame/internal/undo.h>
#include <mova/lists/internal/chain.h>

namespace chain = mova::chain;
using chain::shape;
using mova::intact;

/* Weak, so that a program in a static link can define it too. Read through the global offset table in the shared library:
   the word that counts is the one that the program names. */
[[gnu::weak]] int32_t cc_debug = 0;

namespace {

constexpr uint8_t in_memory = 0x80, dirty = 0x40;

/* What cc_check counts, on every platform. */
constexpr uint32_t head_bytes = 12, entry_bytes = 36;

/* What "%8X" prints of an address. */
uint32_t low_word(const void *address)
{
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(address));
}

/* The handle says the same as the flag, and lies beside the links: the flag may be a cache line away. */
bool is_in_memory(const cc_entry *entry)
{
    assert(intact(mova::broken_state_invariant(*entry, mova::is_handle)));
    return entry->handle != 0;
}

void clear(cc_entry *entry, uint8_t flag)
{
    entry->status = static_cast<uint8_t>(entry->status & ~flag);
}

void link_first(cc_cache *cache, cc_entry *entry)
{
    chain::link_first(*cache, entry, shape::always_open);
    assert(intact(mova::broken_link_invariant(*cache, *entry)));
}

void unlink(cc_cache *cache, cc_entry *entry)
{
    assert(intact(mova::broken_link_invariant(*cache, *entry)));
    chain::unlink(*cache, entry, shape::always_open);
}

void make_first(cc_cache *cache, cc_entry *entry)
{
    if (entry == cache->first)
        return;
    unlink(cache, entry);
    link_first(cache, entry);
}

void free_record(cc_entry *entry)
{
    MM_dealloc_item(entry, sizeof(cc_entry));
}

void evict(cc_cache *cache, cc_entry *entry)
{
    if (!is_in_memory(entry))
        return;
    if (entry->status & dirty) {
        entry->write_back_fn(entry->item, mb_get(cache->pool, entry->handle));
        clear(entry, dirty);
    }
    mb_free(cache->pool, &entry->handle);
    entry->handle = 0;
    clear(entry, in_memory);
}

void *get_in_memory(cc_cache *cache, cc_entry *entry)
{
    make_first(cache, entry);
    return mb_get(cache->pool, entry->handle);
}

void fill(const cc_cache *cache, cc_entry *entry, uint32_t size)
{
    entry->swap_in_fn(entry->item, mb_get(cache->pool, entry->handle), size);
    if (cc_debug)
        mova_dprintf("cc_get %8X\n", low_word(entry));
}

/* Returns whether there was room for the body. */
bool fetch(cc_cache *cache, cc_entry *entry)
{
    const uint32_t size = entry->size_fn(entry->item);
    const mb_handle handle = cc_alloc(cache, size);
    if (!handle)
        return false;
    entry->handle = handle;
    entry->status |= in_memory;
    mova::or_undo([=] { fill(cache, entry, size); }, [=] { evict(cache, entry); });
    return true;
}

/* Not inline: the way of a body that is in memory needs no registers saved. */
[[gnu::noinline]] void *get_fetched(cc_cache *cache, cc_entry *entry)
{
    return fetch(cache, entry) ? get_in_memory(cache, entry) : nullptr;
}

} // namespace

cc_cache *cc_create(mb_pool *pool)
{
    cc_cache *cache = static_cast<cc_cache *>(MM_alloc_item(sizeof(cc_cache)));
    *cache = {nullptr, nullptr, pool};
    return cache;
}

cc_entry *cc_insert(cc_cache *cache, void *item, mb_handle handle, cc_size_fn size_fn, cc_swap_in_fn swap_in_fn,
                    cc_write_back_fn write_back_fn, cc_release_fn release_fn)
{
    const uint8_t status = handle ? in_memory | dirty : 0;
    cc_entry *entry = static_cast<cc_entry *>(MM_alloc_item(sizeof(cc_entry)));
    *entry = {nullptr, nullptr, item, handle, size_fn, swap_in_fn, write_back_fn, release_fn, status};
    link_first(cache, entry);
    if (cc_debug)
        mova::or_undo([=] { mova_dprintf("cc_insert %8X => %8X\n", low_word(item), low_word(entry)); },
                      [=] {
                          unlink(cache, entry);
                          free_record(entry);
                      });
    return entry;
}

void *cc_get(cc_cache *cache, cc_entry *entry)
{
    return is_in_memory(entry) ? get_in_memory(cache, entry) : get_fetched(cache, entry);
}

void cc_lazy_swap_out(cc_cache *cache, cc_entry *entry)
{
    if (is_in_memory(entry))
        make_first(cache, entry);
}

void cc_swap_out(cc_cache *cache, cc_entry *entry)
{
    if (cc_debug)
        mova_dprintf("cc_swap_out %8X\n", low_word(entry));
    evict(cache, entry);
}

void cc_flush(cc_cache *cache)
{
    /* The successor is read after the write-back, which may have moved the entry. */
    for (cc_entry *entry = cache->first; entry; entry = entry->next)
        cc_swap_out(cache, entry);
    assert(intact(mova::broken_invariant(*cache)));
}

mb_handle cc_alloc(cc_cache *cache, uint32_t size)
{
    mb_handle handle = mb_alloc(cache->pool, size);
    for (cc_entry *entry = cache->first; !handle && entry; entry = entry->next) {
        evict(cache, entry);
        handle = mb_alloc(cache->pool, size);
    }
    if (!handle)
        mova::raise(mova::modules.cache, 334, MOVA_ALLOCATION_FAILED);
    return handle;
}

void cc_free(cc_cache *cache, mb_handle *handle)
{
    mb_free(cache->pool, handle);
}

void cc_remove(cc_cache *cache, cc_entry **entry)
{
    cc_entry *removed = *entry;
    *entry = nullptr;
    unlink(cache, removed);
    if (is_in_memory(removed))
        mb_free(cache->pool, &removed->handle);
    free_record(removed);
    if (cc_debug)
        mova_dprintf("cc_remove : %8X\n", low_word(removed));
}

void cc_make_empty(cc_cache *cache)
{
    while (cc_entry *entry = cache->first) {
        entry->release_fn(entry->item);
        cc_remove(cache, &entry);
    }
    assert(intact(mova::broken_invariant(*cache)));
}

uint32_t cc_check(const cc_cache *cache)
{
    uint32_t bytes = head_bytes;
    chain::for_each(cache->first, [&bytes](const cc_entry *) { bytes += entry_bytes; });
    return bytes;
}

void cc_print(const cc_cache *cache)
{
    mova_dprintf("cc_print\n");
    for (const cc_entry *entry = cache->first; entry; entry = entry->next)
        mova_dprintf("entry %8X : item = %8X : handle = %8X\n", low_word(entry), low_word(entry->item), entry->handle);
}
