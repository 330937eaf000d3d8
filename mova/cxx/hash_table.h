/* SPDX-License-Identifier: MIT */
/* Hash table, typed: mova/hash/hash_table.h from word-sized keys to word-sized values.

       mova::hash_table<const country *, int> visits;
       visits.set(&france, 3);
       if (const std::optional<int> n = visits.find(&france))

   Keys and values are pointers, integers or enumerations. A key of 0, or null, cannot be stored. Where the keys are anything
   else, strings first of all: mova/cxx/keyed_table.h.

   As a forward range the table delivers pairs of a key and a value, in the order of its slots. What an edit does to an
   iterator: set() of a stored key nothing; a new key or a removal ends it. An iterator is as large as the C one. The look at
   a key's home slot, where most keys stand, is compiled into the caller. Errors: nothing raises; after an
   exception out of the memory service the table is as it was. */
#ifndef MOVA_CXX_HASH_TABLE_H
#define MOVA_CXX_HASH_TABLE_H

#include <bit>
#include <cstdint>
#include <iterator>
#include <optional>
#include <utility>

#include <mova/cxx/owner.h>
#include <mova/cxx/word.h>
#include <mova/hash/hash_table.h>

namespace mova {

/* A table, which owns its record and its arrays, and nothing that keys and values point to. */
template <class Key, class Value>
class hash_table : public owner<HSH_table, release_by<HSH_release>> {
    using base = owner<HSH_table, release_by<HSH_release>>;
    static_assert(word_sized<Key>,
                  "mova::hash_table: a key is a pointer, an integer or an enumeration, no wider than a word: "
                  "take mova::keyed_table for keys of any other type");
    static_assert(word_sized<Value>,
                  "mova::hash_table: a value is a pointer, an integer or an enumeration, no wider than a "
                  "word: store a pointer to it, or take mova::keyed_table");

public:
    using value_type = std::pair<Key, Value>;

    /* Walks over the pairs in the order of their slots. */
    class iterator {
    public:
        using value_type = std::pair<Key, Value>;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::forward_iterator_tag;
        using iterator_category = std::input_iterator_tag;

        iterator() = default;
        iterator(const HSH_table *table, std::int32_t slot) noexcept : table_(table), slot_(slot) { skip_empty(); }

        value_type operator*() const noexcept
        {
            return {from_word<Key>(table_->keys[slot_]), from_word<Value>(table_->values[slot_])};
        }
        iterator &operator++() noexcept
        {
            ++slot_;
            skip_empty();
            return *this;
        }
        iterator operator++(int) noexcept
        {
            iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const iterator &a, const iterator &b) noexcept { return a.slot_ == b.slot_; }

    private:
        void skip_empty() noexcept
        {
            while (table_ && slot_ < table_->capacity && !table_->keys[slot_])
                ++slot_;
        }

        const HSH_table *table_ = nullptr;
        std::int32_t slot_ = 0;
    };
    using const_iterator = iterator;

    /* Low bits that are the same in all keys: those of addresses of blocks, none of integers. */
    static constexpr std::int32_t usual_shift =
        std::is_pointer_v<Key> ? std::countr_zero(alignof(std::max_align_t)) : 0;

    using base::base;

    /* With room for so many keys. The shift is the C header's. */
    explicit hash_table(std::size_t room = 0, std::int32_t maximum_shift = usual_shift)
        : base(HSH_create(room ? static_cast<std::uint32_t>(room / 7 * 8 + 8) : 0, maximum_shift))
    {
    }

    iterator begin() const noexcept { return iterator(get(), 0); }
    iterator end() const noexcept { return iterator(get(), head_ ? head_->capacity : 0); }
    bool empty() const noexcept { return size() == 0; }
    std::size_t size() const noexcept { return head_ ? static_cast<std::size_t>(head_->count) : 0; }

    /* Stores the value, in place of what was stored for the key. Requires a key that is not 0. Unchanged after an
       exception. */
    void set(Key key, Value value) { HSH_set_value(get(), to_word(key), to_word(value)); }

    /* The value of the key, or `absent` where it has none. */
    Value get_or(Key key, Value absent = {}) const noexcept
    {
        const std::size_t slot = mova_hsh_slot_and_value(get(), to_word(key));
        return head_->keys[slot] ? from_word<Value>(head_->values[slot]) : absent;
    }
    /* The value of the key, or nothing. */
    std::optional<Value> find(Key key) const noexcept
    {
        const std::size_t slot = mova_hsh_slot_and_value(get(), to_word(key));
        if (!head_->keys[slot])
            return std::nullopt;
        return from_word<Value>(head_->values[slot]);
    }
    bool contains(Key key) const noexcept { return head_->keys[mova_hsh_slot(get(), to_word(key))] != 0; }

    /* Returns whether the key was there. Unchanged after an exception. */
    bool remove(Key key) { return HSH_remove_entry(get(), to_word(key)) >= 0; }

    /* How far searches walk, and which shift suits the keys best. Linear in the number of slots, up to 30 times. */
    mova_hash_statistics statistics() const { return mova_hash_table_statistics(get()); }

    /* Whether both have the same keys with the same values. */
    friend bool operator==(const hash_table &a, const hash_table &b) noexcept
    {
        if (a.size() != b.size())
            return false;
        for (const auto &[key, value] : a) {
            if (b.find(key) != value)
                return false;
        }
        return true;
    }
};

} // namespace mova

#endif
