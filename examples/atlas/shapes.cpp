/* SPDX-License-Identifier: MIT */
#include "shapes.h"

#include <span>

namespace atlas {

/* ---- joining ---- */

/* Each stretch ends where the next one, or the first, starts: that point is kept once. */
static Points joined(const Ring &ring)
{
    std::size_t count = 0;
    for (const Stretch &stretch : ring)
        count += stretch.arc->points.size();
    Points all(count);
    for (const Stretch &stretch : ring) {
        Points points = stretch.arc->points.copy();
        if (stretch.reversed)
            points.reverse();
        points.remove_last();
        all.append(std::move(points));
    }
    all.close();
    return all;
}

/* ---- cutting ---- */

/* Returns where the shorter way crosses the edge, as a point of the side that `to` is on. The latitude is rounded
   downwards, and so the same in both directions. */
static Point crossing(Point from, Point to)
{
    const std::int64_t before = 180 * degree - std::abs(from.longitude);
    const std::int64_t after = 180 * degree - std::abs(to.longitude);
    const Angle side = to.longitude < 0 ? -180 * degree : 180 * degree;
    if (before + after == 0)
        return {side, std::min(from.latitude, to.latitude)};
    const std::int64_t weighted = from.latitude * after + to.latitude * before;
    return {side, static_cast<Angle>(floor_divided(weighted, before + after))};
}

/* Returns the ring with a point added wherever it crosses the edge. The positions of those are stored in `seams`. */
static Points with_seams(const Points &ring, std::vector<std::size_t> &seams)
{
    Points all(2 * ring.size());
    for_each_side(ring, [&](Point from, Point to) {
        all.append(from);
        if (!goes_straight(from, to)) {
            seams.push_back(all.size());
            all.append(crossing(from, to));
        }
    });
    all.close();
    return all;
}

static Angle nearer_pole(const Points &ring)
{
    std::int64_t sum = 0;
    for (const Point &point : ring)
        sum += point.latitude;
    return sum < 0 ? -90 * degree : 90 * degree;
}

/* What goes from side to side is closed by way of the pole. The room that a cut has left is given up. */
static void close_piece(Shapes &shapes, Points piece, Angle pole)
{
    const Point start = piece.front(), end = piece.back();
    piece.set_capacity(piece.size() + 2);
    if (start.longitude != end.longitude) {
        piece.append({end.longitude, pole});
        piece.append({start.longitude, pole});
    }
    piece.close();
    shapes.append(std::make_unique<Points>(std::move(piece)));
}

/* Cuts the piece at the seams, which lie at those positions less `start`. A cut leaves the seam at both of its sides: at the end
   of a piece it lies on the other side of the map. A split is linear in what it takes off, so the piece is halved, not peeled. */
static void cut_at(Shapes &shapes, Points piece, std::span<const std::size_t> seams, std::size_t start, Angle pole)
{
    if (seams.empty())
        return close_piece(shapes, std::move(piece), pole);
    const std::size_t middle = seams.size() / 2;
    Points rest = piece.split(seams[middle] - start);
    piece.back().longitude *= -1;
    cut_at(shapes, std::move(piece), seams.first(middle), start, pole);
    cut_at(shapes, std::move(rest), seams.subspan(middle + 1), seams[middle], pole);
}

static void append_ring(Shapes &shapes, const Ring &path)
{
    Points whole = joined(path);
    std::vector<std::size_t> seams;
    Points ring = with_seams(whole, seams);
    if (seams.empty())
        return static_cast<void>(shapes.append(std::make_unique<Points>(std::move(whole))));
    const Angle pole = nearer_pole(whole);
    ring.open_at(seams.front());
    ring.back().longitude *= -1;
    cut_at(shapes, std::move(ring), std::span(seams).subspan(1), seams.front(), pole);
}

Shapes shapes_of(const Country &country)
{
    Shapes shapes;
    for_each_ring(country, [&](const Ring &ring) { append_ring(shapes, ring); });
    return shapes;
}

Shapes shapes_of(const Polygon &polygon)
{
    Shapes shapes;
    for (const Ring *ring : polygon)
        append_ring(shapes, *ring);
    return shapes;
}

/* ---- areas ---- */

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

/* A ring that goes round many times covers no more than the globe. */
static std::int64_t area(const Ring &ring)
{
    std::int64_t sum = 0;
    Shapes shapes;
    append_ring(shapes, ring);
    for_each_side(shapes, [&](Point from, Point to) {
        const std::int64_t across = std::int64_t{from.longitude} - to.longitude;
        const std::int64_t below = across * (sine(from.latitude) + sine(to.latitude));
        sum += (below + (std::int64_t{1} << (dropped_bits - 1))) >> dropped_bits;
    });
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
