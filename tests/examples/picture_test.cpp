#include "picture.h"

#include <algorithm>

#include <gtest/gtest.h>

using atlas::Picture;

static std::ptrdiff_t inked(const Picture &picture)
{
    return std::count(picture.bytes().begin(), picture.bytes().end(), 1);
}

TEST(Picture, IsAllBackgroundAtFirst)
{
    const Picture picture(7, 3, 5);
    EXPECT_EQ(std::vector<std::uint8_t>(21, 5), picture.bytes());
    EXPECT_EQ(picture.bytes().data() + 14, picture.row(2));
}

TEST(Picture, LeavesOutWhatLiesOutside)
{
    Picture picture(4, 4, 0);
    for (const atlas::Pixel pixel : {atlas::Pixel{-1, 0}, {4, 0}, {0, -1}, {0, 4}})
        picture.plot(pixel, 1);
    EXPECT_EQ(0, inked(picture));
}

TEST(Line, OfOnePixelIsThatPixel)
{
    Picture picture(3, 3, 0);
    picture.line({1, 1}, {1, 1}, 1);
    EXPECT_EQ(1, picture.at({1, 1}));
    EXPECT_EQ(1, inked(picture));
}

TEST(Line, JoinsItsEndsInEveryDirectionWithOnePixelAStep)
{
    for (int x = 0; x <= 20; ++x) {
        for (int y = 0; y <= 20; ++y) {
            Picture picture(21, 21, 0);
            picture.line({10, 10}, {x, y}, 1);
            EXPECT_EQ(1, picture.at({10, 10}));
            EXPECT_EQ(1, picture.at({x, y}));
            EXPECT_EQ(std::max(std::abs(x - 10), std::abs(y - 10)) + 1, inked(picture)) << x << " " << y;
        }
    }
}

TEST(Line, StaysWithinHalfAPixelOfTheIdeal)
{
    Picture picture(100, 40, 0);
    picture.line({0, 0}, {99, 33}, 1);
    for (int x = 0; x < 100; ++x)
        EXPECT_EQ(1, picture.at({x, (x + 1) / 3})) << x;
}

TEST(Line, IsCutWhereThePictureEnds)
{
    Picture picture(10, 10, 0);
    picture.line({-5, 4}, {14, 4}, 1);
    EXPECT_EQ(10, inked(picture));
}

TEST(Span, CoversTheColumnsUpToItsEnd)
{
    Picture picture(5, 3, 0);
    picture.span(1, 1, 4, 1);
    EXPECT_EQ((std::vector<std::uint8_t>{0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 0, 0, 0, 0}), picture.bytes());
}

TEST(Span, IsCutWhereThePictureEnds)
{
    Picture picture(5, 2, 0);
    picture.span(-1, 0, 5, 1);
    picture.span(2, 0, 5, 1);
    picture.span(0, 3, 3, 1);
    picture.span(0, 4, 2, 1);
    picture.span(0, 5, 9, 1);
    EXPECT_EQ(0, inked(picture));
    picture.span(1, -7, 9, 1);
    EXPECT_EQ(5, inked(picture));
}
