/* A tile of the map and the pen that draws in it. */
#ifndef ATLAS_CANVAS_H
#define ATLAS_CANVAS_H

#include <mova/lists/element_stack.h>

#include "tile.h"

namespace atlas {

/* The pens lie on a stack, and the top one draws: whoever takes another one puts it back when done (see PenInHand).
   Everything is drawn in the map's pixels; what lies outside the tile is left out. */
class Canvas {
public:
    Canvas(const Tile &tile, Size map) : tile_(tile), map_(map) {}
    ~Canvas() { ES_release(&pens_); }
    Canvas(const Canvas &) = delete;
    Canvas &operator=(const Canvas &) = delete;

    /* The map's. */
    int width() const { return map_.width; }
    int height() const { return map_.height; }

    const Rectangle &bounds() const { return tile_.bounds(); }

    /* Both require a pen. */
    void line(Pixel from, Pixel to) { tile_.line(from, to, ink()); }
    /* Draws the columns from `from` up to, not including, `end`. */
    void span(int row, int from, int end) { tile_.span(row, from, end, ink()); }

private:
    friend class PenInHand;

    std::uint8_t ink() const;

    Tile tile_;
    Size map_;
    ES_stack *pens_ = ES_create(sizeof(std::uint8_t));
};

/* Has the canvas draw with another pen while it lives. */
class PenInHand {
public:
    PenInHand(Canvas &canvas, std::uint8_t ink) : canvas_(canvas) { ES_push(canvas_.pens_, &ink); }
    ~PenInHand()
    {
        std::uint8_t used;
        ES_pop(canvas_.pens_, &used);
    }
    PenInHand(const PenInHand &) = delete;
    PenInHand &operator=(const PenInHand &) = delete;

private:
    Canvas &canvas_;
};

} // namespace atlas

#endif
