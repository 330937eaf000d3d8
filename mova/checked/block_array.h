/* SPDX-License-Identifier: MIT */
/* The rows of the block array. Its record is the program's, lies anywhere, and is copied at will: nothing is noted of it but
   which thread uses it. What is said of an array follows from its fields, and from what is known of its storage. */
#ifndef MOVA_CHECKED_BLOCK_ARRAY_H
#define MOVA_CHECKED_BLOCK_ARRAY_H

#include "internal/elements.h"
#include "internal/roles.h"

#include <mova/arrays/block_array.h>
#include <mova/arrays/internal/invariants.h>

#include <iterator>

namespace mova::checked {

inline constexpr family block_array = {"array", "block array", "block", false, nullptr, nullptr, nullptr};

namespace gb {

/* The owner that the address of a record has the place of; another's may be in it. */
inline owner_number user_of(const GB_block *array)
{
    static owner_number users[64];
    const auto address = reinterpret_cast<uintptr_t>(array);
    owner_number &number = users[(address / alignof(GB_block) ^ address >> 12) % std::size(users)];
    if (number == 0)
        number = new_owner(block_array, nullptr);
    owner_at(number).container = array;
    return number;
}

constexpr int32_t most_elements = std::numeric_limits<int32_t>::max();

inline void show(call &made, const GB_block *array)
{
    const entry *const storage = array->data ? find(array->data) : nullptr;
    made.wrong().add(nullptr, "array %p", static_cast<const void *>(array));
    if (storage)
        made.wrong().add(storage->last_place, "%-10s %s     ", "storage",
                         storage->live ? "allocated in" : "released in ");
}

/* A count below 0 is what the removal of the last element of none leaves. That was said. */
inline void judge(call &made, const GB_block *array)
{
    const entry *const storage = array->data ? find(array->data) : nullptr;
    const bool has_elements = array->capacity > 0 || array->count > 0;
    if (has_elements && storage && !storage->live && storage->what == kind::block && sees_every_block())
        made.wrong().say("the array was released");
    else if (const int broken = array->count < 0 ? 0 : broken_invariant(*array))
        made.wrong().say("the array breaks its invariant %d", broken);
    else
        return;
    show(made, array);
}

/* A record that the function fills, or only looks at. */
template <int Argument>
struct record : role {
    constexpr explicit record(use does) : how(does) {}

    void before(call &made, const auto &arguments) const
    {
        const GB_block *const given = std::get<Argument>(arguments);
        if (given)
            made.enters(user_of(given), how, Argument);
        else
            made.wrong().say("the array is null");
    }

    use how;
};

template <int Argument>
struct array : record<Argument> {
    using record<Argument>::record;

    void before(call &made, const auto &arguments) const
    {
        record<Argument>::before(made, arguments);
        if (!made.is_wrong())
            judge(made, std::get<Argument>(arguments));
    }
};

/* GB_release: without storage there is nothing to release, and all else may be as it is. */
struct released_record : role {
    static void before(call &made, const auto &arguments)
    {
        const GB_block *const given = std::get<0>(arguments);
        if (!given)
            made.wrong().say("the array is null");
        else if (given->capacity > 0)
            judge(made, given);
    }
};

/* ---- indices ---- */

/* An index of an element; with `and_end`, or of the place behind the last. */
struct index : role {
    constexpr explicit index(bool and_end) : may_be_end(and_end) {}

    void before(call &made, const auto &arguments) const
    {
        const GB_block *const in = std::get<0>(arguments);
        const int32_t i = std::get<1>(arguments);
        if (i >= 0 && i < in->count + (may_be_end ? 1 : 0))
            return;
        made.wrong().say("the index is out of range");
        made.wrong().add(nullptr, "%-10s %d of %d elements", "index", i, in->count);
        show(made, in);
    }

    bool may_be_end;
};

struct has_last : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<0>(arguments)->count > 0)
            return;
        made.wrong().say("the array is empty");
        show(made, std::get<0>(arguments));
    }
};

/* ---- growth and elements ---- */

/* One element more, which a full array grows for. */
template <int Element>
struct one_more_element : role {
    static void before(call &made, const auto &arguments)
    {
        const GB_block *const in = std::get<0>(arguments);
        const void *const element = std::get<Element>(arguments);
        if (in->count < in->capacity)
            return;
        if (in->increment < 1)
            made.wrong().say("the array is full, and its increment is below 1");
        else if (in->count > most_elements - in->increment)
            made.wrong().say("the array would have more than %d elements", most_elements);
        else if (!is_size(elements_bytes(int64_t{in->capacity} + in->increment, in->element_size)))
            made.wrong().say("the array would be larger than a block can be");
        else if (in->capacity > 0 && lies_in(element, in->data, elements_bytes(in->capacity, in->element_size)))
            made.wrong().say("the element lies in the array, which grows for it");
        else
            return;
        show(made, in);
    }
};

/* Room for a number of elements: of the record, or of a size that is an argument too. */
template <int Count>
struct makes_room : role {
    static void before(call &made, const auto &arguments)
    {
        uint32_t element_size;
        if constexpr (Count == 2)
            element_size = std::get<1>(arguments);
        else
            element_size = std::get<0>(arguments)->element_size;
        if (!is_size(elements_bytes(std::get<Count>(arguments), element_size)))
            made.wrong().say("the array would be larger than a block can be");
    }
};

struct replaces : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [in, i, element] = arguments;
        const size_t size = in->element_size;
        if (!overlap(element, static_cast<const char *>(in->data) + size * static_cast<size_t>(i), size))
            return;
        made.wrong().say("the element overlaps the one that it replaces");
        show(made, in);
    }
};

struct one_size : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [target, source] = arguments;
        if (target->element_size == source->element_size)
            return;
        say_element_sizes(made, target->element_size, source->element_size);
        show(made, target);
        show(made, source);
    }
};

struct two_arrays : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<0>(arguments) == std::get<1>(arguments))
            made.wrong().say("the two arrays are the same");
    }
};

struct joins : role {
    static void before(call &made, const auto &arguments)
    {
        const auto [target, source] = arguments;
        if (target->count <= most_elements - source->count)
            return;
        made.wrong().say("the array would have more than %d elements", most_elements);
        show(made, target);
    }
};

inline constexpr array<0> edit{use::edit}, read{use::read};
inline constexpr array<1> source{use::read}, other{use::edit};
inline constexpr record<0> fill{use::edit}, look{use::read};
inline constexpr index element{false}, element_or_end{true};

} // namespace gb

namespace rows {

inline constexpr row GB_init{gb::fill, gb::makes_room<2>{}};
inline constexpr row GB_set_inc{gb::fill};
inline constexpr row GB_set_number_of_elements{gb::edit, gb::makes_room<1>{}};
inline constexpr row GB_release{gb::released_record{}};
inline constexpr row GB_make_empty{gb::fill};
inline constexpr row GB_set_closed{gb::fill};
inline constexpr row GB_reset_closed{gb::fill};
inline constexpr row GB_count_items{gb::look};

inline constexpr row GB_append_after_last{gb::edit, gb::one_more_element<1>{}};
inline constexpr row GB_append_block{gb::edit, gb::source, gb::two_arrays{}, gb::one_size{}, gb::joins{}};
inline constexpr row GB_remove_last_item{gb::edit, gb::has_last{}};
inline constexpr row GB_replace_item{gb::edit, gb::element, gb::replaces{}};
inline constexpr row GB_insert_item{gb::edit, gb::element_or_end, gb::one_more_element<2>{}};
inline constexpr row GB_remove_item{gb::edit, gb::element};

inline constexpr row GB_advance{gb::read};
inline constexpr row GB_get_index{role{}};

inline constexpr row GB_copy{gb::fill, gb::source, gb::two_arrays{}};
inline constexpr row GB_copy_into{gb::edit, gb::source, gb::one_size{}};
inline constexpr row GB_reverse{gb::edit};

inline constexpr row GB_make_open_at_position{gb::edit};
inline constexpr row GB_remove_and_get_end_part{gb::fill, gb::other, gb::two_arrays{}};
inline constexpr row GB_roll{gb::edit};

} // namespace rows

} // namespace mova::checked

#endif
