/* SPDX-License-Identifier: MIT */
/* The numbered invariants of the lists, as their headers give them: the same four for all three. */
#ifndef MOVA_LISTS_INTERNAL_INVARIANTS_H
#define MOVA_LISTS_INTERNAL_INVARIANTS_H

#include <mova/lists/element_list.h>
#include <mova/lists/generic_list.h>
#include <mova/lists/simple_list.h>

namespace mova {

/* Every node may be read. */
struct all_readable {
    constexpr bool operator()(const void *) const { return true; }
};

/* Returns the number of the first invariant that a chain or a ring breaks, or 0. Walks no more than `count` nodes. A link to what
   `is_readable` denies has no way back. */
template <class Node, class Readable>
int broken_chain_invariant(const Node *first, const Node *last, int32_t count, bool ring, Readable is_readable)
{
    if ((count == 0) != !first || (count == 0) != !last)
        return 2;
    if (count && !(is_readable(last) && is_readable(first)))
        return 4;
    if (count && (first->prev != (ring ? last : nullptr) || last->next != (ring ? first : nullptr)))
        return 3;
    int32_t nodes = 0;
    const Node *reached = nullptr;
    for (const Node *node = first, *next; node && nodes < count; node = next) {
        next = node->next;
        if (next && !(is_readable(next) && next->prev == node))
            return 4;
        reached = node;
        ++nodes;
    }
    return nodes == count && reached == last ? 0 : 1;
}

template <class Readable = all_readable>
int broken_invariant(const GL_list &list, Readable is_readable = {})
{
    return broken_chain_invariant(list.first, list.last, list.count, false, is_readable);
}

template <class Readable = all_readable>
int broken_invariant(const EL_list &list, Readable is_readable = {})
{
    return broken_chain_invariant(list.first, list.last, list.count, list.closed != 0, is_readable);
}

template <class Readable = all_readable>
int broken_invariant(const SL_list &list, Readable is_readable = {})
{
    return broken_chain_invariant(static_cast<const mova_sl_links *>(list.first),
                                  static_cast<const mova_sl_links *>(list.last), list.count, list.closed != 0,
                                  is_readable);
}

} // namespace mova

#endif
