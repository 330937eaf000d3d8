#include "picture.h"

#include <algorithm>
#include <cstdlib>

namespace atlas {

Picture::Picture(int width, int height, std::uint8_t background)
    : width_(width), height_(height),
      bytes_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), background)
{
}

void Picture::plot(Pixel pixel, std::uint8_t colour)
{
    if (pixel.x >= 0 && pixel.x < width_ && pixel.y >= 0 && pixel.y < height_)
        bytes_[offset(pixel)] = colour;
}

/* Bresenham's line. `error` is how far the pixel lies off the ideal line, in units that keep it whole. */
void Picture::line(Pixel from, Pixel to, std::uint8_t colour)
{
    const int across = std::abs(to.x - from.x), down = std::abs(to.y - from.y);
    const int step_x = from.x < to.x ? 1 : -1, step_y = from.y < to.y ? 1 : -1;
    int error = across - down;
    Pixel at = from;
    plot(at, colour);
    while (at.x != to.x || at.y != to.y) {
        const int twice = 2 * error;
        if (twice > -down) {
            error -= down;
            at.x += step_x;
        }
        if (twice < across) {
            error += across;
            at.y += step_y;
        }
        plot(at, colour);
    }
}

void Picture::span(int row, int from, int end, std::uint8_t colour)
{
    const int left = std::max(from, 0), right = std::min(end, width_);
    if (row >= 0 && row < height_ && left < right)
        std::fill_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset({left, row})), right - left, colour);
}

} // namespace atlas
