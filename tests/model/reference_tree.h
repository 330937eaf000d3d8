/* SPDX-License-Identifier: MIT */
#ifndef MOVA_TESTS_MODEL_REFERENCE_TREE_H
#define MOVA_TESTS_MODEL_REFERENCE_TREE_H

#include <mova/tree/balanced_tree.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace mova::test {

/* The shape of a height-balanced tree, kept by heights that are counted anew wherever they are needed: no balances, one
   rule of rotation for insertion and removal. Each node stands for one of the tree under test. */
class reference_tree {
public:
    struct node {
        const tree_item *position;
        void *item;
        std::unique_ptr<node> left, right;
    };
    using link = std::unique_ptr<node>;

    /* Asked for each node on the way: negative is left, positive right, zero is here or, in a tree with duplicates,
       both ways. */
    using compare = std::function<int32_t(void *item)>;

    static int height(const link &n) { return n ? 1 + std::max(height(n->left), height(n->right)) : 0; }
    static int balance(const link &n) { return height(n->right) - height(n->left); }

    link root;

    /* Puts a node where the comparison leads; returns the one in its way, or null. */
    const node *insert(link added, const compare &c, bool dupl_allowed) { return insert(root, added, c, dupl_allowed); }

    const node *find(void *item, const compare &c) const { return find(root.get(), item, c); }

    const node *search(const compare &c) const
    {
        const node *n = root.get();
        for (int32_t order; n && (order = c(n->item)) != 0;)
            n = order < 0 ? n->left.get() : n->right.get();
        return n;
    }

    bool remove(const tree_item *position, const compare &c) { return remove(root, position, c); }

    /* The nodes in order; or each after its subtrees. */
    std::vector<node *> in_order() const { return collected(true); }
    std::vector<node *> post_order() const { return collected(false); }

private:
    std::vector<node *> collected(bool ordered) const
    {
        std::vector<node *> nodes;
        collect(root, ordered, nodes);
        return nodes;
    }

    static void collect(const link &n, bool ordered, std::vector<node *> &nodes)
    {
        if (!n)
            return;
        collect(n->left, ordered, nodes);
        if (ordered)
            nodes.push_back(n.get());
        collect(n->right, ordered, nodes);
        if (!ordered)
            nodes.push_back(n.get());
    }

    /* Takes the node's child up into its place. */
    static void lift(link &n, link node::*from, link node::*across)
    {
        link up = std::move((*n).*from);
        (*n).*from = std::move((*up).*across);
        (*up).*across = std::move(n);
        n = std::move(up);
    }

    static void restore_balance(link &n)
    {
        if (balance(n) < -1) {
            if (balance(n->left) > 0)
                lift(n->left, &node::right, &node::left);
            lift(n, &node::left, &node::right);
        } else if (balance(n) > 1) {
            if (balance(n->right) < 0)
                lift(n->right, &node::left, &node::right);
            lift(n, &node::right, &node::left);
        }
    }

    static const node *insert(link &n, link &added, const compare &c, bool dupl_allowed)
    {
        if (!n) {
            n = std::move(added);
            return nullptr;
        }
        const int32_t order = c(n->item);
        if (order == 0 && !dupl_allowed)
            return n.get();
        const node *in_the_way = insert(order < 0 ? n->left : n->right, added, c, dupl_allowed);
        restore_balance(n);
        return in_the_way;
    }

    static const node *find(const node *n, void *item, const compare &c)
    {
        if (!n || n->item == item)
            return n;
        const int32_t order = c(n->item);
        const node *found = order <= 0 ? find(n->left.get(), item, c) : nullptr;
        return found || order < 0 ? found : find(n->right.get(), item, c);
    }

    static bool remove(link &n, const tree_item *position, const compare &c)
    {
        if (!n)
            return false;
        if (n->position == position) {
            take_out(n);
            return true;
        }
        const int32_t order = c(n->item);
        const bool removed =
            (order <= 0 && remove(n->left, position, c)) || (order >= 0 && remove(n->right, position, c));
        if (removed)
            restore_balance(n);
        return removed;
    }

    static void take_out(link &n)
    {
        if (!n->left || !n->right) {
            n = std::move(n->left ? n->left : n->right);
            return;
        }
        link left = std::move(n->left), right = std::move(n->right);
        n = take_last(left);
        n->left = std::move(left);
        n->right = std::move(right);
        restore_balance(n);
    }

    static link take_last(link &n)
    {
        if (!n->right) {
            link last = std::move(n);
            n = std::move(last->left);
            return last;
        }
        link last = take_last(n->right);
        restore_balance(n);
        return last;
    }
};

} // namespace mova::test

#endif
