/* SPDX-License-Identifier: MIT */
/* The rows of the colour table. There is one, it is nobody's record, and most of what is done wrong to it the library raises
   itself. */
#ifndef MOVA_CHECKED_COLOUR_TABLE_H
#define MOVA_CHECKED_COLOUR_TABLE_H

#include "internal/roles.h"

#include <mova/clut/colour_table.h>
#include <mova/clut/internal/table_state.h>

#include <cstring>

namespace mova::checked {

inline constexpr family colour_table = {
    "colour table", "colour table", "colour", false, nullptr, nullptr, nullptr,
};

namespace clut {

/* The table. It is there from the start, and never released. */
inline owner_number the_table()
{
    static owner_number number;
    if (number == 0) {
        number = new_owner(colour_table, nullptr);
        owner_at(number).container = &::mova::clut::table;
    }
    return number;
}

struct entered : role {
    constexpr explicit entered(use does) : how(does) {}

    void before(call &made, const auto &) const { made.enters(the_table(), how); }

    use how;
};

/* RGBLUT_init. */
struct made_anew : role {
    static void before(call &made, const auto &) { owner_at(the_table()).made = made.where(); }
};

/* A negative index raises nothing, and is outside the table. */
template <int Argument>
struct index : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<Argument>(arguments) < 0)
            made.wrong().say("the index is negative");
    }
};

/* A component times 255 fits into 32 bits; what is no number does not. */
template <int Argument>
struct component : role {
    static void before(call &made, const auto &arguments)
    {
        constexpr float limit = 2147483648.0f;
        const float product = std::get<Argument>(arguments) * 255;
        if (!(product > -limit && product < limit))
            made.wrong().say("a component is out of range");
    }
};

struct outside_callbacks : role {
    static void before(call &made, const auto &)
    {
        const running_call *const outer = made.outer_call([](const running_call &of) {
            return std::strncmp(of.function, "CLUT_", 5) == 0 || std::strcmp(of.function, "RGBLUT_init") == 0;
        });
        if (outer)
            made.wrong().say("the colour table is calling back in %s", outer->function);
    }
};

template <int Argument>
struct stored : role {
    static void before(call &made, const auto &arguments)
    {
        if (!std::get<Argument>(arguments))
            made.wrong().say("the address of a component is null");
    }
};

inline constexpr entered read{use::read}, edit{use::edit};

} // namespace clut

namespace rows {

inline constexpr row RGBLUT_init{clut::outside_callbacks{}, clut::edit, clut::made_anew{}};
inline constexpr row CLUT_alloc{clut::edit, clut::index<0>{}};
inline constexpr row CLUT_new_index{clut::edit};
inline constexpr row CLUT_release_index{clut::edit, clut::index<0>{}};
inline constexpr row CLUT_set{clut::edit, clut::index<0>{}};
inline constexpr row CLUT_set_RGB{clut::edit, clut::index<0>{}, clut::component<1>{}, clut::component<2>{},
                                  clut::component<3>{}};
inline constexpr row CLUT_get{clut::read, clut::index<0>{}, clut::stored<1>{}, clut::stored<2>{}, clut::stored<3>{}};
inline constexpr row CLUT_copy{clut::edit, clut::index<0>{}, clut::index<1>{}};
inline constexpr row CLUT_statistics{clut::read};

} // namespace rows

} // namespace mova::checked

#endif
