/* SPDX-License-Identifier: MIT */
/* The numbered invariants of a tree, as its header gives them. */
#ifndef MOVA_TREE_INTERNAL_INVARIANTS_H
#define MOVA_TREE_INTERNAL_INVARIANTS_H

#include <algorithm>

#include <mova/lists/internal/invariants.h>
#include <mova/tree/balanced_tree.h>

namespace mova {

/* Walks a subtree in order and the chain beside it. `before` is the node that came last: at first the one before the
   subtree, at the end the subtree's own. Returns 1 or 2 where the chain differs from the walk. */
inline int broken_chain_below(const tree &t, const tree_item *node, const tree_item *&before)
{
    if (!node)
        return 0;
    if (const int broken = broken_chain_below(t, node->left, before))
        return broken;
    if ((before ? before->next : t.first) != node)
        return 1;
    if (node->prev != before)
        return 2;
    before = node;
    return broken_chain_below(t, node->right, before);
}

/* The invariants about the chain: 1 and 2. */
inline int broken_chain_invariant(const tree &t)
{
    const tree_item *last = nullptr;
    if (const int broken = broken_chain_below(t, t.root, last))
        return broken;
    if (t.last != last || (!last && t.first))
        return 1;
    return last && last->next ? 2 : 0;
}

/* The height of a subtree, or -1 where a balance in it is wrong. */
inline int32_t balanced_height(const tree_item *node)
{
    if (!node)
        return 0;
    const int32_t left = balanced_height(node->left), right = balanced_height(node->right);
    if (left < 0 || right < 0 || right - left != node->balance || node->balance < -1 || node->balance > 1)
        return -1;
    return 1 + std::max(left, right);
}

inline bool is_in_order(const tree &t, GT_compare compare)
{
    for (const tree_item *node = t.first; node && node->next; node = node->next) {
        const int32_t order = compare(node->next->item, node->item);
        if (order < 0 || (order == 0 && !t.dupl_allowed))
            return false;
    }
    return true;
}

/* Whether the list of iterators is sound and holds iterators of this tree, each once. Quadratic in their number. */
inline bool holds_each_iterator_once(const tree &t)
{
    if (broken_invariant(*t.iterators) != 0)
        return false;
    for (const GL_node *node = t.iterators->first; node; node = node->next) {
        if (static_cast<const tree_iter *>(node->item)->tree != &t)
            return false;
        for (const GL_node *other = node->next; other; other = other->next) {
            if (other->item == node->item)
                return false;
        }
    }
    return true;
}

/* Returns the number of the first invariant that `t` breaks, or 0. Items are compared by `compare`, not by the tree's
   own comparison; where it is null, invariant 4 is not looked at. */
inline int broken_invariant(const tree &t, GT_compare compare)
{
    if (const int broken = broken_chain_invariant(t))
        return broken;
    if (balanced_height(t.root) < 0)
        return 3;
    if (compare && !is_in_order(t, compare))
        return 4;
    return holds_each_iterator_once(t) ? 0 : 5;
}

} // namespace mova

#endif
