/* SPDX-License-Identifier: MIT */
#include <mova/cache/swap_cache.h>

#include <string.h>

#include <mova/host/errors.h>
#include <mova/host/memory_blocks.h>
#include <mova/host/messages.h>

#include "c_api.h"
#include "check.h"

/* An item: a text of some bytes, and how often each callback was called for it. */
struct page {
    char saved[40];
    uint32_t size;
    int swapped_in, written_back, released;
};

static uint32_t size_of_page(void *item)
{
    const struct page *page = item;
    return page->size;
}

static void swap_page_in(void *item, void *block, uint32_t size)
{
    struct page *page = item;
    memcpy(block, page->saved, size);
    ++page->swapped_in;
}

static void write_page_back(void *item, void *block)
{
    struct page *page = item;
    memcpy(page->saved, block, page->size);
    ++page->written_back;
}

static void release_page(void *item)
{
    struct page *page = item;
    ++page->released;
}

static cc_entry *insert(cc_cache *cache, struct page *page, mb_handle handle)
{
    return cc_insert(cache, page, handle, size_of_page, swap_page_in, write_page_back, release_page);
}

static cc_entry *insert_drawn(cc_cache *cache, struct page *page, const char *text)
{
    mb_handle handle = cc_alloc(cache, page->size);
    memcpy(mb_get(cache->pool, handle), text, page->size);
    return insert(cache, page, handle);
}

static void evict_and_fetch(cc_cache *cache)
{
    struct page a = {"", 32, 0, 0, 0}, b = {"old words of b, thirty-two bytes", 32, 0, 0, 0};
    cc_entry *first = insert_drawn(cache, &a, "new words of a, thirty-two bytes");
    cc_entry *second = insert(cache, &b, 0);
    CHECK(cache->first == second && cache->last == first);
    CHECK(memcmp(cc_get(cache, second), b.saved, 32) == 0);
    CHECK(first->status == 0 && second->status == 0x80);
    CHECK(a.written_back == 1 && b.swapped_in == 1);
    CHECK(memcmp(cc_get(cache, first), "new words of a, thirty-two bytes", 32) == 0);
    CHECK(cc_check(cache) == 12 + 2 * 36);
    cc_lazy_swap_out(cache, first);
    CHECK(cache->first == first && first->status == 0x80);
    cc_swap_out(cache, first);
    CHECK(first->status == 0 && first->handle == 0);
    cc_get(cache, second);
    cc_flush(cache);
    CHECK(second->status == 0);
    cc_remove(cache, &first);
    CHECK(first == NULL && a.released == 0);
    cc_make_empty(cache);
    CHECK(b.released == 1 && cc_check(cache) == 12);
}

static void hold_a_block(cc_cache *cache)
{
    mb_handle handle = cc_alloc(cache, 48);
    CHECK(handle != 0);
    cc_free(cache, &handle);
    CHECK(handle == 0);
}

static int32_t line;
static char printed[200];

static void keep_line(const char *module, int32_t raised, int32_t code)
{
    line = raised;
    CHECK(strcmp(module, "cache") == 0 && code == MOVA_ALLOCATION_FAILED);
}

static void run_out_of_room(cc_cache *cache)
{
    mova_set_error_handler(keep_line);
    CHECK(cc_alloc(cache, 49) == 0);
    mova_set_error_handler(NULL);
    CHECK(line == 334);
}

static void append_text(const char *text)
{
    strcat(printed, text);
}

static void print(cc_cache *cache)
{
    char expected[100];
    cc_entry *entry = insert(cache, NULL, 0);
    const unsigned address = (unsigned)(uintptr_t)entry;
    mova_text_fn before = mova_set_debug_print(append_text);
    cc_print(cache);
    cc_debug = 1;
    cc_remove(cache, &entry);
    cc_debug = 0;
    mova_set_debug_print(before);
    snprintf(expected, sizeof expected, "cc_print\nentry %8X : item = %8X : handle = %8X\ncc_remove : %8X\n", address,
             0u, 0u, address);
    CHECK(strcmp(printed, expected) == 0);
}

void drive_swap_cache(void)
{
    mb_pool *pool = mb_create_pool(48);
    cc_cache *cache = cc_create(pool);
    evict_and_fetch(cache);
    hold_a_block(cache);
    if (drives_alone) {
        run_out_of_room(cache);
        print(cache);
    }
    MM_dealloc_item(cache, sizeof *cache);
    mb_release_pool(&pool);
}
