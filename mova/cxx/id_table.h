/* SPDX-License-Identifier: MIT */
/* Id table, typed: mova/arrays/id_lookup_table.h for pointers to T, which stay the caller's.

       mova::id_table<country> countries;
       const std::int32_t id = countries.add(&france);
       country *found = countries.find(id);                  null where the id is free, or none

   As a range the table delivers the pointers in the order of their ids, and passes over the free ones; a step of the range
   knows its id. What lengthens the table ends its iterators.

   Errors: lines 140 and 155, and as mova/cxx/dynamic_array.h says where the table grows: after an exception out of the memory
   service it is as it was; where that returns null the ids are lost. */
#ifndef MOVA_CXX_ID_TABLE_H
#define MOVA_CXX_ID_TABLE_H

#include <mova/arrays/id_lookup_table.h>
#include <mova/cxx/chain.h>

namespace mova {

/* A table, which owns its words. The pointers are the caller's. */
template <class T>
class id_table : public owner<DA_array, release_by<io_lut_release>> {
    using base = owner<DA_array, release_by<io_lut_release>>;

    /* As large as the C iterator, which is a position here. */
    template <class Pointee>
    class steps {
    public:
        using value_type = Pointee *;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::forward_iterator_tag;
        using iterator_category = std::input_iterator_tag;

        steps() = default;
        explicit steps(const io_lut_iterator &at) noexcept : at_(at) { skip_free(); }
        /* Of a step to what is not constant one to what is. */
        template <class Other>
        requires std::same_as<const Other, Pointee> steps(const steps<Other> &other)
        noexcept : at_(other.at_) {}

        /* The id that it stands at. */
        std::int32_t id() const noexcept { return at_.next; }
        Pointee *operator*() const noexcept { return static_cast<Pointee *>(at_.storage[at_.next]); }
        steps &operator++() noexcept
        {
            ++at_.next;
            skip_free();
            return *this;
        }
        steps operator++(int) noexcept
        {
            steps before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const steps &a, const steps &b) noexcept { return a.id() == b.id(); }

    private:
        friend class steps<const Pointee>;

        void skip_free() noexcept
        {
            while (at_.next < at_.count && !at_.storage[at_.next])
                ++at_.next;
        }

        io_lut_iterator at_ = {};
    };

public:
    using value_type = T *;
    using iterator = steps<T>;
    using const_iterator = steps<const T>;

    using base::base;
    id_table() : base(io_lut_create()) {}

    iterator begin() noexcept { return iterator(from(1)); }
    iterator end() noexcept { return iterator(from(words())); }
    const_iterator begin() const noexcept { return const_iterator(from(1)); }
    const_iterator end() const noexcept { return const_iterator(from(words())); }
    bool empty() const noexcept { return begin() == end(); }

    /* Gives the pointer the next id. */
    std::int32_t add(T *pointer) { return io_lut_add(get(), word(pointer)); }

    /* Gives the id to the pointer; null frees it. Beyond the last id the table becomes longer. Raises line 140, unchanged,
       when the id is in use and reuse is not allowed. */
    void set(std::int32_t id, T *pointer) { io_lut_set(get(), word(pointer), id); }
    /* From now on set() may give an id that is in use to another pointer. */
    void allow_reuse() noexcept { io_lut_allow_reuse(get()); }

    /* The pointer of the id, or null. */
    T *find(std::int32_t id) noexcept
    {
        return id > 0 && id < head_->nitems ? static_cast<T *>(static_cast<void **>(head_->data)[id]) : nullptr;
    }
    const T *find(std::int32_t id) const noexcept { return const_cast<id_table *>(this)->find(id); }
    /* Raises line 155 where the id is free, or none. */
    T &operator[](std::int32_t id) { return *static_cast<T *>(io_lut_get_ptr(get(), id)); }
    const T &operator[](std::int32_t id) const { return *static_cast<const T *>(io_lut_get_ptr(get(), id)); }

    /* The lowest id of the pointer, 0 where it has none. Linear. */
    std::int32_t id_of(const T *pointer) const noexcept { return io_lut_look_id(get(), pointer); }

private:
    static void *word(T *pointer) noexcept { return const_cast<std::remove_const_t<T> *>(pointer); }

    std::int32_t words() const noexcept { return head_ ? head_->nitems : 1; }
    io_lut_iterator from(std::int32_t id) const noexcept
    {
        return {head_ ? static_cast<void **>(head_->data) : nullptr, words(), id};
    }
};

} // namespace mova

#endif
