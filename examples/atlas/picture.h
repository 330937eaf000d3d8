/* A picture in tiles. They are wide and low: a row of the picture then needs few of them. */
#ifndef ATLAS_PICTURE_H
#define ATLAS_PICTURE_H

#include <cstdint>
#include <functional>
#include <vector>

#include "progress.h"
#include "tile.h"

namespace atlas {

/* Those at the right and the lower edge may be smaller. */
constexpr Size tile_size = {512, 32};

class Picture {
public:
    /* Has `paint` draw each tile, once and whole. */
    Picture(Size size, const std::function<void(Tile)> &paint, const Progress &progress);

    Size size() const { return size_; }

    /* Copies a row's pixels. Rows are read best from the top down. */
    void read_row(int y, std::uint8_t *pixels) const;

private:
    Size size_;
    std::vector<std::vector<std::uint8_t>> tiles_; /* row after row */
};

} // namespace atlas

#endif
