/* SPDX-License-Identifier: MIT */
/* Where in a polygon a box fits. */
#ifndef ATLAS_INTERIOR_H
#define ATLAS_INTERIOR_H

#include <cstdint>
#include <optional>
#include <vector>

#include "topology.h"

namespace atlas {

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
    /* The columns from `from` up to, not including, `end`. */
    struct Span {
        int from, end;

        int width() const { return end - from; }
    };
    using Row = std::vector<Span>;

    void add_crossings(Point from, Point to, Grid grid, std::vector<std::vector<Angle>> &crossings) const;
    static Row spans(std::vector<Angle> &crossings, Grid grid);
    static Row common(const Row &a, const Row &b, int width);
    std::optional<Box> widest(int width, int height) const;

    int top_ = 0; /* the first row */
    std::vector<Row> rows_;
};

} // namespace atlas

#endif
