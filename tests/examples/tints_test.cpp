#include "tints.h"

#include <map>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "world.h"

using namespace atlas;

namespace {

/* The countries along each arc, by number. */
std::map<const Arc *, std::set<std::size_t>> countries_along_arcs(const Topology &topology)
{
    std::map<const Arc *, std::set<std::size_t>> along;
    std::size_t number = 0;
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (const Country *country = next_record<Country>(countries)) {
        GL_iterator polygons = GL_all_items(country->polygons.get());
        while (const Polygon *polygon = next_record<Polygon>(polygons)) {
            GL_iterator rings = GL_all_items(polygon->rings.get());
            while (const Path *ring = next_record<Path>(rings)) {
                GL_iterator stretches = GL_all_items(ring->stretches.get());
                while (const Stretch *stretch = next_record<Stretch>(stretches))
                    along[stretch->arc].insert(number);
            }
        }
        ++number;
    }
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

} // namespace

TEST(Tints, DifferBetweenNeighboursInTheShippedWorlds)
{
    for (const char *scale : {"110m", "50m"}) {
        const Topology topology = decode(shipped_world(scale));
        const std::vector<std::uint8_t> tints = choose_tints(topology);
        int borders = 0;
        for (const auto &[arc, countries] : countries_along_arcs(topology)) {
            std::set<int> used;
            for (const std::size_t country : countries)
                used.insert(tints[country]);
            EXPECT_EQ(countries.size(), used.size());
            borders += countries.size() > 1;
        }
        EXPECT_LT(100, borders);
    }
}

TEST(Tints, GoRoundWhereNeighboursLeaveNone)
{
    EXPECT_EQ((std::vector<std::uint8_t>{0, 1, 2, 3, 4, 5, 2, 3}),
              choose_tints(decode(identical_countries(8, "[[0]]"))));
}

TEST(Tints, OfACountryThatUsesAnArcTwiceAreOneTint)
{
    EXPECT_EQ((std::vector<std::uint8_t>{0, 1}), choose_tints(decode(identical_countries(2, "[[0],[0]]"))));
}
