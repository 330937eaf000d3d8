/* SPDX-License-Identifier: MIT */
#include "draw.h"

#include <algorithm>

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
    {
        const PenInHand frame(canvas, inks().frame);
        for (const int side : {-1, 0, 1}) {
            draw_meridian(canvas, side * 180);
            draw_parallel(canvas, side * 90);
        }
    }
    const PenInHand pen(canvas, inks().graticule);
    for (int longitude = -150; longitude <= 150; longitude += 30)
        draw_meridian(canvas, longitude);
    for (int latitude = -60; latitude <= 60; latitude += 30)
        draw_parallel(canvas, latitude);
}

Drawing::Drawing(const Topology &topology, int width, const Progress &progress)
    : size_{width, width / 2}, fill_(size_), outlines_(topology, size_),
      labels_(topology, size_.width, size_.height, progress)
{
    const Tints tints(topology);
    const std::size_t all = topology.countries.size();
    std::size_t done = 0;
    for (const Country *country : topology.countries) {
        progress("preparing", done++, all);
        fill_.add(*country, inks().land[static_cast<std::size_t>(tints.of(*country))]);
    }
    fill_.sort();
}

/* From what lies on top to what lies below. */
void Drawing::draw_band(int top, int bottom)
{
    band_ = {0, top, size_.width, bottom};
    pixels_.resize(band_.pixels());
    Canvas canvas({band_, pixels_.data()}, size_);
    {
        const PenInHand pen(canvas, inks().text);
        labels_.draw(canvas);
    }
    outlines_.draw(canvas);
    fill_.draw(canvas);
    draw_graticule(canvas);
    const PenInHand pen(canvas, inks().sea);
    for (int row = top; row < bottom; ++row)
        canvas.span(row, 0, size_.width);
}

void Drawing::draw(Tile tile)
{
    const Rectangle &bounds = tile.bounds();
    if (bounds.top != band_.top || bounds.bottom != band_.bottom)
        draw_band(bounds.top, bounds.bottom);
    const Tile band(band_, pixels_.data());
    for (int row = bounds.top; row < bounds.bottom; ++row)
        std::copy_n(band.at({bounds.left, row}), bounds.width(), tile.at({bounds.left, row}));
}

} // namespace atlas
