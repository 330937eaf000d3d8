/* SPDX-License-Identifier: MIT */
/* The globe in whole numbers, and its flat view: longitude to the right, latitude upwards, both to the same scale. */
#ifndef ATLAS_GLOBE_H
#define ATLAS_GLOBE_H

#include <algorithm>
#include <cstdint>

#include <mova/cxx/block_array.h>

namespace atlas {

/* An angle: a whole number of units, 2^22 of which make a degree. A unit is less than 3 cm on the ground. */
using Angle = std::int32_t;
constexpr int angle_bits = 22;
constexpr Angle degree = Angle{1} << angle_bits;
constexpr std::int64_t globe = std::int64_t{360} * degree; /* once around */

/* Longitude -180° to 180°, latitude -90° to 90°. */
struct Point {
    Angle longitude, latitude;
    bool operator==(const Point &) const = default;
};

using Points = mova::block_array<Point>;

/* The map's columns count from its left edge, its rows from the upper one. */
struct Pixel {
    int x, y;
};

struct Size {
    int width, height;
};

/* Both round alike on both sides of zero, downwards and upwards. Require a positive divisor. */
constexpr std::int64_t floor_divided(std::int64_t dividend, std::int64_t divisor)
{
    return dividend / divisor - (dividend % divisor < 0);
}
constexpr std::int64_t ceil_divided(std::int64_t dividend, std::int64_t divisor)
{
    return dividend / divisor + (dividend % divisor > 0);
}

/* Returns where a point lies on the map, rounded to the left and upwards to a grid of so many lines a pixel. */
inline Pixel on_grid(Point point, Size map, int lines)
{
    return {static_cast<int>((point.longitude + globe / 2) * map.width * lines / globe),
            static_cast<int>((globe / 4 - point.latitude) * map.height * 2 * lines / globe)};
}

/* Returns the pixel that shows a point. The last column and row take in the map's right and lower edge. */
inline Pixel project(Point point, Size map)
{
    const Pixel pixel = on_grid(point, map, 1);
    return {std::min(pixel.x, map.width - 1), std::min(pixel.y, map.height - 1)};
}

} // namespace atlas

#endif
