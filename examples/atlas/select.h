/* SPDX-License-Identifier: MIT */
/* Which countries of a topology to draw. */
#ifndef ATLAS_SELECT_H
#define ATLAS_SELECT_H

#include <string>
#include <vector>

#include "topology.h"

namespace atlas {

/* Removes all countries but those of these names; where several have the same name, they all stay. Throws Error where
   no country has one of the names. */
void select_countries(Topology &topology, const std::vector<std::string> &names);

} // namespace atlas

#endif
