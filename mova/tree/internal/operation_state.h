/* The working variables of the tree's operations. Each call has its own, so that a comparison that throws leaves
   nothing behind. */
#ifndef MOVA_TREE_INTERNAL_OPERATION_STATE_H
#define MOVA_TREE_INTERNAL_OPERATION_STATE_H

#include <mova/tree/balanced_tree.h>

namespace mova::gt {

struct search_state {
    GT_compare op_compare;
    void *op_key;                 /* the item, or the key, that is looked for */
    tree_item *op_node = nullptr; /* where it was found */
};

struct insertion_state {
    tree *op_tree;
    void *op_key; /* the item to insert */
    GT_compare op_compare = op_tree->compare;
    int32_t op_dupl_allowed = op_tree->dupl_allowed;
    tree_item *op_node = nullptr; /* the new node, or the one in its way */
    tree_item *op_pred = nullptr; /* the last node whose right subtree was entered */
    tree_item *op_succ = nullptr; /* the last node whose left subtree was entered */
    bool op_grown = false;        /* the subtree just worked on has become higher */
};

struct removal_state {
    tree *op_tree;
    tree_item *op_node;         /* the node to remove */
    bool op_use_compare = true; /* else every node is visited */
    GT_compare op_compare = op_tree->compare;
    tree_item **op_link = nullptr; /* the link that holds op_node, which has two children */
    bool op_found = false;         /* op_node was reached */
    bool op_shrunk = false;        /* the subtree just worked on has become lower */
};

} // namespace mova::gt

#endif
