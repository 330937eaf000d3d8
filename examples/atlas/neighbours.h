/* SPDX-License-Identifier: MIT */
/* Which countries lie side by side: they share arcs. So some arcs are borders, and countries get colours that differ. */
#ifndef ATLAS_NEIGHBOURS_H
#define ATLAS_NEIGHBOURS_H

#include <mova/cxx/pointer_lookup.h>

#include "topology.h"

namespace atlas {

/* Sets the use of every arc: a border where several countries run along it, a coast where just one does. */
void find_borders(Topology &topology);

constexpr int tint_count = 6;

/* A number from 0 to `tint_count` - 1 for each country. */
using Tints = mova::pointer_lookup<const Country *, int>;

/* Returns tints of which two countries that share an arc of their rings get different ones, as long as their neighbours leave
   any. */
Tints choose_tints(const Topology &topology);

} // namespace atlas

#endif
