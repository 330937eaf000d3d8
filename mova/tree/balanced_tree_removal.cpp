/* SPDX-License-Identifier: MIT */
#include <mova/tree/balanced_tree.h>

#include <mova/frame/internal/assert.h>
#include <mova/lists/internal/chain.h>
#include <mova/tree/internal/iterators.h>
#include <mova/tree/internal/path.h>
#include <mova/tree/internal/prefetch.h>
#include <mova/tree/internal/records.h>

using namespace mova::gt;

namespace {

/* A removal goes down once, and comes back the way it went:

     1. It goes down to the node. Where the comparison says "equal", the node may be on either side: it looks on the left
        first, and turns back where that was wrong.
     2. Where the node has two children, it goes on to the node's predecessor, which is to take its place.
     3. It takes the node out of the tree and the chain, and frees it.
     4. It goes back up, and rebalances as long as subtrees have shrunk.

   Steps 1 and 2 change nothing, so that a comparison may throw. */

/* Step 1, from `link` on; then calls `remove` with the way, which has room for one more step, and the link to the node.
   `order_at` says on which side of another node to look: a negative number is left, a positive one right, zero left and
   then right. Returns false where the node is not found. */
template <class OrderAt, class Remove>
bool go_to(const tree_item *sought, path way, tree_item **link, OrderAt order_at, Remove remove)
{
    while (link) {
        tree_item *const node = *link;
        if (!node) {
            link = way.turn_right();
            continue;
        }
        if (way.is_full())
            return with_longer_path(way, [=](path longer) { return go_to(sought, longer, link, order_at, remove); });
        if (node == sought) {
            remove(way, link);
            return true;
        }
        prefetch_children(node);
        const int32_t order = order_at(node);
        if (order > 0) {
            way.push(link, turn::to_right);
            link = &node->right;
        } else {
            way.push(link, order < 0 ? turn::to_left : turn::to_left_first);
            link = &node->left;
        }
    }
    return false;
}

/* Step 3, for a node with one child or none. */
void replace_by_child(const tree *t, tree_item **link)
{
    tree_item *const node = *link;
    if (node->right) {
        fix_up_removal_by_right_child(t, node);
        *link = node->right;
    } else {
        fix_up_removal_by_left_child(t, node);
        *link = node->left;
    }
}

void leave_chain(tree *t, tree_item *node)
{
    mova::chain::unlink_by_neighbours(*t, node);
    free_record(node);
}

/* Steps 2 to 4, for a node N with two children, from the step `place` of the way on. The predecessor P is the last node
   along `right` in N's left subtree. Its record takes the place of N, not only its item: positions of P stay valid.

             N                              P        with N's balance
           /   \                          /   \
          A     v                        A     v
        /   \              =>          /   \
       w     B                        w     B
           /   \                          /   \
          x     P                        x     y
               /
              y

       the way    the link to N, N's left, A's right      the link to P, P's left, A's right
       `last`     B's right, which holds P                B's right, which holds y

   N's own `left` is a link of the way, and goes with N: P's `left` stands in for it. Where A has no right child, A is P:
   then the way ends with the link to N, and `last` is N's left, through which P gets y back as its left child. */
void replace_by_predecessor(tree *t, path way, ptrdiff_t place, tree_item **last)
{
    /* 2. Go on to P. */
    for (; (*last)->right; last = &(*last)->right) {
        if (way.is_full())
            return with_longer_path(way, [=](path longer) { replace_by_predecessor(t, longer, place, last); });
        way.push(last, turn::to_right);
    }

    /* 3. Put P's left subtree where P was, and P where N was. */
    tree_item **const link = way.first[place].link;
    tree_item *const node = *link, *const predecessor = *last;
    assert(predecessor == node->prev); /* invariant 1 */
    fix_up_removal_by_predecessor(t, node, predecessor);
    *last = predecessor->left;
    predecessor->left = node->left;
    predecessor->right = node->right;
    predecessor->balance = node->balance;
    *link = predecessor;
    leave_chain(t, node);

    /* 4. Go back up, by way of P instead of N. */
    if (way.first + place + 1 != way.end)
        way.first[place + 1].link = &predecessor->left;
    rebalance_shrunk_path(way);
}

/* Steps 2 to 4, for the node that is held by `link`, at the end of the way. */
void remove_node(tree *t, path way, tree_item **link)
{
    tree_item *const node = *link;
    if (node->left && node->right) {
        way.push(link, turn::to_left);
        return replace_by_predecessor(t, way, way.end - way.first - 1, &node->left);
    }
    replace_by_child(t, link);
    leave_chain(t, node);
    rebalance_shrunk_path(way);
}

/* The same for the tree's `first`, which a program may have put wrong: even if it has two children, its right one takes
   its place, and what is before it in the chain is left alone. */
void remove_first_node(tree *t, path way, tree_item **link)
{
    tree_item *const node = *link;
    replace_by_child(t, link);
    t->first = node->next;
    (node->next ? node->next->prev : t->last) = node->prev;
    free_record(node);
    rebalance_shrunk_path(way);
}

template <class OrderAt>
bool remove_found(tree *t, const tree_item *position, OrderAt order_at)
{
    path_room room;
    return go_to(position, empty_path(room), &t->root, order_at,
                 [t](path way, tree_item **link) { remove_node(t, way, link); });
}

bool remove_by_comparison(tree *t, const tree_item *position)
{
    return remove_found(t, position, [compare = t->compare, position](const tree_item *node) {
        return compare(position->item, node->item);
    });
}

bool remove_by_visiting_all(tree *t, const tree_item *position)
{
    return remove_found(t, position, [](const tree_item *) { return 0; });
}

bool remove_first(tree *t)
{
    path_room room;
    return go_to(
        t->first, empty_path(room), &t->root, [](const tree_item *) { return -1; },
        [t](path way, tree_item **link) { remove_first_node(t, way, link); });
}

} // namespace

void GT_remove_item(tree *t, tree_item *position)
{
    if (!remove_by_comparison(t, position))
        raise_broken_precondition(481);
}

void GT_remove_item_global(tree *t, tree_item *position)
{
    if (!remove_by_comparison(t, position) && !remove_by_visiting_all(t, position))
        raise_broken_precondition(545);
}

void GT_find_and_remove_item(tree *t, void *item)
{
    tree_item *position;
    if (!GT_find_item(t, item, &position))
        return raise_broken_precondition(566);
    if (!remove_by_comparison(t, position))
        raise_broken_precondition(579);
}

void GT_remove_first_item(tree *t)
{
    if (!remove_first(t))
        raise_broken_precondition(1427);
}
