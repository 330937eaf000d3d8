/* SPDX-License-Identifier: MIT */
#include "draw.h"

#include <bit>
#include <cstdlib>

#include "colours.h"
#include "shapes.h"

namespace atlas {

/* ---- crossings ---- */

void Crossings::resize(const Rectangle &bounds)
{
    bounds_ = bounds;
    rows_.resize(static_cast<std::size_t>(bounds.width()) + 1);
    columns_.resize(rows_.size() / word_bits + 1);
}

void Crossings::toggle(int column, Canvas::Rows rows)
{
    const auto at = static_cast<std::size_t>(std::clamp(column, bounds_.left, bounds_.right) - bounds_.left);
    const std::size_t word = at / word_bits;
    rows_[at] ^= rows;
    columns_[word] |= std::uint64_t{1} << at % word_bits;
    first_ = std::min(first_, word);
    last_ = std::max(last_, word);
}

/* Crossings come in pairs, for every shape is closed: to the right of the last one nothing is inside. */
template <class Visit>
void Crossings::take_spans(Visit visit)
{
    Canvas::Rows inside = 0;
    int from = bounds_.left;
    for (std::size_t word = std::exchange(first_, SIZE_MAX); word <= last_; ++word) {
        for (std::uint64_t bits = std::exchange(columns_[word], 0); bits; bits &= bits - 1) {
            const std::size_t at = word * word_bits + static_cast<std::size_t>(std::countr_zero(bits));
            const int column = bounds_.left + static_cast<int>(at);
            if (inside)
                visit(inside, from, column);
            inside ^= std::exchange(rows_[at], 0);
            from = column;
        }
    }
    last_ = 0;
}

/* ---- countries ---- */

void Fill::add(const Country &country, std::uint8_t ink)
{
    const auto layer = UINT32_MAX - static_cast<std::uint32_t>(inks_.size());
    for_each_side(shapes_of(country), [&](Point from, Point to) {
        if (from.latitude < to.latitude)
            std::swap(from, to);
        const Edge edge = {{on_grid(from, map_, lines), on_grid(to, map_, lines)}, layer};
        if (edge.first_row() < edge.end_row())
            edges_.add(edge);
    });
    inks_.push_back(ink);
}

/* Where everything around the edge has been drawn, it may cross all of its rows in any column there: that saves a look at each
   of them. */
void Fill::cross(const Edge &edge, Canvas &canvas)
{
    const int first = std::max(edge.first_row(), canvas.bounds().top);
    const int end = std::min(edge.end_row(), canvas.bounds().bottom);
    const Columns near = columns_between<lines>(edge.side, first * lines, end * lines);
    if (canvas.is_full(near.from, near.end))
        return crossings_.toggle(near.from, canvas.rows(first, end));
    const int column = edge.column(first);
    if (edge.column(end - 1) == column)
        return crossings_.toggle(column, canvas.rows(first, end));
    for (int row = first; row < end; ++row)
        crossings_.toggle(edge.column(row), canvas.rows(row, row + 1));
}

/* From the top: what lies below others draws the rest. */
std::size_t Fill::draw(Canvas &canvas)
{
    crossings_.resize(canvas.bounds());
    return edges_.visit_layers(canvas, [&](std::uint32_t layer, const auto &for_each) {
        const PenInHand pen(canvas, inks_[UINT32_MAX - layer]);
        for_each([&](const Edge &edge) { cross(edge, canvas); });
        crossings_.take_spans([&](Canvas::Rows rows, int from, int end) { canvas.span(rows, from, end); });
    });
}

/* ---- outlines ---- */

enum : std::uint32_t { coasts, borders };

/* Files cut polygons where the map ends, at 180° and at the poles. Such a cut is no coast. */
static bool is_cut(Point from, Point to)
{
    const Angle slack = degree / 64;
    const auto beyond = [=](Angle a, Angle b, Angle edge) {
        return std::min(a, b) >= edge - slack || std::max(a, b) <= -edge + slack;
    };
    return beyond(from.longitude, to.longitude, 180 * degree) || beyond(from.latitude, to.latitude, 90 * degree);
}

/* Goes the shorter way round the globe. What then leaves the map on one side comes in again on the other. */
void Outlines::add_segment(Point from, Point to, Size map, std::uint32_t layer)
{
    if (is_cut(from, to))
        return;
    const Pixel start = project(from, map), end = project(to, map);
    if (goes_straight(from, to))
        return lines_.add({start, end, layer});
    const int turn = to.longitude > from.longitude ? map.width : -map.width;
    lines_.add({start, {end.x - turn, end.y}, layer});
    lines_.add({{start.x + turn, start.y}, end, layer});
}

Outlines::Outlines(const Topology &topology, Size map)
{
    for (const Arc *arc : topology.arcs) {
        const Points &points = arc->points;
        for (std::size_t i = 1; arc->use != ArcUse::none && i < points.size(); ++i)
            add_segment(points[i - 1], points[i], map, arc->use == ArcUse::border ? borders : coasts);
    }
    lines_.sort();
}

std::size_t Outlines::draw(Canvas &canvas)
{
    return lines_.visit_layers(canvas, [&](std::uint32_t layer, const auto &for_each) {
        const PenInHand pen(canvas, layer == coasts ? inks().coast : inks().border);
        for_each([&](const Line &line) { canvas.line(line.from, line.to); });
    });
}

/* ---- the map ---- */

/* The frame is where the map ends, short of the poles or at them, and the equator and the prime meridian. */
static void draw_graticule(Canvas &canvas, Size map)
{
    const auto draw = [&](int longitude, int latitude) {
        Pixel crossing = project({longitude * degree, latitude * degree}, map);
        crossing.y = std::clamp(crossing.y, 0, map.height - 1);
        canvas.line({crossing.x, 0}, {crossing.x, map.height - 1});
        canvas.line({0, crossing.y}, {map.width - 1, crossing.y});
    };
    {
        const PenInHand frame(canvas, inks().frame);
        for (const int side : {-1, 0, 1})
            draw(side * 180, side * 90);
    }
    const PenInHand pen(canvas, inks().graticule);
    for (int angle = -150; angle <= 150; angle += 30)
        draw(angle, std::clamp(angle, -60, 60));
}

Drawing::Drawing(const Topology &topology, Size map, const Progress &progress)
    : size_(map), fill_(size_), outlines_(topology, size_), labels_(topology, size_, progress)
{
    const Tints tints = choose_tints(topology);
    std::size_t done = 0;
    for (const Country *country : topology.countries) {
        progress("preparing", done++, topology.countries.size());
        fill_.add(*country, inks().land[static_cast<std::size_t>(tints.find(country))]);
    }
    fill_.sort();
}

/* From what lies on top to what lies below. */
void Drawing::draw_band(int top)
{
    const Rectangle bounds = {0, top, size_.width, std::min(top + Canvas::most_rows, size_.height)};
    pixels_.resize(bounds.pixels());
    band_ = {bounds, pixels_.data()};
    Canvas canvas(band_);
    {
        const PenInHand pen(canvas, inks().text);
        steps_ += labels_.draw(canvas);
    }
    steps_ += outlines_.draw(canvas);
    steps_ += fill_.draw(canvas);
    draw_graticule(canvas, size_);
    const PenInHand pen(canvas, inks().sea);
    canvas.span(canvas.rows(bounds.top, bounds.bottom), 0, size_.width);
    steps_ += canvas.steps();
}

void Drawing::draw(const Tile &tile)
{
    for (int row = tile.bounds.top; row < tile.bounds.bottom; ++row) {
        if (row < band_.bounds.top || row >= band_.bounds.bottom)
            draw_band(row - row % Canvas::most_rows);
        std::copy_n(band_.at({tile.bounds.left, row}), tile.bounds.width(), tile.at({tile.bounds.left, row}));
    }
}

} // namespace atlas
