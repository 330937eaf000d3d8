#include "draw.h"

#include <algorithm>

#include "canvas.h"
#include "colours.h"
#include "fill.h"
#include "tints.h"

namespace atlas {

Pixel project(Point point, int width, int height)
{
    const std::int64_t right = std::int64_t{point.longitude} + 180 * degree;
    const std::int64_t down = std::int64_t{90} * degree - point.latitude;
    const std::int64_t globe = std::int64_t{360} * degree;
    return {static_cast<int>(std::min<std::int64_t>(right * width / globe, width - 1)),
            static_cast<int>(std::min<std::int64_t>(down * height * 2 / globe, height - 1))};
}

static void draw_meridian(Canvas &canvas, int longitude)
{
    const int x = project({longitude * degree, 0}, canvas.width(), canvas.height()).x;
    canvas.line({x, 0}, {x, canvas.height() - 1});
}

static void draw_parallel(Canvas &canvas, int latitude)
{
    const int y = project({0, latitude * degree}, canvas.width(), canvas.height()).y;
    canvas.line({0, y}, {canvas.width() - 1, y});
}

/* The frame is where the map ends, and the equator and the prime meridian. */
static void draw_graticule(Canvas &canvas)
{
    const PenInHand pen(canvas, inks().graticule);
    for (int longitude = -150; longitude <= 150; longitude += 30)
        draw_meridian(canvas, longitude);
    for (int latitude = -60; latitude <= 60; latitude += 30)
        draw_parallel(canvas, latitude);
    const PenInHand frame(canvas, inks().frame);
    for (const int side : {-1, 0, 1}) {
        draw_meridian(canvas, side * 180);
        draw_parallel(canvas, side * 90);
    }
}

static void fill_countries(Canvas &canvas, const Topology &topology, const Progress &progress)
{
    const std::vector<std::uint8_t> tints = choose_tints(topology);
    Filler filler(canvas);
    std::size_t done = 0;
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (const Country *country = next_record<Country>(countries)) {
        const PenInHand pen(canvas, inks().land[tints[done]]);
        filler.fill(*country, [&] { progress("filling", done, tints.size()); });
        ++done;
    }
}

Picture draw_countries(const Topology &topology, int width, const Progress &progress)
{
    Picture picture(width, width / 2, inks().sea);
    Canvas canvas(picture);
    draw_graticule(canvas);
    fill_countries(canvas, topology, progress);
    return picture;
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
static void draw_segment(Canvas &canvas, Point from, Point to)
{
    if (is_cut(from, to))
        return;
    const int width = canvas.width();
    const Pixel start = project(from, width, canvas.height()), end = project(to, width, canvas.height());
    const std::int64_t across = std::int64_t{to.longitude} - from.longitude;
    if (std::abs(across) <= 180 * degree)
        return canvas.line(start, end);
    const int turn = across > 0 ? width : -width;
    canvas.line(start, {end.x - turn, end.y});
    const PenInHand shifted(canvas, Pen{canvas.pen().ink, canvas.pen().shift + turn});
    canvas.line(start, {end.x - turn, end.y});
}

static void draw_arc(Canvas &canvas, const Arc &arc)
{
    for (std::size_t i = 1; i < arc.points.size(); ++i)
        draw_segment(canvas, arc.points[i - 1], arc.points[i]);
}

/* Every arc is drawn once, whoever uses it; coasts last, on top of the borders that end there. */
void draw_outlines(Picture &picture, const Topology &topology, const Progress &progress)
{
    Canvas canvas(picture);
    const GL_list *arcs = topology.arcs.get();
    const std::size_t all = static_cast<std::size_t>(GL_count_items(arcs));
    std::size_t done = 0;
    const auto draw = [&](GL_iterator selected, std::uint8_t ink) {
        const PenInHand pen(canvas, ink);
        while (const Arc *arc = next_record<Arc>(selected)) {
            draw_arc(canvas, *arc);
            progress("drawing", ++done, all);
        }
    };
    draw(GL_tested_items(arcs, is_border), inks().border);
    draw(GL_tested_items(arcs, is_coast), inks().coast);
}

Picture draw_map(const Topology &topology, int width, const Progress &progress)
{
    Picture picture = draw_countries(topology, width, progress);
    draw_outlines(picture, topology, progress);
    return picture;
}

} // namespace atlas
