/* SPDX-License-Identifier: MIT */
#include "canvas.h"

#include <algorithm>
#include <bit>

namespace atlas {

Canvas::Canvas(const Tile &tile, Size map)
    : tile_(tile), map_(map), words_(static_cast<std::size_t>((bounds().width() + word_bits - 1) / word_bits)),
      left_(bounds().pixels()), free_(words_ * static_cast<std::size_t>(bounds().height()), ~Word{0}),
      open_(words_, bounds().height()), next_(free_.size())
{
    for (std::size_t i = 0; i < next_.size(); ++i)
        next_[i] = static_cast<std::uint32_t>(i);
    const int used = bounds().width() % word_bits;
    for (std::size_t last = words_ - 1; used && last < free_.size(); last += words_)
        free_[last] = (Word{1} << used) - 1;
}

std::size_t Canvas::word_of(int row, int column) const
{
    return static_cast<std::size_t>(row - bounds().top) * words_ +
           static_cast<std::size_t>((column - bounds().left) / word_bits);
}

/* Returns the first such word from there on, or `end`. What it passes is passed in half as many steps the next time. */
std::size_t Canvas::with_free_pixels(std::size_t word, std::size_t end)
{
    while (word < end && next_[word] != word) {
        const std::uint32_t further = next_[word];
        if (further < end)
            next_[word] = next_[further];
        word = further;
    }
    return word;
}

/* Draws pixels of a word, which begins in that column. */
void Canvas::paint(int row, int column, Word pixels)
{
    std::uint8_t *at = tile_.at({column, row});
    left_ -= static_cast<std::size_t>(std::popcount(pixels));
    for (int start = 0; pixels;) {
        const int gap = std::countr_zero(pixels);
        const int run = std::countr_one(pixels >> gap);
        start += gap;
        std::fill_n(at + start, run, ink_);
        start += run;
        pixels = gap + run < word_bits ? pixels >> (gap + run) : 0;
    }
}

/* Requires a word that has some that have not been drawn, unless `pixels` are none. */
void Canvas::take(std::size_t word, Word pixels)
{
    free_[word] &= ~pixels;
    if (!free_[word] && pixels) {
        next_[word] = static_cast<std::uint32_t>(word + 1);
        --open_[word % words_];
    }
}

bool Canvas::is_full(int from, int end) const
{
    const int left = std::max(from, bounds().left), right = std::min(end, bounds().right);
    for (int column = left; column < right; column += word_bits - (column - bounds().left) % word_bits) {
        if (open_[static_cast<std::size_t>((column - bounds().left) / word_bits)])
            return false;
    }
    return true;
}

void Canvas::span(int row, int from, int end)
{
    const int left = std::max(from, bounds().left), right = std::min(end, bounds().right);
    if (row < bounds().top || row >= bounds().bottom || left >= right)
        return;
    const std::size_t start = word_of(row, bounds().left), first = word_of(row, left), last = word_of(row, right - 1);
    for (std::size_t word = with_free_pixels(first, last + 1); word <= last;
         word = with_free_pixels(word + 1, last + 1)) {
        Word pixels = free_[word];
        if (word == first)
            pixels &= ~Word{0} << ((left - bounds().left) % word_bits);
        if (word == last)
            pixels &= ~Word{0} >> (word_bits - 1 - (right - 1 - bounds().left) % word_bits);
        paint(row, bounds().left + static_cast<int>(word - start) * word_bits, pixels);
        take(word, pixels);
    }
}

void Canvas::line(Pixel from, Pixel to)
{
    for_each_pixel(from, to, bounds(), [this](Pixel pixel) {
        const std::size_t word = word_of(pixel.y, pixel.x);
        const Word bit = Word{1} << ((pixel.x - bounds().left) % word_bits);
        if (!(free_[word] & bit))
            return;
        *tile_.at(pixel) = ink_;
        --left_;
        take(word, bit);
    });
}

} // namespace atlas
