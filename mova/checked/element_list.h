/* SPDX-License-Identifier: MIT */
/* The rows of the element list. */
#ifndef MOVA_CHECKED_ELEMENT_LIST_H
#define MOVA_CHECKED_ELEMENT_LIST_H

#include "internal/chains.h"
#include "internal/elements.h"
#include "internal/roles.h"

#include <mova/lists/element_list.h>
#include <mova/lists/internal/invariants.h>

#include <initializer_list>

namespace mova::checked {

inline constexpr family element_list = {
    "list",
    "element list",
    "node",
    true,
    nullptr,
    [](const void *list) { return broken_invariant_of_chain(*static_cast<const EL_list *>(list)); },
    [](const void *list) { return int64_t{static_cast<const EL_list *>(list)->count}; },
};

namespace el {

/* A node has its links besides. */
struct size_of_elements : role {
    static void before(call &made, const auto &arguments)
    {
        if (!is_size(uint64_t{sizeof(EL_node)} + std::get<0>(arguments)))
            made.wrong().say("the elements would be larger than a block can be");
    }
};

/* No more bytes may be written into a node than its list's elements have. */
inline void judge_size(call &made, owner_number number, uint32_t size)
{
    if (number == 0 || owner_at(number).foreign || !owner_at(number).live)
        return;
    const auto *const list = static_cast<const EL_list *>(owner_at(number).container);
    if (size > list->element_size) {
        say_sizes_differ(made, size, list->element_size);
        made.wrong().show_container(number);
    }
}

/* EL_append_list: both lists are open, and their elements have one size. */
struct joinable : role {
    static void before(call &made, const auto &arguments)
    {
        const EL_list *const target = std::get<0>(arguments), *const source = *std::get<1>(arguments);
        if (target->element_size != source->element_size)
            say_sizes_differ(made, source->element_size, target->element_size);
        else if (target->closed || source->closed)
            made.wrong().say("the list is a ring");
        else
            return;
        made.wrong().show_container(made.used(0));
        made.wrong().show_container(made.used(1));
    }
};

/* EL_replace_item: the element is the node's own, or lies beside it. */
struct replaces : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [position, element, size] = arguments;
        const entry *const known = find(position);
        if (!known || known->owner == 0 || !sees_every_block())
            return;
        judge_size(made, resolved(known->owner), size);
        const auto own = reinterpret_cast<uintptr_t>(position + 1), given = reinterpret_cast<uintptr_t>(element);
        if (!made.is_wrong() && own != given && own < given + size && given < own + size) {
            made.wrong().say("the element overlaps the one that it replaces");
            made.wrong().show_member("position", position, *known);
        }
    }
};

struct replaces_range : role {
    static void before(call &made, const auto &arguments)
    {
        for (const int nth : {0, 1}) {
            if (!made.is_wrong())
                judge_size(made, made.used(nth), std::get<4>(arguments));
        }
    }
};

/* The library itself raises for a position without a predecessor, and does nothing on an open list. */
struct rolled_to : role {
    static void before(call &made, const auto &arguments)
    {
        const EL_node *const position = std::get<1>(arguments);
        if (made.used(0) != 0 && std::get<0>(arguments)->closed && (!position || position->prev))
            made.judge_position(element_list, made.used(0), position);
    }
};

/* The returned list has the nodes from the split on; the copy in front of it stays in the first list. */
struct splits : role {
    static void after(call &made, const auto &arguments, EL_list *end_part)
    {
        if (!end_part || made.used(0) == 0)
            return;
        const entry *const head = find(end_part);
        if (!head)
            return;
        const owner_number number = head->owner;
        hand_over(std::get<0>(arguments)->last, made.used(0));
        for (const EL_node *node = end_part->first; node; node = node->next)
            hand_over(node, number);
    }
};

/* An iterator on a ring that has no end never ends. */
struct has_end : role {
    static void before(call &made, const auto &arguments)
    {
        if (made.used(0) != 0 && std::get<0>(arguments)->closed && std::get<1>(arguments) && !std::get<2>(arguments))
            made.wrong().say("the end is null on a ring");
    }
};

/* On an open list an iterator stops at the list's end at the latest, wherever its own end is now. */
inline bool is_open(const void *list)
{
    return !static_cast<const EL_list *>(list)->closed;
}

} // namespace el

/* What the three families on element lists share. */
template <const family &Family>
struct element_list_roles {
    static constexpr container<0, Family> read{use::read}, edit{use::edit}, empty{use::empty};
    static constexpr container<3, Family, 1> source{use::read};
    static constexpr released<0, Family> gone{false};
    static constexpr released<1, Family, 1> joined{false};
    static constexpr makes<Family> list{};
    static constexpr position<0, Family, -1> anywhere{};
    static constexpr position<1, Family> at{};
    static constexpr position<1, Family, -1> from_anywhere{};
    static constexpr position_or_null<1, Family> from{};
    static constexpr position_or_null<2, Family> to{};
    static constexpr range<1, 2, Family> between{};
    static constexpr list_iterator<0, Family, &EL_iterator::next, &EL_iterator::end, el::is_open> iterator{};
};

namespace rows {

using EL = element_list_roles<element_list>;

inline constexpr row EL_create{el::size_of_elements{}, EL::list};
inline constexpr row EL_release{EL::gone};
inline constexpr row EL_make_empty{EL::empty};
inline constexpr row EL_set_closed{EL::edit};
inline constexpr row EL_reset_closed{EL::edit};
inline constexpr row EL_count_items{EL::read};
inline constexpr row EL_count_items_inbetween{EL::read, EL::between};

inline constexpr row EL_append_after_last{EL::edit, one_more{}};
inline constexpr row EL_insert_before_first{EL::edit, one_more{}};
inline constexpr row EL_insert_before{EL::edit, EL::at, one_more{}};
inline constexpr row EL_insert_after{EL::edit, EL::at, one_more{}};
inline constexpr row EL_insert_before_index{EL::edit, one_more{}};
inline constexpr row EL_insert_after_index{EL::edit, one_more{}};

inline constexpr row EL_advance{EL::from_anywhere};
inline constexpr row EL_get_index{EL::read, EL::at};
inline constexpr row EL_get_pos_at_index{EL::read};
inline constexpr row EL_get_item_at_index{EL::read};

inline constexpr row EL_remove_item{EL::edit, EL::at};
inline constexpr row EL_remove_at_index{EL::edit};
inline constexpr row EL_remove_items_inbetween{EL::edit, EL::between};
inline constexpr row EL_replace_item{EL::anywhere, el::replaces{}};
inline constexpr row EL_replace_items_inbetween{EL::edit, EL::source, EL::between, el::replaces_range{}};

inline constexpr row EL_total_copy{EL::read, EL::list};
inline constexpr row EL_total_copy_inbetween{EL::read, EL::between, EL::list};
inline constexpr row EL_append_list{EL::edit, EL::joined, joins_1_to_0{}, el::joinable{}};
inline constexpr row EL_reverse{EL::edit};

inline constexpr row EL_roll{EL::edit, el::rolled_to{}};
inline constexpr row EL_make_open_at_position{EL::edit, EL::at};
inline constexpr row EL_remove_and_get_end_part{EL::edit, EL::at, EL::list, el::splits{}};

inline constexpr row EL_tested_items_inbetween{EL::read, EL::from, EL::to, el::has_end{}};
inline constexpr row EL_all_items_inbetween{EL::read, EL::from, EL::to, el::has_end{}};
inline constexpr row EL_all_items{EL::read};
inline constexpr row EL_all_items_reversed{EL::read};
inline constexpr row EL_next_position{EL::iterator};
inline constexpr row EL_next_item{EL::iterator};
inline constexpr row EL_next_item_copy{EL::iterator};

} // namespace rows

} // namespace mova::checked

#endif
