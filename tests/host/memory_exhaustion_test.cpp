/* SPDX-License-Identifier: MIT */
/* Memory that runs out. Every test of this program runs against a service of errors of its own, which throws or
   returns as the test wants it. */
#include <mova/frame/host.h>
#include <mova/host/memory.h>

#include <algorithm>
#include <cstdio>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <pthread.h>
#include <setjmp.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <tests/host/child_process.h>

namespace {

constexpr size_t mib = 1024 * 1024;

struct report {
    std::string module;
    int32_t line, code;
};

bool throws = false;
jmp_buf *jumps_to = nullptr;
int reports = 0;
report last = {};

/* What the service answers to `work`: the line that it reported, or 0. */
int32_t line_of(const std::function<void()> &work)
{
    last = {};
    work();
    return last.code == MOVA_ALLOCATION_FAILED && last.module == "memory" ? last.line : 0;
}

} // namespace

void EX_raise_exception_line(const char *module, int32_t line, int32_t code)
{
    ++reports;
    last = {module, line, code};
    if (jumps_to)
        longjmp(*jumps_to, 1);
    if (throws)
        throw last;
}

namespace {

/* A 32-bit process may have room for one block of the largest size, but not for two. */
class MemoryExhaustion : public testing::Test {
protected:
    MemoryExhaustion() : largest(MM_alloc_item(PTRDIFF_MAX)) {}

    ~MemoryExhaustion() override
    {
        throws = false;
        if (largest)
            MM_dealloc_item(largest, PTRDIFF_MAX);
    }

    void *largest;
};

TEST_F(MemoryExhaustion, ASizeBeyondAllAddressesIsReported)
{
    for (size_t size : {SIZE_MAX, SIZE_MAX - 6, SIZE_MAX - 4095, size_t{PTRDIFF_MAX} + 1}) {
        void *block = &reports;
        EXPECT_EQ(line_of([&] { block = MM_alloc_item(size); }), MOVA_MEMORY_SIZE_TOO_LARGE);
        EXPECT_EQ(block, nullptr);
        block = &reports;
        EXPECT_EQ(line_of([&] { block = mova_memory_aligned(64, size - 64); }), MOVA_MEMORY_SIZE_TOO_LARGE);
        EXPECT_EQ(block, nullptr);
    }
}

TEST_F(MemoryExhaustion, ALargeBlockWithoutAMappingIsReported)
{
    void *block = &reports;
    EXPECT_EQ(line_of([&] { block = MM_alloc_item(PTRDIFF_MAX); }), MOVA_MEMORY_NO_MAPPING);
    EXPECT_EQ(block, nullptr);
}

TEST_F(MemoryExhaustion, AnErrorMayBeThrownOutOfTheService)
{
    throws = true;
    EXPECT_THROW(std::ignore = MM_alloc_item(PTRDIFF_MAX), report);
    EXPECT_THROW(std::ignore = MM_alloc_item(SIZE_MAX), report);
    void *block = MM_alloc_item(mib);
    EXPECT_THROW(std::ignore = MM_realloc_item(block, mib, PTRDIFF_MAX), report);
    MM_dealloc_item(block, mib);
}

/* A page's alignment comes by itself; of more, the block lies within one that is larger by the alignment. */
TEST_F(MemoryExhaustion, AnAlignedBlockWithoutRoomIsReportedAndNull)
{
    void *block = &reports;
    for (size_t alignment : {size_t{64}, mib}) {
        EXPECT_EQ(line_of([&] { block = mova_memory_aligned(alignment, PTRDIFF_MAX - 2 * mib); }),
                  MOVA_MEMORY_NO_MAPPING);
        EXPECT_EQ(block, nullptr);
    }
}

/* The service holds no lock while it reports, and has taken nothing. */
TEST_F(MemoryExhaustion, AnErrorMayBeJumpedOutOfTheService)
{
    static jmp_buf here;
    const mova_memory_totals before = mova_memory_statistics();
    jumps_to = &here;
    if (setjmp(here) == 0)
        std::ignore = MM_alloc_item(SIZE_MAX);
    if (setjmp(here) == 0)
        std::ignore = mova_memory_zeroed(SIZE_MAX);
    if (setjmp(here) == 0)
        std::ignore = mova_memory_aligned(64, SIZE_MAX);
    jumps_to = nullptr;
    EXPECT_EQ(mova_memory_statistics().live_blocks, before.live_blocks);
    MM_dealloc_item(MM_alloc_item(mib), mib);
}

TEST_F(MemoryExhaustion, ABlockThatCannotGrowIsAsItWas)
{
    for (size_t size : {size_t{100}, size_t{5000}, mib}) {
        auto *block = static_cast<char *>(MM_alloc_item(size));
        std::memset(block, 'k', size);
        void *grown = block;
        EXPECT_EQ(line_of([&] { grown = MM_realloc_item(block, size, SIZE_MAX); }), MOVA_MEMORY_SIZE_TOO_LARGE);
        EXPECT_EQ(grown, nullptr);
        int32_t line = size == mib ? MOVA_MEMORY_NO_ROOM_TO_GROW : MOVA_MEMORY_NO_MAPPING;
        EXPECT_EQ(line_of([&] { grown = MM_realloc_item(block, size, PTRDIFF_MAX); }), line);
        EXPECT_EQ(grown, nullptr);
        EXPECT_EQ(std::count(block, block + size, 'k'), static_cast<std::ptrdiff_t>(size));
        MM_dealloc_item(block, size);
    }
}

TEST_F(MemoryExhaustion, AFailureLeavesTheFiguresAlone)
{
    mova_memory_totals before = mova_memory_statistics();
    std::ignore = MM_alloc_item(PTRDIFF_MAX);
    std::ignore = MM_alloc_item(SIZE_MAX);
    mova_memory_totals after = mova_memory_statistics();
    EXPECT_EQ(after.live_blocks, before.live_blocks);
    EXPECT_EQ(after.live_bytes, before.live_bytes);
    EXPECT_LE(after.held_bytes, before.held_bytes);
}

/* Destructors of what belongs to a thread are called round after round; in the second one its free blocks are the others'. */
TEST_F(MemoryExhaustion, AThreadWhoseFreeBlocksWentBackIsToldToo)
{
    static pthread_key_t key;
    static int rounds;
    static int32_t line;
    rounds = line = 0;
    const auto destructor = [](void *value) {
        if (++rounds < 2)
            pthread_setspecific(key, value);
        else
            line = line_of([] { EXPECT_EQ(MM_alloc_item(PTRDIFF_MAX), nullptr); });
    };
    ASSERT_EQ(pthread_key_create(&key, destructor), 0);
    std::thread([] {
        MM_dealloc_item(MM_alloc_item(48), 48);
        pthread_setspecific(key, &rounds);
    }).join();
    EXPECT_EQ(line, MOVA_MEMORY_NO_MAPPING);
    pthread_key_delete(key);
}

/* ---- with little address space ---- */

using MemoryLimit = MemoryExhaustion;

enum : int { as_expected = 0, not_limited = 77 };

size_t address_space()
{
    std::FILE *file = std::fopen("/proc/self/statm", "r");
    unsigned long pages = 0;
    int read = file ? std::fscanf(file, "%lu", &pages) : 0;
    if (file)
        std::fclose(file);
    return read == 1 ? pages * static_cast<size_t>(sysconf(_SC_PAGESIZE)) : 0;
}

/* Leaves the process `room` bytes of address space. Returns whether the system keeps it to that: an emulator may not. */
bool limit_address_space(size_t room)
{
    struct rlimit limit = {};
    limit.rlim_cur = limit.rlim_max = address_space() + room;
    if (setrlimit(RLIMIT_AS, &limit) != 0)
        return false;
    void *beyond = mmap(nullptr, 2 * room, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (beyond != MAP_FAILED)
        munmap(beyond, 2 * room);
    return beyond == MAP_FAILED;
}

/* Runs `work` in a child process. It returns the number of what went wrong, or 0. */
void in_a_child(const std::function<int()> &work)
{
    const int status = mova::test::in_child(work);
    if (status == not_limited)
        GTEST_SKIP() << "the address space cannot be limited here";
    EXPECT_EQ(status, as_expected);
}

/* The same, with `room` bytes of address space to spare. */
void with_little_room(size_t room, const std::function<int()> &work)
{
    in_a_child([&] { return limit_address_space(room) ? work() : not_limited; });
}

/* Allocates until the service reports an error, and returns the blocks, each of which holds the one before. */
void *allocate_all(size_t size)
{
    void *last_block = nullptr;
    for (int before = reports; reports == before;) {
        void *block = MM_alloc_item(size);
        if (!block)
            break;
        *static_cast<void **>(block) = last_block;
        last_block = block;
    }
    return last_block;
}

size_t release_all(void *block, size_t size)
{
    size_t count = 0;
    for (; block; ++count) {
        void *next = *static_cast<void **>(block);
        MM_dealloc_item(block, size);
        block = next;
    }
    return count;
}

TEST_F(MemoryLimit, OrdinaryBlocksThatRunOutAreReportedAndTheServiceGoesOn)
{
    for (size_t size : {size_t{48}, size_t{5000}, size_t{200000}}) {
        with_little_room(64 * mib, [=] {
            void *blocks = allocate_all(size);
            if (last.line != MOVA_MEMORY_NO_ROOM || last.code != MOVA_ALLOCATION_FAILED)
                return 1;
            size_t count = release_all(blocks, size);
            if (count * size < 32 * mib)
                return 2;
            return release_all(allocate_all(size), size) < count * 9 / 10 ? 3 : 0;
        });
    }
}

TEST_F(MemoryLimit, LargeBlocksThatRunOutAreReportedAndTheServiceGoesOn)
{
    with_little_room(64 * mib, [] {
        void *blocks = allocate_all(2 * mib);
        if (last.line != MOVA_MEMORY_NO_MAPPING)
            return 1;
        return release_all(blocks, 2 * mib) >= 16 && MM_alloc_item(mib) ? 0 : 2;
    });
}

TEST_F(MemoryLimit, ALargeBlockThatRunsOutOfRoomToGrowIsAsItWas)
{
    with_little_room(40 * mib, [] {
        auto *block = static_cast<char *>(MM_alloc_item(8 * mib));
        std::memset(block, 'g', 8 * mib);
        if (MM_realloc_item(block, 8 * mib, 100 * mib) || last.line != MOVA_MEMORY_NO_ROOM_TO_GROW)
            return 1;
        if (std::count(block, block + 8 * mib, 'g') != static_cast<std::ptrdiff_t>(8 * mib))
            return 2;
        MM_dealloc_item(block, 8 * mib);
        return MM_alloc_item(100) ? 0 : 3;
    });
}

TEST_F(MemoryLimit, KeptBlocksGoBackBeforeMemoryRunsOut)
{
    with_little_room(40 * mib, [] {
        reports = 0;
        MM_dealloc_item(MM_alloc_item(32 * mib), 32 * mib);
        if (!MM_alloc_item(16 * mib) || reports > 0)
            return 1;
        MM_dealloc_item(MM_alloc_item(8 * mib), 8 * mib);
        return release_all(allocate_all(100000), 100000) >= 100 ? 0 : 2;
    });
}

TEST_F(MemoryLimit, WhatSmallBlocksHadGoesBackBeforeALargeOneIsRefused)
{
    with_little_room(140 * mib, [] {
        std::vector<void *> blocks(100000);
        for (size_t size : {size_t{1024}, size_t{1000}}) {
            std::ranges::generate(blocks, [=] { return MM_alloc_item(size); });
            for (void *block : blocks)
                MM_dealloc_item(block, size);
        }
        return MM_alloc_item(100 * mib) ? 0 : 1;
    });
}

/* Gives this thread room to hold free blocks ready. */
void move_many_blocks()
{
    std::vector<void *> blocks(4096);
    for (int turn = 0; turn < 100; ++turn) {
        std::ranges::generate(blocks, [] { return MM_alloc_item(48); });
        for (void *block : blocks)
            MM_dealloc_item(block, 48);
    }
}

bool is_held_ready(size_t size)
{
    return mova_memory_statistics_of_size(size).cached_blocks == 1;
}

/* The chunk that the block lies in stays in use, so the system is given nothing back. */
TEST_F(MemoryLimit, WhatAThreadHoldsReadyServesBeforeAnotherSizeIsRefused)
{
    move_many_blocks();
    with_little_room(16 * mib, [] {
        void *blocks = allocate_all(100000);
        allocate_all(40000);
        MM_dealloc_item(blocks, 100000);
        if (!is_held_ready(100000))
            return 1;
        reports = 0;
        return MM_alloc_item(60000) && reports == 0 ? 0 : 2;
    });
}

/* Only without that block is its chunk one to be given back. */
TEST_F(MemoryLimit, WhatAThreadHoldsReadyGoesBackBeforeALargeBlockIsRefusedRoomToGrow)
{
    move_many_blocks();
    in_a_child([] {
        constexpr size_t small = 200000;
        auto *grows = static_cast<char *>(MM_alloc_item(mib / 2));
        std::memset(grows, 'g', mib / 2);
        mova_memory_trim();
        const size_t held = mova_memory_statistics().held_bytes;
        void *alone = nullptr;
        while (mova_memory_statistics().held_bytes == held)
            alone = MM_alloc_item(small);
        if (!limit_address_space(mib))
            return int{not_limited};
        MM_dealloc_item(alone, small);
        if (!is_held_ready(small))
            return 1;
        reports = 0;
        grows = static_cast<char *>(MM_realloc_item(grows, mib / 2, 2 * mib));
        return grows && reports == 0 && std::count(grows, grows + mib / 2, 'g') == mib / 2 ? 0 : 2;
    });
}

/* It would become a block of another kind. */
TEST_F(MemoryLimit, ALargeBlockWithoutRoomToBecomeASmallOneIsReportedAsThat)
{
    with_little_room(16 * mib, [] {
        void *block = MM_alloc_item(mib);
        allocate_all(200000);
        reports = 0;
        const bool refused = !MM_realloc_item(block, mib, 200000);
        return refused && reports == 1 && last.line == MOVA_MEMORY_NO_ROOM ? 0 : 1;
    });
}

#if UINTPTR_MAX > UINT32_MAX /* elsewhere there is no address space for as many blocks */

/* With every other of them released, the system would have to keep more mappings apart than it can: 65,530, usually. */
TEST_F(MemoryLimit, ManyScatteredLargeBlocksLeaveTheSystemItsMappings)
{
    in_a_child([] {
        constexpr size_t count = 140000, size = 300000;
        const size_t live = mova_memory_statistics_of_size(size).live_blocks;
        std::vector<void *> blocks(count);
        reports = 0;
        std::ranges::generate(blocks, [=] { return MM_alloc_item(size); });
        if (reports > 0)
            return 1;
        for (size_t i = 0; i < count; i += 2)
            MM_dealloc_item(blocks[i], size);
        if (mova_memory_statistics_of_size(size).live_blocks != live + count / 2)
            return 2;
        if (!MM_alloc_item(64) || !MM_alloc_item(100 * mib) || reports > 0)
            return 3;
        void *mapped = mmap(nullptr, mib, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        return mapped == MAP_FAILED ? 4 : 0;
    });
}

#endif

TEST_F(MemoryLimit, AnErrorThrownForWantOfMemoryLeavesTheServiceUsable)
{
    with_little_room(64 * mib, [] {
        throws = true;
        void *blocks = nullptr;
        try {
            for (;;) {
                auto *block = static_cast<void **>(MM_alloc_item(96));
                *block = blocks;
                blocks = block;
            }
        } catch (const report &) {
        }
        MM_dealloc_item(blocks, 96);
        return MM_alloc_item(96) == blocks ? 0 : 1;
    });
}

} // namespace
