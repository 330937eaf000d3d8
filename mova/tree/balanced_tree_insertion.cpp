/* SPDX-License-Identifier: MIT */
#include <mova/tree/balanced_tree.h>

#include <mova/lists/internal/chain.h>
#include <mova/tree/internal/iterators.h>
#include <mova/tree/internal/path.h>
#include <mova/tree/internal/prefetch.h>
#include <mova/tree/internal/records.h>

using namespace mova::gt;

namespace {

/* What is inserted, and where: the way down moves the three last fields. */
struct insertion {
    tree *t;
    void *item;
    GT_compare compare = t->compare;
    bool refuses_equal = t->dupl_allowed == 0;
    tree_item **link = &t->root;
    tree_item *prev = nullptr; /* the last node whose right side was entered: the new one's predecessor */
    tree_item *next = nullptr; /* the last one whose left side was entered: its successor */
};

/* Puts a new node into the empty link at the end of the way. */
tree_item *insert_node(const insertion &op, path way)
{
    tree_item *const node = allocate_node(op.item);
    mova::chain::link_by_neighbours(*op.t, op.prev, node, op.next);
    *op.link = node;
    fix_up_insertion(op.t, node);
    rebalance_grown_path(way);
    return node;
}

/* Goes down to where the item belongs. Returns its new node, or the one that is in its way. */
tree_item *insert(insertion &op, path way)
{
    while (tree_item *const node = *op.link) {
        if (way.is_full())
            return with_longer_path(way, [&op](path longer) { return insert(op, longer); });
        /* The comparison takes a while: meanwhile either of the nodes that may come next is on its way from memory. */
        prefetch_children(node);
        const int32_t order = op.compare(op.item, node->item);
        if (order < 0) {
            way.push(op.link, turn::to_left);
            op.next = node;
            op.link = &node->left;
            continue;
        }
        if (order == 0 && op.refuses_equal)
            return node;
        way.push(op.link, turn::to_right);
        op.prev = node;
        op.link = &node->right;
    }
    return insert_node(op, way);
}

} // namespace

tree_item *GT_insert_item(tree *t, void *item)
{
    path_room room;
    insertion op = {.t = t, .item = item};
    return insert(op, empty_path(room));
}
