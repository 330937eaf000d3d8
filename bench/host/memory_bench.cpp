/* The allocator beside those that a program would use instead. */
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <unistd.h>

#include <bench/scoreboard.h>
#include <mova/frame/host.h>

namespace {

struct mova_heap {
    static void *take(size_t size) { return MM_alloc_item(size); }
    static void give(void *block, size_t size) { MM_dealloc_item(block, size); }
};

struct glibc_heap {
    static void *take(size_t size) { return std::malloc(size); }
    static void give(void *block, size_t) { std::free(block); }
};

/* Loaded at run time and for itself: a program that is linked with it has its malloc in place of glibc's. */
struct mimalloc_heap {
    static void *take(size_t size) { return malloc_(size); }
    static void give(void *block, size_t) { free_(block); }

    static inline void *library = dlopen("libmimalloc.so.2", RTLD_NOW | RTLD_LOCAL);
    template <class F>
    static F *symbol(const char *name)
    {
        return library ? reinterpret_cast<F *>(dlsym(library, name)) : nullptr;
    }
    static inline auto malloc_ = symbol<void *(size_t)>("mi_malloc");
    static inline auto free_ = symbol<void(void *)>("mi_free");
};

bool has_mimalloc()
{
    return mimalloc_heap::malloc_ && mimalloc_heap::free_;
}

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
    for (size_t i = 0; i < count; i++) {
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
        for (int walk = 0; walk < 5; walk++) {
            for (node *at = first; at; at = at->next)
                benchmark::DoNotOptimize(at->item);
        }
        state.PauseTiming();
        release_list<Heap>(first);
        state.ResumeTiming();
    }
}

/* Bytes of memory, not of address space, that the process holds, without what comes from files. */
double resident_bytes()
{
    std::FILE *file = std::fopen("/proc/self/statm", "r");
    long resident = 0, shared = 0;
    bool read = file && std::fscanf(file, "%*d %ld %ld", &resident, &shared) == 2;
    if (file)
        std::fclose(file);
    return read ? static_cast<double>(resident - shared) * static_cast<double>(sysconf(_SC_PAGESIZE)) : std::nan("");
}

/* The blocks hold themselves together, so that nothing but blocks is measured. */
template <class Heap>
double bytes_held(size_t count, size_t size)
{
    double before = resident_bytes();
    void *last = nullptr;
    for (size_t i = 0; i < count; i++) {
        void *block = Heap::take(size);
        std::fill_n(static_cast<char *>(block), size, 'm');
        *static_cast<void **>(block) = last;
        last = block;
    }
    benchmark::DoNotOptimize(last);
    return (resident_bytes() - before) / static_cast<double>(count);
}

/* ---- the rows --------------------------------------------------------------------------------------------- */

struct targets {
    uint32_t live;
    const char *text;
    double glibc, mimalloc;
};

/* `work` takes a heap, for its type, and the state. */
template <class Work>
void add_row(const char *id, const std::string &workload, double operations, const targets &wanted, Work work)
{
    auto with = [work]<class Heap>(Heap heap) -> scoreboard::timed_work {
        return [=](benchmark::State &state) { work(heap, state); };
    };
    scoreboard::add_timed({id,
                           workload,
                           operations,
                           with(mova_heap{}),
                           {{"glibc", with(glibc_heap{}), wanted.glibc},
                            {"mimalloc", has_mimalloc() ? with(mimalloc_heap{}) : nullptr, wanted.mimalloc}}});
}

void add_churn(const targets &wanted)
{
    add_row("A1", "release and allocate 48 B, " + std::string(wanted.text) + " live", churns, wanted,
            [=]<class Heap>(Heap, benchmark::State &state) { churn<Heap>(state, wanted.live, 48); });
}

void add_fill(const targets &wanted)
{
    add_row("A2", "fill with 48 B, release in random order, " + std::string(wanted.text), 2.0 * wanted.live, wanted,
            [=]<class Heap>(Heap, benchmark::State &state) { fill_and_release<Heap>(state, wanted.live, 48); });
}

void add_walk(const targets &wanted)
{
    add_row("A3", "aged heap: build a list, walk it 5 times, " + std::string(wanted.text), wanted.live, wanted,
            [=]<class Heap>(Heap, benchmark::State &state) { walk_in_aged_heap<Heap>(state, wanted.live); });
}

void add_bytes(size_t size, double at_most)
{
    constexpr size_t count = 1000000;
    scoreboard::add_measured({"A4",
                              "bytes held for a live block of " + std::to_string(size) + " B, 1e6 live",
                              "bytes",
                              [=] { return bytes_held<mova_heap>(count, size); },
                              at_most,
                              {{"glibc", [=] { return bytes_held<glibc_heap>(count, size); }},
                               {"mimalloc", has_mimalloc() ? [=] { return bytes_held<mimalloc_heap>(count, size); }
                                                           : scoreboard::measured_work()}}});
}

const bool registered = [] {
    for (const targets &wanted : {targets{1000, "1e3", 2, 1.4}, {100000, "1e5", 5, 1.7}, {2000000, "2e6", 5, 3}})
        add_churn(wanted);
    for (const targets &wanted : {targets{1000, "1e3", 1.6, 0.8}, {100000, "1e5", 10, 1.1}, {2000000, "2e6", 5, 1.1}})
        add_fill(wanted);
    add_walk({2000000, "2e6", 20, 0.9});
    add_bytes(24, 26);
    add_bytes(48, 51);
    return true;
}();

} // namespace
