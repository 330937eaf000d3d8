#include "fill.h"

#include <algorithm>
#include <utility>

#include "division.h"
#include "shapes.h"

namespace atlas {

constexpr std::int64_t grid = 1024;
constexpr std::int64_t globe = std::int64_t{360} * degree;

/* How many pixel centres lie before this line of the grid. */
static int centres_before(std::int64_t line)
{
    return static_cast<int>(ceil_divided(line - grid / 2, grid));
}

/* Returns how many pixel centres of the row lie to the left of the edge: a whole number, which a double holds exactly.
   The sum takes 51 bits at most. */
double Filler::Edge::column(int row) const
{
    const std::int64_t below_start = row * grid + grid / 2 - y;
    const std::int64_t from_first_centre = (x - grid / 2) * down + across * below_start;
    return static_cast<double>(ceil_divided(from_first_centre, grid * down));
}

Filler::~Filler()
{
    SL_total_release(&active_, [](void **) {}); /* the edges are not the list's */
    DBLL_release(&crossings_);
}

void Filler::add_edge(Point from, Point to)
{
    if (from.latitude < to.latitude)
        std::swap(from, to);
    const auto right = [this](Point point) {
        return (std::int64_t{point.longitude} + 180 * degree) * canvas_.width() * grid / globe;
    };
    const auto down = [this](Point point) {
        return (std::int64_t{90} * degree - point.latitude) * canvas_.height() * 2 * grid / globe;
    };
    const std::int64_t x = right(from), y = down(from), end_y = down(to);
    const int first_row = centres_before(y), end_row = centres_before(end_y);
    if (first_row < end_row)
        edges_.push_back({nullptr, nullptr, x, y, right(to) - x, end_y - y, first_row, end_row});
}

void Filler::collect_edges(const Country &country)
{
    edges_.clear();
    const Shapes shapes(country);
    SL_iterator each = SL_all_items(shapes.get());
    for (void *item; SL_next_item(&each, &item);) {
        const Points &points = static_cast<const Shape *>(item)->points;
        for (std::int32_t i = 0; i < points.count(); ++i)
            add_edge(points[i], points[GB_advance(points.get(), i, 1)]);
    }
}

/* Notes where the scanline crosses the active edges, and drops those that end above the next one. */
void Filler::cross(int row)
{
    SL_iterator active = SL_all_items(active_);
    for (void *item; SL_next_item(&active, &item);) {
        const Edge *edge = static_cast<const Edge *>(item);
        DBLL_add_double(crossings_, edge->column(row));
        if (edge->end_row == row + 1)
            SL_remove_item(active_, item);
    }
}

/* Crossings come in pairs, for every shape is closed. */
void Filler::fill_row(int row)
{
    DBLL_sort(crossings_);
    EL_iterator values = DBLL_all_doubles(crossings_);
    for (double from, end; DBLL_next_double(&values, &from) && DBLL_next_double(&values, &end);)
        canvas_.span(row, static_cast<int>(from), static_cast<int>(end));
    DBLL_make_empty(crossings_);
}

void Filler::fill(const Country &country, const std::function<void()> &after_row)
{
    collect_edges(country);
    std::sort(edges_.begin(), edges_.end(), [](const Edge &a, const Edge &b) { return a.first_row < b.first_row; });
    auto waiting = edges_.begin();
    for (int row = 0; waiting != edges_.end() || SL_count_items(active_) > 0; ++row) {
        if (SL_count_items(active_) == 0)
            row = waiting->first_row;
        for (; waiting != edges_.end() && waiting->first_row == row; ++waiting)
            SL_append_after_last(active_, &*waiting);
        cross(row);
        fill_row(row);
        after_row();
    }
}

} // namespace atlas
