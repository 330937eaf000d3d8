#ifndef MOVA_TESTS_SUPPORT_VERIFY_BLOCK_POOL_H
#define MOVA_TESTS_SUPPORT_VERIFY_BLOCK_POOL_H

#include <mova/host/internal/block_pool.h>

#include <set>

namespace mova::test {

/* Returns the number, as the header gives it, of the first invariant that a pool breaks, or 0. */
class block_pool_verifier {
public:
    explicit block_pool_verifier(const block_pool &pool) : pool_(pool) {}

    int broken_invariant()
    {
        if (!handles_stand_in_their_places())
            return 1;
        if (!blocks_fill_the_arena())
            return 2;
        if (!sizes_add_up())
            return 3;
        if (!gaps_are_listed())
            return 4;
        return order_.contains(pool_.rover()) ? 0 : 5;
    }

private:
    using handle_set = std::set<mb_handle>;

    bool handles_stand_in_their_places()
    {
        if (pool_.place_of(0).handle != block_pool::none)
            return false;
        for (mb_handle place = 1; place < pool_.capacity(); place++) {
            const mb_handle handle = pool_.place_of(place).handle;
            if (handle != 0 && handle % pool_.capacity() != place)
                return false;
            if (handle != 0)
                live_.insert(handle);
        }
        return true;
    }

    bool blocks_fill_the_arena()
    {
        const char *end = pool_.arena();
        mb_handle each = block_pool::origin;
        do {
            const block_pool::block &block = pool_.block_of(each);
            if (pool_.place_of(each).address != end || pool_.block_of(block.next).prev != each)
                return false;
            if (!order_.insert(each).second)
                return false;
            end += block.size + block.gap;
            each = block.next;
        } while (each != block_pool::origin);
        return end == pool_.arena() + pool_.statistics().budget;
    }

    bool sizes_add_up() const
    {
        size_t bytes = 0;
        for (mb_handle each : order_) {
            const block_pool::block &block = pool_.block_of(each);
            if (block.size % gap_classes::unit || block.gap % gap_classes::unit)
                return false;
            bytes += block.size;
        }
        handle_set blocks = order_;
        blocks.erase(block_pool::origin);
        return blocks == live_ && bytes == pool_.statistics().live_bytes &&
               blocks.size() == pool_.statistics().live_blocks;
    }

    bool gaps_are_listed() const
    {
        size_t listed = 0;
        for (unsigned index = 0; index < gap_classes::count; index++) {
            mb_handle prev = block_pool::none;
            if (pool_.has_class(index) != (pool_.first_of_class(index) != prev))
                return false;
            for (mb_handle each = pool_.first_of_class(index); each != block_pool::none; listed++) {
                const block_pool::block &owner = pool_.block_of(each);
                if (!order_.contains(each) || owner.gap_prev != prev || owner.gap == 0 ||
                    gap_classes::class_of(owner.gap) != index)
                    return false;
                prev = each;
                each = owner.gap_next;
            }
        }
        return listed == static_cast<size_t>(std::ranges::count_if(
                             order_, [this](mb_handle each) { return pool_.block_of(each).gap != 0; }));
    }

    const block_pool &pool_;
    handle_set live_, order_;
};

inline int broken_invariant(const block_pool &pool)
{
    return block_pool_verifier(pool).broken_invariant();
}

} // namespace mova::test

#endif
