/* SPDX-License-Identifier: MIT */
/* The map's colours: indices of the process's colour table, which a pixel is one of. */
#ifndef ATLAS_COLOURS_H
#define ATLAS_COLOURS_H

#include <array>
#include <cstdint>
#include <vector>

#include <mova/cxx/colour_table.h>

#include "neighbours.h"

namespace atlas {

/* What is the same on every map has standard colours of the table; the countries' tints have indices of their own. */
struct Inks {
    std::uint8_t sea, graticule, frame, border, coast, text;
    std::array<std::uint8_t, tint_count> land;
};

/* Returns the map's inks. The first call makes the colour table, which is the process's only one. */
const Inks &inks();

/* Returns what the table shows for each index, as far as the last of the inks. */
std::vector<mova::colour> palette();

} // namespace atlas

#endif
