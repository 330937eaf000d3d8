/* SPDX-License-Identifier: MIT */
/* A small font of capitals, digits and what else names of countries need, five dots wide and seven high. */
#ifndef ATLAS_FONT_H
#define ATLAS_FONT_H

#include <string>
#include <string_view>

namespace atlas {

constexpr int glyph_width = 5;
constexpr int glyph_height = 7;

/* Returns UTF-8 text as glyphs of the font, which have the codes of ASCII characters. Small letters become capitals,
   and the letters of Latin-1 and Latin Extended-A lose their accents. Every other character becomes `unknown_glyph`. */
std::string as_glyphs(std::string_view text);
constexpr char unknown_glyph = '?';

/* Whether the glyph has a dot there. What is no glyph of the font looks like a box. */
bool has_dot(char glyph, int column, int row);

} // namespace atlas

#endif
