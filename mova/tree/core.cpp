#include <mova/tree/balanced_tree.h>

#include <cstddef>

#include <mova/tree/internal/iterators.h>
#include <mova/tree/internal/operation_state.h>
#include <mova/tree/internal/prefetch.h>
#include <mova/tree/internal/rebalancing.h>
#include <mova/tree/internal/records.h>

using namespace mova::gt;

namespace {

/* ---- creation and disposal ---- */

tree *create(GT_compare compare, int32_t dupl_allowed)
{
    tree *t = gt_alloc_tree();
    t->root = t->first = t->last = nullptr;
    t->compare = compare;
    t->dupl_allowed = dupl_allowed;
    t->iterators = GL_create();
    return t;
}

/* Frees the nodes of a subtree, each after both its own subtrees, and calls `free_item` with its item before that. */
template <class FreeItem>
void free_nodes(tree_item *node, FreeItem free_item)
{
    if (!node)
        return;
    __builtin_prefetch(node->right);
    free_nodes(node->left, free_item);
    free_nodes(node->right, free_item);
    free_item(node->item);
    gt_free_tree_item(node);
}

template <class FreeItem>
void release(tree **t, FreeItem free_item)
{
    if (!*t)
        return;
    for_each_iterator(*t, [](tree_iter *iterator) {
        iterator->cursor = iterator->current = nullptr;
        iterator->tree = nullptr;
    });
    GL_release(&(*t)->iterators);
    free_nodes((*t)->root, free_item);
    gt_free_tree(*t);
    *t = nullptr;
}

template <class FreeItem>
void make_empty(tree *t, FreeItem free_item)
{
    if (!t)
        return;
    for_each_iterator(t, [](tree_iter *iterator) { iterator->cursor = iterator->current = nullptr; });
    free_nodes(t->root, free_item);
    t->root = t->first = t->last = nullptr;
}

void leave_item(void *)
{
}

auto free_items_of(size_t op_item_size)
{
    return [op_item_size](void *item) { MM_dealloc_item(item, op_item_size); };
}

/* ---- insertion ---- */

void link_into_chain(tree *t, tree_item *node, tree_item *prev, tree_item *next)
{
    (prev ? prev->next : t->first) = node;
    (next ? next->prev : t->last) = node;
    node->prev = prev;
    node->next = next;
}

/* Puts a new node into the empty link at the end of the way down. */
void insert_node(insertion_state &op, tree_item **p)
{
    tree_item *node = gt_alloc_tree_item();
    node->item = op.op_key;
    node->left = node->right = nullptr;
    node->balance = 0;
    link_into_chain(op.op_tree, node, op.op_pred, op.op_succ);
    op.op_node = node;
    op.op_grown = true;
    *p = node;
    fix_up_insertion(op.op_tree, node);
}

/* Returns the link through which the way leads on, or null where the node itself is in the way. */
tree_item **next_link(insertion_state &op, tree_item *node)
{
    /* The comparison takes a while: meanwhile either of the nodes that may come next is on its way from memory. */
    prefetch_children(node);
    const int32_t c = op.op_compare(op.op_key, node->item);
    if (c < 0) {
        op.op_succ = node;
        return &node->left;
    }
    if (c == 0 && !op.op_dupl_allowed)
        return nullptr;
    op.op_pred = node;
    return &node->right;
}

/* Higher than any balanced tree that fits into memory. */
constexpr int path_length = 64;

/* Inserts below the link `p`. The way down is kept as links, and only that part of it is looked at again whose balances
   change. Should a program have put the balances wrong, it may be longer: then every 64 levels take a call. */
void insert_below(insertion_state &op, tree_item **p)
{
    tree_item **path[path_length];
    int depth = 0;
    for (; *p && depth < path_length; ++depth) {
        path[depth] = p;
        p = next_link(op, *p);
        if (!p) {
            op.op_node = *path[depth];
            return;
        }
    }
    *p ? insert_below(op, p) : insert_node(op, p);
    while (op.op_grown && depth > 0) {
        tree_item **parent = path[--depth];
        op.op_grown = p == &(*parent)->left ? rebalance_grown<left>(parent) : rebalance_grown<right>(parent);
        p = parent;
    }
}

/* ---- search ---- */

/* Whether the subtree of `node` holds the very item `op_key`. Where the comparison says equal, it may lie on either
   side. */
bool find(search_state &op, tree_item *node)
{
    while (node && node->item != op.op_key) {
        prefetch_children(node);
        const int32_t c = op.op_compare(op.op_key, node->item);
        if (c < 0) {
            node = node->left;
            continue;
        }
        if (c == 0 && find(op, node->left))
            return true;
        node = node->right;
    }
    op.op_node = node;
    return node != nullptr;
}

int32_t count(const tree_item *node)
{
    if (!node)
        return 0;
    prefetch_children(node);
    const int32_t before = count(node->left);
    return before + count(node->right) + 1;
}

/* ---- removal ---- */

/* Walks down to the predecessor of op_node, which is the last along `right` from `q`, and puts the predecessor's record
   into the place of op_node. */
void replace_by_predecessor(removal_state &op, tree_item **q)
{
    tree_item *r = *q;
    if (r->right) {
        replace_by_predecessor(op, &r->right);
        if (op.op_shrunk)
            op.op_shrunk = rebalance_shrunk<right>(q);
        return;
    }
    fix_up_removal_by_predecessor(op.op_tree, op.op_node, r);
    tree_item *rest = r->left;
    if (r != op.op_node->left)
        r->left = op.op_node->left;
    *q = rest;
    r->balance = op.op_node->balance;
    r->right = op.op_node->right;
    *op.op_link = r;
    op.op_shrunk = true;
}

/* Takes op_node, which has two children, out of the link `p`. */
void take_out_inner(removal_state &op, tree_item **p)
{
    op.op_link = p;
    replace_by_predecessor(op, &op.op_node->left);
    /* The way to the predecessor begins in the removed node, so that is where its rebalancing put the subtree. */
    (*p)->left = op.op_node->left;
    if (op.op_shrunk)
        op.op_shrunk = rebalance_shrunk<left>(p);
}

void unlink_from_chain(tree *t, const tree_item *node)
{
    (node->prev ? node->prev->next : t->first) = node->next;
    (node->next ? node->next->prev : t->last) = node->prev;
}

/* Takes op_node out of the link `p` and frees it. */
void remove_node(removal_state &op, tree_item **p)
{
    tree_item *node = op.op_node;
    op.op_found = op.op_shrunk = true;
    if (!node->right) {
        fix_up_removal_by_left_child(op.op_tree, node);
        *p = node->left;
    } else if (!node->left) {
        fix_up_removal_by_right_child(op.op_tree, node);
        *p = node->right;
    } else {
        take_out_inner(op, p);
    }
    unlink_from_chain(op.op_tree, node);
    gt_free_tree_item(node);
}

void remove_below(removal_state &op, tree_item **p);

/* Returns the link through which the way to op_node leads on from a node. Where the comparison says equal, it may lie
   on either side: then it is removed if it is on the left. */
tree_item **removal_link(removal_state &op, tree_item *node)
{
    prefetch_children(node);
    const int32_t c = op.op_use_compare ? op.op_compare(op.op_node->item, node->item) : 0;
    if (c < 0)
        return &node->left;
    if (c == 0) {
        remove_below(op, &node->left);
        if (op.op_found)
            return &node->left;
    }
    return &node->right;
}

/* Removes op_node from the subtree at `p`, if it is there. The way down is kept as in an insertion. */
void remove_below(removal_state &op, tree_item **p)
{
    tree_item **path[path_length];
    int depth = 0;
    while (*p && *p != op.op_node && !op.op_found && depth < path_length) {
        path[depth++] = p;
        p = removal_link(op, *p);
    }
    if (*p && !op.op_found)
        *p == op.op_node ? remove_node(op, p) : remove_below(op, p);
    while (op.op_shrunk && depth > 0) {
        tree_item **parent = path[--depth];
        op.op_shrunk = p == &(*parent)->left ? rebalance_shrunk<left>(parent) : rebalance_shrunk<right>(parent);
        p = parent;
    }
}

bool removed_by_comparison(tree *t, tree_item *position)
{
    removal_state op = {.op_tree = t, .op_node = position};
    remove_below(op, &t->root);
    return op.op_found;
}

bool removed_by_visiting_all(tree *t, tree_item *position)
{
    removal_state op = {.op_tree = t, .op_node = position, .op_use_compare = false};
    remove_below(op, &t->root);
    return op.op_found;
}

/* Takes op_node, the tree's first, out of the link `p` and frees it. */
void remove_first_node(removal_state &op, tree_item **p)
{
    tree_item *node = op.op_node;
    if (node->right) {
        fix_up_removal_by_right_child(op.op_tree, node);
        *p = node->right;
    } else {
        fix_up_removal_by_left_child(op.op_tree, node);
        *p = node->left;
    }
    op.op_shrunk = true;
    op.op_tree->first = node->next;
    (node->next ? node->next->prev : op.op_tree->last) = node->prev;
    gt_free_tree_item(node);
}

void remove_first_below(removal_state &op, tree_item **p)
{
    if (!*p)
        return raise_broken_precondition(1427);
    if (*p == op.op_node)
        return remove_first_node(op, p);
    remove_first_below(op, &(*p)->left);
    if (op.op_shrunk)
        op.op_shrunk = rebalance_shrunk<left>(p);
}

} // namespace

tree *GT_create_with_dupl_allowed(GT_compare compare)
{
    return create(compare, 1);
}

tree *GT_create_with_dupl_not_allowed(GT_compare compare)
{
    return create(compare, 0);
}

void GT_release(tree **t)
{
    release(t, leave_item);
}

void GT_total_release(tree **t, size_t item_size)
{
    release(t, free_items_of(item_size));
}

void GT_make_empty(tree *t)
{
    make_empty(t, leave_item);
}

void GT_total_make_empty(tree *t, size_t item_size)
{
    make_empty(t, free_items_of(item_size));
}

tree_item *GT_insert_item(tree *t, void *item)
{
    insertion_state op = {.op_tree = t, .op_key = item};
    insert_below(op, &t->root);
    return op.op_node;
}

int GT_find_item(tree *t, void *item, tree_item **position)
{
    search_state op = {.op_compare = t->compare, .op_key = item};
    const bool found = find(op, t->root);
    *position = op.op_node;
    return found;
}

int GT_search_item(tree *t, void *key, tree_item **position)
{
    const GT_compare op_compare = t->compare;
    tree_item *node = t->root;
    while (node) {
        prefetch_children(node);
        /* Asked in this order the loop is faster by a quarter in small trees: most often the answer is not "equal". */
        const int32_t c = op_compare(key, node->item);
        if (c < 0) {
            node = node->left;
            continue;
        }
        if (c == 0)
            break;
        node = node->right;
    }
    *position = node;
    return node != nullptr;
}

int32_t GT_count_items(const tree *t)
{
    return count(t->root);
}

void GT_remove_item(tree *t, tree_item *position)
{
    if (!removed_by_comparison(t, position))
        raise_broken_precondition(481);
}

void GT_remove_item_global(tree *t, tree_item *position)
{
    if (!removed_by_comparison(t, position) && !removed_by_visiting_all(t, position))
        raise_broken_precondition(545);
}

void GT_find_and_remove_item(tree *t, void *item)
{
    tree_item *position;
    if (!GT_find_item(t, item, &position))
        return raise_broken_precondition(566);
    if (!removed_by_comparison(t, position))
        raise_broken_precondition(579);
}

void GT_remove_first_item(tree *t)
{
    removal_state op = {.op_tree = t, .op_node = t->first};
    remove_first_below(op, &t->root);
}
