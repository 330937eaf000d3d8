/* SPDX-License-Identifier: MIT */
/* Block array, typed: mova/arrays/block_array.h, whose elements are T.

       mova::block_array<point> outline(100);        room for 100; grows by 10, or by set_increment
       outline.append({1, 2});
       outline.close();                              after the last comes the first
       for (const point &at : outline.around(5))     for ever

   The record lies in the object, so that an element is one load away. An array that was moved from, or made without room,
   has no storage: it is empty, and may be used. Ranges, walks and what edits do to them: mova/cxx/array.h; whether it is a
   ring makes no difference to those.

   Errors: nothing raises. What grows or copies allocates; after an exception the array is as it was, but for open_at(). */
#ifndef MOVA_CXX_BLOCK_ARRAY_H
#define MOVA_CXX_BLOCK_ARRAY_H

#include <mova/arrays/block_array.h>
#include <mova/cxx/array.h>

namespace mova {

/* Walks around the elements of an array for ever. It points into the object: where that is moved or ends, it dies, although
   pointers to elements outlive a move. */
template <class T>
class array_circulator {
public:
    using value_type = std::remove_const_t<T>;
    using difference_type = std::ptrdiff_t;
    using iterator_category = std::bidirectional_iterator_tag;

    array_circulator() = default;
    array_circulator(const GB_block *block, std::int32_t index) noexcept : block_(block), index_(index) {}

    /* The index of the element that it stands at. */
    std::int32_t index() const noexcept { return index_; }
    T &operator*() const noexcept { return static_cast<T *>(block_->data)[index_]; }
    T *operator->() const noexcept { return std::addressof(**this); }

    array_circulator &operator++() noexcept
    {
        index_ = index_ + 1 < block_->count ? index_ + 1 : 0;
        return *this;
    }
    array_circulator &operator--() noexcept
    {
        index_ = (index_ > 0 ? index_ : block_->count) - 1;
        return *this;
    }
    array_circulator operator++(int) noexcept
    {
        array_circulator before = *this;
        ++*this;
        return before;
    }
    array_circulator operator--(int) noexcept
    {
        array_circulator before = *this;
        --*this;
        return before;
    }
    friend bool operator==(array_circulator a, array_circulator b) noexcept { return a.index_ == b.index_; }

private:
    const GB_block *block_ = nullptr;
    std::int32_t index_ = 0;
};

/* An array, in whose object the C record lies. It owns its storage. */
template <class T>
class block_array : public array_of<block_array<T>, T> {
public:
    block_array() noexcept = default;
    /* With room for so many elements. */
    explicit block_array(std::size_t room) { GB_init(&block_, sizeof(T), narrow(room)); }
    /* Adopts a record that the C functions filled. */
    explicit block_array(const GB_block &block) noexcept : block_(block) {}
    block_array(std::initializer_list<T> elements) : block_array(elements.size())
    {
        for (const T &each : elements)
            append(each);
    }
    template <range_of<block_array, T> Range>
    explicit block_array(Range &&elements) : block_array()
    {
        for (auto &&each : elements)
            append(static_cast<T>(each));
    }
    block_array(block_array &&other) noexcept : block_(other.release()) {}
    block_array &operator=(block_array &&other) noexcept
    {
        block_array taken(std::move(other));
        std::swap(block_, taken.block_);
        return *this;
    }
    ~block_array() { GB_release(&block_); }

    GB_block *get() noexcept { return &block_; }
    const GB_block *get() const noexcept { return &block_; }

    /* The record, which is the caller's from now on. The array has no storage then. */
    [[nodiscard]] GB_block release() noexcept { return std::exchange(block_, without_storage); }

    T *data() noexcept { return static_cast<T *>(block_.data); }
    const T *data() const noexcept { return static_cast<const T *>(block_.data); }
    std::size_t size() const noexcept { return static_cast<std::size_t>(block_.count); }
    std::size_t capacity() const noexcept { return static_cast<std::size_t>(block_.capacity); }

    /* ---- adding ---- */

    /* Adds at the end; linear where a full array grows. */
    void append(const T &element)
    {
        const std::uint32_t end = forwarded(block_.count);
        if (end < forwarded(block_.capacity)) [[likely]] {
            block_.count = static_cast<std::int32_t>(end + 1);
            ::new (data() + end) T(element);
        } else {
            append_to_full(element);
        }
    }
    /* Moves the elements of another array to the end. That one has no storage then; itself it leaves as it is. Linear in its
       size. After an exception both are as they were. */
    void append(block_array &&other)
    {
        if (&other == this)
            return;
        GB_append_block(&block_, &other.block_);
        other.block_ = without_storage;
    }

    /* In before element `i`, or at the end. Linear in the elements from there on. */
    void insert(std::size_t i, const T &element)
    {
        const T copied = element;
        GB_insert_item(&block_, narrow(i), &copied);
    }

    /* How many elements a full array grows by: 10, until this says otherwise. */
    void set_increment(std::int32_t increment) noexcept { GB_set_inc(&block_, increment); }

    /* Makes the storage as large as that, which may be smaller; not below the size. Linear. */
    void set_capacity(std::size_t n) { GB_set_number_of_elements(&block_, narrow(n)); }

    /* ---- removing ---- */

    /* Element `i`, or `n` elements from there on, which must all be there. Linear in the elements beyond. */
    void remove(std::size_t i) noexcept { GB_remove_item(&block_, narrow(i)); }
    void cut(std::size_t i, std::size_t n) noexcept
    {
        if (n == 0)
            return;
        std::memmove(data() + i, data() + i + n, (size() - i - n) * sizeof(T));
        block_.count -= narrow(n);
    }
    /* Requires an element. */
    void remove_last() noexcept { GB_remove_last_item(&block_); }
    /* Removes all elements. Keeps the storage. */
    void clear() noexcept { GB_make_empty(&block_); }

    /* ---- rings ---- */

    /* Makes the array a ring. The elements stay as they are. */
    void close() noexcept { GB_set_closed(&block_); }
    /* Makes the array open. The elements stay as they are. */
    void open() noexcept { GB_reset_closed(&block_); }
    /* Whether the array is a ring. */
    bool is_closed() const noexcept { return block_.closed != 0; }

    /* The endless range from element `i` on, be the array a ring or not. Requires that element. */
    auto around(std::size_t i = 0) &noexcept { return circulation<T>(i); }
    auto around(std::size_t i = 0) const &noexcept { return circulation<const T>(i); }
    template <class... At>
    auto around(At... at) &&
    {
        return named(*this).around(at...);
    }

    /* The index `steps` from `i`: around a ring, or -1 outside an open array. */
    std::int32_t advance(std::int32_t i, std::int32_t steps) const noexcept { return GB_advance(&block_, i, steps); }

    /* Cuts a ring at element `i`, which becomes the first and, once more, the last. Linear. After an exception the array may have
       grown; it is the same ring. */
    void open_at(std::size_t i) { GB_make_open_at_position(&block_, narrow(i)); }

    /* Splits an open array, which keeps what comes up to element `i`; the result begins with that element too. Linear. */
    block_array split(std::size_t i)
    {
        block_array part;
        GB_remove_and_get_end_part(&part.block_, &block_, narrow(i));
        return part;
    }

    /* Rotates a ring: element `n` becomes the first. Linear. */
    void roll(std::int32_t n) { GB_roll(&block_, n); }

    /* ---- the rest ---- */

    /* Linear. */
    void reverse() { GB_reverse(&block_); }

    /* Another array of the same elements, a ring where this is one. Linear. After an exception there is none. */
    block_array copy() const
    {
        block_array made;
        GB_copy(&made.block_, &block_);
        return made;
    }
    /* Takes the elements of another array, and whether it is a ring. Linear. */
    void assign(const block_array &other) { GB_copy_into(&block_, &other.block_); }

private:
    /* Full, with the increment that GB_init gives: the first element makes it grow. */
    static constexpr GB_block without_storage = {nullptr, sizeof(T), 0, 0, 10, 0};

    static std::int32_t narrow(std::size_t n) noexcept { return static_cast<std::int32_t>(n); }

    template <class Element>
    iterator_range<array_circulator<Element>, std::unreachable_sentinel_t> circulation(std::size_t i) const noexcept
    {
        return {array_circulator<Element>(&block_, narrow(i)), {}};
    }

    /* The element may lie in the storage that is given up. */
    [[gnu::noinline]] void append_to_full(const T &element)
    {
        const T copied = element;
        GB_append_after_last(&block_, &copied);
    }

    GB_block block_ = without_storage;
};

} // namespace mova

#endif
