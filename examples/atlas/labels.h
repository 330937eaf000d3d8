/* SPDX-License-Identifier: MIT */
/* The names of countries on the map: which fit, where they stand, and the font that they are written in. */
#ifndef ATLAS_LABELS_H
#define ATLAS_LABELS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "canvas.h"
#include "countries.h"

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

/* ---- where in a polygon a box fits ---- */

/* A map divided into square cells of some pixels each. */
struct Grid {
    int width, height; /* of the map, in pixels */
    int cell;          /* the side of a cell, in pixels */
};

struct Box {
    int left, top, width, height; /* in cells */
};

/* The cells of a polygon, row by row. A cell is inside where both its sides are, on the line through its middle. */
class Interior {
public:
    /* Takes the rows that its sides cross off `crossings_left`: nothing fits inside a polygon that crosses more
       than are left. */
    Interior(const Polygon &polygon, Grid grid, std::int64_t &crossings_left);

    /* Returns a box of this size that lies inside, with as much room around it as there is, or nothing. */
    std::optional<Box> place(int width, int height) const;

private:
    using Row = std::vector<Columns>;

    static Row spans(std::vector<Angle> &crossings, Grid grid);
    static Row common(const Row &a, const Row &b, int width);
    std::optional<Box> widest(int width, int height) const;

    int top_ = 0; /* the first row */
    std::vector<Row> rows_;
};

/* ---- labels ---- */

constexpr int longest_label = 40;

/* A name in one line or more, each centred in its box. */
struct Label {
    std::string text; /* glyphs, with '\n' between lines */
    Box box;
    int dot; /* the side of a dot, in cells */
    Summary summary;
};

/* Those of the largest countries first. */
struct ByCountry {
    auto operator()(const Label &a, const Label &b) const { return ByArea()(a.summary, b.summary); }
};

/* The labels of a map. Each lies inside the largest polygon of its country, as large as fits there, and apart from all
   others: where two come too close, the larger country has its name. What fits nowhere is left out. */
class Labels : public mova::balanced_set<Label, ByCountry, std::default_delete<Label>> {
public:
    Labels(const Topology &topology, Size map, const Progress &progress);

    /* Draws the labels with the canvas's pen. */
    void draw(Canvas &canvas) const;

private:
    void remove_collisions();

    Grid grid_;
};

} // namespace atlas

#endif
