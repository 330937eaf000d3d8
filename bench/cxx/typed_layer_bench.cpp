/* SPDX-License-Identifier: MIT */
/* The typed layer beside other libraries: the tree with its comparison compiled in beside the standard library's and Abseil's,
   with theirs compiled in; and the table of records found by strings beside Abseil's. */
#include <algorithm>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <absl/container/btree_set.h>
#include <absl/container/flat_hash_map.h>

#include <bench/scoreboard.h>
#include <mova/cxx.h>

namespace {

using benchmark::DoNotOptimize;

/* ---- the tree with its comparison compiled in ------------------------------------------------------------------ */

struct record {
    int32_t key;
};

struct by_key {
    auto operator()(const record &a, const record &b) const { return a.key <=> b.key; }
};
struct less_key {
    bool operator()(const record *a, const record *b) const { return a->key < b->key; }
};

std::vector<record> shuffled_records(size_t count, unsigned seed)
{
    std::vector<record> records(count);
    for (size_t i = 0; i < count; ++i)
        records[i].key = static_cast<int32_t>(i);
    std::shuffle(records.begin(), records.end(), std::mt19937(seed));
    return records;
}

struct typed_tree {
    mova::balanced_set<record, by_key> t;
    void insert(record &each) { t.insert(each); }
    void *find(const record &key) { return t.search(key).get(); }
    void remove(const record &key) { t.remove_equal(key); }
    template <class Visit>
    void walk(Visit visit) const
    {
        for (const record &each : t)
            visit(each);
    }
};

struct c_tree {
    mova::balanced_set<record, by_key> owner;
    GT_tree *t = owner.get();
    void insert(record &each) { GT_insert_item(t, &each); }
    void *find(record &key)
    {
        GT_tree_item *at;
        return GT_search_item(t, &key, &at) ? at : nullptr;
    }
    void remove(record &key)
    {
        GT_tree_item *at;
        if (GT_search_item(t, &key, &at))
            GT_remove_item(t, at);
    }
    template <class Visit>
    void walk(Visit visit) const
    {
        GT_tree_iter *iterator = GT_all_items(t);
        for (void *each; GT_next_item(iterator, &each);)
            visit(*static_cast<record *>(each));
    }
};

template <class Set>
struct standard_tree {
    Set t;
    void insert(record &each) { t.insert(&each); }
    const void *find(record &key)
    {
        const auto at = t.find(&key);
        return at == t.end() ? nullptr : *at;
    }
    void remove(record &key) { t.erase(&key); }
    template <class Visit>
    void walk(Visit visit) const
    {
        for (const record *each : t)
            visit(*each);
    }
};
using standard_set = standard_tree<std::set<record *, less_key>>;
using abseil_set = standard_tree<absl::btree_set<record *, less_key>>;

template <class Tree>
void fill(Tree &tree, std::vector<record> &records)
{
    for (record &each : records)
        tree.insert(each);
}

template <class Tree>
void insert(benchmark::State &state, size_t count)
{
    std::vector<record> records = shuffled_records(count, 1);
    for (auto _ : state) {
        std::optional<Tree> tree(std::in_place);
        fill(*tree, records);
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}

template <class Tree>
void search(benchmark::State &state, size_t count)
{
    std::vector<record> records = shuffled_records(count, 1), keys = shuffled_records(count, 2);
    Tree tree;
    fill(tree, records);
    for (auto _ : state) {
        for (record &key : keys)
            DoNotOptimize(tree.find(key));
    }
}

template <class Tree>
void remove(benchmark::State &state, size_t count)
{
    std::vector<record> records = shuffled_records(count, 1), keys = shuffled_records(count, 2);
    for (auto _ : state) {
        state.PauseTiming();
        std::optional<Tree> tree(std::in_place);
        fill(*tree, records);
        state.ResumeTiming();
        for (record &key : keys)
            tree->remove(key);
        state.PauseTiming();
        tree.reset();
        state.ResumeTiming();
    }
}

template <class Tree>
void walk(benchmark::State &state, size_t count)
{
    std::vector<record> records = shuffled_records(count, 1);
    Tree tree;
    fill(tree, records);
    for (auto _ : state) {
        int64_t sum = 0;
        tree.walk([&sum](const record &each) { sum += each.key; });
        DoNotOptimize(sum);
    }
}

void add_tree(size_t count, const std::string &text, double target)
{
    const auto add = [&](const char *name, auto typed, auto c, auto standard, auto abseil) {
        scoreboard::add_sized("X2", std::string("tree, ") + name + ", " + text, count, typed,
                              {{"C calls", c, target}, {"std::set", standard, 0}, {"btree_set", abseil, 0}});
    };
    add("insert", insert<typed_tree>, insert<c_tree>, insert<standard_set>, insert<abseil_set>);
    add("search", search<typed_tree>, search<c_tree>, search<standard_set>, search<abseil_set>);
    add("remove", remove<typed_tree>, remove<c_tree>, remove<standard_set>, remove<abseil_set>);
    add("walk", walk<typed_tree>, walk<c_tree>, walk<standard_set>, walk<abseil_set>);
}

/* ---- records found by strings ---------------------------------------------------------------------------------- */

struct country {
    std::string name;
    int64_t number;
};

/* Half of the names are longer than a string keeps in itself. */
std::vector<std::string> names(size_t count, unsigned seed)
{
    std::vector<std::string> made;
    for (size_t i = 0; i < count; ++i)
        made.push_back(std::string(i % 2 ? "a longer name for record " : "name ") + std::to_string(i * 7919));
    std::shuffle(made.begin(), made.end(), std::mt19937(seed));
    return made;
}

struct typed_names {
    mova::keyed_table<country, &country::name> t;
    void insert(const std::string &name) { t.insert({name, 1}); }
    bool contains(const std::string &name) { return t.contains(name); }
    void remove(const std::string &name) { t.remove(name); }
};
struct abseil_names {
    absl::flat_hash_map<std::string, int64_t> t;
    void insert(const std::string &name) { t.insert({name, 1}); }
    bool contains(const std::string &name) { return t.contains(name); }
    void remove(const std::string &name) { t.erase(name); }
};

template <class Names>
void insert_names(benchmark::State &state, size_t count)
{
    const std::vector<std::string> all = names(count, 1);
    for (auto _ : state) {
        std::optional<Names> table(std::in_place);
        for (const std::string &each : all)
            table->insert(each);
        state.PauseTiming();
        table.reset();
        state.ResumeTiming();
    }
}

/* Every second one is absent. */
template <class Names>
void find_names(benchmark::State &state, size_t count)
{
    const std::vector<std::string> all = names(count, 1), asked = names(2 * count, 2);
    Names table;
    for (const std::string &each : all)
        table.insert(each);
    for (auto _ : state) {
        for (size_t i = 0; i < count; ++i)
            DoNotOptimize(table.contains(asked[i]));
    }
}

template <class Names>
void remove_names(benchmark::State &state, size_t count)
{
    const std::vector<std::string> all = names(count, 1), order = names(count, 2);
    for (auto _ : state) {
        state.PauseTiming();
        Names table;
        for (const std::string &each : all)
            table.insert(each);
        state.ResumeTiming();
        for (const std::string &each : order)
            table.remove(each);
    }
}

void add_names(size_t count, const std::string &text)
{
    scoreboard::add_sized("X3", "keyed table, insert, " + text, count, insert_names<typed_names>,
                          {{"flat_hash_map", insert_names<abseil_names>, 0}});
    scoreboard::add_sized("X3", "keyed table, look up, " + text, count, find_names<typed_names>,
                          {{"flat_hash_map", find_names<abseil_names>, 0}});
    scoreboard::add_sized("X3", "keyed table, remove, " + text, count, remove_names<typed_names>,
                          {{"flat_hash_map", remove_names<abseil_names>, 0}});
}

const bool registered = [] {
    add_tree(1000, "1e3", 1.3);
    add_tree(100000, "1e5", 0.98);
    add_tree(1000000, "1e6", 0.98);
    add_names(1000, "1e3");
    add_names(100000, "1e5");
    return true;
}();

} // namespace
