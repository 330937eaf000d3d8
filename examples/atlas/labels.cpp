/* SPDX-License-Identifier: MIT */
#include "labels.h"

#include <algorithm>
#include <utility>

#include "shapes.h"

namespace atlas {

/* A polygon that crosses more rows than this is too intricate: nothing fits inside. */
constexpr std::int64_t most_crossings = std::int64_t{1} << 20;

/* ---- rows ---- */

/* How far below the upper edge of the map the middle of a row lies. */
static std::int64_t middle(std::int64_t row, Grid grid)
{
    return (2 * row + 1) * grid.cell * globe / (4 * grid.height);
}

/* Returns the first row whose middle does not lie above this level. */
static int first_row(std::int64_t level, Grid grid)
{
    const std::int64_t row = level * 2 * grid.height / (globe * grid.cell);
    return static_cast<int>(middle(row, grid) < level ? row + 1 : row);
}

/* Crossings come in pairs, for every shape is closed. */
Interior::Row Interior::spans(std::vector<Angle> &crossings, Grid grid)
{
    std::sort(crossings.begin(), crossings.end());
    Row row;
    for (std::size_t i = 1; i < crossings.size(); i += 2) {
        const auto column = [=](Angle right) { return std::int64_t{right} * grid.width; };
        const std::int64_t from = ceil_divided(column(crossings[i - 1]), globe * grid.cell);
        const std::int64_t end = floor_divided(column(crossings[i]), globe * grid.cell);
        if (from < end)
            row.push_back({static_cast<int>(from), static_cast<int>(end)});
    }
    return row;
}

/* Calls `visit` with each side, in angles to the right of -180° and below 90°, and the rows that it crosses. */
template <class Visit>
static void for_each_crossed(const Shapes &shapes, Grid grid, Visit visit)
{
    const auto place = [](Point point) {
        return Pixel{static_cast<int>(point.longitude + globe / 2), static_cast<int>(globe / 4 - point.latitude)};
    };
    for_each_side(shapes, [&](Point from, Point to) {
        const auto [lower, upper] = std::minmax(from.latitude, to.latitude);
        const int first = first_row(globe / 4 - upper, grid), end = first_row(globe / 4 - lower, grid);
        if (first < end)
            visit(Side{place(from), place(to)}, first, end);
    });
}

Interior::Interior(const Polygon &polygon, Grid grid, std::int64_t &crossings_left)
{
    const Shapes shapes = shapes_of(polygon);
    int top = grid.height, bottom = 0;
    std::int64_t crossed = 0;
    for_each_crossed(shapes, grid, [&](const Side &, int first, int end) {
        top = std::min(top, first);
        bottom = std::max(bottom, end);
        crossed += end - first;
    });
    if (crossed == 0 || crossed > std::min(crossings_left, most_crossings))
        return;
    crossings_left -= crossed;
    top_ = top;
    std::vector<std::vector<Angle>> crossings(static_cast<std::size_t>(bottom - top));
    for_each_crossed(shapes, grid, [&](const Side &side, int first, int end) {
        for (int row = first; row < end; ++row) {
            const std::int64_t right = side.from.x + side.shift(middle(row, grid)) / side.down();
            crossings[static_cast<std::size_t>(row - top)].push_back(static_cast<Angle>(right));
        }
    });
    for (std::vector<Angle> &each : crossings)
        rows_.push_back(spans(each, grid));
}

/* ---- boxes ---- */

/* Returns what is in both rows and not narrower than that. */
Interior::Row Interior::common(const Row &a, const Row &b, int width)
{
    Row both;
    for (auto left = a.cbegin(), right = b.cbegin(); left != a.cend() && right != b.cend();) {
        const Columns both_in = {std::max(left->from, right->from), std::min(left->end, right->end)};
        if (both_in.end - both_in.from >= width)
            both.push_back(both_in);
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
        for (const Columns &span : at == 0 ? ends[0] : common(ends[at], begun, narrowest)) {
            if ((span.end - span.from) > width)
                best.clear();
            width = std::max(width, (span.end - span.from));
            if ((span.end - span.from) == width)
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

/* In dots. */
constexpr int glyph_pitch = glyph_width + 1;
constexpr int line_pitch = glyph_height + 2;
constexpr int margin = 1;

constexpr int largest_dot = 3;
constexpr int most_lines = 3;

/* How many rows of cells the sides of all countries that have a name may cross. The largest countries are tried first. */
constexpr std::int64_t all_crossings = std::int64_t{1} << 22;

/* In cells: how far labels keep apart. */
constexpr int gap = 3;

/* A map about as wide as this has cells of one pixel, one n times as wide has cells of n pixels. */
constexpr int width_per_cell_pixel = 4096;

/* ---- lines ---- */

template <class Visit>
static void for_each_line(std::string_view text, Visit visit)
{
    for (std::size_t start = 0, end = 0; end != std::string_view::npos; start = end + 1) {
        end = text.find('\n', start);
        visit(text.substr(start, end - start));
    }
}

static int columns(std::string_view text)
{
    std::size_t longest = 0;
    for_each_line(text, [&](std::string_view line) { longest = std::max(longest, line.size()); });
    return static_cast<int>(longest);
}

static int lines(std::string_view text)
{
    return 1 + static_cast<int>(std::count(text.begin(), text.end(), '\n'));
}

/* Returns the text with line ends for blanks, so that no line is longer than that unless it is one word. */
static std::string wrapped(std::string text, std::size_t longest)
{
    std::size_t start = 0, blank = std::string::npos;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && text[i] != ' ')
            continue;
        if (i - start > longest && blank != std::string::npos) {
            text[blank] = '\n';
            start = blank + 1;
        }
        blank = i;
    }
    return text;
}

/* Returns the text in at most that many lines, which are as even as words allow. */
static std::string in_lines(const std::string &text, int most)
{
    for (std::size_t longest = 1;; ++longest) {
        std::string result = wrapped(text, longest);
        if (lines(result) <= most)
            return result;
    }
}

/* ---- candidates ---- */

static std::optional<Box> place(const Interior &interior, const std::string &text, int dot)
{
    const int width = columns(text) * glyph_pitch - 1, height = lines(text) * line_pitch - (line_pitch - glyph_height);
    return interior.place((width + 2 * margin) * dot, (height + 2 * margin) * dot);
}

static std::unique_ptr<Label> candidate(const Summary &summary, Grid grid, std::int64_t &crossings_left)
{
    const std::string name = as_glyphs(std::string_view(summary.country->name).substr(0, 4 * longest_label + 4));
    if (!summary.largest || name.empty() || name.size() > longest_label)
        return nullptr;
    const Interior interior(*summary.largest, grid, crossings_left);
    for (int dot = largest_dot; dot > 0; --dot) {
        for (int most = 1; most <= most_lines; ++most) {
            const std::string text = in_lines(name, most);
            if (const std::optional<Box> box = place(interior, text, dot))
                return std::make_unique<Label>(Label{text, *box, dot, summary});
        }
    }
    return nullptr;
}

/* ---- collisions ---- */

/* The cells that labels take in a row of the grid. No two of them overlap in the tree, so that in order of rows and
   columns they are in order; what overlaps one of them compares equal to it. */
struct Stripe {
    int row, from, end;
};

struct ByPlace {
    int operator()(const Stripe &a, const Stripe &b) const
    {
        if (a.row != b.row)
            return a.row < b.row ? -1 : 1;
        return a.end <= b.from ? -1 : a.from >= b.end;
    }
};

/* Removes each label that comes too close to one before it. */
void Labels::remove_collisions()
{
    mova::balanced_set<Stripe, ByPlace, mova::host_delete> taken;
    for (const auto at : positions()) {
        const Box &box = at->box;
        std::vector<Stripe> stripes;
        for (int row = box.top; row < box.top + box.height + gap; ++row)
            stripes.push_back({row, box.left, box.left + box.width + gap});
        if (std::any_of(stripes.begin(), stripes.end(), [&](const Stripe &each) { return taken.contains(each); }))
            remove(at);
        else
            std::for_each(stripes.begin(), stripes.end(),
                          [&](const Stripe &each) { taken.insert(mova::make_item<Stripe>(each)); });
    }
}

Labels::Labels(const Topology &topology, Size map, const Progress &progress)
    : grid_{map.width, map.height, std::max(1, (map.width + width_per_cell_pixel / 2) / width_per_cell_pixel)}
{
    std::size_t done = 0;
    std::int64_t crossings_left = all_crossings;
    for (const Summary &summary : index_by_area(topology)) {
        if (std::unique_ptr<Label> label = candidate(summary, grid_, crossings_left))
            insert(std::move(label));
        progress("labelling", ++done, topology.countries.size());
    }
    remove_collisions();
}

/* ---- drawing ---- */

static void draw_glyph(Canvas &canvas, char glyph, int left, int top, int dot)
{
    for (int row = 0; row < glyph_height; ++row) {
        for (int column = 0; column < glyph_width; ++column) {
            if (has_dot(glyph, column, row))
                canvas.span(canvas.rows(top + row * dot, top + (row + 1) * dot), left + column * dot,
                            left + (column + 1) * dot);
        }
    }
}

static void draw_label(Canvas &canvas, const Label &label, int cell)
{
    const Box &box = label.box;
    const Pixel first = {box.left * cell, box.top * cell};
    if (!canvas.bounds().meets({first.x, first.y, first.x + box.width * cell, first.y + box.height * cell}))
        return;
    const int dot = label.dot * cell;
    int top = label.box.top * cell + margin * dot;
    for_each_line(label.text, [&](std::string_view line) {
        const int width = (static_cast<int>(line.size()) * glyph_pitch - 1) * dot;
        int left = label.box.left * cell + (label.box.width * cell - width) / 2;
        for (const char glyph : line) {
            draw_glyph(canvas, glyph, left, top, dot);
            left += glyph_pitch * dot;
        }
        top += line_pitch * dot;
    });
}

void Labels::draw(Canvas &canvas) const
{
    for (const Label &label : *this)
        draw_label(canvas, label, grid_.cell);
}

} // namespace atlas
