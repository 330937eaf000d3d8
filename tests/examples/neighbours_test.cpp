/* SPDX-License-Identifier: MIT */
#include "colours.h"

#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "world.h"

using namespace atlas;

namespace {

/* The tints of all countries, in the topology's order. */
std::vector<int> tints_of(const Topology &topology)
{
    const Tints tints = choose_tints(topology);
    std::vector<int> all;
    for (const Country *country : topology.countries)
        all.push_back(tints.find(country));
    return all;
}

/* The countries along each arc. */
std::map<const Arc *, std::set<const Country *>> countries_along_arcs(const Topology &topology)
{
    std::map<const Arc *, std::set<const Country *>> along;
    for (const Country *country : topology.countries)
        for_each_stretch(*country, [&](const Stretch &stretch) { along[stretch.arc].insert(country); });
    return along;
}

std::string identical_countries(int count, const std::string &rings)
{
    std::string objects;
    for (int i = 0; i < count; ++i)
        objects += (i ? "," : "") + std::string("\"") + static_cast<char>('a' + i) + R"(":{"type":"Polygon","arcs":)" +
                   rings + "}";
    return world(objects, "[[0,0],[1,0],[1,1],[0,0]]");
}

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

TEST(Tints, DifferBetweenNeighboursInTheShippedWorlds)
{
    for (const char *scale : {"110m", "50m"}) {
        const Topology topology = decode(shipped_world(scale));
        const Tints tints = choose_tints(topology);
        int borders = 0;
        for (const auto &[arc, countries] : countries_along_arcs(topology)) {
            std::set<int> used;
            for (const Country *country : countries)
                used.insert(tints.find(country));
            EXPECT_EQ(countries.size(), used.size());
            borders += countries.size() > 1;
        }
        EXPECT_LT(100, borders);
    }
}

TEST(Tints, GoRoundWhereNeighboursLeaveNone)
{
    EXPECT_EQ((std::vector{0, 1, 2, 3, 4, 5, 2, 3}), tints_of(decode(identical_countries(8, "[[0]]"))));
}

TEST(Tints, OfACountryThatUsesAnArcTwiceAreOneTint)
{
    EXPECT_EQ((std::vector{0, 1}), tints_of(decode(identical_countries(2, "[[0],[0]]"))));
}
