/* SPDX-License-Identifier: MIT */
#include "area.h"

#include <algorithm>
#include <cstdlib>

#include "shapes.h"

namespace atlas {

constexpr int sine_bits = 30;

std::int64_t sine(Angle latitude)
{
    const std::int64_t one = std::int64_t{1} << sine_bits;
    const std::int64_t radian_per_degree = 1199381129; /* times 2^36 */
    const std::int64_t x = latitude * radian_per_degree >> (angle_bits + 36 - sine_bits);
    const std::int64_t square = x * x >> sine_bits;
    std::int64_t series = one;
    for (const int divisor : {12 * 13, 10 * 11, 8 * 9, 6 * 7, 4 * 5, 2 * 3})
        series = one - (square * series >> sine_bits) / divisor;
    return x * series >> sine_bits;
}

/* Areas are summed up in parts of a square kilometre: the square of the globe's radius, 6371.0088 km, times a degree in
   radians, is 708425 square kilometres, to be multiplied by the degrees that a side goes eastwards and the mean of the
   sines at its ends. */
constexpr std::int64_t square_kilometres = 708425;
constexpr int dropped_bits = 24; /* so that no sum overflows */
constexpr int area_bits = angle_bits + sine_bits + 1 - dropped_bits;
constexpr std::int64_t whole_globe = std::int64_t{2} * 360 << area_bits;

/* Positive where the shape runs westwards in the north. */
static std::int64_t signed_area(const Points &points)
{
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point from = points[i], to = points[i + 1 < points.size() ? i + 1 : 0];
        const std::int64_t across = std::int64_t{from.longitude} - to.longitude;
        const std::int64_t below = across * (sine(from.latitude) + sine(to.latitude));
        sum += (below + (std::int64_t{1} << (dropped_bits - 1))) >> dropped_bits;
    }
    return sum;
}

/* A ring that goes round many times covers no more than the globe. */
static std::int64_t area(const Ring &ring)
{
    std::int64_t sum = 0;
    const Shapes shapes(ring);
    SL_iterator pieces = SL_all_items(shapes.get());
    for (void *piece; SL_next_item(&pieces, &piece);)
        sum += signed_area(static_cast<const Shape *>(piece)->points);
    return std::min(std::abs(sum), whole_globe);
}

std::int64_t area(const Polygon &polygon)
{
    std::int64_t shore = 0, holes = 0;
    for (const Ring *ring : polygon) {
        const auto [smaller, larger] = std::minmax({shore, area(*ring)});
        shore = larger;
        holes = std::min(holes + smaller, whole_globe);
    }
    return std::max<std::int64_t>(shore - holes, 0) * square_kilometres >> area_bits;
}

} // namespace atlas
