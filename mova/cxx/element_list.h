/* SPDX-License-Identifier: MIT */
/* Element list, typed: mova/lists/element_list.h, whose elements are T. A list and a ring are two types:

       mova::element_list<point> line;                       open
       mova::element_ring<point> ring = std::move(line).close();
       line = std::move(ring).open_at(at);                   cut: one element more

   The conversions take the head along, and positions stay valid. A head that is adopted must hold elements of sizeof(T)
   bytes, and be closed where a ring adopts it, open where a list does.

   T is copied byte by byte. Positions and walks: mova/cxx/chain.h. What each edit does to positions: the C header.

   Cost: constant, where nothing else is said. Errors: lines 557 (replace) and 989 (roll), as mova::error. After an exception
   the list is as it was, where a function says nothing else. */
#ifndef MOVA_CXX_ELEMENT_LIST_H
#define MOVA_CXX_ELEMENT_LIST_H

#include <initializer_list>

#include <mova/cxx/chain.h>
#include <mova/lists/element_list.h>

namespace mova {

template <class T>
struct element_links {
    using head = EL_list;
    using node = EL_node;
    using walk = EL_iterator;
    using value_type = std::remove_const_t<T>;
    using reference = T &;
    using constant = element_links<const T>;

    static node *first(const head &list) noexcept { return list.first; }
    static node *last(const head &list) noexcept { return list.last; }
    static node *next(const node *at) noexcept { return at->next; }
    static node *prev(const node *at) noexcept { return at->prev; }
    static T &item(node *at) noexcept { return *static_cast<T *>(EL_element(at)); }
    static walk from_to(const head *list, node *from, node *to, int forward) noexcept
    {
        /* Not EL_all_items_inbetween, which reads the list: that may be null. */
        return {nullptr, from, to, forward, list ? list->element_size : 0u, nullptr};
    }
    static bool step(walk &iterator, node *&at) noexcept { return EL_next_position(&iterator, &at) != 0; }
};

/* What both, and the stack, say of elements that they cannot take. */
template <class T>
struct element_guard {
    static_assert(std::is_trivially_copyable_v<T>,
                  "mova::element_list copies its elements byte by byte, which this type does not allow: take "
                  "mova::pointer_list<T, std::default_delete<T>>, or mova::intrusive_list");
    static_assert(sizeof(T) < 65536, "mova::element_list: an element has at most 65535 bytes: take mova::pointer_list");
    static_assert(
        alignof(T) <= alignof(std::max_align_t) && sizeof(EL_node) % alignof(T) == 0,
        "mova::element_list: elements lie behind two pointers, which is not aligned enough for this type: take "
        "mova::pointer_list");
};

/* What lists and rings share; Chain is open_chain or ring_chain. */
template <class T, template <class, class> class Chain>
class element_chain : public Chain<element_links<T>, release_by<EL_release>> {
    using base = Chain<element_links<T>, release_by<EL_release>>;
    static_assert(sizeof(element_guard<T>) != 0);

protected:
    static constexpr bool is_ring = std::same_as<base, ring_chain<element_links<T>, release_by<EL_release>>>;

public:
    using base::base, base::get;
    using typename base::iterator, typename base::position, typename base::const_position;

    /* ---- insertion: each returns the new position ---- */

    /* Copies an element to the back. */
    position append(const T &element)
    {
        auto *node = static_cast<EL_node *>(MM_alloc_item(sizeof(EL_node) + sizeof(T)));
        ::new (EL_element(node)) T(element);
        link_last(*get(), node, is_ring);
        return position(node);
    }
    /* Copies an element to the front. */
    position prepend(const T &element) { return position(EL_insert_before_first(get(), &element)); }
    /* Copies an element in behind `at`. */
    position insert_after(position at, const T &element)
    {
        return position(EL_insert_after(get(), at.get(), &element));
    }
    /* For the standard's inserters. */
    void push_back(const T &element) { append(element); }

    /* ---- removal ---- */

    /* Returns the position of the successor. */
    position remove(position at) noexcept
    {
        EL_node *removed = (at++).get();
        EL_remove_item(get(), removed);
        return at;
    }
    /* Removes from `from` to `to`, both included. Linear in their number. */
    void remove(position from, position to) noexcept { EL_remove_items_inbetween(get(), from.get(), to.get()); }

    /* Removes every element that `accepts` accepts and returns their number: remove_if of mova/cxx/chain.h. */
    template <class Accepts>
    std::size_t remove_if(Accepts accepts)
    {
        return mova::remove_if(*this, std::move(accepts));
    }

    /* The list keeps its kind. Linear. */
    void clear() noexcept
    {
        EL_make_empty(get());
        if constexpr (is_ring)
            EL_set_closed(get());
    }

    /* ---- the rest ---- */

    /* Replaces the elements from `from` to `to`, both included, by those of `source` from its first. Linear.
       Raises line 557 when the source has fewer; those that it has are replaced. */
    template <class Source>
    requires std::same_as<typename Source::value_type, T>
    void replace(position from, position to, Source &source)
    {
        EL_replace_items_inbetween(get(), from.get(), to.get(), source.get(), sizeof(T));
    }

    /* The position of this index, from 0; end(), or no node, where there is none. Linear in the index. */
    position position_at(std::int32_t index) noexcept { return position(EL_get_pos_at_index(get(), index)); }
    /* The index of a position, from 0. Linear in it. */
    std::int32_t index_of(const_position at) const noexcept { return EL_get_index(get(), at.get()); }

    /* Linear. Positions stay at their elements. */
    void reverse() noexcept { EL_reverse(get()); }

    friend bool operator==(const element_chain &a, const element_chain &b) { return equal_items(a, b); }
    friend auto operator<=>(const element_chain &a, const element_chain &b) requires std::three_way_comparable<T>
    {
        return compared_items(a, b);
    }
};

template <class T>
class element_ring;

/* A list that is open. It owns its head, its nodes and the elements in them. */
template <class T>
class element_list : public element_chain<T, open_chain> {
    using base = element_chain<T, open_chain>;

public:
    using base::base, base::get, base::append;
    using typename base::position;

    element_list() : base(EL_create(sizeof(T))) {}
    element_list(std::initializer_list<T> elements) : element_list()
    {
        for (const T &each : elements)
            append(each);
    }
    template <range_of<element_list, T> Range>
    explicit element_list(Range &&elements) : element_list()
    {
        for (auto &&each : elements)
            append(static_cast<T>(each));
    }

    /* Before the end is at the back. */
    position insert_before(position at, const T &element)
    {
        return at.get() ? position(EL_insert_before(get(), at.get(), &element)) : append(element);
    }

    /* Moves all nodes of another list to the back. That one is null afterwards; itself it leaves as it is. */
    void append(element_list &&other)
    {
        if (&other == this)
            return;
        EL_list *source = other.given_up();
        EL_append_list(get(), &source);
    }

    /* Splits the list: it keeps what lies before `at` and a copy of that element; the result begins with `at`. Linear. */
    element_list split(position at) { return element_list(EL_remove_and_get_end_part(get(), at.get())); }

    /* Linear. After an exception there is no copy. */
    element_list copy() const { return element_list(EL_total_copy(readable())); }
    element_list copy(position from, position to) const
    {
        return element_list(EL_total_copy_inbetween(readable(), from.get(), to.get()));
    }

    /* Makes it a ring, from its last to its first. The list is null afterwards. */
    element_ring<T> close() &&noexcept;
    template <class... None>
    auto close(None...) &
    {
        return mova::given_up(*this).close();
    }

private:
    /* The C functions that copy take a list that may be written to, and leave it as it was. */
    EL_list *readable() const noexcept { return this->head_.get(); }
};

/* A list that is a ring. It owns its head, its nodes and the elements in them. */
template <class T>
class element_ring : public element_chain<T, ring_chain> {
    using base = element_chain<T, ring_chain>;

public:
    using base::base, base::get;
    using typename base::position;

    element_ring() : element_ring(element_list<T>().close()) {}
    element_ring(std::initializer_list<T> elements) : element_ring(element_list<T>(elements).close()) {}
    template <range_of<element_ring, T> Range>
    explicit element_ring(Range &&elements) : element_ring(element_list<T>(std::forward<Range>(elements)).close())
    {
    }

    /* Copies an element in before `at`. */
    position insert_before(position at, const T &element)
    {
        return position(EL_insert_before(get(), at.get(), &element));
    }

    /* Makes `at` the first. Raises line 989 where `at` has no predecessor, which every node of a ring has: EL_roll. */
    void roll(position at) { EL_roll(get(), at.get()); }

    /* Linear. After an exception there is no copy, and the ring is one again. */
    element_ring copy() const { return element_ring(EL_total_copy(this->head_.get())); }

    /* Opens the ring between its last and its first. */
    element_list<T> open() &&noexcept
    {
        open_ring<EL_node>(*get());
        return element_list<T>(this->given_up());
    }
    template <class... None>
    auto open(None...) &
    {
        return mova::given_up(*this).open();
    }

    /* Cuts the ring at `at`, which becomes the first; the new last is a copy of it. After an exception the ring is as it
       was. */
    element_list<T> open_at(position at) &&
    {
        EL_make_open_at_position(get(), at.get());
        return element_list<T>(this->given_up());
    }
    template <class Position>
    auto open_at(Position at) &
    {
        return mova::given_up(*this).open_at(at);
    }

    /* Splits the ring into two lists: from its first to a copy of `at`, and from `at` to its last. Linear. After an exception
       the ring is as it was. */
    std::pair<element_list<T>, element_list<T>> split(position at) &&
    {
        element_list<T> end_part(EL_remove_and_get_end_part(get(), at.get()));
        return {element_list<T>(this->given_up()), std::move(end_part)};
    }
    template <class Position>
    auto split(Position at) &
    {
        return mova::given_up(*this).split(at);
    }
};

template <class T>
element_ring<T> element_list<T>::close() &&noexcept
{
    close_chain<EL_node>(*get());
    return element_ring<T>(this->given_up());
}

} // namespace mova

#endif
