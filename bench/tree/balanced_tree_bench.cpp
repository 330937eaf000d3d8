/* SPDX-License-Identifier: MIT */
/* The balanced tree beside GLib's, the standard library's and Boost's, all asking the same comparison through a
   pointer. */
#include <algorithm>
#include <numeric>
#include <optional>
#include <queue>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include <glib.h>

#include <boost/intrusive/avl_set.hpp>

#include <bench/growth.h>
#include <bench/scoreboard.h>
#include <mova/tree/balanced_tree.h>

namespace {

using benchmark::DoNotOptimize;

/* What every contender holds: a key, and room for Boost's links, which lie in the item. */
struct record : boost::intrusive::avl_set_base_hook<> {
    int32_t key;
};

int32_t compare_keys(void *a, void *b)
{
    const int32_t left = static_cast<record *>(a)->key, right = static_cast<record *>(b)->key;
    return (left > right) - (left < right);
}

/* Where the compiler cannot see which function it is. */
int32_t (*volatile const comparison)(void *, void *) = compare_keys;

struct goes_before {
    int32_t (*compare)(void *, void *) = comparison;

    bool operator()(const record *a, const record *b) const
    {
        return compare(const_cast<record *>(a), const_cast<record *>(b)) < 0;
    }
    bool operator()(const record &a, const record &b) const { return (*this)(&a, &b); }
};

struct mova_tree {
    tree *t = GT_create_with_dupl_not_allowed(comparison);

    ~mova_tree() { GT_release(&t); }
    void insert(record &item) { GT_insert_item(t, &item); }
    void *find(record &key)
    {
        tree_item *position;
        return GT_search_item(t, &key, &position) ? position->item : nullptr;
    }
    void remove(record &key)
    {
        tree_item *position;
        if (GT_search_item(t, &key, &position))
            GT_remove_item(t, position);
    }

    template <class Visit>
    void walk(Visit visit)
    {
        tree_iter *iterator = GT_all_items(t);
        for (void *item; GT_next_item(iterator, &item);)
            visit(*static_cast<record *>(item));
    }
};

/* As mova_tree, while a program walks the tree with so many iterators. */
template <int Live>
struct walked_mova_tree : mova_tree {
    walked_mova_tree()
    {
        for (int i = 0; i < Live; ++i)
            std::ignore = GT_all_items(t);
    }
    ~walked_mova_tree()
    {
        while (t->iterators->first)
            GT_end_iterator(static_cast<tree_iter *>(t->iterators->first->item));
    }
};

struct glib_tree {
    GTree *t = g_tree_new(reinterpret_cast<GCompareFunc>(comparison));

    ~glib_tree() { g_tree_destroy(t); }
    void insert(record &item) { g_tree_insert(t, &item, &item); }
    void *find(record &key) { return g_tree_lookup(t, &key); }
    void remove(record &key)
    {
        if (g_tree_lookup(t, &key))
            g_tree_remove(t, &key);
    }

    template <class Visit>
    void walk(Visit visit)
    {
        for (GTreeNode *node = g_tree_node_first(t); node; node = g_tree_node_next(node))
            visit(*static_cast<record *>(g_tree_node_value(node)));
    }
};

template <class Set>
struct standard_tree {
    Set set;

    void insert(record &item) { set.insert(&item); }
    void *find(record &key)
    {
        const auto at = set.find(&key);
        return at == set.end() ? nullptr : *at;
    }
    void remove(record &key)
    {
        const auto at = set.find(&key);
        if (at != set.end())
            set.erase(at);
    }

    template <class Visit>
    void walk(Visit visit)
    {
        for (record *item : set)
            visit(*item);
    }
};

using standard_set = standard_tree<std::set<record *, goes_before>>;
using standard_multiset = standard_tree<std::multiset<record *, goes_before>>;

struct boost_set {
    boost::intrusive::avl_set<record, boost::intrusive::compare<goes_before>> set;

    ~boost_set() { set.clear(); }
    void insert(record &item) { set.insert(item); }
    void *find(record &key)
    {
        const auto at = set.find(key);
        return at == set.end() ? nullptr : &*at;
    }
    void remove(record &key)
    {
        const auto at = set.find(key);
        if (at != set.end())
            set.erase(at);
    }

    template <class Visit>
    void walk(Visit visit)
    {
        for (record &item : set)
            visit(item);
    }
};

/* Records whose keys are the numbers from 0, in random order. */
std::vector<record> shuffled_records(size_t count, unsigned seed)
{
    std::vector<record> records(count);
    std::vector<int32_t> keys(count);
    std::iota(keys.begin(), keys.end(), 0);
    std::shuffle(keys.begin(), keys.end(), std::mt19937(seed));
    for (size_t i = 0; i < count; ++i)
        records[i].key = keys[i];
    return records;
}

template <class Tree>
void insert_all(Tree &tree, std::vector<record> &items)
{
    for (record &item : items)
        tree.insert(item);
}

/* A tree that rows may share which do not change it: the longest part of them would be to make it. */
template <class Tree>
Tree &filled(size_t count)
{
    static std::vector<record> items = shuffled_records(count, 1);
    static Tree tree;
    static const bool filled = (insert_all(tree, items), true);
    DoNotOptimize(filled);
    return tree;
}

template <class Tree>
void insert(benchmark::State &state, size_t count)
{
    std::vector<record> items = shuffled_records(count, 1);
    for (auto _ : state) {
        std::optional<Tree> tree(std::in_place);
        insert_all(*tree, items);
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}

template <class Tree>
void search(benchmark::State &state, size_t count)
{
    Tree &tree = filled<Tree>(count);
    std::vector<record> keys = shuffled_records(count, 2);
    for (auto _ : state) {
        for (record &key : keys)
            DoNotOptimize(tree.find(key));
    }
}

template <class Tree>
void find_and_remove(benchmark::State &state, size_t count)
{
    std::vector<record> items = shuffled_records(count, 1), keys = shuffled_records(count, 2);
    for (auto _ : state) {
        state.PauseTiming();
        Tree tree;
        insert_all(tree, items);
        state.ResumeTiming();
        for (record &key : keys)
            tree.remove(key);
    }
}

template <class Tree>
void walk(benchmark::State &state, size_t count)
{
    Tree &tree = filled<Tree>(count);
    for (auto _ : state) {
        int64_t sum = 0;
        tree.walk([&sum](const record &item) { sum += item.key; });
        DoNotOptimize(sum);
    }
}

/* ---- events: the first is taken, and put off, again and again ---- */

struct event {
    double due;
    int64_t what;
};

struct mova_events {
    std::vector<event> events;
    tree *t = GT_create_with_dupl_allowed([](void *a, void *b) {
        const double left = static_cast<event *>(a)->due, right = static_cast<event *>(b)->due;
        return static_cast<int32_t>(left > right) - static_cast<int32_t>(left < right);
    });

    explicit mova_events(std::vector<event> waiting) : events(std::move(waiting))
    {
        for (event &each : events)
            GT_insert_item(t, &each);
    }
    ~mova_events() { GT_release(&t); }
    void put_off(double delay)
    {
        auto *first = static_cast<event *>(t->first->item);
        GT_remove_first_item(t);
        first->due += delay;
        GT_insert_item(t, first);
    }
};

struct is_due_later {
    bool operator()(const event &a, const event &b) const { return a.due > b.due; }
};

struct heap_of_events {
    std::priority_queue<event, std::vector<event>, is_due_later> heap;

    explicit heap_of_events(std::vector<event> waiting) : heap(is_due_later(), std::move(waiting)) {}
    void put_off(double delay)
    {
        event first = heap.top();
        heap.pop();
        first.due += delay;
        heap.push(first);
    }
};

struct is_due_before {
    bool operator()(const event &a, const event &b) const { return a.due < b.due; }
};

struct set_of_events {
    std::multiset<event, is_due_before> set;

    explicit set_of_events(const std::vector<event> &waiting) : set(waiting.begin(), waiting.end()) {}
    void put_off(double delay)
    {
        auto first = set.extract(set.begin());
        first.value().due += delay;
        set.insert(std::move(first));
    }
};

template <class Events>
void put_off(benchmark::State &state, size_t count)
{
    std::mt19937 random(1);
    std::exponential_distribution<double> delay;
    std::vector<event> waiting(count);
    for (event &each : waiting)
        each.due = delay(random);
    std::vector<double> delays(count);
    for (double &each : delays)
        each = delay(random);
    Events events(std::move(waiting));
    for (auto _ : state) {
        for (const double each : delays)
            events.put_off(each);
    }
}

template <class Tree>
void live(growth::life &of)
{
    static std::vector<record> items = shuffled_records(of.items(), 1), keys = shuffled_records(of.items(), 2);
    const size_t asked = std::min<size_t>(of.items(), 1000000);
    std::optional<Tree> tree(std::in_place);
    of.fill("insert", [&] { insert_all(*tree, items); });
    of.repeat("search", asked, [&] {
        for (size_t i = 0; i < asked; ++i)
            DoNotOptimize(tree->find(keys[i]));
    });
    of.repeat("walk", of.items(), [&] {
        int64_t sum = 0;
        tree->walk([&sum](const record &item) { sum += item.key; });
        DoNotOptimize(sum);
    });
    const size_t removed = asked / 2;
    of.once("find and remove", removed, [&] {
        for (size_t i = 0; i < removed; ++i)
            tree->remove(keys[i]);
    });
    of.once("release", of.items() - removed, [&] { tree.reset(); });
}

struct size {
    size_t count;
    const char *text;
    double insert_glib, insert_set, search_glib, search_boost, remove_glib, remove_set, walk_glib; /* targets */
};

void add_rows(const size &of)
{
    const std::string items = std::string(", ") + of.text + " items";
    scoreboard::add_sized("T1", "balanced tree: insert" + items, of.count, insert<mova_tree>,
                          {{"GTree", insert<glib_tree>, of.insert_glib},
                           {"std::set", insert<standard_set>, of.insert_set},
                           {"std::multiset", insert<standard_multiset>, 0},
                           {"boost avl_set", insert<boost_set>, 0}});
    scoreboard::add_sized("T2", "balanced tree: search" + items, of.count, search<mova_tree>,
                          {{"GTree", search<glib_tree>, of.search_glib},
                           {"std::set", search<standard_set>, 0},
                           {"boost avl_set", search<boost_set>, of.search_boost}});
    scoreboard::add_sized("T3", "balanced tree: find and remove" + items, of.count, find_and_remove<mova_tree>,
                          {{"GTree", find_and_remove<glib_tree>, of.remove_glib},
                           {"std::set", find_and_remove<standard_set>, of.remove_set},
                           {"boost avl_set", find_and_remove<boost_set>, 0}});
    scoreboard::add_sized("T4", "balanced tree: walk and touch each item" + items, of.count, walk<mova_tree>,
                          {{"GTree", walk<glib_tree>, of.walk_glib},
                           {"std::set", walk<standard_set>, 0},
                           {"boost avl_set", walk<boost_set>, 0}});
    scoreboard::add_sized(
        "T5", "events: take the first and put it off" + items, of.count, put_off<mova_events>,
        {{"std::priority_queue", put_off<heap_of_events>, 0}, {"std::multiset", put_off<set_of_events>, 0}});
}

const bool registered = [] {
    growth::add("balanced_tree", {{"mova", live<mova_tree>, 1e7},
                                  {"GTree", live<glib_tree>, 1e7},
                                  {"std::set", live<standard_set>, 1e7},
                                  {"boost avl_set", live<boost_set>, 1e7}});
    add_rows({1000, "1e3", 1.15, 1.05, 1.1, 0, 0, 0, 0});
    add_rows({100000, "1e5", 1.5, 2, 1.4, 0, 0, 0, 0});
    add_rows({1000000, "1e6", 1.6, 1.9, 1.5, 0.9, 1.2, 1.3, 1.35});
    scoreboard::add_sized("T1", "balanced tree: insert, 1e5 items, no iterators", 100000, insert<mova_tree>,
                          {{"with 1", insert<walked_mova_tree<1>>, 0}, {"with 8", insert<walked_mova_tree<8>>, 0}});
    return true;
}();

} // namespace
