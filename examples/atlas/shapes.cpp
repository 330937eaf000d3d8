#include "shapes.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "division.h"

namespace atlas {

namespace {

struct ReleasePoints {
    void operator()(EL_list *points) const { EL_release(&points); }
};

using Points = std::unique_ptr<EL_list, ReleasePoints>;

} // namespace

static Point &point_at(EL_node *position)
{
    return *static_cast<Point *>(EL_element(position));
}

/* ---- joining ---------------------------------------------------------------------------------------------- */

static Points points_along(const Stretch &stretch)
{
    Points points(EL_create(sizeof(Point)));
    for (const Point &point : stretch.arc->points)
        EL_append_after_last(points.get(), &point);
    if (stretch.reversed)
        EL_reverse(points.get());
    return points;
}

/* Each stretch ends where the next one, or the first, starts: that point is kept once. */
static Points joined(const Path &path)
{
    Points ring(EL_create(sizeof(Point)));
    GL_iterator stretches = GL_all_items(path.stretches.get());
    while (const Stretch *stretch = next_record<Stretch>(stretches)) {
        EL_list *points = points_along(*stretch).release();
        EL_remove_item(points, points->last);
        EL_append_list(ring.get(), &points);
    }
    EL_set_closed(ring.get());
    return ring;
}

/* ---- cutting ---------------------------------------------------------------------------------------------- */

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

/* Adds a point wherever the ring crosses the edge, and returns their positions in the ring's order. The ring is rolled
   once round, so that every side in turn starts at its first. */
static std::vector<EL_node *> add_seams(EL_list *ring)
{
    std::vector<EL_node *> seams;
    for (int32_t left = EL_count_items(ring); left > 0; --left) {
        EL_node *from = ring->first, *to = from->next;
        if (crosses_edge(point_at(from), point_at(to))) {
            const Point seam = crossing(point_at(from), point_at(to));
            seams.push_back(EL_insert_after(ring, from, &seam));
        }
        EL_roll(ring, to);
    }
    return seams;
}

/* A cut leaves the seam at both of its sides: at the end of a piece, the seam lies on the other side of the map. */
static void end_at_other_side(EL_list *piece)
{
    point_at(piece->last).longitude *= -1;
}

static Angle nearer_pole(const EL_list *ring)
{
    std::int64_t sum = 0;
    EL_iterator points = EL_all_items(ring);
    for (EL_node *position; EL_next_position(&points, &position);)
        sum += point_at(position).latitude;
    return sum < 0 ? -90 * degree : 90 * degree;
}

static void append_shape(SL_list *shapes, Points points)
{
    auto shape = std::make_unique<Shape>();
    shape->points = points.release();
    SL_append_after_last(shapes, shape.release());
}

/* What goes from side to side is closed by way of the pole. */
static void close_piece(SL_list *shapes, Points piece, Angle pole)
{
    const Point start = point_at(piece->first), end = point_at(piece->last);
    if (start.longitude != end.longitude) {
        for (const Point corner : {Point{end.longitude, pole}, Point{start.longitude, pole}})
            EL_append_after_last(piece.get(), &corner);
    }
    EL_set_closed(piece.get());
    append_shape(shapes, std::move(piece));
}

/* A split is linear in the list, so the list is halved, not peeled. */
static void cut_at(SL_list *shapes, Points piece, std::span<EL_node *const> seams, Angle pole)
{
    if (seams.empty())
        return close_piece(shapes, std::move(piece), pole);
    const std::size_t middle = seams.size() / 2;
    Points rest(EL_remove_and_get_end_part(piece.get(), seams[middle]));
    end_at_other_side(piece.get());
    cut_at(shapes, std::move(piece), seams.first(middle), pole);
    cut_at(shapes, std::move(rest), seams.subspan(middle + 1), pole);
}

static void append_ring(SL_list *shapes, const Path &path)
{
    Points ring = joined(path);
    const Angle pole = nearer_pole(ring.get());
    const std::vector<EL_node *> seams = add_seams(ring.get());
    if (seams.empty())
        return append_shape(shapes, std::move(ring));
    EL_make_open_at_position(ring.get(), seams.front());
    end_at_other_side(ring.get());
    cut_at(shapes, std::move(ring), std::span(seams).subspan(1), pole);
}

/* ---- shapes ----------------------------------------------------------------------------------------------- */

static void free_shape(void **item)
{
    Shape *shape = static_cast<Shape *>(*item);
    EL_release(&shape->points);
    delete shape;
}

Shapes::Shapes(const Country &country)
{
    for_each_ring(country, [&](const Path &ring) { append_ring(list_, ring); });
}

Shapes::~Shapes()
{
    SL_total_release(&list_, free_shape);
}

} // namespace atlas
