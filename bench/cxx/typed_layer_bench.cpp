/* SPDX-License-Identifier: MIT */
/* The typed layer: every operation beside the C calls that a program would make in its place; the tree with its comparison
   compiled in beside the standard library's and Abseil's, with theirs compiled in; and the table of records found by strings
   beside Abseil's. */
#include <algorithm>
#include <numeric>
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

/* ---- the operations, typed and through the C functions ------------------------------------------------------- */

struct item {
    mova::links links = {};
    int64_t number = 1;
};
std::vector<item> items(1000000);

template <class Work>
void repeat(benchmark::State &state, Work work)
{
    for (auto _ : state)
        work();
}

/* Pointer list. */

void append_typed(benchmark::State &state, size_t count)
{
    repeat(state, [count] {
        mova::pointer_list<item> list;
        for (size_t i = 0; i < count; ++i)
            list.append(&items[i]);
    });
}
void append_c(benchmark::State &state, size_t count)
{
    repeat(state, [count] {
        GL_list *list = GL_create();
        for (size_t i = 0; i < count; ++i)
            GL_append_after_last(list, &items[i]);
        GL_release(&list);
    });
}

mova::pointer_list<item> pointers(size_t count)
{
    mova::pointer_list<item> list;
    for (size_t i = 0; i < count; ++i)
        list.append(&items[i]);
    return list;
}

void walk_typed(benchmark::State &state, size_t count)
{
    const mova::pointer_list<item> list = pointers(count);
    repeat(state, [&list] {
        for (const item *each : list)
            DoNotOptimize(each);
    });
}
void walk_c(benchmark::State &state, size_t count)
{
    mova::pointer_list<item> list = pointers(count);
    repeat(state, [c = list.get()] {
        GL_iterator iterator = GL_all_items(c);
        for (void *each; GL_next_item(&iterator, &each);)
            DoNotOptimize(each);
    });
}

void walk_back_typed(benchmark::State &state, size_t count)
{
    const mova::pointer_list<item> list = pointers(count);
    repeat(state, [&list] {
        for (const item *each : list.reversed())
            DoNotOptimize(each);
    });
}
void walk_back_c(benchmark::State &state, size_t count)
{
    mova::pointer_list<item> list = pointers(count);
    repeat(state, [c = list.get()] {
        GL_iterator iterator = GL_all_items_reversed(c);
        for (void *each; GL_next_item(&iterator, &each);)
            DoNotOptimize(each);
    });
}

/* The list is refilled with what was removed, in the time that counts: both do the same. */
void remove_walking_typed(benchmark::State &state, size_t count)
{
    mova::pointer_list<item> list = pointers(count);
    repeat(state, [&] {
        bool odd = false;
        for (auto at : list.positions()) {
            if (odd ^= true)
                list.remove(at);
        }
        while (list.size() < count)
            list.append(items.data());
    });
}
void remove_walking_c(benchmark::State &state, size_t count)
{
    mova::pointer_list<item> list = pointers(count);
    repeat(state, [count, c = list.get()] {
        bool odd = false;
        GL_iterator iterator = GL_all_items(c);
        for (GL_node *at; GL_next_position(&iterator, &at);) {
            if (odd ^= true)
                GL_remove_item(c, at);
        }
        while (static_cast<size_t>(GL_count_items(c)) < count)
            GL_append_after_last(c, items.data());
    });
}

/* Element list and stack. */

void elements_typed(benchmark::State &state, size_t count)
{
    repeat(state, [count] {
        mova::element_list<int64_t> list;
        for (size_t i = 0; i < count; ++i)
            list.append(static_cast<int64_t>(i));
        int64_t sum = 0;
        for (const int64_t each : list)
            sum += each;
        DoNotOptimize(sum);
    });
}
void elements_c(benchmark::State &state, size_t count)
{
    repeat(state, [count] {
        EL_list *list = EL_create(sizeof(int64_t));
        for (size_t i = 0; i < count; ++i) {
            const auto element = static_cast<int64_t>(i);
            EL_append_after_last(list, &element);
        }
        int64_t sum = 0;
        EL_iterator iterator = EL_all_items(list);
        for (void *each; EL_next_item(&iterator, &each);)
            sum += *static_cast<int64_t *>(each);
        DoNotOptimize(sum);
        EL_release(&list);
    });
}

mova::element_ring<int64_t> ring_of(size_t count)
{
    mova::element_ring<int64_t> ring;
    for (size_t i = 0; i < count; ++i)
        ring.append(static_cast<int64_t>(i));
    return ring;
}

void ring_typed(benchmark::State &state, size_t count)
{
    const mova::element_ring<int64_t> ring = ring_of(count);
    repeat(state, [&ring] {
        int64_t sum = 0;
        for (const int64_t each : ring)
            sum += each;
        DoNotOptimize(sum);
    });
}
void ring_c(benchmark::State &state, size_t count)
{
    mova::element_ring<int64_t> ring = ring_of(count);
    repeat(state, [c = ring.get()] {
        int64_t sum = 0;
        EL_iterator iterator = EL_all_items(c);
        for (void *each; EL_next_item(&iterator, &each);)
            sum += *static_cast<int64_t *>(each);
        DoNotOptimize(sum);
    });
}

void stack_typed(benchmark::State &state, size_t count)
{
    mova::element_stack<int64_t> stack;
    repeat(state, [&] {
        for (size_t i = 0; i < count; ++i)
            stack.push(static_cast<int64_t>(i));
        while (const std::optional<int64_t> top = stack.pop())
            DoNotOptimize(*top);
    });
}
void stack_c(benchmark::State &state, size_t count)
{
    ES_stack *stack = ES_create(sizeof(int64_t));
    repeat(state, [&] {
        for (size_t i = 0; i < count; ++i) {
            const auto element = static_cast<int64_t>(i);
            ES_push(stack, &element);
        }
        for (int64_t top; ES_pop(stack, &top);)
            DoNotOptimize(top);
    });
    ES_release(&stack);
}

/* Intrusive list. */

using linked_items = mova::intrusive_list<item, &item::links>;

void linked_typed(benchmark::State &state, size_t count)
{
    repeat(state, [count] {
        linked_items list;
        for (size_t i = 0; i < count; ++i)
            list.append(items[i]);
        int64_t sum = 0;
        for (const item &each : list)
            sum += each.number;
        DoNotOptimize(sum);
        list.clear();
    });
}
void linked_c(benchmark::State &state, size_t count)
{
    repeat(state, [count] {
        SL_list *list = SL_create();
        for (size_t i = 0; i < count; ++i)
            SL_append_after_last(list, &items[i]);
        int64_t sum = 0;
        SL_iterator iterator = SL_all_items(list);
        for (void *each; SL_next_item(&iterator, &each);)
            sum += static_cast<item *>(each)->number;
        DoNotOptimize(sum);
        SL_make_empty(list, [](void **) {});
        SL_release(&list);
    });
}

/* Arrays. */

void dynamic_typed(benchmark::State &state, size_t count)
{
    repeat(state, [count] {
        mova::dynamic_array<int64_t> array(4096);
        for (size_t i = 0; i < count; ++i)
            array.append(static_cast<int64_t>(i));
        int64_t sum = 0;
        for (size_t i = 0; i < count; ++i)
            sum += array[i];
        DoNotOptimize(sum);
    });
}
void dynamic_c(benchmark::State &state, size_t count)
{
    repeat(state, [count] {
        DA_array *array = DA_create(sizeof(int64_t), 4096);
        for (size_t i = 0; i < count; ++i) {
            const auto element = static_cast<int64_t>(i);
            DA_append(array, &element, 1);
        }
        int64_t sum = 0;
        const auto *elements = static_cast<const int64_t *>(DA_data(array));
        for (size_t i = 0; i < count; ++i)
            sum += elements[i];
        DoNotOptimize(sum);
        DA_release(array);
    });
}

void block_typed(benchmark::State &state, size_t count)
{
    repeat(state, [count] {
        mova::block_array<int64_t> array(count);
        for (size_t i = 0; i < count; ++i)
            array.append(static_cast<int64_t>(i));
        DoNotOptimize(array.back());
    });
}
void block_c(benchmark::State &state, size_t count)
{
    repeat(state, [count] {
        GB_block array;
        GB_init(&array, sizeof(int64_t), static_cast<int32_t>(count));
        for (size_t i = 0; i < count; ++i) {
            const auto element = static_cast<int64_t>(i);
            GB_append_after_last(&array, &element);
        }
        DoNotOptimize(static_cast<int64_t *>(array.data)[count - 1]);
        GB_release(&array);
    });
}

/* Id table and hash table. Every second key that is asked for is absent. */

void ids_typed(benchmark::State &state, size_t count)
{
    mova::id_table<item> ids;
    for (size_t i = 0; i < count; ++i)
        ids.add(&items[i]);
    repeat(state, [&] {
        for (int32_t id = 1; id <= static_cast<int32_t>(count); ++id)
            DoNotOptimize(ids.find(id));
    });
}
void ids_c(benchmark::State &state, size_t count)
{
    DA_array *ids = io_lut_create();
    for (size_t i = 0; i < count; ++i)
        io_lut_add(ids, &items[i]);
    repeat(state, [&] {
        for (int32_t id = 1; id <= static_cast<int32_t>(count); ++id)
            DoNotOptimize(io_lut_look_ptr(ids, id));
    });
    io_lut_release(&ids);
}

std::vector<int64_t> random_keys(size_t count)
{
    std::vector<int64_t> keys(2 * count);
    std::mt19937_64 random(1);
    for (int64_t &key : keys)
        key = static_cast<int64_t>(random() | 1);
    return keys;
}

mova::hash_table<int64_t, int64_t> hashed(const std::vector<int64_t> &keys)
{
    mova::hash_table<int64_t, int64_t> table;
    for (size_t i = 0; i < keys.size(); i += 2)
        table.set(keys[i], keys[i]);
    return table;
}

void hash_get_typed(benchmark::State &state, size_t count)
{
    const std::vector<int64_t> keys = random_keys(count / 2);
    const mova::hash_table<int64_t, int64_t> table = hashed(keys);
    repeat(state, [&] {
        for (const int64_t key : keys)
            DoNotOptimize(table.get_or(key));
    });
}
void hash_get_c(benchmark::State &state, size_t count)
{
    const std::vector<int64_t> keys = random_keys(count / 2);
    const mova::hash_table<int64_t, int64_t> table = hashed(keys);
    repeat(state, [&keys, c = table.get()] {
        for (const int64_t key : keys)
            DoNotOptimize(HSH_get_value(c, key));
    });
}

void hash_set_typed(benchmark::State &state, size_t count)
{
    const std::vector<int64_t> keys = random_keys(count / 2);
    repeat(state, [&] {
        mova::hash_table<int64_t, int64_t> table;
        for (const int64_t key : keys)
            table.set(key, key);
    });
}
void hash_set_c(benchmark::State &state, size_t count)
{
    const std::vector<int64_t> keys = random_keys(count / 2);
    repeat(state, [&] {
        HSH_table *table = HSH_create(0, 0);
        for (const int64_t key : keys)
            HSH_set_value(table, key, key);
        HSH_release(&table);
    });
}

/* Swap cache: bodies that are in memory. */

struct tile {
    std::size_t body_size() const { return 64; }
    void fill(std::span<char> body) { std::ranges::fill(body, 'x'); }
};
std::vector<tile> tiles(1000);

struct filled_cache {
    mova::block_pool pool{1 << 20};
    mova::swap_cache<tile, char> cache{pool.get()};
    std::vector<mova::swap_cache<tile, char>::position> entries;
    filled_cache()
    {
        for (tile &each : tiles) {
            entries.push_back(cache.insert(each));
            cache.body(entries.back());
        }
    }
};

void cache_typed(benchmark::State &state, size_t)
{
    filled_cache filled;
    repeat(state, [&] {
        for (const auto entry : filled.entries)
            DoNotOptimize(filled.cache.body(entry).data());
    });
}
void cache_c(benchmark::State &state, size_t)
{
    filled_cache filled;
    repeat(state, [&] {
        for (const auto entry : filled.entries)
            DoNotOptimize(cc_get(filled.cache.get(), entry.get()));
    });
}

struct operation {
    const char *name;
    scoreboard::sized_work typed, c;
};

void add_operations(size_t count, const std::string &text)
{
    for (const operation &of : {operation{"pointer list, append and release", append_typed, append_c},
                                {"pointer list, walk", walk_typed, walk_c},
                                {"pointer list, walk back", walk_back_typed, walk_back_c},
                                {"pointer list, remove walking", remove_walking_typed, remove_walking_c},
                                {"element list, append and walk", elements_typed, elements_c},
                                {"element ring, walk", ring_typed, ring_c},
                                {"element stack, push and pop", stack_typed, stack_c},
                                {"intrusive list, append and walk", linked_typed, linked_c},
                                {"dynamic array, append and read", dynamic_typed, dynamic_c},
                                {"block array, append", block_typed, block_c},
                                {"id table, look up", ids_typed, ids_c},
                                {"hash table, look up", hash_get_typed, hash_get_c},
                                {"hash table, store", hash_set_typed, hash_set_c}})
        scoreboard::add_sized("X2", std::string(of.name) + ", " + text, count, of.typed, {{"C calls", of.c, 0.98}});
}

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

void cursor_typed(benchmark::State &state, size_t count)
{
    std::vector<record> records = shuffled_records(count, 1);
    typed_tree tree;
    fill(tree, records);
    repeat(state, [&tree] {
        for (const auto at : tree.t.positions())
            DoNotOptimize(at.get());
    });
}
void cursor_c(benchmark::State &state, size_t count)
{
    std::vector<record> records = shuffled_records(count, 1);
    c_tree tree;
    fill(tree, records);
    repeat(state, [&tree] {
        GT_tree_iter *iterator = GT_all_items(tree.t);
        for (GT_tree_item *at; GT_next_position(iterator, &at);)
            DoNotOptimize(at);
    });
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
    scoreboard::add_sized("X2", "tree, cursor, " + text, count, cursor_typed, {{"C calls", cursor_c, 0.98}});
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
    add_operations(1000, "1e3");
    add_operations(100000, "1e5");
    scoreboard::add_sized("X2", "swap cache, bodies in memory, 1e3", tiles.size(), cache_typed,
                          {{"C calls", cache_c, 0.98}});
    add_tree(1000, "1e3", 1.3);
    add_tree(100000, "1e5", 0.98);
    add_tree(1000000, "1e6", 0.98);
    add_names(1000, "1e3");
    add_names(100000, "1e5");
    return true;
}();

} // namespace
