/* SPDX-License-Identifier: MIT */
/* Areas on the globe, in whole numbers all the way. */
#ifndef ATLAS_AREA_H
#define ATLAS_AREA_H

#include <cstdint>

#include "topology.h"

namespace atlas {

/* Returns the sine of a latitude, times 2^30. */
std::int64_t sine(Angle latitude);

/* Returns how many square kilometres a polygon covers: its largest ring without the others, which are holes. The globe is
   taken for a sphere, and a side for a straight line in the equirectangular view. */
std::int64_t area(const Polygon &polygon);

} // namespace atlas

#endif
