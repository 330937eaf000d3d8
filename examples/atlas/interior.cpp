/* SPDX-License-Identifier: MIT */
#include "interior.h"

#include <algorithm>
#include <utility>

#include "division.h"
#include "shapes.h"

namespace atlas {

constexpr std::int64_t globe = std::int64_t{360} * degree;

/* A polygon that crosses more rows than this is too intricate: nothing fits inside. */
constexpr std::int64_t most_crossings = std::int64_t{1} << 20;

/* ---- rows ---- */

/* How far below the upper edge of the map the middle of a row lies. */
static std::int64_t middle(std::int64_t row, Grid grid)
{
    return (2 * row + 1) * grid.cell * globe / (4 * grid.height);
}

/* Returns the first row whose middle does not lie above the latitude. */
static int first_row(Angle latitude, Grid grid)
{
    const std::int64_t down = std::int64_t{90} * degree - latitude;
    const std::int64_t row = down * 2 * grid.height / (globe * grid.cell);
    return static_cast<int>(middle(row, grid) < down ? row + 1 : row);
}

/* The rows that a side crosses. */
static std::pair<int, int> rows_between(Point from, Point to, Grid grid)
{
    const auto [lower, upper] = std::minmax(from.latitude, to.latitude);
    return {first_row(upper, grid), first_row(lower, grid)};
}

template <class Visit>
static void for_each_side(const Shapes &shapes, Visit visit)
{
    SL_iterator each = SL_all_items(shapes.get());
    for (void *item; SL_next_item(&each, &item);) {
        const Points &points = static_cast<const Shape *>(item)->points;
        for (std::size_t i = 0; i < points.size(); ++i)
            visit(points[i], points[i + 1 < points.size() ? i + 1 : 0]);
    }
}

void Interior::add_crossings(Point from, Point to, Grid grid, std::vector<std::vector<Angle>> &crossings) const
{
    const auto [first, end] = rows_between(from, to, grid);
    for (int row = first; row < end; ++row) {
        const std::int64_t below = middle(row, grid) - (std::int64_t{90} * degree - from.latitude);
        const std::int64_t across = std::int64_t{to.longitude} - from.longitude;
        const std::int64_t shift = across * below / (std::int64_t{from.latitude} - to.latitude);
        crossings[static_cast<std::size_t>(row - top_)].push_back(static_cast<Angle>(from.longitude + shift));
    }
}

/* Crossings come in pairs, for every shape is closed. */
Interior::Row Interior::spans(std::vector<Angle> &crossings, Grid grid)
{
    std::sort(crossings.begin(), crossings.end());
    const auto width_to = [=](Angle longitude) { return (std::int64_t{180} * degree + longitude) * grid.width; };
    Row row;
    for (std::size_t i = 1; i < crossings.size(); i += 2) {
        const std::int64_t from = ceil_divided(width_to(crossings[i - 1]), globe * grid.cell);
        const std::int64_t end = floor_divided(width_to(crossings[i]), globe * grid.cell);
        if (from < end)
            row.push_back({static_cast<int>(from), static_cast<int>(end)});
    }
    return row;
}

Interior::Interior(const Polygon &polygon, Grid grid, std::int64_t &crossings_left)
{
    const Shapes shapes(polygon);
    int top = grid.height, bottom = 0;
    std::int64_t crossed = 0;
    for_each_side(shapes, [&](Point from, Point to) {
        const auto [first, end] = rows_between(from, to, grid);
        if (first < end) {
            top = std::min(top, first);
            bottom = std::max(bottom, end);
            crossed += end - first;
        }
    });
    if (top >= bottom || crossed > std::min(crossings_left, most_crossings))
        return;
    crossings_left -= crossed;
    top_ = top;
    std::vector<std::vector<Angle>> crossings(static_cast<std::size_t>(bottom - top));
    for_each_side(shapes, [&](Point from, Point to) { add_crossings(from, to, grid, crossings); });
    for (std::vector<Angle> &each : crossings)
        rows_.push_back(spans(each, grid));
}

/* ---- boxes ---- */

/* Returns what is in both rows and not narrower than that. */
Interior::Row Interior::common(const Row &a, const Row &b, int width)
{
    Row both;
    for (auto left = a.cbegin(), right = b.cbegin(); left != a.cend() && right != b.cend();) {
        const Span span = {std::max(left->from, right->from), std::min(left->end, right->end)};
        if (span.width() >= width)
            both.push_back(span);
        ++(left->end < right->end ? left : right);
    }
    return both;
}

/* Returns the widest box of this height, if it is not narrower than that: the middle one of several.

   A window of `height` rows goes down the polygon. What its rows have in common is known for its upper part, up to every
   `height`th row, from each row on (`ends`), and grows for its lower part row by row (`begun`). So each row is looked at
   three times, however high the window is.

         first      ends[first]: the rows from `first` to the mark
         --- mark
         last       begun: the rows from the mark to `last` */
std::optional<Box> Interior::widest(int width, int height) const
{
    std::vector<Box> best;
    const std::size_t high = static_cast<std::size_t>(height);
    const int narrowest = width;
    std::vector<Row> ends(high);
    Row begun;
    for (std::size_t first = 0; first + high <= rows_.size(); ++first) {
        const std::size_t at = first % high;
        if (at == 0) {
            ends[high - 1] = common(rows_[first + high - 1], rows_[first + high - 1], narrowest);
            for (std::size_t i = high - 1; i > 0; --i)
                ends[i - 1] = common(rows_[first + i - 1], ends[i], narrowest);
        } else {
            const Row &last = rows_[first + high - 1];
            begun = common(at == 1 ? last : begun, last, narrowest);
        }
        for (const Span &span : at == 0 ? ends[0] : common(ends[at], begun, narrowest)) {
            if (span.width() > width)
                best.clear();
            width = std::max(width, span.width());
            if (span.width() == width)
                best.push_back({span.from, top_ + static_cast<int>(first), width, height});
        }
    }
    return best.empty() ? std::nullopt : std::optional(best[best.size() / 2]);
}

/* Where a higher box fits too, there is room above and below. */
std::optional<Box> Interior::place(int width, int height) const
{
    std::optional<Box> room;
    for (const int quarters : {4, 5, 6, 8, 12, 20}) {
        const std::optional<Box> higher = widest(width, height * quarters / 4);
        if (!higher)
            break;
        room = higher;
    }
    if (!room)
        return room;
    return Box{room->left + (room->width - width) / 2, room->top + (room->height - height) / 2, width, height};
}

} // namespace atlas
