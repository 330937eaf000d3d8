/* SPDX-License-Identifier: MIT */
#include "colours.h"

#include <set>

#include <gtest/gtest.h>

using namespace atlas;

static mova::colour shown(std::int32_t index)
{
    return palette().at(static_cast<std::size_t>(index));
}

TEST(Colours, OfWhatEveryMapHasAreStandardOnes)
{
    EXPECT_EQ(GE_DRKBLU, inks().sea);
    EXPECT_EQ(GE_LGRAY, inks().coast);
    EXPECT_EQ(GE_WHITE, inks().text);
}

TEST(Colours, OfCountriesHaveIndicesOfTheirOwn)
{
    std::set<int> all = {inks().sea, inks().graticule, inks().frame, inks().border, inks().coast, inks().text};
    EXPECT_EQ(6u, all.size());
    for (const std::uint8_t land : inks().land) {
        EXPECT_LT(GE_DRKCYAN, land);
        EXPECT_TRUE(all.insert(land).second);
    }
}

TEST(Colours, AreDifferentToTheEye)
{
    std::set<std::array<int, 3>> all;
    const auto insert = [&](std::uint8_t ink) {
        const mova::colour colour = shown(ink);
        return all.insert({colour.red, colour.green, colour.blue}).second;
    };
    for (const std::uint8_t ink : {inks().sea, inks().graticule, inks().frame, inks().border, inks().coast})
        EXPECT_TRUE(insert(ink));
    for (const std::uint8_t land : inks().land)
        EXPECT_TRUE(insert(land));
}

TEST(Palette, IsReadFromTheTable)
{
    EXPECT_EQ((mova::colour{14, 36, 56}), shown(inks().sea));
    EXPECT_EQ((mova::colour{250, 246, 232}), shown(inks().text));
    EXPECT_EQ((mova::colour{122, 100, 114}), palette().back());
    mova::colour_table::set(inks().frame, {1, 2, 3});
    EXPECT_EQ((mova::colour{1, 2, 3}), shown(inks().frame));
    mova::colour_table::set(inks().frame, {52, 86, 114});
}
