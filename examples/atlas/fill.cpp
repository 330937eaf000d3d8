/* SPDX-License-Identifier: MIT */
#include "fill.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <utility>

#include "division.h"
#include "shapes.h"

namespace atlas {

constexpr std::int32_t grid = 1024;
constexpr std::int64_t globe = std::int64_t{360} * degree;

/* ---- preparing ---- */

/* How many pixel centres lie before this line of the grid. */
static int centres_before(std::int32_t line)
{
    return static_cast<int>(ceil_divided(line - grid / 2, grid));
}

void Fill::add_edge(Point from, Point to)
{
    if (from.latitude < to.latitude)
        std::swap(from, to);
    const auto right = [this](Point point) {
        return static_cast<std::int32_t>((std::int64_t{point.longitude} + 180 * degree) * map_.width * grid / globe);
    };
    const auto down = [this](Point point) {
        return static_cast<std::int32_t>((std::int64_t{90} * degree - point.latitude) * map_.height * 2 * grid / globe);
    };
    const std::int32_t x = right(from), y = down(from), end_y = down(to);
    const int first = centres_before(y), end = centres_before(end_y);
    if (first < end)
        edges_.add({x, y, right(to) - x, end_y - y, first, end, UINT32_MAX - static_cast<std::uint32_t>(inks_.size())});
}

void Fill::add(const Country &country, std::uint8_t ink)
{
    const Shapes shapes(country);
    SL_iterator each = SL_all_items(shapes.get());
    for (void *item; SL_next_item(&each, &item);) {
        const Points &points = static_cast<const Shape *>(item)->points;
        for (std::size_t i = 0; i < points.size(); ++i)
            add_edge(points[i], points[i + 1 < points.size() ? i + 1 : 0]);
    }
    inks_.push_back(ink);
}

/* ---- crossings ---- */

constexpr std::size_t word_bits = 64;

void Crossings::resize(const Rectangle &bounds)
{
    bounds_ = bounds;
    words_ = static_cast<std::size_t>(bounds.width()) / word_bits + 1;
    marks_ = words_ / word_bits + 1;
    waiting_.resize(words_);
    columns_.resize(words_ * static_cast<std::size_t>(bounds.height()));
    marked_.resize(marks_ * static_cast<std::size_t>(bounds.height()));
}

void Crossings::toggle(int row, int column)
{
    const std::size_t y = static_cast<std::size_t>(row - bounds_.top);
    const std::size_t x = static_cast<std::size_t>(column - bounds_.left), word = x / word_bits;
    columns_[y * words_ + word] ^= Word{1} << x % word_bits;
    marked_[y * marks_ + word / word_bits] |= Word{1} << word % word_bits;
}

void Crossings::toggle_word(int first, int end, int column)
{
    const std::size_t word = static_cast<std::size_t>(std::max(column - bounds_.left, 0)) / word_bits;
    if (!waiting_[word])
        waiting_words_.push_back(word);
    const auto below = [](int rows) { return rows < static_cast<int>(word_bits) ? ~Word{0} << rows : 0; };
    waiting_[word] ^= below(first - bounds_.top) & ~below(end - bounds_.top);
}

void Crossings::settle()
{
    for (const std::size_t word : waiting_words_) {
        for (Word rows = std::exchange(waiting_[word], 0); rows; rows &= rows - 1)
            toggle(bounds_.top + std::countr_zero(rows), bounds_.left + static_cast<int>(word * word_bits));
    }
    waiting_words_.clear();
}

template <class Visit>
void Crossings::take_crossings(int row, Visit visit)
{
    const std::size_t y = static_cast<std::size_t>(row - bounds_.top);
    for (std::size_t i = 0; i < marks_; ++i) {
        for (Word words = std::exchange(marked_[y * marks_ + i], 0); words; words &= words - 1) {
            const std::size_t word = i * word_bits + static_cast<std::size_t>(std::countr_zero(words));
            for (Word bits = std::exchange(columns_[y * words_ + word], 0); bits; bits &= bits - 1)
                visit(bounds_.left + static_cast<int>(word * word_bits) + std::countr_zero(bits));
        }
    }
}

/* Crossings come in pairs, for every shape is closed; the last one may be to the right of the tile. */
template <class Visit>
void Crossings::take_spans(int row, Visit visit)
{
    constexpr int none = INT_MIN;
    int from = none;
    take_crossings(row, [&](int column) {
        if (from != none)
            visit(from, column);
        from = from == none ? column : none;
    });
    if (from != none)
        visit(from, bounds_.right);
}

/* ---- filling ---- */

/* Notes how many pixel centres of each row lie to the left of the edge, but no column outside the tile: that is
   ceil(distance / (grid * down)), of which each row only carries the remainder on to the next. Distances take 51 bits. */
void Fill::cross(const Edge &edge, const Rectangle &tile)
{
    const int first = std::max(edge.first, tile.top), end = std::min(edge.end, tile.bottom);
    const std::int64_t below_start = std::int64_t{first} * grid + grid / 2 - edge.y;
    const std::int64_t distance = std::int64_t{edge.x - grid / 2} * edge.down + edge.across * below_start;
    const std::int64_t divisor = std::int64_t{grid} * edge.down, raised = distance + divisor - 1;
    std::int64_t column = floor_divided(raised, divisor), carried = raised - column * divisor;
    const std::int64_t step = floor_divided(edge.across, edge.down), rest = grid * (edge.across - step * edge.down);
    for (int row = first; row < end; ++row) {
        crossings_.toggle(row, static_cast<int>(std::clamp<std::int64_t>(column, tile.left, tile.right)));
        carried += rest;
        column += step + (carried >= divisor);
        carried -= carried >= divisor ? divisor : 0;
    }
}

/* Where everything around the edge has been drawn, its crossings may lie anywhere there: that saves a look at each of them.
   Returns whether that is so. The columns are some more than the edge needs, for the division is rounded. */
bool Fill::cross_hidden(const Edge &edge, const Canvas &canvas)
{
    const Rectangle &tile = canvas.bounds();
    if (tile.height() > static_cast<int>(word_bits))
        return false;
    const int first = std::max(edge.first, tile.top), end = std::min(edge.end, tile.bottom);
    const double slope = static_cast<double>(edge.across) / edge.down;
    const auto column = [&](int row) {
        return static_cast<int>((edge.x + slope * (static_cast<double>(row) * grid - edge.y)) / grid);
    };
    const auto [left, right] = std::minmax({column(first), column(end)});
    if (!canvas.is_full(left - 2, right + 3))
        return false;
    if (left - 2 < tile.right)
        crossings_.toggle_word(first, end, left - 2);
    return true;
}

/* From the top: what lies below others draws the rest. */
void Fill::draw(Canvas &canvas)
{
    const Rectangle &tile = canvas.bounds();
    crossings_.resize(tile);
    edges_.visit_layers(tile.top, tile.bottom, [&](const auto &layer) {
        const PenInHand pen(canvas, inks_[UINT32_MAX - layer.number()]);
        int top = tile.bottom, bottom = tile.top;
        layer.for_each([&](const Edge &edge) {
            if (!cross_hidden(edge, canvas))
                cross(edge, tile);
            top = std::min(top, std::max(edge.first, tile.top));
            bottom = std::max(bottom, std::min(edge.end, tile.bottom));
        });
        crossings_.settle();
        for (int row = top; row < bottom; ++row)
            crossings_.take_spans(row, [&](int from, int end) { canvas.span(row, from, end); });
        return !canvas.is_full();
    });
}

} // namespace atlas
