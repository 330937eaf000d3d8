/* SPDX-License-Identifier: MIT */
#include "shapes.h"

#include <cmath>
#include <numbers>
#include <string>

#include <gtest/gtest.h>

#include "world.h"

using namespace atlas;

namespace {

constexpr double radius = 6371.0088;
constexpr double whole_globe = 4 * std::numbers::pi * radius * radius;

/* What lies between two meridians so many degrees apart, and two parallels. */
double zone(double degrees, double south, double north)
{
    const double radian = std::numbers::pi / 180;
    return radius * radius * degrees * radian * (std::sin(north * radian) - std::sin(south * radian));
}

double area_of(const std::string &rings, const std::string &arcs)
{
    const Topology topology = decode(world_of("Polygon", rings, arcs));
    const Country *country = static_cast<const Country *>(topology.countries.get()->first->item);
    return static_cast<double>(area(*static_cast<const Polygon *>(country->polygons.get()->first->item)));
}

void expect_area(double expected, const std::string &rings, const std::string &arcs)
{
    EXPECT_NEAR(expected, area_of(rings, arcs), 2 + expected * 1e-6) << arcs;
}

const std::string box = "[[0,0],[30,0],[30,60],[0,60],[0,0]]";

} // namespace

TEST(Sine, IsThatOfTheStandardLibrary)
{
    for (Angle angle = -90 * degree; angle <= 90 * degree; angle += degree / 8) {
        const double expected = std::sin(angle * std::numbers::pi / 180 / degree);
        EXPECT_NEAR(expected, static_cast<double>(sine(angle)) / (1 << 30), 1e-8) << angle;
    }
    EXPECT_EQ(0, sine(0));
}

TEST(Area, IsThatOfTheSphere)
{
    expect_area(zone(30, 0, 60), "[[0]]", box);
    expect_area(zone(1, -1, 0), "[[0]]", "[[7,0],[8,0],[8,-1],[7,-1],[7,0]]");
    expect_area(0, "[[0]]", "[[7,0],[8,0],[7,0]]");
}

TEST(Area, IsTheSameWhicheverWayARingRuns)
{
    expect_area(zone(30, 0, 60), "[[-1]]", box);
    expect_area(zone(30, 0, 60) - zone(10, 10, 20), "[[0],[1]]", box + ",[[10,10],[10,20],[20,20],[20,10],[10,10]]");
    expect_area(zone(30, 0, 60) - zone(10, 10, 20), "[[-2],[0]]", box + ",[[10,10],[10,20],[20,20],[20,10],[10,10]]");
}

TEST(Area, AcrossTheEdgeAndRoundAPoleIsWhole)
{
    expect_area(zone(20, 0, 10), "[[0]]", "[[170,0],[-170,0],[-170,10],[170,10],[170,0]]");
    expect_area(zone(360, 60, 90), "[[0]]", "[[-180,60],[-90,60],[0,60],[90,60],[-180,60]]");
}

TEST(Area, IsNeverLessThanNothingNorMoreThanTheGlobe)
{
    EXPECT_EQ(0, area_of("[[0],[0],[0]]", box));
    std::string runs = "[[0,90]";
    for (int i = 0; i < 9; ++i)
        runs += ",[-180,90],[-180,-90],[0,-90],[180,-90],[180,90],[0,90]";
    EXPECT_NEAR(whole_globe, area_of("[[0]]", runs + "]"), 300);
}
