/* SPDX-License-Identifier: MIT */
/* A topology as a world map, countries filled and outlined. Nothing here that decides on a pixel computes with fractions, so
   that the same topology gives the same pixels everywhere. */
#ifndef ATLAS_DRAW_H
#define ATLAS_DRAW_H

#include "labels.h"

namespace atlas {

/* Where the rows of a tile are crossed: for each column a bit for each row, and for each word of columns a bit for each
   that says whether to look there. Two crossings in one place cancel out. */
class Crossings {
public:
    void resize(const Rectangle &bounds);
    /* What lies beside the tile is crossed at its side. */
    void toggle(int column, Canvas::Rows rows);
    /* Calls `visit` with the columns from each crossing to the next, and the rows that are inside there; forgets all. */
    template <class Visit>
    void take_spans(Visit visit);

private:
    static constexpr std::size_t word_bits = 64;

    Rectangle bounds_ = {0, 0, 0, 0};
    std::vector<Canvas::Rows> rows_;
    std::vector<std::uint64_t> columns_;
    std::size_t first_ = SIZE_MAX, last_ = 0; /* of the words of columns that have been crossed */
};

/* What countries cover on a map of one size, prepared so that any part of it can be filled.

   A pixel is filled when its centre lies inside; a centre on the outline lies inside where the country is to the right
   of it, or below it where it is level. So neighbours share no pixel, and leave none out between them. Corners are
   rounded to a grid of 1024 lines a pixel, to the left and upwards; from there on everything is exact. */
class Fill {
public:
    explicit Fill(Size map) : map_(map) {}

    /* Countries that are added later lie on top. `sort` is to be called after the last one. */
    void add(const Country &country, std::uint8_t ink);
    void sort() { edges_.sort(); }

    /* Fills what lies in the canvas' tile. Returns how many edges it looked at. */
    std::size_t draw(Canvas &canvas);

private:
    static constexpr int lines = 1024, centre = lines / 2;

    /* It crosses the rows whose middle it passes. */
    struct Edge {
        Side side;           /* on the grid */
        std::uint32_t layer; /* the country's, from the top */

        int first_row() const { return (side.from.y + centre - 1) / lines; }
        int end_row() const { return (side.to.y + centre - 1) / lines; }
        /* The first column whose centre does not lie to the left of it. */
        int column(int row) const
        {
            return static_cast<int>(ceil_divided(side.crossing(row * lines + centre) - centre, lines));
        }
    };

    void cross(const Edge &edge, Canvas &canvas);

    Size map_;
    std::vector<std::uint8_t> inks_; /* of the countries */
    Sweep<Edge> edges_;
    Crossings crossings_;
};

/* The outlines of the countries as straight lines on the flat map, prepared so that any part of it can be drawn. */
class Outlines {
public:
    /* Takes every arc once, whoever uses it. */
    Outlines(const Topology &topology, Size map);

    /* Draws what lies in the canvas' tile: coasts on top of the borders that end there. Returns how many lines it looked at. */
    std::size_t draw(Canvas &canvas);

private:
    struct Line {
        Pixel from, to;
        std::uint32_t layer; /* coasts, then borders */

        int first_row() const { return std::min(from.y, to.y); }
        int end_row() const { return std::max(from.y, to.y) + 1; }
    };

    void add_segment(Point from, Point to, Size map, std::uint32_t layer);

    Sweep<Line> lines_;
};

/* All that the map shows, prepared for one size: tiles can be drawn in any order. It does not need the topology any
   more. */
class Drawing {
public:
    /* The size says which view of the globe it is. */
    Drawing(const Topology &topology, Size map, const Progress &progress);

    Size size() const { return size_; }

    /* Draws all that lies in the tile: the sea, the graticule in it, the countries, their borders, the coasts, the
       names. Its rows are drawn as wide as the map, in bands for all tiles there; best from the top down. */
    void draw(const Tile &tile);

    /* How much work the tiles were: the lines and the edges that were looked at, and Canvas::steps. */
    std::size_t steps() const { return steps_; }

private:
    void draw_band(int top);

    Size size_;
    Fill fill_;
    Outlines outlines_;
    Labels labels_;
    Tile band_ = {};
    std::vector<std::uint8_t> pixels_; /* of the band */
    std::size_t steps_ = 0;
};

} // namespace atlas

#endif
