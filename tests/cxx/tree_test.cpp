/* SPDX-License-Identifier: MIT */
#include <mova/cxx/balanced_tree.h>

#include <tests/cxx/same_calls.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <random>
#include <string>
#include <tuple>

namespace {

using mova::test::items_of;
using mova::test::log;
using mova::test::recording_host;

struct entry {
    int key, number;
    auto operator<=>(const entry &other) const { return key <=> other.key; }
    bool operator==(const entry &other) const { return key == other.key; }
};
using set = mova::balanced_set<entry>;
using multiset = mova::balanced_multiset<entry>;
using numbers = std::vector<int>;

static_assert(std::ranges::bidirectional_range<set> && std::ranges::bidirectional_range<const set> &&
              std::ranges::common_range<set> && !std::ranges::sized_range<set>);
static_assert(std::same_as<std::ranges::range_reference_t<const set>, const entry &>);
static_assert(sizeof(set) == sizeof(void *) && sizeof(set::iterator) == sizeof(void *) && std::movable<set> &&
              !std::is_copy_constructible_v<set> && std::is_nothrow_move_constructible_v<set>);
static_assert(sizeof(mova::tree_cursor<entry>) == sizeof(void *) && std::movable<mova::tree_cursor<entry>> &&
              std::ranges::input_range<mova::tree_cursor<entry>>);

/* Writes every call down, among the host's. */
struct recorded_order {
    std::int32_t operator()(const entry &a, const entry &b) const
    {
        recording_host::get().write_down("compare " + std::to_string(a.number) + " " + std::to_string(b.number));
        if (throws_in > 0 && --throws_in == 0)
            throw std::runtime_error("comparison");
        return a.key - b.key;
    }
    static inline int throws_in = 0;
};

/* ---- the same steps as the C functions ---- */

template <bool AdmitsEqual>
using recorded_tree = mova::basic_tree<entry, recorded_order, AdmitsEqual, mova::borrowed>;

/* What both drive: a tree, and two iterators that may be live. */
template <bool AdmitsEqual>
struct c_calls {
    using typed = recorded_tree<AdmitsEqual>;
    GT_tree *t =
        AdmitsEqual ? GT_create_with_dupl_allowed(typed::compare) : GT_create_with_dupl_not_allowed(typed::compare);
    ~c_calls() { GT_release(&t); }
    GT_tree *get() { return t; }
    GT_tree_item *insert(entry &item) { return GT_insert_item(t, &item); }
    GT_tree_item *search(entry &key)
    {
        GT_tree_item *at;
        GT_search_item(t, &key, &at);
        return at;
    }
    GT_tree_item *find(entry &item)
    {
        GT_tree_item *at;
        GT_find_item(t, &item, &at);
        return at;
    }
    void remove(GT_tree_item *at) { GT_remove_item(t, at); }
    void remove_anywhere(GT_tree_item *at) { GT_remove_item_global(t, at); }
    void remove_item(entry &item) { GT_find_and_remove_item(t, &item); }
    void remove_first() { GT_remove_first_item(t); }
};

template <bool AdmitsEqual>
struct typed_calls {
    recorded_tree<AdmitsEqual> t;
    using position = typename recorded_tree<AdmitsEqual>::position;
    GT_tree *get() { return t.get(); }
    GT_tree_item *insert(entry &item) { return t.insert(item).first.get(); }
    GT_tree_item *search(entry &key) { return t.search(key).get(); }
    GT_tree_item *find(entry &item) { return t.find_item(item).get(); }
    void remove(GT_tree_item *at) { t.remove(position(at)); }
    void remove_anywhere(GT_tree_item *at) { t.take_anywhere(position(at)); }
    void remove_item(entry &item) { t.take_item(item); }
    void remove_first() { t.take_first(); }
};

/* Every field of a tree and its iterators, nodes by the number of their block. */
std::string fields_of(const GT_tree &t)
{
    const recording_host &host = recording_host::get();
    std::string text = host.name_of(t.root) + " " + host.name_of(t.first) + " " + host.name_of(t.last);
    for (const GT_tree_item *at = t.first; at; at = at->next) {
        text += "\n" + host.name_of(at) + ": " + std::to_string(static_cast<entry *>(at->item)->number);
        for (const GT_tree_item *link : {at->left, at->right, at->prev, at->next})
            text += " " + host.name_of(link);
        text += " " + std::to_string(at->balance);
    }
    for (const GL_node *at = t.iterators->first; at; at = at->next) {
        const GT_tree_iter &live = *static_cast<const GT_tree_iter *>(at->item);
        text += "\niterator " + host.name_of(live.cursor) + " " + host.name_of(live.current);
    }
    return text;
}

/* The transcript of random calls: after each what the host and the comparison were asked, what it returned or raised, and
   all fields. A position is taken by its place in the chain, so that both take the same. */
template <class Calls>
log transcript(unsigned seed, int keys)
{
    recording_host &host = recording_host::get();
    host.reset();
    log lines;
    {
        std::mt19937 random(seed);
        std::deque<entry> entries;
        Calls calls;
        int length = 0;
        for (int step = 0; step < 250; ++step) {
            const int key = static_cast<int>(random() % static_cast<unsigned>(keys));
            entries.push_back({key, step});
            GT_tree_item *at = calls.get()->first;
            for (unsigned long place = random() % static_cast<unsigned>(length + 1); place > 1 && at; --place)
                at = at->next;
            recorded_order::throws_in = random() % 16 == 0 ? 3 : 0;
            std::string result = "-";
            const auto record = [&](const GT_tree_item *node) { result = host.name_of(node); };
            try {
                switch (random() % 14) {
                case 0:
                case 1:
                case 2:
                case 3:
                case 4:
                case 5: record(calls.insert(entries.back())); break;
                case 6: record(calls.search(entries.back())); break;
                case 7:
                    if (at)
                        record(calls.find(*static_cast<entry *>(at->item)));
                    break;
                case 8: record(calls.find(entries.back())); break;
                case 9:
                case 10:
                    if (at)
                        calls.remove(at);
                    break;
                case 11:
                    if (at && key % 3 == 0) { /* a key that was changed in place */
                        static_cast<entry *>(at->item)->key += keys;
                        calls.remove_anywhere(at);
                    } else if (at) {
                        calls.remove_item(*static_cast<entry *>(at->item));
                    }
                    break;
                case 12: key % 3 ? (at ? calls.remove_first() : void()) : calls.remove_item(entries.back()); break;
                case 13:
                    if (calls.get()->iterators->count < 3) {
                        std::ignore = GT_all_items(calls.get());
                    } else if (GT_tree_iter *const oldest =
                                   static_cast<GT_tree_iter *>(calls.get()->iterators->first->item);
                               key % 2) {
                        GT_end_iterator(oldest);
                    } else {
                        for (int n = key % 5; n >= 0 && calls.get()->iterators->first->item == oldest; --n) {
                            if (GT_tree_item *delivered = nullptr; !GT_next_position(oldest, &delivered))
                                break;
                        }
                    }
                    break;
                }
            } catch (const mova::test::raised &error) {
                result = "raised " + error.module + " " + std::to_string(error.line);
            } catch (const std::runtime_error &) {
                result = "threw";
            }
            recorded_order::throws_in = 0;
            /* An iterator that a removal left on a dead record may only be ended. */
            for (GL_node *live = calls.get()->iterators->first, *next; live; live = next) {
                next = live->next;
                auto *const iterator = static_cast<GT_tree_iter *>(live->item);
                if ((iterator->current && !host.is_live(iterator->current)) ||
                    (iterator->cursor && !host.is_live(iterator->cursor)))
                    GT_end_iterator(iterator);
            }
            length = GT_count_items(calls.get());
            for (std::string &call : host.take_log())
                lines.push_back(std::move(call));
            lines.push_back("step " + std::to_string(step) + ": " + result + "\n" + fields_of(*calls.get()));
        }
        while (calls.get()->iterators->first)
            GT_end_iterator(static_cast<GT_tree_iter *>(calls.get()->iterators->first->item));
    }
    host.take_log();
    return lines;
}

class TypedTree : public mova::test::recording_host_test_case {};

TEST_F(TypedTree, EveryStepIsThatOfTheCFunctions)
{
    for (unsigned seed = 1; seed <= 4; ++seed) {
        const int keys = seed % 2 ? 12 : 1000;
        ASSERT_EQ(transcript<typed_calls<true>>(seed, keys), transcript<c_calls<true>>(seed, keys)) << seed;
        ASSERT_EQ(transcript<typed_calls<false>>(seed, keys), transcript<c_calls<false>>(seed, keys)) << seed;
    }
}

/* What a call raises, and all fields after it. */
std::string after(const GT_tree &t, auto call)
{
    std::string result;
    try {
        call();
    } catch (const mova::test::raised &error) {
        result = error.module + " " + std::to_string(error.line) + "\n";
    }
    return result + fields_of(t);
}

/* A tree that a program has made a list to the right, with balances of 0. Keys are even; there is room for others. */
template <class Calls>
struct tree_as_a_list : Calls {
    std::deque<entry> entries;

    tree_as_a_list()
    {
        for (int key = 0; key < 200; key += 2)
            this->insert(add(key));
        for (GT_tree_item *at = this->get()->first; at; at = at->next) {
            at->left = nullptr;
            at->right = at->next;
            at->balance = 0;
        }
        this->get()->root = this->get()->first;
    }
    entry &add(int key) { return entries.emplace_back(entry{key, key}); }
    GT_tree_item *at(int key)
    {
        GT_tree_item *found = this->get()->first;
        while (found && static_cast<entry *>(found->item)->key != key)
            found = found->next;
        return found;
    }
    std::string after(auto call) { return ::after(*this->get(), call); }
};

/* Edits it far below. */
template <class Calls>
log edits_of_a_list()
{
    recording_host::get().reset();
    tree_as_a_list<Calls> list;
    log lines;
    lines.push_back(list.after([&] { list.insert(list.add(200)); }));
    for (const int key : {198, 40})
        lines.push_back(list.after([&] { list.remove(list.at(key)); }));
    GT_tree_item *there = nullptr;
    lines.push_back(list.after([&] { there = list.insert(list.add(196)); }));
    lines.push_back(recording_host::get().name_of(there));
    lines.push_back(list.after([&] { there = list.insert(*static_cast<entry *>(list.at(196)->item)); }));
    lines.push_back(recording_host::get().name_of(there));
    return lines;
}

/* The node of key 160 gets one to which the comparisons do not lead, and is taken out in each way. */
template <class Calls>
log removals_of_a_changed_key_in_a_list(int key)
{
    recording_host::get().reset();
    tree_as_a_list<Calls> list;
    GT_tree_item *const changed = list.at(160);
    entry &item = *static_cast<entry *>(changed->item);
    item.key = key;
    log lines;
    lines.push_back(list.after([&] { list.remove(changed); }));
    lines.push_back(list.after([&] { list.remove_item(item); }));
    lines.push_back(list.after([&] { list.remove_anywhere(changed); }));
    return lines;
}

/* The same list hangs to the left of a root, which goes: its predecessor is the list's last. */
template <class Calls>
log removal_of_a_root_above_a_list()
{
    recording_host::get().reset();
    tree_as_a_list<Calls> list;
    GT_tree_item *const root = list.at(196);
    root->prev->right = nullptr;
    root->left = list.get()->first;
    list.get()->root = root;
    return {list.after([&] { list.remove(root); })};
}

struct counted_order {
    std::int32_t operator()(const entry &a, const entry &b) const
    {
        asked = asked * 31 + static_cast<std::uint32_t>(a.number * 7 + b.number);
        return a.key - b.key;
    }
    static inline std::uint32_t asked = 0; /* of which items, in which order */
};

template <bool AdmitsEqual>
void expect_a_large_tree_to_be_that_of_the_c_functions()
{
    using tree = mova::basic_tree<entry, counted_order, AdmitsEqual, mova::borrowed>;
    std::vector<entry> entries(12000);
    for (int i = 0; i < 12000; ++i)
        entries[static_cast<std::size_t>(i)] = {i / 2, i};
    std::shuffle(entries.begin(), entries.end(), std::mt19937(3));
    const auto by_key = [](const entry &a, const entry &b) { return a.key < b.key; };
    std::sort(entries.end() - 4000, entries.end() - 2000, by_key);
    std::sort(entries.rbegin(), entries.rbegin() + 2000, by_key);
    tree typed, c;
    const auto asked_by = [](auto call) {
        counted_order::asked = 0;
        const GT_tree_item *const at = call();
        return std::pair(counted_order::asked, static_cast<entry *>(at->item)->number);
    };
    for (entry &each : entries)
        ASSERT_EQ(asked_by([&] { return typed.insert(each).first.get(); }),
                  asked_by([&] { return GT_insert_item(c.get(), &each); }));
    const auto same = [&] {
        const GT_tree_item *of_c = c.get()->first;
        for (const GT_tree_item *at = typed.get()->first; at; at = at->next, of_c = of_c->next) {
            ASSERT_TRUE(of_c && at->item == of_c->item && at->balance == of_c->balance);
            ASSERT_TRUE(!at->left == !of_c->left && (!at->left || at->left->item == of_c->left->item));
            ASSERT_TRUE(!at->right == !of_c->right && (!at->right || at->right->item == of_c->right->item));
        }
        ASSERT_EQ(of_c, nullptr);
    };
    same();
    EXPECT_EQ(typed.count_items(), AdmitsEqual ? 12000u : 6000u);
    for (entry &each : entries) {
        if (each.key % 3 != 0)
            continue;
        GT_tree_item *at;
        const bool found = GT_search_item(c.get(), &each, &at) != 0;
        if (found)
            GT_remove_item(c.get(), at);
        ASSERT_EQ(typed.remove_equal(each), found);
    }
    same();
    EXPECT_EQ(typed.count_items(), AdmitsEqual ? 8000u : 4000u);
}

/* More levels than are gone down in one way, and items in no order, in order, and backwards. An item that is equal is met on all
   levels. */
TEST_F(TypedTree, ALargeTreeIsThatOfTheCFunctions)
{
    expect_a_large_tree_to_be_that_of_the_c_functions<false>();
    expect_a_large_tree_to_be_that_of_the_c_functions<true>();
}

TEST_F(TypedTree, ATreeWhoseBalancesAreWrongIsEditedAsTheCFunctionsDo)
{
    EXPECT_EQ(edits_of_a_list<typed_calls<false>>(), edits_of_a_list<c_calls<false>>());
    EXPECT_EQ(edits_of_a_list<typed_calls<true>>(), edits_of_a_list<c_calls<true>>());
    EXPECT_EQ(removal_of_a_root_above_a_list<typed_calls<false>>(), removal_of_a_root_above_a_list<c_calls<false>>());
    for (const int key : {-1, 131})
        EXPECT_EQ(removals_of_a_changed_key_in_a_list<typed_calls<false>>(key),
                  removals_of_a_changed_key_in_a_list<c_calls<false>>(key))
            << key;
}

TEST_F(TypedTree, ATreeThatIsTooHighRefusesEqualItemsAndRaisesAsAnyOther)
{
    tree_as_a_list<typed_calls<false>> list;
    EXPECT_FALSE(list.t.insert(list.add(196)).second);
    EXPECT_FALSE(list.t.insert(*static_cast<entry *>(list.at(196)->item)).second) << "which is in the tree";
    EXPECT_TRUE(list.t.insert(list.add(197)).second);
    GT_tree_item *const changed = list.at(160);
    static_cast<entry *>(changed->item)->key = 131;
    const typed_calls<false>::position at(changed);
    mova::test::expect_raise("gentree", 481, MOVA_PRECONDITION_BROKEN, [&] { list.t.take(at); });
    EXPECT_EQ(list.t.count_items(), 101u);
    EXPECT_EQ(&list.t.take_anywhere(at), &list.entries[80]);
    EXPECT_EQ(list.t.count_items(), 100u);
}

/* Of 6 4 2 1, or of the same below 0, the last gets a balance that no node has, and one more goes below it. */
template <class Calls>
log insertion_below_a_wrong_balance(int sign, int balance, recording_host::raise_mode mode)
{
    recording_host &host = recording_host::get();
    host.reset();
    host.set_raise_mode(mode);
    Calls calls;
    std::deque<entry> entries;
    for (const int key : {6, 4, 2, 1})
        calls.insert(entries.emplace_back(entry{sign * key, key}));
    calls.search(entries.back())->balance = balance;
    host.take_log();
    const std::string fields = after(*calls.get(), [&] { calls.insert(entries.emplace_back(entry{0, 0})); });
    log lines = host.take_log();
    lines.push_back(fields);
    return lines;
}

TEST_F(TypedTree, InsertionBelowABalanceThatIsOutOfRangeRaisesAndGoesOnAsTheCFunction)
{
    using mode = recording_host::raise_mode;
    for (const int sign : {1, -1}) {
        for (const int balance : {5, -5}) {
            const log raised = insertion_below_a_wrong_balance<typed_calls<false>>(sign, balance, mode::throws);
            EXPECT_EQ(raised, insertion_below_a_wrong_balance<c_calls<false>>(sign, balance, mode::throws));
            EXPECT_TRUE(raised.back().starts_with(sign == 1 ? "gentree 1181\n" : "gentree 1236\n")) << raised.back();
            const log returned = insertion_below_a_wrong_balance<typed_calls<false>>(sign, balance, mode::returns);
            EXPECT_EQ(returned, insertion_below_a_wrong_balance<c_calls<false>>(sign, balance, mode::returns));
            const std::string line = sign == 1 ? "raise gentree 1181 4297" : "raise gentree 1236 4297";
            EXPECT_EQ(std::count(returned.begin(), returned.end(), line), 1);
        }
    }
}

/* Of 1 2 3 the root goes; an iterator has delivered its predecessor, or is about to. */
template <class Calls>
log removal_while_an_iterator_is_at_the_predecessor(bool delivered)
{
    recording_host::get().reset();
    Calls calls;
    entry entries[] = {{2, 2}, {1, 1}, {3, 3}};
    for (entry &each : entries)
        calls.insert(each);
    GT_tree_iter *const iterator = GT_all_items(calls.get());
    GT_tree_item *at = nullptr;
    if (delivered)
        GT_next_position(iterator, &at);
    GT_tree_item *const root = calls.get()->root;
    calls.remove(root);
    EXPECT_EQ(iterator->current, delivered ? root : nullptr) << "on the record that is gone";
    log lines = {fields_of(*calls.get())};
    GT_end_iterator(iterator);
    return lines;
}

TEST_F(TypedTree, AnIteratorAtThePredecessorIsLeftOnTheRemovedRecordAsByTheCFunction)
{
    for (const bool delivered : {false, true})
        EXPECT_EQ(removal_while_an_iterator_is_at_the_predecessor<typed_calls<true>>(delivered),
                  removal_while_an_iterator_is_at_the_predecessor<c_calls<true>>(delivered));
}

TEST_F(TypedTree, APositionOfAnotherTreeIsRefusedAndBothStayAsTheyAre)
{
    entry entries[] = {{2, 0}, {1, 1}, {3, 2}, {2, 3}};
    multiset t, other;
    for (int i = 0; i < 3; ++i)
        t.insert(entries[i]);
    other.insert(entries[3]);
    const std::string before = fields_of(*t.get()) + fields_of(*other.get());
    mova::test::expect_raise("gentree", 481, MOVA_PRECONDITION_BROKEN, [&] { t.take(other.begin()); });
    mova::test::expect_raise("gentree", 545, MOVA_PRECONDITION_BROKEN, [&] { t.take_anywhere(other.begin()); });
    EXPECT_EQ(fields_of(*t.get()) + fields_of(*other.get()), before);
}

/* ---- the rest ---- */

numbers keys_of(auto &&range)
{
    numbers keys;
    for (const entry &each : range)
        keys.push_back(each.key);
    return keys;
}

TEST_F(TypedTree, ItemsAreDeliveredInOrderAndFound)
{
    entry entries[] = {{5, 0}, {1, 1}, {3, 2}, {3, 3}, {9, 4}, {3, 5}};
    set t(entries);
    EXPECT_EQ(keys_of(t), (numbers{1, 3, 5, 9}));
    EXPECT_EQ(keys_of(t.reversed()), (numbers{9, 5, 3, 1}));
    EXPECT_EQ(t.search(entry{3, 0})->number, 2);
    EXPECT_EQ(t.search(entry{4, 0}), t.end());
    EXPECT_FALSE(t.insert(entries[3]).second);
    EXPECT_EQ(t.insert(entries[3]).first->number, 2);
    EXPECT_EQ(t.find_item(entries[3]), t.end());
    EXPECT_EQ(t.count_items(), 4u);
    EXPECT_TRUE(t.remove_equal(entry{5, 0}));
    EXPECT_FALSE(t.remove_equal(entry{5, 0}));
    EXPECT_EQ(&t.take_first(), &entries[1]);
    EXPECT_THROW(t.take_item(entries[1]), mova::test::raised);

    const multiset all(entries);
    EXPECT_EQ(keys_of(all), (numbers{1, 3, 3, 3, 5, 9}));
    const auto equal = all.equal_range(entry{3, 0});
    EXPECT_EQ(std::ranges::distance(equal), 3);
    EXPECT_EQ(equal.begin()->number, 2);
    EXPECT_EQ(std::prev(equal.end())->number, 5);
    EXPECT_TRUE(all.equal_range(entry{4, 0}).empty());
    EXPECT_EQ(all.lower_bound(entry{10, 0}), all.end());
    EXPECT_EQ(std::prev(all.upper_bound(entry{9, 0}))->key, 9);
    EXPECT_NE(all, multiset());
    EXPECT_FALSE(multiset(nullptr).begin().get());
}

struct by_first_letter {
    using text = std::string;
    bool operator()(const text &a, const text &b) const { return a[0] < b[0]; }
    bool operator()(char a, const text &b) const { return a < b[0]; }
    bool operator()(const text &a, char b) const { return a[0] < b; }
};

TEST_F(TypedTree, KeysOfOtherTypesAndOrdersThatAnswerYesOrNoMayBeUsed)
{
    std::string words[] = {"pear", "apple", "plum"};
    mova::balanced_multiset<std::string, by_first_letter> t(words);
    EXPECT_EQ(*t.search('a'), "apple");
    EXPECT_EQ(std::ranges::distance(t.equal_range('p')), 2);
    EXPECT_FALSE(t.contains('b'));
    mova::balanced_set<std::string, std::greater<>> falling(words);
    EXPECT_EQ(items_of(falling), (std::vector<std::string>{"plum", "pear", "apple"}));
    EXPECT_TRUE(falling.contains("pear"));
}

TEST_F(TypedTree, BoundsAgreeWithASortedArray)
{
    std::mt19937 random(1);
    std::deque<entry> entries;
    multiset t;
    numbers sorted;
    for (int i = 0; i < 300; ++i) {
        t.insert(entries.emplace_back(entry{static_cast<int>(random() % 100), i}));
        sorted.push_back(entries.back().key);
    }
    std::ranges::sort(sorted);
    for (int key = -1; key <= 101; ++key) {
        const auto [from, to] = std::equal_range(sorted.begin(), sorted.end(), key);
        ASSERT_EQ(std::ranges::distance(t.begin(), t.lower_bound(entry{key, 0})), from - sorted.begin());
        ASSERT_EQ(std::ranges::distance(t.begin(), t.upper_bound(entry{key, 0})), to - sorted.begin());
    }
}

TEST_F(TypedTree, CursorsFollowEditsAndEndThemselves)
{
    entry entries[] = {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}};
    multiset t(entries);
    for (auto at : t.positions()) {
        if (at->key % 2)
            t.remove(at);
    }
    EXPECT_EQ(keys_of(t), (numbers{0, 2, 4}));
    EXPECT_EQ(t.get()->iterators->count, 0);
    for (auto at : t.positions()) {
        EXPECT_EQ(t.get()->iterators->count, 1);
        if (at->key == 2)
            break;
    }
    EXPECT_EQ(t.get()->iterators->count, 0) << "left by a break";

    auto cursor = t.positions();
    EXPECT_EQ(cursor.next()->key, 0);
    t.insert(entries[1]);
    EXPECT_EQ(cursor.next()->key, 1) << "inserted ahead";
    auto other = cursor.from_current(), third = cursor.from_next();
    EXPECT_EQ(other.next()->key, 1);
    EXPECT_EQ(third.next()->key, 2);
    t.remove(cursor.current());
    EXPECT_EQ(cursor.current(), t.end());
    EXPECT_EQ(other.next()->key, 2);
    EXPECT_EQ(cursor.next()->key, 2);
    EXPECT_EQ(cursor.next()->key, 4);
    EXPECT_EQ(cursor.next(), t.end());
    EXPECT_FALSE(cursor);
    EXPECT_EQ(cursor.next(), t.end());
    EXPECT_EQ(cursor.current(), t.end());
    t = multiset(nullptr);
    EXPECT_TRUE(other) << "its record is freed by its end, although the tree is gone";
}

TEST_F(TypedTree, RemoveIfStopsWhereThePredicateThrows)
{
    entry entries[] = {{0, 0}, {1, 1}, {2, 2}};
    multiset t(entries);
    EXPECT_THROW(t.remove_if([](const entry &each) { return each.key == 1 ? throw 1 : true; }), int);
    EXPECT_EQ(keys_of(t), (numbers{1, 2}));
    EXPECT_EQ(t.remove_if([&](const entry &each) { return &each == &entries[2]; }), 1u);
    EXPECT_EQ(t.get()->iterators->count, 0);
}

TEST_F(TypedTree, SortingGivesWhatTheBubbleSortGives)
{
    for (unsigned seed = 1; seed < 20; ++seed) {
        std::deque<entry> entries;
        multiset typed, plain;
        for (int i = 0; i < 40; ++i) {
            typed.insert(entries.emplace_back(entry{i, i}));
            plain.insert(entries.back());
        }
        std::mt19937 random(seed);
        for (entry &each : entries)
            each.key = static_cast<int>(random() % 10);
        typed.sort();
        GT_sort(plain.get());
        numbers a, b;
        std::ranges::transform(typed, std::back_inserter(a), &entry::number);
        std::ranges::transform(plain, std::back_inserter(b), &entry::number);
        ASSERT_EQ(a, b);
    }
    multiset().sort();
}

struct counting_order {
    bool operator()(const entry &a, const entry &b) const { return ++asked, a.key < b.key; }
    static inline int asked = 0;
};

TEST_F(TypedTree, SortingWhatIsInOrderLooksAtNeighboursAlone)
{
    entry entries[] = {{0, 0}, {1, 1}, {1, 2}, {2, 3}};
    mova::balanced_multiset<entry, counting_order> t(entries);
    counting_order::asked = 0;
    host.take_log();
    t.sort();
    EXPECT_LE(counting_order::asked, 2 * 3) << "each of three pairs, both ways round";
    EXPECT_TRUE(host.take_log().empty());
    EXPECT_EQ(keys_of(t), (numbers{0, 1, 1, 2}));
    entries[3].key = -1;
    t.sort();
    EXPECT_EQ(keys_of(t), (numbers{-1, 0, 1, 1}));
}

struct throwing_order {
    bool operator()(const entry &a, const entry &b) const { return armed ? throw 1 : a.key < b.key; }
    static inline bool armed = false;
};

TEST_F(TypedTree, ASortWhoseComparisonThrowsChangesNothing)
{
    entry entries[] = {{0, 0}, {1, 1}, {2, 2}};
    mova::balanced_set<entry, throwing_order> t(entries);
    entries[0].key = 5;
    throwing_order::armed = true;
    EXPECT_THROW(t.sort(), int);
    throwing_order::armed = false;
    EXPECT_EQ(keys_of(t), (numbers{5, 1, 2}));
}

struct counted {
    explicit counted(int given) : key(given) { ++alive; }
    ~counted() { --alive; }
    int key;
    auto operator<=>(const counted &) const = default;
    static inline int alive = 0;
};

TEST_F(TypedTree, ATreeMayOwnItsItems)
{
    {
        mova::balanced_set<counted, std::compare_three_way, std::default_delete<counted>> t;
        EXPECT_TRUE(t.insert(std::make_unique<counted>(1)).second);
        EXPECT_TRUE(t.insert(std::make_unique<counted>(2)).second);
        auto again = std::make_unique<counted>(1);
        EXPECT_FALSE(t.insert(std::move(again)).second);
        EXPECT_TRUE(again) << "what is refused stays with the caller";
        EXPECT_EQ(t.take(t.begin())->key, 1);
        EXPECT_EQ(counted::alive, 2);
        t.clear();
        EXPECT_EQ(counted::alive, 1);
        t.insert(std::move(again));
    }
    EXPECT_EQ(counted::alive, 0);
    mova::balanced_set<entry, std::compare_three_way, mova::host_delete> in_host;
    in_host.insert(mova::make_item<entry>(1, 1));
    in_host.clear();
    in_host.insert(mova::make_item<entry>(2, 2));
}

TEST_F(TypedTree, ATreeThatOwnsKeepsAnItemToWhichTheComparisonsDoNotLead)
{
    mova::balanced_set<entry, std::compare_three_way, mova::host_delete> t;
    for (const int key : {2, 1, 3})
        t.insert(mova::make_item<entry>(key, key));
    t.begin()->key = 5;
    host.take_log();
    host.set_raise_mode(recording_host::raise_mode::returns);
    EXPECT_FALSE(t.take(t.begin()));
    EXPECT_EQ(host.take_log(), log{"raise gentree 481 4297"});
    EXPECT_EQ(t.count_items(), 3u);
    EXPECT_EQ(t.take_anywhere(t.begin())->key, 5);
    EXPECT_EQ(t.count_items(), 2u);
}

TEST_F(TypedTree, PrintersAreStateless)
{
    entry entries[] = {{1, 1}};
    const set t(entries);
    host.take_log();
    t.print([](const entry &each) { mova_dprintf("%d", each.key); });
    EXPECT_EQ(host.take_log(), (log{"dprintf 1", "dprintf \n"}));
}

} // namespace
