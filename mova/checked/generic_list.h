/* SPDX-License-Identifier: MIT */
/* The rows of the generic pointer list. */
#ifndef MOVA_CHECKED_GENERIC_LIST_H
#define MOVA_CHECKED_GENERIC_LIST_H

#include "internal/chains.h"
#include "internal/roles.h"

#include <mova/lists/generic_list.h>
#include <mova/lists/internal/invariants.h>

namespace mova::checked {

inline constexpr family generic_list = {
    "list",
    "generic list",
    "node",
    true,
    nullptr,
    [](const void *list) { return broken_invariant_of_chain(*static_cast<const GL_list *>(list)); },
    [](const void *list) { return int64_t{static_cast<const GL_list *>(list)->count}; },
};

namespace rows {

namespace gl {

inline constexpr container<0, generic_list> read{use::read}, edit{use::edit}, empty{use::empty};
inline constexpr released<0, generic_list> gone{false}, gone_or_null{true};
inline constexpr released<1, generic_list, 1> source{false};
inline constexpr makes<generic_list> list;
inline constexpr position<1, generic_list> at;
inline constexpr position<0, generic_list, -1> anywhere;
inline constexpr position_or_null<1, generic_list, -1> from;
inline constexpr position_or_null<2, generic_list, -1> to;
inline constexpr list_iterator<0, generic_list, &GL_iterator::next, &GL_iterator::end> iterator;

} // namespace gl

inline constexpr row GL_create{gl::list};
inline constexpr row GL_release{gl::gone_or_null};
inline constexpr row GL_total_release{gl::gone};
inline constexpr row GL_make_empty{gl::empty};
inline constexpr row GL_total_make_empty{gl::empty};

inline constexpr row GL_copy{gl::read, gl::list};
inline constexpr row GL_total_copy{gl::read, gl::list};
inline constexpr row GL_check{gl::read};
inline constexpr row GL_count_items{gl::read};

inline constexpr row GL_append_after_last{gl::edit, one_more{}};
inline constexpr row GL_insert_before_first{gl::edit, one_more{}};
inline constexpr row GL_insert_before{gl::edit, gl::at, one_more{}};
inline constexpr row GL_insert_after{gl::edit, gl::at, one_more{}};
inline constexpr row GL_insert_unique{gl::edit, one_more{}};

inline constexpr row GL_move_before_first{gl::edit, gl::at};
inline constexpr row GL_append_list{gl::edit, gl::source, joins_1_to_0{}};

inline constexpr row GL_find_item{gl::read, stores_position<2>{}};
inline constexpr row GL_remove_item{gl::edit, gl::at};
inline constexpr row GL_swap_item{gl::anywhere};

inline constexpr row GL_empty_iter{role{}};
inline constexpr row GL_tested_items_inbetween{gl::from, gl::to};
inline constexpr row GL_all_items_inbetween{gl::from, gl::to};
inline constexpr row GL_tested_items{gl::read};
inline constexpr row GL_all_items{gl::read};
inline constexpr row GL_all_items_reversed{gl::read};
inline constexpr row GL_next_item{gl::iterator};
inline constexpr row GL_next_position{gl::iterator};

} // namespace rows

} // namespace mova::checked

#endif
