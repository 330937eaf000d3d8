/* SPDX-License-Identifier: MIT */
#include <mova/frame/host.h>
#include <mova/host/memory.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <initializer_list>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include <pthread.h>

#include <gtest/gtest.h>

#include <tests/host/child_process.h>

/* The thread sanitizer's: a child of several threads may begin others, and a fork takes more locks at once than its search for
   deadlocks can count. */
extern "C" const char *__tsan_default_options()
{
    return "die_after_fork=0:detect_deadlocks=0";
}

namespace {

using block_list = std::vector<void *>;

block_list allocate(size_t count, size_t size)
{
    block_list blocks(count);
    std::ranges::generate(blocks, [=] { return MM_alloc_item(size); });
    return blocks;
}

void release(const block_list &blocks, size_t size)
{
    for (void *block : blocks)
        MM_dealloc_item(block, size);
}

void in_threads(unsigned count, void (*work)(unsigned))
{
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i)
        threads.emplace_back(work, i);
    for (std::thread &thread : threads)
        thread.join();
}

/* Holds blocks of many sizes, each filled with the thread's own byte, and looks whether they stay so. */
void churn(unsigned number)
{
    static constexpr size_t sizes[] = {8, 24, 48, 200, 1000, 1500, 40000, 300000};
    struct held_block {
        unsigned char *block = nullptr;
        size_t size = 0;
    } held[100];
    std::mt19937 random(number);
    for (int step = 0; step < 20000; ++step) {
        held_block &place = held[random() % 100];
        if (place.block) {
            ASSERT_EQ(place.block[0], number);
            ASSERT_EQ(place.block[place.size - 1], number);
            MM_dealloc_item(place.block, place.size);
        }
        place.size = sizes[random() % (step % 50 == 0 ? 8 : 6)];
        place.block = static_cast<unsigned char *>(MM_alloc_item(place.size));
        place.block[0] = place.block[place.size - 1] = static_cast<unsigned char>(number);
    }
    for (held_block &place : held) {
        if (place.block)
            MM_dealloc_item(place.block, place.size);
    }
}

TEST(MemoryThreads, ThreadsNeverHoldTheSameBlock)
{
    in_threads(4, churn);
}

/* Hands blocks from one thread to the other. */
class channel {
public:
    void put(block_list blocks)
    {
        std::lock_guard guard(lock_);
        lists_.push_back(std::move(blocks));
        filled_.notify_one();
    }

    block_list get()
    {
        std::unique_lock guard(lock_);
        filled_.wait(guard, [this] { return !lists_.empty(); });
        block_list blocks = std::move(lists_.back());
        lists_.pop_back();
        return blocks;
    }

private:
    std::mutex lock_;
    std::condition_variable filled_;
    std::vector<block_list> lists_;
};

TEST(MemoryThreads, ABlockMayBeReleasedByAnotherThread)
{
    size_t live = mova_memory_statistics_of_size(56).live_blocks;
    channel between;
    std::thread producer([&] {
        for (int i = 0; i < 200; ++i)
            between.put(allocate(500, 56));
    });
    std::thread consumer([&] {
        for (int i = 0; i < 200; ++i) {
            block_list blocks = between.get();
            for (void *block : blocks)
                std::memset(block, i, 56);
            release(blocks, 56);
        }
    });
    producer.join();
    consumer.join();
    EXPECT_EQ(mova_memory_statistics_of_size(56).live_blocks, live);
}

TEST(MemoryThreads, ALargeBlockMayGrowAndEndInAnotherThread)
{
    constexpr size_t size = 400000, grown = 5000000;
    auto *block = static_cast<char *>(MM_alloc_item(size));
    std::memset(block, 'l', size);
    std::thread([&] {
        block = static_cast<char *>(MM_realloc_item(block, size, grown));
        EXPECT_EQ(std::count(block, block + size, 'l'), static_cast<std::ptrdiff_t>(size));
        MM_dealloc_item(block, grown);
    }).join();
}

TEST(MemoryThreads, AThreadThatEndsLeavesItsFreeBlocksToTheOthers)
{
    mova_memory_class before = mova_memory_statistics_of_size(632);
    size_t held = mova_memory_statistics().held_bytes;
    std::thread([] { release(allocate(1000, 632), 632); }).join();
    EXPECT_EQ(mova_memory_statistics_of_size(632).cached_blocks, before.cached_blocks);
    EXPECT_EQ(mova_memory_statistics_of_size(632).live_blocks, before.live_blocks);
    size_t after_one = mova_memory_statistics().held_bytes;
    for (int i = 0; i < 50; ++i)
        std::thread([] { release(allocate(1000, 632), 632); }).join();
    EXPECT_EQ(mova_memory_statistics().held_bytes, after_one);
    EXPECT_GE(after_one, held);
}

TEST(MemoryThreads, BlocksOutliveTheThreadThatAllocatedThem)
{
    block_list blocks;
    std::thread([&] {
        blocks = allocate(1000, 640);
        for (void *block : blocks)
            std::memset(block, 'b', 640);
    }).join();
    /* Others get none of them meanwhile, nor what they contain. */
    in_threads(2, [](unsigned) {
        const block_list more = allocate(1000, 640);
        for (void *block : more)
            std::memset(block, 'm', 640);
        release(more, 640);
    });
    for (void *block : blocks) {
        const char *bytes = static_cast<char *>(block);
        ASSERT_EQ(std::count(bytes, bytes + 640, 'b'), 640);
    }
    const size_t live = mova_memory_statistics_of_size(640).live_blocks;
    std::thread([&] { release(blocks, 640); }).join();
    EXPECT_EQ(live - mova_memory_statistics_of_size(640).live_blocks, live == 0 ? 0u : 1000u);
}

/* Releases and allocates when its thread is about to end. */
struct late {
    ~late()
    {
        MM_dealloc_item(block, 704);
        release(allocate(200, 704), 704);
    }
    void *block = nullptr;
};

TEST(MemoryThreads, AThreadLocalDestructorMayAllocate)
{
    mova_memory_class before = mova_memory_statistics_of_size(704);
    std::thread([] {
        thread_local late object;
        object.block = MM_alloc_item(704);
    }).join();
    EXPECT_EQ(mova_memory_statistics_of_size(704).live_blocks, before.live_blocks);
    EXPECT_EQ(mova_memory_statistics_of_size(704).cached_blocks, before.cached_blocks);
}

TEST(MemoryThreads, ADestructorOfThreadSpecificDataMayAllocateAfterTheThreadsBlocksWentBack)
{
    MM_dealloc_item(MM_alloc_item(800), 800);
    pthread_key_t key; /* later than the allocator's, so its destructor is called later */
    ASSERT_EQ(pthread_key_create(&key,
                                 [](void *block) {
                                     MM_dealloc_item(block, 800);
                                     release(allocate(200, 800), 800);
                                 }),
              0);
    mova_memory_class before = mova_memory_statistics_of_size(800);
    size_t held = mova_memory_statistics().held_bytes;
    std::thread([&] { pthread_setspecific(key, MM_alloc_item(800)); }).join();
    EXPECT_EQ(mova_memory_statistics_of_size(800).live_blocks, before.live_blocks);
    EXPECT_EQ(mova_memory_statistics_of_size(800).cached_blocks, before.cached_blocks);
    EXPECT_LE(mova_memory_statistics().held_bytes - held, size_t{2} << 20);
    pthread_key_delete(key);
}

TEST(MemoryThreads, StatisticsMayBeReadWhileOthersAllocate)
{
    std::atomic<bool> done{false};
    std::thread reader([&] {
        while (!done)
            EXPECT_LT(mova_memory_statistics().live_blocks, 1000000u);
    });
    in_threads(2, churn);
    done = true;
    reader.join();
}

/* ---- what a sanitizer has its own ways for ---- */

/* Sets its key again in its destructor, as often as the system calls that, and allocates each time. */
TEST(MemoryOwnThreads, AThreadThatAllocatesInEveryRoundOfDestructorsLeavesNothing)
{
    static pthread_key_t key;
    static std::atomic<int> rounds;
    rounds = 0;
    MM_dealloc_item(MM_alloc_item(800), 800);
    ASSERT_EQ(pthread_key_create(&key,
                                 [](void *block) {
                                     ++rounds;
                                     release(allocate(200, 800), 800);
                                     MM_dealloc_item(block, 808);
                                     if (rounds % PTHREAD_DESTRUCTOR_ITERATIONS != 0)
                                         pthread_setspecific(key, MM_alloc_item(808));
                                 }),
              0);
    const auto before_one = mova_memory_statistics();
    const auto one_thread = [] { std::thread([] { pthread_setspecific(key, MM_alloc_item(808)); }).join(); };
    one_thread();
    EXPECT_EQ(rounds, PTHREAD_DESTRUCTOR_ITERATIONS);
    const size_t held = mova_memory_statistics().held_bytes;
    for (int i = 0; i < 50; ++i)
        one_thread();
    EXPECT_EQ(mova_memory_statistics().held_bytes, held);
    EXPECT_EQ(mova_memory_statistics().live_blocks, before_one.live_blocks);
    EXPECT_EQ(mova_memory_statistics().cached_bytes, before_one.cached_bytes);
    pthread_key_delete(key);
}

TEST(MemoryOwnThreads, AChildThatIsForkedBesideBusyThreadsMayAllocate)
{
    std::atomic<bool> done{false};
    std::vector<std::thread> busy;
    for (int i = 0; i < 3; ++i) {
        busy.emplace_back([&] {
            while (!done) {
                for (size_t size : std::initializer_list<size_t>{40, 3000, 40000, 300000})
                    release(allocate(200, size), size);
            }
        });
    }
    for (int i = 0; i < 60; ++i) {
        const int status = mova::test::in_child([] {
            for (size_t size : std::initializer_list<size_t>{40, 3000, 40000, 300000})
                release(allocate(200, size), size);
            std::thread([] { release(allocate(200, 40), 40); }).join();
            return 0;
        });
        ASSERT_EQ(status, 0) << i;
    }
    done = true;
    for (std::thread &thread : busy)
        thread.join();
}

/* What the thread that forks holds ready is its own in the child too, where it is counted. */
TEST(MemoryOwnThreads, AChildHoldsReadyWhatItsThreadDid)
{
    release(allocate(20, 40), 40);
    const size_t ready = mova_memory_statistics_of_size(40).cached_blocks;
    ASSERT_GT(ready, 0u);
    EXPECT_EQ(mova::test::in_child([ready] { return mova_memory_statistics_of_size(40).cached_blocks != ready; }), 0);
}

} // namespace
