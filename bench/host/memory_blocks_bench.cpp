/* SPDX-License-Identifier: MIT */
/* The pool of movable blocks beside glibc's allocator, which has all the memory that it wants and moves nothing. */
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <bench/growth.h>
#include <bench/scoreboard.h>
#include <mova/host/memory_blocks.h>

namespace {

constexpr size_t kib = 1024;
constexpr size_t budget = 16 * kib * kib;
constexpr size_t churns = size_t{1} << 15;

class mova_pool {
public:
    using block = mb_handle;

    ~mova_pool() { mb_release_pool(&pool_); }

    mova_pool() = default;
    explicit mova_pool(size_t bytes) : pool_(mb_create_pool(bytes)) {}
    mova_pool(const mova_pool &) = delete;
    mova_pool &operator=(const mova_pool &) = delete;

    void *address(block of) { return mb_get(pool_, of); }

    block take(size_t size)
    {
        const block taken = mb_alloc(pool_, size);
        std::memcpy(mb_get(pool_, taken), &size, sizeof size);
        return taken;
    }

    void give(block given) { mb_free(pool_, &given); }
    mb_statistics figures() const { return mb_pool_statistics(pool_); }

private:
    mb_pool *pool_ = mb_create_pool(budget);
};

class glibc_heap {
public:
    using block = void *;

    glibc_heap() = default;
    explicit glibc_heap(size_t) {}

    void *address(block of) { return of; }

    block take(size_t size)
    {
        block taken = std::malloc(size);
        std::memcpy(taken, &size, sizeof size);
        return taken;
    }

    void give(block given) { std::free(given); }
};

/* Blocks of 0.5 to 16 KiB that come and go in random order, and occupy as much of the budget together as has room below
   the mark. What is drawn is the same for every heap. */
template <class Heap>
class churn {
public:
    explicit churn(unsigned per_cent) : mark_(budget / 100 * per_cent)
    {
        std::mt19937 engine(4197);
        std::uniform_int_distribution<uint32_t> size(kib / 2, 16 * kib), any;
        for (size_t i = 0; i < churns; ++i)
            draws_.push_back({size(engine), any(engine)});
        for (const draw &each : draws_)
            step(each);
    }

    ~churn()
    {
        for (const auto &[block, size] : blocks_)
            heap_.give(block);
    }

    void turn()
    {
        for (const draw &each : draws_)
            step(each);
    }

    Heap &heap() { return heap_; }

private:
    struct draw {
        uint32_t size, any;
    };

    /* A block comes; before it, as many go as must for it to stay below the mark. */
    void step(const draw &drawn)
    {
        const size_t size = (drawn.size + MB_UNIT - 1) / MB_UNIT * MB_UNIT;
        while (live_bytes_ + size > mark_) {
            auto &gone = blocks_[drawn.any % blocks_.size()];
            heap_.give(gone.first);
            live_bytes_ -= gone.second;
            gone = blocks_.back();
            blocks_.pop_back();
        }
        blocks_.emplace_back(heap_.take(size), size);
        live_bytes_ += size;
    }

    Heap heap_;
    size_t mark_, live_bytes_ = 0;
    std::vector<draw> draws_;
    std::vector<std::pair<typename Heap::block, size_t>> blocks_;
};

template <class Heap>
void time_churn(benchmark::State &state, unsigned per_cent)
{
    churn<Heap> churning(per_cent);
    for (auto _ : state)
        churning.turn();
}

constexpr size_t tight_gaps = 100000, tight_blocks = 1000;

/* 1e5 gaps are a unit too small for what comes; between any two lies a block of one unit, which has to move. */
void time_tight_gaps(benchmark::State &state, size_t tight_units)
{
    for (auto _ : state) {
        state.PauseTiming();
        mb_pool *pool = mb_create_pool(tight_gaps * (tight_units + 1) * MB_UNIT);
        std::vector<mb_handle> gaps(tight_gaps);
        for (mb_handle &gap : gaps) {
            gap = mb_alloc(pool, tight_units * MB_UNIT);
            mb_alloc(pool, MB_UNIT);
        }
        for (mb_handle &gap : gaps)
            mb_free(pool, &gap);
        state.ResumeTiming();
        for (size_t i = 0; i < tight_blocks; ++i)
            benchmark::DoNotOptimize(mb_alloc(pool, (tight_units + 1) * MB_UNIT));
        state.PauseTiming();
        mb_release_pool(&pool);
        state.ResumeTiming();
    }
}

double moved_by_an_operation(unsigned per_cent)
{
    constexpr int turns = 10;
    churn<mova_pool> churning(per_cent);
    const uint64_t before = churning.heap().figures().moved_bytes;
    for (int i = 0; i < turns; ++i)
        churning.turn();
    return static_cast<double>(churning.heap().figures().moved_bytes - before) / (turns * churns);
}

template <class Heap>
void live(growth::life &of)
{
    std::vector<typename Heap::block> blocks(of.items());
    std::optional<Heap> heap(std::in_place, of.items() * 64);
    of.fill("allocate 64 B and write", [&] {
        for (auto &block : blocks)
            block = heap->take(64);
    });
    std::shuffle(blocks.begin(), blocks.end(), std::mt19937(4197));
    of.repeat("address at random", of.items(), [&] {
        for (const auto &block : blocks)
            benchmark::DoNotOptimize(*static_cast<char *>(heap->address(block)));
    });
    of.once("release at random", of.items(), [&] {
        for (const auto &block : blocks)
            heap->give(block);
    });
}

std::string workload(const char *what, unsigned per_cent)
{
    return what + std::to_string(per_cent) + " % full";
}

void add_time(unsigned per_cent, double target)
{
    scoreboard::add_timed(
        {"C2",
         workload("pool churn, 0.5 to 16 KiB, ", per_cent),
         churns,
         [=](benchmark::State &state) { time_churn<mova_pool>(state, per_cent); },
         {{"glibc", [=](benchmark::State &state) { time_churn<glibc_heap>(state, per_cent); }, target}}});
}

void add_moved(unsigned per_cent, double at_most)
{
    scoreboard::add_measured({"C2",
                              workload("bytes moved by an allocation, ", per_cent),
                              "bytes",
                              [=] { return moved_by_an_operation(per_cent); },
                              {at_most, 0},
                              {}});
}

const bool registered = [] {
    growth::add("memory_blocks", {{"mova", live<mova_pool>, 1e7}, {"glibc", live<glibc_heap>, 1e7}});
    for (const auto &[per_cent, target] :
         std::initializer_list<std::pair<unsigned, double>>{{50, 0}, {80, 1}, {90, 0}, {95, 0.7}, {99, 0}})
        add_time(per_cent, target);
    for (const auto &[per_cent, at_most] :
         std::initializer_list<std::pair<unsigned, double>>{{50, 0}, {80, 4096}, {90, 0}, {95, 4096}, {99, 0}})
        add_moved(per_cent, at_most);
    for (size_t units : {64, 1600})
        scoreboard::add_timed({"C3",
                               "pool, 1e5 gaps of " + std::to_string(units) + " units, a unit too small",
                               tight_blocks,
                               [=](benchmark::State &state) { time_tight_gaps(state, units); },
                               {}});
    return true;
}();

} // namespace
