/* SPDX-License-Identifier: MIT */
#include "countries.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <mova/host/messages.h>

#include "messages.h"
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
    for (const Summary &summary : index)
        all.push_back(summary.rank.number);
    return all;
}

using Names = std::vector<std::string>;

Names names_of(const Topology &topology)
{
    Names names;
    for (const Country *country : topology.countries)
        names.push_back(country->name);
    return names;
}

/* A topology of a country for each letter, all along the same arc. A country named '-' has no name. */
Topology world_of_letters(const std::string &letters)
{
    std::string geometries;
    for (const char letter : letters) {
        const std::string name = letter == '-' ? "null" : std::string("\"") + letter + '"';
        geometries += std::string(geometries.empty() ? "" : ",") + R"({"type":"LineString","arcs":[0],"properties":{)" +
                      R"("name":)" + name + "}}";
    }
    return decode(
        world(R"("countries":{"type":"GeometryCollection","geometries":[)" + geometries + "]}", "[[0,0],[1,1]]"));
}

Names selected(const std::string &letters, const Names &names)
{
    Topology topology = world_of_letters(letters);
    select_countries(topology, names);
    return names_of(topology);
}

} // namespace

TEST(NameIndex, FindsTheCountriesOfANameInTheirOrder)
{
    const Topology topology =
        world_of_sizes({{"b", 1}, {"a", 1}, {"b", 2}, {"-", 1}, {"c", 1}, {"b", 3}, {"b", 1}, {"aa", 1}, {"b", 1}});
    const std::vector<const Country *> all(topology.countries.begin(), topology.countries.end());
    const NameIndex index = index_by_name(topology);
    const auto found = [&](std::string_view name) {
        std::vector<const Country *> named;
        for (const Country &each : index.equal_range(name))
            named.push_back(&each);
        return named;
    };
    EXPECT_EQ((std::vector{all[0], all[2], all[5], all[6], all[8]}), found("b"));
    EXPECT_EQ(std::vector{all[1]}, found("a"));
    EXPECT_EQ(std::vector{all[7]}, found("aa"));
    EXPECT_EQ(std::vector{all[4]}, found("c"));
    for (const char *name : {"", "aaa", "ab", "d", "A"})
        EXPECT_TRUE(found(name).empty()) << name;
}

TEST(AreaIndex, HasTheLargestFirstAndEqualOnesInTheirOrder)
{
    EXPECT_EQ((std::vector<std::int32_t>{2, 0, 4, 5, 1, 3}),
              numbers(index_by_area(world_of_sizes({{"a", 5}, {"b", 1}, {"c", 9}, {"d", 1}, {"-", 5}, {"a", 5}}))));
}

TEST(AreaIndex, AddsUpACountryAndKnowsItsLargestPolygon)
{
    const Topology topology = decode(world_of("MultiPolygon", "[[[0]],[[1]],[[2]]]",
                                              "[[0,0],[1,0],[1,1],[0,0]],[[5,0],[9,0],[9,4],[5,0]],"
                                              "[[20,0],[22,0],[22,2],[20,0]]"));
    const AreaIndex index = index_by_area(topology);
    const Summary &summary = index.front();
    EXPECT_EQ(*++summary.country->polygons.begin(), summary.largest);
    EXPECT_NEAR(6182 * 21.0, static_cast<double>(summary.rank.area), 1000);
}

TEST(AreaIndex, OfALineHasNoArea)
{
    const Topology topology = decode(world_of("LineString", "[0]", "[[0,0],[9,9]]"));
    const AreaIndex index = index_by_area(topology);
    const Summary &summary = index.front();
    EXPECT_EQ(0, summary.rank.area);
    EXPECT_EQ(nullptr, summary.largest);
}

TEST(AreaIndex, IsPrintedOnALineForEachCountry)
{
    const Topology topology = world_of_sizes({{"a\\n\\u009b\\u202eb", 2}, {"-", 1}, {"Big", 3}});
    const mova_text_fn before = mova_set_debug_print([](const char *text) { printed += text; });
    print(index_by_area(topology));
    mova_set_debug_print(before);
    EXPECT_EQ("   Big, 37091 km2\na???b, 24727 km2\n   (no name), 12363 km2\n", printed);
}

TEST(AreaIndex, KnowsTheShippedWorld)
{
    const Topology topology = decode(shipped_world("50m"));
    const AreaIndex index = index_by_area(topology);
    std::vector<std::string> largest;
    for (auto at = index.begin(); largest.size() < 5; ++at)
        largest.push_back(at->country->name);
    EXPECT_EQ((std::vector<std::string>{"Russia", "Antarctica", "Canada", "United States of America", "China"}),
              largest);
    EXPECT_EQ(241u, index.count_items());
}

TEST(Selection, KeepsTheNamedCountriesInTheirOrder)
{
    EXPECT_EQ((Names{"b", "d", "e"}), selected("abcdef", {"e", "b", "d"}));
    EXPECT_EQ((Names{"a", "f"}), selected("abcdef", {"f", "a"}));
    EXPECT_EQ(Names{"c"}, selected("abcdef", {"c", "c"}));
    EXPECT_EQ((Names{"a", "b"}), selected("ab", {"a", "b"}));
}

TEST(Selection, KeepsAllCountriesOfAName)
{
    EXPECT_EQ((Names{"b", "b", "b"}), selected("babcabd", {"b"}));
    EXPECT_EQ((Names{"a", "b", "a", "b"}), selected("abccab", {"b", "a"}));
}

TEST(Selection, OfANameThatNoCountryHasIsRefused)
{
    for (const char *name : {"x", "A", "aa", ""}) {
        Topology topology = world_of_letters("ab-");
        try {
            select_countries(topology, {"b", name});
            FAIL() << name;
        } catch (const Error &error) {
            EXPECT_EQ(std::string("no country is named ") + name, error.what());
        }
        EXPECT_EQ((Names{"a", "b", ""}), names_of(topology));
    }
}

TEST(Selection, ANameThatIsNearlyRightIsAnsweredWithTheRightOne)
{
    const std::pair<const char *, const char *> misses[] = {{"Nigr", "Niger"},
                                                            {"niger", "Niger"},
                                                            {"Brasil", "Brazil"},
                                                            {"Untied Kingdom", "United Kingdom"},
                                                            {"United States", "United States of America"},
                                                            {"Switzer", "Switzerland"}};
    for (const auto &[name, meant] : misses) {
        Topology topology = decode(shipped_world("110m"));
        try {
            select_countries(topology, {name});
            FAIL() << name;
        } catch (const Error &error) {
            EXPECT_EQ(std::string("no country is named ") + name + ": did you mean " + meant + "?", error.what());
        }
    }
    for (const char *name : {"Xyzzyx", "Ch", "Nowhere at all"}) {
        Topology topology = decode(shipped_world("110m"));
        try {
            select_countries(topology, {name});
            FAIL() << name;
        } catch (const Error &error) {
            EXPECT_EQ(std::string("no country is named ") + name, error.what());
        }
    }
}

TEST(Selection, LeavesCoastsWhereTheNeighbourIsGone)
{
    Topology topology = world_of_letters("ab");
    const Arc *arc = topology.arcs.front();
    EXPECT_EQ(ArcUse::border, arc->use);
    select_countries(topology, {"a"});
    EXPECT_EQ(ArcUse::coast, arc->use);
}

TEST(Selection, FollowsTheListAsManyCountriesGo)
{
    std::string letters;
    Names expected;
    for (int i = 0; i < 3000; ++i) {
        letters += i % 7 == 3 ? 'y' : i % 3 == 1 ? 'z' : 'n';
        if (letters.back() != 'n')
            expected.emplace_back(1, letters.back());
    }
    EXPECT_EQ(expected, selected(letters, {"z", "y"}));
}

/* Of 20,000 countries with one name, for which is asked as often: each stays, and is come to once. */
TEST(Selection, TakesNamesThatRepeatAmongManyCountries)
{
    const std::size_t many = 20000;
    Topology topology = world_of_letters(std::string(many, 'a') + "b");
    EXPECT_EQ(many, select_countries(topology, Names(many, "a")));
    EXPECT_EQ(many, topology.countries.size());
}

TEST(Selection, FindsEachNameOfTheShippedWorld)
{
    const Names all = names_of(decode(shipped_world("110m")));
    for (std::size_t i = 0; i < all.size(); i += 40) {
        Topology topology = decode(shipped_world("110m"));
        select_countries(topology, {all[i]});
        EXPECT_EQ(Names{all[i]}, names_of(topology));
    }
}
