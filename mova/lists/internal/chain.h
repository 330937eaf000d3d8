/* SPDX-License-Identifier: MIT */
/* The chain that the lists share: linking, unlinking and walking nodes.

   A node is any record with `prev` and `next`, a list any head with `first` and `last`; a head may keep them as void
   pointers. Counts are the families' own. A list is an open chain, with null links at both ends, or a ring:

       open                                        ring
       null <- A <-> B <-> C -> null               +-> A <-> B <-> C <-+
               first        last                   +-------------------+

   The functions allocate nothing and ask nothing of a node but its links. What they assert are the lists' invariants, by
   the numbers that their headers give them. */
#ifndef MOVA_LISTS_INTERNAL_CHAIN_H
#define MOVA_LISTS_INTERNAL_CHAIN_H

#include <cstddef>
#include <cstdint>
#include <utility>

#include <mova/frame/internal/assert.h>

namespace mova::chain {

/* A list that never is a ring says so: the links at its ends are null without a look at them. */
enum class shape { always_open, open, ring };

template <class Node, class List>
Node *first_of(const List &list)
{
    return static_cast<Node *>(list.first);
}

template <class Node, class List>
Node *last_of(const List &list)
{
    return static_cast<Node *>(list.last);
}

/* Invariants 2 and 3: there are both ends or neither, and what lies beyond them is null or, in a ring, the other end. */
template <class Node, class List>
bool ends_hold(const List &list, shape as)
{
    const Node *first = first_of<Node>(list), *last = last_of<Node>(list);
    if (!first || !last)
        return !first && !last;
    return first->prev == (as == shape::ring ? last : nullptr) && last->next == (as == shape::ring ? first : nullptr);
}

/* Invariant 4 at one node: its neighbours name it. */
template <class Node>
bool neighbours_hold(const Node *node)
{
    return (!node->prev || node->prev->next == node) && (!node->next || node->next->prev == node);
}

/* Makes `node` the only node of an empty list. */
template <class List, class Node>
void link_only(List &list, Node *node, shape as)
{
    node->prev = node->next = as == shape::ring ? node : nullptr;
    list.first = list.last = node;
}

/* Links `node` after the last one. The old last node's `next` (null, or the first node) becomes the new one's. */
template <class List, class Node>
void link_last(List &list, Node *node, shape as)
{
    assert(ends_hold<Node>(list, as));
    Node *last = last_of<Node>(list);
    if (!last)
        return link_only(list, node, as);
    node->prev = last;
    node->next = as == shape::always_open ? nullptr : last->next;
    last->next = node;
    list.last = node;
    if (as == shape::ring)
        first_of<Node>(list)->prev = node;
}

/* Links `node` before the first one: the mirror image of link_last. */
template <class List, class Node>
void link_first(List &list, Node *node, shape as)
{
    assert(ends_hold<Node>(list, as));
    Node *first = first_of<Node>(list);
    if (!first)
        return link_only(list, node, as);
    node->next = first;
    node->prev = as == shape::always_open ? nullptr : first->prev;
    first->prev = node;
    list.first = node;
    if (as == shape::ring)
        last_of<Node>(list)->next = node;
}

/* Links `node` between two neighbours. */
template <class Node>
void link_between(Node *before, Node *node, Node *after)
{
    assert(before->next == after && after->prev == before); /* invariant 4 */
    node->prev = before;
    node->next = after;
    before->next = node;
    after->prev = node;
}

template <class List, class Node>
void link_before(List &list, Node *position, Node *node, shape as)
{
    if (position == list.first)
        link_first(list, node, as);
    else
        link_between(position->prev, node, position);
}

template <class List, class Node>
void link_after(List &list, Node *position, Node *node, shape as)
{
    if (position == list.last)
        link_last(list, node, as);
    else
        link_between(position, node, position->next);
}

/* Links `node` into an open chain, between two neighbours either of which may be null. Looks at nothing but them. */
template <class List, class Node>
void link_by_neighbours(List &list, Node *before, Node *node, Node *after)
{
    assert((before ? before->next : list.first) == after && (after ? after->prev : list.last) == before);
    node->prev = before;
    node->next = after;
    (before ? before->next : list.first) = node;
    (after ? after->prev : list.last) = node;
}

/* Takes `node` out of an open chain. Which neighbours it has, its own links say: the list's ends are not looked at. */
template <class List, class Node>
void unlink_by_neighbours(List &list, const Node *node)
{
    assert(neighbours_hold(node));
    (node->prev ? node->prev->next : list.first) = node->next;
    (node->next ? node->next->prev : list.last) = node->prev;
}

/* Takes `node` out. Its own links stay as they are. Of an open list's only node `first` and `last` become null; of a
   ring's they go on naming the node, and the caller, who counts, clears them. */
template <class List, class Node>
void unlink(List &list, Node *node, shape as)
{
    assert(ends_hold<Node>(list, as));
    assert(neighbours_hold(node));
    if (node == list.first) {
        list.first = node->next;
        if (as == shape::ring)
            last_of<Node>(list)->next = node->next;
    } else {
        node->prev->next = node->next;
    }
    if (node == list.last) {
        list.last = node->prev;
        if (as == shape::ring)
            first_of<Node>(list)->prev = node->prev;
    } else {
        node->next->prev = node->prev;
    }
}

/* Links the ends of a list to each other, where it has any. */
template <class Node, class List>
void close(List &list)
{
    if (list.first)
        first_of<Node>(list)->prev = last_of<Node>(list);
    if (list.last)
        last_of<Node>(list)->next = first_of<Node>(list);
}

/* Ends the list at its first and its last node. */
template <class Node, class List>
void open(List &list)
{
    if (list.first)
        first_of<Node>(list)->prev = nullptr;
    if (list.last)
        last_of<Node>(list)->next = nullptr;
}

/* Reverses an open chain. */
template <class Node, class List>
void reverse(List &list)
{
    assert(ends_hold<Node>(list, shape::open));
    for (Node *node = first_of<Node>(list); node; node = node->prev)
        std::swap(node->prev, node->next);
    std::swap(list.first, list.last);
}

/* Makes `node` the first of a ring. */
template <class List, class Node>
void roll(List &list, Node *node)
{
    list.first = node;
    list.last = node->prev;
}

/* Returns the node `steps` links on, or back for a negative number; null where a null link comes before that. */
template <class Node>
Node *advance(Node *node, int32_t steps)
{
    for (; node && steps > 0; --steps)
        node = node->next;
    for (; node && steps < 0; ++steps)
        node = node->prev;
    return node;
}

/* Returns the number of steps back from `node` to the first. */
template <class Node, class List>
int32_t index_of(const List &list, const Node *node)
{
    int32_t index = 0;
    for (; node != list.first; node = node->prev) {
        assert(node); /* it is on the list */
        ++index;
    }
    return index;
}

/* Returns the node with this index, without walking past the last one, or null. */
template <class Node, class List>
Node *node_at(const List &list, int32_t index)
{
    if (index < 0)
        return nullptr;
    Node *node = first_of<Node>(list);
    for (; index > 0 && node != list.last; --index)
        node = node->next;
    return index == 0 ? node : nullptr;
}

/* Moves all nodes of the open chain `source` after those of the open chain `target`; `source` still names them. */
template <class Node, class List>
void splice_last(List &target, const List &source)
{
    if (!target.first) {
        target.first = source.first;
        target.last = source.last;
    } else if (source.first) {
        last_of<Node>(target)->next = first_of<Node>(source);
        first_of<Node>(source)->prev = last_of<Node>(target);
        target.last = source.last;
    }
}

/* Makes `node` the first of an open chain whose nodes before it are gone. Returns how many are left. */
template <class Node, class List>
int32_t keep_from(List &list, Node *node)
{
    list.first = node;
    node->prev = nullptr;
    int32_t count = 0;
    for (; node; node = node->next)
        ++count;
    return count;
}

/* Walks along `next`, up to the null link. Nodes that were allocated in a row lie one stride apart, so the walk guesses
   the next address and goes on with it while the link is still on its way from memory; the comparison only verifies the
   guess, out of the way. A wrong guess costs what waiting for the link would have. */
template <class Node>
class walker {
public:
    explicit walker(Node *first) : node_(first) {}

    Node *node() const { return node_; }

    void step()
    {
        Node *next = node_->next;
        const std::uintptr_t guess = reinterpret_cast<std::uintptr_t>(node_) + stride_;
        /* What is compared is a copy that the optimiser knows nothing of: else it would go on with `next`, which it has
           just found to be the same, and wait for it. */
        std::uintptr_t copy = guess;
        asm("" : "+r"(copy));
        if (copy != reinterpret_cast<std::uintptr_t>(next)) [[unlikely]] {
            stride_ = reinterpret_cast<std::uintptr_t>(next) - reinterpret_cast<std::uintptr_t>(node_);
            node_ = next;
        } else {
            node_ = reinterpret_cast<Node *>(guess);
        }
    }

private:
    Node *node_;
    std::uintptr_t stride_ = 0;
};

/* Calls `visit` with every node from `first` to the null link. The successor is read first, so `visit` may free. */
template <class Node, class Visit>
void for_each(Node *first, Visit visit)
{
    for (walker<Node> walk(first); Node *node = walk.node();) {
        walk.step();
        visit(node);
    }
}

/* As for_each, but up to `last`, which may be the end of a ring. */
template <class Node, class Visit>
void for_each_to(Node *first, const Node *last, Visit visit)
{
    for (walker<Node> walk(first); Node *node = walk.node();) {
        walk.step();
        visit(node);
        if (node == last)
            return;
    }
}

} // namespace mova::chain

#endif
