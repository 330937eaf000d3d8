/* SPDX-License-Identifier: MIT */
/* The arrays beside the standard library's vector and set, GLib's array and Boost's flat set, and beside the loops that
   one would write without thinking of speed. */
#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <boost/container/flat_set.hpp>
#include <glib.h>

#include <bench/growth.h>
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

/* ---- growth ---- */

/* Every array holds the numbers from 0 on. */
struct grown_mova_array {
    DA_array *array = DA_create(4, 1024);
    ~grown_mova_array() { DA_release(array); }
    void append(int32_t number) { DA_append(array, &number, 1); }
    int32_t at(int32_t i) const { return *static_cast<int32_t *>(DA_get_item(array, i)); }
    int32_t size() const { return DA_nitems(array); }
    void edit_amid(int32_t i)
    {
        DA_insert(array, i, &i, 1);
        DA_delete(array, i, 1);
    }
    void reverse() { DA_reverse(array); }
    void roll(int32_t n) { DA_roll(array, n); }
};

struct grown_mova_block {
    GB_block block;
    grown_mova_block()
    {
        GB_init(&block, 4, 1);
        GB_set_inc(&block, 1024);
    }
    ~grown_mova_block() { GB_release(&block); }
    void append(int32_t number) { GB_append_after_last(&block, &number); }
    int32_t at(int32_t i) const { return static_cast<int32_t *>(block.data)[i]; }
    int32_t size() const { return GB_count_items(&block); }
    void edit_amid(int32_t i)
    {
        GB_insert_item(&block, i, &i);
        GB_remove_item(&block, i);
    }
    void reverse() { GB_reverse(&block); }
};

struct grown_vector {
    numbers vector;
    void append(int32_t number) { vector.push_back(number); }
    int32_t at(int32_t i) const { return vector.at(static_cast<size_t>(i)); }
    size_t size() const { return vector.size(); }
    void edit_amid(int32_t i)
    {
        vector.insert(vector.begin() + i, i);
        vector.erase(vector.begin() + i);
    }
    void reverse() { std::reverse(vector.begin(), vector.end()); }
    void roll(int32_t n) { std::rotate(vector.begin(), vector.begin() + n, vector.end()); }
};

struct grown_glib_array {
    GArray *array = g_array_new(FALSE, FALSE, 4);
    ~grown_glib_array() { g_array_free(array, TRUE); }
    void append(int32_t number) { g_array_append_val(array, number); }
    int32_t at(int32_t i) const { return g_array_index(array, int32_t, i); }
    void edit_amid(int32_t i)
    {
        g_array_insert_val(array, static_cast<guint>(i), i);
        g_array_remove_index(array, static_cast<guint>(i));
    }
};

template <class Array>
void live(growth::life &of)
{
    const auto count = static_cast<int32_t>(of.items());
    Array array;
    of.fill("append an int", [&] {
        for (int32_t i = 0; i < count; ++i)
            array.append(i);
    });
    of.repeat("read by index", of.items(), [&] {
        int32_t sum = 0;
        for (int32_t i = 0; i < count; ++i)
            sum ^= array.at(i);
        DoNotOptimize(sum);
    });
    of.repeat("insert and delete in the middle (for each item)", of.items(), [&] { array.edit_amid(count / 2); });
    if constexpr (requires { array.reverse(); })
        of.repeat("reverse", of.items(), [&] { array.reverse(); });
    if constexpr (requires { array.roll(0); })
        of.repeat("roll by a third", of.items(), [&] { array.roll(count / 3); });
}

struct grown_mova_numbers {
    mova_array array;
    explicit grown_mova_numbers(int32_t count) : array(count) {}
    bool contains(int32_t number) { return SA_check_number(array, number); }
    void adapt(int32_t position)
    {
        SA_adapt_for_insert(array, position);
        SA_adapt_for_remove(array, position);
    }
};

template <class Set>
struct grown_set {
    Set set;
    explicit grown_set(int32_t count)
    {
        for (int32_t number = 0; number < count; ++number)
            set.insert(set.end(), number);
    }
    bool contains(int32_t number) { return set.find(number) != set.end(); }
};

template <class Numbers>
void live_sorted(growth::life &of)
{
    const auto count = static_cast<int32_t>(of.items());
    std::mt19937 engine(1);
    std::vector<int32_t> sought(std::min<size_t>(of.items(), 100000));
    for (int32_t &number : sought)
        number = static_cast<int32_t>(engine() % static_cast<uint32_t>(count));
    std::optional<Numbers> all;
    of.fill("fill in order", [&] { all.emplace(count); });
    of.repeat("look up at random", sought.size(), [&] {
        for (int32_t number : sought)
            DoNotOptimize(all->contains(number));
    });
    if constexpr (requires { all->adapt(0); })
        of.repeat("adapt for an insertion and a removal", of.items(), [&] { all->adapt(count); });
}

struct grown_mova_ids {
    DA_array *table = io_lut_create();
    ~grown_mova_ids() { io_lut_release(&table); }
    void add(void *pointer) { io_lut_add(table, pointer); }
    void *at(int32_t id) const { return io_lut_look_ptr(table, id); }
    void find(void *pointer) const { DoNotOptimize(io_lut_look_id(table, pointer)); }
};

/* Ids begin with 1 here too. */
struct grown_vector_ids {
    std::vector<void *> table = {nullptr};
    void add(void *pointer) { table.push_back(pointer); }
    void *at(int32_t id) const { return table.at(static_cast<size_t>(id)); }
    void find(void *pointer) const { DoNotOptimize(std::find(table.begin(), table.end(), pointer)); }
};

template <class Ids>
void live_as_ids(growth::life &of)
{
    const auto count = static_cast<int32_t>(of.items());
    char last;
    Ids ids;
    of.fill("add", [&] {
        for (int32_t i = 1; i < count; ++i)
            ids.add(&thing);
        ids.add(&last);
    });
    of.repeat("pointer of an id", of.items(), [&] {
        for (int32_t id = 1; id <= count; ++id)
            DoNotOptimize(ids.at(id));
    });
    of.repeat("find the id of the last pointer (for each item)", of.items(), [&] { ids.find(&last); });
}

/* Each is reached through a pointer, as by a function that is given the table. */
template <class Ids>
void look_up_ids(benchmark::State &state, int32_t count)
{
    const auto ids = std::make_unique<Ids>();
    for (int32_t i = 0; i < count; ++i)
        ids->add(&thing + i % 2);
    Ids *table = ids.get();
    for (auto _ : state) {
        DoNotOptimize(table);
        uintptr_t sum = 0;
        for (int32_t id = 1; id <= count; ++id)
            sum += reinterpret_cast<uintptr_t>(table->at(id));
        DoNotOptimize(sum);
    }
}

constexpr size_t short_arrays = 1000;

/* Adds up how many elements so many arrays have. */
template <class Array>
void count(benchmark::State &state)
{
    std::vector<Array> arrays(short_arrays);
    arrays.front().append(1);
    for (auto _ : state) {
        size_t sum = 0;
        for (const Array &array : arrays)
            sum += static_cast<size_t>(array.size());
        DoNotOptimize(sum);
    }
}

void add_short_functions()
{
    scoreboard::add_timed(
        {"I1",
         "id table: the pointers of 1e5 ids",
         many,
         [](benchmark::State &state) { look_up_ids<grown_mova_ids>(state, many); },
         {{"vector::at", [](benchmark::State &state) { look_up_ids<grown_vector_ids>(state, many); }, 0.91}}});
    scoreboard::add_timed({"A5",
                           "dynamic array: the counts of 1e3 arrays",
                           short_arrays,
                           count<grown_mova_array>,
                           {{"std::vector", count<grown_vector>, 0.91}}});
}

void add_growth()
{
    growth::add("dynamic_array", {{"mova", live<grown_mova_array>, 1e8},
                                  {"std::vector", live<grown_vector>, 1e8},
                                  {"GArray", live<grown_glib_array>, 1e8}});
    growth::add("block_array", {{"mova", live<grown_mova_block>, 1e8}, {"std::vector", live<grown_vector>, 1e8}});
    growth::add("sorted_number_array", {{"mova", live_sorted<grown_mova_numbers>, 1e8},
                                        {"flat_set", live_sorted<grown_set<boost::container::flat_set<int32_t>>>, 1e8},
                                        {"std::set", live_sorted<grown_set<std::set<int32_t>>>, 1e7}});
    growth::add("id_lookup_table",
                {{"mova", live_as_ids<grown_mova_ids>, 1e8}, {"std::vector", live_as_ids<grown_vector_ids>, 1e8}});
}

const bool registered = [] {
    add_short_functions();
    add_growth();
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
