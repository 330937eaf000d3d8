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
        for (std::int32_t i = 0; i < points.count(); ++i)
            visit(points[i], points[GB_advance(points.get(), i, 1)]);
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

Interior::Interior(const Polygon &polygon, Grid grid)
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
    if (top >= bottom || crossed > most_crossings)
        return;
    top_ = top;
    std::vector<std::vector<Angle>> crossings(static_cast<std::size_t>(bottom - top));
    for_each_side(shapes, [&](Point from, Point to) { add_crossings(from, to, grid, crossings); });
    for (std::vector<Angle> &each : crossings)
        rows_.push_back(spans(each, grid));
}

/* ---- boxes ---- */

/* Keeps of `row` what is also in `other` and not narrower than that. */
void Interior::narrow(Row &row, const Row &other, int width)
{
    Row both;
    for (auto left = row.cbegin(), right = other.cbegin(); left != row.cend() && right != other.cend();) {
        const Span span = {std::max(left->from, right->from), std::min(left->end, right->end)};
        if (span.width() >= width)
            both.push_back(span);
        (left->end < right->end ? left : right)++;
    }
    row = std::move(both);
}

/* Returns the widest box of this height, if it is not narrower than that: the middle one of several. */
std::optional<Box> Interior::widest(int width, int height) const
{
    std::vector<Box> best;
    for (int first = 0; first + height <= static_cast<int>(rows_.size()); ++first) {
        Row inside = rows_[static_cast<std::size_t>(first)];
        for (int row = first + 1; row < first + height && !inside.empty(); ++row)
            narrow(inside, rows_[static_cast<std::size_t>(row)], width);
        for (const Span &span : inside) {
            if (span.width() > width)
                best.clear();
            width = std::max(width, span.width());
            if (span.width() == width)
                best.push_back({span.from, top_ + first, width, height});
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
