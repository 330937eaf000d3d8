/* The swap cache beside the cache that one writes with the standard library: the entries in a list, the last used first,
   and a hash table from keys to their places in it. */
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include <bench/scoreboard.h>
#include <mova/cache/swap_cache.h>
#include <mova/host/memory_blocks.h>

namespace {

using benchmark::DoNotOptimize;

/* Every turn asks for so many bodies, at random. */
constexpr size_t gets = size_t{1} << 16;

std::vector<uint32_t> random_keys(uint32_t below)
{
    std::mt19937 engine(4197);
    std::uniform_int_distribution<uint32_t> key(0, below - 1);
    std::vector<uint32_t> keys(gets);
    std::ranges::generate(keys, [&] { return key(engine); });
    return keys;
}

struct item {
    uint32_t key, size;
};

/* Either is made for items with the keys 0, 1, …, and for bodies of which `room` fit. */
class mova_cache {
public:
    mova_cache(uint32_t items, uint32_t size, size_t room)
        : pool_(mb_create_pool(room * size)), cache_(cc_create(pool_))
    {
        items_.resize(items);
        for (uint32_t key = 0; key < items; key++) {
            items_[key] = {key, size};
            entries_.push_back(cc_insert(cache_, &items_[key], 0, size_of, swap_in, write_back, release));
        }
    }

    ~mova_cache()
    {
        cc_make_empty(cache_);
        MM_dealloc_item(cache_, sizeof(cc_cache));
        mb_release_pool(&pool_);
    }

    const void *get(uint32_t key) { return cc_get(cache_, entries_[key]); }

private:
    static uint32_t size_of(void *of) { return static_cast<item *>(of)->size; }
    static void swap_in(void *of, void *block, uint32_t) { std::memcpy(block, of, sizeof(uint32_t)); }
    static void write_back(void *, void *) {}
    static void release(void *) {}

    mb_pool *pool_;
    cc_cache *cache_;
    std::vector<item> items_;
    std::vector<cc_entry *> entries_;
};

class standard_cache {
public:
    standard_cache(uint32_t, uint32_t size, size_t room) : size_(size), room_(room) {}

    const void *get(uint32_t key)
    {
        auto found = places_.find(key);
        if (found != places_.end()) {
            bodies_.splice(bodies_.begin(), bodies_, found->second);
            return found->second->bytes.get();
        }
        if (bodies_.size() == room_) {
            places_.erase(bodies_.back().key);
            bodies_.pop_back();
        }
        bodies_.push_front({key, std::unique_ptr<char[]>(new char[size_])});
        places_.emplace(key, bodies_.begin());
        std::memcpy(bodies_.front().bytes.get(), &key, sizeof key);
        return bodies_.front().bytes.get();
    }

private:
    struct body {
        uint32_t key;
        std::unique_ptr<char[]> bytes;
    };
    size_t size_, room_;
    std::list<body> bodies_;
    std::unordered_map<uint32_t, std::list<body>::iterator> places_;
};

template <class Cache>
void get(benchmark::State &state, uint32_t items, uint32_t size, size_t room)
{
    Cache cache(items, size, room);
    const std::vector<uint32_t> keys = random_keys(items);
    for (uint32_t key = 0; key < items; key++)
        cache.get(key);
    for (auto _ : state) {
        for (uint32_t key : keys)
            DoNotOptimize(cache.get(key));
    }
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
    add("C1", "cc_get of a body in memory, 1e3 entries", 1000, 64, 1000, 2.5);
    add("C1", "cc_get of a body in memory, 1e5 entries", 100000, 64, 100000, 4);
    add("C1f", "cc_get, pool of a tenth of 1e4 bodies of 4 KiB", 10000, 4096, 1000, 0);
    return true;
}();

} // namespace
