/* SPDX-License-Identifier: MIT */
#include "shapes.h"

#include <vector>

#include <gtest/gtest.h>

#include "world.h"

using namespace atlas;

namespace {

using Outline = std::vector<Point>;

Point at(int longitude, int latitude)
{
    return {longitude * degree, latitude * degree};
}

/* The shapes of the topology's first country. */
std::vector<Outline> outlines_of(const Topology &topology)
{
    std::vector<Outline> outlines;
    const Shapes shapes = shapes_of(*topology.countries.front());
    for (const Points *shape : shapes) {
        EXPECT_TRUE(shape->is_closed());
        outlines.emplace_back(shape->begin(), shape->end());
    }
    return outlines;
}

std::vector<Outline> shapes_of_ring(const std::string &arc)
{
    return outlines_of(decode(world_of("Polygon", "[[0]]", arc)));
}

} // namespace

TEST(Shapes, JoinArcsAndKeepEachJointOnce)
{
    const std::string arcs = "[[0,0],[10,0],[10,10]],[[0,0],[0,5],[5,10],[10,10]]";
    const Outline joined = {at(0, 0), at(10, 0), at(10, 10), at(5, 10), at(0, 5)};
    EXPECT_EQ(std::vector<Outline>{joined}, outlines_of(decode(world_of("Polygon", "[[0,-2]]", arcs))));
}

TEST(Shapes, AreOneForEachRingOfEveryPolygon)
{
    const std::string arcs = "[[0,0],[9,0],[9,9],[0,0]],[[3,1],[4,1],[4,2],[3,1]],[[20,0],[21,0],[21,1],[20,0]]";
    const std::vector<Outline> shapes = outlines_of(decode(world_of("MultiPolygon", "[[[0],[1]],[[2]]]", arcs)));
    ASSERT_EQ(3u, shapes.size());
    EXPECT_EQ((Outline{at(3, 1), at(4, 1), at(4, 2)}), shapes[1]);
}

TEST(Shapes, OfLinesAreNone)
{
    EXPECT_TRUE(outlines_of(decode(world_of("LineString", "[0]", "[[0,0],[10,0]]"))).empty());
}

TEST(Shapes, ThatOnlyTouchTheEdgeStayWhole)
{
    EXPECT_EQ((std::vector<Outline>{{at(170, 0), at(180, 0), at(180, 10)}}),
              shapes_of_ring("[[170,0],[180,0],[180,10],[170,0]]"));
}

TEST(Shapes, AreCutWhereTheyCrossTheEdge)
{
    EXPECT_EQ((std::vector<Outline>{{at(-180, 0), at(-170, 0), at(-170, 10), at(-180, 10)},
                                    {at(180, 10), at(170, 10), at(170, 0), at(180, 0)}}),
              shapes_of_ring("[[170,0],[-170,0],[-170,10],[170,10],[170,0]]"));
}

TEST(Shapes, AreCutInThePlaceWhereTheShorterWayCrosses)
{
    const std::vector<Outline> shapes = shapes_of_ring("[[174,0],[-178,8],[-178,0],[174,0]]");
    ASSERT_EQ(2u, shapes.size());
    EXPECT_EQ((Outline{at(-180, 6), at(-178, 8), at(-178, 0), at(-180, 0)}), shapes[0]);
}

TEST(Shapes, AreCutInTheSamePlaceWhicheverWayTheyRun)
{
    const std::string there = "[[179,0],[-178,1],[-178,-7],[179,0]]", back = "[[179,0],[-178,-7],[-178,1],[179,0]]";
    Outline east = shapes_of_ring(there)[0], east_backwards = shapes_of_ring(back)[0];
    std::swap(east_backwards[1], east_backwards[2]);
    std::swap(east_backwards[0], east_backwards[3]);
    EXPECT_EQ(east, east_backwards);
    EXPECT_EQ(degree / 3, east[0].latitude);
    EXPECT_EQ(-7 * degree / 3 - 1, east[3].latitude) << "is rounded downwards";
}

TEST(Shapes, WithASideFromEdgeToEdgeHaveNoWayAcross)
{
    EXPECT_EQ((std::vector<Outline>{{at(-180, 2), at(-180, 2), at(-175, 5), at(-180, 8), at(-180, 8)},
                                    {at(180, 8), at(180, 8), at(175, 5), at(180, 2), at(180, 2)}}),
              shapes_of_ring("[[180,2],[-180,2],[-175,5],[-180,8],[180,8],[175,5],[180,2]]"));
}

TEST(Shapes, ThatGoRoundAPoleAreClosedThere)
{
    EXPECT_EQ((std::vector<Outline>{
                  {at(-180, -70), at(-120, -70), at(0, -60), at(120, -70), at(180, -70), at(180, -90), at(-180, -90)}}),
              shapes_of_ring("[[120,-70],[-120,-70],[0,-60],[120,-70]]"));
    EXPECT_EQ((std::vector<Outline>{
                  {at(180, 70), at(120, 70), at(0, 60), at(-120, 70), at(-180, 70), at(-180, 90), at(180, 90)}}),
              shapes_of_ring("[[-120,70],[120,70],[0,60],[-120,70]]"));
}

TEST(Shapes, ThatCrossTheEdgeOftenFallIntoAsManyPieces)
{
    constexpr int teeth = 50000;
    std::string arc = "[[170,0]";
    for (int i = 0; i < teeth; ++i)
        arc += i % 2 ? ",[179,1]" : ",[-179,1]";
    const std::vector<Outline> shapes = shapes_of_ring(arc + ",[170,0]]");
    ASSERT_EQ(static_cast<std::size_t>(teeth), shapes.size());
    EXPECT_EQ((Outline{at(-180, 1), at(-179, 1), at(-180, 1)}), shapes[2]);
    EXPECT_EQ((Outline{at(180, 1), at(179, 1), at(180, 1)}), shapes[3]);
}

TEST(Shapes, OfPointsThatCoincideAreKept)
{
    EXPECT_EQ((std::vector<Outline>{{at(1, 2)}}), shapes_of_ring("[[1,2],[1,2]]"));
    EXPECT_EQ(2u, shapes_of_ring("[[180,2],[-180,2],[180,2]]").size());
}
