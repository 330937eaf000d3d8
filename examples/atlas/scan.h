/* SPDX-License-Identifier: MIT */
/* What of many things lies on which rows of the map. */
#ifndef ATLAS_SCAN_H
#define ATLAS_SCAN_H

#include <algorithm>
#include <vector>

#include "canvas.h"

namespace atlas {

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

    /* Calls `visit(layer, for_each)` for each layer that has items on the canvas's rows, until the canvas is full;
       `for_each(visit_item)` delivers them. Returns how many there were. Going down is fast; going up begins anew. */
    template <class Visit>
    std::size_t visit_layers(Canvas &canvas, Visit visit)
    {
        go_to(canvas.bounds().top, canvas.bounds().bottom);
        auto first = active_.cbegin();
        while (first != active_.cend() && !canvas.is_full()) {
            const std::uint32_t layer = layer_of(*first);
            const auto end =
                std::find_if(first, active_.cend(), [=](std::uint64_t key) { return layer_of(key) != layer; });
            visit(layer, [&](auto visit_item) {
                for (; first != end; ++first)
                    visit_item(item_of(*first));
            });
        }
        return static_cast<std::size_t>(first - active_.cbegin());
    }

private:
    static std::uint32_t layer_of(std::uint64_t key) { return static_cast<std::uint32_t>(key >> 32); }
    const Item &item_of(std::uint64_t key) const { return items_[static_cast<std::uint32_t>(key)]; }

    void go_to(int top, int bottom)
    {
        if (top < top_) {
            active_.clear();
            next_ = 0;
        }
        top_ = top;
        std::erase_if(active_, [&](std::uint64_t key) { return item_of(key).end_row() <= top; });
        const auto known = static_cast<std::ptrdiff_t>(active_.size());
        for (; next_ < items_.size() && items_[next_].first_row() < bottom; ++next_) {
            if (items_[next_].end_row() > top)
                active_.push_back(std::uint64_t{items_[next_].layer} << 32 | next_);
        }
        const auto added = active_.begin() + known;
        std::sort(added, active_.end());
        merged_.resize(active_.size());
        std::merge(active_.begin(), added, added, active_.end(), merged_.begin());
        active_.swap(merged_);
    }

    std::vector<Item> items_;           /* by their first rows */
    std::vector<std::uint64_t> active_; /* by layers: a layer, and the number of an item */
    std::vector<std::uint64_t> merged_; /* room for the next of these */
    std::size_t next_ = 0;              /* the first item that has not been reached */
    int top_ = 0;
};

} // namespace atlas

#endif
