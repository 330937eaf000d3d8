/* SPDX-License-Identifier: MIT */
#include "pyramid.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "colours.h"
#include "pixels.h"
#include "world.h"

using namespace atlas;

namespace {

/* Where Web Mercator has a latitude on a map of this height, in pixels from its upper edge. */
double row_of(double latitude, int height)
{
    return (1 - std::asinh(std::tan(latitude * std::numbers::pi / 180)) / std::numbers::pi) * height / 2;
}

Pixels square_map(const Topology &topology, int side)
{
    Drawing drawing(topology, {side, side}, no_progress);
    Pixels pixels(side, side);
    drawing.draw(pixels.tile());
    return pixels;
}

/* The level's tiles, put together. */
struct Levels {
    explicit Levels(int zoom)
    {
        for (int level = 0; level <= zoom; ++level)
            maps.emplace_back(tile_side << level, tile_side << level, 255);
    }
    TakeTile take()
    {
        return [this](const Place &place, const std::uint8_t *pixels) {
            const int left = place.column * tile_side, top = place.row * tile_side;
            Pixels tile(Rectangle{left, top, left + tile_side, top + tile_side});
            std::copy_n(pixels, tile.bytes().size(), tile.tile().pixels);
            maps[static_cast<std::size_t>(place.zoom)].paste(tile);
            ++count;
        };
    }
    std::vector<Pixels> maps;
    std::size_t count = 0;
};

} // namespace

TEST(Mercator, IsRightToAFiftiethOfAPixelOfTheLargestMap)
{
    constexpr int height = tile_side << 8;
    for (double latitude = -85.0625; latitude < 85.1; latitude += 0.03125) {
        const auto at = static_cast<Angle>(latitude * degree);
        const double found =
            static_cast<double>(below_edge(at, {height, height})) * 2 * height / static_cast<double>(globe);
        ASSERT_NEAR(row_of(latitude, height), found, 0.02) << latitude;
        ASSERT_EQ(mercator(at), -mercator(-at)) << latitude;
    }
}

TEST(Mercator, EndsAt85Degrees)
{
    const auto cut = static_cast<Angle>(85.0511287798 * degree);
    EXPECT_NEAR(90 * degree, mercator(cut), 200);
    EXPECT_EQ(0, project({0, cut - degree / 1000}, {1024, 1024}).y);
    EXPECT_EQ(1023, project({0, -cut + degree / 1000}, {1024, 1024}).y);
    EXPECT_GT(0, project({0, cut + degree}, {1024, 1024}).y);
    EXPECT_LT(1023, project({0, -cut - degree}, {1024, 1024}).y);
    EXPECT_EQ(0, mercator(0));
}

TEST(Mercator, GoesToTwiceTheMapAndNoFurther)
{
    for (Angle latitude = 0; latitude < 90 * degree; latitude += degree / 64)
        ASSERT_LE(mercator(latitude), mercator(latitude + degree / 64));
    EXPECT_LT(mercator(static_cast<Angle>(89.7 * degree)), 180 * degree);
    EXPECT_EQ(180 * degree, mercator(90 * degree));
    EXPECT_EQ(-180 * degree, mercator(-90 * degree));
}

TEST(Mercator, CutsWhatReachesBeyondTheMap)
{
    const Topology topology = decode(world_of("LineString", "[0]", "[[0,80],[90,89],[0,-80]]"));
    const Pixels map = square_map(topology, 1024);
    const double inside = row_of(80, 1024), outside = row_of(89, 1024);
    const double column = 512 + 256 * inside / (inside - outside);
    std::vector<int> columns;
    for (int x = 0; x < map.width(); ++x) {
        if (map.at({x, 0}) == inks().coast)
            columns.push_back(x);
    }
    ASSERT_FALSE(columns.empty());
    EXPECT_NEAR(column, columns.front(), 1.5);
    const double back = row_of(-80, 1024);
    EXPECT_NEAR(512 + 256 * back / (back - outside), columns.back(), 1.5);
}

/* What goes round a pole covers the map up to its edge, and keeps its label on it. */
TEST(Mercator, FillsWhatGoesRoundAPole)
{
    for (const auto &[latitude, inside, beyond] : {std::tuple("70", 0, 1023), {"-70", 1023, 0}}) {
        const std::string at = latitude;
        const std::string ring = "[[-120," + at + "],[0," + at + "],[120," + at + "],[-120," + at + "]]";
        const Topology topology =
            decode(world(R"("a":{"type":"Polygon","arcs":[[0]],"properties":{"name":"Cap"}})", ring));
        const Pixels map = square_map(topology, 1024);
        const int edge = static_cast<int>(row_of(std::stod(at), 1024));
        for (int x = 3; x < 1021; x += 7) {
            const auto is_land = [&](int y) { return map.at({x, y}) == inks().land[0]; };
            ASSERT_TRUE(is_land(edge + (inside > edge ? 2 : -2))) << x;
            ASSERT_FALSE(is_land(edge + (inside > edge ? -2 : 2))) << x;
            ASSERT_FALSE(is_land(beyond));
        }
        const Labels labels(topology, {1024, 1024}, no_progress);
        ASSERT_FALSE(labels.empty());
        const Box &box = labels.begin()->box;
        EXPECT_LE(0, box.top);
        EXPECT_LE(box.top + box.height, 1024);
    }
}

TEST(Pyramid, HasTheTilesOfOneDrawingOfEachLevel)
{
    const Topology topology = decode(shipped_world("110m"));
    for (const std::size_t budget : {2 * tile_bytes, 3 * tile_bytes + 1, std::size_t{1} << 20}) {
        Levels levels(2);
        std::size_t last = 0;
        const auto progress = [&](const char *step, std::size_t done, std::size_t all) {
            if (step != std::string("drawing"))
                return;
            EXPECT_EQ(++last, done);
            EXPECT_EQ(tiles_up_to(2), all);
        };
        const Picture::Statistics cache = draw_pyramid(topology, 2, budget, levels.take(), progress);
        EXPECT_EQ(1u + 4 + 16, levels.count);
        EXPECT_EQ(levels.count, last);
        EXPECT_LE(budget, cache.budget);
        EXPECT_EQ(4 * levels.count, cache.tiles);
        EXPECT_EQ(budget<std::size_t{1} << 20, cache.evictions> 0);
        EXPECT_LE(cache.fetches, cache.write_backs); /* no piece is fetched twice */
        for (const Pixels &map : levels.maps)
            EXPECT_TRUE(square_map(topology, map.width()).bytes() == map.bytes()) << map.width();
    }
}

TEST(Pyramid, CountsTiles)
{
    std::size_t sum = 0;
    for (int zoom = 0; zoom <= 8; ++zoom) {
        sum += std::size_t{1} << 2 * zoom;
        EXPECT_EQ(sum, tiles_up_to(zoom));
    }
}

TEST(Pyramid, GoesNoFurtherThanItsTakerLets)
{
    int taken = 0;
    const auto take = [&](const Place &, const std::uint8_t *) {
        if (++taken == 3)
            throw Error("enough");
    };
    EXPECT_THROW(draw_pyramid(decode(shipped_world("110m")), 2, 2 * tile_bytes, take, no_progress), Error);
    EXPECT_EQ(3, taken);
}
