/* SPDX-License-Identifier: MIT */
/* What the typed classes share: owning a C head, and owning what a container points to.

   A class of this layer owns one head of the C layer and is as large as the pointer to it. Those that hold their records
   themselves tell of it: block_array, keyed_table, dynamic_colour.

       mova::element_list<point>          EL_list
       +------+                           +---------------------------+
       | head | ------------------------> | first last count … closed |
       +------+                           +---------------------------+

       element_list<point> l(raw)         adopts a head that the C functions made; null makes an owner of nothing
       l.get()                            the head, for the C functions; the owner keeps it
       l.release()                        the head, which is the caller's from now on
       std::move(l)                       leaves `l` null

   An owner that was moved from is null. A null owner is an empty range of size 0, and can be destroyed, assigned to, swapped,
   compared and released. All else requires a head: edits, looking for something, and copies, as the C functions do.

   Errors are mova::error, or what the host throws in its place. What an exception leaves:

       a constructor, a copy                  nothing: there is no object, and no block is lost
       an edit                                all as it was, where its comment, or its class's, says nothing else
       an edit whose comment names a C        what the comment of that function says
         function, or a line
       a predicate, a visitor, a hash, a      all as it was, unless the function had edited already: remove_if keeps what
         comparison of the caller's           it has done, and a walk has passed what it asked for

   What the caller gives to be called, a predicate, a comparison, a deleter, must not edit the container that calls it.

   An item that is given to an owning container and was not taken is deleted, or stays in the pointer that was given by
   reference. What is noexcept does not fail. */
#ifndef MOVA_CXX_OWNER_H
#define MOVA_CXX_OWNER_H

#if __cplusplus < 202002L
#error "The typed layer takes C++20 (-std=c++20); the C functions take any C++ from C++11 on."
#include "mova: C++20 is needed" /* ends the compilation here, which would go on to say so a hundred times */
#endif

#include <concepts>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include <mova/frame/host.h>

namespace mova {

/* Calls one of the C functions that take the address of the owner's pointer. */
template <auto Release>
struct release_by {
    template <class Head>
    void operator()(Head *head) const noexcept
    {
        Release(&head);
    }
};

/* The owner of a head, which Release releases. */
template <class Head, class Release>
class owner {
public:
    owner(std::nullptr_t) noexcept {}
    /* Adopts a head that the C functions made. Null makes an owner of nothing. */
    explicit owner(Head *head) noexcept : head_(head) {}

    /* Whether there is a head. */
    explicit operator bool() const noexcept { return head_ != nullptr; }

    Head *get() noexcept { return head_.get(); }
    const Head *get() const noexcept { return head_.get(); }
    [[nodiscard]] Head *release() noexcept { return head_.release(); }

protected:
    /* The field of a C release or join function, which sets it to null. */
    Head *given_up() noexcept { return head_.release(); }

    std::unique_ptr<Head, Release> head_;
};

/* For texts that a template says where it is used. */
template <class...>
inline constexpr bool never = false;

/* The container, for a range that is made of one without a name: every such call is refused with this text. */
template <class Container>
Container &named(Container &container) noexcept
{
    static_assert(never<Container>,
                  "mova: the container has no name, and is gone before a loop over this range takes its "
                  "first step: give it a name, as in auto list = made(); for (auto &item : list.reversed())");
    return container;
}

/* The container, for a conversion that takes its head along: every call for a container that stays is refused. */
template <class Container>
Container &&given_up(Container &container) noexcept
{
    static_assert(never<Container>, "mova: a list that is closed, opened or cut is given up to what it becomes: say "
                                    "std::move(list).close()");
    return std::move(container);
}

/* ---- items ---- */

/* Containers of pointers take, as their last argument, a type that says how an item dies. With this one it does not: the
   items are the caller's. Any deleter without state makes the container their owner: std::default_delete<T>, host_delete. */
struct borrowed {
    /* Does nothing. */
    void operator()(const volatile void *) const noexcept {}
};

/* Whether a container with this deleter owns its items. */
template <class Delete>
inline constexpr bool owns_items = !std::same_as<Delete, borrowed>;

/* What every such container says of a deleter that it cannot take. */
template <class Delete>
struct deleter_guard {
    static_assert(
        std::is_empty_v<Delete> && std::default_initializable<Delete>,
        "mova: a deleter must have no state: take a class whose operator() says how an item dies, or keep the "
        "items yourself");
};

/* Has an item die so. */
template <class Delete, class T>
void delete_by(T *item)
{
    if constexpr (sizeof(deleter_guard<Delete>) != 0 && std::default_initializable<Delete>)
        Delete()(item);
}

/* Deletes an item that make_item made. */
struct host_delete {
    /* Ends the item, and gives its block back. */
    template <class T>
    void operator()(T *item) const noexcept
    {
        item->~T();
        MM_dealloc_item(const_cast<std::remove_const_t<T> *>(item), sizeof(T));
    }
};

/* Makes an item in a block of the memory service. Throws what the service and T throw; nothing is lost then. */
template <class T, class... Arguments>
std::unique_ptr<T, host_delete> make_item(Arguments &&...arguments)
{
    struct give_back {
        void operator()(void *block) const noexcept { MM_dealloc_item(block, sizeof(T)); }
    };
    std::unique_ptr<void, give_back> block(MM_alloc_item(sizeof(T)));
    std::unique_ptr<T, host_delete> item;
    if constexpr (std::is_constructible_v<T, Arguments...>)
        item.reset(::new (block.get()) T(std::forward<Arguments>(arguments)...));
    else
        item.reset(::new (block.get()) T{std::forward<Arguments>(arguments)...});
    static_cast<void>(block.release());
    return item;
}

/* A type without state, whose call a C function pointer can stand for. */
template <class F>
concept stateless = std::is_empty_v<F> && std::default_initializable<F>;

} // namespace mova

#endif
