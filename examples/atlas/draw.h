/* Draws a topology's outlines as a world map in the equirectangular view: longitude to the right, latitude upwards,
   both to the same scale. Nothing here computes with fractions, so that the same topology gives the same pixels
   everywhere. */
#ifndef ATLAS_DRAW_H
#define ATLAS_DRAW_H

#include <array>
#include <cstdint>

#include "picture.h"
#include "topology.h"

namespace atlas {

/* The widest map takes 512 MiB. */
constexpr int narrowest_map = 16;
constexpr int widest_map = 32768;

enum Ink : std::uint8_t { ink_sea, ink_graticule, ink_frame, ink_border, ink_coast, ink_count };

struct Colour {
    std::uint8_t red, green, blue;
};

/* The colour of each ink. */
extern const std::array<Colour, ink_count> palette;

/* Returns the pixel that shows a point. The last column and row take in the map's right and lower edge. */
Pixel project(Point point, int width, int height);

/* Returns a map half as high as it is wide. */
Picture draw_map(const Topology &topology, int width, const Progress &progress);

} // namespace atlas

#endif
