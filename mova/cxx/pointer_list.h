/* SPDX-License-Identifier: MIT */
/* Pointer list, typed: mova/lists/generic_list.h for pointers to T.

       mova::pointer_list<country> seen;                                  the items are the caller's
       mova::pointer_list<country, std::default_delete<country>> all;     the list's: `remove` deletes, and so does the end

   It delivers pointers, by value; of a constant list they are pointers to constants. A null pointer is an item like any
   other, which is not deleted. Positions and walks: mova/cxx/chain.h. What each edit does to positions, and what it costs:
   the C header.

   Errors: only insertions and copies allocate, and nothing raises. After an exception the list is as it was. */
#ifndef MOVA_CXX_POINTER_LIST_H
#define MOVA_CXX_POINTER_LIST_H

#include <mova/cxx/chain.h>
#include <mova/lists/generic_list.h>

namespace mova {

template <class T>
struct pointer_links {
    using head = GL_list;
    using node = GL_node;
    using walk = GL_iterator;
    using value_type = T *;
    using reference = T *;
    using constant = pointer_links<const T>;

    static node *first(const head &list) noexcept { return list.first; }
    static node *last(const head &list) noexcept { return list.last; }
    static node *next(const node *at) noexcept { return at->next; }
    static node *prev(const node *at) noexcept { return at->prev; }
    static T *item(const node *at) noexcept { return static_cast<T *>(at->item); }
    static walk from_to(const head *list, node *from, node *to, int forward) noexcept
    {
        return GL_all_items_inbetween(list, from, to, forward);
    }
    static bool step(walk &iterator, node *&at) noexcept { return GL_next_position(&iterator, &at) != 0; }
};

template <class T, class Delete>
struct release_pointer_list {
    static void delete_item(void **item)
    {
        if (*item)
            delete_by<Delete>(static_cast<T *>(*item));
    }
    void operator()(GL_list *list) const noexcept
    {
        if constexpr (owns_items<Delete>)
            GL_total_release(&list, delete_item);
        else
            GL_release(&list);
    }
};

/* A list of pointers. It owns its head and its nodes, and the items where Delete says so. */
template <class T, class Delete = borrowed>
class pointer_list : public open_chain<pointer_links<T>, release_pointer_list<T, Delete>> {
    using base = open_chain<pointer_links<T>, release_pointer_list<T, Delete>>;
    static_assert(sizeof(deleter_guard<Delete>) != 0);

public:
    using base::base, base::get;
    using typename base::iterator, typename base::position;

    /* What goes in and comes out: a pointer, or one that owns, where the list does. */
    using item = std::conditional_t<owns_items<Delete>, std::unique_ptr<T, Delete>, T *>;

    pointer_list() : base(GL_create()) {}

    template <range_of<pointer_list, T *> Range>
    requires(!owns_items<Delete>) explicit pointer_list(Range &&items) : pointer_list()
    {
        for (T *each : items)
            append(each);
    }

    /* ---- insertion: each returns the new position. An item that is owned is deleted if there is no memory for its
       node. ---- */

    /* Adds the item at the back. */
    position append(item added)
    {
        auto *node = static_cast<GL_node *>(MM_alloc_item(sizeof(GL_node)));
        node->item = word(given(added));
        link_last(*get(), node, false);
        return position(node);
    }
    /* Adds a null pointer at the back: not an empty list. */
    position append(std::nullptr_t) { return append(item(nullptr)); }
    /* Adds the item at the front. */
    position prepend(item added) { return put(GL_insert_before_first(get(), word(raw(added))), added); }

    /* Before the end is at the back. */
    position insert_before(position at, item added)
    {
        if (!at.get())
            return append(std::move(added));
        return put(GL_insert_before(get(), at.get(), word(raw(added))), added);
    }
    /* Adds the item behind `at`. */
    position insert_after(position at, item added)
    {
        return put(GL_insert_after(get(), at.get(), word(raw(added))), added);
    }

    /* Adds the pointer at the back, unless the list holds it: then returns end(). Linear. */
    position insert_unique(T *added) requires(!owns_items<Delete>)
    {
        return position(GL_insert_unique(get(), word(added)));
    }

    /* For the standard's inserters. */
    void push_back(item added) { append(std::move(added)); }

    /* Moves all nodes of another list to the back. That one is null afterwards; itself it leaves as it is. */
    void append(pointer_list &&other)
    {
        if (&other == this)
            return;
        GL_list *source = other.given_up();
        GL_append_list(get(), &source);
    }

    /* ---- removal ---- */

    /* Removes the node, and deletes an item that is owned. Returns the position of the successor. */
    position remove(position at)
    {
        static_cast<void>(take(at++));
        return at;
    }

    /* Removes the node and hands its item out. */
    item take(position at)
    {
        item taken(*at);
        GL_remove_item(get(), at.get());
        return taken;
    }

    /* Removes every item that `accepts` accepts and returns their number: remove_if of mova/cxx/chain.h. */
    template <class Accepts>
    std::size_t remove_if(Accepts accepts)
    {
        return mova::remove_if(*this, std::move(accepts));
    }

    /* Removes all nodes, and deletes items that are owned. Linear. */
    void clear() noexcept
    {
        if constexpr (owns_items<Delete>)
            GL_total_make_empty(get(), release_pointer_list<T, Delete>::delete_item);
        else
            GL_make_empty(get());
    }

    /* ---- the rest ---- */

    /* The first position, from the front, of this very pointer, or end(). Linear. */
    position find(const T *sought) noexcept
    {
        GL_node *at;
        GL_find_item(get(), sought, &at);
        return position(at);
    }

    /* Makes it the first; its position stays good. */
    void move_to_front(position at) noexcept { GL_move_before_first(get(), at.get()); }

    /* Puts another item there, and returns the one before. */
    item replace(position at, item other) noexcept
    {
        void *exchanged = word(given(other));
        GL_swap_item(at.get(), &exchanged);
        return item(static_cast<T *>(exchanged));
    }

    /* Another list of the same pointers. Linear. After an exception there is none. */
    pointer_list copy() const requires(!owns_items<Delete>)
    {
        pointer_list made(nullptr);
        made.head_.reset(GL_copy(get()));
        return made;
    }

    /* Another list of what `copy_item` returns for each item, first to last: pointers, or pointers that own. Linear. After
       an exception there is none, and what it owned is deleted. */
    template <class CopyItem>
    pointer_list copy(CopyItem copy_item) const
    {
        pointer_list made;
        for (const T *each : *this)
            made.append(copy_item(each));
        return made;
    }

    /* By identity of the items. */
    friend bool operator==(const pointer_list &a, const pointer_list &b) { return equal_items(a, b); }

private:
    static void *word(const T *pointer) noexcept { return const_cast<std::remove_const_t<T> *>(pointer); }
    static T *raw(const item &from) noexcept
    {
        if constexpr (owns_items<Delete>)
            return from.get();
        else
            return from;
    }
    static T *given(item &from) noexcept
    {
        if constexpr (owns_items<Delete>)
            return from.release();
        else
            return from;
    }
    static position put(GL_node *node, item &added) noexcept
    {
        given(added);
        return position(node);
    }
};

} // namespace mova

#endif
