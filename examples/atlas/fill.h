/* SPDX-License-Identifier: MIT */
/* Fills countries, scanline by scanline.

   A pixel is filled when its centre lies inside; a centre on the outline lies inside where the country is to the right
   of it, or below it where it is level. So neighbours share no pixel, and leave none out between them. Corners are
   rounded to a grid of 1024 lines a pixel, to the left and upwards; from there on everything is exact. */
#ifndef ATLAS_FILL_H
#define ATLAS_FILL_H

#include <vector>

#include "canvas.h"
#include "sweep.h"
#include "topology.h"

namespace atlas {

/* Where scanlines are crossed, in order: a bit for each column, and for each word of those a bit that says whether to look
   there. Two crossings in one place cancel out. */
class Crossings {
public:
    void resize(const Rectangle &bounds);
    void toggle(int row, int column);
    /* The same on several rows, with any column of the same word of columns in place of this one. They wait for `settle`.
       Requires a tile of 64 rows or fewer. */
    void toggle_word(int first, int end, int column);
    void settle();
    /* Calls `visit` with the columns between each crossing and the next, up to the right side, and forgets the row's. */
    template <class Visit>
    void take_spans(int row, Visit visit);

private:
    using Word = std::uint64_t;

    template <class Visit>
    void take_crossings(int row, Visit visit);

    Rectangle bounds_ = {0, 0, 0, 0};
    std::size_t words_ = 0, marks_ = 0; /* for a row */
    std::vector<Word> columns_, marked_;
    std::vector<Word> waiting_; /* for each word of columns a bit for each row */
    std::vector<std::size_t> waiting_words_;
};

/* What countries cover on a map of one size, prepared so that any part of it can be filled. */
class Fill {
public:
    explicit Fill(Size map) : map_(map) {}

    /* Countries that are added later lie on top. `sort` is to be called after the last one. */
    void add(const Country &country, std::uint8_t ink);
    void sort() { edges_.sort(); }

    /* Fills what lies in the canvas' tile. */
    void draw(Canvas &canvas);

private:
    /* A side of a shape that lies on the scanlines from `first` up to, not including, `end`. From its upper end
       it runs `down` lines of the grid downwards and `across` to the right. */
    struct Edge {
        std::int32_t x, y, across, down;
        int first, end;
        std::uint32_t from_top; /* the country's layer */

        int first_row() const { return first; }
        int end_row() const { return end; }
        std::uint32_t layer() const { return from_top; }
    };

    void add_edge(Point from, Point to);
    void cross(const Edge &edge, const Rectangle &tile);
    bool cross_hidden(const Edge &edge, const Canvas &canvas);

    Size map_;
    std::vector<std::uint8_t> inks_; /* of the countries */
    Sweep<Edge> edges_;
    Crossings crossings_;
};

} // namespace atlas

#endif
