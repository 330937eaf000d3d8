/* SPDX-License-Identifier: MIT */
/* The generic pointer list beside GLib's queue and the standard library's list. */
#include <algorithm>
#include <list>
#include <string>
#include <vector>

#include <glib.h>

#include <bench/growth.h>
#include <bench/scoreboard.h>
#include <mova/lists/generic_list.h>

namespace {

using benchmark::DoNotOptimize;

/* Every contender stores the same pointers. */
char items[2000000];
char absent;

struct mova_list {
    using type = GL_list *;
    static type create() { return GL_create(); }
    static void append(type list, void *item) { GL_append_after_last(list, item); }
    static bool find(type list, const void *item)
    {
        GL_node *position;
        return GL_find_item(list, item, &position);
    }
    static type copy(type list) { return GL_copy(list); }
    static int32_t count(type list) { return GL_count_items(list); }
    static void release(type list) { GL_release(&list); }

    static GL_node *first(type list) { return list->first; }
    static void edit_behind(type list, GL_node *position)
    {
        GL_remove_item(list, GL_insert_after(list, position, items));
    }

    static void walk(type list)
    {
        GL_iterator iterator = GL_all_items(list);
        for (void *item; GL_next_item(&iterator, &item);)
            DoNotOptimize(item);
    }
};

/* The same list, stepped through by calls of the exported function. */
struct called_mova_list : mova_list {
    static void walk(type list)
    {
        int (*volatile next_item)(GL_iterator *, void **) = GL_next_item;
        int (*step)(GL_iterator *, void **) = next_item;
        GL_iterator iterator = GL_all_items(list);
        for (void *item; step(&iterator, &item);)
            DoNotOptimize(item);
    }
};

struct glib_queue {
    using type = GQueue *;
    static type create() { return g_queue_new(); }
    static void append(type list, void *item) { g_queue_push_tail(list, item); }
    static bool find(type list, const void *item) { return g_queue_find(list, item); }
    static type copy(type list) { return g_queue_copy(list); }
    static guint count(type list) { return g_queue_get_length(list); }
    static void release(type list) { g_queue_free(list); }

    static GList *first(type list) { return g_queue_peek_head_link(list); }
    static void edit_behind(type list, GList *position)
    {
        g_queue_insert_after(list, position, items);
        g_queue_delete_link(list, position->next);
    }

    static void walk(type list)
    {
        for (GList *node = list->head; node; node = node->next)
            DoNotOptimize(node->data);
    }
};

struct standard_list {
    using type = std::list<void *> *;
    static type create() { return new std::list<void *>; }
    static void append(type list, void *item) { list->push_back(item); }
    static bool find(type list, const void *item) { return std::find(list->begin(), list->end(), item) != list->end(); }
    static type copy(type list) { return new std::list<void *>(*list); }
    static size_t count(type list) { return list->size(); }
    static void release(type list) { delete list; }

    static auto first(type list) { return list->begin(); }
    static void edit_behind(type list, std::list<void *>::iterator position)
    {
        list->erase(list->insert(std::next(position), items));
    }

    static void walk(type list)
    {
        for (void *item : *list)
            DoNotOptimize(item);
    }
};

template <class List>
typename List::type filled(size_t count)
{
    typename List::type list = List::create();
    for (size_t i = 0; i < count; ++i)
        List::append(list, items + i);
    return list;
}

template <class List>
void append_and_release(benchmark::State &state, size_t count)
{
    for (auto _ : state)
        List::release(filled<List>(count));
}

/* Does `work` again and again on one list. */
template <class List, class Work>
void on_one_list(benchmark::State &state, size_t count, Work work)
{
    typename List::type list = filled<List>(count);
    for (auto _ : state)
        work(list);
    List::release(list);
}

template <class List>
void walk(benchmark::State &state, size_t count)
{
    on_one_list<List>(state, count, List::walk);
}

template <class List>
void find_absent(benchmark::State &state, size_t count)
{
    on_one_list<List>(state, count, [](auto list) { DoNotOptimize(List::find(list, &absent)); });
}

template <class List>
void copy_and_release(benchmark::State &state, size_t count)
{
    on_one_list<List>(state, count, [](auto list) { List::release(List::copy(list)); });
}

/* Adds up how many items so many lists have. */
template <class List>
void count(benchmark::State &state, size_t lists)
{
    std::vector<typename List::type> all;
    for (size_t i = 0; i < lists; ++i)
        all.push_back(filled<List>(i % 3));
    for (auto _ : state) {
        size_t sum = 0;
        for (typename List::type list : all)
            sum += static_cast<size_t>(List::count(list));
        DoNotOptimize(sum);
    }
    for (typename List::type list : all)
        List::release(list);
}

template <class List>
void live(growth::life &of)
{
    typename List::type list = List::create();
    of.fill("append", [&] {
        for (size_t i = 0; i < of.items(); ++i)
            List::append(list, items);
    });
    of.repeat("walk", of.items(), [&] { List::walk(list); });
    of.repeat("find an absent item", of.items(), [&] { DoNotOptimize(List::find(list, &absent)); });
    of.repeat("insert and remove at a position", 1, [&] { List::edit_behind(list, List::first(list)); });
    of.once("release", of.items(), [&] { List::release(list); });
}

struct size {
    size_t count;
    const char *text;
};

void add_rows(const size &of)
{
    /* Each target holds at the one size that it was set for. */
    auto only_at = [&](size_t count, double target) { return of.count == count ? target : 0; };
    const std::string items_text = std::string(", ") + of.text + " items";
    scoreboard::add_sized("L1", "pointer list: append and release" + items_text, of.count,
                          append_and_release<mova_list>,
                          {{"GQueue", append_and_release<glib_queue>, only_at(2000000, 1.7)},
                           {"std::list", append_and_release<standard_list>, only_at(2000000, 2.5)}});
    scoreboard::add_sized("L2", "pointer list: walk inline" + items_text, of.count, walk<mova_list>,
                          {{"std::list", walk<standard_list>, only_at(100000, 1.0)},
                           {"GQueue", walk<glib_queue>, 0},
                           {"own calls", walk<called_mova_list>, 0}});
    scoreboard::add_sized("L3", "pointer list: find an absent item" + items_text, of.count, find_absent<mova_list>,
                          {{"g_queue_find", find_absent<glib_queue>, only_at(100000, 2.8)},
                           {"std::find", find_absent<standard_list>, 0}});
    scoreboard::add_sized("L4", "pointer list: copy and release" + items_text, of.count, copy_and_release<mova_list>,
                          {{"GQueue", copy_and_release<glib_queue>, only_at(100000, 1.6)},
                           {"std::list", copy_and_release<standard_list>, only_at(100000, 1.7)}});
}

const bool registered = [] {
    for (const size &of : {size{1000, "1e3"}, {100000, "1e5"}, {2000000, "2e6"}})
        add_rows(of);
    scoreboard::add_sized("L9", "pointer list: the counts of 1e3 lists", 1000, count<mova_list>,
                          {{"std::list", count<standard_list>, 0.91}, {"GQueue", count<glib_queue>, 0}});
    growth::add(
        "generic_list",
        {{"mova", live<mova_list>, 1e8}, {"GQueue", live<glib_queue>, 1e8}, {"std::list", live<standard_list>, 1e8}});
    return true;
}();

} // namespace
