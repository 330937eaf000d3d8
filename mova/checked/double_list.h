/* SPDX-License-Identifier: MIT */
/* The rows of the double list: an element list of doubles. */
#ifndef MOVA_CHECKED_DOUBLE_LIST_H
#define MOVA_CHECKED_DOUBLE_LIST_H

#include "element_list.h"

#include <mova/lists/double_list.h>

namespace mova::checked {

inline constexpr family double_list = {
    "list", "double list", "node", true, &element_list, element_list.broken_invariant, element_list.size,
};

namespace dbll {

/* The nth container, which is the argument of this number, has elements of this size. */
template <int Argument = 0, int Nth = 0>
struct of_doubles : role {
    static void before(call &made, const auto &arguments)
    {
        if (made.used(Nth) == 0 || std::get<Argument>(arguments)->element_size == sizeof(double))
            return;
        say_sizes_differ(made, sizeof(double), std::get<Argument>(arguments)->element_size);
        made.wrong().show_container(made.used(Nth));
    }
};

/* As of_doubles, of a position's list. */
struct is_double : role {
    static void before(call &made, const auto &arguments)
    {
        if (const entry *const known = find(std::get<0>(arguments)); known && sees_every_block())
            el::judge_size(made, resolved(known->owner), sizeof(double));
    }
};

} // namespace dbll

namespace rows {

using DBLL = element_list_roles<double_list>;
inline constexpr dbll::of_doubles doubles;

inline constexpr row DBLL_create{DBLL::list};
inline constexpr row DBLL_create_with_two{DBLL::list};
inline constexpr row DBLL_release{DBLL::gone};
inline constexpr row DBLL_make_empty{DBLL::empty};
inline constexpr row DBLL_size{DBLL::read};
inline constexpr row DBLL_size_inbetween{DBLL::read, DBLL::between};
inline constexpr row DBLL_is_empty{DBLL::read};
inline constexpr row DBLL_set_closed{DBLL::edit};
inline constexpr row DBLL_reset_closed{DBLL::edit};
inline constexpr row DBLL_check{DBLL::read};

inline constexpr row DBLL_add_double{DBLL::edit, doubles, one_more{}};
inline constexpr row DBLL_insert_before{DBLL::edit, doubles, DBLL::at, one_more{}};
inline constexpr row DBLL_insert_after{DBLL::edit, doubles, DBLL::at, one_more{}};
inline constexpr row DBLL_insert_before_index{DBLL::edit, doubles, one_more{}};
inline constexpr row DBLL_insert_after_index{DBLL::edit, doubles, one_more{}};
inline constexpr row DBLL_add_double_unique{DBLL::edit, doubles, one_more{}};
inline constexpr row DBLL_remove_double{DBLL::edit, DBLL::at};
inline constexpr row DBLL_remove_at_index{DBLL::edit};
inline constexpr row DBLL_remove_double_occ{DBLL::edit, doubles};
inline constexpr row DBLL_replace_double{DBLL::anywhere, dbll::is_double{}};
inline constexpr row DBLL_replace_doubles_inbetween{DBLL::edit, doubles, DBLL::source, dbll::of_doubles<3, 1>{},
                                                    DBLL::between};

inline constexpr row DBLL_begin_value{DBLL::read, doubles};
inline constexpr row DBLL_end_value{DBLL::read, doubles};
inline constexpr row DBLL_set_begin_value{DBLL::edit, doubles};
inline constexpr row DBLL_set_end_value{DBLL::edit, doubles};
inline constexpr row DBLL_add_to_all{DBLL::edit, doubles};
inline constexpr row DBLL_find_index_of_nearest{DBLL::read, doubles};
inline constexpr row DBLL_sort{DBLL::edit, doubles};

inline constexpr row DBLL_advance{DBLL::from_anywhere};
inline constexpr row DBLL_reverse{DBLL::edit};
inline constexpr row DBLL_copy{DBLL::read, DBLL::list};
inline constexpr row DBLL_copy_inbetween{DBLL::read, DBLL::between, DBLL::list};
inline constexpr row DBLL_roll{DBLL::edit, el::rolled_to{}};

inline constexpr row DBLL_all_doubles{DBLL::read};
inline constexpr row DBLL_all_doubles_reversed{DBLL::read};
inline constexpr row DBLL_all_doubles_inbetween{DBLL::read, DBLL::from, DBLL::to, el::has_end{}};
inline constexpr row DBLL_all_doubles_inbetween_reversed{DBLL::read, DBLL::from, DBLL::to, el::has_end{}};
inline constexpr row DBLL_next_position{DBLL::iterator};
inline constexpr row DBLL_next_double{DBLL::iterator};

} // namespace rows

} // namespace mova::checked

#endif
