/* SPDX-License-Identifier: MIT */
#include "outlines.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "colours.h"
#include "projection.h"

namespace atlas {

/* Files cut polygons where the map ends, at 180° and at the poles. Such a cut is no coast. */
static bool is_cut(Point from, Point to)
{
    const Angle slack = degree / 64;
    const auto beyond = [=](Angle a, Angle b, Angle edge) {
        return std::min(a, b) >= edge - slack || std::max(a, b) <= -edge + slack;
    };
    return beyond(from.longitude, to.longitude, 180 * degree) || beyond(from.latitude, to.latitude, 90 * degree);
}

/* Goes the shorter way round the globe. What then leaves the map on one side comes in again on the other. */
void Outlines::add_segment(Point from, Point to, Size map, bool is_border)
{
    if (is_cut(from, to))
        return;
    const Pixel start = project(from, map.width, map.height), end = project(to, map.width, map.height);
    const std::int64_t across = std::int64_t{to.longitude} - from.longitude;
    if (std::abs(across) <= 180 * degree)
        return lines_.add({start, end, is_border});
    const int turn = across > 0 ? map.width : -map.width;
    lines_.add({start, {end.x - turn, end.y}, is_border});
    lines_.add({{start.x + turn, start.y}, end, is_border});
}

Outlines::Outlines(const Topology &topology, Size map)
{
    for (const Arc *arc : topology.arcs) {
        for (std::size_t i = 1; arc->use != ArcUse::none && i < arc->points.size(); ++i)
            add_segment(arc->points[i - 1], arc->points[i], map, arc->use == ArcUse::border);
    }
    lines_.sort();
}

/* Returns columns that hold all of the line that lies on the tile's rows: some more, for the division is rounded. */
static std::pair<int, int> columns(Pixel from, Pixel to, const Rectangle &tile)
{
    if (from.y > to.y)
        std::swap(from, to);
    const double slope = (to.x - from.x) / std::max(1.0, static_cast<double>(to.y - from.y));
    const auto column = [&](int row) { return from.x + static_cast<int>(slope * (row - from.y)); };
    const bool is_level = from.y == to.y;
    const int enter = column(std::max(tile.top - 1, from.y));
    const int leave = is_level ? to.x : column(std::min(tile.bottom, to.y));
    return {std::min(enter, leave) - 2, std::max(enter, leave) + 3};
}

void Outlines::draw(Canvas &canvas)
{
    lines_.visit_layers(canvas.bounds().top, canvas.bounds().bottom, [&](const auto &layer) {
        const PenInHand pen(canvas, layer.number() ? inks().border : inks().coast);
        layer.for_each([&](const Line &line) {
            const auto [from, end] = columns(line.from, line.to, canvas.bounds());
            if (!canvas.is_full(from, end))
                canvas.line(line.from, line.to);
        });
        return !canvas.is_full();
    });
}

} // namespace atlas
