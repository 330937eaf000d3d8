/* SPDX-License-Identifier: MIT */
/* The arrays beside the standard library's vector and set, GLib's array and Boost's flat set, and beside the loops that
   one would write without thinking of speed. */
#include <algorithm>
#include <cstring>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <boost/container/flat_set.hpp>
#include <glib.h>

#include <bench/scoreboard.h>
#include <mova/arrays/block_array.h>
#include <mova/arrays/dynamic_array.h>
#include <mova/arrays/id_lookup_table.h>
#include <mova/arrays/sorted_number_array.h>

namespace {

using benchmark::ClobberMemory;
using benchmark::DoNotOptimize;
using numbers = std::vector<int32_t>;

numbers ascending(int32_t count)
{
    numbers made(static_cast<size_t>(count));
    std::iota(made.begin(), made.end(), 0);
    return made;
}

/* An array of the numbers from 0 on, for as long as it is in scope. */
class mova_array {
public:
    explicit mova_array(int32_t count) : array_(DA_create(4, 1024))
    {
        DA_append(array_, ascending(count).data(), count);
    }
    ~mova_array() { DA_release(array_); }
    mova_array(const mova_array &) = delete;
    mova_array &operator=(const mova_array &) = delete;

    operator DA_array *() const { return array_; }
    int32_t *begin() const { return static_cast<int32_t *>(DA_data(array_)); }
    int32_t *end() const { return begin() + DA_nitems(array_); }

private:
    DA_array *array_;
};

/* Runs `edit` on `container` in every turn of the loop. */
template <class Container, class Edit>
void repeat(benchmark::State &state, Container &&container, Edit edit)
{
    for (auto _ : state) {
        edit(container);
        ClobberMemory();
    }
}

/* ---- appending ---- */

void append_to_mova(benchmark::State &state, int32_t count, int32_t increment)
{
    for (auto _ : state) {
        DA_array *array = DA_create(4, increment);
        for (int32_t i = 0; i < count; ++i)
            DA_append(array, &i, 1);
        DA_release(array);
    }
}

void append_to_mova_block(benchmark::State &state, int32_t count, int32_t increment)
{
    for (auto _ : state) {
        GB_block block;
        GB_init(&block, 4, 1);
        GB_set_inc(&block, increment);
        for (int32_t i = 0; i < count; ++i)
            GB_append_after_last(&block, &i);
        GB_release(&block);
    }
}

void append_to_vector(benchmark::State &state, int32_t count)
{
    for (auto _ : state) {
        numbers vector;
        for (int32_t i = 0; i < count; ++i)
            vector.push_back(i);
        DoNotOptimize(vector.data());
    }
}

void append_to_glib(benchmark::State &state, int32_t count)
{
    for (auto _ : state) {
        GArray *array = g_array_new(FALSE, FALSE, 4);
        for (int32_t i = 0; i < count; ++i)
            g_array_append_val(array, i);
        g_array_free(array, TRUE);
    }
}

using append_work = void (*)(benchmark::State &, int32_t, int32_t);

void add_append(const std::string &name, append_work work, int32_t increment, double vector_target, double glib_target)
{
    constexpr int32_t count = 10000000;
    scoreboard::add_timed(
        {"A5",
         name + " of 1e7 ints, increment " + std::to_string(increment),
         count,
         [=](benchmark::State &state) { work(state, count, increment); },
         {{"std::vector", [](benchmark::State &state) { append_to_vector(state, count); }, vector_target},
          {"GArray", [](benchmark::State &state) { append_to_glib(state, count); }, glib_target}}});
}

/* ---- reordering ---- */

constexpr int32_t many = 100000;

void add_roll(int32_t n, const std::string &amount, double target)
{
    scoreboard::add_timed(
        {"R1",
         "dynamic array: roll 1e5 ints by " + amount,
         many,
         [=](benchmark::State &state) { repeat(state, mova_array(many), [=](DA_array *array) { DA_roll(array, n); }); },
         {{"std::rotate",
           [=](benchmark::State &state) {
               repeat(state, ascending(many),
                      [=](numbers &all) { std::rotate(all.begin(), all.begin() + n, all.end()); });
           },
           target}}});
}

void add_reverse(double target)
{
    scoreboard::add_timed(
        {"R1",
         "dynamic array: reverse 1e5 ints",
         many,
         [](benchmark::State &state) { repeat(state, mova_array(many), [](DA_array *array) { DA_reverse(array); }); },
         {{"std::reverse",
           [](benchmark::State &state) {
               repeat(state, ascending(many), [](numbers &all) { std::reverse(all.begin(), all.end()); });
           },
           target}}});
}

/* One in, one out, so that the length stays. */
void add_insert(double target)
{
    const int32_t number = 7;
    scoreboard::add_timed({"R2",
                           "dynamic array: insert and delete amid 1e5 ints",
                           2,
                           [=](benchmark::State &state) {
                               repeat(state, mova_array(many), [=](DA_array *array) {
                                   DA_insert(array, many / 2, &number, 1);
                                   DA_delete(array, many / 2, 1);
                               });
                           },
                           {{"std::vector",
                             [=](benchmark::State &state) {
                                 repeat(state, ascending(many), [=](numbers &all) {
                                     all.insert(all.begin() + many / 2, number);
                                     all.erase(all.begin() + many / 2);
                                 });
                             },
                             target}}});
}

/* ---- numbers ---- */

/* The loops as one writes them first: a remainder for each number, elements moved one at a time by the size that the array
   states. */
void roll_elements(numbers &all, size_t first, size_t size)
{
    auto *bytes = reinterpret_cast<char *>(all.data());
    const size_t rest = all.size() - first;
    std::vector<char> buffer(first * size);
    std::memcpy(buffer.data(), bytes, first * size);
    for (size_t i = 0; i < rest; ++i)
        std::memcpy(bytes + i * size, bytes + (i + first) * size, size);
    std::memcpy(bytes + rest * size, buffer.data(), first * size);
}

void roll_numbers(numbers &all, int32_t n, int32_t count)
{
    size_t last_below = 0, size = sizeof(int32_t);
    DoNotOptimize(size);
    for (size_t i = 0; i < all.size(); ++i) {
        if (all[i] < n)
            last_below = i;
        all[i] = (all[i] + count - n) % count;
    }
    roll_elements(all, last_below, size);
}

void shift_numbers(numbers &all, int32_t position)
{
    for (int32_t &number : all) {
        if (number >= position)
            ++number;
    }
}

void add_adapt(double roll_target, double insert_target)
{
    scoreboard::add_timed(
        {"S1",
         "sorted numbers: adapt 1e5 for a roll",
         many,
         [](benchmark::State &state) {
             repeat(state, mova_array(many), [](DA_array *array) { SA_adapt_for_roll(array, many / 3, many); });
         },
         {{"literal loop",
           [](benchmark::State &state) {
               repeat(state, ascending(many), [](numbers &all) { roll_numbers(all, many / 3, many); });
           },
           roll_target}}});
    scoreboard::add_timed({"S1",
                           "sorted numbers: adapt 1e5 for an insertion",
                           many,
                           [](benchmark::State &state) {
                               repeat(state, mova_array(many),
                                      [](DA_array *array) { SA_adapt_for_insert(array, many / 3); });
                           },
                           {{"literal loop",
                             [](benchmark::State &state) {
                                 repeat(state, ascending(many), [](numbers &all) { shift_numbers(all, many / 3); });
                             },
                             insert_target}}});
}

/* Even numbers are there, odd ones are not. */
template <class Contains>
void look_up(benchmark::State &state, int32_t count, Contains contains)
{
    std::mt19937 engine(1);
    numbers sought(4096);
    for (int32_t &number : sought)
        number = static_cast<int32_t>(engine() % static_cast<uint32_t>(2 * count));
    for (auto _ : state) {
        for (int32_t number : sought)
            DoNotOptimize(contains(number));
    }
}

template <class Set>
void look_up_in_set(benchmark::State &state, int32_t count)
{
    Set set;
    for (int32_t number = 0; number < count; ++number)
        set.insert(set.end(), 2 * number);
    look_up(state, count, [&](int32_t number) { return set.find(number) != set.end(); });
}

void look_up_in_mova(benchmark::State &state, int32_t count)
{
    mova_array array(count);
    for (int32_t &number : array)
        number *= 2;
    look_up(state, count, [&](int32_t number) { return SA_check_number(array, number); });
}

void add_look_up(int32_t count, const std::string &count_text, double target)
{
    scoreboard::add_timed(
        {"S2",
         "sorted numbers: look one up among " + count_text,
         4096,
         [=](benchmark::State &state) { look_up_in_mova(state, count); },
         {{"flat_set",
           [=](benchmark::State &state) { look_up_in_set<boost::container::flat_set<int32_t>>(state, count); }, target},
          {"std::set", [=](benchmark::State &state) { look_up_in_set<std::set<int32_t>>(state, count); }, 0}}});
}

/* ---- ids ---- */

/* Never read. */
char thing;

/* Every pointer but the last is another than the one that is sought. */
void look_for_id_in_mova(benchmark::State &state, int32_t count)
{
    DA_array *table = io_lut_create();
    for (int32_t i = 1; i < count; ++i)
        io_lut_add(table, nullptr);
    io_lut_add(table, &thing);
    for (auto _ : state)
        DoNotOptimize(io_lut_look_id(table, &thing));
    io_lut_release(&table);
}

void look_for_id_in_vector(benchmark::State &state, int32_t count)
{
    std::vector<void *> words(static_cast<size_t>(count), nullptr);
    words.back() = &thing;
    for (auto _ : state)
        DoNotOptimize(std::find(words.begin(), words.end(), &thing));
}

void add_find_id(int32_t count, const std::string &count_text, double target)
{
    scoreboard::add_timed(
        {"I1",
         "id table: find the last of " + count_text + " pointers",
         static_cast<double>(count),
         [=](benchmark::State &state) { look_for_id_in_mova(state, count); },
         {{"std::find", [=](benchmark::State &state) { look_for_id_in_vector(state, count); }, target}}});
}

const bool registered = [] {
    add_append("dynamic array: append", append_to_mova, 10, 1.5, 2.5);
    add_append("dynamic array: append", append_to_mova, 1024, 1.9, 3);
    add_append("block array: append", append_to_mova_block, 1024, 0, 0);
    add_roll(1, "1", 0);
    add_roll(many / 3, "a third", 6);
    add_roll(many / 2, "half", 0);
    add_reverse(5);
    add_insert(0.95);
    add_adapt(8, 7);
    add_look_up(1000, "1e3", 1.4);
    add_look_up(100000, "1e5", 1.2);
    add_look_up(4000000, "4e6", 0);
    add_find_id(100000, "1e5", 2);
    add_find_id(4000000, "4e6", 0.95);
    return true;
}();

} // namespace
