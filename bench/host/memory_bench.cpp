/* SPDX-License-Identifier: MIT */
/* The allocator beside those that a program would use instead. */
#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include <bench/growth.h>
#include <bench/host/heaps.h>

namespace {

using namespace heaps;

using block_list = std::vector<void *>;

/* The same order every time, so that every contender meets the same one. */
template <class T>
void shuffle(std::vector<T> &what)
{
    std::shuffle(what.begin(), what.end(), std::mt19937(4197));
}

template <class Heap>
void fill(block_list &blocks, size_t size)
{
    for (void *&block : blocks)
        block = Heap::take(size);
}

template <class Heap>
void release(const block_list &blocks, size_t size)
{
    for (void *block : blocks)
        Heap::give(block, size);
}

std::vector<uint32_t> random_numbers(size_t count, uint32_t below)
{
    std::mt19937 engine(4197);
    std::uniform_int_distribution<uint32_t> number(0, below - 1);
    std::vector<uint32_t> numbers(count);
    std::ranges::generate(numbers, [&] { return number(engine); });
    return numbers;
}

constexpr size_t churns = size_t{1} << 20;

template <class Heap>
void churn(benchmark::State &state, uint32_t live, size_t size)
{
    std::vector<uint32_t> places = random_numbers(churns, live);
    block_list blocks(live);
    fill<Heap>(blocks, size);
    shuffle(blocks);
    for (auto _ : state) {
        for (uint32_t place : places) {
            Heap::give(blocks[place], size);
            blocks[place] = Heap::take(size);
        }
    }
    release<Heap>(blocks, size);
}

template <class Heap>
void fill_and_release(benchmark::State &state, size_t count, size_t size)
{
    block_list blocks(count);
    for (auto _ : state) {
        fill<Heap>(blocks, size);
        state.PauseTiming();
        shuffle(blocks);
        state.ResumeTiming();
        release<Heap>(blocks, size);
    }
}

struct node {
    node *prev, *next;
    void *item;
};

template <class Heap>
node *build_list(size_t count)
{
    node *first = nullptr;
    for (size_t i = 0; i < count; ++i) {
        auto *added = static_cast<node *>(Heap::take(sizeof(node)));
        *added = {nullptr, first, nullptr};
        if (first)
            first->prev = added;
        first = added;
    }
    return first;
}

template <class Heap>
void release_list(node *first)
{
    while (first) {
        node *next = first->next;
        Heap::give(first, sizeof(node));
        first = next;
    }
}

/* Before each turn every block of the heap is allocated, and released in random order. Nothing else is released
   meanwhile: a large block that goes back makes glibc put its free blocks in order. */
template <class Heap>
void walk_in_aged_heap(benchmark::State &state, size_t count)
{
    block_list blocks(count);
    for (auto _ : state) {
        state.PauseTiming();
        fill<Heap>(blocks, sizeof(node));
        shuffle(blocks);
        release<Heap>(blocks, sizeof(node));
        state.ResumeTiming();
        node *first = build_list<Heap>(count);
        for (int walk = 0; walk < 5; ++walk) {
            for (node *at = first; at; at = at->next)
                benchmark::DoNotOptimize(at->item);
        }
        state.PauseTiming();
        release_list<Heap>(first);
        state.ResumeTiming();
    }
}

/* The blocks hold themselves together, so that nothing but blocks is measured. */
template <class Heap>
double bytes_held(size_t count, size_t size)
{
    double before = resident_bytes();
    void *last = nullptr;
    for (size_t i = 0; i < count; ++i) {
        void *block = Heap::take(size);
        std::fill_n(static_cast<char *>(block), size, 'm');
        *static_cast<void **>(block) = last;
        last = block;
    }
    benchmark::DoNotOptimize(last);
    return (resident_bytes() - before) / static_cast<double>(count);
}

/* ---- growth ---- */

template <class Heap>
void live(growth::life &of)
{
    block_list blocks(of.items());
    std::vector<uint32_t> places =
        random_numbers(std::min<size_t>(of.items(), 1000000), static_cast<uint32_t>(of.items()));
    of.fill("allocate 48 B and write", [&] {
        for (void *&block : blocks) {
            block = Heap::take(48);
            *static_cast<uint64_t *>(block) = 1;
        }
    });
    of.once("release and allocate at random", places.size(), [&] {
        for (uint32_t place : places) {
            Heap::give(blocks[place], 48);
            blocks[place] = Heap::take(48);
        }
    });
    shuffle(blocks);
    of.once("release at random", of.items(), [&] { release<Heap>(blocks, 48); });
}

/* ---- the rows ---- */

struct row {
    uint32_t live;
    const char *text;
    speed_targets wanted;
};

void add_churn(const row &each)
{
    add_timed("A1", "release and allocate 48 B, " + std::string(each.text) + " live", churns, each.wanted,
              [=]<class Heap>(Heap, benchmark::State &state) { churn<Heap>(state, each.live, 48); });
}

void add_fill(const row &each)
{
    add_timed("A2", "fill with 48 B, release in random order, " + std::string(each.text), 2.0 * each.live, each.wanted,
              [=]<class Heap>(Heap, benchmark::State &state) { fill_and_release<Heap>(state, each.live, 48); });
}

void add_walk(const row &each)
{
    add_timed("A3", "aged heap: build a list, walk it 5 times, " + std::string(each.text), each.live, each.wanted,
              [=]<class Heap>(Heap, benchmark::State &state) { walk_in_aged_heap<Heap>(state, each.live); });
}

void add_bytes(size_t size, double at_most)
{
    add_measured("A4", "bytes held for a live block of " + std::to_string(size) + " B, 1e6 live", "bytes", {at_most, 0},
                 [=]<class Heap>(Heap) { return bytes_held<Heap>(1000000, size); });
}

const bool registered = [] {
    growth::add("memory", {{"mova", live<mova_heap>, 1e7},
                           {"glibc", live<glibc_heap>, 1e7},
                           {"mimalloc", mimalloc_heap::is_there() ? live<mimalloc_heap> : nullptr, 1e7}});
    for (const row &each : {row{1000, "1e3", {2, 1.5}}, row{100000, "1e5", {5, 1.7}}, row{2000000, "2e6", {5, 3}}})
        add_churn(each);
    for (const row &each : {row{1000, "1e3", {1.6, 1}}, row{100000, "1e5", {10, 1.1}}, row{2000000, "2e6", {5, 1.1}}})
        add_fill(each);
    add_walk({2000000, "2e6", {20, 0.9}});
    add_bytes(24, 26);
    add_bytes(48, 51);
    return true;
}();

} // namespace
