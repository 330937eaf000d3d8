/* SPDX-License-Identifier: MIT */
/* Sorted numbers, typed: a set of 32-bit numbers, in ascending order, that go on naming the same entries of a companion
   list while that is edited. mova/arrays/sorted_number_array.h says how, and what to expect after a roll.

       mova::dynamic_array<char> letters = {'a', 'b', 'c', 'd'};
       mova::sorted_numbers selected = {1, 3};                       b and d
       mova::companion edited(letters, selected);
       edited.remove(0);                                             0 and 2: b and d still

   The numbers are a contiguous range of constants: std::span, std::ranges::lower_bound and the like apply.

   Errors: as mova/cxx/dynamic_array.h says, of what adds numbers, and of companion_reversed() and companion_rolled(), which
   may take a block for their work; after an exception out of the memory service the numbers are as they were. What an edit
   does to pointers and iterators: whatever grows the array ends them all, a removal those from there on. */
#ifndef MOVA_CXX_SORTED_NUMBERS_H
#define MOVA_CXX_SORTED_NUMBERS_H

#include <mova/arrays/sorted_number_array.h>
#include <mova/cxx/dynamic_array.h>

namespace mova {

/* A set of numbers, which owns its array. */
class sorted_numbers : public owner<DA_array, release_dynamic_array> {
public:
    using value_type = std::int32_t;
    using iterator = const std::int32_t *;
    using const_iterator = iterator;

    using owner::owner;
    /* Empty; its array grows by so many numbers. */
    explicit sorted_numbers(std::int32_t increment = 16) : owner(DA_create(sizeof(std::int32_t), increment)) {}
    /* In any order, each once or more. */
    sorted_numbers(std::initializer_list<std::int32_t> numbers) : sorted_numbers()
    {
        for (const std::int32_t each : numbers)
            add(each);
    }

    const std::int32_t *data() const noexcept
    {
        return head_ ? static_cast<const std::int32_t *>(head_->data) : nullptr;
    }
    std::size_t size() const noexcept { return head_ ? static_cast<std::size_t>(head_->nitems) : 0; }
    bool empty() const noexcept { return size() == 0; }
    iterator begin() const noexcept { return data(); }
    iterator end() const noexcept { return data() + size(); }
    std::int32_t operator[](std::size_t i) const noexcept { return data()[i]; }

    /* Adds the number, or does nothing where it is there already. Linear. After an exception as an array that could not
       grow: mova/cxx/dynamic_array.h. */
    void add(std::int32_t number) { SA_add_number(get(), number); }
    /* Removes the number, or does nothing where it is not there. Linear. */
    void remove(std::int32_t number) noexcept { SA_remove_number(get(), number); }
    /* Logarithmic. */
    bool contains(std::int32_t number) const noexcept { return SA_check_number(get(), number) != 0; }
    /* Keeps the storage. */
    void clear() noexcept { DA_reset(get()); }
    /* Linear. After an exception there is no copy. */
    sorted_numbers copy() const { return sorted_numbers(DA_copy(get())); }

    /* The companion got an entry at index `at`: SA_adapt_for_insert. Linear. */
    void companion_inserted(std::int32_t at) noexcept { SA_adapt_for_insert(get(), at); }
    /* The companion lost its entry at index `at`: SA_adapt_for_remove. Linear. */
    void companion_removed(std::int32_t at) noexcept { SA_adapt_for_remove(get(), at); }
    /* The companion of `count` entries was reversed: SA_adapt_for_reverse. Linear. */
    void companion_reversed(std::int32_t count) { SA_adapt_for_reverse(get(), count); }
    /* The companion of `count` entries was rolled to its entry `n`: SA_adapt_for_roll. Linear. */
    void companion_rolled(std::int32_t n, std::int32_t count) { SA_adapt_for_roll(get(), n, count); }

    friend bool operator==(const sorted_numbers &a, const sorted_numbers &b) noexcept
    {
        return std::ranges::equal(a, b);
    }
};

/* An array with the numbers of some of its elements: its edits are told to the numbers. It owns neither. After an exception
   the numbers have not been told. */
template <class Array>
class companion {
public:
    /* Of an array and its numbers, both of which stay the caller's. */
    companion(Array &array, sorted_numbers &numbers) noexcept : array_(array), numbers_(numbers) {}

    /* Copies an element in before element `i`, and tells the numbers. Linear. */
    void insert(std::size_t i, const typename Array::value_type &element)
    {
        array_.insert(i, element);
        numbers_.companion_inserted(narrow(i));
    }
    /* Takes element `i` out, and its number, and tells the others. Linear. */
    void remove(std::size_t i) noexcept
    {
        array_.remove(i);
        numbers_.companion_removed(narrow(i));
    }
    /* Reverses both. Linear. */
    void reverse()
    {
        array_.reverse();
        numbers_.companion_reversed(narrow(array_.size()));
    }
    /* Makes element `n` the first, and tells the numbers. Linear. */
    void roll(std::int32_t n)
    {
        array_.roll(n);
        numbers_.companion_rolled(n, narrow(array_.size()));
    }

private:
    static std::int32_t narrow(std::size_t n) noexcept { return static_cast<std::int32_t>(n); }

    Array &array_;
    sorted_numbers &numbers_;
};

} // namespace mova

#endif
