/* SPDX-License-Identifier: MIT */
#include "canvas.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "pixels.h"

using namespace atlas;

TEST(Canvas, DrawsWithThePenInHandAndThenWithTheOneBefore)
{
    Pixels pixels(Rectangle{4, 8, 10, 10}, 9);
    Canvas canvas(pixels.tile());
    {
        const PenInHand outer(canvas, 1);
        {
            const PenInHand inner(canvas, 2);
            canvas.span(canvas.rows(8, 9), 0, 5);
            canvas.line({9, 9}, {20, 9});
        }
        canvas.span(canvas.rows(8, 9), 5, 7);
    }
    const PenInHand other(canvas, 3);
    canvas.span(canvas.rows(8, 9), 7, 8);
    EXPECT_EQ((std::vector<std::uint8_t>{2, 1, 1, 3, 9, 9, 9, 9, 9, 9, 9, 2}), pixels.bytes());
}

TEST(Canvas, DrawsEachPixelOnceAndKnowsWhenAllAreDrawn)
{
    Pixels pixels(Rectangle{4, 8, 204, 10});
    Canvas canvas(pixels.tile());
    {
        const PenInHand upper(canvas, 1);
        canvas.span(canvas.rows(8, 9), 60, 140);
        canvas.line({0, 9}, {100, 9});
    }
    EXPECT_FALSE(canvas.is_full());
    const PenInHand lower(canvas, 2);
    canvas.line({70, 8}, {71, 9});
    canvas.span(canvas.rows(8, 9), 0, 300);
    canvas.span(canvas.rows(9, 10), 50, 203);
    EXPECT_FALSE(canvas.is_full());
    canvas.span(canvas.rows(9, 10), 0, 204);
    EXPECT_TRUE(canvas.is_full());
    for (int x = 4; x < 204; ++x) {
        EXPECT_EQ(x >= 60 && x < 140 ? 1 : 2, pixels.at({x, 8})) << x;
        EXPECT_EQ(x <= 100 ? 1 : 2, pixels.at({x, 9})) << x;
    }
}

/* Of 100 spans in a row that has been drawn, each comes to blocks of columns, not to columns, though all of those are open. */
TEST(Canvas, PassesOverRowsThatAreDrawnWhereOthersAreNot)
{
    Pixels pixels(6400, 2);
    Canvas canvas(pixels.tile());
    const PenInHand pen(canvas, 1);
    canvas.span(canvas.rows(0, 1), 0, 6400);
    const std::size_t before = canvas.steps();
    for (int i = 0; i < 100; ++i)
        canvas.span(canvas.rows(0, 1), i, 6400 - i);
    EXPECT_GE(100u * (6400 / 64 + 2 * 64), canvas.steps() - before);
    EXPECT_EQ(6400, std::count(pixels.bytes().begin(), pixels.bytes().end(), 1));
}
