/* SPDX-License-Identifier: MIT */
/* The gaps of a pool by size: the smallest that is large enough is found in as many steps as a size has bits.

   Each class of sizes has a tree. A node's children split what the sizes of the class may still be: those whose next lower
   bit is 0, and those where it is 1. A node itself has any size of its part. Gaps of one size are a list, of which the first
   is in the tree. If a class were that of 160 to 163 units:

       gaps came as 162, 160, 162, 161              162 - 162         which sizes:    160 to 163
                                                    /                                 160, 161
                                                  160
                                                    \
                                                    161                                    161

   Where each size has a class of its own, there is the list alone, and what belongs to trees is not touched. */
#ifndef MOVA_HOST_INTERNAL_GAP_INDEX_H
#define MOVA_HOST_INTERNAL_GAP_INDEX_H

#include <algorithm>
#include <cstddef>
#include <iterator>

#include <mova/frame/host.h>
#include <mova/frame/internal/assert.h>
#include <mova/host/internal/gap_classes.h>

namespace mova {

/* `none` ends a list, and is where there is no node. */
constexpr mb_handle no_gap = ~mb_handle{0};

struct gap_links {
    mb_handle prev = no_gap, next = no_gap; /* of the same size; the one in the tree has no `prev` */
};

struct gap_branches {
    mb_handle parent = no_gap, children[2] = {no_gap, no_gap};
};

/* `Gaps` gives the records of a handle: gaps[handle].gap is the size, gaps[handle].links are the links in the list, and
   gaps.branches(handle) those in a tree. */
template <class Gaps>
class gap_index {
public:
    static constexpr mb_handle none = no_gap;

    gap_index() { std::fill(std::begin(roots_), std::end(roots_), none); }

    /* Requires a size that is not 0, and no gap of that handle in the index. */
    void insert(Gaps &gaps, mb_handle added)
    {
        const size_t size = gaps[added].gap;
        const unsigned index = gap_classes::class_of(size);
        gaps[added].links = {};
        mb_handle *place = &roots_[index], parent = none;
        for (bits below(index, size); *place != none; place = &gaps.branches(parent).children[below.next()]) {
            parent = *place;
            if (gaps[parent].gap == size)
                return append(gaps, parent, added);
        }
        *place = added;
        if (is_tree(index))
            gaps.branches(added) = {parent, {none, none}};
        if (parent == none)
            classes_.insert(index);
    }

    /* 1. A gap that is not in the tree leaves its list.
       2. One that is has its place taken by the next of its size; else by any leaf below it; else by none. */
    void remove(Gaps &gaps, mb_handle removed)
    {
        const gap_links links = gaps[removed].links;
        if (links.next != none)
            gaps[links.next].links.prev = links.prev;
        if (links.prev != none) {
            gaps[links.prev].links.next = links.next;
            return;
        }
        const unsigned index = gap_classes::class_of(gaps[removed].gap);
        if (is_tree(index))
            replace(gaps, index, removed, links.next != none ? links.next : detached_leaf_below(gaps, removed));
        else
            roots_[index] = links.next;
        if (roots_[index] == none)
            classes_.erase(index);
    }

    /* Returns the smallest gap of at least `size`, or `none`. */
    mb_handle find(const Gaps &gaps, size_t size) const
    {
        const unsigned own = gap_classes::class_of(size);
        const mb_handle found = find_in_class(gaps, own, size);
        if (found != none)
            return found;
        const unsigned larger = classes_.first_from(own + 1);
        return larger == gap_classes::count ? none : find_in_class(gaps, larger, size);
    }

    mb_handle root(unsigned index) const { return roots_[index]; }
    bool has_class(unsigned index) const { return classes_.first_from(index) == index; }

    /* The bits of a size that its class leaves open, from the highest on. */
    class bits {
    public:
        bits(unsigned index, size_t size) : units_(size / gap_classes::unit), left_(gap_classes::open_bits(index)) {}

        unsigned next()
        {
            assert(left_ > 0);
            return static_cast<unsigned>(units_ >> --left_) & 1;
        }

    private:
        size_t units_;
        unsigned left_;
    };

private:
    static bool is_tree(unsigned index) { return gap_classes::open_bits(index) > 0; }

    static void append(Gaps &gaps, mb_handle to, mb_handle added)
    {
        gap_links &first = gaps[to].links, &links = gaps[added].links;
        links.prev = to;
        links.next = first.next;
        if (first.next != none)
            gaps[first.next].links.prev = added;
        first.next = added;
    }

    static mb_handle a_child(const Gaps &gaps, mb_handle node)
    {
        const gap_branches &branches = gaps.branches(node);
        return branches.children[0] != none ? branches.children[0] : branches.children[1];
    }

    /* Returns none where the node is a leaf itself. */
    mb_handle detached_leaf_below(Gaps &gaps, mb_handle node)
    {
        mb_handle leaf = none;
        for (mb_handle each = a_child(gaps, node); each != none; each = a_child(gaps, each))
            leaf = each;
        if (leaf != none)
            place_below_parent(gaps, leaf) = none;
        return leaf;
    }

    static mb_handle &place_below_parent(Gaps &gaps, mb_handle node)
    {
        mb_handle *children = gaps.branches(gaps.branches(node).parent).children;
        assert(children[0] == node || children[1] == node);
        return children[children[1] == node];
    }

    /* `successor` may be none. */
    void replace(Gaps &gaps, unsigned index, mb_handle replaced, mb_handle successor)
    {
        const gap_branches &old = gaps.branches(replaced);
        (old.parent == none ? roots_[index] : place_below_parent(gaps, replaced)) = successor;
        if (successor == none)
            return;
        gaps.branches(successor) = old;
        for (mb_handle child : old.children) {
            if (child != none)
                gaps.branches(child).parent = successor;
        }
    }

    static mb_handle better(const Gaps &gaps, mb_handle best, mb_handle candidate, size_t size)
    {
        const size_t gap = gaps[candidate].gap;
        return gap >= size && (best == none || gap < gaps[best].gap) ? candidate : best;
    }

    mb_handle find_in_class(const Gaps &gaps, unsigned index, size_t size) const
    {
        if (!is_tree(index) || roots_[index] == none)
            return roots_[index];
        return gap_classes::class_of(size) == index ? find_in_tree(gaps, index, size)
                                                    : smallest_below(gaps, roots_[index], none, size);
    }

    /* Goes the way of the size's bits. Where that turns to the lower half, all of the upper one is large enough: the last
       such half has the smallest of them. */
    mb_handle find_in_tree(const Gaps &gaps, unsigned index, size_t size) const
    {
        mb_handle best = none, larger = none;
        bits below(index, size);
        for (mb_handle node = roots_[index]; node != none;) {
            best = better(gaps, best, node, size);
            if (gaps[node].gap == size) /* at the latest where no bit is left open */
                break;
            const gap_branches &branches = gaps.branches(node);
            const unsigned side = below.next();
            if (side == 0 && branches.children[1] != none)
                larger = branches.children[1];
            node = branches.children[side];
        }
        return smallest_below(gaps, larger, best, size);
    }

    /* The smallest of a part of the tree is on the way that keeps to the lower side. */
    static mb_handle smallest_below(const Gaps &gaps, mb_handle node, mb_handle best, size_t size)
    {
        for (; node != none; node = a_child(gaps, node))
            best = better(gaps, best, node, size);
        return best;
    }

    gap_classes::class_set classes_;
    mb_handle roots_[gap_classes::count];
};

} // namespace mova

#endif
