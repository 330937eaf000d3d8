/* SPDX-License-Identifier: MIT */
#include "labels.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

using namespace atlas;

namespace {

const std::string all_glyphs = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789 .,-'()&/?";

std::string picture_of(char glyph)
{
    std::string picture;
    for (int row = 0; row < glyph_height; ++row) {
        for (int column = 0; column < glyph_width; ++column)
            picture += has_dot(glyph, column, row) ? '#' : '.';
        picture += '\n';
    }
    return picture;
}

} // namespace

TEST(Font, HasTheGlyphsInTheirPlaces)
{
    EXPECT_EQ(".###.\n#...#\n#...#\n#####\n#...#\n#...#\n#...#\n", picture_of('A'));
    EXPECT_EQ("#####\n..#..\n..#..\n..#..\n..#..\n..#..\n#####\n", picture_of('I'));
    EXPECT_EQ("..###\n...#.\n...#.\n...#.\n...#.\n#..#.\n.##..\n", picture_of('J'));
    EXPECT_EQ("#####\n....#\n...#.\n..#..\n.#...\n#....\n#####\n", picture_of('Z'));
    EXPECT_EQ(".###.\n#...#\n#...#\n.####\n....#\n...#.\n.##..\n", picture_of('9'));
    EXPECT_EQ(".....\n.....\n.....\n.....\n.....\n.##..\n.##..\n", picture_of('.'));
}

TEST(Font, HasNoTwoGlyphsAlikeAndNoneEmptyButTheBlank)
{
    std::set<std::string> pictures;
    for (const char glyph : all_glyphs)
        pictures.insert(picture_of(glyph));
    EXPECT_EQ(all_glyphs.size(), pictures.size());
    EXPECT_EQ(std::string::npos, picture_of(' ').find('#'));
}

TEST(Font, ShowsABoxForWhatIsNoGlyph)
{
    for (const char character : {'a', '\n', '\0', '\xff', '@'})
        EXPECT_EQ(picture_of(unknown_glyph), picture_of(character));
}

TEST(Glyphs, AreThoseOfTheFontAsTheyStand)
{
    EXPECT_EQ(all_glyphs, as_glyphs(all_glyphs));
    EXPECT_EQ("ABCXYZ", as_glyphs("abcxyz"));
    EXPECT_EQ("", as_glyphs(""));
}

TEST(Glyphs, LoseTheirAccents)
{
    EXPECT_EQ("COTE D'IVOIRE", as_glyphs("Côte d'Ivoire"));
    EXPECT_EQ("SAO TOME", as_glyphs("São Tomé"));
    EXPECT_EQ("ALAND CURACAO", as_glyphs("Åland Curaçao"));
    EXPECT_EQ("AAAAAAAECEEEEIIIIDNOOOOO?OUUUUYTHSS", as_glyphs("ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞß"));
    EXPECT_EQ("AAAAAAAECEEEEIIIIDNOOOOO?OUUUUYTHY", as_glyphs("àáâãäåæçèéêëìíîïðñòóôõö÷øùúûüýþÿ"));
    EXPECT_EQ("AACCDDEEGGHHIIIJIJJKKLLNNNOOOEOERRSSTTUUWWYYZZS",
              as_glyphs("ĀąĆčĎđĒěĜģĤħĨıĲĳĴķĸĹłŃŉŋŌőŒœŔřŚšŢŧŨųŴŵŶŸŹžſ"));
}

TEST(Glyphs, AreABoxForEachOtherCharacter)
{
    EXPECT_EQ("???", as_glyphs("日本国"));
    EXPECT_EQ("?A?", as_glyphs("\xf0\x9f\x97\xba"
                               "a\xc6\x80"));
    EXPECT_EQ("?A", as_glyphs("\xc2\xbf"
                              "a"));
    EXPECT_EQ("A?B?", as_glyphs("a\tb\n"));
    EXPECT_EQ("?", as_glyphs("\xc3"));
    EXPECT_EQ("?A", as_glyphs("\xc3"
                              "a"));
}
