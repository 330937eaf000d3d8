/* SPDX-License-Identifier: MIT */
/* The colour table beside what would otherwise keep the free indices and the colours. */
#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <unordered_map>
#include <vector>

#include <boost/dynamic_bitset.hpp>

#include <bench/growth.h>
#include <bench/scoreboard.h>
#include <mova/clut/colour_table.h>

namespace {

using benchmark::DoNotOptimize;

constexpr int32_t size = 65536;

/* Each contender hands out the lowest index that is free, from `first` on. Each row runs in a process of its own, which
   has one colour table. */
struct mova_indices {
    static void init()
    {
        RGBLUT_init(size, nullptr, 0);
        CLUT_new_index();
        CLUT_release_index(first);
    }

    mova_indices() { [[maybe_unused]] static const bool once = (init(), true); }

    static constexpr int32_t first = 40;
    int32_t take() { return CLUT_new_index(); }
    void give_back(int32_t index) { CLUT_release_index(index); }
};

struct set_indices {
    set_indices()
    {
        for (int32_t index = 0; index < size; ++index)
            free_ones.insert(free_ones.end(), index);
    }

    int32_t take()
    {
        const int32_t index = *free_ones.begin();
        free_ones.erase(free_ones.begin());
        return index;
    }
    void give_back(int32_t index) { free_ones.insert(index); }

    std::set<int32_t> free_ones;
};

struct bitset_indices {
    bitset_indices() : free_ones(size) { free_ones.set(); }

    int32_t take()
    {
        const std::size_t index = free_ones.find_first();
        free_ones.reset(index);
        return static_cast<int32_t>(index);
    }
    void give_back(int32_t index) { free_ones.set(static_cast<std::size_t>(index)); }

    boost::dynamic_bitset<uint64_t> free_ones;
};

constexpr int32_t requests = 60000;

/* Requests many indices and gives them back in random order. */
template <class Indices>
void take_and_give_back(benchmark::State &state)
{
    Indices indices;
    std::vector<int32_t> taken(requests);
    std::mt19937 engine(1);
    for (auto _ : state) {
        for (int32_t &index : taken)
            index = indices.take();
        state.PauseTiming();
        std::shuffle(taken.begin(), taken.end(), engine);
        state.ResumeTiming();
        for (int32_t index : taken)
            indices.give_back(index);
    }
}

constexpr int32_t exchanges = 1000;

/* Of a table that is nearly full, gives a low and a high index back and requests both again: the second lies far. */
template <class Indices>
void exchange_far_indices(benchmark::State &state)
{
    Indices indices;
    std::vector<int32_t> taken(requests);
    for (int32_t &index : taken)
        index = indices.take();
    for (auto _ : state) {
        for (int32_t i = 0; i < exchanges; ++i) {
            indices.give_back(taken.front());
            indices.give_back(taken.back());
            DoNotOptimize(indices.take());
            DoNotOptimize(indices.take());
        }
    }
    for (int32_t index : taken)
        indices.give_back(index);
}

struct colour {
    int16_t red, green, blue;
};

struct mova_colours {
    mova_colours() { [[maybe_unused]] static const bool once = (RGBLUT_init(size, nullptr, 0), true); }
    void set(int32_t index, colour value) { CLUT_set(index, value.red, value.green, value.blue); }
    colour get(int32_t index) const
    {
        colour value;
        CLUT_get(index, &value.red, &value.green, &value.blue);
        return value;
    }
};

/* The same table, read by calls. */
struct called_mova_colours : mova_colours {
    void (*volatile get_call)(int32_t, int16_t *, int16_t *, int16_t *) = CLUT_get;
    colour get(int32_t index) const
    {
        colour value;
        get_call(index, &value.red, &value.green, &value.blue);
        return value;
    }
};

struct vector_colours {
    std::vector<colour> colours = std::vector<colour>(size);
    void set(int32_t index, colour value) { colours[static_cast<std::size_t>(index)] = value; }
    colour get(int32_t index) const { return colours.at(static_cast<std::size_t>(index)); }
};

struct map_colours {
    std::unordered_map<int32_t, colour> colours;
    void set(int32_t index, colour value) { colours[index] = value; }
    colour get(int32_t index) const { return colours.find(index)->second; }
};

/* Reads the colours of all indices in random order. */
template <class Colours>
void get_colours(benchmark::State &state)
{
    static Colours colours;
    std::vector<int32_t> indices;
    for (int32_t index = 0; index < size; ++index) {
        colours.set(index, {static_cast<int16_t>(index & 255), static_cast<int16_t>(index >> 8), 0});
        indices.push_back(index);
    }
    std::shuffle(indices.begin(), indices.end(), std::mt19937(1));
    for (auto _ : state) {
        int32_t sum = 0;
        for (int32_t index : indices) {
            const colour value = colours.get(index);
            sum += value.red + value.green + value.blue;
        }
        DoNotOptimize(sum);
    }
}

/* ---- growth ---- */

/* A process has one table. */
struct grown_mova_table {
    explicit grown_mova_table(int32_t count)
    {
        [[maybe_unused]] static const bool once = (RGBLUT_init(count + mova_indices::first, nullptr, 0), true);
    }
    int32_t take() { return CLUT_new_index(); }
    void give_back(int32_t index) { CLUT_release_index(index); }
    void set(int32_t index, colour value) { CLUT_set(index, value.red, value.green, value.blue); }
    colour get(int32_t index) const
    {
        colour value;
        CLUT_get(index, &value.red, &value.green, &value.blue);
        return value;
    }
};

struct grown_standard_table {
    std::set<int32_t> free_ones;
    std::vector<colour> colours;
    explicit grown_standard_table(int32_t count) : colours(static_cast<size_t>(count))
    {
        for (int32_t index = 0; index < count; ++index)
            free_ones.insert(free_ones.end(), index);
    }
    int32_t take() { return free_ones.extract(free_ones.begin()).value(); }
    void give_back(int32_t index) { free_ones.insert(index); }
    void set(int32_t index, colour value) { colours[static_cast<size_t>(index)] = value; }
    colour get(int32_t index) const { return colours.at(static_cast<size_t>(index)); }
};

template <class Table>
void live(growth::life &of)
{
    static std::vector<int32_t> taken(of.items());
    Table table(static_cast<int32_t>(of.items()));
    of.fill("request an index", [&] {
        for (int32_t &index : taken)
            index = table.take();
    });
    of.repeat("set a colour", of.items(), [&] {
        for (int32_t index : taken)
            table.set(index, {1, 2, 3});
    });
    std::shuffle(taken.begin(), taken.end(), std::mt19937(1));
    of.repeat("get a colour at random", of.items(), [&] {
        int32_t sum = 0;
        for (int32_t index : taken)
            sum += table.get(index).blue;
        DoNotOptimize(sum);
    });
    of.once("release at random", of.items(), [&] {
        for (int32_t index : taken)
            table.give_back(index);
    });
}

const bool registered = [] {
    growth::add("colour_table",
                {{"mova", live<grown_mova_table>, 1e7}, {"std::set and vector", live<grown_standard_table>, 1e7}});
    scoreboard::add_timed(
        {"K1",
         "colour table: request 6e4 indices, release them in random order",
         requests,
         take_and_give_back<mova_indices>,
         {{"std::set", take_and_give_back<set_indices>, 0}, {"boost bitset", take_and_give_back<bitset_indices>, 0}}});
    scoreboard::add_timed({"K1",
                           "colour table: exchange indices that lie 6e4 apart",
                           exchanges,
                           exchange_far_indices<mova_indices>,
                           {{"std::set", exchange_far_indices<set_indices>, 0},
                            {"boost bitset", exchange_far_indices<bitset_indices>, 0}}});
    scoreboard::add_timed({"K2",
                           "colour table: get 65536 colours in random order",
                           size,
                           get_colours<mova_colours>,
                           {{"vector::at", get_colours<vector_colours>, 0.91},
                            {"unordered_map", get_colours<map_colours>, 0},
                            {"own calls", get_colours<called_mova_colours>, 0}}});
    return true;
}();

} // namespace
