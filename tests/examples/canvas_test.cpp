#include "canvas.h"

#include <gtest/gtest.h>

using namespace atlas;

namespace {

class CanvasTest : public testing::Test {
protected:
    Picture picture_{6, 2, 9};
    Canvas canvas_{picture_};

    std::vector<std::uint8_t> row(int y) const { return {picture_.row(y), picture_.row(y) + 6}; }
};

} // namespace

TEST_F(CanvasTest, DrawsWithThePenInHandAndThenWithTheOneBefore)
{
    {
        const PenInHand outer(canvas_, 1);
        {
            const PenInHand inner(canvas_, 2);
            canvas_.span(0, 0, 1);
        }
        canvas_.span(0, 1, 2);
    }
    canvas_.span(0, 2, 3);
    EXPECT_EQ((std::vector<std::uint8_t>{2, 1, 0, 9, 9, 9}), row(0));
}

TEST_F(CanvasTest, ShiftsLinesAndSpans)
{
    const PenInHand pen(canvas_, Pen{3, 2});
    canvas_.line({0, 0}, {1, 0});
    canvas_.span(1, -3, 1);
    EXPECT_EQ((std::vector<std::uint8_t>{9, 9, 3, 3, 9, 9}), row(0));
    EXPECT_EQ((std::vector<std::uint8_t>{3, 3, 3, 9, 9, 9}), row(1));
}

TEST_F(CanvasTest, KeepsTheShiftWhereOnlyTheInkChanges)
{
    const PenInHand shifted(canvas_, Pen{3, 4});
    const PenInHand pen(canvas_, 5);
    canvas_.span(0, 0, 1);
    EXPECT_EQ((std::vector<std::uint8_t>{9, 9, 9, 9, 5, 9}), row(0));
}
