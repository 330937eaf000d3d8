/* SPDX-License-Identifier: MIT */
/* Dynamic array, typed: mova/arrays/dynamic_array.h, whose elements are T.

       mova::dynamic_array<point> points(64);        grows by 64, or a multiple
       points.append({1, 2});
       std::span<point> all = points;

   Ranges, walks and what edits do to them: mova/cxx/array.h. What makes an array grow, and that growth zeroes what it adds
   while shortening does not: the C header. Errors: after an exception out of the memory
   service the array is as it was. Where that returns null instead, line 111 is raised, and the array has lost its elements, as
   in C: it is good for clear_storage(), assigning to and the end. An array that is made or copied raises
   line 33 or 271 then, and there is none. */
#ifndef MOVA_CXX_DYNAMIC_ARRAY_H
#define MOVA_CXX_DYNAMIC_ARRAY_H

#include <mova/arrays/dynamic_array.h>
#include <mova/cxx/array.h>

namespace mova {

struct release_dynamic_array {
    void operator()(DA_array *array) const noexcept { DA_release(array); }
};

/* An array, which owns its head and its storage. */
template <class T>
class dynamic_array : public owner<DA_array, release_dynamic_array>, public array_of<dynamic_array<T>, T> {
    using base = owner<DA_array, release_dynamic_array>;

public:
    /* An increment of their own have the arrays that are made here without one. */
    static constexpr std::int32_t default_increment = 16;

    using base::base;
    /* Empty; it grows by so many elements, or a multiple. */
    explicit dynamic_array(std::int32_t increment = default_increment) : base(DA_create(sizeof(T), increment)) {}
    dynamic_array(std::initializer_list<T> elements) : dynamic_array() { append(std::span<const T>(elements)); }
    template <range_of<dynamic_array, T> Range>
    explicit dynamic_array(Range &&elements, std::int32_t increment = default_increment) : dynamic_array(increment)
    {
        for (auto &&each : elements)
            append(static_cast<T>(each));
    }

    T *data() noexcept { return head_ ? static_cast<T *>(head_->data) : nullptr; }
    const T *data() const noexcept { return head_ ? static_cast<const T *>(head_->data) : nullptr; }
    std::size_t size() const noexcept { return head_ ? static_cast<std::size_t>(head_->nitems) : 0; }
    std::size_t capacity() const noexcept { return head_ ? static_cast<std::size_t>(head_->nalloc) : 0; }

    /* The compiler need not look at the owner twice. */
    T &operator[](std::size_t i) noexcept { return static_cast<T *>(head_->data)[i]; }
    const T &operator[](std::size_t i) const noexcept { return static_cast<const T *>(head_->data)[i]; }

    /* ---- adding ---- */

    /* Adds at the end; linear where a full array grows. */
    void append(const T &element)
    {
        DA_array &array = *head_;
        const std::uint32_t end = forwarded(array.nitems);
        if (end < forwarded(array.nalloc)) [[likely]] {
            array.nitems = static_cast<std::int32_t>(end + 1);
            ::new (static_cast<T *>(array.data) + end) T(element);
        } else {
            append_to_full(element);
        }
    }
    /* The elements must not lie in this array. */
    void append(std::span<const T> elements) { DA_append(get(), elements.data(), narrow(elements.size())); }

    /* In before element `i`; past the end, elements in between are not written. Linear in the elements from there on. */
    void insert(std::size_t i, const T &element)
    {
        const T copied = element;
        DA_insert(get(), narrow(i), &copied, 1);
    }
    /* The same with several, which must not lie in this array. */
    void insert(std::size_t i, std::span<const T> elements)
    {
        DA_insert(get(), narrow(i), elements.data(), narrow(elements.size()));
    }

    /* Element `i`, up to which the array is made longer where it ends before that. */
    T &grow_to(std::size_t i) { return *static_cast<T *>(DA_get_item(get(), narrow(i))); }

    /* Makes room for more than `n` elements. The size stays. Linear where the array grows. */
    void reserve(std::size_t n) { DA_extend(get(), narrow(n)); }

    /* Makes the array longer or shorter: DA_setsize. */
    void resize(std::size_t n) { DA_setsize(get(), narrow(n)); }

    /* ---- removing ---- */

    /* Element `i`, or `n` elements from there on, which must all be there. Linear in the elements beyond. */
    void remove(std::size_t i) noexcept { cut(i, 1); }
    void cut(std::size_t i, std::size_t n) noexcept { DA_delete(get(), narrow(i), narrow(n)); }

    /* Leaves the first `n` elements, or all where there are fewer. Keeps the storage. */
    void truncate(std::size_t n) noexcept { DA_truncate(get(), narrow(n)); }

    /* Removes all elements. Keeps the storage. */
    void clear() noexcept { DA_reset(get()); }
    /* Removes all elements, and frees the storage. */
    void clear_storage() noexcept { DA_clear(get()); }

    /* ---- the rest ---- */

    /* Linear. After an exception there is no copy. */
    dynamic_array copy() const { return dynamic_array(DA_copy(get())); }

    /* Takes the elements of another array, not its increment. Linear. After an exception the array is empty, or as one that
       could not grow. */
    void assign(const dynamic_array &other)
    {
        if (&other != this) /* the C function would empty it first */
            DA_copy_into(get(), other.get());
    }

    /* Linear. Element `n` becomes the first. */
    void roll(std::int32_t n) { DA_roll(get(), n); }
    /* Linear. */
    void reverse() { DA_reverse(get()); }

    /* The bytes with a zero behind them, which does not count as an element: DA_string. */
    const char *c_str() requires(sizeof(T) == 1) { return DA_string(get()); }

private:
    static std::int32_t narrow(std::size_t n) noexcept { return static_cast<std::int32_t>(n); }

    /* The element may lie in the storage that is given up. */
    [[gnu::noinline]] void append_to_full(const T &element)
    {
        const T copied = element;
        DA_append(get(), &copied, 1);
    }
};

} // namespace mova

#endif
