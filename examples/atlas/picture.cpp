/* SPDX-License-Identifier: MIT */
#include "picture.h"

#include <algorithm>

#include <mova/host/memory_blocks.h>

namespace atlas {

/* ---- the cache's callbacks ---- */

std::uint32_t Picture::size_of(void *tile)
{
    return static_cast<std::uint32_t>(static_cast<const StoredTile *>(tile)->bounds.pixels());
}

void Picture::fetch(void *tile, void *pixels, std::uint32_t size)
{
    const StoredTile *fetched = static_cast<const StoredTile *>(tile);
    fetched->picture->file_.read(fetched->offset, pixels, size);
    ++fetched->picture->fetches_;
}

void Picture::write_back(void *tile, void *pixels)
{
    const StoredTile *written = static_cast<const StoredTile *>(tile);
    written->picture->file_.write(written->offset, pixels, written->bounds.pixels());
    ++written->picture->write_backs_;
}

/* The tiles are not the cache's. */
void Picture::forget(void *)
{
}

/* ---- the picture ---- */

Picture::Picture(Size size, std::size_t cache_budget)
    : size_(size), pool_(mb_create_pool(cache_budget)), cache_(cc_create(pool_))
{
    for (int top = 0; top < size.height; top += tile_size.height) {
        for (int left = 0; left < size.width; left += tile_size.width) {
            const Rectangle bounds = {left, top, std::min(left + tile_size.width, size.width),
                                      std::min(top + tile_size.height, size.height)};
            tiles_.push_back({this, tiles_.size() * tile_bytes, bounds, nullptr});
        }
    }
}

/* The other constructor comes first, so that what it has made is released where painting fails. */
Picture::Picture(Size size, std::size_t cache_budget, const std::function<void(Tile)> &paint, const Progress &progress)
    : Picture(size, cache_budget)
{
    std::size_t done = 0;
    for (StoredTile &tile : tiles_) {
        paint_tile(tile, paint);
        progress("drawing", ++done, tiles_.size());
    }
}

/* No function frees a cache's head: it is a block of the memory service like others. */
Picture::~Picture()
{
    cc_make_empty(cache_);
    MM_dealloc_item(cache_, sizeof(cc_cache));
    mb_release_pool(&pool_);
}

/* No other block is allocated while the tile is drawn, so this one does not move. */
void Picture::paint_tile(StoredTile &tile, const std::function<void(Tile)> &paint)
{
    const mb_handle handle = cc_alloc(cache_, size_of(&tile));
    paint({tile.bounds, static_cast<std::uint8_t *>(mb_get(pool_, handle))});
    tile.entry = cc_insert(cache_, &tile, handle, size_of, fetch, write_back, forget);
}

/* The cache gives up first what was used last, which would be the tile just fetched, again and again. So each tile of a
   new row of tiles first puts the one above it, which has been read to its end, in front. */
void Picture::read_row(int y, std::uint8_t *pixels)
{
    const int columns = (size_.width + tile_size.width - 1) / tile_size.width;
    const auto first = tiles_.begin() + std::ptrdiff_t{y / tile_size.height} * columns;
    for (auto tile = first; tile != first + columns; ++tile) {
        if (y == tile->bounds.top && y > 0)
            cc_lazy_swap_out(cache_, (tile - columns)->entry);
        const auto *body = static_cast<const std::uint8_t *>(cc_get(cache_, tile->entry));
        std::copy_n(body + std::ptrdiff_t{y - tile->bounds.top} * tile->bounds.width(), tile->bounds.width(),
                    pixels + tile->bounds.left);
    }
}

/* A body comes into memory when its tile is painted or fetched, and leaves it when it is evicted. */
Picture::Statistics Picture::statistics() const
{
    const mb_statistics pool = mb_pool_statistics(pool_);
    return {tiles_.size(), pool.budget, tiles_.size() + fetches_ - pool.live_blocks,
            write_backs_,  fetches_,    pool.moves};
}

} // namespace atlas
