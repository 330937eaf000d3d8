/* The outlines of the countries as straight lines on the flat map, prepared so that any part of it can be drawn. */
#ifndef ATLAS_OUTLINES_H
#define ATLAS_OUTLINES_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "canvas.h"
#include "topology.h"

namespace atlas {

class Outlines {
public:
    /* Takes every arc once, whoever uses it: first those that countries share. */
    Outlines(const Topology &topology, Size map);

    /* Draws what lies in the canvas' tile: coasts on top of the borders that end there. */
    void draw(Canvas &canvas) const;

private:
    struct Line {
        Pixel from, to;
    };

    /* Some lines of one arc, and a rectangle that they lie in: a tile that it does not meet passes them over. */
    struct Run {
        std::uint8_t ink;
        Rectangle bounds;
        std::size_t first, end; /* its lines: from the first up to, not including, the end */
    };

    void add_arcs(GL_iterator arcs, std::uint8_t ink, Size map);
    void add_segment(Point from, Point to, Size map);
    void add_line(Line line);

    std::vector<Line> lines_;
    std::vector<Run> runs_;
};

} // namespace atlas

#endif
