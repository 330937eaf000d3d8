/* A picture of 8-bit colour numbers, row after row from the top, and straight lines and rows of pixels in it. */
#ifndef ATLAS_PICTURE_H
#define ATLAS_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace atlas {

struct Pixel {
    int x, y;
};

class Picture {
public:
    Picture(int width, int height, std::uint8_t background);

    int width() const { return width_; }
    int height() const { return height_; }
    const std::vector<std::uint8_t> &bytes() const { return bytes_; }
    const std::uint8_t *row(int y) const { return bytes_.data() + offset({0, y}); }
    std::uint8_t at(Pixel pixel) const { return bytes_[offset(pixel)]; }

    /* All three leave out what lies outside the picture. */
    void plot(Pixel pixel, std::uint8_t colour);
    void line(Pixel from, Pixel to, std::uint8_t colour);
    /* The columns from `from` up to, not including, `end`. */
    void span(int row, int from, int end, std::uint8_t colour);

private:
    std::size_t offset(Pixel pixel) const
    {
        return static_cast<std::size_t>(pixel.y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(pixel.x);
    }

    int width_, height_;
    std::vector<std::uint8_t> bytes_;
};

} // namespace atlas

#endif
