/* SPDX-License-Identifier: MIT */
/* Pointer lookup, typed: mova/hash/pointer_lookup.h, quickest for the key that was added last.

       mova::pointer_lookup<window *, state *> states;                                  the values are the caller's
       mova::pointer_lookup<window *, state *, std::default_delete<state>> own_states;  the lookup's, until its end

   A key that is added again hides its older value until it is removed. A value that is owned is deleted at the end only: not
   when it is removed or displaced, and not where it is null. There are no positions. Errors: nothing raises; after an
   exception out of the memory service the lookup is as it was. */
#ifndef MOVA_CXX_POINTER_LOOKUP_H
#define MOVA_CXX_POINTER_LOOKUP_H

#include <mova/cxx/owner.h>
#include <mova/cxx/word.h>
#include <mova/hash/pointer_lookup.h>

namespace mova {

template <class Value, class Delete>
struct release_lookup {
    static void delete_value(mova_word *value)
    {
        if (*value)
            delete_by<Delete>(from_word<Value>(*value));
    }
    void operator()(mova_lookup *lookup) const noexcept
    {
        if constexpr (owns_items<Delete>)
            mova_lu_release(&lookup, delete_value);
        else
            mova_lu_release(&lookup, nullptr);
    }
};

/* A lookup. It owns its record and its table, and the values where Delete says so. */
template <class Key, class Value, class Delete = borrowed>
class pointer_lookup : public owner<mova_lookup, release_lookup<Value, Delete>> {
    using base = owner<mova_lookup, release_lookup<Value, Delete>>;
    static_assert(
        word_sized<Key> && word_sized<Value>,
        "mova::pointer_lookup: keys and values are pointers, integers or enumerations, no wider than a word: take "
        "mova::keyed_table for any other");
    static_assert(sizeof(deleter_guard<Delete>) != 0);

public:
    using base::base, base::get;
    pointer_lookup() : base(mova_lu_create()) {}

    /* Puts the pair in front. Returns the value of the pair that moved from there into the table. */
    Value add(Key key, Value value) { return from_word<Value>(mova_lu_add(get(), to_word(key), to_word(value))); }

    /* The value of the key, or 0. */
    Value find(Key key) const noexcept { return from_word<Value>(mova_lu_get(get(), to_word(key))); }

    /* Removes the pair in front, or else the one in the table. */
    void remove(Key key) { mova_lu_remove(get(), to_word(key)); }

    /* How far searches behind the front walk. Linear in the number of slots, up to 30 times. */
    mova_hash_statistics statistics() const { return mova_lu_statistics(get()); }
};

} // namespace mova

#endif
