/* SPDX-License-Identifier: MIT */
#include "canvas.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include <tests/support/byte_source.h>

#include "pixels.h"

using namespace atlas;

static void draw_line(Pixels &pixels, Pixel from, Pixel to)
{
    draw_in_bands(pixels.tile(), [=](Canvas &canvas) { canvas.line(from, to); });
}

static void draw_span(Pixels &pixels, int row, int from, int end)
{
    draw_in_bands(pixels.tile(), [=](Canvas &canvas) { canvas.span(canvas.rows(row, row + 1), from, end); });
}

static std::ptrdiff_t inked(const Pixels &pixels)
{
    return std::count(pixels.bytes().begin(), pixels.bytes().end(), 1);
}

TEST(Line, LeavesOutWhatLiesOutside)
{
    Pixels pixels(Rectangle{10, 20, 14, 24}, 0);
    for (const Pixel pixel : {Pixel{9, 21}, {14, 21}, {11, 19}, {11, 24}, {0, 0}, {1, 1}})
        draw_line(pixels, pixel, pixel);
    draw_line(pixels, {0, 19}, {99, 19});
    draw_line(pixels, {9, 0}, {9, 99});
    draw_line(pixels, {0, 28}, {18, 10});
    EXPECT_EQ(0, inked(pixels)) << "the last one passes a corner";
    draw_line(pixels, {0, 27}, {17, 10});
    EXPECT_EQ(0, inked(pixels)) << "the last one passes a corner";
}

/* Of two pixels as near, the one nearer to where the line starts. */
TEST(Line, TakesTheNearestPixels)
{
    for (const auto &[to, middle] : {std::pair(Pixel{2, 1}, Pixel{1, 0}),
                                     {{-2, -1}, {-1, 0}},
                                     {{1, 2}, {0, 1}},
                                     {{-1, 2}, {0, 1}},
                                     {{4, -2}, {3, -1}}}) {
        Pixels pixels(Rectangle{-9, -9, 9, 9}, 0);
        draw_line(pixels, {0, 0}, to);
        EXPECT_EQ(1, pixels.at(middle)) << to.x << " " << to.y;
    }
}

/* The ends lie up to three maps outside. */
TEST(Line, IsTheSameWhateverTilesItIsDrawnIn)
{
    const std::uint32_t seed = mova::test::test_seed(1);
    std::mt19937 engine(seed);
    const auto number = [&] { return static_cast<int>(engine() % 140) - 60; };
    for (int run = 0; run < 2000; ++run) {
        SCOPED_TRACE("MOVA_TEST_SEED=" + std::to_string(seed) + ", run " + std::to_string(run));
        const Pixel from = {number(), number()}, to = {number(), number()};
        EXPECT_TRUE(is_the_same_in_tiles({0, 0, 20, 20}, {1 + run % 7, 1 + run % 5}, [=](const Tile &tile) {
            draw_in_bands(tile, [=](Canvas &canvas) { canvas.line(from, to); });
        }));
    }
}

TEST(Line, OfOnePixelIsThatPixel)
{
    Pixels pixels(3, 3, 0);
    draw_line(pixels, {1, 1}, {1, 1});
    EXPECT_EQ(1, pixels.at({1, 1}));
    EXPECT_EQ(1, inked(pixels));
}

TEST(Line, JoinsItsEndsInEveryDirectionWithOnePixelAStep)
{
    for (int x = 0; x <= 20; ++x) {
        for (int y = 0; y <= 20; ++y) {
            Pixels pixels(21, 21, 0);
            draw_line(pixels, {10, 10}, {x, y});
            EXPECT_EQ(1, pixels.at({10, 10}));
            EXPECT_EQ(1, pixels.at({x, y}));
            EXPECT_EQ(std::max(std::abs(x - 10), std::abs(y - 10)) + 1, inked(pixels)) << x << " " << y;
        }
    }
}

TEST(Line, StaysWithinHalfAPixelOfTheIdeal)
{
    Pixels pixels(100, 40, 0);
    draw_line(pixels, {0, 0}, {99, 33});
    for (int x = 0; x < 100; ++x)
        EXPECT_EQ(1, pixels.at({x, (x + 1) / 3})) << x;
}

TEST(Line, IsCutWhereTheTileEnds)
{
    Pixels pixels(10, 10, 0);
    draw_line(pixels, {-5, 4}, {14, 4});
    EXPECT_EQ(10, inked(pixels));
}

TEST(Span, CoversTheColumnsUpToItsEnd)
{
    Pixels pixels(5, 3, 0);
    draw_span(pixels, 1, 1, 4);
    EXPECT_EQ((std::vector<std::uint8_t>{0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 0, 0, 0, 0}), pixels.bytes());
}

TEST(Span, IsCutWhereTheTileEnds)
{
    Pixels pixels(5, 2, 0);
    draw_span(pixels, -1, 0, 5);
    draw_span(pixels, 2, 0, 5);
    draw_span(pixels, 0, 3, 3);
    draw_span(pixels, 0, 4, 2);
    draw_span(pixels, 0, 5, 9);
    EXPECT_EQ(0, inked(pixels));
    draw_span(pixels, 1, -7, 9);
    EXPECT_EQ(5, inked(pixels));
}
