/* SPDX-License-Identifier: MIT */
/* Large blocks: a mapping each, so that one grows by moving pages. */
#ifndef MOVA_HOST_INTERNAL_LARGE_BLOCKS_H
#define MOVA_HOST_INTERNAL_LARGE_BLOCKS_H

#include <cstddef>

#include <mova/frame/internal/assert.h>
#include <mova/host/internal/locks.h>
#include <mova/host/internal/mappings.h>
#include <mova/host/internal/size_classes.h>
#include <mova/host/internal/spare_mappings.h>

namespace mova {

class large_blocks {
public:
    constexpr explicit large_blocks(mappings &from) : mappings_(from), spare_(from, most_spare_bytes, 1) {}

    /* Returns a block of a class, null where memory has run out, and whether every byte of it is 0. */
    spare_mappings::taken take(unsigned index)
    {
        guard held(lock);
        const spare_mappings::taken block = spare_.take(index);
        if (block.start)
            count(index, 1);
        return block;
    }

    void give(unsigned index, void *block)
    {
        guard held(lock);
        count(index, -1);
        spare_.give(index, block);
    }

    /* Returns the block's new place, or null where the system refuses: then the block is as it was. A block that fills a
       huge page and grows to twice its size was filled, it is likely, and will be: there huge pages pay. The mapping keeps
       that until the system has it back, though a later block of its size may hardly be written to. */
    void *resize(void *block, unsigned from, unsigned to)
    {
        const size_t old_size = size_classes::block_size(from), new_size = size_classes::block_size(to);
        void *resized =
            new_size < old_size ? shortened(block, old_size, new_size) : mappings_.extend(block, old_size, new_size);
        if (!resized)
            return nullptr;
        if (old_size >= huge_page && new_size > old_size && new_size <= 2 * old_size)
            mappings_.prefer_huge_pages(resized, new_size);
        guard held(lock);
        count(from, -1);
        count(to, 1);
        return resized;
    }

    /* The number of blocks of a class that are live. */
    size_t live(unsigned index)
    {
        guard held(lock);
        return live_[index - first_class];
    }

    void age()
    {
        guard held(lock);
        spare_.age();
    }

    bool trim()
    {
        guard held(lock);
        return spare_.trim();
    }

    mutex lock;

private:
    static constexpr unsigned first_class = size_classes::run_classes;
    static constexpr size_t most_spare_bytes = size_t{64} << 20, huge_page = size_t{2} << 20;

    void count(unsigned index, int change) MOVA_ANNOTATED(requires_capability(lock))
    {
        live_[index - first_class] += static_cast<size_t>(change);
        mappings_.count_used(size_classes::block_size(index) * static_cast<size_t>(change));
    }

    void *shortened(void *block, size_t old_size, size_t new_size)
    {
        return mappings_.unmap(static_cast<char *>(block) + new_size, old_size - new_size) ? block : nullptr;
    }

    mappings &mappings_;
    spare_mappings spare_ MOVA_ANNOTATED(guarded_by(lock));
    size_t live_[size_classes::all_classes - first_class] MOVA_ANNOTATED(guarded_by(lock)) = {};
};

} // namespace mova

#endif
