/* SPDX-License-Identifier: MIT */
/* What the two arrays of T share: they are contiguous ranges, whose iterators are pointers to elements.

   std::span takes an array as it is; so do std::views and the algorithms of std::ranges. Elements are copied byte by byte.

       for (auto at : array.positions())         a walk that knows of its edits: a position is an index
           if (*at == 0)
               at.remove();

       edit, in the body of such a loop     what the walk does then
       at.remove()                          goes on with the element that moved there
       at.insert_before(element)            stays at its element, one further
       at.insert_after(element)             does not deliver the new one
       array.append(element)                does not deliver it
       any other edit of the array          delivers the indices that come, up to the number at the beginning

   A walk knows the array object: it ends where that is moved. Ranges and walks own nothing; of an array without a name none is
   made (mova/cxx/chain.h).

   Indices and numbers of elements are at most 2147483647, as those of the C functions: larger ones are not understood.

   What edits do to pointers, and to a loop over elements, says the C header: whatever grows the array ends them. An
   element that is given to an edit may lie in the array itself; a span of elements must not. */
#ifndef MOVA_CXX_ARRAY_H
#define MOVA_CXX_ARRAY_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <span>

#include <mova/cxx/chain.h>

namespace mova {

/* The positions of an array, during which elements may be removed and inserted through the position. */
template <class Array>
class array_walk {
public:
    /* An index, as long as the loop stands at it. */
    class position {
    public:
        explicit position(array_walk *walk) noexcept : walk_(walk) {}

        /* The index of the element that it stands at, counted from 0. */
        std::size_t index() const noexcept { return walk_->current_; }
        auto &operator*() const noexcept { return (*walk_->array_)[walk_->current_]; }
        auto *operator->() const noexcept { return std::addressof(**this); }

        /* Removes that element. The walk goes on with the one behind it. */
        void remove() const noexcept
        {
            walk_->array_->remove(walk_->current_);
            walk_->next_ = walk_->current_;
            --walk_->end_;
        }
        /* Copies an element in before that one. The walk stays at that one. */
        template <class T>
        void insert_before(const T &element) const
        {
            walk_->array_->insert(walk_->current_, element);
            ++walk_->current_, ++walk_->next_, ++walk_->end_;
        }
        /* Copies an element in behind that one. The walk does not deliver it. */
        template <class T>
        void insert_after(const T &element) const
        {
            walk_->array_->insert(walk_->current_ + 1, element);
            ++walk_->next_, ++walk_->end_;
        }

    private:
        array_walk *walk_;
    };

    /* What a loop over a walk goes by. */
    class iterator {
    public:
        using value_type = position;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::input_iterator_tag;

        iterator() = default;
        explicit iterator(array_walk *walk) noexcept : walk_(walk) {}
        position operator*() const noexcept { return position(walk_); }
        iterator &operator++() noexcept
        {
            walk_->current_ = walk_->next_++;
            return *this;
        }
        void operator++(int) noexcept { ++*this; }
        friend bool operator==(const iterator &at, std::default_sentinel_t) noexcept { return at.is_over(); }

    private:
        bool is_over() const noexcept
        {
            return walk_->current_ >= walk_->end_ || walk_->current_ >= walk_->array_->size();
        }

        array_walk *walk_ = nullptr;
    };

    explicit array_walk(Array &array) noexcept : array_(&array), end_(array.size()) {}
    iterator begin() noexcept { return iterator(this); }
    std::default_sentinel_t end() const noexcept { return {}; }

private:
    Array *array_;
    std::size_t current_ = 0, next_ = 1, end_;
};

/* A number of elements that is not negative, read anew by every append. A load that is extended by zeros is served at once
   from the store of the append before, one by the sign takes 2 ns longer. */
inline std::uint32_t forwarded(std::int32_t count) noexcept
{
    return static_cast<std::uint32_t>(count);
}

/* What both say of elements that they cannot take. */
template <class T>
struct array_element_guard {
    static_assert(
        std::is_trivially_copyable_v<T>,
        "mova::dynamic_array and mova::block_array move their elements as bytes, which this type does not allow: "
        "take mova::keyed_table, or mova::pointer_list<T, std::default_delete<T>>");
    static_assert(alignof(T) <= alignof(std::max_align_t),
                  "mova::dynamic_array and mova::block_array: the memory service does not align so much: take "
                  "mova::pointer_list<T, std::default_delete<T>>");
};

/* Array supplies data(), size(), remove(), insert() and cut(): taking out a run of elements. */
template <class Array, class T>
class array_of {
    static_assert(sizeof(array_element_guard<T>) != 0);

public:
    using value_type = T;
    using iterator = T *;
    using const_iterator = const T *;

    T *begin() noexcept { return self().data(); }
    T *end() noexcept { return self().data() + self().size(); }
    const T *begin() const noexcept { return self().data(); }
    const T *end() const noexcept { return self().data() + self().size(); }
    const T *cbegin() const noexcept { return begin(); }
    const T *cend() const noexcept { return end(); }

    iterator_range<std::reverse_iterator<T *>> reversed() &noexcept
    {
        return {std::reverse_iterator(end()), std::reverse_iterator(begin())};
    }
    iterator_range<std::reverse_iterator<const T *>> reversed() const &noexcept
    {
        return {std::reverse_iterator(end()), std::reverse_iterator(begin())};
    }
    template <class... None>
    auto reversed(None...) &&
    {
        return named(*this).reversed();
    }

    /* The elements from index `from` to index `to`, both included. */
    std::span<T> between(std::size_t from, std::size_t to) &noexcept { return {begin() + from, to - from + 1}; }
    std::span<const T> between(std::size_t from, std::size_t to) const &noexcept
    {
        return {begin() + from, to - from + 1};
    }
    template <class... Ends>
    auto between(Ends... ends) &&
    {
        return named(*this).between(ends...);
    }

    array_walk<Array> positions() &noexcept { return array_walk<Array>(self()); }
    template <class... None>
    auto positions(None...) &&
    {
        return named(*this).positions();
    }

    bool empty() const noexcept { return self().size() == 0; }

    /* Require an element of that index. */
    T &operator[](std::size_t i) noexcept { return self().data()[i]; }
    const T &operator[](std::size_t i) const noexcept { return self().data()[i]; }
    T &front() noexcept { return (*this)[0]; }
    const T &front() const noexcept { return (*this)[0]; }
    T &back() noexcept { return (*this)[self().size() - 1]; }
    const T &back() const noexcept { return (*this)[self().size() - 1]; }

    /* For the standard's inserters. */
    void push_back(const T &element) { self().append(element); }

    /* Removes the elements that `accepts` accepts, asked once each and in order, and returns their number. Linear. After
       an exception those up to the element that it was thrown for are done with. */
    template <class Accepts>
    std::size_t remove_if(Accepts accepts)
    {
        struct gap {
            Array &array;
            std::size_t to = 0, from = 0;
            ~gap() { array.cut(to, from - to); }
        };
        const std::size_t before = self().size();
        {
            gap closing = {self()};
            for (; closing.from < before; ++closing.from) {
                if (!accepts(std::as_const(self())[closing.from]))
                    self()[closing.to++] = self()[closing.from];
            }
        }
        return before - self().size();
    }

    friend bool operator==(const Array &a, const Array &b) { return std::ranges::equal(a, b); }
    friend auto operator<=>(const Array &a, const Array &b) requires std::three_way_comparable<T>
    {
        return compared_items(a, b);
    }

private:
    Array &self() noexcept { return static_cast<Array &>(*this); }
    const Array &self() const noexcept { return static_cast<const Array &>(*this); }
};

} // namespace mova

template <class Array>
inline constexpr bool std::ranges::enable_view<mova::array_walk<Array>> = true;

#endif
