/* SPDX-License-Identifier: MIT */
/* The parts of the memory service over a system that a test controls: it refuses what it is told to, and its time is the
   test's. */
#include <mova/host/internal/heap.h>
#include <mova/host/internal/thread_cache.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <tests/support/byte_source.h>

namespace {

using namespace mova;

constexpr size_t kib = 1024, mib = 1024 * kib;

/* Keeps account of what is mapped. At its end it gives all of that back. */
class test_system : public system_memory {
public:
    ~test_system()
    {
        for (const auto &[start, size] : mapped)
            system_memory::unmap(start, size);
    }

    void *map(void *wish, size_t size) override
    {
        if (maps_until_refusal >= 0 && maps_until_refusal-- == 0)
            return refused_map();
        void *start = misplaces ? map_misplaced(size) : system_memory::map(wish_granted ? wish : nullptr, size);
        if (start)
            add(static_cast<char *>(start), size);
        return start;
    }

    bool unmap(void *start, size_t size) override
    {
        ++unmap_calls;
        if (refuses_unmap || !system_memory::unmap(start, size))
            return false;
        remove(static_cast<char *>(start), size);
        return true;
    }

    void *extend(void *start, size_t old_size, size_t new_size) override
    {
        void *extended = refuses_extend ? nullptr : system_memory::extend(start, old_size, new_size);
        if (extended) {
            remove(static_cast<char *>(start), old_size);
            add(static_cast<char *>(extended), new_size);
        }
        return extended;
    }

    void purge(void *start, size_t size) override
    {
        purged += size;
        system_memory::purge(start, size);
    }

    void prefer_huge_pages(void *, size_t size) override { huge += size; }
    void refuse_huge_pages(void *, size_t size) override { huge -= size; }
    uint32_t now() override { return time; }

    size_t mapped_bytes() const
    {
        size_t bytes = 0;
        for (const auto &[start, size] : mapped)
            bytes += size;
        return bytes;
    }

    bool refuses_unmap = false, refuses_extend = false, wish_granted = true;
    int maps_until_refusal = -1; /* none is refused */
    bool refuses_for_good = false;
    bool misplaces = false; /* what it maps begins at no multiple of two pages */
    size_t purged = 0, huge = 0, unmap_calls = 0;
    uint32_t time = 0xffff0000; /* it will begin anew */
    std::map<char *, size_t> mapped;

private:
    void *refused_map()
    {
        if (refuses_for_good)
            maps_until_refusal = 0;
        return nullptr;
    }

    /* Of two pages more the first, or both, go back. */
    void *map_misplaced(size_t size)
    {
        constexpr size_t page = 4096;
        auto *start = static_cast<char *>(system_memory::map(nullptr, size + 2 * page));
        if (!start)
            return nullptr;
        const size_t before = reinterpret_cast<uintptr_t>(start) / page % 2 == 0 ? page : 2 * page;
        system_memory::unmap(start, before);
        if (before == page)
            system_memory::unmap(start + before + size, page);
        return start + before;
    }

    void add(char *start, size_t size) { mapped[start] = size; }

    /* A piece may end another, begin it, lie in its midst, or be several that lie side by side. */
    void remove(char *start, size_t size)
    {
        for (char *end = start + size; start != end;) {
            auto found = std::prev(mapped.upper_bound(start));
            char *found_end = found->first + found->second, *piece_end = std::min(end, found_end);
            ASSERT_LT(start, found_end) << "not mapped";
            if (found->first == start)
                mapped.erase(found);
            else
                found->second = static_cast<size_t>(start - found->first);
            if (piece_end != found_end)
                add(piece_end, static_cast<size_t>(found_end - piece_end));
            start = piece_end;
        }
    }
};

class Heap : public testing::Test {
protected:
    void *take(size_t size) { return own.take(size_classes::class_of(size)).start; }
    void give(void *block, size_t size) { own.give(size_classes::class_of(size), block); }
    size_t taken(size_t size) { return own.taken(size_classes::class_of(size)); }

    std::vector<void *> take_many(size_t count, size_t size)
    {
        std::vector<void *> blocks(count);
        std::ranges::generate(blocks, [&] { return take(size); });
        return blocks;
    }

    void give_all(const std::vector<void *> &blocks, size_t size)
    {
        for (void *block : blocks)
            give(block, size);
    }

    test_system system;
    heap own{system, thread_caches::records};
};

/* ---- the units of a chunk, and pages of the system ---- */

TEST(UnitSet, TheFirstRunThatIsLongEnoughIsFoundOrNone)
{
    unit_set units;
    EXPECT_EQ(units.find(1), unit_set::all);
    units.turn(10, 5);
    units.turn(40, 20);
    EXPECT_EQ(units.find(5), 10u);
    EXPECT_EQ(units.find(6), 40u);
    EXPECT_EQ(units.find(21), unit_set::all);
}

TEST(SystemMemory, OnlyWholePagesArePurged)
{
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    system_memory system;
    auto *bytes = static_cast<char *>(system.map(nullptr, 2 * page));
    ASSERT_NE(bytes, nullptr);
    std::memset(bytes, 'x', 2 * page);
    system.purge(bytes + 1, 2 * page - 2);
    EXPECT_EQ(std::count(bytes, bytes + 2 * page, 'x'), 2 * page);
    system.purge(bytes + 1, 2 * page - 1);
    EXPECT_EQ(std::count(bytes, bytes + page, 'x'), page);
    EXPECT_EQ(std::count(bytes + page, bytes + 2 * page, 0), page);
    EXPECT_TRUE(system.unmap(bytes, 2 * page));
}

/* ---- chunks and runs ---- */

TEST_F(Heap, AHeapThatIsEmptyAgainGivesAllBack)
{
    for (size_t size : {size_t{1}, size_t{1000}, 5 * kib, 40 * kib, 256 * kib, 300 * kib, 5 * mib})
        give_all(take_many(100, size), size);
    EXPECT_GT(system.mapped_bytes(), 0u);
    EXPECT_TRUE(own.give_back());
    EXPECT_EQ(system.mapped_bytes(), 0u);
    EXPECT_EQ(own.held(), 0u);
    EXPECT_FALSE(own.give_back());
}

TEST_F(Heap, WhatIsHeldIsWhatIsMapped)
{
    std::vector<void *> blocks = take_many(50, 100 * kib), larges = take_many(3, mib);
    EXPECT_EQ(own.held(), system.mapped_bytes());
    give_all(blocks, 100 * kib);
    give_all(larges, mib);
    EXPECT_EQ(own.held(), system.mapped_bytes());
}

TEST_F(Heap, AChunkIsAlignedWhereverTheSystemMaps)
{
    system.wish_granted = false;
    system.misplaces = true;
    std::vector<void *> blocks = take_many(20, 256 * kib);
    for (const void *block : blocks)
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 4096, 0u);
    EXPECT_EQ(own.held(), system.mapped_bytes());
    give_all(blocks, 256 * kib);
    own.give_back();
    EXPECT_EQ(system.mapped_bytes(), 0u);
}

/* The first place is amiss and goes back, the second is too, and for a larger one there is no room. */
TEST_F(Heap, AChunkThatIsMappedAmissIsNoneWhereTheSystemHasNoMore)
{
    for (int maps : {1, 2}) {
        system.wish_granted = false;
        system.misplaces = true;
        system.maps_until_refusal = maps;
        EXPECT_EQ(take(100), nullptr);
        EXPECT_EQ(system.mapped_bytes(), 0u);
        EXPECT_EQ(own.held(), 0u);
    }
}

TEST_F(Heap, AChunkThatIsMappedAmissAndNotTakenBackStaysHeld)
{
    system.wish_granted = false;
    system.misplaces = true;
    system.refuses_unmap = true;
    void *block = take(100);
    ASSERT_NE(block, nullptr);
    std::memset(block, 'b', 100);
    EXPECT_EQ(own.held(), system.mapped_bytes());
    give(block, 100);
}

TEST_F(Heap, ARefusedMappingIsNoBlockAndChangesNothing)
{
    for (size_t size : {size_t{100}, 10 * kib, 100 * kib, mib}) {
        system.maps_until_refusal = 0;
        system.refuses_for_good = true;
        EXPECT_EQ(take(size), nullptr) << size;
        EXPECT_EQ(taken(size), 0u) << size;
        EXPECT_EQ(own.held(), 0u);
        system.maps_until_refusal = -1;
        void *block = take(size);
        EXPECT_NE(block, nullptr) << size;
        give(block, size);
        own.give_back();
    }
}

/* A block that is almost as large as those that have a mapping to themselves has nearly none of its own. */
TEST_F(Heap, BlocksOfUpTo256KiBShareChunksAndLieSideBySide)
{
    for (size_t size : {40 * kib, 224 * kib, 225 * kib, 256 * kib}) {
        const size_t count = (chunk_size - 36 * kib) / size_classes::block_size(size_classes::class_of(size));
        std::vector<void *> blocks = take_many(count, size);
        EXPECT_EQ(system.mapped_bytes(), chunk_size) << size;
        blocks.push_back(take(size));
        EXPECT_EQ(system.mapped_bytes(), 2 * chunk_size) << size;
        give_all(blocks, size);
        own.give_back();
    }
}

TEST_F(Heap, ABlockJustAbove256KiBHasAMappingOfItsOwn)
{
    const size_t size = 256 * kib + 1, block_size = size_classes::block_size(size_classes::class_of(size));
    EXPECT_EQ(block_size, sizeof(void *) >= 8 ? 512 * kib : 320 * kib);
    void *block = take(size);
    EXPECT_EQ(system.mapped_bytes(), block_size);
    give(block, size);
}

TEST_F(Heap, RunsComeFromTheChunkThatHasJustEnough)
{
    constexpr size_t size = 96 * kib, in_a_chunk = 20;
    std::vector<void *> blocks = take_many(2 * in_a_chunk, size);
    give(blocks[1], size);
    give(blocks[in_a_chunk + 1], size);
    give(blocks[in_a_chunk + 2], size);
    EXPECT_EQ(take(size), blocks[1]) << "the other chunk has a longer run";
}

TEST_F(Heap, RunsNeverOverlap)
{
    const unsigned seed = test::test_seed(std::random_device{}());
    std::printf("MOVA_TEST_SEED=%u\n", seed);
    std::mt19937 random(seed);
    std::map<char *, size_t> blocks;
    for (int step = 0; step < 20000; ++step) {
        if (random() % 2 == 0 || blocks.empty()) {
            const size_t size = 16 * kib + 1 + random() % (240 * kib);
            auto *block = static_cast<char *>(take(size));
            auto next = blocks.lower_bound(block);
            ASSERT_TRUE(next == blocks.end() || block + size <= next->first);
            ASSERT_TRUE(next == blocks.begin() || std::prev(next)->first + std::prev(next)->second <= block);
            blocks[block] = size;
        } else {
            auto any = blocks.lower_bound(blocks.begin()->first + random() % (64 * mib));
            if (any == blocks.end())
                any = blocks.begin();
            give(any->first, any->second);
            blocks.erase(any);
        }
    }
    for (const auto &[block, size] : blocks)
        give(block, size);
    own.give_back();
    EXPECT_EQ(system.mapped_bytes(), 0u);
}

/* ---- what is kept ---- */

TEST_F(Heap, UnusedChunksOfLessThan128MiBAreKept)
{
    give_all(take_many(100, mib / 8), mib / 8);
    const size_t few = system.mapped_bytes();
    EXPECT_EQ(few, 7 * chunk_size);
    give_all(take_many(2000, mib / 8), mib / 8);
    EXPECT_EQ(system.mapped_bytes(), 63 * chunk_size);
}

TEST_F(Heap, LargeBlocksOfLessThan64MiBTogetherAreKept)
{
    const std::vector<void *> blocks = take_many(100, mib);
    give_all(blocks, mib);
    EXPECT_EQ(system.mapped_bytes(), 63 * mib);
    EXPECT_EQ(take(mib), blocks.back());
    give(blocks.back(), mib);
    give(take(64 * mib), 64 * mib);
    EXPECT_EQ(system.mapped_bytes(), 64 * mib);
    give(take(65 * mib), 65 * mib);
    EXPECT_EQ(system.mapped_bytes(), 64 * mib);
}

TEST_F(Heap, NoMoreThan128LargeBlocksAreKept)
{
    const std::vector<void *> blocks = take_many(130, 300 * kib);
    const size_t mapped = system.mapped_bytes();
    give_all(blocks, 300 * kib);
    EXPECT_EQ(system.mapped_bytes(), std::min(mapped / 130 * spare_mappings::most_kept, 64 * mib - mapped / 130));
}

TEST_F(Heap, SomeLargeBlocksInTurnAskTheSystemForNothing)
{
    give_all(take_many(4, 300 * kib), 300 * kib);
    const size_t calls = system.unmap_calls, mapped = system.mapped_bytes();
    system.maps_until_refusal = 0;
    for (int turn = 0; turn < 10; ++turn)
        give_all(take_many(4, 300 * kib), 300 * kib);
    EXPECT_EQ(system.unmap_calls, calls);
    EXPECT_EQ(system.mapped_bytes(), mapped);
}

TEST_F(Heap, WhatLiesUnusedForASecondGoesBack)
{
    give_all(take_many(20, mib), mib);
    give_all(take_many(20, mib / 4), mib / 4);
    system.time += 1000;
    own.age();
    EXPECT_EQ(system.mapped_bytes(), 20 * mib + 3 * chunk_size);
    give(take(mib), mib);
    system.time += 1;
    own.age();
    EXPECT_EQ(system.mapped_bytes(), mib) << "what was in use of late is kept";
}

TEST_F(Heap, TrimmingGivesBackWhatLiesUnusedBetweenBlocks)
{
    std::vector<void *> blocks = take_many(7, 256 * kib), pages = take_many(20, 16 * kib);
    give_all({blocks.begin() + 1, blocks.end()}, 256 * kib);
    give_all({pages.begin() + 4, pages.end()}, 16 * kib);
    system.purged = 0;
    own.trim();
    EXPECT_EQ(system.purged, chunk_size - 36 * kib - 256 * kib - page_size);
    std::memset(blocks[0], 'b', 256 * kib);
    std::memset(pages[0], 'p', 16 * kib);
}

TEST_F(Heap, WhatLiesUnusedBetweenBlocksGoesBackOnceItsChunkLiesStill)
{
    std::vector<void *> blocks = take_many(7, 256 * kib);
    give_all({blocks.begin() + 1, blocks.end()}, 256 * kib);
    const auto purged_in_a_second = [&] {
        system.purged = 0;
        system.time += 1001;
        own.age();
        return system.purged;
    };
    purged_in_a_second();
    give(take(100 * kib), 100 * kib);
    EXPECT_EQ(purged_in_a_second(), 0u) << "the chunk is in use";
    EXPECT_EQ(purged_in_a_second(), chunk_size - 36 * kib - 256 * kib);
    EXPECT_EQ(purged_in_a_second(), 0u) << "it went back";
    std::memset(blocks[0], 'b', 256 * kib);
    void *again = take(100 * kib);
    EXPECT_EQ(purged_in_a_second() + purged_in_a_second(), 0u) << "what was purged and not used since";
    give(again, 100 * kib);
    EXPECT_EQ(purged_in_a_second(), 0u);
    EXPECT_EQ(purged_in_a_second(), chunk_size - 36 * kib - 256 * kib);
}

/* ---- a system that refuses ---- */

TEST_F(Heap, WhatTheSystemDoesNotTakeBackIsEmptiedAndUsedAgain)
{
    for (size_t size : {100 * mib, 70 * mib}) {
        system.refuses_unmap = true;
        system.purged = 0;
        void *block = take(size);
        const size_t held = own.held();
        give(block, size);
        EXPECT_EQ(taken(size), 0u);
        EXPECT_EQ(own.held(), held);
        EXPECT_EQ(system.purged, size_classes::block_size(size_classes::class_of(size)) - 4096);
        EXPECT_EQ(take(size), block);
        give(block, size);
        system.refuses_unmap = false;
        EXPECT_TRUE(own.give_back());
        EXPECT_EQ(own.held(), 0u);
    }
}

TEST_F(Heap, ChunksThatTheSystemDoesNotTakeBackServeAgain)
{
    give_all(take_many(100, mib / 8), mib / 8);
    system.refuses_unmap = true;
    EXPECT_FALSE(own.give_back());
    EXPECT_EQ(system.mapped_bytes(), 7 * chunk_size);
    system.maps_until_refusal = 0;
    system.refuses_for_good = true;
    give_all(take_many(100, mib / 8), mib / 8);
    system.refuses_unmap = false;
    EXPECT_TRUE(own.give_back());
    EXPECT_EQ(system.mapped_bytes(), 0u);
}

#if UINTPTR_MAX > UINT32_MAX /* elsewhere there is no address space for as many blocks */

/* Every other of many blocks released: the system would have to keep as many pieces apart. */
TEST_F(Heap, ManyScatteredLargeBlocksDoNotBecomeManyMappings)
{
    constexpr size_t count = 20000;
    std::vector<void *> blocks = take_many(count, 300 * kib);
    ASSERT_EQ(std::ranges::count(blocks, nullptr), 0);
    for (size_t i = 0; i < count; i += 2)
        give(blocks[i], 300 * kib);
    EXPECT_LE(system.unmap_calls, 8192u);
    EXPECT_EQ(taken(300 * kib), count / 2);
    EXPECT_EQ(own.held(), system.mapped_bytes());
    void *again = take(300 * kib);
    EXPECT_TRUE(std::ranges::count(blocks, again)) << "what lies on the shelf serves again";
    give(again, 300 * kib);
    for (size_t i = 1; i < count; i += 2)
        give(blocks[i], 300 * kib);
    own.give_back();
    EXPECT_EQ(system.mapped_bytes(), 0u);
}

TEST_F(Heap, RowsOfNeighboursGoBackFromTheShelfWithOneCall)
{
    constexpr size_t count = 12000;
    std::vector<void *> blocks = take_many(count, 300 * kib);
    std::ranges::shuffle(blocks, std::mt19937(4197));
    give_all(blocks, 300 * kib);
    own.give_back();
    EXPECT_EQ(system.mapped_bytes(), 0u);
    EXPECT_LT(system.unmap_calls, count * 9 / 10);
}

#endif

TEST_F(Heap, ALargeBlockThatTheSystemDoesNotMoveIsCopied)
{
    system.refuses_extend = true;
    for (const auto &[from, to] : {std::pair{mib, 8 * mib}, std::pair{8 * mib, mib}}) {
        auto *block = static_cast<char *>(take(from));
        std::memset(block, 'c', mib);
        system.refuses_unmap = to < from;
        auto *resized =
            static_cast<char *>(own.resize(block, size_classes::class_of(from), size_classes::class_of(to)));
        ASSERT_NE(resized, nullptr);
        EXPECT_NE(resized, block);
        EXPECT_EQ(std::count(resized, resized + mib, 'c'), static_cast<std::ptrdiff_t>(mib));
        EXPECT_EQ(taken(from), 0u);
        EXPECT_EQ(taken(to), 1u);
        EXPECT_EQ(own.held(), system.mapped_bytes());
        give(resized, to);
        system.refuses_unmap = false;
    }
}

TEST_F(Heap, ALargeBlockThatCanBeNeitherMovedNorCopiedIsAsItWas)
{
    auto *block = static_cast<char *>(take(mib));
    std::memset(block, 'k', mib);
    system.refuses_extend = system.refuses_for_good = true;
    system.maps_until_refusal = 0;
    EXPECT_EQ(own.resize(block, size_classes::class_of(mib), size_classes::class_of(8 * mib)), nullptr);
    EXPECT_EQ(std::count(block, block + mib, 'k'), static_cast<std::ptrdiff_t>(mib));
    EXPECT_EQ(taken(mib), 1u);
    EXPECT_EQ(own.held(), system.mapped_bytes());
}

/* ---- huge pages ---- */

TEST_F(Heap, OnlyMemoryThatSmallBlocksFillIsAskedForHugePages)
{
    take_many(100, 40 * kib);
    take_many(1000, 10 * kib);
    take_many(10, mib);
    EXPECT_EQ(system.huge, 0u);
    take_many(60000, 500);
    EXPECT_GT(system.huge, 16 * mib);
}

/* The system would join the pages that are left in it to huge ones, and fill what was purged. */
TEST_F(Heap, AChunkThatWasPurgedHasNoHugePagesUntilItIsUsedAnew)
{
    std::vector<void *> blocks = take_many(60000, 500);
    const size_t huge = system.huge;
    for (size_t i = 0; i < blocks.size(); ++i) {
        if (i % 1000 != 0)
            give(blocks[i], 500);
    }
    own.trim();
    EXPECT_EQ(system.huge, 0u);
    for (size_t i = 0; i < blocks.size(); i += 1000)
        give(blocks[i], 500);
    take_many(60000, 500);
    EXPECT_EQ(system.huge, huge);
}

TEST_F(Heap, ALargeBlockThatGrowsFromAFullOneIsAskedForHugePages)
{
    size_t size = mib;
    void *block = take(size);
    for (const auto &[grown, huge] : {std::pair{2 * mib, 0 * mib}, std::pair{4 * mib, 4 * mib},
                                      std::pair{64 * mib, 0 * mib}, std::pair{128 * mib, 128 * mib}}) {
        system.huge = 0;
        block = own.resize(block, size_classes::class_of(size), size_classes::class_of(grown));
        EXPECT_EQ(system.huge, huge) << size / mib << " to " << grown / mib;
        size = grown;
    }
}

TEST_F(Heap, TheNextBlockInThePlaceOfOneWithHugePagesHasThemToo)
{
    void *block = own.resize(take(2 * mib), size_classes::class_of(2 * mib), size_classes::class_of(4 * mib));
    give(block, 4 * mib);
    EXPECT_EQ(take(4 * mib), block);
    EXPECT_EQ(system.huge, 4 * mib) << "neither refused nor asked for again";
    give(block, 4 * mib);
}

/* ---- the caches of threads ---- */

class ThreadCache : public Heap {
protected:
    ~ThreadCache() override { caches.end(cache); }

    static constexpr unsigned index(size_t size) { return size_classes::class_of(size); }

    void *allocate(size_t size)
    {
        void *block = (*cache)[index(size)].pop();
        return block ? block : cache->take_anew(index(size));
    }

    void release(void *block, size_t size)
    {
        if (!(*cache)[index(size)].push(block))
            cache->give_beyond(index(size), block);
    }

    void turn(size_t count, size_t size)
    {
        std::vector<void *> blocks(count);
        std::ranges::generate(blocks, [&] { return allocate(size); });
        std::set<void *> distinct(blocks.begin(), blocks.end());
        ASSERT_EQ(distinct.size(), count);
        for (void *block : blocks)
            release(block, size);
    }

    uint32_t capacity(size_t size) { return (*cache)[index(size)].capacity(); }

    thread_caches caches{own};
    thread_cache *cache = caches.begin();
};

TEST_F(ThreadCache, BeginsWithoutAnyBlock)
{
    for (unsigned each = 0; each < thread_cache::classes; ++each)
        EXPECT_EQ((*cache)[each].count() + (*cache)[each].capacity(), 0u);
}

TEST_F(ThreadCache, ABinThatIsUsedOnceStaysSmall)
{
    turn(1, 48);
    EXPECT_LE(capacity(48), 3u);
}

TEST_F(ThreadCache, ABinGrowsTo64BlocksWhereManyAreAllocated)
{
    turn(500, 48);
    EXPECT_EQ(capacity(48), 64u);
}

TEST_F(ThreadCache, ABinGrowsFurtherWhereItIsEmptiedAndFilledAgainAndAgain)
{
    for (int i = 0; i < 40; ++i)
        turn(1000, 48);
    EXPECT_EQ(capacity(48), 1024u);
    for (int i = 0; i < 40; ++i)
        turn(1000, 1024);
    EXPECT_EQ(capacity(1024), 64u) << "64 KiB are the most";
    for (int i = 0; i < 3000; ++i)
        turn(2, 200 * kib);
    EXPECT_EQ(capacity(200 * kib), 1u);
}

TEST_F(ThreadCache, AThreadThatUsesManySizesALittleHoldsLittle)
{
    for (size_t count : {size_t{1}, size_t{10}}) {
        size_t bytes = 0;
        for (size_t size = 16; size <= 3200; size += 16)
            turn(count, size);
        for (unsigned each = 0; each < thread_cache::classes; ++each)
            bytes += (*cache)[each].count() * size_classes::block_size(each);
        EXPECT_GT(bytes, 0u);
        EXPECT_LE(bytes, 24 * kib) << count;
        caches.end(cache);
        cache = caches.begin();
    }
}

TEST_F(ThreadCache, ABinThatIsNotEmptiedForASecondGivesItsBlocksBack)
{
    turn(500, 48);
    system.time += 1001;
    cache->age();
    const uint32_t count = (*cache)[index(48)].count();
    ASSERT_GT(count, 0u);
    release(allocate(48), 48);
    system.time += 1000;
    cache->age();
    EXPECT_EQ((*cache)[index(48)].count(), count);
    system.time += 1;
    cache->age();
    EXPECT_EQ((*cache)[index(48)].count(), 0u);
    EXPECT_EQ(own.taken(index(48)), 0u);
    turn(500, 48);
}

/* The first look at the clock finds that the bins were emptied of late, the second that they were not. */
TEST_F(ThreadCache, WhatBinsTookOfTheRoomServesOthersOnceTheyAreNotUsed)
{
    const std::initializer_list<size_t> later = {600, 800, 1024};
    for (int phase = 0; phase < 3; ++phase) {
        for (int turns = 0; turns < 3; ++turns) {
            for (size_t size = 8; size <= 512; size += 8)
                turn(20, size);
        }
        EXPECT_GT(capacity(8), 3u) << phase;
        for (size_t size : later) {
            turn(1, size);
            EXPECT_EQ(capacity(size), 0u) << phase << ": the room is taken";
        }
        for (int look = 0; look < 2; ++look) {
            system.time += 1001;
            cache->age();
        }
        EXPECT_EQ(capacity(8), 0u) << phase;
        for (size_t size : later) {
            turn(2, size);
            EXPECT_EQ(capacity(size), 3u) << phase;
        }
        for (int look = 0; look < 2; ++look) {
            system.time += 1001;
            cache->age();
        }
    }
    caches.end(cache);
    own.give_back();
    EXPECT_EQ(system.mapped_bytes(), 0u) << "the records of the slots went back";
    cache = caches.begin();
}

TEST_F(ThreadCache, ABinThatIsEmptiedWithinASecondStaysFull)
{
    for (int second = 0; second < 10; ++second) {
        turn(2000, 48);
        const uint32_t count = (*cache)[index(48)].count();
        EXPECT_GT(count, 0u);
        system.time += 1001;
        cache->age();
        EXPECT_EQ((*cache)[index(48)].count(), count);
    }
}

TEST_F(ThreadCache, NowAndThenAReleaseLooksAtTheClock)
{
    void *block = allocate(mib / 4);
    give(take(mib), mib);
    cache->age();
    system.time += 1001;
    const size_t mapped = system.mapped_bytes();
    for (int calls = 0; calls < 64; ++calls) {
        EXPECT_EQ(system.mapped_bytes(), mapped);
        cache->tick();
    }
    EXPECT_EQ(system.mapped_bytes(), mapped - mib);
    release(block, mib / 4);
}

TEST_F(ThreadCache, AThreadGetsNoneWhereMemoryHasRunOut)
{
    own.give_back();
    std::vector<thread_cache *> others;
    system.maps_until_refusal = 0;
    system.refuses_for_good = true;
    while (thread_cache *other = caches.begin())
        others.push_back(other);
    EXPECT_LT(others.size(), chunk_size / sizeof(thread_cache));
    for (thread_cache *other : others)
        caches.end(other);
}

TEST_F(ThreadCache, EveryBlockGoesBackWhenTheCacheEnds)
{
    thread_cache *other = caches.begin();
    ASSERT_NE(other, nullptr);
    for (size_t size : {size_t{0}, size_t{48}, size_t{1000}, 2 * kib, 3 * kib, 40 * kib, 256 * kib})
        turn(300, size);
    caches.end(other);
    caches.end(cache);
    EXPECT_TRUE(own.give_back());
    EXPECT_EQ(system.mapped_bytes(), 0u);
    cache = caches.begin();
}

TEST_F(ThreadCache, WithoutRoomForItsSlotsABinStaysAsItIs)
{
    std::vector<void *> blocks(20);
    std::ranges::generate(blocks, [&] { return allocate(48); });
    own.give_back();
    system.maps_until_refusal = 0;
    system.refuses_for_good = true;
    for (int i = 0; i < 20; ++i)
        turn(400, 48);
    for (void *block : blocks)
        release(block, 48);
}

TEST_F(ThreadCache, BlocksOfManyThreadsNeverMeet)
{
    std::vector<std::thread> threads;
    for (unsigned number = 1; number <= 4; ++number) {
        threads.emplace_back([this, number] {
            thread_cache *mine = caches.begin();
            std::mt19937 random(number);
            std::vector<std::pair<unsigned char *, unsigned>> blocks;
            for (int step = 0; step < 20000; ++step) {
                const unsigned of = static_cast<unsigned>(random() % 6) * 27;
                if (blocks.size() < 100) {
                    void *block = (*mine)[of].pop();
                    blocks.emplace_back(static_cast<unsigned char *>(block ? block : mine->take_anew(of)), of);
                    *blocks.back().first = static_cast<unsigned char>(number);
                }
                std::swap(blocks[random() % blocks.size()], blocks.back());
                if (random() % 2 == 0) {
                    ASSERT_EQ(*blocks.back().first, number);
                    if (!(*mine)[blocks.back().second].push(blocks.back().first))
                        mine->give_beyond(blocks.back().second, blocks.back().first);
                    blocks.pop_back();
                    if (blocks.empty())
                        blocks.emplace_back(static_cast<unsigned char *>(mine->take_anew(0)), 0u),
                            *blocks.back().first = static_cast<unsigned char>(number);
                }
            }
            for (const auto &[block, of] : blocks)
                own.give(of, block);
            caches.end(mine);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (unsigned of = 0; of < 6 * 27; of += 27)
        EXPECT_EQ(own.taken(of), 0u) << of;
}

} // namespace
