/* SPDX-License-Identifier: MIT */
#include "picture.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "messages.h"
#include "pixels.h"
#include "world.h"

using namespace atlas;

namespace {

constexpr std::size_t two_tiles = 2 * tile_bytes;

/* A different pattern in each row and tile. */
std::uint8_t pattern(int x, int y)
{
    return static_cast<std::uint8_t>(x * 7 + x / 100 * 31 + y * 13 + y / 32);
}

void paint_pattern(const Tile &tile)
{
    const Rectangle &bounds = tile.bounds;
    for (int y = bounds.top; y < bounds.bottom; ++y) {
        for (int x = bounds.left; x < bounds.right; ++x)
            *tile.at({x, y}) = pattern(x, y);
    }
}

std::vector<std::uint8_t> row_of(Picture &picture, int y)
{
    std::vector<std::uint8_t> row(static_cast<std::size_t>(picture.size().width));
    picture.read_row(y, row.data());
    return row;
}

void expect_rows(Picture &picture, const std::vector<int> &order, const Pixels &expected)
{
    for (const int y : order)
        ASSERT_EQ(expected.row(y), row_of(picture, y)) << "row " << y;
}

std::vector<int> downwards(Size size)
{
    std::vector<int> rows(static_cast<std::size_t>(size.height));
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

std::string figures(const Picture &picture)
{
    const Picture::Statistics found = picture.statistics();
    return std::to_string(found.tiles) + " tiles, " + std::to_string(found.evictions) + " evictions, " +
           std::to_string(found.write_backs) + " write-backs, " + std::to_string(found.fetches) + " fetches";
}

} // namespace

TEST(Picture, HasEachTilePaintedOnce)
{
    const Size size = {1100, 70};
    std::vector<std::string> painted;
    const Picture picture(
        size, two_tiles,
        [&](const Tile &tile) {
            const Rectangle &bounds = tile.bounds;
            painted.push_back(std::to_string(bounds.left) + "-" + std::to_string(bounds.right) + " " +
                              std::to_string(bounds.top) + "-" + std::to_string(bounds.bottom));
        },
        no_progress);
    EXPECT_EQ(
        (std::vector<std::string>{"0-512 0-32", "512-1024 0-32", "1024-1100 0-32", "0-512 32-64", "512-1024 32-64",
                                  "1024-1100 32-64", "0-512 64-70", "512-1024 64-70", "1024-1100 64-70"}),
        painted);
}

TEST(Picture, IsTheSameForEveryBudgetAndInAnyOrder)
{
    std::mt19937 engine(1);
    for (const Size size : {Size{1200, 300}, {1024, 96}, {511, 65}, {16, 8}, {3000, 33}}) {
        Pixels expected(size.width, size.height);
        paint_pattern(expected.tile());
        for (const std::size_t budget :
             {two_tiles, two_tiles + 4000, std::size_t{50000}, 5 * tile_bytes, 99 * tile_bytes}) {
            SCOPED_TRACE(std::to_string(size.width) + " columns, budget " + std::to_string(budget));
            Picture picture(size, budget, paint_pattern, no_progress);
            std::vector<int> rows = downwards(size);
            expect_rows(picture, rows, expected);
            std::shuffle(rows.begin(), rows.end(), engine);
            expect_rows(picture, rows, expected);
        }
    }
}

TEST(Picture, OfTheWorldIsTheOneDrawnWhole)
{
    const Topology topology = decode(shipped_world("110m"));
    const Pixels expected = draw_map(topology, 1200);
    Drawing drawing(topology, {1200, 600}, no_progress);
    for (const std::size_t budget : {two_tiles, 3 * tile_bytes, 40 * tile_bytes}) {
        Picture picture(
            drawing.size(), budget, [&](const Tile &tile) { drawing.draw(tile); }, no_progress);
        expect_rows(picture, downwards(picture.size()), expected);
    }
}

/* Tiles 1 and 2 make room while 2 and 3 are painted; 0 and 1, when they have been read, for 1 and 2. */
TEST(Picture, CountsWhatItsCacheDoes)
{
    const Size size = {512, 128};
    Picture picture(size, two_tiles, paint_pattern, no_progress);
    EXPECT_EQ("4 tiles, 2 evictions, 2 write-backs, 0 fetches", figures(picture));
    for (const int y : downwards(size))
        row_of(picture, y);
    EXPECT_EQ("4 tiles, 4 evictions, 3 write-backs, 2 fetches", figures(picture));
    EXPECT_EQ(two_tiles, picture.statistics().budget);
}

TEST(Picture, FetchesEachTileOnceWhereARowOfThemFits)
{
    const Size size = {1500, 320};
    Picture picture(size, 4 * tile_bytes, paint_pattern, no_progress);
    for (const int y : downwards(size))
        row_of(picture, y);
    EXPECT_EQ(30u, picture.statistics().tiles);
    EXPECT_GE(30u, picture.statistics().fetches);
}

TEST(Picture, HasItsBlocksMovedWhereTilesOfTwoSizesTakeTurns)
{
    const Size size = {1200, 600};
    Picture picture(size, 50000, paint_pattern, no_progress);
    for (const int y : downwards(size))
        row_of(picture, y);
    EXPECT_LT(0u, picture.statistics().moves);
}

TEST(Picture, NeedsNoFileWhereItsBudgetIsEnough)
{
    const TemporaryDirectory nowhere("/none");
    const Size size = {600, 64};
    Picture picture(size, 4 * tile_bytes, paint_pattern, no_progress);
    for (const int y : downwards(size))
        row_of(picture, y);
    EXPECT_EQ("4 tiles, 0 evictions, 0 write-backs, 0 fetches", figures(picture));
}

TEST(Picture, SaysWhenItsFileFails)
{
    const TemporaryDirectory nowhere("/none");
    EXPECT_THROW(Picture({512, 96}, two_tiles, paint_pattern, no_progress), Error);
}
