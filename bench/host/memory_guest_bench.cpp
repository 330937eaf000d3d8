/* SPDX-License-Identifier: MIT */
/* What the allocator costs the machine that it is a guest on: memory that stays resident, large blocks, threads. */
#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstring>
#include <ctime>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <pthread.h>

#include <bench/host/heaps.h>

namespace {

using namespace heaps;

constexpr double mib = 1024 * 1024;

/* ---- resident memory ---- */

/* Writes one byte in each `distance`. */
void touch(void *block, size_t size, size_t distance)
{
    for (size_t at = 0; at < size; at += distance)
        static_cast<volatile char *>(block)[at] = 't';
}

/* MiB that become resident when `count` blocks are allocated and one byte in each `distance` is written. */
template <class Heap>
double resident_after(size_t count, size_t size, size_t distance)
{
    std::vector<void *> blocks(count);
    std::ranges::fill(blocks, &blocks);
    double before = resident_bytes();
    for (void *&block : blocks) {
        block = Heap::take(size);
        touch(block, size, distance);
    }
    benchmark::DoNotOptimize(blocks.data());
    return (resident_bytes() - before) / mib;
}

void add_resident(const char *workload, size_t count, size_t size, size_t distance)
{
    add_measured("A6", workload, "MiB", {0, 1.1},
                 [=]<class Heap>(Heap) { return resident_after<Heap>(count, size, distance); });
}

/* ---- blocks in turn ---- */

/* So many blocks at once are allocated, written and released. */
template <class Heap, size_t together>
void in_turn(benchmark::State &state, size_t size, size_t distance)
{
    std::array<void *, together> blocks;
    for (auto _ : state) {
        for (void *&block : blocks) {
            block = Heap::take(size);
            touch(block, size, distance);
        }
        for (void *block : blocks)
            Heap::give(block, size);
    }
}

void add_four(const std::string &text, size_t size)
{
    add_timed("A7", "4 blocks of " + text + " allocated, written, released", 4, {1 / 1.2, 1 / 1.2},
              [=]<class Heap>(Heap, benchmark::State &state) { in_turn<Heap, 4>(state, size, 4096); });
}

void add_single(const std::string &text, size_t size)
{
    add_timed("A8", "a block of " + text + " allocated and released", 1, {1 / 1.2, 1 / 1.2},
              [=]<class Heap>(Heap, benchmark::State &state) { in_turn<Heap, 1>(state, size, size); });
}

/* ---- threads ---- */

constexpr size_t sizes = 200;

/* `each` blocks of each of the sizes 16, 32 ... 3200. */
template <class Heap>
void use_many_sizes(size_t each)
{
    std::vector<void *> blocks;
    for (size_t size = 16; size <= 16 * sizes; size += 16) {
        for (size_t i = 0; i < each; ++i)
            blocks.push_back(std::memset(Heap::take(size), 'u', size));
    }
    for (size_t i = 0; i < blocks.size(); ++i)
        Heap::give(blocks[i], 16 * (i / each + 1));
}

/* MiB that become resident while so many threads live that have each used many sizes. */
template <class Heap>
double resident_for_threads(size_t count, size_t each)
{
    std::mutex lock;
    std::condition_variable changed;
    size_t ready = 0;
    bool over = false;
    std::vector<std::thread> threads;
    double before = resident_bytes();
    for (size_t i = 0; i < count; ++i) {
        threads.emplace_back([&] {
            use_many_sizes<Heap>(each);
            std::unique_lock held(lock);
            ready++;
            changed.notify_all();
            changed.wait(held, [&] { return over; });
        });
    }
    std::unique_lock held(lock);
    changed.wait(held, [&] { return ready == count; });
    double after = resident_bytes();
    over = true;
    held.unlock();
    changed.notify_all();
    for (std::thread &thread : threads)
        thread.join();
    return (after - before) / mib;
}

double processor_microseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

template <class Heap>
void *allocate_fifty(void *)
{
    std::array<void *, 50> blocks;
    for (size_t i = 0; i < blocks.size(); ++i)
        blocks[i] = Heap::take(16 * (i % 10 + 1));
    for (size_t i = 0; i < blocks.size(); ++i)
        Heap::give(blocks[i], 16 * (i % 10 + 1));
    return nullptr;
}

template <class Heap>
double microseconds_for_a_thread()
{
    constexpr int turns = 11, threads = 1000;
    std::array<double, turns> times;
    for (double &time : times) {
        double start = processor_microseconds();
        for (int i = 0; i < threads; ++i) {
            pthread_t thread;
            if (pthread_create(&thread, nullptr, allocate_fifty<Heap>, nullptr) != 0)
                return std::nan("");
            pthread_join(thread, nullptr);
        }
        time = (processor_microseconds() - start) / threads;
    }
    std::ranges::nth_element(times, times.begin() + turns / 2);
    return times[turns / 2];
}

const bool registered = [] {
    add_resident("resident: 4,000 blocks of 300 kB, a byte in each", 4000, 300000, 300000);
    add_resident("resident: a block of 1 GiB, a byte each 2 MiB", 1, size_t{1} << 30, size_t{2} << 20);
    add_resident("resident: 20,000 blocks of 40 kB, whole", 20000, 40000, 1024);
    add_resident("resident: 12,000 blocks of 66 kB, whole", 12000, 66000, 1024);
    add_resident("resident: 4,000 blocks of 270 kB, whole", 4000, 270000, 1024);
    add_four("300 kB", 300000);
    add_four("1.1 MB", 1100000);
    for (size_t size : {3000, 10000, 40000, 100000, 200000})
        add_single(std::to_string(size / 1000) + " kB", size);
    for (size_t each : {1, 10}) {
        add_measured("A9", "resident: 500 threads that used " + std::to_string(each) + " of each of 200 sizes", "MiB",
                     {0, 1.2}, [=]<class Heap>(Heap) { return resident_for_threads<Heap>(500, each); });
    }
    add_measured("A10", "a thread begins, allocates 50 blocks, and ends", "us", {0, 1.2},
                 []<class Heap>(Heap) { return microseconds_for_a_thread<Heap>(); });
    return true;
}();

} // namespace
