/* Large blocks: a mapping each, so that one grows by moving pages. Of each class, a released one is kept. */
#ifndef MOVA_HOST_INTERNAL_LARGE_BLOCKS_H
#define MOVA_HOST_INTERNAL_LARGE_BLOCKS_H

#include <mutex>
#include <utility>

#include <mova/host/internal/locks.h>
#include <mova/host/internal/mappings.h>
#include <mova/host/internal/size_classes.h>

namespace mova::large_blocks {

using size_classes::all_classes, size_classes::block_size, size_classes::first_large_class;

constexpr size_t largest_kept = size_t{64} << 20;

/* Of each class, at the place of the class: a released block, and the number of live ones. Both under `lock`. */
inline constinit std::mutex lock;
inline constinit void *kept[all_classes] = {};
inline constinit size_t live[all_classes] = {};

inline void count(unsigned index, int change)
{
    live[index] += static_cast<size_t>(change);
    mappings::count_used(block_size(index) * static_cast<size_t>(change));
}

/* Returns null where memory has run out. */
inline void *take(unsigned index)
{
    auto guard = locked(lock);
    void *block = std::exchange(kept[index], nullptr);
    if (!block)
        block = mappings::map(block_size(index), mappings::kind::huge);
    if (block)
        count(index, 1);
    return block;
}

inline void give(unsigned index, void *block)
{
    auto guard = locked(lock);
    count(index, -1);
    if (block_size(index) <= largest_kept)
        block = std::exchange(kept[index], block);
    if (block)
        mappings::unmap(block, block_size(index));
}

/* Gives the kept blocks back to the system. Returns whether there were any. */
inline bool drop_kept()
{
    auto guard = locked(lock);
    bool dropped = false;
    for (unsigned i = first_large_class; i < all_classes; i++) {
        if (!kept[i])
            continue;
        mappings::unmap(std::exchange(kept[i], nullptr), block_size(i));
        dropped = true;
    }
    return dropped;
}

/* Returns the block's new place, or null where memory has run out: then the block is as it was. */
inline void *resize(void *block, unsigned from, unsigned to)
{
    void *resized = mappings::remap(block, block_size(from), block_size(to));
    if (!resized && drop_kept())
        resized = mappings::remap(block, block_size(from), block_size(to));
    if (!resized)
        return nullptr;
    auto guard = locked(lock);
    count(from, -1);
    count(to, 1);
    return resized;
}

} // namespace mova::large_blocks

#endif
