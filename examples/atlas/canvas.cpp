/* SPDX-License-Identifier: MIT */
#include "canvas.h"

#include <bit>
#include <cstdlib>
#include <numeric>

namespace atlas {

Canvas::Canvas(const Tile &tile)
    : tile_(tile), open_(static_cast<std::size_t>(bounds().width()), rows(bounds().top, bounds().bottom)),
      open_in_block_(open_.size() / block + 1, ~Rows{0}), next_(open_.size()), lines_(open_.size())
{
    std::iota(next_.begin(), next_.end(), 0u);
}

/* Returns the first of these columns that has pixels that have not been drawn, or one behind them. What it passes is passed
   in half as many steps the next time. */
inline int Canvas::open_column(int from, int end)
{
    std::size_t column = index(std::max(from, bounds().left));
    const std::size_t last = index(std::max(std::min(end, bounds().right), bounds().left));
    while (column < last && next_[column] != column) {
        const std::uint32_t further = next_[column];
        if (further < last)
            next_[column] = next_[further];
        column = further;
    }
    return bounds().left + static_cast<int>(column);
}

bool Canvas::is_full(int from, int end)
{
    return open_column(from, end) >= std::min(end, bounds().right);
}

/* Columns side by side that show the same are drawn row by row. */
template <class RowsOf>
void Canvas::draw_columns(int from, int end, RowsOf rows_of)
{
    end = std::min(end, bounds().right);
    const auto pixels_of = [&](int column) { return open_[index(column)] & rows_of(index(column)); };
    for (int column = open_column(from, end); column < end; column = open_column(column, end)) {
        const int start = column;
        const Rows pixels = pixels_of(start);
        do {
            const std::size_t taken = index(column++);
            open_[taken] &= ~pixels;
            if (!open_[taken])
                next_[taken] = static_cast<std::uint32_t>(taken + 1);
        } while (pixels && column < end && pixels_of(column) == pixels);
        steps_ += static_cast<std::size_t>(column - start);
        for (Rows left = pixels; left; left &= left - 1) {
            std::uint8_t *const first = tile_.at({start, bounds().top + std::countr_zero(left)});
            *first = ink_;
            if (column - start > 1)
                std::fill_n(first, column - start, ink_);
        }
    }
}

/* Blocks of columns in which all of these rows have been drawn are passed over. */
void Canvas::span(Rows rows, int from, int end)
{
    for (int column = open_column(from, end); column < std::min(end, bounds().right);
         column = open_column(column, end)) {
        const std::size_t number = index(column) / block;
        const int first = bounds().left + static_cast<int>(number) * block,
                  last = std::min(first + block, bounds().right);
        if (open_in_block_[number] & rows)
            draw_columns(column, std::min(last, end), [=](std::size_t) { return rows; });
        if (from <= first && last <= end)
            open_in_block_[number] &= ~rows;
        column = last;
        ++steps_;
    }
}

/* Lines wait until the pen is put back, or there are so many that some may be hidden by those before them: that saves a look
   at each of their pixels. */
void Canvas::draw_lines()
{
    const Columns columns = std::exchange(waiting_, {bounds().right, bounds().left});
    if (columns.from >= columns.end)
        return;
    draw_columns(columns.from, columns.end, [this](std::size_t column) { return lines_[column]; });
    std::fill(lines_.begin() + columns.from - bounds().left, lines_.begin() + columns.end - bounds().left, Rows{0});
    looked_for_ = steps_;
}

/* A line takes one step for each column or row along its longer side. Across that it stands, after `step` of its `steps`
   steps, where the ideal line is nearest, and of two places as near in the one nearer to its start: after
   ceil((2 * step * whole - steps) / (2 * steps)) places of `whole`. Going on, that is a remainder to carry. */
void Canvas::line(Pixel from, Pixel to)
{
    const Side side = from.y < to.y ? Side{from, to} : Side{to, from};
    if (side.to.y < bounds().top || side.from.y >= bounds().bottom)
        return;
    const Columns near = columns_between<1>(side, bounds().top - 1, bounds().bottom);
    const int left = open_column(near.from, near.end), right = std::min(near.end, bounds().right);
    if (left >= right)
        return;
    const int across = to.x - from.x, down = to.y - from.y;
    const bool is_wide = std::abs(across) >= std::abs(down);
    const int length = std::max(std::abs(across), std::abs(down));
    const Course course = {from,    across < 0 ? -1 : 1, down < 0 ? -1 : 1,
                           is_wide, std::max(length, 1), std::abs(is_wide ? down : across)};
    /* How far it goes from `start` until it comes to the bounds, and until it leaves them. */
    const auto ways = [](int start, int sign, int low, int end) {
        return sign < 0 ? Columns{start - end + 1, start - low + 1} : Columns{low - start, end - start};
    };
    const Columns over_columns = ways(from.x, course.x_sign, left, right);
    const Columns over_rows = ways(from.y, course.y_sign, bounds().top, bounds().bottom);
    const Columns along = is_wide ? over_columns : over_rows, aside = is_wide ? over_rows : over_columns;
    /* The first step after which it has gone so many places to the side. */
    const auto first_step = [=](std::int64_t places) {
        if (places <= 0 || places > course.whole)
            return places <= 0 ? 0 : length + 1;
        return static_cast<int>(ceil_divided(2 * course.steps * places - course.steps + 1, 2 * course.whole));
    };
    const int first = std::max({0, along.from, first_step(aside.from)});
    const int end = std::min({length + 1, along.end, first_step(aside.end)});
    waiting_ = {std::min(waiting_.from, left), std::max(waiting_.end, right)};
    follow(course, first, end, right);
    if (steps_ - looked_for_ > 8 * static_cast<std::size_t>(waiting_.end - waiting_.from))
        draw_lines();
}

/* Draws the steps from `first` up to, not including, `end`, left of the column `right`. A wide line goes to the right here,
   from one column that is not full to the next, and looks for one after every 32. */
void Canvas::follow(const Course &course, int first, int end, int right)
{
    const auto [from, x_sign, y_sign, is_wide, steps, whole] = course;
    const int turn = 2 * steps, forwards = is_wide ? x_sign : 1;
    const std::int64_t rise = 2 * whole * forwards;
    const int slope = static_cast<int>(floor_divided(rise, turn));
    const int carry = static_cast<int>(rise - std::int64_t{slope} * turn);
    const Pixel way = is_wide ? Pixel{1, y_sign * slope} : Pixel{0, y_sign};
    const Pixel aside = is_wide ? Pixel{0, y_sign} : Pixel{x_sign, 0};
    for (int count = end - first, step = forwards < 0 ? end - 1 : first; count > 0;) {
        if (is_wide) {
            const int column = from.x + x_sign * step, skipped = open_column(column, right) - column;
            step += forwards * skipped;
            count -= skipped;
            if (count <= 0)
                return;
        }
        const int run = is_wide ? std::min(count, 32) : count;
        const std::int64_t sum = 2 * step * whole + steps - 1;
        const int places = static_cast<int>(sum / turn);
        int carried = static_cast<int>(sum % turn);
        int x = from.x - bounds().left + x_sign * (is_wide ? step : places);
        int y = from.y - bounds().top + y_sign * (is_wide ? places : step);
        for (int i = 0; i < run; ++i) {
            lines_[static_cast<std::size_t>(x)] |= Rows{1} << y;
            carried += carry - turn;
            x += way.x + (carried >= 0 ? aside.x : 0);
            y += way.y + (carried >= 0 ? aside.y : 0);
            carried += carried < 0 ? turn : 0;
        }
        step += forwards * run;
        count -= run;
        steps_ += static_cast<std::size_t>(run);
    }
}

} // namespace atlas
