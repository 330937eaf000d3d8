/* SPDX-License-Identifier: MIT */
/* The map as a pyramid of tiles, as programs that show maps take it, in Web Mercator.

       zoom 0  +-------+    zoom 1  +---+---+    A level has four tiles for each of the level before it, numbered by columns
               |  0 0  |            |0 0|1 0|    and rows from the upper left.
               |       |            +---+---+
               |       |            |0 1|1 1|    It is one drawing, cut into tiles: so whatever crosses an edge between two of
               +-------+            +---+---+    them goes on there. */
#ifndef ATLAS_PYRAMID_H
#define ATLAS_PYRAMID_H

#include "draw.h"
#include "picture.h"

namespace atlas {

constexpr int tile_side = 256; /* pixels */

struct Place {
    int zoom, column, row;
};

constexpr std::size_t tiles_up_to(int zoom)
{
    return ((std::size_t{4} << 2 * zoom) - 1) / 3;
}

/* Called with each tile: where it lies, and its pixels, which are gone afterwards. */
using TakeTile = std::function<void(const Place &, const std::uint8_t *pixels)>;

/* Draws the levels from 0 to `zoom`, each row after row of tiles, through caches of that budget. Returns what these had to do,
   all together. Throws Error where a temporary file fails, and what `take` throws. */
Picture::Statistics draw_pyramid(const Topology &topology, int zoom, std::size_t cache_budget, const TakeTile &take,
                                 const Progress &progress);

} // namespace atlas

#endif
