/* SPDX-License-Identifier: MIT */
/* Which arcs are borders, and which are coasts. */
#ifndef ATLAS_BORDERS_H
#define ATLAS_BORDERS_H

#include "topology.h"

namespace atlas {

/* Sets the use of every arc: a border where several countries run along it, a coast where just one does. */
void find_borders(Topology &topology);

} // namespace atlas

#endif
