/* SPDX-License-Identifier: MIT */
#include <mova/cxx/colour_table.h>
#include <mova/cxx/swap_cache.h>

#include <tests/cxx/same_calls.h>

#include <algorithm>
#include <string>

namespace {

using mova::test::log;
using mova::test::recording_host;

void write_down(const std::string &call)
{
    recording_host::get().write_down(call);
}

struct tile {
    char name;
    std::size_t pixels = 4;
    std::string saved = "";

    std::size_t body_size() const { return pixels; }
    void fill(std::span<char> body)
    {
        write_down(std::string("fill ") + name);
        std::ranges::fill(body, name);
    }
    void write_back(std::span<char> body)
    {
        write_down(std::string("write back ") + name);
        saved.assign(body.begin(), body.end());
    }
    void let_go() { write_down(std::string("let go ") + name); }
};
using tiles = mova::swap_cache<tile, char>;

static_assert(std::ranges::bidirectional_range<tiles> && std::ranges::bidirectional_range<const tiles> &&
              std::movable<tiles> && !std::is_copy_constructible_v<tiles> && sizeof(tiles) == sizeof(void *) &&
              sizeof(tiles::position) == sizeof(void *));
static_assert(std::movable<mova::dynamic_colour> && !std::is_copy_constructible_v<mova::dynamic_colour> &&
              sizeof(mova::dynamic_colour) == sizeof(std::int32_t));

class TypedCache : public mova::test::recording_host_test_case {};

TEST_F(TypedCache, BodiesAreFetchedWrittenBackAndLetGo)
{
    host.pool().set_budget(8);
    tile a = {'a'}, b = {'b'}, c = {'c'};
    {
        tiles cache(host.pool().address());
        const auto at_a = cache.insert(a);
        EXPECT_FALSE(tiles::is_in_memory(at_a));
        EXPECT_EQ(std::string_view(cache.body(at_a).data(), 4), "aaaa");
        mb_handle block = cache.alloc(4);
        std::fill_n(cache.at(block), 4, 'B');
        const auto at_b = cache.insert(b, block);
        EXPECT_TRUE(tiles::is_in_memory(at_b));
        host.take_log();
        EXPECT_EQ(cache.body(cache.insert(c)).size(), 4u);
        EXPECT_EQ(b.saved, "BBBB") << "the first in memory went";
        EXPECT_FALSE(tiles::is_in_memory(at_b));
        std::string names;
        for (const tile &each : std::as_const(cache))
            names += each.name;
        EXPECT_EQ(names, "cba");
        cache.let_go_next(at_a);
        EXPECT_EQ(cache.begin(), at_a);
        cache.swap_out(at_a);
        EXPECT_FALSE(tiles::is_in_memory(at_a));
        EXPECT_EQ(cache.remove(at_b), cache.end());
        cache.flush();
        block = cache.alloc(8);
        EXPECT_THROW(cache.body(at_a), mova::test::raised);
        cache.free(block);
        EXPECT_EQ(cache.body(at_a).front(), 'a');
        const tiles moved = std::move(cache);
        EXPECT_TRUE(cache.empty());
        host.take_log();
    }
    const log calls = host.take_log();
    ASSERT_EQ(calls.size(), 6u);
    EXPECT_EQ(calls[0], "let go a");
    EXPECT_EQ(calls[3], "let go c");
}

/* One element more than 4 GiB: 32 bits would be left with one. */
struct sheet {
    std::size_t body_size() const { return (std::size_t{1} << 30) + 1; }
    void fill(std::span<std::uint32_t>) { write_down("fill"); }
};

TEST_F(TypedCache, ABodyThatTheCacheCannotCountHasNoRoom)
{
    host.pool().set_budget(8);
    sheet huge;
    mova::swap_cache<sheet, std::uint32_t> cache(host.pool().address());
    const auto entry = cache.insert(huge);
    host.take_log();
    mova::test::expect_raise("cache", 334, 4197, [&] { cache.body(entry); });
    mova::test::expect_raise("cache", 334, 4197, [&] { cache.alloc(huge.body_size()); });
    mova::test::expect_raise("cache", 334, 4197, [&] { cc_get(cache.get(), entry.get()); });
    mova::test::fault_plan::get().arm(mova::test::fault_source::raise, mova::test::fault_way::answers, 1, true);
    EXPECT_TRUE(cache.body(entry).empty());
    EXPECT_EQ(cache.alloc(huge.body_size()), 0u);
    const std::string raised = "raise cache 334 4197";
    EXPECT_EQ(host.take_log(), (log{raised, raised, raised, raised, raised})) << "the pool is not asked";
    EXPECT_EQ(cc_get(cache.get(), entry.get()), nullptr);
    mova::test::fault_plan::get().disarm();
    EXPECT_FALSE(cache.is_in_memory(entry));
}

TEST_F(TypedCache, TheCallsAreThoseOfTheCache)
{
    static tile a = {'a'};
    mova::test::expect_same_calls(
        [this] {
            cc_cache *cache = cc_create(host.pool().address());
            cc_entry *entry = cc_insert(
                cache, &a, 0, [](void *) -> std::uint32_t { return 4; },
                [](void *item, void *block, std::uint32_t size) {
                    static_cast<tile *>(item)->fill({static_cast<char *>(block), size});
                },
                [](void *, void *) {}, [](void *item) { static_cast<tile *>(item)->let_go(); });
            cc_get(cache, entry);
            cc_swap_out(cache, entry);
            cc_get(cache, entry);
            cc_make_empty(cache);
            MM_dealloc_item(cache, sizeof *cache);
        },
        [this] {
            tiles cache(host.pool().address());
            const auto entry = cache.insert(a);
            cache.body(entry);
            cache.swap_out(entry);
            cache.body(entry);
        });
}

struct told {
    void operator()(std::int32_t index, mova::colour c) const
    {
        if (throws)
            throw index;
        last = index;
        last_colour = c;
    }
    static inline bool throws = false;
    static inline std::int32_t last = -1;
    static inline mova::colour last_colour = {};
};

TEST_F(TypedCache, ColoursAreSetByIndexAndIndicesGivenBack)
{
    using mova::colour, mova::colour_table, mova::dynamic_colour;
    colour_table::make<told>(60);
    colour_table::set(GE_WHITE, {1, 2, 3});
    EXPECT_EQ(told::last, GE_WHITE);
    EXPECT_EQ(told::last_colour, (colour{1, 2, 3}));
    EXPECT_EQ(colour_table::get(GE_WHITE), (colour{1, 2, 3}));
    colour_table::fix(41);
    colour_table::copy(41, GE_WHITE);
    EXPECT_EQ(colour_table::get(41).green, 2);
    std::int32_t index;
    {
        dynamic_colour sand({194, 178, 128});
        index = sand.get();
        EXPECT_EQ(colour_table::get(index), (colour{194, 178, 128}));
        dynamic_colour moved = std::move(sand);
        EXPECT_EQ(sand.get(), -1);
        EXPECT_NE(dynamic_colour({0, 0, 0}).get(), index);
        moved.set({5, 5, 5});
        dynamic_colour assigned({1, 1, 1});
        const std::int32_t given_back = assigned.get();
        assigned = std::move(moved);
        EXPECT_EQ(moved.get(), -1);
        EXPECT_EQ(dynamic_colour({2, 2, 2}).get(), given_back);
        dynamic_colour &same = assigned;
        assigned = std::move(same);
        EXPECT_EQ(assigned.get(), index);
    }
    dynamic_colour again({6, 6, 6});
    EXPECT_EQ(again.get(), index) << "it was given back";
    EXPECT_EQ(dynamic_colour(nullptr).get(), -1);
    const std::int32_t next = dynamic_colour({7, 7, 7}).get();
    told::throws = true;
    EXPECT_THROW(dynamic_colour({8, 8, 8}), std::int32_t);
    told::throws = false;
    EXPECT_EQ(dynamic_colour::adopt(CLUT_new_index()).get(), next) << "given back by the one that was not made";
    EXPECT_EQ(dynamic_colour({9, 9, 9}).get(), next) << "given back by its owner";
    EXPECT_EQ(again.release(), index);
    host.take_log();
}

} // namespace
