/* SPDX-License-Identifier: MIT */
/* The map's colours: indices of the process's colour table, which a pixel is one of. What lies side by side on the map shares
   arcs: so some arcs are borders, and countries get colours that differ. */
#ifndef ATLAS_COLOURS_H
#define ATLAS_COLOURS_H

#include <array>

#include <mova/cxx/colour_table.h>
#include <mova/cxx/pointer_lookup.h>

#include "topology.h"

namespace atlas {

/* Sets the use of every arc: a border where several countries run along it, a coast where just one does. */
void find_borders(Topology &topology);

constexpr int tint_count = 6;

/* A number from 0 to `tint_count` - 1 for each country. */
using Tints = mova::pointer_lookup<const Country *, int>;

/* Returns tints of which two countries that share an arc get different ones, as long as their neighbours leave any. */
Tints choose_tints(const Topology &topology);

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
