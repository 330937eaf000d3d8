/* SPDX-License-Identifier: MIT */
/* The equirectangular view: longitude to the right, latitude upwards, both to the same scale. */
#ifndef ATLAS_PROJECTION_H
#define ATLAS_PROJECTION_H

#include "tile.h"
#include "topology.h"

namespace atlas {

/* Returns the pixel that shows a point. The last column and row take in the map's right and lower edge. */
Pixel project(Point point, int width, int height);

} // namespace atlas

#endif
