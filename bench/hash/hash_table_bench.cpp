/* SPDX-License-Identifier: MIT */
/* The hash table beside GLib's, the standard library's and two open-addressing ones; and beside itself with plain loops
   in place of its search and its repair. */
#include <algorithm>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <absl/container/flat_hash_map.h>
#include <glib.h>
#include <tsl/robin_map.h>

#include <bench/growth.h>
#include <bench/scoreboard.h>
#include <mova/hash/hash_table.h>
#include <mova/hash/pointer_lookup.h>

namespace {

using benchmark::DoNotOptimize;
using words = std::vector<mova_word>;

/* ---- the contenders ---- */

struct mova_table {
    using type = HSH_table *;
    static type create(int32_t shift) { return HSH_create(0, shift); }
    static void set(type table, mova_word key) { HSH_set_value(table, key, key); }
    static mova_word get(type table, mova_word key) { return HSH_get_value(table, key); }
    static void remove(type table, mova_word key) { HSH_remove_entry(table, key); }
    static void release(type table) { HSH_release(&table); }

    static mova_word sum(type table)
    {
        mova_word sum = 0;
        HSH_iterator iterator = HSH_all_entries(table);
        for (mova_word key, value; HSH_next(&iterator, &key, &value);)
            sum += key ^ value;
        return sum;
    }
};

/* The same table, searched one key at a time. */
struct plain_search : mova_table {
    static int32_t slot_of(const HSH_table *table, mova_word key)
    {
        int32_t slot = (static_cast<int32_t>(key) >> table->shift) & table->mask;
        while (table->keys[slot] && table->keys[slot] != key)
            slot = (slot + 1) & table->mask;
        return slot;
    }

    __attribute__((noinline)) static mova_word get(type table, mova_word key)
    {
        const int32_t slot = slot_of(table, key);
        return table->keys[slot] ? table->values[slot] : 0;
    }
};

/* The same table, with a removal that begins again at the run's end after every move, and never shrinks. */
struct literal_removal : plain_search {
    static void remove(type table, mova_word key)
    {
        int32_t hole = slot_of(table, key);
        table->keys[hole] = 0;
        --table->count;
        int32_t end = hole;
        while (table->keys[(end + 1) & table->mask])
            end = (end + 1) & table->mask;
        for (int32_t at = end; at != hole;) {
            const int32_t slot = put_again(table, at);
            const bool stays = slot == at;
            hole = stays ? hole : at;
            at = stays ? (at - 1) & table->mask : end;
        }
    }

    static int32_t put_again(type table, int32_t at)
    {
        const mova_word key = std::exchange(table->keys[at], 0);
        const int32_t slot = slot_of(table, key);
        table->keys[slot] = key;
        table->values[slot] = table->values[at];
        return slot;
    }
};

struct glib_table {
    using type = GHashTable *;
    static void *pointer(mova_word word) { return reinterpret_cast<void *>(word); }
    static type create(int32_t) { return g_hash_table_new(nullptr, nullptr); }
    static void set(type table, mova_word key) { g_hash_table_insert(table, pointer(key), pointer(key)); }
    static mova_word get(type table, mova_word key)
    {
        return reinterpret_cast<mova_word>(g_hash_table_lookup(table, pointer(key)));
    }
    static void remove(type table, mova_word key) { g_hash_table_remove(table, pointer(key)); }
    static void release(type table) { g_hash_table_destroy(table); }

    static mova_word sum(type table)
    {
        mova_word sum = 0;
        GHashTableIter iterator;
        g_hash_table_iter_init(&iterator, table);
        for (void *key, *value; g_hash_table_iter_next(&iterator, &key, &value);)
            sum += reinterpret_cast<mova_word>(key) ^ reinterpret_cast<mova_word>(value);
        return sum;
    }
};

template <class Map>
struct map_of {
    using type = Map *;
    static type create(int32_t) { return new Map; }
    static void set(type map, mova_word key) { (*map)[key] = key; }
    static mova_word get(type map, mova_word key)
    {
        const auto found = map->find(key);
        return found == map->end() ? 0 : found->second;
    }
    static void remove(type map, mova_word key) { map->erase(key); }
    static void release(type map) { delete map; }

    static mova_word sum(type map)
    {
        mova_word sum = 0;
        for (const auto &[key, value] : *map)
            sum += key ^ value;
        return sum;
    }
};

using standard_map = map_of<std::unordered_map<mova_word, mova_word>>;
using flat_map = map_of<absl::flat_hash_map<mova_word, mova_word>>;
using robin_map = map_of<tsl::robin_map<mova_word, mova_word>>;

/* ---- the keys ---- */

/* What is stored, in the order of storing; and what is asked for, in an order of its own. */
struct key_set {
    words stored, shuffled, absent;
};

/* Half of the numbers below 4 * `count`, in random order. */
words spread_numbers(size_t count)
{
    std::mt19937_64 random(1);
    words numbers;
    for (size_t i = 1; i <= 2 * count; ++i)
        numbers.push_back(static_cast<mova_word>(2 * i + random() % 2));
    std::ranges::shuffle(numbers, random);
    return numbers;
}

/* Different numbers for different numbers, without any order. */
mova_word mixed(mova_word number)
{
    auto bits = static_cast<uint64_t>(number) * 0x9E3779B97F4A7C15u;
    bits = (bits ^ bits >> 32) * 0xD6E8FEB86659FD93u;
    return static_cast<mova_word>(bits ^ bits >> 32);
}

/* The first half is stored, the other one is absent. */
key_set halved(words numbers, mova_word times)
{
    for (mova_word &number : numbers)
        number *= times;
    const auto middle = numbers.begin() + static_cast<std::ptrdiff_t>(numbers.size() / 2);
    key_set keys = {{numbers.begin(), middle}, {numbers.begin(), middle}, {middle, numbers.end()}};
    std::ranges::shuffle(keys.shuffled, std::mt19937_64(2));
    return keys;
}

key_set random_keys(size_t count)
{
    words numbers = spread_numbers(count);
    std::ranges::transform(numbers, numbers.begin(), mixed);
    return halved(numbers, 1);
}

key_set dense_keys(size_t count)
{
    words numbers(2 * count);
    for (size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = static_cast<mova_word>(i + 1);
    return halved(numbers, 1);
}

/* Addresses of blocks of 16 bytes in a pool of which a quarter is stored. */
key_set block_keys(size_t count)
{
    return halved(spread_numbers(count), 16);
}

key_set page_keys(size_t count)
{
    return halved(spread_numbers(count), 4096);
}

/* ---- the work ---- */

struct workload {
    key_set (*keys_of)(size_t count);
    size_t count;
    int32_t shift;
};

template <class Table>
typename Table::type filled(const words &keys, int32_t shift)
{
    typename Table::type table = Table::create(shift);
    for (mova_word key : keys)
        Table::set(table, key);
    return table;
}

/* Made when a row is first run, in the row's own process, and kept for all its rounds. */
const key_set &keys_of(const workload &of)
{
    static const key_set keys = of.keys_of(of.count);
    return keys;
}

template <class Table>
typename Table::type table_of(const workload &of)
{
    static const auto table = filled<Table>(keys_of(of).stored, of.shift);
    return table;
}

template <class Table>
void get_each(benchmark::State &state, typename Table::type table, const words &keys)
{
    for (auto _ : state) {
        mova_word sum = 0;
        for (mova_word key : keys)
            sum += Table::get(table, key);
        DoNotOptimize(sum);
    }
}

struct hit {
    template <class Table>
    static void run(benchmark::State &state, const workload &of)
    {
        get_each<Table>(state, table_of<Table>(of), keys_of(of).shuffled);
    }
};

struct miss {
    template <class Table>
    static void run(benchmark::State &state, const workload &of)
    {
        get_each<Table>(state, table_of<Table>(of), keys_of(of).absent);
    }
};

struct insert {
    template <class Table>
    static void run(benchmark::State &state, const workload &of)
    {
        const words &keys = keys_of(of).stored;
        for (auto _ : state)
            Table::release(filled<Table>(keys, of.shift));
    }
};

struct iterate {
    template <class Table>
    static void run(benchmark::State &state, const workload &of)
    {
        typename Table::type table = table_of<Table>(of);
        for (auto _ : state)
            DoNotOptimize(Table::sum(table));
    }
};

struct remove_all {
    template <class Table>
    static void run(benchmark::State &state, const workload &of)
    {
        for (auto _ : state) {
            state.PauseTiming();
            typename Table::type table = filled<Table>(keys_of(of).stored, of.shift);
            state.ResumeTiming();
            for (mova_word key : keys_of(of).shuffled)
                Table::remove(table, key);
            state.PauseTiming();
            Table::release(table);
            state.ResumeTiming();
        }
    }
};

/* Removes one key in a hundred from a table that is put back as it was after every turn. */
struct remove_few {
    static size_t removals(const workload &of) { return of.count / 100; }

    template <class Table>
    static void run(benchmark::State &state, const workload &of)
    {
        HSH_table *table = table_of<mova_table>(of);
        const HSH_table record = *table;
        const words keys(table->keys, table->keys + table->capacity);
        for (auto _ : state) {
            for (size_t i = 0; i < removals(of); ++i)
                Table::remove(table, keys_of(of).shuffled[i]);
            state.PauseTiming();
            *table = record;
            std::ranges::copy(keys, table->keys);
            state.ResumeTiming();
        }
    }
};

/* ---- growth ---- */

/* So many of the keys are asked for and removed. */
constexpr size_t most_asked = 1000000;

template <class Table>
void live_with(growth::life &of, key_set (*keys_of)(size_t count), int32_t shift)
{
    static const key_set keys = keys_of(of.items());
    const size_t asked = std::min(of.items(), most_asked);
    typename Table::type table = Table::create(shift);
    const auto get_each_of = [&](const words &sought) {
        mova_word sum = 0;
        for (size_t i = 0; i < asked; ++i)
            sum += Table::get(table, sought[i]);
        DoNotOptimize(sum);
    };
    of.fill("insert", [&] {
        for (mova_word key : keys.stored)
            Table::set(table, key);
    });
    of.repeat("find one that is there", asked, [&] { get_each_of(keys.shuffled); });
    of.repeat("find one that is absent", asked, [&] { get_each_of(keys.absent); });
    if constexpr (requires { Table::sum(table); })
        of.repeat("iterate", of.items(), [&] { DoNotOptimize(Table::sum(table)); });
    of.once("remove", asked / 2, [&] {
        for (size_t i = 0; i < asked / 2; ++i)
            Table::remove(table, keys.shuffled[i]);
    });
    Table::release(table);
}

template <class Table>
void live(growth::life &of)
{
    live_with<Table>(of, random_keys, 0);
}

struct mova_lookup_table {
    using type = mova_lookup *;
    static type create(int32_t) { return mova_lu_create(); }
    static void set(type table, mova_word key) { mova_lu_add(table, key, key); }
    static mova_word get(type table, mova_word key) { return mova_lu_get(table, key); }
    static void remove(type table, mova_word key) { mova_lu_remove(table, key); }
    static void release(type table) { mova_lu_release(&table, nullptr); }
};

/* The addresses of blocks, as lookups have them. The pointer lookup has no shift. */
template <class Table>
void live_of_pointers(growth::life &of)
{
    live_with<Table>(of, block_keys, 4);
}

void add_growth()
{
    growth::add("hash_table", {{"mova", live<mova_table>, 1e7},
                               {"flat_hash_map", live<flat_map>, 1e7},
                               {"robin_map", live<robin_map>, 1e7},
                               {"GHashTable", live<glib_table>, 1e7},
                               {"unordered_map", live<standard_map>, 1e7}});
    growth::add("pointer_lookup", {{"mova", live_of_pointers<mova_lookup_table>, 1e7},
                                   {"HSH_ with a shift", live_of_pointers<mova_table>, 1e7},
                                   {"flat_hash_map", live_of_pointers<flat_map>, 1e7},
                                   {"unordered_map", live_of_pointers<standard_map>, 1e7}});
}

/* ---- the rows ---- */

struct targets {
    double glib, flat, robin;
};

template <class Work, class Table>
scoreboard::timed_peer peer(const char *name, const workload &of, double at_least)
{
    return {name, [of](benchmark::State &state) { Work::template run<Table>(state, of); }, at_least};
}

template <class Work>
void add(const char *id, const std::string &text, const workload &of, double operations,
         const std::vector<scoreboard::timed_peer> &peers)
{
    scoreboard::add_timed({id, "hash: " + text, operations, peer<Work, mova_table>("", of, 0).work, peers});
}

template <class Work>
void add_beside_others(const char *id, const std::string &text, const workload &of, targets least = {})
{
    add<Work>(id, text, of, static_cast<double>(of.count),
              {peer<Work, glib_table>("GHashTable", of, least.glib),
               peer<Work, flat_map>("flat_hash_map", of, least.flat),
               peer<Work, robin_map>("robin_map", of, least.robin), peer<Work, standard_map>("unordered_map", of, 0)});
}

template <class Work>
void add_beside_plain_search(const std::string &text, const workload &of, double at_least)
{
    add<Work>("H5", text, of, static_cast<double>(of.count),
              {peer<Work, plain_search>("plain search", of, at_least), peer<Work, flat_map>("flat_hash_map", of, 0),
               peer<Work, glib_table>("GHashTable", of, 0)});
}

void add_beside_literal_removal(const std::string &text, const workload &of, double at_least)
{
    add<remove_few>("H4", text, of, static_cast<double>(remove_few::removals(of)),
                    {peer<remove_few, literal_removal>("literal repair", of, at_least)});
}

void add_rows()
{
    const workload random_1e3 = {random_keys, 1000, 0}, random_1e5 = {random_keys, 100000, 0};
    const workload random_9e5 = {random_keys, 900000, 0}, random_4e6 = {random_keys, 4000000, 0};
    const workload dense_1e3 = {dense_keys, 1000, 0}, dense = {dense_keys, 100000, 0},
                   dense_9e5 = {dense_keys, 900000, 0};
    const workload blocks = {block_keys, 900000, 0}, shifted_blocks = {block_keys, 900000, 4};
    const workload pages = {page_keys, 900000, 12}, crowded_pages = {page_keys, 1700, 0};

    add_beside_others<hit>("H1", "hit, random keys, 1e3", random_1e3, {3, 1.5, 0});
    add_beside_others<hit>("H1", "hit, random keys, 1e5", random_1e5, {2, 0.9, 0});
    add_beside_others<hit>("H1", "hit, random keys, 9e5", random_9e5, {1.8, 1.1, 0});
    add_beside_others<hit>("H1", "hit, random keys, 4e6", random_4e6, {1.8, 1.2, 0});
    add_beside_others<miss>("H1", "miss, random keys, 9e5", random_9e5);
    add_beside_others<hit>("H2", "hit, dense keys, 1e3", dense_1e3, {0, 2.5, 0.9});
    add_beside_others<hit>("H2", "hit, dense keys, 1e5", dense, {0, 4, 1.2});
    add_beside_others<hit>("H2", "hit, dense keys, 9e5", dense_9e5, {0, 4, 1.1});
    add_beside_others<miss>("H2", "miss beside dense keys, 1e5", dense);
    add_beside_others<insert>("H3", "insert, random keys, 1e3", random_1e3, {0, 1.2, 0});
    add_beside_others<insert>("H3", "insert, random keys, 1e5", random_1e5, {0, 1.2, 0});
    add_beside_others<insert>("H3", "insert, random keys, 9e5", random_9e5, {0, 1.15, 1.8});
    add_beside_others<insert>("H3", "insert, random keys, 4e6", random_4e6, {0, 1.3, 0});
    add_beside_others<insert>("H3", "insert, dense keys, 1e5", dense);
    add_beside_others<iterate>("H3", "iterate, random keys, 9e5", random_9e5);
    add_beside_others<remove_all>("H4", "remove all, random keys, 1e5", random_1e5);
    add_beside_literal_removal("remove at load .87, random", {random_keys, 114000, 0}, 3.5);
    add_beside_literal_removal("remove at load .87, blocks, shift 4", {block_keys, 114000, 4}, 0);
    add_beside_literal_removal("remove at load .5, random", {random_keys, 66000, 0}, 0);
    add_beside_literal_removal("remove pages, shift 0, 1700", crowded_pages, 0);
    add_beside_plain_search<hit>("hit, blocks of 16, shift 0, 9e5", blocks, 1.5);
    add_beside_plain_search<miss>("miss, blocks of 16, shift 0, 9e5", blocks, 1.5);
    add_beside_plain_search<miss>("miss, blocks of 16, shift 4, 9e5", shifted_blocks, 0);
    add_beside_plain_search<hit>("hit, pages, shift 12, 9e5", pages, 0);
    add_beside_plain_search<hit>("hit, pages, shift 0, 1700", crowded_pages, 0);
}

const bool registered = [] {
    add_rows();
    add_growth();
    return true;
}();

} // namespace
