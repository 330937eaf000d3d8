/* SPDX-License-Identifier: MIT */
#include "select.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "error.h"
#include "world.h"

using namespace atlas;

namespace {

using Names = std::vector<std::string>;

Names names_of(const Topology &topology)
{
    Names names;
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (const Country *country = next_record<Country>(countries))
        names.emplace_back(country->name.view());
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
    const Arc *arc = static_cast<const Arc *>(topology.arcs.get()->first->item);
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

/* Each of 20,000 countries has the name, which is asked for 20,000 times. */
TEST(Selection, IsNotQuadraticInNamesThatRepeat)
{
    const std::size_t many = 20000;
    EXPECT_EQ(many, selected(std::string(many, 'a') + "b", Names(many, "a")).size());
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
