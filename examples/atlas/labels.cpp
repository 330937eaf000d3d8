/* SPDX-License-Identifier: MIT */
#include "labels.h"

#include <optional>
#include <utility>

#include "shapes.h"

namespace atlas {

/* A map about as wide as this has cells of one pixel, one n times as wide has cells of n pixels. A picture is looked at as a whole:
   on a large one names are large. Of a pyramid's level a part is seen: there is room for more names. */
constexpr int width_per_cell_pixel = 4096, width_per_cell_pixel_in_parts = 32768;

static int cell_of(Size map)
{
    const int width = is_mercator(map) ? width_per_cell_pixel_in_parts : width_per_cell_pixel;
    return std::max(1, (map.width + width / 2) / width);
}

/* A polygon whose sides cross more rows of cells than this is too intricate for a name; and all that are tried may cross so
   many together. The largest countries are tried first. */
constexpr std::int64_t most_crossings = std::int64_t{1} << 20, all_crossings = 4 * most_crossings;

/* In dots. */
constexpr int glyph_pitch = glyph_width + 1, line_pitch = glyph_height + 2, margin = 1;

constexpr int largest_dot = 3, most_lines = 3;
constexpr std::size_t longest_label = 40;

/* In cells: how far labels keep apart. */
constexpr int gap = 3;

/* ---- rows of cells ---- */

/* The cells of a polygon in one row, from the left. A cell is inside where both its sides are, on the line through its
   middle. */
using Row = std::vector<Columns>;

struct Interior {
    int top = 0; /* the first row */
    std::vector<Row> rows;
};

/* How far below the upper edge of the map the middle of a row lies. */
static int middle(std::int64_t row, Grid grid)
{
    return static_cast<int>((2 * row + 1) * grid.cell * globe / (4 * grid.map.height));
}

/* Returns the first row whose middle does not lie above this level. */
static int first_row(std::int64_t level, Grid grid)
{
    const auto row = static_cast<int>(level * 2 * grid.map.height / (globe * grid.cell));
    return middle(row, grid) < level ? row + 1 : row;
}

/* Takes the rows that the polygon's sides cross off `crossings_left`. Where there are too many, nothing is inside. */
static Interior interior_of(const Polygon &polygon, Grid grid, std::int64_t &crossings_left)
{
    const auto place = [map = grid.map](Point point) {
        return Pixel{static_cast<int>(point.longitude + globe / 2), static_cast<int>(below_edge(point.latitude, map))};
    };
    /* Calls `visit` with each side, the first row of the map that it crosses, and the one behind the last. */
    const auto row_at = [&](int level) { return first_row(std::clamp<std::int64_t>(level, 0, globe / 2), grid); };
    const auto visit_sides = [&, shapes = shapes_of(polygon)](auto visit) {
        for_each_side(shapes, [&](Point from, Point to) {
            if (from.latitude < to.latitude)
                std::swap(from, to);
            const Side side = {place(from), place(to)};
            visit(side, row_at(side.from.y), row_at(side.to.y));
        });
    };
    std::int64_t crossed = 0;
    visit_sides([&](const Side &, int first, int end) { crossed += end - first; });
    if (crossed == 0 || crossed > std::min(crossings_left, most_crossings))
        return {};
    crossings_left -= crossed;

    std::vector<std::pair<int, int>> crossings; /* a row, and how far to the right */
    visit_sides([&](const Side &side, int first, int end) {
        for (int row = first; row < end; ++row)
            crossings.emplace_back(row, side.crossing(middle(row, grid)));
    });
    std::sort(crossings.begin(), crossings.end());
    /* They come in pairs, for every shape is closed. */
    const auto column = [=](int right) { return std::int64_t{right} * grid.map.width; };
    Interior interior = {crossings.front().first, {}};
    interior.rows.resize(static_cast<std::size_t>(crossings.back().first - interior.top + 1));
    for (std::size_t i = 1; i < crossings.size(); i += 2) {
        const auto [row, right] = crossings[i];
        const Columns inside = {static_cast<int>(ceil_divided(column(crossings[i - 1].second), globe * grid.cell)),
                                static_cast<int>(floor_divided(column(right), globe * grid.cell))};
        if (inside.width() > 0)
            interior.rows[static_cast<std::size_t>(row - interior.top)].push_back(inside);
    }
    return interior;
}

/* ---- boxes ---- */

/* Returns what is in both rows and not narrower than that. */
static Row common(const Row &a, const Row &b, int width)
{
    Row both;
    for (auto left = a.cbegin(), right = b.cbegin(); left != a.cend() && right != b.cend();) {
        const Columns both_in = {std::max(left->from, right->from), std::min(left->end, right->end)};
        if (both_in.width() >= width)
            both.push_back(both_in);
        ++(left->end < right->end ? left : right);
    }
    return both;
}

/* Makes runs of rows longer. A run stands for what all of its rows have in common, as far as that is not narrower than `width`;
   it becomes longer by the one that begins `step` rows below it, which may overlap. */
static void lengthen(std::vector<Row> &runs, std::size_t step, int width)
{
    const std::size_t left = runs.size() - std::min(step, runs.size());
    for (std::size_t i = 0; i < left; ++i)
        runs[i] = common(runs[i], runs[i + step], width);
    runs.resize(left);
}

/* Returns the widest box in such runs, whose height is theirs: the middle one of several. */
static std::optional<Box> widest(const std::vector<Row> &runs, int top, int height)
{
    std::vector<Box> best;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        for (const Columns &span : runs[i]) {
            if (!best.empty() && span.width() > best.front().width)
                best.clear();
            if (best.empty() || span.width() == best.front().width)
                best.push_back({span.from, top + static_cast<int>(i), span.width(), height});
        }
    }
    return best.empty() ? std::nullopt : std::optional(best[best.size() / 2]);
}

/* Returns a box of this size that lies inside, with as much room around it as there is, or nothing. Where a higher box fits
   too, there is room above and below. */
static std::optional<Box> place(const Interior &interior, int width, int height)
{
    std::optional<Box> room;
    std::vector<Row> runs = interior.rows;
    int length = 1;
    for (const int quarters : {4, 5, 6, 8, 12, 20}) {
        for (const int higher = height * quarters / 4; length < higher;) {
            const int step = std::min(length, higher - length);
            lengthen(runs, static_cast<std::size_t>(step), width);
            length += step;
        }
        const std::optional<Box> found = widest(runs, interior.top, length);
        if (!found)
            break;
        room = found;
    }
    if (!room)
        return room;
    return Box{room->left + (room->width - width) / 2, room->top + (room->height - height) / 2, width, height};
}

/* ---- lines ---- */

template <class Visit>
static void for_each_line(std::string_view text, Visit visit)
{
    for (std::size_t start = 0, end = 0; end != std::string_view::npos; start = end + 1) {
        end = text.find('\n', start);
        visit(text.substr(start, end - start));
    }
}

/* How many lines the text has, and the columns of the longest one. */
static Size size_of(std::string_view text)
{
    Size size = {0, 0};
    for_each_line(text, [&](std::string_view line) {
        size = {std::max(size.width, static_cast<int>(line.size())), size.height + 1};
    });
    return size;
}

/* Returns the text with line ends for blanks, so that no line is longer than that unless it is one word. */
static std::string wrapped(std::string text, std::size_t longest)
{
    for (std::size_t start = 0; text.size() - start > longest; ++start) {
        const std::size_t last = text.rfind(' ', start + longest);
        start = last < start || last == text.npos ? text.find(' ', start) : last;
        if (start == text.npos)
            break;
        text[start] = '\n';
    }
    return text;
}

/* Returns the text in at most that many lines, which are as even as words allow. */
static std::string in_lines(const std::string &text, int most)
{
    std::size_t longest = 1;
    while (size_of(wrapped(text, longest)).height > most)
        ++longest;
    return wrapped(text, longest);
}

/* ---- labels ---- */

static std::unique_ptr<Label> candidate(const Summary &summary, Grid grid, std::int64_t &crossings_left)
{
    const std::string name = as_glyphs(std::string_view(summary.country->name).substr(0, 4 * longest_label + 4));
    if (!summary.largest || name.empty() || name.size() > longest_label)
        return nullptr;
    const Interior interior = interior_of(*summary.largest, grid, crossings_left);
    for (int dot = largest_dot; dot > 0; --dot) {
        for (int most = 1; most <= most_lines; ++most) {
            const std::string text = in_lines(name, most);
            const auto [columns, lines] = size_of(text);
            const int width = columns * glyph_pitch - 1 + 2 * margin;
            const int height = lines * line_pitch - (line_pitch - glyph_height) + 2 * margin;
            if (const std::optional<Box> box = place(interior, width * dot, height * dot))
                return std::make_unique<Label>(Label{text, *box, dot, summary.rank});
        }
    }
    return nullptr;
}

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
        if (std::any_of(stripes.begin(), stripes.end(), [&](const Stripe &each) { return taken.contains(each); })) {
            remove(at);
            continue;
        }
        for (const Stripe &each : stripes)
            taken.insert(mova::make_item<Stripe>(each));
    }
}

Labels::Labels(const Topology &topology, Size map, const Progress &progress) : grid_{map, cell_of(map)}
{
    std::size_t done = 0;
    std::int64_t crossings_left = all_crossings;
    for (const Summary &summary : index_by_area(topology)) {
        if (std::unique_ptr<Label> label = candidate(summary, grid_, crossings_left))
            insert(std::move(label));
        progress("labelling", ++done, topology.countries.size());
    }
    remove_collisions();
    for (const Label &label : *this)
        places_.add({&label, label.box.top * grid_.cell, (label.box.top + label.box.height) * grid_.cell});
    places_.sort();
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

std::size_t Labels::draw(Canvas &canvas)
{
    return places_.visit_layers(canvas, [&](std::uint32_t, const auto &for_each) {
        for_each([&](const Place &place) { draw_label(canvas, *place.label, grid_.cell); });
    });
}

} // namespace atlas
