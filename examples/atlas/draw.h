/* Draws a topology as a world map, countries filled and outlined, in the equirectangular view: longitude to the right,
   latitude upwards, both to the same scale. Nothing here computes with fractions, so that the same topology gives the
   same pixels everywhere. */
#ifndef ATLAS_DRAW_H
#define ATLAS_DRAW_H

#include "picture.h"
#include "topology.h"

namespace atlas {

/* The widest map takes 512 MiB. */
constexpr int narrowest_map = 16;
constexpr int widest_map = 32768;

/* Returns the pixel that shows a point. The last column and row take in the map's right and lower edge. */
Pixel project(Point point, int width, int height);

/* Returns a map half as high as it is wide: the sea, the graticule in it, and the countries. */
Picture draw_countries(const Topology &topology, int width, const Progress &progress);

/* Draws the borders and the coasts on top. */
void draw_outlines(Picture &picture, const Topology &topology, const Progress &progress);

/* Returns the whole map, which is these two. */
Picture draw_map(const Topology &topology, int width, const Progress &progress);

} // namespace atlas

#endif
