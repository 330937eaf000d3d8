/* SPDX-License-Identifier: MIT */
/* Points on the globe, in block arrays. */
#ifndef ATLAS_POINTS_H
#define ATLAS_POINTS_H

#include <cstdint>

#include <mova/cxx/block_array.h>

namespace atlas {

/* An angle: a whole number of units, 2^22 of which make a degree. A unit is less than 3 cm on the ground. */
using Angle = std::int32_t;
constexpr int angle_bits = 22;
constexpr Angle degree = Angle{1} << angle_bits;

/* Longitude -180° to 180°, latitude -90° to 90°. */
struct Point {
    Angle longitude, latitude;
    bool operator==(const Point &) const = default;
};

using Points = mova::block_array<Point>;

} // namespace atlas

#endif
