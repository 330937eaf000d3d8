/* SPDX-License-Identifier: MIT */
/* A tile of the map: a rectangle of 8-bit colour indices, and straight lines and rows of pixels in it. */
#ifndef ATLAS_TILE_H
#define ATLAS_TILE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

namespace atlas {

/* The map's columns count from its left edge, its rows from the upper one. */
struct Pixel {
    int x, y;
};

struct Size {
    int width, height;
};

/* The columns from `left` up to, not including, `right`, and the rows from `top` up to, not including, `bottom`. */
struct Rectangle {
    int left, top, right, bottom;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    std::size_t pixels() const { return static_cast<std::size_t>(width()) * static_cast<std::size_t>(height()); }
    bool meets(const Rectangle &other) const
    {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

/* Returns the smallest rectangle that has both pixels, or both rectangles, in it. */
Rectangle rectangle_around(Pixel a, Pixel b);
Rectangle rectangle_around(const Rectangle &a, const Rectangle &b);

/* Calls `plot` with each pixel of a straight line that lies in the rectangle. The line is the same, whatever rectangle it is
   cut out with. */
template <class Plot>
void for_each_pixel(Pixel from, Pixel to, const Rectangle &bounds, Plot plot);

class Tile {
public:
    /* Draws in `pixels`, which are the caller's: the rectangle's, row after row from the top. */
    Tile(const Rectangle &bounds, std::uint8_t *pixels) : bounds_(bounds), pixels_(pixels) {}

    const Rectangle &bounds() const { return bounds_; }

    void cover(std::uint8_t ink);

    std::uint8_t *at(Pixel pixel) const
    {
        return pixels_ + static_cast<std::ptrdiff_t>(pixel.y - bounds_.top) * bounds_.width() +
               (pixel.x - bounds_.left);
    }

    /* Both take pixels anywhere, and leave out what lies outside the tile. */
    void line(Pixel from, Pixel to, std::uint8_t ink);
    /* The columns from `from` up to, not including, `end`. */
    void span(int row, int from, int end, std::uint8_t ink);

private:
    Rectangle bounds_;
    std::uint8_t *pixels_;
};

/* ---- lines ---- */

/* A line takes one step for each column or row along its longer side. Across that it stands, after `step` of its `steps`
   steps, where the ideal line is nearest, and of two places as near in the one nearer to its start: after
   ceil((2 * step * whole - steps) / (2 * steps)) places of `whole`. Going on, that is a remainder to carry. */
class Minor {
public:
    Minor(std::int64_t steps, int whole)
        : steps_(steps), whole_(whole < 0 ? -std::int64_t{whole} : whole), sign_(whole < 0 ? -1 : 1)
    {
    }

    /* The first step after which the line has gone so many places. Requires a place or more for a line that goes any. */
    std::int64_t first_step(std::int64_t places) const
    {
        if (places <= 0)
            return 0;
        return whole_ == 0 ? steps_ + 1 : (2 * steps_ * places - steps_ + 2 * whole_) / (2 * whole_);
    }

    void go_to(std::int64_t step)
    {
        const std::int64_t sum = 2 * step * whole_ + steps_ - 1;
        places_ = static_cast<int>(sum / (2 * steps_));
        carried_ = sum % (2 * steps_);
    }
    void go_on()
    {
        carried_ += 2 * whole_;
        if (carried_ >= 2 * steps_) {
            carried_ -= 2 * steps_;
            ++places_;
        }
    }
    int way() const { return sign_ * places_; }

private:
    std::int64_t steps_, whole_, carried_ = 0;
    int sign_, places_ = 0;
};

template <class Plot>
void for_each_pixel(Pixel from, Pixel to, const Rectangle &bounds, Plot plot)
{
    if (!bounds.meets(rectangle_around(from, to)))
        return;
    const int across = to.x - from.x, down = to.y - from.y;
    const bool is_wide = std::abs(across) >= std::abs(down);
    const int steps = std::max({std::abs(across), std::abs(down), 1});
    const int sign = (is_wide ? across : down) < 0 ? -1 : 1;
    /* How far it goes from `start` until it comes to the bounds, and until it leaves them. */
    const auto ways = [](int start, int whole, int low, int end) {
        return whole < 0 ? std::pair(start - end + 1, start - low + 1) : std::pair(low - start, end - start);
    };
    const auto over_columns = ways(from.x, across, bounds.left, bounds.right);
    const auto over_rows = ways(from.y, down, bounds.top, bounds.bottom);
    const auto [come, leave] = is_wide ? over_columns : over_rows;
    const auto [minor_come, minor_leave] = is_wide ? over_rows : over_columns;
    Minor minor(steps, is_wide ? down : across);
    const std::int64_t first = std::max({std::int64_t{0}, std::int64_t{come}, minor.first_step(minor_come)});
    const std::int64_t length = is_wide ? std::abs(across) : std::abs(down);
    const std::int64_t end = std::min({length + 1, std::int64_t{leave}, minor.first_step(minor_leave)});
    if (first >= end)
        return;
    minor.go_to(first);
    for (std::int64_t step = first; step < end; ++step, minor.go_on()) {
        const int way = sign * static_cast<int>(step);
        plot(is_wide ? Pixel{from.x + way, from.y + minor.way()} : Pixel{from.x + minor.way(), from.y + way});
    }
}

} // namespace atlas

#endif
