/* SPDX-License-Identifier: MIT */
#include <mova/cache/swap_cache.h>
#include <mova/frame/host.h>
#include <mova/host/memory_blocks.h>
#include <mova/lists/generic_list.h>

#include "misuse.h"

static int items[2];

/* The entry that a callback is to remove, where it is to. */
static cc_entry *removed;
static cc_cache *emptied;

static void misuse_in_callback(void)
{
    cc_entry *entry = removed;
    removed = NULL;
    if (entry && emptied)
        cc_remove(emptied, &entry);
    else if (emptied)
        cc_make_empty(emptied);
}

static uint32_t size_of(void *item)
{
    (void)item;
    return 64;
}

static void fetch(void *item, void *block, uint32_t size)
{
    (void)item, (void)block, (void)size;
    misuse_in_callback();
}

static void write_back(void *item, void *block)
{
    (void)item, (void)block;
    misuse_in_callback();
}

static void let_go(void *item)
{
    (void)item;
    misuse_in_callback();
}

static cc_entry *inserted(cc_cache *cache, int item, mb_handle handle)
{
    return cc_insert(cache, &items[item], handle, size_of, fetch, write_back, let_go);
}

/* Both bodies are out. */
static cc_cache *two_entries(void)
{
    cc_cache *cache = cc_create(mb_create_pool(4096));
    inserted(cache, 1, 0);
    inserted(cache, 0, 0);
    return cache;
}

static void end(cc_cache *cache)
{
    mb_pool *pool = cache->pool;
    cc_make_empty(cache);
    MM_dealloc_item(cache, sizeof *cache);
    mb_release_pool(&pool);
}

/* ---- caches and entries ---- */

static void null_cache(int misused)
{
    cc_cache *cache = two_entries();
    cc_check(misused ? NULL : cache);
    end(cache);
}

static void null_pool(int misused)
{
    cc_cache *cache = two_entries();
    cc_cache *other = cc_create(misused ? NULL : cache->pool);
    MM_dealloc_item(other, sizeof *other);
    end(cache);
}

static void null_entry(int misused)
{
    cc_cache *cache = two_entries();
    cc_get(cache, misused ? NULL : cache->first);
    end(cache);
}

static void null_address(int misused)
{
    cc_cache *cache = two_entries();
    cc_entry *entry = cache->first;
    cc_remove(cache, misused ? NULL : &entry);
    end(cache);
}

static void null_address_of_a_handle(int misused)
{
    cc_cache *cache = two_entries();
    mb_handle handle = cc_alloc(cache, 16);
    cc_free(cache, misused ? NULL : &handle);
    end(cache);
}

static void never_created(int misused)
{
    cc_cache *cache = two_entries();
    cc_cache stray = *cache;
    mb_handle handle = cc_alloc(misused ? &stray : cache, 16);
    cc_free(cache, &handle);
    end(cache);
}

static void cache_of_another_family(int misused)
{
    cc_cache *cache = two_entries();
    GL_list *list = GL_create();
    void *wrong = list;
    cc_flush(misused ? (cc_cache *)wrong : cache);
    GL_release(&list);
    end(cache);
}

static void removed_entry(int misused)
{
    cc_cache *cache = two_entries();
    cc_entry *entry = cache->first, *alias = entry;
    if (misused)
        cc_remove(cache, &entry);
    cc_get(cache, alias);
    end(cache);
}

static void removed_twice(int misused)
{
    cc_cache *cache = two_entries();
    cc_entry *entry = cache->first, *alias = entry;
    cc_remove(cache, &entry);
    if (misused)
        cc_remove(cache, &alias);
    end(cache);
}

static void entry_of_another_cache(int misused)
{
    cc_cache *cache = two_entries();
    cc_cache *other = two_entries();
    cc_swap_out(misused ? other : cache, cache->first);
    end(other);
    end(cache);
}

static void position_as_entry(int misused)
{
    cc_cache *cache = two_entries();
    GL_list *list = GL_create();
    void *wrong = GL_append_after_last(list, NULL);
    cc_lazy_swap_out(cache, misused ? (cc_entry *)wrong : cache->first);
    GL_release(&list);
    end(cache);
}

/* ---- blocks ---- */

static void freed_twice(int misused)
{
    cc_cache *cache = two_entries();
    mb_handle handle = cc_alloc(cache, 16), alias = handle;
    cc_free(cache, &handle);
    if (misused)
        cc_free(cache, &alias);
    end(cache);
}

static void stale_handle(int misused)
{
    cc_cache *cache = two_entries();
    mb_handle handle = cc_alloc(cache, 64), alias = handle;
    if (misused)
        cc_free(cache, &handle);
    inserted(cache, 0, alias);
    end(cache);
}

static void foreign_handle(int misused)
{
    cc_cache *cache = two_entries();
    cc_cache *other = two_entries();
    mb_handle handle = cc_alloc(misused ? other : cache, 64);
    inserted(cache, 0, handle);
    end(other);
    end(cache);
}

static void pool_was_released(int misused)
{
    cc_cache *cache = two_entries();
    mb_pool *pool = cache->pool;
    if (misused)
        mb_release_pool(&pool);
    cc_get(cache, cache->first);
    end(cache);
}

static void body_was_freed(int misused)
{
    cc_cache *cache = two_entries();
    mb_handle handle;
    cc_get(cache, cache->first);
    handle = cache->first->handle;
    if (misused)
        cc_free(cache, &handle);
    cc_get(cache, cache->first);
    end(cache);
}

/* There is room for the third block only where the second is moved. */
static void body_was_moved(int misused)
{
    cc_cache *cache = two_entries();
    mb_handle first = cc_alloc(cache, 2048), second = cc_alloc(cache, 1024), third;
    char *body = mb_get(cache->pool, second);
    cc_free(cache, &first);
    third = cc_alloc(cache, 3000);
    *(misused ? body : (char *)mb_get(cache->pool, second)) = 1;
    cc_free(cache, &third);
    cc_free(cache, &second);
    end(cache);
}

/* ---- callbacks, damage ---- */

static void removed_by_its_fetch(int misused)
{
    cc_cache *cache = two_entries();
    emptied = cache;
    removed = misused ? cache->first : cache->last;
    cc_get(cache, cache->first);
    emptied = NULL;
    end(cache);
}

static void removed_by_a_write_back(int misused)
{
    cc_cache *cache = two_entries();
    cc_entry *entry = inserted(cache, 0, cc_alloc(cache, 64));
    emptied = misused ? cache : NULL;
    removed = misused ? cache->last : NULL;
    cc_swap_out(cache, entry);
    emptied = NULL;
    end(cache);
}

static void removed_while_flushed(int misused)
{
    cc_cache *cache = two_entries();
    inserted(cache, 0, cc_alloc(cache, 64));
    emptied = misused ? cache : NULL;
    removed = misused ? cache->last : NULL;
    cc_flush(cache);
    emptied = NULL;
    end(cache);
}

static void removed_for_room(int misused)
{
    cc_cache *cache = two_entries();
    mb_handle handle;
    inserted(cache, 0, cc_alloc(cache, 4096));
    emptied = misused ? cache : NULL;
    removed = misused ? cache->last : NULL;
    handle = cc_alloc(cache, 4096);
    emptied = NULL;
    cc_free(cache, &handle);
    end(cache);
}

static void emptied_by_its_fetch(int misused)
{
    cc_cache *cache = two_entries();
    emptied = misused ? cache : NULL;
    cc_get(cache, cache->first);
    emptied = NULL;
    end(cache);
}

static void *put_behind(void *cache)
{
    cc_lazy_swap_out(cache, ((cc_cache *)cache)->last);
    return NULL;
}

/* Another thread is in the cache while a body is written back. */
static cc_cache *entered;

static void write_back_while_another_edits(void *item, void *block)
{
    (void)item, (void)block;
    in_a_thread(put_behind, entered);
}

static void written_back_and_edited(int misused)
{
    cc_cache *cache = two_entries(), *other = two_entries();
    mb_handle handle = cc_alloc(cache, 64);
    cc_entry *entry = cc_insert(cache, &items[0], handle, size_of, fetch, write_back_while_another_edits, let_go);
    in_a_thread(do_nothing, NULL);
    entered = misused ? cache : other;
    cc_swap_out(cache, entry);
    end(other);
    end(cache);
}

static void damaged_links(int misused)
{
    cc_cache *cache = two_entries();
    if (misused)
        cache->last->prev = NULL;
    end(cache);
}

static void link_to_nowhere(int misused)
{
    cc_cache *cache = two_entries();
    if (misused)
        cache->first->next = (cc_entry *)(uintptr_t)0x1000;
    end(cache);
}

static void damaged_end(int misused)
{
    cc_cache *cache = two_entries();
    if (misused)
        cache->last = NULL;
    end(cache);
}

static void damaged_status(int misused)
{
    cc_cache *cache = two_entries();
    if (misused)
        cache->last->status = 0x40;
    end(cache);
}

static void damaged_handle(int misused)
{
    cc_cache *cache = two_entries();
    cc_get(cache, cache->first);
    if (misused)
        cache->first->handle += 1000;
    end(cache);
}

static const misuse_cell cells[] = {
    {"null cache", 1, "cc_check: the cache is null", null_cache},
    {"null pool", 1, "cc_create: the pool is null", null_pool},
    {"null entry", 1, "cc_get: the entry is null", null_entry},
    {"null address", 1, "cc_remove: the address of the entry is null", null_address},
    {"null address of a handle", 1, "cc_free: the address of the handle is null", null_address_of_a_handle},
    {"never created", 2, "cc_alloc: the cache was never created", never_created},
    {"cache of another family", 2, "cc_flush: the cache is of another family", cache_of_another_family},
    {"removed entry", 12, "cc_get: the entry was removed", removed_entry},
    {"removed twice", 12, "cc_remove: the entry was removed", removed_twice},
    {"entry of another cache", 3, "cc_swap_out: the entry is of another cache", entry_of_another_cache},
    {"position as entry", 3, "cc_lazy_swap_out: the entry is of another family", position_as_entry},
    {"freed twice", 12, "cc_free: the handle names no block of the cache's pool", freed_twice},
    {"stale handle", 12, "cc_insert: the handle names no block of the cache's pool", stale_handle},
    {"foreign handle", 12, "cc_insert: the handle names no block of the cache's pool", foreign_handle},
    {"pool was released", 12, "cc_get: the cache's pool was released", pool_was_released},
    {"body was freed", 12, "cc_get: the entry's block was freed", body_was_freed},
#if defined __x86_64__
    {"body was moved", 12, "fault: a block is touched where it lay before its pool moved blocks", body_was_moved},
#endif
    {"removed by its fetch", 9, "cc_remove: the entry's cache is calling back in cc_get", removed_by_its_fetch},
    {"removed by a write back", 9, "cc_remove: the entry's cache is calling back in cc_swap_out",
     removed_by_a_write_back},
    {"removed while flushed", 9, "cc_remove: the entry's cache is calling back in cc_flush", removed_while_flushed},
    {"removed for room", 9, "cc_remove: the entry's cache is calling back in cc_alloc", removed_for_room},
    {"emptied by its fetch", 9, "cc_make_empty: the cache is calling back in cc_get", emptied_by_its_fetch},
    {"written back and edited", 10, "cc_swap_out: another thread used the cache meanwhile", written_back_and_edited},
    {"damaged links", 13, "cc_make_empty: the cache breaks its invariant 1", damaged_links},
    {"link to nowhere", 13, "cc_make_empty: the cache breaks its invariant 1", link_to_nowhere},
    {"damaged end", 13, "cc_make_empty: the cache breaks its invariant 2", damaged_end},
    {"damaged status", 13, "cc_make_empty: the cache breaks its invariant 3", damaged_status},
    {"damaged handle", 13, "cc_make_empty: the cache breaks its invariant 4", damaged_handle},
};

int main(int arguments, char **argument)
{
    return run_cell(cells, sizeof cells / sizeof cells[0], arguments, argument);
}
