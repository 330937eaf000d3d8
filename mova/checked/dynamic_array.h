/* SPDX-License-Identifier: MIT */
/* The rows of the dynamic array, and what the families that lie in one take of them. */
#ifndef MOVA_CHECKED_DYNAMIC_ARRAY_H
#define MOVA_CHECKED_DYNAMIC_ARRAY_H

#include "internal/elements.h"
#include "internal/roles.h"

#include <mova/arrays/dynamic_array.h>
#include <mova/arrays/internal/invariants.h>

#include <algorithm>

namespace mova::checked {

namespace da {

inline int broken_invariant(const void *array)
{
    const auto *const judged = static_cast<const DA_array *>(array);
    return judged->increment < 1 ? 2 : mova::broken_invariant(*judged);
}

inline int64_t constant_size(const void *)
{
    return 1;
}

} // namespace da

inline constexpr family dynamic_array = {
    "array", "dynamic array", "block", false, nullptr, da::broken_invariant, da::constant_size,
};

namespace da {

/* ---- indices and counts ---- */

template <int Argument>
struct not_negative : role {
    constexpr explicit not_negative(const char *means) : what(means) {}

    void before(call &made, const auto &arguments) const
    {
        if (std::get<Argument>(arguments) < 0)
            made.wrong().say("the %s is negative", what);
    }

    const char *what;
};

struct increment : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<1>(arguments) < 1)
            made.wrong().say("the increment is below 1");
    }
};

/* The room that a function asks for, as the header's table says, where the storage is too small: the room and the increment
   together must stay below 2^31, and what is copied must not lie in the storage, which moves. */
inline void judge_growth(call &made, const DA_array *array, int64_t needed, int64_t asked, const void *source = nullptr)
{
    if (made.used(0) == 0 || array->nalloc >= needed)
        return;
    const int64_t increment = std::max(array->increment, 1), room = (asked / increment + 1) * increment;
    if (asked + array->increment > std::numeric_limits<int32_t>::max())
        made.wrong().say("the array would have more than %d elements", std::numeric_limits<int32_t>::max());
    else if (!is_size(elements_bytes(room, array->element_size)))
        made.wrong().say("the array would be larger than a block can be");
    else if (source && lies_in(source, array->data, elements_bytes(array->nalloc, array->element_size)))
        made.wrong().say("the elements lie in the array, which grows for them");
    else
        return;
    made.wrong().show_container(made.used(0));
}

struct extends : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [array, n] = arguments;
        judge_growth(made, array, int64_t{n} + 1, n);
    }
};

struct reaches : role {
    static void before(call &made, const auto &arguments)
    {
        const int64_t i = std::get<1>(arguments);
        judge_growth(made, std::get<0>(arguments), i + 1, i + 1);
    }
};

/* DA_put_item: the source may be the element, but not overlap it. */
struct puts : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [array, i, source] = arguments;
        judge_growth(made, array, int64_t{i} + 1, int64_t{i} + 1, source);
        if (made.is_wrong() || made.used(0) == 0 || !source || i >= array->nalloc)
            return;
        const size_t size = array->element_size;
        if (overlap(source, static_cast<const char *>(array->data) + size * static_cast<size_t>(i), size)) {
            made.wrong().say("the source overlaps the element");
            made.wrong().show_container(made.used(0));
        }
    }
};

struct appends : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [array, source, n] = arguments;
        const int64_t needed = int64_t{array->nitems} + n;
        judge_growth(made, array, needed, needed, n > 0 ? source : nullptr);
    }
};

struct inserts : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [array, i, source, n] = arguments;
        const int64_t needed = i < array->nitems ? int64_t{array->nitems} + n : int64_t{i} + n + 1;
        judge_growth(made, array, needed, needed, n > 0 ? source : nullptr);
    }
};

/* DA_delete: there are so many elements. */
struct deletes : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [array, i, n] = arguments;
        if (made.used(0) == 0 || int64_t{i} + n <= array->nitems)
            return;
        made.wrong().say("the elements reach past the end");
        made.wrong().add(nullptr, "%-10s %d from %d on, of %d", "elements", n, i, array->nitems);
        made.wrong().show_container(made.used(0));
    }
};

struct one_size : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [target, source] = arguments;
        if (made.used(0) == 0 || made.used(1) == 0 || target->element_size == source->element_size)
            return;
        say_element_sizes(made, target->element_size, source->element_size);
        made.wrong().show_container(made.used(0));
        made.wrong().show_container(made.used(1));
    }
};

/* ---- containers ---- */

struct gone_or_null : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<0>(arguments))
            container<0, dynamic_array>(use::release).before(made, arguments);
    }

    static constexpr bool makes_or_releases() { return true; }
};

struct read_or_null : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<0>(arguments))
            container<0, dynamic_array>(use::read).before(made, arguments);
    }
};

/* A step reads the array, and its test may edit that. */
struct steps : role {
    static void before(call &made, const auto &arguments)
    {
        const DA_iterator *const iterator = std::get<0>(arguments);
        if (!iterator)
            return made.wrong().say("the iterator is null");
        made.judge_container(dynamic_array, iterator->array, use::read);
        made.uses(0, 0);
    }
};

inline constexpr container<0, dynamic_array> read{use::read}, edit{use::edit}, empty{use::empty};
inline constexpr container<1, dynamic_array, 1> source{use::read}, other{use::read};
inline constexpr makes<dynamic_array> array;
inline constexpr not_negative<1> index{"index"}, count{"count"};
inline constexpr not_negative<2> count_after_index{"count"}, count_after_source{"count"};
inline constexpr not_negative<3> count_after_both{"count"};

} // namespace da

namespace rows {

inline constexpr row DA_create{da::increment{}, da::array};
inline constexpr row DA_release{da::gone_or_null{}};
inline constexpr row DA_clear{da::empty};
inline constexpr row DA_copy{da::read, da::array};
inline constexpr row DA_copy_into{da::edit, da::source, da::one_size{}};

inline constexpr row DA_nitems{da::read};
inline constexpr row DA_nalloc{da::read};
inline constexpr row DA_memsize{da::read_or_null{}};
inline constexpr row DA_check{da::read};
inline constexpr row DA_extend{da::edit, da::extends{}};
inline constexpr row DA_setsize{da::edit, da::count, da::extends{}};
inline constexpr row DA_truncate{da::edit, da::count};
inline constexpr row DA_reset{da::edit};

inline constexpr row DA_data{da::read};
inline constexpr row DA_string{da::edit};
inline constexpr row DA_get_item{da::edit, da::index, da::reaches{}};
inline constexpr row DA_put_item{da::edit, da::index, da::puts{}};
inline constexpr row DA_append{da::edit, da::count_after_source, da::appends{}};
inline constexpr row DA_insert{da::edit, da::index, da::count_after_both, da::inserts{}};
inline constexpr row DA_delete{da::edit, da::index, da::count_after_index, da::deletes{}};
inline constexpr row DA_equal{da::read, da::other};

inline constexpr row DA_all_items{da::read};
inline constexpr row DA_tested_items{da::read};
inline constexpr row DA_next{da::steps{}};

inline constexpr row DA_reverse{da::edit};
inline constexpr row DA_roll{da::edit};

} // namespace rows

} // namespace mova::checked

#endif
