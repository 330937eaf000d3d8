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
                 const Progress &progress, Size tile)
    : size_(size), tile_(tile), pool_(cache_budget), cache_(pool_.get())
{
    const std::size_t most_bytes = Rectangle{0, 0, tile.width, tile.height}.pixels();
    for (int top = 0; top < size.height; top += tile.height) {
        for (int left = 0; left < size.width; left += tile.width) {
            const Rectangle bounds = {left, top, std::min(left + tile.width, size.width),
                                      std::min(top + tile.height, size.height)};
            tiles_.push_back({this, tiles_.size() * most_bytes, bounds, {}});
        }
    }
    std::size_t done = 0;
    for (StoredTile &each : tiles_) {
        const mb_handle block = cache_.alloc(each.body_size());
        paint({each.bounds, cache_.at(block)}); /* allocates no other block, so that this one does not move */
        each.entry = cache_.insert(each, block);
        progress("drawing", ++done, tiles_.size());
    }
}

/* The cache gives up first what was used last, which would be the tile just fetched, again and again. So each tile of a
   new row of tiles first puts the one above it, which has been read to its end, in front. */
void Picture::read_row(int y, std::uint8_t *pixels)
{
    const auto columns = static_cast<std::size_t>((size_.width + tile_.width - 1) / tile_.width);
    const std::size_t first = static_cast<std::size_t>(y / tile_.height) * columns;
    for (std::size_t number = first; number < first + columns; ++number) {
        if (y == tiles_[number].bounds.top && y > 0)
            cache_.let_go_next(tiles_[number - columns].entry);
        const Tile body = tile(number);
        std::copy_n(body.at({body.bounds.left, y}), body.bounds.width(), pixels + body.bounds.left);
    }
}

Tile Picture::tile(std::size_t number)
{
    const StoredTile &stored = tiles_[number];
    return {stored.bounds, cache_.body(stored.entry).data()};
}

/* A body comes into memory when its tile is painted or fetched, and leaves it when it is evicted. */
Picture::Statistics Picture::statistics() const
{
    const mb_statistics pool = pool_.statistics();
    return {tiles_.size(), pool.budget, tiles_.size() + fetches_ - pool.live_blocks,
            write_backs_,  fetches_,    pool.moves};
}

Picture::Statistics &Picture::Statistics::operator+=(const Statistics &other)
{
    *this = {tiles + other.tiles,     other.budget,       evictions + other.evictions, write_backs + other.write_backs,
             fetches + other.fetches, moves + other.moves};
    return *this;
}

} // namespace atlas
