/* SPDX-License-Identifier: MIT */
/* The cache on the default host: bodies that really move, in a pool that really runs short. */
#include <mova/cache/swap_cache.h>
#include <mova/host/errors.h>
#include <mova/host/memory_blocks.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

/* An item whose body is its number, over and over; what the caller wrote first is saved when it is written back. */
struct item {
    unsigned char number;
    uint32_t size;
    int fetched = 0, written_back = 0;
};

uint32_t size_of(void *pointer)
{
    return static_cast<item *>(pointer)->size;
}

void swap_in(void *pointer, void *block, uint32_t size)
{
    auto *filled = static_cast<item *>(pointer);
    ++filled->fetched;
    std::memset(block, filled->number, size);
}

void write_back(void *pointer, void *block)
{
    auto *saved = static_cast<item *>(pointer);
    ++saved->written_back;
    EXPECT_EQ(std::string(static_cast<const char *>(block), saved->size), std::string(saved->size, 'n'));
}

void release(void *)
{
}

class SwapCacheOnPool : public ::testing::Test {
protected:
    void TearDown() override
    {
        cc_make_empty(cache);
        EXPECT_EQ(mb_pool_statistics(pool).live_blocks, 0u);
        MM_dealloc_item(cache, sizeof(cc_cache));
        mb_release_pool(&pool);
    }

    cc_entry *insert(item *inserted, mb_handle handle)
    {
        return cc_insert(cache, inserted, handle, size_of, swap_in, write_back, release);
    }

    void expect_body(const item &expected, const void *body)
    {
        const char byte = expected.written_back || expected.fetched ? static_cast<char>(expected.number) : 'n';
        ASSERT_EQ(std::string(static_cast<const char *>(body), expected.size), std::string(expected.size, byte));
    }

    mb_pool *pool = mb_create_pool(4000);
    cc_cache *cache = cc_create(pool);
};

TEST_F(SwapCacheOnPool, BodiesOfManyItemsAreRightThoughOnlyAFewHaveRoom)
{
    std::mt19937 engine(7);
    std::vector<item> items(60);
    std::vector<cc_entry *> entries;
    for (item &each : items) {
        each = {static_cast<unsigned char>(entries.size() + 128), static_cast<uint32_t>(engine() % 900)};
        mb_handle handle = cc_alloc(cache, each.size);
        std::memset(mb_get(pool, handle), 'n', each.size);
        entries.push_back(insert(&each, handle));
    }
    for (int turn = 0; turn < 5000; ++turn) {
        const size_t chosen = engine() % items.size();
        expect_body(items[chosen], cc_get(cache, entries[chosen]));
    }
    for (const item &each : items)
        EXPECT_LE(each.written_back, 1);
    EXPECT_GT(mb_pool_statistics(pool).moves, 0u);
}

TEST_F(SwapCacheOnPool, ABodyLargerThanThePoolRaises)
{
    item large = {1, 4001};
    cc_entry *entry = insert(&large, 0);
    EXPECT_THROW(cc_get(cache, entry), mova::error);
    EXPECT_EQ(entry->status, 0);
}

TEST_F(SwapCacheOnPool, ABlockOfTheCallersDisplacesBodies)
{
    item first = {1, 2000}, second = {2, 2000};
    cc_entry *entry = insert(&first, 0), *other = insert(&second, 0);
    cc_get(cache, entry);
    cc_get(cache, other);
    mb_handle handle = cc_alloc(cache, 4000);
    EXPECT_EQ(entry->status | other->status, 0);
    EXPECT_EQ(mb_pool_statistics(pool).live_bytes, 4000u);
    cc_free(cache, &handle);
    EXPECT_EQ(handle, 0u);
}

} // namespace
