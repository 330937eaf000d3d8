/* SPDX-License-Identifier: MIT */
#include "labels.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include <mova/frame/host.h>

#include "font.h"

namespace atlas {

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

static std::optional<Label> candidate(const Summary &summary, Grid grid, std::int64_t &crossings_left)
{
    const std::string name = as_glyphs(std::string_view(summary.country->name).substr(0, 4 * longest_label + 4));
    if (!summary.largest || name.empty() || name.size() > longest_label)
        return std::nullopt;
    const Interior interior(*summary.largest, grid, crossings_left);
    for (int dot = largest_dot; dot > 0; --dot) {
        for (int most = 1; most <= most_lines; ++most) {
            const std::string text = in_lines(name, most);
            if (const std::optional<Box> box = place(interior, text, dot)) {
                Label label = {{}, *box, dot, summary};
                std::memcpy(label.text, text.data(), text.size());
                return label;
            }
        }
    }
    return std::nullopt;
}

static std::int32_t compare_labels(void *a, void *b)
{
    const auto order = by_area()(static_cast<const Label *>(a)->summary, static_cast<const Label *>(b)->summary);
    return order < 0 ? -1 : order > 0;
}

/* ---- collisions ---- */

/* The cells that labels take in a row of the grid. No two of them overlap in the tree, so that in order of rows and
   columns they are in order; what overlaps one of them compares equal to it. */
struct Stripe {
    int row, from, end;
};

static std::int32_t compare_stripes(void *a, void *b)
{
    const Stripe &left = *static_cast<const Stripe *>(a), &right = *static_cast<const Stripe *>(b);
    if (left.row != right.row)
        return left.row < right.row ? -1 : 1;
    return left.end <= right.from ? -1 : left.from >= right.end;
}

class TakenCells {
public:
    TakenCells() = default;
    ~TakenCells() { GT_total_release(&tree_, sizeof(Stripe)); }
    TakenCells(const TakenCells &) = delete;
    TakenCells &operator=(const TakenCells &) = delete;

    bool overlap(Box box) const
    {
        tree_item *taken;
        for (int row = box.top; row < box.top + box.height; ++row) {
            Stripe stripe = {row, box.left, box.left + box.width};
            if (GT_search_item(tree_, &stripe, &taken))
                return true;
        }
        return false;
    }

    /* Requires a box that overlaps none that was taken. */
    void take(Box box)
    {
        for (int row = box.top; row < box.top + box.height; ++row)
            GT_insert_item(tree_, new (MM_alloc_item(sizeof(Stripe))) Stripe{row, box.left, box.left + box.width});
    }

private:
    tree *tree_ = GT_create_with_dupl_not_allowed(compare_stripes);
};

/* Walks over the candidates, and removes each that comes too close to one before it. Only what was delivered last is
   removed: that is always safe for the iterator. */
static void remove_collisions(tree *labels)
{
    TakenCells taken;
    tree_iter *candidates = GT_all_items(labels);
    for (tree_item *position; GT_next_position(candidates, &position);) {
        Label *label = static_cast<Label *>(position->item);
        const Box &box = label->box;
        const Box with_gap = {box.left, box.top, box.width + gap, box.height + gap};
        if (taken.overlap(with_gap)) {
            GT_remove_item(labels, position);
            MM_dealloc_item(label, sizeof *label);
        } else {
            taken.take(with_gap);
        }
    }
}

Labels::Labels(const Topology &topology, int width, int height, const Progress &progress)
    : grid_{width, height, std::max(1, (width + width_per_cell_pixel / 2) / width_per_cell_pixel)},
      tree_(GT_create_with_dupl_not_allowed(compare_labels))
{
    const AreaIndex countries = index_by_area(topology);
    const std::size_t all = topology.countries.size();
    std::size_t done = 0;
    std::int64_t crossings_left = all_crossings;
    for (const Summary &summary : countries) {
        if (const std::optional<Label> label = candidate(summary, grid_, crossings_left))
            GT_insert_item(tree_, new (MM_alloc_item(sizeof(Label))) Label(*label));
        progress("labelling", ++done, all);
    }
    remove_collisions(tree_);
}

/* ---- drawing ---- */

static void draw_glyph(Canvas &canvas, char glyph, int left, int top, int dot)
{
    for (int row = 0; row < glyph_height * dot; ++row) {
        for (int column = 0; column < glyph_width; ++column) {
            if (has_dot(glyph, column, row / dot))
                canvas.span(top + row, left + column * dot, left + (column + 1) * dot);
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
    tree_iter *labels = GT_all_items(tree_);
    for (void *label; GT_next_item(labels, &label);)
        draw_label(canvas, *static_cast<const Label *>(label), grid_.cell);
}

} // namespace atlas
