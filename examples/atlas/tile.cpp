/* SPDX-License-Identifier: MIT */
#include "tile.h"

#include <algorithm>

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

void Tile::line(Pixel from, Pixel to, std::uint8_t ink)
{
    for_each_pixel(from, to, bounds_, [&](Pixel pixel) { *at(pixel) = ink; });
}

void Tile::span(int row, int from, int end, std::uint8_t ink)
{
    const int left = std::max(from, bounds_.left), right = std::min(end, bounds_.right);
    if (row >= bounds_.top && row < bounds_.bottom && left < right)
        std::fill_n(at({left, row}), right - left, ink);
}

} // namespace atlas
