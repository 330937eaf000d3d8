/* A tile of the map: a rectangle of 8-bit colour indices, and straight lines and rows of pixels in it. */
#ifndef ATLAS_TILE_H
#define ATLAS_TILE_H

#include <cstddef>
#include <cstdint>

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

class Tile {
public:
    /* Draws in `pixels`, which are the caller's: the rectangle's, row after row from the top. */
    Tile(const Rectangle &bounds, std::uint8_t *pixels) : bounds_(bounds), pixels_(pixels) {}

    const Rectangle &bounds() const { return bounds_; }

    void cover(std::uint8_t ink);

    /* Both take pixels anywhere, and leave out what lies outside the tile. A line is the same, whatever tiles it is
       drawn in. */
    void line(Pixel from, Pixel to, std::uint8_t ink);
    /* The columns from `from` up to, not including, `end`. */
    void span(int row, int from, int end, std::uint8_t ink);

private:
    std::uint8_t *at(Pixel pixel)
    {
        return pixels_ + static_cast<std::ptrdiff_t>(pixel.y - bounds_.top) * bounds_.width() +
               (pixel.x - bounds_.left);
    }
    void plot(Pixel pixel, std::uint8_t ink);

    Rectangle bounds_;
    std::uint8_t *pixels_;
};

} // namespace atlas

#endif
