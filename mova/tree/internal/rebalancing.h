/* Rotations, and the steps that keep a node's balance while the tree grows and shrinks.

   Left and right are one piece of code: each function names the side it works on, and is the mirror image of itself for
   the other. The letters are those of the drawings: `a` is the node out of balance, `b` its higher child, `c` the inner
   child of `b`. */
#ifndef MOVA_TREE_INTERNAL_REBALANCING_H
#define MOVA_TREE_INTERNAL_REBALANCING_H

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
void rotate_single(tree_item **p)
{
    tree_item *a = *p;
    tree_item *b = child<High>(a);
    child<High>(a) = child<-High>(b);
    child<-High>(b) = a;
    *p = b;
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
void rotate_double(tree_item **p)
{
    tree_item *a = *p;
    tree_item *b = child<High>(a);
    tree_item *c = child<-High>(b);
    child<-High>(b) = child<High>(c);
    child<High>(c) = b;
    child<High>(a) = child<-High>(c);
    child<-High>(c) = a;
    a->balance = c->balance == High ? -High : 0;
    b->balance = c->balance == -High ? High : 0;
    c->balance = 0;
    *p = c;
}

/* Rotates the subtree at `p`, which an insertion made too high on one side, back to the height that it had. */
template <side High>
void rotate_grown(tree_item **p)
{
    tree_item *a = *p;
    tree_item *b = child<High>(a);
    if (b->balance != High) {
        /* Where the host returned from a raise, `b` may have any balance, and no `c`. */
        if (child<-High>(b))
            rotate_double<High>(p);
        return;
    }
    rotate_single<High>(p);
    a->balance = b->balance = 0;
}

/* One side of the node at `p` has grown. Returns whether the whole subtree has. */
template <side Grown>
bool rebalance_grown(tree_item **p)
{
    tree_item *a = *p;
    switch (a->balance) {
    case -Grown: a->balance = 0; return false;
    case 0: a->balance = Grown; return true;
    case Grown: rotate_grown<Grown>(p); return false;
    default: raise_broken_precondition(Grown == left ? 1181 : 1236); return true;
    }
}

/* Whether the node is higher on this side. */
template <side Side>
bool leans(const tree_item *node)
{
    return Side == left ? node->balance < 0 : node->balance > 0;
}

/* Rotates the subtree at `p`, which a removal left too high on one side. Returns whether it is lower than before. */
template <side High>
bool rotate_shrunk(tree_item **p)
{
    tree_item *a = *p;
    tree_item *b = child<High>(a);
    if (leans<-High>(b)) {
        rotate_double<High>(p);
        return true;
    }
    rotate_single<High>(p);
    const bool was_even = b->balance == 0;
    a->balance = was_even ? High : 0;
    b->balance = was_even ? -High : 0;
    return !was_even;
}

/* One side of the node at `p` has shrunk. Returns whether the whole subtree has. A balance that is none of the three is
   left alone, and its subtree counts as shrunk. */
template <side Shrunk>
bool rebalance_shrunk(tree_item **p)
{
    tree_item *a = *p;
    switch (a->balance) {
    case Shrunk: a->balance = 0; return true;
    case 0: a->balance = -Shrunk; return false;
    case -Shrunk: return rotate_shrunk<-Shrunk>(p);
    default: return true;
    }
}

} // namespace mova::gt

#endif
