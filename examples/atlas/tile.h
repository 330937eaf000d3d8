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
struct Area {
    int left, top, right, bottom;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    std::size_t pixels() const { return static_cast<std::size_t>(width()) * static_cast<std::size_t>(height()); }
    bool meets(const Area &other) const
    {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

/* Returns the smallest area that has both pixels, or both areas, in it. */
Area area_around(Pixel a, Pixel b);
Area area_around(const Area &a, const Area &b);

class Tile {
public:
    /* Draws in `pixels`, which are the caller's: the area's, row after row from the top. */
    Tile(const Area &area, std::uint8_t *pixels) : area_(area), pixels_(pixels) {}

    const Area &area() const { return area_; }

    void cover(std::uint8_t ink);

    /* Both take pixels anywhere, and leave out what lies outside the tile. A line is the same, whatever tiles it is
       drawn in. */
    void line(Pixel from, Pixel to, std::uint8_t ink);
    /* The columns from `from` up to, not including, `end`. */
    void span(int row, int from, int end, std::uint8_t ink);

private:
    std::uint8_t *at(Pixel pixel)
    {
        return pixels_ + static_cast<std::ptrdiff_t>(pixel.y - area_.top) * area_.width() + (pixel.x - area_.left);
    }
    void plot(Pixel pixel, std::uint8_t ink);

    Area area_;
    std::uint8_t *pixels_;
};

} // namespace atlas

#endif
