/* SPDX-License-Identifier: MIT */
#include <mova/cxx/hash_table.h>
#include <mova/cxx/keyed_table.h>
#include <mova/cxx/pointer_lookup.h>

#include <tests/cxx/same_calls.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>

namespace {

using mova::test::expect_same_calls;
using mova::test::items_of;

enum class colour { red = 1, green };

using table = mova::hash_table<int, colour>;
static_assert(std::ranges::forward_range<const table> && std::ranges::common_range<table> &&
              std::ranges::sized_range<table> && std::movable<table> && !std::is_copy_constructible_v<table> &&
              sizeof(table) == sizeof(void *) && sizeof(table::iterator) == sizeof(HSH_iterator));
using lookup = mova::pointer_lookup<int *, int>;
static_assert(std::movable<lookup> && sizeof(lookup) == sizeof(void *));

struct country {
    std::string name;
    int visits = 0;
    bool operator==(const country &) const = default;
};
using countries = mova::keyed_table<country, &country::name>;
static_assert(std::ranges::contiguous_range<const countries> && std::ranges::sized_range<countries> &&
              std::movable<countries> && !std::is_copy_constructible_v<countries> &&
              sizeof(countries) == 3 * sizeof(void *));

class TypedTables : public mova::test::recording_host_test_case {};

TEST_F(TypedTables, WordsAreStoredAndFound)
{
    table t;
    t.set(-5, colour::red);
    t.set(8, colour::green);
    t.set(16, colour{});
    EXPECT_EQ(t.find(-5), colour::red);
    EXPECT_EQ(t.find(16), colour{}) << "a value of 0 is one";
    EXPECT_EQ(t.find(24), std::nullopt) << "whose home is taken";
    EXPECT_EQ(t.find(1), std::nullopt);
    EXPECT_EQ(t.find(0), std::nullopt);
    EXPECT_EQ(t.get_or(8), colour::green);
    EXPECT_EQ(t.get_or(16, colour::red), colour{});
    EXPECT_EQ(t.get_or(24, colour::red), colour::red);
    EXPECT_EQ(t.get_or(0, colour::red), colour::red);
    EXPECT_TRUE(t.contains(16));
    EXPECT_FALSE(t.contains(24));
    EXPECT_FALSE(t.contains(0));
    EXPECT_EQ(t.size(), 3u);
    EXPECT_TRUE(t.remove(8));
    EXPECT_FALSE(t.remove(8));
    std::map<int, colour> seen;
    for (const auto &[key, value] : t)
        seen[key] = value;
    EXPECT_EQ(seen, (std::map<int, colour>{{-5, colour::red}, {16, colour{}}}));
    table same(100);
    same.set(16, colour{});
    EXPECT_NE(same, t);
    same.set(-5, colour::red);
    EXPECT_EQ(same, t);
    const table moved = std::move(t);
    EXPECT_EQ(t.begin(), t.end());
    EXPECT_TRUE(t.empty());
}

TEST_F(TypedTables, EveryLookAgreesWithTheHashTable)
{
    mova::hash_table<unsigned, int> t;
    std::mt19937 random(1);
    for (int step = 0; step < 3000; ++step) {
        const unsigned key = static_cast<unsigned>(random() % 64) * 8 + 1;
        if (random() % 3)
            t.set(key, step % 5);
        else
            t.remove(key);
        const unsigned asked = static_cast<unsigned>(random() % 64) * 8 + 1;
        const bool there = HSH_contains_key(t.get(), static_cast<mova_word>(asked)) != 0;
        const int value = static_cast<int>(HSH_get_value(t.get(), static_cast<mova_word>(asked)));
        ASSERT_EQ(t.contains(asked), there);
        ASSERT_EQ(t.find(asked), there ? std::optional(value) : std::nullopt);
        ASSERT_EQ(t.get_or(asked, 9), there ? value : 9);
    }
}

TEST_F(TypedTables, TheCallsAreThoseOfTheHashTable)
{
    expect_same_calls(
        [] {
            HSH_table *t = HSH_create(0, 0);
            for (mova_word key = 1; key < 20; ++key)
                HSH_set_value(t, key, key);
            for (mova_word key = 1; key < 20; ++key)
                HSH_remove_entry(t, key);
            HSH_release(&t);
        },
        [] {
            mova::hash_table<int, int> t;
            for (int key = 1; key < 20; ++key)
                t.set(key, key);
            for (int key = 1; key < 20; ++key)
                t.remove(key);
        });
}

TEST_F(TypedTables, TheKeyThatWasAddedLastStandsInFront)
{
    int keys[2];
    lookup l;
    EXPECT_EQ(l.add(&keys[0], 1), 0);
    EXPECT_EQ(l.add(&keys[1], 2), 1);
    EXPECT_EQ(l.add(&keys[0], 3), 2);
    EXPECT_EQ(l.find(&keys[0]), 3);
    EXPECT_EQ(l.find(&keys[1]), 2);
    l.remove(&keys[0]);
    EXPECT_EQ(l.find(&keys[0]), 1);

    struct delete_country {
        void operator()(country *each) const
        {
            EXPECT_NE(each, nullptr);
            delete each;
        }
    };
    mova::pointer_lookup<int, country *, delete_country> owning;
    owning.add(1, new country{"a"});
    owning.add(3, nullptr);
    owning.add(2, new country{"b"});
    EXPECT_EQ(owning.find(1)->name, "a");
}

TEST_F(TypedTables, StatisticsAreThoseOfTheTables)
{
    mova::hash_table<int, int> pages(0, 0);
    mova::pointer_lookup<int, int> behind_the_front;
    for (int page = 4096; page <= 4 * 4096; page += 4096) {
        pages.set(page, 1);
        behind_the_front.add(page, 1);
    }
    EXPECT_EQ(pages.statistics().longest_hit, 4);
    EXPECT_EQ(pages.statistics().best_shift, 11);
    EXPECT_EQ(behind_the_front.statistics().longest_hit, 3);
}

/* ---- keyed tables ---- */

TEST_F(TypedTables, RecordsAreFoundByTheirNames)
{
    countries t;
    EXPECT_EQ(t.find("France"), nullptr);
    EXPECT_FALSE(t.remove("France"));
    t.clear();
    EXPECT_EQ(t, countries());
    EXPECT_TRUE(t.insert({"France", 3}).second);
    EXPECT_TRUE(t.insert({"a country whose name is longer than a short string", 1}).second);
    const auto [there, added] = t.insert({"France", 4});
    EXPECT_FALSE(added);
    EXPECT_EQ(there->visits, 3);
    EXPECT_EQ(t.find(std::string_view("France")), there);
    EXPECT_EQ(t.find(std::string("France")), there);
    EXPECT_TRUE(std::as_const(t).contains("France"));
    EXPECT_EQ(std::ranges::count_if(t, [](const country &each) { return each.visits > 2; }), 1);
    countries same(items_of(
        std::initializer_list<country>{{"a country whose name is longer than a short string", 1}, {"France", 3}}));
    EXPECT_EQ(same, t);
    EXPECT_TRUE(t.remove("France"));
    EXPECT_NE(same, t);
    EXPECT_EQ(t.begin()->visits, 1);
    t.clear();
    EXPECT_TRUE(t.empty());
    t.insert({"Italy"});
    const countries moved = std::move(t);
    EXPECT_TRUE(t.empty());
    EXPECT_EQ(moved.size(), 1u);
    t.clear();
    t.insert({"Spain"});
    EXPECT_TRUE(t.contains("Spain"));
}

TEST_F(TypedTables, TablesAreEqualThatHaveTheSameKeysWithTheSameValues)
{
    table one, other;
    one.set(1, colour::red);
    other.set(1, colour::green);
    EXPECT_NE(one, other);
    other.set(1, colour::red);
    EXPECT_EQ(one, other);
    other.remove(1);
    other.set(2, colour::red);
    EXPECT_NE(one, other);

    countries here, there;
    here.insert({"France", 3});
    there.insert({"France", 4});
    EXPECT_NE(here, there);
    there.find("France")->visits = 3;
    EXPECT_EQ(here, there);
    there.remove("France");
    there.insert({"Italy", 3});
    EXPECT_NE(here, there);
}

/* Every byte counts, wherever it stands in a text of any length, and so does the length. */
TEST_F(TypedTables, TextsThatDifferInOneByteHaveOtherHashes)
{
    const mova::key_hash hash;
    std::set<std::uint64_t> seen;
    std::size_t texts = 0;
    for (std::size_t length = 0; length <= 33; ++length) {
        std::string text(length, 'a');
        EXPECT_EQ(hash(text), hash(text.c_str()));
        EXPECT_EQ(hash(text), hash(std::string_view(text)));
        for (std::size_t at = 0; at < length; ++at) {
            for (const char other : {'\0', 'b', '\x80'}) {
                text[at] = other;
                seen.insert(hash(text)), ++texts;
            }
            text[at] = 'a';
        }
        seen.insert(hash(text)), ++texts;
    }
    EXPECT_EQ(seen.size(), texts);
}

/* Few hashes, so that chains are long. */
struct poor_hash {
    unsigned modulus;
    std::size_t operator()(std::string_view text) const { return text.size() % modulus; }
};

TEST_F(TypedTables, ChainsOfEqualHashesBehaveAsAMap)
{
    for (const unsigned modulus : {1u, 3u, 1000u}) {
        mova::keyed_table<country, &country::name, poor_hash> t(poor_hash{modulus});
        std::map<std::string, int> model;
        std::mt19937 random(modulus);
        for (int step = 0; step < 3000; ++step) {
            const std::string name(random() % 40, static_cast<char>('a' + random() % 3));
            if (random() % 5 < 3)
                ASSERT_EQ(t.insert({name, step}).second, model.insert({name, step}).second);
            else
                ASSERT_EQ(t.remove(name), model.erase(name) == 1);
            const std::string asked(random() % 40, 'b');
            const country *found = t.find(asked);
            ASSERT_EQ(found != nullptr, model.contains(asked));
            ASSERT_TRUE(!found || found->visits == model[asked]);
        }
        std::map<std::string, int> held;
        for (const country &each : t)
            held[each.name] = each.visits;
        EXPECT_EQ(held, model);
    }
}

TEST_F(TypedTables, AKeyedTableWhoseHashCapturesMovesAndStaysUsable)
{
    unsigned modulus = 3;
    auto hash = [&modulus](std::string_view text) { return text.size() % modulus; };
    mova::keyed_table<country, &country::name, decltype(hash)> a(hash), b(hash);
    a.insert({"Chad", 1});
    b.insert({"Fiji", 2});
    b = std::move(a);
    EXPECT_TRUE(b.contains("Chad") && !b.contains("Fiji") && b.size() == 1);
    EXPECT_TRUE(a.empty() && a.insert({"Mali", 3}).second);
    std::swap(a, b);
    EXPECT_TRUE(a.contains("Chad") && b.contains("Mali"));
}

/* Its copy throws where it is told so. */
struct heavy_hash {
    explicit heavy_hash(const bool &throws) : throws_(&throws) {}
    heavy_hash(const heavy_hash &other) : throws_(other.throws_) { *throws_ ? throw 1 : void(); }
    heavy_hash &operator=(const heavy_hash &) = default;
    std::size_t operator()(std::string_view text) const { return text.size(); }

private:
    const bool *throws_;
};

TEST_F(TypedTables, AHashThatCannotBeCopiedLeavesBothKeyedTables)
{
    bool throws = false;
    using heavy_table = mova::keyed_table<country, &country::name, heavy_hash>;
    static_assert(!std::is_nothrow_move_constructible_v<heavy_table> &&
                  std::is_nothrow_move_constructible_v<countries>);
    heavy_table a(heavy_hash{throws}), b(heavy_hash{throws});
    a.insert({"Chad", 1});
    b.insert({"Fiji", 2});
    throws = true;
    EXPECT_THROW(b = std::move(a), int);
    EXPECT_THROW(heavy_table(std::move(a)), int);
    EXPECT_TRUE(a.contains("Chad") && b.contains("Fiji") && !b.contains("Chad"));
}

TEST_F(TypedTables, AFailingMemoryServiceLeavesTheKeyedTableAsItWas)
{
    for (int failing = 1; failing <= 12; ++failing) {
        mova::keyed_table<country, &country::name, poor_hash> t(poor_hash{1000});
        std::size_t held = 0;
        mova::test::fault_plan::get().arm(mova::test::fault_source::allocation, mova::test::fault_way::throws, failing);
        for (std::size_t length = 1; length < 40; ++length) {
            try {
                held += t.insert({std::string(length, 'x')}).second;
            } catch (...) {
                EXPECT_FALSE(t.contains(std::string(length, 'x')));
            }
        }
        EXPECT_EQ(t.size(), held);
        for (std::size_t length = 1; length < 40; ++length)
            held -= t.remove(std::string(length, 'x'));
        EXPECT_EQ(held, 0u);
    }
}

/* Refuses numbers below 0. */
struct brittle_hash {
    std::size_t operator()(int number) const { return number < 0 ? throw number : static_cast<std::size_t>(number); }
};

TEST_F(TypedTables, AConstructorThatThrowsDestroysItsRecords)
{
    struct sharing {
        int number;
        std::shared_ptr<int> shared;
    };
    const auto shared = std::make_shared<int>();
    const std::vector<sharing> source = {{1, shared}, {2, shared}, {-3, shared}};
    using table_of_sharing = mova::keyed_table<sharing, &sharing::number, brittle_hash>;
    EXPECT_THROW(mova::to<table_of_sharing>(source), int);
    EXPECT_EQ(shared.use_count(), 4) << "this one and those of the source";
}

/* Throw at the call that is counted down to. */
struct throwing {
    static void count() { calls_left > 0 && --calls_left == 0 ? throw 1 : void(); }
    static inline int calls_left = 0;
};
struct throwing_hash {
    std::size_t operator()(int number) const { return throwing::count(), static_cast<std::size_t>(number % 2); }
};
struct throwing_equal {
    bool operator()(int a, int b) const { return throwing::count(), a == b; }
};

TEST_F(TypedTables, AHashOrAComparisonThatThrowsLeavesTheKeyedTableAsItWas)
{
    struct numbered {
        int number;
    };
    mova::keyed_table<numbered, &numbered::number, throwing_hash, throwing_equal> t;
    for (int number = 1; number <= 8; ++number)
        t.insert({number});
    const auto numbers = [&] {
        std::vector<int> all;
        std::ranges::transform(t, std::back_inserter(all), &numbered::number);
        return all;
    };
    const std::vector<int> before = numbers();
    const auto fails_at_every_call = [&](auto work) {
        for (int failing = 1;; ++failing) {
            throwing::calls_left = failing;
            try {
                work();
                break;
            } catch (int) {
                EXPECT_EQ(numbers(), before);
            }
        }
        EXPECT_GT(std::exchange(throwing::calls_left, 0), 0);
    };
    fails_at_every_call([&] { EXPECT_NE(t.find(2), nullptr); });
    fails_at_every_call([&] { EXPECT_FALSE(t.insert({3}).second); });
    fails_at_every_call([&] { EXPECT_FALSE(t.contains(9)); });
    fails_at_every_call([&] { EXPECT_TRUE(t.remove(1)); });
    EXPECT_EQ(t.size(), 7u);
    for (int number = 2; number <= 8; ++number)
        EXPECT_EQ(t.find(number)->number, number);
}

/* What is looked for, and what is put in, may lie in the table. */
TEST_F(TypedTables, RecordsOfTheTableMayBeGivenToItsEdits)
{
    countries t;
    for (const char *name : {"France", "Italy", "Norway"})
        t.insert({name});
    EXPECT_FALSE(t.insert(*t.begin()).second);
    EXPECT_TRUE(t.remove(t.begin()->name));
    EXPECT_FALSE(t.contains("France"));
    EXPECT_TRUE(t.contains("Norway") && t.contains("Italy"));
    std::swap(t, t);
    EXPECT_EQ(t.size(), 2u);
    EXPECT_EQ(t, t);
}

TEST_F(TypedTables, KeysMayBeComputedFromRecords)
{
    mova::keyed_table<std::pair<int, int>, [](const std::pair<int, int> &each) { return each.first / 10; }> t;
    EXPECT_TRUE(t.insert({15, 0}).second);
    EXPECT_FALSE(t.insert({17, 0}).second);
    EXPECT_EQ(t.find(1)->first, 15);
    struct one_hash {
        std::size_t operator()(int) const { return 1; }
    };
    mova::keyed_table<int, [](int each) { return each / 10; }, one_hash> chained;
    for (const int each : {15, 25, 35, 26})
        chained.insert(each);
    EXPECT_EQ(items_of(chained), (std::vector<int>{15, 25, 35}));
    EXPECT_EQ(*chained.find(1), 15);
    EXPECT_EQ(chained.find(4), nullptr);
}

/* They move as bytes. */
TEST_F(TypedTables, RecordsThatAreCopiedAsBytesKeepTheirPlacesWhereTheTableGrows)
{
    struct place {
        int number, weight;
    };
    mova::keyed_table<place, &place::number> t;
    for (int number = 0; number < 100; ++number)
        t.insert({number, 3 * number});
    ASSERT_EQ(t.size(), 100u);
    EXPECT_EQ(std::as_const(t).data(), t.begin());
    for (int number = 0; number < 100; ++number) {
        EXPECT_EQ(t.data()[number].weight, 3 * number);
        EXPECT_EQ(t.find(number), t.data() + number);
    }
}

} // namespace
