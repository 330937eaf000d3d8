/* SPDX-License-Identifier: MIT */
/* The rows of the id table, which is a dynamic array. */
#ifndef MOVA_CHECKED_ID_LOOKUP_TABLE_H
#define MOVA_CHECKED_ID_LOOKUP_TABLE_H

#include "dynamic_array.h"

#include <mova/arrays/id_lookup_table.h>

namespace mova::checked {

inline constexpr family id_lookup_table = {
    "table", "id table", "block", false, &dynamic_array, da::broken_invariant, da::constant_size,
};

namespace io_lut {

/* A dynamic array of pointers, with the word of the flags at least. */
struct is_table : role {
    static void before(call &made, const auto &arguments)
    {
        const DA_array *const table = std::get<0>(arguments);
        if (made.used(0) == 0 || (table->element_size == sizeof(void *) && table->nitems >= 1))
            return;
        made.wrong().say("the array is no table of ids");
        made.wrong().show_container(made.used(0));
    }
};

struct adds : role {
    static void before(call &made, const auto &arguments)
    {
        const DA_array *const table = std::get<0>(arguments);
        const int64_t needed = int64_t{table->nitems} + 1;
        da::judge_growth(made, table, needed, needed);
    }
};

struct sets : role {
    static void before(call &made, const auto &arguments)
    {
        const int32_t id = std::get<2>(arguments);
        if (id < 1)
            made.wrong().say("the id is below 1");
        else
            da::judge_growth(made, std::get<0>(arguments), int64_t{id} + 1, int64_t{id} + 1);
    }
};

/* An iterator has the storage and the length that the table had. */
struct steps : role {
    static void before(call &made, const auto &arguments)
    {
        const io_lut_iterator *const iterator = std::get<0>(arguments);
        if (!iterator)
            return made.wrong().say("the iterator is null");
        const entry *const storage = iterator->next < iterator->count ? find(iterator->storage) : nullptr;
        if (!storage || storage->what != kind::block || resolved(storage->owner) == 0)
            return;
        const owner &of = owner_at(resolved(storage->owner));
        if (!same_records(*of.of, dynamic_array))
            return;
        if (!storage->live && sees_every_block()) {
            made.wrong().say("the storage that the iterator reads was released");
            made.wrong().add(storage->last_place, "%-10s released in  ", "storage");
        } else if (storage->live && of.live && static_cast<const DA_array *>(of.container)->data == iterator->storage &&
                   static_cast<const DA_array *>(of.container)->nitems > iterator->count) {
            made.wrong().say("the table became longer since the iterator was made");
        } else {
            return;
        }
        made.wrong().show_container(resolved(storage->owner));
    }
};

inline constexpr container<0, id_lookup_table> read{use::read}, edit{use::edit};
inline constexpr released<0, id_lookup_table> gone{false};
inline constexpr makes<id_lookup_table> table;

} // namespace io_lut

namespace rows {

inline constexpr row io_lut_create{io_lut::table};
inline constexpr row io_lut_allow_reuse{io_lut::edit, io_lut::is_table{}};
inline constexpr row io_lut_release{io_lut::gone};
inline constexpr row io_lut_add{io_lut::edit, io_lut::is_table{}, io_lut::adds{}};
inline constexpr row io_lut_get_id{io_lut::read, io_lut::is_table{}};
inline constexpr row io_lut_look_id{io_lut::read, io_lut::is_table{}};
inline constexpr row io_lut_set{io_lut::edit, io_lut::is_table{}, io_lut::sets{}};
inline constexpr row io_lut_get_ptr{io_lut::read, io_lut::is_table{}};
inline constexpr row io_lut_look_ptr{io_lut::read, io_lut::is_table{}};
inline constexpr row io_lut_all_items{io_lut::read, io_lut::is_table{}};
inline constexpr row io_lut_next_item{io_lut::steps{}};

} // namespace rows

} // namespace mova::checked

#endif
