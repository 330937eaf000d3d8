/* SPDX-License-Identifier: MIT */
#include "labels.h"

#include <array>
#include <cstddef>

namespace atlas {

/* ---- glyphs ---- */

/* Glyphs side by side, a column apart. */
struct Sheet {
    std::string_view glyphs;
    std::array<std::string_view, glyph_height> rows;
};

static constexpr Sheet sheets[] = {
    {"ABCDEFGHI",
     {
         " ###  ####   ###  ####  ##### #####  ###  #   # #####",
         "#   # #   # #   # #   # #     #     #   # #   #   #  ",
         "#   # #   # #     #   # #     #     #     #   #   #  ",
         "##### ####  #     #   # ####  ####  # ### #####   #  ",
         "#   # #   # #     #   # #     #     #   # #   #   #  ",
         "#   # #   # #   # #   # #     #     #   # #   #   #  ",
         "#   # ####   ###  ####  ##### #      ###  #   # #####",
     }},
    {"JKLMNOPQR",
     {
         "  ### #   # #     #   # #   #  ###  ####   ###  #### ",
         "   #  #  #  #     ## ## ##  # #   # #   # #   # #   #",
         "   #  # #   #     # # # # # # #   # #   # #   # #   #",
         "   #  ##    #     # # # #  ## #   # ####  #   # #### ",
         "   #  # #   #     #   # #   # #   # #     # # # # #  ",
         "#  #  #  #  #     #   # #   # #   # #     #  #  #  # ",
         " ##   #   # ##### #   # #   #  ###  #      ## # #   #",
     }},
    {"STUVWXYZ",
     {
         " #### ##### #   # #   # #   # #   # #   # #####",
         "#       #   #   # #   # #   # #   # #   #     #",
         "#       #   #   # #   # #   #  # #   # #     # ",
         " ###    #   #   # #   # # # #   #     #     #  ",
         "    #   #   #   # #   # # # #  # #    #    #   ",
         "    #   #   #   #  # #  ## ## #   #   #   #    ",
         "####    #    ###    #   #   # #   #   #   #####",
     }},
    {"0123456789",
     {
         " ###    #    ###  #####    #  #####   ##  #####  ###   ### ",
         "#   #  ##   #   #    #    ##  #      #        # #   # #   #",
         "#  ##   #       #   #    # #  ####  #        #  #   # #   #",
         "# # #   #      #     #  #  #      # ####    #    ###   ####",
         "##  #   #     #       # #####     # #   #  #    #   #     #",
         "#   #   #    #    #   #    #  #   # #   #  #    #   #    # ",
         " ###   ###  #####  ###     #   ###   ###   #     ###   ##  ",
     }},
    {" .,-'()&/?",
     {
         "                          #      #   #     ##       #      ",
         "                          #     #     #   #  #      #  ### ",
         "                         #     #       #  # #      #   # # ",
         "                   ###         #       #   #      #    # # ",
         "             ##                #       #  # # #  #     # # ",
         "       ##     #                 #     #   #  #  #      ### ",
         "       ##    #                   #   #     ## # #          ",
     }},
};

struct Cell {
    const Sheet *sheet;
    std::size_t left;
};

static Cell cell_of(char glyph)
{
    for (const Sheet &sheet : sheets) {
        const std::size_t place = sheet.glyphs.find(glyph);
        if (place != std::string_view::npos)
            return {&sheet, place * (glyph_width + 1)};
    }
    return cell_of(unknown_glyph);
}

bool has_dot(char glyph, int column, int row)
{
    const Cell cell = cell_of(glyph);
    return cell.sheet->rows[static_cast<std::size_t>(row)][cell.left + static_cast<std::size_t>(column)] == '#';
}

/* ---- text ---- */

/* The letters from U+00C0 to U+017F without their accents. A small letter stands for two capitals; see append_base. */
static constexpr std::string_view base_letters = "AAAAAAaCEEEEIIIIDNOOOOO?OUUUUYts"
                                                 "AAAAAAaCEEEEIIIIDNOOOOO?OUUUUYtY"
                                                 "AAAAAACCCCCCCCDDDDEEEEEEEEEEGGGGGGGGHHHHIIIIIIIIIIiiJJKKK"
                                                 "LLLLLLLLLLNNNNNNNNNOOOOOOooRRRRRRSSSSSSSSTTTTTTUUUUUUUUUUUU"
                                                 "WWYYYZZZZZZS";
constexpr unsigned first_base = 0xC0;
static_assert(base_letters.size() == 0x180 - first_base);

static void append_base(std::string &glyphs, char letter)
{
    switch (letter) {
    case 'a': glyphs += "AE"; break;
    case 'i': glyphs += "IJ"; break;
    case 'o': glyphs += "OE"; break;
    case 's': glyphs += "SS"; break;
    case 't': glyphs += "TH"; break;
    default: glyphs += letter;
    }
}

static void append_ascii(std::string &glyphs, char character)
{
    const char capital = character >= 'a' && character <= 'z' ? static_cast<char>(character - 'a' + 'A') : character;
    const Cell cell = cell_of(capital);
    glyphs += cell.sheet->glyphs[cell.left / (glyph_width + 1)];
}

/* Returns the code point of a character of two bytes, or 0 where there is another character. */
static unsigned two_byte_code_point(std::string_view text)
{
    const unsigned lead = static_cast<unsigned char>(text[0]);
    const unsigned trail = text.size() > 1 ? static_cast<unsigned char>(text[1]) : 0;
    return lead >> 5 == 6 && trail >> 6 == 2 ? (lead & 31) << 6 | (trail & 63) : 0;
}

std::string as_glyphs(std::string_view text)
{
    std::string glyphs;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned byte = static_cast<unsigned char>(text[i]);
        const unsigned code_point = two_byte_code_point(text.substr(i));
        if (byte < 128)
            append_ascii(glyphs, text[i]);
        else if (code_point >= first_base && code_point - first_base < base_letters.size())
            append_base(glyphs, base_letters[code_point - first_base]);
        else if (byte >> 6 != 2) /* the first byte of its character */
            glyphs += unknown_glyph;
    }
    return glyphs;
}

} // namespace atlas
