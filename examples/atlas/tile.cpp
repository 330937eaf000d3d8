#include "tile.h"

#include <algorithm>
#include <cstdlib>

#include "division.h"

namespace atlas {

Rectangle rectangle_around(Pixel a, Pixel b)
{
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x) + 1, std::max(a.y, b.y) + 1};
}

Rectangle rectangle_around(const Rectangle &a, const Rectangle &b)
{
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right), std::max(a.bottom, b.bottom)};
}

void Tile::cover(std::uint8_t ink)
{
    std::fill_n(pixels_, bounds_.pixels(), ink);
}

void Tile::plot(Pixel pixel, std::uint8_t ink)
{
    if (pixel.x >= bounds_.left && pixel.x < bounds_.right && pixel.y >= bounds_.top && pixel.y < bounds_.bottom)
        *at(pixel) = ink;
}

/* How far a line has come, of `whole` columns or rows, after so many of its steps: what is nearest to the ideal line,
   and of two as near the one nearer to its start. */
static int after_steps(int step, int steps, int whole)
{
    const std::int64_t way = ceil_divided(std::int64_t{2} * step * std::abs(whole) - steps, std::int64_t{2} * steps);
    return static_cast<int>(whole < 0 ? -way : way);
}

/* One pixel for each step along the line's longer side, of those steps that lie in the tile. */
void Tile::line(Pixel from, Pixel to, std::uint8_t ink)
{
    if (!bounds_.meets(rectangle_around(from, to)))
        return;
    const int across = to.x - from.x, down = to.y - from.y;
    const int steps = std::max({std::abs(across), std::abs(down), 1});
    const auto clipped = [=](int start, int whole, int low, int high) {
        const int first = whole < 0 ? start - high : low - start, last = whole < 0 ? start - low : high - start;
        return std::pair(std::max(first, 0), std::min(last, std::abs(whole)));
    };
    const auto [first, last] = std::abs(across) >= std::abs(down)
                                   ? clipped(from.x, across, bounds_.left, bounds_.right - 1)
                                   : clipped(from.y, down, bounds_.top, bounds_.bottom - 1);
    for (int step = first; step <= last; ++step)
        plot({from.x + after_steps(step, steps, across), from.y + after_steps(step, steps, down)}, ink);
}

void Tile::span(int row, int from, int end, std::uint8_t ink)
{
    const int left = std::max(from, bounds_.left), right = std::min(end, bounds_.right);
    if (row >= bounds_.top && row < bounds_.bottom && left < right)
        std::fill_n(at({left, row}), right - left, ink);
}

} // namespace atlas
