/* SPDX-License-Identifier: MIT */
#include <mova/host/internal/invariants.h>

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

using mova::block_pool;

constexpr size_t unit = mova::gap_classes::unit;
constexpr mb_handle unknown = 40;

/* A pool as it should be, whose records can be written to; each row of a table then breaks it.

       A | 1100 | B | 1101 | C | 1100 | D | 3          units of gaps

   The gaps of 1100 and 1101 units are of one class: that of A is its tree's root, that of C hangs in a list behind it, and
   that of B is its child on side 0. */
class open_pool {
public:
    static constexpr mb_handle a = 1, b = 3, c = 5, d = 7;

    /* The gaps, of so many units each, come in this order; each lies behind a block of one unit. */
    explicit open_pool(const std::vector<size_t> &gaps = {1100, 1101, 1100})
        : budget(std::accumulate(gaps.begin(), gaps.end(), gaps.size() + 1 + 3) * unit),
          pool(mova::take_memory(budget), block_pool::empty_table(), budget)
    {
        for (const size_t units : gaps) {
            pool.allocate(unit);
            pool.allocate(units * unit);
        }
        pool.allocate(unit);
        for (mb_handle gap = 2; gap <= 2 * gaps.size(); gap += 2)
            pool.release(gap);
    }

    block_pool::block &block(mb_handle handle)
    {
        return const_cast<block_pool::block &>(std::as_const(pool).block_of(handle));
    }
    block_pool::place &place(mb_handle handle)
    {
        return const_cast<block_pool::place &>(std::as_const(pool).place_of(handle));
    }
    mova::gap_branches &branches(mb_handle handle)
    {
        return const_cast<mova::gap_branches &>(pool.branches_of(handle));
    }
    mb_statistics &statistics() { return const_cast<mb_statistics &>(pool.statistics()); }

    /* Puts a block into the index of gaps, as one of `size` bytes. */
    void index(mb_handle handle, size_t size)
    {
        block_pool::records records = {&block(0), &branches(0), pool.capacity() - 1};
        records[handle].gap = size;
        const_cast<mova::gap_index<block_pool::records> &>(pool.gaps()).insert(records, handle);
    }

    /* Moves a block, with what is around it. */
    void shift(mb_handle before, mb_handle moved, size_t bytes)
    {
        block(before).gap += bytes;
        place(moved).address += static_cast<ptrdiff_t>(bytes);
        block(moved).gap -= bytes;
    }

    const size_t budget;
    block_pool pool;
};

using open = open_pool;

const struct row {
    const char *what;
    void (*break_it)(open &x);
    int broken;
} rows[] = {
    {"nothing", [](open &) {}, 0},
    {"a handle in another's place", [](open &x) { x.place(open::a).handle = open::b; }, 1},
    {"an origin that can be taken for a block", [](open &x) { x.place(0).handle = 0; }, 1},
    {"a next that is no block", [](open &x) { x.block(open::a).next = unknown; }, 2},
    {"a next that is none", [](open &x) { x.block(open::a).next = block_pool::none; }, 2},
    {"a block that lies too high", [](open &x) { x.place(open::b).address += unit; }, 2},
    {"a prev that is not the one before", [](open &x) { x.block(open::b).prev = 0; }, 2},
    {"a ring that comes back to its midst", [](open &x) { x.block(open::d).next = open::b; }, 2},
    {"a live block that no other leads to", [](open &x) { x.place(unknown).handle = unknown; }, 2},
    {"a last gap that ends before the arena", [](open &x) { x.block(open::d).gap -= unit; }, 2},
    {"a size that is no multiple of the unit", [](open &x) { --x.block(open::a).size, ++x.block(open::a).gap; }, 3},
    {"a gap that is no multiple of the unit", [](open &x) { x.shift(open::a, open::b, 1); }, 3},
    {"sizes that are not what is counted", [](open &x) { x.block(open::a).size += unit, x.block(open::a).gap -= unit; },
     3},
    {"blocks that are not what is counted", [](open &x) { ++x.statistics().live_blocks; }, 3},
    {"a class that is set and has no gap", [](open &x) { x.index(block_pool::none, 5 * unit); }, 4},
    {"a class whose gap is no block's", [](open &x) { x.index(unknown, 5 * unit); }, 4},
    {"a gap of size 0 in the index",
     [](open &x) {
         const mb_handle full = x.pool.allocate(3 * unit);
         x.index(full, 0);
     },
     4},
    {"a gap of another class's size", [](open &x) { x.shift(open::a, open::b, size_t{0} - 100 * unit); }, 4},
    {"a list that leads to no block", [](open &x) { x.block(open::a).links.next = unknown; }, 4},
    {"a list that leads to a gap of another size", [](open &x) { x.block(open::a).links.next = open::b; }, 4},
    {"a list whose prev is another", [](open &x) { x.block(open::c).links.prev = open::b; }, 4},
    {"a gap that is in no list", [](open &x) { x.block(open::a).links.next = block_pool::none; }, 4},
    {"a child that is no block", [](open &x) { x.branches(open::a).children[1] = unknown; }, 4},
    {"a root with a parent", [](open &x) { x.branches(open::a).parent = open::b; }, 4},
    {"a child of another parent", [](open &x) { x.branches(open::b).parent = open::c; }, 4},
    {"a child on the other side",
     [](open &x) { std::swap(x.branches(open::a).children[0], x.branches(open::a).children[1]); }, 4},
    {"a child on both sides, where it is one gap too many",
     [](open &x) {
         x.pool.allocate(3 * unit);
         x.branches(open::a).children[1] = open::b;
     },
     4},
};

TEST(PoolInvariants, TheCheckReturnsTheNumberThatTheHeaderGives)
{
    for (const row &tried : rows) {
        open_pool x;
        tried.break_it(x);
        EXPECT_EQ(mova::broken_invariant(x.pool), tried.broken) << tried.what;
    }
}

/* Each is on the lower side of the one before; in the last no bit is left open. */
TEST(PoolInvariants, AGapBelowTheLastBitOfItsClassIsFound)
{
    open_pool x({1119, 1103, 1095, 1091, 1089, 1088});
    constexpr mb_handle above = 9, last = 11, behind = 13;
    ASSERT_EQ(x.branches(above).children[0], last);
    EXPECT_EQ(mova::broken_invariant(x.pool), 0);
    x.branches(last).children[0] = behind;
    x.branches(behind).parent = last;
    EXPECT_EQ(mova::broken_invariant(x.pool), 4);
}

} // namespace
