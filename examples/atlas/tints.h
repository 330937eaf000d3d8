/* Which colour each country gets. */
#ifndef ATLAS_TINTS_H
#define ATLAS_TINTS_H

#include <cstdint>
#include <vector>

#include "topology.h"

namespace atlas {

constexpr int tint_count = 6;

/* Returns a number from 0 to `tint_count` - 1 for each country, in the topology's order. Two that share an arc get
   different ones, as long as their neighbours leave any. */
std::vector<std::uint8_t> choose_tints(const Topology &topology);

} // namespace atlas

#endif
