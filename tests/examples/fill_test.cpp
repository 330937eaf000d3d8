/* SPDX-License-Identifier: MIT */
#include "draw.h"

#include <algorithm>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include <tests/support/byte_source.h>

#include "enclosure.h"
#include "pixels.h"
#include "world.h"

using namespace atlas;

namespace {

constexpr std::uint8_t ink = 1;

std::vector<const Country *> countries_of(const Topology &topology)
{
    std::vector<const Country *> all;
    for (const Country *country : topology.countries)
        all.push_back(country);
    return all;
}

Fill fill_of(const Country &country, Size map)
{
    Fill fill(map);
    fill.add(country, ink);
    fill.sort();
    return fill;
}

Pixels filled(const Country &country, int width)
{
    const Size map = {width, width / 2};
    Pixels pixels(map.width, map.height);
    Fill fill = fill_of(country, map);
    draw_in_bands(pixels.tile(), [&](Canvas &canvas) { fill.draw(canvas); });
    return pixels;
}

/* A map of one country of the rings that these arcs are, a degree a pixel. */
Pixels filled(const std::string &rings, const std::string &arcs)
{
    const Topology topology = decode(world_of("Polygon", rings, arcs));
    return filled(*countries_of(topology).front(), 360);
}

std::ptrdiff_t inked(const Pixels &picture)
{
    return std::count(picture.bytes().begin(), picture.bytes().end(), ink);
}

/* The pixels to the east and south of a point, as text. */
std::string cut_out(const Pixels &picture, int longitude, int latitude, int columns, int rows)
{
    const Pixel corner = project({longitude * degree, latitude * degree}, {picture.width(), picture.height()});
    std::string text;
    for (int y = corner.y; y < corner.y + rows; ++y) {
        for (int x = corner.x; x < corner.x + columns; ++x)
            text += picture.at({x, y}) == ink ? '#' : '.';
        text += '\n';
    }
    return text;
}

enclosure::Place centre(int x, int y, const Pixels &picture)
{
    return {(2 * x + 1) * (enclosure::globe / (2 * picture.width())),
            (2 * y + 1) * (enclosure::globe / (4 * picture.height()))};
}

/* Compares every `stride`th pixel of a country with what encloses its centre; returns how many were compared. Requires
   a width at which centres are whole angles. */
int check_fill(const Country &country, const Pixels &picture, int stride, std::int64_t slack)
{
    const enclosure::Area area(country);
    int compared = 0, wrong = 0;
    for (int i = 0; i < picture.width() * picture.height(); i += stride) {
        const Pixel pixel = {i % picture.width(), i / picture.width()};
        const enclosure::Answer answer = area.covers(centre(pixel.x, pixel.y, picture), slack);
        compared += answer != enclosure::doubtful;
        if (answer != enclosure::doubtful && answer != static_cast<enclosure::Answer>(picture.at(pixel)) && !wrong++)
            ADD_FAILURE() << "column " << pixel.x << ", row " << pixel.y << " is " << int{picture.at(pixel)};
    }
    return compared;
}

/* A ring through random whole degrees, the first of them again at the end. */
std::string random_ring(std::mt19937 &engine, int most_longitude, int corners)
{
    const auto number = [&](int most) {
        return static_cast<int>(engine() % (2u * static_cast<unsigned>(most) + 1)) - most;
    };
    const auto corner = [&] {
        return "[" + std::to_string(number(most_longitude)) + "," + std::to_string(number(90)) + "]";
    };
    const std::string first = corner();
    std::string ring = "[" + first;
    for (int i = 1; i < corners; ++i)
        ring += "," + corner();
    return ring + "," + first + "]";
}

} // namespace

TEST(Fill, CoversThePixelsWhoseCentresLieInside)
{
    EXPECT_EQ(".....\n"
              ".##..\n"
              ".##..\n"
              ".....\n",
              cut_out(filled("[[0]]", "[[0.6,-0.6],[2.6,-0.6],[2.6,-2.6],[0.6,-2.6],[0.6,-0.6]]"), 0, 0, 5, 4));
}

TEST(Fill, TakesACentreOnTheLeftOrUpperSideAndNoneOnTheOthers)
{
    EXPECT_EQ("##.\n"
              "##.\n"
              "...\n",
              cut_out(filled("[[0]]", "[[0.5,-0.5],[2.5,-0.5],[2.5,-2.5],[0.5,-2.5],[0.5,-0.5]]"), 0, 0, 3, 3));
}

TEST(Fill, TakesACentreOnASlopeWhereTheCountryIsToTheRight)
{
    EXPECT_EQ("....\n"
              "#...\n"
              "##..\n"
              "###.\n",
              cut_out(filled("[[0]]", "[[0,0],[4,-4],[0,-4],[0,0]]"), 0, 0, 4, 4));
    EXPECT_EQ("####\n"
              ".###\n"
              "..##\n"
              "...#\n",
              cut_out(filled("[[0]]", "[[0,0],[4,-4],[4,0],[0,0]]"), 0, 0, 4, 4));
}

TEST(Fill, LeavesHolesOpenAndFillsWhatLiesInThem)
{
    const std::string arcs = "[[0,0],[7,0],[7,-5],[0,-5],[0,0]],[[1,-1],[6,-1],[6,-4],[1,-4],[1,-1]],"
                             "[[3,-2],[4,-2],[4,-3],[3,-3],[3,-2]]";
    EXPECT_EQ("#######\n"
              "#.....#\n"
              "#..#..#\n"
              "#.....#\n"
              "#######\n",
              cut_out(filled("[[0],[1],[2]]", arcs), 0, 0, 7, 5));
}

TEST(Fill, TakesBothHalvesOfWhatCrossesItself)
{
    EXPECT_EQ("#...#\n"
              "##.##\n"
              "##.##\n"
              "#...#\n",
              cut_out(filled("[[0]]", "[[0,0],[5,-4],[5,0],[0,-4],[0,0]]"), 0, 0, 5, 4));
}

TEST(Fill, OfWhatHasNoInsideIsNothing)
{
    for (const char *arc :
         {"[[1,2],[1,2]]", "[[0,0],[9,9],[0,0]]", "[[0,0],[9,0],[5,0],[0,0]]", "[[0,0],[9,-9],[20,-3],[9,-9],[0,0]]",
          "[[180,9],[-180,-9],[180,9]]", "[[180,9],[180,-9],[-180,-9],[-180,9],[180,9]]", "[[0,90],[0,-90],[0,90]]"})
        EXPECT_EQ(0, inked(filled("[[0]]", arc))) << arc;
}

TEST(Fill, OfWhatCrossesTheEdgeComesInOnTheOtherSide)
{
    const Pixels map = filled("[[0]]", "[[178,0],[-177,0],[-177,-2],[178,-2],[178,0]]");
    EXPECT_EQ(".##\n.##\n...\n", cut_out(map, 177, 0, 3, 3));
    EXPECT_EQ("###.\n###.\n....\n", cut_out(map, -180, 0, 4, 3));
    EXPECT_EQ(10, inked(map));
}

TEST(Fill, OfARingRoundAPoleReachesTheEdgeThere)
{
    EXPECT_EQ(20 * 360, inked(filled("[[0]]", "[[120,-70],[-120,-70],[0,-70],[120,-70]]")));
    EXPECT_EQ(20 * 360, inked(filled("[[0]]", "[[120,70],[-120,70],[0,70],[120,70]]")));
    EXPECT_EQ(20 * 360, inked(filled("[[0]]", "[[180,-90],[-180,-90],[-180,-70],[0,-70],[180,-70],[180,-90]]")));
}

TEST(Fill, OfTwoRingsRoundAPoleIsTheBandBetween)
{
    const Pixels map = filled("[[0],[1]]", "[[120,-70],[-120,-70],[0,-70],[120,-70]],"
                                           "[[120,-80],[-120,-80],[0,-80],[120,-80]]");
    EXPECT_EQ(10 * 360, inked(map));
    EXPECT_EQ(ink, map.at({0, 165}));
    EXPECT_EQ(0, map.at({0, 175}));
}

/* Centres of pixels often lie right on the sides of these. */
TEST(Fill, IsExactForRandomRings)
{
    const std::uint32_t seed = mova::test::test_seed(1);
    std::mt19937 engine(seed);
    for (int run = 0; run < 60; ++run) {
        const std::string ring = random_ring(engine, 90, 3 + run % 9);
        SCOPED_TRACE("MOVA_TEST_SEED=" + std::to_string(seed) + ", ring " + ring);
        const Topology topology = decode(world_of("Polygon", "[[0]]", ring));
        const Country &country = *countries_of(topology).front();
        const Pixels picture = filled(country, 360);
        EXPECT_EQ(64800 / 5, check_fill(country, picture, 5, -1));
    }
}

/* These cross the edge of the map, where cuts are rounded to the grid. */
TEST(Fill, IsRightForRandomRingsRoundTheGlobe)
{
    const std::uint32_t seed = mova::test::test_seed(2);
    std::mt19937 engine(seed);
    for (int run = 0; run < 60; ++run) {
        const std::string ring = random_ring(engine, 180, 3 + run % 9);
        SCOPED_TRACE("MOVA_TEST_SEED=" + std::to_string(seed) + ", ring " + ring);
        const Topology topology = decode(world_of("Polygon", "[[0]]", ring));
        const Country &country = *countries_of(topology).front();
        const Pixels picture = filled(country, 360);
        EXPECT_LT(64800 / 5 * 98 / 100, check_fill(country, picture, 5, degree / 512));
    }
}

TEST(Fill, IsTheSameInTiles)
{
    const std::uint32_t seed = mova::test::test_seed(3);
    std::mt19937 engine(seed);
    for (int run = 0; run < 40; ++run) {
        const std::string ring = random_ring(engine, 180, 3 + run % 9);
        SCOPED_TRACE("MOVA_TEST_SEED=" + std::to_string(seed) + ", ring " + ring);
        const Topology topology = decode(world_of("Polygon", "[[0]]", ring));
        Fill fill = fill_of(*countries_of(topology).front(), {180, 90});
        EXPECT_TRUE(is_the_same_in_tiles({0, 0, 180, 90}, {1 + run * 3, 31 - run % 30}, [&](const Tile &tile) {
            draw_in_bands(tile, [&](Canvas &canvas) { fill.draw(canvas); });
        }));
    }
}

TEST(Fill, IsRightForEveryCountryOfTheShippedWorlds)
{
    for (const char *scale : {"110m", "50m"}) {
        const Topology topology = decode(shipped_world(scale));
        for (const Country *country : countries_of(topology)) {
            const Pixels picture = filled(*country, 2880);
            const int stride = 1997, samples = (2880 * 1440 + stride - 1) / stride;
            EXPECT_LT(samples * 98 / 100, check_fill(*country, picture, stride, degree / 8 / 512));
        }
    }
}

/* Neighbours share the pixels along their borders out between them. */
TEST(Fill, LeavesNoPixelToTwoCountries)
{
    const Topology topology = decode(shipped_world("110m"));
    std::vector<int> owners(1024 * 512);
    int twice = 0;
    for (const Country *country : countries_of(topology)) {
        const Pixels picture = filled(*country, 1024);
        for (std::size_t i = 0; i < owners.size(); ++i)
            twice += picture.bytes()[i] == ink && owners[i]++ > 0;
    }
    EXPECT_EQ(0, twice);
}
