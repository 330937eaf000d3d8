/* SPDX-License-Identifier: MIT */
/* The rows of the pointer lookup. Its table is noted as nobody's, for a program may look at it with the functions of hash
   tables. */
#ifndef MOVA_CHECKED_POINTER_LOOKUP_H
#define MOVA_CHECKED_POINTER_LOOKUP_H

#include "hash_table.h"

#include <mova/hash/pointer_lookup.h>

namespace mova::checked {

namespace lu {

inline int broken_invariant(const mova_lookup &lookup)
{
    const bool table_is_right = are_bytes_there(lookup.table, sizeof *lookup.table) &&
                                lookup.table->minimum_size == 8 && lookup.table->maximum_shift == 0;
    return table_is_right ? hsh::broken_invariant(*lookup.table) : 1;
}

inline int64_t size(const mova_lookup &lookup)
{
    return are_bytes_there(lookup.table, sizeof *lookup.table) ? lookup.table->capacity : 0;
}

} // namespace lu

inline constexpr family pointer_lookup = {
    "lookup",
    "pointer lookup",
    "block",
    false,
    nullptr,
    [](const void *lookup) { return lu::broken_invariant(*static_cast<const mova_lookup *>(lookup)); },
    [](const void *lookup) { return lu::size(*static_cast<const mova_lookup *>(lookup)); },
};

namespace lu {

struct makes_lookup : makes<pointer_lookup> {
    static void after(call &made, const auto &arguments, mova_lookup *result)
    {
        makes::after(made, arguments, result);
        if (result)
            book(result->table, kind::block, 0, made.where());
    }
};

/* Neither the lookup nor its address need be there. */
struct gone_or_null : role {
    static void before(call &made, const auto &arguments)
    {
        if (std::get<0>(arguments))
            released<0, pointer_lookup>(true).before(made, arguments);
    }

    static constexpr bool makes_or_releases() { return true; }
};

/* The pair in front goes into the table. */
struct room : role {
    static void before(call &made, const auto &arguments)
    {
        const mova_lookup *const lookup = std::get<0>(arguments);
        if (made.used(0) != 0 && lookup->front_key != 0)
            hsh::judge_room(made, lookup->table, lookup->front_key);
    }
};

inline constexpr container<0, pointer_lookup> read{use::read}, edit{use::edit};

} // namespace lu

namespace rows {

inline constexpr row mova_lu_create{lu::makes_lookup{}};
inline constexpr row mova_lu_add{lu::edit, hsh::key{}, lu::room{}};
inline constexpr row mova_lu_get{lu::read};
inline constexpr row mova_lu_remove{lu::edit};
inline constexpr row mova_lu_release{lu::gone_or_null{}};
inline constexpr row mova_lu_statistics{lu::read};

} // namespace rows

} // namespace mova::checked

#endif
