/* Fills countries, scanline by scanline.

   A pixel is filled when its centre lies inside; a centre on the outline lies inside where the country is to the right
   of it, or below it where it is level. So neighbours share no pixel, and leave none out between them. Corners are
   rounded to a grid of 1024 lines a pixel, to the left and upwards; from there on everything is exact. */
#ifndef ATLAS_FILL_H
#define ATLAS_FILL_H

#include <vector>

#include <mova/lists/double_list.h>
#include <mova/lists/simple_list.h>

#include "canvas.h"
#include "topology.h"

namespace atlas {

/* What a country covers on a map of one size, prepared so that any part of it can be filled. */
class Region {
public:
    Region(const Country &country, Size map);

    /* Nothing is filled outside it. */
    const Rectangle &bounds() const { return bounds_; }

private:
    friend class Filler;

    /* A side of a shape that lies on the scanlines from `first_row` up to, not including, `end_row`. From its upper end
       it runs `down` lines of the grid downwards and `across` to the right. */
    struct Edge {
        Edge *prev, *next; /* the simple list's, while its region is filled */
        std::int32_t x, y, across, down;
        int first_row, end_row;

        bool is_left_of(const Rectangle &tile) const;
        bool is_right_of(const Rectangle &tile) const;
        double column(int row, const Rectangle &tile) const;
    };

    void add_edge(Point from, Point to, Size map);

    std::vector<Edge> edges_; /* by their first rows */
    int tallest_ = 0;         /* the most rows that an edge lies on */
    Rectangle bounds_ = {0, 0, 0, 0};
};

class Filler {
public:
    Filler() = default;
    ~Filler();
    Filler(const Filler &) = delete;
    Filler &operator=(const Filler &) = delete;

    /* Fills what lies in the canvas' tile. */
    void fill(Canvas &canvas, Region &region);

private:
    void cross(int row, const Rectangle &tile);
    void fill_row(Canvas &canvas, int row);

    SL_list *active_ = SL_create(); /* the edges that lie on the scanline */
    DBLL_list *crossings_ = DBLL_create();
};

} // namespace atlas

#endif
