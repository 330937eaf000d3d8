#include "outlines.h"

#include <algorithm>
#include <cstdlib>

#include "colours.h"
#include "projection.h"

namespace atlas {

/* Enough that there are few runs, and few enough that a run is short. */
constexpr std::size_t most_lines = 32;

/* Files cut polygons where the map ends, at 180° and at the poles. Such a cut is no coast. */
static bool is_cut(Point from, Point to)
{
    const Angle slack = degree / 64;
    const auto beyond = [=](Angle a, Angle b, Angle edge) {
        return std::min(a, b) >= edge - slack || std::max(a, b) <= -edge + slack;
    };
    return beyond(from.longitude, to.longitude, 180 * degree) || beyond(from.latitude, to.latitude, 90 * degree);
}

void Outlines::add_line(Line line, std::uint8_t ink)
{
    const Rectangle bounds = rectangle_around(line.from, line.to);
    const std::size_t first = runs_.size() > 1 ? runs_[runs_.size() - 2].end : 0;
    lines_.push_back(line);
    if (runs_.empty() || runs_.back().ink != ink || runs_.back().end - first == most_lines)
        runs_.push_back({ink, bounds, lines_.size()});
    else
        runs_.back() = {ink, rectangle_around(runs_.back().bounds, bounds), lines_.size()};
}

/* Goes the shorter way round the globe. What then leaves the map on one side comes in again on the other. */
void Outlines::add_segment(Point from, Point to, std::uint8_t ink, Size map)
{
    if (is_cut(from, to))
        return;
    const Pixel start = project(from, map.width, map.height), end = project(to, map.width, map.height);
    const std::int64_t across = std::int64_t{to.longitude} - from.longitude;
    if (std::abs(across) <= 180 * degree)
        return add_line({start, end}, ink);
    const int turn = across > 0 ? map.width : -map.width;
    add_line({start, {end.x - turn, end.y}}, ink);
    add_line({{start.x + turn, start.y}, end}, ink);
}

void Outlines::add_arcs(GL_iterator arcs, std::uint8_t ink, Size map)
{
    while (const Arc *arc = next_record<Arc>(arcs)) {
        for (std::size_t i = 1; i < arc->points.size(); ++i)
            add_segment(arc->points[i - 1], arc->points[i], ink, map);
    }
}

Outlines::Outlines(const Topology &topology, Size map)
{
    add_arcs(GL_tested_items(topology.arcs.get(), is_border), inks().border, map);
    add_arcs(GL_tested_items(topology.arcs.get(), is_coast), inks().coast, map);
}

void Outlines::draw(Canvas &canvas) const
{
    std::size_t first = 0;
    for (const Run &run : runs_) {
        if (run.bounds.meets(canvas.bounds())) {
            const PenInHand pen(canvas, run.ink);
            for (std::size_t i = first; i < run.end; ++i)
                canvas.line(lines_[i].from, lines_[i].to);
        }
        first = run.end;
    }
}

} // namespace atlas
