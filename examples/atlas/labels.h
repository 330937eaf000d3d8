/* SPDX-License-Identifier: MIT */
/* The names of countries on the map: which fit, where they stand, and the font that they are written in. */
#ifndef ATLAS_LABELS_H
#define ATLAS_LABELS_H

#include "countries.h"
#include "scan.h"

namespace atlas {

/* ---- font.cpp: a small font of capitals, digits and what else names of countries need ---- */

/* In dots. */
constexpr int glyph_width = 5;
constexpr int glyph_height = 7;

/* Returns UTF-8 text as glyphs of the font, which have the codes of ASCII characters. Small letters become capitals,
   and the letters of Latin-1 and Latin Extended-A lose their accents. Every other character becomes `unknown_glyph`. */
std::string as_glyphs(std::string_view text);
constexpr char unknown_glyph = '?';

/* Whether the glyph has a dot there. What is no glyph of the font looks like a box. */
bool has_dot(char glyph, int column, int row);

/* ---- labels ---- */

/* The map divided into square cells of some pixels each. */
struct Grid {
    Size map;
    int cell; /* the side of a cell, in pixels */
};

struct Box {
    int left, top, width, height; /* in cells */
};

/* A name in one line or more, each centred in its box. */
struct Label {
    std::string text; /* glyphs, with '\n' between lines */
    Box box;
    int dot; /* the side of a dot, in cells */
    Rank rank;
};

/* The labels of a map, those of the largest countries first. Each lies inside the largest polygon of its country, as large as
   fits there, and apart from all others: where two come too close, the larger country has its name. What fits nowhere is left
   out. */
class Labels : public mova::balanced_set<Label, ByRank, std::default_delete<Label>> {
public:
    Labels(const Topology &topology, Size map, const Progress &progress);

    /* Draws the labels with the canvas's pen. Returns how many it looked at. */
    std::size_t draw(Canvas &canvas);

private:
    struct Place {
        const Label *label;
        int top, bottom; /* in pixels */
        std::uint32_t layer = 0;

        int first_row() const { return top; }
        int end_row() const { return bottom; }
    };

    void remove_collisions();

    Grid grid_;
    Sweep<Place> places_;
};

} // namespace atlas

#endif
