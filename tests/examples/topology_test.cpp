/* SPDX-License-Identifier: MIT */
#include "topology.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "messages.h"
#include "world.h"

using namespace atlas;

namespace {

constexpr const char *square = "[[0,0],[10,0],[10,10],[0,0]]";

std::vector<Point> points_of(const Topology &topology, int arc)
{
    const Points &points = (*std::next(topology.arcs.begin(), arc))->points;
    return {points.begin(), points.end()};
}

Point at(double longitude, double latitude)
{
    return {static_cast<Angle>(longitude * degree), static_cast<Angle>(latitude * degree)};
}

} // namespace

TEST(Arcs, WithoutATransformHoldDegrees)
{
    const Topology topology = decode(world_of("LineString", "[0]", "[[-180,90],[0.5,-0.25],[180,-90]]"));
    EXPECT_EQ((std::vector{at(-180, 90), at(0.5, -0.25), at(180, -90)}), points_of(topology, 0));
}

TEST(Arcs, WithATransformAreDecodedStepByStep)
{
    const Topology topology = decode(R"({"type":"Topology","objects":{"a":{"type":"LineString","arcs":[0]}},
        "transform":{"scale":[0.5,0.25],"translate":[-180,-90]},"arcs":[[[4,8],[2,-4],[-6,4]],[[1,1],[1,1]]]})");
    EXPECT_EQ((std::vector{at(-178, -88), at(-177, -89), at(-180, -88)}), points_of(topology, 0));
    EXPECT_EQ((std::vector{at(-179.5, -89.75), at(-179, -89.5)}), points_of(topology, 1));
}

TEST(Arcs, RoundToTheNearestUnit)
{
    const Topology topology = decode(world_of("LineString", "[0]", "[[0.0000001,-0.0000001],[0.0000002,-0.0000002]]"));
    EXPECT_EQ((std::vector{Point{0, 0}, Point{1, -1}}), points_of(topology, 0));
}

TEST(Arcs, KeepTheirAccuracyHoweverFineTheGridIs)
{
    const Topology topology = decode(R"({"type":"Topology","objects":{"a":{"type":"LineString","arcs":[0]}},
        "transform":{"scale":[0.00036000036000036,1],"translate":[-180,0]},"arcs":[[[0,0],[999999,0]]]})");
    EXPECT_EQ((std::vector{at(-180, 0), at(180, 0)}), points_of(topology, 0));
}

TEST(Arcs, ComeRoundTheGlobe)
{
    const Topology topology = decode(world_of("LineString", "[0]", "[[190,1],[-190,2],[360,3],[180,4]]"));
    EXPECT_EQ((std::vector{at(-170, 1), at(170, 2), at(0, 3), at(180, 4)}), points_of(topology, 0));
}

TEST(Arcs, ThatOvershootAPoleByRoundingEndThere)
{
    const Topology topology = decode(world_of("LineString", "[0]", "[[0,90.0001],[0,-90.0001]]"));
    EXPECT_EQ((std::vector{at(0, 90), at(0, -90)}), points_of(topology, 0));
}

TEST(Arcs, MayHaveFurtherCoordinates)
{
    const Topology topology = decode(world_of("LineString", "[0]", "[[1,2,300],[3,4,500]]"));
    EXPECT_EQ((std::vector{at(1, 2), at(3, 4)}), points_of(topology, 0));
}

TEST(Outlines, RunAlongArcsInBothDirections)
{
    const Topology topology = decode(world_of("Polygon", "[[0,-2]]", "[[0,0],[1,1],[2,0]],[[0,0],[1,-1],[2,0]]"));
    const Ring &ring = *topology.countries.front()->polygons.front()->front();
    ASSERT_EQ(2u, ring.size());
    EXPECT_FALSE(ring.front().reversed);
    EXPECT_TRUE(ring.back().reversed);
    EXPECT_EQ(at(2, 0), ring.back().start());
    EXPECT_EQ(at(0, 0), ring.back().end());
}

TEST(Outlines, OfEveryKindAreKept)
{
    const Topology topology = decode(world(R"("a":{"type":"GeometryCollection","geometries":[
        {"type":"Polygon","arcs":[[0],[0]]},
        {"type":"MultiPolygon","arcs":[[[0]],[[0],[0],[0]]]},
        {"type":"LineString","arcs":[0]},
        {"type":"MultiLineString","arcs":[[0],[-1]]}]})",
                                           square));
    const Totals sum = totals(topology);
    EXPECT_EQ(4u, sum.countries);
    EXPECT_EQ(6u, sum.rings);
    EXPECT_EQ(3u, sum.lines);
    EXPECT_EQ(4u, sum.points);
}

TEST(Names, AreKeptWithAllTheirBytes)
{
    const auto name_of = [](const std::string &members) {
        const std::string line = R"("a":{"type":"LineString","arcs":[0])" + members + "}";
        return decode(world(line, square)).countries.front()->name;
    };
    EXPECT_EQ("Ivory", name_of(R"(,"properties":{"name":"Ivory"})"));
    EXPECT_EQ("C\xc3\xb4te\n", name_of(R"(,"properties":{"name":"C\u00f4te\n"})"));
    EXPECT_EQ(std::string("a\0b", 3), name_of(R"(,"properties":{"name":"a\u0000b"})"));
    const std::string long_name(100000, 'x');
    EXPECT_EQ(long_name, name_of(R"(,"properties":{"name":")" + long_name + "\"}"));
    for (const char *members :
         {"", R"(,"properties":null)", R"(,"properties":"name")", R"(,"properties":{})", R"(,"properties":{"name":7})",
          R"(,"properties":{"name":["a"]})", R"(,"properties":{"name":""})", R"(,"name":"a")"})
        EXPECT_EQ("", name_of(members)) << members;
}

TEST(Outlines, AreFoundInNestedCollections)
{
    const std::string inner = R"({"type":"Polygon","arcs":[[0]]})";
    const std::string nested = R"({"type":"GeometryCollection","geometries":[)" + inner +
                               R"(,{"type":"GeometryCollection","geometries":[)" + inner + "]}]}";
    EXPECT_EQ(2u, totals(decode(world(R"("a":)" + nested, square))).countries);
}

TEST(Outlines, AreAllThatIsKept)
{
    const Topology topology = decode(world(R"("a":{"type":"GeometryCollection","geometries":[
        null, {"type":null}, {"type":"Point","coordinates":[1,2]}, {"type":"MultiPoint","coordinates":[[1,2]]},
        {"type":"Polygon","arcs":[]}, {"type":"MultiPolygon","arcs":[[]]}, {"type":"Polygon","arcs":[[0]]}]},
        "b":null)",
                                           square));
    EXPECT_EQ(1u, totals(topology).countries);
}

TEST(Objects, NamedCountriesArePreferred)
{
    const std::string land = R"("land":{"type":"Polygon","arcs":[[0]]})";
    const std::string countries = R"("countries":{"type":"Polygon","arcs":[[1]]})";
    const Topology both = decode(world(land + "," + countries, std::string(square) + ",[[5,5],[6,6],[5,5]]"));
    EXPECT_EQ(1u, totals(both).countries);
    EXPECT_EQ(3u, totals(both).points);
}

TEST(Objects, AreAllReadWhereNoneIsNamedCountries)
{
    const std::string objects = R"("a":{"type":"Polygon","arcs":[[0]]},"b":{"type":"Polygon","arcs":[[0]]})";
    EXPECT_EQ(2u, totals(decode(world(objects, square))).countries);
}

TEST(Rings, MayRunAlongTheSameArcsManyTimesButNotForEver)
{
    const auto world_of_runs = [](std::size_t runs) {
        std::string numbers = "[[0]";
        for (std::size_t i = 1; i < runs; ++i)
            numbers += ",[0]";
        return world_of("Polygon", numbers + "]", square);
    };
    EXPECT_EQ(most_runs, totals(decode(world_of_runs(most_runs))).rings);
    EXPECT_THROW(decode(world_of_runs(most_runs + 1)), Error);
}

TEST(ShippedWorlds, AreWhole)
{
    const Totals coarse = totals(decode(shipped_world("110m")));
    EXPECT_EQ(177u, coarse.countries);
    EXPECT_EQ(286u, coarse.rings);
    EXPECT_EQ(8246u, coarse.points);
    const Totals fine = totals(decode(shipped_world("50m")));
    EXPECT_EQ(241u, fine.countries);
    EXPECT_EQ(1629u, fine.rings);
    EXPECT_EQ(80617u, fine.points);
}

TEST(ShippedWorlds, ReportHowFarTheyAreRead)
{
    const std::string text = shipped_world("110m");
    std::size_t parsed = 0, decoded = 0;
    decode_topology(text, [&](const char *step, std::size_t done, std::size_t all) {
        EXPECT_LE(done, all);
        std::size_t &seen = step == std::string("parsing") ? parsed : decoded;
        EXPECT_LT(seen, done);
        seen = done;
    });
    EXPECT_EQ(65536u, parsed);
    EXPECT_EQ(595u, decoded);
}
