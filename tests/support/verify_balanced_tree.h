#ifndef MOVA_TESTS_SUPPORT_VERIFY_BALANCED_TREE_H
#define MOVA_TESTS_SUPPORT_VERIFY_BALANCED_TREE_H

#include <mova/lists/internal/invariants.h>
#include <mova/tree/balanced_tree.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <vector>

namespace mova::test {

inline void collect_in_order(const tree_item *node, std::vector<const tree_item *> &nodes)
{
    if (!node)
        return;
    collect_in_order(node->left, nodes);
    nodes.push_back(node);
    collect_in_order(node->right, nodes);
}

inline std::vector<const tree_item *> nodes_in_order(const tree &t)
{
    std::vector<const tree_item *> nodes;
    collect_in_order(t.root, nodes);
    return nodes;
}

/* The height of a subtree, or -1 where a balance in it is wrong. */
inline int32_t balanced_height(const tree_item *node)
{
    if (!node)
        return 0;
    const int32_t left = balanced_height(node->left), right = balanced_height(node->right);
    if (left < 0 || right < 0 || right - left != node->balance || std::abs(node->balance) > 1)
        return -1;
    return 1 + std::max(left, right);
}

inline int broken_tree_chain_invariant(const tree &t)
{
    const std::vector<const tree_item *> nodes = nodes_in_order(t);
    if ((nodes.empty() ? nullptr : nodes.front()) != t.first || (nodes.empty() ? nullptr : nodes.back()) != t.last)
        return 1;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i]->next != (i + 1 < nodes.size() ? nodes[i + 1] : nullptr))
            return 1;
        if (nodes[i]->prev != (i > 0 ? nodes[i - 1] : nullptr))
            return 2;
    }
    return 0;
}

inline bool is_in_order(const tree &t, GT_compare compare)
{
    for (const tree_item *node = t.first; node && node->next; node = node->next) {
        const int32_t c = compare(node->next->item, node->item);
        if (c < 0 || (c == 0 && !t.dupl_allowed))
            return false;
    }
    return true;
}

inline bool iterators_are_registered_once(const tree &t)
{
    std::set<const void *> met;
    for (const GL_node *node = t.iterators->first; node; node = node->next) {
        if (static_cast<const tree_iter *>(node->item)->tree != &t || !met.insert(node->item).second)
            return false;
    }
    return mova::broken_invariant(*t.iterators) == 0;
}

/* Returns the number, as the header gives it, of the first invariant that `t` breaks, or 0. The comparison is that of
   the tree, for tests whose comparison writes down what it was asked. */
inline int broken_invariant(const tree &t, GT_compare compare)
{
    if (int broken = broken_tree_chain_invariant(t))
        return broken;
    if (balanced_height(t.root) < 0)
        return 3;
    if (!is_in_order(t, compare))
        return 4;
    return iterators_are_registered_once(t) ? 0 : 5;
}

} // namespace mova::test

#endif
