/* SPDX-License-Identifier: MIT */
#include <mova/frame/host.h>
#include <mova/host/memory.h>
#include <tests/support/byte_source.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <map>
#include <random>
#include <thread>
#include <vector>

#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace {

time_t seconds_ahead = 0;

} // namespace

/* The system's clocks. On the one that the service looks at, a test may let time pass. */
extern "C" int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    const long result = syscall(SYS_clock_gettime, clock, time);
    if (clock == CLOCK_MONOTONIC_COARSE)
        time->tv_sec += seconds_ahead;
    return static_cast<int>(result);
}

namespace {

constexpr size_t kib = 1024, mib = 1024 * kib;

/* Allocates before main is entered and releases after it was left. */
struct before_and_after_main {
    before_and_after_main() : block(static_cast<char *>(MM_alloc_item(100))) { std::memset(block, 'b', 100); }
    ~before_and_after_main()
    {
        MM_dealloc_item(block, 100);
        MM_dealloc_item(MM_alloc_item(40), 40);
    }
    char *block;
};
const before_and_after_main early;

/* What holds of the service's own blocks. Under a sanitizer those of the library are the system's. */
class MemoryPages : public testing::Test {
protected:
    void SetUp() override
    {
        MM_dealloc_item(MM_alloc_item(1), 1);
        if (mova_memory_statistics().held_bytes == 0)
            GTEST_SKIP() << "under this sanitizer the blocks are the system's";
        mova_memory_trim();
    }
};

using MemoryStatistics = MemoryPages;

unsigned seed()
{
    unsigned chosen = mova::test::test_seed(std::random_device{}());
    std::printf("MOVA_TEST_SEED=%u\n", chosen);
    return chosen;
}

std::vector<void *> allocate(size_t count, size_t size)
{
    std::vector<void *> blocks(count);
    std::ranges::generate(blocks, [=] { return MM_alloc_item(size); });
    return blocks;
}

void release(const std::vector<void *> &blocks, size_t size)
{
    for (void *block : blocks)
        MM_dealloc_item(block, size);
}

uintptr_t address(const void *block)
{
    return reinterpret_cast<uintptr_t>(block);
}

TEST(Memory, ABlockIsThereBeforeMain)
{
    EXPECT_EQ(std::count(early.block, early.block + 100, 'b'), 100);
}

TEST(Memory, ABlockOfAMultipleOf16IsAlignedTo16AndAnyOtherTo8)
{
    for (size_t size = 0; size < 5000; ++size) {
        std::vector<void *> blocks = allocate(3, size);
        for (void *block : blocks)
            ASSERT_EQ(address(block) % (size % 16 == 0 ? 16 : 8), 0u) << size;
        release(blocks, size);
    }
    for (size_t size : {64 * kib, 100 * kib, 256 * kib, 256 * kib + 16, 3 * mib}) {
        void *block = MM_alloc_item(size);
        EXPECT_EQ(address(block) % 16, 0u) << size;
        MM_dealloc_item(block, size);
    }
}

TEST(Memory, BlocksOfSizeZeroAreBlocksOfTheirOwn)
{
    std::vector<void *> blocks = allocate(1000, 0);
    EXPECT_EQ(std::ranges::count(blocks, nullptr), 0);
    std::ranges::sort(blocks);
    EXPECT_EQ(std::ranges::adjacent_find(blocks), blocks.end());
    release(blocks, 0);
}

TEST(Memory, ANullThatIsReleasedIsNeverHandedOut)
{
    for (size_t size : {size_t{0}, size_t{1}, size_t{48}, kib, 5 * kib, 100 * kib, mib, 100 * mib}) {
        /* As many live blocks as there are releases, so that each release would be seen to count. */
        const std::vector<void *> held = allocate(size <= 5 * kib ? 100 : 1, size);
        const size_t live = mova_memory_statistics_of_size(size).live_blocks;
        for (int i = 0; i < 100; ++i)
            MM_dealloc_item(nullptr, size);
        EXPECT_EQ(mova_memory_statistics_of_size(size).live_blocks, live) << size;
        std::vector<void *> blocks = allocate(10, size);
        EXPECT_EQ(std::ranges::count(blocks, nullptr), 0) << size;
        release(blocks, size);
        release(held, size);
    }
}

TEST(Memory, AZeroedBlockIsZeroThoughItsMemoryWasUsed)
{
    for (size_t size : {size_t{0}, size_t{1}, size_t{48}, kib, 5 * kib, 100 * kib, 300 * kib, 70 * mib}) {
        for (int turn = 0; turn < 3; ++turn) {
            auto *block = static_cast<char *>(mova_memory_zeroed(size));
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(std::count(block, block + size, '\0'), static_cast<std::ptrdiff_t>(size)) << turn;
            std::memset(block, 'z', size);
            MM_dealloc_item(block, size);
        }
    }
}

TEST(Memory, AnAlignedBlockBeginsAtAMultipleOfItsAlignment)
{
    for (size_t alignment = 16; alignment <= 8 * mib; alignment *= 2) {
        for (size_t size : {size_t{0}, size_t{1}, size_t{100}, kib, 3000 * size_t{1}, 20 * kib, 100 * kib, mib}) {
            std::vector<char *> blocks(5);
            for (char *&block : blocks) {
                block = static_cast<char *>(mova_memory_aligned(alignment, size));
                ASSERT_NE(block, nullptr);
                ASSERT_EQ(address(block) % alignment, 0u) << size << " at " << alignment;
                std::memset(block, 'a', size);
            }
            std::ranges::sort(blocks);
            for (size_t i = 1; i < blocks.size(); ++i)
                ASSERT_LE(blocks[i - 1] + size, blocks[i]);
            for (char *block : blocks)
                mova_memory_release_aligned(block, alignment, size);
        }
    }
    mova_memory_release_aligned(nullptr, 64, 100);
}

TEST_F(MemoryPages, AnAlignedBlockOfAMultipleOfItsAlignmentOccupiesNoMore)
{
    const size_t live = mova_memory_statistics_of_size(256).live_blocks;
    void *block = mova_memory_aligned(64, 256);
    EXPECT_EQ(mova_memory_statistics_of_size(256).live_blocks, live + 1);
    mova_memory_release_aligned(block, 64, 256);
    EXPECT_EQ(mova_memory_statistics_of_size(256).live_blocks, live);
}

/* Live blocks, each filled with a byte of its own. */
class model {
public:
    explicit model(unsigned seed) : random_(seed) {}

    size_t size_below(size_t limit) { return std::uniform_int_distribution<size_t>(0, limit)(random_); }

    /* As many small sizes as large ones, up to 1 MiB. */
    size_t any_size() { return size_below(size_t{1} << size_below(20)); }

    void allocate()
    {
        size_t size = any_size();
        add(MM_alloc_item(size), size);
    }

    void reallocate()
    {
        auto old = any();
        record was = old->second;
        char *block = old->first;
        blocks_.erase(old);
        size_t size = size_below(3) == 0 ? any_size() : was.size + size_below(64);
        char *moved = static_cast<char *>(MM_realloc_item(block, was.size, size));
        verify(moved, {std::min(size, was.size), was.fill});
        add(moved, size);
    }

    void release()
    {
        auto old = any();
        verify(old->first, old->second);
        MM_dealloc_item(old->first, old->second.size);
        blocks_.erase(old);
    }

    size_t live() const { return blocks_.size(); }

private:
    struct record {
        size_t size;
        unsigned char fill;
    };

    std::map<char *, record>::iterator any()
    {
        auto found = blocks_.lower_bound(blocks_.begin()->first + size_below(span()));
        return found == blocks_.end() ? std::prev(found) : found;
    }

    size_t span() const { return static_cast<size_t>(blocks_.rbegin()->first - blocks_.begin()->first); }

    void add(void *block, size_t size)
    {
        char *start = static_cast<char *>(block);
        ASSERT_NE(start, nullptr);
        ASSERT_EQ(address(start) % (size % 16 == 0 ? 16 : 8), 0u);
        auto next = blocks_.lower_bound(start);
        if (next != blocks_.end()) {
            ASSERT_LE(start + std::max(size, size_t{1}), next->first);
        }
        if (next != blocks_.begin()) {
            ASSERT_LE(std::prev(next)->first + std::max(std::prev(next)->second.size, size_t{1}), start);
        }
        record added = {size, static_cast<unsigned char>(size_below(255))};
        std::memset(start, added.fill, size);
        blocks_.emplace(start, added);
    }

    /* All bytes are the fill if the first is and each equals the next. */
    static void verify(const char *block, const record &expected)
    {
        if (expected.size == 0)
            return;
        ASSERT_EQ(static_cast<unsigned char>(*block), expected.fill);
        ASSERT_EQ(std::memcmp(block, block + 1, expected.size - 1), 0) << expected.size;
    }

    std::mt19937 random_;
    std::map<char *, record> blocks_;
};

TEST(Memory, BlocksNeverOverlapAndKeepTheirBytes)
{
    model blocks(seed());
    for (int step = 0; step < 30000 && !testing::Test::HasFatalFailure(); ++step) {
        size_t choice = blocks.size_below(9);
        if (blocks.live() < 2 || (choice < 4 && blocks.live() < 600))
            blocks.allocate();
        else if (choice < 6)
            blocks.reallocate();
        else
            blocks.release();
    }
    while (blocks.live() > 0 && !testing::Test::HasFatalFailure())
        blocks.release();
}

/* Keeps every n-th of many blocks, and releases the others in random order or in a row. */
void refill_the_gaps(size_t every, bool at_random)
{
    std::vector<void *> kept, others;
    for (void *block : allocate(20000, 40))
        ((kept.size() + others.size()) % every == 0 ? kept : others).push_back(block);
    if (at_random)
        std::ranges::shuffle(others, std::mt19937(4197));
    release(others, 40);
    for (void *block : allocate(20000, 40))
        kept.push_back(block);
    std::ranges::sort(kept);
    EXPECT_EQ(std::ranges::adjacent_find(kept), kept.end()) << every;
    release(kept, 40);
}

TEST(Memory, BlocksThatFillTheGapsBetweenOthersAreDistinct)
{
    for (size_t every : std::initializer_list<size_t>{2, 3, 63, 64, 65, 1000}) {
        refill_the_gaps(every, true);
        refill_the_gaps(every, false);
    }
}

TEST_F(MemoryPages, ABlockThatGrowsWithinItsSizeClassStaysWhereItIs)
{
    for (size_t size : {size_t{1}, size_t{41}, size_t{1025}, 5 * kib, 50 * kib, 100 * kib, 257 * kib, 5 * mib}) {
        size_t room = mova_memory_statistics_of_size(size).largest_size;
        ASSERT_GE(room, size);
        void *block = MM_alloc_item(size);
        EXPECT_EQ(MM_realloc_item(block, size, room), block) << size;
        EXPECT_EQ(MM_realloc_item(block, room, size), block) << size;
        MM_dealloc_item(block, size);
    }
}

TEST_F(MemoryPages, ABlockThatGrowsBySmallStepsMovesOnceASizeClassAtMost)
{
    size_t size = 2 * kib, moves = 0, classes = 1;
    auto *block = static_cast<unsigned char *>(MM_alloc_item(size));
    std::fill_n(block, size, '\1');
    for (size_t step = kib; size < 16 * mib; size += step) {
        auto *grown = static_cast<unsigned char *>(MM_realloc_item(block, size, size + step));
        moves += grown != block;
        classes += mova_memory_statistics_of_size(size).largest_size < size + step;
        block = grown;
        block[size] = static_cast<unsigned char>(size / kib);
    }
    EXPECT_LT(moves, classes);
    EXPECT_LE(classes, 64u);
    for (size_t at = 2 * kib; at < size; at += kib)
        ASSERT_EQ(block[at], static_cast<unsigned char>(at / kib));
    EXPECT_EQ(std::count(block, block + 2 * kib, '\1'), static_cast<std::ptrdiff_t>(2 * kib));
    MM_dealloc_item(block, size);
}

TEST_F(MemoryPages, ALargeBlockThatShrinksKeepsItsBytesAndGivesRoomBack)
{
    char *block = static_cast<char *>(MM_alloc_item(32 * mib));
    std::memset(block, 's', mib);
    size_t held = mova_memory_statistics().held_bytes;
    block = static_cast<char *>(MM_realloc_item(block, 32 * mib, 2 * mib));
    EXPECT_EQ(held - mova_memory_statistics().held_bytes, 30 * mib);
    block = static_cast<char *>(MM_realloc_item(block, 2 * mib, 3000));
    EXPECT_EQ(std::count(block, block + 3000, 's'), 3000);
    MM_dealloc_item(block, 3000);
}

TEST_F(MemoryPages, ALargeBlockThatMovedAsItGrewLeavesNothingBehind)
{
    void *block = MM_alloc_item(mib);
    size_t held = mova_memory_statistics().held_bytes, size = mib, moves = 0;
    for (; size < 64 * mib; size *= 2) {
        void *neighbour = MM_alloc_item(mib);
        void *grown = MM_realloc_item(block, size, 2 * size);
        moves += grown != block;
        block = grown;
        MM_dealloc_item(neighbour, mib);
    }
    EXPECT_GT(moves, 0u);
    MM_dealloc_item(MM_alloc_item(mib), mib);
    EXPECT_LE(mova_memory_statistics().held_bytes - held, 64 * mib);
    MM_dealloc_item(block, size);
}

TEST_F(MemoryPages, AReleasedLargeBlockIsKeptForTheNextOfItsClass)
{
    constexpr size_t size = 30 * mib;
    void *block = MM_alloc_item(size);
    size_t held = mova_memory_statistics().held_bytes;
    MM_dealloc_item(block, size);
    EXPECT_EQ(mova_memory_statistics().held_bytes, held);
    EXPECT_EQ(MM_alloc_item(size), block);
    EXPECT_EQ(mova_memory_statistics().held_bytes, held);
    void *second = MM_alloc_item(size);
    MM_dealloc_item(block, size);
    MM_dealloc_item(second, size);
    EXPECT_EQ(mova_memory_statistics().held_bytes, held);
    EXPECT_EQ(MM_alloc_item(size), second);
    MM_dealloc_item(second, size);
}

TEST_F(MemoryPages, AVeryLargeReleasedBlockGoesBackToTheSystem)
{
    void *block = MM_alloc_item(200 * mib);
    size_t held = mova_memory_statistics().held_bytes;
    MM_dealloc_item(block, 200 * mib);
    EXPECT_GE(held - mova_memory_statistics().held_bytes, 200 * mib);
}

TEST_F(MemoryPages, ABlockOf600MiBFitsIntoASmallAddressSpace)
{
    void *block = MM_alloc_item(600 * mib);
    ASSERT_NE(block, nullptr);
    if (sizeof(void *) == 4) {
        EXPECT_LE(mova_memory_statistics_of_size(600 * mib).block_size, 640 * mib);
    }
    MM_dealloc_item(block, 600 * mib);
}

TEST_F(MemoryPages, TrimmingGivesBackWhatWasReleased)
{
    std::vector<void *> kept = allocate(10, 100);
    const size_t held = mova_memory_statistics().held_bytes;
    for (size_t size : {size_t{100}, 5 * kib, 100 * kib, 5 * mib})
        release(allocate(20 * mib / size, size), size);
    EXPECT_GT(mova_memory_statistics().held_bytes, held + 16 * mib);
    mova_memory_trim();
    EXPECT_LE(mova_memory_statistics().held_bytes, held + 2 * mib);
    EXPECT_EQ(mova_memory_statistics().cached_bytes, 0u);
    release(kept, 100);
}

/* The releases that count are those that find no room, and those of more than 1 KiB. */
TEST_F(MemoryPages, WhatWasReleasedASecondAgoGoesBackWhenTheServiceIsCalled)
{
    const auto call_with_small_blocks = [] { release(allocate(60000, 72), 72); };
    const auto call_with_a_page_block = [] {
        for (int i = 0; i < 64; ++i)
            MM_dealloc_item(MM_alloc_item(2 * kib), 2 * kib);
    };
    const auto call_with_a_large_block = [] {
        for (int i = 0; i < 64; ++i)
            MM_dealloc_item(MM_alloc_item(mib), mib);
    };
    for (const auto &call :
         std::initializer_list<void (*)()>{call_with_small_blocks, call_with_a_page_block, call_with_a_large_block}) {
        call();
        const size_t held = mova_memory_statistics().held_bytes;
        release(allocate(100, 200 * kib), 200 * kib);
        release(allocate(10, 3 * mib), 3 * mib);
        EXPECT_GE(mova_memory_statistics().held_bytes, held + 40 * mib);
        seconds_ahead += 2;
        call();
        EXPECT_LE(mova_memory_statistics().held_bytes, held + 2 * mib);
    }
}

TEST_F(MemoryPages, ReleasesOfLargeBlocksAloneLetTimePass)
{
    std::thread([] {
        const size_t held = mova_memory_statistics().held_bytes;
        release(allocate(10, 3 * mib), 3 * mib);
        EXPECT_GE(mova_memory_statistics().held_bytes, held + 30 * mib);
        seconds_ahead += 2;
        for (int i = 0; i < 64; ++i)
            MM_dealloc_item(MM_alloc_item(mib), mib);
        EXPECT_LE(mova_memory_statistics().held_bytes, held + 2 * mib);
    }).join();
}

TEST_F(MemoryPages, AThreadGivesBackWhatItHoldsReadyAndDoesNotUse)
{
    const auto look_at_the_clock = [] {
        for (int i = 0; i < 64; ++i)
            MM_dealloc_item(MM_alloc_item(2 * kib), 2 * kib);
    };
    look_at_the_clock();
    release(allocate(500, 360), 360);
    const size_t cached = mova_memory_statistics_of_size(360).cached_blocks;
    EXPECT_GT(cached, 0u);
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(mova_memory_statistics_of_size(360).cached_blocks, cached) << "the thread ran out of them of late";
        seconds_ahead += 2;
        look_at_the_clock();
    }
    EXPECT_EQ(mova_memory_statistics_of_size(360).cached_blocks, 0u);
}

TEST_F(MemoryPages, InAnAgedHeapBlocksAllocatedInARowLieSideBySide)
{
    constexpr size_t count = 50000, size = 72;
    std::vector<void *> blocks = allocate(count, size);
    std::ranges::shuffle(blocks, std::mt19937(seed()));
    release(blocks, size);
    blocks = allocate(count, size);
    size_t neighbours = 0;
    for (size_t i = 1; i < count; ++i)
        neighbours += address(blocks[i]) - address(blocks[i - 1]) == size;
    EXPECT_GT(neighbours, count * 9 / 10);
    release(blocks, size);
}

TEST_F(MemoryPages, EmptyPagesServeOtherSizes)
{
    std::vector<void *> blocks = allocate(100000, 88);
    release(blocks, 88);
    size_t held = mova_memory_statistics().held_bytes;
    blocks = allocate(50000, 120);
    std::vector<void *> runs = allocate(10, 200 * kib);
    EXPECT_EQ(mova_memory_statistics().held_bytes, held);
    release(runs, 200 * kib);
    release(blocks, 120);
}

TEST_F(MemoryPages, UnusedChunksBeyondAReserveGoBackToTheSystem)
{
    std::vector<void *> blocks = allocate(800, 256 * kib);
    size_t held = mova_memory_statistics().held_bytes;
    EXPECT_GE(held, 800 * 256 * kib);
    release(blocks, 256 * kib);
    EXPECT_GE(mova_memory_statistics().held_bytes, 120 * mib);
    EXPECT_GE(held - mova_memory_statistics().held_bytes, 800 * 256 * kib - 128 * mib);
}

TEST_F(MemoryStatistics, TheClassesCoverAllSizesWithoutAGap)
{
    size_t size = 0, before = 0;
    while (size < PTRDIFF_MAX) {
        mova_memory_class served = mova_memory_statistics_of_size(size);
        ASSERT_GE(served.largest_size, size);
        ASSERT_GE(served.block_size, served.largest_size);
        ASSERT_TRUE(served.largest_size >= PTRDIFF_MAX ||
                    mova_memory_statistics_of_size(served.largest_size).largest_size == served.largest_size);
        if (size > kib && size < 256 * kib) {
            ASSERT_LE(served.block_size, before + before / 4);
        }
        before = served.block_size;
        size = served.largest_size + 1;
    }
    EXPECT_EQ(mova_memory_statistics_of_size(size_t{PTRDIFF_MAX} + 2).block_size, 0u);
}

/* What a class gains while it lives. */
struct growth {
    explicit growth(size_t of) : size(of), live_before(mova_memory_statistics_of_size(of).live_blocks) {}
    size_t live() const { return mova_memory_statistics_of_size(size).live_blocks - live_before; }
    size_t cached() const { return mova_memory_statistics_of_size(size).cached_blocks; }
    size_t size, live_before;
};

TEST_F(MemoryStatistics, LiveBlocksAreThoseThatTheProgramHolds)
{
    growth small(200), middle(5000), large(mib);
    std::vector<void *> smalls = allocate(1000, 200), middles = allocate(10, 5000), larges = allocate(3, mib);
    EXPECT_EQ(small.live(), 1000u);
    EXPECT_EQ(middle.live(), 10u);
    EXPECT_EQ(large.live(), 3u);
    release(smalls, 200);
    release(middles, 5000);
    release(larges, mib);
    EXPECT_EQ(small.live(), 0u);
    EXPECT_EQ(middle.live(), 0u);
    EXPECT_EQ(large.live(), 0u);
}

TEST_F(MemoryStatistics, AReallocatedBlockCountsInItsNewClass)
{
    growth from(mib), to(8 * mib);
    void *block = MM_realloc_item(MM_alloc_item(mib), mib, 8 * mib);
    EXPECT_EQ(from.live(), 0u);
    EXPECT_EQ(to.live(), 1u);
    MM_dealloc_item(block, 8 * mib);
}

TEST_F(MemoryStatistics, AThreadHoldsUpTo64FreeBlocksOfAClass)
{
    growth of(344);
    std::vector<void *> blocks = allocate(500, 344);
    release(blocks, 344);
    EXPECT_GT(of.cached(), 0u);
    EXPECT_LE(of.cached(), 64u);
}

TEST_F(MemoryStatistics, TheTotalsAreTheSumsOfTheClasses)
{
    std::vector<void *> smalls = allocate(777, 24), larges = allocate(2, 300 * kib);
    mova_memory_totals totals = mova_memory_statistics();
    size_t blocks = 0, bytes = 0, cached = 0;
    for (size_t size = 0; size < PTRDIFF_MAX; size = mova_memory_statistics_of_size(size).largest_size + 1) {
        mova_memory_class of = mova_memory_statistics_of_size(size);
        blocks += of.live_blocks;
        bytes += of.live_blocks * of.block_size;
        cached += of.cached_blocks * of.block_size;
    }
    EXPECT_EQ(totals.live_blocks, blocks);
    EXPECT_EQ(totals.live_bytes, bytes);
    EXPECT_EQ(totals.cached_bytes, cached);
    EXPECT_GE(totals.held_bytes, totals.live_bytes + totals.cached_bytes);
    release(smalls, 24);
    release(larges, 300 * kib);
}

TEST_F(MemoryStatistics, ThePeakIsTheMostThatEverWasInUse)
{
    std::vector<void *> blocks = allocate(1, 100 * mib);
    size_t peak = mova_memory_statistics().peak_bytes;
    EXPECT_GE(peak, mova_memory_statistics().live_bytes);
    while (mova_memory_statistics().peak_bytes == peak && blocks.size() < 16)
        blocks.push_back(MM_alloc_item(100 * mib));
    size_t higher = mova_memory_statistics().peak_bytes, live = mova_memory_statistics().live_bytes;
    EXPECT_GT(higher, peak);
    EXPECT_GE(higher, live);
    EXPECT_LT(higher, live + 20 * mib);
    release(blocks, 100 * mib);
    EXPECT_EQ(mova_memory_statistics().peak_bytes, higher);
}

} // namespace
