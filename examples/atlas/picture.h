/* SPDX-License-Identifier: MIT */
/* A picture that need not fit into memory: tiles, whose pixels live in a swap cache.

   Each tile is an item of the cache and its pixels are the body, a block of the cache's pool. The pool has a budget, in
   bytes. When it is used up, the cache has some tile written to a temporary file and gives its block to another; when
   that tile is read again, it is fetched from there.

       tiles   0  1  2  3  4 …
       pool  | 0 | 3 | 1 | . |           those in memory, in blocks that the pool may move
       file  | 0 |   | 2 |   | 4 | …     those that have been written back, each in its place

   The cache writes a tile back only once, for nothing makes a fetched body dirty again: so a tile is drawn whole before
   the cache gets it, and never after. */
#ifndef ATLAS_PICTURE_H
#define ATLAS_PICTURE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include <mova/cache/swap_cache.h>

#include "messages.h"
#include "temporary_file.h"
#include "tile.h"

namespace atlas {

/* Wide and low: a row of a large picture needs few tiles. Those at the right and the lower edge may be smaller. */
constexpr Size tile_size = {512, 32};
constexpr std::size_t tile_bytes = std::size_t{tile_size.width} * tile_size.height;

class Picture {
public:
    struct Statistics {
        std::size_t tiles, budget;
        std::uint64_t evictions, write_backs, fetches;
        std::uint64_t moves; /* of blocks, within the pool */
    };

    /* Has `paint` draw each tile, once and whole. Requires a budget for two tiles. Throws Error where the temporary
       file fails, and so does `read_row`. */
    Picture(Size size, std::size_t cache_budget, const std::function<void(Tile)> &paint, const Progress &progress);
    ~Picture();
    Picture(const Picture &) = delete;
    Picture &operator=(const Picture &) = delete;

    Size size() const { return size_; }

    /* Copies a row's pixels. Rows are best read from the top down, with a budget for the tiles of one. */
    void read_row(int y, std::uint8_t *pixels);

    Statistics statistics() const;

private:
    struct StoredTile {
        Picture *picture;
        std::size_t offset; /* in the file */
        Rectangle bounds;
        cc_entry *entry;
    };

    /* The cache's callbacks. */
    static std::uint32_t size_of(void *tile);
    static void fetch(void *tile, void *pixels, std::uint32_t size);
    static void write_back(void *tile, void *pixels);
    static void forget(void *tile);

    Picture(Size size, std::size_t cache_budget);

    void paint_tile(StoredTile &tile, const std::function<void(Tile)> &paint);

    Size size_;
    mb_pool *pool_;
    cc_cache *cache_;
    TemporaryFile file_;
    std::vector<StoredTile> tiles_; /* row after row */
    std::uint64_t write_backs_ = 0, fetches_ = 0;
};

} // namespace atlas

#endif
