/* SPDX-License-Identifier: MIT */
/* A body in the swap cache is changed, and is still changed after others took its room. */
#include <mova/cache/swap_cache.h>
#include <mova/host/memory_blocks.h>
#include <stdio.h>
#include <string.h>

enum { BYTES = 16 };

typedef struct page {
    char stored[BYTES]; /* a file, in a real program */
    cc_entry *entry;
} page;

static uint32_t page_size(void *item)
{
    (void)item;
    return BYTES;
}

static void read_page(void *item, void *block, uint32_t size)
{
    memcpy(block, ((page *)item)->stored, size);
}

static void write_page(void *item, void *block)
{
    memcpy(((page *)item)->stored, block, BYTES);
}

static void forget_page(void *item)
{
    ((page *)item)->entry = NULL;
}

/* Returns where the page's body may be changed: in a copy, which the cache writes back before it drops it. Holds until the next
   call of the cache. */
static void *change(cc_cache *cache, page *p)
{
    mb_handle block = cc_alloc(cache, BYTES); /* 1. allocate, and all addresses are dead */
    const void *old = cc_get(cache, p->entry);
    memcpy(mb_get(cache->pool, block), old, BYTES); /* 2. copy: asking for an address moves nothing */
    cc_remove(cache, &p->entry);                    /* 3. remove, and insert with the block: that is dirty */
    p->entry = cc_insert(cache, p, block, page_size, read_page, write_page, forget_page);
    return mb_get(cache->pool, block);
}

int main(void)
{
    page pages[] = {{"one", NULL}, {"two", NULL}, {"three", NULL}};
    mb_pool *pool = mb_create_pool(2 * BYTES);
    cc_cache *cache = cc_create(pool);
    for (int i = 0; i < 3; ++i)
        pages[i].entry = cc_insert(cache, &pages[i], 0, page_size, read_page, write_page, forget_page);
    strcpy(cc_get(cache, pages[0].entry), "lost");
    strcpy(change(cache, &pages[1]), "kept");
    cc_flush(cache); /* all bodies leave; those that are dirty are written back */
    for (int i = 0; i < 3; ++i)
        printf("%s\n", (const char *)cc_get(cache, pages[i].entry));
    cc_make_empty(cache);
    MM_dealloc_item(cache, sizeof(cc_cache));
    mb_release_pool(&pool);
}
