#include "outlines.h"

#include <algorithm>
#include <cstdlib>

#include "colours.h"
#include "projection.h"

namespace atlas {

/* Enough that there are few runs, and few enough that a run is short. */
constexpr std::int32_t most_segments = 32;

/* Files cut polygons where the map ends, at 180° and at the poles. Such a cut is no coast. */
static bool is_cut(Point from, Point to)
{
    const Angle slack = degree / 64;
    const auto beyond = [=](Angle a, Angle b, Angle edge) {
        return std::min(a, b) >= edge - slack || std::max(a, b) <= -edge + slack;
    };
    return beyond(from.longitude, to.longitude, 180 * degree) || beyond(from.latitude, to.latitude, 90 * degree);
}

void Outlines::add_line(Line line)
{
    Run &run = runs_.back();
    const Rectangle bounds = rectangle_around(line.from, line.to);
    run.bounds = run.first == run.end ? bounds : rectangle_around(run.bounds, bounds);
    lines_.push_back(line);
    run.end = lines_.size();
}

/* Goes the shorter way round the globe. What then leaves the map on one side comes in again on the other. */
void Outlines::add_segment(Point from, Point to, Size map)
{
    if (is_cut(from, to))
        return;
    const Pixel start = project(from, map.width, map.height), end = project(to, map.width, map.height);
    const std::int64_t across = std::int64_t{to.longitude} - from.longitude;
    if (std::abs(across) <= 180 * degree)
        return add_line({start, end});
    const int turn = across > 0 ? map.width : -map.width;
    add_line({start, {end.x - turn, end.y}});
    add_line({{start.x + turn, start.y}, end});
}

void Outlines::add_arcs(GL_iterator arcs, std::uint8_t ink, Size map)
{
    while (const Arc *arc = next_record<Arc>(arcs)) {
        for (std::int32_t i = 1; i < arc->points.count(); ++i) {
            if (i % most_segments == 1)
                runs_.push_back({ink, {0, 0, 0, 0}, lines_.size(), lines_.size()});
            add_segment(arc->points[i - 1], arc->points[i], map);
        }
    }
}

Outlines::Outlines(const Topology &topology, Size map)
{
    add_arcs(GL_tested_items(topology.arcs.get(), is_border), inks().border, map);
    add_arcs(GL_tested_items(topology.arcs.get(), is_coast), inks().coast, map);
}

void Outlines::draw(Canvas &canvas) const
{
    for (const Run &run : runs_) {
        if (!run.bounds.meets(canvas.bounds()))
            continue;
        const PenInHand pen(canvas, run.ink);
        for (std::size_t i = run.first; i < run.end; ++i)
            canvas.line(lines_[i].from, lines_[i].to);
    }
}

} // namespace atlas
