/* SPDX-License-Identifier: MIT */
/* Intrusive list, typed: mova/lists/simple_list.h over records that carry the links in a member.

       struct job {
           int number;
           mova::links waiting;
       };
       mova::intrusive_list<job, &job::waiting> queue;                                  the jobs are the caller's
       mova::intrusive_list<job, &job::waiting, std::default_delete<job>> all_jobs;     the list's

   Nothing is allocated for an item. The links may be any member; a record that has several can be on as many lists at once.
   For the C functions an item is the address of its links: at the front of a record that is the record.

   A list and a ring are two types, as in mova/cxx/element_list.h. A list of the caller's items that ends lets go of them;
   their links mean nothing then. Positions and walks: mova/cxx/chain.h. What each edit does to them: the C header.

   Errors: line 743, where a ring is rolled to what is not on it: SL_roll. Only heads are allocated; nothing else fails. */
#ifndef MOVA_CXX_INTRUSIVE_LIST_H
#define MOVA_CXX_INTRUSIVE_LIST_H

#include <bit>

#include <mova/cxx/chain.h>
#include <mova/lists/simple_list.h>

namespace mova {

/* The two links that a record carries, and the list owns while the record is on it. */
using links = mova_sl_links;

template <class T, auto Member>
struct member_links {
    using head = SL_list;
    using node = links;
    using walk = SL_iterator;
    using value_type = std::remove_const_t<T>;
    using reference = T &;
    using constant = member_links<const T, Member>;

    static node *first(const head &list) noexcept { return static_cast<node *>(list.first); }
    static node *last(const head &list) noexcept { return static_cast<node *>(list.last); }
    static node *next(const node *at) noexcept { return at->next; }
    static node *prev(const node *at) noexcept { return at->prev; }
    static T &item(node *at) noexcept
    {
        /* A pointer to a member is the member's offset. */
        return *reinterpret_cast<T *>(reinterpret_cast<char *>(at) - std::bit_cast<std::ptrdiff_t>(Member));
    }
    static node *node_in(value_type &item) noexcept { return &(item.*Member); }
    static walk from_to(const head *list, node *from, node *to, int forward) noexcept
    {
        return SL_all_items_inbetween(list, from, to, forward);
    }
    static bool step(walk &iterator, node *&at) noexcept
    {
        void *item;
        const bool more = SL_next_item(&iterator, &item) != 0;
        at = more ? static_cast<node *>(item) : nullptr;
        return more;
    }
};

template <class Links, class Delete>
struct release_linked_items {
    static void delete_item(void **item)
    {
        if constexpr (owns_items<Delete>)
            delete_by<Delete>(std::addressof(Links::item(static_cast<links *>(*item))));
    }
    void operator()(SL_list *list) const noexcept { SL_total_release(&list, delete_item); }
};

/* What lists and rings share. */
template <class T, auto Member, class Delete, template <class, class> class Chain>
class intrusive_chain : public Chain<member_links<T, Member>, release_linked_items<member_links<T, Member>, Delete>> {
protected:
    using links_of = member_links<T, Member>;

private:
    using base = Chain<links_of, release_linked_items<links_of, Delete>>;
    static_assert(std::is_same_v<decltype(Member), links T::*>,
                  "mova::intrusive_list: give the member that carries the links: a mova::links, as in "
                  "intrusive_list<job, &job::waiting>");
    static_assert(sizeof(deleter_guard<Delete>) != 0);

protected:
    static constexpr bool is_ring = std::same_as<base, ring_chain<links_of, release_linked_items<links_of, Delete>>>;

public:
    using base::base, base::get;
    using typename base::position, typename base::const_position;

    /* What goes in and comes out: a record, or a pointer that owns one, where the list does. */
    using item = std::conditional_t<owns_items<Delete>, std::unique_ptr<T, Delete>, T &>;

    /* The position of a record that is on this list. */
    static position position_of(T &on_list) noexcept { return position(links_of::node_in(on_list)); }

    /* ---- insertion: each returns the new position ---- */

    /* Links the record at the back. */
    position append(item added) noexcept
    {
        links *node = given(added);
        link_last(*get(), node, is_ring);
        return position(node);
    }
    /* Links the record at the front. */
    position prepend(item added) noexcept
    {
        links *node = given(added);
        SL_insert_before_first(get(), node);
        return position(node);
    }
    /* Links the record before `at`; before the end is at the back. */
    position insert_before(position at, item added) noexcept
    {
        if constexpr (!is_ring) {
            if (!at.get())
                return append(static_cast<item>(added));
        }
        links *node = given(added);
        SL_insert_before(get(), at.get(), node);
        return position(node);
    }
    /* Links the record behind `at`. */
    position insert_after(position at, item added) noexcept
    {
        links *node = given(added);
        SL_insert_after(get(), at.get(), node);
        return position(node);
    }

    /* ---- removal ---- */

    /* Unlinks the record, and deletes one that is owned. Returns the position of the successor. */
    position remove(position at) noexcept
    {
        static_cast<void>(take(at++));
        return at;
    }

    /* Unlinks the record and hands it out. Its links are null. */
    item take(position at) noexcept
    {
        T &taken = *at;
        SL_remove_item(get(), at.get());
        if constexpr (owns_items<Delete>)
            return item(std::addressof(taken));
        else
            return taken;
    }

    /* Removes every record that `accepts` accepts and returns their number: remove_if of mova/cxx/chain.h. */
    template <class Accepts>
    std::size_t remove_if(Accepts accepts)
    {
        return mova::remove_if(*this, std::move(accepts));
    }

    /* Unlinks all records, and deletes those that are owned. The list keeps its kind. Linear. */
    void clear() noexcept
    {
        SL_make_empty(get(), release_linked_items<links_of, Delete>::delete_item);
        if constexpr (is_ring)
            SL_set_closed(get());
    }

    /* Linear. Positions stay at their records. */
    void reverse() noexcept { SL_reverse(get()); }

    friend bool operator==(const intrusive_chain &a, const intrusive_chain &b) { return equal_items(a, b); }

private:
    static links *given(item &from) noexcept
    {
        if constexpr (owns_items<Delete>)
            return links_of::node_in(*from.release());
        else
            return links_of::node_in(from);
    }
};

template <class T, auto Member, class Delete = borrowed>
class intrusive_ring;

/* A list that is open. It owns its head, and the records where Delete says so. */
template <class T, auto Member, class Delete = borrowed>
class intrusive_list : public intrusive_chain<T, Member, Delete, open_chain> {
    using base = intrusive_chain<T, Member, Delete, open_chain>;

public:
    using base::base, base::get, base::append;

    intrusive_list() : base(SL_create()) {}

    /* Moves all records of another list to the back. That one is null afterwards; itself it leaves as it is. */
    void append(intrusive_list &&other) noexcept
    {
        if (&other == this)
            return;
        SL_list *source = other.given_up();
        SL_append_list(get(), &source);
    }

    /* Another list of what `copy_item` returns for each record: new records, or pointers that own them. Linear. After an
       exception there is none. */
    template <class CopyItem>
    intrusive_list copy(CopyItem copy_item) const
    {
        intrusive_list made;
        for (const T &each : *this)
            made.append(copy_item(each));
        return made;
    }

    /* Makes it a ring, from its last to its first. The list is null afterwards. */
    intrusive_ring<T, Member, Delete> close() &&noexcept
    {
        close_chain<links>(*get());
        return intrusive_ring<T, Member, Delete>(this->given_up());
    }
    template <class... None>
    auto close(None...) &
    {
        return mova::given_up(*this).close();
    }
};

/* A list that is a ring. It owns its head, and the records where Delete says so. */
template <class T, auto Member, class Delete>
class intrusive_ring : public intrusive_chain<T, Member, Delete, ring_chain> {
    using base = intrusive_chain<T, Member, Delete, ring_chain>;

public:
    using base::base, base::get;

    intrusive_ring() : intrusive_ring(intrusive_list<T, Member, Delete>().close()) {}

    /* Makes `at` the first. */
    void roll(typename base::position at) { SL_roll(get(), at.get()); }

    /* Opens the ring between its last and its first. */
    intrusive_list<T, Member, Delete> open() &&noexcept
    {
        open_ring<links>(*get());
        return intrusive_list<T, Member, Delete>(this->given_up());
    }
    template <class... None>
    auto open(None...) &
    {
        return mova::given_up(*this).open();
    }
};

} // namespace mova

#endif
