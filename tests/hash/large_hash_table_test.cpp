/* SPDX-License-Identifier: MIT */
/* Hash tables of the most slots that there are, on a host that refuses what is too large. */
#include <mova/hash/hash_table.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <tuple>
#include <vector>

#include <sys/mman.h>

namespace {

constexpr size_t refused = size_t{1} << 32;

struct no_memory {};

std::vector<std::string> calls;
int live_blocks = 0;

} // namespace

void *MM_alloc_item(size_t size)
{
    calls.push_back("alloc " + std::to_string(size));
    if (size > refused)
        throw no_memory();
    ++live_blocks;
    return std::malloc(size);
}

void MM_dealloc_item(void *item, size_t)
{
    --live_blocks;
    std::free(item);
}

void *MM_realloc_item(void *item, size_t, size_t new_size)
{
    return std::realloc(item, new_size);
}

void EX_raise_exception_line(const char *, int32_t, int32_t)
{
    std::abort();
}

namespace {

constexpr uint32_t most_slots = uint32_t{1} << 30;

/* 2^30 words are 8 GiB. */
TEST(LargeHashTable, ARequestForTheMostSlotsThatIsRefusedLosesNothing)
{
    for (const uint32_t slots : {most_slots, most_slots - 1, most_slots / 2 + 1}) {
        calls.clear();
        EXPECT_THROW(std::ignore = HSH_create(slots, 0), no_memory);
        EXPECT_EQ(calls, (std::vector<std::string>{"alloc " + std::to_string(sizeof(HSH_table)), "alloc 8589934592"}));
        EXPECT_EQ(live_blocks, 0);
    }
}

mova_word *mapped_words(size_t count)
{
    void *words = mmap(nullptr, count * sizeof(mova_word), PROT_READ | PROT_WRITE,
                       MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return words == MAP_FAILED ? nullptr : static_cast<mova_word *>(words);
}

/* A table as large as that would be, of which few pages are touched; `high_water_mark` says when it is full. It never was
   smaller, so it may be empty. */
class mapped_table {
public:
    explicit mapped_table(int32_t capacity)
    {
        const auto slots = static_cast<size_t>(capacity);
        table_ = {capacity,           capacity, 0, 0, capacity / 8 * 7, capacity - 1, 0, 0, mapped_words(slots),
                  mapped_words(slots)};
    }
    ~mapped_table()
    {
        for (mova_word *words : {table_.keys, table_.values})
            munmap(words, static_cast<size_t>(table_.capacity) * sizeof(mova_word));
    }
    HSH_table *get() { return &table_; }

private:
    HSH_table table_;
};

TEST(LargeHashTable, TheLargestTableIsSearchedFilledAndEmptiedAroundItsEnd)
{
    mapped_table mapped(1 << 30);
    HSH_table *table = mapped.get();
    ASSERT_TRUE(table->keys && table->values);
    table->count = table->high_water_mark - 4;
    constexpr mova_word last = (1 << 30) - 1;
    for (mova_word key : {last, 2 * last + 1, last - (mova_word{1} << 32), mova_word{-1}})
        EXPECT_EQ(HSH_set_value(table, key, key + 1), key + 1);
    EXPECT_EQ(table->count, table->high_water_mark);
    EXPECT_EQ(table->keys[last], last);
    EXPECT_EQ(table->keys[0], 2 * last + 1);
    EXPECT_EQ(table->keys[2], -1);
    EXPECT_EQ(HSH_get_value(table, -1), 0);
    EXPECT_EQ(HSH_contains_key(table, -2), 0);
    EXPECT_EQ(HSH_set_value(table, last, 7), 7) << "a key that is there takes no room";
    EXPECT_GE(HSH_remove_entry(table, last), 0);
    EXPECT_EQ(table->keys[last], -1) << "the last of the run comes to the hole";
    EXPECT_EQ(table->count, table->high_water_mark - 1);
}

TEST(LargeHashTable, AGrowthToTheMostSlotsThatIsRefusedLeavesTheTableAsItWas)
{
    mapped_table mapped(1 << 29);
    HSH_table *table = mapped.get();
    ASSERT_TRUE(table->keys && table->values);
    HSH_set_value(table, 5, 6);
    table->count = table->high_water_mark;
    const HSH_table before = *table;
    calls.clear();
    EXPECT_THROW(HSH_set_value(table, 7, 8), no_memory);
    EXPECT_EQ(calls, std::vector<std::string>{"alloc 8589934592"});
    EXPECT_EQ(table->capacity, before.capacity);
    EXPECT_EQ(table->count, before.count);
    EXPECT_EQ(table->keys, before.keys);
    EXPECT_EQ(HSH_get_value(table, 5), 6);
    EXPECT_EQ(HSH_contains_key(table, 7), 0);
    EXPECT_EQ(live_blocks, 0);
}

TEST(LargeHashTable, AnIteratorReachesTheLastSlot)
{
    mapped_table mapped(1 << 30);
    HSH_table *table = mapped.get();
    ASSERT_TRUE(table->keys && table->values);
    constexpr mova_word last = (1 << 30) - 1;
    HSH_set_value(table, last, 1);
    HSH_iterator iterator = {table, (1 << 30) - 3};
    mova_word key, value;
    EXPECT_EQ(HSH_next(&iterator, &key, &value), 1);
    EXPECT_EQ(key, last);
    EXPECT_EQ(iterator.index, 1 << 30);
    EXPECT_EQ(HSH_next(&iterator, &key, &value), 0);
}

} // namespace
