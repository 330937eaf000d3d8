/* SPDX-License-Identifier: MIT */
/* Straight lines on the rows of the map: where they cross them, and which of many do. */
#ifndef ATLAS_SCAN_H
#define ATLAS_SCAN_H

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "globe.h"

namespace atlas {

/* The columns from `from` up to, not including, `end`. */
struct Columns {
    int from, end;
};

/* A side of a shape, in any units. */
struct Side {
    Pixel from, to;

    int down() const { return to.y - from.y; }
    std::int64_t across() const { return std::int64_t{to.x} - from.x; }
    /* How far to the right of `from` it crosses this level: so many times `down`. */
    std::int64_t shift(std::int64_t level) const { return across() * (level - from.y); }
};

/* Returns columns that hold a side which runs downwards between two levels, and a few more, for this is rounded; `lines` of its
   units are a column. */
template <int lines>
Columns columns_between(const Side &side, int top, int bottom)
{
    const int height = std::max(side.down(), 1);
    const float start = static_cast<float>(side.from.x) / lines;
    const float slope = static_cast<float>(side.to.x - side.from.x) / lines / static_cast<float>(height);
    const float a = start + slope * static_cast<float>(std::clamp(top - side.from.y, 0, height));
    const float b = start + slope * static_cast<float>(std::clamp(bottom - side.from.y, 0, height));
    const auto [left, right] = std::minmax(side.from.x, side.to.x);
    return {std::max(static_cast<int>(std::min(a, b)) - 2, left / lines),
            std::min(static_cast<int>(std::max(a, b)) + 3, right / lines + 1)};
}

/* Items that lie on some rows of the map each, found by rows. They are sorted once; from then on each step downwards only
   looks at what begins, ends or goes on there. An item says which rows it lies on, from `first_row()` up to, not including,
   `end_row()`, and in which `layer`: the lowest layer comes first. */
template <class Item>
class Sweep {
public:
    void add(const Item &item) { items_.push_back(item); }

    /* To be called when all items have been added. */
    void sort()
    {
        items_.shrink_to_fit();
        std::sort(items_.begin(), items_.end(),
                  [](const Item &a, const Item &b) { return a.first_row() < b.first_row(); });
    }

    /* Calls `visit(layer, items)` for each layer that has some on these rows, until it returns false; `items(visit_item)`
       delivers them. Going down is fast; going up begins anew. */
    template <class Visit>
    void visit_layers(int top, int bottom, Visit visit)
    {
        go_to(top, bottom);
        for (auto first = active_.begin(), end = first; first != active_.end(); first = end) {
            const std::uint32_t layer = layer_of(*first);
            end = std::find_if(first, active_.end(), [=](std::uint64_t key) { return layer_of(key) != layer; });
            if (!visit(layer, std::span(first, end)))
                return;
        }
    }

    const Item &operator[](std::uint64_t key) const { return items_[static_cast<std::uint32_t>(key)]; }

private:
    static std::uint32_t layer_of(std::uint64_t key) { return static_cast<std::uint32_t>(key >> 32); }

    void go_to(int top, int bottom)
    {
        if (top < top_) {
            active_.clear();
            next_ = 0;
        }
        top_ = top;
        std::erase_if(active_, [&](std::uint64_t key) { return (*this)[key].end_row() <= top; });
        const auto known = static_cast<std::ptrdiff_t>(active_.size());
        for (; next_ < items_.size() && items_[next_].first_row() < bottom; ++next_) {
            if (items_[next_].end_row() > top)
                active_.push_back(std::uint64_t{items_[next_].layer} << 32 | next_);
        }
        std::sort(active_.begin() + known, active_.end());
        std::inplace_merge(active_.begin(), active_.begin() + known, active_.end());
    }

    std::vector<Item> items_;           /* by their first rows */
    std::vector<std::uint64_t> active_; /* by layers: a layer, and the number of an item */
    std::size_t next_ = 0;              /* the first item that has not been reached */
    int top_ = 0;
};

} // namespace atlas

#endif
