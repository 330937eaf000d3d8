/* SPDX-License-Identifier: MIT */
/* The globe in whole numbers, and its flat views. A map twice as wide as high has longitude to the right and latitude upwards,
   both to the same scale. One as high as wide is in the Web Mercator projection, and ends at 85.0511°, north and south. */
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

/* Whether the shorter way between two points does not cross the edge of the map. */
constexpr bool goes_straight(Point from, Point to)
{
    return std::max(from.longitude, to.longitude) - std::int64_t{std::min(from.longitude, to.longitude)} <= globe / 2;
}

using Points = mova::block_array<Point>;

/* The map's columns count from its left edge, its rows from the upper one. */
struct Pixel {
    int x, y;
};

struct Size {
    int width, height;
};

/* The columns from `from` up to, not including, `end`. */
struct Columns {
    int from, end;

    int width() const { return end - from; }
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

/* A side of a shape, in any units, that runs downwards. */
struct Side {
    Pixel from, to;

    /* Where it crosses a level, rounded to the right. Requires that it is not level itself. */
    int crossing(int level) const
    {
        return from.x + static_cast<int>(ceil_divided((std::int64_t{to.x} - from.x) * (level - from.y), to.y - from.y));
    }
};

/* Returns columns that hold a side between two levels, and a few more, for this is rounded; `lines` of its units are a column. */
template <int lines>
Columns columns_between(const Side &side, int top, int bottom)
{
    const int height = std::max(side.to.y - side.from.y, 1);
    const float start = static_cast<float>(side.from.x) / lines;
    const float slope = static_cast<float>(side.to.x - side.from.x) / lines / static_cast<float>(height);
    const float a = start + slope * static_cast<float>(std::clamp(top - side.from.y, 0, height));
    const float b = start + slope * static_cast<float>(std::clamp(bottom - side.from.y, 0, height));
    const auto [left, right] = std::minmax(side.from.x, side.to.x);
    return {std::max(static_cast<int>(std::min(a, b)) - 2, left / lines),
            std::min(static_cast<int>(std::max(a, b)) + 3, right / lines + 1)};
}

/* Returns the latitude that Web Mercator takes another one to, on a map that is stretched over all of them: 90° where the
   projection is cut, and beyond that 180° at most. */
Angle mercator(Angle latitude);

constexpr bool is_mercator(Size map)
{
    return map.width == map.height;
}

/* Returns how far a latitude lies below the upper edge of the map, whose height is globe / 2. */
inline std::int64_t below_edge(Angle latitude, Size map)
{
    return globe / 4 - (is_mercator(map) ? mercator(latitude) : latitude);
}

/* Returns where a point lies on the map, or above or below it, rounded to the left and upwards to a grid of so many lines a
   pixel. */
inline Pixel on_grid(Point point, Size map, int lines)
{
    return {static_cast<int>((point.longitude + globe / 2) * map.width * lines / globe),
            static_cast<int>(floor_divided(below_edge(point.latitude, map) * map.height * 2 * lines, globe))};
}

/* Returns the pixel that shows a point. The last column and row take in the map's right and lower edge. */
inline Pixel project(Point point, Size map)
{
    const Pixel pixel = on_grid(point, map, 1);
    return {pixel.x - (pixel.x == map.width), pixel.y - (pixel.y == map.height)};
}

} // namespace atlas

#endif
