/* SPDX-License-Identifier: MIT */
/* Items that lie on some rows of the map each, found by rows. They are sorted once; from then on each step downwards only
   looks at what begins, ends or goes on there. */
#ifndef ATLAS_SWEEP_H
#define ATLAS_SWEEP_H

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

namespace atlas {

/* An item says which rows it lies on, from `first_row()` up to, not including, `end_row()`, and in which layer: the
   lowest layer comes first. */
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

    /* Calls `visit` with the items on some of the rows, one layer after the other, until it returns false. Going down is
       fast; going up begins anew. */
    template <class Visit>
    void visit_layers(int top, int bottom, Visit visit)
    {
        go_to(top, bottom);
        for (auto first = active_.begin(), end = first; first != active_.end(); first = end) {
            end = std::upper_bound(first, active_.end(), *first, by_layer());
            if (!visit(Layer{items_, {first, end}}))
                return;
        }
    }

    struct Layer {
        const std::vector<Item> &items;
        std::span<const std::uint32_t> numbers;

        std::uint32_t number() const { return items[numbers.front()].layer(); }
        template <class Visit>
        void for_each(Visit visit) const
        {
            for (const std::uint32_t i : numbers)
                visit(items[i]);
        }
    };

private:
    auto by_layer() const
    {
        return [this](std::uint32_t a, std::uint32_t b) { return items_[a].layer() < items_[b].layer(); };
    }

    void go_to(int top, int bottom)
    {
        if (top < top_) {
            active_.clear();
            next_ = 0;
        }
        top_ = top;
        std::erase_if(active_, [&](std::uint32_t i) { return items_[i].end_row() <= top; });
        const auto known = static_cast<std::ptrdiff_t>(active_.size());
        for (; next_ < items_.size() && items_[next_].first_row() < bottom; ++next_) {
            if (items_[next_].end_row() > top)
                active_.push_back(static_cast<std::uint32_t>(next_));
        }
        std::sort(active_.begin() + known, active_.end(), by_layer());
        std::inplace_merge(active_.begin(), active_.begin() + known, active_.end(), by_layer());
    }

    std::vector<Item> items_;           /* by their first rows */
    std::vector<std::uint32_t> active_; /* numbers of items, by layers */
    std::size_t next_ = 0;              /* the first item that has not been reached */
    int top_ = 0;
};

} // namespace atlas

#endif
