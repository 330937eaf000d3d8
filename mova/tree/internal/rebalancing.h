/* SPDX-License-Identifier: MIT */
/* Rotations, and the steps that keep a node's balance while the tree grows and shrinks.

   Left and right are one piece of code: each function names the side it works on, and is the mirror image of itself for
   the other. The letters are those of the drawings: `a` is the node out of balance, `b` its higher child, `c` the inner
   child of `b`. */
#ifndef MOVA_TREE_INTERNAL_REBALANCING_H
#define MOVA_TREE_INTERNAL_REBALANCING_H

#include <mova/frame/internal/assert.h>
#include <mova/tree/balanced_tree.h>
#include <mova/tree/internal/records.h>

namespace mova::gt {

/* A side is the balance of a node that is higher there. */
using side = int32_t;
constexpr side left = -1;
constexpr side right = +1;

template <side Side>
tree_item *&child(tree_item *node)
{
    if constexpr (Side == left)
        return node->left;
    else
        return node->right;
}

/* The left side is too high:                  The right side is too high:

           a              b                    a                  b
          / \            / \                  / \                / \
         b   z    =>    x   a                z   b      =>      a   x
        / \                / \                  / \            / \
       x   y              y   z                y   x          z   y

   The balances are the caller's. */
template <side High>
void rotate_single(tree_item **link)
{
    tree_item *const a = *link;
    tree_item *const b = child<High>(a);
    assert(b); /* invariant 3: what is too high is there */
    child<High>(a) = child<-High>(b);
    child<-High>(b) = a;
    *link = b;
}

/* The left side is too high:                  The right side is too high:

           a                 c                 a                     c
          / \              /   \              / \                  /   \
         b   z            b     a            z   b                a     b
        / \       =>     / \   / \              / \     =>       / \   / \
       w   c            w   x y   z            c   w            z   y x   w
          / \                                 / \
         x   y                               y   x

   Where `c` was higher towards `x`, `a` is now higher on its outer side; where towards `y`, `b` is on its. */
template <side High>
void rotate_double(tree_item **link)
{
    tree_item *const a = *link;
    tree_item *const b = child<High>(a);
    tree_item *const c = child<-High>(b);
    assert(c); /* invariant 3: `b` is higher on this side */
    child<-High>(b) = child<High>(c);
    child<High>(c) = b;
    child<High>(a) = child<-High>(c);
    child<-High>(c) = a;
    a->balance = c->balance == High ? -High : 0;
    b->balance = c->balance == -High ? High : 0;
    c->balance = 0;
    *link = c;
}

/* Rotates the subtree at `link`, which an insertion made too high on one side, back to the height that it had. */
template <side High>
void rotate_grown(tree_item **link)
{
    tree_item *const a = *link;
    tree_item *const b = child<High>(a);
    if (b->balance != High) {
        /* Where the host returned from a raise, `b` may have any balance, and no `c`. */
        if (child<-High>(b))
            rotate_double<High>(link);
        return;
    }
    rotate_single<High>(link);
    a->balance = b->balance = 0;
}

/* One side of the node at `link` has grown. Returns whether the whole subtree has. The processor cannot
   foresee which side it is: so nothing but a rotation depends on it. */
inline bool rebalance_grown(tree_item **link, side grown)
{
    tree_item *const a = *link;
    if (a->balance == 0) {
        a->balance = grown;
        return true;
    }
    if (a->balance == -grown) {
        a->balance = 0;
        return false;
    }
    if (a->balance == grown) {
        grown == left ? rotate_grown<left>(link) : rotate_grown<right>(link);
        return false;
    }
    raise_broken_precondition(grown == left ? 1181 : 1236);
    return true;
}

/* Whether the node is higher on this side. */
template <side Side>
bool leans(const tree_item *node)
{
    return Side == left ? node->balance < 0 : node->balance > 0;
}

/* Rotates the subtree at `link`, which a removal left too high on one side. Returns whether it is lower than before. */
template <side High>
bool rotate_shrunk(tree_item **link)
{
    tree_item *const a = *link;
    tree_item *const b = child<High>(a);
    if (leans<-High>(b)) {
        rotate_double<High>(link);
        return true;
    }
    rotate_single<High>(link);
    const bool was_even = b->balance == 0;
    a->balance = was_even ? High : 0;
    b->balance = was_even ? -High : 0;
    return !was_even;
}

/* One side of the node at `link` has shrunk. Returns whether the whole subtree has. A balance that is none of the three is
   left alone, and its subtree counts as shrunk. */
inline bool rebalance_shrunk(tree_item **link, side shrunk)
{
    tree_item *const a = *link;
    if (a->balance == 0) {
        a->balance = -shrunk;
        return false;
    }
    if (a->balance == shrunk)
        a->balance = 0;
    else if (a->balance == -shrunk)
        return shrunk == left ? rotate_shrunk<right>(link) : rotate_shrunk<left>(link);
    return true;
}

} // namespace mova::gt

#endif
