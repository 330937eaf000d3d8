/* SPDX-License-Identifier: MIT */
#include "labels.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "pixels.h"
#include "world.h"

using namespace atlas;

namespace {

std::vector<Label> labels_in(const Labels &labels)
{
    return {labels.begin(), labels.end()};
}

/* A country that is a rectangle. */
struct Land {
    std::string name;
    int west, south, east, north;
};

Topology world_of_lands(const std::vector<Land> &lands)
{
    std::string geometries, arcs;
    for (std::size_t i = 0; i < lands.size(); ++i) {
        const Land &land = lands[i];
        const auto corner = [](int longitude, int latitude) {
            return "[" + std::to_string(longitude) + "," + std::to_string(latitude) + "]";
        };
        const std::string start = corner(land.west, land.south), separator = i ? "," : "";
        geometries += separator + R"({"type":"Polygon","properties":{"name":")" + land.name + R"("},"arcs":[[)" +
                      std::to_string(i) + "]]}";
        arcs += separator + "[" + start + "," + corner(land.east, land.south) + "," + corner(land.east, land.north) +
                "," + corner(land.west, land.north) + "," + start + "]";
    }
    return decode(world(R"("countries":{"type":"GeometryCollection","geometries":[)" + geometries + "]}", arcs));
}

std::vector<Label> labels_of(const std::vector<Land> &lands, int width = 360)
{
    return labels_in(Labels(world_of_lands(lands), {width, width / 2}, no_progress));
}

std::vector<std::string> texts_of(const std::vector<Land> &lands, int width = 360)
{
    std::vector<std::string> texts;
    for (const Label &label : labels_of(lands, width))
        texts.emplace_back(label.text);
    return texts;
}

using Texts = std::vector<std::string>;

/* Each country in an ink of its own, from 1 on. */
Pixels filled_countries(const Topology &topology, Size map)
{
    Pixels pixels(map.width, map.height);
    Fill fill(map);
    std::uint8_t ink = 0;
    for (const Country *each : topology.countries)
        fill.add(*each, ++ink);
    fill.sort();
    draw_in_bands(pixels.tile(), [&](Canvas &canvas) { fill.draw(canvas); });
    return pixels;
}

bool apart(const Box &a, const Box &b, int gap)
{
    return a.left + a.width + gap <= b.left || b.left + b.width + gap <= a.left || a.top + a.height + gap <= b.top ||
           b.top + b.height + gap <= a.top;
}

} // namespace

TEST(Labels, LieInsideTheirCountriesInTheShippedWorlds)
{
    for (const auto &[scale, least] : {std::pair("110m", 40u), {"50m", 40u}}) {
        const Topology topology = decode(shipped_world(scale));
        const Pixels map = filled_countries(topology, {2048, 1024});
        const std::vector<Label> labels = labels_in(Labels(topology, {2048, 1024}, no_progress));
        EXPECT_LT(least, labels.size());
        for (const Label &label : labels) {
            const Box &box = label.box;
            int inside = 0;
            for (int y = box.top; y < box.top + box.height; ++y)
                for (int x = box.left; x < box.left + box.width; ++x)
                    inside += map.at({x, y}) == label.rank.number + 1;
            EXPECT_EQ(box.width * box.height, inside) << label.text;
        }
    }
}

TEST(Labels, AreAllApartInTheShippedWorld)
{
    const std::vector<Label> labels = labels_in(Labels(decode(shipped_world("50m")), {4096, 2048}, no_progress));
    EXPECT_LT(90u, labels.size());
    for (std::size_t i = 0; i < labels.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            EXPECT_TRUE(apart(labels[i].box, labels[j].box, 3)) << labels[i].text << labels[j].text;
            EXPECT_GE(labels[j].rank.area, labels[i].rank.area);
        }
    }
}

TEST(Labels, StandInTheMiddle)
{
    const std::vector<Label> labels = labels_of({{"Ab", 10, 10, 30, 30}});
    ASSERT_EQ(1u, labels.size());
    EXPECT_EQ("AB", labels[0].text);
    EXPECT_EQ(1, labels[0].dot);
    EXPECT_EQ(std::pair(13, 9), std::pair(labels[0].box.width, labels[0].box.height));
    EXPECT_EQ(std::pair(193, 65), std::pair(labels[0].box.left, labels[0].box.top));
}

TEST(Labels, AreAsLargeAsFits)
{
    EXPECT_EQ(1, labels_of({{"Abc", 0, 0, 37, 40}})[0].dot);
    EXPECT_EQ(2, labels_of({{"Abc", 0, 0, 38, 40}})[0].dot);
    EXPECT_EQ(2, labels_of({{"Abc", 0, 0, 57, 26}})[0].dot);
    EXPECT_EQ(3, labels_of({{"Abc", 0, 0, 57, 27}})[0].dot);
    EXPECT_EQ(3, labels_of({{"Abc", -80, -80, 80, 80}})[0].dot);
}

TEST(Labels, HaveLargerDotsOnLargerMaps)
{
    const std::vector<Land> land = {{"Abc", 0, 0, 3, 5}};
    EXPECT_TRUE(labels_of(land, 2047).empty());
    EXPECT_EQ(1u, labels_of(land, 4096).size());
    EXPECT_EQ(labels_of(land, 4096)[0].box.left, labels_of(land, 8192)[0].box.left);
    EXPECT_EQ(labels_of(land, 4096)[0].box.top, labels_of(land, 32768)[0].box.top);
}

TEST(Labels, AreDrawnTwiceAsLargeOnAMapThatIsTwiceAsWide)
{
    const Topology topology = world_of_lands({{"Ab", 0, 0, 30, 20}});
    const auto pixels = [&](int width) {
        Pixels picture(width, width / 2);
        Labels labels(topology, {width, width / 2}, no_progress);
        draw_in_bands(picture.tile(), [&](Canvas &canvas) { labels.draw(canvas); });
        return std::count(picture.bytes().begin(), picture.bytes().end(), 1);
    };
    EXPECT_LT(0, pixels(3072));
    EXPECT_EQ(4 * pixels(3072), pixels(6144));
}

/* A page shows a part of it. */
TEST(Labels, AreMoreOnALargerLevelOfAPyramid)
{
    const Topology topology = decode(shipped_world("110m"));
    const auto count = [&](Size map) { return labels_in(Labels(topology, map, no_progress)).size(); };
    const std::size_t small = count({512, 512}), middle = count({2048, 2048}), large = count({16384, 16384});
    EXPECT_LT(2 * small, middle);
    EXPECT_LT(middle, large);
    EXPECT_LT(count({16384, 8192}), large);
}

TEST(Labels, AreWrappedWhereOneLineDoesNotFit)
{
    EXPECT_EQ(Texts{"ONE TWO"}, texts_of({{"One two", 0, 0, 43, 9}}));
    EXPECT_EQ(Texts{"ONE\nTWO"}, texts_of({{"One two", 0, 0, 42, 18}}));
    EXPECT_EQ(Texts{}, texts_of({{"One two", 0, 0, 42, 17}}));
    EXPECT_EQ(Texts{"A BC\nDEFGH"}, texts_of({{"A bc defgh", 0, 0, 31, 20}}));
    EXPECT_EQ(Texts{"A BC\nDEF\nGHIJ"}, texts_of({{"A bc def ghij", 0, 0, 25, 30}}));
    EXPECT_EQ(Texts{}, texts_of({{"A b c d", 0, 0, 8, 80}})) << "four lines are too many";
}

TEST(Labels, OfWhatHasNoNameOrPlaceAreNone)
{
    const std::string longest(40, 'i');
    EXPECT_EQ(Texts{},
              texts_of({{"", 0, 0, 90, 40}, {longest + "i", 100, 0, 110, 40}, {longest, -180, 50, -60, 60}}, 720));
    EXPECT_EQ(Texts{std::string(40, 'I')}, texts_of({{longest, -180, 50, -59, 60}}, 720));
    const Topology line = decode(world(R"("a":{"type":"LineString","arcs":[0],"properties":{"name":"a"}})",
                                       "[[0,0],[90,0],[90,60],[0,60],[0,0]]"));
    EXPECT_TRUE(labels_in(Labels(line, {360, 180}, no_progress)).empty());
}

/* What crosses very many rows is looked at as long as all of it together does not cross too many, the largest first. */
TEST(Labels, OfIntricateCountriesAreThoseOfTheLargest)
{
    const auto comb = [](int west, int height, int teeth) {
        const auto corner = [](double longitude, double latitude) {
            return "[" + std::to_string(longitude) + "," + std::to_string(latitude) + "]";
        };
        std::string arc = "[" + corner(west, -height) + "," + corner(west, 10);
        for (int i = 1; i < 2 * teeth; ++i)
            arc += "," + corner(west + i * 20.0 / teeth, i % 2 ? 80 : 10);
        return arc + "," + corner(west + 60, 10) + "," + corner(west + 60, -height) + "," + corner(west, -height) + "]";
    };
    const auto texts = [&](int first, int count, int teeth) {
        std::string objects, arcs;
        for (int i = 0; i < count; ++i) {
            const std::string name(1, static_cast<char>('A' + first + i)), comma = i ? "," : "";
            objects += comma + '"' + name + R"(":{"type":"Polygon","arcs":[[)" + std::to_string(i) +
                       R"(]],"properties":{"name":")" + name + "\"}}";
            arcs += comma + comb(-150 + (first + i) * 60, 80 - 5 * (first + i), teeth);
        }
        Texts all;
        for (const Label &label : Labels(decode(world(objects, arcs)), {4096, 2048}, no_progress))
            all.push_back(label.text);
        return all;
    };
    EXPECT_EQ((Texts{"A", "B", "C", "D", "E"}), texts(0, 5, 400));
    EXPECT_EQ((Texts{"A", "B", "C", "D"}), texts(0, 5, 640));
    EXPECT_EQ((Texts{"E"}), texts(4, 1, 640));
    EXPECT_EQ(Texts{}, texts(4, 1, 700));
}

TEST(Labels, OfLargerCountriesComeFirstWhereTheyCollide)
{
    EXPECT_EQ(Texts{"LARGE"}, texts_of({{"small", 0, 0, 59, 20}, {"large", 0, 0, 60, 20}}));
    EXPECT_EQ(Texts{"ONE"}, texts_of({{"one", 0, 0, 60, 20}, {"two", 0, 0, 60, 20}, {"six", 0, 0, 60, 20}}));
    EXPECT_EQ((Texts{"A", "C", "B"}), texts_of({{"a", 0, 0, 90, 60}, {"b", 0, 60, 90, 80}, {"c", 0, -40, 90, 0}}));
}

TEST(Labels, ThatAreNotFarEnoughApartCollide)
{
    EXPECT_EQ((Texts{"ABC", "DE"}), texts_of({{"abc", 0, 0, 19, 10}, {"de", 22, 0, 35, 9}}));
    EXPECT_EQ((Texts{"ABC", "DE"}), texts_of({{"abc", 16, 0, 35, 10}, {"de", 0, 0, 13, 9}}));
    EXPECT_EQ(Texts{"ABC"}, texts_of({{"abc", 15, 0, 34, 10}, {"de", 0, 0, 13, 9}}));
    EXPECT_EQ(Texts{"ABC"}, texts_of({{"abc", 0, 0, 19, 10}, {"de", 21, 0, 34, 9}}));
    EXPECT_EQ((Texts{"ABC", "DE"}), texts_of({{"abc", 0, 0, 19, 9}, {"de", 0, 12, 13, 21}}));
    EXPECT_EQ(Texts{"ABC"}, texts_of({{"abc", 0, 0, 19, 9}, {"de", 0, 11, 13, 20}}));
}

TEST(Labels, AvoidHoles)
{
    const Topology topology =
        decode(world(R"("a":{"type":"Polygon","arcs":[[0],[1]],"properties":{"name":"Ab"}})",
                     "[[0,0],[40,0],[40,20],[0,20],[0,0]],[[10,1],[20,1],[20,19],[10,19],[10,1]]"));
    const std::vector<Label> labels = labels_in(Labels(topology, {360, 180}, no_progress));
    ASSERT_EQ(1u, labels.size());
    EXPECT_LE(200, labels[0].box.left);
}

TEST(Labels, StandInTheLargestPolygon)
{
    const Topology topology =
        decode(world(R"("a":{"type":"MultiPolygon","arcs":[[[0]],[[1]]],"properties":{"name":"Ab"}})",
                     "[[0,0],[40,0],[40,20],[0,20],[0,0]],[[50,0],[100,0],[100,20],[50,20],[50,0]]"));
    EXPECT_LE(230, labels_in(Labels(topology, {360, 180}, no_progress))[0].box.left);
}

TEST(Labels, AreDrawnDotForDotAndLinesCentred)
{
    const Topology topology = world_of_lands({{"I ab", 0, 0, 14, 20}});
    Pixels picture(360, 180);
    Labels labels(topology, {360, 180}, no_progress);
    draw_in_bands(picture.tile(), [&](Canvas &canvas) { labels.draw(canvas); });
    std::string drawn;
    for (int y = 71; y < 89; ++y, drawn += '\n')
        for (int x = 180; x < 194; ++x)
            drawn += picture.at({x, y}) ? '#' : '.';
    EXPECT_EQ("..............\n"
              "....#####.....\n......#.......\n......#.......\n......#.......\n......#.......\n......#.......\n"
              "....#####.....\n..............\n..............\n"
              "..###..####...\n.#...#.#...#..\n.#...#.#...#..\n.#####.####...\n.#...#.#...#..\n.#...#.#...#..\n"
              ".#...#.####...\n..............\n",
              drawn);
}

TEST(Labels, ReportHowManyCountriesHaveBeenTried)
{
    std::size_t before = 0;
    const Topology topology = decode(shipped_world("110m"));
    Labels(topology, {360, 180}, [&](const char *step, std::size_t done, std::size_t all) {
        EXPECT_STREQ("labelling", step);
        EXPECT_EQ(++before, done);
        EXPECT_EQ(177u, all);
    });
    EXPECT_EQ(177u, before);
}
