/* SPDX-License-Identifier: MIT */
/* The rows of the simple list. Its items are the program's: they are booked when they are linked, and known as removed when they
   were unlinked. */
#ifndef MOVA_CHECKED_SIMPLE_LIST_H
#define MOVA_CHECKED_SIMPLE_LIST_H

#include "internal/chains.h"
#include "internal/roles.h"

#include <mova/lists/internal/invariants.h>
#include <mova/lists/simple_list.h>

namespace mova::checked {

inline constexpr family simple_list = {
    "list",
    "simple list",
    "item",
    true,
    nullptr,
    [](const void *list) { return broken_invariant_of_chain(*static_cast<const SL_list *>(list)); },
    [](const void *list) { return int64_t{static_cast<const SL_list *>(list)->count}; },
};

namespace sl {

/* Calls `visit(item)` from first to last. */
inline void for_each_item(const SL_list *list, auto visit)
{
    const auto *item = static_cast<const mova_sl_links *>(list->first);
    for (int32_t left = list->count; item && left > 0; --left) {
        const mova_sl_links *const next = item->next;
        visit(item);
        item = next;
    }
}

inline bool holds(const SL_list *list, const void *item)
{
    bool found = false;
    for_each_item(list, [&found, item](const void *held) { found |= held == item; });
    return found;
}

/* An item that is linked: its argument, into container 0. It must not be on a list. */
template <int Argument>
struct linked : role {
    static void before(call &made, const auto &arguments)
    {
        const void *const item = std::get<Argument>(arguments);
        if (!item) {
            made.wrong().say("the item is null");
            return;
        }
        const entry *const known = find(item);
        if (!known || !known->live || known->what != kind::item)
            return;
        const owner_number on = resolved(known->owner);
        /* Memory may have become another item since: the list itself knows. */
        if (!owner_at(on).live || !is_member(on, item))
            return;
        made.wrong().say("the item is on a list already");
        made.wrong().show_member("item", item, *known);
    }

    static void after(call &made, const auto &arguments) { note(made, std::get<Argument>(arguments)); }

    static void after(call &made, const auto &arguments, int was_linked)
    {
        if (was_linked)
            note(made, std::get<Argument>(arguments));
    }

private:
    static void note(call &made, const void *item)
    {
        if (made.used(0) != 0 && item)
            book(item, kind::item, made.used(0), made.where());
    }
};

/* SL_insert_unique: the item may be on this list. On a ring that does not hold it, the search never ends. */
struct linked_once : linked<1> {
    static void before(call &made, const auto &arguments)
    {
        const auto [list, item] = arguments;
        if (made.used(0) == 0 || !item || (item && holds(list, item)))
            return;
        if (list->closed && list->first) {
            made.wrong().say("the list is a ring");
            made.wrong().show_container(made.used(0));
        } else {
            linked<1>::before(made, arguments);
        }
    }
};

/* An item of container 0. One that was never seen may have been linked by the program: the list is asked. */
template <int Argument>
struct on_the_list : role {
    static void before(call &made, const auto &arguments)
    {
        const void *const item = std::get<Argument>(arguments);
        if (item && made.used(0) != 0 && !find(item)) {
            claim_all_members(made.used(0), kind::item);
            if (!find(item)) {
                made.wrong().say("the item is on no list");
                made.wrong().show_container(made.used(0));
                return;
            }
        }
        made.judge_position(simple_list, made.used(0), item, "item");
    }
};

/* As on_the_list, and it is removed. */
struct unlinked : on_the_list<1> {
    static void after(call &made, const auto &arguments) { mark_released(std::get<1>(arguments), made.where()); }
};

struct unlinked_at_index : role {
    static void before(call &made, const auto &arguments)
    {
        if (made.used(0) == 0)
            return;
        int32_t left = std::get<1>(arguments);
        for_each_item(std::get<0>(arguments), [&](const void *item) {
            if (left-- == 0)
                made.remember(item);
        });
    }

    static void after(call &made, const auto &, int was_unlinked)
    {
        if (was_unlinked)
            mark_released(made.remembered(), made.where());
    }
};

/* The items of container 0 are given to the program. */
struct all_unlinked : role {
    static void before(call &made, const auto &)
    {
        if (made.used(0) != 0)
            for_each_item(static_cast<const SL_list *>(owner_at(made.used(0)).container),
                          [&made](const void *item) { mark_released(item, made.where()); });
    }
};

/* The items of the list that was made. */
struct all_linked : role {
    static void after(call &made, const auto &, const SL_list *list)
    {
        const entry *const head = list ? find(list) : nullptr;
        if (!head)
            return;
        const owner_number number = head->owner;
        for_each_item(list, [&](const void *item) { book(item, kind::item, number, made.where()); });
    }
};

/* The library itself raises for an item of a ring that has no predecessor, and does nothing on an open list. */
struct rolled_to : role {
    static void before(call &made, const auto &arguments)
    {
        const auto *const item = static_cast<const mova_sl_links *>(std::get<1>(arguments));
        if (made.used(0) != 0 && std::get<0>(arguments)->closed && (!item || item->prev))
            on_the_list<1>::before(made, arguments);
    }
};

inline bool is_open(const void *list)
{
    return !static_cast<const SL_list *>(list)->closed;
}

/* An item that was removed is delivered, and the iteration ends there. */
struct iterator : role {
    static void before(call &made, const auto &arguments)
    {
        const SL_iterator *const stepped = std::get<0>(arguments);
        if (!stepped) {
            made.wrong().say("the iterator is null");
            return;
        }
        const entry *const known = stepped->upcoming ? find(stepped->upcoming) : nullptr;
        if (known && known->live && known->what == kind::item)
            made.judge_iterator(simple_list, stepped->upcoming, stepped->end, is_open);
    }
};

/* SL_append_list: both lists are open. */
struct joinable : role {
    static void before(call &made, const auto &arguments)
    {
        if (!std::get<0>(arguments)->closed && !(*std::get<1>(arguments))->closed)
            return;
        made.wrong().say("the list is a ring");
        made.wrong().show_container(made.used(0));
        made.wrong().show_container(made.used(1));
    }
};

inline constexpr container<0, simple_list> read{use::read}, edit{use::edit}, empty{use::empty};
inline constexpr released<0, simple_list> gone{false};
inline constexpr released<1, simple_list, 1> joined{false};
inline constexpr makes<simple_list> list;

} // namespace sl

namespace rows {

inline constexpr row SL_create{sl::list};
inline constexpr row SL_release{sl::gone};
inline constexpr row SL_total_release{sl::gone, sl::all_unlinked{}};
inline constexpr row SL_make_empty{sl::empty, sl::all_unlinked{}};

inline constexpr row SL_total_copy{sl::read, sl::list, sl::all_linked{}};
inline constexpr row SL_check{sl::read};
inline constexpr row SL_set_closed{sl::edit};
inline constexpr row SL_reset_closed{sl::edit};
inline constexpr row SL_count_items{sl::read};

inline constexpr row SL_advance{sl::read, sl::on_the_list<1>{}};
inline constexpr row SL_get_index{sl::read, sl::on_the_list<1>{}};
inline constexpr row SL_pos_at_index{sl::read};

inline constexpr row SL_append_after_last{sl::edit, one_more{}, sl::linked<1>{}};
inline constexpr row SL_insert_before_first{sl::edit, one_more{}, sl::linked<1>{}};
inline constexpr row SL_insert_before{sl::edit, one_more{}, sl::on_the_list<1>{}, sl::linked<2>{}};
inline constexpr row SL_insert_after{sl::edit, one_more{}, sl::on_the_list<1>{}, sl::linked<2>{}};
inline constexpr row SL_insert_before_index{sl::edit, one_more{}, sl::linked<2>{}};
inline constexpr row SL_insert_after_index{sl::edit, one_more{}, sl::linked<2>{}};
inline constexpr row SL_insert_unique{sl::edit, one_more{}, sl::linked_once{}};

inline constexpr row SL_remove_item{sl::edit, sl::unlinked{}};
inline constexpr row SL_remove_at_index{sl::edit, sl::unlinked_at_index{}};
inline constexpr row SL_reverse{sl::edit};
inline constexpr row SL_append_list{sl::edit, sl::joined, joins_1_to_0{}, sl::joinable{}};
inline constexpr row SL_roll{sl::edit, sl::rolled_to{}};

inline constexpr row SL_empty_iter{role{}};
inline constexpr row SL_tested_items_inbetween{role{}};
inline constexpr row SL_all_items_inbetween{role{}};
inline constexpr row SL_tested_items{sl::read};
inline constexpr row SL_tested_items_reversed{sl::read};
inline constexpr row SL_all_items{sl::read};
inline constexpr row SL_all_items_reversed{sl::read};
inline constexpr row SL_next_item{sl::iterator{}};

} // namespace rows

} // namespace mova::checked

#endif
