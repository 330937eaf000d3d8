/* SPDX-License-Identifier: MIT */
/* The swap cache beside the cache that one writes with the standard library: the entries in a list, the last used first,
   and a hash table from items to their places in it. */
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <list>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include <bench/growth.h>
#include <bench/scoreboard.h>
#include <mova/cache/swap_cache.h>
#include <mova/host/memory_blocks.h>

namespace {

using benchmark::DoNotOptimize;

/* Every turn asks for so many bodies, at random. */
constexpr size_t gets = size_t{1} << 16;

std::vector<uint32_t> random_numbers(uint32_t below)
{
    std::mt19937 engine(4197);
    std::uniform_int_distribution<uint32_t> number(0, below - 1);
    std::vector<uint32_t> numbers(gets);
    std::ranges::generate(numbers, [&] { return number(engine); });
    return numbers;
}

struct item {
    uint32_t number, size;
};

std::vector<item> numbered_items(uint32_t count, uint32_t size)
{
    std::vector<item> items;
    for (uint32_t number = 0; number < count; ++number)
        items.push_back({number, size});
    return items;
}

/* Either is made for the bodies of some items, of which `room` of `size` bytes fit. */
class mova_cache {
public:
    mova_cache(std::vector<item> &items, uint32_t size, size_t room)
        : pool_(mb_create_pool(room * size)), cache_(cc_create(pool_))
    {
        for (item &each : items)
            entries_.push_back(cc_insert(cache_, &each, 0, size_of, swap_in, write_back, release));
    }

    ~mova_cache()
    {
        cc_make_empty(cache_);
        MM_dealloc_item(cache_, sizeof(cc_cache));
        mb_release_pool(&pool_);
    }

    const void *get(uint32_t number) { return cc_get(cache_, entries_[number]); }

private:
    static uint32_t size_of(void *of) { return static_cast<item *>(of)->size; }
    static void swap_in(void *of, void *block, uint32_t) { std::memcpy(block, of, sizeof(item)); }
    static void write_back(void *, void *) {}
    static void release(void *) {}

    mb_pool *pool_;
    cc_cache *cache_;
    std::vector<cc_entry *> entries_;
};

class standard_cache {
public:
    standard_cache(const std::vector<item> &items, uint32_t, size_t room) : items_(items), room_(room) {}

    const void *get(uint32_t number)
    {
        const auto found = places_.find(&items_[number]);
        if (found == places_.end())
            return fetch(items_[number]);
        bodies_.splice(bodies_.begin(), bodies_, found->second);
        return found->second->bytes.get();
    }

private:
    struct body {
        const item *of;
        std::unique_ptr<char[]> bytes;
    };

    const void *fetch(const item &wanted)
    {
        if (bodies_.size() == room_) {
            places_.erase(bodies_.back().of);
            bodies_.pop_back();
        }
        bodies_.push_front({&wanted, std::unique_ptr<char[]>(new char[wanted.size])});
        places_.emplace(&wanted, bodies_.begin());
        std::memcpy(bodies_.front().bytes.get(), &wanted, sizeof wanted);
        return bodies_.front().bytes.get();
    }

    const std::vector<item> &items_;
    size_t room_;
    std::list<body> bodies_;
    std::unordered_map<const item *, std::list<body>::iterator> places_;
};

template <class Cache>
void get(benchmark::State &state, uint32_t count, uint32_t size, size_t room)
{
    std::vector<item> items = numbered_items(count, size);
    Cache cache(items, size, room);
    const std::vector<uint32_t> numbers = random_numbers(count);
    for (const item &each : items)
        cache.get(each.number);
    for (auto _ : state) {
        for (uint32_t number : numbers)
            DoNotOptimize(cache.get(number));
    }
}

/* Of the bodies of 64 B all have room, or a tenth; a get of the others evicts. */
template <class Cache, size_t part>
void live(growth::life &of)
{
    const auto count = static_cast<uint32_t>(of.items());
    static std::vector<item> items = numbered_items(count, 64);
    static const std::vector<uint32_t> numbers = random_numbers(count);
    std::optional<Cache> cache;
    const auto get_each = [&](const auto &wanted, const auto &number_of) {
        for (const auto &each : wanted)
            DoNotOptimize(cache->get(number_of(each)));
    };
    of.fill(part == 1 ? "insert and fetch 64 B" : "insert and fetch 64 B (room for a tenth)", [&] {
        cache.emplace(items, 64, items.size() / part);
        get_each(items, [](const item &each) { return each.number; });
    });
    of.repeat(part == 1 ? "get at random" : "get at random (room for a tenth)", numbers.size(),
              [&] { get_each(numbers, [](uint32_t number) { return number; }); });
    of.once("release", of.items(), [&] { cache.reset(); });
}

template <class Cache>
void live_in(growth::life &of)
{
    live<Cache, 1>(of);
    live<Cache, 10>(of);
}

void add(const std::string &id, const std::string &workload, uint32_t items, uint32_t size, size_t room, double target)
{
    scoreboard::add_timed(
        {id,
         workload,
         gets,
         [=](benchmark::State &state) { get<mova_cache>(state, items, size, room); },
         {{"list + map", [=](benchmark::State &state) { get<standard_cache>(state, items, size, room); }, target}}});
}

const bool registered = [] {
    growth::add("swap_cache", {{"mova", live_in<mova_cache>, 1e7}, {"list + map", live_in<standard_cache>, 1e7}});
    add("C1", "cc_get of a body in memory, 1e3 entries", 1000, 64, 1000, 2.5);
    add("C1", "cc_get of a body in memory, 1e5 entries", 100000, 64, 100000, 4);
    add("C1f", "cc_get, pool of a tenth of 1e4 bodies of 4 KiB", 10000, 4096, 1000, 0);
    return true;
}();

} // namespace
