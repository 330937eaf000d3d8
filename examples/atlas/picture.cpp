/* SPDX-License-Identifier: MIT */
#include "picture.h"

#include <algorithm>

namespace atlas {

void Picture::StoredTile::fill(std::span<std::uint8_t> body)
{
    picture->file_.read(offset, body);
    ++picture->fetches_;
}

void Picture::StoredTile::write_back(std::span<std::uint8_t> body)
{
    picture->file_.write(offset, body);
    ++picture->write_backs_;
}

Picture::Picture(Size size, std::size_t cache_budget, const std::function<void(const Tile &)> &paint,
                 const Progress &progress)
    : size_(size), pool_(cache_budget), cache_(pool_.get())
{
    for (int top = 0; top < size.height; top += tile_size.height) {
        for (int left = 0; left < size.width; left += tile_size.width) {
            const Rectangle bounds = {left, top, std::min(left + tile_size.width, size.width),
                                      std::min(top + tile_size.height, size.height)};
            tiles_.push_back({this, tiles_.size() * tile_bytes, bounds, {}});
        }
    }
    std::size_t done = 0;
    for (StoredTile &tile : tiles_) {
        const mb_handle block = cache_.alloc(tile.body_size());
        paint({tile.bounds, cache_.at(block)}); /* allocates no other block, so that this one does not move */
        tile.entry = cache_.insert(tile, block);
        progress("drawing", ++done, tiles_.size());
    }
}

/* The cache gives up first what was used last, which would be the tile just fetched, again and again. So each tile of a
   new row of tiles first puts the one above it, which has been read to its end, in front. */
void Picture::read_row(int y, std::uint8_t *pixels)
{
    const int columns = (size_.width + tile_size.width - 1) / tile_size.width;
    const auto first = tiles_.begin() + std::ptrdiff_t{y / tile_size.height} * columns;
    for (auto tile = first; tile != first + columns; ++tile) {
        if (y == tile->bounds.top && y > 0)
            cache_.let_go_next((tile - columns)->entry);
        const Tile body = {tile->bounds, cache_.body(tile->entry).data()};
        std::copy_n(body.at({body.bounds.left, y}), body.bounds.width(), pixels + body.bounds.left);
    }
}

/* A body comes into memory when its tile is painted or fetched, and leaves it when it is evicted. */
Picture::Statistics Picture::statistics() const
{
    const mb_statistics pool = pool_.statistics();
    return {tiles_.size(), pool.budget, tiles_.size() + fetches_ - pool.live_blocks,
            write_backs_,  fetches_,    pool.moves};
}

} // namespace atlas
