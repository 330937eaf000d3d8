#include "fill.h"

#include <algorithm>
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

void Region::add_edge(Point from, Point to, Size map)
{
    if (from.latitude < to.latitude)
        std::swap(from, to);
    const auto right = [map](Point point) {
        return static_cast<std::int32_t>((std::int64_t{point.longitude} + 180 * degree) * map.width * grid / globe);
    };
    const auto down = [map](Point point) {
        return static_cast<std::int32_t>((std::int64_t{90} * degree - point.latitude) * map.height * 2 * grid / globe);
    };
    const std::int32_t x = right(from), end_x = right(to), y = down(from), end_y = down(to);
    const Rectangle bounds = {centres_before(std::min(x, end_x)), centres_before(y), centres_before(std::max(x, end_x)),
                              centres_before(end_y)};
    if (bounds.top >= bounds.bottom)
        return;
    tallest_ = std::max(tallest_, bounds.height());
    bounds_ = edges_.empty() ? bounds : rectangle_around(bounds_, bounds);
    edges_.push_back({nullptr, nullptr, x, y, end_x - x, end_y - y, bounds.top, bounds.bottom});
}

Region::Region(const Country &country, Size map)
{
    const Shapes shapes(country);
    SL_iterator each = SL_all_items(shapes.get());
    for (void *item; SL_next_item(&each, &item);) {
        const Points &points = static_cast<const Shape *>(item)->points;
        for (std::int32_t i = 0; i < points.count(); ++i)
            add_edge(points[i], points[GB_advance(points.get(), i, 1)], map);
    }
    std::sort(edges_.begin(), edges_.end(), [](const Edge &a, const Edge &b) { return a.first_row < b.first_row; });
}

/* ---- filling ---- */

/* Whether every pixel of the tile lies on one side of the edge, as far as the edge's ends tell. */
bool Region::Edge::is_left_of(const Rectangle &tile) const
{
    return std::max(x, x + across) <= tile.left * grid;
}

bool Region::Edge::is_right_of(const Rectangle &tile) const
{
    return std::min(x, x + across) >= tile.right * grid;
}

/* Returns how many pixel centres of the row lie to the left of the edge, but no column outside the tile: a whole number,
   which a double holds exactly. The sum takes 51 bits at most. */
double Region::Edge::column(int row, const Rectangle &tile) const
{
    const std::int64_t below_start = std::int64_t{row} * grid + grid / 2 - y;
    const std::int64_t from_first_centre = std::int64_t{x - grid / 2} * down + across * below_start;
    const std::int64_t centres = ceil_divided(from_first_centre, std::int64_t{grid} * down);
    return static_cast<double>(std::clamp<std::int64_t>(centres, tile.left, tile.right));
}

/* The edges are not the list's. */
static void leave(void **)
{
}

Filler::~Filler()
{
    SL_total_release(&active_, leave);
    DBLL_release(&crossings_);
}

/* Notes where the scanline crosses the active edges, and drops those that end above the next one. The crossings to the
   left of the tile only say whether the tile begins inside. */
void Filler::cross(int row, const Rectangle &tile)
{
    bool begins_inside = false;
    SL_iterator active = SL_all_items(active_);
    for (void *item; SL_next_item(&active, &item);) {
        const Region::Edge *edge = static_cast<const Region::Edge *>(item);
        if (edge->is_left_of(tile))
            begins_inside = !begins_inside;
        else
            DBLL_add_double(crossings_, edge->column(row, tile));
        if (edge->end_row == row + 1)
            SL_remove_item(active_, item);
    }
    if (begins_inside)
        DBLL_add_double(crossings_, tile.left);
}

/* Crossings come in pairs, for every shape is closed; the last one may be to the right of the tile. */
void Filler::fill_row(Canvas &canvas, int row)
{
    DBLL_sort(crossings_);
    EL_iterator values = DBLL_all_doubles(crossings_);
    for (double from; DBLL_next_double(&values, &from);) {
        double end = canvas.bounds().right;
        DBLL_next_double(&values, &end);
        canvas.span(row, static_cast<int>(from), static_cast<int>(end));
    }
    DBLL_make_empty(crossings_);
}

void Filler::fill(Canvas &canvas, Region &region)
{
    const Rectangle &tile = canvas.bounds();
    const int end = std::min(tile.bottom, region.bounds_.bottom);
    /* For sure: so far above the tile even the tallest edge ends. */
    const auto ends_above = [&](const Region::Edge &edge) { return edge.first_row + region.tallest_ <= tile.top; };
    auto waiting = std::partition_point(region.edges_.begin(), region.edges_.end(), ends_above);
    for (int row = std::max(tile.top, region.bounds_.top); row < end; ++row) {
        for (; waiting != region.edges_.end() && waiting->first_row <= row; ++waiting) {
            if (waiting->end_row > row && !waiting->is_right_of(tile))
                SL_append_after_last(active_, &*waiting);
        }
        cross(row, tile);
        fill_row(canvas, row);
    }
    SL_make_empty(active_, leave);
}

} // namespace atlas
