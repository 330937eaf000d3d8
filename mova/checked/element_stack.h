/* SPDX-License-Identifier: MIT */
/* The rows of the element stack: an element list, which the functions of both take. */
#ifndef MOVA_CHECKED_ELEMENT_STACK_H
#define MOVA_CHECKED_ELEMENT_STACK_H

#include "element_list.h"

#include <mova/lists/element_stack.h>

namespace mova::checked {

inline constexpr family element_stack = {
    "stack", "element stack", "node", true, &element_list, element_list.broken_invariant, element_list.size,
};

namespace rows {

using ES = element_list_roles<element_stack>;

inline constexpr row ES_create{el::size_of_elements{}, ES::list};
inline constexpr row ES_release{ES::gone};
inline constexpr row ES_make_empty{ES::empty};
inline constexpr row ES_count_items{ES::read};
inline constexpr row ES_is_empty{ES::read};
inline constexpr row ES_push{ES::edit, one_more{}};
inline constexpr row ES_pop{ES::edit};
inline constexpr row ES_inspect_top{ES::read};

} // namespace rows

} // namespace mova::checked

#endif
