/* SPDX-License-Identifier: MIT */
#include "shapes.h"

#include <algorithm>
#include <cstdlib>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "division.h"

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

static bool crosses_edge(Point from, Point to)
{
    return std::abs(std::int64_t{to.longitude} - from.longitude) > 180 * degree;
}

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
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const Point from = ring[i], to = ring[i + 1 < ring.size() ? i + 1 : 0];
        all.append(from);
        if (crosses_edge(from, to)) {
            seams.push_back(all.size());
            all.append(crossing(from, to));
        }
    }
    all.close();
    return all;
}

/* A cut leaves the seam at both of its sides: at the end of a piece, the seam lies on the other side of the map. */
static void end_at_other_side(Points &piece)
{
    piece.back().longitude *= -1;
}

static Angle nearer_pole(const Points &ring)
{
    std::int64_t sum = 0;
    for (const Point &point : ring)
        sum += point.latitude;
    return sum < 0 ? -90 * degree : 90 * degree;
}

static void append_shape(SL_list *shapes, Points points)
{
    auto shape = std::make_unique<Shape>();
    shape->points = std::move(points);
    SL_append_after_last(shapes, shape.release());
}

/* What goes from side to side is closed by way of the pole. The room that a cut has left is given up. */
static void close_piece(SL_list *shapes, Points piece, Angle pole)
{
    const Point start = piece.front(), end = piece.back();
    piece.set_capacity(piece.size() + 2);
    if (start.longitude != end.longitude) {
        for (const Point corner : {Point{end.longitude, pole}, Point{start.longitude, pole}})
            piece.append(corner);
    }
    piece.close();
    append_shape(shapes, std::move(piece));
}

/* Cuts the piece at the seams, which lie at those positions less `start`. A split is linear in what it takes off, so
   the piece is halved, not peeled. */
static void cut_at(SL_list *shapes, Points piece, std::span<const std::size_t> seams, std::size_t start, Angle pole)
{
    if (seams.empty())
        return close_piece(shapes, std::move(piece), pole);
    const std::size_t middle = seams.size() / 2;
    Points rest = piece.split(seams[middle] - start);
    end_at_other_side(piece);
    cut_at(shapes, std::move(piece), seams.first(middle), start, pole);
    cut_at(shapes, std::move(rest), seams.subspan(middle + 1), seams[middle], pole);
}

static void append_ring(SL_list *shapes, const Ring &path)
{
    Points whole = joined(path);
    std::vector<std::size_t> seams;
    Points ring = with_seams(whole, seams);
    if (seams.empty())
        return append_shape(shapes, std::move(whole));
    const Angle pole = nearer_pole(whole);
    ring.open_at(seams.front());
    end_at_other_side(ring);
    cut_at(shapes, std::move(ring), std::span(seams).subspan(1), seams.front(), pole);
}

/* ---- shapes ---- */

static void free_shape(void **item)
{
    delete static_cast<Shape *>(*item);
}

Shapes::Shapes(const Country &country)
{
    for_each_ring(country, [&](const Ring &ring) { append_ring(list_, ring); });
}

Shapes::Shapes(const Polygon &polygon)
{
    for (const Ring *ring : polygon)
        append_ring(list_, *ring);
}

Shapes::Shapes(const Ring &ring)
{
    append_ring(list_, ring);
}

Shapes::~Shapes()
{
    SL_total_release(&list_, free_shape);
}

} // namespace atlas
