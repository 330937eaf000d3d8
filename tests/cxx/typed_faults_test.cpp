/* SPDX-License-Identifier: MIT */
/* Every class of the typed layer with every service and callback failing in turn, by an exception: what its header says is
   left. A jump over its objects is undefined. */
#include <mova/cxx.h>

#include <tests/support/colour_table_start.h>
#include <tests/support/fault_sweep.h>
#include <tests/support/recording_host_test_case.h>
#include <mova/arrays/internal/invariants.h>
#include <mova/cache/internal/invariants.h>
#include <mova/clut/internal/invariants.h>
#include <mova/hash/internal/invariants.h>
#include <mova/lists/internal/invariants.h>
#include <mova/tree/internal/invariants.h>

#include <array>
#include <optional>
#include <string>
#include <utility>

namespace {

using namespace mova::test;

constexpr aftermath unchanged{grade::unchanged}, usable{grade::usable}, releasable{grade::releasable},
    never_jumps{grade::lost};
const answers raise_returns{unchanged, {fault_source::raise}};

/* What every subject has: containers that are there, and one that a call makes. */
template <class Container>
struct kept {
    using makes_objects = void;

    std::optional<Container> c, other, result;

    void release()
    {
        result.reset();
        other.reset();
        c.reset();
    }
};

template <class Range>
std::string text_of(const Range &range)
{
    std::string text;
    for (const auto &each : range)
        text += std::to_string(each) + " ";
    return text;
}

bool is_odd(int number)
{
    callback_called();
    return number % 2 != 0;
}

/* ---- lists ---- */

using owned_numbers = mova::pointer_list<int, mova::host_delete>;

/* Pointer lists that own, and that do not, of 1 2 3. */
struct pointer_lists : kept<owned_numbers> {
    int numbers[4] = {1, 2, 3, 4};
    std::optional<mova::pointer_list<int>> plain, copied;

    pointer_lists()
    {
        plain.emplace();
        c.emplace();
        for (int i = 0; i < 3; ++i) {
            plain->append(&numbers[i]);
            c->append(mova::make_item<int>(i + 1));
        }
    }

    std::string state() const
    {
        std::string text;
        for (const int *each : *c)
            text += std::to_string(*each) + " ";
        for (const int *each : *plain)
            text += std::to_string(*each) + " ";
        return text + (result || copied ? "made" : "");
    }

    int broken_invariant() const { return mova::broken_invariant(*c->get()) + mova::broken_invariant(*plain->get()); }

    void go_on()
    {
        c->append(mova::make_item<int>(8));
        c->remove(c->begin());
        plain->prepend(&numbers[3]);
        plain->remove(plain->begin());
    }

    void release()
    {
        plain.reset();
        copied.reset();
        kept::release();
    }
};

const fault_row<pointer_lists> pointer_list_rows[] = {
    {"pointer_list()", [](pointer_lists &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"pointer_list(range)",
     [](pointer_lists &s) {
         s.copied.emplace(std::array{&s.numbers[0], &s.numbers[1]});
     },
     unchanged, never_jumps},
    {"append", [](pointer_lists &s) { s.plain->append(&s.numbers[3]); }, unchanged, never_jumps},
    {"append of what is owned", [](pointer_lists &s) { s.c->append(mova::make_item<int>(4)); }, unchanged, never_jumps},
    {"prepend", [](pointer_lists &s) { s.plain->prepend(&s.numbers[3]); }, unchanged, never_jumps},
    {"prepend of what is owned", [](pointer_lists &s) { s.c->prepend(mova::make_item<int>(4)); }, unchanged,
     never_jumps},
    {"insert_before", [](pointer_lists &s) { s.c->insert_before(++s.c->begin(), mova::make_item<int>(4)); }, unchanged,
     never_jumps},
    {"insert_before the end", [](pointer_lists &s) { s.c->insert_before(s.c->end(), mova::make_item<int>(4)); },
     unchanged, never_jumps},
    {"insert_after", [](pointer_lists &s) { s.c->insert_after(s.c->begin(), mova::make_item<int>(4)); }, unchanged,
     never_jumps},
    {"insert_unique", [](pointer_lists &s) { s.plain->insert_unique(&s.numbers[3]); }, unchanged, never_jumps},
    {"copy", [](pointer_lists &s) { s.copied.emplace(s.plain->copy()); }, unchanged, never_jumps},
    {"copy of each",
     [](pointer_lists &s) {
         s.result.emplace(s.c->copy([](const int *each) {
             callback_called();
             return mova::make_item<int>(*each);
         }));
     },
     unchanged, never_jumps},
    {"positions_if",
     [](pointer_lists &s) {
         for (auto at : s.c->positions_if([](const int *each) { return is_odd(*each); }))
             static_cast<void>(at);
     },
     unchanged, never_jumps},
    {"remove_if", [](pointer_lists &s) { s.c->remove_if([](const int *each) { return is_odd(*each); }); }, usable,
     never_jumps},
};

/* Lists and a ring of 1 2 3. */
struct element_lists : kept<mova::element_list<int>> {
    std::optional<mova::element_ring<int>> ring, copied;

    element_lists()
    {
        c.emplace({1, 2, 3});
        other.emplace({7, 8});
        ring.emplace({1, 2, 3});
    }

    std::string state() const
    {
        return text_of(*c) + "other " + text_of(*other) + "ring " + text_of(*ring) + (result || copied ? "made" : "");
    }

    int broken_invariant() const { return mova::broken_invariant(*c->get()) + mova::broken_invariant(*ring->get()); }

    void go_on()
    {
        c->append(8);
        c->remove(c->begin());
        ring->append(8);
        ring->remove(ring->begin());
        ring->roll(++ring->around().begin());
    }

    void release()
    {
        ring.reset();
        copied.reset();
        kept::release();
    }
};

const fault_row<element_lists> element_list_rows[] = {
    {"element_list()", [](element_lists &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"element_list(elements)",
     [](element_lists &s) {
         s.result.emplace({4, 5});
     },
     unchanged, never_jumps},
    {"element_list(range)", [](element_lists &s) { s.result.emplace(*s.ring); }, unchanged, never_jumps},
    {"append", [](element_lists &s) { s.c->append(4); }, unchanged, never_jumps},
    {"prepend", [](element_lists &s) { s.c->prepend(4); }, unchanged, never_jumps},
    {"insert_before", [](element_lists &s) { s.c->insert_before(s.c->begin(), 4); }, unchanged, never_jumps},
    {"insert_before the end", [](element_lists &s) { s.c->insert_before(s.c->end(), 4); }, unchanged, never_jumps},
    {"insert_after", [](element_lists &s) { s.c->insert_after(s.c->begin(), 4); }, unchanged, never_jumps},
    {"split", [](element_lists &s) { s.result.emplace(s.c->split(++s.c->begin())); }, unchanged, never_jumps},
    {"copy", [](element_lists &s) { s.result.emplace(s.c->copy()); }, unchanged, never_jumps},
    {"copy of a range", [](element_lists &s) { s.result.emplace(s.c->copy(s.c->begin(), ++s.c->begin())); }, unchanged,
     never_jumps},
    {"replace by too few",
     [](element_lists &s) { s.c->replace(s.c->begin(), s.c->position_at(2), *s.other); },
     usable,
     never_jumps,
     {usable, {fault_source::raise}}},
    {"remove_if", [](element_lists &s) { s.c->remove_if(is_odd); }, usable, never_jumps},
    {"element_ring()", [](element_lists &s) { s.copied.emplace(); }, unchanged, never_jumps},
    {"element_ring(range)",
     [](element_lists &s) {
         s.copied.emplace(std::array{4, 5});
     },
     unchanged, never_jumps},
    {"append to a ring", [](element_lists &s) { s.ring->append(4); }, unchanged, never_jumps},
    {"insert_before in a ring", [](element_lists &s) { s.ring->insert_before(s.ring->position_at(0), 4); }, unchanged,
     never_jumps},
    {"copy of a ring", [](element_lists &s) { s.copied.emplace(s.ring->copy()); }, unchanged, never_jumps},
    {"remove_if of a ring", [](element_lists &s) { s.ring->remove_if(is_odd); }, usable, never_jumps},
    {"open_at", [](element_lists &s) { s.result.emplace(std::move(*s.ring).open_at(s.ring->position_at(1))); },
     unchanged, never_jumps},
    {"split of a ring",
     [](element_lists &s) { s.result.emplace(std::move(*s.ring).split(s.ring->position_at(1)).second); }, unchanged,
     never_jumps},
};

struct job {
    int number;
    mova::links waiting = {};
};
using jobs = mova::intrusive_list<job, &job::waiting, mova::host_delete>;

/* A list that owns 1 2 3. */
struct intrusive_lists : kept<jobs> {
    intrusive_lists()
    {
        c.emplace();
        for (int number : {1, 2, 3})
            c->append(mova::make_item<job>(number));
    }

    std::string state() const
    {
        std::string text;
        for (const job &each : *c)
            text += std::to_string(each.number) + " ";
        return text + (result ? "made" : "");
    }

    int broken_invariant() const { return mova::broken_invariant(*c->get()); }

    void go_on()
    {
        c->append(mova::make_item<job>(8));
        c->remove(c->begin());
    }
};

const fault_row<intrusive_lists> intrusive_list_rows[] = {
    {"intrusive_list()", [](intrusive_lists &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"intrusive_ring()", [](intrusive_lists &) { mova::intrusive_ring<job, &job::waiting> made; }, unchanged,
     never_jumps},
    {"append", [](intrusive_lists &s) { s.c->append(mova::make_item<job>(4)); }, unchanged, never_jumps},
    {"copy",
     [](intrusive_lists &s) {
         s.result.emplace(s.c->copy([](const job &each) {
             callback_called();
             return mova::make_item<job>(each.number);
         }));
     },
     unchanged, never_jumps},
    {"remove_if", [](intrusive_lists &s) { s.c->remove_if([](const job &each) { return is_odd(each.number); }); },
     usable, never_jumps},
};

/* A stack with 1 at its bottom, and 2. */
struct element_stacks : kept<mova::element_stack<int>> {
    element_stacks()
    {
        c.emplace();
        c->push(1);
        c->push(2);
    }
    std::string state() const
    {
        return std::to_string(c->size()) + " " + std::to_string(c->top()) + (result ? " made" : "");
    }
    int broken_invariant() const { return mova::broken_invariant(*c->get()); }
    void go_on()
    {
        c->push(8);
        c->pop();
    }
};

const fault_row<element_stacks> element_stack_rows[] = {
    {"element_stack()", [](element_stacks &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"push", [](element_stacks &s) { s.c->push(3); }, unchanged, never_jumps},
};

struct double_lists : kept<mova::double_list> {
    double_lists()
    {
        c.emplace({3.0, 1.0, 1.25, 2.0});
        other.emplace({1.0, 2.0});
    }
    std::string state() const { return text_of(*c) + text_of(*other) + (result ? "made" : ""); }
    int broken_invariant() const { return mova::broken_invariant(*c->get()) + mova::broken_invariant(*other->get()); }
    void go_on()
    {
        c->append(0.5);
        c->sort();
        c->thin_out(0.5);
    }
};

const fault_row<double_lists> double_list_rows[] = {
    {"double_list()", [](double_lists &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"append", [](double_lists &s) { s.c->append(4); }, unchanged, never_jumps},
    {"insert_unique", [](double_lists &s) { s.other->insert_unique(1.5, 0.25); }, unchanged, never_jumps},
};

/* ---- arrays ---- */

/* A full array of 1 2 3, whose growth also answers with null: then its elements are lost, and its block is the host's. */
struct dynamic_arrays : kept<mova::dynamic_array<int>> {
    dynamic_arrays()
    {
        c.emplace(3);
        for (int number : {1, 2, 3})
            c->append(number);
        other.emplace(1);
        other->append(7);
    }
    std::string state() const { return text_of(*c) + "other " + text_of(*other) + (result ? "made" : ""); }
    int broken_invariant() const { return mova::broken_invariant(*c->get()); }
    void go_on()
    {
        c->append(8);
        c->remove(0);
        c->reverse();
    }
    void release()
    {
        c->clear_storage();
        other->assign(*c);
        kept::release();
    }
};

const answers loses_elements{{grade::releasable, true}, {fault_source::allocation}, true};

const fault_row<dynamic_arrays> dynamic_array_rows[] = {
    {"dynamic_array()", [](dynamic_arrays &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"dynamic_array(elements)",
     [](dynamic_arrays &s) {
         s.result.emplace({4, 5});
     },
     unchanged, never_jumps},
    {"append", [](dynamic_arrays &s) { s.c->append(4); }, unchanged, never_jumps},
    {"append of two",
     [](dynamic_arrays &s) {
         s.c->append(std::span<const int>(std::array{4, 5}));
     },
     unchanged, never_jumps},
    {"insert", [](dynamic_arrays &s) { s.c->insert(1, 4); }, unchanged, never_jumps},
    {"insert of two",
     [](dynamic_arrays &s) {
         s.c->insert(1, std::span<const int>(std::array{4, 5}));
     },
     unchanged, never_jumps},
    {"grow_to", [](dynamic_arrays &s) { s.c->grow_to(5); }, unchanged, never_jumps},
    {"reserve", [](dynamic_arrays &s) { s.c->reserve(9); }, unchanged, never_jumps, loses_elements},
    {"resize", [](dynamic_arrays &s) { s.c->resize(5); }, unchanged, never_jumps},
    {"remove_if", [](dynamic_arrays &s) { s.c->remove_if(is_odd); }, usable, never_jumps},
    {"copy", [](dynamic_arrays &s) { s.result.emplace(s.c->copy()); }, unchanged, never_jumps},
    {"assign", [](dynamic_arrays &s) { s.c->assign(*s.other); }, releasable, never_jumps},
    {"roll", [](dynamic_arrays &s) { s.c->roll(1); }, unchanged, never_jumps},
    {"reverse", [](dynamic_arrays &s) { s.c->reverse(); }, unchanged, never_jumps},
};

/* A full array of 1 2 3, and a ring of them. */
struct block_arrays : kept<mova::block_array<int>> {
    block_arrays()
    {
        c.emplace({1, 2, 3});
        other.emplace({1, 2, 3});
        other->close();
    }
    std::string state() const
    {
        return text_of(*c) + (c->is_closed() ? "ring " : "other ") + text_of(*other) +
               (other->is_closed() ? "ring " : "") + (result ? "made" : "");
    }
    int broken_invariant() const { return mova::broken_invariant(*c->get()); }
    void go_on()
    {
        for (auto *each : {&*c, &*other}) {
            each->append(8);
            each->remove(0);
            each->reverse();
        }
    }
};

const fault_row<block_arrays> block_array_rows[] = {
    {"block_array(room)", [](block_arrays &s) { s.result.emplace(4); }, unchanged, never_jumps},
    {"block_array(elements)",
     [](block_arrays &s) {
         s.result.emplace({4, 5});
     },
     unchanged, never_jumps},
    {"block_array(range)",
     [](block_arrays &s) {
         s.result.emplace(std::array{4, 5});
     },
     unchanged, never_jumps},
    {"append", [](block_arrays &s) { s.c->append(4); }, unchanged, never_jumps},
    {"append of another", [](block_arrays &s) { s.c->append(std::move(*s.other)); }, unchanged, never_jumps},
    {"insert", [](block_arrays &s) { s.c->insert(1, 4); }, unchanged, never_jumps},
    {"set_capacity", [](block_arrays &s) { s.c->set_capacity(9); }, unchanged, never_jumps},
    {"remove_if", [](block_arrays &s) { s.c->remove_if(is_odd); }, usable, never_jumps},
    {"open_at", [](block_arrays &s) { s.other->open_at(1); }, unchanged, never_jumps},
    {"split", [](block_arrays &s) { s.result.emplace(s.c->split(1)); }, unchanged, never_jumps},
    {"roll", [](block_arrays &s) { s.other->roll(1); }, unchanged, never_jumps},
    {"copy", [](block_arrays &s) { s.result.emplace(s.c->copy()); }, unchanged, never_jumps},
    {"assign",
     [](block_arrays &s) {
         s.c->append(4);
         s.other->assign(*s.c);
     },
     usable, never_jumps},
    {"reverse", [](block_arrays &s) { s.c->reverse(); }, unchanged, never_jumps},
};

/* A table that is full with 1023 pointers. */
struct id_tables : kept<mova::id_table<int>> {
    int number = 0;

    id_tables()
    {
        c.emplace();
        for (int i = 1; i < 1024; ++i)
            c->add(&number);
    }
    std::string state() const { return std::to_string(c->get()->nitems) + (result ? " made" : ""); }
    int broken_invariant() const { return mova::broken_invariant_of_table(*c->get()); }
    void go_on()
    {
        const int32_t id = c->add(&number);
        c->allow_reuse();
        c->set(id, nullptr);
    }
};

const fault_row<id_tables> id_table_rows[] = {
    {"id_table()", [](id_tables &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"add", [](id_tables &s) { s.c->add(&s.number); }, unchanged, never_jumps},
    {"set beyond", [](id_tables &s) { s.c->set(3000, &s.number); }, unchanged, never_jumps},
    {"set of an id in use", [](id_tables &s) { s.c->set(1, nullptr); }, unchanged, never_jumps},
    {"an id that is none", [](id_tables &s) { static_cast<void>((*s.c)[2000]); }, unchanged, never_jumps},
};

/* Full with 1 and 3, which stand for b and d. */
struct number_sets : kept<mova::sorted_numbers> {
    std::optional<mova::dynamic_array<char>> letters;

    number_sets()
    {
        c.emplace(2);
        c->add(3);
        c->add(1);
        other.emplace(2);
        for (int32_t number : {1, 3, 9})
            other->add(number);
        letters.emplace(4);
        for (char letter : {'a', 'b', 'c', 'd'})
            letters->append(letter);
    }
    std::string state() const { return text_of(*c) + "other " + text_of(*other) + (result ? "made" : ""); }
    int broken_invariant() const { return mova::broken_invariant_of_numbers(*c->get()); }
    void go_on()
    {
        c->add(2);
        c->remove(1);
    }
    void release()
    {
        letters.reset();
        kept::release();
    }
};

const fault_row<number_sets> sorted_number_rows[] = {
    {"sorted_numbers()", [](number_sets &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"sorted_numbers(numbers)",
     [](number_sets &s) {
         s.result.emplace({5, 6});
     },
     unchanged, never_jumps},
    {"add", [](number_sets &s) { s.other->add(10); }, unchanged, never_jumps},
    {"copy", [](number_sets &s) { s.result.emplace(s.c->copy()); }, unchanged, never_jumps},
    {"companion_reversed", [](number_sets &s) { s.c->companion_reversed(4); }, unchanged, never_jumps},
    {"insert of a companion", [](number_sets &s) { mova::companion(*s.letters, *s.c).insert(0, 'x'); }, unchanged,
     never_jumps},
    {"reverse of a companion", [](number_sets &s) { mova::companion(*s.letters, *s.c).reverse(); }, unchanged,
     never_jumps},
    {"roll of a companion", [](number_sets &s) { mova::companion(*s.letters, *s.c).roll(1); }, unchanged, never_jumps},
};

/* ---- tables ---- */

/* One that is full, and one that shrinks at the next removal. */
struct hash_tables : kept<mova::hash_table<int, int>> {
    hash_tables()
    {
        c.emplace();
        other.emplace();
        for (int key = 1; key <= 7; ++key)
            c->set(key, key);
        for (int key = 1; key <= 20; ++key)
            other->set(key, key);
        for (int key = 9; key <= 20; ++key)
            other->remove(key);
    }
    static std::string text(const mova::hash_table<int, int> &t)
    {
        std::string text = std::to_string(t.get()->capacity) + ": ";
        for (const auto &[key, value] : t)
            text += std::to_string(key) + "=" + std::to_string(value) + " ";
        return text;
    }
    std::string state() const { return text(*c) + text(*other) + (result ? "made" : ""); }
    int broken_invariant() const { return mova::broken_invariant(*c->get()) + mova::broken_invariant(*other->get()); }
    void go_on()
    {
        c->set(30, 1);
        c->remove(1);
        other->remove(1);
    }
};

const fault_row<hash_tables> hash_table_rows[] = {
    {"hash_table()", [](hash_tables &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"set that grows", [](hash_tables &s) { s.c->set(8, 8); }, unchanged, never_jumps},
    {"remove that shrinks", [](hash_tables &s) { s.other->remove(1); }, unchanged, never_jumps},
};

/* A full table behind the pair in front. */
struct lookups : kept<mova::pointer_lookup<int, int>> {
    lookups()
    {
        c.emplace();
        for (int key = 1; key <= 8; ++key)
            c->add(key, 10 * key);
    }
    std::string state() const
    {
        std::string text;
        for (int key = 1; key <= 9; ++key)
            text += std::to_string(c->find(key)) + " ";
        return text + (result ? "made" : "");
    }
    int broken_invariant() const { return mova::broken_invariant(*c->get()); }
    void go_on()
    {
        c->add(11, 1);
        c->remove(1);
    }
};

const fault_row<lookups> pointer_lookup_rows[] = {
    {"pointer_lookup()", [](lookups &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"add", [](lookups &s) { s.c->add(9, 90); }, unchanged, never_jumps},
};

struct record {
    int key, value;
};
struct asked_hash {
    std::size_t operator()(int key) const { return callback_called(), static_cast<std::size_t>(key % 10); }
};
struct asked_equal {
    bool operator()(int a, int b) const { return callback_called(), a == b; }
};
using records = mova::keyed_table<record, &record::key, asked_hash, asked_equal>;

/* Hashes of two keys each. One whose three blocks are full, and one that gives memory back at the next removal. */
struct keyed_tables : kept<records> {
    keyed_tables()
    {
        c.emplace();
        other.emplace();
        for (int key = 1; key <= 8; ++key)
            c->insert({key < 8 ? key : 11, key});
        for (int key = 0; key < 10; ++key)
            other->insert({key, key});
        for (int key = 8; key < 10; ++key)
            other->remove(key);
    }
    static std::string text(const records &t)
    {
        std::string text;
        for (const record &each : t)
            text += std::to_string(each.key) + "=" + std::to_string(each.value) + " ";
        return text;
    }
    std::string state() const { return text(*c) + "other " + text(*other) + (result ? "made" : ""); }
    int broken_invariant() const
    {
        for (const record &each : *c) {
            if (c->find(each.key) != &each)
                return 1;
        }
        return 0;
    }
    void go_on()
    {
        c->insert({31, 1});
        c->remove(31);
        c->remove(2);
        other->remove(3);
    }
};

const fault_row<keyed_tables> keyed_table_rows[] = {
    {"keyed_table(range)",
     [](keyed_tables &s) {
         s.result.emplace(std::array{record{1, 1}, record{11, 2}});
     },
     unchanged, never_jumps},
    {"insert",
     [](keyed_tables &s) {
         s.c->insert({21, 9});
     },
     unchanged, never_jumps},
    {"insert of a new hash",
     [](keyed_tables &s) {
         s.c->insert({8, 9});
     },
     unchanged, never_jumps},
    {"insert of a key that is there",
     [](keyed_tables &s) {
         s.c->insert({11, 9});
     },
     unchanged, never_jumps},
    {"find", [](keyed_tables &s) { s.c->find(1); }, unchanged, never_jumps},
    {"contains", [](keyed_tables &s) { static_cast<void>(s.c->contains(31)); }, unchanged, never_jumps},
    {"remove", [](keyed_tables &s) { s.c->remove(1); }, unchanged, never_jumps},
    {"remove of the last with a hash", [](keyed_tables &s) { s.other->remove(0); }, unchanged, never_jumps},
};

/* ---- trees ---- */

struct entry {
    int key;
};
struct by_key {
    auto operator()(const entry &a, const entry &b) const { return callback_called(), a.key <=> b.key; }
};
using entries = mova::balanced_multiset<entry, by_key>;

/* Of 2 4 6 8 10; 1 and 99 are outside. The state is which items are where. */
struct trees : kept<entries> {
    entry items[7] = {{2}, {4}, {6}, {8}, {10}, {1}, {99}};

    trees()
    {
        c.emplace();
        for (int i = 0; i < 5; ++i)
            c->insert(items[i]);
    }
    std::string state() const
    {
        std::string text;
        for (const entry &each : *c)
            text += std::to_string(&each - items) + " ";
        return text + (result ? "made" : "");
    }
    int broken_invariant() const { return mova::broken_invariant(*c->get(), entries::compare); }
    void go_on()
    {
        c->insert(items[5]);
        c->take(c->begin());
        c->sort();
    }
    entries::position at(int index) { return std::next(c->begin(), index); }
};

const fault_row<trees> tree_rows[] = {
    {"balanced_multiset()", [](trees &s) { s.result.emplace(); }, unchanged, never_jumps},
    {"balanced_multiset(range)", [](trees &s) { s.result.emplace(s.items); }, unchanged, never_jumps},
    {"insert", [](trees &s) { s.c->insert(s.items[5]); }, unchanged, never_jumps},
    {"search", [](trees &s) { s.c->search(s.items[2]); }, unchanged, never_jumps},
    {"contains", [](trees &s) { static_cast<void>(s.c->contains(s.items[6])); }, unchanged, never_jumps},
    {"find_item", [](trees &s) { s.c->find_item(s.items[2]); }, unchanged, never_jumps},
    {"lower_bound", [](trees &s) { s.c->lower_bound(s.items[2]); }, unchanged, never_jumps},
    {"upper_bound", [](trees &s) { s.c->upper_bound(s.items[2]); }, unchanged, never_jumps},
    {"equal_range", [](trees &s) { s.c->equal_range(s.items[2]); }, unchanged, never_jumps},
    {"take", [](trees &s) { s.c->take(s.at(0)); }, unchanged, never_jumps},
    {"take_anywhere", [](trees &s) { s.c->take_anywhere(s.at(4)); }, unchanged, never_jumps},
    {"take_item", [](trees &s) { s.c->take_item(s.items[2]); }, unchanged, never_jumps},
    {"take_item of a stranger", [](trees &s) { s.c->take_item(s.items[6]); }, unchanged, never_jumps, raise_returns},
    {"remove_equal", [](trees &s) { s.c->remove_equal(s.items[0]); }, unchanged, never_jumps},
    {"positions", [](trees &s) { static_cast<void>(s.c->positions()); }, unchanged, never_jumps},
    {"from_next",
     [](trees &s) {
         const auto cursor = s.c->positions();
         static_cast<void>(cursor.from_next());
     },
     unchanged, never_jumps},
    {"remove_if", [](trees &s) { s.c->remove_if([](const entry &each) { return is_odd(each.key / 2); }); }, usable,
     never_jumps},
};

/* The keys are out of order until the sort is done. */
struct unsorted_trees : trees {
    unsorted_trees() { std::swap(items[0].key, items[3].key); }
    int broken_invariant() const { return 0; }
    void go_on()
    {
        c->sort();
        trees::go_on();
        EXPECT_EQ(trees::broken_invariant(), 0);
    }
};

const fault_row<unsorted_trees> sort_rows[] = {
    {"sort", [](unsorted_trees &s) { s.c->sort(); }, unchanged, never_jumps},
};

/* ---- the swap cache, the colour table, items ---- */

struct tile {
    char name;
    std::size_t body_size() const { return callback_called(), 4; }
    void fill(std::span<char> body)
    {
        callback_called();
        std::ranges::fill(body, name);
    }
    void write_back(std::span<char>) { callback_called(); }
    void let_go() { callback_called(); }
};
using tiles = mova::swap_cache<tile, char>;

/* A (dirty) and B (out), in a pool that is full with A. */
struct swap_caches : kept<tiles> {
    tile items[3] = {{'A'}, {'B'}, {'C'}};

    swap_caches()
    {
        cc_debug = 1;
        recording_host::get().pool().set_budget(4);
        c.emplace(recording_host::get().pool().address());
        c->insert(items[1]);
        const mb_handle block = c->alloc(4);
        std::ranges::fill(recording_host::get().pool().bytes_of(block), static_cast<unsigned char>('A'));
        c->insert(items[0], block);
    }
    ~swap_caches() { cc_debug = 0; }

    std::string state() const
    {
        std::string text;
        for (const cc_entry *at = c->get()->first; at; at = at->next)
            text += static_cast<const tile *>(at->item)->name + std::to_string(at->status) + " ";
        return text + (result ? "made" : "");
    }
    int broken_invariant() const
    {
        return mova::broken_invariant(
            *c->get(), [](mb_handle handle) { return recording_host::get().pool().name_of(handle)[0] == 'b'; });
    }
    void go_on()
    {
        recording_host::get().pool().set_budget(SIZE_MAX);
        for (tile &each : items) {
            if (const auto entry = at(each.name); entry != c->end()) {
                EXPECT_EQ(c->body(entry).front(), each.name);
            }
        }
        c->flush();
    }
    tiles::position at(char name) { return std::ranges::find(*c, name, &tile::name); }
};

const fault_row<swap_caches> swap_cache_rows[] = {
    {"swap_cache()", [](swap_caches &s) { s.result.emplace(recording_host::get().pool().address()); }, unchanged,
     never_jumps},
    {"insert", [](swap_caches &s) { s.c->insert(s.items[2]); }, unchanged, never_jumps},
    {"body in memory", [](swap_caches &s) { s.c->body(s.at('A')); }, usable, never_jumps},
    {"body that evicts", [](swap_caches &s) { s.c->body(s.at('B')); }, usable, never_jumps},
    {"body without room",
     [](swap_caches &s) {
         recording_host::get().pool().set_budget(3);
         s.c->body(s.at('B'));
     },
     usable,
     never_jumps,
     {usable, {fault_source::raise}}},
    {"alloc that evicts",
     [](swap_caches &s) {
         mb_handle block = s.c->alloc(4);
         s.c->free(block);
     },
     usable, never_jumps},
    /* Where such a size can be named: elsewhere what is in memory is evicted for half of it. */
    {"alloc of 4 GiB", [](swap_caches &s) { s.c->alloc(std::size_t{1} << 31 << (sizeof(std::size_t) > 4)); },
     sizeof(std::size_t) > 4 ? unchanged : usable, never_jumps},
    {"swap_out", [](swap_caches &s) { s.c->swap_out(s.at('A')); }, unchanged, never_jumps},
    {"flush", [](swap_caches &s) { s.c->flush(); }, usable, never_jumps},
    {"clear", [](swap_caches &s) { s.c->clear(); }, usable, never_jumps},
};

struct told {
    void operator()(std::int32_t, mova::colour) const { callback_called(); }
};

/* Before any other test of this program makes the table. */
[[maybe_unused]] const bool start_is_remembered = (restart_colour_table(), true);

/* A table with one dynamic colour. */
struct colours : kept<mova::dynamic_colour> {
    colours()
    {
        restart_colour_table();
        mova::colour_table::make<told>(42);
        c.emplace(mova::colour{1, 2, 3});
    }
    std::string state() const
    {
        std::string text;
        for (std::int32_t index = 36; index < 42; ++index) {
            const mova::colour at = mova::colour_table::get(index);
            text += std::to_string(mova::clut::table.states[index]) + " " + std::to_string(at.red) + " ";
        }
        return text + (result ? "made" : "");
    }
    int broken_invariant() const { return mova::clut::broken_invariant(); }
    void go_on()
    {
        const mova::dynamic_colour another(mova::colour{7, 8, 9});
        EXPECT_EQ(mova::colour_table::get(another.get()), (mova::colour{7, 8, 9}));
    }
};

const fault_row<colours> colour_rows[] = {
    {"dynamic_colour(colour)",
     [](colours &s) {
         s.result.emplace(mova::colour{4, 5, 6});
     },
     unchanged, never_jumps},
    {"set",
     [](colours &s) {
         s.c->set({4, 5, 6});
     },
     unchanged, never_jumps},
    {"set outside",
     [](colours &) {
         mova::colour_table::set(99, {4, 5, 6});
     },
     unchanged, never_jumps},
};

struct fragile {
    int number;
    explicit fragile(int n) : number(n) { callback_called(); }
};

struct items : kept<std::unique_ptr<fragile, mova::host_delete>> {
    items() { c.emplace(mova::make_item<fragile>(1)); }
    std::string state() const { return std::to_string((*c)->number) + (result ? "made" : ""); }
    int broken_invariant() const { return 0; }
    void go_on() { *c = mova::make_item<fragile>(2); }
};

const fault_row<items> item_rows[] = {
    {"make_item", [](items &s) { s.result.emplace(mova::make_item<fragile>(3)); }, unchanged, never_jumps},
};

class TypedFaults : public recording_host_test_case {};

TEST_F(TypedFaults, WhateverFailsEachClassIsLeftAsItsHeaderSays)
{
    sweep_faults("mova::pointer_list", pointer_list_rows, 74);
    sweep_faults("mova::element_list, element_ring", element_list_rows, 86);
    sweep_faults("mova::intrusive_list", intrusive_list_rows, 26);
    sweep_faults("mova::element_stack", element_stack_rows, 4);
    sweep_faults("mova::double_list", double_list_rows, 6);
    sweep_faults("mova::dynamic_array", dynamic_array_rows, 40);
    sweep_faults("mova::block_array", block_array_rows, 36);
    sweep_faults("mova::id_table", id_table_rows, 12);
    sweep_faults("mova::sorted_numbers, companion", sorted_number_rows, 22);
    sweep_faults("mova::hash_table", hash_table_rows, 14);
    sweep_faults("mova::pointer_lookup", pointer_lookup_rows, 12);
    sweep_faults("mova::keyed_table", keyed_table_rows, 70);
    sweep_faults("mova::balanced_multiset", tree_rows, 158);
    sweep_faults("mova::balanced_multiset::sort", sort_rows, 20);
    sweep_faults("mova::swap_cache", swap_cache_rows, 84);
    sweep_faults("mova::dynamic_colour", colour_rows, 8);
    sweep_faults("mova::make_item", item_rows, 4);
}

} // namespace
