/* SPDX-License-Identifier: MIT */
/* The element list beside the standard library's list and GLib's queue, and the sort of the double list beside that of
   the standard library's list. */
#include <array>
#include <list>
#include <random>
#include <stack>
#include <string>
#include <vector>

#include <glib.h>

#include <bench/growth.h>
#include <bench/scoreboard.h>
#include <mova/lists/double_list.h>
#include <mova/lists/element_list.h>
#include <mova/lists/element_stack.h>

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

/* ---- the stack ---- */

struct mova_stack {
    ES_stack *stack = ES_create(8);
    ~mova_stack() { ES_release(&stack); }
    void push(int64_t number) { ES_push(stack, &number); }
    int64_t pop()
    {
        int64_t number = 0;
        ES_pop(stack, &number);
        return number;
    }
    int64_t top() const
    {
        int64_t number = 0;
        ES_inspect_top(stack, &number);
        return number;
    }
};

template <class Storage>
struct standard_stack {
    std::stack<int64_t, Storage> stack;
    void push(int64_t number) { stack.push(number); }
    int64_t pop()
    {
        const int64_t number = stack.top();
        stack.pop();
        return number;
    }
    int64_t top() const { return stack.top(); }
};
using vector_stack = standard_stack<std::vector<int64_t>>;
using list_stack = standard_stack<std::list<int64_t>>;

constexpr size_t stacks = 1000;

/* Puts one more element on a stack and takes it off, again and again. */
template <class Stack>
void push_and_pop(benchmark::State &state)
{
    Stack stack;
    Stack *reached = &stack;
    stack.push(1);
    for (auto _ : state) {
        for (size_t i = 0; i < stacks; ++i) {
            DoNotOptimize(reached);
            reached->push(1);
            DoNotOptimize(reached);
            DoNotOptimize(reached->pop());
        }
    }
}

/* Adds up what lies on top of so many stacks. */
template <class Stack>
void top(benchmark::State &state)
{
    std::vector<Stack> all(stacks);
    for (Stack &each : all)
        each.push(1);
    for (auto _ : state) {
        int64_t sum = 0;
        for (const Stack &each : all)
            sum += each.top();
        DoNotOptimize(sum);
    }
}

/* A node for each element, as ours has, is what the targets are for. */
void add_stack()
{
    const auto add = [](const char *workload, auto ours, auto of_list, auto of_vector) {
        scoreboard::add_timed({"L8",
                               std::string("element stack: ") + workload,
                               stacks,
                               ours,
                               {{"std::list", of_list, 0.91}, {"std::vector", of_vector, 0}}});
    };
    add("push and pop 8 B", push_and_pop<mova_stack>, push_and_pop<list_stack>, push_and_pop<vector_stack>);
    add("the tops of 1e3 stacks", top<mova_stack>, top<list_stack>, top<vector_stack>);
}

/* ---- growth ---- */

void walk(EL_list *list)
{
    EL_iterator iterator = EL_all_items(list);
    for (void *item; EL_next_item(&iterator, &item);)
        DoNotOptimize(item);
}

void walk(std::list<element<8>> *list)
{
    for (element<8> &each : *list)
        DoNotOptimize(&each);
}

void walk(GQueue *list)
{
    for (GList *node = list->head; node; node = node->next)
        DoNotOptimize(node->data);
}

template <class List>
void live(growth::life &of)
{
    typename List::type list = List::create();
    element<8> appended{};
    of.fill("append 8 B", [&] {
        for (size_t i = 0; i < of.items(); ++i)
            List::append(list, appended);
    });
    of.repeat("walk", of.items(), [&] { walk(list); });
    of.once("release", of.items(), [&] { List::release(list); });
}

template <class Stack>
void live_as_stack(growth::life &of)
{
    Stack stack;
    of.fill("push 8 B", [&] {
        for (size_t i = 0; i < of.items(); ++i)
            stack.push(static_cast<int64_t>(i));
    });
    of.repeat("push and pop one more", 1, [&] {
        stack.push(1);
        DoNotOptimize(stack.pop());
    });
    of.once("pop", of.items(), [&] {
        for (size_t i = 0; i < of.items(); ++i)
            DoNotOptimize(stack.pop());
    });
}

void live_sorted_in_mova(growth::life &of)
{
    const std::vector<double> values = random_values(of.items());
    DBLL_list *list = DBLL_create();
    of.fill("append", [&] {
        for (double value : values)
            DBLL_add_double(list, value);
    });
    of.once("sort", of.items(), [&] { DBLL_sort(list); });
    of.once("release", of.items(), [&] { DBLL_release(&list); });
}

void live_sorted_in_standard(growth::life &of)
{
    const std::vector<double> values = random_values(of.items());
    std::list<double> list;
    of.fill("append", [&] {
        for (double value : values)
            list.push_back(value);
    });
    of.once("sort", of.items(), [&] { list.sort(); });
    of.once("release", of.items(), [&] { list.clear(); });
}

const bool registered = [] {
    add_stack();
    growth::add("element_list", {{"mova", live<mova_list<8>>, 1e8},
                                 {"std::list", live<standard_list<8>>, 1e8},
                                 {"GQueue", live<glib_queue<8>>, 1e7}});
    growth::add("element_stack", {{"mova", live_as_stack<mova_stack>, 1e8},
                                  {"std::list", live_as_stack<list_stack>, 1e8},
                                  {"std::vector", live_as_stack<vector_stack>, 1e8}});
    growth::add("double_list", {{"mova", live_sorted_in_mova, 1e7}, {"std::list", live_sorted_in_standard, 1e7}});
    add_sizes(1000, "1e3", 0);
    add_sizes(100000, "1e5", 0);
    add_sizes(2000000, "2e6", 1.7);
    add_sort(1000, "1e3");
    add_sort(100000, "1e5");
    return true;
}();

} // namespace
