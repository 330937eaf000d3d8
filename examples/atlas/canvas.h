/* SPDX-License-Identifier: MIT */
/* A tile of the map, and the pen that draws in it. */
#ifndef ATLAS_CANVAS_H
#define ATLAS_CANVAS_H

#include <utility>
#include <vector>

#include <mova/cxx/element_stack.h>

#include "globe.h"

namespace atlas {

/* The columns from `left` up to, not including, `right`, and the rows from `top` up to, not including, `bottom`. */
struct Rectangle {
    int left, top, right, bottom;

    constexpr int width() const { return right - left; }
    constexpr int height() const { return bottom - top; }
    constexpr std::size_t pixels() const
    {
        return static_cast<std::size_t>(width()) * static_cast<std::size_t>(height());
    }
};

/* A rectangle of 8-bit colour indices, row after row from the top, which are the caller's. */
struct Tile {
    Rectangle bounds;
    std::uint8_t *pixels;

    std::uint8_t *at(Pixel pixel) const
    {
        return pixels + static_cast<std::ptrdiff_t>(pixel.y - bounds.top) * bounds.width() + (pixel.x - bounds.left);
    }
};

/* Every pixel is drawn once: what is drawn first lies on top, and what is all hidden costs next to nothing. The pens lie on a
   stack, and the top one draws: whoever takes another one puts it back when done (see PenInHand). Everything is drawn in the
   map's pixels; what lies outside the tile is left out.

   A column of the tile is a word, with a bit for each row, the top one first: a tile has as many rows as a word has bits, or
   fewer. Columns in which every pixel has been drawn are passed over. */
class Canvas {
public:
    using Rows = std::uint64_t;
    static constexpr int most_rows = 64;

    explicit Canvas(const Tile &tile);

    const Rectangle &bounds() const { return tile_.bounds; }
    bool is_full() { return is_full(bounds().left, bounds().right); }
    /* Whether every pixel of these columns has been drawn. */
    bool is_full(int from, int end);

    /* The bits of these rows. */
    Rows rows(int first, int end) const { return above(end) & ~above(first); }

    /* They require a pen. A line is the same, whatever tile it is cut out with. */
    void line(Pixel from, Pixel to);
    /* Draws the columns from `from` up to, not including, `end`, in some rows. */
    void span(Rows rows, int from, int end);

    /* How much work it was: the pixels that lines came to, and the columns that spans did. */
    std::size_t steps() const { return steps_; }

private:
    friend class PenInHand;

    std::size_t index(int column) const { return static_cast<std::size_t>(column - bounds().left); }
    Rows above(int row) const
    {
        const int count = std::clamp(row, bounds().top, bounds().bottom) - bounds().top;
        return count < most_rows ? (Rows{1} << count) - 1 : ~Rows{0};
    }
    static constexpr int block = 64; /* columns */

    int open_column(int from, int end);
    template <class RowsOf>
    void draw_columns(int from, int end, RowsOf rows_of);
    void draw_lines();

    /* A line from its start: the signs of its way, whether it is wider than high, its steps and the places that they take it
       aside. */
    struct Course {
        Pixel from;
        int x_sign, y_sign;
        bool is_wide;
        int steps;
        std::int64_t whole;
    };
    void follow(const Course &course, int first, int end, int right);

    Tile tile_;
    std::vector<Rows> open_;          /* of each column: the pixels that have not been drawn */
    std::vector<Rows> open_in_block_; /* all of those in it, and maybe more */
    std::vector<std::uint32_t> next_; /* from each that has none: one further on, with none between that has some */
    std::vector<Rows> lines_;         /* of each column: the pixels of lines that wait to be drawn */
    Columns waiting_ = {0, 0};        /* where there are some */
    std::size_t steps_ = 0, looked_for_ = 0;
    mova::element_stack<std::uint8_t> pens_;
    std::uint8_t ink_ = 0; /* of the top pen */
};

/* Has the canvas draw with another pen while it lives. */
class PenInHand {
public:
    PenInHand(Canvas &canvas, std::uint8_t ink) : canvas_(canvas)
    {
        canvas_.draw_lines();
        canvas_.pens_.push(std::exchange(canvas_.ink_, ink));
    }
    ~PenInHand()
    {
        canvas_.draw_lines();
        canvas_.ink_ = *canvas_.pens_.pop();
    }
    PenInHand(PenInHand &&) = delete;

private:
    Canvas &canvas_;
};

} // namespace atlas

#endif
