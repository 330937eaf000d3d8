/* SPDX-License-Identifier: MIT */
/* A whole map, or a piece of one, in memory. */
#ifndef TESTS_EXAMPLES_PIXELS_H
#define TESTS_EXAMPLES_PIXELS_H

#include <algorithm>
#include <cstdint>
#include <vector>

#include "canvas.h"
#include "draw.h"

class Pixels {
public:
    explicit Pixels(const atlas::Rectangle &bounds, std::uint8_t ink = 0)
        : bounds_(bounds), bytes_(bounds.pixels(), ink)
    {
    }
    Pixels(int width, int height, std::uint8_t ink = 0) : Pixels(atlas::Rectangle{0, 0, width, height}, ink) {}

    atlas::Tile tile() { return {bounds_, bytes_.data()}; }

    int width() const { return bounds_.width(); }
    int height() const { return bounds_.height(); }
    const std::vector<std::uint8_t> &bytes() const { return bytes_; }
    std::vector<std::uint8_t> row(int y) const { return {begin_of(y), begin_of(y + 1)}; }
    std::uint8_t at(atlas::Pixel pixel) const { return begin_of(pixel.y)[pixel.x - bounds_.left]; }

    /* Copies what a part of the same map shows. */
    void paste(const Pixels &part)
    {
        for (int y = part.bounds_.top; y < part.bounds_.bottom; ++y)
            std::copy(part.begin_of(y), part.begin_of(y + 1),
                      bytes_.begin() + (begin_of(y) - bytes_.begin()) + part.bounds_.left - bounds_.left);
    }

private:
    std::vector<std::uint8_t>::const_iterator begin_of(int y) const
    {
        return bytes_.begin() + static_cast<std::ptrdiff_t>(y - bounds_.top) * bounds_.width();
    }

    atlas::Rectangle bounds_;
    std::vector<std::uint8_t> bytes_;
};

/* Draws in canvases that cover the tile from the top down, each of so many rows or fewer. */
template <class Draw>
void draw_in_bands(const atlas::Tile &tile, Draw draw, int rows = atlas::Canvas::most_rows)
{
    for (int top = tile.bounds.top; top < tile.bounds.bottom; top += rows) {
        const int bottom = std::min(top + rows, tile.bounds.bottom);
        atlas::Canvas canvas({{tile.bounds.left, top, tile.bounds.right, bottom}, tile.at({tile.bounds.left, top})});
        const atlas::PenInHand pen(canvas, 1);
        draw(canvas);
    }
}

/* Draws something in one tile that is the whole rectangle, and, in a second one, tile by tile; says whether they agree. */
template <class Draw>
bool is_the_same_in_tiles(const atlas::Rectangle &bounds, atlas::Size tile, Draw draw)
{
    Pixels whole(bounds), patched(bounds, 255);
    draw(whole.tile());
    for (int bottom = bounds.bottom; bottom > bounds.top; bottom -= tile.height) {
        for (int right = bounds.right; right > bounds.left; right -= tile.width) {
            Pixels part(atlas::Rectangle{std::max(right - tile.width, bounds.left),
                                         std::max(bottom - tile.height, bounds.top), right, bottom});
            draw(part.tile());
            patched.paste(part);
        }
    }
    return whole.bytes() == patched.bytes();
}

inline Pixels draw_map(const atlas::Topology &topology, int width)
{
    atlas::Drawing drawing(topology, {width, width / 2}, atlas::no_progress);
    Pixels pixels(drawing.size().width, drawing.size().height);
    drawing.draw(pixels.tile());
    return pixels;
}

#endif
