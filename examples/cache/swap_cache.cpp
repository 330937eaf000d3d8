/* SPDX-License-Identifier: MIT */
/* Four pictures in a pool that has room for two: the cache computes them again when it must. */
#include <mova/cache/swap_cache.h>
#include <mova/host/memory_blocks.h>
#include <cstdio>
#include <cstring>
#include <initializer_list>

struct picture {
    char shade;
    int times_drawn;
};

constexpr uint32_t bytes = 1024;

static uint32_t size_of(void *)
{
    return bytes;
}

static void draw(void *item, void *block, uint32_t size)
{
    auto *drawn = static_cast<picture *>(item);
    std::memset(block, drawn->shade, size);
    ++drawn->times_drawn;
}

static void keep(void *, void *)
{
}
static void forget(void *)
{
}

int main()
{
    picture pictures[] = {{'a', 0}, {'b', 0}, {'c', 0}, {'d', 0}};
    mb_pool *pool = mb_create_pool(2 * bytes);
    cc_cache *cache = cc_create(pool);
    cc_entry *entries[4];
    for (int i = 0; i < 4; ++i)
        entries[i] = cc_insert(cache, &pictures[i], 0, size_of, draw, keep, forget);
    for (int i : {0, 1, 0, 2, 3, 0})
        std::printf("%c", *static_cast<const char *>(cc_get(cache, entries[i])));
    std::printf("\n");
    for (const picture &each : pictures)
        std::printf("%c was drawn %d times\n", each.shade, each.times_drawn);
    cc_make_empty(cache);
    MM_dealloc_item(cache, sizeof(cc_cache)); /* the cache has no release function; what it allocates is the host's */
    mb_release_pool(&pool);
}
