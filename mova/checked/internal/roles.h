/* SPDX-License-Identifier: MIT */
/* The roles that families share. `Argument` counts the function's arguments from 0, `Nth` the containers that it uses. */
#ifndef MOVA_CHECKED_INTERNAL_ROLES_H
#define MOVA_CHECKED_INTERNAL_ROLES_H

#include "call.h"

#include <cstdint>
#include <limits>

namespace mova::checked {

/* What a role does before the call where it does not say otherwise: nothing. */
struct role {
    static void before(call &, const auto &) {}

    /* Whether the place of the call is kept for a container's whole life, or after it. */
    static constexpr bool makes_or_releases() { return false; }
};

/* ---- containers ---- */

/* A container: a pointer to its head. What the call allocates is of the first one. */
template <int Argument, const family &Family, int Nth = 0>
struct container : role {
    constexpr explicit container(use does) : how(does) {}

    void before(call &made, const auto &arguments) const
    {
        const owner_number number = made.judge_container(Family, std::get<Argument>(arguments), how, Nth);
        if (Nth == 0)
            made.blocks_are_of(number);
    }

    constexpr bool makes_or_releases() const { return how == use::release; }

    use how;
};

/* A container that is released, or joined to another: the address of a pointer to its head. */
template <int Argument, const family &Family, int Nth = 0>
struct released : role {
    constexpr explicit released(bool may_be_null) : null_is_nothing(may_be_null) {}

    void before(call &made, const auto &arguments) const
    {
        const auto address = std::get<Argument>(arguments);
        if (!address)
            made.wrong().say("the address of the %s is null", Family.noun);
        else if (*address || !null_is_nothing)
            made.judge_container(Family, *address, use::release, Nth);
    }

    static constexpr bool makes_or_releases() { return true; }

    bool null_is_nothing;
};

/* The result is a new container. */
template <const family &Family>
struct makes : role {
    static void before(call &made, const auto &) { made.expect_container(Family); }

    static void after(call &made, const auto &, auto &result) { made.container_is(Family, result); }

    static constexpr bool makes_or_releases() { return true; }
};

/* All nodes of container 1 are of container 0 afterwards. */
struct joins_1_to_0 : role {
    static void before(call &made, const auto &)
    {
        if (made.used(0) != 0 && made.used(0) == made.used(1))
            made.wrong().say("the two %ss are the same", owner_at(made.used(0)).of->noun);
    }

    static void after(call &made, const auto &, auto &...)
    {
        if (made.used(0) != 0 && made.used(1) != 0)
            join(made.used(1), made.used(0));
    }
};

/* Container 0 gets one more item: its record has an int32_t `count`. */
template <int Argument = 0>
struct one_more : role {
    static void before(call &made, const auto &arguments)
    {
        const auto head = std::get<Argument>(arguments);
        if (made.used(0) == 0 || head->count != std::numeric_limits<int32_t>::max())
            return;
        made.wrong().say("the %s would hold more than %d items", owner_at(made.used(0)).of->noun, head->count);
        made.wrong().show_container(made.used(0));
    }
};

/* ---- positions ---- */

/* A position of the nth container; of any, with Nth -1. */
template <int Argument, const family &Family, int Nth = 0>
struct position : role {
    static void before(call &made, const auto &arguments)
    {
        made.judge_position(Family, Nth < 0 ? 0 : made.used(Nth), std::get<Argument>(arguments));
    }
};

/* As position, where null is allowed. */
template <int Argument, const family &Family, int Nth = 0>
struct position_or_null : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<Argument>(arguments))
            position<Argument, Family, Nth>::before(made, arguments);
    }
};

/* The address that the function stores a position at. */
template <int Argument>
struct stores_position : role {
    static void before(call &made, const auto &arguments)
    {
        if (!std::get<Argument>(arguments))
            made.wrong().say("the address of the position is null");
    }
};

/* The positions of the first container from one up to and including another, for functions that walk along `next` from the
   one to the other. */
template <int From, int To, const family &Family>
struct range : role {
    static void before(call &made, const auto &arguments)
    {
        const auto from = std::get<From>(arguments), to = std::get<To>(arguments);
        made.judge_position(Family, made.used(0), from, "begin");
        if (!made.is_wrong())
            made.judge_position(Family, made.used(0), to, "end");
        if (!made.is_wrong() && made.used(0) != 0 && !lies_ahead(std::get<0>(arguments), from, to)) {
            made.wrong().say("the end does not lie ahead of the begin");
            made.wrong().show_container(made.used(0));
        }
    }

private:
    /* On a ring everything lies ahead. */
    static bool lies_ahead(const auto *head, const auto *from, const auto *to)
    {
        int32_t left = head->closed ? 0 : head->count;
        while (left > 0 && from && from != to) {
            from = from->next;
            --left;
        }
        return head->closed || from == to;
    }
};

/* ---- iterators ---- */

/* The address of an iterator record of lists: it will deliver `*Next`, up to and including `*End`. Of some lists it stops
   where its end is elsewhere. */
template <int Argument, const family &Family, auto Next, auto End, bool (*Stops)(const void *container) = nullptr>
struct list_iterator : role {
    static void before(call &made, const auto &arguments)
    {
        const auto *const iterator = std::get<Argument>(arguments);
        if (!iterator)
            made.wrong().say("the iterator is null");
        else
            made.judge_iterator(Family, iterator->*Next, iterator->*End, Stops);
    }
};

} // namespace mova::checked

#endif
