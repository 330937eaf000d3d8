/* SPDX-License-Identifier: MIT */
#include "borders.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "arc_table.h"
#include "world.h"

using namespace atlas;

namespace {

const std::string square = "[[0,0],[1,0],[1,1],[0,0]]";
const std::string four_squares = square + "," + square + "," + square + "," + square;

std::vector<ArcUse> uses(const Topology &topology)
{
    std::vector<ArcUse> all;
    for (const Arc *arc : topology.arcs)
        all.push_back(arc->use);
    return all;
}

} // namespace

TEST(Borders, AreArcsThatCountriesShare)
{
    const std::string objects = R"("a":{"type":"Polygon","arcs":[[0]]},"b":{"type":"Polygon","arcs":[[-1],[1]]},
                                   "c":{"type":"LineString","arcs":[2]},"d":{"type":"Polygon","arcs":[[2]]})";
    const Topology topology = decode(world(objects, four_squares));
    EXPECT_EQ((std::vector{ArcUse::border, ArcUse::coast, ArcUse::border, ArcUse::none}), uses(topology));
    EXPECT_EQ(12u, totals(topology).points);
}

TEST(Borders, LieNotBetweenTwoRingsOfOneCountry)
{
    EXPECT_EQ(std::vector{ArcUse::coast}, uses(decode(world_of("Polygon", "[[0],[-1]]", square))));
}

TEST(Borders, AreFoundAnewWhenACountryIsGone)
{
    const std::string objects = R"("a":{"type":"Polygon","arcs":[[0],[1]]},"b":{"type":"Polygon","arcs":[[1],[2]]})";
    Topology topology = decode(world(objects, four_squares));
    topology.countries.remove(topology.countries.begin());
    find_borders(topology);
    EXPECT_EQ((std::vector{ArcUse::none, ArcUse::coast, ArcUse::coast, ArcUse::none}), uses(topology));
}

TEST(ArcTable, KeepsAWordForEveryArcOfAWorld)
{
    const Topology topology = decode(shipped_world("110m"));
    ArcTable table(topology);
    mova_word number = 0;
    for (const Arc *arc : topology.arcs) {
        EXPECT_EQ(0, table.get(arc));
        table.set(arc, ++number);
    }
    EXPECT_EQ(595, number);
    number = 0;
    for (const Arc *arc : topology.arcs)
        EXPECT_EQ(++number, table.get(arc));
}
