/* SPDX-License-Identifier: MIT */
/* What the tree's edits do to its live iterators, line by line of the table in the header. Their steps, and their end, are
   in balanced_tree_iteration.cpp. */
#ifndef MOVA_TREE_INTERNAL_ITERATORS_H
#define MOVA_TREE_INTERNAL_ITERATORS_H

#include <mova/tree/balanced_tree.h>

namespace mova::gt {

/* Calls `visit` with every live iterator, in the order in which they were made. */
template <class Visit>
void for_each_iterator(const tree *t, Visit visit)
{
    GL_iterator live = GL_all_items(t->iterators);
    for (void *iterator; GL_next_item(&live, &iterator);)
        visit(static_cast<tree_iter *>(iterator));
}

/* `node` was linked into the tree and the chain. An iterator that delivered its predecessor last delivers it next. */
void fix_up_insertion(const tree *t, tree_item *node);

/* `node` is about to be replaced by its right, or its left, child, and is still in the chain: iterators are led off it.
   Raise line 1728, or 1760, when it has a child on the other side; where the host returns, they go on. */
void fix_up_removal_by_right_child(const tree *t, tree_item *node);
void fix_up_removal_by_left_child(const tree *t, tree_item *node);

/* `node` has two children and is about to be replaced by its predecessor: iterators are led off `node`, and those on the
   predecessor to `node`.
   Raises line 1799 when `node` lacks a child, or the predecessor has a right one; where the host returns, it goes on. */
void fix_up_removal_by_predecessor(const tree *t, tree_item *node, tree_item *predecessor);

} // namespace mova::gt

#endif
