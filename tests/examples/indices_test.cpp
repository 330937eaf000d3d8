/* SPDX-License-Identifier: MIT */
#include "indices.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <mova/host/messages.h>

#include "world.h"

using namespace atlas;

namespace {

std::string printed;

/* A topology of a country for each pair of a name and a number of square degrees. The name '-' stands for none. */
Topology world_of_sizes(const std::vector<std::pair<std::string, int>> &countries)
{
    std::string geometries, arcs;
    int number = 0;
    for (const auto &[name, size] : countries) {
        const std::string separator = number ? "," : "", right = std::to_string(size);
        geometries += separator + R"({"type":"Polygon","arcs":[[)" + std::to_string(number++) + "]]" +
                      (name == "-" ? "" : R"(,"properties":{"name":")" + name + "\"}") + "}";
        arcs += separator + "[[0,0],[" + right + ",0],[" + right + ",1],[0,1],[0,0]]";
    }
    return decode(world(R"("countries":{"type":"GeometryCollection","geometries":[)" + geometries + "]}", arcs));
}

std::vector<std::int32_t> numbers(const AreaIndex &index)
{
    std::vector<std::int32_t> all;
    tree_iter *summaries = GT_all_items(index.get());
    for (void *item; GT_next_item(summaries, &item);)
        all.push_back(static_cast<const Summary *>(item)->number);
    return all;
}

} // namespace

TEST(NameIndex, FindsTheCountriesOfANameInTheirOrder)
{
    const Topology topology =
        world_of_sizes({{"b", 1}, {"a", 1}, {"b", 2}, {"-", 1}, {"c", 1}, {"b", 3}, {"b", 1}, {"aa", 1}, {"b", 1}});
    std::vector<const Country *> all;
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (const Country *country = next_record<Country>(countries))
        all.push_back(country);
    const NameIndex index(topology);
    EXPECT_EQ((std::vector{all[0], all[2], all[5], all[6], all[8]}), index.find("b"));
    EXPECT_EQ(std::vector{all[1]}, index.find("a"));
    EXPECT_EQ(std::vector{all[7]}, index.find("aa"));
    EXPECT_EQ(std::vector{all[4]}, index.find("c"));
    for (const char *name : {"", "aaa", "ab", "d", "A"})
        EXPECT_TRUE(index.find(name).empty()) << name;
}

TEST(AreaIndex, HasTheLargestFirstAndEqualOnesInTheirOrder)
{
    EXPECT_EQ((std::vector<std::int32_t>{2, 0, 4, 5, 1, 3}),
              numbers(AreaIndex(world_of_sizes({{"a", 5}, {"b", 1}, {"c", 9}, {"d", 1}, {"-", 5}, {"a", 5}}))));
}

TEST(AreaIndex, AddsUpACountryAndKnowsItsLargestPolygon)
{
    const Topology topology = decode(world_of("MultiPolygon", "[[[0]],[[1]],[[2]]]",
                                              "[[0,0],[1,0],[1,1],[0,0]],[[5,0],[9,0],[9,4],[5,0]],"
                                              "[[20,0],[22,0],[22,2],[20,0]]"));
    const AreaIndex index(topology);
    const Summary &summary = *static_cast<const Summary *>(index.get()->first->item);
    EXPECT_EQ(summary.country->polygons.get()->first->next->item, summary.largest);
    EXPECT_NEAR(6182 * 21.0, static_cast<double>(summary.area), 1000);
}

TEST(AreaIndex, OfALineHasNoArea)
{
    const Topology topology = decode(world_of("LineString", "[0]", "[[0,0],[9,9]]"));
    const AreaIndex index(topology);
    const Summary &summary = *static_cast<const Summary *>(index.get()->first->item);
    EXPECT_EQ(0, summary.area);
    EXPECT_EQ(nullptr, summary.largest);
}

TEST(AreaIndex, IsPrintedOnALineForEachCountry)
{
    const Topology topology = world_of_sizes({{"a\\nb", 2}, {"-", 1}, {"Big", 3}});
    const mova_text_fn before = mova_set_debug_print([](const char *text) { printed += text; });
    AreaIndex(topology).print();
    mova_set_debug_print(before);
    EXPECT_EQ("   Big, 37091 km2\na?b, 24727 km2\n   (no name), 12363 km2\n", printed);
}

TEST(AreaIndex, KnowsTheShippedWorld)
{
    const Topology topology = decode(shipped_world("50m"));
    const AreaIndex index(topology);
    std::vector<std::string> largest;
    tree_iter *summaries = GT_all_items(index.get());
    for (void *item; largest.size() < 5 && GT_next_item(summaries, &item);)
        largest.emplace_back(static_cast<const Summary *>(item)->country->name.view());
    GT_end_iterator(summaries);
    EXPECT_EQ((std::vector<std::string>{"Russia", "Antarctica", "Canada", "United States of America", "China"}),
              largest);
    EXPECT_EQ(241, GT_count_items(index.get()));
}
