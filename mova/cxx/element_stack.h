/* SPDX-License-Identifier: MIT */
/* Element stack, typed: mova/lists/element_stack.h, whose elements are T.

       mova::element_stack<point> open_points;
       open_points.push({0, 0});
       while (std::optional<point> at = open_points.pop())
           …

   Pushing and popping are compiled into the caller. T is copied byte by byte.

   Errors: only pushing allocates; after an exception the stack is as it was. Popping an empty stack returns nothing. */
#ifndef MOVA_CXX_ELEMENT_STACK_H
#define MOVA_CXX_ELEMENT_STACK_H

#include <optional>

#include <mova/cxx/element_list.h>
#include <mova/lists/element_stack.h>

namespace mova {

/* A stack. It owns its head, its nodes and the elements in them. */
template <class T>
class element_stack : public owner<ES_stack, release_by<ES_release>> {
    using base = owner<ES_stack, release_by<ES_release>>;

public:
    using value_type = T;
    using base::base;

    element_stack() : base(ES_create(sizeof(T))) {}

    bool empty() const noexcept { return !head_ || !head_->last; }
    std::size_t size() const noexcept { return head_ ? static_cast<std::size_t>(head_->count) : 0; }

    /* Puts a copy on top. */
    void push(const T &element)
    {
        auto *node = static_cast<EL_node *>(MM_alloc_item(sizeof(EL_node) + sizeof(T)));
        ::new (EL_element(node)) T(element);
        link_last(*head_, node, false);
    }

    /* Removes the top element and returns it, or nothing where the stack is empty. */
    std::optional<T> pop() noexcept
    {
        EL_node *const node = head_->last;
        if (!node)
            return std::nullopt;
        const T element = element_links<T>::item(node);
        (node->prev ? node->prev->next : head_->first) = nullptr;
        head_->last = node->prev;
        --head_->count;
        MM_dealloc_item(node, sizeof(EL_node) + sizeof(T));
        return element;
    }

    /* Require an element. */
    T &top() noexcept { return element_links<T>::item(head_->last); }
    const T &top() const noexcept { return element_links<T>::item(head_->last); }

    /* Removes all elements. Linear. */
    void clear() noexcept { ES_make_empty(get()); }

private:
    static_assert(sizeof(element_guard<T>) != 0);
};

} // namespace mova

#endif
