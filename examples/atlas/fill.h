/* Fills countries, scanline by scanline.

   A pixel is filled when its centre lies inside; a centre on the outline lies inside where the country is to the right
   of it, or below it where it is level. So neighbours share no pixel, and leave none out between them. Corners are
   rounded to a grid of 1024 lines a pixel, to the left and upwards; from there on everything is exact. */
#ifndef ATLAS_FILL_H
#define ATLAS_FILL_H

#include <functional>
#include <vector>

#include <mova/lists/double_list.h>
#include <mova/lists/simple_list.h>

#include "canvas.h"
#include "topology.h"

namespace atlas {

class Filler {
public:
    explicit Filler(Canvas &canvas) : canvas_(canvas) {}
    ~Filler();
    Filler(const Filler &) = delete;
    Filler &operator=(const Filler &) = delete;

    /* Fills what the country's polygons cover. Calls `after_row` after each row. */
    void fill(const Country &country, const std::function<void()> &after_row);

private:
    /* A side of a shape that lies on the scanlines from `first_row` up to, not including, `end_row`. From its upper end
       it runs `down` lines of the grid downwards and `across` to the right. */
    struct Edge {
        Edge *prev, *next; /* the simple list's */
        std::int64_t x, y, across, down;
        int first_row, end_row;

        double column(int row) const;
    };

    void collect_edges(const Country &country);
    void add_edge(Point from, Point to);
    void cross(int row);
    void fill_row(int row);

    Canvas &canvas_;
    std::vector<Edge> edges_;
    SL_list *active_ = SL_create(); /* the edges that lie on the scanline */
    DBLL_list *crossings_ = DBLL_create();
};

} // namespace atlas

#endif
