/* SPDX-License-Identifier: MIT */
/* The element list beside the standard library's list and GLib's queue, and the sort of the double list beside that of
   the standard library's list. */
#include <array>
#include <list>
#include <random>
#include <string>
#include <vector>

#include <glib.h>

#include <bench/scoreboard.h>
#include <mova/lists/double_list.h>
#include <mova/lists/element_list.h>

namespace {

using benchmark::DoNotOptimize;

template <size_t Size>
using element = std::array<char, Size>;

template <size_t Size>
struct mova_list {
    using type = EL_list *;
    static type create() { return EL_create(Size); }
    static void append(type list, const element<Size> &appended) { EL_append_after_last(list, appended.data()); }
    static void release(type list) { EL_release(&list); }
};

template <size_t Size>
struct standard_list {
    using type = std::list<element<Size>> *;
    static type create() { return new std::list<element<Size>>; }
    static void append(type list, const element<Size> &appended) { list->push_back(appended); }
    static void release(type list) { delete list; }
};

/* A queue of pointers: each element is a block of its own. */
template <size_t Size>
struct glib_queue {
    using type = GQueue *;
    static type create() { return g_queue_new(); }
    static void append(type list, const element<Size> &appended)
    {
        g_queue_push_tail(list, g_memdup2(appended.data(), Size));
    }
    static void release(type list) { g_queue_free_full(list, g_free); }
};

template <class List, size_t Size>
void append_and_release(benchmark::State &state, size_t count)
{
    element<Size> appended{};
    for (auto _ : state) {
        typename List::type list = List::create();
        for (size_t i = 0; i < count; ++i) {
            DoNotOptimize(appended);
            List::append(list, appended);
        }
        List::release(list);
    }
}

template <size_t Size>
void add_size(size_t count, const std::string &count_text, double target)
{
    auto with = [count](void (*work)(benchmark::State &, size_t)) {
        return [=](benchmark::State &state) { work(state, count); };
    };
    scoreboard::add_timed({"L5",
                           "element list: append and release " + std::to_string(Size) + " B, " + count_text,
                           static_cast<double>(count),
                           with(append_and_release<mova_list<Size>, Size>),
                           {{"std::list", with(append_and_release<standard_list<Size>, Size>), target},
                            {"GQueue", with(append_and_release<glib_queue<Size>, Size>), 0}}});
}

void add_sizes(size_t count, const std::string &count_text, double target)
{
    add_size<8>(count, count_text, target);
    add_size<16>(count, count_text, target);
    add_size<64>(count, count_text, target);
}

/* ---- sorting ---- */

std::vector<double> random_values(size_t count)
{
    std::mt19937_64 engine(count);
    std::uniform_real_distribution<double> any(-1e6, 1e6);
    std::vector<double> values(count);
    for (double &value : values)
        value = any(engine);
    return values;
}

/* Filling is timed too: the one sort moves values and the other nodes, so a list that was sorted is no longer what a
   fresh one is. */
void sort_double_list(benchmark::State &state, size_t count)
{
    const std::vector<double> values = random_values(count);
    for (auto _ : state) {
        DBLL_list *list = DBLL_create();
        for (double value : values)
            DBLL_add_double(list, value);
        DBLL_sort(list);
        DBLL_release(&list);
    }
}

void sort_standard_list(benchmark::State &state, size_t count)
{
    const std::vector<double> values = random_values(count);
    for (auto _ : state) {
        std::list<double> list(values.begin(), values.end());
        list.sort();
        DoNotOptimize(list.front());
    }
}

void add_sort(size_t count, const std::string &count_text)
{
    scoreboard::add_timed({"L7",
                           "double list: fill, sort and release, " + count_text,
                           static_cast<double>(count),
                           [=](benchmark::State &state) { sort_double_list(state, count); },
                           {{"std::list", [=](benchmark::State &state) { sort_standard_list(state, count); }, 0}}});
}

const bool registered = [] {
    add_sizes(1000, "1e3", 0);
    add_sizes(100000, "1e5", 0);
    add_sizes(2000000, "2e6", 1.7);
    add_sort(1000, "1e3");
    add_sort(100000, "1e5");
    return true;
}();

} // namespace
