/* SPDX-License-Identifier: MIT */
/* The rows of the sorted number array, which is a dynamic array. */
#ifndef MOVA_CHECKED_SORTED_NUMBER_ARRAY_H
#define MOVA_CHECKED_SORTED_NUMBER_ARRAY_H

#include "dynamic_array.h"

#include <mova/arrays/sorted_number_array.h>

namespace mova::checked {

namespace sa {

struct of_numbers : role {
    static void before(call &made, const auto &arguments)
    {
        const DA_array *const array = std::get<0>(arguments);
        if (made.used(0) == 0 || array->element_size == sizeof(int32_t))
            return;
        say_sizes_differ(made, sizeof(int32_t), array->element_size);
        made.wrong().show_container(made.used(0));
    }
};

/* With "order": a search by halves misses numbers that are not in order, as a roll may leave them. */
struct in_order : role {
    static void before(call &made, const auto &arguments)
    {
        const DA_array *const array = std::get<0>(arguments);
        if (!asked_for().order || made.used(0) == 0 || !array->data || broken_invariant_of_numbers(*array) == 0)
            return;
        made.wrong().say("the numbers are not in order");
        made.wrong().show_container(made.used(0));
    }
};

struct one_more_number : role {
    static void before(call &made, const auto &arguments)
    {
        const DA_array *const array = std::get<0>(arguments);
        da::judge_growth(made, array, int64_t{array->nitems} + 1, int64_t{array->nitems} + 1);
    }
};

/* The companion has elements: the remainder is asked of their number. */
struct has_companions : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<2>(arguments) == 0)
            made.wrong().say("the count is 0");
    }
};

} // namespace sa

namespace rows {

inline constexpr row SA_add_number{da::edit, sa::of_numbers{}, sa::in_order{}, sa::one_more_number{}};
inline constexpr row SA_remove_number{da::edit, sa::of_numbers{}, sa::in_order{}};
inline constexpr row SA_check_number{da::read, sa::of_numbers{}, sa::in_order{}};
inline constexpr row SA_adapt_for_insert{da::edit, sa::of_numbers{}};
inline constexpr row SA_adapt_for_remove{da::edit, sa::of_numbers{}};
inline constexpr row SA_adapt_for_reverse{da::edit, sa::of_numbers{}};
inline constexpr row SA_adapt_for_roll{da::edit, sa::of_numbers{}, sa::has_companions{}};

} // namespace rows

} // namespace mova::checked

#endif
