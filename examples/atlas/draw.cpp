#include "draw.h"

#include <algorithm>

namespace atlas {

const std::array<Colour, ink_count> palette = {{
    {14, 36, 56},    /* sea */
    {29, 56, 80},    /* graticule */
    {52, 86, 114},   /* frame */
    {146, 156, 146}, /* border */
    {244, 225, 178}, /* coast */
}};

Pixel project(Point point, int width, int height)
{
    const std::int64_t right = std::int64_t{point.longitude} + 180 * degree;
    const std::int64_t down = std::int64_t{90} * degree - point.latitude;
    const std::int64_t globe = std::int64_t{360} * degree;
    return {static_cast<int>(std::min<std::int64_t>(right * width / globe, width - 1)),
            static_cast<int>(std::min<std::int64_t>(down * height * 2 / globe, height - 1))};
}

static void draw_meridian(Picture &picture, int longitude, Ink ink)
{
    const int x = project({longitude * degree, 0}, picture.width(), picture.height()).x;
    picture.line({x, 0}, {x, picture.height() - 1}, ink);
}

static void draw_parallel(Picture &picture, int latitude, Ink ink)
{
    const int y = project({0, latitude * degree}, picture.width(), picture.height()).y;
    picture.line({0, y}, {picture.width() - 1, y}, ink);
}

/* The frame is where the map ends, and the equator and the prime meridian. */
static void draw_graticule(Picture &picture)
{
    for (int longitude = -150; longitude <= 150; longitude += 30)
        draw_meridian(picture, longitude, ink_graticule);
    for (int latitude = -60; latitude <= 60; latitude += 30)
        draw_parallel(picture, latitude, ink_graticule);
    for (const int side : {-1, 0, 1}) {
        draw_meridian(picture, side * 180, ink_frame);
        draw_parallel(picture, side * 90, ink_frame);
    }
}

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
static void draw_segment(Picture &picture, Point from, Point to, Ink ink)
{
    if (is_cut(from, to))
        return;
    const int width = picture.width();
    Pixel start = project(from, width, picture.height()), end = project(to, width, picture.height());
    const std::int64_t across = std::int64_t{to.longitude} - from.longitude;
    if (std::abs(across) <= 180 * degree)
        return picture.line(start, end, ink);
    const int turn = across > 0 ? width : -width;
    picture.line(start, {end.x - turn, end.y}, ink);
    picture.line({start.x + turn, start.y}, end, ink);
}

static void draw_arc(Picture &picture, const Arc &arc, Ink ink)
{
    for (std::size_t i = 1; i < arc.points.size(); ++i)
        draw_segment(picture, arc.points[i - 1], arc.points[i], ink);
}

/* Every arc is drawn once, whoever uses it; coasts last, on top of the borders that end there. */
static void draw_outlines(Picture &picture, const Topology &topology, const Progress &progress)
{
    const GL_list *arcs = topology.arcs.get();
    const std::size_t all = static_cast<std::size_t>(GL_count_items(arcs));
    std::size_t done = 0;
    const auto draw = [&](GL_iterator selected, Ink ink) {
        while (const Arc *arc = next_record<Arc>(selected)) {
            draw_arc(picture, *arc, ink);
            progress("drawing", ++done, all);
        }
    };
    draw(GL_tested_items(arcs, is_border), ink_border);
    draw(GL_tested_items(arcs, is_coast), ink_coast);
}

Picture draw_map(const Topology &topology, int width, const Progress &progress)
{
    Picture picture(width, width / 2, ink_sea);
    draw_graticule(picture);
    draw_outlines(picture, topology, progress);
    return picture;
}

} // namespace atlas
