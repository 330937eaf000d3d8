/* SPDX-License-Identifier: MIT */
/* A tile of the map and the pen that draws in it. */
#ifndef ATLAS_CANVAS_H
#define ATLAS_CANVAS_H

#include <vector>

#include <mova/cxx/element_stack.h>

#include "tile.h"

namespace atlas {

/* Every pixel is drawn once: what is drawn first lies on top, and what is all hidden costs nothing. The pens lie on a stack,
   and the top one draws: whoever takes another one puts it back when done (see PenInHand). Everything is drawn in the map's
   pixels; what lies outside the tile is left out. */
class Canvas {
public:
    Canvas(const Tile &tile, Size map);

    /* The map's. */
    int width() const { return map_.width; }
    int height() const { return map_.height; }

    const Rectangle &bounds() const { return tile_.bounds(); }

    /* Whether every pixel has been drawn. */
    bool is_full() const { return left_ == 0; }

    /* Whether every pixel of these columns has been drawn, in all rows. Looks at blocks of columns, and so may say no where it
       is yes. */
    bool is_full(int from, int end) const;

    /* Both require a pen. */
    void line(Pixel from, Pixel to);
    /* Draws the columns from `from` up to, not including, `end`. */
    void span(int row, int from, int end);

private:
    friend class PenInHand;

    using Word = std::uint64_t;
    static constexpr int word_bits = 64;

    void take(std::size_t word, Word pixels);
    std::size_t word_of(int row, int column) const;
    std::size_t with_free_pixels(std::size_t word, std::size_t end);
    void paint(int row, int column, Word pixels);

    Tile tile_;
    Size map_;
    std::size_t words_;      /* for a row */
    std::size_t left_;       /* pixels that have not been drawn */
    std::vector<Word> free_; /* a bit for each pixel: not drawn */
    std::vector<int> open_;  /* for each column of words: how many rows are not all drawn there */
    std::vector<std::uint32_t>
        next_; /* from each word that has none: one further on, with none between that has some */
    mova::element_stack<std::uint8_t> pens_;
    std::uint8_t ink_ = 0; /* of the top pen */
};

/* Has the canvas draw with another pen while it lives. */
class PenInHand {
public:
    PenInHand(Canvas &canvas, std::uint8_t ink) : canvas_(canvas)
    {
        canvas_.pens_.push(canvas_.ink_);
        canvas_.ink_ = ink;
    }
    ~PenInHand() { canvas_.ink_ = *canvas_.pens_.pop(); }
    PenInHand(const PenInHand &) = delete;
    PenInHand &operator=(const PenInHand &) = delete;

private:
    Canvas &canvas_;
};

} // namespace atlas

#endif
