/* SPDX-License-Identifier: MIT */
/* A cache, and a table of its calls, for tests that do something to each of them: that make what they use fail, or its blocks
   move. */
#ifndef MOVA_TESTS_CACHE_CACHE_CALLS_H
#define MOVA_TESTS_CACHE_CACHE_CALLS_H

#include <mova/cache/swap_cache.h>

#include <tests/support/fault_sweep.h>
#include <mova/cache/internal/invariants.h>

#include <algorithm>
#include <string>
#include <vector>

namespace mova::test::cache_calls {

constexpr uint32_t body_size = 10;

/* An item's body is its name, repeated. */
struct item {
    char name;
    bool was_saved = false, was_released = false;
};

inline item &item_of(void *pointer)
{
    return *static_cast<item *>(pointer);
}

inline recording_pool &pool()
{
    return recording_host::get().pool();
}

/* Whether each callback ends by allocating in the pool, as it may: everything may have moved when it returns. */
inline bool callbacks_allocate = false;

inline void allocate_in_callback()
{
    if (!callbacks_allocate)
        return;
    mb_handle block = mb_alloc(pool().address(), 0);
    mb_free(pool().address(), &block);
}

inline uint32_t size_of(void *)
{
    callback_called();
    allocate_in_callback();
    return body_size;
}

/* Fails with half of the body in the block. */
inline void swap_in(void *pointer, void *block, uint32_t size)
{
    std::fill_n(static_cast<char *>(block), size / 2, item_of(pointer).name);
    callback_called();
    std::fill_n(static_cast<char *>(block), size, item_of(pointer).name);
    allocate_in_callback();
}

inline void write_back(void *pointer, void *)
{
    callback_called();
    item_of(pointer).was_saved = true;
    allocate_in_callback();
}

inline void release_item(void *pointer)
{
    callback_called();
    item_of(pointer).was_released = true;
    allocate_in_callback();
}

/* Entries A (dirty), C (clean), B (out), D (dirty), first to last, in a pool that is full with them; and what the call
   made. Everything is printed. */
struct caches {
    item items[6] = {{'A'}, {'B'}, {'C'}, {'D'}, {'E'}, {'F'}};
    cc_cache *cache = cc_create(pool().address()), *made = nullptr;
    cc_entry *entries[6] = {};
    mb_handle block = 0;

    caches()
    {
        cc_debug = 1;
        for (char name : {'D', 'C', 'B', 'A'})
            entry(name) = insert(name, name == 'A' || name == 'D' ? filled_block(name) : 0);
        cc_get(cache, entry('C'));
        cc_get(cache, entry('A'));
        pool().set_budget(3 * body_size);
    }

    ~caches() { cc_debug = 0; }

    /* "A! C. B D!": "!" is dirty and "." is clean, "?" a body that is not whole. Then what was saved and released. */
    std::string state() const
    {
        std::string text;
        for (const cc_entry *each = cache->first; each; each = each->next) {
            text += item_of(each->item).name;
            text += each->status == 0xC0 ? "!" : each->status == 0x80 ? "." : "";
            text += is_whole(each) ? " " : "? ";
        }
        for (const item &each : items) {
            text += each.was_saved ? std::string("saved ") + each.name + " " : "";
            text += each.was_released ? std::string("released ") + each.name + " " : "";
        }
        return text + (made ? "made" : "") + (block ? "block" : "");
    }

    int broken_invariant() const
    {
        return mova::broken_invariant(*cache, [](mb_handle handle) { return pool().name_of(handle)[0] == 'b'; });
    }

    /* Uses every entry. A body that is not whole is given up first. */
    void go_on()
    {
        pool().set_budget(SIZE_MAX);
        std::vector<cc_entry *> all;
        for (cc_entry *each = cache->first; each; each = each->next)
            all.push_back(each);
        for (cc_entry *each : all) {
            if (!is_whole(each))
                cc_swap_out(cache, each);
            cc_get(cache, each);
        }
        EXPECT_EQ(state().find('?'), std::string::npos);
        cc_flush(cache);
        entry('F') = insert('F', 0);
        cc_get(cache, entry('F'));
        cc_remove(cache, &entry('F'));
    }

    void release()
    {
        if (block)
            cc_free(cache, &block);
        for (cc_cache *each : {cache, made}) {
            if (!each)
                continue;
            cc_make_empty(each);
            MM_dealloc_item(each, sizeof(cc_cache));
        }
    }

    cc_entry *&entry(char name) { return entries[name - 'A']; }

    cc_entry *insert(char name, mb_handle handle)
    {
        return cc_insert(cache, &items[name - 'A'], handle, size_of, swap_in, write_back, release_item);
    }

    mb_handle filled_block(char name)
    {
        const mb_handle handle = cc_alloc(cache, body_size);
        std::ranges::fill(pool().bytes_of(handle), static_cast<unsigned char>(name));
        return handle;
    }

    static bool is_whole(const cc_entry *entry)
    {
        return !entry->handle || std::ranges::all_of(pool().bytes_of(entry->handle), [entry](unsigned char byte) {
            return byte == item_of(entry->item).name;
        });
    }
};

/* With room for one body more. */
inline void make_room()
{
    pool().set_budget(4 * body_size);
}

constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable};
inline const answers after_a_raise{usable, {fault_source::raise}};

inline const fault_row<caches> rows[] = {
    {"cc_create", [](caches &c) { c.made = cc_create(pool().address()); }, unchanged, unchanged},
    {"cc_insert", [](caches &c) { c.insert('E', 0); }, unchanged, usable},
    {"cc_get of a body in memory", [](caches &c) { cc_get(c.cache, c.entry('D')); }, usable, usable},
    {"cc_get with room",
     [](caches &c) {
         make_room();
         cc_get(c.cache, c.entry('B'));
     },
     usable, usable},
    {"cc_get that evicts", [](caches &c) { cc_get(c.cache, c.entry('B')); }, usable, usable},
    {"cc_get without room",
     [](caches &c) {
         pool().set_budget(0);
         cc_get(c.cache, c.entry('B'));
     },
     usable, usable, after_a_raise},
    {"cc_alloc that evicts", [](caches &c) { c.block = cc_alloc(c.cache, 2 * body_size); }, usable, usable},
    {"cc_alloc without room", [](caches &c) { c.block = cc_alloc(c.cache, 4 * body_size); }, usable, usable,
     after_a_raise},
    {"cc_swap_out", [](caches &c) { cc_swap_out(c.cache, c.entry('A')); }, unchanged, unchanged},
    {"cc_flush", [](caches &c) { cc_flush(c.cache); }, usable, usable},
    {"cc_remove", [](caches &c) { cc_remove(c.cache, &c.entry('A')); }, usable, usable},
    {"cc_make_empty", [](caches &c) { cc_make_empty(c.cache); }, usable, usable},
    {"cc_print", [](caches &c) { cc_print(c.cache); }, unchanged, unchanged},
};

} // namespace mova::test::cache_calls

#endif
