/* SPDX-License-Identifier: MIT */
/* A topology as a world map, countries filled and outlined. Nothing here computes with fractions, so that the same
   topology gives the same pixels everywhere. */
#ifndef ATLAS_DRAW_H
#define ATLAS_DRAW_H

#include <cstdint>
#include <vector>

#include "fill.h"
#include "labels.h"
#include "messages.h"
#include "outlines.h"

namespace atlas {

/* All that the map shows, prepared for one width: tiles can be drawn in any order. It does not need the topology any
   more. */
class Drawing {
public:
    Drawing(const Topology &topology, int width, const Progress &progress);

    /* The map is half as high as it is wide. */
    Size size() const { return size_; }

    /* Draws all that lies in the tile: the sea, the graticule in it, the countries, their borders, the coasts, the
       names. Its rows are drawn as wide as the map, once for all tiles there; best from the top down. */
    void draw(Tile tile);

private:
    void draw_band(int top, int bottom);

    Size size_;
    Fill fill_;
    Outlines outlines_;
    Labels labels_;
    Rectangle band_ = {0, 0, 0, 0};
    std::vector<std::uint8_t> pixels_; /* of the band */
};

} // namespace atlas

#endif
