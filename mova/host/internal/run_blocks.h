/* SPDX-License-Identifier: MIT */
/* Blocks of 16 to 256 KiB: a run of units each. */
#ifndef MOVA_HOST_INTERNAL_RUN_BLOCKS_H
#define MOVA_HOST_INTERNAL_RUN_BLOCKS_H

#include <atomic>
#include <cstddef>

#include <mova/host/internal/chunks.h>
#include <mova/host/internal/size_classes.h>

namespace mova {

class run_blocks {
public:
    constexpr explicit run_blocks(chunks &from) : chunks_(from) {}

    /* Returns null where memory has run out. */
    void *take(unsigned index)
    {
        void *block = chunks_.take_run(units_of(index));
        taken_[index - first_class] += block != nullptr;
        return block;
    }

    void give(unsigned index, void *block)
    {
        chunks_.give_run(block, units_of(index));
        --taken_[index - first_class];
    }

    /* The number of blocks of a class that are not free. */
    size_t taken(unsigned index) const { return taken_[index - first_class]; }

private:
    static constexpr unsigned first_class = size_classes::page_classes;

    static constexpr unsigned units_of(unsigned index)
    {
        return static_cast<unsigned>(size_classes::block_size(index) / unit_size);
    }
    static_assert(size_classes::block_size(first_class) % unit_size == 0);

    chunks &chunks_;
    std::atomic<size_t> taken_[size_classes::run_classes - first_class] = {};
};

} // namespace mova

#endif
