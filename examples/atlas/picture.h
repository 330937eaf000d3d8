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

#include <functional>
#include <vector>

#include <mova/cxx/block_pool.h>
#include <mova/cxx/colour_table.h>
#include <mova/cxx/swap_cache.h>

#include "canvas.h"
#include "file.h"

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

        /* Adds what another picture of the same budget had to do. */
        Statistics &operator+=(const Statistics &other);
    };

    /* Has `paint` draw each tile, once and whole. Requires a budget for two tiles. Throws Error where the temporary
       file fails, and so do `read_row` and `tile`. */
    Picture(Size size, std::size_t cache_budget, const std::function<void(const Tile &)> &paint,
            const Progress &progress, Size tile = tile_size);
    Picture(Picture &&) = delete;

    Size size() const { return size_; }
    /* Copies a row's pixels. Rows are best read from the top down, with a budget for the tiles of one. */
    void read_row(int y, std::uint8_t *pixels);
    /* A tile as it was painted, until another one is read. They are numbered row after row. */
    Tile tile(std::size_t number);
    Statistics statistics() const;

private:
    struct StoredTile {
        Picture *picture;
        std::size_t offset; /* in the file */
        Rectangle bounds;
        mova::swap_cache<StoredTile, std::uint8_t>::position entry;

        /* What the cache asks for. */
        std::size_t body_size() const { return bounds.pixels(); }
        void fill(std::span<std::uint8_t> body);
        void write_back(std::span<std::uint8_t> body);
    };

    Size size_, tile_;
    mova::block_pool pool_;
    TemporaryFile file_;
    std::vector<StoredTile> tiles_; /* row after row */
    mova::swap_cache<StoredTile, std::uint8_t> cache_;
    std::uint64_t write_backs_ = 0, fetches_ = 0;
};

/* Returns a PNG file of rows that `row` returns, from the top, each until the next one is asked for. The colours are those of
   `colours`. Throws Error where that fails, and what `row` throws. */
std::vector<std::uint8_t> encode_png(Size size, std::span<const mova::colour> colours,
                                     const std::function<const std::uint8_t *(int y)> &row);

/* Writes the picture as a PNG file, and returns how many bytes it takes. Throws Error where it cannot be written, and then
   leaves what was there before. */
std::size_t write_png(const std::string &path, Picture &picture, std::span<const mova::colour> colours,
                      const Progress &progress);

} // namespace atlas

#endif
