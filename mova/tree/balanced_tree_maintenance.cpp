/* SPDX-License-Identifier: MIT */
#include <mova/tree/balanced_tree.h>

#include <algorithm>
#include <utility>

#include <mova/frame/host.h>
#include <mova/frame/internal/assert.h>
#include <mova/frame/internal/module_records.h>
#include <mova/frame/internal/undo.h>
#include <mova/tree/internal/invariants.h>

namespace {

/* ---- sorting ---- */

/* Carries items up the chain from `start`, the first node, to `bound`; from there on all are in their place. Ends the
   iterator, which is fresh. Returns the last node that an item was carried into, or `start`. */
tree_item *carry_up(tree_iter *iterator, GT_compare compare, tree_item *start, const tree_item *bound)
{
    tree_item *last_swap = start;
    tree_item *prev = start, *cur;
    GT_next_position(iterator, &prev);
    while (GT_next_position(iterator, &cur)) {
        if (cur == bound) {
            GT_end_iterator(iterator);
            break;
        }
        if (compare(cur->item, prev->item) < 0) {
            std::swap(prev->item, cur->item);
            last_swap = cur;
        }
        prev = cur;
    }
    return last_swap;
}

/* One pass of the sort. */
tree_item *sort_pass(tree *t, GT_compare compare, tree_item *start, const tree_item *bound)
{
    tree_iter *const iterator = GT_all_items(t);
    return mova::or_undo([=] { return carry_up(iterator, compare, start, bound); },
                         [iterator] { GT_end_iterator(iterator); });
}

/* ---- printing ---- */

int32_t height(const tree_item *node)
{
    return node ? 1 + std::max(height(node->left), height(node->right)) : 0;
}

/* The text is fixed, for programs read it: the header gives it. To print more takes a function of its own. */
void print_item(const tree_item *node, int32_t depth, GT_print_fn print)
{
    for (int32_t level = 0; level < depth; ++level)
        mova_dprintf("   ");
    print(node->item);
    const int32_t balance = height(node->right) - height(node->left);
    if (balance != node->balance)
        mova_dprintf(" %d %d ERROR IN BALANCE !!!!!!!!!!", node->balance, balance);
    mova_dprintf("\n");
}

void print_subtree(const tree_item *node, int32_t depth, GT_print_fn print)
{
    if (!node)
        return;
    print_subtree(node->left, depth + 1, print);
    print_item(node, depth, print);
    print_subtree(node->right, depth + 1, print);
}

} // namespace

void GT_sort(tree *t)
{
    if (GT_count_items(t) < 2)
        return;
    const GT_compare compare = t->compare;
    tree_item *const start = t->first;
    tree_item *bound = nullptr;
    do
        bound = sort_pass(t, compare, start, bound);
    while (bound != start);
    /* Not all: the caller would see comparisons, and may have put the balances wrong. */
    assert(mova::intact(mova::broken_chain_invariant(*t)));
}

void GT_check(void)
{
    const mova::tree_module_record &live = mova::modules.gentree;
    mova_dprintf("allocated trees      = %d\n", live.live_trees);
    mova_dprintf("allocated tree_items = %d\n", live.live_nodes);
    mova_dprintf("allocated tree_iters = %d\n", live.live_iterators);
}

void GT_print_tree(tree *t, GT_print_fn print)
{
    print_subtree(t->root, 0, print);
}
