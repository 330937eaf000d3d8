/* SPDX-License-Identifier: MIT */
#include "draw.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "colours.h"
#include "pixels.h"
#include "world.h"

using namespace atlas;

namespace {

/* FNV-1a, 64 bits, of the colours that the picture shows. */
std::uint64_t checksum(const Pixels &picture)
{
    const std::vector<mova::colour> colours = palette();
    std::uint64_t sum = 0xcbf29ce484222325;
    for (const std::uint8_t ink : picture.bytes()) {
        for (const std::int16_t part : {colours[ink].red, colours[ink].green, colours[ink].blue})
            sum = (sum ^ static_cast<std::uint8_t>(part)) * 0x100000001b3;
    }
    return sum;
}

std::uint8_t ink_at(const Pixels &picture, int longitude, int latitude)
{
    return picture.at(project({longitude * degree, latitude * degree}, {picture.width(), picture.height()}));
}

bool is_land(std::uint8_t ink)
{
    return std::count(inks().land.begin(), inks().land.end(), ink) == 1;
}

Pixels map_of(const std::string &arc, int width)
{
    return draw_map(decode(world_of("LineString", "[0]", arc)), width);
}

/* The columns of the pixels in this ink. */
std::vector<int> columns(const Pixels &picture, std::uint8_t ink)
{
    std::vector<int> found;
    for (int x = 0; x < picture.width(); ++x) {
        for (int y = 0; y < picture.height(); ++y) {
            if (picture.at({x, y}) == ink)
                found.push_back(x);
        }
    }
    return found;
}

} // namespace

TEST(Projection, PutsTheCornersOfTheGlobeIntoTheCornersOfTheMap)
{
    const Pixel upper_left = project({-180 * degree, 90 * degree}, {2048, 1024});
    const Pixel lower_right = project({180 * degree, -90 * degree}, {2048, 1024});
    const Pixel middle = project({0, 0}, {2048, 1024});
    EXPECT_EQ(std::pair(0, 0), std::pair(upper_left.x, upper_left.y));
    EXPECT_EQ(std::pair(2047, 1023), std::pair(lower_right.x, lower_right.y));
    EXPECT_EQ(std::pair(1024, 512), std::pair(middle.x, middle.y));
}

TEST(Projection, RoundsTowardsTheUpperLeft)
{
    const Pixel inside = project({degree - 1, 1}, {360, 180}), next = project({degree, 0}, {360, 180});
    EXPECT_EQ(std::pair(180, 89), std::pair(inside.x, inside.y));
    EXPECT_EQ(std::pair(181, 90), std::pair(next.x, next.y));
}

TEST(Projection, StaysOnTheWidestMap)
{
    const Pixel last = project({180 * degree, -90 * degree}, {32768, 16384});
    EXPECT_EQ(std::pair(32767, 16383), std::pair(last.x, last.y));
}

/* Pixels, not the file: these hold on every platform, whatever its floating point and byte order. */
TEST(WorldMap, HasTheSamePixelsEverywhere)
{
    const Topology topology = decode(shipped_world("110m"));
    EXPECT_EQ(12879684820143150734u, checksum(draw_map(topology, 2048)));
    EXPECT_EQ(12041353205874528485u, checksum(draw_map(topology, 360)));
    EXPECT_EQ(5110746673110229003u, checksum(draw_map(topology, 37)));
}

TEST(WorldMap, IsTheSameInTiles)
{
    for (const Size tile : {Size{512, 32}, {100, 7}, {1, 180}}) {
        Drawing drawing(decode(shipped_world("110m")), {720, 360}, no_progress);
        EXPECT_TRUE(is_the_same_in_tiles({0, 0, 720, 360}, tile, [&](const Tile &part) { drawing.draw(part); }));
    }
}

TEST(WorldMap, ShowsWhatIsThere)
{
    const Pixels map = draw_map(decode(shipped_world("110m")), 2048);
    EXPECT_EQ(inks().sea, ink_at(map, -145, -15)) << "the middle of the Pacific";
    EXPECT_EQ(inks().sea, ink_at(map, -35, 40)) << "the Atlantic";
    EXPECT_EQ(inks().border, ink_at(map, -141, 63)) << "between Alaska and Yukon";
    EXPECT_EQ(inks().border, ink_at(map, 27, 22)) << "between Egypt and Sudan";
    EXPECT_EQ(inks().graticule, ink_at(map, -150, -45));
    EXPECT_EQ(inks().frame, ink_at(map, -25, 0)) << "the equator";
    EXPECT_EQ(inks().sea, ink_at(map, 51, 40)) << "the Caspian Sea";
    EXPECT_TRUE(is_land(ink_at(map, 0, 8)));
}

TEST(WorldMap, ShowsAnEnclaveInAColourOfItsOwn)
{
    const Pixels map = draw_map(decode(shipped_world("110m")), 2048);
    const std::uint8_t lesotho = ink_at(map, 28, -30), around = ink_at(map, 24, -30);
    EXPECT_TRUE(is_land(lesotho) && is_land(around));
    EXPECT_NE(lesotho, around);
}

TEST(WorldMap, FillsWhatCrossesTheEdgeOnBothSides)
{
    const Pixels map = draw_map(decode(shipped_world("110m")), 2048);
    EXPECT_TRUE(is_land(ink_at(map, 179, 67)));
    EXPECT_EQ(ink_at(map, 179, 67), ink_at(map, -179, 67));
}

TEST(WorldMap, FillsAntarcticaToItsLowerEdge)
{
    for (const char *scale : {"110m", "50m"}) {
        const Pixels map = draw_map(decode(shipped_world(scale)), 2048);
        const std::vector<std::uint8_t> lowest = map.row(1023);
        EXPECT_TRUE(is_land(lowest[0]));
        EXPECT_EQ(std::vector<std::uint8_t>(2048, lowest[0]), lowest) << scale;
    }
}

TEST(WorldMap, HasNoLineAcrossIt)
{
    const Pixels map = draw_map(decode(shipped_world("110m")), 2048);
    for (int y = 0; y < map.height(); ++y) {
        const std::vector<std::uint8_t> row = map.row(y);
        EXPECT_GT(300, std::count(row.begin(), row.end(), inks().coast)) << "row " << y;
    }
}

TEST(Segment, AcrossTheAntimeridianGoesTheShorterWay)
{
    for (const char *arc : {"[[177,10],[-177,20]]", "[[-177,10],[177,20]]", "[[177,10],[183,20]]"}) {
        const Pixels map = map_of(arc, 360);
        for (const int x : columns(map, inks().coast))
            EXPECT_TRUE(x <= 3 || x >= 357) << arc << " column " << x;
        EXPECT_EQ(inks().coast, ink_at(map, 177, arc[2] == '-' ? 20 : 10));
        EXPECT_EQ(inks().coast, ink_at(map, -177, arc[2] == '-' ? 10 : 20));
        EXPECT_NE(0, std::count(map.bytes().begin(), map.bytes().end(), inks().coast));
    }
}

TEST(Segment, AcrossTheAntimeridianIsTheSameInTiles)
{
    Drawing drawing(decode(world_of("LineString", "[0]", "[[170,10],[-170,20],[120,60],[-120,0]]")), {360, 180},
                    no_progress);
    EXPECT_TRUE(is_the_same_in_tiles({0, 0, 360, 180}, {9, 9}, [&](const Tile &part) { drawing.draw(part); }));
}

TEST(Segment, AcrossTheAntimeridianLeavesNoGap)
{
    const std::vector<int> found = columns(map_of("[[170,10],[-170,10]]", 360), inks().coast);
    std::vector<int> expected;
    for (int x = 0; x < 360; ++x) {
        if (x <= 10 || x >= 350)
            expected.push_back(x);
    }
    EXPECT_EQ(expected, found);
}

TEST(Segment, HalfwayRoundTheGlobeIsDrawnAsItStands)
{
    EXPECT_EQ(181u, columns(map_of("[[-90,10],[90,10]]", 360), inks().coast).size());
}

TEST(Segment, AlongTheEdgeOfTheMapIsACutAndNotDrawn)
{
    for (const char *arc : {"[[180,10],[180,50]]", "[[-180,10],[-180,50]]", "[[-170,-90],[170,-90]]",
                            "[[-100,-89.999],[100,-89.999]]", "[[-100,90],[100,90]]"})
        EXPECT_TRUE(columns(map_of(arc, 360), inks().coast).empty()) << arc;
}

TEST(Segment, ThatOnlyEndsAtTheEdgeIsDrawn)
{
    EXPECT_EQ(10u, columns(map_of("[[170,10],[180,10]]", 360), inks().coast).size());
    EXPECT_EQ(10u, columns(map_of("[[15,-80],[15,-90]]", 360), inks().coast).size());
}

TEST(Outlines, ThatAreSharedLieBelowThoseThatAreNot)
{
    const std::string objects = R"("a":{"type":"LineString","arcs":[0]},"b":{"type":"LineString","arcs":[-1]},
                                   "c":{"type":"LineString","arcs":[1]})";
    const Pixels map = draw_map(decode(world(objects, "[[10,10],[20,10]],[[15,5],[15,15]]")), 360);
    EXPECT_EQ(inks().border, ink_at(map, 12, 10));
    EXPECT_EQ(inks().coast, ink_at(map, 15, 10));
}

TEST(Map, IsHalfAsHighAsItIsWide)
{
    const Pixels map = map_of("[[10,10],[20,10]]", 17);
    EXPECT_EQ(17, map.width());
    EXPECT_EQ(8, map.height());
}

namespace {

/* A polygon through so many random places. */
std::string random_ring(int corners)
{
    std::mt19937 engine(1);
    const auto corner = [&] {
        return "[" + std::to_string(static_cast<int>(engine() % 3200) / 10.0 - 160) + "," +
               std::to_string(static_cast<int>(engine() % 1601) / 10.0 - 80) + "]";
    };
    const std::string first = corner();
    std::string ring = "[" + first;
    for (int i = 1; i < corners; ++i)
        ring += "," + corner();
    return world_of("Polygon", "[[0]]", ring + "," + first + "]");
}

std::string comb(int teeth)
{
    std::string ring = "[[-170,-80]";
    for (int i = 0; i < teeth; ++i)
        ring += ",[" + std::to_string(-170 + 340.0 * i / teeth) + "," + (i % 2 ? "80]" : "-79]");
    return world_of("Polygon", "[[0]]", ring + ",[170,-80],[-170,-80]]");
}

/* Countries that are squares of so many degrees, each so many degrees to the east of the one before. */
std::string squares(int count, double side, double step)
{
    std::string geometries, arcs;
    for (int i = 0; i < count; ++i) {
        const double west = -170 + std::fmod(i * step, 160), south = -80 + std::fmod(i * step * 0.618, 70);
        const auto corner = [](double longitude, double latitude) {
            return "[" + std::to_string(longitude) + "," + std::to_string(latitude) + "]";
        };
        const std::string start = corner(west, south), comma = i ? "," : "";
        geometries += comma + R"({"type":"Polygon","arcs":[[)" + std::to_string(i) + "]]}";
        arcs += comma + "[" + start + "," + corner(west + side, south) + "," + corner(west + side, south + side) + "," +
                corner(west, south + side) + "," + start + "]";
    }
    return world(R"("a":{"type":"GeometryCollection","geometries":[)" + geometries + "]}", arcs);
}

} // namespace

/* So many random lines that most of what they enclose is hidden, and passed over. Nothing is hidden on a canvas of its own. */
TEST(Drawing, OfWhatIsHiddenIsWhatIsDrawnApart)
{
    const Topology topology = decode(random_ring(1500));
    const Size map = {400, 200};
    Fill fill(map), apart(map);
    Outlines outlines(topology, map), coasts(topology, map);
    for (Fill *each : {&fill, &apart}) {
        each->add(*topology.countries.front(), 1);
        each->sort();
    }
    Pixels both(map.width, map.height), filled(map.width, map.height), outlined(map.width, map.height);
    draw_in_bands(both.tile(), [&](Canvas &canvas) {
        outlines.draw(canvas);
        fill.draw(canvas);
    });
    draw_in_bands(filled.tile(), [&](Canvas &canvas) { apart.draw(canvas); });
    draw_in_bands(outlined.tile(), [&](Canvas &canvas) { coasts.draw(canvas); });
    int hidden = 0;
    for (int y = 0; y < map.height; ++y) {
        for (int x = 0; x < map.width; ++x) {
            hidden += outlined.at({x, y}) && filled.at({x, y});
            const std::uint8_t expected = outlined.at({x, y}) ? outlined.at({x, y}) : filled.at({x, y});
            ASSERT_EQ(expected, both.at({x, y})) << "column " << x << ", row " << y;
        }
    }
    EXPECT_LT(1000, hidden);
}

/* Whatever a file holds, drawing it takes so many steps for each point and pixel. */
TEST(Drawing, IsBoundedByWhatIsReadAndWhatIsDrawn)
{
    const struct {
        const char *name;
        std::string text;
        int width;
    } files[] = {{"islands", squares(3000, 2, 0.77), 1024},
                 {"random ring", random_ring(30000), 1024},
                 {"comb", comb(20000), 820},
                 {"stacked squares", squares(5000, 80, 0.001), 1024},
                 {"tiny countries", squares(30000, 0.01, 0.77), 1024}};
    for (const auto &[name, text, width] : files) {
        const Topology topology = decode(text);
        Drawing drawing(topology, {width, width / 2}, no_progress);
        Pixels pixels(width, width / 2);
        drawing.draw(pixels.tile());
        const auto much = static_cast<std::size_t>(totals(topology).points) + pixels.bytes().size();
        EXPECT_GE(12 * much, drawing.steps()) << name;
    }
}
