/* SPDX-License-Identifier: MIT */
/* Every call of the cache with each block that is there moved at each moment at which the pool may, one at a time: at every
   allocation, be it the cache's own or, as callbacks may allocate too, one at the end of a callback. */
#include "cache_calls.h"

#include <tests/support/recording_host_test_case.h>

#include <cstdio>
#include <memory>

namespace {

using namespace mova::test;
using namespace mova::test::cache_calls;

class SwapCacheMoves : public recording_host_test_case {
protected:
    void SetUp() override { callbacks_allocate = true; }
    void TearDown() override
    {
        callbacks_allocate = false;
        recording_host_test_case::TearDown();
    }

    /* Makes the call with no move but the nth that may be made, and returns what it leaves; and how many there were. */
    std::string left_by(const fault_row<caches> &row, int nth, int &moves)
    {
        host.reset();
        const auto subject = std::make_unique<caches>();
        host.set_raise_mode(raise_mode::returns);
        pool().move_only(nth);
        row.act(*subject);
        moves = pool().moves_offered();
        const std::string state = subject->state();
        EXPECT_EQ(subject->broken_invariant(), 0);
        subject->go_on();
        EXPECT_EQ(subject->broken_invariant(), 0);
        subject->release();
        EXPECT_EQ(host.take_complaints(), log{});
        EXPECT_EQ(host.live_blocks() + pool().live_blocks(), 0u);
        return state;
    }
};

TEST_F(SwapCacheMoves, WhicheverBlockMovesWheneverItMayEachCallDoesTheSame)
{
    int points = 0;
    for (const fault_row<caches> &row : rows) {
        int moves = 0, same = 0;
        const std::string unmoved = left_by(row, 0, moves);
        for (int nth = 1; nth <= moves; ++nth) {
            EXPECT_EQ(left_by(row, nth, same), unmoved) << row.call << ", move " << nth;
            EXPECT_EQ(same, moves) << row.call;
            ++points;
        }
    }
    std::printf("swap cache: %d moves in %zu calls\n", points, std::size(rows));
    EXPECT_GE(points, 68);
    host.reset();
}

} // namespace
