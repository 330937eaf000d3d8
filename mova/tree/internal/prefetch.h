/* SPDX-License-Identifier: MIT */
/* Nodes lie anywhere in memory, and a large tree's are slow to come. */
#ifndef MOVA_TREE_INTERNAL_PREFETCH_H
#define MOVA_TREE_INTERNAL_PREFETCH_H

#include <mova/tree/balanced_tree.h>

namespace mova::gt {

inline void prefetch_children(const tree_item *node)
{
    __builtin_prefetch(node->left);
    __builtin_prefetch(node->right);
}

} // namespace mova::gt

#endif
