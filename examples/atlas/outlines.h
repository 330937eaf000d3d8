/* SPDX-License-Identifier: MIT */
/* The outlines of the countries as straight lines on the flat map, prepared so that any part of it can be drawn. */
#ifndef ATLAS_OUTLINES_H
#define ATLAS_OUTLINES_H

#include <algorithm>
#include <cstdint>

#include "canvas.h"
#include "sweep.h"
#include "topology.h"

namespace atlas {

class Outlines {
public:
    /* Takes every arc once, whoever uses it. */
    Outlines(const Topology &topology, Size map);

    /* Draws what lies in the canvas' tile: coasts on top of the borders that end there. */
    void draw(Canvas &canvas);

private:
    struct Line {
        Pixel from, to;
        bool is_border;

        int first_row() const { return std::min(from.y, to.y); }
        int end_row() const { return std::max(from.y, to.y) + 1; }
        std::uint32_t layer() const { return is_border; }
    };

    void add_segment(Point from, Point to, Size map, bool is_border);

    Sweep<Line> lines_;
};

} // namespace atlas

#endif
