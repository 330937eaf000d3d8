/* SPDX-License-Identifier: MIT */
#include "pyramid.h"

namespace atlas {

/* A piece of a tile, as high as what is drawn at once. It is as large as a picture's tile is otherwise, and two fit into the
   least budget. */
constexpr Size piece = {tile_side, Canvas::most_rows};
constexpr int pieces = tile_side / piece.height;
static_assert(Rectangle{0, 0, piece.width, piece.height}.pixels() == tile_bytes);

/* The cache gives up first the piece that was read last, and no piece is read twice: that is just right. */
Picture::Statistics draw_pyramid(const Topology &topology, int zoom, std::size_t cache_budget, const TakeTile &take,
                                 const Progress &progress)
{
    Picture::Statistics sum = {};
    std::vector<std::uint8_t> pixels(pieces * tile_bytes);
    std::size_t done = 0;
    for (Place place = {0, 0, 0}; place.zoom <= zoom; ++place.zoom) {
        const int columns = 1 << place.zoom, width = columns * tile_side;
        Drawing drawing(topology, {width, width}, progress);
        for (place.row = 0; place.row < columns; ++place.row) {
            const int top = place.row * tile_side;
            const auto paint = [&](const Tile &tile) {
                const auto [left, upper, right, lower] = tile.bounds;
                drawing.draw({{left, top + upper, right, top + lower}, tile.pixels});
            };
            Picture picture({width, tile_side}, cache_budget, paint, no_progress, piece);
            for (place.column = 0; place.column < columns; ++place.column) {
                for (int i = 0; i < pieces; ++i) {
                    const Tile read = picture.tile(static_cast<std::size_t>(i * columns + place.column));
                    std::copy_n(read.pixels, tile_bytes, pixels.data() + static_cast<std::size_t>(i) * tile_bytes);
                }
                take(place, pixels.data());
                progress("drawing", ++done, tiles_up_to(zoom));
            }
            sum += picture.statistics();
        }
    }
    return sum;
}

} // namespace atlas
