#include "draw.h"

#include "canvas.h"
#include "colours.h"
#include "projection.h"
#include "tints.h"

namespace atlas {

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

Drawing::Drawing(const Topology &topology, int width, const Progress &progress)
    : size_{width, width / 2}, outlines_(topology, size_), labels_(topology, size_.width, size_.height, progress)
{
    const Tints tints(topology);
    const std::size_t all = static_cast<std::size_t>(GL_count_items(topology.countries.get()));
    GL_iterator countries = GL_all_items(topology.countries.get());
    while (const Country *country = next_record<Country>(countries)) {
        progress("preparing", lands_.size(), all);
        lands_.push_back({inks().land[static_cast<std::size_t>(tints.of(*country))], Region(*country, size_)});
    }
}

void Drawing::fill_countries(Canvas &canvas)
{
    for (Land &land : lands_) {
        if (!land.region.bounds().meets(canvas.bounds()))
            continue;
        const PenInHand pen(canvas, land.ink);
        filler_.fill(canvas, land.region);
    }
}

void Drawing::draw(Tile tile)
{
    tile.cover(inks().sea);
    Canvas canvas(tile, size_);
    draw_graticule(canvas);
    fill_countries(canvas);
    outlines_.draw(canvas);
    const PenInHand pen(canvas, inks().text);
    labels_.draw(canvas);
}

} // namespace atlas
