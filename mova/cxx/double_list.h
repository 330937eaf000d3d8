/* SPDX-License-Identifier: MIT */
/* Double list, typed: an open element list of doubles that sorts, thins and searches them by distance, as
   mova/lists/double_list.h says. NaNs and the two zeroes are treated as there. A ring of doubles is element_ring<double>.

   Errors: those of mova/cxx/element_list.h. After an exception the list is as it was, where a function says nothing else. */
#ifndef MOVA_CXX_DOUBLE_LIST_H
#define MOVA_CXX_DOUBLE_LIST_H

#include <mova/cxx/element_list.h>
#include <mova/lists/double_list.h>

namespace mova {

/* A list of doubles. It owns its head and its nodes. */
class double_list : public element_list<double> {
public:
    using element_list<double>::element_list;
    /* Takes over the nodes of a list of doubles. */
    double_list(element_list<double> &&list) noexcept : element_list<double>(std::move(list)) {}

    /* Puts the values in ascending order: DBLL_sort. Positions stay, and get other values. After an exception the values
       are as they were. */
    void sort() { DBLL_sort(get()); }

    /* Sorts, then removes neighbours closer than `tolerance`: DBLL_remove_double_occ. Only the sorting can fail. */
    void thin_out(double tolerance) { DBLL_remove_double_occ(get(), tolerance); }

    /* Inserts into a sorted list, unless a value lies within `tolerance`. Returns whether it was inserted. */
    bool insert_unique(double value, double tolerance)
    {
        const std::size_t before = size();
        DBLL_add_double_unique(get(), value, tolerance);
        return size() != before;
    }

    /* What nearest() finds. */
    struct nearest_value {
        std::int32_t index; /* -1 where none is nearer than twice the distance */
        double distance;    /* how near it is; twice the distance where none is */
    };

    /* The value nearest to `value`, of those nearer than twice `distance`: DBLL_find_index_of_nearest. Linear. */
    nearest_value nearest(double value, double distance) const noexcept
    {
        nearest_value found;
        found.index = DBLL_find_index_of_nearest(get(), value, distance, &found.distance);
        return found;
    }

    /* Adds the offset to every value. Linear. */
    void add_to_all(double offset) noexcept { DBLL_add_to_all(get(), offset); }
};

} // namespace mova

#endif
