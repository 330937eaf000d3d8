#include "canvas.h"

#include <gtest/gtest.h>

#include "pixels.h"

using namespace atlas;

TEST(Canvas, DrawsWithThePenInHandAndThenWithTheOneBefore)
{
    Pixels pixels(Rectangle{4, 8, 10, 10}, 9);
    Canvas canvas(pixels.tile(), {20, 10});
    {
        const PenInHand outer(canvas, 1);
        {
            const PenInHand inner(canvas, 2);
            canvas.span(8, 0, 5);
            canvas.line({9, 9}, {20, 9});
        }
        canvas.span(8, 5, 7);
    }
    const PenInHand other(canvas, 3);
    canvas.span(8, 7, 8);
    EXPECT_EQ((std::vector<std::uint8_t>{2, 1, 1, 3, 9, 9, 9, 9, 9, 9, 9, 2}), pixels.bytes());
}

TEST(Canvas, KnowsTheMapThatItsTileIsPartOf)
{
    Pixels pixels(Rectangle{4, 8, 10, 10});
    const Canvas canvas(pixels.tile(), {20, 10});
    EXPECT_EQ(20, canvas.width());
    EXPECT_EQ(10, canvas.height());
    EXPECT_EQ(4, canvas.bounds().left);
}
