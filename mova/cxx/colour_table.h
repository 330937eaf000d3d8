/* SPDX-License-Identifier: MIT */
/* Colour table, typed: mova/clut/colour_table.h, of which there is one for the process. Its two phases, its standard colours
   and its errors are told there.

       struct show {
           void operator()(std::int32_t index, mova::colour c) const { … }
       };
       mova::colour_table::make<show>(256);                        told of every change
       mova::colour_table::set(GE_WHITE, {255, 250, 240});
       mova::dynamic_colour sand({194, 178, 128});                 an index, given back at the end of its scope

   Errors: the comments of the C functions that are named here say what each raises and what that leaves. A dynamic colour
   that cannot be set has given its index back.

   The table is not the program's to own: it lives as long as the process, and every call may be made from anywhere. */
#ifndef MOVA_CXX_COLOUR_TABLE_H
#define MOVA_CXX_COLOUR_TABLE_H

#include <utility>

#include <mova/clut/colour_table.h>
#include <mova/cxx/owner.h>

namespace mova {

/* A colour, by its three components. */
struct colour {
    std::int16_t red, green, blue; /* 0 to 255 */
    bool operator==(const colour &) const = default;
};

/* The table, of which there is one: functions alone. */
struct colour_table {
    colour_table() = delete;

    /* Makes the table, once: RGBLUT_init. 0 entries are 256. */
    static void make(std::int32_t entries = 0) { RGBLUT_init(entries, nullptr, 0); }
    /* The same, with a class without state that is told of changes. Here the number of entries is not optional. */
    template <class Told>
    static void make(std::int32_t entries)
    {
        static_assert(stateless<Told>,
                      "mova::colour_table: what is told of changes must have no state, for the table keeps "
                      "it as a plain function: put the state into static variables");
        RGBLUT_init(entries, tell<Told>, 0);
    }

    /* Fixes the index for the life of the process. Raises what CLUT_alloc raises. */
    static void fix(std::int32_t index) { CLUT_alloc(index); }
    /* Gives the index the colour. Raises what CLUT_set raises. */
    static void set(std::int32_t index, colour c) { CLUT_set(index, c.red, c.green, c.blue); }
    /* The colour of the index. Raises what CLUT_get raises. */
    static colour get(std::int32_t index)
    {
        colour c = {};
        CLUT_get(index, &c.red, &c.green, &c.blue);
        return c;
    }
    /* Gives an index the colour of another. Raises what CLUT_copy raises. */
    static void copy(std::int32_t to, std::int32_t from) { CLUT_copy(to, from); }

private:
    template <class Told>
    static void tell(std::int32_t index, std::int16_t red, std::int16_t green, std::int16_t blue)
    {
        Told()(index, colour{red, green, blue});
    }
};

/* A dynamic index, which is given back at the end: CLUT_new_index and CLUT_release_index. Where the table is full it is the
   dirty index, which everybody shares. One that was moved from is null, and has index -1. */
class dynamic_colour {
public:
    dynamic_colour(std::nullptr_t) noexcept {}
    /* Takes an index and gives it the colour. Raises what CLUT_new_index and CLUT_set raise; there is none then. */
    explicit dynamic_colour(colour c) : index_(CLUT_new_index())
    {
        struct give_back {
            std::int32_t index;
            ~give_back()
            {
                if (index >= 0)
                    CLUT_release_index(index);
            }
        } guard = {index_};
        colour_table::set(index_, c);
        guard.index = -1;
    }
    /* Owns an index that CLUT_new_index gave. */
    static dynamic_colour adopt(std::int32_t index) noexcept
    {
        dynamic_colour adopted(nullptr);
        adopted.index_ = index;
        return adopted;
    }
    dynamic_colour(dynamic_colour &&other) noexcept : index_(other.release()) {}
    dynamic_colour &operator=(dynamic_colour &&other) noexcept
    {
        dynamic_colour taken(std::move(other));
        std::swap(index_, taken.index_);
        return *this;
    }
    ~dynamic_colour()
    {
        if (index_ >= 0)
            CLUT_release_index(index_);
    }

    /* The index; -1 of none. */
    std::int32_t get() const noexcept { return index_; }
    /* The index, which the caller gives back from now on: CLUT_release_index. */
    [[nodiscard]] std::int32_t release() noexcept { return std::exchange(index_, -1); }

    /* Gives the index another colour. Raises what CLUT_set raises. */
    void set(colour c) { colour_table::set(index_, c); }

private:
    std::int32_t index_ = -1;
};

} // namespace mova

#endif
