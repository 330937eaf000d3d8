/* SPDX-License-Identifier: MIT */
/* The numbered invariants of a pool of movable blocks, as block_pool.h gives them. */
#ifndef MOVA_HOST_INTERNAL_INVARIANTS_H
#define MOVA_HOST_INTERNAL_INVARIANTS_H

#include <cstddef>

#include <mova/host/internal/block_pool.h>

namespace mova {

class block_pool_check {
public:
    explicit block_pool_check(const block_pool &pool) : pool_(pool) {}

    /* Returns the number of the first invariant that is broken, or 0. Linear in the pool's table. */
    int broken()
    {
        if (!handles_stand_in_their_places())
            return 1;
        if (!blocks_fill_the_arena())
            return 2;
        if (!sizes_add_up())
            return 3;
        if (!gaps_are_indexed())
            return 4;
        return is_known(pool_.rover()) ? 0 : 5;
    }

private:
    static constexpr mb_handle origin = block_pool::origin, none = block_pool::none;

    bool is_known(mb_handle handle) const
    {
        return handle == origin || (handle != none && pool_.place_of(handle).handle == handle);
    }

    bool handles_stand_in_their_places()
    {
        for (mb_handle place = 1; place < pool_.capacity(); ++place) {
            const mb_handle handle = pool_.place_of(place).handle;
            if (handle != 0 && handle % pool_.capacity() != place)
                return false;
            live_ += handle != 0;
        }
        return pool_.place_of(origin).handle == none;
    }

    /* Ends, whatever the links say: a block is come to from its `prev` alone, and the origin ends the walk. */
    bool blocks_fill_the_arena()
    {
        const char *end = pool_.arena();
        mb_handle each = origin;
        for (size_t walked = 0;; ++walked) {
            const block_pool::block &block = pool_.block_of(each);
            if (!is_known(block.next))
                return false;
            if (pool_.place_of(each).address != end || pool_.block_of(block.next).prev != each)
                return false;
            end += block.size + block.gap;
            gaps_ += block.gap != 0;
            bytes_ += block.size;
            whole_units_ &= block.size % gap_classes::unit == 0 && block.gap % gap_classes::unit == 0;
            each = block.next;
            if (each == origin)
                return walked == live_ && end == pool_.arena() + pool_.statistics().budget;
        }
    }

    bool sizes_add_up() const
    {
        return whole_units_ && bytes_ == pool_.statistics().live_bytes && live_ == pool_.statistics().live_blocks;
    }

    bool gaps_are_indexed()
    {
        for (unsigned index = 0; index < gap_classes::count; ++index) {
            const mb_handle root = pool_.gaps().root(index);
            if (pool_.gaps().has_class(index) != (root != none) || (root != none && !is_known(root)))
                return false;
            const unsigned open = gap_classes::open_bits(index);
            const size_t prefix = root == none ? 0 : pool_.block_of(root).gap / gap_classes::unit >> open;
            if (root != none && (gap_classes::class_of(pool_.block_of(root).gap) != index || !is_list(root)))
                return false;
            if (root != none && open > 0 && !is_tree(root, none, open, prefix))
                return false;
        }
        return indexed_ == gaps_;
    }

    /* The sizes of a part of the tree agree in all bits but the `open` lowest, where they are `prefix`. The list of `node`
       has been looked at. */
    bool is_tree(mb_handle node, mb_handle parent, unsigned open, size_t prefix)
    {
        const gap_branches &branches = pool_.branches_of(node);
        if (branches.parent != parent || pool_.block_of(node).gap / gap_classes::unit >> open != prefix)
            return false;
        for (size_t side = 0; side < 2; ++side) {
            const mb_handle child = branches.children[side];
            if (child != none && (open == 0 || !is_list(child) || !is_tree(child, node, open - 1, prefix * 2 + side)))
                return false;
        }
        return true;
    }

    bool is_list(mb_handle first)
    {
        if (!is_known(first))
            return false;
        const size_t size = pool_.block_of(first).gap;
        mb_handle prev = none;
        for (mb_handle each = first; each != none; each = pool_.block_of(each).links.next) {
            const bool fits = is_known(each) && pool_.block_of(each).gap == size && size != 0;
            if (!fits || pool_.block_of(each).links.prev != prev || ++indexed_ > gaps_)
                return false;
            prev = each;
        }
        return true;
    }

    const block_pool &pool_;
    size_t live_ = 0, gaps_ = 0, indexed_ = 0, bytes_ = 0;
    bool whole_units_ = true;
};

inline int broken_invariant(const block_pool &pool)
{
    return block_pool_check(pool).broken();
}

} // namespace mova

#endif
